#include "tarnkit/platform/numbers/RealText.h"

#ifndef __cpp_lib_to_chars

#include <clocale>
#include <cmath>
#include <cstdlib>
#include <string>

#include "tarnkit/platform/text/ASCII.h"

namespace tarnkit::detail {

namespace {

/// The C library's numbers as they are written in programs, whatever the process's locale.
locale_t plainLocale() noexcept {
  static const locale_t plain = ::newlocale(LC_ALL_MASK, "C", nullptr);
  return plain;
}

double convert(const char* text, double) noexcept {
  return ::strtod_l(text, nullptr, plainLocale());
}
float convert(const char* text, float) noexcept { return ::strtof_l(text, nullptr, plainLocale()); }

const char* skipDigits(const char* at, const char* last) noexcept {
  while (at != last && isDigit(*at)) ++at;
  return at;
}

/// Where the decimal number that begins there ends; `first` where none does. It has no sign.
const char* endOfDecimal(const char* first, const char* last) noexcept {
  const char* const point = skipDigits(first, last);
  const char* end = point;
  if (point != last && *point == '.') {
    end = skipDigits(point + 1, last);
    if (end == point + 1 && point == first) return first;
  }
  if (end == first || end == last || (*end != 'e' && *end != 'E')) return end;
  const char* digits = end + 1;
  if (digits != last && (*digits == '-' || *digits == '+')) ++digits;
  const char* const after = skipDigits(digits, last);
  return after == digits ? end : after;
}

/// The same for the names of what is no ordinary number; the longest that fits.
const char* endOfName(const char* first, const char* last) noexcept {
  for (const char* const name : {"infinity", "inf", "nan"}) {
    const char* at = first;
    const char* letter = name;
    while (*letter && at != last && lowerCaseOf(*at) == *letter) ++at, ++letter;
    if (!*letter) return at;
  }
  return first;
}

template <class Real>
std::from_chars_result read(const char* first, const char* last, Real& value) noexcept {
  const char* const number = first != last && *first == '-' ? first + 1 : first;
  const char* end = endOfDecimal(number, last);
  const bool isDecimal = end != number;
  if (!isDecimal) end = endOfName(number, last);
  if (end == number) return {first, std::errc::invalid_argument};
  const std::string text(first, end);
  const Real converted = convert(text.c_str(), Real());
  const bool isLost =
      isDecimal &&
      (std::isinf(converted) ||
       (converted == 0 &&
        text.substr(0, text.find_first_of("eE")).find_first_of("123456789") != text.npos));
  if (isLost) return {end, std::errc::result_out_of_range};
  value = converted;
  return {end, std::errc()};
}

}  // namespace

std::from_chars_result readReal(const char* first, const char* last, double& value) noexcept {
  return read(first, last, value);
}
std::from_chars_result readReal(const char* first, const char* last, float& value) noexcept {
  return read(first, last, value);
}

}  // namespace tarnkit::detail

#endif
