#pragma once

#include <unicode/utf8.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace tarnkit::detail {

/// Whether every byte is below 128.
inline bool isASCII(std::string_view text) noexcept {
  const auto wordAt = [&](std::size_t at) {
    std::uint64_t word = 0;
    std::memcpy(&word, text.data() + at, sizeof word);
    return word;
  };
  constexpr std::size_t kWord = sizeof(std::uint64_t);
  const std::size_t size = text.size();
  std::uint64_t seen = 0;
  if (size < kWord) {
    for (const char c : text) seen |= static_cast<std::uint64_t>(c & 0x80);
  } else {
    // The last word may overlap the one before.
    for (std::size_t at = 0; at + kWord < size; at += kWord) seen |= wordAt(at);
    seen |= wordAt(size - kWord);
  }
  return (seen & 0x8080808080808080ULL) == 0;
}

struct CodePoint {
  std::uint32_t value;
  std::uint32_t size;  // bytes taken
};

// ICU's macros narrow without saying so.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"

/// The code point at `at`, which must be below the size. A byte that begins no well-formed sequence
/// is taken alone and reads as U+FFFD.
inline CodePoint codePointAt(std::string_view text, std::size_t at) noexcept {
  const char* const bytes = text.data();
  std::size_t next = at;
  UChar32 value = 0;
  U8_NEXT(bytes, next, text.size(), value);
  if (value < 0) return {0xFFFD, 1};
  return {static_cast<std::uint32_t>(value), static_cast<std::uint32_t>(next - at)};
}

/// Whether the code point stands for nothing to be seen and acts on a terminal, or on the text
/// around it, instead: the control characters of both sets, the marks and controls of the direction
/// of writing, the separators of lines and paragraphs.
constexpr bool isControl(std::uint32_t c) noexcept {
  return c < 0x20 || (c >= 0x7F && c < 0xA0) || c == 0x061C || c == 0x200E || c == 0x200F ||
         (c >= 0x2028 && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069);
}

/// The whole code points at the text's beginning that take at most that many bytes.
inline std::string_view beginningOf(std::string_view text, std::size_t bytes) noexcept {
  if (text.size() <= bytes) return text;
  while (bytes > 0 && U8_IS_TRAIL(text[bytes])) --bytes;
  return text.substr(0, bytes);
}

/// Writes the code point, which must be one, as UTF-8 to `into`, which has room for 4 bytes;
/// returns how many it took.
inline std::size_t writeUTF8(std::uint32_t value, char* into) noexcept {
  std::size_t size = 0;
  U8_APPEND_UNSAFE(into, size, value);
  return size;
}

#pragma GCC diagnostic pop

}  // namespace tarnkit::detail
