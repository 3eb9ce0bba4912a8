#pragma once

#include <algorithm>
#include <vector>

#include "tarnkit/platform/collections/IdentityMap.h"
#include "tarnkit/platform/collections/OrderedMap.h"

namespace tarnkit {

/// The values in ascending order of their keys. Keys are ordered as `String` orders them, by code
/// points. Costs a sort of the keys; values are copied once.
template <class Value>
std::vector<Value> allValuesSortedByKey(const OrderedMap<Value>& map) {
  std::vector<const typename OrderedMap<Value>::Entry*> entries;
  entries.reserve(map.size());
  for (const auto& entry : map) entries.push_back(&entry);
  std::sort(entries.begin(), entries.end(),
            [](const auto* a, const auto* b) { return a->key < b->key; });
  std::vector<Value> values;
  values.reserve(entries.size());
  for (const auto* entry : entries) values.push_back(entry->value);
  return values;
}

/// From each value (a string, not nil) to the object that stood for it. Of two objects with one
/// value, the one visited last wins.
template <class T>
OrderedMap<Ref<T>> reverseDictionary(const IdentityMap<T, String>& map) {
  OrderedMap<Ref<T>> reversed;
  reversed.reserve(map.size());
  for (const auto& entry : map) reversed.set(entry.value, entry.key);
  return reversed;
}

/// From each value (not null), by identity, to its key. Of two keys with one value, the one visited
/// last wins.
template <class T>
IdentityMap<T, String> reverseMapTable(const OrderedMap<Ref<T>>& map) {
  IdentityMap<T, String> reversed;
  for (const auto& entry : map) reversed.set(entry.value, entry.key);
  return reversed;
}

}  // namespace tarnkit
