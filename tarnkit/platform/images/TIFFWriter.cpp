#include <array>
#include <utility>

#include "tarnkit/platform/images/TIFFCodec.h"

namespace tarnkit::detail {

namespace {

// Field types and tags of the format, as far as they are written.
constexpr std::uint16_t kShort = 3;
constexpr std::uint16_t kLong = 4;
constexpr std::uint16_t kImageWidth = 256;
constexpr std::uint16_t kImageLength = 257;
constexpr std::uint16_t kBitsPerSample = 258;
constexpr std::uint16_t kCompression = 259;
constexpr std::uint16_t kPhotometricInterpretation = 262;
constexpr std::uint16_t kStripOffsets = 273;
constexpr std::uint16_t kSamplesPerPixel = 277;
constexpr std::uint16_t kRowsPerStrip = 278;
constexpr std::uint16_t kStripByteCounts = 279;
constexpr std::uint16_t kPlanarConfiguration = 284;
constexpr std::uint16_t kExtraSamples = 338;

constexpr std::uint32_t kUncompressed = 1;
constexpr std::uint32_t kRGB = 2;
constexpr std::uint32_t kInterleaved = 1;
constexpr std::uint32_t kStraightAlpha = 2;
constexpr std::uint32_t kSamples = 4;

struct Field {
  std::uint16_t tag;
  std::uint16_t type;
  std::uint32_t count;
  std::uint32_t value;
};

constexpr std::uint32_t kMagic = 42;
constexpr std::uint32_t kHeaderSize = 8;
constexpr std::uint32_t kFieldCount = 11;
constexpr std::uint32_t kFieldSize = 12;
constexpr std::uint32_t kDepthsOffset = kHeaderSize + 2 + kFieldCount * kFieldSize + 4;
constexpr std::uint32_t kPixelsOffset = kDepthsOffset + 2 * kSamples;

class LittleEndianBytes {
 public:
  explicit LittleEndianBytes(std::size_t size) { bytes_.reserve(size); }
  void put16(std::uint32_t value) {
    bytes_.push_back(static_cast<std::uint8_t>(value));
    bytes_.push_back(static_cast<std::uint8_t>(value >> 8));
  }
  void put32(std::uint32_t value) {
    put16(value & 0xFFFFU);
    put16(value >> 16);
  }
  void put(ByteSpan bytes) { bytes_.insert(bytes_.end(), bytes.begin(), bytes.end()); }
  std::vector<std::uint8_t> take() { return std::move(bytes_); }

 private:
  std::vector<std::uint8_t> bytes_;
};

}  // namespace

std::vector<std::uint8_t> writeTIFF(const RasterView& raster) {
  const auto pixelBytes = static_cast<std::uint32_t>(raster.pixels.size());
  const std::array<Field, kFieldCount> fields{{
      {kImageWidth, kLong, 1, raster.width},
      {kImageLength, kLong, 1, raster.height},
      {kBitsPerSample, kShort, kSamples, kDepthsOffset},
      {kCompression, kShort, 1, kUncompressed},
      {kPhotometricInterpretation, kShort, 1, kRGB},
      {kStripOffsets, kLong, 1, kPixelsOffset},
      {kSamplesPerPixel, kShort, 1, kSamples},
      {kRowsPerStrip, kLong, 1, raster.height},
      {kStripByteCounts, kLong, 1, pixelBytes},
      {kPlanarConfiguration, kShort, 1, kInterleaved},
      {kExtraSamples, kShort, 1, kStraightAlpha},
  }};
  LittleEndianBytes file(kPixelsOffset + raster.pixels.size());
  file.put(bytesOf("II"));
  file.put16(kMagic);
  file.put32(kHeaderSize);
  file.put16(kFieldCount);
  for (const Field& field : fields) {
    file.put16(field.tag);
    file.put16(field.type);
    file.put32(field.count);
    file.put32(field.value);  // a short stands in the first two bytes
  }
  file.put32(0);  // no further picture
  for (std::uint32_t sample = 0; sample < kSamples; ++sample) file.put16(8);
  file.put(raster.pixels);
  return file.take();
}

}  // namespace tarnkit::detail
