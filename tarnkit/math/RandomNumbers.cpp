#include "tarnkit/math/RandomNumbers.h"

#include <cassert>
#include <limits>

namespace tarnkit::detail {

RandomNumbers::RandomNumbers() {
  std::random_device system;
  const std::uint64_t high = system();
  generator_.seed(high << 32 | system());
}

void RandomNumbers::seed(std::uint64_t seed) {
  const std::lock_guard lock(mutex_);
  generator_.seed(seed);
}

std::uint32_t RandomNumbers::between(std::uint32_t lower, std::uint32_t upper) {
  assert(lower < upper);
  const std::lock_guard lock(mutex_);
  const std::uint64_t range = upper - lower;
  // Draws beyond the last whole multiple of the range would favour its first numbers.
  const std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
  const std::uint64_t limit = most - most % range;
  std::uint64_t drawn = generator_();
  while (drawn >= limit) drawn = generator_();
  return lower + static_cast<std::uint32_t>(drawn % range);
}

}  // namespace tarnkit::detail
