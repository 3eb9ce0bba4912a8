#pragma once

#include <optional>
#include <vector>

#include "tarnkit/math/MXMathEvaluator.h"
#include "tarnkit/platform/objects/FunctionRef.h"

namespace tarnkit::detail {

/// The values of those parts of a tree that can be computed without substitutions although they are
/// no numbers, such as `count($x)`. Each node is computed once, however often it is asked for.
class KnownValues {
 public:
  /// `evaluateObject` evaluates a node that only the evaluator can, by its index.
  using EvaluateObject = FunctionRef<std::optional<MXNumber>(std::uint32_t)>;

  KnownValues(const TreeView& tree, const MXMathEvaluator& evaluator)
      : tree_(tree), evaluator_(evaluator) {}

  /// The value of the part whose root is there.
  std::optional<MXNumber> of(std::uint32_t root, EvaluateObject evaluateObject);

 private:
  bool anyMayBeKnown();
  std::optional<MXNumber> compute(std::uint32_t index, EvaluateObject evaluateObject);
  std::optional<MXNumber> computeBuiltin(std::uint32_t index, Builtin builtin);
  const std::optional<MXNumber>& at(std::uint32_t index) const {
    return values_[index - tree_.begin()];
  }

  TreeView tree_;
  const MXMathEvaluator& evaluator_;
  std::optional<bool> anyMayBeKnown_;
  std::vector<std::optional<MXNumber>> values_;
  /// For each node at which a part begins that has been computed, where the largest such one ends.
  std::vector<std::uint32_t> ends_;
};

}  // namespace tarnkit::detail
