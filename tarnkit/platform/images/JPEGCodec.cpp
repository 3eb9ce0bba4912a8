#include "tarnkit/platform/images/JPEGCodec.h"

#include <csetjmp>
#include <cstdio>
// libjpeg's headers use what <cstdio> declares, and do not include it.
#include <jerror.h>
#include <jpeglib.h>

#include "tarnkit/platform/images/Orientation.h"

namespace tarnkit::detail {

namespace {

// Real progressive pictures have about ten; each one costs a walk over the whole picture.
constexpr int kMaximumScans = 100;
constexpr int kEXIFMarker = JPEG_APP0 + 1;
constexpr unsigned kLargestSegment = 0xFFFF;

/// libjpeg reports errors by jumping out of its functions. The functions that it may jump out of
/// hold nothing that needs a destructor.
struct ErrorManager {
  jpeg_error_mgr base;  // first, so that libjpeg's pointer to it is a pointer to this
  std::jmp_buf target;
  char message[JMSG_LENGTH_MAX];
  StatusCode code;
};

ErrorManager* managerOf(j_common_ptr jpeg) { return reinterpret_cast<ErrorManager*>(jpeg->err); }

[[noreturn]] void onError(j_common_ptr jpeg) {
  auto* const manager = managerOf(jpeg);
  manager->base.format_message(jpeg, manager->message);
  const bool isMemory = jpeg->err->msg_code == JERR_OUT_OF_MEMORY;
  manager->code = isMemory ? StatusCode::outOfMemory : StatusCode::damaged;
  std::longjmp(manager->target, 1);
}

/// Warnings about the data mean that part of the picture is made up; only those that cameras and
/// editors commonly cause are let pass.
void onMessage(j_common_ptr jpeg, int level) {
  if (level >= 0) return;
  switch (jpeg->err->msg_code) {
    case JWRN_EXTRANEOUS_DATA:
    case JWRN_ADOBE_XFORM:
    case JWRN_JFIF_MAJOR:
    case JWRN_TOO_MUCH_DATA:
      return;
    default:
      onError(jpeg);
  }
}

void printNothing(j_common_ptr) {}

void onProgress(j_common_ptr jpeg) {
  const auto* const decompressor = reinterpret_cast<j_decompress_ptr>(jpeg);
  if (decompressor->input_scan_number <= kMaximumScans) return;
  auto* const manager = managerOf(jpeg);
  std::snprintf(manager->message, sizeof manager->message, "it has more than %d scans",
                kMaximumScans);
  manager->code = StatusCode::tooLarge;
  std::longjmp(manager->target, 1);
}

class Reader {
 public:
  Reader() {
    jpeg_.err = jpeg_std_error(&errors_.base);
    errors_.base.error_exit = &onError;
    errors_.base.emit_message = &onMessage;
    errors_.base.output_message = &printNothing;
    errors_.message[0] = '\0';
  }
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;
  ~Reader() { jpeg_destroy_decompress(&jpeg_); }

  std::uint32_t width() const noexcept { return jpeg_.image_width; }
  std::uint32_t height() const noexcept { return jpeg_.image_height; }
  bool isCMYK() const noexcept { return jpeg_.out_color_space == JCS_CMYK; }
  /// The usual writer of CMYK pictures stores them inverted, and leaves its mark.
  bool isInverted() const noexcept { return jpeg_.saw_Adobe_marker; }
  Status failure() const { return Status::failure(errors_.code, errors_.message); }
  /// How the picture was held when it was taken.
  std::uint32_t orientation() const noexcept {
    for (auto marker = jpeg_.marker_list; marker; marker = marker->next) {
      const auto found = orientationOfEXIF({marker->data, marker->data_length});
      if (found != kOrientationUpright) return found;
    }
    return kOrientationUpright;
  }

  bool readHeader(ByteSpan file) {
    if (setjmp(errors_.target)) return false;
    jpeg_create_decompress(&jpeg_);
    jpeg_.progress = &progress_;
    progress_.progress_monitor = &onProgress;
    jpeg_mem_src(&jpeg_, file.data(), file.size());
    jpeg_save_markers(&jpeg_, kEXIFMarker, kLargestSegment);
    jpeg_read_header(&jpeg_, TRUE);
    switch (jpeg_.jpeg_color_space) {
      case JCS_GRAYSCALE:
      case JCS_YCbCr:
      case JCS_RGB:
        jpeg_.out_color_space = JCS_EXT_RGBA;
        return true;
      case JCS_CMYK:
      case JCS_YCCK:
        jpeg_.out_color_space = JCS_CMYK;
        return true;
      default:
        std::snprintf(errors_.message, sizeof errors_.message, "its colour space is unknown");
        errors_.code = StatusCode::unsupported;
        return false;
    }
  }

  bool start() {
    if (setjmp(errors_.target)) return false;
    jpeg_.dct_method = JDCT_ISLOW;  // exact, so a picture has one content key on every machine
    jpeg_start_decompress(&jpeg_);
    return true;
  }

  bool readRow(std::uint8_t* target) {
    if (setjmp(errors_.target)) return false;
    JSAMPROW row = target;
    jpeg_read_scanlines(&jpeg_, &row, 1);
    return true;
  }

  bool finish() {
    if (setjmp(errors_.target)) return false;
    jpeg_finish_decompress(&jpeg_);
    return true;
  }

 private:
  jpeg_decompress_struct jpeg_{};
  jpeg_progress_mgr progress_{};
  ErrorManager errors_{};
};

/// Inks to light, in place: four bytes a pixel on either side.
void convertCMYKRow(std::uint8_t* row, std::uint32_t width, bool inverted) noexcept {
  const std::uint32_t flip = inverted ? 0U : 255U;
  for (std::uint32_t x = 0; x < width; ++x, row += kBytesPerPixel) {
    const std::uint32_t black = row[3] ^ flip;
    for (int i = 0; i < 3; ++i) {
      row[i] = static_cast<std::uint8_t>(((row[i] ^ flip) * black + 127U) / 255U);
    }
    row[3] = 255;
  }
}

}  // namespace

bool isJPEG(ByteSpan file) noexcept {
  return file.size() >= 3 && file[0] == 0xFF && file[1] == 0xD8 && file[2] == 0xFF;
}

Result<Raster> readJPEG(ByteSpan file, const ImageLimits& limits) {
  Reader reader;
  const auto refuse = [&] { return reader.failure().within("the JPEG file cannot be read"); };
  if (!reader.readHeader(file)) return refuse();
  Raster raster{reader.width(), reader.height(), {}};
  const std::uint32_t orientation = reader.orientation();
  if (auto status = checkSize({raster.width, raster.height}, orientation, limits); !status) {
    return status;
  }
  if (!reader.start()) return refuse();
  const std::size_t stride = rowBytes(raster.width);
  // Grows with the rows that arrive, so that a header alone does not fill memory.
  raster.pixels.reserve(stride * raster.height);
  for (std::uint32_t y = 0; y < raster.height; ++y) {
    raster.pixels.resize(raster.pixels.size() + stride);
    std::uint8_t* const row = raster.pixels.data() + y * stride;
    if (!reader.readRow(row)) return refuse();
    if (reader.isCMYK()) convertCMYKRow(row, raster.width, reader.isInverted());
  }
  if (!reader.finish()) return refuse();
  return oriented(std::move(raster), orientation);
}

}  // namespace tarnkit::detail
