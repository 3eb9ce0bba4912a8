#pragma once

#include <string_view>

namespace tarnkit::detail {

/// The parts of a page that are the same for every document: the style rules beside those of the
/// pictures, the body before and behind the first picture, and the script.
extern const std::string_view kPageStyle;
extern const std::string_view kPageBodyStart;
extern const std::string_view kPageBodyEnd;
extern const std::string_view kPageScript;

}  // namespace tarnkit::detail
