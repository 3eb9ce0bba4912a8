#pragma once

#include <cassert>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <type_traits>

namespace tarnkit::detail {

/// A growing run of plain records whose first `N` need no memory from the heap, or which fills what
/// somebody else has. One owner, no copies; appending is amortised constant time.
///
/// For stacks of a moment that mostly stay small; `RawBuffer` of the property lists is for the
/// bytes of a whole file: it moves, hands out room that is filled later, and grows by a quarter.
template <class T, std::size_t N>
class SmallStack {
  static_assert(std::is_trivially_copyable_v<T>);

 public:
  SmallStack() noexcept = default;
  SmallStack(const SmallStack&) = delete;
  SmallStack& operator=(const SmallStack&) = delete;

  T* data() noexcept { return data_; }
  const T* data() const noexcept { return data_; }
  std::size_t size() const noexcept { return size_; }
  bool empty() const noexcept { return size_ == 0; }
  T& operator[](std::size_t index) noexcept {
    assert(index < size_);
    return data_[index];
  }
  const T& operator[](std::size_t index) const noexcept {
    assert(index < size_);
    return data_[index];
  }
  T& back() noexcept { return (*this)[size_ - 1]; }
  const T& back() const noexcept { return (*this)[size_ - 1]; }
  void push(const T& value) {
    if (size_ == capacity_) grow(size_ + 1);
    data_[size_++] = value;
  }
  /// Room for one more record, to be filled in place: a record that is put together elsewhere and
  /// then copied waits for its own stores.
  T& add() {
    if (size_ == capacity_) grow(size_ + 1);
    return data_[size_++];
  }
  void append(const T* values, std::size_t count) {
    if (size_ + count > capacity_) grow(size_ + count);
    if (count != 0) std::memcpy(data_ + size_, values, count * sizeof(T));
    size_ += count;
  }
  /// Fills memory of somebody else's, which outlives this, as long as it suffices. While empty.
  void use(T* memory, std::size_t capacity) noexcept {
    assert(empty() && !heap_);
    data_ = memory;
    capacity_ = capacity;
  }
  void pop() noexcept {
    assert(size_ > 0);
    --size_;
  }
  void resize(std::size_t size) {
    if (size > capacity_) grow(size);
    size_ = size;
  }
  void clear() noexcept { size_ = 0; }

 private:
  [[gnu::noinline, gnu::cold]] void grow(std::size_t needed) {
    const std::size_t capacity = needed > capacity_ * 2 ? needed : capacity_ * 2;
    // Large runs are moved by the system without being copied.
    void* const fresh = std::realloc(heap_.get(), capacity * sizeof(T));
    if (!fresh) throw std::bad_alloc();
    if (!heap_) std::memcpy(fresh, data_, size_ * sizeof(T));
    (void)heap_.release();
    data_ = static_cast<T*>(fresh);
    heap_.reset(data_);
    capacity_ = capacity;
  }
  struct Release {
    void operator()(T* memory) const noexcept { std::free(memory); }
  };

  alignas(T) unsigned char inline_[N * sizeof(T)];
  T* data_ = reinterpret_cast<T*>(inline_);
  std::size_t size_ = 0;
  std::size_t capacity_ = N;
  std::unique_ptr<T, Release> heap_;
};

}  // namespace tarnkit::detail
