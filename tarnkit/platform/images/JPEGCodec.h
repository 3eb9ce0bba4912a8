#pragma once

#include <optional>
#include <string>

#include "tarnkit/platform/images/Raster.h"

namespace tarnkit::detail {

/// JPEG files. Both functions are free to run on any thread, and neither raises or aborts: what
/// cannot be read gives nothing and a reason.

bool isJPEG(ByteSpan file) noexcept;

/// Baseline and progressive, grey, colour and CMYK. A file that is cut off or whose data does not
/// decode is refused, although a part of the picture could be shown. Turned as the file says.
std::optional<Raster> readJPEG(ByteSpan file, const ImageLimits& limits, std::string& reason);

}  // namespace tarnkit::detail
