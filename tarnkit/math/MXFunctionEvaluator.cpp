#include "tarnkit/math/MXFunctionEvaluator.h"

#include <algorithm>
#include <cassert>
#include <limits>

#include "tarnkit/math/FunctionMath.h"
#include "tarnkit/math/MXMathEvaluator.h"
#include "tarnkit/math/SmallStack.h"

namespace tarnkit::detail {

const Class MXFunctionEvaluator::kClass{"_MXFunctionEvaluator", &Object::kClass};

MXFunctionEvaluator::MXFunctionEvaluator(MXMathEvaluator* evaluator) : evaluator_(evaluator) {}

MXFunctionEvaluator::~MXFunctionEvaluator() = default;

double computeBuiltin(const BuiltinFunction& function, const double* arguments, std::size_t count,
                      bool degrees, bool argumentIsRadians, double percentBase) {
  constexpr double kHundred = 100;
  assert(function.takes(static_cast<std::uint32_t>(count)));
  switch (function.shape) {
    case BuiltinShape::constant:
      return function.value;
    case BuiltinShape::binary:
      return function.binary(arguments[0], arguments[1]);
    case BuiltinShape::list:
      return function.list(arguments, count);
    case BuiltinShape::special:
      return arguments[0] / kHundred * percentBase;
    case BuiltinShape::unary:
      break;
  }
  if (!degrees || function.angle == BuiltinAngle::none) return function.unary(arguments[0]);
  if (function.angle == BuiltinAngle::result) {
    return math::toDegrees(function.unary(arguments[0]));
  }
  return function.unary(argumentIsRadians ? arguments[0] : math::toRadians(arguments[0]));
}

const std::vector<String>& MXFunctionEvaluator::standardFunctions() {
  static const std::vector<String> names = [] {
    std::vector<String> all;
    for (std::size_t id = 1; id <= builtinCount(); ++id) {
      all.push_back(String::interned(builtinFunction(static_cast<Builtin>(id)).name));
    }
    std::sort(all.begin(), all.end());
    return all;
  }();
  return names;
}

Ref<MXExpression> MXFunctionEvaluator::evaluateFunction(const Ref<MXExpression>& function,
                                                        const MXSubstitutions& variables,
                                                        MXError* error) const {
  const auto evaluator = evaluator_.lock();
  if (!evaluator) return nullptr;
  const auto value = evaluator->evaluateExpression(*function, variables, error);
  return value ? MXExpression::numberExpressionWithNumber(*value) : nullptr;
}

std::optional<MXNumber> MXFunctionEvaluator::compute(const BuiltinCall& call,
                                                     std::span<const MXNumber> arguments,
                                                     MXError* error) const {
  if (call.function.id == Builtin::random) return random(arguments, error);
  SmallStack<double, 16> values;
  for (const MXNumber& argument : arguments) values.push(argument.doubleValue());
  return computeBuiltin(call.function, values.data(), values.size(), call.degrees,
                        call.argumentIsRadians, call.percentBase.doubleValue());
}

std::optional<MXNumber> MXFunctionEvaluator::random(std::span<const MXNumber> arguments,
                                                    MXError* error) const {
  const std::int64_t lower = arguments.empty() ? std::numeric_limits<std::int64_t>::min()
                                               : math::toInteger(arguments[0].doubleValue());
  const std::uint32_t upper = arguments.size() < 2 ? std::numeric_limits<std::uint32_t>::max()
                                                   : math::toUnsigned32(arguments[1].doubleValue());
  // Drawing until a number fits would never end.
  if (lower >= std::int64_t{upper}) {
    MXError::set(error, MXErrorCode::invalidArgument,
                 "random() requires a lower bound below its upper bound");
    return std::nullopt;
  }
  const auto evaluator = evaluator_.lock();
  if (!evaluator) return std::nullopt;
  return evaluator->randomNumber(static_cast<std::uint32_t>(std::max<std::int64_t>(lower, 0)),
                                 upper);
}

}  // namespace tarnkit::detail
