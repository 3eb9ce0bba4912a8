#include "tarnkit/math/CalledFunction.h"

#include "tarnkit/math/TreeOperations.h"

namespace tarnkit::detail {

namespace {
constexpr int kMaximumAliasChain = 64;
}

CalledFunction calledFunction(const TreeView& function, const MXMathEvaluator& evaluator) {
  CalledFunction called;
  called.builtin = function.top().builtin;
  if (called.builtin != Builtin::none) return called;
  called.name = String(functionName(function));
  for (int hops = 0; hops < kMaximumAliasChain; ++hops) {
    const auto* const registered = evaluator.registeredFunction(called.name);
    if (!registered) return called;
    if (registered->aliasOf.isNil()) {
      called.registered = registered;
      return called;
    }
    called.name = registered->aliasOf;
    called.builtin = builtinNamed(called.name);
    if (called.builtin != Builtin::none) return called;
  }
  called.leadsToItself = true;
  return called;
}

bool mayBeComputed(const CalledFunction& called, const MXMathEvaluator& evaluator) {
  if (called.registered) return true;
  return !called.leadsToItself &&
         (evaluator.functionResolver() ||
          (evaluator.resolvesFunctionsAsVariables() && evaluator.variableResolver()));
}

bool isPercentOfFirst(const TreeView& tree, std::uint32_t index, const MXMathEvaluator& evaluator) {
  const ExpressionNode& node = tree.nodes[index];
  if (index >= tree.root || !node.isFunction(Builtin::percent)) return false;
  if ((node.flags & ExpressionNode::kPercentOfFirst) != 0) return true;
  // Right before a function stands its last argument.
  const ExpressionNode& next = tree.nodes[index + 1];
  if (next.kind != NodeKind::function || next.builtin != Builtin::none || next.argumentCount != 2) {
    return false;
  }
  const Builtin called = calledFunction(tree.at(index + 1), evaluator).builtin;
  return called == Builtin::add || called == Builtin::subtract;
}

}  // namespace tarnkit::detail
