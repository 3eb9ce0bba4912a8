#include "tarnkit/math/TreeOperations.h"

#include <vector>

#include "tarnkit/math/MathText.h"

namespace tarnkit::detail {

bool functionNamesEqual(const TreeView& a, const TreeView& b) {
  const ExpressionNode& mine = a.top();
  const ExpressionNode& theirs = b.top();
  if (mine.builtin != theirs.builtin) return false;
  return mine.builtin != Builtin::none || a.name(mine) == b.name(theirs) ||
         functionName(a) == functionName(b);
}

bool nodesEqual(const TreeView& a, const TreeView& b) {
  const ExpressionNode& mine = a.top();
  const ExpressionNode& theirs = b.top();
  if (mine.kind != theirs.kind) return false;
  switch (mine.kind) {
    case NodeKind::number:
      // Where the doubles tell the numbers apart, their digits need not be looked at.
      if (mine.number < theirs.number || mine.number > theirs.number) return false;
      return a.number(mine) == b.number(theirs);
    case NodeKind::variable:
      return a.slice(mine) == b.slice(theirs);
    case NodeKind::function:
      break;
  }
  return mine.argumentCount == theirs.argumentCount && functionNamesEqual(a, b);
}

bool treesEqual(const TreeView& a, const TreeView& b) {
  const std::uint32_t size = a.top().size;
  if (b.top().size != size) return false;
  // Nodes in postorder with their numbers of arguments determine the tree.
  for (std::uint32_t i = 0; i < size; ++i) {
    if (!nodesEqual(a.at(a.root - i), b.at(b.root - i))) return false;
  }
  return true;
}

std::uint64_t nodeHash(const TreeView& tree) {
  const ExpressionNode& top = tree.top();
  switch (top.kind) {
    case NodeKind::number:
      return MXNumber(top.number).hash();
    case NodeKind::variable:
      return String(tree.slice(top)).hash();
    case NodeKind::function:
      break;
  }
  return String(functionName(tree)).hash();
}

std::string functionName(const TreeView& tree) {
  const ExpressionNode& top = tree.top();
  return top.builtin != Builtin::none ? std::string(builtinFunction(top.builtin).name)
                                      : lowerCase(tree.name(top));
}

std::string treeDescription(const TreeView& tree) {
  constexpr std::uint32_t kText = 0xFFFFFFFFU;
  struct Step {
    std::uint32_t node;
    char text;
  };
  std::string text;
  std::vector<Step> steps{{tree.root, 0}};
  while (!steps.empty()) {
    const Step step = steps.back();
    steps.pop_back();
    if (step.node == kText) {
      text += step.text;
      continue;
    }
    const ExpressionNode& node = tree.nodes[step.node];
    if (node.kind == NodeKind::number) {
      text += tree.number(node).text();
    } else if (node.kind == NodeKind::variable) {
      text += '$';
      text += tree.slice(node);
    } else {
      text += tree.name(node);
      text += '(';
      steps.push_back({kText, ')'});
      std::uint32_t child = step.node - 1;
      for (std::uint32_t i = node.argumentCount; i-- > 0;) {
        steps.push_back({child, 0});
        if (i > 0) steps.push_back({kText, ','});
        child = tree.argumentBefore(child);
      }
    }
  }
  return text;
}

}  // namespace tarnkit::detail
