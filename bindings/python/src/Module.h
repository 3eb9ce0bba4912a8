#pragma once

#include "bindings/python/src/Handle.h"

namespace tarnkit {
class HXRNodeClass;
}

/// What each source enters into the module, in the order in which it is done.
namespace tarnkit::python {

void definePatches(py::module_& module);
void defineGroups(py::module_& module);
void defineNodes(py::module_& module);
void definePorts(py::module_& module);
void defineConnections(py::module_& module);
void defineParameters(py::module_& module);
void defineImages(py::module_& module);
void definePortGroups(py::module_& module);
void defineDocuments(py::module_& module);
void defineFiles(py::module_& module);
void defineHistory(py::module_& module);
void defineObserving(py::module_& module);
void defineEditing(py::module_& module);
void defineComparing(py::module_& module);
void defineRendering(py::module_& module);
void defineBulk(py::module_& module);
void defineExpressions(py::module_& module);

/// The classes of views, made by the source of what they show.
inline PyTypeObject* nodesType = nullptr;
inline PyTypeObject* portsType = nullptr;
inline PyTypeObject* parametersType = nullptr;
inline PyTypeObject* connectionsType = nullptr;
inline PyTypeObject* imagesType = nullptr;

/// The patch that a caller means: a `Patch`, the name of its class, or that which people see.
/// `KeyError` for a name that no patch has.
const HXRNodeClass& patchFrom(py::handle given);
py::object patchObject(const HXRNodeClass& patchClass);
/// Names may mean other patches from now on.
void forgetPatchNames();

/// Either the image of a document, or a new one out of a file: a path, bytes, or a file object.
Ref<HXImageStoreEntry> imageFrom(py::handle given);
/// The bytes of a path, a bytes-like object or a file object; `path` is set where it was one.
std::string bytesFrom(py::handle given, std::string* path);

/// Wires two ports, in any order, as a hand does. `RefusedError` with the reason.
Ref<HXConnection> wire(HXPort& first, HXPort& second);
/// Adds what is given (a node, or the patch of a new one) to the group.
Ref<HXNode> addTo(HXGroup& group, py::handle what, py::handle name, py::handle position);

/// The nodes of a Python sequence, alive.
std::vector<Ref<HXNode>> nodesFrom(py::handle sequence);

}  // namespace tarnkit::python
