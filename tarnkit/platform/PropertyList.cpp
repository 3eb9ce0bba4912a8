#include "tarnkit/platform/PropertyList.h"

#include "tarnkit/platform/KeyedHash.h"

namespace tarnkit {

const char* PropertyList::nameOf(Kind kind) noexcept {
  switch (kind) {
    case Kind::null:
      return "a null";
    case Kind::boolean:
      return "a boolean";
    case Kind::integer:
    case Kind::unsignedInteger:
    case Kind::wideInteger:
      return "an integer";
    case Kind::real32:
    case Kind::real64:
      return "a real number";
    case Kind::date:
      return "a date";
    case Kind::data:
      return "data";
    case Kind::string:
      return "a string";
    case Kind::uid:
      return "a reference";
    case Kind::array:
      return "a list";
    case Kind::map:
      return "a map";
  }
  return "";
}

std::string_view PropertyList::string(Index index) const noexcept {
  const Value& value = values_[index];
  const char* const base =
      value.inArena ? text_.data() : reinterpret_cast<const char*>(bytes_.data());
  return {base + value.payload.text.position, value.count};
}

ByteSpan PropertyList::data(Index index) const noexcept {
  const auto text = string(index);
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

PropertyList::Key PropertyList::keyNamed(std::string_view text) const noexcept {
  if (keyTable_.empty()) return kNoKey;
  const auto hash =
      static_cast<std::uint32_t>(detail::keyedHash(text.data(), text.size(), detail::hashKeys()));
  const std::size_t mask = keyTable_.size() - 1;
  for (std::size_t at = hash & mask;; at = (at + 1) & mask) {
    const KeySlot& slot = keyTable_[at];
    if (slot.keyPlusOne == 0) return kNoKey;
    if (slot.hash == hash && string(keys_[slot.keyPlusOne - 1]) == text) {
      return slot.keyPlusOne - 1;
    }
  }
}

PropertyList::Index PropertyList::valueForKey(Index map, std::string_view key) const noexcept {
  const Key wanted = keyNamed(key);
  if (wanted == kNoKey) return kNone;
  const auto names = keys(map);
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (keyOf(names[i]) == wanted) return values(map)[i];
  }
  return kNone;
}

}  // namespace tarnkit
