#pragma once

#include "tarnkit/math/KnownValues.h"
#include "tarnkit/math/MXMathEvaluator.h"
#include "tarnkit/math/TreeBuilder.h"

namespace tarnkit::detail {

/// Folds every function of numbers into its value, the innermost first; one pass over the nodes.
/// A function that cannot be evaluated stays, with its simplified arguments.
class TreeSimplification {
 public:
  /// `object` is the expression that `tree` was taken from; null when there is none.
  TreeSimplification(const TreeView& tree, const MXExpression* object,
                     const MXMathEvaluator& evaluator, TreeBuilder& simplified)
      : tree_(tree),
        object_(object),
        evaluator_(evaluator),
        out_(simplified),
        known_(tree, evaluator) {}

  /// Appends the simplified tree; tells whether it differs from the original.
  bool run();

 private:
  bool fold(std::uint32_t index);
  bool argumentsAreNumbers(std::uint32_t count) const noexcept;
  std::optional<MXNumber> evaluate(std::uint32_t index);
  std::optional<MXNumber> evaluateBuiltin(std::uint32_t index, Builtin builtin);
  std::optional<MXNumber> evaluateObject(std::uint32_t index);
  std::optional<MXNumber> percentBase(std::uint32_t index);

  TreeView tree_;
  const MXExpression* object_;
  Ref<MXExpression> ownObject_;
  const MXMathEvaluator& evaluator_;
  TreeBuilder& out_;
  KnownValues known_;
};

/// Simplifies an expression object; a null evaluator means the default one.
void simplifyExpression(const MXExpression& expression, const MXMathEvaluator* evaluator,
                        TreeBuilder& simplified);

}  // namespace tarnkit::detail
