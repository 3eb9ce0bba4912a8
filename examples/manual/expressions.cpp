// What docs/expressions.md shows of the engine in a program.
#include <cmath>
#include <cstdio>

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

int main() { return evaluate() && prepare() && registerFunction() ? 0 : 1; }
