#include "tarnkit/editing/HXHistory.h"
#include "tarnkit/platform/text/JSONWriter.h"
#include "tools/tarnkit/Arguments.h"
#include "tools/tarnkit/Command.h"
#include "tools/tarnkit/Operations.h"
#include "tools/tarnkit/Session.h"
#include "tools/tarnkit/ValueShapes.h"

namespace tarnkit::tool {

namespace {

Result beginStep(Session& session, const Arguments& arguments) {
  session.history().beginStep(arguments.textOrNil("name"));
  return {};
}

void requireOpenStep(const HXHistory& history) {
  if (history.openSteps() == 0) throw CommandFailure("no step is open");
}

Result endStep(Session& session, const Arguments&) {
  HXHistory& history = session.history();
  requireOpenStep(history);
  history.endStep();
  return {};
}

Result abandonStep(Session& session, const Arguments&) {
  HXHistory& history = session.history();
  requireOpenStep(history);
  if (!history.abandonStep()) throw CommandFailure("the step cannot be abandoned");
  return {};
}

// Steps one way until `count` are done or there is none left.
Result go(Session& session, const Arguments& arguments, bool back) {
  HXHistory& history = session.history();
  const auto count = arguments.integer("count", 1);
  if (count < 0) throw CommandFailure("\"count\" must not be negative");
  if (history.openSteps() != 0) throw CommandFailure("a step is open");
  std::int64_t steps = 0;
  String name;
  while (steps < count && (back ? history.canUndo() : history.canRedo())) {
    const String next = back ? history.undoName() : history.redoName();
    if (!(back ? history.undo() : history.redo())) {
      throw CommandFailure(back ? "the step cannot be undone, and the history is empty now"
                                : "the step cannot be redone, and the history is empty now");
    }
    name = next;
    ++steps;
  }
  return [steps, name](JSONWriter& json) {
    json.beginObject().key("steps").value(steps).key("name");
    writeString(json, name);
    json.endObject();
  };
}

Result undo(Session& session, const Arguments& arguments) { return go(session, arguments, true); }
Result redo(Session& session, const Arguments& arguments) { return go(session, arguments, false); }

}  // namespace

std::span<const Operation> historyOperations() {
  static constexpr Operation operations[] = {{"beginStep", "name?", beginStep},
                                             {"endStep", "", endStep},
                                             {"abandonStep", "", abandonStep},
                                             {"undo", "count?", undo},
                                             {"redo", "count?", redo}};
  return operations;
}

}  // namespace tarnkit::tool
