#pragma once

#include "bindings/python/src/Errors.h"
#include "tarnkit/model/HXGroup.h"
#include "tarnkit/patches/PMRPrimitive.h"

namespace tarnkit::python {

/// The double with the fewest digits that a float of the model stands for: 0.1f is 0.1 in Python,
/// and becomes the same float again.
double shortestDouble(float value) noexcept;

// What goes to Python: a new reference, or an exception.
PyObject* toPython(bool value);
PyObject* toPython(float value);
PyObject* toPython(std::int32_t value);
PyObject* toPython(std::uint64_t value);
PyObject* toPython(const String& value);
PyObject* toPython(std::string_view value);
PyObject* toPython(HXPoint value);
PyObject* toPython(RGBA value);
PyObject* toPython(Object* value);
PyObject* toPython(py::object value);
template <class T>
PyObject* toPython(const Ref<T>& value) {
  return toPython(static_cast<Object*>(value.get()));
}
/// None for nil and null.
PyObject* toPython(const PMRPrimitive* value);

// What comes from Python: `TypeError`, or `OverflowError`, for what does not fit. `what` says in
// the message what it is for.
bool boolFrom(py::handle value, const char* what);
float floatFrom(py::handle value, const char* what);
std::int32_t indexFrom(py::handle value, const char* what);
/// Nil for None.
String stringFrom(py::handle value, const char* what);
HXPoint pointFrom(py::handle value, const char* what);
/// A `Color`, or a sequence of three or four numbers.
RGBA colorFrom(py::handle value, const char* what);
/// A primitive of the kind that the value has in Python. A number takes the kind of `like`, if that
/// is a number of some kind, too.
Ref<PMRPrimitive> primitiveFrom(py::handle value, const PMRPrimitive* like, const char* what);

/// The text of a `str`; `TypeError` for anything else.
std::string_view viewOf(py::handle value, const char* what);
/// A path of the file system: a `str`, `bytes` or `os.PathLike`.
std::string pathFrom(py::handle value);

}  // namespace tarnkit::python
