#pragma once

#include <cstdint>
#include <vector>

#include "tarnkit/math/MXMathEvaluator.h"
#include "tarnkit/math/MXRewriteRule.h"
#include "tarnkit/math/TreeBuilder.h"

namespace tarnkit::detail {

/// Applies one rule to every maximal subtree that it matches; linear in the tree but for the
/// comparison of subtrees that a template names twice. Used once a rule and tree.
class RewritePass {
 public:
  RewritePass(const TreeBuilder& tree, const MXMathEvaluator& evaluator)
      : tree_(tree.view()), isPlain_(tree.summary().isPlain), evaluator_(evaluator) {}

  /// Appends the rewritten tree to `out` and answers true, or leaves it alone when nothing matches.
  bool apply(const MXRewriteRule& rule, TreeBuilder& out);

 private:
  bool matches(const MXRewriteRule& rule, std::uint32_t index);
  bool conditionIsSureToFail(const MXRewriteRule& rule);
  void countVariables();
  void rebuild(const MXRewriteRule& rule, TreeBuilder& out);

  TreeView tree_;
  bool isPlain_;
  const MXMathEvaluator& evaluator_;
  MXRewriteRule::Bindings bindings_;
  std::vector<std::uint32_t> matched_;          // roots, from the last to the first
  std::vector<std::uint32_t> variablesBefore_;  // made when first asked for
  bool variablesMayBeBound_ = false;
};

}  // namespace tarnkit::detail
