#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace tarnkit::detail {

/// The process's random keys for `keyedHash`; they must never show in an output.
struct HashKeys {
  std::uint64_t words[4];
};
const HashKeys& hashKeys() noexcept;

inline std::uint64_t foldedProduct(std::uint64_t a, std::uint64_t b) noexcept {
  __extension__ using Wide = unsigned __int128;
  const Wide product = static_cast<Wide>(a) * b;
  return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
}

/// A hash of bytes that nobody outside the process can predict, so that a hostile file cannot make
/// its strings collide. For look-up tables only: it differs from run to run.
inline std::uint64_t keyedHash(const void* bytes, std::size_t size, const HashKeys& keys) noexcept {
  const auto* at = static_cast<const unsigned char*>(bytes);
  std::uint64_t state = keys.words[0] ^ size;
  std::size_t left = size;
  std::uint64_t a = 0;
  std::uint64_t b = 0;
  for (; left > 16; at += 16, left -= 16) {
    std::memcpy(&a, at, 8);
    std::memcpy(&b, at + 8, 8);
    state = foldedProduct(a ^ keys.words[1], b ^ state) ^ keys.words[2];
  }
  if (left >= 8) {
    std::memcpy(&a, at, 8);
    std::memcpy(&b, at + left - 8, 8);
  } else if (left >= 4) {
    std::uint32_t low = 0;
    std::uint32_t high = 0;
    std::memcpy(&low, at, 4);
    std::memcpy(&high, at + left - 4, 4);
    a = low;
    b = high;
  } else if (left > 0) {
    a = (std::uint64_t{at[0]} << 16) | (std::uint64_t{at[left / 2]} << 8) | at[left - 1];
    b = 0;
  }
  state = foldedProduct(a ^ keys.words[1], b ^ state);
  return foldedProduct(state ^ keys.words[2], keys.words[3]);
}

inline std::uint64_t keyedHash(std::string_view text) noexcept {
  return keyedHash(text.data(), text.size(), hashKeys());
}

}  // namespace tarnkit::detail
