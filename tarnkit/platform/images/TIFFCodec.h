#pragma once

#include <vector>

#include "tarnkit/platform/images/Raster.h"

namespace tarnkit::detail {

/// TIFF files. All functions are free to run on any thread, and none of them raises or aborts.

bool isTIFF(ByteSpan file) noexcept;

/// The first picture of the file: bilevel, grey, palette, RGB, CMYK, YCbCr and Lab, in strips or
/// tiles, of 8 or 16 bits (rounded to 8), plain or packed by PackBits, LZW, Deflate, JPEG or a fax
/// code, turned and mirrored as its orientation says. Alpha beside colours of another kind than RGB
/// and grey, and beside grey of 16 bits in one plane with it, is a reason to refuse the file.
Result<Raster> readTIFF(ByteSpan file, const ImageLimits& limits);

/// One uncompressed strip of RGBA with straight alpha. The bytes depend on the pixels only, not on
/// a library or its version: content keys are made from them and stand in documents.
std::vector<std::uint8_t> writeTIFF(const RasterView& raster);

}  // namespace tarnkit::detail
