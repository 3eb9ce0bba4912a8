#include "tarnkit/patches/HXRPortGroupCollection.h"

#include <stdexcept>

#include "tarnkit/patches/HXRNode.h"
#include "tarnkit/platform/system/Log.h"

namespace tarnkit {

const Class HXRPortGroupCollection::kClass{"HXRPortGroupCollection", &Object::kClass};

HXRPortGroupCollection::HXRPortGroupCollection(HXRNode* node, std::int32_t orientation)
    : node_(node), orientation_(orientation) {}

HXRNode* HXRPortGroupCollection::node() const noexcept { return node_.get(); }

Ref<const OrderedSet> HXRPortGroupCollection::portGroupKeys() const {
  if (!portGroupKeys_) {
    portGroupKeys_ = make<OrderedSet>();
    portGroupKeys_->reserve(portGroups_.size());
    for (const auto& entry : portGroups_) {
      portGroupKeys_->add(entry.key.object());
    }
  }
  return portGroupKeys_;
}

void HXRPortGroupCollection::requireOwn() const {
  if (shared_) throw std::logic_error("a shared collection of port groups cannot be changed");
}

void HXRPortGroupCollection::share() {
  // Keys are made when they are asked for, and afterwards several threads may ask.
  portGroupKeys();
  shared_ = true;
  node_ = nullptr;
  for (const auto& entry : portGroups_) entry.value->share();
}

void HXRPortGroupCollection::addPortGroup(HXRPortGroup& group) {
  requireOwn();
  if (group.groupKey().isNil()) {
    Log::warning("HXRPortGroupCollection", "A group without a key is not added");
    return;
  }
  group.linkPortGroupCollection(this, {});
  portGroups_.set(group.groupKey(), Ref<HXRPortGroup>(&group));
  portGroupKeys_ = nullptr;
}

void HXRPortGroupCollection::removePortGroup(HXRPortGroup& group) {
  requireOwn();
  if (portGroupForKey(group.groupKey()) != &group) return;
  group.linkPortGroupCollection(nullptr, {});
  portGroups_.take(String(group.groupKey()));
  portGroupKeys_ = nullptr;
}

HXRPortGroup* HXRPortGroupCollection::portGroupForKey(const String& groupKey) const {
  const auto* const group = portGroups_.find(groupKey);
  return group ? group->get() : nullptr;
}

}  // namespace tarnkit
