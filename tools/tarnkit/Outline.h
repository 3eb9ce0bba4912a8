#pragma once

#include <functional>
#include <string_view>

namespace tarnkit {
class HXDocument;
}

namespace tarnkit::tool {

/// How many levels the outline tells apart; what lies deeper stands at the last one.
inline constexpr std::size_t kMaximumOutlineIndentation = 40;
/// How many bytes of a name, key or value are shown; of a longer one the beginning, and "…".
inline constexpr std::size_t kLongestOutlineText = 256;

/// The document for people: a line for each node, indented by its place in the hierarchy, and below
/// it its published ports, what it is connected to and the values that were set; then the images.
/// Handed out in pieces.
void writeOutline(const HXDocument& document, const std::function<void(std::string_view)>& sink);

}  // namespace tarnkit::tool
