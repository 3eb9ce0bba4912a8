#pragma once

#include <string>

namespace tarnkit {
class HXRNodeClass;
}

namespace tarnkit::tool {

class JsonWriter;

/// The shape of a patch definition: its descriptors, port groups and parameters.
void writePatchClass(JsonWriter& json, const HXRNodeClass& patchClass);

/// The same for people: a line for the patch, and one for each port and parameter.
void appendPatchClass(std::string& text, const HXRNodeClass& patchClass);

}  // namespace tarnkit::tool
