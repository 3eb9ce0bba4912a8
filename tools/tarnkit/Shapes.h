#pragma once

namespace tarnkit {
class HXNode;
class HXParameter;
class HXPort;
class HXPortGroup;
class String;
}  // namespace tarnkit

namespace tarnkit::tool {

class JsonWriter;

/// How deep a document may be nested for its shape to be written: every node's key path repeats the
/// keys of all that enclose it, so the text grows with the square of the depth.
inline constexpr int kMaximumShapeDepth = 10'000;

/// Throws CommandFailure when what lies below the node is nested deeper than that.
void checkShapeDepth(const HXNode& node);

/// The node's shape, with everything below it; of a document also its own fields.
void writeNode(JsonWriter& json, const HXNode& node);

void writePort(JsonWriter& json, const HXPort& port);
void writePortGroup(JsonWriter& json, const HXPortGroup& group);
/// `key` is the key under which the node holds the parameter.
void writeParameter(JsonWriter& json, const String& key, const HXParameter& parameter);

}  // namespace tarnkit::tool
