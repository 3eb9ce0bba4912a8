#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "tarnkit/platform/propertylist/PropertyList.h"

namespace tarnkit::detail {

/// The texts in which the XML form of a property list writes its values. White space around a value
/// is ignored; each gives false for anything else that is not the value's text. Independent of the
/// process's locale.

struct PropertyListInteger {
  PropertyList::Kind kind = PropertyList::Kind::integer;
  std::int64_t bits = 0;
  double wide = 0;  // of a `wideInteger`, which takes up to 128 bits
};
/// Decimal, or hexadecimal after "0x", with an optional sign.
bool readPropertyListInteger(std::string_view text, PropertyListInteger& value);
/// Decimal, or "inf", "infinity", "nan" in either case.
bool readPropertyListReal(std::string_view text, double& value);
/// "2001-01-01T00:00:00Z", as seconds from that moment.
bool readPropertyListDate(std::string_view text, double& seconds);
/// White space may stand anywhere; the padding must be there.
bool readBase64(std::string_view text, std::string& bytes);

}  // namespace tarnkit::detail
