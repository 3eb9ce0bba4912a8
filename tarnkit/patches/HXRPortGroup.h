#pragma once

#include <cstdint>
#include <vector>

#include "tarnkit/patches/HXRPort.h"
#include "tarnkit/platform/collections/OrderedMap.h"
#include "tarnkit/platform/collections/OrderedSet.h"

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
  /// The ports, in order, as they are now. Two ports of one key may both stand here.
  std::vector<Ref<HXRPort>> ports() const;
  bool isEmpty() const noexcept { return ports_->isEmpty(); }
  /// The `uniqueKey` of each port (strings), in order. The set handed out never changes; it is
  /// built once until the group changes.
  Ref<const OrderedSet> portKeys() const;
  /// The keys as they were when the last port was taken out of the group; null while it has ports,
  /// or when it never had one.
  const Ref<const OrderedSet>& portKeysBeforeEmptied() const noexcept {
    return portKeysBeforeEmptied_;
  }
  /// A port without a key is refused with one line logged. Throws std::logic_error for the group of
  /// a shared layout, as the next operation does.
  void addPort(HXRPort& port);
  void removePort(HXRPort& port);
  /// The port last added under the key, or null.
  HXRPort* portForKey(const String& uniqueKey) const;

  HXRPortGroupCollection* portGroupCollection() const noexcept;
  /// Leaves alone, with one line logged, a group that its collection holds.
  void setPortGroupCollection(HXRPortGroupCollection* collection);
  void linkPortGroupCollection(HXRPortGroupCollection* collection,
                               PassKey<HXRPortGroupCollection>) noexcept;
  /// Freezes the group and its ports, which several definitions share from now on.
  void share();

 private:
  friend class HXRNodeSnapshot;
  void requireOwn() const;

  String groupKey_;
  std::int32_t orientation_;
  Ref<OrderedSet> ports_;
  OrderedMap<Ref<HXRPort>> portsByKey_;
  WeakRef<HXRPortGroupCollection> portGroupCollection_;
  mutable Ref<OrderedSet> portKeys_;  // null: to be built; handed out, never changed in place
  Ref<const OrderedSet> portKeysBeforeEmptied_;
  bool shared_ = false;
};

}  // namespace tarnkit
