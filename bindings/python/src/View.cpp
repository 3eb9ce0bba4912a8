#include "bindings/python/src/View.h"

#include <unordered_map>

#include "bindings/python/src/Slots.h"
#include "tarnkit/model/HXConnection.h"
#include "tarnkit/model/HXParameter.h"
#include "tarnkit/model/HXPort.h"

namespace tarnkit::python {

namespace {

struct View {
  PyObject_HEAD PyObject* owner;
  const ViewKind* kind;
  std::int32_t side;
};

struct Iterator {
  PyObject_HEAD std::vector<Ref<Object>> items;
  std::size_t next;
  PyObject* document;  // null for none
};

PyTypeObject* iteratorType = nullptr;

std::unordered_map<PyTypeObject*, const ViewKind*>& kinds() {
  static auto* const made = new std::unordered_map<PyTypeObject*, const ViewKind*>;
  return *made;
}

View& asView(PyObject* self) { return *reinterpret_cast<View*>(self); }

HXDocument* documentOf(Handle& handle) {
  if (auto* const node = as<HXNode>(handle.object.get())) return node->document();
  return handle.home.get();
}

void deallocateView(PyObject* self) {
  PyTypeObject* const type = Py_TYPE(self);
  Py_DECREF(asView(self).owner);
  type->tp_free(self);
  Py_DECREF(type);
}

Py_ssize_t lengthOf(PyObject* self) {
  return guarded<Py_ssize_t>(-1, [&] {
    const View& view = asView(self);
    return static_cast<Py_ssize_t>(view.kind->count(ownerOf(self), view.side));
  });
}

PyObject* itemAt(PyObject* self, Py_ssize_t index) {
  return guarded<PyObject*>(nullptr, [&] {
    const auto items = itemsOf(self);
    if (index < 0 || static_cast<std::size_t>(index) >= items.size()) {
      throw py::index_error(std::string("there are ") + std::to_string(items.size()) + " " +
                            asView(self).kind->noun + "s");
    }
    return newReference(items[static_cast<std::size_t>(index)].get());
  });
}

PyObject* slice(PyObject* self, PyObject* key) {
  const auto items = itemsOf(self);
  Py_ssize_t start = 0;
  Py_ssize_t stop = 0;
  Py_ssize_t step = 0;
  if (PySlice_Unpack(key, &start, &stop, &step) != 0) throw py::error_already_set();
  const auto count =
      PySlice_AdjustIndices(static_cast<Py_ssize_t>(items.size()), &start, &stop, step);
  py::list list;
  for (Py_ssize_t i = 0; i < count; ++i) {
    list.append(wrap(items[static_cast<std::size_t>(start + i * step)]));
  }
  return list.release().ptr();
}

PyObject* subscript(PyObject* self, PyObject* key) {
  if (PyLong_Check(key)) {
    Py_ssize_t index = PyLong_AsSsize_t(key);
    if (index == -1 && PyErr_Occurred()) return nullptr;
    if (index < 0) {
      const auto count = lengthOf(self);
      if (count < 0) return nullptr;
      index += count;
    }
    return itemAt(self, index);
  }
  return guarded<PyObject*>(nullptr, [&] {
    if (PySlice_Check(key)) return slice(self, key);
    const View& view = asView(self);
    if (!PyUnicode_Check(key)) {
      failWithType(key, "number, slice, key or name");
    }
    Object* const found =
        view.kind->find(ownerOf(self), view.side, python::viewOf(py::handle(key), "key"));
    if (!found) {
      PyErr_Format(PyExc_KeyError, "there is no %s %R", view.kind->noun, key);
      throw py::error_already_set();
    }
    return newReference(found);
  });
}

int contains(PyObject* self, PyObject* value) {
  return guarded<int>(-1, [&] {
    const View& view = asView(self);
    if (PyUnicode_Check(value)) {
      return view.kind->find(ownerOf(self), view.side, python::viewOf(py::handle(value), "key"))
                 ? 1
                 : 0;
    }
    if (!canBeHandle(value)) return 0;
    for (const auto& item : itemsOf(self)) {
      if (item == handleOf(value).object.get()) return 1;
    }
    return 0;
  });
}

PyObject* iterate(PyObject* self) {
  return guarded<PyObject*>(
      nullptr, [&] { return newIterator(itemsOf(self), documentOf(ownerHandleOf(self))); });
}

PyObject* describe(PyObject* self) {
  return guarded<PyObject*>(nullptr, [&] {
    py::list list;
    if (isLive(ownerHandleOf(self))) {
      for (const auto& item : itemsOf(self)) list.append(wrap(item));
    }
    const std::string text = std::string("<tarnkit.") + asView(self).kind->name + " " +
                             py::repr(list).cast<std::string>() + ">";
    return newText(text);
  });
}

void deallocateIterator(PyObject* self) {
  auto& iterator = *reinterpret_cast<Iterator*>(self);
  PyTypeObject* const type = Py_TYPE(self);
  for (auto& item : iterator.items) Section::drop(std::move(item));
  iterator.items.~vector();
  Py_XDECREF(iterator.document);
  type->tp_free(self);
  Py_DECREF(type);
}

PyObject* nextItem(PyObject* self) {
  auto& iterator = *reinterpret_cast<Iterator*>(self);
  if (iterator.next >= iterator.items.size()) {
    Py_CLEAR(iterator.document);
    return nullptr;
  }
  return guarded<PyObject*>(nullptr,
                            [&] { return newReference(iterator.items[iterator.next++].get()); });
}

PyObject* remaining(PyObject* self, PyObject*) {
  const auto& iterator = *reinterpret_cast<Iterator*>(self);
  return PyLong_FromSize_t(iterator.items.size() - iterator.next);
}

PyMethodDef kIteratorMethods[] = {{"__length_hint__", remaining, METH_NOARGS, nullptr},
                                  {nullptr, nullptr, 0, nullptr}};

}  // namespace

Handle& ownerHandleOf(PyObject* view) { return handleOf(asView(view).owner); }

std::vector<Ref<Object>> itemsOf(PyObject* view) {
  return asView(view).kind->items(ownerOf(view), asView(view).side);
}

PyTypeObject* makeViewType(py::module_& module, const ViewKind& kind) {
  const std::string fullName = std::string("tarnkit.") + kind.name;
  PyType_Slot slots[] = {
      {Py_tp_dealloc, reinterpret_cast<void*>(deallocateView)},
      {Py_tp_doc, const_cast<char*>(kind.documentation)},
      {Py_tp_repr, reinterpret_cast<void*>(describe)},
      {Py_tp_iter, reinterpret_cast<void*>(iterate)},
      {Py_sq_length, reinterpret_cast<void*>(lengthOf)},
      {Py_sq_item, reinterpret_cast<void*>(itemAt)},
      {Py_sq_contains, reinterpret_cast<void*>(contains)},
      {Py_mp_length, reinterpret_cast<void*>(lengthOf)},
      {Py_mp_subscript, reinterpret_cast<void*>(subscript)},
      {0, nullptr},
  };
  PyType_Spec spec{fullName.c_str(), static_cast<int>(sizeof(View)), 0,
                   Py_TPFLAGS_DEFAULT | Py_TPFLAGS_DISALLOW_INSTANTIATION, slots};
  PyObject* const made = PyType_FromSpec(&spec);
  if (!made) throw py::error_already_set();
  module.attr(kind.name) = py::handle(made);
  auto* const type = reinterpret_cast<PyTypeObject*>(made);
  kinds()[type] = &kind;
  return type;
}

PyObject* newView(PyTypeObject* type, PyObject* owner, std::int32_t side) {
  PyObject* const self = type->tp_alloc(type, 0);
  if (!self) throw py::error_already_set();
  View& view = asView(self);
  view.owner = Py_NewRef(owner);
  view.kind = kinds()[type];
  view.side = side;
  return self;
}

void makeIteratorType(py::module_&) {
  PyType_Slot slots[] = {
      {Py_tp_dealloc, reinterpret_cast<void*>(deallocateIterator)},
      {Py_tp_iter, reinterpret_cast<void*>(PyObject_SelfIter)},
      {Py_tp_iternext, reinterpret_cast<void*>(nextItem)},
      {Py_tp_methods, kIteratorMethods},
      {0, nullptr},
  };
  PyType_Spec spec{"tarnkit._Iterator", static_cast<int>(sizeof(Iterator)), 0,
                   Py_TPFLAGS_DEFAULT | Py_TPFLAGS_DISALLOW_INSTANTIATION, slots};
  iteratorType = reinterpret_cast<PyTypeObject*>(PyType_FromSpec(&spec));
  if (!iteratorType) throw py::error_already_set();
}

PyObject* newIterator(std::vector<Ref<Object>> items, HXDocument* keeping) {
  const py::object document = keeping ? wrap(keeping) : py::object();
  PyObject* const self = iteratorType->tp_alloc(iteratorType, 0);
  if (!self) throw py::error_already_set();
  auto& iterator = *reinterpret_cast<Iterator*>(self);
  new (&iterator.items) std::vector<Ref<Object>>(std::move(items));
  iterator.next = 0;
  iterator.document = py::object(document).release().ptr();
  return self;
}

}  // namespace tarnkit::python
