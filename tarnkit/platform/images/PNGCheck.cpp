#include <fmt/format.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <string_view>

#include "tarnkit/platform/images/PNGCodec.h"

namespace tarnkit::detail {

namespace {

constexpr std::array<std::uint8_t, 8> kSignature{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
constexpr std::size_t kHeaderSize = 13;
// Length, type and checksum stand around a chunk's data.
constexpr std::size_t kChunkOverhead = 12;
// A byte of compressed data stands for this many bytes at most.
constexpr std::uint64_t kMaximumExpansion = 1032;

std::uint32_t checksum(ByteSpan bytes) noexcept {
  return static_cast<std::uint32_t>(crc32_z(0, bytes.data(), bytes.size()));
}

std::uint32_t bigEndian(ByteSpan bytes, std::size_t at) noexcept {
  return (std::uint32_t{bytes[at]} << 24) | (std::uint32_t{bytes[at + 1]} << 16) |
         (std::uint32_t{bytes[at + 2]} << 8) | bytes[at + 3];
}

/// Bits of one pixel in the file; 0 when there is no such kind of pixel.
std::uint32_t bitsPerPixel(std::uint8_t depth, std::uint8_t colorType) noexcept {
  const bool whole = depth == 8 || depth == 16;
  const bool part = depth == 1 || depth == 2 || depth == 4;
  switch (colorType) {
    case 0:  // grey
      return whole || part ? depth : 0U;
    case 2:  // red, green, blue
      return whole ? 3U * depth : 0U;
    case 3:  // palette
      return part || depth == 8 ? depth : 0U;
    case 4:  // grey and alpha
      return whole ? 2U * depth : 0U;
    case 6:  // red, green, blue, alpha
      return whole ? 4U * depth : 0U;
    default:
      return 0;
  }
}

struct Chunk {
  std::string_view type;
  ByteSpan data;
};

/// Takes the next chunk off the file.
Status takeChunk(ByteSpan& rest, Chunk& chunk) {
  if (rest.size() < kChunkOverhead || rest.size() - kChunkOverhead < bigEndian(rest, 0)) {
    return Status::damaged("the PNG file is cut off");
  }
  const std::size_t length = bigEndian(rest, 0);
  const auto checked = rest.subspan(4, 4 + length);
  chunk.type = {reinterpret_cast<const char*>(checked.data()), 4};
  chunk.data = checked.subspan(4);
  if (checksum(checked) != bigEndian(rest, 8 + length)) {
    return Status::damaged("the PNG file is damaged: a checksum is wrong");
  }
  rest = rest.subspan(kChunkOverhead + length);
  return {};
}

}  // namespace

bool isPNG(ByteSpan file) noexcept {
  return file.size() >= kSignature.size() &&
         std::equal(kSignature.begin(), kSignature.end(), file.begin());
}

Result<RasterSize> checkPNG(ByteSpan file, const ImageLimits& limits) {
  if (!isPNG(file)) return Status::failure(StatusCode::unsupported, "this is no PNG file");
  ByteSpan rest = file.subspan(kSignature.size());
  Chunk chunk;
  if (auto status = takeChunk(rest, chunk); !status) return status;
  if (chunk.type != "IHDR" || chunk.data.size() != kHeaderSize) {
    return Status::damaged("the PNG file does not begin with its header");
  }
  const RasterSize size{bigEndian(chunk.data, 0), bigEndian(chunk.data, 4)};
  if (auto status = checkSize(size.width, size.height, limits); !status) return status;
  const auto bits = bitsPerPixel(chunk.data[8], chunk.data[9]);
  if (bits == 0 || chunk.data[10] != 0 || chunk.data[11] != 0 || chunk.data[12] > 1) {
    return Status::damaged("the PNG file's header names a format that does not exist");
  }
  std::uint64_t compressed = 0;
  do {
    if (auto status = takeChunk(rest, chunk); !status) return status;
    if (chunk.type == "IDAT") compressed += chunk.data.size();
  } while (chunk.type != "IEND");
  const std::uint64_t needed = (std::uint64_t{size.width} * bits + 7) / 8 * size.height;
  if (needed / kMaximumExpansion > compressed) {
    return Status::damaged(fmt::format("the PNG file has too little data for {} x {} pixels",
                                       size.width, size.height));
  }
  return size;
}

}  // namespace tarnkit::detail
