#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "tarnkit/platform/propertylist/RawBuffer.h"

namespace tarnkit {

class PropertyList;

namespace detail {

/// The numbers of the texts that are keys in a property list: equal texts have one number.
///
/// Most keys are found by their hash. Strings that begin alike and ascend from one to the next, as
/// the IDs of an archive's objects do, form a chain and are found by their order: to number one
/// takes a comparison with the one before, where a hash would wait for the memory once a string.
/// Belongs to the list, and is filled while the list is read.
class PropertyListKeys {
 public:
  using Index = std::uint32_t;
  /// Twice the ordinal among the keys of its sort, and 1 for those of the chain.
  using Key = std::uint32_t;
  static constexpr Key kNone = 0xFFFFFFFEU;

  std::size_t hashedCount() const noexcept { return strings_.size(); }
  std::size_t chainedCount() const noexcept { return chain_.size(); }
  static bool isChained(Key key) noexcept { return (key & 1U) != 0; }
  static std::uint32_t ordinalOf(Key key) noexcept { return key >> 1; }

  /// `kNone` when no string of the list that was numbered has the text.
  Key named(const PropertyList& list, std::string_view text) const noexcept;

  // While the list is read.

  /// Takes the string into the chain, if it is the next one of it.
  bool link(const PropertyList& list, Index string, std::string_view text) {
    return isOpen_ && mayBeLinked(text) && append(list, string, text);
  }
  /// The number of the last one that was taken in.
  Key lastLinked() const noexcept { return static_cast<Key>((chain_.size() << 1) - 1); }

  void expect(std::size_t newKeys);
  static std::uint32_t hashOf(std::string_view text) noexcept;
  void prefetch(std::uint32_t hash) const noexcept {
    __builtin_prefetch(&table_[hash & (table_.size() - 1)]);
  }
  /// The number of the string, which is not of the chain: a new one when no equal string has one.
  Key number(const PropertyList& list, Index string, std::uint32_t hash);

 private:
  struct Slot {
    std::uint32_t hash;
    std::uint32_t ordinalPlusOne;
  };
  // How much of the strings of the chain is the same. What begins with '$' was named by an
  // archiver.
  static constexpr std::size_t kPrefix = 8;

  static bool mayBeLinked(std::string_view text) noexcept {
    return text.size() > kPrefix && text[0] == '$';
  }
  bool append(const PropertyList& list, Index string, std::string_view text);
  bool couldBeInChain(const PropertyList& list, std::string_view text) const noexcept;
  Key inChain(const PropertyList& list, std::string_view text) const noexcept;

  std::vector<Slot> table_;
  std::vector<Index> strings_;  // one for each hashed key
  RawBuffer<Index> chain_;
  std::string_view last_;  // of the chain
  bool isOpen_ = true;
};

}  // namespace detail
}  // namespace tarnkit
