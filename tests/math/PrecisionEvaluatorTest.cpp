#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "tarnkit/math/MXFunctionEvaluator.h"
#include "tarnkit/math/MXMathEvaluator.h"

namespace tarnkit {
namespace {

class PrecisionEvaluatorTest : public ::testing::Test {
 protected:
  PrecisionEvaluatorTest() { evaluator_->setUsesHighPrecisionEvaluation(true); }

  std::string value(const char* text, const MXSubstitutions& substitutions = {}) {
    MXError error;
    const auto result = evaluator_->evaluateString(text, substitutions, &error);
    return result ? result->text() : error.localizedDescription();
  }

  Ref<MXMathEvaluator> evaluator_ = make<MXMathEvaluator>();
};

struct Case {
  const char* text;
  const char* value;
};

TEST_F(PrecisionEvaluatorTest, DigitsGoFromTheTextToTheResult) {
  const Case cases[] = {
      {"0.1 + 0.2", "0.3"},
      {"1/3", "0.33333333333333333333333333333333333333"},
      {"2/3", "0.66666666666666666666666666666666666667"},
      {"12345678901234567890.123456789012345678 - 12345678901234567890", "0.123456789012345678"},
      {"99999999999999999999999999999999999999 + 1", "100000000000000000000000000000000000000"},
      {"sqrt(2)", "1.4142135623730950488016887242096980786"},
      {"pi()", "3.1415926535897932384626433832795028842"},
      {"τ()", "6.2831853071795864769252867665590057684"},
      {"e()", "2.7182818284590452353602874713526624978"},
      {"phi()", "1.6180339887498948482045868343656381177"},
      {"average(0.1, 0.2, 0.6)", "0.3"},
      {"sum(0.1, 0.2)", "0.3"},
      {"median(0.3, 0.1, 0.2, 0.4)", "0.25"},
      {"stddev(2, 4, 4, 4, 5, 5, 7, 9)", "2"},
      {"count(1, 2, 3)", "3"},
      {"trunc(-1.5)", "-2"},
      {"ceil(-1.5)", "-1"},
      {"30!", "265252859812191058636308480000000"},
      {"2 ** 126", "85070591730234615865843651857942052864"},
      {"1.2345678901234567890123456789e-110 * 1e110", "1.234567890123456789"},
      {"1.5e-128 * 1e128", "2"},
  };
  for (const Case& each : cases) EXPECT_EQ(value(each.text), each.value) << each.text;
}

TEST_F(PrecisionEvaluatorTest, VariablesKeepTheirDigits) {
  MXSubstitutions substitutions;
  substitutions.set("x", String("0.12345678901234567890123456789012345678").object());
  substitutions.set("y", Number::withDouble(0.1));
  EXPECT_EQ(value("$x * 10", substitutions), "1.2345678901234567890123456789012345678");
  EXPECT_EQ(value("$y * 3", substitutions), "0.3");
  substitutions.set("whole", Number::withInt64(-9007199254740993));
  EXPECT_EQ(value("$whole + 1", substitutions), "-9007199254740992");
  substitutions.set("small", String("123456789012345678901e-128").object());
  EXPECT_EQ(value("$small * 1e127 * 10", substitutions), "123456789012345678901");
}

// Variables of variables, as many additions as doubles do in a moment.
TEST_F(PrecisionEvaluatorTest, EndsEarlierWhereSubstitutionsMultiply) {
  MXSubstitutions substitutions;
  for (int i = 0; i < 18; ++i) {
    const std::string next = "$v" + std::to_string(i + 1);
    substitutions.set(String("v" + std::to_string(i)), String(next + "+" + next).object());
  }
  substitutions.set("v18", String("1").object());
  EXPECT_EQ(value("$v4", substitutions), "16384");
  EXPECT_EQ(value("$v0", substitutions), "the substitutions refer to each other too often");
  evaluator_->setUsesHighPrecisionEvaluation(false);
  EXPECT_EQ(value("$v0", substitutions), "262144");
}

TEST_F(PrecisionEvaluatorTest, WhatHasNoValueIsNotANumber) {
  for (const char* text :
       {"1/0", "ln(0)", "asin(2)", "sqrt(-1)", "csc(0)", "acosh(0.5)", "10 ** 127 * 10 ** 127",
        "exp(1000)", "(0 - 1) ** 0.5", "median(1, 2, 3, 1/0)", "median(1/0, 2, 1)",
        "stddev(1, 1/0)", "sum(1/0, 1)"}) {
    MXError error;
    const auto result = evaluator_->evaluateString(text, {}, &error);
    ASSERT_TRUE(result) << text;
    EXPECT_TRUE(std::isnan(result->doubleValue())) << text;
  }
  EXPECT_EQ(value("exp(0 - 1000)"), "0");
  EXPECT_EQ(value("average(5)"), "average requires at least 2 arguments");
}

TEST_F(PrecisionEvaluatorTest, SomeFunctionsStayInDoubles) {
  const Case cases[] = {
      {"max(0.1 + 0.2, 0)", "0.3"},
      {"0.30000000000000000001 == 0.3", "1"},
      {"1 && 0", "0"},
      {"max(1, 2)", "2"},
      {"5 & 3", "1"},
  };
  for (const Case& each : cases) EXPECT_EQ(value(each.text), each.value) << each.text;
}

TEST_F(PrecisionEvaluatorTest, WholeDegreesLoseNothing) {
  evaluator_->setAngleMeasurementMode(MXAngleMeasurementMode::degrees);
  const Case cases[] = {
      {"sin(90)", "1"},
      {"sin(180)", "0"},
      {"cos(60)", "0.5"},
      {"sin(0 - 390)", "-0.5"},
      {"tan(45)", "1"},
      {"crd(60)", "1"},
      {"asin(1)", "90"},
      {"acos(0.5)", "60"},
      {"sin(36000000000000000000000000000000000030)", "0.5"},
      {"cos(3e60)", "-0.5"},
      {"cos(75e40)", "-0.5"},
      {"sin(dtor(90))", "1"},
  };
  for (const Case& each : cases) EXPECT_EQ(value(each.text), each.value) << each.text;
}

TEST_F(PrecisionEvaluatorTest, SwitchingMakesAnEvaluatorOnlyWhenItChanges) {
  const auto* const first = &evaluator_->functionEvaluator();
  evaluator_->setUsesHighPrecisionEvaluation(true);
  EXPECT_EQ(&evaluator_->functionEvaluator(), first);
  EXPECT_TRUE(evaluator_->usesHighPrecisionEvaluation());
  EXPECT_EQ(first->isa().name(), "_MXPrecisionFunctionEvaluator");
  evaluator_->setUsesHighPrecisionEvaluation(false);
  EXPECT_FALSE(evaluator_->usesHighPrecisionEvaluation());
  EXPECT_EQ(value("0.1 + 0.2"), "0.30000000000000004");
}

TEST_F(PrecisionEvaluatorTest, SimplifiedTreesKeepTheDigits) {
  const Case cases[] = {
      {"$x + (0.1 + 0.2)", "add($x,0.3)"},
      {"$x + (0 - 1) / 3e8", "add($x,-0.0000000033333333333333333333333333333333333333)"},
      {"$x + (0 - 99999999999999999999999999999999999999)",
       "add($x,-99999999999999999999999999999999999999)"},
  };
  for (const Case& each : cases) {
    MXError error;
    const auto expression = MXExpression::expressionFromString(each.text, &error);
    const auto simplified = expression->simplifiedExpressionWithEvaluator(evaluator_.get(), &error);
    EXPECT_EQ(simplified->description(), each.value);
  }
}

TEST_F(PrecisionEvaluatorTest, NumberExpressionsKeepTheDigits) {
  const char* const digits = "-0.0000000033333333333333333333333333333333333333";
  const auto number = MXExpression::numberExpressionWithNumber(MXNumber::fromText(digits));
  evaluator_->registerFunction([number](const auto&...) { return number; }, "registered");
  MXSubstitutions substitutions;
  substitutions.set("x", number);
  EXPECT_EQ(value("$x", substitutions), digits);
  EXPECT_EQ(value("registered()"), digits);
  EXPECT_EQ(number->copy()->description(), digits);
}

}  // namespace
}  // namespace tarnkit
