#pragma once

#include <cstdint>
#include <string_view>
#include <unordered_map>

#include "tarnkit/platform/propertylist/PropertyList.h"
#include "tarnkit/platform/propertylist/PropertyListKeyMap.h"
#include "tarnkit/platform/system/Status.h"

namespace tarnkit {

/// What a file of this system is.
enum class HXArchiveKind : std::uint8_t { none, editorDocument, deviceGraph, imageArchive };

/// Reads back what `HXKeyedArchiver` wrote (device graphs and image archives), to be looked at: an
/// index of "$objects", and references resolved through it.
///
/// Every object has a number, in the order of the file. Nothing is copied out of the property list,
/// so the bytes must outlive the reader. Opening costs time linear in the file, resolving a
/// reference constant time, and nothing recurses. Owned by whoever looks; for one thread at a
/// time.
class HXArchiveReader {
 public:
  using Index = PropertyList::Index;
  using Object = std::uint32_t;
  static constexpr Object kNoObject = 0xFFFFFFFFU;

  /// What the list is; an archive whose root is no image entry is a device graph.
  static HXArchiveKind sniff(const PropertyList& list) noexcept;
  /// The same for bytes; `none` for anything that is no property list.
  static HXArchiveKind sniff(ByteSpan bytes);

  /// Opens a device graph or an image archive; a failure for anything else.
  Status open(ByteSpan bytes);
  /// The same of a property list that was read already, whose bytes are still there.
  Status open(PropertyList list);

  const PropertyList& list() const noexcept { return list_; }
  HXArchiveKind kind() const noexcept { return kind_; }
  /// "$version".
  std::string_view version() const noexcept { return version_; }
  /// The value under "$root": as a rule a reference to the root object.
  Index root() const noexcept { return root_; }

  Object objectCount() const noexcept { return static_cast<Object>(bodies_.size()); }
  /// `kNoObject` when the archive holds no such object.
  Object objectNamed(std::string_view id) const noexcept;
  /// "$object-0".
  std::string_view idOf(Object object) const noexcept { return list_.string(ids_[object]); }
  /// The encoded object: a map, a list, or a value of its own.
  Index bodyOf(Object object) const noexcept { return bodies_[object]; }
  /// "" for maps and lists, which have no class.
  std::string_view classOf(Object object) const;

  /// Whether the value is a reference to an object.
  bool isReference(Index value) const noexcept;
  /// The object that a reference means; `kNoObject` for one that is absent, which reads as nil.
  Object resolve(Index reference) const;

  /// What `walk` meets. Containers of an object begin with its number; those that stand inline,
  /// with `kNoObject`.
  class Visitor {
   public:
    virtual ~Visitor();
    virtual void beginMap(Object object, std::uint32_t count) = 0;
    /// A string of the list; the next call tells the value.
    virtual void key(Index key) = 0;
    virtual void endMap() = 0;
    virtual void beginList(Object object, std::uint32_t count) = 0;
    virtual void endList() = 0;
    /// A string, number or byte string; of an object that is nothing but that, with its number.
    /// Also a container that stands inline at several places, from the second time on.
    virtual void value(Object object, Index value) = 0;
    /// A reference to an object that the walk has met before.
    virtual void repeated(Object object) = 0;
    /// A reference to an object that is not in the archive.
    virtual void nil() = 0;
  };
  /// Visits everything that can be reached from the root, depth-first, entries in their order, each
  /// container once, so that the cost is linear whatever the file shares. The "$class" of an object
  /// is left out of its entries.
  void walk(Visitor& visitor) const;

 private:
  Index findClass(Index body) const;

  PropertyList list_;
  HXArchiveKind kind_ = HXArchiveKind::none;
  std::string_view version_;
  Index root_ = PropertyList::kNone;
  PropertyList::Key classKey_ = PropertyList::kNoKey;
  PropertyList::Key referenceKey_ = PropertyList::kNoKey;
  PropertyList::Elements ids_;               // of each object
  PropertyList::Elements bodies_;            // of each object
  PropertyListKeyMap<Object> objectsByKey_;  // the object of that name
  // What other writers' files may need, remembered when it is first asked: the classes of bodies of
  // many keys that do not begin with "$class", and the objects of IDs in references that are no
  // keys of the list. One such body or ID may stand in many places.
  mutable std::unordered_map<Index, Index> classesOfBodies_;
  mutable std::unordered_map<Index, Object> foreignIDs_;
};

}  // namespace tarnkit
