#include <bit>
#include <cmath>
#include <limits>

#include "tarnkit/math/MXCompiledExpression.h"
#include "tests/math/MathTesting.h"

namespace tarnkit::testing {
namespace {

Ref<MXCompiledExpression> compiled(std::string_view text, const Ref<MXMathEvaluator>& evaluator,
                                   std::vector<String> variables = {}) {
  return MXCompiledExpression::compile(MXExpression::expressionFromString(text, nullptr), evaluator,
                                       std::move(variables));
}

std::uint64_t bits(double value) {
  return std::isnan(value) ? 0 : std::bit_cast<std::uint64_t>(value);
}

TEST(CompiledExpression, GivesTheBitsOfTheTree) {
  const auto evaluator = make<MXMathEvaluator>();
  ExpressionGenerator generator(77);
  std::vector<std::vector<double>> columns(3);
  for (int row = 0; row < 300; ++row) {
    for (auto& column : columns) column.push_back((generator.below(2001) - 1000.0) / 128);
  }
  columns[0][7] = std::numeric_limits<double>::quiet_NaN();
  columns[1][9] = std::numeric_limits<double>::infinity();
  const double* const pointers[] = {columns[0].data(), columns[1].data(), columns[2].data()};
  int prepared = 0;
  for (int i = 0; i < 3000; ++i) {
    evaluator->setAngleMeasurementMode(static_cast<MXAngleMeasurementMode>(i & 1));
    const std::string text = generator.wellFormed(i % 7);
    const auto tree = MXExpression::expressionFromString(text, nullptr);
    if (!tree) continue;
    const auto fast =
        MXCompiledExpression::compile(tree, evaluator, {String("a"), String("b"), String("c")});
    prepared += fast->isPrepared() ? 1 : 0;
    std::vector<double> results(300);
    ASSERT_TRUE(fast->evaluate(pointers, results.size(), results.data())) << text;
    for (const std::size_t row : {0U, 7U, 9U, 130U, 299U}) {
      const double values[] = {columns[0][row], columns[1][row], columns[2][row]};
      const MXSubstitutions substitutions{{"a", Number::withDouble(values[0])},
                                          {"b", Number::withDouble(values[1])},
                                          {"c", Number::withDouble(values[2])}};
      const double expected =
          evaluator->evaluateExpression(*tree, substitutions, nullptr)->doubleValue();
      ASSERT_EQ(bits(*fast->evaluate(values)), bits(expected)) << text;
      ASSERT_EQ(bits(results[row]), bits(expected)) << text << " row " << row;
    }
  }
  EXPECT_GT(prepared, 2500);
}

TEST(CompiledExpression, NumbersItsVariables) {
  const auto evaluator = make<MXMathEvaluator>();
  EXPECT_EQ(compiled("$b + $a * $b", evaluator)->variables(),
            (std::vector<String>{String("b"), String("a")}));
  const auto given = compiled("$b + $a", evaluator, {String("a")});
  EXPECT_EQ(given->variables(), (std::vector<String>{String("a"), String("b")}));
  const double values[] = {1, 20};
  EXPECT_EQ(given->evaluate(values), 21);
  MXError error;
  EXPECT_FALSE(given->evaluate(std::span(values, 1), &error));
  EXPECT_EQ(textOf(error), "18 a variable has no value");
  evaluator->setResolvesFunctionsAsVariables(true);
  const auto bare = compiled("2x + π", evaluator);
  EXPECT_TRUE(bare->isPrepared());
  EXPECT_EQ(bare->variables(), std::vector<String>{String("x")});
}

TEST(CompiledExpression, TakesManyVariables) {
  std::string text = "$v0";
  for (int i = 1; i < 20000; ++i) text += "+$v" + std::to_string(i);
  const auto sum = compiled(text, make<MXMathEvaluator>());
  EXPECT_TRUE(sum->isPrepared());
  std::vector<double> values(20000, 1.0);
  values[19999] = 3;
  EXPECT_EQ(sum->evaluate(values), 20002);
}

TEST(CompiledExpression, FallsBackToTheEvaluator) {
  const auto evaluator = make<MXMathEvaluator>();
  evaluator->registerFunction(
      [](const auto& arguments, const auto& variables, const auto& calledBy,
         MXError* error) -> Ref<MXExpression> {
        const auto value = calledBy.evaluateExpression(*arguments[0], variables, error);
        return value ? MXExpression::numberExpressionWithNumber(value->doubleValue() + 1) : nullptr;
      },
      String("next"));
  const struct {
    const char* text;
    bool prepared;
    const char* result;
  } cases[] = {
      {"avg($x, 4) + trunc(1.5)", true, "4"},
      {"next($x)", false, "3"},
      {"random($x, 3)", false, "2"},
      {"count($x, $x)", false, "2"},
      {"gone($x)", false, "3 unable to resolve function: gone"},
      {"sqrt($x, 1)", false, "18 sqrt requires 1 argument"},
  };
  for (const auto& each : cases) {
    const auto expression = compiled(each.text, evaluator);
    EXPECT_EQ(expression->isPrepared(), each.prepared) << each.text;
    const double x[] = {2};
    MXError error;
    const auto value = expression->evaluate(x, &error);
    EXPECT_EQ(value ? std::to_string(*value).substr(0, 1) : textOf(error), each.result);
    const double* const columns[] = {x};
    double result = 0;
    EXPECT_EQ(expression->evaluate(columns, 1, &result), value.has_value());
  }
}

}  // namespace
}  // namespace tarnkit::testing
