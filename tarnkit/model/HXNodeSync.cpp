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

// A definition whose parameters change while they are attached is walked again; one that never
// comes to rest is left after this many walks.
constexpr int kMaximumParameterWalks = 64;

// Announces what went, then what came, on behalf of the node.
template <class T>
void announceChanges(HXNode& node, const Symbol& removal, const std::vector<Ref<T>>& gone,
                     const Symbol& addition, const std::vector<Ref<T>>& added,
                     const Symbol& infoKey) {
  for (const auto& object : gone) detail::announceOfNode(removal, node, infoKey, *object);
  for (const auto& object : added) detail::announceOfNode(addition, node, infoKey, *object);
}

}  // namespace

HXNode::PortSide HXNode::portSide(std::int32_t orientation) {
  if (orientation == HXOrientationInput) {
    return {orientation, *inputPortGroupCollection_, inputPortGroupsByKey_,
            patch_ ? &patch_->portLayout().inputs() : nullptr, symbolicInputPorts()};
  }
  return {orientation, *outputPortGroupCollection_, outputPortGroupsByKey_,
          patch_ ? &patch_->portLayout().outputs() : nullptr, symbolicOutputPorts()};
}

void HXNode::willSetPatch(const Ref<HXRNode>&) {}
void HXNode::didSetPatch() {}

void HXNode::setPatch(const Ref<HXRNode>& patch) {
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
void HXNode::hx_syncPatch() {
  syncingPorts_ = true;
  hx_syncNameWithPatch();
  hx_syncSubnodeGroupWithPatch();
  hx_syncParametersWithPatch();
  hx_syncPortGroupsWithPatch();
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
    subnodeGroup_ = nullptr;
    portGroupsSettled_ = false;  // the published ports went with the group
  } else if (!subnodeGroup_) {
    subnodeGroup_ = make<HXGroup>();
    subnodeGroup_->setNode(this);
  }
}

void HXNode::hx_syncParametersWithPatch() {
  if (syncingParameters_ || decoding_) return;
  syncingParameters_ = true;
  OrderedMap<Ref<HXParameter>> added;
  OrderedMap<Ref<HXParameter>> replaced;
  for (int walk = 0; patch_ && walk < kMaximumParameterWalks; ++walk) {
    const auto descriptions = patch_->parameters();
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
    }
    if (patch_->parametersInForce() == descriptions) break;
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
                  fresh, HXParameterInfo);
}

void HXNode::hx_syncPortGroupsWithPatch() {
  if (decoding_) return;
  std::vector<Ref<HXPortGroup>> gone;
  std::vector<Ref<HXPortGroup>> added;
  portGroupsSettled_ = true;
  hx_syncPortGroups(portSide(HXOrientationInput), gone, added);
  hx_syncPortGroups(portSide(HXOrientationOutput), gone, added);
  announceChanges(*this, HXNodeRemovePortGroupNotification, gone, HXNodeAddPortGroupNotification,
                  added, HXPortGroupInfo);
}

void HXNode::hx_syncPortGroups(PortSide side, std::vector<Ref<HXPortGroup>>& gone,
                               std::vector<Ref<HXPortGroup>>& added) {
  Ref<const OrderedSet> keys = make<OrderedSet>();
  if (side.definition) keys = side.definition->portGroupKeys();
  if (!side.symbolicPorts.isEmpty()) {
    const auto all = make<OrderedSet>(*keys);
    for (const auto& port : side.symbolicPorts) {
      all->add(static_cast<const HXSymbolicPort&>(*port).groupKey().object());
    }
    keys = all;
  }
  side.collection.followNode(keys);

  auto old = std::exchange(side.groups, {});
  if (side.definition) {
    const auto& definitions = side.definition->portGroups();
    side.groups.reserve(definitions.size());
    for (const auto& entry : definitions) {
      auto group = as<HXPatchPortGroup>(old.take(entry.key));
      if (!group) {
        group = make<HXPatchPortGroup>(this, entry.key, side.orientation);
        if (patchClass().hiddenPortGroupKeys().contains(entry.key.object().get())) {
          group->setHidden(true);
        }
        added.push_back(group);
      }
      group->setPatchPortGroup(entry.value);
      side.groups.set(entry.key, group);
    }
  }

  const auto oldSymbolicGroup = [&](const HXSymbolicPort& port) {
    const auto* group = old.find(port.groupKey());
    return group ? as<HXSymbolicPortGroup>(group->get()) : nullptr;
  };
  for (const auto& member : side.symbolicPorts) {
    if (auto* group = oldSymbolicGroup(static_cast<const HXSymbolicPort&>(*member))) {
      group->setSymbolicPorts(make<OrderedSet>());
    }
  }
  // Deliberately looked up among the old groups only, which the editor's views rely on: of several
  // ports under a key that is new, each makes a group, and the last one made stands until the next
  // synchronisation gathers the ports in it.
  for (const auto& member : side.symbolicPorts) {
    const auto& port = static_cast<const HXSymbolicPort&>(*member);
    Ref<HXSymbolicPortGroup> group(oldSymbolicGroup(port));
    if (!group) {
      group = make<HXSymbolicPortGroup>(this, port.groupKey(), side.orientation);
      group->setSymbolicPorts(make<OrderedSet>());
      added.push_back(group);
    }
    group->symbolicPorts_->add(member);
    // Another synchronisation would come to something else where a group was there already that is
    // not among the old ones.
    if (side.groups.contains(port.groupKey()) && side.groups.get(port.groupKey()) != group) {
      portGroupsSettled_ = false;
    }
    side.groups.set(port.groupKey(), group);
  }
  for (const auto& member : side.symbolicPorts) {
    old.take(static_cast<const HXSymbolicPort&>(*member).groupKey());
  }
  for (const auto& entry : old) gone.push_back(entry.value);
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
  for (const auto& port : gone) withdrawPort(*port);
  announceChanges(*this, HXNodeRemovePortNotification, gone, HXNodeAddPortNotification, added,
                  HXPortInfo);
}

void HXNode::withdrawPort(HXPatchPort& port) {
  const Ref<HXGroup> parent(parentGroup());
  if (parent && port.symbolicPort()) parent->removeSymbolicPortForPort(&port);
  if (port.connections().isEmpty()) return;
  if (const Ref<HXDocument> document{this->document()}) document->breakAllConnectionsToPort(port);
}

// One port that comes or goes costs itself, unless it is not the only difference.

void HXNode::addPatchPort(HXRPort& port) {
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
  withdrawPort(*gone);
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
    for (const auto& entry : side.definition->portGroups()) {
      if (auto* group = as<HXPatchPortGroup>(side.groups.get(entry.key).get())) {
        group->setPatchPortGroup(entry.value);
      }
    }
  }
}

}  // namespace tarnkit
