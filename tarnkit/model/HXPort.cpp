#include "tarnkit/model/HXPort.h"

#include <cassert>

#include "tarnkit/archive/HXCoding.h"
#include "tarnkit/model/HXFieldChange.h"
#include "tarnkit/model/HXNode.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tarnkit/patches/HXArchivedKeys.h"
#include "tarnkit/platform/system/Log.h"

namespace tarnkit {

const Class HXPort::kClass{"HXPort", &Object::kClass};

namespace {

namespace key = archived::port;

constinit const Symbol kDeviceClass{"PMPort"};
constinit const Symbol kDeviceNode{"PMPort.node"};
constinit const Symbol kDeviceOrientation{"PMPort.orientation"};
constinit const Symbol kDeviceConnectionRelationship{"PMPort.connectionRelationship"};

}  // namespace

struct HXPortFields {
  struct Node : detail::FieldOf<HXPort> {
    static constexpr const char* kName = "node";
    static Ref<HXNode> get(const HXPort& port) { return Ref<HXNode>(port.node()); }
    static void set(HXPort& port, const Ref<HXNode>& node) { port.node_ = node.get(); }
  };
  struct SymbolicPort : detail::FieldOf<HXPort> {
    static constexpr const char* kName = "symbolicPort";
    static Ref<HXSymbolicPort> get(const HXPort& port) {
      return Ref<HXSymbolicPort>(port.symbolicPort());
    }
    static void set(HXPort& port, const Ref<HXSymbolicPort>& symbolicPort) {
      port.symbolicPort_ = symbolicPort.get();
    }
    static void addNotices(HXPort& port, const Ref<HXSymbolicPort>&, HXChangeNotices& notices) {
      const bool isPublished = port.symbolicPort() != nullptr;
      notices.addValue(
          port, kName, [&port] { port.announceSymbolicReference(port.symbolicPort() != nullptr); },
          isPublished ? HXChangeNotices::Order::newPublication
                      : HXChangeNotices::Order::gonePublication);
    }
  };
};

HXPort::HXPort(HXNode* node, std::int32_t orientation, std::int32_t connectionRelationship)
    : node_(node), orientation_(orientation), connectionRelationship_(connectionRelationship) {}

void HXPort::setNode(HXNode* node) {
  if (node == node_.get()) return;
  if (isHeld()) {
    Log::warning("HXPort", "Attempting to take a port from the node that holds it.");
    return;
  }
  const detail::RecordedOperation operation(*this);
  detail::willSet<HXPortFields::Node>(*this);
  node_ = node;
}

void HXPort::linkNode(HXNode* node, PassKey<HXNode>) noexcept { node_ = node; }
void HXPort::linkNode(HXNode* node, PassKey<HXGroup>) {
  if (node == node_.get()) return;
  if (node) {
    detail::willSet<HXPortFields::Node>(*node, *this);
  } else {
    detail::willSet<HXPortFields::Node>(*this);
  }
  node_ = node;
}

HXSymbolicPort* HXPort::symbolicPort() const noexcept { return symbolicPort_.get(); }

void HXPort::setSymbolicPort(HXSymbolicPort* symbolicPort) {
  if (symbolicPort && symbolicPort->port() != this) {
    Log::warning("HXPort", "Attempting to publish a port by one that stands for another.");
    return;
  }
  const auto* present = this->symbolicPort();
  if (!symbolicPort && present && present->isHeld()) {
    const Ref<HXGroup> group = present->node()->subnodeGroup();
    return group->removeSymbolicPortForPort(this);
  }
  exchangeSymbolicPort(symbolicPort);
}

void HXPort::exchangeSymbolicPort(HXSymbolicPort* symbolicPort) {
  assert(!symbolicPort || symbolicPort->port() == this);
  if (symbolicPort == symbolicPort_.get()) return;
  const Ref<HXPort> self(this);
  const detail::RecordedOperation operation(*this);
  if (!symbolicPort) {
    const Ref<HXSymbolicPort> earlier(symbolicPort_.get());
    announceSymbolicReference(false);
    if (symbolicPort_.get() != earlier.get()) return;  // an observer published the port anew
  }
  storeSymbolicPort(symbolicPort);
  if (symbolicPort) announceSymbolicReference(true);
}

void HXPort::announceSymbolicReference(bool isPublished) {
  detail::announce(isPublished ? HXPortDidAddSymbolicReferenceNotification
                               : HXPortDidRemoveSymbolicReferenceNotification,
                   *this, *this, {{HXPortInfo, this}});
}

void HXPort::storeSymbolicPort(HXSymbolicPort* symbolicPort) {
  detail::willSet<HXPortFields::SymbolicPort>(*this);
  symbolicPort_ = symbolicPort;
}

const HXPort* HXPort::endOfChain() const noexcept {
  const HXPort* port = this;
  while (const auto* symbolic = as<HXSymbolicPort>(port)) port = symbolic->port();
  return port;
}

String HXPort::documentKey() const {
  const auto* node = this->node();
  return node ? node->documentKey() : String();
}

String HXPort::displayName() const {
  const String name = this->name();
  const auto colon = name.view().find(':');
  return colon == std::string_view::npos ? name : String(name.view().substr(colon + 1));
}

HXConnectionSet HXPort::connections() const { return {}; }
bool HXPort::acceptsNewConnections() const { return false; }
bool HXPort::takeConnection(HXConnection&) { return false; }
bool HXPort::dropConnection(HXConnection&) { return false; }
void HXPort::hx_fireDidConnectNotification(HXConnection&) {}
void HXPort::hx_fireDidDisconnectNotification(HXConnection&) {}

bool HXPort::connectConnection(HXConnection& connection) {
  const detail::RecordedOperation operation(*this);
  if (!takeConnection(connection)) return false;
  hx_fireDidConnectNotification(connection);
  return true;
}

bool HXPort::disconnectConnection(HXConnection& connection) {
  const detail::RecordedOperation operation(*this);
  const Ref<HXConnection> kept(&connection);
  if (!dropConnection(connection)) return false;
  hx_fireDidDisconnectNotification(connection);
  return true;
}

void HXPort::pruneInvalidConnections() {}
RGBA HXPort::defaultColor() const { return OIColorWhiteRGBA; }

String HXPort::symbolicPortName() const {
  const auto* port = symbolicPort();
  return port ? port->name() : String();
}

void HXPort::encodeWithCoder(Encoder& coder) const {
  if (isEditorCodingType(coder.codingType())) {
    coder.encodeInt(orientation_, key::kOrientation);
    coder.encodeInt(connectionRelationship_, key::kConnectionRelationship);
    coder.encodeConditionalObject(symbolicPort_, key::kSymbolicPort);
  } else if (coder.codingType() == HXCodingTypeDevice) {
    coder.setClassName(kDeviceClass, isa());
    coder.encodeConditionalObject(node_, kDeviceNode);
    coder.encodeInt(orientation_, kDeviceOrientation);
    coder.encodeInt(connectionRelationship_, kDeviceConnectionRelationship);
  }
}

void HXPort::initWithCoder(Decoder& coder) {
  orientation_ = coder.decodeInt(key::kOrientation);
  connectionRelationship_ = coder.decodeInt(key::kConnectionRelationship);
  symbolicPort_ = coder.decode<HXSymbolicPort>(key::kSymbolicPort);
}

// A port that publishes another one than this would let publications stand for each other in a
// circle, in which withdrawing one would never come to an end.
void HXPort::awakeAfterDecoding(Decoder&) {
  const auto* symbolicPort = this->symbolicPort();
  if (symbolicPort && symbolicPort->port() != this) symbolicPort_ = nullptr;
}

}  // namespace tarnkit
