#pragma once

#include <cstdint>

#include "tarnkit/patches/HXRPortGroup.h"
#include "tarnkit/platform/collections/OrderedMap.h"

namespace tarnkit {

/// The port groups of one orientation of a definition, in the order in which their first ports were
/// added. Owned by the definition's port layout.
class HXRPortGroupCollection final : public Object {
  TARNKIT_CLASS
 public:
  HXRPortGroupCollection(HXRNode* node, std::int32_t orientation);

  /// Null for a shared layout's collection.
  HXRNode* node() const noexcept;
  std::int32_t orientation() const noexcept { return orientation_; }
  /// Group key to group, in order, as a copy of the caller's own.
  OrderedMap<Ref<HXRPortGroup>> portGroups() const { return portGroups_; }
  /// The same, for reading by who changes nothing meanwhile.
  const OrderedMap<Ref<HXRPortGroup>>& portGroupsInForce() const noexcept { return portGroups_; }
  /// The keys (strings) in order. The set handed out never changes; it is built once until the
  /// collection changes.
  Ref<const OrderedSet> portGroupKeys() const;
  /// A group without a key is refused with one line logged. Throws std::logic_error for the
  /// collection of a shared layout, as the next operation does.
  void addPortGroup(HXRPortGroup& group);
  /// Nothing happens when the collection does not hold the group.
  void removePortGroup(HXRPortGroup& group);
  HXRPortGroup* portGroupForKey(const String& groupKey) const;

  /// Freezes the collection, its groups and their ports, which several definitions share from now
  /// on; it forgets its node.
  void share();

 private:
  friend class HXRNodeSnapshot;
  void requireOwn() const;

  WeakRef<HXRNode> node_;
  std::int32_t orientation_;
  OrderedMap<Ref<HXRPortGroup>> portGroups_;
  mutable Ref<OrderedSet> portGroupKeys_;  // null: to be built; handed out, never changed in place
  bool shared_ = false;
};

}  // namespace tarnkit
