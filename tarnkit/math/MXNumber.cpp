#include "tarnkit/math/MXNumber.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <cmath>

#include "tarnkit/math/MathText.h"
#include "tarnkit/platform/numbers/NumberText.h"
#include "tarnkit/platform/system/Log.h"

namespace tarnkit {

namespace {

using detail::isDigit;

std::size_t skipDigits(std::string_view text, std::size_t at) noexcept {
  while (at < text.size() && isDigit(text[at])) ++at;
  return at;
}

bool isUnsignedNumber(std::string_view text) noexcept {
  std::size_t at = skipDigits(text, 0);
  std::size_t digits = at;
  if (at < text.size() && text[at] == '.') {
    const std::size_t point = at;
    at = skipDigits(text, at + 1);
    digits += at - point - 1;
  }
  if (digits == 0) return false;
  if (at == text.size()) return true;
  if (text[at] != 'e' && text[at] != 'E') return false;
  ++at;
  if (at < text.size() && (text[at] == '-' || text[at] == '+')) ++at;
  return at < text.size() && skipDigits(text, at) == text.size();
}

}  // namespace

bool MXNumber::isNumberText(std::string_view text) noexcept {
  return isUnsignedNumber(!text.empty() && text.front() == '-' ? text.substr(1) : text);
}

MXNumber::MXNumber(const Decimal& decimal) noexcept : value_(0) {
  if (decimal.isNaN()) value_ = std::nan("");
  if (decimal.isNaN() || decimal.isZero()) return;
  digits_ = decimal;
  form_ = Form::computed;
}

MXNumber MXNumber::fromText(std::string_view text) {
  const bool negative = !text.empty() && text.front() == '-';
  const auto digits = negative ? text.substr(1) : text;
  if (!isUnsignedNumber(digits)) {
    Log::line(fmt::format("supposedly invalid number: {}", text));
    return 0.0;
  }
  const double magnitude = detail::readNumber(digits);
  return fromDigits(text, negative ? -magnitude : magnitude);
}

MXNumber MXNumber::fromNumber(const Number& number) {
  constexpr std::int64_t kTwoTo53 = std::int64_t{1} << 53;
  const double value = number.doubleValue();
  if (number.isReal()) return value;
  const std::int64_t whole = number.int64Value();
  if (whole >= -kTwoTo53 && whole <= kTwoTo53) return value;
  return fromText(std::to_string(whole));
}

MXNumber MXNumber::fromDigits(std::string_view digits, double value) noexcept {
  MXNumber number(value);
  // Without a digit where a decimal has any.
  if (value == 0 || std::isinf(value)) return number;
  Decimal decimal = Decimal::fromText(digits).value_or(Decimal::notANumber());
  if (decimal.isNaN()) return number;
  if (decimal.isZero() || decimal.exponent() == Decimal::kMinimumExponent) {
    // There may be digits behind the last place, which stand before it in a greater number.
    constexpr int kPower = 64;
    const Decimal greater = Decimal::fromText(digits, kPower).value_or(Decimal()).compact();
    if (greater.isZero() || greater.magnitude() - kPower < Decimal::kMinimumExponent) return number;
    const int behind = Decimal::kMinimumExponent - (greater.exponent() - kPower);
    number.places_ = static_cast<std::uint8_t>(std::max(behind, 0));
    decimal = greater.timesPowerOfTen(number.places_ - kPower);
  }
  number.digits_ = decimal;
  number.form_ = Form::written;
  return number;
}

Decimal MXNumber::decimal() const noexcept {
  if (!isDecimal()) return Decimal::fromDouble(value_);
  return places_ == 0 ? digits_ : digits_.timesPowerOfTen(-places_);
}

bool MXNumber::isShortest() const { return !isDecimal() || text() == shortestText(doubleValue()); }

std::string MXNumber::text() const {
  if (!isDecimal()) return shortestText(value_);
  std::string text = digits_.text();
  if (places_ > 0) text.insert(text.find('.') + 1, places_, '0');
  return text;
}

bool operator==(const MXNumber& a, const MXNumber& b) noexcept {
  const double x = a.doubleValue();
  const double y = b.doubleValue();
  if (std::isnan(x) || std::isnan(y)) return std::isnan(x) && std::isnan(y);
  if (x != y) return false;
  return !a.isDecimal() || !b.isDecimal() || (a.places_ == b.places_ && a.digits_ == b.digits_);
}

std::uint64_t MXNumber::hash() const noexcept {
  const double value = doubleValue();
  if (std::isnan(value)) return 1;
  constexpr std::uint64_t kMultiplier = 0x9E3779B97F4A7C15ULL;
  return std::bit_cast<std::uint64_t>(value == 0 ? 0.0 : value) * kMultiplier >> 16;
}

}  // namespace tarnkit
