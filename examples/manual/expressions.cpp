// What docs/expressions.md shows of the engine in a program.
#include <cmath>
#include <cstdio>
#include <string>

#include "tarnkit/math/MXCompiledExpression.h"
#include "tarnkit/math/MXMathEvaluator.h"

using namespace tarnkit;

namespace {

bool evaluate() {
  // region evaluate
  const auto evaluator = make<MXMathEvaluator>();
  MXSubstitutions variables;
  variables.set("width", Number::withDouble(375));
  MXError error;
  const auto value = evaluator->evaluateString("$width / 2 - 10", variables, &error);
  if (value) {
    std::printf("%g\n", value->doubleValue());  // 177.5
  } else {
    std::printf("%s\n", error.localizedDescription().c_str());
  }
  // end evaluate
  return value && value->doubleValue() == 177.5;
}

bool prepare() {
  // region prepare
  MXError error;
  const auto expression = MXExpression::expressionFromString("$from + $part * $span", &error);
  const auto prepared = MXCompiledExpression::compile(
      expression, MXMathEvaluator::defaultMathEvaluator(), {"part", "from", "span"});
  for (int step = 0; step <= 4; ++step) {
    const double values[] = {step / 4.0, 100, 40};  // in the order of the names
    std::printf("%g ", *prepared->evaluate(values));
  }
  std::puts("");  // 100 110 120 130 140
  // end prepare
  const double last[] = {1, 100, 40};
  return prepared->isPrepared() && prepared->evaluate(last) == 140;
}

bool columns() {
  // region columns
  const auto expression = MXExpression::expressionFromString("$from + $part * 40", nullptr);
  const auto prepared = MXCompiledExpression::compile(
      expression, MXMathEvaluator::defaultMathEvaluator(), {"part", "from"});
  const double parts[] = {0, 0.25, 0.5};
  const double from = 100;
  const MXColumn values[] = {{parts}, {&from, true}};
  double results[3];
  MXError error;
  if (!prepared->evaluate(values, 3, results, &error)) {  // 100 110 120
    std::printf("%s\n", error.localizedDescription().c_str());
  }
  // end columns
  return results[0] == 100 && results[1] == 110 && results[2] == 120;
}

bool place() {
  // region place
  const std::string text = "2 * foo(3)";
  MXError error;
  const auto value =
      MXMathEvaluator::defaultMathEvaluator()->evaluateString(text, MXSubstitutions(), &error);
  if (!value) {
    std::printf("%s\n%s\n", error.localizedDescription().c_str(), text.c_str());
    std::printf("%*s\n", static_cast<int>(error.offset()) + 1, "^");  // under "foo"
  }
  // end place
  return !value && error.offset() == 4 && error.length() == 3;
}

bool registerFunction() {
  // region register
  const auto evaluator = make<MXMathEvaluator>();
  evaluator->registerNumberFunction(
      [](std::span<const double> arguments, MXError* error) -> std::optional<double> {
        if (arguments.size() == 3) return std::lerp(arguments[0], arguments[1], arguments[2]);
        *error = MXError(MXErrorCode::invalidArgument, "mix requires 3 arguments");
        return std::nullopt;
      },
      "mix");
  MXError error;
  const auto value = evaluator->evaluateString("mix(100, 140, 1/4)", {}, &error);  // 110
  // end register
  const auto failed = evaluator->evaluateString("mix(1)", {}, &error);
  return value && value->doubleValue() == 110 && !failed &&
         error.localizedDescription() == "mix requires 3 arguments";
}

}  // namespace

int main() { return evaluate() && prepare() && columns() && place() && registerFunction() ? 0 : 1; }
