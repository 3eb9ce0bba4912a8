#include "tarnkit/platform/images/TIFFCodec.h"

#include <tiffio.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <utility>

#include "tarnkit/platform/images/Orientation.h"

namespace tarnkit::detail {

namespace {

/// The file as libtiff sees it, and the first error that it met.
struct Context {
  ByteSpan file;
  std::uint64_t position = 0;
  char message[200] = "";
};

Context* contextOf(thandle_t handle) { return static_cast<Context*>(handle); }

tmsize_t readBytes(thandle_t handle, void* target, tmsize_t count) {
  auto* const context = contextOf(handle);
  if (count <= 0 || context->position >= context->file.size()) return 0;
  const auto size = std::min<std::uint64_t>(static_cast<std::uint64_t>(count),
                                            context->file.size() - context->position);
  std::memcpy(target, context->file.data() + context->position, size);
  context->position += size;
  return static_cast<tmsize_t>(size);
}

tmsize_t writeNothing(thandle_t, void*, tmsize_t) { return 0; }

toff_t seek(thandle_t handle, toff_t offset, int whence) {
  auto* const context = contextOf(handle);
  if (whence == SEEK_CUR) offset += context->position;
  if (whence == SEEK_END) offset += context->file.size();
  context->position = offset;
  return offset;
}

toff_t sizeOf(thandle_t handle) { return contextOf(handle)->file.size(); }
int closeNothing(thandle_t) { return 0; }

int map(thandle_t handle, void** base, toff_t* size) {
  auto* const context = contextOf(handle);
  *base = const_cast<std::uint8_t*>(context->file.data());  // opened for reading, never written
  *size = context->file.size();
  return 1;
}
void unmapNothing(thandle_t, void*, toff_t) {}

int onError(TIFF*, void* userData, const char*, const char* format, va_list arguments) {
  auto* const context = static_cast<Context*>(userData);
  if (context->message[0] == '\0') {
    std::vsnprintf(context->message, sizeof context->message, format, arguments);
  }
  return 1;
}

int onWarning(TIFF*, void*, const char*, const char*, va_list) { return 1; }

class Reader {
 public:
  explicit Reader(ByteSpan file, const ImageLimits& limits) {
    context_.file = file;
    TIFFOpenOptions* const options = TIFFOpenOptionsAlloc();
    if (!options) return;
    // Twice the pixels: rows of 16-bit samples are the widest thing that is ever unpacked at once.
    TIFFOpenOptionsSetMaxSingleMemAlloc(
        options, static_cast<tmsize_t>(std::max<std::uint64_t>(limits.pixels * kBytesPerPixel * 2,
                                                               std::uint64_t{1} << 20)));
    TIFFOpenOptionsSetErrorHandlerExtR(options, &onError, &context_);
    TIFFOpenOptionsSetWarningHandlerExtR(options, &onWarning, &context_);
    tiff_ = TIFFClientOpenExt("picture", "r", &context_, &readBytes, &writeNothing, &seek,
                              &closeNothing, &sizeOf, &map, &unmapNothing, options);
    TIFFOpenOptionsFree(options);
  }
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;
  ~Reader() {
    if (tiff_) TIFFClose(tiff_);
  }

  TIFF* get() const noexcept { return tiff_; }
  const char* message() const noexcept {
    return context_.message[0] ? context_.message : "it cannot be unpacked";
  }

 private:
  Context context_;
  TIFF* tiff_ = nullptr;
};

// The others are rare, and their decoders are libraries of their own that would meet untrusted
// data.
bool isCompressionKnown(std::uint16_t compression) noexcept {
  switch (compression) {
    case COMPRESSION_NONE:
    case COMPRESSION_CCITTRLE:
    case COMPRESSION_CCITTFAX3:
    case COMPRESSION_CCITTFAX4:
    case COMPRESSION_LZW:
    case COMPRESSION_JPEG:
    case COMPRESSION_PACKBITS:
    case COMPRESSION_ADOBE_DEFLATE:
    case COMPRESSION_DEFLATE:
      return true;
    default:
      return false;
  }
}

enum class Alpha { none, straight, premultiplied };

/// What the fourth sample is. libtiff would multiply straight alpha into the colours, which cannot
/// be undone, so it is told that this has been done already.
Alpha prepareAlpha(TIFF* tiff) {
  std::uint16_t count = 0;
  std::uint16_t* kinds = nullptr;
  if (!TIFFGetField(tiff, TIFFTAG_EXTRASAMPLES, &count, &kinds) || count == 0) return Alpha::none;
  if (kinds[0] == EXTRASAMPLE_ASSOCALPHA) return Alpha::premultiplied;
  if (kinds[0] != EXTRASAMPLE_UNASSALPHA) return Alpha::none;
  std::vector<std::uint16_t> changed(kinds, kinds + count);
  changed[0] = EXTRASAMPLE_ASSOCALPHA;
  TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, count, changed.data());
  return Alpha::straight;
}

bool isAlpha(std::uint16_t kind) noexcept {
  return kind == EXTRASAMPLE_ASSOCALPHA || kind == EXTRASAMPLE_UNASSALPHA;
}

/// Whether libtiff gives the samples that stand beside the colours, or passes over them without a
/// word; where it takes planes of inverted grey for grey it is wrong altogether.
bool areExtraSamplesRead(TIFF* tiff) {
  std::uint16_t count = 0;
  std::uint16_t* kinds = nullptr;
  if (!TIFFGetField(tiff, TIFFTAG_EXTRASAMPLES, &count, &kinds) || count == 0) return true;
  std::uint16_t photometric = 0;
  std::uint16_t depth = 0;
  std::uint16_t layout = 0;
  TIFFGetField(tiff, TIFFTAG_PHOTOMETRIC, &photometric);
  TIFFGetFieldDefaulted(tiff, TIFFTAG_BITSPERSAMPLE, &depth);
  TIFFGetFieldDefaulted(tiff, TIFFTAG_PLANARCONFIG, &layout);
  const bool inPlanes = layout == PLANARCONFIG_SEPARATE;
  if (inPlanes && photometric == PHOTOMETRIC_MINISWHITE) return false;
  if (std::any_of(kinds + 1, kinds + count, isAlpha)) return false;
  if (!isAlpha(kinds[0])) return true;
  switch (photometric) {
    case PHOTOMETRIC_RGB:
      return true;
    case PHOTOMETRIC_MINISBLACK:
      return inPlanes || depth == 8;
    case PHOTOMETRIC_MINISWHITE:
      return depth == 8;
    default:
      return false;
  }
}

/// libtiff mirrors pictures and does not turn them, so it is told that there is nothing to do.
std::uint32_t takeOrientation(TIFF* tiff) {
  std::uint16_t orientation = ORIENTATION_TOPLEFT;
  TIFFGetFieldDefaulted(tiff, TIFFTAG_ORIENTATION, &orientation);
  TIFFSetField(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
  return orientation;
}

std::uint8_t divided(std::uint32_t color, std::uint32_t alpha) noexcept {
  return static_cast<std::uint8_t>(std::min(255U, (color * 255U + alpha / 2U) / alpha));
}

/// libtiff packs a pixel into one integer; rewrites it as four bytes in our order.
void unpackPixels(std::vector<std::uint8_t>& pixels, Alpha alpha) {
  for (std::size_t at = 0; at < pixels.size(); at += kBytesPerPixel) {
    std::uint8_t* const bytes = pixels.data() + at;
    std::uint32_t packed = 0;
    std::memcpy(&packed, bytes, sizeof packed);
    const std::uint32_t color[3] = {TIFFGetR(packed), TIFFGetG(packed), TIFFGetB(packed)};
    const std::uint32_t opacity = alpha == Alpha::none ? 255U : TIFFGetA(packed);
    const bool divides = alpha == Alpha::premultiplied && opacity != 0;
    for (int i = 0; i < 3; ++i) {
      bytes[i] = divides ? divided(color[i], opacity) : static_cast<std::uint8_t>(color[i]);
    }
    bytes[3] = static_cast<std::uint8_t>(opacity);
  }
}

}  // namespace

bool isTIFF(ByteSpan file) noexcept {
  if (file.size() < 4) return false;
  const bool little = file[0] == 'I' && file[1] == 'I' && file[3] == 0;
  const bool big = file[0] == 'M' && file[1] == 'M' && file[2] == 0;
  const auto magic = little ? file[2] : file[3];
  return (little || big) && (magic == TIFF_VERSION_CLASSIC || magic == TIFF_VERSION_BIG);
}

Result<Raster> readTIFF(ByteSpan file, const ImageLimits& limits) {
  Reader reader(file, limits);
  TIFF* const tiff = reader.get();
  const auto refuse = [](StatusCode code, const char* why) {
    return Status::failure(code, why).within("the TIFF file cannot be read");
  };
  if (!tiff) return refuse(StatusCode::damaged, reader.message());
  Raster raster;
  if (!TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &raster.width) ||
      !TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &raster.height)) {
    return refuse(StatusCode::damaged, "it does not tell its size");
  }
  const std::uint32_t orientation = takeOrientation(tiff);
  if (auto status = checkSize({raster.width, raster.height}, orientation, limits); !status) {
    return status;
  }
  std::uint16_t compression = COMPRESSION_NONE;
  TIFFGetFieldDefaulted(tiff, TIFFTAG_COMPRESSION, &compression);
  if (!isCompressionKnown(compression)) {
    return refuse(StatusCode::unsupported, "its compression is not supported");
  }
  char why[1024] = "";
  if (!TIFFRGBAImageOK(tiff, why)) return refuse(StatusCode::unsupported, why);
  if (!areExtraSamplesRead(tiff)) {
    return refuse(StatusCode::unsupported, "its alpha is of a kind that is not supported");
  }
  const Alpha alpha = prepareAlpha(tiff);
  raster.pixels.resize(rowBytes(raster.width) * raster.height);
  if (!TIFFReadRGBAImageOriented(tiff, raster.width, raster.height,
                                 reinterpret_cast<std::uint32_t*>(raster.pixels.data()),
                                 ORIENTATION_TOPLEFT, 1)) {
    return refuse(StatusCode::damaged, reader.message());
  }
  unpackPixels(raster.pixels, alpha);
  return oriented(std::move(raster), orientation);
}

}  // namespace tarnkit::detail
