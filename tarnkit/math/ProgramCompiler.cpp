#include "tarnkit/math/ProgramCompiler.h"

#include <algorithm>
#include <cassert>

#include "tarnkit/math/CalledFunction.h"
#include "tarnkit/math/FunctionMath.h"
#include "tarnkit/math/HostFunction.h"
#include "tarnkit/math/MXFunctionEvaluator.h"
#include "tarnkit/math/MXMathEvaluator.h"
#include "tarnkit/math/TreeOperations.h"

namespace tarnkit::detail {

namespace {

constexpr double kHundred = 100;
constexpr std::size_t kSearchedVariables = 16;

Operation operationOf(Builtin builtin) noexcept {
  switch (builtin) {
    case Builtin::add:
      return Operation::add;
    case Builtin::subtract:
      return Operation::subtract;
    case Builtin::multiply:
      return Operation::multiply;
    case Builtin::divide:
      return Operation::divide;
    case Builtin::less:
      return Operation::less;
    case Builtin::greater:
      return Operation::greater;
    case Builtin::lessOrEqual:
      return Operation::lessOrEqual;
    case Builtin::greaterOrEqual:
      return Operation::greaterOrEqual;
    case Builtin::equal:
      return Operation::equal;
    case Builtin::notEqual:
      return Operation::notEqual;
    case Builtin::negate:
      return Operation::negate;
    case Builtin::abs:
      return Operation::absolute;
    case Builtin::sqrt:
      return Operation::squareRoot;
    case Builtin::dtor:
      return Operation::toRadians;
    case Builtin::rtod:
      return Operation::toDegrees;
    default:
      return Operation::callBinary;
  }
}

}  // namespace

ProgramCompiler::ProgramCompiler(const TreeView& tree, const MXMathEvaluator& evaluator,
                                 const std::vector<String>& variables, Program& program)
    : tree_(tree), evaluator_(evaluator), variables_(variables), program_(program) {
  if (variables_.size() <= kSearchedVariables) return;
  for (std::uint32_t slot = 0; slot < variables_.size(); ++slot) {
    slots_.emplace(variables_[slot].view(), slot);
  }
}

bool ProgramCompiler::compile() {
  for (std::uint32_t i = tree_.begin(); i <= tree_.root; ++i) {
    const ExpressionNode& node = tree_.nodes[i];
    switch (node.kind) {
      case NodeKind::number:
        push(Source::constant, 0, node.number);
        break;
      case NodeKind::variable: {
        const auto slot = slotOf(tree_.slice(node));
        if (!slot) return false;
        push(Source::variable, *slot);
        break;
      }
      case NodeKind::function:
        if (!addFunction(i)) return false;
        break;
    }
  }
  assert(operands_.size() == 1);
  if (operands_.back().source != Source::accumulator) applyUnary(Operation::load);
  assert(inAccumulator_ == std::size_t{0});
  endSegment();
  for (Instruction& instruction : program_.instructions) {
    instruction.run = scalarHandler(instruction);
    instruction.runBlock = blockHandler(instruction);
  }
  return true;
}

std::optional<std::uint32_t> ProgramCompiler::slotOf(std::string_view name) const {
  if (variables_.size() > kSearchedVariables) {
    const auto slot = slots_.find(name);
    return slot == slots_.end() ? std::nullopt : std::optional(slot->second);
  }
  const auto found = std::find_if(variables_.begin(), variables_.end(),
                                  [name](const String& each) { return each.view() == name; });
  if (found == variables_.end()) return std::nullopt;
  return static_cast<std::uint32_t>(found - variables_.begin());
}

bool ProgramCompiler::addFunction(std::uint32_t index) {
  const ExpressionNode& node = tree_.nodes[index];
  const CalledFunction called = calledFunction(tree_.at(index), evaluator_);
  const Builtin builtin = called.builtin;
  const std::uint32_t count = node.argumentCount;
  if (called.registered && called.registered->ofNumbers) {
    addHostCall(called.registered->ofNumbers, count);
    return true;
  }
  if (!isPlainCall(builtin, count)) {
    // The function stands for a variable where the evaluator says so and nothing else knows it.
    const std::string name = functionName(tree_.at(index));
    const auto slot = slotOf(name);
    if (builtin != Builtin::none || count != 0 || !evaluator_.resolvesFunctionsAsVariables() ||
        evaluator_.registeredFunction(String(name)) || !slot) {
      return false;
    }
    push(Source::variable, *slot);
    return true;
  }
  const BuiltinFunction& function = builtinFunction(builtin);
  if (foldConstants(function, index, count)) return true;
  const bool argumentIsRadians = count == 1 && tree_.nodes[index - 1].isFunction(Builtin::dtor);
  switch (function.shape) {
    case BuiltinShape::binary:
      addBinary(function);
      return true;
    case BuiltinShape::list:
      return addList(function, count);
    case BuiltinShape::special:
      addPercent(isPercentOfFirst(tree_, index, evaluator_));
      return true;
    default:
      addUnary(function, argumentIsRadians);
      return true;
  }
}

bool ProgramCompiler::foldConstants(const BuiltinFunction& function, std::uint32_t index,
                                    std::uint32_t count) {
  std::vector<double> arguments;
  for (std::size_t i = operands_.size() - count; i < operands_.size(); ++i) {
    if (operands_[i].source != Source::constant) return false;
    arguments.push_back(operands_[i].constant);
  }
  double base = 1;
  if (isPercentOfFirst(tree_, index, evaluator_)) {
    const Operand& first = operands_[operands_.size() - 2];
    if (first.source != Source::constant) return false;
    base = first.constant;
  }
  const bool degrees = evaluator_.angleMeasurementMode() == MXAngleMeasurementMode::degrees;
  const bool argumentIsRadians = count == 1 && tree_.nodes[index - 1].isFunction(Builtin::dtor);
  const double value =
      computeBuiltin(function, arguments.data(), count, degrees, argumentIsRadians, base);
  operands_.resize(operands_.size() - count);
  push(Source::constant, 0, value);
  return true;
}

void ProgramCompiler::addBinary(const BuiltinFunction& function) {
  const Operand& second = operands_.back();
  if (function.id == Builtin::pow && second.source == Source::constant && second.constant == 2) {
    operands_.pop_back();
    applyUnary(Operation::square);
    return;
  }
  applyBinary(operationOf(function.id), function.binary);
}

void ProgramCompiler::addUnary(const BuiltinFunction& function, bool argumentIsRadians) {
  const bool degrees = evaluator_.angleMeasurementMode() == MXAngleMeasurementMode::degrees;
  if (degrees && function.angle == BuiltinAngle::argument && !argumentIsRadians) {
    applyUnary(Operation::toRadians);
  }
  const Operation operation = operationOf(function.id);
  if (isBinary(operation)) {
    applyUnary(Operation::callUnary, function.unary);
  } else {
    applyUnary(operation);
  }
  if (degrees && function.angle == BuiltinAngle::result) applyUnary(Operation::toDegrees);
}

bool ProgramCompiler::addList(const BuiltinFunction& function, std::uint32_t count) {
  switch (function.id) {
    case Builtin::min:
      addChain(Operation::minimum, count);
      return true;
    case Builtin::max:
      addChain(Operation::maximum, count);
      return true;
    case Builtin::sum:
      addChain(Operation::add, count);
      return true;
    case Builtin::average:
      addChain(Operation::add, count);
      push(Source::constant, 0, static_cast<double>(count));
      applyBinary(Operation::divide);
      return true;
    default:
      break;
  }
  Instruction call{};
  call.operation = Operation::callList;
  call.list = function.list;
  addCall(call, count);
  return true;
}

void ProgramCompiler::addHostCall(const std::shared_ptr<const HostFunction>& host,
                                  std::uint32_t count) {
  program_.hosts.push_back(host);
  Instruction call{};
  call.operation = Operation::callHost;
  call.host = host.get();
  addCall(call, count);
}

// The arguments go to a run of temporaries of their own.
void ProgramCompiler::addCall(Instruction call, std::uint32_t count) {
  if (inAccumulator_) storeAccumulator();
  const std::uint32_t run = held();
  program_.temporaries = std::max(program_.temporaries, run + count);
  for (std::uint32_t i = 0; i < count; ++i) {
    Instruction load{};
    load.operation = Operation::load;
    setFirst(load, operands_[operands_.size() - count + i]);
    emit(load);
    Instruction store{};
    store.operation = Operation::store;
    store.stores = true;
    store.aside = run + i;
    emit(store);
  }
  call.first = run;
  call.second = count;
  emit(call);
  operands_.resize(operands_.size() - count);
  push(Source::accumulator);
  inAccumulator_ = operands_.size() - 1;
}

// Left to right, as the list functions do.
void ProgramCompiler::addChain(Operation operation, std::uint32_t count) {
  if (count == 1) return;
  if (count > 2 && inAccumulator_ && *inAccumulator_ >= operands_.size() - count + 2) {
    storeAccumulator();
  }
  const std::vector<Operand> rest(operands_.end() - (count - 2), operands_.end());
  operands_.resize(operands_.size() - (count - 2));
  applyBinary(operation);
  for (const Operand& next : rest) {
    push(next.source, next.index, next.constant);
    applyBinary(operation);
  }
}

void ProgramCompiler::addPercent(bool ofFirst) {
  push(Source::constant, 0, kHundred);
  if (!ofFirst) {
    applyBinary(Operation::divide);
    return;
  }
  // The first operand is used here and by the sum.
  const std::size_t first = operands_.size() - 3;
  if (inAccumulator_ == first) storeAccumulator();
  applyBinary(Operation::divide);
  const Operand base = operands_[first];
  push(base.source, base.index, base.constant);
  applyBinary(Operation::multiply);
}

void ProgramCompiler::applyUnary(Operation operation, double (*function)(double)) {
  Instruction instruction{};
  instruction.operation = operation;
  instruction.unary = function;
  const Operand operand = operands_.back();
  operands_.pop_back();
  if (inAccumulator_ == operands_.size()) inAccumulator_.reset();
  setFirst(instruction, operand);
  if (operand.source != Source::accumulator) putAccumulatorAside(instruction);
  emit(instruction);
  push(Source::accumulator);
  inAccumulator_ = operands_.size() - 1;
}

void ProgramCompiler::applyBinary(Operation operation, double (*function)(double, double)) {
  if (operands_.back().source == Source::constant &&
      operands_[operands_.size() - 2].source == Source::constant) {
    // An instruction holds one constant.
    const double second = operands_.back().constant;
    operands_.pop_back();
    applyUnary(Operation::load);
    push(Source::constant, 0, second);
  }
  Instruction instruction{};
  instruction.operation = operation;
  instruction.binary = function;
  const Operand second = operands_.back();
  operands_.pop_back();
  const Operand first = operands_.back();
  operands_.pop_back();
  if (inAccumulator_ && *inAccumulator_ >= operands_.size()) inAccumulator_.reset();
  setFirst(instruction, first);
  setSecond(instruction, second);
  putAccumulatorAside(instruction);
  emit(instruction);
  push(Source::accumulator);
  inAccumulator_ = operands_.size() - 1;
}

void ProgramCompiler::setFirst(Instruction& instruction, const Operand& operand) {
  instruction.firstSource = operand.source;
  instruction.first = operand.index;
  if (operand.source == Source::constant) instruction.constant = operand.constant;
}

void ProgramCompiler::setSecond(Instruction& instruction, const Operand& operand) {
  instruction.secondSource = operand.source;
  instruction.second = operand.index;
  if (operand.source == Source::constant) instruction.constant = operand.constant;
}

void ProgramCompiler::push(Source source, std::uint32_t index, double constant) {
  operands_.push_back({source, index, constant, held() + (source == Source::temporary ? 1U : 0U)});
}

// Turns the operand in the accumulator into a temporary and answers which. The accumulator holds
// the latest result, so what stands above it are leaves.
std::uint32_t ProgramCompiler::putAside() {
  const std::size_t place = *inAccumulator_;
  assert(place < operands_.size() && operands_[place].source == Source::accumulator);
  inAccumulator_.reset();
  const std::uint32_t index = place == 0 ? 0 : operands_[place - 1].held;
  operands_[place].source = Source::temporary;
  operands_[place].index = index;
  for (std::size_t i = place; i < operands_.size(); ++i) operands_[i].held = index + 1;
  program_.temporaries = std::max(program_.temporaries, index + 1);
  return index;
}

void ProgramCompiler::storeAccumulator() {
  Instruction store{};
  store.operation = Operation::store;
  store.stores = true;
  store.aside = putAside();
  emit(store);
}

// Whatever the accumulator holds for later is stored by the instruction that overwrites it.
void ProgramCompiler::putAccumulatorAside(Instruction& instruction) {
  if (!inAccumulator_) return;
  instruction.stores = true;
  instruction.aside = putAside();
}

void ProgramCompiler::emit(Instruction instruction) {
  if (segmentLength_ == 0) {
    program_.segments.push_back(static_cast<std::uint32_t>(program_.instructions.size()));
  }
  program_.instructions.push_back(instruction);
  if (++segmentLength_ == Program::kSegmentLength) endSegment();
}

void ProgramCompiler::endSegment() {
  if (segmentLength_ == 0) return;
  Instruction end{};
  end.operation = Operation::end;
  program_.instructions.push_back(end);
  segmentLength_ = 0;
}

}  // namespace tarnkit::detail
