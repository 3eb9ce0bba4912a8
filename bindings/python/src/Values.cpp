#include "bindings/python/src/Values.h"

#include <charconv>
#include <cmath>
#include <limits>

#include "bindings/python/src/Handle.h"

namespace tarnkit::python {

namespace {

PyObject* checked(PyObject* made) {
  if (!made) throw py::error_already_set();
  return made;
}

PyObject* make(const char* type, const py::tuple& values) {
  return plainType(type)(*values).release().ptr();
}

[[noreturn]] void failWithValue(py::handle value, const char* what, const char* wanted) {
  throw py::type_error(std::string(what) + " is " + wanted + ", not a " +
                       Py_TYPE(value.ptr())->tp_name);
}

bool isNumber(py::handle value) {
  return PyFloat_Check(value.ptr()) || PyLong_Check(value.ptr()) ||
         (PyNumber_Check(value.ptr()) && !PyComplex_Check(value.ptr()) &&
          !PySequence_Check(value.ptr()));
}

}  // namespace

double shortestDouble(float value) noexcept {
  // No two decimals of up to six digits are one float, so one of them that is this float is the
  // shortest there is.
  const double scaled = std::nearbyint(double{value} * 1e3);
  if (std::fabs(scaled) < 1e6 && static_cast<float>(scaled / 1e3) == value) return scaled / 1e3;
  char digits[32];
  const auto written = std::to_chars(digits, digits + sizeof digits, value);
  double read = value;
  std::from_chars(digits, written.ptr, read);
  return read;
}

PyObject* toPython(bool value) { return PyBool_FromLong(value); }
PyObject* toPython(float value) { return checked(PyFloat_FromDouble(shortestDouble(value))); }
PyObject* toPython(std::int32_t value) { return checked(PyLong_FromLong(value)); }
PyObject* toPython(std::uint64_t value) { return checked(PyLong_FromUnsignedLongLong(value)); }
PyObject* toPython(std::string_view value) { return newText(value); }
PyObject* toPython(const String& value) {
  if (value.isNil()) Py_RETURN_NONE;
  return newText(value.view());
}
PyObject* toPython(HXPoint value) {
  // A tuple with names is a tuple: filled here, since its class is made in Python and slow.
  static auto* const type = reinterpret_cast<PyTypeObject*>(plainType("Point").release().ptr());
  const auto point = py::reinterpret_steal<py::object>(checked(type->tp_alloc(type, 2)));
  PyTuple_SET_ITEM(point.ptr(), 0, toPython(value.x));
  PyTuple_SET_ITEM(point.ptr(), 1, toPython(value.y));
  return py::object(point).release().ptr();
}
PyObject* toPython(RGBA value) {
  return make("Color", py::make_tuple(shortestDouble(value.red), shortestDouble(value.green),
                                      shortestDouble(value.blue), shortestDouble(value.alpha)));
}
PyObject* toPython(Object* value) { return newReference(value); }
PyObject* toPython(py::object value) { return value.release().ptr(); }

PyObject* toPython(const PMRPrimitive* value) {
  if (!value) Py_RETURN_NONE;
  switch (value->storageType()) {
    case PMRPrimitive::boolean:
      return toPython(value->booleanValue());
    case PMRPrimitive::index:
      return toPython(value->indexValue());
    case PMRPrimitive::number:
      return toPython(value->numberValue());
    case PMRPrimitive::radians:
      return make("Angle", py::make_tuple(shortestDouble(value->radiansValue()), "radians"));
    case PMRPrimitive::degrees:
      return make("Angle", py::make_tuple(shortestDouble(value->degreesValue()), "degrees"));
    case PMRPrimitive::color:
      return toPython(value->colorValue());
    case PMRPrimitive::string:
      return toPython(value->stringValue());
    default:
      Py_RETURN_NONE;
  }
}

bool boolFrom(py::handle value, const char* what) {
  if (!PyBool_Check(value.ptr())) failWithValue(value, what, "True or False");
  return value.ptr() == Py_True;
}

float floatFrom(py::handle value, const char* what) {
  if (!isNumber(value)) failWithValue(value, what, "a number");
  const double number = PyFloat_AsDouble(value.ptr());
  if (number == -1 && PyErr_Occurred()) throw py::error_already_set();
  const auto narrow = static_cast<float>(number);
  if (std::isinf(narrow) && !std::isinf(number)) {
    PyErr_Format(PyExc_OverflowError, "%s is beyond a float of 32 bits", what);
    throw py::error_already_set();
  }
  return narrow;
}

std::int32_t indexFrom(py::handle value, const char* what) {
  if (PyBool_Check(value.ptr()) || !PyIndex_Check(value.ptr())) {
    failWithValue(value, what, "a whole number");
  }
  const auto number = py::reinterpret_steal<py::object>(PyNumber_Index(value.ptr()));
  if (!number) throw py::error_already_set();
  int overflow = 0;
  const auto wide = PyLong_AsLongLongAndOverflow(number.ptr(), &overflow);
  using Limits = std::numeric_limits<std::int32_t>;
  if (overflow != 0 || wide < Limits::min() || wide > Limits::max()) {
    PyErr_Format(PyExc_OverflowError, "%s is beyond a whole number of 32 bits", what);
    throw py::error_already_set();
  }
  return static_cast<std::int32_t>(wide);
}

std::string_view viewOf(py::handle value, const char* what) {
  if (!PyUnicode_Check(value.ptr())) failWithValue(value, what, "a text");
  Py_ssize_t size = 0;
  const char* const bytes = PyUnicode_AsUTF8AndSize(value.ptr(), &size);
  if (!bytes) throw py::error_already_set();
  return {bytes, static_cast<std::size_t>(size)};
}

String stringFrom(py::handle value, const char* what) {
  return value.is_none() ? String() : String(viewOf(value, what));
}

HXPoint pointFrom(py::handle value, const char* what) {
  if (!PySequence_Check(value.ptr()) || PyUnicode_Check(value.ptr()) || py::len(value) != 2) {
    failWithValue(value, what, "a pair of numbers");
  }
  const auto pair = py::reinterpret_borrow<py::sequence>(value);
  return {floatFrom(py::object(pair[0]), what), floatFrom(py::object(pair[1]), what)};
}

RGBA colorFrom(py::handle value, const char* what) {
  constexpr const char* kWanted = "a tarnkit.Color, or three or four numbers";
  if (!PySequence_Check(value.ptr()) || PyUnicode_Check(value.ptr())) {
    failWithValue(value, what, kWanted);
  }
  const auto parts = py::reinterpret_borrow<py::sequence>(value);
  const auto count = py::len(value);
  if (count != 3 && count != 4) failWithValue(value, what, kWanted);
  const auto part = [&](std::size_t i) { return floatFrom(py::object(parts[i]), what); };
  return {part(0), part(1), part(2), count == 4 ? part(3) : 1};
}

Ref<PMRPrimitive> primitiveFrom(py::handle value, const PMRPrimitive* like, const char* what) {
  using P = PMRPrimitive;
  const auto kind = like ? like->storageType() : std::int64_t{P::nil};
  if (PyBool_Check(value.ptr())) return P::primitiveWithBooleanValue(boolFrom(value, what));
  if (PyUnicode_Check(value.ptr())) return P::primitiveWithStringValue(stringFrom(value, what));
  if (py::isinstance(value, plainType("Angle"))) {
    const float number = floatFrom(value.attr("value"), what);
    return value.attr("unit").cast<std::string>() == "radians"
               ? P::primitiveWithRadiansValue(number)
               : P::primitiveWithDegreesValue(number);
  }
  if (isNumber(value)) {
    if (kind == P::radians) return P::primitiveWithRadiansValue(floatFrom(value, what));
    if (kind == P::degrees) return P::primitiveWithDegreesValue(floatFrom(value, what));
    const bool isWhole = PyIndex_Check(value.ptr());
    if (isWhole && kind == P::index) return P::primitiveWithIndexValue(indexFrom(value, what));
    return P::primitiveWithNumberValue(floatFrom(value, what));
  }
  if (PyTuple_Check(value.ptr()) || PyList_Check(value.ptr())) {
    return P::primitiveWithColorValue(colorFrom(value, what));
  }
  failWithValue(value, what, "a bool, a number, a text, a tarnkit.Angle or a tarnkit.Color");
}

std::string pathFrom(py::handle value) {
  PyObject* bytes = nullptr;
  if (!PyUnicode_FSConverter(value.ptr(), &bytes)) throw py::error_already_set();
  const auto owned = py::reinterpret_steal<py::bytes>(bytes);
  return std::string(owned);
}

}  // namespace tarnkit::python
