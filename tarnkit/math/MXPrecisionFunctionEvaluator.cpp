#include "tarnkit/math/MXPrecisionFunctionEvaluator.h"

#include <algorithm>

#include "tarnkit/math/FunctionMath.h"
#include "tarnkit/math/MXDecimal.h"
#include "tarnkit/math/SmallStack.h"
#include "tarnkit/math/precision/PrecisionFunctions.h"
#include "tarnkit/math/precision/PrecisionTables.h"
#include "tarnkit/math/precision/WideDecimal.h"

namespace tarnkit::detail {

const Class MXPrecisionFunctionEvaluator::kClass{"_MXPrecisionFunctionEvaluator",
                                                 &MXFunctionEvaluator::kClass};

MXPrecisionFunctionEvaluator::~MXPrecisionFunctionEvaluator() = default;

namespace {

Decimal rounded(const WideResult& result) noexcept {
  return result ? decimalOf(*result) : Decimal::notANumber();
}

Decimal constant(Builtin id) noexcept {
  switch (id) {
    case Builtin::phi:
      return MXDecimalPhi();
    case Builtin::pi:
      return MXDecimalPi();
    case Builtin::pi_2:
      return MXDecimalPi_2();
    case Builtin::pi_4:
      return MXDecimalPi_4();
    case Builtin::tau:
      return MXDecimal2Pi();
    case Builtin::sqrt2:
      return MXDecimalSqrt2();
    case Builtin::e:
      return MXDecimalE();
    case Builtin::log2e:
      return MXDecimalLog2e();
    case Builtin::log10e:
      return MXDecimalLog10e();
    case Builtin::ln2:
      return MXDecimalLn2();
    case Builtin::ln10:
      return MXDecimalLn10();
    default:
      return Decimal::notANumber();
  }
}

std::optional<Decimal> binary(Builtin id, const Decimal& x, const Decimal& y) noexcept {
  switch (id) {
    case Builtin::add:
      return x + y;
    case Builtin::subtract:
      return x - y;
    case Builtin::multiply:
      return x * y;
    case Builtin::divide:
      return x / y;
    case Builtin::mod:
      return MXDecimalMod(x, y);
    case Builtin::pow:
      return MXDecimalPower(x, y);
    case Builtin::nthroot:
      return MXDecimalNthRoot(x, y);
    case Builtin::lshift:
      return Decimal::fromInteger(math::shiftLeft(x.int64Value(), y.int64Value()));
    case Builtin::rshift:
      return Decimal::fromInteger(math::shiftRight(x.int64Value(), y.int64Value()));
    default:
      return std::nullopt;
  }
}

std::optional<Decimal> plain(Builtin id, const Decimal& x) noexcept {
  switch (id) {
    case Builtin::negate:
      return x.negated();
    case Builtin::factorial:
      return MXDecimalFactorial(x);
    case Builtin::sqrt:
      return x.squareRoot();
    case Builtin::log:
      return MXDecimalLog10(x);
    case Builtin::ln:
      return MXDecimalLn(x);
    case Builtin::log2:
      return MXDecimalLog2(x);
    case Builtin::exp:
      return MXDecimalExp(x);
    case Builtin::ceil:
      return x.rounded(0, DecimalRounding::up);
    case Builtin::floor:
      return x.rounded(0, DecimalRounding::down);
    case Builtin::abs:
      return x.absolute();
    default:
      return std::nullopt;
  }
}

// atan(1/x), as in doubles; the decimal operation goes on to π for negative numbers.
WideResult arcCotangent(const Decimal& x) noexcept {
  WideResult result = wideArc(Builtin::acotan, x.absolute());
  if (result) result->negative = x.isNegative();
  return result;
}

// The functions that have to do with angles or hyperbolas.
std::optional<Decimal> transcendental(const BuiltinCall& call, const Decimal& x) noexcept {
  const Builtin id = call.function.id;
  if (id < Builtin::sin || id > Builtin::rtod) return std::nullopt;
  if (x.isNaN()) return x;
  if (id == Builtin::dtor) return decimalOf(wideOf(x) * kWideDegree);
  if (id == Builtin::rtod) return decimalOf(wideOf(x) * kWideRadian);
  if (call.function.angle == BuiltinAngle::argument) {
    const bool half = id == Builtin::crd;
    const ReducedAngle angle =
        call.degrees && !call.argumentIsRadians ? reduceDegrees(x, half) : reduceRadians(x, half);
    if (!half) return rounded(wideOfAngle(id, angle));
    const WideFloat sine = *wideOfAngle(Builtin::sin, angle);
    return sine.isZero() ? Decimal() : decimalOf(sine.timesPowerOfTwo(1));
  }
  const bool isArc = id >= Builtin::asin && id <= Builtin::acotan;
  const bool isArea = id >= Builtin::asinh && id <= Builtin::atanh;
  const bool isInverseArea = id >= Builtin::acsch && id <= Builtin::acotanh;
  WideResult result = id == Builtin::acotan     ? arcCotangent(x)
                      : isArc                   ? wideArc(id, x)
                      : isArea || isInverseArea ? wideArea(id, x)
                                                : wideHyperbolic(id, x);
  if (result && call.degrees && call.function.angle == BuiltinAngle::result) {
    result = *result * kWideRadian;
  }
  return rounded(result);
}

Decimal sumOf(const Decimal* values, std::size_t count) noexcept {
  Decimal sum;
  for (std::size_t i = 0; i < count; ++i) sum = sum + values[i];
  return sum;
}

Decimal averageOf(const Decimal* values, std::size_t count) noexcept {
  return sumOf(values, count) / Decimal::fromUnsigned(count);
}

Decimal medianOf(Decimal* values, std::size_t count) noexcept {
  std::sort(values, values + count);
  // What is not a number stands before all numbers.
  if (values[0].isNaN()) return values[0];
  const std::size_t middle = count / 2;
  return count % 2 == 1 ? values[middle] : MXDecimalAverage2(values[middle - 1], values[middle]);
}

Decimal deviationOf(const Decimal* values, std::size_t count) noexcept {
  const Decimal center = averageOf(values, count);
  Decimal squares;
  for (std::size_t i = 0; i < count; ++i) {
    const Decimal distance = values[i] - center;
    squares = squares + distance * distance;
  }
  return (squares / Decimal::fromUnsigned(count)).squareRoot();
}

std::optional<Decimal> ofList(Builtin id, Decimal* values, std::size_t count) noexcept {
  switch (id) {
    case Builtin::sum:
      return sumOf(values, count);
    case Builtin::average:
      return averageOf(values, count);
    case Builtin::median:
      return medianOf(values, count);
    case Builtin::stddev:
      return deviationOf(values, count);
    default:
      return std::nullopt;
  }
}

std::optional<Decimal> computeDecimal(const BuiltinCall& call,
                                      std::span<const MXNumber> arguments) {
  const Builtin id = call.function.id;
  switch (call.function.shape) {
    case BuiltinShape::constant:
      return constant(id);
    case BuiltinShape::binary:
      return binary(id, arguments[0].decimal(), arguments[1].decimal());
    case BuiltinShape::unary: {
      const Decimal x = arguments[0].decimal();
      const auto value = plain(id, x);
      return value ? value : transcendental(call, x);
    }
    case BuiltinShape::list: {
      SmallStack<Decimal, 8> values;
      for (const MXNumber& argument : arguments) values.push(argument.decimal());
      return ofList(id, values.data(), values.size());
    }
    case BuiltinShape::special:
      if (id != Builtin::percent) return std::nullopt;
      return arguments[0].decimal().timesPowerOfTen(-2) * call.percentBase.decimal();
  }
  return std::nullopt;
}

}  // namespace

std::optional<MXNumber> MXPrecisionFunctionEvaluator::compute(const BuiltinCall& call,
                                                              std::span<const MXNumber> arguments,
                                                              MXError* error) const {
  if (const auto value = computeDecimal(call, arguments)) return MXNumber(*value);
  return MXFunctionEvaluator::compute(call, arguments, error);
}

}  // namespace tarnkit::detail
