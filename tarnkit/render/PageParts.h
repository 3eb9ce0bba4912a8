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
/// The body before what readers without scripts see and behind it.
extern const std::string_view kPageBodyStart;
extern const std::string_view kPageBodyEnd;
/// The script, in the order in which it stands in a page: what draws groups from their data, what
/// draws large ones from afar, and the page itself.
extern const std::string_view kPictureScript;
extern const std::string_view kLargeScript;
extern const std::string_view kPageScript;

}  // namespace tarnkit::detail
