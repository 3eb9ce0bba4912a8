#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tarnkit/platform/images/Raster.h"

namespace tarnkit::detail {

/// PNG files. All functions are free to run on any thread, and none of them raises or aborts: what
/// cannot be read gives nothing and a reason.

bool isPNG(ByteSpan file) noexcept;

/// Whether the file is whole: its header allowed, every chunk's checksum right, enough data for its
/// size and the end there. Fills in the size, leaves the pixels compressed; linear in the file.
bool checkPNG(ByteSpan file, const ImageLimits& limits, Raster& size, std::string& reason);

/// Every kind of PNG; samples of 16 bits are rounded to 8. Colour profiles and gamma are not
/// applied.
std::optional<Raster> readPNG(ByteSpan file, const ImageLimits& limits, std::string& reason);

/// RGBA, or RGB when every pixel is opaque; the same bytes for the same pixels, and no metadata.
/// Empty on failure.
std::vector<std::uint8_t> writePNG(const RasterView& raster, std::string& reason);

}  // namespace tarnkit::detail
