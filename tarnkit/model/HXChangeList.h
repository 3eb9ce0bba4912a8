#pragma once

#include <cstddef>
#include <iterator>
#include <memory>
#include <utility>

#include "tarnkit/model/HXChange.h"

namespace tarnkit {

/// Changes in the order in which they happened. The list owns them; each stands in one list at most
/// and is itself a link of it, so that keeping a change takes no memory beside it. For one thread.
/// Everything takes constant time but the end of the list.
class HXChangeList {
 public:
  HXChangeList() noexcept = default;
  HXChangeList(HXChangeList&& other) noexcept { swap(other); }
  HXChangeList& operator=(HXChangeList&& other) noexcept {
    HXChangeList taken(std::move(other));
    swap(taken);
    return *this;
  }
  /// The newest change goes first: what a change holds may hang on what an earlier one holds.
  ~HXChangeList() { clear(); }

  bool isEmpty() const noexcept { return !first_; }
  std::size_t count() const noexcept { return count_; }
  /// The oldest and the newest change; null for none.
  HXChange* first() const noexcept { return first_; }
  HXChange* last() const noexcept { return last_; }
  static HXChange* after(const HXChange& change) noexcept { return change.next_; }
  static HXChange* before(const HXChange& change) noexcept { return change.previous_; }

  void append(std::unique_ptr<HXChange> change) noexcept {
    HXChange* const added = change.release();
    added->previous_ = last_;
    (last_ ? last_->next_ : first_) = added;
    last_ = added;
    ++count_;
  }
  /// Null for none.
  std::unique_ptr<HXChange> takeFirst() noexcept { return take(first_); }
  std::unique_ptr<HXChange> takeLast() noexcept { return take(last_); }
  /// A change of this list.
  std::unique_ptr<HXChange> take(HXChange* change) noexcept;
  void clear() noexcept {
    while (last_) takeLast();
  }

  /// From the oldest change to the newest one.
  class Iterator {
   public:
    using iterator_category = std::input_iterator_tag;
    using value_type = HXChange;
    using difference_type = std::ptrdiff_t;
    using pointer = HXChange*;
    using reference = HXChange&;

    explicit Iterator(HXChange* change) noexcept : change_(change) {}
    HXChange& operator*() const noexcept { return *change_; }
    Iterator& operator++() noexcept {
      change_ = after(*change_);
      return *this;
    }
    Iterator operator++(int) noexcept {
      const Iterator before = *this;
      ++*this;
      return before;
    }
    bool operator==(const Iterator&) const noexcept = default;

   private:
    HXChange* change_;
  };
  Iterator begin() const noexcept { return Iterator(first_); }
  Iterator end() const noexcept { return Iterator(nullptr); }

 private:
  void swap(HXChangeList& other) noexcept;

  HXChange* first_ = nullptr;
  HXChange* last_ = nullptr;
  std::size_t count_ = 0;
};

}  // namespace tarnkit
