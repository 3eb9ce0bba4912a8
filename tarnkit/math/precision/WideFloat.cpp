#include "tarnkit/math/precision/WideFloat.h"

#include <algorithm>
#include <cmath>

namespace tarnkit::detail {

namespace {

constexpr int kWordBits = 64;
constexpr int kBits = 192;

/// Adds with a carry in and out.
std::uint64_t addWords(std::uint64_t a, std::uint64_t b, std::uint64_t& carry) noexcept {
  const UInt128 sum = UInt128{a} + b + carry;
  carry = highWord(sum);
  return lowWord(sum);
}

std::uint64_t subtractWords(std::uint64_t a, std::uint64_t b, std::uint64_t& borrow) noexcept {
  const UInt128 difference = UInt128{a} - b - borrow;
  borrow = highWord(difference) & 1;
  return lowWord(difference);
}

/// The three upper words of the product of three by three; what the lowest product would add is
/// left out.
void multiplyUpper(const std::uint64_t* a, const std::uint64_t* b, std::uint64_t* result,
                   std::uint64_t& below) noexcept {
  const UInt128 p01 = UInt128{a[0]} * b[1];
  const UInt128 p10 = UInt128{a[1]} * b[0];
  const UInt128 p02 = UInt128{a[0]} * b[2];
  const UInt128 p11 = UInt128{a[1]} * b[1];
  const UInt128 p20 = UInt128{a[2]} * b[0];
  const UInt128 p12 = UInt128{a[1]} * b[2];
  const UInt128 p21 = UInt128{a[2]} * b[1];
  const UInt128 p22 = UInt128{a[2]} * b[2];
  const UInt128 second =
      UInt128{highWord(p01)} + highWord(p10) + lowWord(p02) + lowWord(p11) + lowWord(p20);
  const UInt128 third = UInt128{highWord(p02)} + highWord(p11) + highWord(p20) + lowWord(p12) +
                        lowWord(p21) + highWord(second);
  const UInt128 fourth = UInt128{highWord(p12)} + highWord(p21) + lowWord(p22) + highWord(third);
  below = lowWord(second);
  result[0] = lowWord(third);
  result[1] = lowWord(fourth);
  result[2] = highWord(p22) + highWord(fourth);
}

void shiftRight(std::uint64_t (&words)[3], int count) noexcept {
  while (count >= kWordBits) {
    words[0] = words[1];
    words[1] = words[2];
    words[2] = 0;
    count -= kWordBits;
  }
  if (count == 0) return;
  const int rest = kWordBits - count;
  words[0] = (words[0] >> count) | (words[1] << rest);
  words[1] = (words[1] >> count) | (words[2] << rest);
  words[2] >>= count;
}

void normalize(WideFloat& value) noexcept {
  int words = 0;
  while (value.words[2] == 0) {
    if (++words == 3) {
      value = WideFloat{};
      return;
    }
    value.words[2] = value.words[1];
    value.words[1] = value.words[0];
    value.words[0] = 0;
  }
  const int count = std::countl_zero(value.words[2]);
  value.exponent -= words * kWordBits + count;
  if (count == 0) return;
  const int rest = kWordBits - count;
  value.words[2] = (value.words[2] << count) | (value.words[1] >> rest);
  value.words[1] = (value.words[1] << count) | (value.words[0] >> rest);
  value.words[0] <<= count;
}

WideFloat addMagnitudes(const WideFloat& upper, const WideFloat& lower) noexcept {
  const int distance = upper.exponent - lower.exponent;
  if (distance >= kBits) return upper;
  WideFloat result = upper;
  WideFloat other = lower;
  shiftRight(other.words, distance);
  std::uint64_t carry = 0;
  for (int i = 0; i < 3; ++i) result.words[i] = addWords(result.words[i], other.words[i], carry);
  if (carry != 0) {
    shiftRight(result.words, 1);
    result.words[2] |= std::uint64_t{1} << (kWordBits - 1);
    ++result.exponent;
  }
  return result;
}

// A fourth word keeps the bits that the shift pushes out, which a small difference would miss.
WideFloat subtractMagnitudes(const WideFloat& upper, const WideFloat& lower) noexcept {
  const int distance = upper.exponent - lower.exponent;
  if (distance > kBits) return upper;
  WideFloat other = lower;
  std::uint64_t out = 0;
  if (distance > 0 && distance < kWordBits) {
    out = lower.words[0] << (kWordBits - distance);
  }
  shiftRight(other.words, distance);
  std::uint64_t borrow = 0;
  out = subtractWords(0, out, borrow);
  WideFloat result = upper;
  for (int i = 0; i < 3; ++i) {
    result.words[i] = subtractWords(result.words[i], other.words[i], borrow);
  }
  if (result.words[2] >> (kWordBits - 1) != 0) return result;
  const std::uint64_t words[4] = {out, result.words[0], result.words[1], result.words[2]};
  WideFloat exact = WideFloat::ofWords(words, result.negative);
  exact.exponent += result.exponent - kWordBits;
  return exact;
}

}  // namespace

double WideFloat::toDouble() const noexcept {
  const double magnitude = std::ldexp(static_cast<double>(words[2]), exponent - kWordBits);
  return negative ? -magnitude : magnitude;
}

WideFloat WideFloat::of(std::int64_t value) noexcept {
  const auto bits = static_cast<std::uint64_t>(value);
  return of(UInt256{0, value < 0 ? 0 - bits : bits}, value < 0);
}

WideFloat WideFloat::ofWords(const std::uint64_t (&words)[4], bool negative) noexcept {
  if (words[3] == 0) {
    WideFloat result{{words[0], words[1], words[2]}, 0, negative};
    normalize(result);
    return result;
  }
  WideFloat result{{words[1], words[2], words[3]}, kWordBits, negative};
  const int count = std::countl_zero(words[3]);
  normalize(result);
  if (count != 0) result.words[0] |= words[0] >> (kWordBits - count);
  return result;
}

WideFloat WideFloat::of(const WideFraction& fraction, bool negative) noexcept {
  WideFloat result{{fraction.words[0], fraction.words[1], fraction.words[2]}, 0, negative};
  normalize(result);
  return result;
}

WideFloat WideFloat::of(const UInt256& value, bool negative) noexcept {
  const std::uint64_t words[4] = {lowWord(value.low), highWord(value.low), lowWord(value.high),
                                  highWord(value.high)};
  return ofWords(words, negative).timesPowerOfTwo(kBits);
}

bool isLess(const WideFloat& a, const WideFloat& b) noexcept {
  if (a.isZero() || b.isZero()) return a.isZero() && !b.isZero();
  if (a.exponent != b.exponent) return a.exponent < b.exponent;
  for (int i = 2; i > 0; --i) {
    if (a.words[i] != b.words[i]) return a.words[i] < b.words[i];
  }
  return a.words[0] < b.words[0];
}

WideFloat operator+(const WideFloat& a, const WideFloat& b) noexcept {
  if (a.isZero()) return b;
  if (b.isZero()) return a;
  const bool aIsLess = isLess(a, b);
  const WideFloat& upper = aIsLess ? b : a;
  const WideFloat& lower = aIsLess ? a : b;
  return a.negative == b.negative ? addMagnitudes(upper, lower) : subtractMagnitudes(upper, lower);
}

WideFloat operator-(const WideFloat& a, const WideFloat& b) noexcept { return a + b.negated(); }

WideFloat operator*(const WideFloat& a, const WideFloat& b) noexcept {
  WideFloat result;
  if (a.isZero() || b.isZero()) return result;
  std::uint64_t below = 0;
  multiplyUpper(a.words, b.words, result.words, below);
  result.exponent = a.exponent + b.exponent;
  result.negative = a.negative != b.negative;
  if (result.words[2] >> (kWordBits - 1) == 0) {
    result.words[2] = (result.words[2] << 1) | (result.words[1] >> (kWordBits - 1));
    result.words[1] = (result.words[1] << 1) | (result.words[0] >> (kWordBits - 1));
    result.words[0] = (result.words[0] << 1) | (below >> (kWordBits - 1));
    --result.exponent;
  }
  return result;
}

namespace {

/// One word of a quotient: divides (rest, 0) by the divisor, whose upper two words `upper` divides.
std::uint64_t quotientWord(std::uint64_t (&rest)[3], const TwoWordDivisor& upper,
                           const std::uint64_t (&divisor)[3]) noexcept {
  UInt128 remainder = joinWords(rest[2], rest[1]);
  const UInt128 top = joinWords(divisor[2], divisor[1]);
  std::uint64_t quotient = ~std::uint64_t{0};
  UInt128 over = 0;  // beyond 128 bits of the remainder
  if (remainder < top) {
    quotient = upper.divide(remainder, rest[0]);
  } else {
    // The upper words agree: the largest word is right or a little too large.
    remainder = top + rest[0];
    over = remainder < top ? 1U : 0U;
  }
  const UInt128 product = UInt128{quotient} * divisor[0];
  std::uint64_t borrow = 0;
  std::uint64_t next[3];
  next[0] = subtractWords(0, lowWord(product), borrow);
  next[1] = subtractWords(lowWord(remainder), highWord(product), borrow);
  next[2] = subtractWords(highWord(remainder), 0, borrow);
  while (borrow > over) {
    --quotient;
    std::uint64_t carry = 0;
    for (int i = 0; i < 3; ++i) next[i] = addWords(next[i], divisor[i], carry);
    borrow -= carry;
  }
  for (int i = 0; i < 3; ++i) rest[i] = next[i];
  return quotient;
}

}  // namespace

WideFloat operator/(const WideFloat& a, const WideFloat& b) noexcept {
  if (a.isZero()) return a;
  WideFloat result;
  result.exponent = a.exponent - b.exponent;
  result.negative = a.negative != b.negative;
  const TwoWordDivisor upper(joinWords(b.words[2], b.words[1]));
  std::uint64_t rest[3] = {a.words[0], a.words[1], a.words[2]};
  std::uint64_t words[4];
  words[3] = 0;
  WideFloat numerator = a.absolute();
  numerator.exponent = 0;
  WideFloat denominator = b.absolute();
  denominator.exponent = 0;
  if (!isLess(numerator, denominator)) {
    std::uint64_t borrow = 0;
    for (int i = 0; i < 3; ++i) rest[i] = subtractWords(rest[i], b.words[i], borrow);
    words[3] = 1;
  }
  for (int i = 2; i >= 0; --i) words[i] = quotientWord(rest, upper, b.words);
  WideFloat quotient = WideFloat::ofWords(words, result.negative);
  quotient.exponent += result.exponent;
  // A quotient below 1 may have lost its first bit.
  if (words[3] == 0 && words[2] >> (kWordBits - 1) == 0) {
    quotient.words[0] |= quotientWord(rest, upper, b.words) >> (kWordBits - 1);
  }
  return quotient;
}

WideFloat squareRoot(const WideFloat& value) noexcept {
  if (value.isZero()) return value;
  // 1/sqrt by Newton's steps, each of which doubles the bits that are right.
  WideFloat scaled = value;
  const int half = value.exponent >= 0 ? value.exponent / 2 : (value.exponent - 1) / 2;
  scaled.exponent -= 2 * half;
  const double start = 1 / std::sqrt(scaled.toDouble());
  WideFloat inverse = WideFloat::of(static_cast<std::int64_t>(std::ldexp(start, 60)));
  inverse.exponent -= 60;
  const WideFloat one = WideFloat::of(1);
  for (int step = 0; step < 2; ++step) {
    const WideFloat error = one - scaled * (inverse * inverse);
    inverse = inverse + (inverse * error).timesPowerOfTwo(-1);
  }
  WideFloat root = scaled * inverse;
  root = root + (inverse * (scaled - root * root)).timesPowerOfTwo(-1);
  return root.timesPowerOfTwo(half);
}

WideFloat power(WideFloat base, std::uint64_t exponent) noexcept {
  WideFloat result = WideFloat::of(1);
  for (; exponent != 0; exponent >>= 1) {
    if ((exponent & 1) != 0) result = result * base;
    if (exponent > 1) base = base * base;
  }
  return result;
}

WideFraction fractionOf(const WideFloat& value) noexcept {
  WideFraction result{{value.words[0], value.words[1], value.words[2]}};
  shiftRight(result.words, std::min(-value.exponent, kBits));
  return result;
}

WideFraction operator*(const WideFraction& a, const WideFraction& b) noexcept {
  WideFraction result;
  std::uint64_t below = 0;
  multiplyUpper(a.words, b.words, result.words, below);
  return result;
}

WideFraction operator+(const WideFraction& a, const WideFraction& b) noexcept {
  WideFraction result;
  std::uint64_t carry = 0;
  for (int i = 0; i < 3; ++i) result.words[i] = addWords(a.words[i], b.words[i], carry);
  return result;
}

WideFraction operator-(const WideFraction& a, const WideFraction& b) noexcept {
  WideFraction result;
  std::uint64_t borrow = 0;
  for (int i = 0; i < 3; ++i) result.words[i] = subtractWords(a.words[i], b.words[i], borrow);
  return result;
}

bool isZero(const WideFraction& value) noexcept {
  return (value.words[0] | value.words[1] | value.words[2]) == 0;
}

WideFraction seriesOf(const WideFraction* coefficients, int first, int last, int step,
                      const WideFraction& x, bool alternating) noexcept {
  const auto upperOf = [](const WideFraction& value) {
    return joinWords(value.words[2], value.words[1]);
  };
  // A coefficient counts for as many bits less as its power of x is small: the last ones are summed
  // in two words.
  const int zeros = std::countl_zero(x.words[2]);
  int place = zeros * ((last - first) / step - 1);
  int i = last - step;
  WideFraction sum = coefficients[last];
  if (place >= kWordBits) {
    const UInt128 factor = upperOf(x);
    UInt128 upper = upperOf(sum);
    for (; i >= first && place >= kWordBits; i -= step, place -= zeros) {
      const UInt128 product = multiplyWide(upper, factor).high;
      const UInt128 coefficient = upperOf(coefficients[i]);
      upper = alternating ? coefficient - product : coefficient + product;
    }
    sum = {{0, lowWord(upper), highWord(upper)}};
  }
  for (; i >= first; i -= step) {
    const WideFraction product = sum * x;
    sum = alternating ? coefficients[i] - product : coefficients[i] + product;
  }
  return sum;
}

}  // namespace tarnkit::detail
