#pragma once

#include <cassert>
#include <iterator>
#include <type_traits>
#include <utility>

#include "tarnkit/platform/collections/OrderedSet.h"

namespace tarnkit {

/// The members of a set that holds objects of one class only, as what they are. A view: it lives no
/// longer than the set, which does not change meanwhile. See `membersOf`.
template <class T>
class MembersOf {
  using Place = decltype(std::declval<const OrderedSet&>().begin());

 public:
  class Iterator {
   public:
    using value_type = T;
    using difference_type = std::ptrdiff_t;
    using iterator_category = std::forward_iterator_tag;
    using pointer = T*;
    using reference = T&;
    Iterator() noexcept = default;
    explicit Iterator(Place at) noexcept : at_(at) {}
    T& operator*() const noexcept {
      assert((*at_)->isKindOf(std::remove_const_t<T>::kClass));
      return static_cast<T&>(**at_);
    }
    T* operator->() const noexcept { return &**this; }
    Iterator& operator++() noexcept {
      ++at_;
      return *this;
    }
    Iterator operator++(int) noexcept { return Iterator(at_++); }
    bool operator==(const Iterator&) const = default;

   private:
    Place at_;
  };

  explicit MembersOf(const OrderedSet& set) noexcept : begin_(set.begin()), end_(set.end()) {}
  Iterator begin() const noexcept { return begin_; }
  Iterator end() const noexcept { return end_; }

 private:
  Iterator begin_;
  Iterator end_;
};

/// `for (const auto& port : membersOf<HXRPort>(ports)) …`, of a set that whoever filled it put
/// nothing but ports into.
template <class T>
MembersOf<T> membersOf(const OrderedSet& set) noexcept {
  return MembersOf<T>(set);
}

}  // namespace tarnkit
