#pragma once

#include <string>

#include "tarnkit/platform/propertylist/PropertyList.h"
#include "tarnkit/platform/system/Result.h"

namespace tarnkit {

/// The XML form of a property list that was read, for people and for tools that know no other.
///
/// It holds what the binary form holds, with three exceptions: the width of a number is lost (the
/// value is not), a container that stands in several places is written in each of them, and XML has
/// no way to write most control characters. So a list with such a text is refused (`unsupported`),
/// and one that would come out much larger than it is (`tooLarge`). Nesting costs no stack.
class PropertyListXMLWriter {
 public:
  static Result<std::string> write(const PropertyList& list);
};

}  // namespace tarnkit
