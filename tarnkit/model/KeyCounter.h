#pragma once

#include <atomic>
#include <cstdint>
#include <string_view>

#include "tarnkit/platform/text/String.h"

namespace tarnkit {

/// Where one kind of object draws its unique keys: a prefix and a number of 32 bits with a sign, 0
/// first. Keys are unique within one process only; keys that are read from an archive move the
/// counter past them. May be used by several threads at once, each draw gives another number.
class KeyCounter {
 public:
  /// The prefix must outlive the counter, and have no more than 32 bytes.
  constexpr explicit KeyCounter(std::string_view prefix) noexcept : prefix_(prefix) {}

  /// The number of the next key.
  std::int32_t nextNumber() noexcept {
    return static_cast<std::int32_t>(next_.fetch_add(1, std::memory_order_relaxed));
  }
  /// The next key: the prefix and the next number.
  String next() { return key(nextNumber()); }
  /// The key of that number.
  String key(std::int32_t number) const;
  /// No number up to that of the key is drawn any more. A text that is no key of this kind, or nil,
  /// changes nothing.
  void moveBeyond(std::string_view key) noexcept;

 private:
  std::string_view prefix_;
  std::atomic<std::uint32_t> next_{0};
};

}  // namespace tarnkit
