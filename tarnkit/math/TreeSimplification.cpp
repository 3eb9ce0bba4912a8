#include "tarnkit/math/TreeSimplification.h"

#include "tarnkit/math/CalledFunction.h"
#include "tarnkit/math/MXFunctionEvaluator.h"
#include "tarnkit/math/SmallStack.h"

namespace tarnkit::detail {

namespace {

const MXSubstitutions& noSubstitutions() {
  static const MXSubstitutions none;
  return none;
}

}  // namespace

bool TreeSimplification::run() {
  bool changed = false;
  for (std::uint32_t i = tree_.begin(); i <= tree_.root; ++i) {
    const ExpressionNode& node = tree_.nodes[i];
    if (node.kind != NodeKind::function) {
      out_.addCopy(tree_.at(i));
    } else if (argumentsAreNumbers(node.argumentCount) && fold(i)) {
      changed = true;
    } else {
      out_.addFunctionLike(tree_, node);
    }
  }
  return changed;
}

bool TreeSimplification::argumentsAreNumbers(std::uint32_t count) const noexcept {
  for (std::uint32_t k = 1; k <= count; ++k) {
    if (out_.node(out_.count() - k).kind != NodeKind::number) return false;
  }
  return true;
}

bool TreeSimplification::fold(std::uint32_t index) {
  const auto value = evaluate(index);
  if (!value) return false;
  const std::uint32_t count = tree_.nodes[index].argumentCount;
  out_.drop(count, count);
  out_.addNumber(*value);
  return true;
}

std::optional<MXNumber> TreeSimplification::evaluate(std::uint32_t index) {
  const Builtin builtin = tree_.nodes[index].builtin;
  if (builtin != Builtin::none) return evaluateBuiltin(index, builtin);
  const CalledFunction called = calledFunction(tree_.at(index), evaluator_);
  if (called.builtin != Builtin::none) return evaluateBuiltin(index, called.builtin);
  return mayBeComputed(called, evaluator_) ? evaluateObject(index) : std::nullopt;
}

std::optional<MXNumber> TreeSimplification::evaluateBuiltin(std::uint32_t index, Builtin builtin) {
  const ExpressionNode& node = tree_.nodes[index];
  const std::uint32_t count = node.argumentCount;
  BuiltinCall call{builtinFunction(builtin)};
  if (!call.function.takes(count)) return std::nullopt;
  if (builtin == Builtin::count) return static_cast<double>(count);
  if (node.builtin == Builtin::percent) {
    // What is simplified may be the second operand of something else.
    if (index == tree_.root) return evaluateObject(index);
    if (isPercentOfFirst(tree_, index, evaluator_)) {
      const auto base = percentBase(index);
      if (!base) return std::nullopt;
      call.percentBase = *base;
    }
  }
  call.degrees = evaluator_.angleMeasurementMode() == MXAngleMeasurementMode::degrees;
  call.argumentIsRadians = count == 1 && tree_.nodes[index - 1].isFunction(Builtin::dtor);
  if (evaluator_.computesInDoubles() && builtin != Builtin::random) {
    SmallStack<double, 8> values;
    for (std::uint32_t k = count; k > 0; --k) {
      values.push(out_.node(out_.count() - k).number);
    }
    return computeBuiltin(call.function, values.data(), count, call.degrees, call.argumentIsRadians,
                          call.percentBase.doubleValue());
  }
  std::vector<MXNumber> values;
  const TreeView out = count > 0 ? out_.view() : TreeView{};
  for (std::uint32_t k = count; k > 0; --k) {
    values.push_back(out.number(out.nodes[out.root + 1 - k]));
  }
  MXError ignored;
  return evaluator_.functionEvaluator().compute(call, values, &ignored);
}

// The value of the operand before a percentage, which stands right below its argument.
std::optional<MXNumber> TreeSimplification::percentBase(std::uint32_t index) {
  const TreeView out = out_.view();
  const ExpressionNode& first = out.nodes[out.root - 1];
  if (first.kind == NodeKind::number) return out.number(first);
  return known_.of(index - tree_.nodes[index].size,
                   [this](std::uint32_t other) { return evaluateObject(other); });
}

// Evaluates the original node, for what looks at the argument expressions or at the parent.
std::optional<MXNumber> TreeSimplification::evaluateObject(std::uint32_t index) {
  if (!object_) {
    TreeBuilder copy;
    copy.addCopy(tree_);
    ownObject_ = MXExpression::expressionWithTree(copy);
    object_ = ownObject_.get();
  }
  const MXExpression* at = object_;
  std::uint32_t root = tree_.root;
  while (root != index) {
    std::uint32_t child = root - 1;
    std::uint32_t place = tree_.nodes[root].argumentCount - 1;
    while (tree_.beginOf(child) > index) {
      child = tree_.argumentBefore(child);
      --place;
    }
    at = at->arguments()[place].get();
    root = child;
  }
  MXError ignored;
  return evaluator_.evaluateExpression(*at, noSubstitutions(), &ignored);
}

void simplifyExpression(const MXExpression& expression, const MXMathEvaluator* evaluator,
                        TreeBuilder& simplified) {
  ExpressionNode storage;
  const auto& used = evaluator ? *evaluator : *MXMathEvaluator::defaultMathEvaluator();
  TreeSimplification(expression.view(storage), &expression, used, simplified).run();
}

}  // namespace tarnkit::detail
