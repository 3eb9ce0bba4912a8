#pragma once

#include <vector>

#include "tarnkit/platform/images/Raster.h"

namespace tarnkit::detail {

/// PNG files. All functions are free to run on any thread, and none of them raises or aborts.

bool isPNG(ByteSpan file) noexcept;

/// The size of a file that is whole: its header allowed, every chunk's checksum right, enough data
/// for its size and the end there. Leaves the pixels compressed; linear in the file.
Result<RasterSize> checkPNG(ByteSpan file, const ImageLimits& limits);

/// Every kind of PNG; samples of 16 bits are rounded to 8. Colour profiles and gamma are not
/// applied.
Result<Raster> readPNG(ByteSpan file, const ImageLimits& limits);

/// RGBA, or RGB when every pixel is opaque; the same bytes for the same pixels, and no metadata.
Result<std::vector<std::uint8_t>> writePNG(const RasterView& raster);

}  // namespace tarnkit::detail
