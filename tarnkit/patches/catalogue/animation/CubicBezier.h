#pragma once

namespace tarnkit {

class PatchDeclaration;

/// What the easing curves have in common: they run as one class on the device and differ in the
/// defaults of their two control points.
void declareCubicBezier(PatchDeclaration& patch, float x1, float y1, float x2, float y2);

/// The groups of the control points, which every curve but the free one hides.
inline constexpr const char* kControlPointGroupKeys[] = {"Control Point 1", "Control Point 2",
                                                         nullptr};

}  // namespace tarnkit
