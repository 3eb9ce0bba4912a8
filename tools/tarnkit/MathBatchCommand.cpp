#include <fmt/format.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstdint>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <system_error>

#include "tarnkit/math/MXMathEvaluator.h"
#include "tarnkit/math/MXMathStringTokenizer.h"
#include "tools/tarnkit/Command.h"
#include "tools/tarnkit/MathCommands.h"
#include "tools/tarnkit/MathSupport.h"
#include "tools/tarnkit/Output.h"
#include "tools/tarnkit/Progress.h"

namespace tarnkit::tool {

namespace {

using nlohmann::json;

constexpr std::size_t kFlushSize = std::size_t{64} << 10;
constexpr int kMalformedLine = -1;

json errorLine(int code, const std::string& message) {
  return {{"error", {{"code", code}, {"message", message}}}};
}
json errorLine(const MXError& error) {
  return errorLine(static_cast<int>(error.code()), error.localizedDescription());
}

/// A line that is no request, and why.
struct MalformedLine {
  std::string reason;
};

const char* nameOf(MXTokenType type) {
  constexpr const char* kNames[] = {"number", "operator", "function", "variable"};
  return kNames[static_cast<int>(type)];
}

json tokensOf(const std::string& text) {
  MXError error;
  const auto tokenizer = MXMathStringTokenizer::tokenizerWithString(text, &error);
  if (!tokenizer) return errorLine(error);
  json tokens = json::array();
  while (const auto token = tokenizer->nextObject()) {
    json one{{"type", nameOf(token->tokenType())}, {"token", token->token().view()}};
    if (token->tokenType() == MXTokenType::op) one["function"] = token->operatorType().view();
    tokens.push_back(std::move(one));
  }
  return {{"tokens", std::move(tokens)}};
}

bool flag(const json& request, const char* name) {
  const auto found = request.find(name);
  if (found == request.end()) return false;
  if (!found->is_boolean()) throw MalformedLine{fmt::format("\"{}\" is not a boolean", name)};
  return found->get<bool>();
}

std::string text(const json& request, const char* name) {
  const auto found = request.find(name);
  if (found == request.end() || !found->is_string()) {
    throw MalformedLine{fmt::format("\"{}\" is not a string", name)};
  }
  return found->get<std::string>();
}

MXSubstitutions variables(const json& request, bool precise) {
  MXSubstitutions substitutions;
  const auto found = request.find("vars");
  if (found == request.end()) return substitutions;
  if (!found->is_object()) throw MalformedLine{"\"vars\" is not an object"};
  for (const auto& [name, value] : found->items()) {
    if (value.is_number()) {
      // A whole number may have more digits than a double.
      substitutions.set(String(name), precise ? substitutionFromText(value.dump(), precise)
                                              : Number::withDouble(value.get<double>()));
    } else if (value.is_string()) {
      substitutions.set(String(name), substitutionFromText(value.get<std::string>(), precise));
    } else {
      throw MalformedLine{fmt::format("the variable \"{}\" is no number and no string", name)};
    }
  }
  return substitutions;
}

/// Answers requests with one evaluator, which it sets up as each asks.
class Batch {
 public:
  json answer(const std::string& line) {
    try {
      const json request = json::parse(line, nullptr, false);
      if (!request.is_object()) throw MalformedLine{"the line is not a JSON object"};
      const std::string op = text(request, "op");
      const std::string expression = text(request, "text");
      const bool precise = flag(request, "precise");
      const MXSubstitutions substitutions = variables(request, precise);
      evaluator_->setUsesHighPrecisionEvaluation(precise);
      evaluator_->setAngleMeasurementMode(flag(request, "degrees")
                                              ? MXAngleMeasurementMode::degrees
                                              : MXAngleMeasurementMode::radians);
      evaluator_->setResolvesFunctionsAsVariables(flag(request, "functionsAsVariables"));
      if (op == "tokens") return tokensOf(expression);
      if (op == "eval") return evaluate(expression, substitutions);
      if (op == "parse" || op == "simplify" || op == "rewrite") return transform(op, expression);
      throw MalformedLine{fmt::format("there is no operation \"{}\"", op)};
    } catch (const MalformedLine& malformed) {
      return errorLine(kMalformedLine, malformed.reason);
    }
  }

 private:
  json evaluate(const std::string& expression, const MXSubstitutions& substitutions) {
    MXError error;
    const auto value = evaluator_->evaluateString(expression, substitutions, &error);
    if (!value) return errorLine(error);
    return {{"value", valueText(*value, evaluator_->usesHighPrecisionEvaluation())}};
  }

  json transform(const std::string& op, const std::string& source) {
    MXError error;
    auto expression = MXExpression::expressionFromString(source, &error);
    if (expression && op == "simplify") {
      expression = expression->simplifiedExpressionWithEvaluator(evaluator_.get(), &error);
    } else if (expression && op == "rewrite") {
      expression = evaluator_->expressionByRewritingExpression(expression);
    }
    if (!expression) return errorLine(error);
    return {{"expression", expression->description().view()}};
  }

  Ref<MXMathEvaluator> evaluator_ = make<MXMathEvaluator>();
};

void run(bool percent) {
  if (percent) readPercentSignAsPercent();
  std::ios::sync_with_stdio(false);
  // A terminal that the lines are typed in is left alone.
  std::optional<Progress> progress;
  if (::isatty(STDIN_FILENO) == 0) progress.emplace("answering line");
  Batch batch;
  std::uint64_t answered = 0;
  std::string line;
  std::string pending;
  while (std::getline(std::cin, line)) {
    // What is not UTF-8 in an answer is replaced, as the engine does with what it reads.
    pending += batch.answer(line).dump(-1, ' ', false, json::error_handler_t::replace);
    pending += '\n';
    ++answered;
    if (progress) progress->setCount(answered);
    if (pending.size() < kFlushSize) continue;
    writeToStandardOutput(pending);
    pending.clear();
  }
  const int error = errno;
  writeToStandardOutput(pending);
  if (std::cin.bad()) {
    throw CommandFailure("math", "standard input", std::generic_category().message(error));
  }
}

}  // namespace

void addMathBatchCommand(CLI::App& program) {
  auto percent = std::make_shared<bool>(false);
  auto* const command =
      program.add_subcommand("math", "Answer JSON lines: tokens, parse, simplify, rewrite, eval");
  command->add_flag("--percent", *percent, "Read % as the percent operator, not as modulo");
  command->callback([percent] { run(*percent); });
}

}  // namespace tarnkit::tool
