#include "tarnkit/platform/images/Orientation.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace tarnkit::detail {

namespace {

/// Numbers in the byte order that an EXIF segment has chosen; what lies outside reads as 0.
class Fields {
 public:
  explicit Fields(ByteSpan bytes) noexcept : bytes_(bytes), isLittle_(at(0) == 'I') {}

  std::uint32_t number16(std::size_t place) const noexcept {
    const std::uint32_t first = at(place);
    const std::uint32_t second = at(place + 1);
    return isLittle_ ? second << 8 | first : first << 8 | second;
  }
  std::uint32_t number32(std::size_t place) const noexcept {
    const std::uint32_t first = number16(place);
    const std::uint32_t second = number16(place + 2);
    return isLittle_ ? second << 16 | first : first << 16 | second;
  }

 private:
  std::uint32_t at(std::size_t place) const noexcept {
    return place < bytes_.size() ? bytes_[place] : 0U;
  }

  ByteSpan bytes_;
  bool isLittle_;
};

/// How one walks through the stored pixels when one goes right and down in the picture.
struct Steps {
  std::ptrdiff_t start;
  std::ptrdiff_t right;
  std::ptrdiff_t down;
};

Steps stepsOf(std::uint32_t orientation, std::ptrdiff_t width, std::ptrdiff_t height) noexcept {
  const std::ptrdiff_t lastInRow = width - 1;
  const std::ptrdiff_t lastRow = (height - 1) * width;
  switch (orientation) {
    case 2:
      return {lastInRow, -1, width};
    case 3:
      return {lastRow + lastInRow, -1, -width};
    case 4:
      return {lastRow, 1, -width};
    case 5:
      return {0, width, 1};
    case 6:
      return {lastRow, -width, 1};
    case 7:
      return {lastRow + lastInRow, -width, -1};
    case 8:
      return {lastInRow, width, -1};
    default:
      return {0, 1, width};
  }
}

}  // namespace

Raster oriented(Raster stored, std::uint32_t orientation) {
  if (orientation <= kOrientationUpright || orientation > kLastOrientation) return stored;
  const bool isTurned = orientation >= kFirstTurnedOrientation;
  Raster shown;
  shown.width = isTurned ? stored.height : stored.width;
  shown.height = isTurned ? stored.width : stored.height;
  shown.pixels.resize(stored.pixels.size());
  const Steps steps =
      stepsOf(orientation, std::ptrdiff_t{stored.width}, std::ptrdiff_t{stored.height});
  // By squares, so that neither side is walked through a whole column at a time.
  constexpr std::uint32_t kSide = 64;
  for (std::uint32_t top = 0; top < shown.height; top += kSide) {
    const std::uint32_t bottom = std::min(shown.height, top + kSide);
    for (std::uint32_t left = 0; left < shown.width; left += kSide) {
      const std::uint32_t right = std::min(shown.width, left + kSide);
      for (std::uint32_t y = top; y < bottom; ++y) {
        std::uint8_t* into =
            shown.pixels.data() + y * rowBytes(shown.width) + left * kBytesPerPixel;
        std::ptrdiff_t from =
            steps.start + std::ptrdiff_t{y} * steps.down + std::ptrdiff_t{left} * steps.right;
        for (std::uint32_t x = left; x < right; ++x, into += kBytesPerPixel, from += steps.right) {
          std::memcpy(into, stored.pixels.data() + static_cast<std::size_t>(from) * kBytesPerPixel,
                      kBytesPerPixel);
        }
      }
    }
  }
  return shown;
}

Status checkSize(RasterSize stored, std::uint32_t orientation, const ImageLimits& limits) {
  const bool isTurned = orientation >= kFirstTurnedOrientation && orientation <= kLastOrientation;
  auto status = checkSize(stored.width, stored.height, limits);
  if (!status || !isTurned) return status;
  return checkSize(stored.height, stored.width, limits);
}

std::uint32_t orientationOfEXIF(ByteSpan segment) noexcept {
  constexpr std::string_view kMark{"Exif\0\0", 6};
  constexpr std::uint32_t kMagic = 42;
  constexpr std::uint32_t kOrientationTag = 0x0112;
  constexpr std::uint32_t kShort = 3;
  constexpr std::size_t kEntry = 12;
  if (segment.size() < kMark.size() ||
      std::memcmp(segment.data(), kMark.data(), kMark.size()) != 0) {
    return kOrientationUpright;
  }
  const Fields fields(segment.subspan(kMark.size()));
  if (fields.number16(2) != kMagic) return kOrientationUpright;
  const std::size_t directory = fields.number32(4);
  const std::uint32_t count = fields.number16(directory);
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::size_t entry = directory + 2 + i * kEntry;
    if (fields.number16(entry) != kOrientationTag) continue;
    const std::uint32_t orientation = fields.number16(entry + 8);
    const bool isKnown = fields.number16(entry + 2) == kShort &&
                         orientation >= kOrientationUpright && orientation <= kLastOrientation;
    return isKnown ? orientation : kOrientationUpright;
  }
  return kOrientationUpright;
}

}  // namespace tarnkit::detail
