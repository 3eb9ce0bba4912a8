#pragma once

#include <cstdint>
#include <vector>

#include "tarnkit/platform/propertylist/PropertyList.h"
#include "tarnkit/platform/system/Status.h"

namespace tarnkit::detail {

/// Numbers the keys of the maps of a list that is being read, and refuses keys that are no strings
/// or stand twice in one map. Each map is looked at when it is met; one whose keys are not all
/// there yet, once more at the end. Lives during one reading.
class PropertyListKeyCheck {
 public:
  using Index = PropertyList::Index;

  explicit PropertyListKeyCheck(PropertyList& list) noexcept : list_(list) {}

  /// A failure when the map is refused. References from `total` on point to nothing.
  Status check(Index map, std::size_t total);
  /// The maps that had to wait, when everything is there.
  Status checkLate();

 private:
  static constexpr std::size_t kBatch = 16;

  Status checkChained(Index map) const;
  void postpone(Index map, std::size_t checkedKeys);
  Status failureOfTwice(Index key) const;
  void number(PropertyList::Elements names, std::size_t from);

  PropertyList& list_;
  std::vector<Index> lastMap_;   // for each hashed key, the map that had it last
  std::vector<Index> lateMaps_;  // whose keys were not all there yet
};

}  // namespace tarnkit::detail
