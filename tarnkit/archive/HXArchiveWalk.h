#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "tarnkit/platform/coding/Coder.h"
#include "tarnkit/platform/collections/IdentityTable.h"
#include "tarnkit/platform/propertylist/PropertyListWriter.h"

namespace tarnkit::detail {

/// The depth-first walk behind `HXKeyedArchiver`.
///
/// What an object writes is recorded as entries on one stack: scalars as numbers of the property
/// list, other objects as they are, a collection as an entry followed by its elements. A frame
/// walks the entries of one container in order; an object met on the way that is to be written gets
/// its ID and a frame of its own, which is finished before the walk goes on.
class HXArchiveWalk {
 public:
  using Index = PropertyListWriter::Index;

  PropertyListWriter& writer() noexcept { return writer_; }
  /// Whether a container is open, so that values are recorded for it.
  bool isEncoding() const noexcept { return !frames_.empty(); }
  std::size_t openContainers() const noexcept { return frames_.size(); }

  void encodeRoot(const Object& root, Encoder& coder);

  // Values for the innermost container that is open. While none is, objects are encoded at once and
  // their references go into the top container. An object is written under the coding type that the
  // coder had when it was put.
  void put(const Symbol& key, Index value);
  void putObject(const Symbol& key, const Object& object, bool isUnconditional, Encoder& coder);
  void putCollection(const Symbol& key, CodingKind kind, std::size_t count,
                     FunctionRef<const Object*(std::size_t)> at, Encoder& coder);
  /// False, and nothing put, when a key is nil.
  bool putMap(const Symbol& key, std::size_t count, FunctionRef<Encoder::MapEntry(std::size_t)> at,
              Encoder& coder);
  void setClassName(const String& name, const Class& forClass);
  String classNameForClass(const Class& forClass) const;

  /// The property list; the walk can only be cleared afterwards.
  std::vector<std::uint8_t> finish(const Symbol& versionKey);
  /// Forgets everything but the substituted class names.
  void clear();

 private:
  static constexpr Index kNone = 0xFFFFFFFFU;

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
  struct Identified {
    Ref<const Object> object;  // null for a collection that is no object
    Index idString;
    Index reference;  // kNone until it is referred to
    Index body;       // kNone until it is written
    bool isInProgress;
  };
  struct SymbolEntry {
    Index key = kNone;
    std::uint32_t serial = 0;    // of the container that had the key last
    std::uint32_t position = 0;  // there; `kNone` for a key that the container keeps to itself
  };
  struct KnownClass {
    const Class* record;
    String substitute;
    Index name;  // the name to be written, in the property list; kNone until it is needed
  };

  SymbolEntry& symbol(const Symbol& key);
  void record(const Symbol& key, Entry entry);
  void recordCodingType(const Encoder& coder);
  void putTop(const Symbol& key, Index value);
  void encodeForTop(const Symbol& key, Encoder& coder);
  Index inlineValue(const Object& object);
  void appendElement(const Object& object, Index key);
  void appendSorted();

  std::uint32_t newID(Ref<const Object> object);
  Index referenceTo(std::uint32_t id);
  std::uint32_t find(const Object& object) const noexcept;
  void run(Encoder& coder);
  void encodeEntry(Frame& frame, Encoder& coder);
  void writeObject(std::uint32_t id, Encoder& coder);
  void openObject(std::uint32_t id, const Object& object, Encoder& coder);
  template <class Members>
  void openMembers(std::uint32_t id, const Members& members, Form form, const Encoder& coder);
  std::int32_t typeOfNext(const Encoder& coder) const noexcept;
  void pushFrame(std::uint32_t id, std::size_t begin, std::size_t end, Form form, bool ownsEntries,
                 std::int32_t codingType);
  void finishFrame();
  void fillMap(const Frame& frame, bool withClass);
  void fillList(Index list, const Frame& frame);
  void fillSet(const Frame& frame);
  void fillOrderedSet(const Frame& frame);

  Index classNameOf(const Frame& frame);
  KnownClass& knownClass(const Class& record);
  void substitute(const Class& record, const String& name);
  Index memberKey(std::size_t number);

  PropertyListWriter writer_;
  Index list_ = writer_.reserve();
  std::vector<Entry> entries_;
  std::vector<Frame> frames_;
  // The entries of a map while they are put in order.
  std::vector<std::pair<String, const Object*>> sorted_;
  std::vector<Identified> identified_;
  IdentityTable ids_;
  std::vector<SymbolEntry> symbols_;
  std::vector<KnownClass> classes_;
  IdentityTable classIDs_;
  std::int32_t recordedType_ = 0;  // the coding type of what the open object wrote last
  std::vector<Index> memberKeys_;
  std::vector<std::pair<Index, Index>> top_;  // keys and values of the top container
  std::uint32_t serials_ = 0;
};

}  // namespace tarnkit::detail
