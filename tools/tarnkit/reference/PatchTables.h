#pragma once

#include <string>

namespace tarnkit {
class HXRNodeClass;
}

namespace tarnkit::tool {

class ReferencePages;

/// The ports and parameters of a patch as headed tables. `level` is that of the headings (2 or 3).
///
/// Ports stand in the definition's order and groups. Where a patch adds a few ports to many of its
/// base, its own come first, in a table by themselves.
std::string patchTables(const HXRNodeClass& patch, const ReferencePages& pages, int level);

}  // namespace tarnkit::tool
