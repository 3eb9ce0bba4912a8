#include "tools/tarnkit/CommandTable.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <string_view>

namespace tarnkit::tool {

namespace {

std::vector<std::string> wordsOf(std::string_view value) {
  std::vector<std::string> words;
  if (value.find('|') == value.npos) return words;
  for (std::size_t at = 0; at <= value.size();) {
    const auto end = std::min(value.find('|', at), value.size());
    words.emplace_back(value.substr(at, end - at));
    at = end + 1;
  }
  return words;
}

ValueKind kindOf(const CommandOption& option, bool isArgument) {
  constexpr std::string_view kFiles[] = {"FILE", "FILES", "OUT",   "SCRIPT",
                                         "BASE", "OURS",  "THEIRS"};
  if (!option.words.empty()) return ValueKind::words;
  const std::string& name = isArgument ? option.names.front() : option.value;
  if (name == "DIR") return ValueKind::directory;
  const bool isFile = std::find(std::begin(kFiles), std::end(kFiles), name) != std::end(kFiles);
  return isFile ? ValueKind::file : ValueKind::text;
}

CommandOption rowOf(const CLI::Option& option) {
  CommandOption row;
  const bool isArgument = option.get_positional();
  if (isArgument) {
    row.names.push_back(option.get_name());
  } else {
    for (const auto& name : option.get_snames()) row.names.push_back("-" + name);
    for (const auto& name : option.get_lnames()) row.names.push_back("--" + name);
  }
  const bool isFlag = option.get_items_expected_max() == 0;
  // Behind the name stands what is checked, or alone where there is no name.
  const std::string type = option.get_type_name();
  const auto colon = type.find(':');
  if (!isFlag) row.value = colon == 0 ? type.substr(1) : type.substr(0, colon);
  row.words = wordsOf(row.value);
  if (!isFlag) row.kind = kindOf(row, isArgument);
  row.description = option.get_description();
  row.isRequired = option.get_required();
  row.takesSeveral = option.get_items_expected_max() > 1;
  return row;
}

CommandRow rowOf(const CLI::App& command) {
  CommandRow row;
  row.name = command.get_name();
  row.description = command.get_description();
  for (const CLI::Option* option : command.get_options()) {
    auto& list = option->get_positional() ? row.arguments : row.options;
    list.push_back(rowOf(*option));
  }
  row.footer = command.get_footer();
  return row;
}

}  // namespace

std::string CommandRow::synopsis() const {
  std::string text = name;
  bool hasOptions = false;
  for (const CommandOption& option : options) {
    if (!option.isRequired) {
      hasOptions = true;
      continue;
    }
    text += " " + option.names.front() + " " + option.value;
  }
  if (hasOptions) text += " [OPTIONS]";
  for (const CommandOption& argument : arguments) {
    std::string shown = argument.value.empty() || argument.kind == ValueKind::words
                            ? argument.names.front()
                            : argument.value;
    if (argument.takesSeveral && argument.value.empty()) shown += "...";
    text += argument.isRequired ? " " + shown : " [" + shown + "]";
  }
  return text;
}

std::vector<CommandRow> commandTable(const CLI::App& program) {
  std::vector<CommandRow> rows{rowOf(program)};
  const auto anyCommand = [](const CLI::App*) { return true; };
  for (const CLI::App* command : program.get_subcommands(anyCommand)) {
    rows.push_back(rowOf(*command));
  }
  return rows;
}

}  // namespace tarnkit::tool
