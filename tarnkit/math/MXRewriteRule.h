#pragma once

#include <array>
#include <vector>

#include "tarnkit/math/MXMathEvaluator.h"
#include "tarnkit/math/TreeBuilder.h"

namespace tarnkit::detail {

/// What a placeholder of a rule may stand for; told by the beginning of its name.
enum class PlaceholderKind : std::uint8_t { expression, number, variable, function };

/// One rule: a template that an expression must match, the pattern that it becomes, and a condition
/// on what the placeholders were bound to.
///
/// Placeholders are functions named "__exp…", "__num…", "__var…" and "__func…". Immutable; read by
/// any thread.
class MXRewriteRule final : public Object {
  TARNKIT_CLASS
 public:
  using Replacements = OrderedMap<Ref<MXExpression>>;
  /// What each placeholder is bound to; no nodes while it is not.
  using Bindings = std::vector<TreeView>;

  /// Null, with a line "error creating rule: …" in the log, when a text does not parse or the
  /// template is no function. A nil or empty condition always holds.
  static Ref<MXRewriteRule> rewriteRuleWithTemplate(const String& templateText,
                                                    const String& replacementPattern,
                                                    const String& condition);
  MXRewriteRule(Ref<MXExpression> predicate, Ref<MXExpression> pattern,
                Ref<MXExpression> condition);

  /// Whether the rule matches at the root of the expression.
  bool ruleMatchesExpression(const MXExpression& expression,
                             const MXMathEvaluator& evaluator) const;
  /// What the rule makes of the expression if it matches at the root, else the expression itself.
  Ref<MXExpression> expressionByRewritingExpression(const Ref<MXExpression>& expression,
                                                    const MXMathEvaluator& evaluator) const;
  /// Matches with the bindings that `replacements` holds already, and adds those that it finds.
  bool matchExpression(const MXExpression& expression, Replacements& replacements,
                       const MXMathEvaluator& evaluator) const;
  /// "<root description> (template => pattern)".
  String description() const override;

  /// The root function of the template; `none` for one that is no built-in.
  Builtin rootFunction() const noexcept { return predicate_.view.top().builtin; }
  bool rootIsPlaceholder() const noexcept {
    return predicate_.slots[predicate_.view.root] != kNoSlot;
  }
  bool hasCondition() const noexcept { return condition_.expression != nullptr; }
  /// Whether evaluating the condition is sure to evaluate whatever is bound to the slot.
  bool conditionNeeds(std::size_t slot) const noexcept { return conditionNeeds_[slot] != 0; }
  std::size_t slotCount() const noexcept { return names_.size(); }

  /// Whether the template matches, the condition aside.
  bool match(const TreeView& tree, Bindings& bindings) const;
  /// Whether the condition holds for the bindings.
  bool conditionHolds(const Bindings& bindings, const MXMathEvaluator& evaluator) const;
  /// Appends the pattern with the bindings put in.
  void instantiatePattern(const Bindings& bindings, TreeBuilder& out) const;

 private:
  static constexpr std::uint16_t kNoSlot = 0xFFFF;

  /// A parsed text with the slot of each node that is a placeholder.
  struct Part {
    Ref<MXExpression> expression;
    ExpressionNode storage;
    TreeView view;
    std::vector<std::uint16_t> slots;
  };
  void fill(Part& part, Ref<MXExpression> expression);
  std::uint16_t slotNamed(const std::string& name);
  bool fits(std::uint16_t slot, NodeKind kind) const noexcept;
  void instantiate(const Part& part, const Bindings& bindings, TreeBuilder& out) const;
  bool bindsVariable(const TreeView& tree, const Bindings& bindings) const;

  std::vector<String> names_;
  std::vector<PlaceholderKind> kinds_;
  std::vector<std::uint8_t> conditionNeeds_;
  Part predicate_;
  Part pattern_;
  Part condition_;
};

}  // namespace tarnkit::detail
