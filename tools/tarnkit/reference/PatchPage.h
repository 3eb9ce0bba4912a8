#pragma once

#include <string>

namespace tarnkit {
class HXRNodeClass;
}

namespace tarnkit::tool {

class ReferencePages;
class RelatedPatches;
struct ReferencePage;

/// The whole help page: each of its patches with text, picture and tables, and where to go on.
/// Draws every patch, so it makes a document for each.
std::string patchPage(const ReferencePage& page, const ReferencePages& pages,
                      const RelatedPatches& related);

/// The words that tell a hidden or secret patch from the others, as small labels; "" for a patch
/// that the library lists.
std::string flagsHtml(const HXRNodeClass& patch);

}  // namespace tarnkit::tool
