#pragma once

#include <string>

namespace tarnkit {
class HXRNodeClass;
}

namespace tarnkit::tool {

class ReferencePages;

/// The page that leads to all others: every patch under its category, with a search that narrows
/// the list down. Without a script the list stands there whole.
std::string indexPage(const ReferencePages& pages);

/// A link from any page to the part of the index with the category of the patch.
std::string linkToCategory(const HXRNodeClass& patch);

}  // namespace tarnkit::tool
