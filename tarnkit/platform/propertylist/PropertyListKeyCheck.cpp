#include "tarnkit/platform/propertylist/PropertyListKeyCheck.h"

#include <algorithm>
#include <utility>

#include "tarnkit/platform/propertylist/PropertyListForms.h"

namespace tarnkit::detail {

Status PropertyListKeyCheck::check(Index map, std::size_t total) {
  const auto names = list_.keys(map);
  std::uint32_t lastChained = 0;
  bool chainAscends = true;
  for (std::size_t i = 0; i < names.size(); ++i) {
    const Index name = names[i];
    if (name >= list_.count()) {
      if (name >= total) return Status::damaged(kDanglingReference);
      postpone(map, i);
      return {};
    }
    const auto& entry = list_.entries_[name];
    if (!entry.isString()) {
      return Status::damaged(std::string(PropertyList::nameOf(entry.kind())) +
                             " is the key of a map");
    }
    if (entry.number() == 0) number(names, i);
    if (names.size() == 1) break;
    if (PropertyListKeys::isChained(entry.key())) {
      chainAscends &= entry.number() > lastChained;
      lastChained = entry.number();
      continue;
    }
    Index& last = lastMap_[entry.number() - 1];
    if (last == map) return failureOfTwice(name);
    last = map;
  }
  return chainAscends ? Status() : checkChained(map);
}

Status PropertyListKeyCheck::checkLate() {
  for (const Index map : lateMaps_) {
    if (auto status = check(map, list_.count()); !status) return status;
  }
  return {};
}

// The map is looked at again as if for the first time.
void PropertyListKeyCheck::postpone(Index map, std::size_t checkedKeys) {
  for (const Index name : list_.keys(map).first(checkedKeys)) {
    const auto key = list_.keyOf(name);
    if (!PropertyListKeys::isChained(key)) {
      lastMap_[PropertyListKeys::ordinalOf(key)] = PropertyList::kNone;
    }
  }
  lateMaps_.push_back(map);
}

// Keys of the chain as a rule ascend in their map; where they do not, they are sorted.
Status PropertyListKeyCheck::checkChained(Index map) const {
  std::vector<std::pair<PropertyList::Key, Index>> chained;
  for (const Index name : list_.keys(map)) {
    const auto key = list_.keyOf(name);
    if (PropertyListKeys::isChained(key)) chained.emplace_back(key, name);
  }
  std::sort(chained.begin(), chained.end());
  const auto twice =
      std::adjacent_find(chained.begin(), chained.end(),
                         [](const auto& a, const auto& b) { return a.first == b.first; });
  return twice == chained.end() ? Status() : failureOfTwice(twice->second);
}

Status PropertyListKeyCheck::failureOfTwice(Index key) const {
  return Status::damaged("a map has the key \"" + std::string(list_.string(key).substr(0, 200)) +
                         "\" twice");
}

// A map of many different keys is slow where every look-up waits for the memory: the places of a
// whole batch are asked for before the first one is looked at.
void PropertyListKeyCheck::number(PropertyList::Elements names, std::size_t from) {
  auto& keys = list_.keys_;
  keys.expect(kBatch);
  std::uint32_t hashes[kBatch];
  Index fresh[kBatch];
  std::size_t freshCount = 0;
  const std::size_t end = std::min(from + kBatch, names.size());
  for (std::size_t i = from; i < end; ++i) {
    const Index name = names[i];
    if (name >= list_.count() || !list_.entries_[name].isString()) break;
    if (list_.entries_[name].number() != 0) continue;
    hashes[freshCount] = PropertyListKeys::hashOf(list_.string(name));
    keys.prefetch(hashes[freshCount]);
    fresh[freshCount++] = name;
  }
  for (std::size_t i = 0; i < freshCount; ++i) {
    list_.entries_[fresh[i]].setKey(keys.number(list_, fresh[i], hashes[i]));
  }
  lastMap_.resize(keys.hashedCount(), PropertyList::kNone);
}

}  // namespace tarnkit::detail
