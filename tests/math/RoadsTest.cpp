// One expression has one value, whichever way it goes: from a text or a tree, simplified,
// rewritten, compiled, row by row or by columns, copied, archived, built from objects.
#include <fmt/format.h>

#include "tarnkit/math/MXCompiledExpression.h"
#include "tarnkit/math/MXMathParsing.h"
#include "tarnkit/platform/coding/StandardKeyedArchiver.h"
#include "tarnkit/platform/coding/StandardKeyedUnarchiver.h"
#include "tarnkit/platform/numbers/NumberText.h"
#include "tests/math/MathTesting.h"

namespace tarnkit::testing {
namespace {

constexpr const char* kNames[] = {"x", "y"};
constexpr double kValues[] = {50, 0.75};

MXSubstitutions numbers() {
  return {{kNames[0], Number::withDouble(kValues[0])}, {kNames[1], Number::withDouble(kValues[1])}};
}

Ref<MXMathEvaluator> roadEvaluator() {
  const auto evaluator = make<MXMathEvaluator>();
  const std::pair<const char*, const char*> aliases[] = {
      {"pct", "percent"},    {"pct2", "pct"},   {"plus", "add"}, {"plus2", "plus"},
      {"minus", "SUBTRACT"}, {"torad", "dtor"}, {"sine", "sin"}, {"number", "count"}};
  for (const auto& [alias, function] : aliases) {
    EXPECT_TRUE(evaluator->addAlias(String(alias), String(function)));
  }
  evaluator->registerFunction(
      [](const auto& arguments, const auto& variables, const auto& calledBy,
         MXError* error) -> Ref<MXExpression> {
        const auto value = calledBy.evaluateExpression(*arguments.back(), variables, error);
        return value ? MXExpression::numberExpressionWithNumber(value->doubleValue()) : nullptr;
      },
      String("last"));
  return evaluator;
}

Ref<MXExpression> builtFromObjects(const MXExpression& expression) {
  if (expression.expressionType() != MXExpressionType::function) return expression.copy();
  std::vector<Ref<MXExpression>> arguments;
  for (const auto& each : expression.arguments()) arguments.push_back(builtFromObjects(*each));
  return MXExpression::functionExpressionWithFunction(expression.function(), arguments, nullptr);
}

Ref<MXExpression> archivedAndBack(const MXExpression& expression) {
  const auto data = StandardKeyedArchiver::archivedData(&expression, 0);
  return as<MXExpression>(StandardKeyedUnarchiver::unarchive(data->bytes(), 0).valueOr(nullptr));
}

std::string textOf(const std::optional<MXNumber>& value) {
  return value ? shortestText(value->doubleValue()) : "nothing";
}

/// The value of each road by its name, the plain one first.
std::vector<std::pair<std::string, std::string>> roads(const Ref<MXMathEvaluator>& evaluator,
                                                       const std::string& text) {
  std::vector<std::pair<std::string, std::string>> all;
  const auto substitutions = numbers();
  const auto add = [&](const char* road, const Ref<MXExpression>& tree) {
    ASSERT_TRUE(tree) << road << " of " << text;
    all.emplace_back(road, textOf(evaluator->evaluateExpression(*tree, substitutions, nullptr)));
  };
  all.emplace_back("text", textOf(evaluator->evaluateString(text, substitutions, nullptr)));
  const auto tree = MXExpression::expressionFromString(text, nullptr);
  for (int times = 0; times < 6; ++times) add("tree", tree);
  add("tokens", MXParser::parserWithString(text, nullptr)->parsedExpressionWithError(nullptr));
  add("copy", tree->copy());
  add("objects", builtFromObjects(*tree));
  add("archive", archivedAndBack(*tree));
  MXSubstitutions strings;
  for (std::size_t i = 0; i < std::size(kNames); ++i) {
    strings.set(kNames[i], String(shortestText(kValues[i])).object());
  }
  all.emplace_back("strings", textOf(evaluator->evaluateExpression(*tree, strings, nullptr)));
  const auto simple = tree->simplifiedExpressionWithEvaluator(evaluator.get(), nullptr);
  add("simplified", simple);
  add("simplified objects",
      builtFromObjects(*tree)->simplifiedExpressionWithEvaluator(evaluator.get(), nullptr));
  const std::vector<String> names{String(kNames[0]), String(kNames[1])};
  for (const auto& each : {tree, simple}) {
    const auto compiled = MXCompiledExpression::compile(each, evaluator, names);
    all.emplace_back("compiled", shortestText(compiled->evaluate(kValues).value_or(-1e99)));
    constexpr std::size_t kRows = 200;
    const std::vector<double> columns[] = {std::vector<double>(kRows, kValues[0]),
                                           std::vector<double>(kRows, kValues[1])};
    const double* const pointers[] = {columns[0].data(), columns[1].data()};
    std::vector<double> results(kRows, -1e99);
    compiled->evaluate(pointers, kRows, results.data());
    all.emplace_back("columns, first row", shortestText(results.front()));
    all.emplace_back("columns, last row", shortestText(results.back()));
  }
  return all;
}

TEST(Roads, GiveOneValue) {
  registerMathClasses();
  const struct {
    const char* text;
    const char* value;
    bool degrees = false;
  } cases[] = {
      {"50 + percent(10)", "55"},
      // An alias of percent is a node of its own and stands in no sum.
      {"50 + pct(10)", "50.1"},
      {"50 - pct2(10)", "49.9"},
      {"$x + pct(10)", "50.1"},
      {"pct(10)", "0.1"},
      {"pct($x)", "0.5"},
      {"50 + percent(pct(10))", "50.05"},
      {"50 + pct(percent(10))", "50.001"},
      // An alias of a sum is a sum for the percentage in it.
      {"plus(50, percent(10))", "55"},
      {"plus2($x, percent(10))", "55"},
      {"minus($x, percent(10))", "45"},
      {"plus(50, pct(10))", "50.1"},
      {"plus(percent(10), $x)", "50.1"},
      {"plus($x, percent(10)) + percent(10)", "60.5"},
      {"($x + percent(10)) - percent(50)", "27.5"},
      {"50 + (20 + percent(10))", "72"},
      {"50 * percent(10)", "5"},
      {"last(50, percent(10))", "0.1"},
      {"50 + last(percent(10))", "50.1"},
      // What can be computed is a whole to take a part of, though it is no number.
      {"count($x, $y) + percent(10)", "2.2"},
      {"number($x, $y) + percent($x)", "3"},
      {"abs(count($x, $y) + percent(50)) - percent(10)", "2.7"},
      {"count($x) * 10 + percent(10) + percent(10)", "12.1"},
      {"last($y, count($x, $y)) + percent(10)", "2.2"},
      {"$x + count($y) + percent(10)", "56.1"},
      {"sin(dtor(90))", "1", true},
      {"sine(90) + percent(100)", "2", true},
      // Only dtor itself tells that the angle is in radians.
      {"sin(torad(90)) == sin(rtod(dtor(dtor(90))))", "1", true},
      {"acotan(-1)", "-45", true},
      {"atan(1/-2) == acotan(-2)", "1"},
      {"1 << 63", "-9.223372036854776e+18"},
      {"$x << 70 | -1 >> 64 | -9 >> 1 | 5 << -1", "-1"},
      {"max($x, 2, $y) - min($x, 2, $y) + average($x, $y, 3) * 0", "49.25"},
  };
  for (const auto& each : cases) {
    const auto evaluator = roadEvaluator();
    if (each.degrees) evaluator->setAngleMeasurementMode(MXAngleMeasurementMode::degrees);
    const std::string wanted(each.value);
    for (const auto& [road, value] : roads(evaluator, each.text)) {
      EXPECT_EQ(value, wanted) << each.text << ", " << road;
    }
    const auto tree = MXExpression::expressionFromString(each.text, nullptr);
    const auto rewritten = evaluator->expressionByRewritingExpression(tree);
    EXPECT_EQ(textOf(evaluator->evaluateExpression(*rewritten, numbers(), nullptr)), wanted)
        << each.text << ", rewritten";
  }
}

std::string sumOfParts(ExpressionGenerator& generator, int depth) {
  static const char* const kLeaves[] = {"50", "$x", "10", "$y", "count($x,$y)", "2"};
  static const char* const kSums[] = {"add(", "subtract(", "plus(", "minus(", "max(", "multiply("};
  static const char* const kParts[] = {"percent(", "pct(", "abs(", "last($x,", "percent("};
  if (depth == 0) return kLeaves[generator.below(6)];
  if (generator.below(3) == 0)
    return kParts[generator.below(5)] + sumOfParts(generator, depth - 1) + ")";
  const auto first = sumOfParts(generator, depth - 1);
  return kSums[generator.below(6)] + first + "," + sumOfParts(generator, depth - 1) + ")";
}

TEST(Roads, GiveOneValueForPartsOfPartsToo) {
  registerMathClasses();
  ExpressionGenerator generator(7);
  const auto evaluator = roadEvaluator();
  for (int i = 0; i < 400; ++i) {
    const std::string text = sumOfParts(generator, 4);
    const auto all = roads(evaluator, text);
    for (const auto& [road, value] : all) {
      ASSERT_EQ(value, all.front().second) << text << ", " << road;
    }
  }
}

TEST(Roads, SimplifyTheWholeOfAPercentageThatIsNoNumber) {
  const auto evaluator = roadEvaluator();
  const std::pair<const char*, const char*> cases[] = {
      {"count($x, $y) + percent(10)", "add(count($x,$y),0.2)"},
      {"$x + percent(10)", "add($x,percent(10))"},
      {"plus($x, percent(10))", "plus($x,percent(10))"},
      {"$x + pct(10)", "add($x,0.1)"},
  };
  const auto simplified = [&](const char* text) {
    return MXExpression::expressionFromString(text, nullptr)
        ->simplifiedExpressionWithEvaluator(evaluator.get(), nullptr)
        ->description();
  };
  for (const auto& [text, result] : cases) EXPECT_EQ(simplified(text), result);
  evaluator->setVariableResolver([](const String&) { return MXNumber(50); });
  EXPECT_EQ(simplified("$x + percent(10) + percent($x)"), "add(add($x,5),percent($x))");
  // Each whole is computed once, not once for each part of it.
  std::string chain = "count($x)";
  for (int i = 0; i < 100000; ++i) chain += "+percent(1)";
  const auto tree = MXExpression::expressionFromString(chain, nullptr);
  const auto simple = tree->simplifiedExpressionWithEvaluator(evaluator.get(), nullptr);
  EXPECT_EQ(textOf(evaluator->evaluateExpression(*simple, numbers(), nullptr)),
            textOf(evaluator->evaluateExpression(*tree, numbers(), nullptr)));
}

// The percentage outlives the sum that it was a part of.
TEST(Roads, TakeAPercentageWithoutItsSumForItself) {
  const auto evaluator = roadEvaluator();
  auto sum = MXExpression::expressionFromString("$x + percent($y)", nullptr);
  const auto part = sum->arguments()[1];
  const auto values = [&] {
    const auto compiled =
        MXCompiledExpression::compile(part, evaluator, {String(kNames[0]), String(kNames[1])});
    return std::pair(textOf(evaluator->evaluateExpression(*part, numbers(), nullptr)),
                     shortestText(*compiled->evaluate(kValues)));
  };
  EXPECT_EQ(values(), std::pair(std::string("0.375"), std::string("0.375")));
  sum = nullptr;
  EXPECT_EQ(values(), std::pair(std::string("0.0075"), std::string("0.0075")));
}

// What is precise differs in digits only.
TEST(Roads, AgreeInDoublesAndInDecimals) {
  const auto evaluator = roadEvaluator();
  const std::pair<const char*, const char*> cases[] = {
      {"acotan(-1)", "-0.785398163397448"},
      {"acotan(-0.001)", "-1.56979632712823"},
      {"acotan(0)", "1.5707963267949"},
      {"acotan(2)", "0.463647609000806"},
      {"1 << 62", "4.61168601842739e+18"},
      {"1 << 63", "-9.22337203685478e+18"},
      {"1 << 64", "0"},
      {"1 << 100", "0"},
      {"1 << -1", "0"},
      {"-5 >> 1", "-3"},
      {"-5 >> 64", "-1"},
      {"5 >> 99", "0"},
      {"5 >> -1", "0"},
      {"-5 >> -1", "-1"},
      {"2.9 << 1.9", "4"},
      {"-2.9 >> 0.5", "-2"},
      {"1e30 << 1", "-2"},
      {"-1e30 >> 62", "-2"},
      {"(0/0) << 1", "0"},
      {"8 >> (0/0)", "8"},
      {"count($x, $y) + percent(10)", "2.2"},
      {"$x + pct(10)", "50.1"},
      {"plus($x, percent(10))", "55"},
  };
  for (const auto& [text, wanted] : cases) {
    for (const bool precise : {false, true}) {
      evaluator->setUsesHighPrecisionEvaluation(precise);
      const auto value = evaluator->evaluateString(text, numbers(), nullptr);
      ASSERT_TRUE(value) << text;
      EXPECT_EQ(fmt::format("{:.15g}", value->doubleValue()), wanted)
          << text << (precise ? ", in decimals" : "");
    }
  }
  evaluator->setUsesHighPrecisionEvaluation(true);
  EXPECT_EQ(evaluator->evaluateString("9007199254740993 << 0", {}, nullptr)->text(),
            "9007199254740993");
}

}  // namespace
}  // namespace tarnkit::testing
