#include "tarnkit/math/TreeBuilder.h"

#include <cassert>
#include <limits>
#include <stdexcept>

namespace tarnkit::detail {

void TreeBuilder::clear() noexcept {
  nodes_.clear();
  moreText_.clear();
  depth_ = 0;
  summary_ = {};
}

void TreeBuilder::reserve(std::size_t nodes) {
  memory_ = TreeMemory(nodes, text_.size());
  nodes_.use(memory_.nodes(), nodes);
}

std::uint32_t TreeBuilder::keep(std::string_view text) {
  const std::size_t offset = text_.size() + moreText_.size();
  if (offset + text.size() > std::numeric_limits<std::uint32_t>::max()) {
    throw std::length_error("an expression of more than four gigabytes of names");
  }
  moreText_.append(text);
  return static_cast<std::uint32_t>(offset);
}

void TreeBuilder::addNumber(const MXNumber& number) {
  if (!number.isDecimal()) {
    addNumber(number.doubleValue());
    return;
  }
  const auto* const bytes = reinterpret_cast<const char*>(&number);
  addNumber(number.doubleValue(), ExpressionNode::kDecimal, {bytes, sizeof number});
}

void TreeBuilder::addNumber(double value, std::uint16_t flags, std::string_view slice) {
  const auto length = static_cast<std::uint32_t>(slice.size());
  add(NodeKind::number, Builtin::none, flags, 1, keep(slice), length).number = value;
}

void TreeBuilder::addFunctionLike(const TreeView& other, const ExpressionNode& node,
                                  std::uint32_t nodes) {
  const std::uint32_t arguments = node.argumentCount;
  if ((node.flags & ExpressionNode::kTableName) != 0) {
    addBuiltin(node.builtin, arguments, nodes);
  } else {
    const auto name = other.slice(node);
    addFunction(node.builtin, arguments, nodes, keep(name),
                static_cast<std::uint32_t>(name.size()));
  }
}

void TreeBuilder::addNamed(Builtin builtin, std::string_view name, std::uint32_t arguments,
                           std::uint32_t nodes) {
  if (builtin != Builtin::none && builtinFunction(builtin).name == name) {
    addBuiltin(builtin, arguments, nodes);
  } else {
    addFunction(builtin, arguments, nodes, keep(name), static_cast<std::uint32_t>(name.size()));
  }
}

void TreeBuilder::addCopy(const TreeView& other) {
  for (std::uint32_t i = other.begin(); i <= other.root; ++i) {
    const ExpressionNode& node = other.nodes[i];
    switch (node.kind) {
      case NodeKind::number:
        if (node.flags == 0) {
          addNumber(node.number);
        } else {
          addNumber(node.number, node.flags, other.slice(node));
        }
        break;
      case NodeKind::variable: {
        const auto name = other.slice(node);
        addVariable(keep(name), static_cast<std::uint32_t>(name.size()));
        break;
      }
      case NodeKind::function:
        addFunctionLike(other, node, node.size - 1);
        break;
    }
  }
}

void TreeBuilder::drop(std::uint32_t nodes, std::uint32_t subtrees) noexcept {
  assert(nodes <= nodes_.size() && subtrees <= depth_ && nodes == nodesOfLast(subtrees));
  nodes_.resize(nodes_.size() - nodes);
  depth_ -= subtrees;
}

}  // namespace tarnkit::detail
