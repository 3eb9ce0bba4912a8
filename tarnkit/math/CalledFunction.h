#pragma once

#include "tarnkit/math/ExpressionTree.h"
#include "tarnkit/math/MXMathEvaluator.h"

namespace tarnkit::detail {

/// What a function node calls with an evaluator, aliases followed: a built-in, a registered
/// function, or a name that neither has.
struct CalledFunction {
  Builtin builtin = Builtin::none;
  const MXMathEvaluator::RegisteredFunction* registered = nullptr;
  /// Where the aliases lead, in lower case; nil where the node itself names a built-in.
  String name;
  /// The aliases go round in a circle; nothing is called.
  bool leadsToItself = false;
};

/// Of the root of the view, which is a function.
CalledFunction calledFunction(const TreeView& function, const MXMathEvaluator& evaluator);
/// Of one that is no built-in: whether anything may compute it without substitutions.
bool mayBeComputed(const CalledFunction& called, const MXMathEvaluator& evaluator);

/// Whether the node is a percentage of the operand before it: a percent node that is the second
/// argument of an addition or a subtraction, or of an alias of one, within the view. An alias of
/// percent makes a node of its own, which stands in no sum.
bool isPercentOfFirst(const TreeView& tree, std::uint32_t index, const MXMathEvaluator& evaluator);

}  // namespace tarnkit::detail
