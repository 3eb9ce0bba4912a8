#include "tools/tarnkit/SessionRun.h"

#include <fmt/format.h>
#include <unistd.h>

#include <nlohmann/json.hpp>
#include <optional>
#include <vector>

#include "tools/tarnkit/Arguments.h"
#include "tools/tarnkit/Command.h"
#include "tools/tarnkit/InputLines.h"
#include "tools/tarnkit/Operations.h"
#include "tools/tarnkit/Output.h"
#include "tools/tarnkit/Progress.h"
#include "tools/tarnkit/Script.h"
#include "tools/tarnkit/Session.h"
#include "tools/tarnkit/SessionTrace.h"
#include "tools/tarnkit/Suggestion.h"
#include "tools/tarnkit/Terminal.h"

namespace tarnkit::tool {

namespace {

/// An operation without a name, and why it has none.
struct NamelessOperation {
  std::string reason;
};

std::string nameOf(const ScriptStep& step) {
  if (!step.operation) throw NamelessOperation{step.trouble};
  const Json& operation = *step.operation;
  if (!operation.is_object()) {
    throw NamelessOperation{fmt::format("it is {}, not an object", kindOf(operation))};
  }
  const auto name = operation.find("do");
  if (name == operation.end()) throw NamelessOperation{"it has no \"do\""};
  if (!name->is_string()) {
    throw NamelessOperation{fmt::format("\"do\" must be a string, not {}", kindOf(*name))};
  }
  return name->get<std::string>();
}

Result performOperation(Session& session, const std::string& name, const Json& json) {
  const Operation* operation = operationNamed(name);
  if (!operation) {
    std::vector<std::string_view> names;
    for (const Operation* known : allOperations()) names.push_back(known->name);
    throw CommandFailure("there is no such operation" + didYouMean(name, names));
  }
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

  /// For an operation that cannot be performed; one that has no name tells null.
  void addError(std::size_t number, const std::string* name, std::string_view reason) {
    json_.beginObject().key("op").value(std::uint64_t{number}).key("do");
    if (name) {
      json_.value(*name);
    } else {
      json_.null();
    }
    json_.key("error").value(reason).endObject();
    if (output_ != SessionRun::Output::json) json_.endLine();
  }

  void flush() { json_.flush(); }

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

/// A session while its script is performed.
class Performance {
 public:
  Performance(const SessionRun& run, const JSONWriter::Sink& sink)
      : keepsGoing_(run.keepsGoing), report_(run.output, sink) {
    session_.emplace(run.allowsFiles);
    if (run.recordsHistory) session_->recordHistory();
  }

  /// Answers whether more may come.
  bool perform(const ScriptStep& step) {
    report_.begin(step.number);
    if (progress_) progress_->setCount(step.number);
    ++performed_;
    try {
      performNamed(step, nameOf(step));
    } catch (const NamelessOperation& nameless) {
      if (!keepsGoing_) {
        throw CommandFailure(fmt::format("operation {}, {}", step.number, nameless.reason));
      }
      ++failed_;
      report_.addError(step.number, nullptr, nameless.reason);
    }
    return !session_->isEnded();
  }

  /// Does what performs the steps, with the report ended whatever comes of it.
  template <class Work>
  void during(Work work) {
    try {
      work();
    } catch (...) {
      end();
      throw;
    }
    end();
    if (failed_ == 0) return;
    throw CommandFailure(
        fmt::format("{} of {} operations could not be performed", failed_, performed_));
  }

  void showProgress() { progress_.emplace("performing operation"); }
  void flush() { report_.flush(); }

 private:
  // What the end of the session does is told, too.
  void end() {
    session_.reset();
    progress_.reset();
    report_.end();
  }

  void performNamed(const ScriptStep& step, const std::string& name) {
    Result result;
    try {
      result = performOperation(*session_, name, *step.operation);
    } catch (const CommandFailure& failure) {
      if (!keepsGoing_) {
        throw CommandFailure(
            fmt::format("operation {}, {}, {}", step.number, name, failure.what()));
      }
      ++failed_;
      return report_.addError(step.number, &name, failure.what());
    }
    report_.add(step.number, name, result);
  }

  bool keepsGoing_;
  std::size_t performed_ = 0;
  std::size_t failed_ = 0;
  Report report_;
  std::optional<Session> session_;
  std::optional<Progress> progress_;
};

// An array comes to its end before any of it is performed.
void performRest(InputLines& lines, std::string script, const Script::Visit& visit) {
  while (lines.next()) {
    script += '\n';
    script += lines.line();
  }
  if (lines.status()) Script(script).eachStep(visit);
}

bool isPropertyList(std::string_view beginning) {
  return beginning.substr(0, 6) == "bplist" || beginning.substr(0, 5) == "<?xml";
}

void performLines(InputLines& lines, const Script::Visit& visit) {
  ScriptLines script(visit);
  std::string blank;  // lines before anything
  bool isBegun = false;
  while (lines.next()) {
    const std::string& line = lines.line();
    if (!isBegun && isPropertyList(line)) {
      failWithFile("script", kStandardStream,
                   "it is no script; the operation open takes documents");
    }
    if (!isBegun && Script::isArray(line)) return performRest(lines, blank + line, visit);
    isBegun = isBegun || line.find_first_not_of(" \t\r") != std::string::npos;
    if (!isBegun) blank += line + '\n';
    const bool goesOn = lines.isLost() ? script.takeUnreadable("there is not enough memory for it")
                                       : script.take(line);
    if (!goesOn) return;
  }
}

}  // namespace

void SessionRun::perform(std::string_view script, const JSONWriter::Sink& sink) const {
  Performance performance(*this, sink);
  performance.showProgress();
  performance.during([&] {
    Script(script).eachStep([&](const ScriptStep& step) { return performance.perform(step); });
  });
}

void SessionRun::performInput(const JSONWriter::Sink& sink) const {
  Performance performance(*this, sink);
  // A terminal that the lines are typed in is left alone.
  if (!isTerminal(STDIN_FILENO)) performance.showProgress();
  performance.during([&] {
    InputLines lines([&] { performance.flush(); });
    performLines(lines, [&](const ScriptStep& step) { return performance.perform(step); });
    if (!lines.status()) failWithFile("script", kStandardStream, lines.status());
  });
}

}  // namespace tarnkit::tool
