#include "tarnkit/math/MathText.h"

#include <unicode/locid.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "tarnkit/platform/numbers/RealText.h"

namespace tarnkit::detail {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

// The powers of ten that a double holds exactly.
constexpr double kExactPowers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                   1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                   1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
constexpr int kLargestExactPower = 22;
constexpr int kExactDigits = 15;

// Overflowing exponents saturate far outside every range that matters.
std::int64_t readExponent(std::string_view text) noexcept {
  constexpr std::int64_t kFar = 1'000'000'000;
  const bool negative = !text.empty() && text.front() == '-';
  if (!text.empty() && !isDigit(text.front())) text.remove_prefix(1);
  std::int64_t value = 0;
  for (const char c : text) value = std::min(value * 10 + (c - '0'), kFar);
  return negative ? -value : value;
}

double readNumberSlowly(std::string_view text) noexcept {
  double value = 0;
  const auto read = detail::readReal(text.data(), text.data() + text.size(), value);
  if (read.ec != std::errc::result_out_of_range) return value;
  const auto e = text.find_first_of("eE");
  std::int64_t exponent = e == text.npos ? 0 : readExponent(text.substr(e + 1));
  const auto mantissa = text.substr(0, e);
  const auto point = std::min(mantissa.find('.'), mantissa.size());
  const auto first = mantissa.find_first_not_of("0.");
  if (first == mantissa.npos) return 0;
  exponent += static_cast<std::int64_t>(point) - static_cast<std::int64_t>(first);
  return exponent > 0 ? std::numeric_limits<double>::infinity() : 0.0;
}

}  // namespace

bool isPlainText(std::string_view text) noexcept {
  constexpr std::uint64_t kOnes = 0x0101010101010101ULL;
  constexpr std::uint64_t kTops = 0x8080808080808080ULL;
  const char* at = text.data();
  std::size_t left = text.size();
  std::uint64_t seen = 0;  // a top bit for every byte that is 0 or has one
  while (left >= sizeof seen) {
    std::uint64_t word;
    std::memcpy(&word, at, sizeof word);
    seen |= word | (word - kOnes);
    at += sizeof word;
    left -= sizeof word;
  }
  // The bytes that are left, filled up with ones that are plain.
  std::uint64_t last = kOnes;
  if (left >= 4) {
    std::uint32_t low;
    std::uint32_t high;
    std::memcpy(&low, at, sizeof low);
    std::memcpy(&high, at + left - sizeof high, sizeof high);
    last = low | std::uint64_t{high} << 32;
  } else if (left > 0) {
    const auto byte = [at](std::size_t i) {
      return std::uint64_t{static_cast<unsigned char>(at[i])};
    };
    last = (kOnes << 24) | byte(0) | byte(left / 2) << 8 | byte(left - 1) << 16;
  }
  seen |= last | (last - kOnes);
  return (seen & kTops) == 0;
}

std::string_view wellFormed(std::string_view text, std::string& storage) {
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
  const auto size = static_cast<std::int64_t>(text.size());
  bool changed = false;
  for (std::int64_t at = 0; at < size;) {
    const std::int64_t start = at;
    UChar32 c;
    U8_NEXT(bytes, at, size, c);
    if (c < 0 && !changed) {
      changed = true;
      storage.assign(text.substr(0, static_cast<std::size_t>(start)));
    }
    if (!changed) continue;
    if (c < 0) {
      appendCodePoint(storage, kReplacement);
    } else {
      storage.append(
          text.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(at - start)));
    }
  }
  return changed ? std::string_view(storage) : text;
}

char32_t nextCodePoint(std::string_view text, std::size_t& at) noexcept {
  const CodePoint next = codePointAt(text, at);
  at += next.size;
  return next.value;
}

void appendCodePoint(std::string& text, char32_t codePoint) {
  char bytes[U8_MAX_LENGTH];
  text.append(bytes, writeUTF8(codePoint, bytes));
}

bool isBlank(char32_t codePoint) noexcept {
  return u_isUWhiteSpace(static_cast<UChar32>(codePoint)) != 0;
}

char32_t lowerCasePoint(char32_t codePoint) noexcept {
  return static_cast<char32_t>(u_tolower(static_cast<UChar32>(codePoint)));
}

std::string lowerCase(std::string_view text) {
  std::string lower(text);
  if (isASCII(text)) {
    for (char& c : lower) c = lowerCaseOf(c);
    return lower;
  }
  auto unicode = icu::UnicodeString::fromUTF8(
      icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size())));
  unicode.toLower(icu::Locale::getRoot());
  lower.clear();
  unicode.toUTF8String(lower);
  return lower;
}

String lowerCase(const String& text) {
  const auto view = text.view();
  if (isASCII(view) && std::none_of(view.begin(), view.end(), isUpperCase)) return text;
  const std::string lower = lowerCase(view);
  return lower == view ? text : String(lower);
}

double readNumber(std::string_view text) noexcept {
  std::uint64_t mantissa = 0;
  int digits = 0;
  int fraction = 0;
  std::size_t at = 0;
  for (; at < text.size() && isDigit(text[at]); ++at, ++digits) {
    mantissa = mantissa * 10 + static_cast<std::uint64_t>(text[at] - '0');
  }
  if (at < text.size() && text[at] == '.') {
    for (++at; at < text.size() && isDigit(text[at]); ++at, ++digits, ++fraction) {
      mantissa = mantissa * 10 + static_cast<std::uint64_t>(text[at] - '0');
    }
  }
  if (digits > kExactDigits) return readNumberSlowly(text);
  std::int64_t exponent = -fraction;
  if (at < text.size()) exponent += readExponent(text.substr(at + 1));
  if (exponent < -kLargestExactPower || exponent > kLargestExactPower) {
    return mantissa == 0 ? 0.0 : readNumberSlowly(text);
  }
  const auto exact = static_cast<double>(mantissa);
  return exponent < 0 ? exact / kExactPowers[-exponent] : exact * kExactPowers[exponent];
}

}  // namespace tarnkit::detail
