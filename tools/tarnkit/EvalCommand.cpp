#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tarnkit/math/MXMathEvaluator.h"
#include "tarnkit/platform/text/JSONWriter.h"
#include "tools/tarnkit/Command.h"
#include "tools/tarnkit/ExpressionErrors.h"
#include "tools/tarnkit/MathCommands.h"
#include "tools/tarnkit/MathSupport.h"
#include "tools/tarnkit/Output.h"

namespace tarnkit::tool {

namespace {

struct EvalOptions {
  std::string expression;
  std::vector<std::string> variables;
  bool degrees = false;
  bool precise = false;
  bool functionsAsVariables = false;
  bool percent = false;
  bool json = false;
};

MXSubstitutions readVariables(const std::vector<std::string>& variables, bool precise) {
  MXSubstitutions substitutions;
  for (const std::string& variable : variables) {
    const auto equals = variable.find('=');
    const auto first = variable.rfind('$', 0) == 0 ? std::size_t{1} : std::size_t{0};
    if (equals == std::string::npos || equals <= first) {
      throw CLI::ValidationError("--var", fmt::format("'{}' is not NAME=VALUE", variable));
    }
    substitutions.set(String(std::string_view(variable).substr(first, equals - first)),
                      substitutionFromText(variable.substr(equals + 1), precise));
  }
  return substitutions;
}

[[noreturn]] void fail(const MXError& error, const MXSubstitutions& variables,
                       const EvalOptions& options) {
  std::vector<std::string> names;
  for (const auto& variable : variables) names.push_back(variable.key.toStdString());
  const ExpressionFailure failure{error, options.expression, names};
  if (!options.json) failure.end();
  std::string line;
  JSONWriter json(line);
  failure.writeJSON(json);
  writeToStandardOutput(line + '\n');
  throw CommandStatus{1};
}

void evaluate(const EvalOptions& options) {
  if (options.percent) readPercentSignAsPercent();
  const auto evaluator = make<MXMathEvaluator>();
  if (options.degrees) evaluator->setAngleMeasurementMode(MXAngleMeasurementMode::degrees);
  evaluator->setUsesHighPrecisionEvaluation(options.precise);
  evaluator->setResolvesFunctionsAsVariables(options.functionsAsVariables);
  const auto variables = readVariables(options.variables, options.precise);
  MXError error;
  const auto value = evaluator->evaluateString(options.expression, variables, &error);
  if (!value) fail(error, variables, options);
  const std::string text = valueText(*value, options.precise);
  std::string line = text;
  if (options.json) {
    line.clear();
    JSONWriter(line).beginObject().key("value").value(text).endObject();
  }
  writeToStandardOutput(line + '\n');
}

}  // namespace

void addEvalCommand(CLI::App& program) {
  auto options = std::make_shared<EvalOptions>();
  auto* const command = program.add_subcommand("eval", "Print the value of an expression");
  addExpressionArgument(*command, options->expression);
  command->add_option("--var", options->variables, "A variable, NAME=VALUE; VALUE is an expression")
      ->type_name("NAME=VALUE")
      ->take_all()
      ->allow_extra_args(false);
  command->add_flag("--degrees", options->degrees, "Angles are in degrees");
  command->add_flag("--precise", options->precise,
                    "Compute in decimals of 38 digits instead of doubles");
  command->add_flag("--functions-as-variables", options->functionsAsVariables,
                    "Take unknown functions for variables, so that 2x reads as 2 times x");
  command->add_flag("--percent", options->percent, "Read % as the percent operator, not as modulo");
  command->add_flag("--json", options->json, "Print a JSON document");
  command->callback([options, command] {
    takeExpression(*command, options->expression);
    evaluate(*options);
  });
}

}  // namespace tarnkit::tool
