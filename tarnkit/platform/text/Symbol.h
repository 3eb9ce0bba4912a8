#pragma once

#include <atomic>
#include <cstdint>
#include <string_view>

#include "tarnkit/platform/text/String.h"

namespace tarnkit {

/// A name fixed when the program is written (an archive key, a notification name, a user-info key)
/// with a small process-wide number, so that tables are indexed by it instead of hashing the text.
///
/// Symbols are constant-initialised and never destroyed; two symbols of one text have one number.
/// Safe to use from any thread. The number and the shared string are made at first use.
class Symbol {
 public:
  /// `text` must be a string literal.
  explicit constexpr Symbol(const char* text) noexcept : text_(text) {}
  Symbol(const Symbol&) = delete;
  Symbol& operator=(const Symbol&) = delete;

  std::string_view text() const noexcept { return text_; }
  /// 0, 1, 2 … in the order of first use.
  std::uint32_t number() const {
    if (!string_.load(std::memory_order_acquire)) resolve();
    return number_;
  }
  /// The name as a shared string.
  const String& string() const {
    const auto* string = string_.load(std::memory_order_acquire);
    return string ? *string : resolve();
  }
  /// How many numbers have been given so far.
  static std::uint32_t count();
  /// The text of a number that was given.
  static String stringOf(std::uint32_t number);

  friend bool operator==(const Symbol& a, const Symbol& b) {
    return &a == &b || a.number() == b.number();
  }

 private:
  const String& resolve() const;

  const char* text_;
  mutable std::uint32_t number_ = 0;
  mutable std::atomic<const String*> string_{nullptr};  // null until first use
};

}  // namespace tarnkit
