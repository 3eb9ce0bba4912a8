#pragma once

#include <memory>
#include <span>

#include "bindings/python/src/Section.h"
#include "tarnkit/model/HXDocument.h"

namespace tarnkit {
class HXConnection;
class HXHistory;
class HXImageStoreEntry;
class HXOpeningRecord;
class HXParameter;
class HXPatchPort;
class HXPort;
class HXPortGroup;
class HXSymbolicPort;
}  // namespace tarnkit

namespace tarnkit::python {

/// What Python holds of an object of the model. There is one handle an object at a time, so the
/// same node is the same Python object while anybody holds it.
///
/// A handle keeps its object in memory, and its document not: a node whose document has come to its
/// end is there still, and says so when it is asked. The document's own handle is what keeps a
/// document.
struct Handle {
  PyObject_HEAD Ref<Object> object;
  /// The document in which the object was seen last; null before it was in one.
  WeakRef<HXDocument> home;
  PyObject* weakReferences;
  /// Of a document: what Python has beside it.
  struct DocumentSide* side;
};

/// Who observes a document: the callback, or a weak reference to the method that is one.
struct Observer {
  NotificationCenter::Token token = 0;  // 0 once it was cancelled
  py::object callback;
  bool isMethod = false;

  void cancel();
};

/// What goes with a document for as long as its handle: the history that records it, who observes
/// it, and what opening it has told.
struct DocumentSide {
  Ref<HXHistory> history;
  std::unique_ptr<HXOpeningRecord> opening;
  std::vector<std::shared_ptr<Observer>> observers;

  DocumentSide();
  ~DocumentSide();
};

/// The Python classes of the model's objects.
struct Types {
  PyTypeObject* node;
  PyTypeObject* document;
  PyTypeObject* group;
  PyTypeObject* port;
  PyTypeObject* patchPort;
  PyTypeObject* publishedPort;
  PyTypeObject* connection;
  PyTypeObject* parameter;
  PyTypeObject* portGroup;
  PyTypeObject* image;
  PyTypeObject* history;
};
extern Types types;

/// Makes a class of handles and enters it into the module. `described` is its `__repr__`, null
/// where that of the base will do, `made` its `__new__`, null where Python makes none. What is a
/// part of a document refuses to be pickled. Handles that have a side may be part of a circle
/// through the callbacks in it, which Python's collector finds.
PyTypeObject* makeHandleType(py::module_& module, const char* name, const char* documentation,
                             PyTypeObject* base, std::span<PyGetSetDef> attributes,
                             reprfunc described = nullptr, newfunc made = nullptr,
                             bool hasSide = false);
/// Objects of that class of the library get handles of the type.
void setHandleType(const Class& record, PyTypeObject* type);

/// A new reference to the object's handle, made at need; to None for null. Throws for an object of
/// which Python has no class.
PyObject* newReference(Object* object);
inline py::object wrap(Object* object) {
  return py::reinterpret_steal<py::object>(newReference(object));
}
template <class T>
py::object wrap(const Ref<T>& object) {
  return wrap(static_cast<Object*>(object.get()));
}
/// Whether Python has a class for such an object.
bool canWrap(const Object& object) noexcept;
/// The list of the objects' handles.
template <class T>
py::list wrapAll(const std::vector<Ref<T>>& objects) {
  py::list list(objects.size());
  for (std::size_t i = 0; i < objects.size(); ++i) list[i] = wrap(objects[i]);
  return list;
}

/// Whether Python's object is a handle of the class or of one below it.
bool isHandle(PyObject* object, const PyTypeObject* type) noexcept;
/// Whether it is a handle of any class.
bool canBeHandle(PyObject* object) noexcept;
inline Handle& handleOf(PyObject* object) noexcept { return *reinterpret_cast<Handle*>(object); }

/// The Python class for a class of the library, and what people call it.
template <class T>
PyTypeObject* typeOf();

/// Whether the object is a part of its document, or of a graph that is being made still. Notes the
/// document.
bool isLive(Handle& handle);
/// Throws `GoneError` unless it is.
void requireLive(Handle& handle);

/// The object behind a handle; `TypeError` for anything else, `GoneError` for what is gone.
template <class T>
T& live(PyObject* object);

/// What is added to a document, or taken to another, brings along everything below it.
void noteHome(HXNode& root);
/// The document's side, made at need.
DocumentSide& sideOf(HXDocument& document);

[[noreturn]] void failWithType(PyObject* given, const char* wanted);
const char* nameOf(const PyTypeObject* type) noexcept;

template <>
inline PyTypeObject* typeOf<HXNode>() {
  return types.node;
}
template <>
inline PyTypeObject* typeOf<HXDocument>() {
  return types.document;
}
template <>
inline PyTypeObject* typeOf<HXGroup>() {
  return types.group;
}
template <>
inline PyTypeObject* typeOf<HXPort>() {
  return types.port;
}
template <>
inline PyTypeObject* typeOf<HXPatchPort>() {
  return types.patchPort;
}
template <>
inline PyTypeObject* typeOf<HXSymbolicPort>() {
  return types.publishedPort;
}
template <>
inline PyTypeObject* typeOf<HXConnection>() {
  return types.connection;
}
template <>
inline PyTypeObject* typeOf<HXParameter>() {
  return types.parameter;
}
template <>
inline PyTypeObject* typeOf<HXPortGroup>() {
  return types.portGroup;
}
template <>
inline PyTypeObject* typeOf<HXImageStoreEntry>() {
  return types.image;
}
template <>
inline PyTypeObject* typeOf<HXHistory>() {
  return types.history;
}

template <class T>
T& live(PyObject* object) {
  PyTypeObject* const type = typeOf<T>();
  if (!isHandle(object, type)) failWithType(object, nameOf(type));
  requireLive(handleOf(object));
  return *static_cast<T*>(handleOf(object).object.get());
}

}  // namespace tarnkit::python
