#include "bindings/python/src/Module.h"

#include "bindings/python/src/Slots.h"
#include "tarnkit/archive/HXVersion.h"

namespace tarnkit::python {

PYBIND11_MODULE(_tarnkit, module) {
  py::options options;
  options.disable_function_signatures();
  module.doc() = "The part of the package `tarnkit` that is the library.";

  makeIteratorType(module);
  definePatches(module);
  defineGroups(module);
  definePorts(module);
  defineParameters(module);
  defineConnections(module);
  defineImages(module);
  defineNodes(module);
  definePortGroups(module);
  defineDocuments(module);
  defineFiles(module);
  defineHistory(module);
  defineObserving(module);
  defineEditing(module);
  defineComparing(module);
  defineRendering(module);
  defineBulk(module);
  defineExpressions(module);
  function(module, "live_objects", "()",
           "How many objects of the library are alive in the process, for tests that look for "
           "leaks.",
           [] { return Object::liveObjectCount(); });
  Told::beginLogging();
}

}  // namespace tarnkit::python
