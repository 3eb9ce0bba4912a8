#include "tarnkit/model/HXNodeSync.h"

#include <algorithm>

#include "tarnkit/model/HXDocument.h"
#include "tarnkit/model/HXNode.h"
#include "tarnkit/model/HXParameter.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/model/HXSymbolicPort.h"

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

}  // namespace

HXNode& HXNodeSync::node() noexcept { return static_cast<HXNode&>(*this); }

void HXNodeSync::hx_syncPatch() {
  const Ref<HXNode> self(&node());
  rebuildWillBegin();
  const std::uint32_t run = ++lastRun_;
  // What was published shows until the groups that showed it are announced to go.
  const Ref<HXGroup> earlierGroup = node().subnodeGroup();
  const AtEnd ending{[&] {
    if (run == lastRun_) syncingPorts_ = syncingParameters_ = false;
    rebuildDidEnd();
  }};
  syncingPorts_ = true;
  syncingParameters_ = false;
  hx_syncNameWithPatch();
  if (run != lastRun_) return;
  hx_syncSubnodeGroupWithPatch();
  if (run != lastRun_) return;
  hx_syncParametersWithPatch();
  if (run != lastRun_) return;
  hx_syncPortGroupsWithPatch();
  if (run != lastRun_) return;
  syncingPorts_ = false;
  hx_syncPortsWithPatch();
}

void HXNodeSync::hx_syncNameWithPatch() {
  if (node().name().isNil()) node().setName(node().patchClass().defaultName());
}

void HXNodeSync::hx_syncSubnodeGroupWithPatch() {
  if (!node().patchClass().allowsSubnodes() && !node().hx_forceAllowsSubnodes()) {
    // Of an unknown patch nobody can say that it holds no nodes.
    if (!node().subnodeGroup() || !node().unknownPatchClass().isNil()) return;
    const Ref<HXGroup> dropped = node().storeSubnodeGroup(nullptr);
    unsettle();  // the published ports went with the group
    node().didDropSubnodeGroup();
  } else if (!node().subnodeGroup()) {
    node().storeSubnodeGroup(make<HXGroup>());
  }
}

void HXNodeSync::hx_syncParametersWithPatch() {
  if (syncingParameters_ || resting_) return;
  const Ref<HXNode> self(&node());
  const Ref<HXRNode> patch = node().patch_;
  const std::uint32_t run = lastRun_;
  syncingParameters_ = true;
  const AtEnd ending{[&] {
    if (run == lastRun_) syncingParameters_ = false;
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
      if (!parameter) parameter = node().parameters_.get(key);
      if (parameter && !parameter->isKindOf(*editorClass)) {
        if (node().parameters_.get(key) == parameter) replaced.set(key, parameter);
        parameter = nullptr;
      }
      if (!parameter) {
        parameter = HXParameter::create(*editorClass, &node());
        if (!parameter) continue;
        added.set(key, parameter);
      }
      parameter->setPatchParameter(description);
      if (run != lastRun_) return;  // overtaken, with the flag
    }
    if (std::ranges::equal(patch->parametersInForce(), descriptions)) break;
  }
  std::vector<Ref<HXParameter>> gone;
  for (const auto& entry : replaced) gone.push_back(node().takeParameter(entry.key));
  std::vector<Ref<HXParameter>> fresh;
  for (const auto& entry : added) {
    node().insertParameter(entry.key, entry.value);
    fresh.push_back(entry.value);
  }
  syncingParameters_ = false;
  detail::announceChanges(node(), HXNodeRemoveParameterNotification, gone,
                          HXNodeAddParameterNotification, fresh, HXParameterInfo,
                          [&](const HXParameter& parameter) {
                            return node().parameterForKey(parameter.uniqueKey()) == &parameter;
                          });
}

void HXNodeSync::hx_syncPortGroupsWithPatch() {
  if (!resting_) HXPortGroupSync::hx_syncPortGroupsWithPatch();
}

void HXNodeSync::hx_syncPortsWithPatch() {
  if (syncingPorts_ || resting_) return;
  OrderedMap<Ref<HXPatchPort>> ports;
  std::vector<Ref<HXPatchPort>> added;
  std::uint32_t keysThatStay = 0;
  if (const auto* patch = node().patch_.get()) {
    const auto& descriptions = patch->portLayout().ports();
    ports.reserve(descriptions.size());
    for (const auto& entry : descriptions) {
      const HXRPort& description = *entry.value;
      // A port whose orientation or relationship changed counts as replaced, deliberately without
      // being withdrawn: the editor shows only the new one.
      Ref<HXPatchPort> port = node().portsByUniqueKey_.get(entry.key);
      if (port) ++keysThatStay;
      if (!port || port->orientation() != description.orientation() ||
          port->connectionRelationship() != description.connectionRelationship()) {
        port = make<HXPatchPort>(&node(), description.orientation(),
                                 description.connectionRelationship());
        if (added.empty()) added.reserve(descriptions.size());
        added.push_back(port);
      }
      port->linkPatchPort(entry.value, {});
      ports.set(entry.key, port);
    }
  }
  std::vector<Ref<HXPatchPort>> gone;
  if (keysThatStay != node().portsByUniqueKey_.size()) {
    for (const auto& entry : node().portsByUniqueKey_) {
      if (!ports.contains(entry.key)) gone.push_back(entry.value);
    }
  }
  node().storePorts(std::move(ports));
  withdrawPorts(gone);
  detail::announceChanges(node(), HXNodeRemovePortNotification, gone, HXNodeAddPortNotification,
                          added, HXPortInfo, [&](const HXPatchPort& port) {
                            const auto* present = node().portsByUniqueKey_.find(port.uniqueKey());
                            return present && *present == &port;
                          });
}

// Where the ports were published and connected is asked before anybody is told: the node may be
// somewhere else by the time the last of them is withdrawn.
void HXNodeSync::withdrawPorts(const std::vector<Ref<HXPatchPort>>& ports) {
  if (std::none_of(ports.begin(), ports.end(), [](const auto& port) {
        return port->symbolicPort() || !port->connections().isEmpty();
      })) {
    return;
  }
  const Ref<HXNode> self(&node());
  const Ref<HXGroup> parent(node().parentGroup());
  const Ref<HXDocument> document(node().document());
  for (const auto& port : ports) {
    if (parent && port->symbolicPort()) parent->removeSymbolicPortForPort(port.get());
    if (document && !port->connections().isEmpty()) document->breakAllConnectionsToPort(*port);
  }
}

// One port that comes or goes costs itself, unless it is not the only difference.

void HXNodeSync::addPatchPort(HXRPort& port) {
  const Ref<HXNode> self(&node());
  const Ref<HXRPort> description(&port);
  hx_syncPortGroupsWithPatch();
  if (syncingPorts_ || resting_) return;
  const auto* ports = node().patch_ ? &node().patch_->portLayout().ports() : nullptr;
  const auto& held = node().portsByUniqueKey_;
  if (!ports || ports->get(port.uniqueKey()) != description || held.contains(port.uniqueKey()) ||
      ports->size() != held.size() + 1) {
    hx_syncPortsWithPatch();
    return;
  }
  const auto added = make<HXPatchPort>(&node(), port.orientation(), port.connectionRelationship());
  added->linkPatchPort(description, {});
  node().insertPort(port.uniqueKey(), added);
  detail::announceOfNode(HXNodeAddPortNotification, node(), HXPortInfo, *added);
}

void HXNodeSync::removePatchPort(HXRPort& port) {
  const Ref<HXNode> self(&node());
  const Ref<HXRPort> description(&port);
  hx_syncPortGroupsWithPatch();
  if (syncingPorts_ || resting_) return;
  const auto* ports = node().patch_ ? &node().patch_->portLayout().ports() : nullptr;
  const auto& held = node().portsByUniqueKey_;
  if (!ports || ports->contains(port.uniqueKey()) || !held.contains(port.uniqueKey()) ||
      ports->size() + 1 != held.size()) {
    hx_syncPortsWithPatch();
    return;
  }
  const auto gone = node().takePort(port.uniqueKey());
  withdrawPorts({gone});
  detail::announceOfNode(HXNodeRemovePortNotification, node(), HXPortInfo, *gone);
}

void HXNodeSync::patchLayoutWasCopied() {
  if (!node().patch_) return;
  for (const auto& entry : node().patch_->portLayout().ports()) {
    if (const auto* port = node().portsByUniqueKey_.find(entry.key)) {
      (*port)->linkPatchPort(entry.value, {});
    }
  }
  takeUpDefinedGroups();
}

void HXNodeSync::symbolicPortWasShown(const HXSymbolicPort* symbolicPort) {
  if (resting_) return;
  if (!symbolicPort || !hx_showSymbolicPort(*symbolicPort)) {
    hx_syncPortGroupsWithPatch();
  }
}

void HXNodeSync::symbolicPortWasHidden(const HXSymbolicPort& symbolicPort) {
  if (!resting_ && !hx_hideSymbolicPort(symbolicPort)) hx_syncPortGroupsWithPatch();
}

void HXNodeSync::symbolicPortWasRenamed(const HXSymbolicPort& symbolicPort) {
  const bool isPublished = node().symbolicInputPortsInForce().contains(&symbolicPort) ||
                           node().symbolicOutputPortsInForce().contains(&symbolicPort);
  if (isPublished || !isSettled()) hx_syncPortGroupsWithPatch();
}

}  // namespace tarnkit
