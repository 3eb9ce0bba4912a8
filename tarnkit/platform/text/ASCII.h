#pragma once

namespace tarnkit::detail {

// Characters of ASCII, whatever the locale.

constexpr bool isDigit(char c) noexcept { return c >= '0' && c <= '9'; }
constexpr bool isUpperCase(char c) noexcept { return c >= 'A' && c <= 'Z'; }
/// The character itself where it is no letter from A to Z.
constexpr char lowerCaseOf(char c) noexcept {
  return isUpperCase(c) ? static_cast<char>(c + ('a' - 'A')) : c;
}

}  // namespace tarnkit::detail
