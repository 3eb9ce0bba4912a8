#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <memory>
#include <string>

#include "tools/tarnkit/CommandTable.h"
#include "tools/tarnkit/ModelCommands.h"
#include "tools/tarnkit/Output.h"

namespace tarnkit::tool {

namespace {

using Rows = std::vector<CommandRow>;

std::string joined(const std::vector<std::string>& words) {
  return fmt::format("{}", fmt::join(words, " "));
}

std::vector<std::string> commandNames(const Rows& rows) {
  std::vector<std::string> names;
  for (std::size_t i = 1; i < rows.size(); ++i) names.push_back(rows[i].name);
  return names;
}

// The names of a program's options that have a value of their own, to be passed over.
std::string optionsWithValue(const CommandRow& row) {
  std::vector<std::string> names;
  for (const CommandOption& option : row.options) {
    if (option.kind != ValueKind::none) {
      names.insert(names.end(), option.names.begin(), option.names.end());
    }
  }
  return fmt::format("{}", fmt::join(names, "|"));
}

std::string shellQuoted(std::string_view text) {
  std::string out = "'";
  for (const char c : text) out += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return out + "'";
}

// bash

std::string bashValues(const CommandOption& option) {
  switch (option.kind) {
    case ValueKind::words:
      return fmt::format("_tarnkit_words {}", shellQuoted(joined(option.words)));
    case ValueKind::file:
      return "_tarnkit_files -f";
    case ValueKind::directory:
      return "_tarnkit_files -d";
    default:
      return ":";
  }
}

std::string bashScript(const Rows& rows) {
  std::string values, options, arguments;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const std::string command = i == 0 ? "" : rows[i].name;
    std::vector<std::string> names;
    for (const CommandOption& option : rows[i].options) {
      names.insert(names.end(), option.names.begin(), option.names.end());
      if (option.kind == ValueKind::none) continue;
      std::vector<std::string> patterns;
      for (const auto& name : option.names) patterns.push_back(shellQuoted(command + " " + name));
      values +=
          fmt::format("    {}) {}; return ;;\n", fmt::join(patterns, "|"), bashValues(option));
    }
    options += fmt::format("      {}) _tarnkit_words {} ;;\n", shellQuoted(command),
                           shellQuoted(joined(names)));
    if (i > 0 && !rows[i].arguments.empty()) {
      arguments += fmt::format("    {}) {} ;;\n", shellQuoted(command),
                               bashValues(rows[i].arguments.front()));
    }
  }
  return fmt::format(R"(# bash completion of tarnkit, made by "tarnkit completion bash"
_tarnkit_words() {{
  mapfile -t COMPREPLY < <(compgen -W "$1" -- "$word")
}}
_tarnkit_files() {{
  compopt -o filenames 2> /dev/null
  mapfile -t COMPREPLY < <(compgen "$1" -- "$word")
}}
_tarnkit() {{
  local word=${{COMP_WORDS[COMP_CWORD]}} before=${{COMP_WORDS[COMP_CWORD - 1]}} command= i
  COMPREPLY=()
  # "=" is a word of its own here.
  if [[ $word == = ]]; then
    word=
  elif [[ $before == = ]]; then
    before=${{COMP_WORDS[COMP_CWORD - 2]}}
  fi
  for ((i = 1; i < COMP_CWORD; ++i)); do
    case ${{COMP_WORDS[i]}} in
      {}) ((++i)) ;;
      -*) ;;
      *)
        command=${{COMP_WORDS[i]}}
        break
        ;;
    esac
  done
  case "$command $before" in
{}  esac
  if [[ $word == -* ]]; then
    case $command in
{}    esac
    return
  fi
  case $command in
    '') _tarnkit_words {} ;;
{}  esac
}}
complete -F _tarnkit tarnkit
)",
                     optionsWithValue(rows.front()), values, options,
                     shellQuoted(joined(commandNames(rows))), arguments);
}

// zsh

std::string zshEscaped(std::string_view text) {
  std::string out;
  for (const char c : text) {
    if (c == '[' || c == ']' || c == ':' || c == '\\') out += '\\';
    out += c;
  }
  return out;
}

std::string zshValue(const CommandOption& option) {
  const std::string name = zshEscaped(option.value.empty() ? option.names.front() : option.value);
  switch (option.kind) {
    case ValueKind::none:
      return "";
    case ValueKind::words:
      return fmt::format(":{}:({})", zshEscaped(option.names.back()), joined(option.words));
    case ValueKind::file:
      return fmt::format(":{}:_files", name);
    case ValueKind::directory:
      return fmt::format(":{}:_path_files -/", name);
    case ValueKind::text:
      break;
  }
  return fmt::format(":{}: ", name);
}

std::string zshOptions(const CommandRow& row, const char* indent) {
  std::string text;
  for (const CommandOption& option : row.options) {
    for (const auto& name : option.names) {
      text +=
          fmt::format(" \\\n{}{}", indent,
                      shellQuoted(fmt::format("{}{}[{}]{}", option.takesSeveral ? "*" : "", name,
                                              zshEscaped(option.description), zshValue(option))));
    }
  }
  return text;
}

std::string zshScript(const Rows& rows) {
  std::string commands, cases;
  for (std::size_t i = 1; i < rows.size(); ++i) {
    const CommandRow& row = rows[i];
    commands += "    " + shellQuoted(row.name + ":" + zshEscaped(row.description)) + "\n";
    cases += fmt::format("    {})\n      _arguments{}", row.name, zshOptions(row, "        "));
    int number = 0;
    for (const CommandOption& argument : row.arguments) {
      ++number;
      const std::string which = argument.takesSeveral ? "*" : std::to_string(number);
      cases += fmt::format(" \\\n        {}", shellQuoted(which + zshValue(argument)));
    }
    cases += "\n      ;;\n";
  }
  return fmt::format(R"(#compdef tarnkit
# zsh completion of tarnkit, made by "tarnkit completion zsh"
_tarnkit() {{
  local context state state_descr line
  typeset -A opt_args
  local -a commands=(
{}  )
  _arguments -C{} \
    '1:command:->command' \
    '*::argument:->argument'
  case $state in
    command) _describe command commands ;;
    argument) _tarnkit_arguments ;;
  esac
}}
_tarnkit_arguments() {{
  case $words[1] in
{}  esac
}}
_tarnkit "$@"
)",
                     commands, zshOptions(rows.front(), "    "), cases);
}

// fish

std::string fishQuoted(std::string_view text) {
  std::string out = "'";
  for (const char c : text) {
    if (c == '\'' || c == '\\') out += '\\';
    out += c;
  }
  return out + "'";
}

std::string fishValue(const CommandOption& option) {
  switch (option.kind) {
    case ValueKind::none:
      return "";
    case ValueKind::words:
      return " -x -a " + fishQuoted(joined(option.words));
    case ValueKind::file:
      return " -r -F";
    case ValueKind::directory:
      return " -x -a '(__fish_complete_directories)'";
    case ValueKind::text:
      break;
  }
  return " -x";
}

// The command is the first word that is no option of the program and no value of one; fish's own
// functions would take the value, or a file that is called like a command, for it.
std::string fishCommandFunction(const CommandRow& program) {
  std::string withValue;
  for (const CommandOption& option : program.options) {
    if (option.kind == ValueKind::none) continue;
    for (const auto& name : option.names) withValue += " " + name;
  }
  return "function __tarnkit_command\n"
         "  set -l words (commandline -opc)\n"
         "  set -l command\n"
         "  set -l value 0\n"
         "  for word in $words[2..-1]\n"
         "    if test $value = 1\n"
         "      set value 0\n"
         "    else if contains -- $word" +
         withValue +
         "\n"
         "      set value 1\n"
         "    else if not string match -q -- '-*' $word\n"
         "      set command $word\n"
         "      break\n"
         "    end\n"
         "  end\n"
         "  test \"$command\" = \"$argv\"\n"
         "end\n";
}

std::string fishScript(const Rows& rows) {
  std::string text = "# fish completion of tarnkit, made by \"tarnkit completion fish\"\n" +
                     fishCommandFunction(rows.front()) + "complete -c tarnkit -f\n";
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const CommandRow& row = rows[i];
    const std::string when =
        i == 0 ? "complete -c tarnkit -n __tarnkit_command"
               : fmt::format("complete -c tarnkit -n '__tarnkit_command {}'", row.name);
    if (i > 0) {
      text += fmt::format("complete -c tarnkit -n __tarnkit_command -a {} -d {}\n", row.name,
                          fishQuoted(row.description));
    }
    for (const CommandOption& option : row.options) {
      text += when;
      for (const auto& name : option.names) {
        text += name.rfind("--", 0) == 0 ? " -l " + name.substr(2) : " -s " + name.substr(1);
      }
      text += fishValue(option) + " -d " + fishQuoted(option.description) + "\n";
    }
    for (const CommandOption& argument : row.arguments) {
      if (argument.kind == ValueKind::file) text += when + " -F\n";
      if (argument.kind == ValueKind::words) {
        text += when + " -a " + fishQuoted(joined(argument.words)) + "\n";
      }
    }
  }
  return text;
}

}  // namespace

void addCompletionCommand(CLI::App& app) {
  auto* command =
      app.add_subcommand("completion", "Print what makes a shell complete this command line");
  const auto shell = std::make_shared<std::string>();
  command->add_option("SHELL", *shell, "The shell that is to read it")
      ->required()
      ->check(CLI::IsMember({"bash", "zsh", "fish"}).description(""))
      ->type_name("bash|zsh|fish");
  command->callback([&app, shell] {
    const auto rows = commandTable(app);
    writeToStandardOutput(*shell == "bash"  ? bashScript(rows)
                          : *shell == "zsh" ? zshScript(rows)
                                            : fishScript(rows));
  });
}

}  // namespace tarnkit::tool
