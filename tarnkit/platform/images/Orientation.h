#pragma once

#include "tarnkit/platform/images/Raster.h"

namespace tarnkit::detail {

/// Where a file's first row and column belong in the picture: the numbers 1 to 8 by which TIFF and
/// EXIF tell it. From 5 on the rows stand upright.
inline constexpr std::uint32_t kOrientationUpright = 1;
inline constexpr std::uint32_t kFirstTurnedOrientation = 5;
inline constexpr std::uint32_t kLastOrientation = 8;

/// The picture as it is to be seen. Any other number than those means 1.
Raster oriented(Raster stored, std::uint32_t orientation);

/// `checkSize` of the picture as it is stored and as it is to be seen.
Status checkSize(RasterSize stored, std::uint32_t orientation, const ImageLimits& limits);

/// The orientation in the contents of an EXIF segment; 1 when they tell none.
std::uint32_t orientationOfEXIF(ByteSpan segment) noexcept;

}  // namespace tarnkit::detail
