#include "tarnkit/model/HXGroup.h"

#include <fmt/format.h>

#include <algorithm>
#include <cassert>
#include <unordered_set>

#include "tarnkit/model/HXChangeRecorder.h"
#include "tarnkit/model/HXDocument.h"
#include "tarnkit/model/HXModel.h"
#include "tarnkit/model/HXNodeWalk.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/model/HXRefusal.h"
#include "tarnkit/model/HXSubviewGroup.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tarnkit/model/KeyCounter.h"
#include "tarnkit/platform/collections/MembersOf.h"
#include "tarnkit/platform/system/Log.h"

namespace tarnkit {

const Class HXGroup::kClass{"HXGroup", &Object::kClass, &HXGroup::makeForDecoding};

namespace {

// A node is let go of after so many rounds, though observers go on publishing its ports.
constexpr int kMaximumWithdrawals = 16;

std::vector<Ref<HXSymbolicPort>> publishedPorts(const OrderedSet& members) {
  std::vector<Ref<HXSymbolicPort>> ports;
  ports.reserve(members.count());
  for (auto& port : membersOf<HXSymbolicPort>(members)) ports.emplace_back(&port);
  return ports;
}

// The wires between what stands inside of the node and what does not.
std::vector<Ref<HXConnection>> wiresAcross(HXNode& node) {
  std::vector<const HXNode*> nodes;
  for (HXNodeWalk walk(node); const HXNode* at = walk.next();) nodes.push_back(at);
  const std::unordered_set<const HXNode*> inside(nodes.begin(), nodes.end());
  std::vector<Ref<HXConnection>> wires;
  for (const auto* at : nodes) {
    for (const auto& entry : at->portsInForce()) {
      entry.value->connections().forEach([&](HXConnection& connection) {
        for (const HXPort* end : {connection.outputPort(), connection.inputPort()}) {
          if (end && inside.contains(end->node())) continue;
          wires.emplace_back(&connection);
          break;
        }
      });
    }
  }
  return wires;
}

// The ports of the node as it shows them, then the ports that it publishes.
std::vector<Ref<HXPort>> shownAndPublishedPorts(const HXNode& node) {
  auto ports = node.ports();
  for (const auto orientation : kBothSides) {
    for (auto& port : membersOf<HXSymbolicPort>(node.symbolicPortsInForce(orientation))) {
      ports.emplace_back(&port);
    }
  }
  return ports;
}

}  // namespace

HXGroup::HXGroup() : HXGroup(Decoding{}) {
  registerModelClasses();
  uniqueKey_ = hx_newUniqueKey();
}

HXGroup::HXGroup(Decoding) noexcept : symbolicPorts_{{make<OrderedSet>(), make<OrderedSet>()}} {}

Ref<Object> HXGroup::makeForDecoding(const Class&) { return make<HXGroup>(Decoding{}); }

Ref<HXGroup> HXGroup::initWithGroup(HXGroup* group) {
  auto copy = make<HXGroup>();
  copy->takeOver(group);
  return copy;
}

void HXGroup::takeOver(HXGroup* group) {
  uniqueKey_ = group && !group->uniqueKey_.isNil() ? group->uniqueKey_ : hx_newUniqueKey();
  if (!group) return;
  storeSubnodes(group->subnodes_);
  // What is below the subnodes stays where it is.
  for (const auto& entry : subnodes_) {
    entry.value->linkParentGroup(this, HXNode::Told::itself, {});
  }
  for (const auto orientation : kBothSides) {
    storePublications(orientation, group->symbolicPortsInForce(orientation));
  }
}

String HXGroup::hx_newUniqueKey() {
  static constinit KeyCounter counter{"group_"};
  return counter.next();
}

void HXGroup::setNode(HXNode* node) {
  if (node == this->node()) return;
  if (owner()) {
    Log::warning("HXGroup", "Attempting to take a group from the node that holds it.");
    return;
  }
  node_ = node;
}

void HXGroup::linkNode(HXNode* node, PassKey<HXNode>) noexcept {
  node_ = node;
  formerNode_ = nullptr;
}

void HXGroup::linkReplacedIn(HXNode& node, PassKey<HXNode>) noexcept {
  node_ = nullptr;
  formerNode_ = &node;
}

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

HXNode* HXGroup::owner() const noexcept {
  auto* node = this->node();
  return node && node->subnodeGroup().get() == this ? node : nullptr;
}

std::vector<Ref<HXNode>> HXGroup::subnodes() const {
  std::vector<Ref<HXNode>> nodes;
  nodes.reserve(subnodes_.size());
  for (const auto& entry : subnodes_) nodes.push_back(entry.value);
  return nodes;
}

std::vector<Ref<HXSymbolicPort>> HXGroup::symbolicInputPorts() const {
  return publishedPorts(symbolicInputPortsInForce());
}
std::vector<Ref<HXSymbolicPort>> HXGroup::symbolicOutputPorts() const {
  return publishedPorts(symbolicOutputPortsInForce());
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

bool HXGroup::mayHold(const HXNode& node) const {
  const HXRefusal refusal = whyNotAddNode(node);
  if (!refusal) return true;
  Log::warning("HXGroup", refusal.code() == HXRefusal::Code::isDocument
                              ? "Attempting to add a document to a group."
                              : "Attempting to add a node to a group inside itself.");
  return false;
}

HXRefusal HXGroup::whyNotAddNode(const HXNode& node) const {
  if (node.isMemberOf(HXDocument::kClass)) {
    return HXRefusal(HXRefusal::Code::isDocument, "a document stands in no group");
  }
  if (!inForce().isInside(node)) return {};
  return HXRefusal(HXRefusal::Code::insideItself, "the group stands inside the node");
}

HXRefusal HXGroup::whyNotMoveNode(const HXNode& node) const {
  if (HXRefusal refusal = whyNotAddNode(node)) return refusal;
  if (!node.parentGroup()) {
    return HXRefusal(HXRefusal::Code::noParent, "the node stands in no group");
  }
  const auto* owner = inForce().node();
  const auto* document = owner ? owner->document() : nullptr;
  if (document && document == node.document()) return {};
  return HXRefusal(HXRefusal::Code::anotherDocument,
                   "the node and the group stand in different documents");
}

void HXGroup::addNode(HXNode& node) {
  const detail::RecordedOperation operation(inForce());
  const Ref<HXGroup> here(&inForce());
  const Ref<HXNode> kept(&node);
  if (!here->mayHold(node)) return;
  // Whoever observes what happens before the node is added may put it, this group, or another node
  // of its key somewhere else, or take the group away.
  const bool isOwned = here->owner();
  const auto isSettled = [&] {
    const auto* group = node.parentGroup();
    return (group && group->subnodeForKey(node.uniqueKey()) == &node) ||
           (isOwned && !here->inForce().owner());
  };
  if (const Ref<HXGroup> parent{node.parentGroup()}) {
    parent->removeNode(&node);
    if (isSettled() || !here->inForce().mayHold(node)) return;
  }
  const Ref<HXNode> displaced(here->inForce().subnodeForKey(node.uniqueKey()));
  if (displaced) {
    Log::warning("HXGroup", fmt::format("Replacing the node {} by another one that has its key.",
                                        node.uniqueKey().view()));
    here->inForce().displace(*displaced);
    if (isSettled() || !here->inForce().mayHold(node)) return;
    if (here->inForce().subnodeForKey(node.uniqueKey())) return;
  }
  const Ref<HXGroup> target(&here->inForce());
  const bool wasSubviewGroup = target->isSubviewGroup();
  node.linkHolder(target.get(), {});
  target->insertSubnode(kept);
  detail::announce(HXGroupAddNodeNotification, *target, *target,
                   {{HXGroupInfo, target.get()}, {HXNodeInfo, &node}});
  const Ref<HXGroup> now(&target->inForce());
  const Ref<HXNode> owner(now->owner());
  if (owner && !now->isSubviewGroup() && node.parentGroup() == now.get() &&
      node.shouldBeTreatedAsViewNode()) {
    owner->swapSubnodeGroupToViewGroup();
  }
  const Ref<HXGroup> final(&now->inForce());
  if (wasSubviewGroup && node.parentGroup() == final.get()) final->didAddNode(node);
  if (displaced) endViewGroupWithoutViews(*final);
}

void HXGroup::displace(HXNode& node) {
  const Ref<HXGroup> kept(this);
  forgetNode(node);
  // Nothing of it may stay behind, so hidden ports are withdrawn as well, and every wire that leads
  // into it: through the ports that it publishes, or straight to a port of a node below.
  std::vector<Ref<HXPort>> ports;
  for (const auto& entry : node.portsInForce()) ports.emplace_back(entry.value.get());
  auto joined = wiresAcross(node);
  for (auto& port : shownAndPublishedPorts(node)) {
    if (const auto* published = as<HXSymbolicPort>(port.get())) {
      const auto* resolved = published->resolvedPort();
      if (!resolved) continue;
      resolved->connections().forEach([&](HXConnection& connection) {
        if (connection.displayInputPort() == published ||
            connection.displayOutputPort() == published) {
          joined.emplace_back(&connection);
        }
      });
      ports.push_back(std::move(port));
    }
  }
  inForce().withdraw(ports);
  const auto* owner = inForce().node();
  if (const Ref<HXDocument> document{owner ? owner->document() : nullptr}) {
    for (const auto& connection : joined) {
      if (connection->isHeld()) document->breakConnection(*connection);
    }
  }
  inForce().release(node);
}

void HXGroup::release(HXNode& node) {
  if (subnodeForKey(node.uniqueKey()) != &node) return;
  const Ref<HXGroup> kept(this);
  if (node.parentGroup() == this) {
    node.linkHolder(nullptr, {});
  }
  takeSubnode(node.uniqueKey());
  forgetNode(node);  // again: an observer may have made it a view meanwhile
}

void HXGroup::endViewGroupWithoutViews(HXGroup& group) {
  const Ref<HXGroup> here(&group.inForce());
  const Ref<HXNode> owner(here->owner());
  if (owner && here->isSubviewGroup() && !here->hasViewNode()) owner->swapSubnodeGroupToGroup();
}

void HXGroup::removeNode(HXNode* node) {
  const detail::RecordedOperation operation(inForce());
  HXGroup& here = inForce();
  if (!node || here.subnodeForKey(node->uniqueKey()) != node) return;
  const Ref<HXGroup> keptGroup(&here);
  const Ref<HXNode> kept(node);
  here.forgetNode(*node);
  // Whoever observes that one port is withdrawn may publish or join another one.
  for (int round = 0; round < kMaximumWithdrawals; ++round) {
    const auto ports = shownAndPublishedPorts(*node);
    const bool isInDocument = node->document() != nullptr;
    if (std::none_of(ports.begin(), ports.end(), [&](const auto& port) {
          return port->symbolicPort() || (isInDocument && !port->connections().isEmpty());
        })) {
      break;
    }
    here.inForce().withdraw(ports);
    if (here.inForce().subnodeForKey(node->uniqueKey()) != node) break;
  }
  const Ref<HXGroup> now(&here.inForce());
  if (now->subnodeForKey(node->uniqueKey()) != node) return;  // an observer took it out already
  now->release(*node);
  detail::announce(HXGroupRemoveNodeNotification, *now, *now,
                   {{HXGroupInfo, now.get()}, {HXNodeInfo, node}});
  endViewGroupWithoutViews(*now);
}

void HXGroup::withdraw(const std::vector<Ref<HXPort>>& ports) {
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

void HXGroup::arrangeSubnodes(const std::vector<Ref<HXNode>>& order) {
  HXGroup& here = inForce();
  const detail::RecordedOperation operation(here);
  std::vector<Ref<HXNode>> arranged;
  std::unordered_set<const HXNode*> taken;
  for (const auto& node : order) {
    if (node && here.subnodeForKey(node->uniqueKey()) == node.get() &&
        taken.insert(node.get()).second) {
      arranged.push_back(node);
    }
  }
  for (const auto& entry : here.subnodes_) {
    if (taken.insert(entry.value.get()).second) arranged.push_back(entry.value);
  }
  if (arranged != here.subnodes()) here.storeOrder(arranged);
}

// The port groups of the owner show the ports in the order in which they are published.
void HXGroup::arrangePublications(std::int32_t orientation,
                                  const std::vector<Ref<HXSymbolicPort>>& order) {
  HXGroup& here = inForce();
  if (!symbolicPorts_.isSide(orientation)) return;
  const detail::RecordedOperation operation(here);
  const OrderedSet& present = *here.symbolicPorts_[orientation];
  std::vector<Ref<Object>> arranged;
  std::unordered_set<const Object*> taken;
  for (const auto& port : order) {
    if (port && present.contains(port.get()) && taken.insert(port.get()).second) {
      arranged.emplace_back(port.get());
    }
  }
  for (const auto& port : present) {
    if (taken.insert(port.get()).second) arranged.push_back(port);
  }
  if (std::equal(arranged.begin(), arranged.end(), present.begin(), present.end())) return;
  const Ref<HXSymbolicPort> first = as<HXSymbolicPort>(arranged.front());
  here.storeOrder(orientation, std::move(arranged));
  if (const Ref<HXNode> owner{here.owner()}) owner->symbolicPortNameDidChange(*first);
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
    const Ref<HXNode> owner(here->owner());
    const bool swaps = owner && here->hasViewNode() != wasSubviewGroup;
    if (swaps) owner->convertSubnodeGroup(!wasSubviewGroup, {});
    const Ref<HXGroup> now(&here->inForce());
    if (wasSubviewGroup && now->subnodeForKey(subject->uniqueKey()) == subject.get()) {
      now->viewTypeDidChange(*subject);
    }
    if (!swaps) return;
    subject = owner;
    group = Ref<HXGroup>(owner->parentGroup());
  }
}

void HXGroup::didAddNode(HXNode&) {}
void HXGroup::forgetNode(HXNode&) {}
void HXGroup::viewTypeDidChange(HXNode&) {}

HXRefusal HXGroup::whyNotAddSymbolicPortForPort(const HXPort& port) const {
  if (symbolicPorts_.isSide(port.orientation())) return {};
  return HXRefusal(HXRefusal::Code::noSide, "the port is neither an input nor an output", &port,
                   nullptr);
}

Ref<HXSymbolicPort> HXGroup::addSymbolicPortForPort(HXPort& port) {
  const detail::RecordedOperation operation(inForce());
  HXGroup& here = inForce();
  if (!symbolicPorts_.isSide(port.orientation())) return nullptr;
  const Ref<HXGroup> kept(&here);
  const Ref<HXPort> keptPort(&port);
  const bool isInside = port.node() && port.node()->parentGroup() == &here;
  auto symbolicPort =
      make<HXSymbolicPort>(&port, here.node(), port.orientation(), port.connectionRelationship());
  symbolicPort->giveFirstName(port.name());
  // Whoever observed the name may have taken the port's node out.
  HXGroup& now = here.inForce();
  if (isInside && (!port.node() || port.node()->parentGroup() != &now)) return nullptr;
  now.hx_addSymbolicPort(*symbolicPort, port);
  return symbolicPort;
}

void HXGroup::hx_addSymbolicPort(HXSymbolicPort& symbolicPort, HXPort& toPort) {
  if (symbolicPort.port() != &toPort) return;  // an observer gave it another port
  const Ref<HXGroup> kept(this);
  const Ref<HXPort> keptPort(&toPort);
  const bool isOwned = inForce().owner();
  toPort.linkSymbolicPort(&symbolicPort, PassKey<HXGroup>());
  if (toPort.symbolicPort() != &symbolicPort) return;  // an observer ended it, or published anew
  if (isOwned && !inForce().owner()) {                 // an observer took the group away
    return toPort.linkSymbolicPort(nullptr, PassKey<HXGroup>());
  }
  if (symbolicPorts_.isSide(toPort.orientation())) {
    inForce().insertPublication(toPort.orientation(), symbolicPort);
  }
  if (const Ref<HXNode> owner{inForce().node()}) owner->symbolicPortNameWasAdded(toPort);
  if (toPort.symbolicPort() != &symbolicPort) return;
  HXGroup& now = inForce();
  detail::announce(HXGroupAddSymbolicPortForPortNotification, now, now,
                   {{HXGroupInfo, &now}, {HXPortInfo, &toPort}});
}

void HXGroup::restoreSymbolicPort(HXSymbolicPort& symbolicPort) {
  const detail::RecordedOperation operation(inForce());
  const Ref<HXPort> port(symbolicPort.port());
  if (!port) return;
  const Ref<HXSymbolicPort> kept(&symbolicPort);
  const Ref<HXGroup> keptGroup(this);
  port->linkSymbolicPort(nullptr, PassKey<HXGroup>());
  symbolicPort.linkNode(inForce().node(), PassKey<HXGroup>());
  inForce().hx_addSymbolicPort(symbolicPort, *port);
}

// Ending a publication takes away the port that a replicator made for it, which ends that port's
// own publication, and so on upward, one call inside the other. Where that would run deep, the
// outermost publications end first.
void HXGroup::endDeepPublications(HXPort& port) {
  constexpr std::size_t kMaximumDepth = 200;
  std::vector<std::pair<Ref<HXGroup>, Ref<HXPort>>> above;
  // A file may say that an array output collects what stands for itself; beyond the depth each port
  // is entered once.
  std::unordered_set<const HXPort*> deep;
  HXPort* next = &port;
  for (std::size_t at = 0; next; ++at) {
    const Ref<HXSymbolicPort> symbolicPort(next->symbolicPort());
    const auto* owner = symbolicPort ? symbolicPort->node() : nullptr;
    if (owner && owner->parentGroup()) {
      for (HXPort* outer :
           {static_cast<HXPort*>(symbolicPort.get()), owner->collectingPort(*next)}) {
        if (!outer || !outer->symbolicPort()) continue;
        if (above.size() > kMaximumDepth && !deep.insert(outer).second) continue;
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

// A move withdraws only what is shown, so the publication of a hidden port may stand in a group
// that its node has left. Whoever ends it then asks the group that the node is in.
HXGroup* HXGroup::holderOf(const HXSymbolicPort& symbolicPort, HXGroup& asked) {
  const auto* owner = symbolicPort.node();
  auto* group = owner ? owner->subnodeGroup().get() : nullptr;
  const std::int32_t side = symbolicPort.orientation();
  if (!group || group == &asked.inForce() || !group->symbolicPorts_.isSide(side)) return &asked;
  return group->symbolicPorts_[side]->contains(&symbolicPort) ? group : &asked;
}

void HXGroup::removeSymbolicPortForPort(HXPort* port) {
  const detail::RecordedOperation operation(inForce());
  const Ref<HXGroup> kept(this);
  const Ref<HXPort> keptPort(port);
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
    const Ref<HXSymbolicPort> symbolicPort(port->symbolicPort());
    levels.push_back(
        {Ref<HXGroup>(holderOf(*symbolicPort, *group)), Ref<HXPort>(port), symbolicPort});
    port = levels.back().symbolicPort.get();
    // While a document is read, a group knows its node before its published ports do.
    const auto* owner = port->node() ? port->node() : levels.back().group->node();
    group = owner ? owner->parentGroup() : nullptr;
  }
  for (auto level = levels.rbegin(); level != levels.rend(); ++level) {
    if (level->port->symbolicPort() != level->symbolicPort.get()) continue;
    level->group->inForce().unpublish(*level->port, *level->symbolicPort);
  }
}

void HXGroup::removeSymbolicPort(HXSymbolicPort& symbolicPort) {
  const detail::RecordedOperation operation(inForce());
  const Ref<HXGroup> kept(this);
  const Ref<HXSymbolicPort> keptPort(&symbolicPort);
  const auto isPublished = [&] {
    return inForce().symbolicInputPortsInForce().contains(&symbolicPort) ||
           inForce().symbolicOutputPortsInForce().contains(&symbolicPort);
  };
  if (!isPublished()) return;
  if (HXPort* inner = symbolicPort.port(); inner && inner->symbolicPort() == &symbolicPort) {
    return removeSymbolicPortForPort(inner);
  }
  if (const Ref<HXNode> owner{inForce().node()}; owner && symbolicPort.symbolicPort()) {
    const Ref<HXGroup> outer(owner->parentGroup());
    if (outer) outer->removeSymbolicPortForPort(&symbolicPort);
  }
  if (!isPublished()) return;  // an observer ended it already
  inForce().removePublication(symbolicPort);
  // No inner port can be told of, so the group's node is told of the published one alone.
  if (const Ref<HXNode> owner{inForce().node()}) {
    owner->symbolicPortNameWasRemoved(symbolicPort, symbolicPort);
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
    if (port.symbolicPort() != &symbolicPort) return;  // an observer ended it already
  }
  inForce().removePublication(symbolicPort);
  port.linkSymbolicPort(nullptr, PassKey<HXGroup>());
  inForce().removePublication(symbolicPort);  // again: an observer may have restored it meanwhile
  if (const Ref<HXNode> owner{inForce().node()}) {
    owner->symbolicPortNameWasRemoved(port, symbolicPort);
  }
  HXGroup& now = inForce();
  detail::announce(HXGroupRemoveSymbolicPortForPortNotification, now, now,
                   {{HXGroupInfo, &now}, {HXPortInfo, &port}});
}

void HXGroup::hierarchyWillChange() {
  for (const auto& node : subnodes()) node->hierarchyWillChange();
}
void HXGroup::hierarchyDidChange() {
  for (const auto& node : subnodes()) node->hierarchyDidChange();
}
void HXGroup::pruneInvalidConnections() {
  const detail::RecordedOperation operation(*this);
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
