// Picture files from anywhere: the readers may refuse, but what they take must be whole.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "tarnkit/platform/images/Image.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using tarnkit::Image;
  tarnkit::ImageLimits limits;
  limits.pixels = 1 << 16;  // so that a run is spent on formats, not on pixels
  const auto image = Image::imageWithData({data, size}, limits);
  if (!image) {
    if (image.status().sentence().empty()) std::abort();
    return 0;
  }
  const auto tiff = image->TIFFRepresentation();
  const auto png = image->PNGRepresentation();
  if (!tiff || !png) std::abort();
  for (const auto& file : {*tiff, *png}) {
    const auto again = Image::imageWithData(file->bytes());
    if (!again || !again->isEqual(**image)) std::abort();
  }
  return 0;
}
