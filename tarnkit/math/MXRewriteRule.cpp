#include "tarnkit/math/MXRewriteRule.h"

#include <fmt/format.h>

#include <algorithm>

#include "tarnkit/math/SmallStack.h"
#include "tarnkit/math/TreeEvaluation.h"
#include "tarnkit/math/TreeOperations.h"
#include "tarnkit/platform/system/Log.h"

namespace tarnkit::detail {

const Class MXRewriteRule::kClass{"_MXRewriteRule", &Object::kClass};

namespace {

struct Prefix {
  std::string_view text;
  PlaceholderKind kind;
};
constexpr Prefix kPrefixes[] = {
    {"__exp", PlaceholderKind::expression},
    {"__num", PlaceholderKind::number},
    {"__var", PlaceholderKind::variable},
    {"__func", PlaceholderKind::function},
};

const Prefix* prefixOf(std::string_view name) noexcept {
  for (const Prefix& prefix : kPrefixes) {
    if (name.substr(0, prefix.text.size()) == prefix.text) return &prefix;
  }
  return nullptr;
}

Ref<MXExpression> parse(const String& text, MXError& error) {
  return MXExpression::expressionFromString(text, &error);
}

}  // namespace

Ref<MXRewriteRule> MXRewriteRule::rewriteRuleWithTemplate(const String& templateText,
                                                          const String& replacementPattern,
                                                          const String& condition) {
  MXError error;
  auto predicate = parse(templateText, error);
  if (predicate && predicate->expressionType() != MXExpressionType::function) {
    error = MXError(MXErrorCode::invalidFormat, "the template is not a function expression");
  }
  auto pattern = error ? nullptr : parse(replacementPattern, error);
  auto holds = error || condition.size() == 0 ? nullptr : parse(condition, error);
  if (error) {
    Log::line(fmt::format("error creating rule: {}", error.localizedDescription()));
    return nullptr;
  }
  return make<MXRewriteRule>(std::move(predicate), std::move(pattern), std::move(holds));
}

MXRewriteRule::MXRewriteRule(Ref<MXExpression> predicate, Ref<MXExpression> pattern,
                             Ref<MXExpression> condition) {
  fill(predicate_, std::move(predicate));
  fill(pattern_, std::move(pattern));
  if (condition) fill(condition_, std::move(condition));
  conditionNeeds_.assign(names_.size(), 0);
  if (!hasCondition()) return;
  // Functions that are not sure to evaluate their arguments tell nothing about them.
  const TreeView view = condition_.view;
  for (std::uint32_t i = view.begin(); i <= view.root; ++i) {
    const ExpressionNode& node = view.nodes[i];
    const bool isSlot = condition_.slots[i] != kNoSlot;
    if (node.kind == NodeKind::function && !isSlot &&
        (node.builtin == Builtin::none || node.builtin == Builtin::count ||
         !builtinFunction(node.builtin).takes(node.argumentCount))) {
      return;
    }
  }
  for (const std::uint16_t slot : condition_.slots) {
    if (slot != kNoSlot) conditionNeeds_[slot] = 1;
  }
}

void MXRewriteRule::fill(Part& part, Ref<MXExpression> expression) {
  part.expression = std::move(expression);
  part.view = part.expression->view(part.storage);
  part.slots.assign(part.view.root + 1, kNoSlot);
  for (std::uint32_t i = part.view.begin(); i <= part.view.root; ++i) {
    if (part.view.nodes[i].kind != NodeKind::function) continue;
    const std::string name = functionName(part.view.at(i));
    if (prefixOf(name)) part.slots[i] = slotNamed(name);
  }
}

std::uint16_t MXRewriteRule::slotNamed(const std::string& name) {
  for (std::size_t i = 0; i < names_.size(); ++i) {
    if (names_[i] == name) return static_cast<std::uint16_t>(i);
  }
  names_.emplace_back(name);
  kinds_.push_back(prefixOf(name)->kind);
  return static_cast<std::uint16_t>(names_.size() - 1);
}

bool MXRewriteRule::fits(std::uint16_t slot, NodeKind kind) const noexcept {
  switch (kinds_[slot]) {
    case PlaceholderKind::expression:
      return true;
    case PlaceholderKind::number:
      return kind == NodeKind::number;
    case PlaceholderKind::variable:
      return kind == NodeKind::variable;
    case PlaceholderKind::function:
      break;
  }
  return kind == NodeKind::function;
}

bool MXRewriteRule::match(const TreeView& tree, Bindings& bindings) const {
  struct Pair {
    std::uint32_t inTemplate;
    std::uint32_t inTree;
  };
  SmallStack<Pair, 32> pairs;
  pairs.push({predicate_.view.root, tree.root});
  while (!pairs.empty()) {
    const Pair pair = pairs.back();
    pairs.pop();
    const ExpressionNode& wanted = predicate_.view.nodes[pair.inTemplate];
    const ExpressionNode& node = tree.nodes[pair.inTree];
    const std::uint16_t slot = predicate_.slots[pair.inTemplate];
    if (slot != kNoSlot && fits(slot, node.kind)) {
      if (!bindings[slot].nodes) {
        bindings[slot] = tree.at(pair.inTree);
      } else if (!treesEqual(bindings[slot], tree.at(pair.inTree))) {
        return false;
      }
      continue;
    }
    if (!nodesEqual(predicate_.view.at(pair.inTemplate), tree.at(pair.inTree))) return false;
    if (wanted.kind != NodeKind::function) continue;
    Pair child{pair.inTemplate - 1, pair.inTree - 1};
    for (std::uint32_t i = 0; i < wanted.argumentCount; ++i) {
      pairs.push(child);
      child.inTemplate = predicate_.view.argumentBefore(child.inTemplate);
      child.inTree = tree.argumentBefore(child.inTree);
    }
  }
  return true;
}

void MXRewriteRule::instantiatePattern(const Bindings& bindings, TreeBuilder& out) const {
  instantiate(pattern_, bindings, out);
}

void MXRewriteRule::instantiate(const Part& part, const Bindings& bindings,
                                TreeBuilder& out) const {
  const TreeView& view = part.view;
  for (std::uint32_t i = view.begin(); i <= view.root; ++i) {
    const ExpressionNode& node = view.nodes[i];
    if (node.kind != NodeKind::function) {
      out.addCopy(view.at(i));
      continue;
    }
    const std::uint16_t slot = part.slots[i];
    if (slot != kNoSlot && bindings[slot].nodes) {
      out.drop(out.nodesOfLast(node.argumentCount), node.argumentCount);
      out.addCopy(bindings[slot]);
    } else {
      out.addFunctionLike(view, node);
    }
  }
}

bool MXRewriteRule::conditionHolds(const Bindings& bindings,
                                   const MXMathEvaluator& evaluator) const {
  if (!hasCondition()) return true;
  TreeBuilder instance;
  instantiate(condition_, bindings, instance);
  const TreeView view = instance.view();
  double value = 0;
  if (evaluator.computesInDoubles() && instance.summary().isPlain) {
    static const MXSubstitutions none;
    if (evaluatePlainTree(view, instance.summary().stackDepth, none,
                          evaluator.angleMeasurementMode() == MXAngleMeasurementMode::degrees,
                          value)) {
      return value != 0;
    }
    if (!evaluator.variableResolver() && !bindsVariable(view, bindings)) return false;
  }
  MXSubstitutions substitutions;
  for (std::size_t slot = 0; slot < names_.size(); ++slot) {
    if (!bindings[slot].nodes) continue;
    TreeBuilder bound;
    bound.addCopy(bindings[slot]);
    substitutions.set(names_[slot], MXExpression::expressionWithTree(bound));
  }
  MXError ignored;
  const auto result = evaluator.evaluateExpression(*MXExpression::expressionWithTree(instance),
                                                   substitutions, &ignored);
  return result && result->doubleValue() != 0;
}

bool MXRewriteRule::bindsVariable(const TreeView& tree, const Bindings& bindings) const {
  for (std::uint32_t i = tree.begin(); i <= tree.root; ++i) {
    if (tree.nodes[i].kind != NodeKind::variable) continue;
    const auto name = tree.slice(tree.nodes[i]);
    for (std::size_t slot = 0; slot < names_.size(); ++slot) {
      if (bindings[slot].nodes && names_[slot] == name) return true;
    }
  }
  return false;
}

bool MXRewriteRule::ruleMatchesExpression(const MXExpression& expression,
                                          const MXMathEvaluator& evaluator) const {
  Replacements replacements;
  return matchExpression(expression, replacements, evaluator);
}

bool MXRewriteRule::matchExpression(const MXExpression& expression, Replacements& replacements,
                                    const MXMathEvaluator& evaluator) const {
  ExpressionNode storage;
  std::vector<ExpressionNode> storages(names_.size());
  Bindings bindings(names_.size());
  for (std::size_t slot = 0; slot < names_.size(); ++slot) {
    const auto* bound = replacements.find(names_[slot]);
    if (bound && *bound) bindings[slot] = (*bound)->view(storages[slot]);
  }
  const TreeView tree = expression.view(storage);
  const bool matches = match(tree, bindings) && conditionHolds(bindings, evaluator);
  if (!matches) return false;
  for (std::size_t slot = 0; slot < names_.size(); ++slot) {
    if (!bindings[slot].nodes || replacements.contains(names_[slot])) continue;
    TreeBuilder bound;
    bound.addCopy(bindings[slot]);
    replacements.set(names_[slot], MXExpression::expressionWithTree(bound));
  }
  return true;
}

Ref<MXExpression> MXRewriteRule::expressionByRewritingExpression(
    const Ref<MXExpression>& expression, const MXMathEvaluator& evaluator) const {
  ExpressionNode storage;
  Bindings bindings(names_.size());
  if (!match(expression->view(storage), bindings) || !conditionHolds(bindings, evaluator)) {
    return expression;
  }
  TreeBuilder out;
  instantiatePattern(bindings, out);
  return MXExpression::expressionWithTree(out);
}

String MXRewriteRule::description() const {
  return String(fmt::format("{} ({} => {})", Object::description().view(),
                            predicate_.expression->description().view(),
                            pattern_.expression->description().view()));
}

}  // namespace tarnkit::detail
