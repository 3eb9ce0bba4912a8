#include "tarnkit/math/RewritePass.h"

namespace tarnkit::detail {

bool RewritePass::apply(const MXRewriteRule& rule, TreeBuilder& out) {
  matched_.clear();
  const bool anyRoot = rule.rootIsPlaceholder();
  const Builtin wanted = rule.rootFunction();
  // From the root downward; the nodes of a match are passed over.
  for (std::int64_t i = tree_.root; i >= std::int64_t{tree_.begin()};) {
    const ExpressionNode& node = tree_.nodes[i];
    const auto index = static_cast<std::uint32_t>(i);
    const bool mayMatch = anyRoot || (node.kind == NodeKind::function && node.builtin == wanted);
    if (mayMatch && matches(rule, index)) {
      matched_.push_back(index);
      i -= node.size;
    } else {
      --i;
    }
  }
  if (matched_.empty()) return false;
  rebuild(rule, out);
  return true;
}

bool RewritePass::matches(const MXRewriteRule& rule, std::uint32_t index) {
  bindings_.assign(rule.slotCount(), TreeView{});
  if (!rule.match(tree_.at(index), bindings_)) return false;
  return !rule.hasCondition() ||
         (!conditionIsSureToFail(rule) && rule.conditionHolds(bindings_, evaluator_));
}

// A variable that nothing gives a value fails the condition. Looking for one beforehand keeps long
// chains of functions from being evaluated again at each of their links.
bool RewritePass::conditionIsSureToFail(const MXRewriteRule& rule) {
  if (!isPlain_ || evaluator_.variableResolver()) return false;
  if (variablesBefore_.empty()) countVariables();
  if (variablesMayBeBound_) return false;
  for (std::size_t slot = 0; slot < bindings_.size(); ++slot) {
    const TreeView& bound = bindings_[slot];
    if (!bound.nodes || !rule.conditionNeeds(slot)) continue;
    if (variablesBefore_[bound.root + 1] != variablesBefore_[bound.begin()]) return true;
  }
  return false;
}

void RewritePass::countVariables() {
  variablesBefore_.assign(std::size_t{tree_.root} + 2, 0);
  for (std::uint32_t i = 0; i <= tree_.root; ++i) {
    const bool isVariable = tree_.nodes[i].kind == NodeKind::variable;
    variablesBefore_[i + 1] = variablesBefore_[i] + (isVariable ? 1 : 0);
    if (isVariable && tree_.slice(tree_.nodes[i]).substr(0, 2) == "__") {
      variablesMayBeBound_ = true;
    }
  }
}

void RewritePass::rebuild(const MXRewriteRule& rule, TreeBuilder& out) {
  auto next = matched_.rbegin();
  for (std::uint32_t i = tree_.begin(); i <= tree_.root; ++i) {
    if (next != matched_.rend() && i == *next + 1 - tree_.nodes[*next].size) {
      bindings_.assign(rule.slotCount(), TreeView{});
      rule.match(tree_.at(*next), bindings_);
      rule.instantiatePattern(bindings_, out);
      i = *next++;
      continue;
    }
    const ExpressionNode& node = tree_.nodes[i];
    if (node.kind != NodeKind::function) {
      out.addCopy(tree_.at(i));
      continue;
    }
    out.addFunctionLike(tree_, node);
  }
}

}  // namespace tarnkit::detail
