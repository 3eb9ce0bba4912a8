#include "tarnkit/platform/propertylist/PropertyListBuilder.h"

#include <bit>
#include <cassert>
#include <cstring>

#include "tarnkit/platform/propertylist/PropertyListForms.h"

namespace tarnkit::detail {

namespace {

// Of a count above 14: the marker, an integer's marker and 4 bytes.
constexpr std::size_t kMaximumCountSize = 6;
// Numbers are read 8 bytes at a time, whatever their width.
constexpr std::size_t kReadAhead = 8;

std::uint8_t* put(std::uint8_t* at, std::uint64_t value, unsigned width) noexcept {
  for (unsigned i = 0; i < width; ++i) {
    at[i] = static_cast<std::uint8_t>(value >> (8 * (width - 1 - i)));
  }
  return at + width;
}

std::uint8_t* putCount(std::uint8_t* at, std::uint8_t marker, std::size_t count) noexcept {
  if (count < 15) return put(at, marker | count, 1);
  return put(put(put(at, marker | 0x0FU, 1), marker::kInteger | 2U, 1), count, 4);
}

}  // namespace

PropertyListBuilder::PropertyListBuilder(PropertyList& list) : list_(list), keyCheck_(list) {
  list_ = PropertyList();
  list_.referenceWidth_ = sizeof(Index);
}

void PropertyListBuilder::beginInPlace(ByteSpan bytes, std::size_t objects,
                                       unsigned referenceWidth) {
  isInPlace_ = true;
  total_ = objects;
  list_.base_ = bytes.data();
  list_.referenceWidth_ = referenceWidth;
  list_.entries_.room(objects);
}

Status PropertyListBuilder::finish() {
  if (auto status = keyCheck_.checkLate(); !status) return status;
  while (!pending_.empty()) retryOldest();
  for (const Index container : doubtful_) {
    if (list_.entries_[container].number() == kUnseen && !settle(container)) {
      return Status::damaged("a container holds itself");
    }
  }
  return {};
}

// --- Objects in the list's own memory

std::uint8_t* PropertyListBuilder::roomForObject(std::size_t size) {
  std::uint8_t* const room = list_.arena_.room(size + kMaximumCountSize + kReadAhead);
  if (!isInPlace_) list_.base_ = list_.arena_.data();
  return room;
}

void PropertyListBuilder::takeObject(Index index, const std::uint8_t* end) {
  auto& arena = list_.arena_;
  assert(end > arena.data() + arena.size());  // an object has its marker at least
  list_.entries_[index].position = static_cast<std::uint32_t>(arena.size());
  arena.commit(static_cast<std::size_t>(end - arena.data()) - arena.size());
}

PropertyListBuilder::Index PropertyListBuilder::addToArena(Kind kind, std::uint8_t marker,
                                                           std::uint64_t bits, unsigned width) {
  const Index index = add(kind, 0);
  takeObject(index, put(put(roomForObject(width), marker, 1), bits, width));
  return index;
}

PropertyListBuilder::Index PropertyListBuilder::addCounted(std::uint32_t form, std::uint8_t marker,
                                                           std::string_view bytes) {
  const Index index = add(static_cast<Kind>(form), 0);
  std::uint8_t* const body = putCount(roomForObject(bytes.size()), marker, bytes.size());
  if (!bytes.empty()) std::memcpy(body, bytes.data(), bytes.size());
  takeObject(index, body + bytes.size());
  return index;
}

PropertyListBuilder::Index PropertyListBuilder::addText(std::string_view utf8) {
  using Entry = PropertyList::Entry;
  return addCounted(Entry::kString | Entry::kInArena, marker::kASCII, utf8);
}

PropertyListBuilder::Index PropertyListBuilder::addData(std::string_view bytes) {
  return addCounted(static_cast<std::uint32_t>(Kind::data), marker::kData, bytes);
}

PropertyListBuilder::Index PropertyListBuilder::addBoolean(bool value) {
  return addToArena(Kind::boolean, value ? marker::kTrue : marker::kFalse, 0, 0);
}

PropertyListBuilder::Index PropertyListBuilder::addInteger(std::int64_t value) {
  return addToArena(Kind::integer, marker::kInteger | 3U, static_cast<std::uint64_t>(value), 8);
}

PropertyListBuilder::Index PropertyListBuilder::addUnsigned(std::uint64_t value) {
  return addToArena(Kind::unsignedInteger, marker::kInteger | 3U, value, 8);
}

PropertyListBuilder::Index PropertyListBuilder::addReal(Kind kind, double value) {
  return addToArena(kind, marker::kReal64, std::bit_cast<std::uint64_t>(value), 8);
}

Status PropertyListBuilder::fillContainer(Index container, std::span<const Index> references) {
  const bool isMap = list_.kind(container) == Kind::map;
  assert(list_.entries_[container].isContainer() && (!isMap || references.size() % 2 == 0));
  std::uint8_t* at =
      putCount(roomForObject(references.size_bytes()), isMap ? marker::kMap : marker::kArray,
               isMap ? references.size() / 2 : references.size());
  for (const Index reference : references) at = put(at, reference, sizeof reference);
  takeObject(container, at);
  return admit(container);
}

void PropertyListBuilder::replaceByUID(Index container, std::uint64_t uid) {
  list_.entries_[container].word = static_cast<std::uint32_t>(Kind::uid);
  takeObject(container, put(put(roomForObject(8), marker::kUID | 7U, 1), uid, 8));
}

// --- References

PropertyList::Elements PropertyListBuilder::valuesOf(Index container) const noexcept {
  return list_.kind(container) == Kind::map ? list_.values(container) : list_.elements(container);
}

Status PropertyListBuilder::admit(Index container) {
  const auto values = valuesOf(container);
  const bool isMap = list_.kind(container) == Kind::map;
  const std::size_t present = count();
  bool allSettled = true;
  for (const Index value : values) {
    if (value < present) {
      allSettled &= isSettled(value);
    } else if (value < total_) {
      allSettled = false;
    } else {
      return Status::damaged(kDanglingReference);
    }
  }
  list_.referenceCount_ += isMap ? 2 * values.size() : values.size();
  if (allSettled) {
    list_.entries_[container].setNumber(kSettled);
  } else {
    pending_.push_back(container);
  }
  if (!pending_.empty() && pending_.front() + kRetryDistance <= container) retryOldest();
  return isMap ? keyCheck_.check(container, total_) : Status();
}

// What cannot lead back to itself is settled: scalars, and containers of nothing that is not.
void PropertyListBuilder::retryOldest() {
  const Index container = pending_.front();
  pending_.pop_front();
  const std::size_t present = count();
  for (const Index value : valuesOf(container)) {
    if (value < present && isSettled(value)) continue;
    doubtful_.push_back(container);
    return;
  }
  list_.entries_[container].setNumber(kSettled);
}

bool PropertyListBuilder::settle(Index start) {
  struct Frame {
    Index container;
    std::uint32_t next;
  };
  std::vector<Frame> path{{start, 0}};
  list_.entries_[start].setNumber(kOpen);
  while (!path.empty()) {
    Frame& frame = path.back();
    const auto children = valuesOf(frame.container);
    if (frame.next == children.size()) {
      list_.entries_[frame.container].setNumber(kSettled);
      path.pop_back();
      continue;
    }
    const Index child = children[frame.next++];
    if (isSettled(child)) continue;
    if (list_.entries_[child].number() == kOpen) return false;
    list_.entries_[child].setNumber(kOpen);
    path.push_back({child, 0});
  }
  return true;
}

}  // namespace tarnkit::detail
