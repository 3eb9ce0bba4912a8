#include "tarnkit/model/KeyCounter.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <charconv>

namespace tarnkit {

String KeyCounter::key(std::int32_t number) const {
  std::array<char, 48> text;
  assert(prefix_.size() + 11 <= text.size());
  char* const digits = std::copy(prefix_.begin(), prefix_.end(), text.data());
  const char* const end = std::to_chars(digits, text.data() + text.size(), number).ptr;
  return String(std::string_view(text.data(), static_cast<std::size_t>(end - text.data())));
}

void KeyCounter::moveBeyond(std::string_view key) noexcept {
  if (!key.starts_with(prefix_)) return;
  std::int32_t number = 0;
  const char* const end = key.data() + key.size();
  const auto [read, error] = std::from_chars(key.data() + prefix_.size(), end, number);
  // Beyond a negative number, which no honest file has, the counter would soon begin again at the
  // keys that were read.
  if (error != std::errc() || read != end || number < 0) return;
  const auto taken = static_cast<std::uint32_t>(number);
  auto next = next_.load(std::memory_order_relaxed);
  while (next <= taken &&
         !next_.compare_exchange_weak(next, taken + 1, std::memory_order_relaxed)) {
  }
}

}  // namespace tarnkit
