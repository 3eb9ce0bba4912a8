#pragma once

#include <string>
#include <string_view>

#include "tarnkit/platform/numbers/Number.h"
#include "tarnkit/platform/text/String.h"

namespace tarnkit {

/// A number of an expression or of a result: a double, and, where the number was written in a text,
/// the digits that it was written with, so that no digit is lost to what computes in decimal.
///
/// A plain value; copying costs at most a count. Safe to share between threads.
class MXNumber {
 public:
  /// A plain number.
  MXNumber(double value = 0) noexcept : value_(value) {}
  /// The decimal number of a text of digits ("12", "1.5", "2e-3"), to 38 digits. One too large for
  /// a decimal or without a digit in its 128 places is a plain double, infinite when too large.
  /// Anything but a number logs "supposedly invalid number: …" and gives 0.
  static MXNumber fromText(std::string_view text);
  /// The same for digits, after a "-" or not, that are known to be the number `value`.
  static MXNumber fromDigits(std::string_view digits, double value);
  /// A whole number that no double holds keeps its digits.
  static MXNumber fromNumber(const Number& number);
  /// Whether `fromText` reads the text as a number: digits, a point, an exponent, after a "-" or
  /// not.
  static bool isNumberText(std::string_view text) noexcept;

  double doubleValue() const noexcept { return value_; }
  /// The decimal digits ("0.5", "100000": no exponent, no needless zeros); nil for a plain number.
  const String& decimalText() const noexcept { return decimal_; }
  bool isDecimal() const noexcept { return !decimal_.isNil(); }
  /// Whether the double alone has the same description.
  bool isShortest() const;
  /// The decimal digits, or the shortest text that reads back to the same double.
  String description() const;
  std::string text() const;

  /// Numerical equality: decimals by their digits, otherwise by their doubles. NaN equals NaN, so
  /// that a tree equals its copy.
  friend bool operator==(const MXNumber& a, const MXNumber& b) noexcept;
  /// Equal numbers hash alike.
  std::uint64_t hash() const noexcept;

 private:
  double value_;
  String decimal_;
};

}  // namespace tarnkit
