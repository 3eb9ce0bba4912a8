#pragma once

#include <string>
#include <string_view>

namespace tarnkit {
class HXRNodeClass;
}

namespace tarnkit::tool {

/// What the patch is for: its own text, or, where it has none (a plug-in's patch), a sentence made
/// from its category, ports and parameters.
std::string summaryOf(const HXRNodeClass& patch);

/// The first sentence of a text.
std::string_view firstSentence(std::string_view text);

}  // namespace tarnkit::tool
