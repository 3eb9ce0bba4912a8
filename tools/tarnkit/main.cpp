#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <exception>
#include <iostream>
#include <new>
#include <sstream>
#include <string>
#include <vector>

#include "tarnkit/model/HXModel.h"
#include "tarnkit/patches/PluginLoader.h"
#include "tarnkit/platform/system/Bundle.h"
#include "tools/tarnkit/CatalogueCommand.h"
#include "tools/tarnkit/Command.h"
#include "tools/tarnkit/CommandLine.h"
#include "tools/tarnkit/MathCommands.h"
#include "tools/tarnkit/ModelCommands.h"
#include "tools/tarnkit/Output.h"
#include "tools/tarnkit/Terminal.h"

namespace {

namespace tool = tarnkit::tool;

constexpr int kDone = 0;
constexpr int kWorkFailed = 1;
constexpr int kWrongCommandLine = 2;

// The host is the running application: its version stands in the device graphs that it writes.
void describeApplication() {
  using tarnkit::String;
  tarnkit::Bundle::mainBundle().setInfoDictionary(
      {{"CFBundleIdentifier", String("tarnkit.host").object()},
       {"CFBundleShortVersionString", String(TARNKIT_VERSION).object()}});
}

// A file that is opened while a standard stream is closed would get the stream's number, and what
// is meant for the stream would be written into it. The stream stays useless, but its number is
// taken.
void occupyStandardStreams() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (::fcntl(stream, F_GETFD) >= 0 || errno != EBADF) continue;
    if (::open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY) < 0) return;
  }
}

void addCommands(CLI::App& program) {
  tool::addEvalCommand(program);
  tool::addExpressionCommands(program);
  tool::addFunctionsCommand(program);
  tool::addMathBatchCommand(program);
  tool::addCatalogueCommand(program);
  tool::addRunCommand(program);
  tool::addOpenCommand(program);
  tool::addSaveCommand(program);
  tool::addSendCommand(program);
  tool::addInspectCommand(program);
  tool::addRenderCommand(program);
  tool::addReferenceCommand(program);
  tool::addCheckCommand(program);
  tool::addFindCommand(program);
  tool::addImagesCommand(program);
  tool::addDiffCommand(program);
  tool::addMergeCommand(program);
  tool::addGitCommand(program);
  tool::addCompletionCommand(program);
  tool::addManPageCommand(program);
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
            for (const std::string& file : files) {
              const auto status = tarnkit::loadPlugin(file);
              if (!status) tool::failWithFile("plug-in", file, status);
            }
          },
          "Loads a plug-in's patch definitions")
      ->take_all()
      ->allow_extra_args(false)
      ->type_name("FILE");
  program
      .add_option_function<std::string>(
          "--color",
          [](const std::string& choice) {
            tool::setColorChoice(choice == "always"  ? tool::ColorChoice::always
                                 : choice == "never" ? tool::ColorChoice::never
                                                     : tool::ColorChoice::automatic);
          },
          "Colours: on terminals, unless NO_COLOR is set; always; or never")
      ->check(CLI::IsMember({"auto", "always", "never"}).description(""))
      ->type_name("auto|always|never");
  addCommands(program);
  describeApplication();
  tarnkit::registerModelClasses();
  try {
    program.parse(argc, argv);
    return kDone;
  } catch (const tool::CommandStatus& ended) {
    return ended.status;
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) {  // --help, --version
      std::ostringstream text;
      const int status = program.exit(error, text, text);
      std::cout << tool::wrapped(text.str(), tool::terminalWidth(STDOUT_FILENO));
      return status;
    }
    tool::complain(
        fmt::format("{} (--help tells more)", tool::describeWrongCommandLine(program, error)));
    return kWrongCommandLine;
  }
}

// What --help and --version print waits in a buffer until here; results are written at once.
void flushOutput() {
  std::cout.flush();
  if (std::fflush(stdout) == 0 && std::cout && std::ferror(stdout) == 0) return;
  throw tool::CommandFailure("output", "standard output",
                             tarnkit::Status::ofSystem(errno).sentence());
}

}  // namespace

int main(int argc, char** argv) {
  occupyStandardStreams();
  std::signal(SIGXFSZ, SIG_IGN);  // output that may not grow further is told like a full disk
  try {
    const int status = run(argc, argv);
    flushOutput();
    return status;
  } catch (const std::bad_alloc&) {
    tool::complain("there is not enough memory for this work");
    return kWorkFailed;
  } catch (const std::exception& failure) {
    tool::complain(failure.what());
    return kWorkFailed;
  }
}
