#pragma once

#include <string>

#include "tarnkit/platform/objects/Data.h"

namespace tarnkit::detail {

class PropertyListBuilder;

/// Why a list is refused whose keys or values lead to no object, wherever that shows.
inline constexpr const char* kDanglingReference = "a reference points to no object of the file";

/// The parsers of the two forms behind `PropertyListReader`. Each gives false and a reason when the
/// bytes are not well-formed.
bool parseBinaryPropertyList(ByteSpan bytes, PropertyListBuilder& builder, std::string& error);
bool parseXMLPropertyList(ByteSpan bytes, PropertyListBuilder& builder, std::string& error);

}  // namespace tarnkit::detail
