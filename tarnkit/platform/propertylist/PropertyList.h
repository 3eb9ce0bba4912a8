#pragma once

#include <algorithm>
#include <cstdint>
#include <string_view>

#include "tarnkit/platform/objects/Data.h"
#include "tarnkit/platform/propertylist/PropertyListElements.h"
#include "tarnkit/platform/propertylist/PropertyListKeys.h"
#include "tarnkit/platform/propertylist/RawBuffer.h"

namespace tarnkit {

namespace detail {
class PropertyListBuilder;
class PropertyListKeyCheck;
}  // namespace detail

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

  /// Asks the memory for the first of a container's elements, which are wanted soon: in a large
  /// list each of them would be waited for.
  void prefetch(const Elements& elements) const noexcept {
    for (const Index index : elements.first(std::min<std::size_t>(elements.size(), 16))) {
      __builtin_prefetch(&entries_[index]);
    }
  }

  /// Every text that is the key of some map has a number, so keys are compared without their texts.
  /// `PropertyListKeyMap` holds a value for each.
  using Key = detail::PropertyListKeys::Key;
  static constexpr Key kNoKey = detail::PropertyListKeys::kNone;
  /// The number of a string that stands as a map's key, or `kNoKey` for one that was met as a value
  /// only (an equal key may still be there: see `keyNamed`).
  Key keyOf(Index string) const noexcept { return entries_[string].key(); }
  /// `kNoKey` when no map has such a key. Costs a hash.
  Key keyNamed(std::string_view text) const noexcept { return keys_.named(*this, text); }
  /// The value in the map, or `kNone`. Linear in the map.
  Index valueForKey(Index map, std::string_view key) const noexcept {
    return valueForKey(map, keyNamed(key));
  }
  Index valueForKey(Index map, Key key) const noexcept;
  /// The same, and `kNone` for a value of another kind.
  Index valueOfKind(Index map, std::string_view key, Kind kind) const noexcept {
    return valueOfKind(map, keyNamed(key), kind);
  }
  Index valueOfKind(Index map, Key key, Kind wanted) const noexcept {
    const Index value = valueForKey(map, key);
    return value != kNone && kind(value) == wanted ? value : kNone;
  }

  /// The numbers, for `PropertyListKeyMap`. (A string of the chain has its number though it be no
  /// key.)
  const detail::PropertyListKeys& keyNumbers() const noexcept { return keys_; }

 private:
  friend class detail::PropertyListBuilder;
  friend class detail::PropertyListKeyCheck;

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
    void setKey(Key key) noexcept {
      word |= (key & 1U) << 1;
      setNumber(detail::PropertyListKeys::ordinalOf(key) + 1);
    }
  };

  const std::uint8_t* objectAt(Index index) const noexcept {
    const Entry& entry = entries_[index];
    return (entry.isInArena() ? arena_.data() : base_) + entry.position;
  }

  const std::uint8_t* base_ = nullptr;  // of the positions of all that is not in the arena
  detail::RawBuffer<std::uint8_t> arena_;
  detail::RawBuffer<Entry> entries_;
  detail::PropertyListKeys keys_;
  unsigned referenceWidth_ = 1;
  Index root_ = kNone;
  std::size_t fileSize_ = 0;
  std::size_t referenceCount_ = 0;
};

}  // namespace tarnkit
