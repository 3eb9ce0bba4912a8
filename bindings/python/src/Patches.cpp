#include <unordered_map>

#include "bindings/python/src/Module.h"
#include "bindings/python/src/Slots.h"
#include "tarnkit/model/HXModel.h"
#include "tarnkit/patches/HXRNode.h"
#include "tarnkit/patches/HXRParameter.h"
#include "tarnkit/patches/HXRPort.h"
#include "tarnkit/patches/HXRPortLayout.h"
#include "tarnkit/patches/PatchRegistry.h"

namespace tarnkit::python {

namespace {

std::unordered_map<std::string_view, const HXRNodeClass*>& patchNames() {
  static auto* const made = new std::unordered_map<std::string_view, const HXRNodeClass*>;
  if (!made->empty()) return *made;
  // Where two go by one name, the one that the library lists; else the first.
  for (const bool hidden : {false, true}) {
    for (const auto* patch : catalogue()) {
      if (patch->hiddenInLibrary() == hidden) made->emplace(patch->defaultName().view(), patch);
    }
  }
  for (const auto* patch : catalogue()) (*made)[patch->name()] = patch;
  return *made;
}

const HXRNodeClass* patchNamed(std::string_view name) {
  const auto found = patchNames().find(name);
  return found == patchNames().end() ? nullptr : found->second;
}

using Patch = const HXRNodeClass;

}  // namespace

void forgetPatchNames() { patchNames().clear(); }

const HXRNodeClass& patchFrom(py::handle given) {
  if (PyUnicode_Check(given.ptr())) {
    if (const auto* found = patchNamed(viewOf(given, "patch"))) return *found;
    throw py::key_error("there is no patch " + py::repr(given).cast<std::string>());
  }
  if (!py::isinstance<HXRNodeClass>(given)) {
    failWithType(given.ptr(), "tarnkit.Patch or the name of one");
  }
  return *given.cast<Patch*>();
}

py::object patchObject(const HXRNodeClass& patchClass) {
  return py::cast(&patchClass, py::return_value_policy::reference);
}

void definePatches(py::module_& module) {
  registerModelClasses();
  py::class_<HXRNodeClass, std::unique_ptr<HXRNodeClass, py::nodelete>> patch(
      module, "Patch", "What a node does: an entry of the catalogue. Lives as long as the process.",
      plainClass());
  const auto read = [&](const char* name, auto get, const char* documentation) {
    patch.def_property_readonly(name, get, py::call_guard<Section>(), documentation);
  };
  read(
      "class_name", [](Patch& p) { return text(p.name()); }, "Under which files know it.");
  read(
      "name", [](Patch& p) { return text(p.defaultName()); },
      "Under which the library lists it; the name of a fresh node.");
  read(
      "category", [](Patch& p) { return text(p.libraryCategory()); },
      "Of the library; None for none.");
  read(
      "is_hidden", [](Patch& p) { return p.hiddenInLibrary() || p.secretInLibrary(); },
      "Whether the library does not list it.");
  read(
      "allows_subnodes", [](Patch& p) { return p.allowsSubnodes(); },
      "Whether a node of the patch holds a group of nodes.");
  read(
      "process_class", [](Patch& p) { return text(p.processClassName()); },
      "The class that runs the patch on the device.");
  const auto portNames = [](Patch& p, std::int32_t orientation) {
    py::dict names;
    for (const auto& [key, port] : p.prototype().portLayout().ports()) {
      if (port->orientation() == orientation) names[text(key)] = text(port->name());
    }
    return names;
  };
  read(
      "inputs", [portNames](Patch& p) { return portNames(p, HXOrientationInput); },
      "The inputs of a fresh node: their keys, each with its name.");
  read(
      "outputs", [portNames](Patch& p) { return portNames(p, HXOrientationOutput); },
      "The outputs of a fresh node: their keys, each with its name.");
  read(
      "parameters",
      [](Patch& p) {
        py::dict names;
        for (const auto& parameter : p.prototype().parametersInForce()) {
          names[text(parameter->uniqueKey())] = text(parameter->name());
        }
        return names;
      },
      "The parameters of a fresh node: their keys, each with its name.");
  patch.def("__repr__", [](Patch& p) {
    return text("<tarnkit.Patch " + std::string(p.name()) + " " +
                py::repr(text(p.defaultName())).cast<std::string>() + ">");
  });
  patch.def("__reduce__", [](Patch& p) {
    return py::make_tuple(plainType("_patch_of_class"), py::make_tuple(text(p.name())));
  });

  function(module, "_catalogue", "()", "Every patch that can be placed, by category.", [] {
    py::list list;
    for (const auto* entry : catalogue()) list.append(patchObject(*entry));
    return list;
  });
  function(
      module, "_patch_named", "(name)",
      "The patch of that class or display name; None when there is none.",
      [](const String& name) {
        const auto* found = patchNamed(name.view());
        return found ? patchObject(*found) : py::object(py::none());
      },
      py::arg("name"));
}

}  // namespace tarnkit::python
