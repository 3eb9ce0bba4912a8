#include "bindings/python/src/Module.h"
#include "bindings/python/src/Slots.h"
#include "tarnkit/editing/HXClipboard.h"
#include "tarnkit/editing/HXGrouping.h"

namespace tarnkit::python {

namespace {

py::object toLosses(const HXLosses& losses) {
  py::list connections;
  py::list publications;
  for (const auto& lost : losses.connections)
    connections.append(text(std::string_view(lost.reason)));
  for (const auto& lost : losses.publications) {
    publications.append(text(std::string_view(lost.reason)));
  }
  return plainType("Losses")(py::tuple(connections), py::tuple(publications));
}

HXPoint offsetFrom(const py::object& offset) { return pointFrom(offset, "an offset"); }

}  // namespace

void defineEditing(py::module_& module) {
  const py::tuple noOffset = py::make_tuple(0, 0);
  function(
      module, "copy_nodes", "(nodes)",
      "The nodes with all that is below them and the connections among them, for "
      "`Group.paste`, here or in another process: bytes.",
      [](const py::object& nodes) {
        const auto data = valueOf(HXClipboard::copy(nodesFrom(nodes)));
        const auto bytes = data->bytes();
        return py::bytes(reinterpret_cast<const char*>(bytes.data()), bytes.size());
      },
      py::arg("nodes"));
  method(
      types.group, "paste", "(self, data, *, offset=(0, 0))",
      "Adds the nodes of `copy_nodes`, moved by the offset; returns the new ones. The bytes "
      "need not be trusted.",
      [](HXGroup& group, const py::object& data, const py::object& offset) {
        const std::string bytes = bytesFrom(data, nullptr);
        return wrapAll(valueOf(HXClipboard::paste(bytesOf(bytes), group, offsetFrom(offset))));
      },
      py::arg("data"), py::kw_only(), py::arg("offset") = noOffset);
  function(
      module, "duplicate", "(nodes, *, offset=(0, 0), keep_inputs=False)",
      "Copies nodes where they stand, moved by the offset; with keep_inputs the copies are fed "
      "by what feeds the nodes. Returns the copies.",
      [](const py::object& nodes, const py::object& offset, bool keepInputs) {
        return wrapAll(
            valueOf(HXClipboard::duplicate(nodesFrom(nodes), offsetFrom(offset), keepInputs)));
      },
      py::arg("nodes"), py::kw_only(), py::arg("offset") = noOffset,
      py::arg("keep_inputs") = false);

  function(
      module, "group_nodes", "(nodes, name=None)",
      "Puts nodes of one group into a new node, which is returned; their connections stay.",
      [](const py::object& nodes, const String& name) {
        return valueOf(HXGrouping::group(nodesFrom(nodes), name));
      },
      py::arg("nodes"), py::arg("name") = py::none());
  method(types.node, "ungroup", "(self)",
         "Puts the nodes inside in its place and removes it: Ungrouped, with the nodes and what "
         "was lost.",
         [](HXNode& node) {
           const auto ungrouped = valueOf(HXGrouping::ungroup(node));
           return plainType("Ungrouped")(wrapAll(ungrouped.nodes), toLosses(ungrouped.lost));
         });
  function(
      module, "move_nodes", "(nodes, group)",
      "Takes nodes to another group of their document with their connections: Losses, what "
      "could not come along.",
      [](const py::object& nodes, HXGroup& group) {
        return toLosses(valueOf(HXGrouping::move(nodesFrom(nodes), group)));
      },
      py::arg("nodes"), py::arg("group"));
  function(
      module, "remove_keeping_wires", "(nodes)",
      "Removes nodes and joins what fed them to what they fed, where that fits; returns the "
      "new connections.",
      [](const py::object& nodes) {
        return wrapAll(valueOf(HXGrouping::removeKeepingWires(nodesFrom(nodes))));
      },
      py::arg("nodes"));
}

}  // namespace tarnkit::python
