#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace tarnkit::detail {

/// Small numbers by small numbers that lie far apart: where an array by number would be mostly
/// empty. Finding and setting take constant time on average; it holds 16 to 32 bytes an entry.
class NumberTable {
 public:
  static constexpr std::uint32_t kNone = 0xFFFFFFFFU;

  /// The value of the number, or `kNone`.
  std::uint32_t find(std::uint32_t number) const noexcept {
    return slots_.empty() ? kNone : slotOf(slots_, number).value;
  }
  /// The value is not `kNone`.
  void set(std::uint32_t number, std::uint32_t value) {
    if ((used_ + 1) * 2 > slots_.size()) grow();
    Slot& slot = slotOf(slots_, number);
    if (slot.value == kNone) ++used_;
    slot = {number, value};
  }
  /// Gives the memory back.
  void clear() noexcept {
    slots_ = std::vector<Slot>();
    used_ = 0;
  }

 private:
  struct Slot {
    std::uint32_t number = 0;
    std::uint32_t value = kNone;
  };

  // The slot of the number, or the free one where it belongs.
  template <class Slots>
  static auto slotOf(Slots& slots, std::uint32_t number) noexcept -> decltype(slots[0]) {
    const std::size_t mask = slots.size() - 1;
    for (std::size_t at = std::uint64_t{number} * 0x9E3779B97F4A7C15U >> 32;; ++at) {
      auto& slot = slots[at & mask];
      if (slot.value == kNone || slot.number == number) return slot;
    }
  }
  void grow() {
    std::vector<Slot> larger(slots_.empty() ? 64 : slots_.size() * 2);
    for (const Slot& slot : slots_) {
      if (slot.value != kNone) slotOf(larger, slot.number) = slot;
    }
    slots_ = std::move(larger);
  }

  std::vector<Slot> slots_;  // a power of two, at most half in use
  std::size_t used_ = 0;
};

}  // namespace tarnkit::detail
