#include "tarnkit/model/HXPatchPort.h"

#include <fmt/format.h>

#include "tarnkit/archive/HXCoding.h"
#include "tarnkit/model/HXDocument.h"
#include "tarnkit/model/HXEntryChange.h"
#include "tarnkit/model/HXFieldChange.h"
#include "tarnkit/patches/HXArchivedKeys.h"
#include "tarnkit/patches/HXRPrimitiveInputPort.h"
#include "tarnkit/platform/system/Log.h"

namespace tarnkit {

const Class HXPatchPort::kClass{"HXPatchPort", &HXPort::kClass, &HXPatchPort::makeForDecoding};

namespace {

namespace key = archived::patchPort;

constinit const Symbol kDeviceUniqueKey{"PMPort.uniqueKey"};
constinit const Symbol kDeviceConnections{"PMPort.connections"};
constinit const Symbol kDeviceProcessClassName{"PMPort.processClassName"};
constinit const Symbol kDeviceDefaultValue{"PMPort.defaultValue"};

}  // namespace

struct HXPatchPortFields {
  struct StaticValue : detail::FieldOf<HXPatchPort> {
    static constexpr const char* kName = "staticValue";
    static constexpr bool kIsSimple = true;
    static Ref<PMRPrimitive> get(const HXPatchPort& port) { return port.staticValue_; }
    static void set(HXPatchPort& port, Ref<PMRPrimitive> value) {
      port.staticValue_ = std::move(value);
    }
    static void addNotices(HXPatchPort& port, const Ref<PMRPrimitive>& earlier,
                           HXChangeNotices& notices) {
      notices.addValue(port, kName, [&port, earlier] {
        const Ref<PMRPrimitive> effective = earlier ? earlier : port.defaultValue();
        port.announceStaticValue();
        port.announceEffectiveValue(effective);
      });
    }
  };
  struct Connection : detail::TableOf<HXPatchPort, HXConnectionSet> {
    static constexpr const char* kName = "connection";
    static HXConnectionSet& in(HXPatchPort& port) { return port.connections_; }
    static void addNotices(HXPatchPort& port, const Ref<Object>& member, const Value*, bool came,
                           HXChangeNotices& notices) {
      using Order = HXChangeNotices::Order;
      const Ref<HXConnection> kept(static_cast<HXConnection*>(member.get()));
      notices.addMember(port, *member, came, Order::newConnection, Order::brokenConnection,
                        [&port, kept](bool here) {
                          if (here) {
                            port.hx_fireDidConnectNotification(*kept);
                          } else {
                            port.hx_fireDidDisconnectNotification(*kept);
                          }
                        });
      const auto* node = port.node();
      const Ref<HXDocument> document(node ? node->document() : nullptr);
      if (!document) return;
      notices.addMember(*document, *member, came, Order::newConnectionOfDocument,
                        Order::brokenConnectionOfDocument,
                        [document, kept](bool here) { document->announceConnection(*kept, here); });
    }
  };
  // The same connections in another order.
  struct ConnectionOrder : detail::FieldOf<HXPatchPort> {
    static constexpr const char* kName = "connectionOrder";
    static constexpr const char* kTable = Connection::kName;
    static std::vector<Ref<HXConnection>> get(const HXPatchPort& port) {
      return port.connections_.toVector();
    }
    static void set(HXPatchPort& port, const std::vector<Ref<HXConnection>>& order) {
      HXConnectionSet connections;
      for (const auto& connection : order) connections.add(*connection);
      port.connections_ = connections;
    }
  };
};

HXPatchPort::HXPatchPort(HXNode* node, std::int32_t orientation,
                         std::int32_t connectionRelationship)
    : HXPort(node, orientation, connectionRelationship) {}

Ref<Object> HXPatchPort::makeForDecoding(const Class&) { return make<HXPatchPort>(); }

HXRPort* HXPatchPort::patchPort() {
  if (patchPort_ && patchPort_->isShared()) {
    // The definition makes its own copies, and the node takes them up here.
    const Ref<HXRNode> patch = node() ? node()->patch() : nullptr;
    if (patch) patch->portForKey(patchPort_->uniqueKey());
    // A port that the definition does not have any more, or not yet, copies for itself.
    if (patchPort_->isShared()) patchPort_ = patchPort_->copy();
  }
  return patchPort_.get();
}

void HXPatchPort::setPatchPort(Ref<HXRPort> patchPort) {
  if (isHeld() && (!patchPort || patchPort->uniqueKey() != uniqueKey())) {
    Log::warning("HXPatchPort", "Attempting to give a port the description of another.");
    return;
  }
  patchPort_ = std::move(patchPort);
}

bool HXPatchPort::isHeld() const {
  const auto* node = this->node();
  const auto* held = node ? node->portsInForce().find(uniqueKey()) : nullptr;
  return held && *held == this;
}

String HXPatchPort::uniqueKey() const { return patchPort_ ? patchPort_->uniqueKey() : String(); }

String HXPatchPort::name() const { return patchPort_ ? patchPort_->name() : String(); }

bool HXPatchPort::canConnectToPort(const HXPort* other) const {
  const auto* patchPort = other ? as<HXPatchPort>(other->resolvedPort()) : nullptr;
  return patchPort && patchPort_ && patchPort_->canConnectToPort(patchPort->definition());
}

bool HXPatchPort::acceptsNewConnections() const {
  return connections_.isEmpty() || connectionRelationship() == HXConnectionRelationshipMany;
}

bool HXPatchPort::takeConnection(HXConnection& connection) {
  switch (connectionRelationship()) {
    case HXConnectionRelationshipOne:
      if (!connections_.isEmpty()) return false;
      break;
    case HXConnectionRelationshipMany:
      break;
    default:
      return false;
  }
  insertConnection(connection);
  return true;
}

bool HXPatchPort::dropConnection(HXConnection& connection) { return removeConnection(connection); }

void HXPatchPort::arrangeConnections(const std::vector<Ref<HXConnection>>& order) {
  const detail::RecordedOperation operation(*this);
  HXConnectionSet arranged;
  for (const auto& connection : order) {
    if (connections_.contains(connection.get())) arranged.add(*connection);
  }
  connections_.forEach([&](HXConnection& connection) { arranged.add(connection); });
  const auto connections = arranged.toVector();
  if (connections == connections_.toVector()) return;
  detail::willSet<HXPatchPortFields::ConnectionOrder>(*this);
  HXPatchPortFields::ConnectionOrder::set(*this, connections);
}

// Both ends let it go: the other may be out of the document, where nobody asks it to prune, and
// come back into it.
void HXPatchPort::pruneInvalidConnections() {
  const detail::RecordedOperation operation(*this);
  const HXConnectionSet all = connections_;
  all.forEach([&](HXConnection& connection) {
    if (connection.displayInputPort() && connection.displayOutputPort()) return;
    for (HXPort* end : {connection.outputPort(), connection.inputPort()}) {
      if (auto* port = as<HXPatchPort>(end); port && port != this) port->dropConnection(connection);
    }
    dropConnection(connection);
  });
}

RGBA HXPatchPort::defaultColor() const {
  return patchPort_ ? patchPort_->defaultColor() : HXRPort::kClass.defaultColor();
}

bool HXPatchPort::supportsStaticValue() const {
  return patchPort_ && (patchPort_->isMemberOf(HXRValueInputPort::kClass) ||
                        patchPort_->isKindOf(HXRPrimitiveInputPort::kClass));
}

Ref<PMRPrimitive> HXPatchPort::defaultValue() const {
  const auto* input = as<HXRPrimitiveInputPort>(definition());
  return input ? input->defaultValue() : nullptr;
}

void HXPatchPort::setStaticValue(Ref<PMRPrimitive> value) {
  if (value == staticValue_) return;
  const Ref<HXPatchPort> self(this);
  const detail::RecordedOperation operation(*this);
  const Ref<PMRPrimitive> earlier = effectiveValue();
  storeStaticValue(std::move(value));
  announceStaticValue();
  announceEffectiveValue(earlier);
}

void HXPatchPort::insertConnection(HXConnection& connection) {
  if (connections_.contains(&connection)) return;
  detail::willInsertEntry<HXPatchPortFields::Connection>(*this, &connection);
  connections_.add(connection);
}

bool HXPatchPort::removeConnection(HXConnection& connection) {
  if (!connections_.contains(&connection)) return false;
  detail::willChangeEntry<HXPatchPortFields::Connection>(*this, &connection);
  return connections_.remove(connection);
}

void HXPatchPort::storeStaticValue(Ref<PMRPrimitive> value) {
  detail::willSet<HXPatchPortFields::StaticValue>(*this);
  staticValue_ = std::move(value);
}

void HXPatchPort::announceStaticValue() {
  detail::announce(HXPatchPortStaticValueDidChangeNotification, *this, *this,
                   {{HXPortInfo, this}, {HXStaticValueInfo, staticValue_.get()}});
}

void HXPatchPort::announceEffectiveValue(const Ref<PMRPrimitive>& earlier) {
  const Ref<PMRPrimitive> now = effectiveValue();
  // A missing earlier value never counts as equal, not even to a missing new one.
  if (earlier && now && earlier->isEqual(*now)) return;
  detail::announce(HXPatchPortEffectiveValueDidChangeNotification, *this, *this,
                   {{HXPortInfo, this}, {HXEffectiveValueInfo, now.get()}});
}

Ref<PMRPrimitive> HXPatchPort::effectiveValue() const {
  return staticValue_ ? staticValue_ : defaultValue();
}

void HXPatchPort::hx_fireDidConnectNotification(HXConnection& connection) {
  detail::announce(HXPortDidConnectNotification, *this, *this,
                   {{HXPortInfo, this}, {HXConnectionInfo, &connection}});
}

void HXPatchPort::hx_fireDidDisconnectNotification(HXConnection& connection) {
  detail::announce(HXPortDidDisconnectNotification, *this, *this,
                   {{HXPortInfo, this}, {HXConnectionInfo, &connection}});
}

void HXPatchPort::encodeWithCoder(Encoder& coder) const {
  HXPort::encodeWithCoder(coder);
  const auto encodeConnections = [&](CodingKind kind, const Symbol& key) {
    const auto connections = connections_.toVector();
    coder.encodeCollection(
        kind, connections.size(),
        [&](std::size_t i) -> const Object* { return connections[i].get(); }, key);
  };
  if (isEditorCodingType(coder.codingType())) {
    encodeConnections(CodingKind::orderedSet, key::kConnections);
    coder.encodeObject(staticValue_, key::kStaticValue);
  } else if (coder.codingType() == HXCodingTypeDevice) {
    coder.encodeString(uniqueKey(), kDeviceUniqueKey);
    encodeConnections(CodingKind::list, kDeviceConnections);
    if (patchPort_) coder.encodeString(patchPort_->processClassName(), kDeviceProcessClassName);
    if (supportsStaticValue()) coder.encodeObject(effectiveValue(), kDeviceDefaultValue);
  }
}

void HXPatchPort::initWithCoder(Decoder& coder) {
  HXPort::initWithCoder(coder);
  coder.decodeEach<HXConnection>(key::kConnections, [&](const Ref<HXConnection>& connection) {
    connections_.add(*connection);
  });
  staticValue_ = coder.decode<PMRPrimitive>(key::kStaticValue);
}

void HXPatchPort::awakeAfterDecoding(Decoder& coder) {
  HXPort::awakeAfterDecoding(coder);
  if (!isEditorCodingType(coder.codingType())) return;
  HXConnectionSet own;
  connections_.forEach([&](HXConnection& connection) {
    if (connection.outputPort() == this || connection.inputPort() == this) own.add(connection);
  });
  if (own.count() == connections_.count()) return;
  Log::warning("HXPatchPort",
               fmt::format("Dropping {} connections of a port that is none of their ends",
                           connections_.count() - own.count()));
  connections_ = std::move(own);
}

void HXPatchPort::abandonDecoding() { connections_ = {}; }

}  // namespace tarnkit
