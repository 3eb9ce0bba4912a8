#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace tarnkit::detail {

/// How the binary form marks its objects: the high half of an object's first byte says what it is,
/// the low half how long it is.
namespace marker {
constexpr std::uint8_t kFalse = 0x08;
constexpr std::uint8_t kTrue = 0x09;
constexpr std::uint8_t kInteger = 0x10;
constexpr std::uint8_t kReal = 0x20;
constexpr std::uint8_t kReal64 = 0x23;
constexpr std::uint8_t kDate = 0x33;
constexpr std::uint8_t kData = 0x40;
constexpr std::uint8_t kASCII = 0x50;
constexpr std::uint8_t kUTF16 = 0x60;
constexpr std::uint8_t kUID = 0x80;
constexpr std::uint8_t kArray = 0xA0;
constexpr std::uint8_t kMap = 0xD0;
}  // namespace marker

constexpr std::size_t kPropertyListHeaderSize = 8;
constexpr std::size_t kPropertyListTrailerSize = 32;

template <class Word>
Word bigEndian(Word value) noexcept {
  static_assert(std::endian::native == std::endian::little);
  if constexpr (sizeof(Word) == 8) return static_cast<Word>(__builtin_bswap64(value));
  if constexpr (sizeof(Word) == 4) return static_cast<Word>(__builtin_bswap32(value));
  if constexpr (sizeof(Word) == 2) return static_cast<Word>(__builtin_bswap16(value));
  return value;
}

/// A number of 1 to 8 bytes. Reads 8 bytes whatever the width.
inline std::uint64_t readWidth(const std::uint8_t* at, unsigned shift) noexcept {
  std::uint64_t word = 0;
  std::memcpy(&word, at, sizeof word);
  return bigEndian(word) >> shift;
}
/// What `readWidth` takes for numbers of that many bytes.
constexpr unsigned shiftOfWidth(unsigned width) noexcept { return 64 - 8 * width; }

/// The same byte by byte, for numbers that nothing may follow.
inline std::uint64_t readBytes(const std::uint8_t* at, unsigned width) noexcept {
  std::uint64_t value = 0;
  for (unsigned i = 0; i < width; ++i) value = (value << 8) | at[i];
  return value;
}

/// The length of an object that was checked before, and where what it holds begins.
struct PropertyListExtent {
  const std::uint8_t* body;
  std::size_t count;
};
inline PropertyListExtent extentAt(const std::uint8_t* object) noexcept {
  const unsigned low = object[0] & 0x0FU;
  if (low != 15) return {object + 1, low};
  const unsigned width = 1U << (object[1] & 3U);
  return {object + 2 + width, static_cast<std::size_t>(readBytes(object + 2, width))};
}

}  // namespace tarnkit::detail
