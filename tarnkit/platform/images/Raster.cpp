#include "tarnkit/platform/images/Raster.h"

#include <fmt/format.h>

namespace tarnkit::detail {

Status checkSize(std::uint64_t width, std::uint64_t height, const ImageLimits& limits) {
  if (width == 0 || height == 0) {
    return Status::damaged(fmt::format("the picture has no pixels ({} x {})", width, height));
  }
  if (width > limits.width || height > limits.height || width * height > limits.pixels) {
    return Status::failure(
        StatusCode::tooLarge,
        fmt::format("a picture of {} x {} pixels is too large (at most {} x {}, {} in all)", width,
                    height, limits.width, limits.height, limits.pixels));
  }
  return {};
}

}  // namespace tarnkit::detail
