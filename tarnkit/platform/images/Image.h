#pragma once

#include <cstdint>
#include <vector>

#include "tarnkit/platform/images/ImageLimits.h"
#include "tarnkit/platform/objects/Data.h"
#include "tarnkit/platform/objects/Object.h"
#include "tarnkit/platform/system/Result.h"
#include "tarnkit/platform/text/String.h"
#include "tarnkit/platform/text/Symbol.h"

namespace tarnkit {

/// A picture: its pixels are 8-bit red, green, blue and straight alpha; samples of 16 bits are
/// rounded to 8, colour profiles are not applied. Owned by whoever shows it.
///
/// Immutable to the outside. Inside it holds its pixels until they are first asked for as PNG, and
/// from then on (as from the start, when it comes out of an archive) only the PNG, which is
/// unpacked anew for whoever asks: a pool of photographs costs their files, not their pixels. For
/// one thread.
class Image final : public Object {
  TARNKIT_CLASS
 public:
  /// The empty picture that a decoder starts from.
  Image() = default;

  /// The picture in a PNG, TIFF or JPEG file, told apart by its first bytes, unpacked and checked
  /// to the end; turned and mirrored as a TIFF file or a camera's JPEG file says. A failure when it
  /// is none of them, is damaged or cut off, or exceeds the limits.
  static Result<Ref<Image>> imageWithData(ByteSpan file, const ImageLimits& limits = {});
  /// The same of a file on disk.
  static Result<Ref<Image>> imageWithContentsOfFile(const String& path,
                                                    const ImageLimits& limits = {});
  /// `pixels` hold four bytes a pixel, the top row first. A failure when their number is another or
  /// the size exceeds the limits.
  static Result<Ref<Image>> imageWithPixels(std::uint32_t width, std::uint32_t height,
                                            std::vector<std::uint8_t> pixels);

  /// In pixels.
  std::uint32_t width() const noexcept { return width_; }
  std::uint32_t height() const noexcept { return height_; }

  /// The pixels, four bytes each, the top row first; not to be changed. A failure when a
  /// picture out of an archive turns out to be damaged.
  Result<Ref<const Data>> pixels() const;
  /// The picture as a TIFF file, the same bytes for the same pixels, now and after a save and an
  /// opening: what content keys are made of. Not kept. Fails as `pixels` does.
  Result<Ref<const Data>> TIFFRepresentation() const;
  /// The picture as a PNG file without metadata, made at most once; not to be changed. A failure of
  /// the empty picture.
  Result<Ref<const Data>> PNGRepresentation() const;

  /// Equal when size and pixels are. A damaged picture equals only itself and copies of its file.
  bool isEqual(const Object& other) const override;
  std::uint64_t hash() const override;
  /// Class name and size.
  String description() const override;

  /// What the PNG stands under in an archive.
  static const Symbol kPNGKey;
  void encodeWithCoder(Encoder& coder) const override;
  /// Checks the file's structure and size; the pixels stay packed until they are asked for.
  void initWithCoder(Decoder& coder) override;

 private:
  Result<Ref<const Data>> unpackedPixels() const;

  std::uint32_t width_ = 0;
  std::uint32_t height_ = 0;
  // One of the two, except in the empty picture.
  mutable Ref<Data> pixels_;
  mutable Ref<Data> png_;
  // What was unpacked last, as long as somebody uses it.
  mutable WeakRef<Data> unpacked_;
};

}  // namespace tarnkit
