#pragma once

#include <vector>

#include "tarnkit/model/HXImageStoreEntry.h"
#include "tarnkit/model/HXNotifications.h"
#include "tarnkit/platform/collections/OrderedMap.h"
#include "tarnkit/platform/objects/Data.h"
#include "tarnkit/platform/system/Result.h"

namespace tarnkit {

class HXDocument;

/// Posted by the store with "ImageEntry".
inline constinit const Symbol HXImageStoreAddImageNotification{"HXImageStoreAddImageNotification"};
/// Posted by the store with "ImageEntryKey"; the entry itself is not sent.
inline constinit const Symbol HXImageStoreRemoveImageNotification{
    "HXImageStoreRemoveImageNotification"};

/// The document's pool of images: each picture once, under its content key, with a count of how
/// often it was added. Owned by its document. For one thread; adding and removing cost one look-up.
class HXImageStore final : public Object {
  TARNKIT_CLASS
 public:
  HXImageStore();

  /// An entry with the image's content key, not in any store; null for a null or damaged image.
  static Ref<HXImageStoreEntry> createImageEntry(const Ref<Image>& image);
  /// The same, telling why there is none.
  static Result<Ref<HXImageStoreEntry>> entryWithImage(const Ref<Image>& image);

  /// Key to entry (the first one added under the key), as a copy of the caller's own.
  OrderedMap<Ref<HXImageStoreEntry>> imageEntries() const { return entries_; }
  /// The same, for reading by who adds and removes nothing meanwhile.
  const OrderedMap<Ref<HXImageStoreEntry>>& imageEntriesInForce() const noexcept {
    return entries_;
  }
  HXImageStoreEntry* imageEntryForKey(const String& key) const;
  /// How often the key was added and not yet removed; 0 for an unknown one.
  std::int32_t countForKey(const String& key) const;
  /// Counts the entry; the first of its key is stored and announced. One without a key is ignored;
  /// one whose picture is empty is refused with one line logged, since no file could hold it.
  void addImageEntry(const Ref<HXImageStoreEntry>& entry);
  /// Counts the entry down; the last one leaves the store, which is announced, deliberately also
  /// for a key that was never added. One without a key is ignored.
  void removeImageEntry(const HXImageStoreEntry* entry);

  void imageStoreEntryWasAdded(HXImageStoreEntry& entry);
  void imageStoreEntryIsNoLongerReferenced(const HXImageStoreEntry& entry);

  /// One complete device archive for each entry, in ascending order of the keys. An entry that
  /// cannot be written is logged and left out.
  std::vector<Ref<Data>> dataRepresentationsOfAllEntries() const;
  /// That of one entry, or why it cannot be written.
  static Result<Ref<Data>> dataRepresentationOfEntry(const HXImageStoreEntry& entry);

  HXDocument* document() const noexcept { return document_.get(); }
  /// Leaves alone, with one line logged, a store that its document holds.
  void setDocument(HXDocument* document);
  String documentKey() const;

  /// Writes its keys under every coding type.
  void encodeWithCoder(Encoder& coder) const override;
  void initWithCoder(Decoder& coder) override;
  void awakeAfterDecoding(Decoder& coder) override;

 private:
  friend struct HXImageStoreFields;

  // All changes of the entries and their counts.
  void storeCount(const String& key, std::int32_t count);
  void insertEntry(const Ref<HXImageStoreEntry>& entry);
  void takeEntry(const String& key);

  OrderedMap<Ref<HXImageStoreEntry>> entries_;
  OrderedMap<std::int32_t> counts_;
  WeakRef<HXDocument> document_;
  std::vector<Ref<HXImageStoreEntry>> decodedEntries_;
};

}  // namespace tarnkit
