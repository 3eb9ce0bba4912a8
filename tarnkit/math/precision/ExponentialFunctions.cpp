#include "tarnkit/math/precision/PrecisionFunctions.h"
#include "tarnkit/math/precision/PrecisionTables.h"
#include "tarnkit/math/precision/WideDecimal.h"
#include "tarnkit/math/precision/WideExponential.h"
#include "tarnkit/math/precision/WideGamma.h"

namespace tarnkit::detail {

namespace {

// From 2^11 on the exponential of a number is far beyond the decimals.
constexpr int kFarExponent = 11;
// From 2^6 on a hyperbolic tangent is 1 to its last digit.
constexpr int kFlatExponent = 6;
constexpr std::uint64_t kLargestWholePower = std::uint64_t{1} << 16;

bool isOdd(const Decimal& whole) noexcept {
  const Decimal compact = whole.compact();
  return compact.exponent() == 0 && (compact.mantissa() & 1) != 0;
}

WideFloat withSign(WideFloat value, bool negative) noexcept {
  value.negative = negative && !value.isZero();
  return value;
}

// ln((1 + |x|) / (1 - |x|)) / 2 for the numerator and the denominator of x, which is less than 1.
WideFloat areaTangent(const WideFloat& numerator, const WideFloat& difference) noexcept {
  const WideFloat argument = numerator.timesPowerOfTwo(1) / difference;
  const WideFloat result = logarithmOfOnePlus(argument);
  return result.timesPowerOfTwo(-1);
}

// asinh(numerator / denominator), not negative.
WideFloat areaSine(const WideFloat& value) noexcept {
  const WideFloat one = WideFloat::of(1);
  const WideFloat square = value * value;
  return logarithmOfOnePlus(value + square / (one + squareRoot(one + square)));
}

// acosh(1 + above)
WideFloat areaCosine(const WideFloat& above) noexcept {
  if (above.isZero()) return above;
  return logarithmOfOnePlus(above + squareRoot(above * (WideFloat::of(2) + above)));
}

}  // namespace

WideResult wideExponential(const WideFloat& value) noexcept {
  if (value.exponent <= kFarExponent || value.isZero()) return exponential(value);
  if (value.negative) return WideFloat{};
  return std::nullopt;
}

WideResult wideLogarithm(const Decimal& value) noexcept {
  constexpr int kNearExponent = -6;
  if (value.isZero() || value.isNegative()) return std::nullopt;
  const WideFloat fromOne = wideDifference(value, Decimal::of(1));
  if (fromOne.isZero() || fromOne.exponent <= kNearExponent) return logarithmOfOnePlus(fromOne);
  return logarithm(wideOf(value));
}

WideResult widePower(const Decimal& base, const Decimal& exponent) noexcept {
  if (exponent.isZero()) return WideFloat::of(1);
  if (base.isZero()) return exponent.isNegative() ? WideResult() : WideFloat{};
  const bool isWhole = exponent.isInteger();
  if (base.isNegative() && !isWhole) return std::nullopt;
  const bool negative = base.isNegative() && isOdd(exponent);
  const std::uint64_t times = isWhole ? exponent.absolute().uint64Value() : 0;
  if (isWhole && times <= kLargestWholePower) {
    const WideFloat result = withSign(power(wideOf(base).absolute(), times), negative);
    return exponent.isNegative() ? WideFloat::of(1) / result : result;
  }
  const WideFloat scaled = *wideLogarithm(base.absolute()) * wideOf(exponent);
  const WideResult result = wideExponential(scaled);
  if (!result) return result;
  return withSign(*result, negative);
}

WideResult wideRoot(const Decimal& base, const Decimal& degree) noexcept {
  if (degree.isZero()) return std::nullopt;
  if (base.isZero() || base.isNegative()) {
    const Decimal inverse = Decimal::of(1) / degree;
    // A reciprocal that is no whole number has no real power of a negative one.
    if (inverse * degree != Decimal::of(1)) {
      return base.isZero() && !degree.isNegative() ? WideResult(WideFloat{}) : std::nullopt;
    }
    return widePower(base, inverse);
  }
  return wideExponential(*wideLogarithm(base) / wideOf(degree));
}

WideResult wideFactorial(const Decimal& value) noexcept {
  constexpr int kFar = 400;
  if (value.isNegative() && value.isInteger()) return std::nullopt;
  if (value > Decimal::of(kFar)) return std::nullopt;
  if (value < Decimal::of(-kFar)) return WideFloat{};
  return gammaOfOnePlus(value);
}

WideResult wideHyperbolic(Builtin function, const Decimal& value) noexcept {
  const WideFloat wide = wideOf(value);
  const WideFloat one = WideFloat::of(1);
  const bool isFar = wide.exponent > kFarExponent && !wide.isZero();
  const bool isFlat = wide.exponent > kFlatExponent && !wide.isZero();
  const bool hasPole = function == Builtin::csch || function == Builtin::cotanh;
  if (wide.isZero() && hasPole) return std::nullopt;
  switch (function) {
    case Builtin::sinh:
      return isFar ? WideResult() : hyperbolicSine(wide);
    case Builtin::cosh:
      return isFar ? WideResult() : hyperbolicCosine(wide);
    case Builtin::tanh:
      if (isFlat) return withSign(one, value.isNegative());
      return hyperbolicSine(wide) / hyperbolicCosine(wide);
    case Builtin::csch:
      return isFar ? WideFloat{} : one / hyperbolicSine(wide);
    case Builtin::sech:
      return isFar ? WideFloat{} : one / hyperbolicCosine(wide);
    case Builtin::cotanh:
      if (isFlat) return withSign(one, value.isNegative());
      return hyperbolicCosine(wide) / hyperbolicSine(wide);
    default:
      return std::nullopt;
  }
}

WideResult wideArea(Builtin function, const Decimal& value) noexcept {
  const Decimal magnitude = value.absolute();
  const bool negative = value.isNegative();
  const WideFloat wide = wideOf(magnitude);
  const WideFloat one = WideFloat::of(1);
  const WideFloat fromOne = wideDifference(magnitude, Decimal::of(1));
  const bool isInverse = function == Builtin::acsch || function == Builtin::asech;
  if (isInverse && value.isZero()) return std::nullopt;
  switch (function) {
    case Builtin::asinh:
      return withSign(areaSine(wide), negative);
    case Builtin::acosh:
      if (negative || fromOne.negative) return std::nullopt;
      return areaCosine(fromOne);
    case Builtin::atanh:
      if (!fromOne.negative) return std::nullopt;
      if (value.isZero()) return wide;
      return withSign(areaTangent(wide, fromOne.absolute()), negative);
    case Builtin::acsch:
      return withSign(areaSine(one / wide), negative);
    case Builtin::asech:
      if (negative || (!fromOne.negative && !fromOne.isZero())) return std::nullopt;
      return areaCosine(fromOne.isZero() ? fromOne : fromOne.absolute() / wide);
    case Builtin::acotanh:
      if (fromOne.negative || fromOne.isZero()) return std::nullopt;
      return withSign(areaTangent(one, fromOne), negative);
    default:
      return std::nullopt;
  }
}

}  // namespace tarnkit::detail
