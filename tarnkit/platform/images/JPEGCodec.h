#pragma once

#include "tarnkit/platform/images/Raster.h"

namespace tarnkit::detail {

/// JPEG files. Both functions are free to run on any thread, and neither raises or aborts.

bool isJPEG(ByteSpan file) noexcept;

/// Baseline and progressive, grey, colour and CMYK. A file that is cut off or whose data does not
/// decode is refused, although a part of the picture could be shown. Turned as the file says.
Result<Raster> readJPEG(ByteSpan file, const ImageLimits& limits);

}  // namespace tarnkit::detail
