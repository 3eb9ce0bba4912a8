#include "tarnkit/platform/propertylist/PropertyListText.h"

#include <limits>

#include "tarnkit/platform/numbers/RealText.h"

namespace tarnkit::detail {

namespace {

constexpr std::string_view kWhiteSpace = " \t\r\n";

std::string_view trimmed(std::string_view text) noexcept {
  const auto first = text.find_first_not_of(kWhiteSpace);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kWhiteSpace) - first + 1);
}

int digitValue(char c, int base) noexcept {
  int value = 99;
  if (c >= '0' && c <= '9') value = c - '0';
  if (c >= 'a' && c <= 'f') value = c - 'a' + 10;
  if (c >= 'A' && c <= 'F') value = c - 'A' + 10;
  return value < base ? value : -1;
}

bool readDigits(std::string_view text, std::size_t at, std::size_t count, int& value) noexcept {
  value = 0;
  for (std::size_t i = at; i < at + count; ++i) {
    const int digit = digitValue(text[i], 10);
    if (digit < 0) return false;
    value = value * 10 + digit;
  }
  return true;
}

// Days from 1970-01-01 in the Gregorian calendar.
std::int64_t daysFromCivil(std::int64_t year, int month, int day) noexcept {
  year -= month <= 2 ? 1 : 0;
  const std::int64_t era = (year >= 0 ? year : year - 399) / 400;
  const std::int64_t yearOfEra = year - era * 400;
  const std::int64_t dayOfYear = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
  return era * 146097 + yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear - 719468;
}

}  // namespace

bool readPropertyListInteger(std::string_view text, PropertyListInteger& value) {
  __extension__ using Wide = unsigned __int128;
  text = trimmed(text);
  const bool isNegative = !text.empty() && text[0] == '-';
  if (!text.empty() && (text[0] == '-' || text[0] == '+')) text.remove_prefix(1);
  int base = 10;
  if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
    base = 16;
    text.remove_prefix(2);
  }
  if (text.empty()) return false;
  Wide magnitude = 0;
  for (const char c : text) {
    const int digit = digitValue(c, base);
    if (digit < 0 || magnitude > (~Wide{0} - static_cast<unsigned>(digit)) / 16) return false;
    magnitude = magnitude * static_cast<unsigned>(base) + static_cast<unsigned>(digit);
  }
  constexpr auto kLargest = static_cast<Wide>(std::numeric_limits<std::int64_t>::max());
  const Wide limit = kLargest + (isNegative ? 1U : 0U);
  const auto low = static_cast<std::uint64_t>(magnitude);
  if (magnitude <= limit) {
    value.kind = PropertyList::Kind::integer;
    value.bits = static_cast<std::int64_t>(isNegative ? 0 - low : low);
  } else if (!isNegative && magnitude >> 64 == 0) {
    value.kind = PropertyList::Kind::unsignedInteger;
    value.bits = static_cast<std::int64_t>(low);
  } else {
    value.kind = PropertyList::Kind::wideInteger;
    value.wide = isNegative ? -static_cast<double>(magnitude) : static_cast<double>(magnitude);
  }
  return true;
}

bool readPropertyListReal(std::string_view text, double& value) {
  text = trimmed(text);
  if (!text.empty() && text[0] == '+') {
    text.remove_prefix(1);
    if (!text.empty() && text[0] == '-') return false;
  }
  if (text.empty()) return false;
  const char* const end = text.data() + text.size();
  const auto result = detail::readReal(text.data(), end, value);
  if (result.ptr != end) return false;
  if (result.ec == std::errc()) return true;
  // Out of range: below the smallest double is 0, above the largest is infinite.
  const bool isNegative = text[0] == '-';
  const auto exponent = text.find_first_of("eE");
  const bool isTiny = (exponent != std::string_view::npos && exponent + 1 < text.size())
                          ? text[exponent + 1] == '-'
                          : text.find_first_of("123456789") > text.find('.');
  value = isTiny ? 0.0 : std::numeric_limits<double>::infinity();
  if (isNegative) value = -value;
  return true;
}

bool readPropertyListDate(std::string_view text, double& seconds) {
  text = trimmed(text);
  constexpr std::string_view kShape = "dddd-dd-ddTdd:dd:ddZ";
  if (text.size() != kShape.size()) return false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (kShape[i] != 'd' && kShape[i] != text[i]) return false;
  }
  int year = 0;
  int month = 0;
  int day = 0;
  int hour = 0;
  int minute = 0;
  int second = 0;
  if (!readDigits(text, 0, 4, year) || !readDigits(text, 5, 2, month) ||
      !readDigits(text, 8, 2, day) || !readDigits(text, 11, 2, hour) ||
      !readDigits(text, 14, 2, minute) || !readDigits(text, 17, 2, second)) {
    return false;
  }
  if (month < 1 || month > 12 || day < 1 || day > 31 || hour > 23 || minute > 59 || second > 60) {
    return false;
  }
  const std::int64_t days = daysFromCivil(year, month, day) - daysFromCivil(2001, 1, 1);
  seconds = static_cast<double>(days * 86400 + hour * 3600 + minute * 60 + second);
  return true;
}

bool readBase64(std::string_view text, std::string& bytes) {
  bytes.clear();
  bytes.reserve(text.size() / 4 * 3);
  std::uint32_t bits = 0;
  unsigned digits = 0;  // of the group at hand, the padding included
  unsigned padding = 0;
  for (const char c : text) {
    if (kWhiteSpace.find(c) != std::string_view::npos) continue;
    std::uint32_t value = 0;
    if (c >= 'A' && c <= 'Z') {
      value = static_cast<std::uint32_t>(c - 'A');
    } else if (c >= 'a' && c <= 'z') {
      value = static_cast<std::uint32_t>(c - 'a') + 26;
    } else if (c >= '0' && c <= '9') {
      value = static_cast<std::uint32_t>(c - '0') + 52;
    } else if (c == '+' || c == '/') {
      value = c == '+' ? 62 : 63;
    } else if (c == '=' && (digits == 2 || digits == 3)) {
      ++padding;
    } else {
      return false;
    }
    if (padding > 0 && c != '=') return false;
    bits = (bits << 6) | value;
    if (++digits < 4) continue;
    for (unsigned i = 0; i + padding < 3; ++i) {
      bytes.push_back(static_cast<char>(static_cast<unsigned char>(bits >> (16 - 8 * i))));
    }
    digits = 0;
    bits = 0;
    if (padding > 0) padding = 4;  // nothing but white space may follow
  }
  return digits == 0;
}

}  // namespace tarnkit::detail
