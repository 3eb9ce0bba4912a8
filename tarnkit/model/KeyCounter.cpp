#include "tarnkit/model/KeyCounter.h"

#include <fmt/format.h>

#include <charconv>
#include <limits>

namespace tarnkit {

String KeyCounter::key(std::int32_t number) const {
  return String(fmt::format("{}{}", prefix_, number));
}

void KeyCounter::moveBeyond(std::string_view key) noexcept {
  if (!key.starts_with(prefix_)) return;
  std::int32_t number = 0;
  const char* const end = key.data() + key.size();
  const auto [read, error] = std::from_chars(key.data() + prefix_.size(), end, number);
  // The negative numbers follow the positive ones; nothing lies beyond the last of them.
  const auto taken = static_cast<std::uint32_t>(number);
  if (error != std::errc() || read != end || taken == std::numeric_limits<std::uint32_t>::max()) {
    return;
  }
  auto next = next_.load(std::memory_order_relaxed);
  while (next <= taken &&
         !next_.compare_exchange_weak(next, taken + 1, std::memory_order_relaxed)) {
  }
}

}  // namespace tarnkit
