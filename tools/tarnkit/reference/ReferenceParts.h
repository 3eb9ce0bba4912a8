#pragma once

#include <string_view>

namespace tarnkit::tool {

/// What is the same in every reference. Each is a file of the folder `page`, which the build takes
/// into the program.

/// The style rules, but for the colours and the pictures.
extern const std::string_view kReferenceStyle;
/// The search of the index.
extern const std::string_view kSearchScript;

}  // namespace tarnkit::tool
