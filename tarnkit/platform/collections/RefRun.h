#pragma once

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <span>
#include <utility>

#include "tarnkit/platform/objects/BlockPool.h"
#include "tarnkit/platform/objects/Ref.h"

namespace tarnkit::detail {

/// Owned objects in order, for what mostly holds none or one: that one stands in the run itself,
/// which takes a word and a byte (and, as a member with `[[no_unique_address]]`, leaves the rest of
/// the second word to the members after it). No object is null. Adding takes constant time on
/// average, removing costs the number of objects. Not for concurrent use.
template <class T>
class RefRun {
 public:
  RefRun() noexcept : one_() {}
  RefRun(const RefRun&) = delete;
  RefRun& operator=(const RefRun&) = delete;
  ~RefRun() { clear(); }

  /// Valid until the run changes.
  std::span<const Ref<T>> span() const noexcept {
    if (isMany_) return {entriesOf(many_), many_->count};
    return {&one_, one_ ? std::size_t{1} : 0};
  }

  void append(Ref<T> object) {
    assert(object);
    if (!isMany_ && !one_) {
      one_ = std::move(object);
      return;
    }
    const std::uint32_t count = isMany_ ? many_->count : 1;
    if (!isMany_ || count == many_->capacity) grow(count * 2);
    ::new (entriesOf(many_) + count) Ref<T>(std::move(object));
    ++many_->count;
  }
  /// The position is one of the run's.
  void remove(std::size_t position) noexcept {
    assert(position < span().size());
    if (!isMany_) {
      one_ = nullptr;
      return;
    }
    Ref<T>* const entries = entriesOf(many_);
    std::move(entries + position + 1, entries + many_->count, entries + position);
    std::destroy_at(entries + --many_->count);
  }
  void clear() noexcept {
    if (!isMany_) {
      one_ = nullptr;
      return;
    }
    Many* const old = many_;
    std::construct_at(&one_);
    isMany_ = false;
    std::destroy_n(entriesOf(old), old->count);
    discard(old);
  }

 private:
  // Stands before the objects.
  struct Many {
    std::uint32_t count;
    std::uint32_t capacity;
  };
  static_assert(alignof(Many) <= alignof(std::uint64_t) && sizeof(Many) % alignof(Ref<T>) == 0);

  static Ref<T>* entriesOf(Many* many) noexcept { return reinterpret_cast<Ref<T>*>(many + 1); }
  static std::size_t bytesOf(std::uint32_t capacity) noexcept {
    return sizeof(Many) + std::size_t{capacity} * sizeof(Ref<T>);
  }
  static void discard(Many* many) noexcept { BlockPool::release(many, bytesOf(many->capacity)); }

  void grow(std::uint32_t capacity) {
    auto* const fresh = ::new (BlockPool::allocate(bytesOf(capacity))) Many{0, capacity};
    if (isMany_) {
      fresh->count = many_->count;
      std::uninitialized_move_n(entriesOf(many_), many_->count, entriesOf(fresh));
      std::destroy_n(entriesOf(many_), many_->count);
      discard(many_);
    } else {
      fresh->count = 1;
      ::new (entriesOf(fresh)) Ref<T>(std::move(one_));
      std::destroy_at(&one_);
    }
    many_ = fresh;
    isMany_ = true;
  }

  union {
    Ref<T> one_;  // null: there is none
    Many* many_;
  };
  bool isMany_ = false;
};

}  // namespace tarnkit::detail
