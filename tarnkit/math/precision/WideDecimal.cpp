#include "tarnkit/math/precision/WideDecimal.h"

#include <algorithm>

#include "tarnkit/math/precision/PrecisionTables.h"
#include "tarnkit/platform/numbers/PowersOfTen.h"

namespace tarnkit::detail {

namespace {

constexpr int kWordBits = 64;
// Results outside these powers of two are outside the decimals.
constexpr int kGreatestExponent = 560;
constexpr int kLeastExponent = -440;
// What a result is rounded to first.
constexpr int kFirstDigits = 47;

int floorOfQuotient(int value, int divisor) noexcept {
  return value >= 0 ? value / divisor : -((divisor - 1 - value) / divisor);
}

// value × 10^exponent; the value has at most 128 bits.
WideFloat scaled(const UInt256& value, int exponent, bool negative) noexcept {
  const WideFloat whole = WideFloat::of(value, negative);
  const int group = floorOfQuotient(exponent, kLargestPowerOfTenInWord);
  const WideFloat& power = kPowersOfTenTo19[group + kPowersOfTenTo19Zero];
  return group == 0 ? whole : whole * power;
}

int remainderOf(int exponent) noexcept {
  return exponent - floorOfQuotient(exponent, kLargestPowerOfTenInWord) * kLargestPowerOfTenInWord;
}

}  // namespace

WideFloat wideOf(const Decimal& value) noexcept {
  const int exponent = value.exponent();
  return scaled(multiplyWide(value.mantissa(), powerOfTen(remainderOf(exponent))), exponent,
                value.isNegative());
}

WideFloat wideDifference(const Decimal& a, const Decimal& b) noexcept {
  if (a.isZero()) return wideOf(b).negated();
  if (b.isZero()) return wideOf(a);
  const Decimal& upper = a.exponent() >= b.exponent() ? a : b;
  const Decimal& lower = a.exponent() >= b.exponent() ? b : a;
  const int distance = upper.exponent() - lower.exponent();
  // So far apart and of one sign, the lower one is less than a tenth of the upper one.
  if (distance > kLargestPowerOfTen || a.isNegative() != b.isNegative()) {
    return wideOf(a) - wideOf(b);
  }
  const UInt256 first = multiplyWide(upper.mantissa(), powerOfTen(distance));
  const UInt256 second{0, lower.mantissa()};
  const bool isLower = first < second;
  const UInt256 difference = isLower ? second - first : first - second;
  const bool negative = (isLower == (&upper == &a)) != a.isNegative();
  const WideFloat whole = WideFloat::of(difference, negative);
  const int exponent = lower.exponent();
  return whole * scaled({0, powerOfTen(remainderOf(exponent))}, exponent, false);
}

Decimal decimalOf(const WideFloat& value) noexcept {
  if (value.isZero() || value.exponent < kLeastExponent) return Decimal();
  if (value.exponent > kGreatestExponent) return Decimal::notANumber();
  constexpr int kLog10Of2 = 1262611;
  constexpr int kLog10Shift = 22;
  const int digits = (((value.exponent - 1) * kLog10Of2) >> kLog10Shift) + 1;
  const int exponent = digits - kFirstDigits;
  const WideFloat power =
      scaled({0, powerOfTen(remainderOf(-exponent))}, -exponent, value.negative);
  const WideFloat shifted = value.absolute() * power.absolute();
  // 153 to 159 bits of the 192 stand before the point.
  const int count = kWordBits - (shifted.exponent - 2 * kWordBits);
  UInt256 whole{shifted.words[2] >> count,
                joinWords((shifted.words[1] >> count) | (shifted.words[2] << (kWordBits - count)),
                          (shifted.words[0] >> count) | (shifted.words[1] << (kWordBits - count)))};
  if ((shifted.words[0] >> (count - 1) & 1) != 0) whole = whole + UInt256{0, 1};
  return Decimal::rounding(value.negative, whole, exponent).compact();
}

}  // namespace tarnkit::detail
