#include "tarnkit/editing/WireRecord.h"

#include "tarnkit/model/HXNodeWalk.h"
#include "tarnkit/model/HXReplicatorNode.h"
#include "tarnkit/patches/Orientation.h"

namespace tarnkit::detail {

namespace {

const HXNode* ownerOf(const HXPort* port) {
  const auto* node = port ? port->node() : nullptr;
  return node ? node->enclosingNode() : nullptr;
}

bool standSideBySide(const HXPort* first, const HXPort* second) {
  const auto* owner = ownerOf(first);
  return owner && owner == ownerOf(second);
}

// The port on the outside of the node around it; null when it is not published there.
HXSymbolicPort* publicationOf(const HXPort& port) {
  auto* symbolicPort = port.symbolicPort();
  const bool stands =
      symbolicPort && symbolicPort->isHeld() && symbolicPort->node() == ownerOf(&port);
  return stands ? symbolicPort : nullptr;
}

bool standsFor(const HXPort* display, const HXPort* resolved) {
  if (!display || !display->node() || display->resolvedPort() != resolved) return false;
  const auto* published = as<HXSymbolicPort>(display);
  return !published || published->isHeld();
}

// The innermost node in whose group both ports stand, or nodes that enclose them.
HXNode* commonOwner(const HXPort& first, const HXPort& second) {
  if (ownerOf(&first) && ownerOf(&first) == ownerOf(&second)) return first.node()->enclosingNode();
  std::unordered_set<const HXNode*> owners;
  for (auto* at = ownerOf(&first); at; at = at->enclosingNode()) owners.insert(at);
  for (auto* at = second.node() ? second.node()->enclosingNode() : nullptr; at;
       at = at->enclosingNode()) {
    if (owners.contains(at)) return at;
  }
  return nullptr;
}

// Whether the output would have to be published anew on a replicator on its way to the group.
bool leavesReplicator(const HXPort& output, const HXNode& owner) {
  const HXPort* port = &output;  // null above what is published
  for (const auto* node = ownerOf(&output); node && node != &owner; node = node->enclosingNode()) {
    if (port) port = publicationOf(*port);
    if (!port && as<HXReplicatorNode>(static_cast<const Object*>(node))) return true;
  }
  return false;
}

}  // namespace

void WireRecord::addBelow(HXNode& root) {
  for (HXNodeWalk walk(root); const HXNode* node = walk.next();) {
    for (const auto& entry : node->portsInForce()) {
      entry.value->connections().forEach([this](HXConnection& connection) { add(connection); });
    }
  }
}

void WireRecord::add(HXConnection& connection) {
  if (!connection.outputPort() || !connection.inputPort()) return;
  if (!known_.insert(&connection).second) return;
  Wire wire;
  wire.connection = Ref<HXConnection>(&connection);
  wire.output = Ref<HXPort>(connection.outputPort());
  wire.input = Ref<HXPort>(connection.inputPort());
  wire.displayOutput = Ref<HXPort>(connection.displayOutputPort());
  wire.displayInput = Ref<HXPort>(connection.displayInputPort());
  wire.outputNode = Ref<HXNode>(wire.output->node());
  wire.inputNode = Ref<HXNode>(wire.input->node());
  wire.isWhole = wire.output->connections().contains(&connection) &&
                 wire.input->connections().contains(&connection);
  wire.isInOneGroup = standSideBySide(wire.displayOutput.get(), wire.displayInput.get());
  wires_.push_back(std::move(wire));
}

HXLosses::Connection WireRecord::loss(const Wire& wire, std::string reason) {
  return {wire.connection, wire.output,    wire.input,
          wire.outputNode, wire.inputNode, std::move(reason)};
}

void WireRecord::lose(const HXPort& port, const std::string& reason, HXLosses& losses) {
  WireRecord ofPort(document_);
  port.connections().forEach([&](HXConnection& connection) { ofPort.add(connection); });
  for (const auto& wire : ofPort.wires_) {
    if (lost_.insert(wire.connection.get()).second) {
      losses.connections.push_back(loss(wire, reason));
    }
  }
  // The connections must live as long as their addresses are noted.
  for (auto& wire : ofPort.wires_) {
    if (known_.insert(wire.connection.get()).second) wires_.push_back(std::move(wire));
  }
}

void WireRecord::restore(HXLosses& losses) {
  // An input of one connection refuses the second, and the half of it that the output holds is not
  // to take its place.
  for (const bool isWhole : {true, false}) {
    for (const auto& wire : wires_) {
      if (wire.isWhole == isWhole && !lost_.contains(wire.connection.get())) restore(wire, losses);
    }
  }
}

// Two ports that did not stand side by side before need not do so now.
bool WireRecord::keepsDisplay(const Wire& wire) const {
  const auto* output = wire.displayOutput.get();
  const auto* input = wire.displayInput.get();
  return standsFor(output, wire.output.get()) && standsFor(input, wire.input.get()) &&
         (!wire.isInOneGroup || standSideBySide(output, input));
}

void WireRecord::restore(const Wire& wire, HXLosses& losses) {
  Ref<HXConnection> now = wire.connection;
  std::string reason = "the port takes no connection any more";
  if (keepsDisplay(wire)) {
    if (!now->isHeld()) document_.restoreConnection(*now);
  } else {
    if (now->isHeld()) document_.breakConnection(*now);
    now = join(*wire.output, *wire.input, reason);
  }
  if (!wire.isWhole && now) return;
  if (now && wire.output->connections().contains(now.get()) &&
      wire.input->connections().contains(now.get())) {
    return;
  }
  if (now && now->isHeld()) document_.breakConnection(*now);
  losses.connections.push_back(loss(wire, std::move(reason)));
}

Ref<HXConnection> WireRecord::joinAcross(const Wire& from, const Wire& to) {
  auto* output = from.displayOutput.get();
  auto* input = to.displayInput.get();
  if (standsFor(output, from.output.get()) && standsFor(input, to.input.get()) &&
      standSideBySide(output, input)) {
    return document_.connectPort(*output, *input);
  }
  std::string reason;
  return join(*from.output, *to.input, reason);
}

Ref<HXPort> WireRecord::publishUpTo(HXPort& port, const HXNode& owner) {
  Ref<HXPort> at(&port);
  while (true) {
    const Ref<HXNode> around(at->node() ? at->node()->enclosingNode() : nullptr);
    if (around.get() == &owner) return at;
    if (!around || !around->subnodeGroup()) return nullptr;
    Ref<HXPort> outer(publicationOf(*at));
    if (!outer) outer = Ref<HXGroup>(around->subnodeGroup())->addSymbolicPortForPort(*at);
    if (!outer) return nullptr;
    at = outer;
  }
}

Ref<HXConnection> WireRecord::join(HXPort& output, HXPort& input, std::string& reason) {
  const Ref<HXNode> owner(commonOwner(output, input));
  if (!owner) {
    reason = "one of its ends is not in the document any more";
    return nullptr;
  }
  if (leavesReplicator(output, *owner)) {
    reason = "the output stands inside a replicator, which puts out an array of it only";
    return nullptr;
  }
  const Ref<HXPort> from = publishUpTo(output, *owner);
  const Ref<HXPort> to = publishUpTo(input, *owner);
  reason = "the port takes no connection any more";
  return from && to ? document_.connectPort(*from, *to) : nullptr;
}

}  // namespace tarnkit::detail
