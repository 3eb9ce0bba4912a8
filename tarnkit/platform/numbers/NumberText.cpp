#include "tarnkit/platform/numbers/NumberText.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

#include "tarnkit/platform/numbers/RealText.h"
#include "tarnkit/platform/text/ASCII.h"

namespace tarnkit {

using detail::isDigit;

namespace {

// "%g" switches to an exponent when the number has more digits before the point than this.
constexpr int kDefaultPrecision = 6;

template <class Real>
std::string shortest(Real value) {
  if (std::isnan(value)) return "nan";
  if (std::isinf(value)) return value < 0 ? "-inf" : "inf";
  char buffer[64];
  const auto written =
      std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::scientific);
  const std::string_view text(buffer, static_cast<std::size_t>(written.ptr - buffer));
  const auto e = text.find('e');
  int exponent = 0;
  const char* digits = text.data() + e + (text[e + 1] == '+' ? 2 : 1);
  std::from_chars(digits, written.ptr, exponent);
  const auto mantissa = text.substr(0, e);
  const auto count = static_cast<int>(std::count_if(mantissa.begin(), mantissa.end(), isDigit));
  if (exponent < -4 || exponent >= std::max(kDefaultPrecision, count)) return std::string(text);
  const auto fixed = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed);
  return std::string(buffer, fixed.ptr);
}

bool isSpace(char c) noexcept { return c == ' ' || (c >= '\t' && c <= '\r'); }

std::string_view withoutLeadingSpace(std::string_view text) noexcept {
  while (!text.empty() && isSpace(text.front())) text.remove_prefix(1);
  return text;
}

bool takeSign(std::string_view& text) noexcept {
  if (text.empty() || (text.front() != '-' && text.front() != '+')) return false;
  const bool negative = text.front() == '-';
  text.remove_prefix(1);
  return negative;
}

/// Whether the number that the text spells is below one, however many digits it takes. It is not
/// zero.
bool isBelowOne(std::string_view text) noexcept {
  const auto e = text.find_first_of("eE");
  const auto mantissa = text.substr(0, e);
  const auto point = std::min(mantissa.find('.'), mantissa.size());
  const auto first = mantissa.find_first_of("123456789");
  // The power of ten of the first digit that counts.
  auto power = static_cast<std::int64_t>(point) - static_cast<std::int64_t>(first);
  if (first < point) --power;
  if (e == text.npos) return power < 0;
  auto exponent = text.substr(e + 1);
  const bool negative = takeSign(exponent);
  std::int64_t value = 0;
  const auto read = std::from_chars(exponent.data(), exponent.data() + exponent.size(), value);
  if (read.ec == std::errc::result_out_of_range) return negative;
  return power + (negative ? -value : value) < 0;
}

}  // namespace

std::string shortestText(float value) { return shortest(value); }
std::string shortestText(double value) { return shortest(value); }
std::string percentG(double value) { return fmt::format("{:g}", value); }

bool readBool(std::string_view text) noexcept {
  text = withoutLeadingSpace(text);
  takeSign(text);
  while (!text.empty() && text.front() == '0') text.remove_prefix(1);
  if (text.empty()) return false;
  const char c = text.front();
  return c == 'Y' || c == 'y' || c == 'T' || c == 't' || (c >= '1' && c <= '9');
}

std::int32_t readInt32(std::string_view text) noexcept {
  using Limits = std::numeric_limits<std::int32_t>;
  text = withoutLeadingSpace(text);
  const bool negative = takeSign(text);
  std::int64_t value = 0;
  for (const char c : text) {
    if (!isDigit(c)) break;
    value = std::min<std::int64_t>(value * 10 + (c - '0'), std::int64_t{Limits::max()} + 1);
  }
  if (negative) value = -value;
  return static_cast<std::int32_t>(std::min<std::int64_t>(value, Limits::max()));
}

float readFloat(std::string_view text) noexcept {
  text = withoutLeadingSpace(text);
  const bool negative = takeSign(text);
  if (text.empty() || (!isDigit(text.front()) && text.front() != '.')) return 0;
  float value = 0;
  const auto read = detail::readReal(text.data(), text.data() + text.size(), value);
  if (read.ec == std::errc::invalid_argument) return 0;
  if (read.ec == std::errc::result_out_of_range) {
    const std::string_view taken(text.data(), static_cast<std::size_t>(read.ptr - text.data()));
    value = isBelowOne(taken) ? 0.0F : std::numeric_limits<float>::infinity();
  }
  return negative ? -value : value;
}

}  // namespace tarnkit
