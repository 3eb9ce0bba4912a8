#include "tarnkit/math/ExpressionTree.h"

namespace tarnkit::detail {

const Class VariableNames::kClass{"_MXVariableNames", &Object::kClass};

VariableNames::VariableNames(const ExpressionTree& tree)
    : names_(std::make_unique<String[]>(tree.summary.variableCount)) {
  const TreeView view = tree.view(tree.nodeCount - 1);
  for (std::uint32_t i = 0; i < tree.nodeCount; ++i) {
    const ExpressionNode& node = view.nodes[i];
    if (node.kind == NodeKind::variable) names_[node.ordinal] = String(view.slice(node));
  }
}

}  // namespace tarnkit::detail
