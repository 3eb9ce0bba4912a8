#pragma once

#include <string_view>

namespace tarnkit::detail {

/// The parts that are the same in every picture and page. Each is a file of the folder `page`,
/// which the build takes into the library.

/// The style rules of the pictures, with the colours as CSS variables.
extern const std::string_view kPictureStyle;
/// Those of the page beside them.
extern const std::string_view kPageStyle;
/// And those of what shows changes.
extern const std::string_view kChangesStyle;
/// The body before the first picture and behind it.
extern const std::string_view kPageBodyStart;
extern const std::string_view kPageBodyEnd;
extern const std::string_view kPageScript;

}  // namespace tarnkit::detail
