#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <memory>
#include <string>

#include "tarnkit/platform/system/File.h"
#include "tools/tarnkit/Command.h"
#include "tools/tarnkit/CommandTable.h"
#include "tools/tarnkit/ModelCommands.h"
#include "tools/tarnkit/Output.h"
#include "tools/tarnkit/Suggestion.h"

namespace tarnkit::tool {

namespace {

using Rows = std::vector<CommandRow>;

struct ManPageOptions {
  std::string command;
  std::string directory;
};

// Text as the formatter of manual pages takes it.
std::string escaped(std::string_view text) {
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool beginsLine = i == 0 || text[i - 1] == '\n';
    if (beginsLine && (text[i] == '.' || text[i] == '\'')) out += "\\&";
    if (text[i] == '\\') {
      out += "\\e";
    } else if (text[i] == '-') {
      out += "\\-";
    } else {
      out += text[i];
    }
  }
  return out;
}

std::string sentence(std::string_view text) {
  const bool isEnded = !text.empty() && (text.back() == '.' || text.back() == ')');
  return escaped(text) + (isEnded ? "\n" : ".\n");
}

std::string optionLines(const std::vector<CommandOption>& options) {
  std::string text;
  for (const CommandOption& option : options) {
    std::vector<std::string> names;
    for (const auto& name : option.names) names.push_back("\\fB" + escaped(name) + "\\fR");
    text += fmt::format(".TP\n{}", fmt::join(names, ", "));
    if (!option.value.empty()) text += " \\fI" + escaped(option.value) + "\\fR";
    text += "\n" + sentence(option.description);
  }
  return text;
}

std::string titleOf(const Rows& rows, std::size_t index) {
  return index == 0 ? rows[0].name : rows[0].name + "-" + rows[index].name;
}

std::string exitStatusOf(const std::string& command) {
  std::string one = "The work failed, and standard error tells why";
  std::string two = "The command line is wrong";
  if (command == "diff") one = "The documents differ";
  if (command == "merge") one = "Merged, with conflicts";
  if (command == "check") one = "There are findings that count";
  if (command == "find") one = "Nothing was found";
  const bool answers =
      command == "diff" || command == "merge" || command == "check" || command == "find";
  if (answers) two += ", or the work failed";
  return fmt::format(".TP\n0\nDone.\n.TP\n1\n{}.\n.TP\n2\n{}.\n", one, two);
}

std::string footerOf(const CommandRow& row) {
  if (row.footer.empty()) return {};
  return ".SH DETAILS\n.nf\n" + escaped(row.footer) + (row.footer.back() == '\n' ? "" : "\n") +
         ".fi\n";
}

std::string pageOf(const Rows& rows, std::size_t index) {
  const CommandRow& row = rows[index];
  const std::string title = titleOf(rows, index);
  std::string upper = title;
  for (char& c : upper) c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
  std::string text =
      fmt::format(".TH {} 1 \"\" \"tarnkit {}\" \"Tarnkit\"\n", escaped(upper), TARNKIT_VERSION);
  text += fmt::format(".SH NAME\n{} \\- {}\n", escaped(title), escaped(row.description));
  const std::string synopsis =
      index == 0 ? row.name + " [OPTIONS] COMMAND ..." : rows[0].name + " " + row.synopsis();
  text += ".SH SYNOPSIS\n" + escaped(synopsis) + "\n";
  text += ".SH DESCRIPTION\n" + sentence(row.description);
  text += optionLines(row.arguments);
  if (!row.options.empty()) text += ".SH OPTIONS\n" + optionLines(row.options);
  if (index == 0) {
    text += ".SH COMMANDS\n";
    for (std::size_t i = 1; i < rows.size(); ++i) {
      text += fmt::format(".TP\n\\fB{}\\fR(1)\n{}", escaped(titleOf(rows, i)),
                          sentence(rows[i].description));
    }
  } else {
    text += footerOf(row);
  }
  text += ".SH EXIT STATUS\n" + exitStatusOf(index == 0 ? "" : row.name);
  if (index == 0) {
    text +=
        ".SH ENVIRONMENT\n.TP\n\\fBNO_COLOR\\fR\nSet to anything but nothing: no colours, unless "
        "\\fB\\-\\-color\\fR asks for them.\n";
  } else {
    text += ".SH SEE ALSO\n\\fBtarnkit\\fR(1)\n";
  }
  return text;
}

void writePages(const Rows& rows, const std::string& directory) {
  const auto made = File::makeDirectory(directory);
  if (!made) failWithFile("manpage", directory, made);
  for (std::size_t i = 0; i < rows.size(); ++i) {
    writeFile("manpage", directory + "/" + titleOf(rows, i) + ".1", bytesOf(pageOf(rows, i)));
  }
}

void printPage(const Rows& rows, const std::string& command) {
  std::vector<std::string_view> names;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const bool isProgram = command.empty() && i == 0;
    if (isProgram || (i > 0 && rows[i].name == command)) {
      return writeToStandardOutput(pageOf(rows, i));
    }
    if (i > 0) names.push_back(rows[i].name);
  }
  throw CLI::ValidationError(
      "COMMAND", fmt::format("there is no command \"{}\"{}", command, didYouMean(command, names)));
}

}  // namespace

void addManPageCommand(CLI::App& app) {
  auto* command = app.add_subcommand("manpage", "Print the page of the system's manual");
  const auto options = std::make_shared<ManPageOptions>();
  command->add_option("COMMAND", options->command, "Of this command; of the program when absent")
      ->type_name("");
  command
      ->add_option("-o,--output", options->directory,
                   "Write all pages into this directory, made at need")
      ->type_name("DIR");
  command->callback([&app, options] {
    const auto rows = commandTable(app);
    if (!options->directory.empty()) return writePages(rows, options->directory);
    printPage(rows, options->command);
  });
}

}  // namespace tarnkit::tool
