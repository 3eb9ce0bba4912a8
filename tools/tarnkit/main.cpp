#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "tarnkit/model/HXModel.h"
#include "tools/tarnkit/Command.h"
#include "tools/tarnkit/MathCommands.h"
#include "tools/tarnkit/ModelCommands.h"
#include "tools/tarnkit/Plugins.h"

namespace {

namespace tool = tarnkit::tool;

constexpr int kDone = 0;
constexpr int kWorkFailed = 1;
constexpr int kWrongCommandLine = 2;

void addCommands(CLI::App& program) {
  tool::addEvalCommand(program);
  tool::addExpressionCommands(program);
  tool::addMathBatchCommand(program);
  tool::addRunCommand(program);
  tool::addOpenCommand(program);
  tool::addSaveCommand(program);
  tool::addSendCommand(program);
  tool::addInspectCommand(program);
}

int run(int argc, char** argv) {
  CLI::App program("Makes, edits, saves and sends patch graphs, and evaluates expressions");
  program.name("tarnkit");
  program.set_version_flag("--version", TARNKIT_VERSION);
  program.require_subcommand(1);
  // Before the command's callback runs, so that the command finds the plug-ins' definitions.
  program
      .add_option_function<std::vector<std::string>>(
          "--plugin",
          [](const std::vector<std::string>& files) {
            for (const std::string& file : files) tool::loadPlugin(file);
          },
          "Loads a plug-in's patch definitions")
      ->take_all()
      ->allow_extra_args(false)
      ->type_name("FILE");
  addCommands(program);
  tarnkit::registerModelClasses();
  try {
    program.parse(argc, argv);
    return kDone;
  } catch (const CLI::ParseError& error) {
    return program.exit(error) == 0 ? kDone : kWrongCommandLine;
  }
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return run(argc, argv);
  } catch (const std::exception& failure) {
    fmt::print(stderr, "tarnkit: {}\n", failure.what());
    return kWorkFailed;
  }
}
