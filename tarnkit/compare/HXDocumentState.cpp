#include "tarnkit/compare/HXDocumentState.h"

#include <cstring>
#include <tuple>
#include <unordered_map>

#include "tarnkit/archive/HXCoding.h"
#include "tarnkit/compare/StateHash.h"
#include "tarnkit/model/HXDocument.h"
#include "tarnkit/model/HXModel.h"
#include "tarnkit/model/HXNodeWalk.h"
#include "tarnkit/model/HXParameter.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/model/HXPortGroup.h"
#include "tarnkit/model/HXPortGroupCollection.h"
#include "tarnkit/model/HXReplicatorNode.h"
#include "tarnkit/model/HXSubviewGroup.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tarnkit/patches/catalogue/Catalogue.h"
#include "tarnkit/platform/coding/StandardKeyedArchiver.h"
#include "tarnkit/platform/coding/StandardKeyedUnarchiver.h"
#include "tarnkit/platform/collections/MembersOf.h"

namespace tarnkit {

namespace {

/// Takes the state of a document down.
class StateReader {
 public:
  StateReader(const HXDocument& document, HXDocumentState& state)
      : document_(document), state_(state) {}

  void read() {
    const auto nodes = HXDocumentState::nodesOf(document_);
    numbers_.reserve(nodes.size());
    for (std::size_t i = 0; i < nodes.size(); ++i) {
      numbers_.emplace(nodes[i].get(), static_cast<std::int32_t>(i));
    }
    state_.nodes.resize(nodes.size());
    for (std::size_t i = 0; i < nodes.size(); ++i) readNode(*nodes[i], state_.nodes[i]);
    for (std::size_t i = 0; i < nodes.size(); ++i) readGroup(*nodes[i], state_.nodes[i]);
    for (std::size_t i = 0; i < nodes.size(); ++i) readWires(*nodes[i], state_.nodes[i]);
    const HXImageStore& store = *document_.imageStore();
    for (const auto& entry : store.imageEntriesInForce()) {
      state_.images.push_back({entry.value, entry.key, store.countForKey(entry.key)});
    }
  }

 private:
  using Port = HXDocumentState::Port;

  std::int32_t numberOf(const HXNode* node) const {
    const auto found = numbers_.find(node);
    return found == numbers_.end() ? -1 : found->second;
  }
  bool holds(const HXPatchPort& port, const String& key) const {
    const auto* held = port.node() ? port.node()->portsInForce().find(key) : nullptr;
    return held && *held == &port;
  }

  // The chain of published ports is walked inward as far as it is not known, so that it costs
  // neither stack nor more than its length, once.
  Port placeOf(const HXPort* port) {
    std::vector<const HXSymbolicPort*> chain;
    Port place;
    while (const auto* published = as<HXSymbolicPort>(port)) {
      if (const auto known = published_.find(published); known != published_.end()) {
        place = known->second;
        port = nullptr;
        break;
      }
      chain.push_back(published);
      port = published->port();
    }
    if (const auto* own = as<HXPatchPort>(port)) {
      const String key = own->uniqueKey();
      const std::int32_t node = numberOf(own->node());
      if (node >= 0 && holds(*own, key)) place = {node, 0, key};
    }
    for (auto at = chain.rbegin(); at != chain.rend(); ++at) {
      const bool stands = place.node >= 0 && (*at)->isHeld() && numberOf((*at)->node()) >= 0;
      place = stands ? Port{place.node, place.level + 1, place.key} : Port{};
      published_.emplace(*at, place);
    }
    return place;
  }

  void readNode(const HXNode& node, HXDocumentState::Node& to) const {
    to.key = node.uniqueKey();
    to.nodeClass = &node.isa();
    if (const auto patch = node.patch()) {
      to.patch = &node.patchClass();
      to.patchClass = patch->isa().nameString();
    } else {
      to.patchClass = node.unknownPatchClass();
    }
    to.name = node.name();
    to.comment = node.comment();
    to.position = node.position();
    to.inspectorPanel = node.inspectorPanel();
    to.selected = node.selected();
    to.forcesSubnodes = node.forceAllowsSubnodes();
    to.parent = numberOf(node.enclosingNode());
    to.shape = HXDocumentState::shapeOf(node);
    for (const auto& entry : node.parameters()) {
      to.parameters.push_back({entry.key, &entry.value->isa(),
                               HXStateValue::of(*entry.value, *document_.imageStore())});
    }
    for (const auto& entry : node.portsInForce()) {
      if (const auto& value = entry.value->staticValue()) {
        to.values.push_back({entry.key, HXStateValue::of(*value)});
      }
    }
    for (const auto side : kBothSides) {
      const auto& collection = side == HXOrientationInput ? node.inputPortGroupCollection()
                                                          : node.outputPortGroupCollection();
      for (const auto& key : *collection->portGroupKeys()) {
        to.groupOrder[side].push_back(String::from(key.get()));
      }
      for (const auto& group : node.portGroups(side)) {
        if (!group->hidden() && !group->collapsedCanvasGroup() && !group->collapsedSidebarGroup()) {
          continue;
        }
        to.flaggedGroups[side].push_back({group->groupKey(), group->hidden(),
                                          group->collapsedCanvasGroup(),
                                          group->collapsedSidebarGroup()});
      }
    }
  }

  void readGroup(const HXNode& node, HXDocumentState::Node& to) {
    const auto* group = node.subnodeGroup().get();
    if (!group) return;
    to.hasGroup = true;
    to.opaque = group->isOpaque();
    to.canvasCenter = group->canvasCenter();
    for (const auto& entry : group->subnodesInForce()) {
      to.subnodes.push_back(numberOf(entry.value.get()));
    }
    if (const auto* views = as<HXSubviewGroup>(group)) {
      to.showsViews = true;
      for (const auto& view : membersOf<HXNode>(views->subviewNodesInForce())) {
        to.views.push_back(numberOf(&view));
      }
    }
    for (const auto side : kBothSides) {
      for (const auto& port : membersOf<HXSymbolicPort>(group->symbolicPortsInForce(side))) {
        const auto* inner = port.port();
        Port place = placeOf(inner);
        const bool fits = place.node >= 0 ? inner->symbolicPort() == &port : !inner;
        if (!fits) state_.fitsTogether = false;
        to.publications[side].push_back(
            {std::move(place), port.name(), port.connectionRelationship()});
      }
    }
    const auto* replicator = as<HXReplicatorNode>(&node);
    if (!replicator) return;
    const auto outputs = replicator->replicatorArrayOutputPortKeyForPort();
    if (!outputs.empty() && !replicator->patchClass().isKindOf(HXRReplicatorNode)) {
      state_.fitsTogether = false;
    }
    for (const auto& entry : outputs) {
      to.arrayOutputs.push_back({entry.value, placeOf(entry.key.get())});
    }
  }

  void readWires(const HXNode& node, HXDocumentState::Node& to) {
    for (const auto& entry : node.portsInForce()) {
      if (entry.value->connections().isEmpty()) continue;
      HXDocumentState::Wires wires{entry.key, {}};
      entry.value->connections().forEach([&](const HXConnection& connection) {
        wires.connections.push_back(numberOf(connection));
      });
      to.wires.push_back(std::move(wires));
    }
  }

  std::int32_t numberOf(const HXConnection& connection) {
    const auto [entry, isNew] = connections_.try_emplace(&connection, -1);
    if (!isNew) return entry->second;
    HXDocumentState::Connection wire{
        placeOf(connection.outputPort()), placeOf(connection.inputPort()),
        placeOf(connection.displayOutputPort()), placeOf(connection.displayInputPort())};
    for (const auto* port : {connection.displayOutputPort(), connection.displayInputPort()}) {
      const auto* published = as<HXSymbolicPort>(port);
      if (published && published->isHeld() && placeOf(published).node < 0) {
        state_.fitsTogether = false;
      }
    }
    entry->second = static_cast<std::int32_t>(state_.connections.size());
    state_.connections.push_back(std::move(wire));
    return entry->second;
  }

  const HXDocument& document_;
  HXDocumentState& state_;
  std::unordered_map<const HXNode*, std::int32_t> numbers_;
  std::unordered_map<const HXSymbolicPort*, Port> published_;
  std::unordered_map<const HXConnection*, std::int32_t> connections_;
};

// By their bits, as everything here.
bool isSamePoint(HXPoint a, HXPoint b) { return std::memcmp(&a, &b, sizeof(a)) == 0; }

bool isEqualNode(const HXDocumentState::Node& a, const HXDocumentState::Node& b) {
  const auto plain = [](const HXDocumentState::Node& node) {
    return std::tie(node.key, node.nodeClass, node.patchClass, node.name, node.comment,
                    node.inspectorPanel, node.selected, node.forcesSubnodes, node.parent,
                    node.hasGroup, node.showsViews, node.opaque);
  };
  const auto lists = [](const HXDocumentState::Node& node) {
    return std::tie(node.parameters, node.values, node.wires, node.subnodes, node.views,
                    node.arrayOutputs, node.flaggedGroups.sides[0], node.flaggedGroups.sides[1],
                    node.groupOrder.sides[0], node.groupOrder.sides[1], node.publications.sides[0],
                    node.publications.sides[1]);
  };
  return plain(a) == plain(b) && isSamePoint(a.position, b.position) &&
         isSamePoint(a.canvasCenter, b.canvasCenter) && lists(a) == lists(b) &&
         (a.shape == b.shape || a.shape == 0 || b.shape == 0);
}

}  // namespace

HXDocumentState::HXDocumentState(const HXDocument& document) {
  StateReader(document, *this).read();
}

std::vector<Ref<HXNode>> HXDocumentState::nodesOf(const HXDocument& document) {
  std::vector<Ref<HXNode>> nodes;
  for (HXNodeWalk walk(const_cast<HXDocument&>(document)); HXNode* node = walk.next();) {
    nodes.emplace_back(node);
  }
  return nodes;
}

std::uint64_t HXDocumentState::shapeOf(const HXNode& node) {
  const bool isReplicator = as<HXReplicatorNode>(&node) != nullptr;
  detail::StateHash hash;
  for (const auto& entry : node.portsInForce()) {
    if (isReplicator && as<HXRReplicatorArrayOutputPort>(entry.value->definition())) continue;
    hash.add(entry.key);
    hash.add(static_cast<std::uint64_t>(entry.value->orientation()));
    hash.add(static_cast<std::uint64_t>(entry.value->connectionRelationship()));
  }
  for (const auto& entry : node.parameters()) {
    hash.add(entry.key);
    hash.add(entry.value->isa().name());
  }
  return hash.value() | 1;
}

Ref<Data> HXDocumentState::pieceOf(const HXNode& node) {
  StandardKeyedArchiver archiver;
  archiver.setCodingType(HXCodingTypeEditorWithKeys);
  archiver.setFilter([&node](const Object& object) {
    if (const auto* other = as<HXNode>(&object)) return other == &node;
    if (const auto* group = as<HXGroup>(&object)) return group == node.subnodeGroup().get();
    return !as<HXConnection>(&object) && !as<HXSymbolicPort>(&object);
  });
  archiver.encodeRootObject(&node);
  auto bytes = archiver.finishEncoding();
  return bytes ? make<Data>(*std::move(bytes)) : nullptr;
}

Ref<HXNode> HXDocumentState::nodeOf(const Data& piece, bool keepsKey) {
  registerModelClasses();
  auto root = StandardKeyedUnarchiver::unarchive(
      piece.bytes(), keepsKey ? HXCodingTypeEditorWithKeys : HXCodingTypeEditor);
  return root ? as<HXNode>(*root) : nullptr;
}

void HXDocumentState::mapReferences(const std::vector<std::int32_t>& numbers) {
  const auto change = [&numbers](std::int32_t& node) {
    if (node >= 0) node = numbers[static_cast<std::size_t>(node)];
  };
  for (auto& node : nodes) {
    change(node.parent);
    for (auto& subnode : node.subnodes) change(subnode);
    for (auto& view : node.views) change(view);
    for (auto& side : node.publications) {
      for (auto& publication : side) change(publication.port.node);
    }
    for (auto& output : node.arrayOutputs) change(output.port.node);
  }
  for (auto& connection : connections) {
    for (auto* port : {&connection.output, &connection.input, &connection.displayOutput,
                       &connection.displayInput}) {
      change(port->node);
    }
  }
}

void HXDocumentState::renumber(std::vector<std::int32_t>* numbers) {
  std::vector<std::int32_t> order;
  std::vector<std::int32_t> pending;
  if (!nodes.empty()) pending.push_back(0);
  while (!pending.empty()) {
    const auto at = pending.back();
    pending.pop_back();
    order.push_back(at);
    const auto& subnodes = nodes[static_cast<std::size_t>(at)].subnodes;
    pending.insert(pending.end(), subnodes.rbegin(), subnodes.rend());
  }
  std::vector<std::int32_t> fresh(nodes.size(), -1);
  for (std::size_t i = 0; i < order.size(); ++i) {
    fresh[static_cast<std::size_t>(order[i])] = static_cast<std::int32_t>(i);
  }
  std::vector<Node> sorted;
  sorted.reserve(order.size());
  for (const auto at : order) sorted.push_back(std::move(nodes[static_cast<std::size_t>(at)]));
  nodes = std::move(sorted);
  mapReferences(fresh);
  // Connections are numbered as they are met, too.
  std::vector<std::int32_t> freshWires(connections.size(), -1);
  std::vector<Connection> met;
  met.reserve(connections.size());
  for (auto& node : nodes) {
    for (auto& wires : node.wires) {
      for (auto& wire : wires.connections) {
        auto& number = freshWires[static_cast<std::size_t>(wire)];
        if (number < 0) {
          number = static_cast<std::int32_t>(met.size());
          met.push_back(std::move(connections[static_cast<std::size_t>(wire)]));
        }
        wire = number;
      }
    }
  }
  connections = std::move(met);
  if (numbers) *numbers = std::move(fresh);
}

bool HXDocumentState::isEqual(const HXDocumentState& other) const {
  if (nodes.size() != other.nodes.size() || connections != other.connections ||
      images.size() != other.images.size()) {
    return false;
  }
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    if (!isEqualNode(nodes[i], other.nodes[i])) return false;
  }
  for (std::size_t i = 0; i < images.size(); ++i) {
    if (images[i].key != other.images[i].key || images[i].count != other.images[i].count) {
      return false;
    }
  }
  return true;
}

}  // namespace tarnkit
