#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tarnkit::detail {

/// Small numbers found by address: the archivers' table of the objects that they have met. The
/// addresses themselves stand in the owner's list, in the order of the numbers; a slot takes 8
/// bytes.
class IdentityTable {
 public:
  static constexpr std::uint32_t kNone = 0xFFFFFFFFU;

  /// The number of the address, or `kNone`. `addressOf` gives the address of a number.
  template <class AddressOf>
  std::uint32_t find(const void* address, AddressOf addressOf) const noexcept {
    if (slots_.empty()) return kNone;
    const std::uint32_t hash = hashOf(address);
    const std::size_t mask = slots_.size() - 1;
    for (std::size_t at = placeOf(hash) & mask;; at = (at + 1) & mask) {
      const Slot slot = slots_[at];
      if (slot.numberPlusOne == 0) return kNone;
      if (slot.hash == hash && addressOf(slot.numberPlusOne - 1) == address) {
        return slot.numberPlusOne - 1;
      }
    }
  }

  /// Enters an address that is not in the table.
  void add(const void* address, std::uint32_t number) {
    if ((used_ + 1) * 2 > slots_.size()) grow();
    place({hashOf(address), number + 1}, slots_);
    ++used_;
  }

  /// Gives an address another number, or enters it.
  template <class AddressOf>
  void set(const void* address, std::uint32_t number, AddressOf addressOf) {
    const std::uint32_t known = find(address, addressOf);
    if (known == kNone) {
      add(address, number);
      return;
    }
    const std::size_t mask = slots_.size() - 1;
    std::size_t at = placeOf(hashOf(address)) & mask;
    while (slots_[at].numberPlusOne != known + 1) at = (at + 1) & mask;
    slots_[at].numberPlusOne = number + 1;
  }

  void clear() noexcept {
    slots_ = std::vector<Slot>();
    used_ = 0;
  }

 private:
  struct Slot {
    std::uint32_t hash;
    std::uint32_t numberPlusOne;
  };

  // Objects are at least 16 bytes apart.
  static std::uint32_t hashOf(const void* address) noexcept {
    return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(address) >> 4);
  }
  // Neighbours in memory, which are mostly met together, stay neighbours here; the upper bits move
  // regions that would fall on each other apart.
  static std::size_t placeOf(std::uint32_t hash) noexcept {
    return hash + (hash >> 16) * std::size_t{0x9E37U};
  }
  static void place(Slot slot, std::vector<Slot>& slots) noexcept {
    const std::size_t mask = slots.size() - 1;
    std::size_t at = placeOf(slot.hash) & mask;
    while (slots[at].numberPlusOne != 0) at = (at + 1) & mask;
    slots[at] = slot;
  }
  void grow() {
    std::vector<Slot> larger(slots_.empty() ? 64 : slots_.size() * 2);
    for (const Slot slot : slots_) {
      if (slot.numberPlusOne != 0) place(slot, larger);
    }
    slots_ = std::move(larger);
  }

  std::vector<Slot> slots_;
  std::size_t used_ = 0;
};

}  // namespace tarnkit::detail
