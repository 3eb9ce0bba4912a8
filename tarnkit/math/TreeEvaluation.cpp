#include "tarnkit/math/TreeEvaluation.h"

#include <fmt/format.h>

#include <cassert>
#include <cstring>
#include <span>

#include "tarnkit/math/CalledFunction.h"
#include "tarnkit/math/FunctionMath.h"
#include "tarnkit/math/MXFunctionEvaluator.h"
#include "tarnkit/math/MathText.h"
#include "tarnkit/math/TokenScanner.h"
#include "tarnkit/math/TreeOperations.h"

namespace tarnkit::detail {

namespace {

constexpr std::uint32_t kInlineDepth = 64;
// What a function in decimals counts for, which may take 10 µs, beside the characters that are
// read.
constexpr std::uint64_t kDecimalFunctionWork = 64;

const Number* numberNamed(const MXSubstitutions& substitutions, std::string_view name) {
  const Ref<Object>* found = nullptr;
  if (substitutions.size() <= kSearchedInPlace) {
    for (const auto& entry : substitutions) {
      if (sameName(entry.key.view(), name)) {
        found = &entry.value;
        break;
      }
    }
  } else {
    found = substitutions.find(String(name));
  }
  return found && *found && (*found)->isMemberOf(Number::kClass)
             ? static_cast<const Number*>(found->get())
             : nullptr;
}

// Computes the function at `node` on the values before `top`; answers where the top is afterwards.
inline double* computeInPlace(const ExpressionNode* node, double* top, bool degrees) {
  switch (node->builtin) {
    case Builtin::add:
      --top;
      top[-1] = top[-1] + top[0];
      return top;
    case Builtin::subtract:
      --top;
      top[-1] = top[-1] - top[0];
      return top;
    case Builtin::multiply:
      --top;
      top[-1] = top[-1] * top[0];
      return top;
    case Builtin::divide:
      --top;
      top[-1] = top[-1] / top[0];
      return top;
    case Builtin::negate:
      top[-1] = -top[-1];
      return top;
    default:
      break;
  }
  const BuiltinFunction& function = builtinFunction(node->builtin);
  const std::uint32_t count = node->argumentCount;
  const double base = (node->flags & ExpressionNode::kPercentOfFirst) != 0 ? top[-2] : 1.0;
  double* const first = top - count;
  *first = computeBuiltin(function, first, count, degrees,
                          count == 1 && node[-1].isFunction(Builtin::dtor), base);
  return first + 1;
}

}  // namespace

bool evaluatePlainTree(const TreeView& tree, std::uint32_t stackDepth,
                       const MXSubstitutions& substitutions, bool degrees, double& result) {
  double room[kInlineDepth];
  std::vector<double> moreRoom;
  double* top = room;
  if (stackDepth > kInlineDepth) {
    moreRoom.resize(stackDepth);
    top = moreRoom.data();
  }
  const ExpressionNode* const end = tree.nodes + tree.root + 1;
  for (const ExpressionNode* node = tree.nodes + tree.begin(); node != end; ++node) {
    if (node->kind == NodeKind::number) {
      *top++ = node->number;
    } else if (node->kind == NodeKind::function) {
      top = computeInPlace(node, top, degrees);
    } else {
      const Number* const number = numberNamed(substitutions, tree.slice(*node));
      if (!number) return false;
      *top++ = number->doubleValue();
    }
  }
  result = top[-1];
  return true;
}

void placeError(MXError& error, const TreeView& tree, const ExpressionNode& node) noexcept {
  if (!tree.hasPlace(node)) return error.removePlace();
  const auto type = node.kind == NodeKind::variable ? MXTokenType::variable : MXTokenType::function;
  const auto place =
      wholePlace({tree.text, tree.textSize}, type, {node.textOffset, node.textLength});
  error.setPlace(place.offset, place.length);
}

TreeEvaluation::TreeEvaluation(const MXMathEvaluator& evaluator,
                               const MXSubstitutions& substitutions, MXError* error)
    : evaluator_(evaluator), substitutions_(substitutions), error_(error ? error : &own_) {}

std::optional<MXNumber> TreeEvaluation::evaluate(const MXExpression& expression) {
  if (!nesting_.enter(*error_)) return std::nullopt;
  root_ = &expression;
  ExpressionNode storage;
  tree_ = expression.view(storage);
  if (!step(tree_.root, 0)) return failAt(tree_.root);
  while (!frames_.empty()) {
    Frame& frame = frames_.back();
    if (frame.waiting == 0) {
      if (!leaveFunction()) return failAt(frames_.back().node);
      continue;
    }
    const std::uint32_t node = children_.back();
    children_.pop();
    const std::uint32_t place = tree_.nodes[frame.node].argumentCount - frame.waiting;
    --frame.waiting;
    if (!step(node, place)) return failAt(node);
  }
  assert(values_.size() == 1 && children_.empty() && objects_.empty());
  return values_.back();
}

bool TreeEvaluation::step(std::uint32_t node, std::uint32_t place) {
  switch (tree_.nodes[node].kind) {
    case NodeKind::number:
      // Digits beyond the double are for decimals, and for whoever asks for this number alone.
      values_.push(evaluator_.computesInDoubles() && !frames_.empty()
                       ? tree_.nodes[node].number
                       : tree_.number(tree_.nodes[node]));
      return true;
    case NodeKind::variable:
      return pushVariable(node);
    case NodeKind::function:
      break;
  }
  return enterFunction(node, place);
}

bool TreeEvaluation::enterFunction(std::uint32_t node, std::uint32_t place) {
  const Builtin builtin = tree_.nodes[node].builtin;
  if (builtin != Builtin::none) return enterBuiltin(node, place, builtin);
  const CalledFunction called = calledFunction(tree_.at(node), evaluator_);
  if (called.builtin != Builtin::none) return enterBuiltin(node, place, called.builtin);
  if (called.registered && called.registered->ofNumbers) {
    hosts_.push_back(called.registered->ofNumbers);
    enterFrame(node, place, Builtin::none, hosts_.back().get());
    return true;
  }
  if (called.registered) {
    const auto function = called.registered->function;  // it may unregister itself
    return callRegistered(*function, place, called.name);
  }
  if (!called.leadsToItself) return resolveUnknown(called.name, place);
  return fail(MXErrorCode::invalidFormat,
              fmt::format("the alias {} leads to itself", called.name.view()));
}

bool TreeEvaluation::enterBuiltin(std::uint32_t index, std::uint32_t place, Builtin builtin) {
  const ExpressionNode& node = tree_.nodes[index];
  const BuiltinFunction& function = builtinFunction(builtin);
  const std::uint32_t count = node.argumentCount;
  if (!function.takes(count)) {
    if (builtin == Builtin::random) {
      return fail(MXErrorCode::invalidArgument, "random() may only have up to 2 arguments");
    }
    const std::uint32_t wanted = function.minimumArguments;
    return fail(MXErrorCode::invalidArgument,
                fmt::format("{} requires {}{} argument{}", function.name,
                            function.maximumArguments == wanted ? "" : "at least ", wanted,
                            wanted == 1 ? "" : "s"));
  }
  if (builtin == Builtin::count) {
    values_.push(static_cast<double>(count));
    return true;
  }
  enterFrame(index, place, builtin, nullptr);
  return true;
}

void TreeEvaluation::enterFrame(std::uint32_t node, std::uint32_t place, Builtin builtin,
                                const HostFunction* host) {
  const std::uint32_t count = tree_.nodes[node].argumentCount;
  frames_.push({node, count, place, values_.size(), builtin, host});
  std::uint32_t child = node - 1;
  for (std::uint32_t i = 0; i < count; ++i) {
    children_.push(child);
    child = tree_.argumentBefore(child);
  }
}

bool TreeEvaluation::leaveFunction() {
  const Frame& frame = frames_.back();
  assert(frame.waiting == 0 && values_.size() >= frame.firstValue);
  const auto value =
      compute(frame, {values_.data() + frame.firstValue, values_.size() - frame.firstValue});
  if (!value) return false;
  values_.resize(frame.firstValue);
  values_.push(*value);
  frames_.pop();
  if (objects_.size() > frames_.size()) objects_.pop_back();
  return true;
}

std::optional<MXNumber> TreeEvaluation::compute(const Frame& frame,
                                                std::span<const MXNumber> arguments) {
  if (frame.host) {
    SmallStack<double, 16> numbers;
    for (const MXNumber& argument : arguments) numbers.push(argument.doubleValue());
    return frame.host->call({numbers.data(), numbers.size()}, *error_);
  }
  BuiltinCall call{builtinFunction(frame.builtin)};
  call.degrees = evaluator_.angleMeasurementMode() == MXAngleMeasurementMode::degrees;
  call.argumentIsRadians =
      arguments.size() == 1 && tree_.nodes[frame.node - 1].isFunction(Builtin::dtor);
  // An alias makes a node of its own, which stands in no sum.
  const bool isPercent = tree_.nodes[frame.node].builtin == Builtin::percent;
  if (isPercent && !findPercentBase(frame, call.percentBase)) return std::nullopt;
  // Outside of substitutions the work is that of the text that was given.
  if (!nesting_.isOutermost() && !evaluator_.computesInDoubles() &&
      !nesting_.charge(kDecimalFunctionWork, *error_)) {
    return std::nullopt;
  }
  const auto value = evaluator_.functionEvaluator().compute(call, arguments, error_);
  if (!value) failReturning(call.function.name);
  return value;
}

// The second argument of an addition or a subtraction is a part of the first one's value, which
// stands right below its own.
bool TreeEvaluation::findPercentBase(const Frame& frame, MXNumber& base) {
  if (frames_.size() > 1) {
    const Frame& parent = frames_[frames_.size() - 2];
    const bool isSum = parent.builtin == Builtin::add || parent.builtin == Builtin::subtract;
    if (isSum && frame.place == 1) base = values_[parent.firstValue];
    return true;
  }
  const auto parent = root_->parentExpression();
  if (!parent) return true;
  const Builtin sum = builtinNamed(parent->function());
  const auto& arguments = parent->arguments();
  if ((sum != Builtin::add && sum != Builtin::subtract) || arguments.size() != 2 ||
      arguments[1] != root_) {
    return true;
  }
  const auto value = reduce(arguments[0].get());
  if (value) base = *value;
  return value.has_value();
}

bool TreeEvaluation::callRegistered(const MXMathFunction& function, std::uint32_t place,
                                    const String& name) {
  const auto object = objectOf(place);
  const auto result = function(object->arguments(), substitutions_, evaluator_, error_);
  if (!result) {
    failResolving(*error_, "function", MXUnknownFunctionKey, MXErrorCode::invalidIdentifier, name);
    return false;
  }
  auto value = reduce(result.get());
  if (!value) return failReturning(name.view());
  values_.push(*value);
  return true;
}

bool TreeEvaluation::resolveUnknown(const String& name, std::uint32_t place) {
  if (evaluator_.resolvesFunctionsAsVariables()) {
    if (auto value = variableValue(name)) {
      values_.push(*value);
      return true;
    }
  }
  if (const auto& resolver = evaluator_.functionResolver()) {
    if (const MXMathFunction function = resolver(name)) {
      return callRegistered(function, place, name);
    }
  }
  failResolving(*error_, "function", MXUnknownFunctionKey, MXErrorCode::invalidIdentifier, name);
  return false;
}

bool TreeEvaluation::pushVariable(std::uint32_t node) {
  const String name(tree_.slice(tree_.nodes[node]));
  if (auto value = variableValue(name)) {
    values_.push(*value);
    return true;
  }
  failResolving(*error_, "variable", MXUnknownVariableKey, MXErrorCode::invalidVariable, name);
  return false;
}

std::optional<MXNumber> TreeEvaluation::variableValue(const String& name) {
  if (const auto* substitution = substitutions_.find(name); substitution && *substitution) {
    return reduce(substitution->get());
  }
  if (const auto& resolver = evaluator_.variableResolver()) return resolver(name);
  return std::nullopt;
}

std::optional<MXNumber> TreeEvaluation::reduce(const Object* value) {
  if (const auto* number = as<Number>(value)) return MXNumber::fromNumber(*number);
  const auto* string = as<StringObject>(value);
  const auto* expression = as<MXExpression>(value);
  if (!string && !expression) return std::nullopt;
  ExpressionNode storage;
  const std::size_t work = string ? string->view().size() : expression->view(storage).top().size;
  if (!nesting_.charge(1 + work, *error_)) return std::nullopt;
  return string ? evaluator_.evaluateString(string->view(), substitutions_, error_)
                : evaluator_.evaluateExpression(*expression, substitutions_, error_);
}

// The object of the function that is about to be called as an argument of the innermost frame.
Ref<MXExpression> TreeEvaluation::objectOf(std::uint32_t place) {
  Ref<MXExpression> root(const_cast<MXExpression*>(root_));
  if (frames_.empty()) return root;
  if (objects_.empty()) objects_.push_back(std::move(root));
  while (objects_.size() < frames_.size()) {
    objects_.push_back(objects_.back()->arguments()[frames_[objects_.size()].place]);
  }
  return objects_.back()->arguments()[place];
}

// What failed within, in the text of a value, has its place in that text.
std::nullopt_t TreeEvaluation::failAt(std::uint32_t node) {
  placeError(*error_, tree_, tree_.nodes[node]);
  return std::nullopt;
}

bool TreeEvaluation::fail(MXErrorCode code, std::string message) {
  *error_ = MXError(code, std::move(message));
  return false;
}

// The general errors leave alone what a function or an inner evaluation has told.
bool TreeEvaluation::failReturning(std::string_view name) {
  return *error_ ? false
                 : fail(MXErrorCode::invalidArgument,
                        fmt::format("invalid return type from {} function", name));
}

}  // namespace tarnkit::detail
