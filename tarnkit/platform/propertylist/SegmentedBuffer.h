#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdlib>
#include <new>
#include <type_traits>
#include <vector>

#include "tarnkit/platform/objects/BlockPool.h"
#include "tarnkit/platform/objects/HugePages.h"

namespace tarnkit::detail {

/// A growing run of plain values, found by position, that may become as large as a file: it never
/// initialises what it hands out, holds little more than is used, and never moves a value once it
/// has filled a segment. What must stand in one piece is given room in one piece; positions may be
/// left out before it. Finding costs one look at a table that stays in the cache.
template <class T>
class SegmentedBuffer {
  static_assert(std::is_trivially_copyable_v<T> && std::has_single_bit(sizeof(T)));

 public:
  SegmentedBuffer() noexcept = default;
  SegmentedBuffer(const SegmentedBuffer&) = delete;
  SegmentedBuffer& operator=(const SegmentedBuffer&) = delete;
  ~SegmentedBuffer() { clear(); }

  /// One more than the last position. As long as values were only appended, their number.
  std::size_t size() const noexcept { return size_; }
  T& operator[](std::size_t position) noexcept { return *at(position); }
  const T& operator[](std::size_t position) const noexcept { return *at(position); }
  /// What was given room in one piece stands there in one piece.
  T* at(std::size_t position) noexcept {
    return segments_[position / kSegmentSize] + position % kSegmentSize;
  }
  const T* at(std::size_t position) const noexcept {
    return segments_[position / kSegmentSize] + position % kSegmentSize;
  }

  /// Room for `count` values in one piece. It begins at `size()`, which may be another one than
  /// before.
  T* room(std::size_t count) {
    // No values have a place, too.
    if (count >= end_ - size_) makeRoom(count + 1);
    return next_;
  }
  /// Counts values that were written to the room as part of the buffer.
  void commit(std::size_t count) noexcept {
    size_ += count;
    next_ += count;
  }
  void append(const T& value) {
    if (size_ == end_) makeRoom(1);
    *next_ = value;
    commit(1);
  }
  /// Appends as many of the value as make it so long.
  void extend(std::size_t size, const T& value) {
    while (size_ < size) append(value);
  }
  /// Visits the values in order until a visit says false; whether none did. Of a buffer to which
  /// values were only appended.
  template <class Visit>
  bool forEach(Visit visit) const {
    for (std::size_t begin = 0; begin < size_; begin += kSegmentSize) {
      const T* const values = segments_[begin / kSegmentSize];
      const std::size_t count = std::min(kSegmentSize, size_ - begin);
      for (std::size_t i = 0; i < count; ++i) {
        if (!visit(values[i])) return false;
      }
    }
    return true;
  }
  /// Gives the memory back.
  void clear() noexcept {
    for (T* const segment : pooled_) BlockPool::releaseSegment(segment);
    for (T* const piece : pieces_) std::free(piece);
    segments_ = std::vector<T*>();
    pooled_ = std::vector<T*>();
    pieces_ = std::vector<T*>();
    next_ = nullptr;
    size_ = end_ = 0;
  }

 private:
  static constexpr std::size_t kSegmentSize = BlockPool::kSegment / sizeof(T);

  void makeRoom(std::size_t count) {
    if (segments_.size() <= 1 && size_ + count <= kSegmentSize) {
      growFirst(count);
    } else if (count <= kSegmentSize) {
      addSegment();
    } else {
      addPiece(count);
    }
  }
  // Most runs are short, so the first segment is as long as is needed.
  void growFirst(std::size_t count) {
    constexpr std::size_t kLeast = 64;
    const std::size_t capacity =
        std::min(kSegmentSize, std::max({kLeast, 2 * end_, size_ + count}));
    if (segments_.empty()) leaveOutFirst();
    void* const memory = std::realloc(pieces_.front(), capacity * sizeof(T));
    if (!memory) throw std::bad_alloc();
    segments_.front() = pieces_.front() = static_cast<T*>(memory);
    next_ = segments_.front() + size_;
    end_ = capacity;
  }
  void leaveOutFirst() {
    pieces_.push_back(nullptr);
    segments_.push_back(nullptr);
  }
  void addSegment() {
    pooled_.push_back(nullptr);
    pooled_.back() = static_cast<T*>(BlockPool::allocateSegment());
    begin(pooled_.back(), kSegmentSize);
  }
  // What is longer than a segment has the positions of as many segments as it touches.
  void addPiece(std::size_t count) {
    if (segments_.empty()) leaveOutFirst();
    pieces_.push_back(nullptr);
    auto* const memory = static_cast<T*>(std::malloc(count * sizeof(T)));
    if (!memory) throw std::bad_alloc();
    adviseHugePages(memory, count * sizeof(T));
    pieces_.back() = memory;
    begin(memory, count);
  }
  void begin(T* memory, std::size_t capacity) {
    const std::size_t start = segments_.size() * kSegmentSize;
    for (std::size_t at = 0; at < capacity; at += kSegmentSize) segments_.push_back(memory + at);
    size_ = start;
    end_ = start + capacity;
    next_ = memory;
  }

  std::vector<T*> segments_;  // where each begins
  std::vector<T*> pooled_;    // those that are given back to the pool
  std::vector<T*> pieces_;    // what was taken from the system: the first segment, and long pieces
  T* next_ = nullptr;         // the place of the position `size_`
  std::size_t size_ = 0;
  std::size_t end_ = 0;  // of the piece in which the last value stands
};

}  // namespace tarnkit::detail
