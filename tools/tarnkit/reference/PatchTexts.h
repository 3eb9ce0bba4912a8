#pragma once

#include <string_view>

namespace tarnkit::tool {

/// What the patch of that class is for, in one or two plain sentences, written for designers; ""
/// for a class that the library does not bring itself. Costs a binary search.
std::string_view patchText(std::string_view className);

}  // namespace tarnkit::tool
