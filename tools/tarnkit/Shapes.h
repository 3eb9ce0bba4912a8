#pragma once

namespace tarnkit {
class HXNode;
}

namespace tarnkit {
class JSONWriter;
}

namespace tarnkit::tool {

/// How deep a document may be nested for its shape to be written: every node's key path repeats the
/// keys of all that enclose it, so the text grows with the square of the depth.
inline constexpr int kMaximumShapeDepth = 10'000;

/// Throws CommandFailure when what lies below the root is nested deeper than that.
void checkShapeDepth(const HXNode& root);

/// The root's shape, with everything below it; of a document also its own fields.
void writeNode(JSONWriter& json, const HXNode& root);

}  // namespace tarnkit::tool
