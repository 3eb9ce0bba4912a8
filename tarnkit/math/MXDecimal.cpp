#include "tarnkit/math/MXDecimal.h"

#include <algorithm>

#include "tarnkit/math/precision/PrecisionFunctions.h"
#include "tarnkit/math/precision/PrecisionTables.h"
#include "tarnkit/math/precision/WideDecimal.h"
#include "tarnkit/platform/numbers/PowersOfTen.h"

namespace tarnkit {

using detail::Builtin;
using detail::UInt128;
using detail::UInt256;
using detail::WideFloat;
using detail::WideResult;

namespace {

Decimal constant(const char* digits) noexcept {
  return Decimal::fromText(digits).value_or(Decimal());
}

Decimal decimalOf(const WideResult& result) noexcept {
  return result ? detail::decimalOf(*result) : Decimal::notANumber();
}

Decimal ofAngle(Builtin function, const Decimal& angle) noexcept {
  if (angle.isNaN()) return angle;
  return decimalOf(detail::wideOfAngle(function, detail::reduceRadians(angle)));
}

using Function = WideResult (*)(Builtin, const Decimal&) noexcept;
Decimal computed(Function compute, Builtin function, const Decimal& value) noexcept {
  return value.isNaN() ? value : decimalOf(compute(function, value));
}

Decimal logarithm(const Decimal& value, const WideFloat& factor) noexcept {
  if (value.isNaN()) return value;
  const WideResult result = detail::wideLogarithm(value);
  return result ? detail::decimalOf(*result * factor) : Decimal::notANumber();
}

UInt128 remainder(const UInt256& dividend, UInt128 divisor) noexcept {
  const int shift = 128 - detail::bitWidth(divisor);
  const UInt256 shifted = dividend << shift;
  const detail::TwoWordDivisor words(divisor << shift);
  UInt128 rest = shifted.high;
  words.divide(rest, detail::highWord(shifted.low));
  words.divide(rest, detail::lowWord(shifted.low));
  return rest >> shift;
}

// |a| mod |b|, without rounding.
Decimal remainderOfMagnitudes(const Decimal& a, const Decimal& b) noexcept {
  UInt128 divisor = b.mantissa();
  int distance = a.exponent() - b.exponent();
  if (distance < 0) {
    // No more digits than a has: otherwise b is the greater one.
    if (a.absolute() < b.absolute()) return a.absolute();
    divisor *= detail::powerOfTen(-distance);
    distance = 0;
  }
  UInt128 rest = a.mantissa() % divisor;
  while (distance > 0) {
    const int part = std::min(distance, detail::kLargestPowerOfTen);
    const UInt128 power = detail::powerOfTen(part) % divisor;
    rest = remainder(detail::multiplyWide(rest, power), divisor);
    distance -= part;
  }
  return Decimal::rounding(false, {0, rest}, std::min(a.exponent(), b.exponent()));
}

// The whole part of a magnitude over a power of two.
struct ShiftedDown {
  UInt256 value;
  bool isExact;
};

// Below 10^76.
constexpr int kMostShiftedBits = 252;

// Of a whole number whose exponent is not negative.
ShiftedDown shiftedDown(const Decimal& whole, int bits) noexcept {
  constexpr int kWordBits = 64;
  // 38 digits and 10^127 have 549 bits.
  constexpr int kWords = 9;
  std::uint64_t words[kWords + 5] = {detail::lowWord(whole.mantissa()),
                                     detail::highWord(whole.mantissa())};
  for (int left = whole.exponent(); left > 0; left -= detail::kLargestPowerOfTenInWord) {
    const int part = std::min(left, detail::kLargestPowerOfTenInWord);
    const std::uint64_t power = detail::lowWord(detail::powerOfTen(part));
    UInt128 carry = 0;
    for (int i = 0; i < kWords; ++i) {
      carry += UInt128{words[i]} * power;
      words[i] = detail::lowWord(carry);
      carry >>= kWordBits;
    }
  }
  const int skipped = std::min(bits / kWordBits, kWords);
  const int shift = bits % kWordBits;
  std::uint64_t cut = words[skipped] & ((std::uint64_t{1} << shift) - 1);
  for (int i = 0; i < skipped; ++i) cut |= words[i];
  const auto word = [&](int i) {
    const std::uint64_t* const at = words + skipped + i;
    return detail::lowWord(detail::joinWords(at[1], at[0]) >> shift);
  };
  return {{detail::joinWords(word(3), word(2)), detail::joinWords(word(1), word(0))}, cut == 0};
}

}  // namespace

Decimal MXDecimalNAN() noexcept { return Decimal::notANumber(); }
Decimal MXDecimalEpsilon() noexcept { return Decimal::of(1, -64); }
Decimal MXDecimalNegativeOne() noexcept { return Decimal::of(-1); }
Decimal MXDecimalZero() noexcept { return Decimal(); }
Decimal MXDecimalOne() noexcept { return Decimal::of(1); }
Decimal MXDecimalTwo() noexcept { return Decimal::of(2); }
Decimal MXDecimalPhi() noexcept {
  static const Decimal value = constant("1.6180339887498948482045868343656381177203091798058");
  return value;
}
Decimal MXDecimalPi() noexcept {
  static const Decimal value = constant("3.1415926535897932384626433832795028841971693993751");
  return value;
}
Decimal MXDecimalPi_2() noexcept {
  static const Decimal value = constant("1.5707963267948966192313216916397514420985846996876");
  return value;
}
Decimal MXDecimalPi_4() noexcept {
  static const Decimal value = constant("0.78539816339744830961566084581987572104929234984378");
  return value;
}
Decimal MXDecimalSqrt2() noexcept {
  static const Decimal value = constant("1.4142135623730950488016887242096980785696718753769");
  return value;
}
Decimal MXDecimalE() noexcept {
  static const Decimal value = constant("2.7182818284590452353602874713526624977572470937");
  return value;
}
Decimal MXDecimalLog2e() noexcept {
  static const Decimal value = constant("1.442695040888963407359924681001892137426645954153");
  return value;
}
Decimal MXDecimalLog10e() noexcept {
  static const Decimal value = constant("0.43429448190325182765112891891660508229439700580367");
  return value;
}
Decimal MXDecimalLn2() noexcept {
  static const Decimal value = constant("0.69314718055994530941723212145817656807550013436026");
  return value;
}
Decimal MXDecimalLn10() noexcept {
  static const Decimal value = constant("2.3025850929940456840179914546843642076011014886288");
  return value;
}
Decimal MXDecimal2Pi() noexcept {
  static const Decimal value = MXDecimalPi() * MXDecimalTwo();
  return value;
}

Decimal MXDecimalFromInteger(std::int64_t value) noexcept { return Decimal::fromInteger(value); }
Decimal MXDecimalFromDouble(double value) noexcept { return Decimal::fromDouble(value); }
std::uint64_t MXUIntegerFromDecimal(const Decimal& value) noexcept { return value.uint64Value(); }
float MXFloatFromDecimal(const Decimal& value) noexcept {
  return static_cast<float>(value.doubleValue());
}
double MXDoubleFromDecimal(const Decimal& value) noexcept { return value.doubleValue(); }

bool MXDecimalIsNegative(const Decimal& value) noexcept { return value.isNegative(); }
bool MXDecimalIsInteger(const Decimal& value) noexcept { return value.isInteger(); }
bool MXDecimalIsProbablyEqual(const Decimal& a, const Decimal& b) noexcept {
  const Decimal difference = a - b;
  return !difference.isNaN() && difference.absolute() < MXDecimalEpsilon();
}

void MXDecimalNegate(Decimal& value) noexcept { value = value.negated(); }
void MXDecimalInvert(Decimal& value) noexcept { value = MXDecimalInverse(value); }
Decimal MXDecimalAdd(const Decimal& a, const Decimal& b) noexcept { return a + b; }
Decimal MXDecimalSubtract(const Decimal& a, const Decimal& b) noexcept { return a - b; }
Decimal MXDecimalMultiply(const Decimal& a, const Decimal& b) noexcept { return a * b; }
Decimal MXDecimalDivide(const Decimal& a, const Decimal& b) noexcept { return a / b; }
Decimal MXDecimalAverage2(const Decimal& a, const Decimal& b) noexcept {
  return (a + b) / MXDecimalTwo();
}

Decimal MXDecimalMod(const Decimal& a, const Decimal& b) noexcept {
  if (a.isNaN() || b.isNaN() || b.isZero()) return Decimal::notANumber();
  const Decimal rest = remainderOfMagnitudes(a, b);
  if (rest.isZero()) return rest;
  const Decimal left = a.isNegative() == b.isNegative() ? rest : b.absolute() - rest;
  return b.isNegative() ? left.negated() : left;
}

Decimal MXDecimalMod2Pi(const Decimal& value) noexcept {
  const Decimal rest = MXDecimalMod(value, MXDecimal2Pi());
  return rest > MXDecimalPi() ? rest - MXDecimal2Pi() : rest;
}

Decimal MXDecimalAbsoluteValue(const Decimal& value) noexcept { return value.absolute(); }
Decimal MXDecimalSqrt(const Decimal& value) noexcept { return value.squareRoot(); }

Decimal MXDecimalNthRoot(const Decimal& value, const Decimal& root) noexcept {
  if (value.isNaN() || root.isNaN()) return Decimal::notANumber();
  return decimalOf(detail::wideRoot(value, root));
}

Decimal MXDecimalPower(const Decimal& base, const Decimal& exponent) noexcept {
  if (base.isNaN() || exponent.isNaN()) return Decimal::notANumber();
  if (exponent == MXDecimalTwo()) return base * base;
  return decimalOf(detail::widePower(base, exponent));
}

Decimal MXDecimalExp(const Decimal& value) noexcept {
  return value.isNaN() ? value : decimalOf(detail::wideExponential(detail::wideOf(value)));
}
Decimal MXDecimalLn(const Decimal& value) noexcept {
  return value.isNaN() ? value : decimalOf(detail::wideLogarithm(value));
}
Decimal MXDecimalLog2(const Decimal& value) noexcept {
  return logarithm(value, detail::kWideInverseLn2);
}
Decimal MXDecimalLog10(const Decimal& value) noexcept {
  return logarithm(value, detail::kWideInverseLn10);
}

Decimal MXDecimalInverse(const Decimal& value) noexcept { return MXDecimalOne() / value; }

Decimal MXDecimalFactorial(const Decimal& value) noexcept {
  if (value.isNaN()) return value;
  const Decimal result = decimalOf(detail::wideFactorial(value));
  return value.isInteger() ? result.rounded(0, DecimalRounding::halfToEven) : result;
}

Decimal MXDecimalLeftShift(const Decimal& value, const Decimal& count) noexcept {
  // Twice as many bits as the greatest decimal has.
  constexpr std::int64_t kFar = 1100;
  if (value.isNaN() || count.isNaN()) return Decimal::notANumber();
  const Decimal whole = value.rounded(0, DecimalRounding::towardZero);
  const std::int64_t bits = std::min(count.int64Value(), kFar);
  if (whole.isZero() || bits < 0) return Decimal();
  return detail::decimalOf(detail::wideOf(whole).timesPowerOfTwo(static_cast<int>(bits)));
}

Decimal MXDecimalRightShift(const Decimal& value, const Decimal& count) noexcept {
  constexpr std::int64_t kFar = 1100;
  if (value.isNaN() || count.isNaN()) return Decimal::notANumber();
  const Decimal whole = value.rounded(0, DecimalRounding::towardZero);
  const std::int64_t bits = count.int64Value();
  if (whole.isZero()) return whole;
  if (bits < 0 || bits >= kFar) return whole.isNegative() ? MXDecimalNegativeOne() : Decimal();
  const WideFloat shifted = detail::wideOf(whole).timesPowerOfTwo(-static_cast<int>(bits));
  // The last of 38 digits is far above the point.
  if (shifted.exponent > kMostShiftedBits) return detail::decimalOf(shifted);
  const ShiftedDown left = shiftedDown(whole, static_cast<int>(bits));
  const bool isBelow = whole.isNegative() && !left.isExact;
  return Decimal::rounding(whole.isNegative(), left.value + UInt256{0, isBelow ? 1U : 0U}, 0);
}

Decimal MXDecimalSin(const Decimal& angle) noexcept { return ofAngle(Builtin::sin, angle); }
Decimal MXDecimalCos(const Decimal& angle) noexcept { return ofAngle(Builtin::cos, angle); }
Decimal MXDecimalTan(const Decimal& angle) noexcept { return ofAngle(Builtin::tan, angle); }
Decimal MXDecimalCsc(const Decimal& angle) noexcept { return ofAngle(Builtin::csc, angle); }
Decimal MXDecimalSec(const Decimal& angle) noexcept { return ofAngle(Builtin::sec, angle); }
Decimal MXDecimalCot(const Decimal& angle) noexcept { return ofAngle(Builtin::cotan, angle); }

Decimal MXDecimalAsin(const Decimal& value) noexcept {
  return computed(detail::wideArc, Builtin::asin, value);
}
Decimal MXDecimalAcos(const Decimal& value) noexcept {
  return computed(detail::wideArc, Builtin::acos, value);
}
Decimal MXDecimalAtan(const Decimal& value) noexcept {
  return computed(detail::wideArc, Builtin::atan, value);
}
Decimal MXDecimalAcsc(const Decimal& value) noexcept {
  return computed(detail::wideArc, Builtin::acsc, value);
}
Decimal MXDecimalAsec(const Decimal& value) noexcept {
  return computed(detail::wideArc, Builtin::asec, value);
}
Decimal MXDecimalAcot(const Decimal& value) noexcept {
  return computed(detail::wideArc, Builtin::acotan, value);
}

Decimal MXDecimalSinh(const Decimal& value) noexcept {
  return computed(detail::wideHyperbolic, Builtin::sinh, value);
}
Decimal MXDecimalCosh(const Decimal& value) noexcept {
  return computed(detail::wideHyperbolic, Builtin::cosh, value);
}
Decimal MXDecimalTanh(const Decimal& value) noexcept {
  return computed(detail::wideHyperbolic, Builtin::tanh, value);
}
Decimal MXDecimalCsch(const Decimal& value) noexcept {
  return computed(detail::wideHyperbolic, Builtin::csch, value);
}
Decimal MXDecimalSech(const Decimal& value) noexcept {
  return computed(detail::wideHyperbolic, Builtin::sech, value);
}
Decimal MXDecimalCoth(const Decimal& value) noexcept {
  return computed(detail::wideHyperbolic, Builtin::cotanh, value);
}

Decimal MXDecimalAsinh(const Decimal& value) noexcept {
  return computed(detail::wideArea, Builtin::asinh, value);
}
Decimal MXDecimalAcosh(const Decimal& value) noexcept {
  return computed(detail::wideArea, Builtin::acosh, value);
}
Decimal MXDecimalAtanh(const Decimal& value) noexcept {
  return computed(detail::wideArea, Builtin::atanh, value);
}
Decimal MXDecimalAcsch(const Decimal& value) noexcept {
  return computed(detail::wideArea, Builtin::acsch, value);
}
Decimal MXDecimalAsech(const Decimal& value) noexcept {
  return computed(detail::wideArea, Builtin::asech, value);
}
Decimal MXDecimalAcoth(const Decimal& value) noexcept {
  return computed(detail::wideArea, Builtin::acotanh, value);
}

}  // namespace tarnkit
