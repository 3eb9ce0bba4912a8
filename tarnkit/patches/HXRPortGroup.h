#pragma once

#include <cstdint>

#include "tarnkit/patches/HXRPort.h"
#include "tarnkit/platform/OrderedMap.h"
#include "tarnkit/platform/OrderedSet.h"

namespace tarnkit {

class HXRPortGroupCollection;

/// A named group of a definition's ports, in the order in which they were added. Owned by its
/// collection.
class HXRPortGroup final : public Object {
  TARNKIT_CLASS
 public:
  HXRPortGroup(String groupKey, std::int32_t orientation);

  const String& groupKey() const noexcept { return groupKey_; }
  std::int32_t orientation() const noexcept { return orientation_; }
  /// The ports (`HXRPort`), in order. Two ports of one key may both stand here.
  const OrderedSet& ports() const noexcept { return *ports_; }
  /// The `uniqueKey` of each port, in order; built once and shared until the group changes.
  const Ref<OrderedSet>& portKeys() const;
  void addPort(HXRPort& port);
  void removePort(HXRPort& port);
  /// The port last added under the key, or null.
  HXRPort* portForKey(const String& uniqueKey) const;

  HXRPortGroupCollection* portGroupCollection() const noexcept;
  void setPortGroupCollection(HXRPortGroupCollection* collection);

 private:
  String groupKey_;
  std::int32_t orientation_;
  Ref<OrderedSet> ports_;
  OrderedMap<Ref<HXRPort>> portsByKey_;
  WeakRef<HXRPortGroupCollection> portGroupCollection_;
  mutable Ref<OrderedSet> portKeys_;  // null: to be built
};

}  // namespace tarnkit
