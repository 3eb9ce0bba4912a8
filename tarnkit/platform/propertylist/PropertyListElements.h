#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>

#include "tarnkit/platform/propertylist/PropertyListEncoding.h"

namespace tarnkit {

/// What a container of a property list holds: the indices of its elements, read where they stand,
/// as wide as the file has them. A view, valid as long as its list and the bytes that were read;
/// each index costs one load.
class PropertyListElements {
 public:
  using Index = std::uint32_t;

  class iterator {
   public:
    using iterator_category = std::input_iterator_tag;
    using value_type = Index;
    using difference_type = std::ptrdiff_t;
    using pointer = const Index*;
    using reference = Index;

    iterator(const std::uint8_t* at, unsigned width) noexcept : at_(at), width_(width) {}
    Index operator*() const noexcept {
      return static_cast<Index>(detail::readWidth(at_, detail::shiftOfWidth(width_)));
    }
    iterator& operator++() noexcept {
      at_ += width_;
      return *this;
    }
    iterator operator++(int) noexcept {
      const iterator before = *this;
      ++*this;
      return before;
    }
    bool operator==(const iterator& other) const noexcept { return at_ == other.at_; }

   private:
    const std::uint8_t* at_;
    unsigned width_;
  };

  PropertyListElements() noexcept = default;
  /// 8 bytes may be read from each element on.
  PropertyListElements(const std::uint8_t* first, std::uint32_t count, unsigned width) noexcept
      : first_(first), count_(count), width_(width) {}

  std::size_t size() const noexcept { return count_; }
  bool empty() const noexcept { return count_ == 0; }
  Index operator[](std::size_t at) const noexcept {
    return static_cast<Index>(
        detail::readWidth(first_ + at * width_, detail::shiftOfWidth(width_)));
  }
  PropertyListElements first(std::size_t count) const noexcept {
    return {first_, static_cast<std::uint32_t>(count), width_};
  }
  iterator begin() const noexcept { return {first_, width_}; }
  iterator end() const noexcept { return {first_ + std::size_t{count_} * width_, width_}; }

 private:
  const std::uint8_t* first_ = nullptr;
  std::uint32_t count_ = 0;
  unsigned width_ = 1;
};

}  // namespace tarnkit
