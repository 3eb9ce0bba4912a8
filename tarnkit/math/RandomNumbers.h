#pragma once

#include <cstdint>
#include <mutex>
#include <random>

namespace tarnkit::detail {

/// Uniform whole numbers for `random()`; the same sequence on every system for the same seed,
/// seeded from the system to begin with. Safe to use from several threads.
class RandomNumbers {
 public:
  RandomNumbers();
  void seed(std::uint64_t seed);
  /// A number in [lower, upper); `lower` must be below `upper`.
  std::uint32_t between(std::uint32_t lower, std::uint32_t upper);

 private:
  std::mutex mutex_;
  std::mt19937_64 generator_;
};

}  // namespace tarnkit::detail
