#include "tarnkit/platform/PropertyListBuilder.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "tarnkit/platform/KeyedHash.h"

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

PropertyListBuilder::PropertyListBuilder(PropertyList& list) : list_(list) {
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

bool PropertyListBuilder::finish(std::string& error) {
  for (const Index map : lateMaps_) {
    if (!checkKeys(map, error)) return false;
  }
  while (!pending_.empty()) retryOldest();
  for (const Index container : doubtful_) {
    if (list_.entries_[container].number() == kUnseen && !settle(container)) {
      error = "a container holds itself";
      return false;
    }
  }
  return true;
}

// --- Objects in the list's own memory

std::uint8_t* PropertyListBuilder::roomForObject(std::size_t size) {
  std::uint8_t* const room = list_.arena_.room(size + kMaximumCountSize + kReadAhead);
  if (!isInPlace_) list_.base_ = list_.arena_.data();
  return room;
}

void PropertyListBuilder::takeObject(Index index, const std::uint8_t* end) {
  auto& arena = list_.arena_;
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

bool PropertyListBuilder::fillContainer(Index container, std::span<const Index> references,
                                        std::string& error) {
  const bool isMap = list_.kind(container) == Kind::map;
  std::uint8_t* at =
      putCount(roomForObject(references.size_bytes()), isMap ? marker::kMap : marker::kArray,
               isMap ? references.size() / 2 : references.size());
  for (const Index reference : references) at = put(at, reference, sizeof reference);
  takeObject(container, at);
  return admit(container, error);
}

void PropertyListBuilder::replaceByUID(Index container, std::uint64_t uid) {
  list_.entries_[container].word = static_cast<std::uint32_t>(Kind::uid);
  takeObject(container, put(put(roomForObject(8), marker::kUID | 7U, 1), uid, 8));
}

// --- References

PropertyList::Elements PropertyListBuilder::valuesOf(Index container) const noexcept {
  return list_.kind(container) == Kind::map ? list_.values(container) : list_.elements(container);
}

bool PropertyListBuilder::admit(Index container, std::string& error) {
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
      return refuseReference(error);
    }
  }
  list_.referenceCount_ += isMap ? 2 * values.size() : values.size();
  if (allSettled) {
    list_.entries_[container].setNumber(kSettled);
  } else {
    pending_.push_back(container);
  }
  if (!pending_.empty() && pending_.front() + kRetryDistance <= container) retryOldest();
  return !isMap || checkKeys(container, error);
}

bool PropertyListBuilder::refuseReference(std::string& error) {
  error = "a reference points to no object of the file";
  return false;
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

// --- Keys

bool PropertyListBuilder::checkKeys(Index map, std::string& error) {
  const auto names = list_.keys(map);
  std::uint32_t lastChained = 0;
  bool chainAscends = true;
  for (std::size_t i = 0; i < names.size(); ++i) {
    const Index name = names[i];
    if (name >= count()) {
      if (name >= total_) return refuseReference(error);
      postpone(map, i);
      return true;
    }
    const auto& entry = list_.entries_[name];
    if (!entry.isString()) {
      error = std::string(PropertyList::nameOf(entry.kind())) + " is the key of a map";
      return false;
    }
    if (entry.number() == 0) numberKeys(names, i);
    if (names.size() == 1) break;
    if (PropertyList::isChained(entry.key())) {
      chainAscends &= entry.number() > lastChained;
      lastChained = entry.number();
      continue;
    }
    Index& last = lastMap_[entry.number() - 1];
    if (last == map) return refuseTwice(name, error);
    last = map;
  }
  return chainAscends || checkChainedKeys(map, error);
}

// The map is looked at again when all objects are there, as if for the first time.
void PropertyListBuilder::postpone(Index map, std::size_t checkedKeys) {
  for (const Index name : list_.keys(map).first(checkedKeys)) {
    const auto key = list_.keyOf(name);
    if (!PropertyList::isChained(key)) lastMap_[PropertyList::ordinalOf(key)] = PropertyList::kNone;
  }
  lateMaps_.push_back(map);
}

bool PropertyListBuilder::checkChainedKeys(Index map, std::string& error) const {
  std::vector<std::pair<PropertyList::Key, Index>> chained;
  for (const Index name : list_.keys(map)) {
    const auto key = list_.keyOf(name);
    if (PropertyList::isChained(key)) chained.emplace_back(key, name);
  }
  std::sort(chained.begin(), chained.end());
  const auto twice =
      std::adjacent_find(chained.begin(), chained.end(),
                         [](const auto& a, const auto& b) { return a.first == b.first; });
  return twice == chained.end() || refuseTwice(twice->second, error);
}

bool PropertyListBuilder::refuseTwice(Index key, std::string& error) const {
  error = "a map has the key \"" + std::string(list_.string(key).substr(0, 200)) + "\" twice";
  return false;
}

// A map of many different keys is slow where every look-up waits for the memory: the places of a
// whole batch are asked for before the first one is looked at.
void PropertyListBuilder::numberKeys(PropertyList::Elements names, std::size_t from) {
  std::uint32_t hashes[kBatch];
  Index fresh[kBatch];
  std::size_t freshCount = 0;
  growKeyTable(list_.keys_.size() + kBatch);
  const std::size_t mask = list_.keyTable_.size() - 1;
  const std::size_t end = std::min(from + kBatch, names.size());
  for (std::size_t i = from; i < end; ++i) {
    const Index name = names[i];
    if (name >= count() || !list_.entries_[name].isString()) break;
    if (list_.entries_[name].number() != 0) continue;
    const auto text = list_.string(name);
    hashes[freshCount] =
        static_cast<std::uint32_t>(keyedHash(text.data(), text.size(), hashKeys()));
    __builtin_prefetch(&list_.keyTable_[hashes[freshCount] & mask]);
    fresh[freshCount++] = name;
  }
  for (std::size_t i = 0; i < freshCount; ++i) numberKey(fresh[i], hashes[i]);
}

void PropertyListBuilder::numberKey(Index string, std::uint32_t hash) {
  auto& entry = list_.entries_[string];
  if (entry.number() != 0) return;  // twice in one batch
  const auto text = list_.string(string);
  const std::size_t mask = list_.keyTable_.size() - 1;
  std::size_t at = hash & mask;
  for (; list_.keyTable_[at].number != 0; at = (at + 1) & mask) {
    const auto& slot = list_.keyTable_[at];
    if (slot.hash == hash && list_.string(list_.keys_[slot.number - 1]) == text) {
      return entry.setNumber(slot.number);
    }
  }
  if (list_.couldBeInChain(text)) {
    const auto key = list_.keyInChain(text);
    if (key != PropertyList::kNoKey) {
      entry.word |= PropertyList::Entry::kInChain;
      return entry.setNumber(PropertyList::ordinalOf(key) + 1);
    }
    chainIsOpen_ = false;  // an equal string that comes later must get this number
  }
  list_.keys_.push_back(string);
  lastMap_.push_back(PropertyList::kNone);
  const auto number = static_cast<std::uint32_t>(list_.keys_.size());
  list_.keyTable_[at] = {hash, number};
  entry.setNumber(number);
}

void PropertyListBuilder::growKeyTable(std::size_t keys) {
  auto& table = list_.keyTable_;
  std::size_t size = std::max<std::size_t>(64, table.size());
  while (size < keys * 2) size *= 2;
  if (size == table.size()) return;
  std::vector<PropertyList::KeySlot> larger(size);
  const std::size_t mask = larger.size() - 1;
  for (const auto& slot : table) {
    if (slot.number == 0) continue;
    std::size_t at = slot.hash & mask;
    while (larger[at].number != 0) at = (at + 1) & mask;
    larger[at] = slot;
  }
  table = std::move(larger);
}

// '$' begins the names that an archiver gives; the first long one decides how those of the chain
// begin. Keys that were hashed before stay out of it.
void PropertyListBuilder::link(Index string, std::string_view text) {
  if (list_.chain_.size() == 0) {
    const auto isAlike = [&](Index key) {
      return PropertyList::beginAlike(list_.string(key), text);
    };
    chainIsOpen_ = list_.keys_.size() <= kBatch &&
                   std::none_of(list_.keys_.begin(), list_.keys_.end(), isAlike);
    if (!chainIsOpen_) return;
  } else if (!PropertyList::beginAlike(lastLinked_, text) ||
             !PropertyList::ascend(lastLinked_, text)) {
    return;
  }
  list_.chain_.append(string);
  lastLinked_ = text;
  auto& entry = list_.entries_[string];
  entry.word |= PropertyList::Entry::kInChain;
  entry.setNumber(static_cast<std::uint32_t>(list_.chain_.size()));
}

}  // namespace tarnkit::detail
