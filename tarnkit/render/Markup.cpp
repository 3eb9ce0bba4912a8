#include "tarnkit/render/Markup.h"

#include <charconv>
#include <cmath>

#include "tarnkit/platform/text/UTF8.h"
#include "tarnkit/render/TextMetrics.h"

namespace tarnkit::detail {

namespace {

constexpr double kLargest = 1e7;
constexpr char kHexDigits[] = "0123456789abcdef";

const char* entity(char c) noexcept {
  switch (c) {
    case '&':
      return "&amp;";
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '"':
      return "&quot;";
    default:
      return nullptr;
  }
}

unsigned byteOf(float component) noexcept {
  if (!(component > 0)) return 0;
  return component >= 1 ? 255 : static_cast<unsigned>(std::lround(component * 255));
}

void appendCodePoint(std::string& out, char32_t codePoint) {
  char bytes[4];
  out.append(bytes, writeUTF8(codePoint, bytes));
}

}  // namespace

void appendEscaped(std::string& out, std::string_view text) {
  std::size_t plain = 0;
  for (std::size_t at = 0; at < text.size();) {
    const char c = text[at];
    const bool isPlain = c >= 0x20 && c < 0x7F;
    const char* const escaped = isPlain ? entity(c) : nullptr;
    if (isPlain && !escaped) {
      ++at;
      continue;
    }
    out.append(text, plain, at - plain);
    if (escaped) {
      out += escaped;
      ++at;
    } else {
      const CodePoint point = codePointAt(text, at);
      appendCodePoint(out, shownCodePoint(point.value));
      at += point.size;
    }
    plain = at;
  }
  out.append(text, plain);
}

std::int64_t hundredthsOf(double number) noexcept {
  if (std::isnan(number)) number = 0;
  number = std::fmin(std::fmax(number, -kLargest), kLargest);
  return std::llround(number * 100);
}

void appendNumber(std::string& out, double number) {
  auto hundredths = hundredthsOf(number);
  if (hundredths < 0) {
    out += '-';
    hundredths = -hundredths;
  }
  appendNumber(out, static_cast<std::size_t>(hundredths / 100));
  const auto rest = static_cast<int>(hundredths % 100);
  if (rest == 0) return;
  out += '.';
  out += static_cast<char>('0' + rest / 10);
  if (rest % 10 != 0) out += static_cast<char>('0' + rest % 10);
}

void appendNumber(std::string& out, std::size_t number) {
  char digits[24];
  const auto end = std::to_chars(digits, digits + sizeof digits, number).ptr;
  out.append(digits, end);
}

void appendInteger(std::string& out, std::int64_t number) {
  char digits[24];
  const auto end = std::to_chars(digits, digits + sizeof digits, number).ptr;
  out.append(digits, end);
}

void appendIdPart(std::string& out, std::string_view key) {
  for (const char c : key) {
    const bool isPlain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                         (c >= '0' && c <= '9') || c == '_' || c == '.';
    if (isPlain) {
      out += c;
    } else {
      const auto byte = static_cast<unsigned char>(c);
      out += '-';
      out += kHexDigits[byte >> 4];
      out += kHexDigits[byte & 15U];
    }
  }
}

void appendColor(std::string& out, RGBA color) {
  out += '#';
  for (const float component : {color.red, color.green, color.blue}) {
    const unsigned byte = byteOf(component);
    out += kHexDigits[byte >> 4];
    out += kHexDigits[byte & 15U];
  }
}

}  // namespace tarnkit::detail
