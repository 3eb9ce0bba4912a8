#include <unordered_set>

#include "bindings/python/src/Module.h"
#include "bindings/python/src/Slots.h"
#include "tarnkit/model/HXConnection.h"
#include "tarnkit/model/HXNodeWalk.h"
#include "tarnkit/model/HXPatchPort.h"

namespace tarnkit::python {

namespace {

HXDocument* documentOf(const HXConnection& connection) {
  const auto* const port = connection.outputPort();
  const auto* const node = port ? port->node() : nullptr;
  return node ? node->document() : nullptr;
}

// By their inputs, in the order of the nodes.
std::vector<Ref<Object>> connectionsOf(Object& owner, std::int32_t) {
  std::vector<Ref<Object>> connections;
  for (HXNodeWalk walk(static_cast<HXDocument&>(owner)); HXNode* const node = walk.next();) {
    for (const auto& [key, port] : node->portsInForce()) {
      if (port->orientation() != HXOrientationInput) continue;
      port->connections().forEach(
          [&](HXConnection& connection) { connections.emplace_back(&connection); });
    }
  }
  return connections;
}
const ViewKind kConnections{
    "Connections",
    "connection",
    "The connections of a document, those into a node after those into the nodes before it: by "
    "index, or by key.",
    connectionsOf,
    [](Object& owner, std::int32_t side) { return connectionsOf(owner, side).size(); },
    [](Object& owner, std::int32_t side, std::string_view name) -> Object* {
      for (const auto& connection : connectionsOf(owner, side)) {
        auto& one = static_cast<HXConnection&>(*connection);
        if (one.uniqueKey() == name) return &one;
      }
      return nullptr;
    }};

PyGetSetDef attributes[] = {
    exists(),
    attribute<HXConnection, String>("key", "Its key, unique in its document: str.",
                                    [](HXConnection& c) { return c.uniqueKey(); }),
    attribute<HXConnection, Object*>(
        "output", "Where it begins, as somebody joined it, maybe at a published port: Port.",
        [](HXConnection& c) -> Object* { return c.displayOutputPort(); }),
    attribute<HXConnection, Object*>(
        "input", "Where it ends, as somebody joined it, maybe at a published port: Port.",
        [](HXConnection& c) -> Object* { return c.displayInputPort(); }),
    attribute<HXConnection, Object*>("resolved_output", "The port that gives the value: PatchPort.",
                                     [](HXConnection& c) -> Object* { return c.outputPort(); }),
    attribute<HXConnection, Object*>("resolved_input", "The port that takes the value: PatchPort.",
                                     [](HXConnection& c) -> Object* { return c.inputPort(); }),
    attribute<HXConnection, Object*>("document", "The document that it is in: Document, or None.",
                                     [](HXConnection& c) -> Object* { return documentOf(c); }),
    {nullptr, nullptr, nullptr, nullptr, nullptr},
};

PyObject* describe(PyObject* self) {
  return guarded<PyObject*>(nullptr, [&] {
    const auto& connection = static_cast<HXConnection&>(*handleOf(self).object);
    return newText("<tarnkit.Connection " + connection.uniqueKey().toStdString() +
                   (isLive(handleOf(self)) ? ">" : ", broken>"));
  });
}

}  // namespace

void defineConnections(py::module_& module) {
  connectionsType = makeViewType(module, kConnections);
  types.connection =
      makeHandleType(module, "Connection", "A wire of the graph, from an output to an input.",
                     nullptr, attributes, describe);
  setHandleType(HXConnection::kClass, types.connection);
  method(types.connection, "remove", "(self)", "Breaks it.", [](HXConnection& connection) {
    auto* const document = documentOf(connection);
    if (!document) throwRefused("the connection stands in no document");
    document->breakConnection(connection);
  });
}

}  // namespace tarnkit::python
