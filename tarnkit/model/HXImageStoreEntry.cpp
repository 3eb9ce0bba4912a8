#include "tarnkit/model/HXImageStoreEntry.h"

#include "tarnkit/archive/HXCoding.h"
#include "tarnkit/patches/HXArchivedKeys.h"

namespace tarnkit {

const Class HXImageStoreEntry::kClass{
    "HXImageStoreEntry", &Object::kClass,
    [](const Class&) -> Ref<Object> { return make<HXImageStoreEntry>(nullptr, String()); }};

namespace {

namespace key = archived::imageStoreEntry;

constinit const Symbol kDeviceClass{"PMImageStoreEntry"};
constinit const Symbol kDeviceImageData{"PMImageStoreEntry.imageData"};
constinit const Symbol kDeviceKey{"PMImageStoreEntry.key"};

}  // namespace

HXImageStoreEntry::HXImageStoreEntry(Ref<Image> image, String key)
    : image_(std::move(image)), key_(std::move(key)) {}

void HXImageStoreEntry::encodeWithCoder(Encoder& coder) const {
  if (isEditorCodingType(coder.codingType())) {
    // A picture without pixels has no file, and could not be read again.
    if (image_ && canBeWritten(*image_)) coder.encodeObject(image_, key::kImage);
    coder.encodeString(key_, key::kKey);
  } else if (coder.codingType() == HXCodingTypeDevice) {
    coder.setClassName(kDeviceClass, isa());
    if (image_ && canBeWritten(*image_)) {
      const auto png = image_->PNGRepresentation();
      if (!png) throw std::bad_alloc();  // nothing else is in the way of a picture with pixels
      coder.encodeObject(*png, kDeviceImageData);
    }
    coder.encodeString(key_, kDeviceKey);
  }
}

void HXImageStoreEntry::initWithCoder(Decoder& coder) {
  image_ = coder.decode<Image>(key::kImage);
  key_ = coder.decodeString(key::kKey);
}

}  // namespace tarnkit
