#include "tarnkit/text/TextGraph.h"

#include <fmt/format.h>

#include <algorithm>
#include <numeric>
#include <unordered_set>

#include "tarnkit/model/HXNodeWalk.h"
#include "tarnkit/patches/PatchRegistry.h"
#include "tarnkit/platform/collections/MembersOf.h"
#include "tarnkit/platform/text/UTF8.h"
#include "tarnkit/text/TextOrder.h"

namespace tarnkit::detail {

namespace {

// Longer ones would be repeated at every connection.
constexpr std::size_t kMaximumName = 200;

bool canBeID(std::string_view key) {
  if (key.empty() || key.size() > kMaximumName || key.find_first_of("/#") != key.npos) return false;
  for (std::size_t at = 0; at < key.size();) {
    const auto point = codePointAt(key, at);
    if (isControl(point.value) || (point.value == 0xFFFD && point.size == 1)) return false;
    at += point.size;
  }
  return true;
}

}  // namespace

std::string portNumber(std::int32_t orientation, std::size_t index) {
  return fmt::format("#{}{}", orientation == HXOrientationInput ? "in" : "out", index);
}

std::string portMember(const std::string& portName, bool isNumber) {
  if (isNumber || (!portName.starts_with('#') && !portName.starts_with('/'))) return portName;
  return "/" + portName;
}

std::string publishedKey(std::string_view nodeKey, std::string_view portKey) {
  if (nodeKey.size() + portKey.size() > kMaximumName) return {};
  return fmt::format("Symbolic.{}.{}", nodeKey, portKey);
}

TextGraph::TextGraph(const HXDocument& document, PatchShapes& shapes) {
  gatherNodes(document, shapes);
  nameNodes();
  gatherPublished();
  gatherWires();
  placeWires();
}

void TextGraph::gatherNodes(const HXDocument& document, PatchShapes& shapes) {
  HXNodeWalk walk(const_cast<HXDocument&>(document));
  while (HXNode* const node = walk.next()) {
    Node& entry = nodes_.emplace_back();
    entry.node = node;
    entry.depth = walk.level();
    if (const auto patch = node->patch()) {
      const auto& patchClass = patch->patchClass();
      entry.isExplicit = patchClassNamed(patchClass.name()) != &patchClass;
      if (!entry.isExplicit) entry.shape = &shapes.of(patchClass);
    } else {
      entry.isExplicit = !node->unknownPatchClass().isNil();
    }
  }
}

// A node is called by its key, unless that is none that can stand in an address or another node
// has it as well.
void TextGraph::nameNodes() {
  std::unordered_set<std::string_view> taken;
  std::vector<Node*> nameless;
  for (Node& entry : nodes_) {
    const auto key = entry.node->uniqueKey().view();
    if (canBeID(key) && taken.insert(key).second) {
      entry.id = key;
    } else {
      nameless.push_back(&entry);
    }
  }
  std::size_t number = 0;
  for (Node* entry : nameless) {
    do {
      entry->id = fmt::format("node~{}", ++number);
    } while (taken.contains(entry->id));
  }
  std::sort(nodes_.begin() + 1, nodes_.end(),
            [](const Node& a, const Node& b) { return isIdBefore(a.id, b.id); });
  indexes_.reserve(nodes_.size());
  for (std::uint32_t i = 0; i < nodes_.size(); ++i) indexes_.emplace(nodes_[i].node, i);
  for (Node& entry : nodes_) entry.parent = indexOf(entry.node->enclosingNode());
  nodes_.front().parent = kNone;
}

std::uint32_t TextGraph::indexOf(const HXNode* node) const {
  const auto found = indexes_.find(node);
  return found == indexes_.end() ? kNone : found->second;
}

void TextGraph::gatherPublished() {
  std::unordered_set<const HXPort*> inner;
  for (std::uint32_t i = 0; i < nodes_.size(); ++i) {
    for (const auto orientation : kBothSides) {
      std::size_t index = 0;
      for (const auto& port :
           membersOf<HXSymbolicPort>(nodes_[i].node->symbolicPortsInForce(orientation))) {
        const bool isFirst = port.port() && inner.insert(port.port()).second;
        published_.try_emplace(
            &port, Published{i, portNumber(orientation, index++), true, isFirst, nullptr});
      }
    }
  }
  // The innermost first, since the key of a published port is made of what it stands for.
  std::vector<std::uint32_t> order(nodes_.size());
  std::iota(order.begin(), order.end(), 0U);
  std::stable_sort(order.begin(), order.end(), [&](std::uint32_t a, std::uint32_t b) {
    return nodes_[a].depth > nodes_[b].depth;
  });
  for (const auto index : order) namePublished(index);
}

void TextGraph::namePublished(std::uint32_t index) {
  const HXNode& node = *nodes_[index].node;
  std::unordered_set<std::string> taken;
  for (const auto orientation : kBothSides) {
    for (const auto& port : membersOf<HXSymbolicPort>(node.symbolicPortsInForce(orientation))) {
      Published& entry = published_.find(&port)->second;
      if (entry.node != index) continue;
      const HXPort* const inner = port.port();
      if (!isHeld(inner)) continue;
      entry.resolved = resolved(inner);
      const Node& innerNode = nodes_[indexOf(inner->node())];
      const auto* further = published(inner);
      // One that stands for a port of a node that is not below has no key of its own.
      if (further && (nodes_[further->node].depth <= nodes_[index].depth || further->isNumber)) {
        continue;
      }
      std::string key = publishedKey(innerNode.node->uniqueKey(),
                                     further ? further->name : inner->uniqueKey().view());
      if (key.empty() || node.portsInForce().contains(String(key))) continue;
      if (!taken.insert(key).second) continue;
      entry.name = std::move(key);
      entry.isNumber = false;
    }
  }
}

const TextGraph::Published* TextGraph::published(const HXPort* port) const {
  const auto* symbolic = as<HXSymbolicPort>(port);
  const auto found = symbolic ? published_.find(symbolic) : published_.end();
  return found == published_.end() ? nullptr : &found->second;
}

bool TextGraph::isHeld(const HXPort* port) const {
  if (!port) return false;
  if (as<HXSymbolicPort>(port)) return published(port) != nullptr;
  const auto* node = port->node();
  if (indexOf(node) == kNone) return false;
  const auto* held = node->portsInForce().find(port->uniqueKey());
  return held && held->get() == port;
}

const HXPort* TextGraph::resolved(const HXPort* port) const {
  std::size_t steps = 0;
  while (const auto* symbolic = as<HXSymbolicPort>(port)) {
    const auto* entry = published(symbolic);
    if (!entry || ++steps > nodes_.size() + published_.size()) return nullptr;
    if (entry->resolved) return entry->resolved;
    port = symbolic->port();
  }
  return isHeld(port) ? port : nullptr;
}

bool TextGraph::isFirstPublication(const HXSymbolicPort& port) const {
  const auto* entry = published(&port);
  return entry && entry->isFirst;
}

std::string TextGraph::addressOf(const HXPort* port) const {
  if (!isHeld(port)) return {};
  const auto* entry = published(port);
  const Node& node = nodes_[entry ? entry->node : indexOf(port->node())];
  if (!entry) return fmt::format("{}/{}", node.id, port->uniqueKey().view());
  return entry->isNumber ? node.id + entry->name : fmt::format("{}/{}", node.id, entry->name);
}

std::string TextGraph::memberOf(const HXPort& port) const {
  const auto* entry = published(&port);
  if (entry) return portMember(entry->name, entry->isNumber);
  return portMember(port.uniqueKey().toStdString(), false);
}

bool TextGraph::heldBy(const HXPort* port, const HXConnection& connection) const {
  const auto* patchPort = as<HXPatchPort>(port);
  return patchPort && isHeld(port) && patchPort->connections().contains(&connection);
}

void TextGraph::gatherWires() {
  for (const Node& entry : nodes_) {
    for (const auto& port : entry.node->portsInForce()) {
      port.value->connections().forEach(
          [&](HXConnection& connection) { addWire(connection, *port.value); });
    }
  }
  std::stable_sort(wires_.begin(), wires_.end(), [](const Wire& a, const Wire& b) {
    if (a.isRegular != b.isRegular) return a.isRegular;
    return a.node != b.node ? a.node < b.node : a.member < b.member;
  });
}

// Each once: where its input holds it, or else its output. A port that is neither end does not keep
// it when the document is opened.
void TextGraph::addWire(const HXConnection& connection, const HXPort& holder) {
  const HXPort* const input = connection.inputPort();
  const HXPort* const output = connection.outputPort();
  Wire wire;
  wire.connection = &connection;
  wire.heldByInput = heldBy(input, connection);
  wire.heldByOutput = heldBy(output, connection);
  if (&holder != input && (&holder != output || wire.heldByInput)) return;
  const HXPort* const shownInput = connection.displayInputPort();
  const HXPort* const shownOutput = connection.displayOutputPort();
  wire.isRegular = wire.heldByInput && wire.heldByOutput && input != output && isHeld(shownInput) &&
                   isHeld(shownOutput) && resolved(shownInput) == input &&
                   resolved(shownOutput) == output;
  if (wire.isRegular) {
    const auto* entry = published(shownInput);
    wire.node = entry ? entry->node : indexOf(shownInput->node());
    wire.member = memberOf(*shownInput);
  }
  wires_.push_back(std::move(wire));
}

void TextGraph::placeWires() {
  std::unordered_map<const HXConnection*, std::uint32_t> positions;
  positions.reserve(wires_.size());
  for (std::uint32_t i = 0; i < wires_.size(); ++i) positions.emplace(wires_[i].connection, i);
  std::vector<std::uint32_t> sequence;
  for (const Node& entry : nodes_) {
    for (const auto& port : entry.node->portsInForce()) {
      const auto& connections = port.value->connections();
      if (connections.count() < 2) continue;
      sequence.clear();
      const HXPort* const holder = port.value.get();
      connections.forEach([&](HXConnection& connection) {
        if (connection.inputPort() != holder && connection.outputPort() != holder) return;
        sequence.push_back(positions.at(&connection));
      });
      const auto kept = keptInOrder(sequence);
      for (std::uint32_t i = 0; i < sequence.size(); ++i) {
        if (kept[i]) continue;
        Wire& wire = wires_[sequence[i]];
        const bool isOutput = wire.connection->outputPort() == holder;
        (isOutput ? wire.outputPlace : wire.inputPlace) = i;
      }
    }
  }
}

}  // namespace tarnkit::detail
