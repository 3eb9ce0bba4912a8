#include "tarnkit/platform/numbers/Decimal.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

#include "tarnkit/platform/numbers/PowersOfTen.h"

namespace tarnkit {

using detail::bitWidth;
using detail::digitCount;
using detail::divideByPowerOfTen;
using detail::highWord;
using detail::lowWord;
using detail::multiplyWide;
using detail::powerOfTen;
using detail::UInt128;
using detail::UInt256;

namespace {

/// A quotient and what was cut off it.
struct Cut {
  UInt128 quotient;
  int half;      // the part that was cut off against a half: -1, 0, 1
  bool isExact;  // nothing was cut off
};

[[gnu::always_inline]] inline Cut cutDigits(const UInt256& value, int count, bool isMore) noexcept {
  if (count == 0) return {value.low, -1, !isMore};
  const detail::PowerOfTen& power = detail::kPowersOfTen[static_cast<std::size_t>(count)];
  UInt128 rest;
  const UInt128 quotient = detail::divideByPower(value, power, rest);
  const UInt128 half = power.divisor >> 1;
  const int against = rest > half || (rest == half && isMore) ? 1 : rest == half ? 0 : -1;
  return {quotient, against, rest == 0 && !isMore};
}

UInt128 roundedToEven(const Cut& cut) noexcept {
  const bool up = cut.half > 0 || (cut.half == 0 && (cut.quotient & 1) != 0);
  return cut.quotient + (up ? 1U : 0U);
}

/// A product of long mantissas without its last digits.
struct CutProduct {
  UInt128 rounded;  // to 38 digits, or 10^38
  int excess;       // how many digits were cut off
  bool isCertain;
};

// The quotient and the first 64 bits of what follows its point come from one multiplication with
// the power's reciprocal, of which only the three upper words are computed: the digits decide no
// branch. What follows the point is too small by less than nine units, so it is not certain on
// which side of a half it lies when it is that near to one. The product has more than 192 bits and
// less than 77 digits.
[[gnu::always_inline]] inline CutProduct cutLongProduct(const UInt256& product) noexcept {
  const int shift = std::countl_zero(highWord(product.high));  // 3 at least
  const int least = detail::decimalDigitsOfBits(255 - shift) + 1;
  const UInt256& limit = detail::kWidePowersOfTen[static_cast<std::size_t>(least)];
  const int excess = least + (product < limit ? 0 : 1) - Decimal::kDigits;
  const detail::ReciprocalOfPower& power =
      detail::kReciprocalsOfPowers[static_cast<std::size_t>(excess - detail::kLeastReciprocal)];

  const int rest = 64 - shift;
  const std::uint64_t high = highWord(product.high) << shift | lowWord(product.high) >> rest;
  const std::uint64_t middle = lowWord(product.high) << shift | highWord(product.low) >> rest;
  const std::uint64_t low = highWord(product.low) << shift | lowWord(product.low) >> rest;
  const UInt128 first = UInt128{high} * power.middle;
  const UInt128 second = UInt128{middle} * power.high;
  const UInt128 fourth =
      UInt128{lowWord(first)} + lowWord(second) + highWord(UInt128{high} * power.low) +
      highWord(UInt128{middle} * power.middle) + highWord(UInt128{low} * power.high);
  const UInt128 upper =
      UInt128{high} * power.high + highWord(first) + highWord(second) + highWord(fourth);

  // From 0 to 5, since the quotient has 38 digits.
  const int surplus = power.width + shift - 129;
  const int carried = 63 - surplus;
  const UInt128 quotient = detail::joinWords(
      highWord(upper) >> surplus, lowWord(upper) >> surplus | highWord(upper) << 1 << carried);
  const std::uint64_t fraction = lowWord(fourth) >> surplus | lowWord(upper) << 1 << carried;
  constexpr std::uint64_t kUncertain = 16;
  return {quotient + (fraction >> 63), excess, (fraction + kUncertain) >> 63 == fraction >> 63};
}

}  // namespace

// The mantissa has at most 38 digits, or is 10^38; the exponent is at least the least one.
Decimal Decimal::fitted(bool negative, UInt128 mantissa, int exponent) noexcept {
  if (mantissa == kMantissaLimit) {
    mantissa /= 10;
    ++exponent;
  }
  if (mantissa == 0) return Decimal();
  if (exponent > kMaximumExponent) {
    const int padding = exponent - kMaximumExponent;
    if (padding > kDigits - digitCount(mantissa)) return notANumber();
    mantissa *= powerOfTen(padding);
    exponent = kMaximumExponent;
  }
  return Decimal(negative, mantissa, exponent);
}

Decimal Decimal::rounding(bool negative, const UInt256& mantissa, int exponent,
                          bool isMore) noexcept {
  if (mantissa == UInt256{}) return Decimal();
  const int digits = digitCount(mantissa);
  int excess = std::max(digits - kDigits, 0);
  const int missing = kMinimumExponent - exponent;
  if (missing > digits) return Decimal();
  Cut cut = cutDigits(mantissa, excess, isMore);
  if (missing > excess) {
    // What was cut off first is less than 1 of the rest, so it matters only as more than nothing.
    cut = cutDigits({0, cut.quotient}, missing - excess, !cut.isExact);
    excess = missing;
  }
  return fitted(negative, roundedToEven(cut), exponent + excess);
}

Decimal Decimal::carried(bool negative, UInt128 mantissa, int exponent) noexcept {
  return fitted(negative, roundedToEven(cutDigits({0, mantissa}, 1, false)), exponent + 1);
}

Decimal Decimal::sum(const Decimal& a, const Decimal& b, bool bIsNegative) noexcept {
  if (a.isNaN_ || b.isNaN_) return notANumber();
  if (b.mantissa_ == 0) return a;
  if (a.mantissa_ == 0) return Decimal(bIsNegative, b.mantissa_, b.exponent_);
  const bool aIsUpper = a.exponent_ >= b.exponent_;
  const Decimal& upper = aIsUpper ? a : b;
  const Decimal& lower = aIsUpper ? b : a;
  const bool upperIsNegative = aIsUpper ? a.negative_ : bIsNegative;
  const bool lowerIsNegative = aIsUpper ? bIsNegative : a.negative_;
  int distance = upper.exponent_ - lower.exponent_;
  UInt128 mantissa = upper.mantissa_;
  if (distance > kDigits) {
    const int room = std::min(kDigits - digitCount(mantissa), distance);
    mantissa *= powerOfTen(room);
    distance -= room;
    // The lower one is less than a tenth of the last digit, which is a whole one of the next when
    // it is taken from a power of ten.
    if (distance == kDigits + 1 && mantissa == powerOfTen(kDigits - 1) &&
        upperIsNegative != lowerIsNegative) {
      mantissa *= 10;
      --distance;
    } else if (distance > kDigits) {
      return Decimal(upperIsNegative, mantissa, lower.exponent_ + distance);
    }
  }
  UInt256 scaled{0, mantissa};
  if (distance > 0) scaled = multiplyWide(mantissa, powerOfTen(distance));
  const UInt256 other{0, lower.mantissa_};
  if (upperIsNegative == lowerIsNegative) {
    scaled = scaled + other;
  } else if (scaled < other) {
    scaled = other - scaled;
    return rounding(lowerIsNegative, scaled, lower.exponent_);
  } else {
    scaled = scaled - other;
  }
  if (scaled.high == 0 && scaled.low < kMantissaLimit) {
    return Decimal(upperIsNegative, scaled.low, lower.exponent_);
  }
  return rounding(upperIsNegative, scaled, lower.exponent_);
}

Decimal operator*(const Decimal& a, const Decimal& b) noexcept {
  if (a.isNaN_ || b.isNaN_) return Decimal::notANumber();
  const bool negative = a.negative_ != b.negative_;
  const int exponent = a.exponent_ + b.exponent_;
  const UInt256 product = multiplyWide(a.mantissa_, b.mantissa_);
  if (product.high == 0 && product.low < Decimal::kMantissaLimit &&
      exponent >= Decimal::kMinimumExponent && exponent <= Decimal::kMaximumExponent) {
    return Decimal(negative, product.low, exponent);
  }
  if (highWord(product.high) != 0) {
    const CutProduct cut = cutLongProduct(product);
    const int fitting = exponent + cut.excess;
    if (cut.isCertain && fitting >= Decimal::kMinimumExponent &&
        fitting <= Decimal::kMaximumExponent && cut.rounded < Decimal::kMantissaLimit) {
      return Decimal(negative, cut.rounded, fitting);
    }
  }
  return Decimal::rounding(negative, product, exponent);
}

Decimal operator/(const Decimal& a, const Decimal& b) noexcept {
  if (a.isNaN_ || b.isNaN_ || b.mantissa_ == 0) return Decimal::notANumber();
  if (a.mantissa_ == 0) return a;
  const bool negative = a.negative_ != b.negative_;
  const int aRoom = Decimal::kDigits - digitCount(a.mantissa_);
  const int bRoom = Decimal::kDigits - digitCount(b.mantissa_);
  const UInt128 numerator = a.mantissa_ * powerOfTen(aRoom);
  const UInt128 denominator = b.mantissa_ * powerOfTen(bRoom);
  // So many that the quotient has just 38 digits.
  const int digits = numerator < denominator ? Decimal::kDigits : Decimal::kDigits - 1;
  const int exponent = a.exponent_ - b.exponent_ - aRoom + bRoom - digits;
  const int shift = 128 - bitWidth(denominator);
  const UInt256 dividend = multiplyWide(numerator, powerOfTen(digits)) << shift;
  const detail::TwoWordDivisor divisor(denominator << shift);
  UInt128 rest = dividend.high;
  const std::uint64_t high = divisor.divide(rest, highWord(dividend.low));
  const std::uint64_t low = divisor.divide(rest, lowWord(dividend.low));
  const UInt128 quotient = detail::joinWords(high, low);
  rest >>= shift;
  if (rest == 0) {
    return Decimal::rounding(negative, {0, quotient}, exponent).compact();
  }
  if (exponent < Decimal::kMinimumExponent) {
    return Decimal::rounding(negative, {0, quotient}, exponent, true);
  }
  const UInt128 missing = denominator - rest;
  const bool up = rest > missing || (rest == missing && (quotient & 1) != 0);
  return Decimal::fitted(negative, quotient + (up ? 1U : 0U), exponent);
}

int Decimal::compare(const Decimal& a, const Decimal& b) noexcept {
  if (a.isNaN_ || b.isNaN_) return a.isNaN_ == b.isNaN_ ? 0 : a.isNaN_ ? -1 : 1;
  if (a.negative_ != b.negative_) return a.negative_ ? -1 : 1;
  if (a.mantissa_ == 0 || b.mantissa_ == 0) {
    if (a.mantissa_ == b.mantissa_) return 0;
    return (a.mantissa_ == 0) == a.negative_ ? 1 : a.mantissa_ == 0 ? -1 : 1;
  }
  const int greater = a.negative_ ? -1 : 1;
  UInt128 first = a.mantissa_;
  UInt128 second = b.mantissa_;
  if (a.exponent_ != b.exponent_) {
    const int distance = a.magnitude() - b.magnitude();
    if (distance != 0) return distance > 0 ? greater : -greater;
    first *= powerOfTen(std::max(a.exponent_ - b.exponent_, 0));
    second *= powerOfTen(std::max(b.exponent_ - a.exponent_, 0));
  }
  if (first == second) return 0;
  return first > second ? greater : -greater;
}

int Decimal::magnitude() const noexcept { return exponent_ + digitCount(mantissa_) - 1; }

bool Decimal::isInteger() const noexcept {
  if (isNaN_) return false;
  return exponent_ >= 0 || rounded(0, DecimalRounding::towardZero) == *this;
}

Decimal Decimal::negated() const noexcept {
  Decimal other = *this;
  other.negative_ = !negative_ && mantissa_ != 0;
  return other;
}

Decimal Decimal::absolute() const noexcept {
  Decimal other = *this;
  other.negative_ = false;
  return other;
}

Decimal Decimal::rounded(int places, DecimalRounding mode) const noexcept {
  const int count = -places - exponent_;
  if (isNaN_ || mantissa_ == 0 || count <= 0) return *this;
  const Cut cut = count > kDigits ? Cut{0, -1, false} : cutDigits({0, mantissa_}, count, false);
  UInt128 mantissa = cut.quotient;
  switch (mode) {
    case DecimalRounding::halfToEven:
      mantissa = roundedToEven(cut);
      break;
    case DecimalRounding::down:
      if (negative_ && !cut.isExact) ++mantissa;
      break;
    case DecimalRounding::up:
      if (!negative_ && !cut.isExact) ++mantissa;
      break;
    case DecimalRounding::towardZero:
      break;
  }
  if (mantissa == 0) return Decimal();
  return fitted(negative_, mantissa, -places);
}

Decimal Decimal::timesPowerOfTen(int power) const noexcept {
  if (isNaN_ || mantissa_ == 0) return *this;
  constexpr int kFar = 1000;
  return rounding(negative_, {0, mantissa_}, exponent_ + std::clamp(power, -kFar, kFar));
}

Decimal Decimal::compact() const noexcept {
  Decimal result = *this;
  constexpr int kSteps[] = {32, 16, 8, 4, 2, 1};
  for (const int step : kSteps) {
    // As many zeros stand in binary.
    const UInt128 zeros = (UInt128{1} << step) - 1;
    if (result.mantissa_ == 0 || (result.mantissa_ & zeros) != 0) continue;
    if (result.exponent_ + step > kMaximumExponent) continue;
    UInt128 rest;
    const UInt128 quotient = divideByPowerOfTen({0, result.mantissa_}, step, rest);
    if (rest == 0) result = Decimal(negative_, quotient, result.exponent_ + step);
  }
  return result;
}

std::int64_t Decimal::int64Value() const noexcept {
  using Limits = std::numeric_limits<std::int64_t>;
  const Decimal limit = fromUnsigned(std::uint64_t{1} << 63);
  if (negative_ ? negated() >= limit : *this >= limit) {
    return negative_ ? Limits::min() : Limits::max();
  }
  const auto value = static_cast<std::int64_t>(absolute().uint64Value());
  return negative_ ? -value : value;
}

std::uint64_t Decimal::uint64Value() const noexcept {
  if (isNaN_ || negative_ || mantissa_ == 0) return 0;
  if (magnitude() > detail::kLargestPowerOfTenInWord) return ~std::uint64_t{0};
  const Decimal whole = rounded(0, DecimalRounding::towardZero);
  const UInt128 value = whole.mantissa_ * powerOfTen(std::max(int{whole.exponent_}, 0));
  return highWord(value) != 0 ? ~std::uint64_t{0} : lowWord(value);
}

}  // namespace tarnkit
