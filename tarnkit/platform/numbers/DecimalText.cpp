#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>

#include "tarnkit/platform/numbers/Decimal.h"
#include "tarnkit/platform/numbers/PowersOfTen.h"
#include "tarnkit/platform/numbers/RealText.h"
#include "tarnkit/platform/text/ASCII.h"

namespace tarnkit {

using detail::isDigit;
using detail::UInt128;
using detail::UInt256;

namespace {

constexpr std::uint64_t kTwoTo53 = std::uint64_t{1} << 53;
constexpr double kExactPowers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                   1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                   1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
constexpr int kLargestExactPower = 22;

constexpr char kPairs[] =
    "00010203040506070809101112131415161718192021222324252627282930313233343536373839"
    "40414243444546474849505152535455565758596061626364656667686970717273747576777879"
    "8081828384858687888990919293949596979899";

void writePair(char* to, std::uint32_t value) noexcept { std::memcpy(to, kPairs + 2 * value, 2); }

void writeEight(char* to, std::uint32_t value) noexcept {
  const std::uint32_t high = value / 10000;
  const std::uint32_t low = value % 10000;
  writePair(to, high / 100);
  writePair(to + 2, high % 100);
  writePair(to + 4, low / 100);
  writePair(to + 6, low % 100);
}

/// All 19 digits of a value below 10^19.
void writeNineteen(char* to, std::uint64_t value) noexcept {
  constexpr std::uint64_t kEight = 100'000'000;
  const std::uint64_t upper = value / kEight;
  const auto high = static_cast<std::uint32_t>(upper / kEight);
  to[0] = static_cast<char>('0' + high / 100);
  writePair(to + 1, high % 100);
  writeEight(to + 3, static_cast<std::uint32_t>(upper % kEight));
  writeEight(to + 11, static_cast<std::uint32_t>(value % kEight));
}

/// Eight digits at once; false, changing nothing, when not all are digits.
bool readEight(const char* from, std::uint64_t& value) noexcept {
  std::uint64_t word;
  std::memcpy(&word, from, sizeof word);
  if constexpr (std::endian::native == std::endian::big) word = __builtin_bswap64(word);
  constexpr std::uint64_t kZeros = 0x3030303030303030ULL;
  constexpr std::uint64_t kTops = 0xF0F0F0F0F0F0F0F0ULL;
  if ((word & kTops) != kZeros || ((word + 0x0606060606060606ULL) & kTops) != kZeros) return false;
  word -= kZeros;
  word = word * 10 + (word >> 8);
  constexpr std::uint64_t kMask = 0x000000FF000000FFULL;
  constexpr std::uint64_t kUpper = 100 + (1'000'000ULL << 32);
  constexpr std::uint64_t kLower = 1 + (10'000ULL << 32);
  value = ((word & kMask) * kUpper + ((word >> 16) & kMask) * kLower) >> 32;
  return true;
}

/// Collects digits: 38 that count, one that decides the rounding, and whether any other is not 0.
class DigitReader {
 public:
  const char* read(const char* at, const char* end) noexcept {
    while (mantissa_ == 0 && at != end && *at == '0') ++at;
    const char* const first = at;
    std::uint64_t chunk;
    while (count_ <= Decimal::kDigits - 8 && end - at >= 8 && readEight(at, chunk)) {
      mantissa_ = mantissa_ * 100'000'000 + chunk;
      count_ += 8;
      at += 8;
    }
    for (; at != end && isDigit(*at); ++at) {
      const auto digit = static_cast<unsigned>(*at - '0');
      if (count_ < Decimal::kDigits) {
        mantissa_ = mantissa_ * 10 + digit;
        ++count_;
      } else {
        readExcess(digit);
      }
    }
    sawDigit_ = sawDigit_ || at != first;
    return at;
  }

  bool sawDigit() const noexcept { return sawDigit_; }
  void noteDigit() noexcept { sawDigit_ = true; }
  std::int64_t excess() const noexcept { return excess_; }
  Decimal value(bool negative, std::int64_t exponent) const noexcept {
    constexpr std::int64_t kFar = 1000;
    const auto power = static_cast<int>(std::clamp(exponent, -kFar, kFar));
    if (excess_ == 0) return Decimal::rounding(negative, {0, mantissa_}, power);
    const UInt256 all = detail::multiplyWide(mantissa_, 10) + UInt256{0, next_};
    return Decimal::rounding(negative, all, power - 1, isMore_);
  }

 private:
  void readExcess(unsigned digit) noexcept {
    if (excess_ == 0) {
      next_ = digit;
    } else {
      isMore_ = isMore_ || digit != 0;
    }
    ++excess_;
  }

  UInt128 mantissa_ = 0;
  int count_ = 0;
  unsigned next_ = 0;
  std::int64_t excess_ = 0;
  bool isMore_ = false;
  bool sawDigit_ = false;
};

/// Reads "e-12" at the end of the text; far exponents saturate.
bool readExponent(const char* at, const char* end, std::int64_t& exponent) noexcept {
  constexpr std::int64_t kFar = std::int64_t{1} << 60;
  if (at == end) return true;
  if (*at != 'e' && *at != 'E') return false;
  ++at;
  const bool negative = at != end && *at == '-';
  if (at != end && (*at == '-' || *at == '+')) ++at;
  if (at == end) return false;
  std::int64_t value = 0;
  for (; at != end; ++at) {
    if (!isDigit(*at)) return false;
    value = std::min(value * 10 + (*at - '0'), kFar / 10);
  }
  exponent += negative ? -value : value;
  return true;
}

}  // namespace

std::optional<Decimal> Decimal::fromText(std::string_view text, int power) noexcept {
  if (text == "NaN") return notANumber();
  const char* at = text.data();
  const char* const end = at + text.size();
  const bool negative = at != end && *at == '-';
  if (at != end && (*at == '-' || *at == '+')) ++at;
  DigitReader digits;
  const char* const whole = at;
  at = digits.read(at, end);
  if (at != whole) digits.noteDigit();
  std::int64_t exponent = 0;
  if (at != end && *at == '.') {
    const char* const fraction = ++at;
    at = digits.read(at, end);
    if (at != fraction) digits.noteDigit();
    exponent = fraction - at;
  }
  if (!digits.sawDigit()) return std::nullopt;
  // Digits that the mantissa has no room for lift its exponent.
  exponent += digits.excess() + power;
  if (!readExponent(at, end, exponent)) return std::nullopt;
  return digits.value(negative, exponent);
}

Decimal Decimal::fromDouble(double value) noexcept {
  constexpr double kTwoTo63 = 9223372036854775808.0;
  if (std::isnan(value) || std::isinf(value)) return notANumber();
  if (std::fabs(value) < kTwoTo63 && std::trunc(value) == value) {
    return of(static_cast<std::int64_t>(value));
  }
  char text[32];
  const auto end = std::to_chars(text, text + sizeof text, value, std::chars_format::scientific);
  return fromText({text, static_cast<std::size_t>(end.ptr - text)}).value_or(notANumber());
}

double Decimal::doubleValue() const noexcept {
  if (isNaN_) return std::nan("");
  if (mantissa_ <= kTwoTo53 && exponent_ >= -kLargestExactPower &&
      exponent_ <= kLargestExactPower) {
    const auto exact = static_cast<double>(detail::lowWord(mantissa_));
    const double magnitude =
        exponent_ < 0 ? exact / kExactPowers[-exponent_] : exact * kExactPowers[exponent_];
    return negative_ ? -magnitude : magnitude;
  }
  char text[kDigits + 8];
  UInt128 low;
  const auto high = static_cast<std::uint64_t>(
      detail::divideByPowerOfTen({0, mantissa_}, detail::kLargestPowerOfTenInWord, low));
  text[0] = '-';
  writeNineteen(text + 1, high);
  writeNineteen(text + 1 + detail::kLargestPowerOfTenInWord, detail::lowWord(low));
  text[kDigits + 1] = 'e';
  const auto end = std::to_chars(text + kDigits + 2, text + sizeof text, int{exponent_});
  double value = 0;
  detail::readReal(negative_ ? text : text + 1, end.ptr, value);
  return value;
}

char* Decimal::write(char* to) const noexcept {
  if (isNaN_) return std::copy_n("NaN", 3, to);
  if (mantissa_ == 0) {
    *to = '0';
    return to + 1;
  }
  char digits[kDigits];
  UInt128 low;
  const auto high = static_cast<std::uint64_t>(
      detail::divideByPowerOfTen({0, mantissa_}, detail::kLargestPowerOfTenInWord, low));
  writeNineteen(digits, high);
  writeNineteen(digits + detail::kLargestPowerOfTenInWord, detail::lowWord(low));
  const char* const end = digits + kDigits;
  const char* first = end - detail::digitCount(mantissa_);
  if (negative_) *to++ = '-';
  if (exponent_ >= 0) {
    to = std::copy(first, end, to);
    return std::fill_n(to, exponent_, '0');
  }
  const auto count = end - first;
  const char* last = end;
  const char* const point = end + exponent_;
  while (last > first && last > point && last[-1] == '0') --last;
  if (count + exponent_ > 0) {
    to = std::copy(first, point, to);
    if (last == point) return to;
    *to++ = '.';
    return std::copy(point, last, to);
  }
  *to++ = '0';
  *to++ = '.';
  to = std::fill_n(to, -(count + exponent_), '0');
  return std::copy(first, last, to);
}

std::string Decimal::text() const {
  char buffer[kMaximumTextLength];
  return {buffer, static_cast<std::size_t>(write(buffer) - buffer)};
}

}  // namespace tarnkit
