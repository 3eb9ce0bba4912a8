#include "tarnkit/model/HXNodePortSide.h"
#include "tarnkit/model/HXSymbolicPort.h"

// How a node's port groups follow its published ports. One port that comes or goes costs its own
// group only; whatever else may have changed is left to the full synchronisation.

namespace tarnkit {

namespace {

// The set, safe to be changed: one that was handed out never changes.
OrderedSet& unshared(Ref<OrderedSet>& set) {
  if (!set) set = make<OrderedSet>();
  if (set->isShared()) set = make<OrderedSet>(*set);
  return *set;
}

}  // namespace

bool HXNode::portGroupsSettled() const noexcept {
  return portGroupsSettled_ && inputPortGroupCollection_->followsNode() &&
         outputPortGroupCollection_->followsNode();
}

void HXNode::symbolicPortNameDidChange(HXSymbolicPort& symbolicPort) {
  const bool isPublished = symbolicInputPortsInForce().contains(&symbolicPort) ||
                           symbolicOutputPortsInForce().contains(&symbolicPort);
  if (isPublished || !portGroupsSettled()) hx_syncPortGroupsWithPatch();
}

void HXNode::symbolicPortNameWasAdded(HXPort& port) {
  const auto* symbolicPort = port.symbolicPort();
  if (!symbolicPort || !hx_showSymbolicPort(*symbolicPort)) hx_syncPortGroupsWithPatch();
}

void HXNode::symbolicPortNameWasRemoved(HXPort&, HXSymbolicPort& symbolicPort) {
  if (!hx_hideSymbolicPort(symbolicPort)) hx_syncPortGroupsWithPatch();
}

HXPort* HXNode::collectingPort(const HXPort&) const { return nullptr; }

bool HXNode::hx_showSymbolicPort(const HXSymbolicPort& symbolicPort) {
  if (!portGroupsSettled() || decoding_) return false;
  const PortSide side = portSide(symbolicPort.orientation());
  // One that is neither input nor output, or says other than its inner port, is not on this side.
  if (side.orientation != symbolicPort.orientation() ||
      !side.symbolicPorts->contains(&symbolicPort)) {
    return false;
  }
  const String& key = symbolicPort.groupKey();
  const Ref<Object> member(const_cast<HXSymbolicPort*>(&symbolicPort));
  if (const auto* present = side.groups.find(key)) {
    auto* group = as<HXSymbolicPortGroup>(present->get());
    if (!group) return false;
    unshared(group->symbolicPorts_).add(member);
    return true;
  }
  auto keys = make<OrderedSet>(*side.collection.portGroupKeys());
  keys->add(key.object());
  side.collection.followNode(keys);
  auto group = make<HXSymbolicPortGroup>(this, key, side.orientation);
  unshared(group->symbolicPorts_).add(member);
  side.groups.set(key, group);
  detail::announceOfNode(HXNodeAddPortGroupNotification, *this, HXPortGroupInfo, *group);
  return true;
}

bool HXNode::hx_hideSymbolicPort(const HXSymbolicPort& symbolicPort) {
  if (!portGroupsSettled() || decoding_) return false;
  const PortSide side = portSide(symbolicPort.orientation());
  if (side.symbolicPorts->contains(&symbolicPort)) return false;  // an observer restored it
  const String& key = symbolicPort.groupKey();
  const Ref<HXSymbolicPortGroup> group = as<HXSymbolicPortGroup>(side.groups.get(key));
  if (!group || !group->symbolicPorts_ || !group->symbolicPorts_->contains(&symbolicPort)) {
    return false;
  }
  if (group->symbolicPorts_->count() > 1) {
    unshared(group->symbolicPorts_).remove(&symbolicPort);
    return true;
  }
  // The last port leaves with its group, which is announced with what it showed.
  if (group->standsBefore_) return false;
  auto keys = make<OrderedSet>(*side.collection.portGroupKeys());
  keys->remove(key.object().get());
  side.collection.followNode(keys);
  side.groups.take(key);
  detail::announceOfNode(HXNodeRemovePortGroupNotification, *this, HXPortGroupInfo, *group);
  return true;
}

}  // namespace tarnkit
