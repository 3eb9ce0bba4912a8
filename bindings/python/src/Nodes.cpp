#include "bindings/python/src/Module.h"
#include "bindings/python/src/Slots.h"
#include "tarnkit/editing/HXReplacement.h"
#include "tarnkit/model/HXNodeWalk.h"
#include "tarnkit/model/HXPort.h"
#include "tarnkit/model/HXSubviewGroup.h"

namespace tarnkit::python {

namespace {

py::object patchOf(HXNode& node) {
  return node.patch() ? patchObject(node.patchClass()) : py::object(py::none());
}

Ref<HXRNode> newDefinition(py::handle patch) {
  const HXRNodeClass& patchClass = patchFrom(patch);
  auto definition = patchClass.makeDefinition();
  if (!definition) throwRefused("the patch makes no nodes");
  definition->setExternal(HXRNode::hx_isExternalClass(patchClass));
  return definition;
}

HXReplacementOptions replacementOptions(const py::object& keys, bool matchNames) {
  HXReplacementOptions options;
  options.matchesNamesAndKinds = matchNames;
  if (keys.is_none()) return options;
  for (const auto& [from, to] : py::dict(keys)) {
    options.newKeys.set(stringFrom(from, "a key"), stringFrom(to, "a key"));
  }
  return options;
}

py::list lossesIn(const HXNodeReport& report) {
  py::list lost;
  for (const auto& item : report.losses()) lost.append(text(item.description()));
  return lost;
}

PyObject* newNode(PyTypeObject*, PyObject* arguments, PyObject* named) {
  return guarded<PyObject*>(nullptr, [&] {
    static const char* kNames[] = {"patch", "name", "position", nullptr};
    PyObject* patch = Py_None;
    PyObject* name = Py_None;
    PyObject* position = Py_None;
    if (!PyArg_ParseTupleAndKeywords(arguments, named, "|O$OO:Node", const_cast<char**>(kNames),
                                     &patch, &name, &position)) {
      throw py::error_already_set();
    }
    Ref<HXNode> node;
    if (patch == Py_None) {
      node = make<HXNode>();
      node->setForceAllowsSubnodes(true);
    } else {
      node = HXNode::makeForPatch(patchFrom(patch));
      if (!node) throwRefused("the patch makes no nodes");
    }
    if (name != Py_None) node->setName(stringFrom(name, "a name"));
    if (position != Py_None) node->setPosition(pointFrom(position, "a position"));
    return newReference(node.get());
  });
}

PyObject* describe(PyObject* self) {
  return guarded<PyObject*>(nullptr, [&] {
    auto& node = static_cast<HXNode&>(*handleOf(self).object);
    std::string about = std::string("<tarnkit.") + nameOf(Py_TYPE(self)) + " " +
                        (node.asDocument() ? node.documentKey() : node.uniqueKey()).toStdString();
    if (!node.name().isNil()) about += " " + py::repr(text(node.name())).cast<std::string>();
    if (node.patch()) about += " (" + std::string(node.patchClass().defaultName().view()) + ")";
    return newText(about + (isLive(handleOf(self)) ? ">" : ", gone>"));
  });
}

PyGetSetDef nodeAttributes[] = {
    exists(),
    attribute<HXNode, const String&>("key", "Its key, unique in its document: str.",
                                     [](HXNode& n) -> const String& { return n.uniqueKey(); }),
    attribute<HXNode, const String&>(
        "name", "What it is called: str, or None.",
        [](HXNode& n) -> const String& { return n.name(); },
        [](HXNode& n, py::handle value) { n.setName(stringFrom(value, "a name")); }, true),
    attribute<HXNode, HXPoint>(
        "position", "The upper left corner of its box on the canvas: Point.",
        [](HXNode& n) { return n.position(); },
        [](HXNode& n, py::handle value) { n.setPosition(pointFrom(value, "a position")); }),
    attribute<HXNode, bool>(
        "selected", "Whether it is selected in the editor: bool.",
        [](HXNode& n) { return n.selected(); },
        [](HXNode& n, py::handle value) { n.setSelected(boolFrom(value, "selected")); }),
    attribute<HXNode, std::uint64_t>(
        "inspector_panel", "The index of the panel that the editor showed last: int.",
        [](HXNode& n) { return n.inspectorPanel(); },
        [](HXNode& n, py::handle value) {
          n.setInspectorPanel(static_cast<std::uint64_t>(indexFrom(value, "a panel")));
        }),
    attribute<HXNode, const String&>(
        "comment", "What somebody has noted about it: str, or None.",
        [](HXNode& n) -> const String& { return n.comment(); },
        [](HXNode& n, py::handle value) { n.setComment(stringFrom(value, "a comment")); }, true),
    attribute<HXNode, RGBA>("color", "In which the editor draws it: Color.",
                            [](HXNode& n) { return n.defaultColor(); }),
    attribute<HXNode, py::object>(
        "patch",
        "What it does: Patch, or None. Set to another one (or to its name), the node keeps what "
        "hangs on ports of the same keys.",
        patchOf,
        [](HXNode& n, py::handle value) {
          HXReplacement::replacePatch(n, value.is_none() ? nullptr : newDefinition(value));
        }),
    attribute<HXNode, const String&>(
        "unknown_patch", "The class of its patch where nobody knows that: str, otherwise None.",
        [](HXNode& n) -> const String& { return n.unknownPatchClass(); }),
    attribute<HXNode, Object*>("parent", "The node that holds it: Node, or None at the top.",
                               [](HXNode& n) -> Object* { return n.enclosingNode(); }),
    attribute<HXNode, Object*>("parent_group", "The group in which it stands: Group, or None.",
                               [](HXNode& n) -> Object* { return n.parentGroup(); }),
    attribute<HXNode, Object*>("group",
                               "What it holds: Group, or None for a node that holds no others.",
                               [](HXNode& n) -> Object* { return n.subnodeGroup().get(); }),
    attribute<HXNode, Object*>("document", "The document that it is in: Document, or None.",
                               [](HXNode& n) -> Object* { return n.document(); }),
    attribute<HXNode, bool>(
        "allows_subnodes", "Whether it holds a group whatever its patch says: bool.",
        [](HXNode& n) { return n.hx_forceAllowsSubnodes(); },
        [](HXNode& n, py::handle value) {
          n.setForceAllowsSubnodes(boolFrom(value, "allows_subnodes"));
        }),
    attribute<HXNode, bool>(
        "holds_views",
        "Whether its group is one of views, which it stacks for the device. Set, the group gives "
        "way to one of the other class with the same nodes, or the node gets one: bool.",
        [](HXNode& n) { return as<HXSubviewGroup>(n.subnodeGroup().get()) != nullptr; },
        [](HXNode& n, py::handle value) {
          if (boolFrom(value, "holds_views")) {
            n.swapSubnodeGroupToViewGroup();
          } else {
            n.swapSubnodeGroupToGroup();
          }
        }),
    attribute<HXNode, bool>("is_view", "Whether the device shows it as a view: bool.",
                            [](HXNode& n) { return n.shouldBeTreatedAsViewNode(); }),
    view<&portsType, HXOrientationInput>("inputs", "Its inputs, in the order shown: Ports."),
    view<&portsType, HXOrientationOutput>("outputs", "Its outputs, in the order shown: Ports."),
    view<&portsType>("ports", "Its inputs, then its outputs: Ports."),
    view<&parametersType>("parameters", "Its parameters: Parameters."),
    view<&nodesType>("nodes", "The nodes in its group; none where it has no group: Nodes."),
    {nullptr, nullptr, nullptr, nullptr, nullptr},
};

PyObject* walk(HXNode& node) {
  std::vector<Ref<Object>> nodes;
  for (HXNodeWalk step(node); HXNode* const next = step.next();) {
    if (next != &node) nodes.emplace_back(next);
  }
  return newIterator(std::move(nodes), node.document());
}

void remove(HXNode& node) {
  HXGroup* const group = node.parentGroup();
  if (!group) throwRefused("the node stands in no group");
  group->removeNode(&node);
}

}  // namespace

std::vector<Ref<HXNode>> nodesFrom(py::handle sequence) {
  std::vector<Ref<HXNode>> nodes;
  if (isHandle(sequence.ptr(), types.node)) {
    nodes.emplace_back(&live<HXNode>(sequence.ptr()));
    return nodes;
  }
  for (const auto item : py::reinterpret_borrow<py::iterable>(sequence)) {
    nodes.emplace_back(&live<HXNode>(item.ptr()));
  }
  return nodes;
}

void defineNodes(py::module_& module) {
  types.node = makeHandleType(
      module, "Node",
      "Node(patch=None, *, name=None, position=None)\n--\n\n"
      "One box of the graph: a patch with a name, a position, ports, parameters and, for some, a "
      "group of nodes inside.\n\n"
      "Made with a patch (or its name), it stands in no group yet; without one it is a group. The "
      "same node is the same Python object for as long as somebody holds it. A node does not keep "
      "its document: when that is gone, asking the node raises GoneError.",
      nullptr, nodeAttributes, describe, newNode);
  setHandleType(HXNode::kClass, types.node);
  PyTypeObject* const type = types.node;
  method(type, "walk", "(self)",
         "Goes through every node below it, a node before those inside of it; whatever is edited "
         "meanwhile, as they were at the beginning.",
         [](HXNode& node) { return py::reinterpret_steal<py::object>(walk(node)); });
  method(type, "remove", "(self)",
         "Takes the node out of its group, with its connections and publications. It can be added "
         "again.",
         [](HXNode& node) { remove(node); });
  method(
      type, "add", "(self, what, *, name=None, position=None)",
      "Adds to its group a node, or a new node of a patch; returns it. A node without a group "
      "gets one.",
      [](HXNode& node, const py::object& what, const py::object& name, const py::object& position) {
        if (!node.subnodeGroup()) node.setForceAllowsSubnodes(true);
        return addTo(*node.subnodeGroup(), what, name, position);
      },
      py::arg("what"), py::kw_only(), py::arg("name") = py::none(),
      py::arg("position") = py::none());
  method(
      type, "replace_patch", "(self, patch, *, keys=None, match_names=True)",
      "Puts another patch in its place, as one step. What hangs on ports of the same key comes "
      "over; with match_names also what hangs on ports of the same side, name and kind; keys "
      "says which old key stands for which new one. Returns what was lost, a text each.",
      [](HXNode& node, const py::object& patch, const py::object& keys, bool matchNames) {
        const auto report = HXReplacement::replacePatch(node, newDefinition(patch),
                                                        replacementOptions(keys, matchNames));
        return report ? lossesIn(*report) : py::list();
      },
      py::arg("patch"), py::kw_only(), py::arg("keys") = py::none(), py::arg("match_names") = true);
  method(
      type, "would_lose", "(self, patch, *, keys=None, match_names=True)",
      "What `replace_patch` would lose, a text each; changes nothing.",
      [](HXNode& node, const py::object& patch, const py::object& keys, bool matchNames) {
        return lossesIn(HXReplacement::wouldLose(node, newDefinition(patch).get(),
                                                 replacementOptions(keys, matchNames)));
      },
      py::arg("patch"), py::kw_only(), py::arg("keys") = py::none(), py::arg("match_names") = true);
  method(type, "prune", "(self)",
         "Breaks what is wired to published ports that are gone, of the node and of all below it.",
         [](HXNode& node) { node.pruneInvalidConnections(); });
}

}  // namespace tarnkit::python
