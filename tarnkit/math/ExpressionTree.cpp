#include "tarnkit/math/ExpressionTree.h"

#include <cstring>
#include <memory>

namespace tarnkit::detail {

const Class ExpressionTree::kClass{"_MXExpressionTree", &Object::kClass};

Ref<ExpressionTree> ExpressionTree::make(const ExpressionNode* nodes, std::size_t count,
                                         std::string_view text, std::string_view moreText,
                                         const TreeSummary& summary) {
  const std::size_t textSize = text.size() + moreText.size();
  const std::size_t nodeBytes = count * sizeof(ExpressionNode);
  auto tree = Ref<ExpressionTree>::adopt(new (nodeBytes + textSize)
                                             ExpressionTree(count, textSize, summary));
  auto* target = reinterpret_cast<char*>(tree.get() + 1);
  std::memcpy(target, nodes, nodeBytes);
  if (!text.empty()) std::memcpy(target + nodeBytes, text.data(), text.size());
  if (!moreText.empty()) {
    std::memcpy(target + nodeBytes + text.size(), moreText.data(), moreText.size());
  }
  auto& root = reinterpret_cast<ExpressionNode*>(target)[count - 1];
  root.flags = static_cast<std::uint16_t>(root.flags & ~ExpressionNode::kPercentOfFirst);
  return tree;
}

ExpressionTree::~ExpressionTree() { delete[] variableNames_.load(std::memory_order_acquire); }

const String& ExpressionTree::variableName(const ExpressionNode& node) const {
  auto* names = variableNames_.load(std::memory_order_acquire);
  if (!names) {
    auto fresh = std::make_unique<String[]>(summary_.variableCount);
    const TreeView whole = view(nodeCount_ - 1);
    for (std::uint32_t i = 0; i < nodeCount_; ++i) {
      const ExpressionNode& each = nodes()[i];
      if (each.kind == NodeKind::variable) fresh[each.ordinal] = String(whole.slice(each));
    }
    if (variableNames_.compare_exchange_strong(names, fresh.get(), std::memory_order_acq_rel)) {
      names = fresh.release();
    }
  }
  return names[node.ordinal];
}

}  // namespace tarnkit::detail
