#include "tarnkit/math/precision/AngleReduction.h"

#include <algorithm>
#include <cmath>

#include "tarnkit/math/precision/PrecisionTables.h"
#include "tarnkit/math/precision/WideDecimal.h"
#include "tarnkit/math/precision/WideExponential.h"
#include "tarnkit/platform/numbers/PowersOfTen.h"

namespace tarnkit::detail {

namespace {

constexpr int kWordBits = 64;
constexpr int kTwoOverPiCount = 16;
// 38 digits and 10^127 have 549 bits.
constexpr int kMaximumWords = 9;
constexpr int kFractionWords = 6;

/// A large or exact number in words, `fractionWords` of them behind the point.
struct LongNumber {
  std::uint64_t words[kMaximumWords] = {};
  int count = 0;
  int fractionWords = 0;

  void multiply(std::uint64_t factor) noexcept {
    std::uint64_t carry = 0;
    for (int i = 0; i < count; ++i) {
      const UInt128 next = UInt128{words[i]} * factor + carry;
      words[i] = lowWord(next);
      carry = highWord(next);
    }
    if (carry != 0) words[count++] = carry;
  }
  void divide(std::uint64_t divisor) noexcept {
    std::uint64_t rest = 0;
    for (int i = count - 1; i >= 0; --i) {
      const UInt128 next = joinWords(rest, words[i]);
      words[i] = lowWord(next / divisor);
      rest = lowWord(next % divisor);
    }
  }
};

// A magnitude of at least 1/2, so that no more than 39 digits stand behind its point.
LongNumber longNumberOf(const Decimal& value) noexcept {
  LongNumber number;
  int exponent = value.exponent();
  if (exponent < 0) number.fractionWords = kFractionWords;
  number.count = number.fractionWords + 2;
  number.words[number.fractionWords] = lowWord(value.mantissa());
  number.words[number.fractionWords + 1] = highWord(value.mantissa());
  while (exponent != 0) {
    const int part = std::clamp(exponent, -kLargestPowerOfTenInWord, kLargestPowerOfTenInWord);
    const std::uint64_t power = lowWord(powerOfTen(std::abs(part)));
    if (part > 0) {
      number.multiply(power);
    } else {
      number.divide(power);
    }
    exponent -= part;
  }
  return number;
}

// Angle × 2/π in full, of which only the last bits before the point and the words behind it count.
ReducedAngle reduceInFull(const Decimal& angle, bool half) noexcept {
  const LongNumber number = longNumberOf(angle);
  std::uint64_t product[kMaximumWords + kTwoOverPiCount] = {};
  for (int i = 0; i < number.count; ++i) {
    std::uint64_t carry = 0;
    for (int k = 0; k < kTwoOverPiCount; ++k) {
      const UInt128 next = UInt128{number.words[i]} * kTwoOverPiWords[k] + product[i + k] + carry;
      product[i + k] = lowWord(next);
      carry = highWord(next);
    }
    product[i + kTwoOverPiCount] = carry;
  }
  const int point = number.fractionWords + kTwoOverPiCount;
  std::uint64_t words[kFractionWords + 1];
  for (int i = 0; i <= kFractionWords; ++i) words[i] = product[point - kFractionWords + i];
  if (half) {
    for (int i = 0; i < kFractionWords; ++i) {
      words[i] = (words[i] >> 1) | (words[i + 1] << (kWordBits - 1));
    }
    words[kFractionWords] >>= 1;
  }
  auto quarters = static_cast<int>(words[kFractionWords] & 3);
  const bool isBelow = words[kFractionWords - 1] >> (kWordBits - 1) != 0;
  if (isBelow) {
    ++quarters;
    for (int i = 0; i < kFractionWords; ++i) words[i] = ~words[i];
  }
  int top = kFractionWords - 1;
  while (top > 3 && words[top] == 0) --top;
  const std::uint64_t leading[4] = {words[top - 3], words[top - 2], words[top - 1], words[top]};
  WideFloat rest = WideFloat::ofWords(leading, isBelow);
  rest.exponent -= kWordBits * (kFractionWords - top);
  return {quarters & 3, rest * kWideHalfPi};
}

// Of a positive angle.
ReducedAngle reducePositive(const Decimal& angle, bool half) noexcept {
  constexpr double kHalfPi = 1.57079632679489661923;
  constexpr int kFarExponent = 16;
  constexpr int kNearExponent = -20;
  WideFloat value = wideOf(angle);
  if (half) --value.exponent;
  if (value.exponent < 0) return {0, value};
  if (value.exponent <= kFarExponent) {
    const auto quarters = static_cast<std::int64_t>(std::floor(value.toDouble() / kHalfPi + 0.5));
    const WideFloat rest = minusMultiple(value, quarters, kHalfPiWords);
    if (rest.exponent > kNearExponent) return {static_cast<int>(quarters & 3), rest};
  }
  return reduceInFull(angle, half);
}

ReducedAngle mirrored(ReducedAngle reduced, bool mirror) noexcept {
  if (!mirror) return reduced;
  return {(4 - reduced.quarters) & 3, reduced.rest.negated()};
}

}  // namespace

ReducedAngle reduceRadians(const Decimal& angle, bool half) noexcept {
  return mirrored(reducePositive(angle.absolute(), half), angle.isNegative());
}

ReducedAngle reduceDegrees(const Decimal& angle, bool half) noexcept {
  const int turn = half ? 720 : 360;
  const int quarter = turn / 4;
  // angle mod turn: the remainder of the mantissa where the exponent is positive, otherwise that of
  // the whole part and the fraction that is left as it is.
  Decimal rest = angle.absolute();
  if (rest.exponent() >= 0) {
    UInt128 remainder = rest.mantissa() % static_cast<unsigned>(turn);
    for (int i = 0; i < rest.exponent(); ++i)
      remainder = remainder * 10 % static_cast<unsigned>(turn);
    rest = Decimal::fromUnsigned(lowWord(remainder));
  } else {
    const Decimal whole = rest.rounded(0, DecimalRounding::towardZero);
    const Decimal turns =
        (whole / Decimal::of(turn)).rounded(0, DecimalRounding::towardZero) * Decimal::of(turn);
    rest = rest - turns;
    if (rest.isNegative()) rest = rest + Decimal::of(turn);
  }
  const auto quarters =
      static_cast<int>(((rest + Decimal::of(quarter / 2)) / Decimal::of(quarter)).int64Value());
  WideFloat part =
      wideDifference(rest, Decimal::of(std::int64_t{quarter} * quarters)) * kWideDegree;
  if (half && !part.isZero()) --part.exponent;
  return mirrored({quarters & 3, part}, angle.isNegative());
}

}  // namespace tarnkit::detail
