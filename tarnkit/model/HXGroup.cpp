#include "tarnkit/model/HXGroup.h"

#include <fmt/format.h>

#include "tarnkit/model/HXDocument.h"
#include "tarnkit/model/HXSubviewGroup.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tarnkit/platform/Log.h"

namespace tarnkit {

const Class HXGroup::kClass{"HXGroup", &Object::kClass, &HXGroup::makeForDecoding};

namespace {

UserInfo groupInfo(const Ref<Object>& documentKey, HXGroup& group, const Symbol& key,
                   Object& object) {
  return {{HXDocumentKeyInfo, documentKey},
          {HXGroupInfo, Ref<Object>(&group)},
          {key, Ref<Object>(&object)}};
}

void warnOfCircle() {
  Log::warning("HXGroup", "Attempting to add a node to a group inside itself.");
}

}  // namespace

HXGroup::HXGroup() : HXGroup(Decoding{}) { uniqueKey_ = hx_newUniqueKey(); }

HXGroup::HXGroup(Decoding) noexcept
    : symbolicInputPorts_(make<OrderedSet>()), symbolicOutputPorts_(make<OrderedSet>()) {}

Ref<Object> HXGroup::makeForDecoding(const Class&) { return make<HXGroup>(Decoding{}); }

Ref<HXGroup> HXGroup::initWithGroup(HXGroup* group) {
  auto copy = make<HXGroup>();
  copy->takeOver(group);
  return copy;
}

void HXGroup::takeOver(HXGroup* group) {
  uniqueKey_ = group && !group->uniqueKey_.isNil() ? group->uniqueKey_ : hx_newUniqueKey();
  if (!group) return;
  subnodes_ = group->subnodes_;
  // What is below the subnodes stays where it is.
  for (const auto& entry : subnodes_) {
    entry.value->tellParametersHierarchyWillChange();
    entry.value->parentGroup_ = this;
    entry.value->tellParametersHierarchyDidChange();
  }
  symbolicInputPorts_ = make<OrderedSet>(*group->symbolicInputPorts_);
  symbolicOutputPorts_ = make<OrderedSet>(*group->symbolicOutputPorts_);
}

String HXGroup::hx_newUniqueKey() {
  static std::uint32_t next = 0;
  return String(fmt::format("group_{}", static_cast<std::int32_t>(next++)));
}

void HXGroup::setNode(HXNode* node) { node_ = node; }

String HXGroup::documentKey() const {
  const auto* node = this->node();
  return node ? node->documentKey() : String();
}

const Symbol& HXGroup::processClassName() const {
  static constinit const Symbol name{"PMGroup"};
  return name;
}

HXGroup& HXGroup::inForce() noexcept {
  const auto* owner = formerNode_.get();
  return owner && owner->subnodeGroup() ? *owner->subnodeGroup() : *this;
}

std::vector<Ref<HXNode>> HXGroup::subnodes() const {
  std::vector<Ref<HXNode>> nodes;
  nodes.reserve(subnodes_.size());
  for (const auto& entry : subnodes_) nodes.push_back(entry.value);
  return nodes;
}

HXNode* HXGroup::subnodeForKey(const String& uniqueKey) const {
  const auto* node = subnodes_.find(uniqueKey);
  return node ? node->get() : nullptr;
}

std::vector<Ref<HXNode>> HXGroup::selectedNodes() const {
  std::vector<Ref<HXNode>> nodes;
  for (const auto& entry : subnodes_) {
    if (entry.value->selected()) nodes.push_back(entry.value);
  }
  return nodes;
}

bool HXGroup::isInside(const HXNode& node) const {
  const auto* subnodes = node.subnodeGroup().get();
  if (!subnodes || (subnodes != this && subnodes->subnodes_.empty())) return false;
  for (const HXNode* at = this->node(); at; at = at->enclosingNode()) {
    if (at == &node) return true;
  }
  return false;
}

// Whatever is called out to below (observers, the owner's swaps) may replace this group, so every
// step looks up the group in force anew.

void HXGroup::addNode(HXNode& node) {
  const Ref<HXGroup> here(&inForce());
  const Ref<HXNode> kept(&node);
  if (here->isInside(node)) {
    warnOfCircle();
    return;
  }
  const bool wasSubviewGroup = here->isSubviewGroup();
  if (const Ref<HXGroup> parent{node.parentGroup()}) {
    parent->removeNode(&node);
    // Whoever observed that may have put the node, or this group, somewhere else.
    const auto* elsewhere = node.parentGroup();
    if (elsewhere && elsewhere->subnodeForKey(node.uniqueKey()) == &node) return;
    if (here->inForce().isInside(node)) {
      warnOfCircle();
      return;
    }
  }
  const Ref<HXGroup> target(&here->inForce());
  node.setParentGroup(target.get());
  target->subnodes_.set(node.uniqueKey(), kept);
  detail::announce(HXGroupAddNodeNotification, *target, *target,
                   [&](const Ref<Object>& documentKey) {
                     return groupInfo(documentKey, *target, HXNodeInfo, node);
                   });
  const Ref<HXGroup> now(&target->inForce());
  if (!now->isSubviewGroup() && now->node() && node.parentGroup() == now.get() &&
      node.shouldBeTreatedAsViewNode()) {
    Ref<HXNode>(now->node())->swapSubnodeGroupToViewGroup();
  }
  HXGroup& final = now->inForce();
  if (wasSubviewGroup && node.parentGroup() == &final) final.didAddNode(node);
}

void HXGroup::removeNode(HXNode* node) {
  HXGroup& here = inForce();
  if (!node || here.subnodeForKey(node->uniqueKey()) != node) return;
  const Ref<HXGroup> keptGroup(&here);
  const Ref<HXNode> kept(node);
  here.forgetNode(*node);
  here.inForce().withdraw(*node);
  const Ref<HXGroup> now(&here.inForce());
  if (node->parentGroup() != now.get()) return;  // an observer took it out already
  node->setParentGroup(nullptr);
  now->subnodes_.take(node->uniqueKey());
  now->forgetNode(*node);  // again: an observer may have made it a view meanwhile
  detail::announce(HXGroupRemoveNodeNotification, *now, *now, [&](const Ref<Object>& documentKey) {
    return groupInfo(documentKey, *now, HXNodeInfo, *node);
  });
  const Ref<HXGroup> final(&now->inForce());
  if (final->isSubviewGroup() && final->node() && !final->hasViewNode()) {
    Ref<HXNode>(final->node())->swapSubnodeGroupToGroup();
  }
}

void HXGroup::withdraw(HXNode& node) {
  auto ports = node.ports();
  for (const auto* published : {&node.symbolicInputPorts(), &node.symbolicOutputPorts()}) {
    for (const auto& port : *published) {
      ports.emplace_back(static_cast<HXPort*>(port.get()));
    }
  }
  const Ref<HXGroup> kept(this);
  for (const auto& port : ports) {
    HXGroup& here = inForce();
    if (port->symbolicPort()) here.removeSymbolicPortForPort(port.get());
    if (port->connections().isEmpty()) continue;
    const auto* owner = here.inForce().node();
    if (const Ref<HXDocument> document{owner ? owner->document() : nullptr}) {
      document->breakAllConnectionsToPort(*port);
    }
  }
}

bool HXGroup::hasViewNode() const {
  for (const auto& entry : subnodes_) {
    if (entry.value->shouldBeTreatedAsViewNode()) return true;
  }
  return false;
}

// A swap makes the owner a view node or ends that, so it goes on in the group above: level by
// level, since groups may be nested deeper than the stack.
void HXGroup::subnodeViewTypeDidChange(HXNode& node) {
  Ref<HXNode> subject(&node);
  Ref<HXGroup> group(this);
  while (group) {
    const Ref<HXGroup> here(&group->inForce());
    const bool wasSubviewGroup = here->isSubviewGroup();
    const Ref<HXNode> owner(here->node());
    const bool swaps = owner && here->hasViewNode() != wasSubviewGroup;
    if (swaps) owner->exchangeSubnodeGroup(owner->makeSubnodeGroup(!wasSubviewGroup));
    HXGroup& now = here->inForce();
    if (wasSubviewGroup && now.subnodeForKey(subject->uniqueKey()) == subject.get()) {
      now.viewTypeDidChange(*subject);
    }
    if (!swaps) return;
    subject = owner;
    group = Ref<HXGroup>(owner->parentGroup());
  }
}

void HXGroup::didAddNode(HXNode&) {}
void HXGroup::forgetNode(HXNode&) {}
void HXGroup::viewTypeDidChange(HXNode&) {}

OrderedSet* HXGroup::symbolicPorts(std::int32_t orientation) const noexcept {
  if (orientation == HXOrientationInput) return symbolicInputPorts_.get();
  if (orientation == HXOrientationOutput) return symbolicOutputPorts_.get();
  return nullptr;
}

Ref<HXSymbolicPort> HXGroup::addSymbolicPortForPort(HXPort& port) {
  HXGroup& here = inForce();
  if (!here.symbolicPorts(port.orientation())) return nullptr;
  const Ref<HXGroup> kept(&here);
  const Ref<HXPort> keptPort(&port);
  const bool isInside = port.node() && port.node()->parentGroup() == &here;
  auto symbolicPort =
      make<HXSymbolicPort>(&port, here.node(), port.orientation(), port.connectionRelationship());
  symbolicPort->setName(port.name());
  // Whoever observed the name may have taken the port's node out.
  HXGroup& now = here.inForce();
  if (isInside && (!port.node() || port.node()->parentGroup() != &now)) return nullptr;
  now.hx_addSymbolicPort(*symbolicPort, port);
  return symbolicPort;
}

void HXGroup::hx_addSymbolicPort(HXSymbolicPort& symbolicPort, HXPort& toPort) {
  const Ref<HXGroup> kept(this);
  const Ref<HXPort> keptPort(&toPort);
  toPort.setSymbolicPort(&symbolicPort);
  if (toPort.symbolicPort() != &symbolicPort) return;  // an observer ended the publication already
  if (auto* ports = inForce().symbolicPorts(toPort.orientation())) {
    ports->add(Ref<Object>(&symbolicPort));
  }
  if (const Ref<HXNode> owner{inForce().node()}) owner->symbolicPortNameWasAdded(toPort);
  if (toPort.symbolicPort() != &symbolicPort) return;
  HXGroup& now = inForce();
  detail::announce(HXGroupAddSymbolicPortForPortNotification, now, now,
                   [&](const Ref<Object>& documentKey) {
                     return groupInfo(documentKey, now, HXPortInfo, toPort);
                   });
}

void HXGroup::restoreSymbolicPort(HXSymbolicPort& symbolicPort) {
  const Ref<HXPort> port(symbolicPort.port());
  if (!port) return;
  const Ref<HXSymbolicPort> kept(&symbolicPort);
  const Ref<HXGroup> keptGroup(this);
  port->setSymbolicPort(nullptr);
  inForce().hx_addSymbolicPort(symbolicPort, *port);
}

// Ending a publication takes away the port that a replicator made for it, which ends that port's
// own publication, and so on upward, one call inside the other. Where that would run deep, the
// outermost publications end first.
void HXGroup::endDeepPublications(HXPort& port) {
  constexpr std::size_t kMaximumDepth = 200;
  std::vector<std::pair<Ref<HXGroup>, Ref<HXPort>>> above;
  HXPort* next = &port;
  for (std::size_t at = 0; next; ++at) {
    const Ref<HXSymbolicPort> symbolicPort(next->symbolicPort());
    const auto* owner = symbolicPort ? symbolicPort->node() : nullptr;
    if (owner && owner->parentGroup()) {
      for (HXPort* outer :
           {static_cast<HXPort*>(symbolicPort.get()), owner->collectingPort(*next)}) {
        if (!outer || !outer->symbolicPort()) continue;
        above.emplace_back(Ref<HXGroup>(owner->parentGroup()), Ref<HXPort>(outer));
      }
    }
    next = at < above.size() ? above[at].second.get() : nullptr;
  }
  if (above.size() <= kMaximumDepth) return;
  for (auto entry = above.rbegin(); entry != above.rend(); ++entry) {
    entry->first->inForce().removeSymbolicPortForPort(entry->second.get());
  }
}

void HXGroup::removeSymbolicPortForPort(HXPort* port) {
  if (port && port->symbolicPort()) endDeepPublications(*port);
  // A port may be published through many levels; the outermost publication ends first.
  struct Level {
    Ref<HXGroup> group;
    Ref<HXPort> port;
    Ref<HXSymbolicPort> symbolicPort;
  };
  std::vector<Level> levels;
  HXGroup* group = this;
  while (group && port && port->symbolicPort()) {
    levels.push_back(
        {Ref<HXGroup>(group), Ref<HXPort>(port), Ref<HXSymbolicPort>(port->symbolicPort())});
    port = levels.back().symbolicPort.get();
    group = port->node() ? port->node()->parentGroup() : nullptr;
  }
  for (auto level = levels.rbegin(); level != levels.rend(); ++level) {
    if (level->port->symbolicPort() != level->symbolicPort.get()) continue;
    level->group->inForce().unpublish(*level->port, *level->symbolicPort);
  }
}

void HXGroup::unpublish(HXPort& port, HXSymbolicPort& symbolicPort) {
  const Ref<HXGroup> kept(this);
  const Ref<HXPort> resolved(symbolicPort.resolvedPort());
  if (resolved && !resolved->connections().isEmpty()) {
    const auto* owner = node();
    if (const Ref<HXDocument> document{owner ? owner->document() : nullptr}) {
      document->breakAllConnectionsToPort(*resolved);
    }
    if (port.symbolicPort() != &symbolicPort) return;  // an observer ended the publication already
  }
  HXGroup& here = inForce();
  here.symbolicInputPorts_->remove(&symbolicPort);
  here.symbolicOutputPorts_->remove(&symbolicPort);
  port.setSymbolicPort(nullptr);
  if (const Ref<HXNode> owner{inForce().node()})
    owner->symbolicPortNameWasRemoved(port, symbolicPort);
  HXGroup& now = inForce();
  detail::announce(HXGroupRemoveSymbolicPortForPortNotification, now, now,
                   [&](const Ref<Object>& documentKey) {
                     return groupInfo(documentKey, now, HXPortInfo, port);
                   });
}

void HXGroup::hierarchyWillChange() {
  for (const auto& node : subnodes()) node->hierarchyWillChange();
}
void HXGroup::hierarchyDidChange() {
  for (const auto& node : subnodes()) node->hierarchyDidChange();
}
void HXGroup::pruneInvalidConnections() {
  for (const auto& node : subnodes()) node->pruneInvalidConnections();
}

// The subnodes are named by class and key only, so that a text is not as long as the document.
String HXGroup::description() const {
  std::string nodes;
  for (const auto& entry : subnodes_) {
    if (!nodes.empty()) nodes += ", ";
    nodes += fmt::format("{} {}", entry.value->isa().name(), entry.key.view());
  }
  return String(
      fmt::format("<{}: {}, Nodes: ({})>", isa().name(), static_cast<const void*>(this), nodes));
}

}  // namespace tarnkit
