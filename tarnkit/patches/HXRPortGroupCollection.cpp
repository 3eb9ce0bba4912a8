#include "tarnkit/patches/HXRPortGroupCollection.h"

#include "tarnkit/patches/HXRNode.h"

namespace tarnkit {

const Class HXRPortGroupCollection::kClass{"HXRPortGroupCollection", &Object::kClass};

HXRPortGroupCollection::HXRPortGroupCollection(HXRNode* node, std::int32_t orientation)
    : node_(node), orientation_(orientation) {}

HXRNode* HXRPortGroupCollection::node() const noexcept { return node_.get(); }

const Ref<OrderedSet>& HXRPortGroupCollection::portGroupKeys() const {
  if (!portGroupKeys_) {
    portGroupKeys_ = make<OrderedSet>();
    portGroupKeys_->reserve(portGroups_.size());
    for (const auto& entry : portGroups_)
      portGroupKeys_->add(entry.key.object());
  }
  return portGroupKeys_;
}

void HXRPortGroupCollection::addPortGroup(HXRPortGroup& group) {
  group.setPortGroupCollection(this);
  portGroups_.set(group.groupKey(), Ref<HXRPortGroup>(&group));
  portGroupKeys_ = nullptr;
}

void HXRPortGroupCollection::removePortGroup(HXRPortGroup& group) {
  if (portGroupForKey(group.groupKey()) != &group) return;
  group.setPortGroupCollection(nullptr);
  portGroups_.take(String(group.groupKey()));
  portGroupKeys_ = nullptr;
}

HXRPortGroup* HXRPortGroupCollection::portGroupForKey(const String& groupKey) const {
  const auto* const group = portGroups_.find(groupKey);
  return group ? group->get() : nullptr;
}

}  // namespace tarnkit
