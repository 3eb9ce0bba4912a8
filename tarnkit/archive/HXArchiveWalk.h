#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "tarnkit/platform/coding/KeptObjects.h"
#include "tarnkit/platform/coding/KeyedArchiveLayout.h"
#include "tarnkit/platform/collections/IdentityTable.h"

namespace tarnkit::detail {

/// The depth-first walk behind `HXKeyedArchiver`.
///
/// What an object writes is recorded as entries on one stack: scalars as numbers of the property
/// list, other objects as they are, a collection as an entry followed by its elements. A frame
/// walks the entries of one container in order; an object met on the way that is to be written gets
/// its ID and a frame of its own, which is finished before the walk goes on.
class HXArchiveWalk final : public KeyedArchiveLayout {
 public:
  /// How many containers are open: 0 unless objects are being written.
  std::size_t openContainers() const noexcept { return frames_.size(); }

  void putRoot(const Object* root) override;
  void put(const Symbol& key, Index value) override;
  void putObject(const Symbol& key, const Object& object, bool isConditional) override;
  void putCollection(const Symbol& key, CodingKind kind, std::size_t count,
                     FunctionRef<const Object*(std::size_t)> at) override;
  /// False when a key is nil.
  bool putMap(const Symbol& key, std::size_t count,
              FunctionRef<Encoder::MapEntry(std::size_t)> at) override;
  void setClassName(const String& name, const Class& forClass) override;
  String classNameForClass(const Class& forClass) const;

  Index finish() override;
  void clear() override;

 private:
  // How a container is written when it is complete.
  enum class Form : std::uint8_t { object, list, map, set, orderedSet, top };

  struct Entry {
    enum class Kind : std::uint8_t {
      value,
      object,
      conditional,
      collection,
      // For what follows in the container; these are no entries of it.
      substitution,
      codingType,
    };
    Ref<const Object> object;  // of a substitution, the name
    Index key = kNone;
    Index value = kNone;      // the encoded form, the number of the substituted class, or the type
    std::uint32_t count = 0;  // of a collection: the entries that follow and belong to it
    Kind kind = Kind::value;
    Form form = Form::object;  // of a collection
    bool isReplaced = false;   // a later entry has the key
  };
  struct Frame {
    std::uint32_t id;
    std::uint32_t begin;
    std::uint32_t next;
    std::uint32_t end;
    std::uint32_t serial;     // tells the keys of this container from those of others
    std::int32_t codingType;  // of the entries that come next
    Form form;
    bool ownsEntries;  // they stand at the end of the stack and go with the frame
  };
  /// A new entry, of the key; valid until the next one.
  Entry& record(const Symbol& key, Entry::Kind kind);
  /// The same, of no key; for the entries that are none of the container.
  Entry& recordAside(Entry::Kind kind);
  void recordCodingType();
  static Form formOf(CodingKind kind) noexcept;
  void putTop(const Symbol& key, Index value);
  void encodeForTop(const Symbol& key);
  Index inlineValue(const Object& object);
  void appendElement(const Object& object, Index key);
  void appendSorted();

  std::uint32_t newID(Ref<const Object> object);
  Index referenceTo(std::uint32_t id);
  Index idString(std::uint32_t id) const noexcept;
  void forgetObjects();
  void run();
  void encodeEntry(Frame& frame);
  void writeObject(std::uint32_t id);
  void openObject(std::uint32_t id, const Object& object);
  std::int32_t typeOfNext() noexcept;
  void pushFrame(std::uint32_t id, std::size_t begin, std::size_t end, Form form, bool ownsEntries,
                 std::int32_t codingType);
  void finishFrame();
  void fillMap(const Frame& frame, bool withClass);
  void fillBody(const Frame& frame, std::size_t count);
  void fillList(Index list, const Frame& frame);
  void fillSet(const Frame& frame);
  void fillOrderedSet(const Frame& frame);

  Index classNameOf(const Frame& frame);

  Index list_ = writer().reserve();
  std::vector<Entry> entries_;
  std::vector<Frame> frames_;
  // The entries of a map while they are put in order.
  std::vector<std::pair<String, const Object*>> sorted_;
  // For each ID.
  struct Numbers {
    Index reference;  // the text of the ID until it is referred to
    Index body;       // kNone until it is written
  };
  KeptObjects objects_;  // null for a collection that is no object
  SegmentedBuffer<Numbers> numbers_;
  SegmentedBuffer<std::uint8_t> marks_;
  static constexpr std::uint8_t kReferredTo = 1;
  static constexpr std::uint8_t kInProgress = 2;
  IdentityTable ids_;
  // Of the map that is filled; maybe longer.
  std::vector<Index> keys_;
  std::vector<Index> values_;
  std::int32_t recordedType_ = 0;             // the coding type of what the open object wrote last
  std::vector<std::pair<Index, Index>> top_;  // keys and values of the top container
};

}  // namespace tarnkit::detail
