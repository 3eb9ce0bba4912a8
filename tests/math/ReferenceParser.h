#pragma once

#include <string>
#include <string_view>

namespace tarnkit::testing {

/// Parses by folding the tightest operator of every group again and again over plain lists of
/// terms: slow, and short enough to be seen to be right. Answers the tree's description, or "CODE
/// MESSAGE".
std::string referenceParse(std::string_view text);

}  // namespace tarnkit::testing
