#include <algorithm>
#include <bit>
#include <cmath>
#include <fstream>
#include <set>
#include <sstream>

#include "tarnkit/math/MXFunctionEvaluator.h"
#include "tarnkit/math/MXMathEvaluator.h"
#include "tests/math/MathTesting.h"

namespace tarnkit::testing {
namespace {

MXMathFunction constant(double value) {
  return [value](const auto&, const auto&, const auto&, MXError*) {
    return MXExpression::numberExpressionWithNumber(value);
  };
}

double ulpsApart(double a, double b) {
  if (a == b || (std::isnan(a) && std::isnan(b))) return 0;
  const double step = std::abs(std::nextafter(b, HUGE_VAL) - b);
  return std::abs(a - b) / step;
}

// The values come from another program, see data/make_function_values.py.
TEST(FunctionTable, HasTheValuesOfAnIndependentSource) {
  std::ifstream file(TARNKIT_SOURCE_DIR "/tests/math/data/function_values.tsv");
  const auto evaluator = make<MXMathEvaluator>();
  std::set<std::string> seen;
  std::string line;
  int lines = 0;
  while (std::getline(file, line)) {
    std::istringstream fields(line);
    std::string text;
    std::string mode;
    std::string value;
    double tolerance = 0;
    std::getline(fields, text, '\t');
    std::getline(fields, mode, '\t');
    std::getline(fields, value, '\t');
    fields >> tolerance;
    evaluator->setAngleMeasurementMode(mode == "degrees" ? MXAngleMeasurementMode::degrees
                                                         : MXAngleMeasurementMode::radians);
    MXError error;
    const auto result = evaluator->evaluateString(text, {}, &error);
    ASSERT_TRUE(result) << text << ": " << textOf(error);
    EXPECT_LE(ulpsApart(result->doubleValue(), std::strtod(value.c_str(), nullptr)), tolerance)
        << text << " gives " << result->doubleValue() << ", not " << value;
    seen.insert(text.substr(0, text.find('(')));
    ++lines;
  }
  EXPECT_GT(lines, 800);
  for (const String& name : detail::MXFunctionEvaluator::standardFunctions()) {
    EXPECT_EQ(seen.count(name.toStdString()), name == "random" ? 0U : 1U) << name.view();
  }
}

TEST(Evaluator, EvaluatesTexts) {
  const std::pair<const char*, const char*> cases[] = {
      {"1+2*3", "7"},
      {"trunc(-1.5)", "-2"},
      {"Max(1, 2) + AVG(1, 3) + mean(1, 3)", "6"},
      {"π == pi && τ == tau && ϕ == phi && tau_2 == pi", "1"},
      {"chord(1) == crd(1)", "1"},
      {"0/0 == 0/0", "0"},
      {"1/0", "inf"},
      {"-1/0", "-inf"},
      {"max(1, 0/0)", "nan"},
      {"median(1, 0/0, 2)", "nan"},
      {"median(0/0, 1, 2, 3)", "nan"},
      {"0xafAF09", "11513609"},
      {"median(3, 2, 1, 4, 0/0)", "nan"},
      {"1e400 - 1e400", "nan"},
      {"lshift(1, 64)", "0"},
      {"lshift(1, -1)", "0"},
      {"rshift(-1, 64)", "-1"},
      {"rshift(5, -1)", "0"},
      {"not(0/0)", "-1"},
      {"and(1e300, -1)", "9.223372036854776e+18"},
      {"or(2.9, -0.9)", "2"},
      {"count(1/0, 2)", "2"},
      {"average(5)", "18 average requires at least 2 arguments"},
      {"sum()", "18 sum requires at least 1 argument"},
      {"PI(1)", "18 pi requires 0 arguments"},
      {"sqrt(1, 2)", "18 sqrt requires 1 argument"},
      {"add(1)", "18 add requires 2 arguments"},
      // A function is checked before its arguments are looked at.
      {"sqrt($no, 1)", "18 sqrt requires 1 argument"},
      {"$no + sqrt()", "4 unable to resolve variable: no"},
      {"NoSuch(1)", "3 unable to resolve function: nosuch"},
      {"random(1, 2, 3)", "18 random() may only have up to 2 arguments"},
      {"random(5, 5)", "18 random() requires a lower bound below its upper bound"},
      {"random(7, 8)", "7"},
      {"random(-5, 1)", "0"},
  };
  for (const auto& [text, value] : cases) EXPECT_EQ(evaluated(text), value) << text;
}

TEST(Evaluator, AppliesTheAngleMode) {
  const auto evaluator = make<MXMathEvaluator>();
  evaluator->setAngleMeasurementMode(MXAngleMeasurementMode::degrees);
  const std::pair<const char*, const char*> cases[] = {
      {"sin(90)", "1"}, {"asin(1)", "90"},   {"sin(90°)", "1"},   {"crd(180)", "2"},
      {"sinh(0)", "0"}, {"rtod(pi)", "180"}, {"acotan(1)", "45"},
  };
  for (const auto& [text, value] : cases) EXPECT_EQ(evaluated(*evaluator, text), value) << text;
}

TEST(Evaluator, ReducesSubstitutions) {
  const MXSubstitutions substitutions{
      {"n", Number::withFloat(1.5F)},
      {"s", String("$n * 2").object()},
      {"e", MXExpression::expressionFromString("$s + 1", nullptr)},
      {"broken", String("1 +").object()},
      {"none", String("$gone").object()},
      {"a", String("$b").object()},
      {"b", String("1 + $a").object()},
      {"other", make<MXMathEvaluator>()},
  };
  const std::pair<const char*, const char*> cases[] = {
      {"$n", "1.5"},
      {"$s", "3"},
      {"$e + $n", "5.5"},
      {"$broken", "10 no right operand to binary +"},
      {"1 + $none", "4 unable to resolve variable: gone"},
      {"$other", "4 unable to resolve variable: other"},
      {"$a", "1 the expression refers to itself or is nested too deeply"},
  };
  for (const auto& [text, value] : cases) EXPECT_EQ(evaluated(text, substitutions), value) << text;
}

TEST(Evaluator, EndsWhereSubstitutionsMultiply) {
  MXSubstitutions substitutions;
  for (int i = 0; i < 60; ++i) {
    const std::string next = "$v" + std::to_string(i + 1);
    substitutions.set(String("v" + std::to_string(i)), String(next + "+" + next).object());
  }
  substitutions.set(String("v60"), String("1 + random(0, 1)").object());
  EXPECT_EQ(evaluated("$v0", substitutions), "1 the substitutions refer to each other too often");
  // A text counts for its characters and one more.
  std::string text(MXMathEvaluator::kMaximumSubstitutedWork - 2, ' ');
  substitutions.set("long", String(text += '7').object());
  EXPECT_EQ(evaluated("$long", substitutions), "7");
  substitutions.set("long", String(text += ' ').object());
  EXPECT_EQ(evaluated("$long", substitutions), "1 the substitutions refer to each other too often");
}

TEST(Evaluator, ResolvesVariables) {
  const auto evaluator = make<MXMathEvaluator>();
  evaluator->setVariableResolver([](const String& name) -> std::optional<MXNumber> {
    if (name == "r") return 7.0;
    return std::nullopt;
  });
  EXPECT_EQ(evaluated(*evaluator, "$r + 1"), "8");
  EXPECT_EQ(evaluated(*evaluator, "$r + 1", {{"r", Number::withInt(1)}}), "2");
  EXPECT_EQ(evaluated(*evaluator, "$q"), "4 unable to resolve variable: q");

  EXPECT_EQ(evaluated("2x", {{"x", Number::withInt(3)}}), "3 unable to resolve function: x");
  evaluator->setResolvesFunctionsAsVariables(true);
  EXPECT_EQ(evaluated(*evaluator, "2x", {{"x", Number::withInt(3)}}), "6");
  EXPECT_EQ(evaluated(*evaluator, "2x + r", {{"x", String("$r").object()}}), "21");
}

TEST(Evaluator, RegistersFunctionsAndAliases) {
  const auto evaluator = make<MXMathEvaluator>();
  EXPECT_TRUE(evaluator->registerFunction(constant(42), String("Answer")));
  EXPECT_EQ(evaluated(*evaluator, "ANSWER() + 1"), "43");
  EXPECT_FALSE(evaluator->registerFunction(constant(1), String("answer")));
  EXPECT_FALSE(evaluator->registerFunction(constant(1), String("SIN")));
  EXPECT_FALSE(evaluator->addAlias(String("Cos"), String("sin")));
  EXPECT_FALSE(evaluator->addAlias(String("avg"), String("sin")));
  EXPECT_FALSE(evaluator->addAlias(String("nowhere"), String()));
  EXPECT_EQ(evaluated(*evaluator, "nowhere(1)"), "3 unable to resolve function: nowhere");
  EXPECT_TRUE(evaluator->addAlias(String("Reply"), String("ANSWER")));
  EXPECT_EQ(evaluated(*evaluator, "reply"), "42");
  EXPECT_TRUE(evaluator->addAlias(String("plus"), String("add")));
  EXPECT_EQ(evaluated(*evaluator, "plus(50, percent(10))"), "55");
  EXPECT_EQ(evaluated(*evaluator, "plus(1)"), "18 add requires 2 arguments");
  EXPECT_TRUE(evaluator->addAlias(String("ping"), String("pong")));
  EXPECT_TRUE(evaluator->addAlias(String("pong"), String("ping")));
  EXPECT_EQ(evaluated(*evaluator, "ping").substr(0, 2), "1 ");

  const auto names = evaluator->registeredFunctions();
  EXPECT_TRUE(std::is_sorted(names.begin(), names.end()));
  for (const char* name : {"answer", "reply", "sin", "π", "l_and"}) {
    EXPECT_EQ(std::count(names.begin(), names.end(), String(name)), 1) << name;
  }
  evaluator->unregisterFunctionWithName(String("ANSWER"));
  evaluator->unregisterFunctionWithName(String("sin"));
  EXPECT_EQ(evaluated(*evaluator, "answer"), "3 unable to resolve function: answer");
  EXPECT_EQ(evaluated(*evaluator, "sin(0)"), "0");
}

TEST(Evaluator, CallsRegisteredFunctionsWithExpressions) {
  const auto evaluator = make<MXMathEvaluator>();
  evaluator->registerFunction(
      [](const auto& arguments, const auto& variables, const auto& calledBy,
         MXError* error) -> Ref<MXExpression> {
        const auto value = calledBy.evaluateExpression(*arguments[0], variables, error);
        if (!value) return nullptr;
        EXPECT_EQ(arguments[0]->parentExpression()->function(), "twice");
        return MXExpression::numberExpressionWithNumber(2 * value->doubleValue());
      },
      String("twice"));
  evaluator->registerFunction(
      [](const auto&, const auto&, const auto&, MXError*) {
        return MXExpression::expressionFromString("$x * 10", nullptr);
      },
      String("lazy"));
  evaluator->registerFunction(
      [](const auto&, const auto&, const auto&, MXError*) -> Ref<MXExpression> { return nullptr; },
      String("nothing"));
  evaluator->registerFunction(
      [](const auto&, const auto&, const auto&, MXError* error) -> Ref<MXExpression> {
        MXError::set(error, MXErrorCode::invalidNumber, "own error");
        return nullptr;
      },
      String("failing"));
  evaluator->registerFunction(
      [](const auto& arguments, const auto&, const auto&, MXError*) {
        return Ref<MXExpression>(arguments[0]->parentExpression());
      },
      String("itself"));
  evaluator->setFunctionResolver(
      [](const String& name) { return name == "found" ? constant(5) : MXMathFunction(); });
  const MXSubstitutions substitutions{{"x", Number::withInt(3)}};
  const std::pair<const char*, const char*> cases[] = {
      {"1 + twice(1 + twice($x))", "15"},
      {"lazy() + 1", "31"},
      {"found(1, 2)", "5"},
      {"nothing()", "3 unable to resolve function: nothing"},
      {"failing() + 1", "5 own error"},
      {"twice($no)", "4 unable to resolve variable: no"},
      {"itself(1)", "1 the expression refers to itself or is nested too deeply"},
  };
  for (const auto& [text, value] : cases) {
    EXPECT_EQ(evaluated(*evaluator, text, substitutions), value) << text;
  }
  MXError error;
  EXPECT_FALSE(evaluator->evaluateString("Gone(1)", {}, &error));
  EXPECT_EQ(error.userInfo().get(String(MXUnknownFunctionKey)), "gone");
}

// A slot that is used again holds what failed last; only the general errors leave it alone.
TEST(Evaluator, WritesItsErrorIntoAUsedSlot) {
  const auto evaluator = make<MXMathEvaluator>();
  evaluator->addAlias(String("ping"), String("ping"));
  MXSubstitutions substitutions{{"loop", String("$loop").object()}};
  const std::pair<const char*, const char*> cases[] = {
      {"$gone", "4 unable to resolve variable: gone"},
      {"sqrt(1, 2)", "18 sqrt requires 1 argument"},
      {"1 +", "10 no right operand to binary +"},
      {"1 + average($no)", "18 average requires at least 2 arguments"},
      {"0x", "5 unable to parse hex number"},
      {"random(1, 2, 3)", "18 random() may only have up to 2 arguments"},
      {"ping()", "1 the alias ping leads to itself"},
      {"random(5, 5)", "18 random() requires a lower bound below its upper bound"},
      {"$loop", "1 the expression refers to itself or is nested too deeply"},
      {"pi(1)", "18 pi requires 0 arguments"},
      {"$x", "18 pi requires 0 arguments"},
  };
  MXError error;
  for (const auto& [text, wanted] : cases) {
    EXPECT_FALSE(evaluator->evaluateString(text, substitutions, &error)) << text;
    EXPECT_EQ(textOf(error), wanted);
  }
  EXPECT_TRUE(error.userInfo().empty()) << "of the variable that failed first";
}

TEST(Evaluator, DrawsRandomNumbers) {
  const auto first = make<MXMathEvaluator>();
  const auto second = make<MXMathEvaluator>();
  first->seedRandomNumbers(11);
  second->seedRandomNumbers(11);
  bool low = false;
  bool high = false;
  for (int i = 0; i < 2000; ++i) {
    const auto drawn = first->evaluateString("random(3, 9)", {}, nullptr)->doubleValue();
    EXPECT_EQ(drawn, second->evaluateString("random(3, 9)", {}, nullptr)->doubleValue());
    ASSERT_TRUE(drawn >= 3 && drawn < 9 && drawn == std::floor(drawn)) << drawn;
    low = low || drawn == 3;
    high = high || drawn == 8;
  }
  EXPECT_TRUE(low && high);
  EXPECT_GE(first->evaluateString("random()", {}, nullptr)->doubleValue(), 0);
}

// A text is evaluated where it was parsed, or as a tree, or with something in it that asks for the
// slow road: all to the same bits.
TEST(Evaluator, AllRoadsGiveTheSameBits) {
  const auto evaluator = make<MXMathEvaluator>();
  const MXSubstitutions numbers{
      {"a", Number::withDouble(1.5)}, {"b", Number::withDouble(-0.7)}, {"c", Number::withInt(3)}};
  const MXSubstitutions strings{
      {"a", String("1.5").object()}, {"b", String("-0.7").object()}, {"c", String("1+2").object()}};
  ExpressionGenerator generator(5);
  for (int i = 0; i < 4000; ++i) {
    evaluator->setAngleMeasurementMode(static_cast<MXAngleMeasurementMode>(i & 1));
    const std::string text = generator.wellFormed(5);
    const auto tree = MXExpression::expressionFromString(text, nullptr);
    if (!tree) continue;
    const auto bits = [&](const std::optional<MXNumber>& value) {
      return std::isnan(value->doubleValue()) ? 0
                                              : std::bit_cast<std::uint64_t>(value->doubleValue());
    };
    const auto direct = bits(evaluator->evaluateString(text, numbers, nullptr));
    for (int times = 0; times < 6; ++times) {
      EXPECT_EQ(bits(evaluator->evaluateExpression(*tree, numbers, nullptr)), direct) << text;
    }
    EXPECT_EQ(bits(evaluator->evaluateExpression(*tree, strings, nullptr)), direct) << text;
    const auto simple = tree->simplifiedExpressionWithEvaluator(evaluator.get(), nullptr);
    EXPECT_EQ(bits(evaluator->evaluateExpression(*simple, numbers, nullptr)), direct) << text;
  }
}

// A tree that is evaluated often is prepared for that, and must go on seeing what has changed.
TEST(Evaluator, EvaluatesOneTreeAgainAndAgain) {
  const auto evaluator = make<MXMathEvaluator>();
  const auto tree = MXExpression::expressionFromString("sin($x) + $y * $x + percent($y)", nullptr);
  const auto built =
      MXExpression::functionExpressionWithFunction(String("ADD"), {tree->copy(), tree}, nullptr);
  MXSubstitutions many;
  for (int i = 0; i < 20; ++i) many.set(String("v" + std::to_string(i)), Number::withInt(i));
  many.set(String("y"), Number::withInt(3));
  many.set(String("x"), Number::withInt(90));
  const MXSubstitutions cases[] = {
      {{"x", Number::withInt(2)}, {"y", Number::withInt(5)}},
      {{"y", Number::withFloat(0.5F)}, {"z", Number::withInt(1)}, {"x", Number::withDouble(7)}},
      {{"x", String("$y + 1").object()}, {"y", Number::withInt(5)}},
      many,
  };
  for (int round = 0; round < 12; ++round) {
    evaluator->setAngleMeasurementMode(static_cast<MXAngleMeasurementMode>(round & 1));
    for (const auto& substitutions : cases) {
      const auto fresh =
          evaluator->evaluateString("sin($x) + $y * $x + percent($y)", substitutions, nullptr);
      const double value =
          evaluator->evaluateExpression(*tree, substitutions, nullptr)->doubleValue();
      EXPECT_EQ(value, fresh->doubleValue()) << "round " << round;
      EXPECT_EQ(evaluator->evaluateExpression(*built, substitutions, nullptr)->doubleValue(),
                value + value);
    }
    MXError error;
    EXPECT_FALSE(evaluator->evaluateExpression(*tree, {{"x", Number::withInt(2)}}, &error));
    EXPECT_EQ(textOf(error), "4 unable to resolve variable: y");
  }
  evaluator->setUsesHighPrecisionEvaluation(true);
  EXPECT_TRUE(evaluator->evaluateExpression(*tree, cases[0], nullptr)->isDecimal());
}

}  // namespace
}  // namespace tarnkit::testing
