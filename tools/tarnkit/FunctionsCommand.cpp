#include <fmt/format.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tarnkit/math/MXLanguage.h"
#include "tarnkit/platform/text/JSONWriter.h"
#include "tools/tarnkit/Command.h"
#include "tools/tarnkit/MathCommands.h"
#include "tools/tarnkit/Output.h"
#include "tools/tarnkit/Suggestion.h"
#include "tools/tarnkit/Terminal.h"

namespace tarnkit::tool {

namespace {

struct FunctionsOptions {
  std::string name;
  bool percent = false;
  bool json = false;
};

struct Language {
  std::vector<MXOperatorDescription> operators;
  std::vector<MXFunctionDescription> functions;
};

// Of what is asked for: all, or what a function, an alias or an operator is.
Language languageOf(const FunctionsOptions& options) {
  Language language{operatorDescriptions(options.percent), functionDescriptions()};
  if (options.name.empty()) return language;
  const String name(options.name);
  std::erase_if(language.functions,
                [&](const MXFunctionDescription& function) { return !function.isCalled(name); });
  std::erase_if(language.operators, [&](const MXOperatorDescription& described) {
    const auto isOfFunction = [&](const MXFunctionDescription& function) {
      return described.function == function.name;
    };
    return !described.isCalled(name) &&
           std::none_of(language.functions.begin(), language.functions.end(), isOfFunction);
  });
  if (language.functions.empty() && language.operators.empty()) {
    std::vector<std::string_view> names;
    const auto all = functionDescriptions();
    for (const auto& function : all) {
      names.push_back(function.name);
      for (const String& alias : function.aliases) names.push_back(alias.view());
    }
    throw CommandFailure(
        "functions", options.name,
        "there is no function and no operator so" + didYouMean(name.view(), names));
  }
  return language;
}

std::string_view placeOf(const MXOperatorDescription& described) {
  if (described.arity == MXOperatorArity::binary) return "between";
  return described.associativity == MXOperatorAssociativity::right ? "before" : "behind";
}

std::string_view sideOf(const MXOperatorDescription& described) {
  return described.associativity == MXOperatorAssociativity::right ? "right" : "left";
}

std::string joined(const std::vector<String>& names) {
  std::string text;
  for (const String& name : names) text += (text.empty() ? "" : " ") + name.toStdString();
  return text;
}

std::string linesOf(const Language& language) {
  std::string text;
  if (!language.operators.empty()) text += "Operators, those that bind least first\n";
  for (const auto& described : language.operators) {
    std::string place(placeOf(described));
    if (described.arity == MXOperatorArity::binary) place += fmt::format(", {}", sideOf(described));
    text += fmt::format("  {:<10}  {:>2}  {:<14}  {:<10}  {}\n", joined(described.tokens),
                        described.precedence, place, described.function.view(), described.meaning);
  }
  std::string_view subject;
  for (const auto& function : language.functions) {
    if (function.subject != subject) {
      subject = function.subject;
      text += fmt::format("{}{}\n", text.empty() ? "" : "\n", subject);
    }
    const auto call = function.arguments.empty()
                          ? std::string(function.name)
                          : fmt::format("{}({})", function.name, function.arguments);
    text += fmt::format("  {:<18}  {}", call, function.meaning);
    if (!function.aliases.empty()) text += fmt::format("; also {}", joined(function.aliases));
    text += '\n';
  }
  return text;
}

void writeNames(JSONWriter& json, std::string_view key, const std::vector<String>& names) {
  json.key(key).beginArray();
  for (const String& name : names) json.value(name.view());
  json.endArray();
}

void writeOperator(JSONWriter& json, const MXOperatorDescription& described) {
  json.beginObject().key("function").value(described.function.view());
  writeNames(json, "tokens", described.tokens);
  json.key("place").value(placeOf(described)).key("side");
  if (described.arity == MXOperatorArity::binary) {
    json.value(sideOf(described));
  } else {
    json.null();
  }
  json.key("precedence").value(described.precedence);
  json.key("meaning").value(described.meaning).endObject();
}

void writeFunction(JSONWriter& json, const MXFunctionDescription& function) {
  using Angle = MXFunctionDescription::Angle;
  json.beginObject().key("name").value(function.name);
  json.key("subject").value(function.subject);
  json.key("arguments").value(function.arguments);
  json.key("minimum").value(function.minimumArguments).key("maximum");
  if (function.maximumArguments) {
    json.value(*function.maximumArguments);
  } else {
    json.null();
  }
  json.key("angle");
  if (function.angle == Angle::none) {
    json.null();
  } else {
    json.value(function.angle == Angle::argument ? "argument" : "result");
  }
  json.key("decimal").value(function.isDecimal);
  json.key("meaning").value(function.meaning);
  writeNames(json, "aliases", function.aliases);
  writeNames(json, "operators", function.operators);
  json.endObject();
}

void writeJSON(const Language& language) {
  JSONWriter json(writeToStandardOutput);
  json.beginObject().key("operators").beginArray();
  for (const auto& described : language.operators) writeOperator(json, described);
  json.endArray().key("functions").beginArray();
  for (const auto& function : language.functions) writeFunction(json, function);
  json.endArray().endObject().endLine();
  json.flush();
}

}  // namespace

void addFunctionsCommand(CLI::App& program) {
  auto options = std::make_shared<FunctionsOptions>();
  auto* const command =
      program.add_subcommand("functions", "List the operators and functions of expressions");
  command
      ->add_option("NAME", options->name,
                   "Only this function, the function of this alias, or what this operator is")
      ->type_name("");
  command->add_flag("--percent", options->percent, "With % as the percent operator, not as modulo");
  command->add_flag("--json", options->json, "Print a JSON document");
  command->callback([options] {
    const auto language = languageOf(*options);
    if (options->json) {
      writeJSON(language);
    } else {
      writeToStandardOutput(wrapped(linesOf(language), terminalWidth(STDOUT_FILENO)));
    }
  });
}

}  // namespace tarnkit::tool
