#pragma once

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <vector>

#include "tarnkit/platform/Data.h"
#include "tarnkit/platform/PropertyListElements.h"
#include "tarnkit/platform/RawBuffer.h"

namespace tarnkit {

namespace detail {
class PropertyListBuilder;
}

/// A property list as read: checked values, each known by its index. Immutable.
///
/// The values stay in the binary form, where they were read, and are decoded when they are asked
/// for; beside the bytes a value takes 8 bytes of memory, whatever it holds. (A list in the XML
/// form is held in the binary form too.) So nothing is expanded, copied or freed one by one, and
/// nesting costs nothing; but the bytes that were read must outlive the list and not change. Made
/// by `PropertyListReader`, which has made sure that containers do not hold themselves, that the
/// keys of a map are different strings, and that texts are UTF-8. Owned by whoever read it; may be
/// read from any thread.
class PropertyList {
 public:
  using Index = std::uint32_t;
  using Elements = PropertyListElements;
  static constexpr Index kNone = 0xFFFFFFFFU;

  enum class Kind : std::uint8_t {
    null,
    boolean,
    integer,          // fits 64 bits signed
    unsignedInteger,  // fits 64 bits unsigned only
    wideInteger,      // needs more; known as a real
    real32,
    real64,
    date,
    data,
    uid,
    array,
    map,
    string,
  };
  /// What the kind is called in messages ("a string").
  static const char* nameOf(Kind kind) noexcept;

  PropertyList() = default;

  Index root() const noexcept { return root_; }
  std::size_t count() const noexcept { return entries_.size(); }
  /// How many bytes it was read from.
  std::size_t fileSize() const noexcept { return fileSize_; }
  /// How many references all containers hold together.
  std::size_t referenceCount() const noexcept { return referenceCount_; }

  Kind kind(Index index) const noexcept { return entries_[index].kind(); }
  // Each of these is for values of its kind only.
  bool boolean(Index index) const noexcept;
  /// Of an `integer`; of an `unsignedInteger`, its bits; of a boolean, 0 or 1.
  std::int64_t integer(Index index) const noexcept;
  /// Of a real, a `wideInteger`, or a date (seconds from 2001-01-01 00:00 UTC).
  double real(Index index) const noexcept;
  std::uint64_t uid(Index index) const noexcept;
  std::string_view string(Index index) const noexcept;
  ByteSpan data(Index index) const noexcept;

  /// Elements of an array, entries of a map, bytes of data.
  std::uint32_t count(Index index) const noexcept {
    return static_cast<std::uint32_t>(detail::extentAt(objectAt(index)).count);
  }
  Elements elements(Index array) const noexcept {
    const auto extent = detail::extentAt(objectAt(array));
    return {extent.body, static_cast<std::uint32_t>(extent.count), referenceWidth_};
  }
  Elements keys(Index map) const noexcept { return elements(map); }
  Elements values(Index map) const noexcept {
    const auto extent = detail::extentAt(objectAt(map));
    return {extent.body + extent.count * referenceWidth_, static_cast<std::uint32_t>(extent.count),
            referenceWidth_};
  }

  /// Asks the memory for what is wanted soon (a value; the first of a container's elements): in a
  /// large list each of them would be waited for.
  void prefetch(Index index) const noexcept { __builtin_prefetch(&entries_[index]); }
  void prefetch(const Elements& elements) const noexcept {
    for (const Index index : elements.first(std::min<std::size_t>(elements.size(), 16))) {
      prefetch(index);
    }
  }

  /// Every text that is the key of some map has a number, so keys are compared without their texts.
  /// `PropertyListKeyMap` holds a value for each.
  using Key = std::uint32_t;
  static constexpr Key kNoKey = 0xFFFFFFFEU;
  /// The number of a string that stands as a map's key, or `kNoKey` for one that was met as a value
  /// only (an equal key may still be there: see `keyNamed`).
  Key keyOf(Index string) const noexcept { return entries_[string].key(); }
  /// `kNoKey` when no map has such a key. Costs a hash.
  Key keyNamed(std::string_view text) const noexcept;
  /// The value in the map, or `kNone`. Linear in the map.
  Index valueForKey(Index map, std::string_view key) const noexcept;

  /// How keys are numbered: most are found by their hash; strings that begin alike and ascend from
  /// one to the next, as the IDs of an archive do, form a chain and are found by their order, which
  /// costs nothing when a list of millions is read. (A string of the chain has its number though it
  /// be no key.)
  std::size_t hashedKeyCount() const noexcept { return keys_.size(); }
  std::size_t chainedKeyCount() const noexcept { return chain_.size(); }
  static bool isChained(Key key) noexcept { return (key & 1U) != 0; }
  static std::uint32_t ordinalOf(Key key) noexcept { return key >> 1; }

 private:
  friend class detail::PropertyListBuilder;

  // Where an object stands, and in one word what it is (4 bits) and a number: of a string, the
  // key's, from 1 on; of a container, how far it was checked. 28 bits suffice: 2 GiB have no room
  // for so many strings that are keys of different texts or of more than 8 bytes.
  struct Entry {
    static constexpr std::uint32_t kKindBits = 4;
    static constexpr std::uint32_t kKindMask = 15;
    static constexpr std::uint32_t kString = static_cast<std::uint32_t>(Kind::string);
    // Added to `kString`: its text stands in `arena_`; its number is that of the chain.
    static constexpr std::uint32_t kInArena = 1;
    static constexpr std::uint32_t kInChain = 2;

    std::uint32_t position;
    std::uint32_t word;

    std::uint32_t form() const noexcept { return word & kKindMask; }
    Kind kind() const noexcept { return static_cast<Kind>(std::min(form(), kString)); }
    bool isString() const noexcept { return form() >= kString; }
    bool isInArena() const noexcept {
      return (word & (kString | kInArena)) == (kString | kInArena);
    }
    bool isContainer() const noexcept {
      return (word & kKindMask & ~1U) == static_cast<std::uint32_t>(Kind::array);
    }
    std::uint32_t number() const noexcept { return word >> kKindBits; }
    void setNumber(std::uint32_t number) noexcept {
      word = (word & kKindMask) | (number << kKindBits);
    }
    Key key() const noexcept { return ((number() - 1) << 1) | ((word & kInChain) >> 1); }
  };
  struct KeySlot {
    std::uint32_t hash;
    std::uint32_t number;
  };

  const std::uint8_t* objectAt(Index index) const noexcept {
    const Entry& entry = entries_[index];
    return (entry.isInArena() ? arena_.data() : base_) + entry.position;
  }

  // The chain: strings of one beginning, sorted by length and then by bytes.
  static constexpr std::size_t kChainPrefix = 8;
  static bool mayBeLinked(std::string_view text) noexcept {
    return text.size() > kChainPrefix && text[0] == '$';
  }
  static bool beginAlike(std::string_view a, std::string_view b) noexcept {
    return a.substr(0, kChainPrefix) == b.substr(0, kChainPrefix);
  }
  static bool ascend(std::string_view a, std::string_view b) noexcept {
    return a.size() != b.size() ? a.size() < b.size() : a < b;
  }
  bool couldBeInChain(std::string_view text) const noexcept {
    return chain_.size() > 0 && mayBeLinked(text) && beginAlike(text, string(chain_[0]));
  }
  Key keyInChain(std::string_view text) const noexcept;

  const std::uint8_t* base_ = nullptr;  // of the positions of all that is not in the arena
  detail::RawBuffer<std::uint8_t> arena_;
  detail::RawBuffer<Entry> entries_;
  std::vector<KeySlot> keyTable_;
  std::vector<Index> keys_;         // a string for each key that is found by its hash
  detail::RawBuffer<Index> chain_;  // the strings of the chain
  unsigned referenceWidth_ = 1;
  Index root_ = kNone;
  std::size_t fileSize_ = 0;
  std::size_t referenceCount_ = 0;
};

}  // namespace tarnkit
