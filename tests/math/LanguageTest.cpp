#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>

#include "tarnkit/math/MXLanguage.h"
#include "tarnkit/math/MXMathEvaluator.h"

// What people are told about the language is true of the evaluator.

namespace tarnkit {

namespace {

std::string callOf(std::string_view name, std::uint32_t arguments) {
  std::string call = std::string(name) + "(";
  for (std::uint32_t i = 0; i < arguments; ++i) call += i == 0 ? "1" : ",1";
  return call + ")";
}

bool evaluates(const MXMathEvaluator& evaluator, const std::string& text, MXError& error) {
  error = {};
  return evaluator.evaluateString(text, {}, &error).has_value();
}

}  // namespace

TEST(Language, EveryFunctionAndAliasIsDescribedOnce) {
  std::vector<String> described;
  for (const auto& function : functionDescriptions()) {
    described.emplace_back(function.name);
    described.insert(described.end(), function.aliases.begin(), function.aliases.end());
    EXPECT_FALSE(function.meaning.empty()) << function.name;
  }
  std::sort(described.begin(), described.end());
  EXPECT_EQ(described, make<MXMathEvaluator>()->registeredFunctions());
}

TEST(Language, FunctionsTakeAsManyArgumentsAsDescribed) {
  const auto evaluator = make<MXMathEvaluator>();
  evaluator->seedRandomNumbers(1);
  MXError error;
  for (const auto& function : functionDescriptions()) {
    const auto least = function.minimumArguments;
    EXPECT_EQ(function.arguments.empty(), function.maximumArguments == 0U) << function.name;
    if (function.name == "random") {
      EXPECT_TRUE(evaluates(*evaluator, "random()", error));
      EXPECT_TRUE(evaluates(*evaluator, "random(1,9)", error));
    } else {
      EXPECT_TRUE(evaluates(*evaluator, callOf(function.name, least), error)) << function.name;
    }
    if (least > 0) {
      EXPECT_FALSE(evaluates(*evaluator, callOf(function.name, least - 1), error)) << function.name;
    }
    const auto beyond = function.maximumArguments.value_or(20) + 1;
    EXPECT_EQ(evaluates(*evaluator, callOf(function.name, beyond), error),
              !function.maximumArguments)
        << function.name;
  }
}

// A double holds 1 of the argument, a decimal all of it.
TEST(Language, FunctionsAreDecimalAsDescribed) {
  const auto evaluator = make<MXMathEvaluator>();
  evaluator->setUsesHighPrecisionEvaluation(true);
  MXError error;
  std::set<std::string_view> seen;
  for (const auto& function : functionDescriptions()) {
    if (function.minimumArguments != 2) continue;
    const auto value = evaluator->evaluateString(
        std::string(function.name) + "(1.00000000000000000001, 1.00000000000000000001)", {},
        &error);
    ASSERT_TRUE(value) << function.name;
    const bool isWhole = value->decimal().text().find('.') == std::string::npos;
    if (!isWhole) {
      EXPECT_TRUE(function.isDecimal) << function.name;
      seen.insert(function.name);
    } else if (function.name == "min" || function.name == "max" || function.name == "xor") {
      EXPECT_FALSE(function.isDecimal) << function.name;
    }
  }
  EXPECT_GE(seen.size(), 5U);  // add, multiply, pow, average, median, …
}

TEST(Language, OperatorsAreThoseOfASetAndTheirFunctionsAreDescribed) {
  std::set<std::string> names;
  for (const auto& function : functionDescriptions()) {
    if (!function.operators.empty()) names.emplace(function.name);
  }
  std::int64_t last = 0;
  std::set<std::string> operators;
  for (const auto& described : operatorDescriptions()) {
    EXPECT_GE(described.precedence, last);
    last = described.precedence;
    EXPECT_FALSE(described.meaning.empty()) << described.function.view();
    EXPECT_NE(described.arity, MXOperatorArity::unknown);
    if (described.function != MXOperatorUnaryPlus) {
      operators.insert(described.function.toStdString());
    }
  }
  EXPECT_EQ(operators, names);
  const auto withPercent = operatorDescriptions(true);
  const auto isPercent = [](const auto& described) {
    return described.function == MXOperatorPercent;
  };
  EXPECT_EQ(std::count_if(withPercent.begin(), withPercent.end(), isPercent), 1);
}

}  // namespace tarnkit
