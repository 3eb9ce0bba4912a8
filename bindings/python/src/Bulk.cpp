#include <pybind11/numpy.h>

#include "bindings/python/src/Module.h"
#include "bindings/python/src/Slots.h"
#include "tarnkit/editing/HXHistory.h"
#include "tarnkit/model/HXPatchPort.h"

// What people do in loops, in one call: positions as an array, names, the values of one port over
// many nodes.
namespace tarnkit::python {

namespace {

using Positions = py::array_t<float, py::array::c_style>;

std::vector<Ref<Object>> nodesIn(py::handle view) {
  if (Py_TYPE(view.ptr()) != nodesType) failWithType(view.ptr(), "Nodes");
  return itemsOf(view.ptr());
}

HXNode& nodeIn(const Ref<Object>& object) { return static_cast<HXNode&>(*object); }

// The nodes where they are, without a copy: for what runs no code of Python's, which could edit.
const OrderedMap<Ref<HXNode>>& nodesInForce(py::handle view) {
  static const OrderedMap<Ref<HXNode>> none;
  if (Py_TYPE(view.ptr()) != nodesType) failWithType(view.ptr(), "Nodes");
  auto& owner = ownerOf(view.ptr());
  const auto* const node = as<HXNode>(&owner);
  const HXGroup* const group =
      node ? node->subnodeGroup().get() : &static_cast<const HXGroup&>(owner);
  return group ? group->subnodesInForce() : none;
}

Positions positionsOf(const py::object& view) {
  const auto count = static_cast<py::ssize_t>(nodesInForce(view).size());
  Positions positions({count, py::ssize_t{2}});
  // Asked again: making the array was Python's.
  const auto& nodes = nodesInForce(view);
  if (static_cast<py::ssize_t>(nodes.size()) != count) return positionsOf(view);
  float* at = positions.mutable_data();
  for (const auto& [key, node] : nodes) {
    const HXPoint point = node->position();
    *at++ = point.x;
    *at++ = point.y;
  }
  return positions;
}

void setPositions(const py::object& view, const py::object& given) {
  const auto positions = py::cast<py::array_t<float, py::array::c_style | py::array::forcecast>>(
      py::module_::import("numpy").attr("asarray")(given, "float32"));
  const auto nodes = nodesIn(view);
  if (positions.ndim() != 2 || positions.shape(1) != 2 ||
      static_cast<std::size_t>(positions.shape(0)) != nodes.size()) {
    throw py::value_error("positions have one row of x and y for each of the " +
                          std::to_string(nodes.size()) + " nodes");
  }
  if (nodes.empty()) return;
  auto* const document = nodeIn(nodes.front()).document();
  const std::unique_ptr<HXHistory::Step> step =
      document ? std::make_unique<HXHistory::Step>(*document) : nullptr;
  const float* at = positions.data();
  for (const auto& node : nodes) {
    nodeIn(node).setPosition({at[0], at[1]});
    at += 2;
  }
}

py::list namesOf(const py::object& view) {
  py::list names(nodesInForce(view).size());
  const auto& nodes = nodesInForce(view);
  if (static_cast<std::size_t>(nodes.size()) != names.size()) return namesOf(view);
  Py_ssize_t at = 0;
  for (const auto& [key, node] : nodes) {
    PyList_SET_ITEM(names.ptr(), at++, toPython(node->name()));
  }
  return names;
}

// By key or by name, as in `node.inputs["Value"]`.
String keyOfInput(const HXNode& node, const String& name) {
  if (node.portsInForce().find(name)) return name;
  for (const auto& [key, port] : node.portsInForce()) {
    const bool goesByIt = port->name() == name || port->displayName() == name;
    if (port->orientation() == HXOrientationInput && goesByIt) return key;
  }
  return {};
}

py::list valuesOf(const py::object& view, const py::object& port) {
  const String name = stringFrom(port, "a port");
  const auto nodes = nodesIn(view);
  py::list values(nodes.size());
  // Nodes of one patch mostly have one key for the name.
  const HXRNodeClass* patch = nullptr;
  String key;
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    const HXNode& node = nodeIn(nodes[i]);
    const bool isKnown = &node.patchClass() == patch && !key.isNil();
    const auto* found = isKnown ? node.portsInForce().find(key) : nullptr;
    if (!found) {
      patch = &node.patchClass();
      key = keyOfInput(node, name);
      found = key.isNil() ? nullptr : node.portsInForce().find(key);
    }
    const auto value = found ? (*found)->effectiveValue() : nullptr;
    values[i] = py::reinterpret_steal<py::object>(toPython(value.get()));
  }
  return values;
}

}  // namespace

void defineBulk(py::module_&) {
  const py::object type =
      py::reinterpret_borrow<py::object>(reinterpret_cast<PyObject*>(nodesType));
  const auto property = [&](const char* name, const py::object& get, const py::object& set,
                            const char* documentation) {
    type.attr(name) =
        py::module_::import("builtins").attr("property")(get, set, py::none(), documentation);
  };
  const auto accessor = [](auto function) {
    return py::cpp_function(std::move(function), py::call_guard<Section>());
  };
  property("positions", accessor(positionsOf), accessor(setPositions),
           "The positions of the nodes: a NumPy array of a row of x and y each. Set to anything of "
           "that shape, as one step.");
  property("names", accessor(namesOf), py::none(), "The names of the nodes: list of str or None.");
  method(nodesType, "values", "(self, port)",
         "The values in force at one input of each node, by the key or the name of the port; None "
         "for nodes without it.",
         valuesOf, py::arg("port"));
}

}  // namespace tarnkit::python
