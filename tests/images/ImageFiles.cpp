#include "ImageFiles.h"

#include <png.h>
#include <tiffio.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>
// libjpeg's header uses what <cstdio> declares, and does not include it.
#include <jpeglib.h>

namespace tarnkit::imagefiles {

Bytes png(std::uint32_t width, std::uint32_t height, const PNGKind& kind, const Bytes& rows) {
  Bytes file;
  png_structp writer = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(writer);
  png_set_write_fn(
      writer, &file,
      [](png_structp png, png_bytep bytes, std::size_t count) {
        auto* const target = static_cast<Bytes*>(png_get_io_ptr(png));
        target->insert(target->end(), bytes, bytes + count);
      },
      nullptr);
  png_set_IHDR(writer, info, width, height, kind.depth, kind.colorType,
               kind.interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE, 0, 0);
  if (!kind.palette.empty()) {
    std::vector<png_color> colors(kind.palette.size() / 3);
    std::memcpy(colors.data(), kind.palette.data(), kind.palette.size());
    png_set_PLTE(writer, info, colors.data(), static_cast<int>(colors.size()));
  }
  if (!kind.transparency.empty()) {
    png_set_tRNS(writer, info, kind.transparency.data(), static_cast<int>(kind.transparency.size()),
                 nullptr);
  }
  png_write_info(writer, info);
  const int passes = png_set_interlace_handling(writer);
  const std::size_t stride = rows.size() / height;
  for (int pass = 0; pass < passes; ++pass) {
    for (std::uint32_t y = 0; y < height; ++y) png_write_row(writer, rows.data() + y * stride);
  }
  png_write_end(writer, info);
  png_destroy_write_struct(&writer, &info);
  return file;
}

namespace {

struct MemoryFile {
  Bytes bytes;
  std::size_t position = 0;
};
MemoryFile* fileOf(thandle_t handle) { return static_cast<MemoryFile*>(handle); }

TIFF* openForWriting(MemoryFile& file, const char* mode) {
  return TIFFClientOpen(
      "picture", mode, &file,
      [](thandle_t handle, void* target, tmsize_t count) -> tmsize_t {
        auto* const memory = fileOf(handle);
        const auto size =
            std::min(static_cast<std::size_t>(count), memory->bytes.size() - memory->position);
        std::memcpy(target, memory->bytes.data() + memory->position, size);
        memory->position += size;
        return static_cast<tmsize_t>(size);
      },
      [](thandle_t handle, void* source, tmsize_t count) -> tmsize_t {
        auto* const memory = fileOf(handle);
        const auto size = static_cast<std::size_t>(count);
        memory->bytes.resize(std::max(memory->bytes.size(), memory->position + size));
        std::memcpy(memory->bytes.data() + memory->position, source, size);
        memory->position += size;
        return count;
      },
      [](thandle_t handle, toff_t offset, int whence) -> toff_t {
        auto* const memory = fileOf(handle);
        if (whence == SEEK_CUR) offset += memory->position;
        if (whence == SEEK_END) offset += memory->bytes.size();
        memory->position = offset;
        return offset;
      },
      [](thandle_t) { return 0; },
      [](thandle_t handle) -> toff_t { return fileOf(handle)->bytes.size(); }, nullptr, nullptr);
}

}  // namespace

Bytes tiff(std::uint32_t width, std::uint32_t height, const TIFFKind& kind, const Bytes& rows) {
  MemoryFile file;
  TIFF* const writer = openForWriting(file, kind.mode);
  TIFFSetField(writer, TIFFTAG_IMAGEWIDTH, width);
  TIFFSetField(writer, TIFFTAG_IMAGELENGTH, height);
  TIFFSetField(writer, TIFFTAG_BITSPERSAMPLE, kind.depth);
  TIFFSetField(writer, TIFFTAG_SAMPLESPERPIXEL, kind.samples);
  TIFFSetField(writer, TIFFTAG_PHOTOMETRIC, kind.photometric);
  TIFFSetField(writer, TIFFTAG_COMPRESSION, kind.compression);
  TIFFSetField(writer, TIFFTAG_PLANARCONFIG,
               kind.separate ? PLANARCONFIG_SEPARATE : PLANARCONFIG_CONTIG);
  if (kind.orientation != 0) TIFFSetField(writer, TIFFTAG_ORIENTATION, kind.orientation);
  if (kind.extraSample >= 0) {
    const auto extra = static_cast<std::uint16_t>(kind.extraSample);
    TIFFSetField(writer, TIFFTAG_EXTRASAMPLES, 1, &extra);
  }
  if (kind.photometric == PHOTOMETRIC_PALETTE) {
    const std::size_t colors = std::size_t{1} << kind.depth;
    std::vector<std::uint16_t> red(std::max<std::size_t>(colors, 256));
    auto green = red;
    auto blue = red;
    for (std::uint32_t i = 0; i < 256; ++i) {
      red[i] = static_cast<std::uint16_t>(i * 257);
      green[i] = static_cast<std::uint16_t>((255 - i) * 257);
      blue[i] = 0x8080;
    }
    TIFFSetField(writer, TIFFTAG_COLORMAP, red.data(), green.data(), blue.data());
  }
  Bytes data = rows;
  if (kind.tileSize != 0) {
    TIFFSetField(writer, TIFFTAG_TILEWIDTH, kind.tileSize);
    TIFFSetField(writer, TIFFTAG_TILELENGTH, kind.tileSize);
    TIFFWriteTile(writer, data.data(), 0, 0, 0, 0);
  } else {
    TIFFSetField(writer, TIFFTAG_ROWSPERSTRIP, height);
    const auto stride = static_cast<std::size_t>(TIFFScanlineSize(writer));
    for (std::size_t row = 0; row * stride < data.size(); ++row) {
      TIFFWriteScanline(writer, data.data() + row * stride,
                        static_cast<std::uint32_t>(row % height),
                        static_cast<std::uint16_t>(row / height));
    }
  }
  TIFFClose(writer);
  return file.bytes;
}

Bytes jpeg(std::uint32_t width, std::uint32_t height, JPEGColor color, JPEGScans scans,
           const Bytes& rows, const Bytes& exif) {
  jpeg_compress_struct writer{};
  jpeg_error_mgr errors{};
  writer.err = jpeg_std_error(&errors);
  jpeg_create_compress(&writer);
  unsigned char* bytes = nullptr;
  unsigned long size = 0;
  jpeg_mem_dest(&writer, &bytes, &size);
  writer.image_width = width;
  writer.image_height = height;
  writer.input_components = color == JPEGColor::grey ? 1 : color == JPEGColor::rgb ? 3 : 4;
  writer.in_color_space = color == JPEGColor::grey  ? JCS_GRAYSCALE
                          : color == JPEGColor::rgb ? JCS_RGB
                                                    : JCS_CMYK;
  jpeg_set_defaults(&writer);
  jpeg_set_quality(&writer, 100, TRUE);
  writer.comp_info[0].h_samp_factor = 1;
  writer.comp_info[0].v_samp_factor = 1;
  const jpeg_scan_info script[] = {{1, {0}, 0, 0, 0, 0}, {1, {0}, 1, 63, 0, 0}};
  if (scans == JPEGScans::progressive) jpeg_simple_progression(&writer);
  if (scans == JPEGScans::wholePrecision) {
    writer.scan_info = script;
    writer.num_scans = 2;
  }
  jpeg_start_compress(&writer, TRUE);
  if (!exif.empty()) {
    jpeg_write_marker(&writer, JPEG_APP0 + 1, exif.data(), static_cast<unsigned>(exif.size()));
  }
  Bytes copy = rows;
  for (std::uint32_t y = 0; y < height; ++y) {
    JSAMPROW row = copy.data() + y * (rows.size() / height);
    jpeg_write_scanlines(&writer, &row, 1);
  }
  jpeg_finish_compress(&writer);
  jpeg_destroy_compress(&writer);
  Bytes file(bytes, bytes + size);
  std::free(bytes);
  return file;
}

Bytes exif(std::uint16_t orientation, bool littleEndian) {
  Bytes segment{'E', 'x', 'i', 'f', 0, 0};
  const auto append = [&](std::uint32_t value, int size) {
    for (int i = 0; i < size; ++i) {
      const int shift = 8 * (littleEndian ? i : size - 1 - i);
      segment.push_back(static_cast<std::uint8_t>(value >> shift));
    }
  };
  segment.insert(segment.end(), 2, littleEndian ? 'I' : 'M');
  append(42, 2);
  append(8, 4);  // the directory follows at once
  append(orientation == 0 ? 1 : 2, 2);
  for (const std::uint32_t tag : {0x0100U, 0x0112U}) {
    if (tag == 0x0112U && orientation == 0) break;
    append(tag, 2);
    append(3, 2);
    append(1, 4);
    append(tag == 0x0112U ? orientation : 9999U, 2);
    append(0, 2);
  }
  append(0, 4);
  return segment;
}

namespace {

void appendBigEndian(Bytes& file, std::uint32_t value) {
  for (int shift = 24; shift >= 0; shift -= 8) {
    file.push_back(static_cast<std::uint8_t>(value >> shift));
  }
}

void appendChunk(Bytes& file, std::string_view type, const Bytes& data) {
  appendBigEndian(file, static_cast<std::uint32_t>(data.size()));
  const std::size_t start = file.size();
  file.insert(file.end(), type.begin(), type.end());
  file.insert(file.end(), data.begin(), data.end());
  std::uint32_t checksum = 0xFFFFFFFFU;
  for (std::size_t i = start; i < file.size(); ++i) {
    checksum ^= file[i];
    for (int bit = 0; bit < 8; ++bit) {
      checksum = (checksum >> 1) ^ ((checksum & 1U) ? 0xEDB88320U : 0U);
    }
  }
  appendBigEndian(file, ~checksum);
}

}  // namespace

Bytes pngOfChunks(std::uint32_t width, std::uint32_t height, const Bytes& data) {
  Bytes file{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
  Bytes header;
  appendBigEndian(header, width);
  appendBigEndian(header, height);
  for (const int field : {8, 6, 0, 0, 0}) header.push_back(static_cast<std::uint8_t>(field));
  appendChunk(file, "IHDR", header);
  appendChunk(file, "IDAT", data);
  appendChunk(file, "IEND", {});
  return file;
}

}  // namespace tarnkit::imagefiles
