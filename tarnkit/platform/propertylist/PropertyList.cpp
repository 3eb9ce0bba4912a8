#include "tarnkit/platform/propertylist/PropertyList.h"

#include <bit>

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

PropertyList::Index PropertyList::valueForKey(Index map, Key key) const noexcept {
  if (key == kNoKey) return kNone;
  const auto names = keys(map);
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (keyOf(names[i]) == key) return values(map)[i];
  }
  return kNone;
}

}  // namespace tarnkit
