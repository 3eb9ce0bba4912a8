#pragma once

#include <string>

#include "tarnkit/platform/objects/Data.h"

namespace tarnkit::detail {

/// Appends the bytes in the usual alphabet, padded, in one line.
void appendBase64(std::string& out, ByteSpan bytes);

}  // namespace tarnkit::detail
