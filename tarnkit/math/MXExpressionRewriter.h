#pragma once

#include <vector>

#include "tarnkit/math/MXMathEvaluator.h"

namespace tarnkit {

namespace detail {
class MXRewriteRule;
}

/// Simplifies expressions symbolically with rewrite rules that are written as expressions, such as
/// "0 + __exp1" becoming "__exp1".
///
/// The shared rewriter has the built-in rules. Rewriting costs time linear in the tree for each of
/// at most `kMaximumPasses` passes. Several threads may rewrite with a rewriter that none adds to.
class MXExpressionRewriter final : public Object {
  TARNKIT_CLASS
 public:
  static constexpr int kMaximumPasses = 256;
  /// A tree that rules have made this many nodes larger counts as never coming to an end.
  static constexpr std::uint32_t kMaximumGrowth = std::uint32_t{1} << 20;

  /// The process's shared rewriter with the built-in rules, made at first use from any thread.
  static const Ref<MXExpressionRewriter>& defaultRewriter();

  /// A rewriter without rules.
  MXExpressionRewriter() = default;
  ~MXExpressionRewriter() override;

  /// Appends a rule; the first text is what a match becomes. A nil or empty condition always holds.
  /// A rule that cannot be made is logged ("error creating rule: …") and left out.
  void addRewriteRule(const String& replacement, const String& forExpressionsMatchingTemplate,
                      const String& condition);
  /// Simplifies and applies every rule in order, again and again until nothing changes; the
  /// expression itself when nothing does. Rules that still change something in the last pass log
  /// "ABORT: replacement limit reached".
  Ref<MXExpression> expressionByRewritingExpression(const Ref<MXExpression>& expression,
                                                    const MXMathEvaluator& evaluator) const;

 private:
  std::vector<Ref<detail::MXRewriteRule>> rules_;
};

}  // namespace tarnkit
