#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "tarnkit/platform/images/ImageLimits.h"
#include "tarnkit/platform/objects/Data.h"
#include "tarnkit/platform/system/Result.h"

namespace tarnkit::detail {

inline constexpr std::size_t kBytesPerPixel = 4;

/// The pixels that the codecs exchange: 8-bit red, green, blue and straight alpha, the top row
/// first, rows without padding. A plain value.
struct Raster {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::vector<std::uint8_t> pixels;
};

/// What a file tells of its picture before the pixels are unpacked.
struct RasterSize {
  std::uint32_t width;
  std::uint32_t height;
};

/// A raster owned by somebody else.
struct RasterView {
  std::uint32_t width;
  std::uint32_t height;
  ByteSpan pixels;
};

inline std::size_t rowBytes(std::uint32_t width) noexcept { return width * kBytesPerPixel; }

/// A failure unless a picture of this size may be made.
Status checkSize(std::uint64_t width, std::uint64_t height, const ImageLimits& limits);

}  // namespace tarnkit::detail
