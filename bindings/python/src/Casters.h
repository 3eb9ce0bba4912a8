#pragma once

#include <type_traits>

#include "bindings/python/src/Handle.h"
#include "bindings/python/src/Values.h"

// How the binding library meets the model: an argument `HXNode&` is a live handle, a `HXNode*` may
// be None, and whatever is handed out is a handle. Who is refused is told what was wanted.
namespace pybind11::detail {

template <class T>
class type_caster<T, std::enable_if_t<std::is_base_of_v<tarnkit::Object, T>>> {
 public:
  static constexpr auto name = const_name("object");
  bool load(handle source, bool) {
    source_ = source.ptr();
    if (source_ == Py_None) return true;
    PyTypeObject* const type = tarnkit::python::typeOf<T>();
    if (!tarnkit::python::isHandle(source_, type)) {
      tarnkit::python::failWithType(source_, tarnkit::python::nameOf(type));
    }
    return true;
  }
  // Asked when the section has begun.
  operator T*() { return source_ == Py_None ? nullptr : &tarnkit::python::live<T>(source_); }
  operator T&() { return tarnkit::python::live<T>(source_); }
  template <class U>
  using cast_op_type = detail::cast_op_type<U>;
  static handle cast(T* object, return_value_policy, handle) {
    return tarnkit::python::newReference(object);
  }
  static handle cast(T& object, return_value_policy, handle) {
    return tarnkit::python::newReference(&object);
  }

 private:
  PyObject* source_ = nullptr;
};

template <class T>
class type_caster<tarnkit::Ref<T>> {
 public:
  static constexpr auto name = const_name("object");
  static handle cast(const tarnkit::Ref<T>& object, return_value_policy, handle) {
    return tarnkit::python::newReference(static_cast<tarnkit::Object*>(object.get()));
  }
};

template <>
class type_caster<tarnkit::String> {
 public:
  PYBIND11_TYPE_CASTER(tarnkit::String, const_name("str"));
  bool load(handle source, bool) {
    value = tarnkit::python::stringFrom(source, "this");
    return true;
  }
  static handle cast(const tarnkit::String& text, return_value_policy, handle) {
    return tarnkit::python::toPython(text);
  }
};

}  // namespace pybind11::detail
