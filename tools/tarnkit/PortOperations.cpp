#include <fmt/format.h>

#include "tarnkit/editing/HXWiring.h"
#include "tarnkit/model/HXDocument.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/model/HXRefusal.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tarnkit/platform/text/JSONWriter.h"
#include "tools/tarnkit/Arguments.h"
#include "tools/tarnkit/Command.h"
#include "tools/tarnkit/Operations.h"
#include "tools/tarnkit/Session.h"
#include "tools/tarnkit/ValueShapes.h"

namespace tarnkit::tool {

namespace {

Result truth(bool value) {
  return [value](JSONWriter& json) { json.value(value); };
}

Result shapeOf(const Ref<HXConnection>& connection) {
  return [connection](JSONWriter& json) { writeConnection(json, connection.get()); };
}

Ref<HXPort> portOf(Session& session, const Arguments& arguments) {
  return session.port(arguments.text("port"));
}

Result canConnect(Session& session, const Arguments& arguments) {
  const auto port = portOf(session, arguments);
  const auto other = session.port(arguments.text("other"));
  return truth(port->canConnectToPort(other.get()));
}

void writeEnd(JSONWriter& json, const HXRefusal::End& end) {
  json.beginObject().key("port");
  writePortAddress(json, end.port.get());
  json.key("kind").value(end.kind).endObject();
}

// "fits" and "canConnect" say the same: readers of either are served.
Result whyNot(Session& session, const Arguments& arguments) {
  const auto port = portOf(session, arguments);
  const auto other = session.port(arguments.text("other"));
  const auto refusal = port->whyNotConnectToPort(other.get());
  return [refusal](JSONWriter& json) {
    json.beginObject().key("fits").value(!refusal).key("canConnect").value(!refusal);
    if (refusal) {
      json.key("code").value(nameOf(refusal.code()));
      json.key("reason").value(refusal.reason().view()).key("ports").beginArray();
      writeEnd(json, refusal.port());
      writeEnd(json, refusal.other());
      json.endArray();
    }
    json.endObject();
  };
}

Result acceptsNewConnections(Session& session, const Arguments& arguments) {
  return truth(portOf(session, arguments)->acceptsNewConnections());
}

Result connect(Session& session, const Arguments& arguments) {
  const auto name = arguments.optionalText("as");
  const auto first = session.port(arguments.text("first"));
  const auto second = session.port(arguments.text("second"));
  const auto connection = session.document()->connectPort(*first, *second);
  session.nameConnection(name, connection);
  return shapeOf(connection);
}

Result wire(Session& session, const Arguments& arguments) {
  const auto name = arguments.optionalText("as");
  const auto fromAddress = arguments.text("from");
  const auto toAddress = arguments.text("to");
  const auto from = session.port(fromAddress);
  const auto to = session.port(toAddress);
  const auto document = session.document();
  if (const auto refusal = HXWiring::whyNotWire(*from, *to)) {
    throw CommandFailure(fmt::format("\"{}\" does not fit \"{}\": {}", fromAddress, toAddress,
                                     refusal.reason().view()));
  }
  const auto connection = HXWiring::wire(*document, *from, *to);
  if (!connection) {
    throw CommandFailure(fmt::format("\"{}\" cannot be joined to \"{}\"", fromAddress, toAddress));
  }
  session.nameConnection(name, connection);
  return shapeOf(connection);
}

Result breakConnection(Session& session, const Arguments& arguments) {
  const auto connection = session.connection(arguments.text("connection"));
  session.document()->breakConnection(*connection);
  return {};
}

Result restoreConnection(Session& session, const Arguments& arguments) {
  const auto connection = session.connection(arguments.text("connection"));
  session.document()->restoreConnection(*connection);
  return {};
}

Result breakAll(Session& session, const Arguments& arguments) {
  const auto port = portOf(session, arguments);
  session.document()->breakAllConnectionsToPort(*port);
  return {};
}

// The group in which the port's node stands.
Ref<HXGroup> enclosingGroup(const HXPort& port) {
  const auto* node = port.node();
  auto group = Ref<HXGroup>(node ? node->parentGroup() : nullptr);
  if (!group) throw CommandFailure("the port's node is in no group");
  return group;
}

Result publish(Session& session, const Arguments& arguments) {
  const auto name = arguments.optionalText("as");
  const auto port = portOf(session, arguments);
  const auto symbolicPort = enclosingGroup(*port)->addSymbolicPortForPort(*port);
  if (!symbolicPort) throw CommandFailure("the port is neither input nor output");
  session.namePort(name, symbolicPort);
  return [symbolicPort](JSONWriter& json) {
    json.beginObject().key("key");
    writeString(json, symbolicPort->uniqueKey());
    json.endObject();
  };
}

Result unpublish(Session& session, const Arguments& arguments) {
  const auto port = portOf(session, arguments);
  enclosingGroup(*port)->removeSymbolicPortForPort(port.get());
  return {};
}

Result restoreSymbolicPort(Session& session, const Arguments& arguments) {
  const auto port = session.symbolicPort(arguments.text("symbolicPort"));
  const Ref<HXNode> node(port->node());
  if (!node || !node->subnodeGroup()) {
    throw CommandFailure("the published port's node has no subnode group");
  }
  Ref<HXGroup>(node->subnodeGroup())->restoreSymbolicPort(*port);
  return {};
}

Result renamePort(Session& session, const Arguments& arguments) {
  const auto name = arguments.text("name");
  session.symbolicPort(arguments.text("symbolicPort"))->setName(String(name));
  return {};
}

Result setStaticValue(Session& session, const Arguments& arguments) {
  const auto value = arguments.primitiveOrNull("value");
  const auto port = as<HXPatchPort>(portOf(session, arguments));
  if (!port) throw CommandFailure("a published port has no value of its own");
  port->setStaticValue(value);
  return {};
}

constexpr Operation kOperations[] = {
    {"canConnect", "port other", canConnect},
    {"whyNot", "port other", whyNot},
    {"acceptsNewConnections", "port", acceptsNewConnections},
    {"connect", "first second as?", connect},
    {"wire", "from to as?", wire},
    {"break", "connection", breakConnection},
    {"restoreConnection", "connection", restoreConnection},
    {"breakAll", "port", breakAll},
    {"publish", "port as?", publish},
    {"unpublish", "port", unpublish},
    {"restoreSymbolicPort", "symbolicPort", restoreSymbolicPort},
    {"renamePort", "symbolicPort name", renamePort},
    {"setStaticValue", "port value", setStaticValue},
};

}  // namespace

std::span<const Operation> portOperations() { return kOperations; }

}  // namespace tarnkit::tool
