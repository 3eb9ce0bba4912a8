#include "tarnkit/platform/images/Image.h"

#include <fmt/format.h>

#include <new>
#include <utility>

#include "tarnkit/platform/coding/Coder.h"
#include "tarnkit/platform/images/JPEGCodec.h"
#include "tarnkit/platform/images/PNGCodec.h"
#include "tarnkit/platform/images/Raster.h"
#include "tarnkit/platform/images/TIFFCodec.h"
#include "tarnkit/platform/system/File.h"

namespace tarnkit {

const Class Image::kClass{"NSImage", &Object::kClass, &detail::makeByDefault<Image>};
constinit const Symbol Image::kPNGKey{"NSImage.png"};

namespace {

Status outOfMemory() {
  return Status::failure(StatusCode::outOfMemory, "there is not enough memory");
}

Result<detail::Raster> read(ByteSpan file, const ImageLimits& limits) {
  if (file.size() > limits.inputBytes) {
    return Status::failure(StatusCode::tooLarge,
                           fmt::format("the file is too large ({} bytes, at most {})", file.size(),
                                       limits.inputBytes));
  }
  if (detail::isPNG(file)) return detail::readPNG(file, limits);
  if (detail::isTIFF(file)) return detail::readTIFF(file, limits);
  if (detail::isJPEG(file)) return detail::readJPEG(file, limits);
  if (file.empty()) return Status::damaged("the file is empty");
  return Status::failure(StatusCode::unsupported, "this is no PNG, TIFF or JPEG file");
}

}  // namespace

Result<Ref<Image>> Image::imageWithData(ByteSpan file, const ImageLimits& limits) {
  try {
    auto raster = read(file, limits);
    if (!raster) return std::move(raster).status();
    auto image = make<Image>();
    image->width_ = raster->width;
    image->height_ = raster->height;
    image->pixels_ = make<Data>(std::move(raster->pixels));
    return image;
  } catch (const std::bad_alloc&) {
    return outOfMemory();
  }
}

Result<Ref<Image>> Image::imageWithContentsOfFile(const String& path, const ImageLimits& limits) {
  auto file = File::read(path.toStdString(), limits.inputBytes);
  if (!file) return std::move(file).status();
  return imageWithData(*file, limits).at(path.view());
}

Result<Ref<Image>> Image::imageWithPixels(std::uint32_t width, std::uint32_t height,
                                          std::vector<std::uint8_t> pixels) {
  if (auto status = detail::checkSize(width, height, {}); !status) return status;
  if (pixels.size() != detail::rowBytes(width) * height) {
    return Status::failure(StatusCode::refused, fmt::format("{} bytes are no {} x {} pixels",
                                                            pixels.size(), width, height));
  }
  auto image = make<Image>();
  image->width_ = width;
  image->height_ = height;
  image->pixels_ = make<Data>(std::move(pixels));
  return image;
}

Result<Ref<const Data>> Image::unpackedPixels() const {
  if (auto unpacked = unpacked_.lock()) return Ref<const Data>(unpacked);
  if (!png_) return Status::failure(StatusCode::refused, "the picture is empty");
  auto raster = detail::readPNG(png_->bytes(), {});
  if (!raster) return std::move(raster).status();
  auto unpacked = make<Data>(std::move(raster->pixels));
  unpacked_ = unpacked.get();
  return Ref<const Data>(unpacked);
}

Result<Ref<const Data>> Image::pixels() const {
  if (pixels_) return Ref<const Data>(pixels_);
  try {
    return unpackedPixels();
  } catch (const std::bad_alloc&) {
    return outOfMemory();
  }
}

Result<Ref<const Data>> Image::TIFFRepresentation() const {
  auto unpacked = pixels();
  if (!unpacked) return unpacked;
  try {
    return Ref<const Data>(make<Data>(detail::writeTIFF({width_, height_, unpacked->bytes()})));
  } catch (const std::bad_alloc&) {
    return outOfMemory();
  }
}

Result<Ref<const Data>> Image::PNGRepresentation() const {
  if (png_) return Ref<const Data>(png_);
  auto unpacked = pixels();
  if (!unpacked) return unpacked;
  auto file = detail::writePNG({width_, height_, unpacked->bytes()});
  if (!file) return std::move(file).status();
  file->shrink_to_fit();
  png_ = make<Data>(*std::move(file));
  unpacked_ = std::exchange(pixels_, nullptr).get();
  return Ref<const Data>(png_);
}

bool Image::isEqual(const Object& other) const {
  if (this == &other) return true;
  const auto* const image = as<Image>(&other);
  if (!image || image->width_ != width_ || image->height_ != height_) return false;
  if (png_ && image->png_ && png_->isEqual(*image->png_)) return true;
  const auto mine = pixels();
  const auto others = image->pixels();
  return mine && others && mine->isEqual(**others);
}

// The pixels may be packed, so they have no part in it.
std::uint64_t Image::hash() const { return (std::uint64_t{width_} << 32) | height_; }

String Image::description() const {
  return String(fmt::format("<{}: {} x {}>", isa().name(), width_, height_));
}

void Image::encodeWithCoder(Encoder& coder) const {
  if (width_ == 0) return;
  const auto png = PNGRepresentation();
  if (!png) throw std::bad_alloc();  // nothing else is in the way of a picture that is not empty
  coder.encodeBytes(png->bytes(), kPNGKey);
}

void Image::initWithCoder(Decoder& coder) {
  auto file = coder.decodeBytes(kPNGKey);
  auto size = detail::checkPNG(file, {});
  if (!size) return coder.fail(std::move(size).status().within(kPNGKey.text()));
  width_ = size->width;
  height_ = size->height;
  png_ = make<Data>(std::move(file));
}

}  // namespace tarnkit
