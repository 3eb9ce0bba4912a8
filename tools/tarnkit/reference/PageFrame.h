#pragma once

#include <string>
#include <string_view>

namespace tarnkit::tool {

/// Stands in every file of a reference and in no other, so that a reference overwrites nothing but
/// an earlier reference.
inline constexpr std::string_view kReferenceMark = "tarnkit reference";
inline constexpr std::string_view kStylesheet = "reference.css";

/// A whole page from what is inside its <body>.
std::string pageFrame(std::string_view title, std::string_view description, std::string_view body);

/// The last line of a page.
std::string pageFooter();

}  // namespace tarnkit::tool
