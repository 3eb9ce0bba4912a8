#include <algorithm>

#include "bindings/python/src/Module.h"
#include "bindings/python/src/Slots.h"
#include "tarnkit/model/HXRefusal.h"
#include "tarnkit/model/HXSubviewGroup.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tarnkit/platform/collections/MembersOf.h"

namespace tarnkit::python {

namespace {

// The nodes of a group, or of what a node holds.
HXGroup* groupOf(Object& owner) {
  if (auto* const node = as<HXNode>(&owner)) return node->subnodeGroup().get();
  return static_cast<HXGroup*>(&owner);
}

std::vector<Ref<Object>> nodesOf(Object& owner, std::int32_t) {
  const HXGroup* const group = groupOf(owner);
  return group ? asObjects(group->subnodes()) : std::vector<Ref<Object>>();
}
std::size_t countNodes(Object& owner, std::int32_t) {
  const HXGroup* const group = groupOf(owner);
  return group ? group->subnodesInForce().size() : 0;
}
Object* findNode(Object& owner, std::int32_t, std::string_view name) {
  const HXGroup* const group = groupOf(owner);
  if (!group) return nullptr;
  if (auto* const node = group->subnodeForKey(String(name))) return node;
  for (const auto& [key, node] : group->subnodesInForce()) {
    if (node->name() == name) return node.get();
  }
  return nullptr;
}
const ViewKind kNodes{
    "Nodes",
    "node",
    "The nodes of a group, in the order of adding: by index, by key, or by name (the first of it).",
    nodesOf,
    countNodes,
    findNode};

py::list publishedBy(HXGroup& group, std::int32_t orientation) {
  return wrapAll(orientation == HXOrientationInput ? group.symbolicInputPorts()
                                                   : group.symbolicOutputPorts());
}

py::object viewsOf(HXGroup& group) {
  auto* const views = as<HXSubviewGroup>(static_cast<Object*>(&group));
  return views ? wrapAll(views->subviewNodes()) : py::list();
}

PyGetSetDef groupAttributes[] = {
    exists(),
    attribute<HXGroup, const String&>("key", "Its key, unique in its document: str.",
                                      [](HXGroup& g) -> const String& { return g.uniqueKey(); }),
    attribute<HXGroup, Object*>("node", "The node that holds it: Node.",
                                [](HXGroup& g) -> Object* { return g.presentOrFormerNode(); }),
    attribute<HXGroup, Object*>("document", "The document that it is in: Document, or None.",
                                [](HXGroup& g) -> Object* {
                                  const auto* const node = g.presentOrFormerNode();
                                  return node ? node->document() : nullptr;
                                }),
    attribute<HXGroup, py::object>(
        "published_inputs", "The inputs that it publishes: list of PublishedPort.",
        [](HXGroup& g) -> py::object { return publishedBy(g, HXOrientationInput); }),
    attribute<HXGroup, py::object>(
        "published_outputs", "The outputs that it publishes: list of PublishedPort.",
        [](HXGroup& g) -> py::object { return publishedBy(g, HXOrientationOutput); }),
    attribute<HXGroup, py::object>("views", "Its view nodes, in screen order: list of Node.",
                                   viewsOf),
    attribute<HXGroup, bool>(
        "is_opaque", "Whether nothing shines through it: bool.",
        [](HXGroup& g) { return g.isOpaque(); },
        [](HXGroup& g, py::handle value) { g.setOpaque(boolFrom(value, "is_opaque")); }),
    attribute<HXGroup, HXPoint>(
        "canvas_center", "The point that the editor's canvas shows: Point.",
        [](HXGroup& g) { return g.canvasCenter(); },
        [](HXGroup& g, py::handle value) { g.setCanvasCenter(pointFrom(value, "a centre")); }),
    view<&nodesType>("nodes", "The nodes in it: Nodes."),
    {nullptr, nullptr, nullptr, nullptr, nullptr},
};

PyObject* describe(PyObject* self) {
  return guarded<PyObject*>(nullptr, [&] {
    auto& group = static_cast<HXGroup&>(*handleOf(self).object);
    return newText("<tarnkit.Group " + group.uniqueKey().toStdString() + ", " +
                   std::to_string(group.subnodesInForce().size()) + " nodes" +
                   (isLive(handleOf(self)) ? ">" : ", gone>"));
  });
}

Ref<HXNode> newNodeOf(py::handle patch) {
  auto node = HXNode::makeForPatch(patchFrom(patch));
  if (!node) throwRefused("the patch makes no nodes");
  return node;
}

}  // namespace

Ref<HXNode> addTo(HXGroup& group, py::handle what, py::handle name, py::handle position) {
  const bool isNode = isHandle(what.ptr(), types.node);
  const Ref<HXNode> node = isNode ? Ref<HXNode>(&live<HXNode>(what.ptr())) : newNodeOf(what);
  requireNoRefusal(group.whyNotAddNode(*node));
  // Before it is added, so that an observer meets it as it is to be.
  if (!name.is_none()) node->setName(stringFrom(name, "a name"));
  if (!position.is_none()) node->setPosition(pointFrom(position, "a position"));
  group.addNode(*node);
  if (isNode) noteHome(*node);
  return node;
}

void defineGroups(py::module_& module) {
  nodesType = makeViewType(module, kNodes);
  types.group = makeHandleType(
      module, "Group",
      "What a node holds: nodes, and the ports that it publishes on the node's outside. Every "
      "document has one, its top-level canvas.",
      nullptr, groupAttributes, describe);
  setHandleType(HXGroup::kClass, types.group);
  PyTypeObject* const type = types.group;

  method(type, "add", "(self, what, *, name=None, position=None)",
         "Adds a node, or a new node of a patch (or of its name); returns it. A node comes out of "
         "the group where it stands, and loses its connections.",
         addTo, py::arg("what"), py::kw_only(), py::arg("name") = py::none(),
         py::arg("position") = py::none());
  method(
      type, "remove", "(self, node)", "Takes the node out, with its connections and publications.",
      [](HXGroup& group, HXNode& node) {
        if (node.parentGroup() != &group) throwRefused("the node does not stand in this group");
        group.removeNode(&node);
      },
      py::arg("node"));
  method(
      type, "arrange", "(self, nodes)",
      "Puts the nodes into that order; those that are not named come after them.",
      [](HXGroup& group, const py::object& nodes) { group.arrangeSubnodes(nodesFrom(nodes)); },
      py::arg("nodes"));
  method(
      type, "move_view", "(self, node, index)",
      "Moves a view node in the screen order; beyond the last means the end.",
      [](HXGroup& group, HXNode& node, std::int32_t index) {
        auto* const views = as<HXSubviewGroup>(static_cast<Object*>(&group));
        if (!views || views->indexOfSubviewNode(&node) == kNotFoundIndex) {
          throwRefused("the node is no view of this group");
        }
        if (index < 0) throw py::value_error("an index in the screen order is not negative");
        views->moveSubviewNode(node, static_cast<std::uint64_t>(index));
      },
      py::arg("node"), py::arg("index"));
  method(
      type, "publish", "(self, port, name=None)",
      "Publishes the port of one of its nodes on the outside of its own node, under that name "
      "or the port's; returns the PublishedPort.",
      [](HXGroup& group, HXPort& port, const py::object& name) {
        const auto* const node = port.node();
        if (!node || node->parentGroup() != &group) {
          throwRefused("the port belongs to no node of this group");
        }
        if (port.symbolicPort()) throwRefused("the port is published already");
        requireNoRefusal(group.whyNotAddSymbolicPortForPort(port));
        auto published = group.addSymbolicPortForPort(port);
        if (!name.is_none()) published->setName(stringFrom(name, "a name"));
        return published;
      },
      py::arg("port"), py::arg("name") = py::none());
}

}  // namespace tarnkit::python
