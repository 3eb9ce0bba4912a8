#pragma once

#include <atomic>
#include <cstdint>
#include <string_view>

#include "tarnkit/math/BuiltinFunctions.h"
#include "tarnkit/math/MXNumber.h"
#include "tarnkit/platform/Object.h"

namespace tarnkit::detail {

enum class NodeKind : std::uint8_t { number = 0, function = 1, variable = 2 };

/// One node of a tree that is laid out in postorder: the arguments of a function stand right before
/// it, the last one's root at the index before its own. Plain memory, copied in runs.
struct ExpressionNode {
  /// The number was written in a text; the slice holds its decimal digits.
  static constexpr std::uint16_t kLiteral = 1;
  /// The function's name is that of its row in the table of built-ins; there is no slice.
  static constexpr std::uint16_t kTableName = 2;
  /// A percentage that is the second argument of an addition or a subtraction.
  static constexpr std::uint16_t kPercentOfFirst = 4;

  NodeKind kind;
  Builtin builtin;  // of a function: resolved once, when the node is made
  std::uint16_t flags;
  std::uint32_t size;  // nodes of the subtree, this one included
  union {
    double number;
    std::uint32_t argumentCount;
    std::uint32_t ordinal;  // of a variable: how many variable nodes stand before it
  };
  std::uint32_t textOffset;
  std::uint32_t textLength;

  bool isFunction(Builtin which) const noexcept {
    return kind == NodeKind::function && builtin == which;
  }
};
static_assert(sizeof(ExpressionNode) == 24);

/// A tree as its algorithms see it: nodes in postorder, the index of a root, and the text that the
/// nodes' slices refer to (two runs, as a tree being built has them). Refers to memory of others.
struct TreeView {
  const ExpressionNode* nodes = nullptr;
  std::uint32_t root = 0;
  const char* text = nullptr;
  std::size_t textSize = 0;
  const char* moreText = nullptr;

  const ExpressionNode& top() const noexcept { return nodes[root]; }
  std::uint32_t begin() const noexcept { return root + 1 - nodes[root].size; }
  TreeView at(std::uint32_t index) const noexcept {
    TreeView other = *this;
    other.root = index;
    return other;
  }
  std::string_view slice(const ExpressionNode& node) const noexcept {
    const char* const from = node.textOffset < textSize ? text + node.textOffset
                                                        : moreText + (node.textOffset - textSize);
    return {from, node.textLength};
  }
  /// A variable's name, or a function's name as written.
  std::string_view name(const ExpressionNode& node) const noexcept {
    return (node.flags & ExpressionNode::kTableName) != 0 ? builtinFunction(node.builtin).name
                                                          : slice(node);
  }
  MXNumber number(const ExpressionNode& node) const {
    return (node.flags & ExpressionNode::kLiteral) != 0
               ? MXNumber::fromDigits(slice(node), node.number)
               : MXNumber(node.number);
  }
};

/// What is known of a whole tree.
struct TreeSummary {
  std::uint32_t stackDepth = 0;
  std::uint32_t variableCount = 0;
  /// Every function is a built-in with a fitting number of arguments that computes from their
  /// values.
  bool isPlain = true;
};

/// An immutable tree in one block: nodes and text. Shared by the expression objects made from it;
/// read by any thread.
class ExpressionTree final : public Object {
  TARNKIT_CLASS
 public:
  /// Copies nodes and text; the tree's root is the last node.
  static Ref<ExpressionTree> make(const ExpressionNode* nodes, std::size_t count,
                                  std::string_view text, std::string_view moreText,
                                  const TreeSummary& summary);
  ~ExpressionTree() override;

  const ExpressionNode* nodes() const noexcept {
    return reinterpret_cast<const ExpressionNode*>(this + 1);
  }
  std::uint32_t nodeCount() const noexcept { return nodeCount_; }
  const TreeSummary& summary() const noexcept { return summary_; }
  TreeView view(std::uint32_t root) const noexcept {
    return {nodes(), root, characters(), textSize_, nullptr};
  }
  /// The name of a variable node as a string; made once for the tree.
  const String& variableName(const ExpressionNode& node) const;

 private:
  ExpressionTree(std::size_t count, std::size_t textSize, const TreeSummary& summary) noexcept
      : nodeCount_(static_cast<std::uint32_t>(count)), textSize_(textSize), summary_(summary) {}
  static void* operator new(std::size_t size, std::size_t extra) { return allocate(size, extra); }
  static void operator delete(void* object) noexcept { deallocate(object); }
  static void operator delete(void* object, std::size_t) noexcept { deallocate(object); }
  const char* characters() const noexcept {
    return reinterpret_cast<const char*>(nodes() + nodeCount_);
  }

  std::uint32_t nodeCount_;
  std::size_t textSize_;
  TreeSummary summary_;
  mutable std::atomic<String*> variableNames_{nullptr};
};
static_assert(alignof(ExpressionTree) >= alignof(ExpressionNode));

}  // namespace tarnkit::detail
