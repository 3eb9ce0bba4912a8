#pragma once

#include <cstdint>
#include <utility>

#include "tarnkit/platform/collections/OrderedTable.h"
#include "tarnkit/platform/objects/Ref.h"

namespace tarnkit {

/// A map from objects, told apart by identity and kept alive, to values; iterates in the order of
/// insertion, so that no address shows in an output. One word while empty; look-up, addition and
/// removal take constant time on average. Replacing a value keeps the key's place. Not for
/// concurrent use.
template <class T, class Value>
class IdentityMap {
 public:
  struct Entry {
    Ref<T> key;
    Value value{};
  };

  std::uint32_t size() const noexcept { return table_.size(); }
  bool empty() const noexcept { return table_.empty(); }
  auto begin() const noexcept { return table_.begin(); }
  auto end() const noexcept { return table_.end(); }

  /// Null when the key is absent (or null). Valid until the map changes.
  const Value* find(const T* key) const& noexcept {
    const auto* const entry = table_.find(key);
    return entry ? &entry->value : nullptr;
  }
  const Value* find(const T* key) const&& = delete;  // it would not outlive the expression
  /// The value, or a default-made one when the key is absent.
  Value get(const T* key) const {
    const auto* const value = find(key);
    return value ? *value : Value{};
  }
  bool contains(const T* key) const noexcept { return find(key) != nullptr; }
  /// False, and nothing kept, for a null key.
  bool set(Ref<T> key, Value value) {
    if (!key) return false;
    if (auto* const entry = table_.find(key.get())) {
      entry->value = std::move(value);
    } else {
      table_.append(Entry{std::move(key), std::move(value)});
    }
    return true;
  }
  /// Removes the key and returns its value; a default-made one when it is absent.
  Value take(const T* key) { return table_.take(key).value; }
  /// Where an entry stands among the others, for as long as the others stay as they are.
  struct Place {
    Ref<T> neighbour;      // null where there is no other
    bool follows = false;  // whether the neighbour comes after the entry
  };
  /// The place of the key's entry, which must be present.
  Place place(const T* key) const {
    const auto beside = table_.neighbour(key);
    return beside.entry ? Place{beside.entry->key, beside.follows} : Place{};
  }
  /// Puts back, at its place, what was taken; nothing when the key is present or null.
  void insert(Ref<T> key, Value value, const Place& place) {
    if (!key || contains(key.get())) return;
    const T* const neighbour = place.neighbour.get();
    table_.insertBeside(neighbour, place.follows, Entry{std::move(key), std::move(value)});
  }
  void clear() noexcept { table_.clear(); }

 private:
  struct Traits {
    using Key = const T*;
    static const T* key(const Entry& entry) noexcept { return entry.key.get(); }
    static std::uint64_t hash(const T* key) noexcept {
      return reinterpret_cast<std::uintptr_t>(key) >> 4;
    }
    static bool hasKey(const Entry& entry, const T* key) noexcept { return entry.key.get() == key; }
    static bool isGap(const Entry& entry) noexcept { return !entry.key; }
  };
  detail::OrderedTable<Entry, Traits> table_;
};

}  // namespace tarnkit
