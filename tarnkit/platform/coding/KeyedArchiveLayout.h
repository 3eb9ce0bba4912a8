#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "tarnkit/platform/coding/Coder.h"
#include "tarnkit/platform/coding/KeyedArchiveClasses.h"
#include "tarnkit/platform/collections/Array.h"
#include "tarnkit/platform/collections/Dictionary.h"
#include "tarnkit/platform/propertylist/PropertyListWriter.h"

namespace tarnkit {
class Number;
}  // namespace tarnkit

namespace tarnkit::detail {

/// The half of a `KeyedArchiver` that knows what its archive looks like: where a value goes that
/// was put under a key, how an object is referred to, and when it is written.
///
/// What layouts have in common stands here: the property list, the keys that it holds and who had
/// each last, the forms of scalars and of the platform's containers, the classes and their
/// substitutes. Belongs to its archiver; functions that put throw std::length_error when the
/// property list outgrows its form, and what an object's `encodeWithCoder` throws.
class KeyedArchiveLayout {
 public:
  using Index = PropertyListWriter::Index;

  KeyedArchiveLayout() = default;
  KeyedArchiveLayout(const KeyedArchiveLayout&) = delete;
  KeyedArchiveLayout& operator=(const KeyedArchiveLayout&) = delete;
  virtual ~KeyedArchiveLayout();

  /// The archiver that objects are given to write with; to be set before anything is put.
  void setCoder(Encoder& coder) noexcept { coder_ = &coder; }
  PropertyListWriter& writer() noexcept { return writer_; }
  const PropertyListWriter& writer() const noexcept { return writer_; }
  /// Whether objects are being written, so that values are for the innermost that is open; they go
  /// to the top of the archive otherwise, and what they refer to is written at once.
  bool isEncoding() const noexcept { return isEncoding_; }

  virtual void putRoot(const Object* root) = 0;
  virtual void put(const Symbol& key, Index value) = 0;
  virtual void putObject(const Symbol& key, const Object& object, bool isConditional) = 0;
  virtual void putCollection(const Symbol& key, CodingKind kind, std::size_t count,
                             FunctionRef<const Object*(std::size_t)> at) = 0;
  /// False, and nothing put, when the layout cannot hold one of the keys.
  virtual bool putMap(const Symbol& key, std::size_t count,
                      FunctionRef<Encoder::MapEntry(std::size_t)> at) = 0;
  virtual void setClassName(const String& name, const Class& forClass) = 0;

  /// Ends the archive and gives its root; the layout can only be cleared afterwards, its writer be
  /// finished. What was kept for the archive's making is let go.
  virtual Index finish() = 0;
  /// Forgets everything but the substituted class names.
  virtual void clear();

 protected:
  static constexpr Index kNone = 0xFFFFFFFFU;

  /// A key of the archive: its text in the property list and, of the container that had it last,
  /// who that was (its serial) and the place of the value there.
  struct SymbolEntry {
    Index key = kNone;
    std::uint32_t serial = 0;
    std::uint32_t position = 0;
  };
  /// Valid until the next call.
  SymbolEntry& symbol(const Symbol& key) {
    const auto number = key.number();
    if (number >= symbols_.size()) growSymbols(number);
    SymbolEntry& entry = symbols_[number];
    if (entry.key == kNone) entry.key = keyText(key);
    return entry;
  }
  /// Tells the keys of a container from those of others; never 0.
  std::uint32_t newSerial() noexcept { return ++serials_; }

  /// Strings and numbers are values wherever they stand; they have no identity.
  static bool isValue(CodingKind kind) noexcept {
    return kind == CodingKind::string || kind == CodingKind::number;
  }
  Index scalar(const Number& number);
  /// The key of an ordered set's member.
  Index memberKey(std::size_t number);
  /// The class of a collection that is no object of its own: a list, set or ordered set.
  static const Class& classOfCollection(CodingKind kind) noexcept;
  /// Visits what stands in an array, set or ordered set. No container may hold nil, so null is left
  /// out.
  template <class Visit>
  static void eachMember(const Object& collection, CodingKind kind, Visit visit) {
    const auto visitAll = [&](const auto& members) {
      for (const auto& member : members) {
        if (member) visit(*member);
      }
    };
    switch (kind) {
      case CodingKind::set:
        return visitAll(static_cast<const Set&>(collection));
      case CodingKind::orderedSet:
        return visitAll(static_cast<const OrderedSet&>(collection));
      default:
        return visitAll(static_cast<const Array&>(collection));
    }
  }
  /// Visits the keys and values of a dictionary, in its order.
  template <class Visit>
  static void eachEntry(const Object& dictionary, Visit visit) {
    for (const auto& entry : static_cast<const Dictionary&>(dictionary).entries()) {
      if (entry.value) visit(entry.key, *entry.value);
    }
  }
  /// Has the object put its values. The null object has none.
  void encodeContents(const Object& object);

  Encoder& coder() noexcept { return *coder_; }
  KeyedArchiveClasses& classes() noexcept { return classes_; }
  const KeyedArchiveClasses& classes() const noexcept { return classes_; }
  void setEncoding(bool isEncoding) noexcept { isEncoding_ = isEncoding; }

  /// Gives the coder back the coding type that it had, whatever the objects set.
  class CodingTypeKeeper {
   public:
    explicit CodingTypeKeeper(Coder& coder) noexcept
        : coder_(coder), codingType_(coder.codingType()) {}
    CodingTypeKeeper(const CodingTypeKeeper&) = delete;
    CodingTypeKeeper& operator=(const CodingTypeKeeper&) = delete;
    ~CodingTypeKeeper() { coder_.setCodingType(codingType_); }

   private:
    Coder& coder_;
    std::int32_t codingType_;
  };

 private:
  /// The text in the property list; asked once an archive and key.
  virtual Index keyText(const Symbol& key) { return writer_.addSymbol(key); }
  void growSymbols(std::uint32_t number);

  PropertyListWriter writer_;
  Encoder* coder_ = nullptr;
  std::vector<SymbolEntry> symbols_;
  std::uint32_t serials_ = 0;
  std::vector<Index> memberKeys_;
  KeyedArchiveClasses classes_;
  bool isEncoding_ = false;
};

}  // namespace tarnkit::detail
