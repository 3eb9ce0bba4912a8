#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

/// Integers of 128 and 256 bits, for what computes in more digits than the processor does. Plain
/// values; nothing here allocates.
namespace tarnkit::detail {

__extension__ typedef unsigned __int128 UInt128;

constexpr std::uint64_t lowWord(UInt128 value) noexcept {
  return static_cast<std::uint64_t>(value);
}
constexpr std::uint64_t highWord(UInt128 value) noexcept {
  return static_cast<std::uint64_t>(value >> 64);
}
constexpr UInt128 joinWords(std::uint64_t high, std::uint64_t low) noexcept {
  return (UInt128{high} << 64) | low;
}
/// How many bits the value has; 0 for 0.
constexpr int bitWidth(UInt128 value) noexcept {
  const std::uint64_t high = highWord(value);
  return static_cast<int>(high != 0 ? 64 + std::bit_width(high) : std::bit_width(lowWord(value)));
}

struct UInt256 {
  UInt128 high = 0;
  UInt128 low = 0;

  friend constexpr bool operator==(const UInt256&, const UInt256&) noexcept = default;
};

constexpr int bitWidth(const UInt256& value) noexcept {
  return value.high != 0 ? 128 + bitWidth(value.high) : bitWidth(value.low);
}

constexpr bool operator<(const UInt256& a, const UInt256& b) noexcept {
  return a.high != b.high ? a.high < b.high : a.low < b.low;
}

constexpr UInt256 operator+(const UInt256& a, const UInt256& b) noexcept {
  const UInt128 low = a.low + b.low;
  return {a.high + b.high + (low < a.low ? 1U : 0U), low};
}

constexpr UInt256 operator-(const UInt256& a, const UInt256& b) noexcept {
  return {a.high - b.high - (a.low < b.low ? 1U : 0U), a.low - b.low};
}

/// `count` from 0 to 127.
constexpr UInt256 operator<<(const UInt256& value, int count) noexcept {
  if (count == 0) return value;
  return {(value.high << count) | (value.low >> (128 - count)), value.low << count};
}

/// The whole product.
constexpr UInt256 multiplyWide(UInt128 a, UInt128 b) noexcept {
  const UInt128 low = UInt128{lowWord(a)} * lowWord(b);
  const UInt128 first = UInt128{lowWord(a)} * highWord(b);
  const UInt128 second = UInt128{highWord(a)} * lowWord(b);
  const UInt128 high = UInt128{highWord(a)} * highWord(b);
  const UInt128 middle = UInt128{highWord(low)} + lowWord(first) + lowWord(second);
  return {high + highWord(first) + highWord(second) + highWord(middle),
          joinWords(lowWord(middle), lowWord(low))};
}

/// Divides by a divisor whose top bit is set, with multiplications: `inverse` is
/// floor((2^256 - 1) / divisor) - 2^128. The dividend's high half is less than the divisor.
constexpr UInt128 divideByInverse(const UInt256& dividend, UInt128 divisor, UInt128 inverse,
                                  UInt128& remainder) noexcept {
  const UInt256 estimate = multiplyWide(inverse, dividend.high) + dividend;
  UInt128 quotient = estimate.high + 1;
  UInt128 rest = dividend.low - quotient * divisor;
  if (rest > estimate.low) {
    --quotient;
    rest += divisor;
  }
  if (rest >= divisor) {
    ++quotient;
    rest -= divisor;
  }
  remainder = rest;
  return quotient;
}

/// Divides three words by two, again and again by the same two, whose top bit is set.
class TwoWordDivisor {
 public:
  explicit TwoWordDivisor(UInt128 divisor) noexcept;

  /// The quotient's word; `upper`, which is less than the divisor, becomes the remainder.
  std::uint64_t divide(UInt128& upper, std::uint64_t lower) const noexcept {
    const UInt128 estimate = UInt128{inverse_} * highWord(upper) + upper;
    std::uint64_t quotient = highWord(estimate) + 1;
    const std::uint64_t rest = lowWord(upper) - highWord(estimate) * highWord(divisor_);
    UInt128 remainder =
        joinWords(rest, lower) - UInt128{lowWord(divisor_)} * highWord(estimate) - divisor_;
    if (highWord(remainder) >= lowWord(estimate)) {
      --quotient;
      remainder += divisor_;
    }
    if (remainder >= divisor_) {
      ++quotient;
      remainder -= divisor_;
    }
    upper = remainder;
    return quotient;
  }

 private:
  UInt128 divisor_;
  std::uint64_t inverse_;
};

inline TwoWordDivisor::TwoWordDivisor(UInt128 divisor) noexcept : divisor_(divisor) {
  const std::uint64_t high = highWord(divisor);
  const std::uint64_t low = lowWord(divisor);
  std::uint64_t inverse = lowWord(joinWords(~high, ~std::uint64_t{0}) / high);
  std::uint64_t product = high * inverse + low;
  if (product < low) {
    --inverse;
    if (product >= high) {
      --inverse;
      product -= high;
    }
    product -= high;
  }
  const UInt128 more = UInt128{inverse} * low;
  product += highWord(more);
  if (product < highWord(more)) {
    --inverse;
    if (joinWords(product, lowWord(more)) >= divisor) --inverse;
  }
  inverse_ = inverse;
}

}  // namespace tarnkit::detail
