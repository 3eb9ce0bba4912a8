#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace tarnkit::tool {

/// What a value of the command line may be.
enum class ValueKind : std::uint8_t { none, text, words, file, directory };

/// An option or an argument, as --help tells it.
struct CommandOption {
  /// "-o", "--output"; of an argument its name: "FILE".
  std::vector<std::string> names;
  /// What its value is called: "OUT"; "" of one that has none.
  std::string value;
  ValueKind kind = ValueKind::none;
  /// What the value may be, where only these are taken.
  std::vector<std::string> words;
  std::string description;
  bool isRequired = false;
  bool takesSeveral = false;
};

struct CommandRow {
  std::string name;
  std::string description;
  std::vector<CommandOption> options;
  std::vector<CommandOption> arguments;
  /// What --help says beneath the options.
  std::string footer;

  /// "open [OPTIONS] FILE".
  std::string synopsis() const;
};

/// All that the command line of the program has: what help, completions and manual pages are made
/// of. The first row is the program itself, with the options before the command.
std::vector<CommandRow> commandTable(const CLI::App& program);

}  // namespace tarnkit::tool
