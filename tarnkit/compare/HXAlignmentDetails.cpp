#include <algorithm>
#include <unordered_set>

#include "tarnkit/compare/HXDocumentAlignment.h"
#include "tarnkit/model/HXNodeWalk.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/model/HXPortGroup.h"
#include "tarnkit/model/HXPortGroupCollection.h"
#include "tarnkit/model/HXReplicatorNode.h"
#include "tarnkit/model/HXSubviewGroup.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tarnkit/platform/collections/MembersOf.h"

// How nodes look and what joins them; see HXDocumentAlignment.cpp for the nodes themselves.

namespace tarnkit {

namespace {

// Whether no node has the port any more for which it stands, whoever keeps that alive.
bool leadsNowhere(const HXSymbolicPort& published) {
  const auto* port = as<HXPatchPort>(published.resolvedPort());
  const auto* node = port ? port->node() : nullptr;
  const auto* held = node ? node->portsInForce().find(port->uniqueKey()) : nullptr;
  return !held || *held != port || !node->document();
}

}  // namespace

std::size_t HXDocumentAlignment::JoinedHash::operator()(const Joined& joined) const noexcept {
  const auto first = reinterpret_cast<std::uintptr_t>(joined.first);
  const auto second = reinterpret_cast<std::uintptr_t>(joined.second);
  return std::hash<std::uintptr_t>()(first * 31 + (second >> 4U));
}

HXPort* HXDocumentAlignment::portAt(const State::Port& port) const {
  const auto* node = port.node >= 0 ? nodes_[static_cast<std::size_t>(port.node)].get() : nullptr;
  const auto* own = node ? node->portsInForce().find(port.key) : nullptr;
  HXPort* at = own ? own->get() : nullptr;
  for (std::uint32_t level = port.level; at && level > 0; --level) at = at->symbolicPort();
  return at;
}

void HXDocumentAlignment::alignGroupKind(std::size_t number) {
  const auto& node = nodes_[number];
  if (!node || !node->subnodeGroup() || !goal_.nodes[number].hasGroup) return;
  if (goal_.nodes[number].showsViews) {
    node->swapSubnodeGroupToViewGroup();
  } else {
    node->swapSubnodeGroupToGroup();
  }
}

void HXDocumentAlignment::alignGroup(std::size_t number) {
  const auto& goal = goal_.nodes[number];
  const Ref<HXGroup> group = nodes_[number] ? nodes_[number]->subnodeGroup() : nullptr;
  if (!group) return;
  group->setOpaque(goal.opaque);
  group->setCanvasCenter(goal.canvasCenter);
  const auto all = [this](const std::vector<std::int32_t>& numbers) {
    std::vector<Ref<HXNode>> nodes;
    for (const auto at : numbers) nodes.push_back(nodes_[static_cast<std::size_t>(at)]);
    return nodes;
  };
  group->arrangeSubnodes(all(goal.subnodes));
  if (const Ref<HXSubviewGroup> views = as<HXSubviewGroup>(group)) {
    views->setSubviewNodes(all(goal.views));
  }
}

// The published ports that lead nowhere, as they are there for those that should: by their names,
// in their order; null for one that is not there.
std::vector<Ref<HXSymbolicPort>> HXDocumentAlignment::strays(
    const HXGroup& group, const std::vector<State::Publication>& wanted, std::int32_t side) {
  std::vector<Ref<HXSymbolicPort>> found;
  std::unordered_map<String, std::vector<Ref<HXSymbolicPort>>> present;
  for (auto& port : membersOf<HXSymbolicPort>(group.symbolicPortsInForce(side))) {
    if (leadsNowhere(port)) present[port.name()].emplace_back(&port);
  }
  for (auto& entry : present) std::reverse(entry.second.begin(), entry.second.end());
  for (const auto& publication : wanted) {
    if (publication.port.node >= 0) continue;
    auto& ports = present[publication.name];
    found.push_back(ports.empty() ? nullptr : ports.back());
    if (!ports.empty()) ports.pop_back();
  }
  return found;
}

// The port that it is made for ends right away.
Ref<HXSymbolicPort> HXDocumentAlignment::publishNothing(HXGroup& group, std::int32_t side,
                                                        const State::Publication& wanted) {
  const auto nothing = make<HXPatchPort>(nullptr, side, wanted.relationship);
  const auto published = group.addSymbolicPortForPort(*nothing);
  if (!published) return nullptr;
  published->setName(wanted.name);
  return published;
}

void HXDocumentAlignment::unpublishOthers(std::size_t number) {
  const auto& goal = goal_.nodes[number];
  const auto& node = nodes_[number];
  const Ref<HXGroup> group = node ? node->subnodeGroup() : nullptr;
  if (!group) return;
  for (const auto side : kBothSides) {
    std::unordered_set<const HXPort*> wanted;
    for (const auto& publication : goal.publications[side]) {
      wanted.insert(portAt(publication.port));
    }
    const auto stray = strays(*group, goal.publications[side], side);
    const auto present =
        side == HXOrientationInput ? group->symbolicInputPorts() : group->symbolicOutputPorts();
    for (const auto& published : present) {
      Ref<HXPort> inner(published->port());
      if (leadsNowhere(*published)) {
        if (std::find(stray.begin(), stray.end(), published) != stray.end()) continue;
        inner = make<HXPatchPort>(nullptr, side, published->connectionRelationship());
        published->setPort(inner.get());
      }
      if (inner && inner->symbolicPort() == published.get() && !wanted.contains(inner.get())) {
        group->removeSymbolicPortForPort(inner.get());
        hasOtherPublications_[number] = true;
      }
    }
  }
}

void HXDocumentAlignment::publish(std::size_t number) {
  const auto& goal = goal_.nodes[number];
  const auto& node = nodes_[number];
  const Ref<HXGroup> group = node ? node->subnodeGroup() : nullptr;
  if (!group) return;
  for (const auto side : kBothSides) {
    std::vector<Ref<HXSymbolicPort>> order;
    const auto stray = strays(*group, goal.publications[side], side);
    auto nextStray = stray.begin();
    for (const auto& publication : goal.publications[side]) {
      if (publication.port.node < 0) {
        auto published = *nextStray++;
        if (!published) published = publishNothing(*group, side, publication);
        if (!published) continue;
        published->setPort(nullptr);
        order.push_back(published);
        continue;
      }
      const Ref<HXPort> inner(portAt(publication.port));
      if (!inner) continue;
      Ref<HXSymbolicPort> published(inner->symbolicPort());
      // A hidden port that moved is still published where it was.
      if (published && !group->symbolicPortsInForce(side).contains(published.get())) {
        group->removeSymbolicPortForPort(inner.get());
        published = nullptr;
      }
      if (!published || published->name() != publication.name) hasOtherPublications_[number] = true;
      if (!published) published = group->addSymbolicPortForPort(*inner);
      if (!published) continue;
      if (published->name() != publication.name) published->setName(publication.name);
      order.push_back(published);
    }
    group->arrangePublications(side, order);
    // Port groups that came one by one stand in the order of their coming, which no file keeps.
    if (hasOtherPublications_[number] && !order.empty()) {
      node->symbolicPortNameDidChange(*order.front());
    }
  }
  const Ref<HXReplicatorNode> replicator = as<HXReplicatorNode>(node);
  if (!replicator) return;
  IdentityMap<HXPort, String> outputs;
  for (const auto& output : goal.arrayOutputs) {
    if (HXPort* const port = portAt(output.port)) outputs.set(Ref<HXPort>(port), output.key);
  }
  replicator->setArrayOutputs(outputs);
}

void HXDocumentAlignment::alignLooks(std::size_t number) {
  const auto& goal = goal_.nodes[number];
  const auto& node = nodes_[number];
  if (!node) return;
  node->setName(goal.name);
  node->setComment(goal.comment);
  node->setPosition(goal.position);
  node->setSelected(goal.selected);
  node->setInspectorPanel(goal.inspectorPanel);
}

void HXDocumentAlignment::alignValues(std::size_t number) {
  const auto& goal = goal_.nodes[number];
  const auto& node = nodes_[number];
  if (!node) return;
  std::unordered_set<std::string_view> wanted;
  for (const auto& value : goal.values) {
    wanted.insert(value.key.view());
    const Ref<HXPatchPort> port = node->portsInForce().get(value.key);
    if (!port) continue;
    const auto& present = port->staticValue();
    if (!present || HXStateValue::of(*present) != value.value) {
      port->setStaticValue(value.value.primitive());
    }
  }
  std::vector<Ref<HXPatchPort>> others;
  for (const auto& entry : node->portsInForce()) {
    if (entry.value->staticValue() && !wanted.contains(entry.key.view())) {
      others.push_back(entry.value);
    }
  }
  for (const auto& port : others) port->setStaticValue(nullptr);
}

void HXDocumentAlignment::alignPortGroups(std::size_t number) {
  const auto& goal = goal_.nodes[number];
  const auto& node = nodes_[number];
  if (!node) return;
  for (const auto side : kBothSides) {
    for (const auto& group : node->portGroups(side)) {
      const auto& flagged = goal.flaggedGroups[side];
      const auto found = std::find_if(flagged.begin(), flagged.end(), [&](const auto& wanted) {
        return wanted.key == group->groupKey();
      });
      const auto wanted = found == flagged.end() ? State::PortGroup() : *found;
      group->setHidden(wanted.hidden);
      group->setCollapsedCanvasGroup(wanted.collapsedCanvas);
      group->setCollapsedSidebarGroup(wanted.collapsedSidebar);
    }
    const auto collection = side == HXOrientationInput ? node->inputPortGroupCollection()
                                                       : node->outputPortGroupCollection();
    auto order = make<OrderedSet>();
    for (const auto& key : goal.groupOrder[side]) order->add(key.object());
    const auto present = collection->portGroupKeys();
    if (present->isEqual(*order)) continue;
    // Keys that the node does not have would stand for nothing; those that it has besides come
    // last.
    auto arranged = make<OrderedSet>();
    for (const auto& key : *order) {
      if (present->contains(key.get())) arranged->add(key);
    }
    for (const auto& key : *present) arranged->add(key);
    collection->updateWithPortGroupKeys(nullptr);
    collection->updateWithPortGroupKeys(arranged);
  }
}

void HXDocumentAlignment::noteWires() {
  known_.clear();
  present_.clear();
  std::unordered_set<const HXConnection*> met;
  const auto note = [&](const HXNode& node) {
    for (const auto& entry : node.portsInForce()) {
      entry.value->connections().forEach([&](HXConnection& wire) {
        if (!met.insert(&wire).second) return;
        known_[{wire.displayOutputPort(), wire.displayInputPort()}].emplace_back(&wire);
        present_.emplace_back(&wire);
      });
    }
  };
  for (HXNodeWalk walk(document_); const HXNode* node = walk.next();) note(*node);
  // One that has found no place yet may hold some already.
  for (const auto& node : nodes_) {
    if (node) note(*node);
  }
}

// Those that stay are taken out of what is known; ports that are to come join nothing yet.
void HXDocumentAlignment::breakOthers() {
  wires_.assign(goal_.connections.size(), nullptr);
  for (std::size_t i = 0; i < wires_.size(); ++i) {
    const auto& wanted = goal_.connections[i];
    const auto* output = portAt(wanted.displayOutput);
    const auto* input = portAt(wanted.displayInput);
    const auto found = known_.find({output, input});
    if (found == known_.end()) continue;
    auto& wires = found->second;
    const auto wire = std::find_if(wires.begin(), wires.end(), [&](const auto& one) {
      return one && one->outputPort() == portAt(wanted.output) &&
             one->inputPort() == portAt(wanted.input);
    });
    if (wire != wires.end()) wires_[i] = std::exchange(*wire, nullptr);
  }
  std::unordered_set<const HXConnection*> staying;
  for (const auto& wire : wires_) staying.insert(wire.get());
  for (const auto& wire : present_) {
    if (!staying.contains(wire.get()) && wire->isHeld()) document_.breakConnection(*wire);
  }
  known_.clear();
}

// A port that takes one connection keeps the first, and another end may hold a second one: which is
// which the ports of the goal tell.
void HXDocumentAlignment::connect() {
  std::vector<int> holders(goal_.connections.size(), 0);
  for (const auto& node : goal_.nodes) {
    for (const auto& wires : node.wires) {
      for (const auto wire : wires.connections) ++holders[static_cast<std::size_t>(wire)];
    }
  }
  for (const int ends : {2, 1}) {
    for (std::size_t i = 0; i < holders.size(); ++i) {
      if (holders[i] == ends) connect(i);
    }
  }
}

void HXDocumentAlignment::connect(std::size_t connection) {
  const auto& wanted = goal_.connections[connection];
  auto& wire = wires_[connection];
  if (wire && wire->isHeld()) return;
  if (!wire) {
    // A port that ought to be there and is not leaves nothing to be joined.
    std::vector<HXPort*> ports;
    for (const auto* port :
         {&wanted.output, &wanted.input, &wanted.displayOutput, &wanted.displayInput}) {
      ports.push_back(portAt(*port));
      if (!ports.back() && port->node >= 0) return;
    }
    wire = make<HXConnection>(ports[0], ports[1], ports[2], ports[3]);
  }
  document_.restoreConnection(*wire);
}

void HXDocumentAlignment::arrangeConnections(std::size_t number) {
  const auto& node = nodes_[number];
  if (!node) return;
  for (const auto& wires : goal_.nodes[number].wires) {
    const Ref<HXPatchPort> port = node->portsInForce().get(wires.key);
    if (!port || port->connections().count() < 2) continue;
    std::vector<Ref<HXConnection>> order;
    for (const auto wire : wires.connections) {
      const auto& connection = wires_[static_cast<std::size_t>(wire)];
      if (connection) order.push_back(connection);
    }
    port->arrangeConnections(order);
  }
}

}  // namespace tarnkit
