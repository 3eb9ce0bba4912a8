#include "tarnkit/platform/propertylist/PropertyListKeyCheck.h"

#include <algorithm>
#include <utility>

#include "tarnkit/platform/propertylist/PropertyListForms.h"

namespace tarnkit::detail {

bool PropertyListKeyCheck::check(Index map, std::size_t total, std::string& error) {
  const auto names = list_.keys(map);
  std::uint32_t lastChained = 0;
  bool chainAscends = true;
  for (std::size_t i = 0; i < names.size(); ++i) {
    const Index name = names[i];
    if (name >= list_.count()) {
      if (name >= total) {
        error = kDanglingReference;
        return false;
      }
      postpone(map, i);
      return true;
    }
    const auto& entry = list_.entries_[name];
    if (!entry.isString()) {
      error = std::string(PropertyList::nameOf(entry.kind())) + " is the key of a map";
      return false;
    }
    if (entry.number() == 0) number(names, i);
    if (names.size() == 1) break;
    if (PropertyListKeys::isChained(entry.key())) {
      chainAscends &= entry.number() > lastChained;
      lastChained = entry.number();
      continue;
    }
    Index& last = lastMap_[entry.number() - 1];
    if (last == map) return refuseTwice(name, error);
    last = map;
  }
  return chainAscends || checkChained(map, error);
}

bool PropertyListKeyCheck::checkLate(std::string& error) {
  return std::all_of(lateMaps_.begin(), lateMaps_.end(),
                     [&](Index map) { return check(map, list_.count(), error); });
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
bool PropertyListKeyCheck::checkChained(Index map, std::string& error) const {
  std::vector<std::pair<PropertyList::Key, Index>> chained;
  for (const Index name : list_.keys(map)) {
    const auto key = list_.keyOf(name);
    if (PropertyListKeys::isChained(key)) chained.emplace_back(key, name);
  }
  std::sort(chained.begin(), chained.end());
  const auto twice =
      std::adjacent_find(chained.begin(), chained.end(),
                         [](const auto& a, const auto& b) { return a.first == b.first; });
  return twice == chained.end() || refuseTwice(twice->second, error);
}

bool PropertyListKeyCheck::refuseTwice(Index key, std::string& error) const {
  error = "a map has the key \"" + std::string(list_.string(key).substr(0, 200)) + "\" twice";
  return false;
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
