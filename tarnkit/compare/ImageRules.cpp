#include <fmt/format.h>

#include "tarnkit/compare/CheckRules.h"
#include "tarnkit/compare/HXAddresses.h"
#include "tarnkit/model/HXParameterKinds.h"

namespace tarnkit::detail {

namespace {

using Code = HXFindingCode;

// What many devices can hold as one texture.
constexpr std::uint32_t kLargestSide = 4096;

HXImageParameter* imageParameter(HXParameter& parameter) {
  const auto kind = parameter.kind();
  const auto* image = std::get_if<HXImageParameter*>(&kind);
  return image ? *image : nullptr;
}

// The name of an image patch is the key of its parameter; debugging patches may have none.
void findUnchosen(CheckReport& report, HXParameter& parameter) {
  const auto* image = imageParameter(parameter);
  if (!image || image->imageEntry() || !image->patchParameter()) return;
  report.add(Code::imageUnchosen, parameter, "no image is chosen");
}

void findAbsent(CheckReport& report, HXParameter& parameter) {
  const auto* image = imageParameter(parameter);
  const HXImageStoreEntry* entry = image ? image->imageEntry() : nullptr;
  if (!entry) return;
  if (report.document().imageStore()->imageEntryForKey(entry->key())) return;
  report.add(Code::imageAbsent, parameter,
             fmt::format("the image {} is not in the document, and does not reach the device",
                         HXAddresses::escaped(entry->key().view())));
}

void findUnused(CheckReport& report, HXImageStoreEntry& entry) {
  if (report.imagesInUse().contains(entry.key().view())) return;
  report.add(Code::imageUnused, entry, "no node shows the image");
}

bool hasPicture(const HXImageStoreEntry& entry) {
  return entry.image() && HXImageStoreEntry::canBeWritten(*entry.image());
}

void findEmpty(CheckReport& report, HXImageStoreEntry& entry) {
  if (hasPicture(entry)) return;
  report.add(Code::imageEmpty, entry, "the image has no picture", "choose the image again");
}

void findLarge(CheckReport& report, HXImageStoreEntry& entry) {
  if (!hasPicture(entry)) return;
  const auto width = entry.image()->width(), height = entry.image()->height();
  if (width <= kLargestSide && height <= kLargestSide) return;
  report.add(Code::imageLarge, entry, fmt::format("the image has {} by {} pixels", width, height),
             fmt::format("{} pixels on a side are enough", kLargestSide));
}

void findKey(CheckReport& report, HXImageStoreEntry& entry) {
  if (HXImageStoreEntry::canNameFile(entry.key())) return;
  report.add(Code::imageKey, entry,
             "the key cannot name a file, so no image of the document can be sent");
}

constexpr CheckRule<HXParameter> kParameters[] = {
    {Code::imageUnchosen, findUnchosen},
    {Code::imageAbsent, findAbsent},
};
constexpr CheckRule<HXImageStoreEntry> kImages[] = {
    {Code::imageUnused, findUnused},
    {Code::imageEmpty, findEmpty},
    {Code::imageLarge, findLarge},
    {Code::imageKey, findKey},
};

}  // namespace

constinit const CheckRules kImageRules{.parameters = kParameters, .images = kImages};

}  // namespace tarnkit::detail
