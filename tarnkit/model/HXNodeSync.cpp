#include <algorithm>

#include "tarnkit/model/HXDocument.h"
#include "tarnkit/model/HXNode.h"
#include "tarnkit/model/HXNodePortSide.h"
#include "tarnkit/model/HXParameter.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/model/HXPortGroup.h"
#include "tarnkit/model/HXPortGroupCollection.h"
#include "tarnkit/model/HXSymbolicPort.h"

// How a node follows its patch definition. What the user made (static values, connections, hidden
// and collapsed groups, the order of groups) stays wherever the identity of a port, group or
// parameter survives.

namespace tarnkit {

namespace {

// Does something when the scope is left, by an exception too.
template <class Action>
struct AtEnd {
  Action action;
  ~AtEnd() { action(); }
};
template <class Action>
AtEnd(Action) -> AtEnd<Action>;

// A definition whose parameters change while they are attached is walked again; one that never
// comes to rest is left after this many walks.
constexpr int kMaximumParameterWalks = 64;

// Announces what went, then what came, on behalf of the node: of the latter only what an observer
// has not let go again meanwhile.
template <class T, class IsHeld>
void announceChanges(HXNode& node, const Symbol& removal, const std::vector<Ref<T>>& gone,
                     const Symbol& addition, const std::vector<Ref<T>>& added,
                     const Symbol& infoKey, IsHeld isHeld) {
  for (const auto& object : gone) detail::announceOfNode(removal, node, infoKey, *object);
  for (const auto& object : added) {
    if (isHeld(*object)) detail::announceOfNode(addition, node, infoKey, *object);
  }
}

}  // namespace

HXNode::PortSide HXNode::portSide(std::int32_t orientation) {
  if (orientation == HXOrientationInput) {
    return {orientation, *inputPortGroupCollection_, inputPortGroupsByKey_,
            patch_ ? &patch_->portLayout().inputs() : nullptr, &symbolicInputPortsInForce()};
  }
  return {orientation, *outputPortGroupCollection_, outputPortGroupsByKey_,
          patch_ ? &patch_->portLayout().outputs() : nullptr, &symbolicOutputPortsInForce()};
}

void HXNode::willSetPatch(const Ref<HXRNode>&) {}
void HXNode::didSetPatch() {}
void HXNode::didDropSubnodeGroup() {}

// Observers are told in the middle of what follows, and may let go of the node or change it again.
// So whatever goes on after an announcement holds the node; ports, groups and parameters change as
// a whole before any of it is announced; and each step begins with the patch in force.

void HXNode::setPatch(const Ref<HXRNode>& patch) {
  const Ref<HXNode> self(this);
  const Ref<HXRNode> fresh = patch;
  willSetPatch(fresh);
  unknownPatchClass_ = nullptr;
  if (fresh != patch_) {
    if (fresh) fresh->setNode(this);
    if (patch_) patch_->setNode(nullptr);
    patch_ = fresh;
  }
  hx_syncPatch();
  didSetPatch();
}

// A definition that adds ports while its parameters are attached asks for a synchronisation of the
// ports meanwhile: the ports are brought in line once, last.
//
// An observer that sets a patch in the middle overtakes this call: the later one has brought
// everything in line when it returns, and nothing is left to be done here.
void HXNode::hx_syncPatch() {
  const Rebuild rebuild(*this);
  const std::uint32_t sync = ++lastSync_;
  // What was published shows until the groups that showed it are announced to go.
  const Ref<HXGroup> earlierGroup = subnodeGroup_;
  // The exception of an observer ends a synchronisation, too.
  const AtEnd ending{[&] {
    if (sync == lastSync_) syncingPorts_ = syncingParameters_ = false;
  }};
  syncingPorts_ = true;
  syncingParameters_ = false;
  hx_syncNameWithPatch();
  if (sync != lastSync_) return;
  hx_syncSubnodeGroupWithPatch();
  if (sync != lastSync_) return;
  hx_syncParametersWithPatch();
  if (sync != lastSync_) return;
  hx_syncPortGroupsWithPatch();
  if (sync != lastSync_) return;
  syncingPorts_ = false;
  hx_syncPortsWithPatch();
}

void HXNode::hx_syncNameWithPatch() {
  if (name_.isNil()) setName(patchClass().defaultName());
}

void HXNode::hx_syncSubnodeGroupWithPatch() {
  if (!patchClass().allowsSubnodes() && !hx_forceAllowsSubnodes()) {
    // Of an unknown patch nobody can say that it holds no nodes.
    if (!subnodeGroup_ || !unknownPatchClass_.isNil()) return;
    const Ref<HXGroup> dropped = std::exchange(subnodeGroup_, nullptr);
    portGroupsSettled_ = false;  // the published ports went with the group
    didDropSubnodeGroup();
  } else if (!subnodeGroup_) {
    subnodeGroup_ = make<HXGroup>();
    subnodeGroup_->setNode(this);
  }
}

void HXNode::hx_syncParametersWithPatch() {
  if (syncingParameters_ || decoding_) return;
  const Ref<HXNode> self(this);
  const Ref<HXRNode> patch = patch_;
  const std::uint32_t sync = lastSync_;
  syncingParameters_ = true;
  const AtEnd ending{[&] {
    if (sync == lastSync_) syncingParameters_ = false;
  }};
  OrderedMap<Ref<HXParameter>> added;
  OrderedMap<Ref<HXParameter>> replaced;
  for (int walk = 0; patch && walk < kMaximumParameterWalks; ++walk) {
    const auto descriptions = patch->parameters();
    for (const auto& description : descriptions) {
      const Class* editorClass = description->parameterClass();
      if (!editorClass) continue;
      const String& key = description->uniqueKey();
      Ref<HXParameter> parameter = added.get(key);
      if (!parameter) parameter = parameters_.get(key);
      if (parameter && !parameter->isKindOf(*editorClass)) {
        if (parameters_.get(key) == parameter) replaced.set(key, parameter);
        parameter = nullptr;
      }
      if (!parameter) {
        parameter = HXParameter::create(*editorClass, this);
        if (!parameter) continue;
        added.set(key, parameter);
      }
      parameter->setPatchParameter(description);
      if (sync != lastSync_) return;  // overtaken, with the flag
    }
    if (patch->parametersInForce() == descriptions) break;
  }
  std::vector<Ref<HXParameter>> gone;
  for (const auto& entry : replaced) gone.push_back(parameters_.take(entry.key));
  std::vector<Ref<HXParameter>> fresh;
  for (const auto& entry : added) {
    parameters_.set(entry.key, entry.value);
    fresh.push_back(entry.value);
  }
  syncingParameters_ = false;
  announceChanges(*this, HXNodeRemoveParameterNotification, gone, HXNodeAddParameterNotification,
                  fresh, HXParameterInfo, [&](const HXParameter& parameter) {
                    return parameterForKey(parameter.uniqueKey()) == &parameter;
                  });
}

void HXNode::hx_syncPortGroupsWithPatch() {
  if (decoding_) return;
  const Ref<HXNode> self(this);
  PortGroupChanges changes;
  portGroupsSettled_ = true;
  hx_syncPortGroups(portSide(HXOrientationInput), changes);
  hx_syncPortGroups(portSide(HXOrientationOutput), changes);
  for (const auto& group : changes.gone) group->setHasGone(true);
  for (const auto& group : changes.startHidden) {
    if (group->hidden()) group->announceHidden();
  }
  announceChanges(*this, HXNodeRemovePortGroupNotification, changes.gone,
                  HXNodeAddPortGroupNotification, changes.added, HXPortGroupInfo,
                  [&](const HXPortGroup& group) {
                    const auto& replaced = changes.replaced;
                    return std::find(replaced.begin(), replaced.end(), &group) != replaced.end() ||
                           hasPortGroup(group);
                  });
}

bool HXNode::hasPortGroup(const HXPortGroup& group) const {
  const auto* present = portGroupForKey(group.groupKey(), group.orientation());
  const auto* published = as<HXSymbolicPortGroup>(present);
  return present == &group || (published && published->standsBefore_ == &group);
}

void HXNode::hx_syncPortGroups(const PortSide& side, PortGroupChanges& changes) {
  Ref<const OrderedSet> keys = make<OrderedSet>();
  if (side.definition) keys = side.definition->portGroupKeys();
  if (!side.symbolicPorts->isEmpty()) {
    const auto all = make<OrderedSet>(*keys);
    for (const auto& port : *side.symbolicPorts) {
      all->add(static_cast<const HXSymbolicPort&>(*port).groupKey().object());
    }
    keys = all;
  }
  auto& order = side.collection.portGroupKeys_;
  if (groupMemory_ && groupMemory_->side(side.orientation).order) {
    order = groupMemory_->side(side.orientation).order;
  }
  const Ref<const OrderedSet> orderBefore = order;
  side.collection.followNode(keys);
  auto old = std::exchange(side.groups, {});
  syncDefinedGroups(side, old, changes);
  if (!side.symbolicPorts->isEmpty()) syncPublishedGroups(side, old, changes);
  if (rebuilds_ != 0 && !old.empty()) rememberGroups(side, orderBefore, old);
  for (const auto& entry : old) {
    changes.gone.push_back(entry.value);
    auto* published = as<HXSymbolicPortGroup>(entry.value.get());
    if (published && published->standsBefore_) dropGroupBehind(side, *published, changes);
  }
}

void HXNode::rememberGroups(const PortSide& side, const Ref<const OrderedSet>& order,
                            const OrderedMap<Ref<HXPortGroup>>& gone) {
  for (const auto& entry : gone) rememberGroup(side, entry.value);
  auto& memory = groupMemory_->side(side.orientation);
  if (!memory.order) memory.order = order;
}

void HXNode::rememberGroup(const PortSide& side, const Ref<HXPortGroup>& group) {
  if (!groupMemory_) groupMemory_ = std::make_unique<GroupMemory>();
  auto& memory = groupMemory_->side(side.orientation);
  const bool isDefined = as<HXPatchPortGroup>(group.get()) != nullptr;
  (isDefined ? memory.defined : memory.published).set(group->groupKey(), group);
}

void HXNode::dropGroupBehind(const PortSide& side, HXSymbolicPortGroup& group,
                             PortGroupChanges& changes) {
  changes.gone.push_back(std::exchange(group.standsBefore_, nullptr));
  if (rebuilds_ != 0) rememberGroup(side, changes.gone.back());
}

template <class Group>
Ref<Group> HXNode::groupBeforeRebuild(const PortSide& side, const String& key) {
  if (!groupMemory_) return nullptr;
  auto& memory = groupMemory_->side(side.orientation);
  constexpr bool kIsDefined = std::is_same_v<Group, HXPatchPortGroup>;
  return as<Group>((kIsDefined ? memory.defined : memory.published).take(key));
}

void HXNode::patchRebuildWillBegin(HXRNode&) { ++rebuilds_; }

void HXNode::patchRebuildDidEnd(HXRNode&) {
  if (--rebuilds_ == 0) groupMemory_ = nullptr;
}

// The groups of the definition. One that a group of published ports of its name stands before is
// found there.
void HXNode::syncDefinedGroups(const PortSide& side, OrderedMap<Ref<HXPortGroup>>& old,
                               PortGroupChanges& changes) {
  if (!side.definition) return;
  const auto& definitions = side.definition->portGroupsInForce();
  side.groups.reserve(definitions.size());
  for (const auto& entry : definitions) {
    Ref<HXPatchPortGroup> group;
    if (const auto* present = old.find(entry.key)) {
      group = as<HXPatchPortGroup>(*present);
      if (group) {
        old.take(entry.key);
      } else {
        auto& published = static_cast<HXSymbolicPortGroup&>(**present);
        group = as<HXPatchPortGroup>(std::exchange(published.standsBefore_, nullptr));
      }
    }
    if (!group) {
      group = groupBeforeRebuild<HXPatchPortGroup>(side, entry.key);
      if (group) changes.added.push_back(group);
    }
    if (!group) {
      group = make<HXPatchPortGroup>(this, entry.key, side.orientation);
      if (patchClass().hiddenPortGroupKeys().contains(entry.key.object().get())) {
        group->hidden_ = true;
        changes.startHidden.push_back(group);
      }
      changes.added.push_back(group);
    }
    group->setPatchPortGroup(entry.value);
    side.groups.set(entry.key, group);
  }
}

void HXNode::syncPublishedGroups(const PortSide& side, OrderedMap<Ref<HXPortGroup>>& old,
                                 PortGroupChanges& changes) {
  const auto oldGroup = [&](const HXSymbolicPort& port) {
    const auto* group = old.find(port.groupKey());
    return group ? as<HXSymbolicPortGroup>(group->get()) : nullptr;
  };
  for (const auto& member : *side.symbolicPorts) {
    auto* group = oldGroup(static_cast<const HXSymbolicPort&>(*member));
    if (!group) continue;
    group->symbolicPorts_ = make<OrderedSet>();
    if (group->standsBefore_) dropGroupBehind(side, *group, changes);
  }
  // Deliberately looked up among the old groups only, which the editor's views rely on: of several
  // ports under a key that is new, each makes a group, and the last one made stands until the next
  // synchronisation gathers the ports in it.
  for (const auto& member : *side.symbolicPorts) {
    const auto& port = static_cast<const HXSymbolicPort&>(*member);
    Ref<HXSymbolicPortGroup> group(oldGroup(port));
    if (!group) {
      group = groupBeforeRebuild<HXSymbolicPortGroup>(side, port.groupKey());
      if (!group) group = make<HXSymbolicPortGroup>(this, port.groupKey(), side.orientation);
      group->symbolicPorts_ = make<OrderedSet>();
      changes.added.push_back(group);
    }
    group->symbolicPorts_->add(member);
    Ref<HXPortGroup>* present = side.groups.find(port.groupKey());
    if (!present) {
      side.groups.set(port.groupKey(), group);
    } else if (*present != group.get()) {
      if (auto* earlier = as<HXSymbolicPortGroup>(present->get())) {
        portGroupsSettled_ = false;  // another synchronisation gathers the ports
        changes.replaced.push_back(*present);
        group->standsBefore_ = std::exchange(earlier->standsBefore_, nullptr);
      } else {
        group->standsBefore_ = *present;
      }
      *present = group;
    }
  }
  for (const auto& member : *side.symbolicPorts) {
    old.take(static_cast<const HXSymbolicPort&>(*member).groupKey());
  }
}

void HXNode::hx_syncPortsWithPatch() {
  if (syncingPorts_ || decoding_) return;
  auto old = std::exchange(portsByUniqueKey_, {});
  std::vector<Ref<HXPatchPort>> added;
  if (patch_) {
    const Ref<HXRNode> patch = patch_;
    const auto& descriptions = patch->portLayout().ports();
    portsByUniqueKey_.reserve(descriptions.size());
    for (const auto& entry : descriptions) {
      const HXRPort& description = *entry.value;
      // A port whose orientation or relationship changed counts as replaced, deliberately without
      // being withdrawn: the editor shows only the new one.
      Ref<HXPatchPort> port = old.take(entry.key);
      if (!port || port->orientation() != description.orientation() ||
          port->connectionRelationship() != description.connectionRelationship()) {
        port = make<HXPatchPort>(this, description.orientation(),
                                 description.connectionRelationship());
        added.push_back(port);
      }
      port->setPatchPort(entry.value);
      portsByUniqueKey_.set(entry.key, port);
    }
  }
  std::vector<Ref<HXPatchPort>> gone;
  for (const auto& entry : old) gone.push_back(entry.value);
  withdrawPorts(gone);
  announceChanges(*this, HXNodeRemovePortNotification, gone, HXNodeAddPortNotification, added,
                  HXPortInfo, [&](const HXPatchPort& port) {
                    const auto* present = portsByUniqueKey_.find(port.uniqueKey());
                    return present && *present == &port;
                  });
}

// Where the ports were published and connected is asked before anybody is told: the node may be
// somewhere else by the time the last of them is withdrawn.
void HXNode::withdrawPorts(const std::vector<Ref<HXPatchPort>>& ports) {
  if (std::none_of(ports.begin(), ports.end(), [](const auto& port) {
        return port->symbolicPort() || !port->connections().isEmpty();
      })) {
    return;
  }
  const Ref<HXNode> self(this);
  const Ref<HXGroup> parent(parentGroup());
  const Ref<HXDocument> document(this->document());
  for (const auto& port : ports) {
    if (parent && port->symbolicPort()) parent->removeSymbolicPortForPort(port.get());
    if (document && !port->connections().isEmpty()) document->breakAllConnectionsToPort(*port);
  }
}

// One port that comes or goes costs itself, unless it is not the only difference.

void HXNode::addPatchPort(HXRPort& port) {
  const Ref<HXNode> self(this);
  const Ref<HXRPort> description(&port);
  hx_syncPortGroupsWithPatch();
  if (syncingPorts_ || decoding_) return;
  const auto* ports = patch_ ? &patch_->portLayout().ports() : nullptr;
  if (!ports || ports->get(port.uniqueKey()) != description ||
      portsByUniqueKey_.contains(port.uniqueKey()) ||
      ports->size() != portsByUniqueKey_.size() + 1) {
    hx_syncPortsWithPatch();
    return;
  }
  const auto added = make<HXPatchPort>(this, port.orientation(), port.connectionRelationship());
  added->setPatchPort(description);
  portsByUniqueKey_.set(port.uniqueKey(), added);
  detail::announceOfNode(HXNodeAddPortNotification, *this, HXPortInfo, *added);
}

void HXNode::removePatchPort(HXRPort& port) {
  const Ref<HXNode> self(this);
  const Ref<HXRPort> description(&port);
  hx_syncPortGroupsWithPatch();
  if (syncingPorts_ || decoding_) return;
  const auto* ports = patch_ ? &patch_->portLayout().ports() : nullptr;
  if (!ports || ports->contains(port.uniqueKey()) ||
      !portsByUniqueKey_.contains(port.uniqueKey()) ||
      ports->size() + 1 != portsByUniqueKey_.size()) {
    hx_syncPortsWithPatch();
    return;
  }
  const auto gone = portsByUniqueKey_.take(port.uniqueKey());
  withdrawPorts({gone});
  detail::announceOfNode(HXNodeRemovePortNotification, *this, HXPortInfo, *gone);
}

void HXNode::addPatchParameter(HXRParameter&) { hx_syncParametersWithPatch(); }
void HXNode::removePatchParameter(HXRParameter&) { hx_syncParametersWithPatch(); }

void HXNode::patchPortNameDidChange(HXRPort& patchPort) {
  auto* port = portForKey(patchPort.uniqueKey());
  if (!port) return;
  detail::announce(HXPortNameDidChangeNotification, *port, *this,
                   [&](const Ref<Object>& documentKey) {
                     return UserInfo{{HXDocumentKeyInfo, documentKey},
                                     {HXPortInfo, Ref<Object>(port)},
                                     {HXNameInfo, port->name().object()}};
                   });
}

void HXNode::patchLayoutWasCopied() {
  const HXRPortLayout& layout = patch_->portLayout();
  for (const auto& entry : layout.ports()) {
    if (const auto* port = portsByUniqueKey_.find(entry.key)) (*port)->setPatchPort(entry.value);
  }
  for (const auto orientation : {HXOrientationInput, HXOrientationOutput}) {
    const PortSide side = portSide(orientation);
    for (const auto& entry : side.definition->portGroupsInForce()) {
      Ref<HXPortGroup> group = side.groups.get(entry.key);
      if (auto* published = as<HXSymbolicPortGroup>(group.get())) group = published->standsBefore_;
      if (auto* own = as<HXPatchPortGroup>(group.get())) own->setPatchPortGroup(entry.value);
    }
  }
}

}  // namespace tarnkit
