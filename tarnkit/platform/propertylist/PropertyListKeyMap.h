#pragma once

#include <vector>

#include "tarnkit/platform/propertylist/PropertyList.h"

namespace tarnkit {

/// A value for every key of a property list, by the key's number: one load a look-up. Belongs to
/// whoever makes it.
template <class T>
class PropertyListKeyMap {
 public:
  PropertyListKeyMap() = default;
  /// Every key of the list gets the value.
  PropertyListKeyMap(const PropertyList& list, const T& value)
      : hashed_(list.keyNumbers().hashedCount(), value),
        chained_(list.keyNumbers().chainedCount(), value) {}

  T& operator[](PropertyList::Key key) noexcept {
    return (Keys::isChained(key) ? chained_ : hashed_)[Keys::ordinalOf(key)];
  }
  const T& operator[](PropertyList::Key key) const noexcept {
    return (Keys::isChained(key) ? chained_ : hashed_)[Keys::ordinalOf(key)];
  }

 private:
  using Keys = detail::PropertyListKeys;

  std::vector<T> hashed_;
  std::vector<T> chained_;
};

}  // namespace tarnkit
