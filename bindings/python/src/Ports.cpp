#include "bindings/python/src/Module.h"
#include "bindings/python/src/Slots.h"
#include "tarnkit/editing/HXWiring.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/model/HXRefusal.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tarnkit/patches/HXRPrimitiveInputPort.h"

namespace tarnkit::python {

namespace {

constexpr std::int32_t kBoth = 0;

std::vector<Ref<HXPort>> portsOf(const HXNode& node, std::int32_t side) {
  if (side == HXOrientationInput) return node.inputPorts();
  return side == HXOrientationOutput ? node.outputPorts() : node.ports();
}

bool goesBy(const HXPort& port, std::string_view name) {
  const String whole = port.name();
  if (whole == name) return true;
  // "Group: Name" goes by its last part as well.
  const String shown = port.displayName();
  std::string_view part = shown.view();
  while (part.starts_with(' ')) part.remove_prefix(1);
  return part == name;
}

Object* findPort(Object& owner, std::int32_t side, std::string_view name) {
  const auto& node = static_cast<HXNode&>(owner);
  auto* const port = node.portForKey(String(name));
  if (port && (side == kBoth || port->orientation() == side)) return port;
  Object* found = nullptr;
  for (const auto& shown : portsOf(node, side)) {
    if (!goesBy(*shown, name)) continue;
    if (found) {
      throw py::key_error("several ports go by the name " + std::string(name) +
                          ": use the key of one");
    }
    found = shown.get();
  }
  return found;
}
const ViewKind kPorts{
    "Ports",
    "port",
    "The ports of a node, in the order shown: by index, by key (\"Tarn.valueInput\"; hidden ones, "
    "too) or by the name that the editor shows (\"Value\").",
    [](Object& owner, std::int32_t side) {
      return asObjects(portsOf(static_cast<HXNode&>(owner), side));
    },
    [](Object& owner, std::int32_t side) {
      return portsOf(static_cast<HXNode&>(owner), side).size();
    },
    findPort};

HXPatchPort* carrierOf(HXPort& port) {
  return as<HXPatchPort>(static_cast<Object*>(port.resolvedPort()));
}

py::object valueOf(HXPort& port) {
  const auto* const carrier = carrierOf(port);
  const auto value = carrier ? carrier->effectiveValue() : nullptr;
  return py::reinterpret_steal<py::object>(toPython(value.get()));
}

void setValue(HXPort& port, py::handle value) {
  auto* const carrier = carrierOf(port);
  if (!carrier) throwRefused("the published port stands for a port that is gone");
  if (value.is_none()) {
    carrier->setStaticValue(nullptr);
    return;
  }
  if (!carrier->supportsStaticValue()) {
    throwRefused(port.orientation() == HXOrientationInput
                     ? "the input takes no value, only a connection"
                     : "an output has no value of its own");
  }
  const auto present = carrier->defaultValue();
  carrier->setStaticValue(primitiveFrom(value, present.get(), "the value of a port"));
}

py::object defaultOf(HXPort& port) {
  const auto* const carrier = carrierOf(port);
  const auto value = carrier ? carrier->defaultValue() : nullptr;
  return py::reinterpret_steal<py::object>(toPython(value.get()));
}

py::object choicesOf(HXPort& port) {
  py::dict choices;
  const auto* const carrier = carrierOf(port);
  const auto* const definition =
      carrier ? dynamic_cast<const HXRPrimitiveInputPort*>(carrier->definition()) : nullptr;
  if (definition) {
    for (const auto& [label, value] : definition->mappedValues()) {
      choices[text(label)] = py::reinterpret_steal<py::object>(toPython(value.get()));
    }
  }
  return choices;
}

HXConnectionSet connectionsOf(HXPort& port) {
  const auto* const carrier = carrierOf(port);
  return carrier ? carrier->connections() : HXConnectionSet();
}

PyGetSetDef portAttributes[] = {
    exists(),
    attribute<HXPort, String>("key", "Under which its node finds it: str.",
                              [](HXPort& p) { return p.uniqueKey(); }),
    attribute<HXPort, String>("name", "What it is called: str.",
                              [](HXPort& p) { return p.name(); }),
    attribute<HXPort, Object*>("node", "The node on which it stands: Node.",
                               [](HXPort& p) -> Object* { return p.node(); }),
    attribute<HXPort, Object*>("document", "The document that it is in: Document, or None.",
                               [](HXPort& p) -> Object* {
                                 const auto* const node = p.node();
                                 return node ? node->document() : nullptr;
                               }),
    attribute<HXPort, bool>("is_input", "Whether it is an input, and no output: bool.",
                            [](HXPort& p) { return p.orientation() == HXOrientationInput; }),
    attribute<HXPort, bool>(
        "takes_many", "Whether it takes more than one connection: bool.",
        [](HXPort& p) { return p.connectionRelationship() == HXConnectionRelationshipMany; }),
    attribute<HXPort, std::string_view>(
        "kind", "What it takes or gives: \"value\", \"image\", \"gesture\", ...: str.",
        [](HXPort& p) { return HXRefusal::kindOf(&p); }),
    attribute<HXPort, RGBA>("color", "In which the editor draws it: Color.",
                            [](HXPort& p) { return p.defaultColor(); }),
    attribute<HXPort, py::object>(
        "value",
        "The value in force: that which somebody has set, or else the default; None for none. Set "
        "to None, or deleted, the port has its default again. Angles and colours are Angle and "
        "Color; a number takes the kind that the port's default has.",
        valueOf, setValue, true),
    attribute<HXPort, bool>("has_value", "Whether somebody has set a value: bool.",
                            [](HXPort& p) {
                              const auto* const carrier = carrierOf(p);
                              return carrier && carrier->staticValue();
                            }),
    attribute<HXPort, py::object>("default", "The value that its patch gives it, or None.",
                                  defaultOf),
    attribute<HXPort, py::object>(
        "choices", "The named values that the editor offers: dict of name and value.", choicesOf),
    attribute<HXPort, py::object>(
        "connections",
        "The connections of the port, or of that for which it stands: list of Connection.",
        [](HXPort& p) -> py::object { return wrapAll(connectionsOf(p).toVector()); }),
    attribute<HXPort, bool>("is_connected", "Whether it has a connection: bool.",
                            [](HXPort& p) { return !connectionsOf(p).isEmpty(); }),
    attribute<HXPort, Object*>("published", "The port that publishes it: PublishedPort, or None.",
                               [](HXPort& p) -> Object* { return p.symbolicPort(); }),
    attribute<HXPort, Object*>(
        "resolved",
        "The port that carries the value: itself, or the one at the end of what is published: "
        "PatchPort, or None when that is gone.",
        [](HXPort& p) -> Object* { return p.resolvedPort(); }),
    {nullptr, nullptr, nullptr, nullptr, nullptr},
};

PyGetSetDef publishedAttributes[] = {
    attribute<HXSymbolicPort, String>(
        "name", "Under which it is published: str.", [](HXSymbolicPort& p) { return p.name(); },
        [](HXSymbolicPort& p, py::handle value) {
          p.setName(String(viewOf(value, "the name of a published port")));
        }),
    attribute<HXSymbolicPort, Object*>("port", "The inner port for which it stands: Port, or None.",
                                       [](HXSymbolicPort& p) -> Object* { return p.port(); }),
    {nullptr, nullptr, nullptr, nullptr, nullptr},
};
PyGetSetDef patchPortAttributes[] = {{nullptr, nullptr, nullptr, nullptr, nullptr}};

PyObject* describe(PyObject* self) {
  return guarded<PyObject*>(nullptr, [&] {
    const auto& port = static_cast<HXPort&>(*handleOf(self).object);
    const auto* const node = port.node();
    return newText(std::string("<tarnkit.") + nameOf(Py_TYPE(self)) + " " +
                   (node ? node->uniqueKey().toStdString() + "/" : "") +
                   port.uniqueKey().toStdString() + " " +
                   py::repr(text(port.name())).cast<std::string>() +
                   (isLive(handleOf(self)) ? ">" : ", gone>"));
  });
}

void disconnect(HXPort& port) {
  auto* const carrier = carrierOf(port);
  const auto* const node = port.node();
  auto* const document = node ? node->document() : nullptr;
  if (!carrier || carrier->connections().isEmpty()) return;
  if (!document) throwRefused("the port stands in no document");
  document->breakAllConnectionsToPort(*carrier);
}

}  // namespace

Ref<HXConnection> wire(HXPort& first, HXPort& second) {
  const auto* const node = first.node();
  const auto* const other = second.node();
  HXDocument* const document = node ? node->document() : nullptr;
  if (!document || !other || other->document() != document) {
    throwRefused("the ports are not in one document");
  }
  requireNoRefusal(HXWiring::whyNotWire(first, second));
  const Told told;
  return HXWiring::wire(*document, first, second);
}

void definePorts(py::module_& module) {
  portsType = makeViewType(module, kPorts);
  types.port = makeHandleType(
      module, "Port", "Where connections end on a node. `output >> input` connects two of them.",
      nullptr, portAttributes, describe);
  types.patchPort = makeHandleType(module, "PatchPort", "A port that the node's patch has.",
                                   types.port, patchPortAttributes);
  types.publishedPort =
      makeHandleType(module, "PublishedPort",
                     "A port on a node's outside that stands for one inside of its group.",
                     types.port, publishedAttributes);
  setHandleType(HXPatchPort::kClass, types.patchPort);
  setHandleType(HXSymbolicPort::kClass, types.publishedPort);
  PyTypeObject* const type = types.port;

  method(type, "connect", "(self, other)",
         "Connects the port with another one, whichever of them is the output, and returns the "
         "Connection. What an input of one connection had is broken first. RefusedError when the "
         "two do not fit.",
         wire, py::arg("other"));
  method(type, "__rshift__", "(self, other)", "Connects: `output >> input`.", wire,
         py::arg("other"));
  method(
      type, "why_not_connect", "(self, other)",
      "Why the two cannot be connected, one sentence; None when they can.",
      [](HXPort& port, HXPort& other) -> py::object {
        const auto refusal = HXWiring::whyNotWire(port, other);
        return refusal ? text(refusal.reason()) : py::none();
      },
      py::arg("other"));
  method(type, "disconnect", "(self)",
         "Breaks every connection of the port, or of that for which it stands.", disconnect);
  method(
      type, "publish", "(self, name=None)",
      "Publishes the port on the node around its own; returns the PublishedPort.",
      [](py::object self, const py::object& name) {
        auto& port = live<HXPort>(self.ptr());
        auto* const group = port.node()->parentGroup();
        if (!group) throwRefused("the node of the port stands in no group");
        return wrap(group).attr("publish")(self, name);
      },
      py::arg("name") = py::none());
  method(types.publishedPort, "unpublish", "(self)",
         "Ends the publication here and at every level above, with its connections.",
         [](HXSymbolicPort& port) { port.node()->subnodeGroup()->removeSymbolicPort(port); });
}

}  // namespace tarnkit::python
