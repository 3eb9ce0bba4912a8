#pragma once

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "tarnkit/platform/numbers/WideIntegers.h"

namespace tarnkit {

enum class DecimalRounding : std::uint8_t { halfToEven, down, up, towardZero };

/// A decimal number: a mantissa of up to 38 digits times ten to an exponent from -128 to 127, or
/// not a number.
///
/// Sums, differences, products, quotients and square roots are the exact result rounded to the
/// nearest decimal, halves to the even one. A result too large for the range, a division by zero
/// and whatever is computed from what is not a number give not a number; a result too small loses
/// digits and becomes 0 in the end. Nothing throws. A zero has no sign.
///
/// A plain value of 24 bytes; nothing allocates but `text`. Safe on any thread.
class Decimal {
 public:
  static constexpr int kDigits = 38;
  static constexpr int kMinimumExponent = -128;
  static constexpr int kMaximumExponent = 127;
  /// The longest text that `write` makes: sign, 38 digits and 127 zeros.
  static constexpr std::size_t kMaximumTextLength = 166;

  /// Zero.
  constexpr Decimal() noexcept = default;
  static constexpr Decimal notANumber() noexcept {
    Decimal made;
    made.isNaN_ = true;
    return made;
  }
  /// mantissa × 10^exponent; the exponent is in the range.
  static constexpr Decimal of(std::int64_t mantissa, int exponent = 0) noexcept {
    const auto bits = static_cast<std::uint64_t>(mantissa);
    return Decimal(mantissa < 0, mantissa < 0 ? 0 - bits : bits, exponent);
  }
  /// ±mantissa × 10^exponent of any size, rounded; `isMore` says that the exact magnitude is more
  /// than the mantissa's by less than 1 of it. The mantissa is less than 10^76.
  static Decimal rounding(bool negative, const detail::UInt256& mantissa, int exponent,
                          bool isMore = false) noexcept;

  /// The number of a text: an optional sign, digits with or without a point, an optional exponent
  /// ("-12.5", ".5", "2e-3"); or "NaN". Nothing for other texts. Times ten to `power`, and rounded
  /// once to what a decimal holds.
  static std::optional<Decimal> fromText(std::string_view text, int power = 0) noexcept;
  static constexpr Decimal fromInteger(std::int64_t value) noexcept { return of(value); }
  static constexpr Decimal fromUnsigned(std::uint64_t value) noexcept {
    return Decimal(false, value, 0);
  }
  /// The shortest decimal that reads back to the same double, so that 0.1 is 0.1; whole numbers
  /// below 2^63 are exact.
  static Decimal fromDouble(double value) noexcept;

  bool isNaN() const noexcept { return isNaN_; }
  bool isZero() const noexcept { return mantissa_ == 0 && !isNaN_; }
  bool isNegative() const noexcept { return negative_; }
  /// Whether it is a whole number.
  bool isInteger() const noexcept;
  detail::UInt128 mantissa() const noexcept { return mantissa_; }
  int exponent() const noexcept { return exponent_; }
  /// The exponent of the first digit: 0 for 1 to 9.99…; meaningless for 0.
  int magnitude() const noexcept;

  /// The nearest double; beyond its range infinity or 0.
  double doubleValue() const noexcept;
  /// Truncated toward zero, saturated; 0 for not a number.
  std::int64_t int64Value() const noexcept;
  std::uint64_t uint64Value() const noexcept;

  /// Writes the text into `kMaximumTextLength` characters and returns its end: no exponent, no
  /// needless zeros ("0.5", "-100000"), all digits; "NaN".
  char* write(char* to) const noexcept;
  std::string text() const;

  Decimal negated() const noexcept;
  Decimal absolute() const noexcept;
  /// Rounded to `places` digits behind the point; negative: to tens, hundreds, …
  Decimal rounded(int places, DecimalRounding mode) const noexcept;
  /// Times 10^power, rounded.
  Decimal timesPowerOfTen(int power) const noexcept;
  /// Not a number for negative numbers.
  Decimal squareRoot() const noexcept;
  /// The mantissa without trailing zeros, as far as the exponent's range lets it.
  Decimal compact() const noexcept;

  friend Decimal operator+(const Decimal& a, const Decimal& b) noexcept {
    return a.exponent_ == b.exponent_ ? aligned(a, b, b.negative_) : sum(a, b, b.negative_);
  }
  friend Decimal operator-(const Decimal& a, const Decimal& b) noexcept {
    return a.exponent_ == b.exponent_ ? aligned(a, b, !b.negative_) : sum(a, b, !b.negative_);
  }
  friend Decimal operator*(const Decimal& a, const Decimal& b) noexcept;
  friend Decimal operator/(const Decimal& a, const Decimal& b) noexcept;

  /// -1, 0 or 1; not a number equals itself and is less than every number.
  static int compare(const Decimal& a, const Decimal& b) noexcept;
  /// Numerical equality: 1 and 1.0 are equal, not a number equals itself.
  friend bool operator==(const Decimal& a, const Decimal& b) noexcept { return compare(a, b) == 0; }
  friend bool operator<(const Decimal& a, const Decimal& b) noexcept { return compare(a, b) < 0; }
  friend bool operator>(const Decimal& a, const Decimal& b) noexcept { return compare(a, b) > 0; }
  friend bool operator<=(const Decimal& a, const Decimal& b) noexcept { return compare(a, b) <= 0; }
  friend bool operator>=(const Decimal& a, const Decimal& b) noexcept { return compare(a, b) >= 0; }

 private:
  /// 10^38
  static constexpr detail::UInt128 kMantissaLimit =
      detail::UInt128{10'000'000'000'000'000'000U} * 10'000'000'000'000'000'000U;

  constexpr Decimal(bool negative, detail::UInt128 mantissa, int exponent) noexcept
      : mantissa_(mantissa),
        exponent_(static_cast<std::int8_t>(mantissa == 0 ? 0 : exponent)),
        negative_(negative && mantissa != 0) {
    assert(mantissa < kMantissaLimit);
  }

  // The sum of numbers of one exponent. Without a branch for the signs, which may be anything.
  static Decimal aligned(const Decimal& a, const Decimal& b, bool bIsNegative) noexcept {
    if (a.isNaN_ || b.isNaN_) return notANumber();
    const bool differ = a.negative_ != bIsNegative;
    const auto flip = detail::UInt128{0} - (differ ? 1U : 0U);
    const detail::UInt128 sum = a.mantissa_ + ((b.mantissa_ ^ flip) - flip);
    const bool isBelow = differ && a.mantissa_ < b.mantissa_;
    const auto turn = detail::UInt128{0} - (isBelow ? 1U : 0U);
    const detail::UInt128 mantissa = (sum ^ turn) - turn;
    const bool negative = a.negative_ != isBelow;
    if (mantissa >= kMantissaLimit) return carried(negative, mantissa, a.exponent_);
    return Decimal(negative, mantissa, a.exponent_);
  }
  static Decimal carried(bool negative, detail::UInt128 mantissa, int exponent) noexcept;
  static Decimal sum(const Decimal& a, const Decimal& b, bool bIsNegative) noexcept;
  static Decimal fitted(bool negative, detail::UInt128 mantissa, int exponent) noexcept;

  // Aligned as words are, so that it fits into objects and is smaller by a quarter.
  __extension__ typedef detail::UInt128 Mantissa __attribute__((aligned(8)));

  Mantissa mantissa_ = 0;
  std::int8_t exponent_ = 0;
  bool negative_ = false;
  bool isNaN_ = false;
};

}  // namespace tarnkit
