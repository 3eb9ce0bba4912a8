#include <fmt/format.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstdint>
#include <memory>
#include <new>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <string>

#include "tarnkit/math/MXMathEvaluator.h"
#include "tarnkit/math/MXMathStringTokenizer.h"
#include "tarnkit/platform/text/JSONWriter.h"
#include "tools/tarnkit/Command.h"
#include "tools/tarnkit/ExpressionErrors.h"
#include "tools/tarnkit/InputLines.h"
#include "tools/tarnkit/MathCommands.h"
#include "tools/tarnkit/MathSupport.h"
#include "tools/tarnkit/Output.h"
#include "tools/tarnkit/Progress.h"

namespace tarnkit::tool {

namespace {

using nlohmann::json;

constexpr int kMalformedLine = -1;

/// A line that is no request, and why.
struct MalformedLine {
  std::string reason;
};

const char* nameOf(MXTokenType type) {
  constexpr const char* kNames[] = {"number", "operator", "function", "variable"};
  return kNames[static_cast<int>(type)];
}

bool flag(const json& request, const char* name) {
  const auto found = request.find(name);
  if (found == request.end()) return false;
  if (!found->is_boolean()) throw MalformedLine{fmt::format("\"{}\" is not a boolean", name)};
  return found->get<bool>();
}

const std::string& text(const json& request, const char* name) {
  const auto found = request.find(name);
  if (found == request.end() || !found->is_string()) {
    throw MalformedLine{fmt::format("\"{}\" is not a string", name)};
  }
  return found->get_ref<const std::string&>();
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
  explicit Batch(JSONWriter& answers) : answers_(answers) {}

  void answer(const std::string& line) {
    try {
      answerRequest(line);
    } catch (const MalformedLine& malformed) {
      fail(kMalformedLine, malformed.reason);
    } catch (const std::bad_alloc&) {
      failForMemory();
    } catch (const std::length_error&) {
      failForMemory();
    }
    answers_.endLine();
  }
  /// Answers a line that could not be read for want of memory.
  void answerLostLine() {
    failForMemory();
    answers_.endLine();
  }

 private:
  // An answer is begun when nothing is left to be done for it that takes memory.
  void answerRequest(const std::string& line) {
    const json request = json::parse(line, nullptr, false);
    if (!request.is_object()) throw MalformedLine{"the line is not a JSON object"};
    const std::string& op = text(request, "op");
    const std::string& expression = text(request, "text");
    const bool precise = flag(request, "precise");
    const MXSubstitutions substitutions = variables(request, precise);
    evaluator_->setUsesHighPrecisionEvaluation(precise);
    evaluator_->setAngleMeasurementMode(flag(request, "degrees") ? MXAngleMeasurementMode::degrees
                                                                 : MXAngleMeasurementMode::radians);
    evaluator_->setResolvesFunctionsAsVariables(flag(request, "functionsAsVariables"));
    if (op == "tokens") return listTokens(expression);
    if (op == "eval") return evaluate(expression, substitutions);
    if (op == "parse" || op == "simplify" || op == "rewrite") return transform(op, expression);
    throw MalformedLine{fmt::format("there is no operation \"{}\"", op)};
  }

  void fail(int code, std::string_view message) {
    answers_.beginObject().key("error").beginObject();
    answers_.key("code").value(code).key("message").value(message);
    answers_.endObject().endObject();
  }
  void fail(const MXError& error, const std::string& expression,
            const MXSubstitutions& substitutions = {}) {
    std::vector<std::string> names;
    for (const auto& variable : substitutions) names.push_back(variable.key.toStdString());
    ExpressionFailure{error, expression, names}.writeJSON(answers_);
  }
  void failForMemory() { fail(kMalformedLine, "there is not enough memory for this line"); }

  // Read twice: an error comes behind tokens, and its line has none.
  void listTokens(const std::string& expression) {
    MXError error;
    const auto ignore = [](const MXTokenText&) {};
    if (!MXMathStringTokenizer::eachToken(expression, ignore, &error)) {
      return fail(error, expression);
    }
    answers_.beginObject().key("tokens").beginArray();
    const auto list = [this](const MXTokenText& token) {
      answers_.beginObject();
      answers_.key("type").value(nameOf(token.type)).key("token").value(token.token);
      if (token.type == MXTokenType::op) answers_.key("function").value(token.function);
      answers_.endObject();
    };
    MXMathStringTokenizer::eachToken(expression, list, &error);
    answers_.endArray().endObject();
  }

  void evaluate(const std::string& expression, const MXSubstitutions& substitutions) {
    MXError error;
    const auto value = evaluator_->evaluateString(expression, substitutions, &error);
    if (!value) return fail(error, expression, substitutions);
    const std::string digits = valueText(*value, evaluator_->usesHighPrecisionEvaluation());
    answers_.beginObject().key("value").value(digits).endObject();
  }

  void transform(const std::string& op, const std::string& source) {
    MXError error;
    auto expression = MXExpression::expressionFromString(source, &error);
    if (expression && op == "simplify") {
      expression = expression->simplifiedExpressionWithEvaluator(evaluator_.get(), &error);
    } else if (expression && op == "rewrite") {
      expression = evaluator_->expressionByRewritingExpression(expression);
    }
    if (!expression) return fail(error, source);
    const String description = expression->description();
    answers_.beginObject().key("expression").value(description.view()).endObject();
  }

  JSONWriter& answers_;
  Ref<MXMathEvaluator> evaluator_ = make<MXMathEvaluator>();
};

void run(bool percent) {
  if (percent) readPercentSignAsPercent();
  // A terminal that the lines are typed in is left alone.
  std::optional<Progress> progress;
  if (::isatty(STDIN_FILENO) == 0) progress.emplace("answering line");
  JSONWriter answers(writeToStandardOutput);
  Batch batch(answers);
  InputLines lines([&answers] { answers.flush(); });
  for (std::uint64_t answered = 1; lines.next(); ++answered) {
    if (lines.isLost()) {
      batch.answerLostLine();
    } else {
      batch.answer(lines.line());
    }
    if (progress) progress->setCount(answered);
  }
  answers.flush();
  if (!lines.status()) failWithFile("math", kStandardStream, lines.status());
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
