#pragma once

#include <cstdint>
#include <vector>

/// Files of every kind that the reader takes, made by the format's own library.
namespace tarnkit::imagefiles {

using Bytes = std::vector<std::uint8_t>;

struct PNGKind {
  int depth;
  int colorType;  // PNG_COLOR_TYPE_…
  bool interlaced = false;
  Bytes palette{};       // three bytes an entry
  Bytes transparency{};  // one byte an entry
};
/// `rows` hold the packed rows as the file has them.
Bytes png(std::uint32_t width, std::uint32_t height, const PNGKind& kind, const Bytes& rows);

struct TIFFKind {
  std::uint16_t depth;
  std::uint16_t samples;
  std::uint16_t photometric;      // PHOTOMETRIC_…
  std::uint16_t compression = 1;  // COMPRESSION_…
  int extraSample = -1;           // EXTRASAMPLE_…
  bool separate = false;
  std::uint32_t tileSize = 0;  // 0: strips
  const char* mode = "w";
  std::uint16_t orientation = 0;  // 0: not told
};
/// `rows` hold the packed rows (of a separate file: plane after plane; of a tiled one: the tile).
Bytes tiff(std::uint32_t width, std::uint32_t height, const TIFFKind& kind, const Bytes& rows);

enum class JPEGColor { grey, rgb, cmyk };
enum class JPEGScans { one, progressive, wholePrecision };
/// Highest quality, no reduced colour resolution; a CMYK file carries the usual writer's mark. With
/// `wholePrecision` (grey only) the last of two scans may be repeated as often as one likes.
/// `exif`, if any, is the contents of a segment for it.
Bytes jpeg(std::uint32_t width, std::uint32_t height, JPEGColor color, JPEGScans scans,
           const Bytes& rows, const Bytes& exif = {});
/// A segment that tells this orientation (0: none) after another field.
Bytes exif(std::uint16_t orientation, bool littleEndian);

/// A PNG that consists of this header and this data, with right checksums.
Bytes pngOfChunks(std::uint32_t width, std::uint32_t height, const Bytes& data);

}  // namespace tarnkit::imagefiles
