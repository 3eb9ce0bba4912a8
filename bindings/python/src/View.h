#pragma once

#include "bindings/python/src/Handle.h"

namespace tarnkit::python {

/// What kind of things an object of the model has many of, and how one is found by its name.
struct ViewKind {
  /// The name of the Python class, and of one of the things for messages.
  const char* name;
  const char* noun;
  const char* documentation;
  /// The things as they are now, in their order.
  std::vector<Ref<Object>> (*items)(Object& owner, std::int32_t side);
  /// How many these are.
  std::size_t (*count)(Object& owner, std::int32_t side);
  /// The thing of that key or name; null when there is none.
  Object* (*find)(Object& owner, std::int32_t side, std::string_view name);
};

/// A Python class that shows the things as a sequence whose members are found by name, too:
/// `node.inputs[0]`, `node.inputs["Value"]`, `"Value" in node.inputs`, `for port in node.inputs`.
///
/// A view shows what is there when it is asked. It holds the handle of its owner. Going through it
/// goes through what was there when that began, and keeps the document until the end, so anything
/// may be edited meanwhile. The kind must live for ever.
PyTypeObject* makeViewType(py::module_& module, const ViewKind& kind);
/// A view of an owner's things; a new reference.
PyObject* newView(PyTypeObject* type, PyObject* owner, std::int32_t side = 0);
/// The owner of a view, alive.
template <class T = Object>
T& ownerOf(PyObject* view);
Handle& ownerHandleOf(PyObject* view);
/// What the view shows now.
std::vector<Ref<Object>> itemsOf(PyObject* view);
/// An iterator over the objects, which keeps the document.
PyObject* newIterator(std::vector<Ref<Object>> items, HXDocument* keeping);
void makeIteratorType(py::module_& module);

template <class T>
T& ownerOf(PyObject* view) {
  Handle& handle = ownerHandleOf(view);
  requireLive(handle);
  return *static_cast<T*>(handle.object.get());
}

template <class T>
std::vector<Ref<Object>> asObjects(const std::vector<Ref<T>>& objects) {
  return {objects.begin(), objects.end()};
}

}  // namespace tarnkit::python
