#pragma once

#include "tarnkit/platform/objects/Data.h"
#include "tarnkit/platform/system/Status.h"

namespace tarnkit::detail {

class PropertyListBuilder;

/// Why a list is refused whose keys or values lead to no object, wherever that shows.
inline constexpr const char* kDanglingReference = "a reference points to no object of the file";

/// The parsers of the two forms behind `PropertyListReader`.
Status parseBinaryPropertyList(ByteSpan bytes, PropertyListBuilder& builder);
Status parseXMLPropertyList(ByteSpan bytes, PropertyListBuilder& builder);

}  // namespace tarnkit::detail
