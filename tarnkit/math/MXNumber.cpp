#include "tarnkit/math/MXNumber.h"

#include <fmt/format.h>

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

bool MXNumber::isShortest() const {
  return !isDecimal() || decimal_.view() == shortestText(value_);
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

MXNumber MXNumber::fromDigits(std::string_view digits, double value) {
  MXNumber number(value);
  const bool negative = !digits.empty() && digits.front() == '-';
  std::string decimal = detail::decimalText(negative ? digits.substr(1) : digits);
  if (decimal.empty()) return number;
  if (negative) decimal.insert(decimal.begin(), '-');
  number.decimal_ = String(decimal);
  return number;
}

String MXNumber::description() const { return isDecimal() ? decimal_ : String(text()); }

std::string MXNumber::text() const {
  return isDecimal() ? decimal_.toStdString() : shortestText(value_);
}

bool operator==(const MXNumber& a, const MXNumber& b) noexcept {
  if (std::isnan(a.value_) || std::isnan(b.value_)) {
    return std::isnan(a.value_) && std::isnan(b.value_);
  }
  if (a.value_ != b.value_) return false;
  return !a.isDecimal() || !b.isDecimal() || a.decimal_ == b.decimal_;
}

std::uint64_t MXNumber::hash() const noexcept {
  if (std::isnan(value_)) return 1;
  constexpr std::uint64_t kMultiplier = 0x9E3779B97F4A7C15ULL;
  return std::bit_cast<std::uint64_t>(value_ == 0 ? 0.0 : value_) * kMultiplier >> 16;
}

}  // namespace tarnkit
