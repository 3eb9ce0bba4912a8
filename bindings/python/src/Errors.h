#pragma once

#include "bindings/python/src/Python.h"
#include "tarnkit/platform/system/Result.h"

namespace tarnkit {
class HXRefusal;
class MXError;
}  // namespace tarnkit

namespace tarnkit::python {

/// A class of the module's own Python part (`tarnkit._types`), looked up once.
py::object plainType(const char* name);

[[noreturn]] void throwGone(const std::string& sentence);
/// `RefusedError`.
[[noreturn]] void throwRefused(const std::string& reason, std::string_view code = {});
void requireNoRefusal(const HXRefusal& refusal);
/// `FileError` with path and cause; `RefusedError` for what a rule of the library forbids.
[[noreturn]] void throwStatus(const Status& status);
inline void requireOK(const Status& status) {
  if (!status) throwStatus(status);
}
template <class T>
T valueOf(Result<T> result) {
  if (!result) throwStatus(result.status());
  return *std::move(result);
}

/// Text of the library as Python's; bytes that are no UTF-8, which files may hold, are escaped.
PyObject* newText(std::string_view text);
inline py::object text(std::string_view text) {
  return py::reinterpret_steal<py::object>(newText(text));
}
/// None for nil.
py::object text(const String& text);

}  // namespace tarnkit::python
