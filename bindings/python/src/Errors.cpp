#include "bindings/python/src/Errors.h"

#include "tarnkit/model/HXRefusal.h"

namespace tarnkit::python {

namespace {

[[noreturn]] void raise(const char* type, const py::tuple& arguments) {
  const py::object made = plainType(type)(*arguments);
  PyErr_SetObject(reinterpret_cast<PyObject*>(Py_TYPE(made.ptr())), made.ptr());
  throw py::error_already_set();
}

}  // namespace

py::object plainType(const char* name) {
  // Kept for ever, since objects of the module may outlive the modules of an ending interpreter.
  static PyObject* const module = py::module_::import("tarnkit._types").release().ptr();
  return py::handle(module).attr(name);
}

void throwGone(const std::string& sentence) { raise("GoneError", py::make_tuple(sentence)); }

void throwRefused(const std::string& reason, std::string_view code) {
  raise("RefusedError", py::make_tuple(text(std::string_view(reason)), text(code)));
}

void requireNoRefusal(const HXRefusal& refusal) {
  if (!refusal) return;
  throwRefused(refusal.reason().toStdString(), tarnkit::nameOf(refusal.code()));
}

void throwStatus(const Status& status) {
  if (status.code() == StatusCode::refused) {
    throwRefused(status.sentence(), tarnkit::nameOf(status.code()));
  }
  const py::object path =
      status.path().empty()
          ? py::object(py::none())
          : py::reinterpret_steal<py::object>(PyUnicode_DecodeFSDefaultAndSize(
                status.path().data(), static_cast<Py_ssize_t>(status.path().size())));
  raise("FileError", py::make_tuple(text(std::string_view(status.sentence())),
                                    text(tarnkit::nameOf(status.code())), path));
}

PyObject* newText(std::string_view text) {
  PyObject* const made =
      PyUnicode_DecodeUTF8(text.data(), static_cast<Py_ssize_t>(text.size()), "backslashreplace");
  if (!made) throw py::error_already_set();
  return made;
}

py::object text(const String& text) {
  return text.isNil() ? py::object(py::none()) : python::text(text.view());
}

}  // namespace tarnkit::python
