#pragma once

#include <string>

namespace tarnkit {
class HXRNodeClass;
}

namespace tarnkit {
class JSONWriter;
}

namespace tarnkit::tool {

/// The shape of a patch definition: its descriptors, port groups and parameters.
void writePatchClass(JSONWriter& json, const HXRNodeClass& patchClass);

/// The same for people: a line for the patch, and one for each port and parameter.
void appendPatchClass(std::string& text, const HXRNodeClass& patchClass);

}  // namespace tarnkit::tool
