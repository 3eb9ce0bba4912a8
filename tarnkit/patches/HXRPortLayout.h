#pragma once

#include "tarnkit/patches/BySide.h"
#include "tarnkit/patches/HXRPortGroupCollection.h"
#include "tarnkit/platform/collections/OrderedMap.h"

namespace tarnkit {

/// The ports of a definition and their groups.
///
/// Every class of definition has one layout that all its instances share while they differ in
/// nothing: its descriptions and collections have no node and are never changed. A definition that
/// is about to change its ports, or that is asked for a description of its own, makes its own copy
/// first (`HXRNode`). This is what keeps a thousand Clamp nodes from holding four thousand equal
/// port descriptions.
class HXRPortLayout final : public Object {
  TARNKIT_CLASS
 public:
  /// Empty, of `node`; null: to be shared.
  explicit HXRPortLayout(HXRNode* node);

  bool isShared() const noexcept { return shared_; }
  /// Freezes the layout for sharing: ports and collections forget their node.
  void share();
  /// A copy of every port and group, belonging to `node`.
  Ref<HXRPortLayout> copyForNode(HXRNode& node) const;

  /// Unique key to port, in the order of addition.
  const OrderedMap<Ref<HXRPort>>& ports() const noexcept { return ports_; }
  HXRPortGroupCollection& inputs() const noexcept { return *collections_[HXOrientationInput]; }
  HXRPortGroupCollection& outputs() const noexcept { return *collections_[HXOrientationOutput]; }
  /// By orientation; null for any but input and output.
  HXRPortGroupCollection* collection(std::int32_t orientation) const noexcept;

  /// Enters the port into its orientation's group of that key, making the group at need. False, and
  /// nothing done, for another orientation.
  bool addPort(HXRPort& port, const String& portGroupKey);
  /// Takes the port out of its group, and an emptied group out of its collection.
  bool removePort(HXRPort& port);

 private:
  friend class HXRNodeSnapshot;
  static void copyGroups(const HXRPortGroupCollection& from, HXRPortGroupCollection& to);

  bool shared_ = false;
  OrderedMap<Ref<HXRPort>> ports_;
  BySide<Ref<HXRPortGroupCollection>> collections_;
};

}  // namespace tarnkit
