#include "tarnkit/platform/PropertyList.h"

#include <bit>

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

bool PropertyList::boolean(Index index) const noexcept {
  return *objectAt(index) == detail::marker::kTrue;
}

std::int64_t PropertyList::integer(Index index) const noexcept {
  const std::uint8_t* const object = objectAt(index);
  if (*object <= detail::marker::kTrue) return boolean(index) ? 1 : 0;
  const unsigned width = 1U << (*object & 0x0FU);
  // Of 16 bytes, those that are more than a sign.
  const std::uint8_t* const digits = object + 1 + (width > 8 ? width - 8 : 0);
  return static_cast<std::int64_t>(detail::readBytes(digits, std::min(width, 8U)));
}

double PropertyList::real(Index index) const noexcept {
  const std::uint8_t* const object = objectAt(index);
  if (*object == (detail::marker::kReal | 2U)) {
    return std::bit_cast<float>(static_cast<std::uint32_t>(detail::readBytes(object + 1, 4)));
  }
  const std::uint64_t bits = detail::readBytes(object + 1, 8);
  if (*object != (detail::marker::kInteger | 4U)) return std::bit_cast<double>(bits);
  return static_cast<double>(static_cast<std::int64_t>(bits)) * 0x1p64 +
         static_cast<double>(detail::readBytes(object + 9, 8));
}

std::uint64_t PropertyList::uid(Index index) const noexcept {
  const std::uint8_t* const object = objectAt(index);
  return detail::readBytes(object + 1, (*object & 0x0FU) + 1);
}

std::string_view PropertyList::string(Index index) const noexcept {
  const auto extent = detail::extentAt(objectAt(index));
  return {reinterpret_cast<const char*>(extent.body), extent.count};
}

ByteSpan PropertyList::data(Index index) const noexcept {
  const auto extent = detail::extentAt(objectAt(index));
  return {extent.body, extent.count};
}

PropertyList::Key PropertyList::keyNamed(std::string_view text) const noexcept {
  if (couldBeInChain(text)) {
    const Key key = keyInChain(text);
    if (key != kNoKey) return key;
  }
  if (keyTable_.empty()) return kNoKey;
  const auto hash =
      static_cast<std::uint32_t>(detail::keyedHash(text.data(), text.size(), detail::hashKeys()));
  const std::size_t mask = keyTable_.size() - 1;
  for (std::size_t at = hash & mask;; at = (at + 1) & mask) {
    const KeySlot& slot = keyTable_[at];
    if (slot.number == 0) return kNoKey;
    if (slot.hash == hash && string(keys_[slot.number - 1]) == text) return (slot.number - 1) << 1;
  }
}

PropertyList::Key PropertyList::keyInChain(std::string_view text) const noexcept {
  const Index* const end = chain_.data() + chain_.size();
  const Index* const found = std::lower_bound(
      chain_.data(), end, text,
      [this](Index member, std::string_view wanted) { return ascend(string(member), wanted); });
  return found != end && string(*found) == text ? keyOf(*found) : kNoKey;
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
