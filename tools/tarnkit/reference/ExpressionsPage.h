#pragma once

#include <string>
#include <string_view>

namespace tarnkit {
class HXRNodeClass;
}

namespace tarnkit::tool {

/// The page of the language that people type into patches, as a file of the reference.
inline constexpr std::string_view kExpressionsPage = "expressions.html";

/// The page: operators and functions, from the engine's own tables, and what surprises.
std::string expressionsPage();

/// A sentence that leads there, for a patch whose parameter is an expression; "" for all others.
std::string expressionsLink(const HXRNodeClass& patch);

}  // namespace tarnkit::tool
