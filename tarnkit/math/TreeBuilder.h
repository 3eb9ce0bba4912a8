#pragma once

#include <cassert>
#include <string>
#include <string_view>

#include "tarnkit/math/ExpressionTree.h"
#include "tarnkit/math/SmallStack.h"
#include "tarnkit/math/TreeMemory.h"

namespace tarnkit::detail {

/// Collects the nodes of a tree in postorder. Small trees need no memory from the heap until they
/// are made into an expression; they can be evaluated where they stand.
class TreeBuilder {
 public:
  static constexpr std::size_t kInlineNodes = 48;

  /// `text` is what slices of the nodes refer to, and must outlive the builder.
  explicit TreeBuilder(std::string_view text = {}) noexcept : text_(text) {}

  std::uint32_t count() const noexcept { return static_cast<std::uint32_t>(nodes_.size()); }
  const ExpressionNode& node(std::uint32_t index) const noexcept { return nodes_[index]; }
  ExpressionNode& node(std::uint32_t index) noexcept { return nodes_[index]; }
  /// The tree whose root was added last.
  TreeView view() const noexcept {
    assert(count() > 0);
    return {nodes_.data(), count() - 1, text_.data(), text_.size(), moreText_.data()};
  }
  const TreeSummary& summary() const noexcept { return summary_; }
  /// The text that the nodes' slices refer to comes in two runs.
  std::string_view text() const noexcept { return text_; }
  std::string_view moreText() const noexcept { return moreText_; }
  /// Whether a place in the text is one in what the engine was given.
  bool isTextSource() const noexcept { return isTextSource_; }
  void setTextIsSource(bool is) noexcept { isTextSource_ = is; }
  /// Whether the nodes stand in what `reserve` made, and it has room for the texts.
  bool hasMemory() const noexcept {
    return memory_.holds(nodes_.size(), text_.size() + moreText_.size()) &&
           nodes_.data() == memory_.nodes();
  }
  TreeMemory takeMemory() noexcept { return std::move(memory_); }
  void clear() noexcept;
  /// Makes room, where the number of nodes can be guessed, in memory that an expression can take
  /// over. While empty.
  void reserve(std::size_t nodes);

  /// Keeps a text and answers where slices find it.
  std::uint32_t keep(std::string_view text);

  void addNumber(double value) {
    ExpressionNode& node = add(NodeKind::number, Builtin::none, 0, 1, 0, 0);
    node.number = value;
  }
  void addLiteral(double value, std::uint32_t offset, std::uint32_t length) {
    ExpressionNode& node =
        add(NodeKind::number, Builtin::none, ExpressionNode::kLiteral, 1, offset, length);
    node.number = value;
  }
  void addNumber(const MXNumber& number);
  void addVariable(std::uint32_t offset, std::uint32_t length) {
    ExpressionNode& node = add(NodeKind::variable, Builtin::none, 0, 1, offset, length);
    node.number = 0;
    node.ordinal = summary_.variableCount++;
  }
  /// A function of the `arguments` subtrees that were added last, `nodes` nodes together, with a
  /// slice for its name.
  void addFunction(Builtin builtin, std::uint32_t arguments, std::uint32_t nodes,
                   std::uint32_t offset, std::uint32_t length) {
    addFunction(builtin, 0, arguments, nodes, offset, length);
  }
  /// The same, with the name of the table.
  void addBuiltin(Builtin builtin, std::uint32_t arguments, std::uint32_t nodes) {
    addFunction(builtin, ExpressionNode::kTableName, arguments, nodes, 0, 0);
  }
  /// As either, with the name and the number of arguments of a node of another tree.
  void addFunctionLike(const TreeView& other, const ExpressionNode& node) {
    addFunctionLike(other, node, nodesOfLast(node.argumentCount));
  }
  /// A built-in, or another function by its name.
  void addNamed(Builtin builtin, std::string_view name, std::uint32_t arguments,
                std::uint32_t nodes);
  /// An operator's two or one operands, which were added last.
  void addBinary(Builtin builtin, std::string_view name) {
    const std::uint32_t right = nodes_.back().size;
    addNamed(builtin, name, 2, right + nodes_[nodes_.size() - 1 - right].size);
  }
  void addBinary(Builtin builtin) {
    const std::uint32_t right = nodes_.back().size;
    addBuiltin(builtin, 2, right + nodes_[nodes_.size() - 1 - right].size);
  }
  void addUnary(Builtin builtin) { addBuiltin(builtin, 1, nodes_.back().size); }
  void addUnary(Builtin builtin, std::string_view name) {
    addNamed(builtin, name, 1, nodes_.back().size);
  }
  /// How many nodes the subtrees that were added last have together.
  std::uint32_t nodesOfLast(std::uint32_t subtrees) const noexcept {
    std::uint32_t nodes = 0;
    for (; subtrees > 0; --subtrees) nodes += nodes_[nodes_.size() - 1 - nodes].size;
    return nodes;
  }
  /// A copy of a subtree of another tree.
  void addCopy(const TreeView& other);
  /// Takes the last subtrees away again.
  void drop(std::uint32_t nodes, std::uint32_t subtrees) noexcept;

 private:
  void addNumber(double value, std::uint16_t flags, std::string_view slice);
  void addFunctionLike(const TreeView& other, const ExpressionNode& node, std::uint32_t nodes);
  ExpressionNode& add(NodeKind kind, Builtin builtin, std::uint16_t flags, std::uint32_t size,
                      std::uint32_t offset, std::uint32_t length) {
    if (++depth_ > summary_.stackDepth) summary_.stackDepth = depth_;
    ExpressionNode& node = nodes_.add();
    node.kind = kind;
    node.builtin = builtin;
    node.flags = flags;
    node.size = size;
    node.textOffset = offset;
    node.textLength = length;
    return node;
  }
  void addFunction(Builtin builtin, std::uint16_t flags, std::uint32_t arguments,
                   std::uint32_t nodes, std::uint32_t offset, std::uint32_t length) {
    assert(arguments <= depth_ && nodes == nodesOfLast(arguments));
    if (!isPlainCall(builtin, arguments)) summary_.isPlain = false;
    if (builtin <= Builtin::subtract && builtin != Builtin::none && arguments == 2 &&
        nodes_.back().isFunction(Builtin::percent)) {
      nodes_.back().flags |= ExpressionNode::kPercentOfFirst;
    }
    depth_ -= arguments;
    ExpressionNode& node = add(NodeKind::function, builtin, flags, nodes + 1, offset, length);
    node.number = 0;
    node.argumentCount = arguments;
  }

  std::string_view text_;
  std::string moreText_;
  std::uint32_t depth_ = 0;
  bool isTextSource_ = true;
  TreeSummary summary_;
  TreeMemory memory_;
  SmallStack<ExpressionNode, kInlineNodes> nodes_;
};

}  // namespace tarnkit::detail
