#pragma once

#include "tarnkit/patches/RGBA.h"

namespace tarnkit::detail {

/// The relative luminance of the colour taken as opaque sRGB, 0 to 1; components that are no
/// numbers count as 0.
double luminance(RGBA color);
/// The ratio of contrast of two luminances, 1 to 21.
double contrast(double first, double second);
/// Whether light text reads better on the colour than dark text does; the better of the two has a
/// ratio of 4.5 at least, whatever the colour.
bool wantsLightText(RGBA color);

}  // namespace tarnkit::detail
