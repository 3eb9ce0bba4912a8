#include "tarnkit/math/precision/WideExponential.h"

#include <algorithm>
#include <cmath>

#include "tarnkit/math/precision/PrecisionTables.h"

namespace tarnkit::detail {

namespace {

constexpr int kExponentialTerms = 18;
constexpr int kStepBits = 7;
constexpr int kSineTerms = 17;
// Below 2^-8 the terms of a series do, above it the differences of exponentials are good enough.
constexpr int kSmallExponent = -7;

// 2 atanh(ratio), the ratio below 2^-6.9.
WideFloat twiceHyperbolicArcTangent(const WideFloat& ratio, int terms) noexcept {
  const WideFraction square = fractionOf(ratio * ratio);
  const WideFraction rest = square * seriesOf(kInverseOdds, 1, terms, 1, square, false);
  return (ratio + ratio * WideFloat::of(rest)).timesPowerOfTwo(1);
}

}  // namespace

WideFloat minusMultiple(const WideFloat& value, std::int64_t multiple,
                        const std::uint64_t (&words)[5]) noexcept {
  const bool negative = multiple < 0;
  const std::uint64_t count =
      negative ? 0 - static_cast<std::uint64_t>(multiple) : static_cast<std::uint64_t>(multiple);
  std::uint64_t product[5];
  std::uint64_t carry = 0;
  for (int i = 0; i < 5; ++i) {
    const UInt128 next = UInt128{words[i]} * count + carry;
    product[i] = lowWord(next);
    carry = highWord(next);
  }
  const std::uint64_t kept[4] = {product[1], product[2], product[3], product[4]};
  return value - WideFloat::ofWords(kept, negative);
}

WideFloat exponential(const WideFloat& value) noexcept {
  const WideFloat one = WideFloat::of(1);
  if (value.isZero()) return one;
  auto powers = static_cast<std::int64_t>(std::floor(value.toDouble() / 0.69314718055994530942));
  WideFloat rest = minusMultiple(value, powers, kLn2Words);
  if (rest.negative) {
    --powers;
    rest = rest + kWideLn2;
  }
  // A rest just above ln 2 belongs to the last step.
  WideFraction part = fractionOf(rest);
  const auto step =
      std::min<std::uint64_t>(part.words[2] >> (64 - kStepBits), kExponentialCount - 1);
  part.words[2] -= step << (64 - kStepBits);
  const WideFraction more =
      part + part * part * seriesOf(kInverseFactorials, 2, kExponentialTerms, 1, part, false);
  const WideFraction& half = kHalfExponentials[step];
  const WideFloat sum = WideFloat::of(half) + WideFloat::of(half * more);
  return sum.timesPowerOfTwo(static_cast<int>(powers) + 1);
}

WideFloat logarithmOfOnePlus(const WideFloat& value) noexcept {
  constexpr int kNearExponent = -6;
  constexpr int kTerms = 13;
  if (value.isZero()) return value;
  if (value.exponent > kNearExponent) return logarithm(WideFloat::of(1) + value);
  return twiceHyperbolicArcTangent(value / (WideFloat::of(2) + value), kTerms);
}

WideFloat logarithm(const WideFloat& value) noexcept {
  constexpr int kTerms = 11;
  constexpr int kFactorBits = 8;
  const WideFloat fromOne = value - WideFloat::of(1);
  if (fromOne.exponent <= -6) return logarithmOfOnePlus(fromOne);
  const auto& words = value.words;
  const auto& step = kLogarithmSteps[(words[2] >> (63 - kStepBits)) & (kLogarithmStepCount - 1)];
  // words × factor / 2^200 - 1
  std::uint64_t product[4];
  std::uint64_t carry = 0;
  for (int i = 0; i < 3; ++i) {
    const UInt128 next = UInt128{words[i]} * step.factor + carry;
    product[i] = lowWord(next);
    carry = highWord(next);
  }
  product[3] = carry;
  const bool isBelow = carry < (std::uint64_t{1} << kFactorBits);
  if (isBelow) {
    std::uint64_t borrow = 0;
    for (int i = 0; i < 3; ++i) {
      const UInt128 next = UInt128{0} - product[i] - borrow;
      product[i] = lowWord(next);
      borrow = highWord(next) & 1;
    }
    product[3] = (std::uint64_t{1} << kFactorBits) - product[3] - borrow;
  } else {
    product[3] -= std::uint64_t{1} << kFactorBits;
  }
  const WideFloat part = WideFloat::ofWords(product, isBelow).timesPowerOfTwo(-kFactorBits);
  const WideFloat whole = WideFloat::of(value.exponent) * kWideLn2 - step.logarithm;
  if (part.isZero()) return whole;
  return whole + twiceHyperbolicArcTangent(part / (WideFloat::of(2) + part), kTerms);
}

WideFloat hyperbolicSine(const WideFloat& value) noexcept {
  if (value.isZero()) return value;
  if (value.exponent <= kSmallExponent) {
    const WideFraction square = fractionOf(value * value);
    const WideFraction rest =
        square * seriesOf(kInverseFactorials, 3, kSineTerms, 2, square, false);
    return value + value * WideFloat::of(rest);
  }
  const WideFloat power = exponential(value);
  return (power - WideFloat::of(1) / power).timesPowerOfTwo(-1);
}

WideFloat hyperbolicCosine(const WideFloat& value) noexcept {
  const WideFloat power = exponential(value);
  return (power + WideFloat::of(1) / power).timesPowerOfTwo(-1);
}

}  // namespace tarnkit::detail
