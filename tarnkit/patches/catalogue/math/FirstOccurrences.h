#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "tarnkit/platform/text/String.h"

namespace tarnkit::detail {

/// Where each name first occurs in the text as plain bytes, inside of other words too; `npos` for
/// one that does not, and for an empty one. The names differ from each other.
///
/// Takes time and memory linear in the text and the names together, however many there are.
std::vector<std::size_t> firstOccurrences(std::string_view text, const std::vector<String>& names);

}  // namespace tarnkit::detail
