#pragma once

#include <cstdint>
#include <utility>

#include "tarnkit/platform/coding/Coder.h"
#include "tarnkit/platform/collections/OrderedSet.h"

namespace tarnkit {

class HXNode;

/// The order of a node's port groups of one orientation: their keys. Owned by the node. For one
/// thread.
class HXPortGroupCollection final : public Object {
  TARNKIT_CLASS
 public:
  HXPortGroupCollection() noexcept = default;
  HXPortGroupCollection(HXNode* node, std::int32_t orientation);

  HXNode* node() const noexcept { return node_.get(); }
  std::int32_t orientation() const noexcept { return orientation_; }
  /// The keys (strings) in order; the set handed out never changes.
  Ref<const OrderedSet> portGroupKeys() const noexcept { return portGroupKeys_; }
  /// Makes the keys those given (of null, none): keys that stay keep their mutual order, new ones
  /// follow in the order given. The set stays the caller's.
  void updateWithPortGroupKeys(const Ref<OrderedSet>& keys);
  /// Whether the keys are still those which the node gave when it last synchronised.
  bool followsNode() const noexcept { return followsNode_; }

  void encodeWithCoder(Encoder& coder) const override;
  void initWithCoder(Decoder& coder) override;

 private:
  friend class HXPortGroupSync;
  friend struct HXPortGroupCollectionFields;
  /// The same with a set that nobody changes any more.
  void followNode(const Ref<const OrderedSet>& keys);
  void update(const Ref<const OrderedSet>& keys);
  /// All changes of the keys.
  void storeKeys(Ref<const OrderedSet> keys);
  void storeFollowsNode(bool follows);

  WeakRef<HXNode> node_;
  Ref<const OrderedSet>
      portGroupKeys_;  // never null after construction; shared, never changed in place
  std::int32_t orientation_ = 0;
  bool followsNode_ = false;
};

}  // namespace tarnkit
