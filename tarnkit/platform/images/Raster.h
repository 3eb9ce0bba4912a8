#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tarnkit/platform/images/ImageLimits.h"
#include "tarnkit/platform/objects/Data.h"

namespace tarnkit::detail {

inline constexpr std::size_t kBytesPerPixel = 4;

/// The pixels that the codecs exchange: 8-bit red, green, blue and straight alpha, the top row
/// first, rows without padding. A plain value.
struct Raster {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::vector<std::uint8_t> pixels;
};

/// The same, owned by somebody else.
struct RasterView {
  std::uint32_t width;
  std::uint32_t height;
  ByteSpan pixels;
};

inline std::size_t rowBytes(std::uint32_t width) noexcept { return width * kBytesPerPixel; }

/// Whether a picture of this size may be made; otherwise says why not.
bool isSizeAllowed(std::uint64_t width, std::uint64_t height, const ImageLimits& limits,
                   std::string& reason);

}  // namespace tarnkit::detail
