#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace tarnkit::detail {

/// Whether every byte is below 128.
inline bool isASCII(std::string_view text) noexcept {
  const char* at = text.data();
  std::size_t left = text.size();
  std::uint64_t seen = 0;
  for (; left >= 8; at += 8, left -= 8) {
    std::uint64_t word = 0;
    std::memcpy(&word, at, 8);
    seen |= word;
  }
  for (; left > 0; ++at, --left) seen |= static_cast<std::uint64_t>(*at & 0x80);
  return (seen & 0x8080808080808080ULL) == 0;
}

struct CodePoint {
  std::uint32_t value;
  std::uint32_t size;  // bytes taken
};

/// The code point at `at`, which must be below the size. A byte that begins no well-formed sequence
/// is taken alone and reads as U+FFFD.
inline CodePoint codePointAt(std::string_view text, std::size_t at) noexcept {
  constexpr CodePoint kBad{0xFFFD, 1};
  const auto byte = [&](std::size_t i) -> std::uint32_t {
    return at + i < text.size() ? static_cast<unsigned char>(text[at + i]) : 0U;
  };
  const auto continues = [&](std::size_t i) { return (byte(i) & 0xC0U) == 0x80U; };
  const std::uint32_t first = byte(0);
  if (first < 0x80) return {first, 1};
  if (first < 0xC2 || !continues(1)) return kBad;
  if (first < 0xE0) return {((first & 0x1FU) << 6) | (byte(1) & 0x3FU), 2};
  if (!continues(2)) return kBad;
  if (first < 0xF0) {
    const std::uint32_t value =
        ((first & 0x0FU) << 12) | ((byte(1) & 0x3FU) << 6) | (byte(2) & 0x3FU);
    return value < 0x800 || (value >= 0xD800 && value < 0xE000) ? kBad : CodePoint{value, 3};
  }
  if (first > 0xF4 || !continues(3)) return kBad;
  const std::uint32_t value = ((first & 0x07U) << 18) | ((byte(1) & 0x3FU) << 12) |
                              ((byte(2) & 0x3FU) << 6) | (byte(3) & 0x3FU);
  return value < 0x10000 || value > 0x10FFFF ? kBad : CodePoint{value, 4};
}

/// The whole code points at the text's beginning that take at most that many bytes.
inline std::string_view beginningOf(std::string_view text, std::size_t bytes) noexcept {
  if (text.size() <= bytes) return text;
  while (bytes > 0 && (static_cast<unsigned char>(text[bytes]) & 0xC0U) == 0x80) --bytes;
  return text.substr(0, bytes);
}

/// Writes the code point as UTF-8 to `into`, which has room for 4 bytes; returns how many it took.
inline std::size_t writeUTF8(std::uint32_t value, char* into) noexcept {
  const auto put = [&](std::size_t i, std::uint32_t byte) { into[i] = static_cast<char>(byte); };
  if (value < 0x80) {
    put(0, value);
    return 1;
  }
  if (value < 0x800) {
    put(0, 0xC0U | (value >> 6));
    put(1, 0x80U | (value & 0x3FU));
    return 2;
  }
  if (value < 0x10000) {
    put(0, 0xE0U | (value >> 12));
    put(1, 0x80U | ((value >> 6) & 0x3FU));
    put(2, 0x80U | (value & 0x3FU));
    return 3;
  }
  put(0, 0xF0U | (value >> 18));
  put(1, 0x80U | ((value >> 12) & 0x3FU));
  put(2, 0x80U | ((value >> 6) & 0x3FU));
  put(3, 0x80U | (value & 0x3FU));
  return 4;
}

}  // namespace tarnkit::detail
