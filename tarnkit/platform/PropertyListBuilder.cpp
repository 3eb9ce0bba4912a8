#include "tarnkit/platform/PropertyListBuilder.h"

#include <algorithm>

#include "tarnkit/platform/KeyedHash.h"

namespace tarnkit::detail {

PropertyListBuilder::PropertyListBuilder(PropertyList& list, ByteSpan bytes) : list_(list) {
  list_ = PropertyList();
  list_.bytes_ = bytes;
  list_.fileSize_ = bytes.size();
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
    for (const Index name : list_.keys(map)) {
      if (list_.kind(name) != Kind::string) {
        error = std::string(PropertyList::nameOf(list_.kind(name))) + " is the key of a map";
        return false;
      }
      const auto key = keyFor(name);
      if (key >= lastMap.size()) lastMap.push_back(PropertyList::kNone);
      if (lastMap[key] == map) {
        error =
            "a map has the key \"" + std::string(list_.string(name).substr(0, 200)) + "\" twice";
        return false;
      }
      lastMap[key] = map;
    }
  }
  return true;
}

PropertyList::Key PropertyListBuilder::keyFor(Index string) {
  auto& keyPlusOne = list_.values_[string].payload.text.keyPlusOne;
  if (keyPlusOne != 0) return keyPlusOne - 1;
  if (list_.keys_.size() * 2 >= list_.keyTable_.size()) growKeyTable();
  const auto text = list_.string(string);
  const auto hash = static_cast<std::uint32_t>(keyedHash(text.data(), text.size(), hashKeys()));
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
    return keyPlusOne - 1;
  }
}

void PropertyListBuilder::growKeyTable() {
  auto& table = list_.keyTable_;
  std::vector<PropertyList::KeySlot> larger(std::max<std::size_t>(64, table.size() * 2));
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

// Most writers place containers before what they hold; then there is nothing to search.
bool PropertyListBuilder::mayHaveCycles() const noexcept {
  for (Index index = 0; index < count(); ++index) {
    if (!isContainer(list_.kind(index))) continue;
    for (const Index child : childrenOf(list_, index)) {
      if (child <= index && isContainer(list_.kind(child))) return true;
    }
  }
  return false;
}

bool PropertyListBuilder::refuseCycles(std::string& error) {
  if (!mayHaveCycles()) return true;
  enum : std::uint8_t { unseen, open, closed };
  struct Frame {
    Index container;
    std::uint32_t next;
  };
  std::vector<std::uint8_t> state(count(), unseen);
  std::vector<Frame> stack;
  for (Index start = 0; start < count(); ++start) {
    if (state[start] != unseen || !isContainer(list_.kind(start))) continue;
    state[start] = open;
    stack.push_back({start, 0});
    while (!stack.empty()) {
      Frame& frame = stack.back();
      const auto children = childrenOf(list_, frame.container);
      if (frame.next == children.size()) {
        state[frame.container] = closed;
        stack.pop_back();
        continue;
      }
      const Index child = children[frame.next++];
      if (!isContainer(list_.kind(child)) || state[child] == closed) continue;
      if (state[child] == open) {
        error = "a container holds itself";
        return false;
      }
      state[child] = open;
      stack.push_back({child, 0});
    }
  }
  return true;
}

}  // namespace tarnkit::detail
