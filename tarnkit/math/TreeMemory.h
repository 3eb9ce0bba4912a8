#pragma once

#include <cstddef>
#include <utility>

#include "tarnkit/math/ExpressionTree.h"

namespace tarnkit::detail {

/// Memory for a function expression with the tree behind it, before the expression is made: a long
/// tree is built where it is going to stay. Owned by the builder; given to the expression or freed.
class TreeMemory {
 public:
  TreeMemory() noexcept = default;
  /// Room for so many nodes with so many bytes of text.
  TreeMemory(std::size_t nodes, std::size_t text);
  TreeMemory(TreeMemory&& other) noexcept
      : object_(std::exchange(other.object_, nullptr)), bytes_(other.bytes_) {}
  TreeMemory& operator=(TreeMemory other) noexcept {
    std::swap(object_, other.object_);
    std::swap(bytes_, other.bytes_);
    return *this;
  }
  ~TreeMemory();

  /// Where the nodes go; null without memory.
  ExpressionNode* nodes() const noexcept;
  /// Whether so many nodes with so many bytes of text find room.
  bool holds(std::size_t nodes, std::size_t text) const noexcept {
    return object_ && nodes * sizeof(ExpressionNode) + text <= bytes_;
  }
  /// Where the expression goes; the memory is the caller's now.
  void* release() noexcept { return std::exchange(object_, nullptr); }

 private:
  void* object_ = nullptr;
  std::size_t bytes_ = 0;
};

}  // namespace tarnkit::detail
