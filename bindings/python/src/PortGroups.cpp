#include "bindings/python/src/Module.h"
#include "bindings/python/src/Slots.h"
#include "tarnkit/model/HXPort.h"
#include "tarnkit/model/HXPortGroup.h"
#include "tarnkit/model/HXPortGroupCollection.h"
#include "tarnkit/model/HXReplicatorNode.h"

namespace tarnkit::python {

namespace {

py::object portsOf(HXPortGroup& group) {
  py::list ports;
  const auto keys = group.portKeys();
  if (!keys) return ports;
  for (const auto& key : *keys) {
    if (auto* const port = group.node()->portForKey(String::from(key.get()))) {
      ports.append(wrap(port));
    }
  }
  return ports;
}

PyGetSetDef attributes[] = {
    exists(),
    attribute<HXPortGroup, const String&>(
        "key", "Its key, unique on its side of the node: str.",
        [](HXPortGroup& g) -> const String& { return g.groupKey(); }),
    attribute<HXPortGroup, Object*>("node", "The node that shows it: Node.",
                                    [](HXPortGroup& g) -> Object* { return g.node(); }),
    attribute<HXPortGroup, Object*>("document", "The document that it is in: Document, or None.",
                                    [](HXPortGroup& g) -> Object* { return g.node()->document(); }),
    attribute<HXPortGroup, bool>(
        "is_input", "Whether it is one of inputs, and not of outputs: bool.",
        [](HXPortGroup& g) { return g.orientation() == HXOrientationInput; }),
    attribute<HXPortGroup, bool>(
        "is_published", "Whether its ports stand for some inside of the node's group: bool.",
        [](HXPortGroup& g) {
          return as<HXSymbolicPortGroup>(static_cast<Object*>(&g)) != nullptr;
        }),
    attribute<HXPortGroup, py::object>("ports", "Its ports, in their order: list of Port.",
                                       portsOf),
    attribute<HXPortGroup, bool>(
        "hidden",
        "Whether its ports do not show among the node's; they keep values and connections: bool.",
        [](HXPortGroup& g) { return g.hidden(); },
        [](HXPortGroup& g, py::handle value) { g.setHidden(boolFrom(value, "hidden")); }),
    attribute<HXPortGroup, bool>(
        "collapsed_on_canvas", "Whether the canvas shows it folded: bool.",
        [](HXPortGroup& g) { return g.collapsedCanvasGroup(); },
        [](HXPortGroup& g, py::handle value) {
          g.setCollapsedCanvasGroup(boolFrom(value, "collapsed_on_canvas"));
        }),
    attribute<HXPortGroup, bool>(
        "collapsed_in_sidebar", "Whether the inspector shows it folded: bool.",
        [](HXPortGroup& g) { return g.collapsedSidebarGroup(); },
        [](HXPortGroup& g, py::handle value) {
          g.setCollapsedSidebarGroup(boolFrom(value, "collapsed_in_sidebar"));
        }),
    {nullptr, nullptr, nullptr, nullptr, nullptr},
};

PyObject* describe(PyObject* self) {
  return guarded<PyObject*>(nullptr, [&] {
    const auto& group = static_cast<HXPortGroup&>(*handleOf(self).object);
    const auto* const node = group.node();
    return newText("<tarnkit.PortGroup " + (node ? node->uniqueKey().toStdString() + "/" : "") +
                   (group.orientation() == HXOrientationInput ? "inputs/" : "outputs/") +
                   group.groupKey().toStdString() + (isLive(handleOf(self)) ? ">" : ", gone>"));
  });
}

HXReplicatorNode& replicatorOf(HXNode& node) {
  auto* const replicator = as<HXReplicatorNode>(&node);
  if (!replicator) throwRefused("only a replicator collects outputs");
  return *replicator;
}

py::object arrayOutputsOf(HXNode& node) {
  py::dict outputs;
  const auto* const replicator = as<HXReplicatorNode>(&node);
  if (!replicator) return outputs;
  for (const auto& [port, key] : replicator->replicatorArrayOutputPortKeyForPort()) {
    outputs[wrap(port)] = text(key);
  }
  return outputs;
}

void setArrayOutputs(HXNode& node, py::handle value) {
  auto& replicator = replicatorOf(node);
  if (!PyDict_Check(value.ptr())) failWithType(value.ptr(), "dict of ports and keys");
  IdentityMap<HXPort, String> keys;
  for (const auto& [port, key] : py::reinterpret_borrow<py::dict>(value)) {
    keys.set(Ref<HXPort>(&live<HXPort>(port.ptr())), String(viewOf(key, "the key of an output")));
  }
  replicator.setArrayOutputs(keys);
}

py::list arrange(HXNode& node, const py::object& given, std::int32_t side) {
  const auto keys = make<OrderedSet>();
  for (const auto key : py::reinterpret_borrow<py::iterable>(given)) {
    keys->add(String(viewOf(key, "the key of a port group")).object());
  }
  const auto collection = side == HXOrientationInput ? node.inputPortGroupCollection()
                                                     : node.outputPortGroupCollection();
  collection->updateWithPortGroupKeys(keys);
  return wrapAll(node.portGroups(side));
}

}  // namespace

void definePortGroups(py::module_& module) {
  types.portGroup = makeHandleType(
      module, "PortGroup",
      "A group in which a node shows some of its ports, with what the user chose for it.", nullptr,
      attributes, describe);
  setHandleType(HXPortGroup::kClass, types.portGroup);

  addAttribute(
      types.node,
      attribute<HXNode, py::object>(
          "input_groups", "The groups of its inputs, in the order shown: list of PortGroup.",
          [](HXNode& n) -> py::object { return wrapAll(n.portGroups(HXOrientationInput)); }));
  addAttribute(
      types.node,
      attribute<HXNode, py::object>(
          "output_groups", "The groups of its outputs, in the order shown: list of PortGroup.",
          [](HXNode& n) -> py::object { return wrapAll(n.portGroups(HXOrientationOutput)); }));
  addAttribute(types.node,
               attribute<HXNode, py::object>(
                   "array_outputs",
                   "Of a replicator, the keys of the outputs that collect what its copies give, by "
                   "the published inner port of each; empty for any other node. Set to other keys, "
                   "the outputs of the present ones end: dict of Port and str.",
                   arrayOutputsOf, setArrayOutputs));
  method(
      types.node, "arrange_input_groups", "(self, keys)",
      "Says which groups of inputs there are to be shown: those that stay keep their order among "
      "themselves, new ones follow. Returns the groups that are shown.",
      [](HXNode& node, const py::object& keys) { return arrange(node, keys, HXOrientationInput); },
      py::arg("keys"));
  method(
      types.node, "arrange_output_groups", "(self, keys)",
      "Says which groups of outputs there are to be shown, as `arrange_input_groups` does.",
      [](HXNode& node, const py::object& keys) { return arrange(node, keys, HXOrientationOutput); },
      py::arg("keys"));
}

}  // namespace tarnkit::python
