#include "bindings/python/src/Module.h"
#include "bindings/python/src/Slots.h"
#include "tarnkit/editing/HXHistory.h"

namespace tarnkit::python {

namespace {

HXHistory& historyOf(HXDocument& document) {
  if (auto* const present = HXHistory::ofDocument(document)) return *present;
  auto& side = sideOf(document);
  side.history = make<HXHistory>(document);
  return *side.history;
}

bool move(HXHistory& history, bool (HXHistory::*operation)()) {
  Told told;
  if ((history.*operation)()) return true;
  const bool isOpen = history.openSteps() != 0 || history.direction() != HXHistory::Direction::none;
  if (isOpen) throwRefused(told.takeReason());
  return false;
}

// Nothing was done yet, so there is nothing to be undone; recording does not begin for that.
bool move(HXDocument& document, bool (HXHistory::*operation)()) {
  auto* const history = HXHistory::ofDocument(document);
  return history && move(*history, operation);
}

double secondsFrom(const py::object& value) {
  const double seconds = PyFloat_AsDouble(value.ptr());
  if (seconds == -1 && PyErr_Occurred()) throw py::error_already_set();
  return seconds;
}

PyGetSetDef attributes[] = {
    exists(),
    attribute<HXHistory, bool>("can_undo", "Whether there is a step to be undone: bool.",
                               [](HXHistory& h) { return h.canUndo(); }),
    attribute<HXHistory, bool>("can_redo", "Whether there is a step to be done again: bool.",
                               [](HXHistory& h) { return h.canRedo(); }),
    attribute<HXHistory, String>("undo_name",
                                 "The name of the step that would be undone: str, or None.",
                                 [](HXHistory& h) { return h.undoName(); }),
    attribute<HXHistory, String>("redo_name",
                                 "The name of the step that would be done again: str, or None.",
                                 [](HXHistory& h) { return h.redoName(); }),
    attribute<HXHistory, std::uint64_t>(
        "undo_count", "How many steps can be undone: int.",
        [](HXHistory& h) -> std::uint64_t { return h.undoCount(); }),
    attribute<HXHistory, std::uint64_t>(
        "redo_count", "How many steps can be done again: int.",
        [](HXHistory& h) -> std::uint64_t { return h.redoCount(); }),
    attribute<HXHistory, std::uint64_t>(
        "open_steps", "How many steps are open, one inside the other: int.",
        [](HXHistory& h) -> std::uint64_t { return h.openSteps(); }),
    attribute<HXHistory, std::uint64_t>(
        "byte_count", "What the steps take, roughly, in bytes: int.",
        [](HXHistory& h) -> std::uint64_t { return h.byteCount(); }),
    attribute<HXHistory, bool>(
        "is_modified", "Whether the document differs from what was marked clean last: bool.",
        [](HXHistory& h) { return h.isModified(); }),
    attribute<HXHistory, bool>(
        "coalesces",
        "Whether steps that set the same values (a drag, typing) become one with the step before "
        "them: bool.",
        [](HXHistory& h) { return h.coalesces(); },
        [](HXHistory& h, py::handle value) { h.setCoalesces(boolFrom(value, "coalesces")); }),
    {nullptr, nullptr, nullptr, nullptr, nullptr},
};

// What a `with` opens.
struct Step {
  py::object document;
  String name;

  py::object enter() const {
    HXHistory& history = historyOf(live<HXDocument>(document.ptr()));
    history.beginStep(name);
    return wrap(&history);
  }
  void exit(const py::object& type, const py::object&, const py::object&) const {
    HXHistory& history = historyOf(live<HXDocument>(document.ptr()));
    if (history.openSteps() == 0) return;
    if (type.is_none() || history.openSteps() > 1) {
      history.endStep();
    } else {
      history.abandonStep();
    }
  }
};

}  // namespace

void defineHistory(py::module_& module) {
  types.history = makeHandleType(
      module, "History",
      "The changes of a document as steps, from the moment when somebody first asked for it, by "
      "`Document.history` or `Document.step`.",
      nullptr, attributes);
  setHandleType(HXHistory::kClass, types.history);
  PyTypeObject* const type = types.history;
  method(type, "undo", "(self)",
         "Takes the last step back; False when there is none. RefusedError while a step is open.",
         [](HXHistory& history) { return move(history, &HXHistory::undo); });
  method(type, "redo", "(self)", "Does the step that was undone last again; False without one.",
         [](HXHistory& history) { return move(history, &HXHistory::redo); });
  method(type, "mark_clean", "(self)", "The document as it is now is what was saved.",
         [](HXHistory& history) { history.markClean(); });
  method(type, "clear", "(self)", "Forgets all steps; the document stays as it is.",
         [](HXHistory& history) { history.removeAllSteps(); });
  method(
      type, "limit", "(self, *, steps=0, bytes=0)",
      "Forgets the oldest steps beyond so many, or beyond so many bytes; 0 means no limit.",
      [](HXHistory& history, std::size_t steps, std::size_t bytes) {
        history.setMaximumSteps(steps);
        history.setMaximumBytes(bytes);
      },
      py::kw_only(), py::arg("steps") = 0, py::arg("bytes") = 0);
  method(
      type, "configure",
      "(self, *, gesture=None, time=None, interval=None, records_view_state=None)",
      "What tells steps apart that could become one: they do not when their gestures differ (a "
      "word of the caller's), or when the later one is more than the interval after the earlier "
      "one, by the time in seconds that is told here before each change. And whether selection "
      "and canvas make steps of their own. What is not given stays as it is.",
      [](HXHistory& history, const py::object& gesture, const py::object& time,
         const py::object& interval, const py::object& recordsViewState) {
        if (!gesture.is_none()) history.setCoalescingKey(stringFrom(gesture, "a gesture"));
        if (!time.is_none()) history.setTime(secondsFrom(time));
        if (!interval.is_none()) history.setCoalescingInterval(secondsFrom(interval));
        if (!recordsViewState.is_none()) {
          history.setRecordsViewState(boolFrom(recordsViewState, "records_view_state"));
        }
      },
      py::kw_only(), py::arg("gesture") = py::none(), py::arg("time") = py::none(),
      py::arg("interval") = py::none(), py::arg("records_view_state") = py::none());
  py::class_<Step>(module, "Step", "An open step of a document's history: see Document.step.",
                   plainClass())
      .def("__enter__", &Step::enter, py::call_guard<Section>())
      .def("__exit__", &Step::exit, py::call_guard<Section>(), py::arg("type"), py::arg("value"),
           py::arg("traceback"));

  addAttribute(types.document,
               attribute<HXDocument, Object*>(
                   "history", "Its history, which records from the first time on: History.",
                   [](HXDocument& document) -> Object* { return &historyOf(document); }));
  method(
      types.document, "step", "(self, name=None)",
      "Makes one step of what changes until the end of a `with`. When that ends by an "
      "exception, the outermost step is taken back, and nothing stays of it.",
      [](py::object self, const String& name) {
        live<HXDocument>(self.ptr());
        return Step{self, name};
      },
      py::arg("name") = py::none());
  method(types.document, "undo", "(self)",
         "Takes the last step back; False when there is none. RefusedError while a step is open.",
         [](HXDocument& document) { return move(document, &HXHistory::undo); });
  method(types.document, "redo", "(self)",
         "Does the step that was undone last again; False without one.",
         [](HXDocument& document) { return move(document, &HXHistory::redo); });
}

}  // namespace tarnkit::python
