#pragma once

#include <cstdint>
#include <deque>
#include <span>
#include <string_view>
#include <vector>

#include "tarnkit/platform/propertylist/PropertyList.h"
#include "tarnkit/platform/propertylist/PropertyListKeyCheck.h"
#include "tarnkit/platform/system/Status.h"

namespace tarnkit::detail {

/// Fills a `PropertyList` for the readers of the two forms, and makes the checks that both share:
/// while objects come in, as far as what they refer to is there, so that most are looked at once,
/// while they are near; the rest at the end. Lives during one reading.
class PropertyListBuilder {
 public:
  using Index = PropertyList::Index;
  using Kind = PropertyList::Kind;

  explicit PropertyListBuilder(PropertyList& list);

  std::size_t count() const noexcept { return list_.entries_.size(); }
  const PropertyList& list() const noexcept { return list_; }
  void setRoot(Index root) noexcept { list_.root_ = root; }
  void setFileSize(std::size_t size) noexcept { list_.fileSize_ = size; }

  // Objects that stay where they are in the bytes, already checked but for what they refer to. As
  // many as `beginInPlace` was told.
  void beginInPlace(ByteSpan bytes, std::size_t objects, unsigned referenceWidth);
  Index add(Kind kind, std::size_t position) {
    list_.entries_.append({static_cast<std::uint32_t>(position), static_cast<std::uint32_t>(kind)});
    return static_cast<Index>(count() - 1);
  }
  Index addASCII(std::size_t position, std::string_view text) {
    const Index index = add(Kind::string, position);
    auto& keys = list_.keys_;
    if (keys.link(list_, index, text)) list_.entries_[index].setKey(keys.lastLinked());
    return index;
  }
  /// The last one is of that kind.
  void changeLast(Kind kind) noexcept {
    list_.entries_[count() - 1].word = static_cast<std::uint32_t>(kind);
  }
  Status addContainer(Kind kind, std::size_t position) { return admit(add(kind, position)); }

  // Objects that are written into the list's own memory.
  Index addText(std::string_view utf8);
  Index addData(std::string_view bytes);
  Index addBoolean(bool value);
  Index addInteger(std::int64_t value);
  Index addUnsigned(std::uint64_t value);
  Index addReal(Kind kind, double value);
  /// A container whose elements come later: those of a map are its keys and after them its values.
  Index reserveContainer(Kind kind) { return add(kind, 0); }
  Status fillContainer(Index container, std::span<const Index> references);
  void replaceByUID(Index container, std::uint64_t uid);

  /// The checks that are left. The list is complete afterwards.
  Status finish();

 private:
  // After how many more objects a container is looked at again whose elements were not all there:
  // far enough for what an archiver writes after it, near enough to be in the cache.
  static constexpr Index kRetryDistance = 64;
  // How far a container was checked for cycles: the number in its entry.
  enum State : std::uint32_t { kUnseen, kSettled, kOpen };

  Status admit(Index container);
  bool isSettled(Index index) const noexcept {
    const auto& entry = list_.entries_[index];
    return !entry.isContainer() || entry.number() == kSettled;
  }
  PropertyList::Elements valuesOf(Index container) const noexcept;
  void retryOldest();
  bool settle(Index start);

  std::uint8_t* roomForObject(std::size_t size);
  void takeObject(Index index, const std::uint8_t* end);
  Index addToArena(Kind kind, std::uint8_t marker, std::uint64_t bits, unsigned width);
  Index addCounted(std::uint32_t form, std::uint8_t marker, std::string_view bytes);

  PropertyList& list_;
  PropertyListKeyCheck keyCheck_;
  std::size_t total_ = PropertyList::kNone;
  bool isInPlace_ = false;
  std::deque<Index> pending_;    // containers whose elements were not all there yet
  std::vector<Index> doubtful_;  // those that may lead back to themselves
};

}  // namespace tarnkit::detail
