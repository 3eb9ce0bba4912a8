#pragma once

#include "bindings/python/src/Casters.h"
#include "bindings/python/src/View.h"

namespace tarnkit::python {

/// Runs what may throw, where Python calls C: the exception becomes Python's.
template <class Result, class Function>
Result guarded(Result failed, Function function) noexcept {
  try {
    const Section section;
    return function();
  } catch (py::error_already_set& failure) {
    failure.restore();
  } catch (const py::builtin_exception& failure) {
    failure.set_error();
  } catch (const std::bad_alloc&) {
    PyErr_NoMemory();
  } catch (const std::exception& failure) {
    PyErr_SetString(PyExc_RuntimeError, failure.what());
  }
  return failed;
}

// Attributes are slots of C: they are read in loops, and a property of the binding library costs
// four times as much.

template <class T, class Value>
struct Accessors {
  Value (*get)(T&);
  void (*set)(T&, py::handle);
  bool canBeDeleted;
};

template <class T, class Value>
PyObject* readSlot(PyObject* self, void* closure) {
  return guarded<PyObject*>(nullptr, [&] {
    requireLive(handleOf(self));
    T& object = *static_cast<T*>(handleOf(self).object.get());
    return toPython(static_cast<const Accessors<T, Value>*>(closure)->get(object));
  });
}

template <class T, class Value>
int writeSlot(PyObject* self, PyObject* value, void* closure) {
  return guarded<int>(-1, [&] {
    const auto* accessors = static_cast<const Accessors<T, Value>*>(closure);
    if (!value && !accessors->canBeDeleted) {
      throw py::attribute_error("this attribute cannot be deleted");
    }
    requireLive(handleOf(self));
    // Kept while it is changed, whatever observers do.
    const Ref<Object> kept = handleOf(self).object;
    accessors->set(*static_cast<T*>(kept.get()), value ? value : Py_None);
    return 0;
  });
}

/// An attribute that is read by `get`, and, where there is a `set`, written by it; one that can be
/// deleted is then set to None.
template <class T, class Value>
PyGetSetDef attribute(const char* name, const char* documentation, Value (*get)(T&),
                      void (*set)(T&, py::handle) = nullptr, bool canBeDeleted = false) {
  auto* const accessors =
      new Accessors<T, Value>{get, set, canBeDeleted};  // as long as the class: for ever
  return {name, &readSlot<T, Value>, set ? &writeSlot<T, Value> : nullptr, documentation,
          accessors};
}

/// Adds an attribute to a class that is made.
inline void addAttribute(PyTypeObject* type, const PyGetSetDef& definition) {
  const auto descriptor =
      py::reinterpret_steal<py::object>(PyDescr_NewGetSet(type, new PyGetSetDef(definition)));
  py::handle(reinterpret_cast<PyObject*>(type)).attr(definition.name) = descriptor;
}

/// The view of an object's things.
template <PyTypeObject** type, std::int32_t side>
PyObject* viewSlot(PyObject* self, void*) {
  return guarded<PyObject*>(nullptr, [&] {
    requireLive(handleOf(self));
    return newView(*type, self, side);
  });
}
template <PyTypeObject** type, std::int32_t side = 0>
PyGetSetDef view(const char* name, const char* documentation) {
  return {name, &viewSlot<type, side>, nullptr, documentation, nullptr};
}

/// Whether the object is there still: the attribute that every handle has.
inline PyObject* existsSlot(PyObject* self, void*) {
  return guarded<PyObject*>(nullptr, [&] { return toPython(isLive(handleOf(self))); });
}
inline PyGetSetDef exists() {
  return {"exists", existsSlot, nullptr,
          "Whether it is a part of its document still, and the document is there: bool. What "
          "is gone raises GoneError for everything but this.",
          nullptr};
}

/// For classes of the binding library: their class is Python's own, as that of any other class.
inline py::metaclass plainClass() {
  return py::metaclass(reinterpret_cast<PyObject*>(&PyType_Type));
}

/// A method, or a function of the module. The signature is that which Python shows: "(self, name)".
/// A section spans the call.
template <class Function, class... Extra>
void method(PyTypeObject* type, const char* name, const char* signature, const char* documentation,
            Function function, const Extra&... extra) {
  const py::object owner = py::reinterpret_borrow<py::object>(reinterpret_cast<PyObject*>(type));
  const std::string text = std::string(name) + signature + "\n--\n\n" + documentation;
  owner.attr(name) = py::cpp_function(std::move(function), py::name(name), py::is_method(owner),
                                      py::call_guard<Section>(), text.c_str(), extra...);
}
template <class Function, class... Extra>
void function(py::module_& module, const char* name, const char* signature,
              const char* documentation, Function function, const Extra&... extra) {
  const std::string text = std::string(name) + signature + "\n--\n\n" + documentation;
  module.attr(name) = py::cpp_function(std::move(function), py::name(name), py::scope(module),
                                       py::call_guard<Section>(), text.c_str(), extra...);
}

}  // namespace tarnkit::python
