#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tarnkit/platform/images/ImageLimits.h"
#include "tarnkit/platform/objects/Data.h"
#include "tarnkit/platform/objects/Object.h"
#include "tarnkit/platform/text/String.h"

namespace tarnkit {

/// A picture: its pixels are 8-bit red, green, blue and straight alpha; samples of 16 bits are
/// rounded to 8, colour profiles are not applied. Owned by whoever shows it.
///
/// Immutable to the outside. Inside it holds its pixels until they are first asked for as PNG, and
/// from then on (as from the start, when it comes out of an archive) only the PNG, which is
/// unpacked anew for whoever asks: a pool of photographs costs their files, not their pixels. For
/// one thread.
///
/// Reasons are one line without a full stop; every `reason` may be null.
class Image final : public Object {
  TARNKIT_CLASS
 public:
  /// The empty picture that a decoder starts from.
  Image() = default;

  /// The picture in a PNG, TIFF or JPEG file, told apart by its first bytes, unpacked and checked
  /// to the end; turned and mirrored as a TIFF file or a camera's JPEG file says. Null, with the
  /// reason, when it is none of them, is damaged or cut off, or exceeds the limits.
  static Ref<Image> imageWithData(ByteSpan file, std::string* reason = nullptr,
                                  const ImageLimits& limits = {});
  /// The same of a file on disk; the reason then names the path.
  static Ref<Image> imageWithContentsOfFile(const String& path, std::string* reason = nullptr,
                                            const ImageLimits& limits = {});
  /// `pixels` hold four bytes a pixel, the top row first. Null, with the reason, when their number
  /// is another or the size exceeds the limits.
  static Ref<Image> imageWithPixels(std::uint32_t width, std::uint32_t height,
                                    std::vector<std::uint8_t> pixels,
                                    std::string* reason = nullptr);

  /// In pixels.
  std::uint32_t width() const noexcept { return width_; }
  std::uint32_t height() const noexcept { return height_; }

  /// The pixels, four bytes each, the top row first; not to be changed. Null, with the reason, when
  /// a picture out of an archive turns out to be damaged.
  Ref<const Data> pixels(std::string* reason = nullptr) const;
  /// The picture as a TIFF file, the same bytes for the same pixels, now and after a save and an
  /// opening: what content keys are made of. Not kept. Null as for `pixels`.
  Ref<const Data> TIFFRepresentation(std::string* reason = nullptr) const;
  /// The picture as a PNG file without metadata, made at most once; not to be changed. Null for the
  /// empty picture.
  Ref<const Data> PNGRepresentation(std::string* reason = nullptr) const;

  /// Equal when size and pixels are. A damaged picture equals only itself and copies of its file.
  bool isEqual(const Object& other) const override;
  std::uint64_t hash() const override;
  /// Class name and size.
  String description() const override;

  void encodeWithCoder(Encoder& coder) const override;
  /// Checks the file's structure and size; the pixels stay packed until they are asked for.
  void initWithCoder(Decoder& coder) override;

 private:
  Ref<const Data> unpackedPixels(std::string& reason) const;

  std::uint32_t width_ = 0;
  std::uint32_t height_ = 0;
  // One of the two, except in the empty picture.
  mutable Ref<Data> pixels_;
  mutable Ref<Data> png_;
  // What was unpacked last, as long as somebody uses it.
  mutable WeakRef<Data> unpacked_;
};

}  // namespace tarnkit
