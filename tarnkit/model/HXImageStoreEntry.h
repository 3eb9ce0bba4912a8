#pragma once

#include <string_view>

#include "tarnkit/platform/coding/Coder.h"
#include "tarnkit/platform/images/Image.h"
#include "tarnkit/platform/objects/Object.h"
#include "tarnkit/platform/text/String.h"

namespace tarnkit {

/// One image of a document's pool: the picture and its content key. Immutable; owned by the store
/// and by the image parameters that show it.
class HXImageStoreEntry final : public Object {
  TARNKIT_CLASS
 public:
  /// Keeps both as given.
  HXImageStoreEntry(Ref<Image> image, String key);

  const Ref<Image>& image() const noexcept { return image_; }
  /// The lowercase hexadecimal MD5 digest of the image's TIFF representation, 32 characters.
  const String& key() const noexcept { return key_; }

  /// Whether there is anything in the picture that a file could hold.
  static bool canBeWritten(const Image& image) noexcept {
    return image.width() != 0 && image.height() != 0;
  }

  /// The most bytes of a key that names a file: with room for an ending.
  static constexpr std::size_t kMostFileNameBytes = 200;
  /// Whether a file can have the key as its name, as on the device; a document from elsewhere may
  /// hold any key.
  static bool canNameFile(const String& key) noexcept {
    const auto text = key.view();
    return !text.empty() && text.size() <= kMostFileNameBytes &&
           text.find('/') == std::string_view::npos && text.find('\0') == std::string_view::npos;
  }

  /// In the device's vocabulary the image is PNG data. An empty picture is written as none.
  void encodeWithCoder(Encoder& coder) const override;
  void initWithCoder(Decoder& coder) override;

 private:
  Ref<Image> image_;
  String key_;
};

}  // namespace tarnkit
