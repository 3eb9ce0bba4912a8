#pragma once

#include <cstddef>
#include <cstdlib>
#include <new>
#include <type_traits>
#include <utility>

#include "tarnkit/platform/objects/HugePages.h"

namespace tarnkit::detail {

/// A growing run of plain values that never initialises what it hands out and grows in place where
/// the system allows: large buffers grow by a quarter, so little more is held than is used. For
/// what may be as large as a file; short-lived stacks that mostly stay small are `SmallStack`s.
template <class T>
class RawBuffer {
  static_assert(std::is_trivially_copyable_v<T>);

 public:
  RawBuffer() noexcept = default;
  RawBuffer(RawBuffer&& other) noexcept
      : data_(std::exchange(other.data_, nullptr)),
        size_(std::exchange(other.size_, 0)),
        capacity_(std::exchange(other.capacity_, 0)) {}
  RawBuffer& operator=(RawBuffer&& other) noexcept {
    std::swap(data_, other.data_);
    std::swap(size_, other.size_);
    std::swap(capacity_, other.capacity_);
    return *this;
  }
  ~RawBuffer() { std::free(data_); }

  std::size_t size() const noexcept { return size_; }
  T* data() noexcept { return data_; }
  const T* data() const noexcept { return data_; }
  T& operator[](std::size_t index) noexcept { return data_[index]; }
  const T& operator[](std::size_t index) const noexcept { return data_[index]; }

  /// Makes room for `count` more values and returns where they go; `size` does not change.
  T* room(std::size_t count) {
    if (count > capacity_ - size_) grow(count);
    return data_ + size_;
  }
  /// Counts values that were written to the room as part of the buffer.
  void commit(std::size_t count) noexcept { size_ += count; }
  void append(const T& value) {
    *room(1) = value;
    ++size_;
  }
  void truncate(std::size_t size) noexcept { size_ = size; }
  /// Gives the memory back.
  void clear() noexcept {
    std::free(std::exchange(data_, nullptr));
    size_ = capacity_ = 0;
  }

 private:
  void grow(std::size_t count) {
    constexpr std::size_t kLarge = (std::size_t{1} << 20) / sizeof(T);
    std::size_t capacity = capacity_ + (capacity_ < kLarge ? capacity_ : capacity_ / 4);
    if (capacity < size_ + count) capacity = size_ + count;
    if (capacity < 64) capacity = 64;
    void* const memory = std::realloc(data_, capacity * sizeof(T));
    if (!memory) throw std::bad_alloc();
    data_ = static_cast<T*>(memory);
    capacity_ = capacity;
    adviseHugePages(data_, capacity * sizeof(T));
  }

  T* data_ = nullptr;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};

}  // namespace tarnkit::detail
