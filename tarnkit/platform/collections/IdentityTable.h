#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace tarnkit::detail {

/// Small numbers found by address: the archivers' table of the objects that they have met.
///
/// Address space is cut into windows of 4 KiB; a window has one place for every 16 bytes, and only
/// the windows are hashed. Objects that lie together are mostly met together, so their numbers are
/// found in the same few lines of the cache, without a comparison. A window costs 1 KiB.
class IdentityTable {
 public:
  static constexpr std::uint32_t kNone = 0xFFFFFFFFU;

  /// The number of the address, or `kNone`.
  std::uint32_t find(const void* address) const noexcept {
    if (slots_.empty()) return kNone;
    const Slot& slot = slotOf(windowOf(address));
    return slot.numbers ? (*slot.numbers)[placeOf(address)] - 1 : kNone;
  }

  /// Gives the address a number, whether it had one or not.
  void set(const void* address, std::uint32_t number) {
    const auto window = windowOf(address);
    if (slots_.empty() || !slotOf(window).numbers) enter(window);
    (*slotOf(window).numbers)[placeOf(address)] = number + 1;
  }

  void clear() noexcept {
    slots_ = std::vector<Slot>();
    windows_ = std::vector<std::unique_ptr<Numbers>>();
  }

 private:
  // Objects are at least 16 bytes apart: a count and a class each.
  static constexpr unsigned kPlaceBits = 4;
  static constexpr unsigned kWindowBits = 12;
  // One more than the number, so that fresh memory says "none".
  using Numbers = std::array<std::uint32_t, std::size_t{1} << (kWindowBits - kPlaceBits)>;
  struct Slot {
    std::uintptr_t window = 0;
    Numbers* numbers = nullptr;
  };

  static std::uintptr_t windowOf(const void* address) noexcept {
    return reinterpret_cast<std::uintptr_t>(address) >> kWindowBits;
  }
  static std::size_t placeOf(const void* address) noexcept {
    return reinterpret_cast<std::uintptr_t>(address) >> kPlaceBits & (Numbers().size() - 1);
  }
  // The slot of the window, or the free one where it belongs. Sixteen neighbours stay together.
  template <class Slots>
  static auto& slotIn(Slots& slots, std::uintptr_t window) noexcept {
    const std::size_t mask = slots.size() - 1;
    const std::uint64_t mixed = (std::uint64_t{window} >> 4) * 0x9E3779B97F4A7C15ULL;
    for (std::size_t at = (mixed >> 32) * 16 + (window & 15);; ++at) {
      auto& slot = slots[at & mask];
      if (!slot.numbers || slot.window == window) return slot;
    }
  }
  const Slot& slotOf(std::uintptr_t window) const noexcept { return slotIn(slots_, window); }

  void enter(std::uintptr_t window) {
    if ((windows_.size() + 1) * 2 > slots_.size()) {
      std::vector<Slot> larger(slots_.empty() ? 64 : slots_.size() * 2);
      for (const Slot& slot : slots_) {
        if (slot.numbers) slotIn(larger, slot.window) = slot;
      }
      slots_ = std::move(larger);
    }
    windows_.push_back(std::make_unique<Numbers>());
    slotIn(slots_, window) = {window, windows_.back().get()};
  }

  std::vector<Slot> slots_;  // a power of two, at most half in use
  std::vector<std::unique_ptr<Numbers>> windows_;
};

}  // namespace tarnkit::detail
