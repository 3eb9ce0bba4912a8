#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "tarnkit/platform/Data.h"
#include "tarnkit/platform/RawBuffer.h"

namespace tarnkit {

namespace detail {
class PropertyListBuilder;
}

/// A property list as read: one flat table of checked values, each known by its index. Immutable.
///
/// Containers are spans of indices, so nothing is expanded, copied or freed one by one, and nesting
/// costs nothing. Texts and byte strings point into the bytes that were read where they can, so
/// those bytes must outlive the list. Made by `PropertyListReader`, which has made sure that
/// containers do not hold themselves, that the keys of a map are different strings, and that texts
/// are UTF-8. Owned by whoever read it; may be read from any thread.
class PropertyList {
 public:
  using Index = std::uint32_t;
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
    string,
    uid,
    array,
    map,
  };
  /// What the kind is called in messages ("a string").
  static const char* nameOf(Kind kind) noexcept;

  PropertyList() = default;

  Index root() const noexcept { return root_; }
  std::size_t count() const noexcept { return values_.size(); }
  /// How many bytes it was read from.
  std::size_t fileSize() const noexcept { return fileSize_; }
  /// How many references all containers hold together.
  std::size_t referenceCount() const noexcept { return children_.size(); }

  Kind kind(Index index) const noexcept { return values_[index].kind; }
  bool boolean(Index index) const noexcept { return values_[index].payload.integer != 0; }
  /// Of an `integer`; of an `unsignedInteger`, its bits.
  std::int64_t integer(Index index) const noexcept { return values_[index].payload.integer; }
  /// Of a real, a `wideInteger`, or a date (seconds from 2001-01-01 00:00 UTC).
  double real(Index index) const noexcept { return values_[index].payload.real; }
  std::uint64_t uid(Index index) const noexcept {
    return static_cast<std::uint64_t>(values_[index].payload.integer);
  }
  std::string_view string(Index index) const noexcept;
  ByteSpan data(Index index) const noexcept;

  /// Elements of an array, entries of a map.
  std::uint32_t count(Index index) const noexcept { return values_[index].count; }
  std::span<const Index> elements(Index array) const noexcept {
    return {children_.data() + values_[array].payload.integer, values_[array].count};
  }
  std::span<const Index> keys(Index map) const noexcept { return elements(map); }
  std::span<const Index> values(Index map) const noexcept {
    return {children_.data() + values_[map].payload.integer + values_[map].count,
            values_[map].count};
  }

  /// Asks the memory for what is wanted soon (a value; the first elements of an array, or values of
  /// a map): in a large list each of them would be waited for.
  void prefetch(Index index) const noexcept { __builtin_prefetch(&values_[index]); }
  void prefetchElements(Index container) const noexcept {
    const auto children = kind(container) == Kind::map ? values(container) : elements(container);
    for (const Index child : children.first(children.size() < 16 ? children.size() : 16)) {
      prefetch(child);
    }
  }

  /// Every text that is the key of some map has a number, so keys are compared without their texts.
  using Key = std::uint32_t;
  static constexpr Key kNoKey = 0xFFFFFFFFU;
  std::size_t keyCount() const noexcept { return keys_.size(); }
  /// The number of a string that stands as a map's key, or `kNoKey` for one that was met as a value
  /// only (an equal key may still be there: see `keyNamed`).
  Key keyOf(Index string) const noexcept { return values_[string].payload.text.keyPlusOne - 1; }
  /// `kNoKey` when no map has such a key. Costs a hash.
  Key keyNamed(std::string_view text) const noexcept;
  /// The value in the map, or `kNone`. Linear in the map.
  Index valueForKey(Index map, std::string_view key) const noexcept;

 private:
  friend class detail::PropertyListBuilder;
  struct Text {
    std::uint32_t position;
    std::uint32_t keyPlusOne;
  };
  struct Value {
    Kind kind;
    bool inArena;  // a text that stands in `text_`, not in the bytes read
    std::uint32_t count;
    union {
      std::int64_t integer;  // of a container: where its span begins
      double real;
      Text text;
    } payload;
  };
  struct KeySlot {
    std::uint32_t hash;
    std::uint32_t keyPlusOne;
  };

  ByteSpan bytes_;
  detail::RawBuffer<char> text_;
  detail::RawBuffer<Value> values_;
  detail::RawBuffer<Index> children_;
  std::vector<KeySlot> keyTable_;
  std::vector<Index> keys_;  // a string for each key
  Index root_ = kNone;
  std::size_t fileSize_ = 0;
};

}  // namespace tarnkit
