#include "tarnkit/model/HXImageStore.h"

#include <fmt/format.h>

#include <cassert>
#include <exception>
#include <new>

#include "tarnkit/archive/HXCoding.h"
#include "tarnkit/archive/HXKeyedArchiver.h"
#include "tarnkit/foundation/MD5.h"
#include "tarnkit/foundation/MapAdditions.h"
#include "tarnkit/model/HXDocument.h"
#include "tarnkit/model/HXEntryChange.h"
#include "tarnkit/model/HXModel.h"
#include "tarnkit/patches/HXArchivedKeys.h"
#include "tarnkit/platform/numbers/Number.h"
#include "tarnkit/platform/system/Log.h"

namespace tarnkit {

const Class HXImageStore::kClass{"HXImageStore", &Object::kClass,
                                 &detail::makeByDefault<HXImageStore>};

namespace {

namespace key = archived::imageStore;

constinit const Symbol kImageEntryCount{"HXImageStore.imageEntryCount"};

}  // namespace

HXImageStore::HXImageStore() { registerModelClasses(); }

struct HXImageStoreFields {
  struct Entry : detail::TableOf<HXImageStore, OrderedMap<Ref<HXImageStoreEntry>>> {
    static constexpr const char* kName = "imageEntry";
    static Collection& in(HXImageStore& store) { return store.entries_; }
    static void addNotices(HXImageStore& store, const String&, const Ref<HXImageStoreEntry>* entry,
                           bool came, HXChangeNotices& notices) {
      if (!entry || !*entry) return;
      using Order = HXChangeNotices::Order;
      notices.addMember(store, **entry, came, Order::newImage, Order::goneImage,
                        [&store, kept = *entry](bool here) {
                          if (here) {
                            store.imageStoreEntryWasAdded(*kept);
                          } else {
                            store.imageStoreEntryIsNoLongerReferenced(*kept);
                          }
                        });
    }
  };
  struct Count : detail::TableOf<HXImageStore, OrderedMap<std::int32_t>> {
    static constexpr const char* kName = "imageEntryCount";
    static Collection& in(HXImageStore& store) { return store.counts_; }
  };
};

Ref<HXImageStoreEntry> HXImageStore::createImageEntry(const Ref<Image>& image) {
  return entryWithImage(image).valueOr(nullptr);
}

Result<Ref<HXImageStoreEntry>> HXImageStore::entryWithImage(const Ref<Image>& image) {
  if (!image) return Status::failure(StatusCode::refused, "there is no image");
  auto tiff = image->TIFFRepresentation();
  if (!tiff) return std::move(tiff).status();
  return make<HXImageStoreEntry>(image, md5StringRepresentation(tiff->bytes()));
}

HXImageStoreEntry* HXImageStore::imageEntryForKey(const String& key) const {
  const auto* entry = key.isNil() ? nullptr : entries_.find(key);
  return entry ? entry->get() : nullptr;
}

std::int32_t HXImageStore::countForKey(const String& key) const {
  return key.isNil() ? 0 : counts_.get(key);
}

void HXImageStore::addImageEntry(const Ref<HXImageStoreEntry>& entry) {
  if (!entry || entry->key().isNil()) return;
  if (entry->image() && !HXImageStoreEntry::canBeWritten(*entry->image())) {
    Log::warning("HXImageStore", "Attempting to add an entry whose image is empty.");
    return;
  }
  const detail::RecordedOperation operation(*this);
  const std::int32_t count = counts_.get(entry->key());
  storeCount(entry->key(), count + 1);
  if (count != 0) return;
  insertEntry(entry);
  imageStoreEntryWasAdded(*entry);
}

void HXImageStore::removeImageEntry(const HXImageStoreEntry* entry) {
  if (!entry || entry->key().isNil()) return;
  const Ref<const HXImageStoreEntry> kept(entry);
  const detail::RecordedOperation operation(*this);
  const std::int32_t count = counts_.get(entry->key());
  storeCount(entry->key(), count - 1);
  if (count > 1) return;
  takeEntry(entry->key());
  imageStoreEntryIsNoLongerReferenced(*entry);
}

// An entry without a count has none.
void HXImageStore::storeCount(const String& key, std::int32_t count) {
  if (count <= 0 && !counts_.contains(key)) return;
  detail::willChangeEntry<HXImageStoreFields::Count>(*this, key);
  if (count > 0) {
    counts_.set(key, count);
  } else {
    counts_.take(key);
  }
}
void HXImageStore::insertEntry(const Ref<HXImageStoreEntry>& entry) {
  detail::willChangeEntry<HXImageStoreFields::Entry>(*this, entry->key());
  entries_.set(entry->key(), entry);
  assert(entries_.size() == counts_.size());
}
void HXImageStore::takeEntry(const String& key) {
  if (entries_.contains(key)) detail::willChangeEntry<HXImageStoreFields::Entry>(*this, key);
  entries_.take(key);
  assert(entries_.size() == counts_.size());
}

void HXImageStore::imageStoreEntryWasAdded(HXImageStoreEntry& entry) {
  detail::announce(HXImageStoreAddImageNotification, *this, *this, {{HXImageEntryInfo, &entry}});
}

void HXImageStore::imageStoreEntryIsNoLongerReferenced(const HXImageStoreEntry& entry) {
  detail::announce(HXImageStoreRemoveImageNotification, *this, *this,
                   {{HXImageEntryKeyInfo, entry.key().object().get()}});
}

std::vector<Ref<Data>> HXImageStore::dataRepresentationsOfAllEntries() const {
  std::vector<Ref<Data>> representations;
  for (const auto& entry : allValuesSortedByKey(entries_)) {
    auto data = dataRepresentationOfEntry(*entry);
    if (data) {
      representations.push_back(*std::move(data));
    } else {
      Log::warning("HXImageStore", fmt::format("Unable to code image entry to data: {}",
                                               entry->description().view()));
    }
  }
  return representations;
}

// An entry of a class of the host's may throw what it likes.
Result<Ref<Data>> HXImageStore::dataRepresentationOfEntry(const HXImageStoreEntry& entry) {
  try {
    return HXKeyedArchiver::dataWithRootObject(&entry, HXCodingTypeDevice);
  } catch (const std::bad_alloc&) {
    return Status::failure(StatusCode::outOfMemory, "there is not enough memory to write it");
  } catch (const std::exception& thrown) {
    return Status::failure(StatusCode::refused, thrown.what());
  }
}

void HXImageStore::setDocument(HXDocument* document) {
  const auto* present = this->document();
  if (document == present) return;
  if (present && present->imageStore() == this) {
    Log::warning("HXImageStore", "Attempting to take a store from the document that holds it.");
    return;
  }
  document_ = document;
}

String HXImageStore::documentKey() const {
  const auto* document = this->document();
  return document ? document->documentKey() : String();
}

// Deliberately without a test of the coding type: a store is the same in every vocabulary.
void HXImageStore::encodeWithCoder(Encoder& coder) const {
  coder.encodeMap(entries_, key::kImageEntries);
  std::vector<Ref<Number>> counts;
  counts.reserve(counts_.size());
  for (const auto& entry : counts_) counts.push_back(Number::withInt(entry.value));
  auto at = counts_.begin();
  coder.encodeMap(
      counts.size(),
      [&](std::size_t i) {
        return Encoder::MapEntry{(at++)->key, counts[i].get()};
      },
      kImageEntryCount);
}

// The counts are deliberately not read back: whoever opens a document counts anew.
void HXImageStore::initWithCoder(Decoder& coder) {
  coder.decodeEachEntry<HXImageStoreEntry>(key::kImageEntries,
                                           [&](const String&, const Ref<HXImageStoreEntry>& entry) {
                                             decodedEntries_.push_back(entry);
                                           });
}

void HXImageStore::awakeAfterDecoding(Decoder&) {
  std::size_t dropped = 0;
  for (const auto& entry : std::exchange(decodedEntries_, {})) {
    if (entry->key().isNil()) ++dropped;
    addImageEntry(entry);
  }
  if (dropped != 0) {
    Log::warning("HXImageStore", fmt::format("Dropping {} image entries without a key", dropped));
  }
}

}  // namespace tarnkit
