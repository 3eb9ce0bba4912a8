#include "tarnkit/platform/PropertyListBuilder.h"

#include <algorithm>

#include "tarnkit/platform/KeyedHash.h"

namespace tarnkit::detail {

PropertyListBuilder::PropertyListBuilder(PropertyList& list, ByteSpan bytes) : list_(list) {
  list_ = PropertyList();
  list_.bytes_ = bytes;
  list_.fileSize_ = bytes.size();
}

void PropertyListBuilder::expect(std::size_t values, std::size_t references) {
  list_.values_.room(values);
  list_.children_.room(references);
}

PropertyListBuilder::Index PropertyListBuilder::addInteger(Kind kind, std::int64_t integer) {
  PropertyList::Value value{};
  value.kind = kind;
  value.payload.integer = integer;
  list_.values_.append(value);
  return static_cast<Index>(count() - 1);
}

PropertyListBuilder::Index PropertyListBuilder::addReal(Kind kind, double real) {
  PropertyList::Value value{};
  value.kind = kind;
  value.payload.real = real;
  list_.values_.append(value);
  return static_cast<Index>(count() - 1);
}

PropertyListBuilder::Index PropertyListBuilder::addSpan(Kind kind, std::size_t position,
                                                        std::size_t size) {
  PropertyList::Value value{};
  value.kind = kind;
  value.count = static_cast<std::uint32_t>(size);
  value.payload.text = {static_cast<std::uint32_t>(position), 0};
  list_.values_.append(value);
  return static_cast<Index>(count() - 1);
}

PropertyListBuilder::Index PropertyListBuilder::addFromArena(Kind kind, std::size_t start) {
  const Index index = addSpan(kind, start, list_.text_.size() - start);
  list_.values_[index].inArena = true;
  return index;
}

PropertyListBuilder::Index* PropertyListBuilder::addContainer(Kind kind, std::size_t count,
                                                              std::size_t references) {
  return fillContainer(reserveContainer(kind), count, references);
}

PropertyListBuilder::Index PropertyListBuilder::reserveContainer(Kind kind) {
  return addInteger(kind, 0);
}

PropertyListBuilder::Index* PropertyListBuilder::fillContainer(Index container, std::size_t count,
                                                               std::size_t references) {
  PropertyList::Value& value = list_.values_[container];
  value.count = static_cast<std::uint32_t>(count);
  value.payload.integer = static_cast<std::int64_t>(list_.children_.size());
  Index* const room = list_.children_.room(references);
  list_.children_.commit(references);
  return room;
}

void PropertyListBuilder::replaceByUID(Index container, std::uint64_t uid) {
  PropertyList::Value& value = list_.values_[container];
  list_.children_.truncate(static_cast<std::size_t>(value.payload.integer));
  value.kind = Kind::uid;
  value.count = 0;
  value.payload.integer = static_cast<std::int64_t>(uid);
}

bool PropertyListBuilder::indexKeys(std::string& error) {
  std::vector<Index> lastMap;  // for each key, the map that had it last
  for (Index map = 0; map < count(); ++map) {
    if (list_.kind(map) != Kind::map) continue;
    const auto names = list_.keys(map);
    growKeyTable(list_.keys_.size() + names.size());
    for (std::size_t begin = 0; begin < names.size(); begin += kBatch) {
      const auto batch = names.subspan(begin, std::min(kBatch, names.size() - begin));
      if (!numberKeys(batch, error)) return false;
      for (const Index name : batch) {
        const auto key = list_.keyOf(name);
        if (key >= lastMap.size()) lastMap.resize(list_.keys_.size(), PropertyList::kNone);
        if (lastMap[key] == map) {
          error =
              "a map has the key \"" + std::string(list_.string(name).substr(0, 200)) + "\" twice";
          return false;
        }
        lastMap[key] = map;
      }
    }
  }
  return true;
}

// A map of many different keys is slow where every look-up waits for the memory: the places of a
// whole batch are asked for before the first one is looked at.
bool PropertyListBuilder::numberKeys(std::span<const Index> names, std::string& error) {
  std::uint32_t hashes[kBatch];
  Index fresh[kBatch];
  std::size_t freshCount = 0;
  for (const Index name : names) __builtin_prefetch(&list_.values_[name]);
  const std::size_t mask = list_.keyTable_.size() - 1;
  for (const Index name : names) {
    if (list_.kind(name) != Kind::string) {
      error = std::string(PropertyList::nameOf(list_.kind(name))) + " is the key of a map";
      return false;
    }
    if (list_.values_[name].payload.text.keyPlusOne != 0) continue;
    const auto text = list_.string(name);
    hashes[freshCount] =
        static_cast<std::uint32_t>(keyedHash(text.data(), text.size(), hashKeys()));
    __builtin_prefetch(&list_.keyTable_[hashes[freshCount] & mask]);
    fresh[freshCount++] = name;
  }
  for (std::size_t i = 0; i < freshCount; ++i) numberKey(fresh[i], hashes[i]);
  return true;
}

void PropertyListBuilder::numberKey(Index string, std::uint32_t hash) {
  auto& keyPlusOne = list_.values_[string].payload.text.keyPlusOne;
  if (keyPlusOne != 0) return;  // twice in one batch
  const auto text = list_.string(string);
  const std::size_t mask = list_.keyTable_.size() - 1;
  for (std::size_t at = hash & mask;; at = (at + 1) & mask) {
    auto& slot = list_.keyTable_[at];
    if (slot.keyPlusOne == 0) {
      list_.keys_.push_back(string);
      slot = {hash, static_cast<std::uint32_t>(list_.keys_.size())};
    } else if (slot.hash != hash || list_.string(list_.keys_[slot.keyPlusOne - 1]) != text) {
      continue;
    }
    keyPlusOne = slot.keyPlusOne;
    return;
  }
}

void PropertyListBuilder::growKeyTable(std::size_t keys) {
  auto& table = list_.keyTable_;
  std::size_t size = std::max<std::size_t>(64, table.size());
  while (size < keys * 2) size *= 2;
  if (size == table.size()) return;
  std::vector<PropertyList::KeySlot> larger(size);
  const std::size_t mask = larger.size() - 1;
  for (const auto& slot : table) {
    if (slot.keyPlusOne == 0) continue;
    std::size_t at = slot.hash & mask;
    while (larger[at].keyPlusOne != 0) at = (at + 1) & mask;
    larger[at] = slot;
  }
  table = std::move(larger);
}

namespace {
bool isContainer(PropertyList::Kind kind) noexcept {
  return kind == PropertyList::Kind::array || kind == PropertyList::Kind::map;
}
std::span<const PropertyList::Index> childrenOf(const PropertyList& list,
                                                PropertyList::Index container) noexcept {
  return list.kind(container) == PropertyList::Kind::map ? list.values(container)
                                                         : list.elements(container);
}
}  // namespace

bool PropertyListBuilder::refuseCycles(std::string& error) {
  // What cannot lead back to itself: scalars, and containers of nothing else. Writers place most
  // containers after what they hold, so one pass in the order of the file settles nearly all.
  std::vector<State> states(count(), State::unseen);
  std::vector<Index> doubtful;
  for (Index index = 0; index < count(); ++index) {
    bool isSettled = true;
    if (isContainer(list_.kind(index))) {
      for (const Index child : childrenOf(list_, index)) {
        if (child < index ? states[child] == State::settled : !isContainer(list_.kind(child))) {
          continue;
        }
        isSettled = false;
        break;
      }
    }
    if (isSettled) {
      states[index] = State::settled;
    } else {
      doubtful.push_back(index);
    }
  }
  for (const Index start : doubtful) {
    if (states[start] == State::unseen && !settle(start, states)) {
      error = "a container holds itself";
      return false;
    }
  }
  return true;
}

bool PropertyListBuilder::settle(Index start, std::vector<State>& states) const {
  struct Frame {
    Index container;
    std::uint32_t next;
  };
  std::vector<Frame> path{{start, 0}};
  states[start] = State::open;
  while (!path.empty()) {
    Frame& frame = path.back();
    const auto children = childrenOf(list_, frame.container);
    if (frame.next == children.size()) {
      states[frame.container] = State::settled;
      path.pop_back();
      continue;
    }
    const Index child = children[frame.next++];
    if (states[child] == State::open) return false;
    if (states[child] == State::settled) continue;
    states[child] = State::open;
    path.push_back({child, 0});
  }
  return true;
}

}  // namespace tarnkit::detail
