#include "tarnkit/math/KnownValues.h"

#include "tarnkit/math/CalledFunction.h"
#include "tarnkit/math/MXFunctionEvaluator.h"

namespace tarnkit::detail {

std::optional<MXNumber> KnownValues::of(std::uint32_t root, EvaluateObject evaluateObject) {
  if (!anyMayBeKnown()) return std::nullopt;
  const std::uint32_t begin = tree_.begin();
  if (values_.empty()) {
    values_.resize(tree_.root + std::size_t{1} - begin);
    ends_.resize(values_.size());
  }
  const std::uint32_t first = tree_.beginOf(root);
  for (std::uint32_t i = first; i <= root;) {
    if (ends_[i - begin] != 0) {
      i = ends_[i - begin];
    } else {
      values_[i - begin] = compute(i, evaluateObject);
      ++i;
    }
  }
  ends_[first - begin] = root + 1;
  return at(root);
}

// Without any of these, what is no number after simplifying has no value.
bool KnownValues::anyMayBeKnown() {
  if (!anyMayBeKnown_) {
    anyMayBeKnown_ = static_cast<bool>(evaluator_.variableResolver());
    for (std::uint32_t i = tree_.begin(); i <= tree_.root && !*anyMayBeKnown_; ++i) {
      const ExpressionNode& node = tree_.nodes[i];
      anyMayBeKnown_ = node.kind == NodeKind::function &&
                       (node.builtin == Builtin::none || node.builtin == Builtin::count);
    }
  }
  return *anyMayBeKnown_;
}

std::optional<MXNumber> KnownValues::compute(std::uint32_t index, EvaluateObject evaluateObject) {
  const ExpressionNode& node = tree_.nodes[index];
  if (node.kind == NodeKind::number) return tree_.number(node);
  if (node.kind == NodeKind::variable) {
    const auto& resolver = evaluator_.variableResolver();
    return resolver ? resolver(String(tree_.slice(node))) : std::nullopt;
  }
  const CalledFunction called = calledFunction(tree_.at(index), evaluator_);
  if (called.builtin != Builtin::none) return computeBuiltin(index, called.builtin);
  return mayBeComputed(called, evaluator_) ? evaluateObject(index) : std::nullopt;
}

std::optional<MXNumber> KnownValues::computeBuiltin(std::uint32_t index, Builtin builtin) {
  const ExpressionNode& node = tree_.nodes[index];
  BuiltinCall call{builtinFunction(builtin)};
  if (!call.function.takes(node.argumentCount)) return std::nullopt;
  if (builtin == Builtin::count) return static_cast<double>(node.argumentCount);
  std::vector<MXNumber> arguments(node.argumentCount);
  std::uint32_t child = index - 1;
  for (std::uint32_t i = node.argumentCount; i-- > 0;) {
    if (!at(child)) return std::nullopt;
    arguments[i] = *at(child);
    child = tree_.argumentBefore(child);
  }
  if (isPercentOfFirst(tree_, index, evaluator_)) {
    const auto& first = at(index - node.size);
    if (!first) return std::nullopt;
    call.percentBase = *first;
  }
  call.degrees = evaluator_.angleMeasurementMode() == MXAngleMeasurementMode::degrees;
  call.argumentIsRadians =
      node.argumentCount == 1 && tree_.nodes[index - 1].isFunction(Builtin::dtor);
  MXError ignored;
  return evaluator_.functionEvaluator().compute(call, arguments, &ignored);
}

}  // namespace tarnkit::detail
