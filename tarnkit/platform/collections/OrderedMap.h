#pragma once

#include <algorithm>
#include <initializer_list>
#include <utility>

#include "tarnkit/platform/collections/KeyedHash.h"
#include "tarnkit/platform/collections/OrderedTable.h"
#include "tarnkit/platform/text/String.h"

namespace tarnkit {

/// A map from strings (no key is nil) to values that iterates in the order of insertion, so that
/// every output is the same for the same input. One word while empty; look-up, addition and removal
/// take constant time on average. Replacing a value keeps the key's place. Not for concurrent use.
template <class Value>
class OrderedMap {
 public:
  struct Entry {
    String key;
    Value value{};
  };

  OrderedMap() noexcept = default;
  OrderedMap(std::initializer_list<Entry> entries) {
    for (const Entry& entry : entries) set(entry.key, entry.value);
  }

  std::uint32_t size() const noexcept { return table_.size(); }
  bool empty() const noexcept { return table_.empty(); }
  auto begin() noexcept { return table_.begin(); }
  auto end() noexcept { return table_.end(); }
  auto begin() const noexcept { return table_.begin(); }
  auto end() const noexcept { return table_.end(); }

  /// Null when the key is absent (or nil). Valid until the map changes.
  Value* find(const String& key) & noexcept {
    auto* const entry = table_.find(key);
    return entry ? &entry->value : nullptr;
  }
  const Value* find(const String& key) const& noexcept {
    const auto* const entry = table_.find(key);
    return entry ? &entry->value : nullptr;
  }
  const Value* find(const String& key) const&& = delete;  // it would not outlive the expression
  /// The value, or a default-made one when the key is absent.
  Value get(const String& key) const {
    const auto* const value = find(key);
    return value ? *value : Value{};
  }
  bool contains(const String& key) const noexcept { return find(key) != nullptr; }
  /// False, and nothing kept, for a nil key.
  bool set(const String& key, Value value) {
    if (auto* const present = find(key)) {
      *present = std::move(value);
    } else if (key.isNil()) {
      return false;
    } else {
      table_.append(Entry{key, std::move(value)});
    }
    return true;
  }
  /// Removes the key and returns its value; a default-made one when it is absent.
  Value take(const String& key) { return table_.take(key).value; }
  /// Where an entry stands among the others, for as long as the others stay as they are.
  struct Place {
    String neighbour;      // nil where there is no other
    bool follows = false;  // whether the neighbour comes after the entry
  };
  /// The place of the key's entry, which must be present.
  Place place(const String& key) const {
    const auto beside = table_.neighbour(key);
    return beside.entry ? Place{beside.entry->key, beside.follows} : Place{};
  }
  /// Puts back, at its place, what was taken. False, and nothing done, when the key is present or
  /// nil.
  bool insert(const String& key, Value value, const Place& place) {
    if (key.isNil() || contains(key)) return false;
    table_.insertBeside(place.neighbour, place.follows, Entry{key, std::move(value)});
    return true;
  }
  void clear() noexcept { table_.clear(); }
  void reserve(std::uint32_t capacity) { table_.reserve(capacity); }

  /// Equal when the entries are equal in the same order.
  friend bool operator==(const OrderedMap& a, const OrderedMap& b) {
    return a.size() == b.size() &&
           std::equal(a.begin(), a.end(), b.begin(), [](const Entry& x, const Entry& y) {
             return x.key == y.key && x.value == y.value;
           });
  }

 private:
  struct Traits {
    using Key = String;
    static const String& key(const Entry& entry) noexcept { return entry.key; }
    // Keyed, since keys may come out of a file that was made to have them collide.
    static std::uint64_t hash(const String& key) noexcept { return detail::keyedHash(key.view()); }
    static bool hasKey(const Entry& entry, const String& key) noexcept { return entry.key == key; }
    static bool isGap(const Entry& entry) noexcept { return entry.key.isNil(); }
  };
  detail::OrderedTable<Entry, Traits> table_;
};

}  // namespace tarnkit
