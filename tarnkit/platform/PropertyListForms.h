#pragma once

#include <string>

#include "tarnkit/platform/Data.h"

namespace tarnkit::detail {

class PropertyListBuilder;

/// The parsers of the two forms behind `PropertyListReader`. Each gives false and a reason when the
/// bytes are not well-formed.
bool parseBinaryPropertyList(ByteSpan bytes, PropertyListBuilder& builder, std::string& error);
bool parseXMLPropertyList(ByteSpan bytes, PropertyListBuilder& builder, std::string& error);

}  // namespace tarnkit::detail
