#include "tarnkit/math/MXCompiledExpression.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <unordered_set>

#include "tarnkit/math/HostFunction.h"
#include "tarnkit/math/ProgramCompiler.h"
#include "tarnkit/math/TreeOperations.h"

namespace tarnkit {

const Class MXCompiledExpression::kClass{"MXCompiledExpression", &Object::kClass};

using detail::kBlockRows;

Ref<MXCompiledExpression> MXCompiledExpression::compile(const Ref<MXExpression>& expression,
                                                        const Ref<MXMathEvaluator>& evaluator) {
  return compile(expression, evaluator, {});
}

Ref<MXCompiledExpression> MXCompiledExpression::compile(const Ref<MXExpression>& expression,
                                                        const Ref<MXMathEvaluator>& evaluator,
                                                        std::vector<String> variables) {
  if (!expression || !evaluator) return nullptr;
  return make<MXCompiledExpression>(expression, evaluator, std::move(variables));
}

MXCompiledExpression::MXCompiledExpression(Ref<MXExpression> expression,
                                           Ref<MXMathEvaluator> evaluator,
                                           std::vector<String> variables)
    : expression_(std::move(expression)),
      evaluator_(std::move(evaluator)),
      variables_(std::move(variables)) {
  addVariables();
  detail::ExpressionNode storage;
  const detail::TreeView tree = expression_->view(storage);
  const bool asksItsParent =
      tree.top().isFunction(detail::Builtin::percent) && expression_->parentExpression();
  isPrepared_ = evaluator_->computesInDoubles() && !asksItsParent &&
                detail::ProgramCompiler(tree, *evaluator_, variables_, program_).compile();
  if (!isPrepared_) program_ = {};
  isSimple_ = isPrepared_ && program_.segments.size() == 1 && program_.hosts.empty() &&
              program_.temporaries <= kTemporariesInPlace;
  code_ = program_.instructions.data();
}

MXCompiledExpression::~MXCompiledExpression() = default;

void MXCompiledExpression::addVariables() {
  detail::ExpressionNode storage;
  const detail::TreeView tree = expression_->view(storage);
  std::unordered_set<std::string> known;
  for (const String& name : variables_) known.insert(name.toStdString());
  const auto add = [&](std::string name) {
    if (known.insert(name).second) variables_.emplace_back(name);
  };
  for (std::uint32_t i = tree.begin(); i <= tree.root; ++i) {
    const detail::ExpressionNode& node = tree.nodes[i];
    if (node.kind == detail::NodeKind::variable) add(std::string(tree.slice(node)));
    if (node.kind != detail::NodeKind::function || node.builtin != detail::Builtin::none ||
        node.argumentCount != 0 || !evaluator_->resolvesFunctionsAsVariables()) {
      continue;
    }
    const std::string name = detail::functionName(tree.at(i));
    if (!evaluator_->registeredFunction(String(name))) add(name);
  }
}

bool MXCompiledExpression::hasEnough(std::size_t given, MXError* error) const {
  if (given >= variables_.size()) return true;
  MXError::set(error, MXErrorCode::invalidArgument, "a variable has no value");
  return false;
}

std::optional<double> MXCompiledExpression::evaluateOtherwise(std::span<const double> values,
                                                              MXError* error) const {
  if (!hasEnough(values.size(), error)) return std::nullopt;
  if (!isPrepared_) return evaluateTree(values, error);
  double inPlace[1 + kTemporariesInPlace];
  std::unique_ptr<double[]> more;
  double* room = inPlace;
  if (program_.temporaries > kTemporariesInPlace) {
    more = std::make_unique<double[]>(std::size_t{1} + program_.temporaries);
    room = more.get();
  }
  if (!program_.hosts.empty()) return evaluateCalling(values.data(), room, error);
  double* const temporaries = room + 1;
  double accumulator = 0;
  for (const std::uint32_t segment : program_.segments) {
    accumulator = code_[segment].run(code_ + segment, values.data(), temporaries, accumulator);
  }
  return accumulator;
}

std::optional<double> MXCompiledExpression::evaluateCalling(const double* values, double* room,
                                                            MXError* error) const {
  MXError own;
  detail::HostCalls calls{error ? *error : own};
  const detail::EvaluationNesting nesting;
  if (!nesting.enter(calls.error)) return std::nullopt;
  const auto* const pointer = &calls;
  std::memcpy(room, &pointer, sizeof pointer);
  double accumulator = 0;
  for (const std::uint32_t segment : program_.segments) {
    accumulator = code_[segment].run(code_ + segment, values, room + 1, accumulator);
    if (calls.failed) return std::nullopt;
  }
  return accumulator;
}

std::optional<double> MXCompiledExpression::evaluateTree(std::span<const double> values,
                                                         MXError* error) const {
  MXSubstitutions substitutions;
  for (std::size_t i = 0; i < variables_.size(); ++i) {
    substitutions.set(variables_[i], Number::withDouble(values[i]));
  }
  const auto value = evaluator_->evaluateExpression(*expression_, substitutions, error);
  if (!value) return std::nullopt;
  return value->doubleValue();
}

bool MXCompiledExpression::evaluate(std::span<const double* const> columns, std::size_t count,
                                    double* results, MXError* error) const {
  std::vector<MXColumn> given;
  given.reserve(columns.size());
  for (const double* const column : columns) given.push_back({column});
  return evaluate(given, count, results, error);
}

bool MXCompiledExpression::evaluate(std::span<const MXColumn> columns, std::size_t count,
                                    double* results, MXError* error) const {
  if (!hasEnough(columns.size(), error)) return false;
  if (!isPrepared_ || !program_.hosts.empty() || count < kBlockRows) {
    return evaluateRows(columns, count, results, error);
  }
  evaluateBlocks(columns, count, results);
  return true;
}

void MXCompiledExpression::evaluateBlocks(std::span<const MXColumn> columns, std::size_t count,
                                          double* results) const {
  // The temporaries, and a block for each value that holds for all rows.
  const std::size_t slots = variables_.size();
  std::size_t blocks = program_.temporaries;
  for (std::size_t i = 0; i < slots; ++i) blocks += columns[i].isConstant ? 1U : 0U;
  const auto room = std::make_unique<double[]>(blocks * kBlockRows);
  std::vector<const double*> starts(slots);
  double* next = room.get() + program_.temporaries * kBlockRows;
  for (std::size_t i = 0; i < slots; ++i) {
    if (!columns[i].isConstant) continue;
    std::fill_n(next, kBlockRows, *columns[i].values);
    starts[i] = next;
    next += kBlockRows;
  }

  detail::BlockState block{nullptr, starts.data(), room.get()};
  for (std::size_t row = 0; row < count; row += kBlockRows) {
    // The last block reaches back over rows that are computed already, to the same results.
    const std::size_t first = std::min(row, count - kBlockRows);
    for (std::size_t i = 0; i < slots; ++i) {
      if (!columns[i].isConstant) starts[i] = columns[i].values + first;
    }
    block.accumulator = results + first;
    for (const detail::Instruction& instruction : program_.instructions) {
      instruction.runBlock(instruction, block);
    }
  }
}

bool MXCompiledExpression::evaluateRows(std::span<const MXColumn> columns, std::size_t count,
                                        double* results, MXError* error) const {
  std::vector<double> values(variables_.size());
  for (std::size_t row = 0; row < count; ++row) {
    for (std::size_t i = 0; i < values.size(); ++i) {
      values[i] = columns[i].values[columns[i].isConstant ? 0 : row];
    }
    const auto value = evaluate(values, error);
    if (!value) return false;
    results[row] = *value;
  }
  return true;
}

}  // namespace tarnkit
