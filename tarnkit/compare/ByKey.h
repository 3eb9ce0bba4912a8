#pragma once

#include <unordered_map>
#include <vector>

#include "tarnkit/platform/text/String.h"

namespace tarnkit::detail {

/// The items of a list by their keys; of several of one key the first. Lives no longer than the
/// list.
template <class Item>
class ByKey {
 public:
  explicit ByKey(const std::vector<Item>& items) {
    items_.reserve(items.size());
    for (const auto& item : items) items_.emplace(item.key, &item);
  }
  /// Null for an unknown key.
  const Item* operator[](const String& key) const {
    const auto found = items_.find(key);
    return found == items_.end() ? nullptr : found->second;
  }

 private:
  std::unordered_map<String, const Item*> items_;
};

}  // namespace tarnkit::detail
