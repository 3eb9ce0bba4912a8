#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "tarnkit/platform/PropertyList.h"

namespace tarnkit::detail {

/// Fills a `PropertyList` for the readers of the two forms, and makes the checks that both share.
/// Lives during one reading.
class PropertyListBuilder {
 public:
  using Index = PropertyList::Index;
  using Kind = PropertyList::Kind;

  PropertyListBuilder(PropertyList& list, ByteSpan bytes);

  /// Makes room for that many, so that large lists are not copied while they grow.
  void expect(std::size_t values, std::size_t references);
  std::size_t count() const noexcept { return list_.values_.size(); }
  Index addInteger(Kind kind, std::int64_t value);
  Index addReal(Kind kind, double value);
  /// A text or byte string that stands in the bytes read.
  Index addSpan(Kind kind, std::size_t position, std::size_t count);
  /// One that was written to `arena` from `start` to its end.
  Index addFromArena(Kind kind, std::size_t start);
  RawBuffer<char>& arena() noexcept { return list_.text_; }
  /// A container; the returned run takes `references` indices, to be filled before the next call.
  Index* addContainer(Kind kind, std::size_t count, std::size_t references);
  /// A container whose elements come later; see `fillContainer`.
  Index reserveContainer(Kind kind);
  Index* fillContainer(Index container, std::size_t count, std::size_t references);
  /// Turns a container that was filled last into a UID.
  void replaceByUID(Index container, std::uint64_t uid);
  const PropertyList& list() const noexcept { return list_; }

  void setRoot(Index root) noexcept { list_.root_ = root; }

  /// Numbers the keys of every map; refuses keys that are no strings or stand twice in one map.
  bool indexKeys(std::string& error);
  /// Refuses containers that hold themselves, directly or through others.
  bool refuseCycles(std::string& error);

 private:
  static constexpr std::size_t kBatch = 16;
  enum class State : std::uint8_t { unseen, open, settled };

  bool numberKeys(std::span<const Index> names, std::string& error);
  void numberKey(Index string, std::uint32_t hash);
  void growKeyTable(std::size_t keys);
  bool settle(Index start, std::vector<State>& states) const;

  PropertyList& list_;
};

}  // namespace tarnkit::detail
