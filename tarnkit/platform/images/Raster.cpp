#include "tarnkit/platform/images/Raster.h"

#include <fmt/format.h>

namespace tarnkit::detail {

bool isSizeAllowed(std::uint64_t width, std::uint64_t height, const ImageLimits& limits,
                   std::string& reason) {
  if (width == 0 || height == 0) {
    reason = fmt::format("the picture has no pixels ({} x {})", width, height);
    return false;
  }
  if (width > limits.width || height > limits.height || width * height > limits.pixels) {
    reason = fmt::format("a picture of {} x {} pixels is too large (at most {} x {}, {} in all)",
                         width, height, limits.width, limits.height, limits.pixels);
    return false;
  }
  return true;
}

}  // namespace tarnkit::detail
