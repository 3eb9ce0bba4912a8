#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>

#include "tarnkit/platform/numbers/Decimal.h"
#include "tarnkit/platform/numbers/Number.h"
#include "tarnkit/platform/text/String.h"

namespace tarnkit {

/// A number of an expression or of a result: a double, and, where it was written in a text or
/// computed in decimals, the decimal, so that no digit is lost to what computes in decimal.
///
/// A plain value of 32 bytes that is copied as memory; only texts allocate. The double of a decimal
/// that was computed is made when it is asked for, since a chain of decimal operations never asks.
/// Safe to share between threads.
class MXNumber {
 public:
  /// A plain number.
  MXNumber(double value = 0) noexcept : value_(value) {}
  /// With all digits of the decimal; what is not a number is a plain NaN, and 0 is a plain 0.
  explicit MXNumber(const Decimal& decimal) noexcept;
  /// The decimal number of a text of digits ("12", "1.5", "2e-3"), to 38 digits. One too large for
  /// a decimal or without a digit in its 128 places is a plain double, infinite when too large.
  /// Anything but a number logs "supposedly invalid number: …" and gives 0.
  static MXNumber fromText(std::string_view text);
  /// The same for digits, after a "-" or not, that are known to be the number `value`.
  static MXNumber fromDigits(std::string_view digits, double value) noexcept;
  /// A whole number that no double holds keeps its digits.
  static MXNumber fromNumber(const Number& number);
  /// Whether `fromText` reads the text as a number: digits, a point, an exponent, after a "-" or
  /// not.
  static bool isNumberText(std::string_view text) noexcept;

  double doubleValue() const noexcept {
    return form_ == Form::computed ? digits_.doubleValue() : value_;
  }
  /// Its decimal, or, of a plain number, the shortest that reads back to the same double.
  Decimal decimal() const noexcept;
  /// False for a plain number.
  bool isDecimal() const noexcept { return form_ != Form::plain; }
  /// Whether the double alone has the same description.
  bool isShortest() const;
  /// The decimal's digits ("0.5", "100000": no exponent, no needless zeros), or the shortest text
  /// that reads back to the same double.
  String description() const { return String(text()); }
  std::string text() const;

  /// Numerical equality: decimals by their digits, otherwise by their doubles. NaN equals NaN, so
  /// that a tree equals its copy.
  friend bool operator==(const MXNumber& a, const MXNumber& b) noexcept;
  /// Equal numbers hash alike.
  std::uint64_t hash() const noexcept;

 private:
  enum class Form : std::uint8_t {
    plain,     // the double
    written,   // the double and the decimal of one text
    computed,  // the decimal
  };

  // The members that follow stand in the padding at its end.
  [[no_unique_address]] Decimal digits_;
  Form form_ = Form::plain;
  // A text may have digits behind the last place of a decimal, which only rounding takes away: the
  // decimal is `digits_` divided by ten to this power.
  std::uint8_t places_ = 0;
  double value_;
};
static_assert(std::is_trivially_copyable_v<MXNumber> && sizeof(MXNumber) == 32);

}  // namespace tarnkit
