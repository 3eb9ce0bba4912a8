// Drives the engine with any bytes: tokenizer, both roads of the parser, evaluator in doubles and
// in decimals, simplifier, rewriter and prepared evaluation, and checks what must hold between
// them.
//
// The first line of the input, when there are two, is the value of the variable "a" as a string.
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "tarnkit/math/MXCompiledExpression.h"
#include "tarnkit/math/MXExpressionRewriter.h"
#include "tarnkit/math/MXMathEvaluator.h"
#include "tarnkit/math/MXParser.h"
#include "tarnkit/math/MXPrecisionFunctionEvaluator.h"
#include "tarnkit/math/MathText.h"
#include "tarnkit/platform/system/Log.h"

namespace {

using namespace tarnkit;

constexpr std::size_t kLongestInput = 4096;

void require(bool holds) {
  if (!holds) std::abort();
}

bool sameBits(double a, double b) {
  return (std::isnan(a) && std::isnan(b)) ||
         std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

void evaluate(const Ref<MXExpression>& tree, std::string_view text, std::string_view substitution) {
  const auto& evaluator = MXMathEvaluator::defaultMathEvaluator();
  evaluator->seedRandomNumbers(1);
  MXError error;
  const MXSubstitutions substitutions{{"a", String(substitution).object()},
                                      {"b", Number::withDouble(2.5)}};
  const auto value = evaluator->evaluateString(text, substitutions, &error);
  require(value.has_value() != static_cast<bool>(error));
  const auto simplified = tree->simplifiedExpressionWithEvaluator(evaluator.get(), nullptr);
  require(simplified != nullptr);
  require(evaluator->expressionByRewritingExpression(tree) != nullptr);

  const auto prepared = MXCompiledExpression::compile(tree, evaluator);
  const std::vector<double> values(prepared->variables().size(), 1.25);
  MXSubstitutions numbers;
  for (const String& name : prepared->variables()) numbers.set(name, Number::withDouble(1.25));
  evaluator->seedRandomNumbers(1);
  const auto fast = prepared->evaluate(values);
  evaluator->seedRandomNumbers(1);
  const auto slow = evaluator->evaluateExpression(*tree, numbers, nullptr);
  require(fast.has_value() == slow.has_value());
  if (fast) require(sameBits(*fast, slow->doubleValue()));
}

void evaluateInDecimals(const Ref<MXExpression>& tree, std::string_view substitution) {
  static const auto evaluator = [] {
    auto made = make<MXMathEvaluator>();
    made->setUsesHighPrecisionEvaluation(true);
    return made;
  }();
  MXError error;
  const MXSubstitutions substitutions{{"a", String(substitution).object()},
                                      {"b", Number::withDouble(2.5)}};
  const auto value = evaluator->evaluateExpression(*tree, substitutions, &error);
  require(value.has_value() != static_cast<bool>(error));
  if (!value) return;
  const Decimal decimal = value->decimal();
  require(MXNumber(decimal).decimal() == decimal);

  const auto simplified = tree->simplifiedExpressionWithEvaluator(evaluator.get(), nullptr);
  require(simplified != nullptr);
  const auto again = evaluator->evaluateExpression(*simplified, substitutions, nullptr);
  const auto draws = [](std::string_view from) {
    return detail::lowerCase(from).find("random") != std::string::npos;
  };
  if (draws(tree->description().view()) || draws(substitution)) return;
  require(again && again->decimal() == decimal);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const auto silent = Log::setSink([](std::string_view) {});
  if (size > kLongestInput) return 0;
  std::string_view text(reinterpret_cast<const char*>(data), size);
  std::string_view substitution = "$b + 1";
  if (const auto line = text.find('\n'); line != text.npos) {
    substitution = text.substr(0, line);
    text.remove_prefix(line + 1);
  }
  MXError error;
  const auto tree = MXExpression::expressionFromString(text, &error);
  MXError slowError;
  const auto parser = MXParser::parserWithString(text, &slowError);
  const auto slow = parser ? parser->parsedExpressionWithError(&slowError) : nullptr;
  require((tree != nullptr) == (slow != nullptr));
  if (!tree) {
    require(error && error.code() == slowError.code());
    require(error.localizedDescription() == slowError.localizedDescription());
    return 0;
  }
  require(tree->isEqual(*slow) && tree->copy()->isEqual(*tree));
  require(tree->description() == slow->description());
  evaluate(tree, text, substitution);
  evaluateInDecimals(tree, substitution);
  return 0;
}
