#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <memory>
#include <string>

#include "tools/tarnkit/FileKind.h"
#include "tools/tarnkit/ModelCommands.h"
#include "tools/tarnkit/Operations.h"
#include "tools/tarnkit/Output.h"
#include "tools/tarnkit/SessionRun.h"

namespace tarnkit::tool {

namespace {

struct RunOptions {
  std::string script;
  bool trace = false;
  bool json = false;
  bool history = false;
  bool keepGoing = false;
};

void run(const RunOptions& options) {
  const auto write = [](std::string_view text) { writeToStandardOutput(text); };
  SessionRun run;
  if (options.trace) {
    run.output = SessionRun::Output::trace;
  } else if (options.json) {
    run.output = SessionRun::Output::json;
  }
  run.recordsHistory = options.history;
  run.keepsGoing = options.keepGoing;
  if (options.script == kStandardStream) return run.performInput(write);
  const auto bytes = readFile("script", options.script);
  const FileKind kind = fileKindOf(bytes);
  if (kind != FileKind::script && kind != FileKind::unknown) {
    failWithFile("run", options.script, describeOther(kind));
  }
  run.perform({reinterpret_cast<const char*>(bytes.data()), bytes.size()}, write);
}

// What --help says beneath the options.
std::string operationList() {
  std::string text = "Operations, as {\"do\": NAME, ARGUMENT: VALUE, ...}; ? may be missing:\n";
  for (const Operation* operation : allOperations()) {
    const auto line = fmt::format("  {:<23} {}", operation->name, operation->arguments);
    text += line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
  }
  return text;
}

}  // namespace

void addRunCommand(CLI::App& app) {
  auto* command = app.add_subcommand("run", "Perform an editing session");
  const auto options = std::make_shared<RunOptions>();
  command
      ->add_option("SCRIPT", options->script,
                   "A JSON array of operations, or one operation a line; - for standard input")
      ->required()
      ->type_name("");
  command->add_flag("--trace", options->trace,
                    "Print every notification, logged line and result as JSON lines");
  command->add_flag("--json", options->json,
                    "Print the results as one JSON array (a trace stays JSON lines)");
  command->add_flag("--history", options->history,
                    "Record the changes of each document, so that they can be undone");
  command->add_flag("--keep-going", options->keepGoing,
                    "Tell what cannot be performed, {op, do, error}, and go on");
  command->footer(operationList);
  command->callback([options] { run(*options); });
}

}  // namespace tarnkit::tool
