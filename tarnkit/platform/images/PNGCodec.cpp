#include "tarnkit/platform/images/PNGCodec.h"

#include <png.h>

#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <utility>

namespace tarnkit::detail {

namespace {

// Chunks that say nothing about the pixels as we read them; skipping them keeps their (compressed)
// contents from being unpacked.
constexpr png_byte kSkippedChunks[] =
    "bKGD\0cHRM\0eXIf\0gAMA\0hIST\0iCCP\0iTXt\0oFFs\0pCAL\0pHYs\0sBIT\0sCAL\0sPLT\0sRGB\0sTER\0"
    "tEXt\0tIME\0zTXt";
constexpr int kSkippedChunkCount = sizeof kSkippedChunks / 5;

constexpr int kCompressionLevel = 6;

// libpng reports errors by jumping out of its functions. The functions that it may jump out of hold
// nothing that needs a destructor: the file, the target and the message belong to their caller.
struct Context {
  char message[160] = "";
  ByteSpan input;
  std::vector<std::uint8_t>* output = nullptr;
};

[[noreturn]] void onError(png_structp png, png_const_charp message) {
  auto* const context = static_cast<Context*>(png_get_error_ptr(png));
  std::snprintf(context->message, sizeof context->message, "%s", message);
  png_longjmp(png, 1);
}

void onWarning(png_structp, png_const_charp) {}

void readBytes(png_structp png, png_bytep target, std::size_t count) {
  auto* const context = static_cast<Context*>(png_get_io_ptr(png));
  if (count > context->input.size()) png_error(png, "it is cut off");
  std::memcpy(target, context->input.data(), count);
  context->input = context->input.subspan(count);
}

void writeBytes(png_structp png, png_bytep bytes, std::size_t count) {
  auto* const context = static_cast<Context*>(png_get_io_ptr(png));
  try {
    context->output->insert(context->output->end(), bytes, bytes + count);
    return;
  } catch (...) {  // no exception may cross libpng
  }
  png_error(png, "there is not enough memory");
}

void flushNothing(png_structp) {}

class Reader {
 public:
  explicit Reader(ByteSpan file)
      : png_(png_create_read_struct(PNG_LIBPNG_VER_STRING, &context_, &onError, &onWarning)),
        info_(png_ ? png_create_info_struct(png_) : nullptr) {
    context_.input = file;
  }
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;
  ~Reader() { png_destroy_read_struct(&png_, &info_, nullptr); }

  const char* message() const noexcept {
    return info_ ? context_.message : "there is not enough memory";
  }

  bool readHeader(std::uint32_t width) {
    if (!info_) return false;
    if (setjmp(png_jmpbuf(png_))) return false;
    png_set_read_fn(png_, &context_, &readBytes);
    png_set_user_limits(png_, ImageLimits::kMaximumWidth, ImageLimits::kMaximumHeight);
    png_set_keep_unknown_chunks(png_, PNG_HANDLE_CHUNK_NEVER, nullptr, 0);
    png_set_keep_unknown_chunks(png_, PNG_HANDLE_CHUNK_NEVER, kSkippedChunks, kSkippedChunkCount);
    png_read_info(png_, info_);
    png_set_expand(png_);
    png_set_scale_16(png_);
    png_set_gray_to_rgb(png_);
    png_set_add_alpha(png_, 0xFF, PNG_FILLER_AFTER);
    passes_ = png_set_interlace_handling(png_);
    png_read_update_info(png_, info_);
    if (png_get_rowbytes(png_, info_) != rowBytes(width)) png_error(png_, "unknown pixel format");
    return true;
  }

  bool readPixels(std::uint8_t* target, std::uint32_t width, std::uint32_t height) {
    if (setjmp(png_jmpbuf(png_))) return false;
    for (int pass = 0; pass < passes_; ++pass) {
      for (std::uint32_t row = 0; row < height; ++row) {
        png_read_row(png_, target + row * rowBytes(width), nullptr);
      }
    }
    png_read_end(png_, nullptr);
    return true;
  }

 private:
  Context context_;
  png_structp png_;
  png_infop info_;
  int passes_ = 0;
};

class Writer {
 public:
  explicit Writer(std::vector<std::uint8_t>& output)
      : png_(png_create_write_struct(PNG_LIBPNG_VER_STRING, &context_, &onError, &onWarning)),
        info_(png_ ? png_create_info_struct(png_) : nullptr) {
    context_.output = &output;
  }
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;
  ~Writer() { png_destroy_write_struct(&png_, &info_); }

  const char* message() const noexcept {
    return info_ ? context_.message : "there is not enough memory";
  }

  bool write(const RasterView& raster, bool opaque) {
    if (!info_) return false;
    if (setjmp(png_jmpbuf(png_))) return false;
    png_set_write_fn(png_, &context_, &writeBytes, &flushNothing);
    png_set_user_limits(png_, ImageLimits::kMaximumWidth, ImageLimits::kMaximumHeight);
    png_set_compression_level(png_, kCompressionLevel);
    png_set_IHDR(png_, info_, raster.width, raster.height, 8,
                 opaque ? PNG_COLOR_TYPE_RGB : PNG_COLOR_TYPE_RGBA, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png_, info_);
    if (opaque) png_set_filler(png_, 0, PNG_FILLER_AFTER);
    for (std::uint32_t row = 0; row < raster.height; ++row) {
      png_write_row(png_, raster.pixels.data() + row * rowBytes(raster.width));
    }
    png_write_end(png_, info_);
    return true;
  }

 private:
  Context context_;
  png_structp png_;
  png_infop info_;
};

bool isOpaque(ByteSpan pixels) noexcept {
  for (std::size_t at = 3; at < pixels.size(); at += kBytesPerPixel) {
    if (pixels[at] != 0xFF) return false;
  }
  return true;
}

}  // namespace

Result<Raster> readPNG(ByteSpan file, const ImageLimits& limits) {
  auto size = checkPNG(file, limits);
  if (!size) return std::move(size).status();
  Raster raster{size->width, size->height, {}};
  Reader reader(file);
  if (reader.readHeader(raster.width)) {
    raster.pixels.resize(rowBytes(raster.width) * raster.height);
    if (reader.readPixels(raster.pixels.data(), raster.width, raster.height)) return raster;
  }
  return Status::damaged(reader.message()).within("the PNG file is damaged");
}

// A picture that may be made can be written as long as there is memory.
Result<std::vector<std::uint8_t>> writePNG(const RasterView& raster) {
  std::vector<std::uint8_t> file;
  Writer writer(file);
  if (writer.write(raster, isOpaque(raster.pixels))) return file;
  return Status::failure(StatusCode::outOfMemory, writer.message())
      .within("the picture cannot be written as PNG");
}

}  // namespace tarnkit::detail
