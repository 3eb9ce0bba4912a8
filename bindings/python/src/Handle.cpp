#include "bindings/python/src/Handle.h"

#include <structmember.h>

#include <cstring>
#include <unordered_map>

#include "bindings/python/src/Errors.h"
#include "bindings/python/src/ParameterKey.h"
#include "tarnkit/compare/HXOpeningRecord.h"
#include "tarnkit/editing/HXHistory.h"
#include "tarnkit/model/HXConnection.h"
#include "tarnkit/model/HXNodeWalk.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/model/HXPortGroup.h"
#include "tarnkit/model/HXSymbolicPort.h"

namespace tarnkit::python {

Types types{};

void Observer::cancel() {
  if (token != 0) NotificationCenter::defaultCenter().removeObserver(token);
  token = 0;
  callback = py::object();
}

DocumentSide::DocumentSide() = default;
DocumentSide::~DocumentSide() {
  for (const auto& observer : observers) observer->cancel();
}

namespace {

// Never destroyed: the interpreter may end while there are handles.
std::unordered_map<const Object*, PyObject*>& handles() {
  static auto* const made = new std::unordered_map<const Object*, PyObject*>;
  return *made;
}
std::unordered_map<const Class*, PyTypeObject*>& handleTypes() {
  static auto* const made = new std::unordered_map<const Class*, PyTypeObject*>;
  return *made;
}

// Of a class that a plug-in or the library derives from one that is known: that one's.
PyTypeObject* typeFor(const Object& object) noexcept {
  auto& known = handleTypes();
  for (const Class* at = &object.isa(); at; at = at->superclass()) {
    const auto found = known.find(at);
    if (found != known.end()) return found->second;
  }
  return nullptr;
}

// The node that the object hangs on; null once it is gone. Of a connection the node of its output.
HXNode* anchorOf(Object& object) {
  if (auto* const node = as<HXNode>(&object)) return node;
  if (auto* const group = as<HXGroup>(&object)) return group->presentOrFormerNode();
  if (auto* const port = as<HXPort>(&object)) return port->node();
  if (auto* const parameter = as<HXParameter>(&object)) return parameter->node();
  if (auto* const group = as<HXPortGroup>(&object)) return group->node();
  if (auto* const connection = as<HXConnection>(&object)) {
    const auto* const port = connection->outputPort();
    return port ? port->node() : nullptr;
  }
  return nullptr;
}

// Whether it is where its node, or its port, would find it.
bool isHeld(Object& object, PyTypeObject* type) {
  if (type == types.patchPort) {
    auto& port = static_cast<HXPatchPort&>(object);
    const auto* const node = port.node();
    const auto* const held = node ? node->portsInForce().find(port.uniqueKey()) : nullptr;
    return held && *held == &port;
  }
  if (type == types.publishedPort) return static_cast<HXSymbolicPort&>(object).isHeld();
  if (type == types.connection) return static_cast<HXConnection&>(object).isHeld();
  if (type == types.parameter) {
    auto& parameter = static_cast<HXParameter&>(object);
    const auto* const node = parameter.node();
    return node && node->parameterForKey(keyOf(parameter)) == &parameter;
  }
  if (type == types.portGroup) {
    auto& group = static_cast<HXPortGroup&>(object);
    const auto* const node = group.node();
    return node && node->portGroupForKey(group.groupKey(), group.orientation()) == &group;
  }
  if (type == types.group) {
    const auto* const node = static_cast<HXGroup&>(object).presentOrFormerNode();
    return node && node->subnodeGroup();
  }
  return true;
}

bool hasHome(Handle& handle) {
  if (handle.home.get()) return true;
  auto* const anchor = anchorOf(*handle.object);
  if (!anchor) return false;
  // What stands in no document and never did is being made still.
  if (auto* const document = anchor->document()) {
    handle.home = document;
    return true;
  }
  return !handle.home.hasExpired();
}

void deallocate(PyObject* self) {
  auto& handle = handleOf(self);
  PyTypeObject* const type = Py_TYPE(self);
  if (PyType_IS_GC(type)) PyObject_GC_UnTrack(self);
  // First of all: what follows may run code that asks for the object again.
  const auto entered = handles().find(handle.object.get());
  if (entered != handles().end() && entered->second == self) handles().erase(entered);
  if (handle.weakReferences) PyObject_ClearWeakRefs(self);
  delete handle.side;
  handle.home.~WeakRef();
  Ref<Object> object = std::move(handle.object);
  handle.object.~Ref();
  type->tp_free(self);
  Py_DECREF(type);
  Section::drop(std::move(object));
}

int traverse(PyObject* self, visitproc visit, void* arg) {
  Py_VISIT(Py_TYPE(self));
  if (const auto* const side = handleOf(self).side) {
    for (const auto& observer : side->observers) Py_VISIT(observer->callback.ptr());
  }
  return 0;
}

int clear(PyObject* self) {
  if (auto* const side = handleOf(self).side) {
    auto observers = std::move(side->observers);
    side->observers.clear();
    for (const auto& observer : observers) observer->cancel();
  }
  return 0;
}

PyObject* refuseToPickle(PyObject* self, PyObject*) {
  const char* const name = nameOf(Py_TYPE(self));
  PyErr_Format(PyExc_TypeError,
               "a %s is a part of its document and cannot be copied or pickled by itself: pickle "
               "the document, or use tarnkit.copy_nodes() and Group.paste()",
               name);
  return nullptr;
}

PyMethodDef kHandleMethods[] = {{"__reduce_ex__", refuseToPickle, METH_VARARGS, nullptr},
                                {nullptr, nullptr, 0, nullptr}};
PyMemberDef kHandleMembers[] = {
    {"__weaklistoffset__", T_PYSSIZET, offsetof(Handle, weakReferences), READONLY, nullptr},
    {nullptr, 0, 0, 0, nullptr}};

}  // namespace

PyTypeObject* makeHandleType(py::module_& module, const char* name, const char* documentation,
                             PyTypeObject* base, std::span<PyGetSetDef> attributes,
                             reprfunc described, newfunc made, bool hasSide) {
  const std::string fullName = std::string("tarnkit.") + name;
  std::vector<PyType_Slot> slots{
      {Py_tp_dealloc, reinterpret_cast<void*>(deallocate)},
      {Py_tp_doc, const_cast<char*>(documentation)},
      {Py_tp_getset, attributes.data()},
      {Py_tp_members, kHandleMembers},
  };
  if (!base) slots.push_back({Py_tp_methods, kHandleMethods});
  if (described) slots.push_back({Py_tp_repr, reinterpret_cast<void*>(described)});
  if (made) slots.push_back({Py_tp_new, reinterpret_cast<void*>(made)});
  unsigned flags = Py_TPFLAGS_DEFAULT | Py_TPFLAGS_BASETYPE;
  if (hasSide) {
    slots.push_back({Py_tp_traverse, reinterpret_cast<void*>(traverse)});
    slots.push_back({Py_tp_clear, reinterpret_cast<void*>(clear)});
    flags |= Py_TPFLAGS_HAVE_GC;
  }
  slots.push_back({0, nullptr});
  if (!made) flags |= Py_TPFLAGS_DISALLOW_INSTANTIATION;
  PyType_Spec spec{fullName.c_str(), static_cast<int>(sizeof(Handle)), 0, flags, slots.data()};
  PyObject* const type = PyType_FromSpecWithBases(&spec, reinterpret_cast<PyObject*>(base));
  if (!type) throw py::error_already_set();
  module.attr(name) = py::handle(type);
  return reinterpret_cast<PyTypeObject*>(type);  // for ever
}

void setHandleType(const Class& record, PyTypeObject* type) { handleTypes()[&record] = type; }

bool canWrap(const Object& object) noexcept { return typeFor(object) != nullptr; }

PyObject* newReference(Object* object) {
  if (!object) Py_RETURN_NONE;
  auto& known = handles();
  const auto found = known.find(object);
  if (found != known.end()) return Py_NewRef(found->second);
  PyTypeObject* const type = typeFor(*object);
  if (!type) {
    throw py::type_error("Python has no class for a " + std::string(object->isa().name()));
  }
  PyObject* const self = type->tp_alloc(type, 0);
  if (!self) throw py::error_already_set();
  auto& handle = handleOf(self);
  new (&handle.object) Ref<Object>(object);
  new (&handle.home) WeakRef<HXDocument>();
  handle.weakReferences = nullptr;
  handle.side = nullptr;
  // Memory was asked for meanwhile, and with that the collector may have run other code.
  const auto [entered, isNew] = known.emplace(object, self);
  if (!isNew) {
    Py_DECREF(self);
    return Py_NewRef(entered->second);
  }
  if (auto* const anchor = anchorOf(*object)) handle.home = anchor->document();
  return self;
}

bool isHandle(PyObject* object, const PyTypeObject* type) noexcept {
  return object && PyObject_TypeCheck(object, const_cast<PyTypeObject*>(type));
}

bool canBeHandle(PyObject* object) noexcept {
  return object && Py_TYPE(object)->tp_dealloc == deallocate;
}

const char* nameOf(const PyTypeObject* type) noexcept {
  const char* const dot = std::strrchr(type->tp_name, '.');
  return dot ? dot + 1 : type->tp_name;
}

void failWithType(PyObject* given, const char* wanted) {
  throw py::type_error(std::string("a ") + wanted + " is needed, not " +
                       (given == Py_None ? "None" : "a " + std::string(Py_TYPE(given)->tp_name)));
}

bool isLive(Handle& handle) {
  PyTypeObject* const type = Py_TYPE(&handle.ob_base);
  if (type == types.node) return hasHome(handle);
  if (type == types.document || type == types.image) return true;
  if (type == types.history) return static_cast<HXHistory&>(*handle.object).document() != nullptr;
  return isHeld(*handle.object, type) && hasHome(handle);
}

void requireLive(Handle& handle) {
  if (isLive(handle)) return;
  const std::string name = nameOf(Py_TYPE(&handle.ob_base));
  const bool lostDocument = handle.home.hasExpired();
  throwGone(lostDocument ? "the document of this " + name +
                               " is gone: a document lasts as long as somebody holds it itself"
                         : "this " + name + " is no part of its document any more");
}

void noteHome(HXNode& root) {
  HXDocument* const document = root.document();
  auto& known = handles();
  for (HXNodeWalk walk(root); HXNode* const node = walk.next();) {
    const auto found = known.find(node);
    if (found != known.end()) handleOf(found->second).home = document;
  }
}

DocumentSide& sideOf(HXDocument& document) {
  auto& handle = handleOf(wrap(&document).ptr());
  if (!handle.side) handle.side = new DocumentSide;
  return *handle.side;
}

}  // namespace tarnkit::python
