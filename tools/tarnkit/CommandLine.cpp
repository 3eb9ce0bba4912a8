#include "tools/tarnkit/CommandLine.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cctype>
#include <vector>

#include "tools/tarnkit/Suggestion.h"

namespace tarnkit::tool {

namespace {

std::vector<std::string> optionNames(const CLI::App& command) {
  std::vector<std::string> names;
  for (const CLI::Option* option : command.get_options()) {
    for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
    for (const std::string& name : option->get_snames()) names.push_back("-" + name);
  }
  return names;
}

std::vector<std::string_view> views(const std::vector<std::string>& names) {
  return {names.begin(), names.end()};
}

bool contains(const std::vector<std::string>& names, const std::string& name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

std::string describeUnknownCommand(const CLI::App& program, const std::string& word) {
  if (word.rfind('-', 0) == 0) {
    const auto names = optionNames(program);
    const std::string option = word.substr(0, word.find('='));
    return fmt::format("there is no option \"{}\" before the command{}", option,
                       didYouMean(option, views(names)));
  }
  std::vector<std::string> names;
  for (const CLI::App* command : program.get_subcommands(nullptr)) {
    names.push_back(command->get_name());
  }
  return fmt::format("there is no command \"{}\"{}", word, didYouMean(word, views(names)));
}

// An expression may begin with "-", and stands among what is left over where it does.
bool isOption(const CLI::App& command, const std::string& text) {
  const std::size_t dashes = text.rfind("--", 0) == 0 ? 2 : 1;
  if (text.size() <= dashes || text.front() != '-') return false;
  return std::isalpha(static_cast<unsigned char>(text[dashes])) != 0 &&
         (dashes == 2 || !command.get_allow_extras());
}

std::string describeUnknownOption(const CLI::App& program, const CLI::App& command,
                                  const std::string& option) {
  if (contains(optionNames(program), option)) {
    return fmt::format("{}, {} stands before the command", command.get_name(), option);
  }
  const auto names = optionNames(command);
  return fmt::format("{} has no option \"{}\"{}", command.get_name(), option,
                     didYouMean(option, views(names)));
}

}  // namespace

std::string describeWrongCommandLine(const CLI::App& program, const CLI::ParseError& error) {
  const auto before = program.remaining();
  if (!before.empty()) return describeUnknownCommand(program, before.front());
  if (program.get_subcommands().empty()) {
    const bool isMissing = error.get_exit_code() == static_cast<int>(CLI::ExitCodes::RequiredError);
    return isMissing ? "a command is missing" : error.what();
  }
  // What is left over is at fault for what is missing, too.
  const CLI::App& command = *program.get_subcommands().front();
  const auto extras = command.remaining();
  const auto option = std::find_if(extras.begin(), extras.end(), [&](const std::string& text) {
    return isOption(command, text);
  });
  if (option != extras.end()) {
    return describeUnknownOption(program, command, option->substr(0, option->find('=')));
  }
  if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::ExtrasError)) {
    return fmt::format("{} does not take so many arguments: {}", command.get_name(),
                       fmt::join(extras, " "));
  }
  return fmt::format("{}, {}", command.get_name(), error.what());
}

}  // namespace tarnkit::tool
