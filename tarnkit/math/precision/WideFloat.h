#pragma once

#include <cstdint>

#include "tarnkit/platform/numbers/WideIntegers.h"

/// Binary numbers of 192 bits, in which the functions of decimals are computed: every operation is
/// off by less than 2^-188 of its result, far below the last of 38 digits (2^-127). Plain values on
/// the stack; safe on any thread.
namespace tarnkit::detail {

/// The part behind the binary point of a number from 0 to below 1, lowest word first.
struct WideFraction {
  std::uint64_t words[3] = {0, 0, 0};
};

/// ±0.words × 2^exponent, the top bit set, or 0. The range of the exponent is never left: whoever
/// computes with large ones bounds the arguments first.
struct WideFloat {
  std::uint64_t words[3] = {0, 0, 0};  // lowest first
  std::int32_t exponent = 0;
  bool negative = false;

  bool isZero() const noexcept { return words[2] == 0; }
  /// Half of it, a quarter of it, …
  WideFloat timesPowerOfTwo(int power) const noexcept {
    WideFloat other = *this;
    other.exponent += power;
    return other;
  }
  WideFloat negated() const noexcept {
    WideFloat other = *this;
    other.negative = !negative;
    return other;
  }
  WideFloat absolute() const noexcept {
    WideFloat other = *this;
    other.negative = false;
    return other;
  }
  /// Good to 53 bits; within the range of doubles.
  double toDouble() const noexcept;

  static WideFloat of(std::int64_t value) noexcept;
  /// words × 2^-192, the fourth word being whole numbers: any leading zeros.
  static WideFloat ofWords(const std::uint64_t (&words)[4], bool negative) noexcept;
  static WideFloat of(const WideFraction& fraction, bool negative = false) noexcept;
  static WideFloat of(const UInt256& value, bool negative) noexcept;
};

WideFloat operator+(const WideFloat& a, const WideFloat& b) noexcept;
WideFloat operator-(const WideFloat& a, const WideFloat& b) noexcept;
WideFloat operator*(const WideFloat& a, const WideFloat& b) noexcept;
WideFloat operator/(const WideFloat& a, const WideFloat& b) noexcept;
/// Of a number that is not negative.
WideFloat squareRoot(const WideFloat& value) noexcept;
/// The power of a whole number.
WideFloat power(WideFloat base, std::uint64_t exponent) noexcept;
/// Compares magnitudes.
bool isLess(const WideFloat& a, const WideFloat& b) noexcept;

/// The magnitude of a number below 1 in magnitude, as a fraction.
WideFraction fractionOf(const WideFloat& value) noexcept;
/// The product, off by less than 2^-189.
WideFraction operator*(const WideFraction& a, const WideFraction& b) noexcept;
WideFraction operator+(const WideFraction& a, const WideFraction& b) noexcept;
WideFraction operator-(const WideFraction& a, const WideFraction& b) noexcept;
bool isZero(const WideFraction& value) noexcept;

/// c[first] ± x c[first + step] + x² c[first + 2 step] ± … up to c[last], with + or with changing
/// signs; the sum stays in the fraction's range.
WideFraction seriesOf(const WideFraction* coefficients, int first, int last, int step,
                      const WideFraction& x, bool alternating) noexcept;

}  // namespace tarnkit::detail
