#include "tarnkit/platform/images/Image.h"

#include <fmt/format.h>

#include <new>
#include <optional>
#include <utility>

#include "tarnkit/platform/coding/Coder.h"
#include "tarnkit/platform/images/JPEGCodec.h"
#include "tarnkit/platform/images/PNGCodec.h"
#include "tarnkit/platform/images/Raster.h"
#include "tarnkit/platform/images/TIFFCodec.h"
#include "tarnkit/platform/system/File.h"

namespace tarnkit {

const Class Image::kClass{"NSImage", &Object::kClass, &detail::makeByDefault<Image>};

namespace {

constinit const Symbol kPNGKey{"NSImage.png"};

constexpr const char* kOutOfMemory = "there is not enough memory";

void tell(std::string* reason, std::string text) {
  if (reason) *reason = std::move(text);
}

std::optional<detail::Raster> read(ByteSpan file, const ImageLimits& limits, std::string& reason) {
  if (file.size() > limits.inputBytes) {
    reason =
        fmt::format("the file is too large ({} bytes, at most {})", file.size(), limits.inputBytes);
    return std::nullopt;
  }
  if (detail::isPNG(file)) return detail::readPNG(file, limits, reason);
  if (detail::isTIFF(file)) return detail::readTIFF(file, limits, reason);
  if (detail::isJPEG(file)) return detail::readJPEG(file, limits, reason);
  reason = file.empty() ? "the file is empty" : "this is no PNG, TIFF or JPEG file";
  return std::nullopt;
}

}  // namespace

Ref<Image> Image::imageWithData(ByteSpan file, std::string* reason, const ImageLimits& limits) {
  std::string why;
  try {
    if (auto raster = read(file, limits, why)) {
      auto image = make<Image>();
      image->width_ = raster->width;
      image->height_ = raster->height;
      image->pixels_ = make<Data>(std::move(raster->pixels));
      return image;
    }
  } catch (const std::bad_alloc&) {
    why = kOutOfMemory;
  }
  tell(reason, std::move(why));
  return nullptr;
}

Ref<Image> Image::imageWithContentsOfFile(const String& path, std::string* reason,
                                          const ImageLimits& limits) {
  std::vector<std::uint8_t> file;
  if (!File::read(path.toStdString(), file, reason, limits.inputBytes)) return nullptr;
  std::string why;
  auto image = imageWithData(file, &why, limits);
  if (!image) tell(reason, fmt::format("{}: {}", path.view(), why));
  return image;
}

Ref<Image> Image::imageWithPixels(std::uint32_t width, std::uint32_t height,
                                  std::vector<std::uint8_t> pixels, std::string* reason) {
  std::string why;
  if (!detail::isSizeAllowed(width, height, {}, why)) {
    tell(reason, std::move(why));
    return nullptr;
  }
  if (pixels.size() != detail::rowBytes(width) * height) {
    tell(reason, fmt::format("{} bytes are no {} x {} pixels", pixels.size(), width, height));
    return nullptr;
  }
  auto image = make<Image>();
  image->width_ = width;
  image->height_ = height;
  image->pixels_ = make<Data>(std::move(pixels));
  return image;
}

Ref<const Data> Image::unpackedPixels(std::string& reason) const {
  if (auto unpacked = unpacked_.lock()) return unpacked;
  if (!png_) {
    reason = "the picture is empty";
    return nullptr;
  }
  auto raster = detail::readPNG(png_->bytes(), {}, reason);
  if (!raster) return nullptr;
  auto unpacked = make<Data>(std::move(raster->pixels));
  unpacked_ = unpacked.get();
  return unpacked;
}

Ref<const Data> Image::pixels(std::string* reason) const {
  if (pixels_) return pixels_;
  std::string why;
  try {
    if (auto unpacked = unpackedPixels(why)) return unpacked;
  } catch (const std::bad_alloc&) {
    why = kOutOfMemory;
  }
  tell(reason, std::move(why));
  return nullptr;
}

Ref<const Data> Image::TIFFRepresentation(std::string* reason) const {
  const auto unpacked = pixels(reason);
  if (!unpacked) return nullptr;
  try {
    return make<Data>(detail::writeTIFF({width_, height_, unpacked->bytes()}));
  } catch (const std::bad_alloc&) {
    tell(reason, kOutOfMemory);
    return nullptr;
  }
}

Ref<const Data> Image::PNGRepresentation(std::string* reason) const {
  if (png_) return png_;
  const auto unpacked = pixels(reason);
  if (!unpacked) return nullptr;
  std::string why;
  auto file = detail::writePNG({width_, height_, unpacked->bytes()}, why);
  if (file.empty()) {
    tell(reason, std::move(why));
    return nullptr;
  }
  file.shrink_to_fit();
  png_ = make<Data>(std::move(file));
  unpacked_ = std::exchange(pixels_, nullptr).get();
  return png_;
}

bool Image::isEqual(const Object& other) const {
  if (this == &other) return true;
  const auto* const image = as<Image>(&other);
  if (!image || image->width_ != width_ || image->height_ != height_) return false;
  if (png_ && image->png_ && png_->isEqual(*image->png_)) return true;
  const auto mine = pixels();
  const auto others = image->pixels();
  return mine && others && mine->isEqual(*others);
}

// The pixels may be packed, so they have no part in it.
std::uint64_t Image::hash() const { return (std::uint64_t{width_} << 32) | height_; }

String Image::description() const {
  return String(fmt::format("<{}: {} x {}>", isa().name(), width_, height_));
}

void Image::encodeWithCoder(Encoder& coder) const {
  if (const auto png = PNGRepresentation()) coder.encodeBytes(png->bytes(), kPNGKey);
}

void Image::initWithCoder(Decoder& coder) {
  auto file = coder.decodeBytes(kPNGKey);
  detail::Raster size;
  std::string reason;
  if (!detail::checkPNG(file, {}, size, reason)) {
    coder.fail(fmt::format("{}: {}", kPNGKey.text(), reason));
    return;
  }
  width_ = size.width;
  height_ = size.height;
  png_ = make<Data>(std::move(file));
}

}  // namespace tarnkit
