#pragma once

#include <cassert>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>
#include <type_traits>

#include "tarnkit/math/BuiltinFunctions.h"
#include "tarnkit/math/MXNumber.h"
#include "tarnkit/platform/objects/Object.h"
#include "tarnkit/platform/text/String.h"

namespace tarnkit::detail {

enum class NodeKind : std::uint8_t { number = 0, function = 1, variable = 2 };

/// One node of a tree that is laid out in postorder: the arguments of a function stand right before
/// it, the last one's root at the index before its own. Plain memory, copied in runs.
struct ExpressionNode {
  /// The number was written in a text; the slice is that text.
  static constexpr std::uint16_t kLiteral = 1;
  /// The function's name is that of its row in the table of built-ins; there is no slice.
  static constexpr std::uint16_t kTableName = 2;
  /// A percentage that is the second argument of an addition or a subtraction.
  static constexpr std::uint16_t kPercentOfFirst = 4;
  /// The number is a decimal; the slice holds the bytes of the `MXNumber`.
  static constexpr std::uint16_t kDecimal = 8;

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
/// nodes' slices refer to (two runs: the text that the tree was read from, and what stands not in
/// it). Refers to memory of others.
struct TreeView {
  const ExpressionNode* nodes = nullptr;
  std::uint32_t root = 0;
  const char* text = nullptr;
  std::size_t textSize = 0;
  const char* moreText = nullptr;

  const ExpressionNode& top() const noexcept { return nodes[root]; }
  std::uint32_t begin() const noexcept { return beginOf(root); }
  /// Where the subtree of a node begins.
  std::uint32_t beginOf(std::uint32_t index) const noexcept {
    return index + 1 - nodes[index].size;
  }
  /// The argument that stands before another one of the same function; the last argument stands
  /// right before the function itself.
  std::uint32_t argumentBefore(std::uint32_t argument) const noexcept {
    return argument - nodes[argument].size;
  }
  TreeView at(std::uint32_t index) const noexcept {
    TreeView other = *this;
    other.root = index;
    return other;
  }
  std::string_view slice(const ExpressionNode& node) const noexcept {
    assert(moreText || node.textOffset + std::size_t{node.textLength} <= textSize);
    const char* const from = node.textOffset < textSize ? text + node.textOffset
                                                        : moreText + (node.textOffset - textSize);
    return {from, node.textLength};
  }
  /// Whether the slice of the node is a place in the text that the tree was read from.
  bool hasPlace(const ExpressionNode& node) const noexcept {
    return moreText && node.textLength > 0 && node.textOffset < textSize;
  }
  /// A variable's name, or a function's name as written.
  std::string_view name(const ExpressionNode& node) const noexcept {
    return (node.flags & ExpressionNode::kTableName) != 0 ? builtinFunction(node.builtin).name
                                                          : slice(node);
  }
  MXNumber number(const ExpressionNode& node) const noexcept {
    if ((node.flags & ExpressionNode::kLiteral) != 0) {
      return MXNumber::fromDigits(slice(node), node.number);
    }
    MXNumber number = node.number;
    if ((node.flags & ExpressionNode::kDecimal) != 0) {
      std::memcpy(&number, slice(node).data(), sizeof number);
    }
    return number;
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

/// An immutable tree in one block of memory: this head, its nodes, its text. It stands behind the
/// function expression that was made with it (see `TreeMemory`), and has nothing to be destroyed:
/// whoever refers to that expression weakly may read it. Read by any thread.
struct ExpressionTree {
  std::uint32_t nodeCount;
  TreeSummary summary;
  std::size_t sourceSize;  // of the text, how much the tree was read from

  const ExpressionNode* nodes() const noexcept {
    return reinterpret_cast<const ExpressionNode*>(this + 1);
  }
  /// The characters stand behind the nodes.
  TreeView view(std::uint32_t root) const noexcept {
    const char* const text = reinterpret_cast<const char*>(nodes() + nodeCount);
    return {nodes(), root, text, sourceSize, text + sourceSize};
  }
};
static_assert(alignof(ExpressionTree) >= alignof(ExpressionNode));
static_assert(std::is_trivially_destructible_v<ExpressionTree>);

/// The names of a tree's variables as strings, made once and shared by the expressions that stand
/// in the tree. Immutable.
class VariableNames final : public Object {
  TARNKIT_CLASS
 public:
  explicit VariableNames(const ExpressionTree& tree);
  /// The name of a variable node of the tree.
  const String& operator[](const ExpressionNode& node) const noexcept {
    return names_[node.ordinal];
  }

 private:
  std::unique_ptr<String[]> names_;
};

}  // namespace tarnkit::detail
