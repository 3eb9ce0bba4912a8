#include <bit>
#include <cmath>
#include <limits>

#include "tarnkit/math/MXCompiledExpression.h"
#include "tarnkit/platform/numbers/NumberText.h"
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
  const MXColumn withConstant[] = {{pointers[0]}, {pointers[1] + 130, true}, {pointers[2]}};
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
    // One value for all rows, in blocks and row by row.
    std::vector<double> mixed(300);
    ASSERT_TRUE(fast->evaluate(withConstant, mixed.size(), mixed.data())) << text;
    ASSERT_EQ(bits(mixed[130]), bits(results[130])) << text;
    for (const std::size_t row : {7U, 299U}) {
      const double values[] = {columns[0][row], columns[1][130], columns[2][row]};
      ASSERT_EQ(bits(mixed[row]), bits(*fast->evaluate(values))) << text << " row " << row;
    }
    const double inBlocks = mixed[7];
    ASSERT_TRUE(fast->evaluate(withConstant, 8, mixed.data())) << text;
    ASSERT_EQ(bits(mixed[7]), bits(inBlocks)) << text;
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

/// Host functions of numbers that write down how they are called, and the same as functions of
/// expressions, which evaluate their arguments themselves.
class HostFunctions {
 public:
  explicit HostFunctions(bool ofNumbers) {
    add(ofNumbers, "f", [this](auto values, MXError*) { return called("f", values); });
    add(ofNumbers, "G", [this](auto values, MXError*) { return called("g", values); });
    add(ofNumbers, "silent", [this](auto values, MXError*) {
      called("silent", values);
      return std::optional<double>();
    });
    add(ofNumbers, "positive", [this](auto values, MXError* error) -> std::optional<double> {
      called("positive", values);
      if (values[0] > 0) return values[0];
      MXError::set(error, MXErrorCode::invalidArgument, "not positive");
      return std::nullopt;
    });
    evaluator_->addAlias(String("alias"), String("f"));
  }

  /// The calls, then the value or the error, of an expression prepared or not.
  std::string run(const char* text, bool prepared, std::span<const double> values) {
    calls_.clear();
    MXError error;
    std::optional<double> value;
    const auto tree = MXExpression::expressionFromString(text, nullptr);
    if (prepared) {
      value = compiled(text, evaluator_, {String("x"), String("y")})->evaluate(values, &error);
    } else {
      const MXSubstitutions substitutions{{"x", Number::withDouble(values[0])},
                                          {"y", Number::withDouble(values[1])}};
      const auto number = evaluator_->evaluateExpression(*tree, substitutions, &error);
      if (number) value = number->doubleValue();
    }
    return calls_ + "= " + (value ? shortestText(*value) : textOf(error)) +
           error.userInfo().get(MXUnknownFunctionKey).toStdString();
  }

  const Ref<MXMathEvaluator>& evaluator() const { return evaluator_; }
  std::string takeCalls() { return std::exchange(calls_, {}); }

 private:
  std::optional<double> called(const char* name, std::span<const double> values) {
    double sum = 1;
    calls_ += name;
    for (const double value : values) {
      calls_ += " " + shortestText(value);
      sum += value;
    }
    calls_ += "; ";
    return sum;
  }

  void add(bool ofNumbers, const char* name, const MXNumberFunction& function) {
    if (ofNumbers) {
      EXPECT_TRUE(evaluator_->registerNumberFunction(function, String(name)));
      return;
    }
    evaluator_->registerFunction(
        [function](const auto& arguments, const auto& variables, const auto& evaluator,
                   MXError* error) -> Ref<MXExpression> {
          std::vector<double> values;
          for (const auto& argument : arguments) {
            const auto value = evaluator.evaluateExpression(*argument, variables, error);
            if (!value) return nullptr;
            values.push_back(value->doubleValue());
          }
          const auto value = function(values, error);
          return value ? MXExpression::numberExpressionWithNumber(*value) : nullptr;
        },
        String(name));
  }

  Ref<MXMathEvaluator> evaluator_ = make<MXMathEvaluator>();
  std::string calls_;
};

TEST(CompiledExpression, CallsHostFunctionsOfNumbersAsTheEvaluatorDoes) {
  HostFunctions ofExpressions(false);
  HostFunctions ofNumbers(true);
  const double values[] = {2, -3};
  for (const char* text :
       {"f()", "f($x)", "F($x, $y, 1)", "f(1) + g(2) * f(3)", "alias(g($x), f($y) + 1, 4)",
        "sin(f($x)) ** 2 + max(g($y), f(), $x)", "median(f($x), 3, g($y))", "f(silent($x), g(1))",
        "g(1) + positive($x) - positive($y) + f(2)", "positive(positive($y))",
        "50 - percent(f($x))", "f($x * 2 - 1, ($x + 1) * ($y - f($y)), abs($y)) / g(f(g($x)))",
        "silent()"}) {
    const std::string expected = ofExpressions.run(text, false, values);
    EXPECT_EQ(ofExpressions.run(text, true, values), expected);
    EXPECT_EQ(ofNumbers.run(text, false, values), expected) << text;
    EXPECT_EQ(ofNumbers.run(text, true, values), expected) << text;
    EXPECT_TRUE(compiled(text, ofNumbers.evaluator())->isPrepared()) << text;
  }
  EXPECT_EQ(ofNumbers.run("silent()", true, values),
            "silent; = 3 unable to resolve function: silentsilent");
  EXPECT_FALSE(ofNumbers.evaluator()->registerNumberFunction({}, String("empty")));
  EXPECT_FALSE(
      ofNumbers.evaluator()->registerNumberFunction([](auto, auto) { return 1.0; }, String("Sin")));
}

TEST(CompiledExpression, CallsHostFunctionsRowByRow) {
  HostFunctions functions(true);
  const auto expression = compiled("positive($x) + g($x)", functions.evaluator(), {String("x")});
  std::vector<double> column(300, 1.0);
  column[200] = -1;
  const double* const columns[] = {column.data()};
  std::vector<double> results(300, -7.0);
  MXError error;
  EXPECT_FALSE(expression->evaluate(columns, 300, results.data(), &error));
  EXPECT_EQ(textOf(error), "18 not positive");
  std::string expected;
  for (int row = 0; row < 200; ++row) expected += "positive 1; g 1; ";
  EXPECT_EQ(functions.takeCalls(), expected + "positive -1; ");
  EXPECT_EQ(results[199], 3);
  EXPECT_EQ(results[200], -7);
}

TEST(CompiledExpression, KeepsWhatItCallsAndEndsCirclesOfCalls) {
  const auto evaluator = make<MXMathEvaluator>();
  const auto unregistering = [&evaluator](std::span<const double> values, MXError*) {
    evaluator->unregisterFunctionWithName(String("once"));
    return std::optional(values[0]);
  };
  evaluator->registerNumberFunction(unregistering, String("once"));
  const auto tree = MXExpression::expressionFromString("once(once(3)) + once(4)", nullptr);
  const auto prepared = MXCompiledExpression::compile(tree, evaluator);
  EXPECT_FALSE(evaluator->evaluateExpression(*tree, {}, nullptr));
  EXPECT_EQ(prepared->evaluate({}), 7);

  Ref<MXCompiledExpression> circle;
  evaluator->registerNumberFunction(
      [&circle](std::span<const double>, MXError* error) { return circle->evaluate({}, error); },
      String("again"));
  circle = compiled("1 + again()", evaluator);
  MXError error;
  EXPECT_FALSE(circle->evaluate({}, &error));
  EXPECT_EQ(textOf(error), "1 the expression refers to itself or is nested too deeply");
}

}  // namespace
}  // namespace tarnkit::testing
