#include <array>

#include "bindings/python/src/Module.h"
#include "bindings/python/src/Slots.h"
#include "tarnkit/editing/HXHistory.h"
#include "tarnkit/model/HXParameter.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/model/HXPortGroup.h"
#include "tarnkit/model/HXReplicatorNode.h"
#include "tarnkit/model/HXSubviewGroup.h"
#include "tarnkit/platform/collections/Array.h"
#include "tarnkit/platform/collections/MembersOf.h"
#include "tarnkit/platform/numbers/Number.h"
#include "tarnkit/platform/objects/Null.h"

namespace tarnkit::python {

namespace {

constexpr auto kNames = std::to_array<const Symbol*>({
    &HXGroupAddNodeNotification,
    &HXGroupRemoveNodeNotification,
    &HXGroupAddSymbolicPortForPortNotification,
    &HXGroupRemoveSymbolicPortForPortNotification,
    &HXSubviewGroupSubviewOrderDidChangeNotification,
    &HXNodeNameDidChangeNotification,
    &HXNodePositionDidChangeNotification,
    &HXNodeSelectionDidChangeNotification,
    &HXNodeSubnodeGroupDidChangeNotification,
    &HXNodeAddPortNotification,
    &HXNodeRemovePortNotification,
    &HXNodeAddPortGroupNotification,
    &HXNodeRemovePortGroupNotification,
    &HXNodeAddParameterNotification,
    &HXNodeRemoveParameterNotification,
    &HXPortNameDidChangeNotification,
    &HXPortDidAddSymbolicReferenceNotification,
    &HXPortDidRemoveSymbolicReferenceNotification,
    &HXPortDidConnectNotification,
    &HXPortDidDisconnectNotification,
    &HXPatchPortStaticValueDidChangeNotification,
    &HXPatchPortEffectiveValueDidChangeNotification,
    &HXPortGroupCollapsedSidebarGroupDidChangeNotification,
    &HXPortGroupCollapsedCanvasGroupDidChangeNotification,
    &HXPortGroupHiddenDidChangeNotification,
    &HXParameterValueDidChangeNotification,
    &HXDocumentAddConnectionNotification,
    &HXDocumentRemoveConnectionNotification,
    &HXReplicatorNodeAddOutputPortNotification,
    &HXReplicatorNodeRemoveOutputPortNotification,
    &HXImageStoreAddImageNotification,
    &HXImageStoreRemoveImageNotification,
    &HXHistoryWillUndoNotification,
    &HXHistoryDidUndoNotification,
    &HXHistoryWillRedoNotification,
    &HXHistoryDidRedoNotification,
    &HXHistoryDidChangeNotification,
});

// "HXNodeNameDidChangeNotification" is "node_name_did_change" in Python.
std::string pythonNameOf(const Symbol& symbol) {
  std::string_view name = symbol.text();
  name.remove_prefix(std::string_view("HX").size());
  name.remove_suffix(std::string_view("Notification").size());
  std::string made;
  for (const char character : name) {
    const bool isUpper = character >= 'A' && character <= 'Z';
    if (isUpper && !made.empty()) made += '_';
    made += isUpper ? static_cast<char>(character - 'A' + 'a') : character;
  }
  return made;
}

const Symbol& symbolNamed(std::string_view name) {
  for (const auto* symbol : kNames) {
    if (symbol->text() == name || pythonNameOf(*symbol) == name) return *symbol;
  }
  throw py::value_error("nothing is announced as \"" + std::string(name) +
                        "\"; tarnkit.notices has all names");
}

py::object toNotice(Object& value);

template <class Collection>
py::list toNotices(const Collection& collection) {
  py::list list;
  for (const auto& member : collection) list.append(toNotice(*member));
  return list;
}

py::object toNotice(Object& value) {
  if (canWrap(value)) return wrap(&value);
  if (as<Null>(&value)) return py::none();
  if (const auto* const primitive = as<PMRPrimitive>(&value)) {
    return py::reinterpret_steal<py::object>(toPython(primitive));
  }
  if (value.codingKind() == CodingKind::string) return text(String::from(&value));
  if (const auto* const number = as<Number>(&value)) {
    if (number->kind() == Number::Kind::boolean) return py::bool_(number->boolValue());
    if (number->isReal()) return py::float_(number->doubleValue());
    return py::int_(number->int64Value());
  }
  if (const auto* const set = as<OrderedSet>(&value)) return toNotices(*set);
  if (const auto* const list = as<Array>(&value)) return toNotices(*list);
  if (const auto* const set = as<Set>(&value)) return toNotices(*set);
  return text(value.description());
}

void call(const std::shared_ptr<Observer>& observer, const Notification& notification) {
  // Kept while it runs: it may cancel itself.
  py::object callback = observer->callback;
  if (observer->isMethod) callback = callback();
  if (callback.is_none()) {
    observer->cancel();  // its object has gone
    return;
  }
  py::dict info;
  for (const auto& entry : notification.userInfo) {
    info[text(entry.key->text())] = toNotice(*entry.value);
  }
  callback(
      plainType("Notice")(pythonNameOf(notification.name), toNotice(notification.object), info));
}

void deliver(const std::shared_ptr<Observer>& observer, const Notification& notification) {
  if (!Py_IsInitialized()) return;
  const py::gil_scoped_acquire acquired;
  py::error_scope unchanged;
  try {
    call(observer, notification);
  } catch (py::error_already_set& failure) {
    failure.restore();
    PyErr_WriteUnraisable(observer->callback.ptr());
  }
}

// What Python holds of an observer: it can be cancelled, and ends with its document.
struct Observation {
  std::shared_ptr<Observer> observer;
  WeakRef<HXDocument> document;

  void cancel() const {
    observer->cancel();
    if (auto* const observed = document.get()) {
      std::erase(sideOf(*observed).observers, observer);
    }
  }
};

Observation observe(HXDocument& document, const py::object& name, const py::object& callback) {
  if (!PyCallable_Check(callback.ptr())) failWithType(callback.ptr(), "function or method");
  const Symbol* const symbol = name.is_none() ? nullptr : &symbolNamed(viewOf(name, "a name"));
  const auto observer = std::make_shared<Observer>();
  observer->isMethod = PyMethod_Check(callback.ptr());
  observer->callback =
      observer->isMethod ? py::module_::import("weakref").attr("WeakMethod")(callback) : callback;
  const String key = document.documentKey();
  observer->token = NotificationCenter::defaultCenter().addObserver(
      symbol, nullptr, [observer, key](const Notification& notification) {
        const auto* const announced = notification.userInfo[HXDocumentKeyInfo];
        if (observer->token != 0 && announced && announced->isEqual(*key.object())) {
          deliver(observer, notification);
        }
      });
  auto& observers = sideOf(document).observers;
  std::erase_if(observers, [](const auto& other) { return other->token == 0; });
  observers.push_back(observer);
  return Observation{observer, &document};
}

}  // namespace

void defineObserving(py::module_& module) {
  py::class_<Observation>(module, "Observation",
                          "An observer of a document: see Document.observe. It lasts as long as "
                          "the document, or until it is cancelled, whoever holds this.",
                          plainClass())
      .def("cancel", &Observation::cancel, py::call_guard<Section>(),
           "cancel(self)\n--\n\nCalls it no more.")
      .def_property_readonly(
          "is_active", [](const Observation& o) { return o.observer->token != 0; },
          "Whether it is called still: bool.")
      .def("__enter__", [](py::object self) { return self; })
      .def("__exit__", [](const Observation& o, const py::object&, const py::object&,
                          const py::object&) { o.cancel(); });
  py::tuple names(kNames.size());
  for (std::size_t i = 0; i < kNames.size(); ++i) names[i] = text(pythonNameOf(*kNames[i]));
  module.attr("notices") = names;
  method(types.document, "observe", "(self, name, callback)",
         "Calls back with a Notice whenever the document announces a change of that name (one of "
         "tarnkit.notices; None: every one), at once, while the change is being made.\n\n"
         "A method is held weakly, and is not called any more when its object has gone; anything "
         "else is held as long as the document lasts. What a callback raises goes to "
         "sys.unraisablehook; it may edit the document. Returns the Observation, which can be "
         "cancelled.",
         observe, py::arg("name"), py::arg("callback"));
}

}  // namespace tarnkit::python
