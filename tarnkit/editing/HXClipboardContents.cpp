#include "tarnkit/editing/HXClipboardContents.h"

#include <fmt/format.h>

#include <unordered_set>
#include <utility>

#include "tarnkit/model/HXDecodedNodes.h"
#include "tarnkit/model/HXDocument.h"
#include "tarnkit/model/HXModel.h"
#include "tarnkit/model/HXNodeWalk.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/platform/objects/Class.h"
#include "tarnkit/platform/system/Log.h"

namespace tarnkit {

const Class HXClipboardContents::kClass{"HXClipboardContents", &Object::kClass,
                                        &detail::makeByDefault<HXClipboardContents>};

namespace {

constinit const Symbol kNodes{"HXClipboardContents.nodes"};
constinit const Symbol kConnections{"HXClipboardContents.connections"};

// What the user joined, as long as it still stands for the end; otherwise the end itself.
Ref<HXPort> joinedPort(HXPort* display, HXPort& end,
                       const std::unordered_set<const HXNode*>& nodes) {
  const bool stands = display && nodes.contains(display->node()) && display->resolvedPort() == &end;
  return Ref<HXPort>(stands ? display : &end);
}

}  // namespace

void HXClipboardContents::registerClasses() {
  registerModelClasses();
  [[maybe_unused]] static const bool done = [] {
    ClassRegistry::add(kClass);
    return true;
  }();
}

void HXClipboardContents::encodeWithCoder(Encoder& coder) const {
  coder.encodeList(nodes_, kNodes);
  coder.encodeList(connections_, kConnections);
}

void HXClipboardContents::initWithCoder(Decoder& coder) {
  coder.decodeEach<HXNode>(kNodes, [&](const Ref<HXNode>& node) { nodes_.push_back(node); });
  coder.decodeEach<HXConnection>(kConnections, [&](const Ref<HXConnection>& connection) {
    connections_.push_back(connection);
  });
}

// Nothing is below the root that has not awoken before it.
void HXClipboardContents::awakeAfterDecoding(Decoder& coder) {
  checkNodes(coder);
  if (!coder.failed()) takeConnectionsOff();
}

void HXClipboardContents::checkNodes(Decoder& coder) {
  if (nodes_.empty()) return coder.fail("HXClipboardContents.nodes: there are none");
  std::vector<const HXNode*> outermost;
  for (const auto& node : nodes_) {
    const auto* group = node->parentGroup();
    if (group && group->subnodeForKey(node->uniqueKey()) == node.get()) {
      return coder.fail("HXClipboardContents.nodes: a node that stands inside another");
    }
    outermost.push_back(node.get());
  }
  const auto held = detail::nodesWithin(outermost);
  if (std::unordered_set<const HXNode*>(outermost.begin(), outermost.end()).size() <
      outermost.size()) {
    return coder.fail("HXClipboardContents.nodes: a node that stands there twice");
  }
  // What nobody holds may hold itself, and would never go.
  coder.eachDecoded([&](Object& object) {
    auto* node = as<HXNode>(&object);
    if (!node || coder.failed()) return;
    if (node->asDocument()) return coder.fail("a document stands among the nodes");
    if (!held.contains(node)) coder.fail("a node that none of the others holds");
  });
  if (coder.failed()) return;
  for (const auto& node : nodes_) node->setParentGroup(nullptr);
}

// The ports have their connections anew once the nodes are in a document, so that nobody sees a
// half of one; the list has them in the order in which every port had its own.
void HXClipboardContents::takeConnectionsOff() {
  std::unordered_set<const HXNode*> nodes;
  std::unordered_set<const HXPort*> ports;
  for (const auto& root : nodes_) {
    for (HXNodeWalk walk(*root); const HXNode* node = walk.next();) {
      nodes.insert(node);
      for (const auto& entry : node->portsInForce()) {
        ports.insert(entry.value.get());
        for (const auto& connection : entry.value->connections().toVector()) {
          entry.value->disconnectConnection(*connection);
        }
      }
    }
  }
  const auto isEnd = [&ports](const HXPort* port, std::int32_t orientation) {
    return ports.contains(port) && port->orientation() == orientation;
  };
  std::size_t dropped = 0;
  for (const auto& connection : std::exchange(connections_, {})) {
    HXPort* const output = connection->outputPort();
    HXPort* const input = connection->inputPort();
    if (!isEnd(output, HXOrientationOutput) || !isEnd(input, HXOrientationInput)) {
      ++dropped;
      continue;
    }
    wires_.push_back({joinedPort(connection->displayOutputPort(), *output, nodes),
                      joinedPort(connection->displayInputPort(), *input, nodes)});
  }
  if (dropped != 0) {
    Log::warning("HXClipboard",
                 fmt::format("Dropping {} connections that do not join two of the nodes", dropped));
  }
}

void HXClipboardContents::abandonDecoding() {
  nodes_.clear();
  connections_.clear();
  wires_.clear();
}

}  // namespace tarnkit
