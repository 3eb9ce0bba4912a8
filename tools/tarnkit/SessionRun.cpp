#include "tools/tarnkit/SessionRun.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>
#include <optional>

#include "tools/tarnkit/Arguments.h"
#include "tools/tarnkit/Command.h"
#include "tools/tarnkit/Operations.h"
#include "tools/tarnkit/Progress.h"
#include "tools/tarnkit/Script.h"
#include "tools/tarnkit/Session.h"
#include "tools/tarnkit/SessionTrace.h"

namespace tarnkit::tool {

namespace {

// The name of the operation; throws for what is no operation.
std::string nameOf(std::size_t number, const Json& operation) {
  const auto refuse = [number](std::string_view why) {
    throw CommandFailure(fmt::format("operation {}, {}", number, why));
  };
  if (!operation.is_object()) refuse(fmt::format("it is {}, not an object", kindOf(operation)));
  const auto name = operation.find("do");
  if (name == operation.end()) refuse("it has no \"do\"");
  if (!name->is_string()) refuse(fmt::format("\"do\" must be a string, not {}", kindOf(*name)));
  return name->get<std::string>();
}

Result performOperation(Session& session, const std::string& name, const Json& json) {
  const Operation* operation = operationNamed(name);
  if (!operation) throw CommandFailure("there is no such operation");
  const Arguments arguments(json);
  arguments.check(operation->arguments);
  return operation->perform(session, arguments);
}

class Report {
 public:
  Report(SessionRun::Output output, const JSONWriter::Sink& sink) : json_(sink), output_(output) {
    if (output_ == SessionRun::Output::trace) trace_.emplace(json_);
    if (output_ == SessionRun::Output::json) json_.beginArray();
  }

  void begin(std::size_t number) {
    if (trace_) trace_->setOperation(number);
  }

  void add(std::size_t number, const std::string& name, const Result& result) {
    if (output_ == SessionRun::Output::results) {
      if (!result) return;
      json_.text(fmt::format("{} {} ", number, name));
      result(json_);
      json_.endLine();
      return;
    }
    json_.beginObject().key("op").value(std::uint64_t{number}).key("do").value(name);
    json_.key("result");
    if (result) {
      result(json_);
    } else {
      json_.null();
    }
    json_.endObject();
    if (trace_) json_.endLine();
  }

  /// Also after a failure: a JSON document then ends with the operation before.
  void end() {
    if (output_ == SessionRun::Output::json) json_.endArray().endLine();
    json_.flush();
  }

 private:
  JSONWriter json_;
  SessionRun::Output output_;
  std::optional<SessionTrace> trace_;
};

}  // namespace

void SessionRun::perform(std::string_view script, const JSONWriter::Sink& sink) const {
  Report report(output, sink);
  try {
    Session session(allowsFiles);
    if (recordsHistory) session.recordHistory();
    Progress progress("performing operation");
    Script(script).eachOperation([&](std::size_t number, const Json& operation) {
      report.begin(number);
      progress.setCount(number);
      const auto name = nameOf(number, operation);
      try {
        report.add(number, name, performOperation(session, name, operation));
      } catch (const CommandFailure& failure) {
        throw CommandFailure(fmt::format("operation {}, {}, {}", number, name, failure.what()));
      }
    });
  } catch (...) {
    report.end();
    throw;
  }
  report.end();
}

}  // namespace tarnkit::tool
