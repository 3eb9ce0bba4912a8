#pragma once

#include <atomic>
#include <cstdint>

namespace tarnkit::detail {

/// The numbers of the unique keys of one kind of object, from 0. Documents may be made and opened
/// in several threads, and no two of them get the same number.
class HXKeyCounter {
 public:
  std::int32_t next() noexcept {
    return static_cast<std::int32_t>(next_.fetch_add(1, std::memory_order_relaxed));
  }

 private:
  std::atomic<std::uint32_t> next_{0};
};

}  // namespace tarnkit::detail
