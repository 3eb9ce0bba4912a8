#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tarnkit/platform/collections/OrderedMap.h"
#include "tarnkit/platform/collections/OrderedSet.h"
#include "tarnkit/platform/objects/Data.h"
#include "tarnkit/platform/objects/FunctionRef.h"
#include "tarnkit/platform/system/Status.h"
#include "tarnkit/platform/text/String.h"
#include "tarnkit/platform/text/Symbol.h"

namespace tarnkit {

class Number;

/// What every coder carries: the coding type, by which a class decides which vocabulary it writes,
/// and the version of the archive, which the host sets and reads.
///
/// All are 0 until set. A coder and the objects it handles belong to one thread at a time.
class Coder {
 public:
  Coder(const Coder&) = delete;
  Coder& operator=(const Coder&) = delete;
  virtual ~Coder();

  std::int32_t codingType() const noexcept { return codingType_; }
  void setCodingType(std::int32_t codingType) noexcept { codingType_ = codingType; }
  std::int32_t majorVersion() const noexcept { return majorVersion_; }
  void setMajorVersion(std::int32_t version) noexcept { majorVersion_ = version; }
  std::int32_t minorVersion() const noexcept { return minorVersion_; }
  void setMinorVersion(std::int32_t version) noexcept { minorVersion_ = version; }
  std::int32_t patchVersion() const noexcept { return patchVersion_; }
  void setPatchVersion(std::int32_t version) noexcept { patchVersion_ = version; }
  bool allowsKeyedCoding() const noexcept { return true; }

 protected:
  Coder() noexcept = default;

 private:
  std::int32_t codingType_ = 0;
  std::int32_t majorVersion_ = 0;
  std::int32_t minorVersion_ = 0;
  std::int32_t patchVersion_ = 0;
};

/// The writing half of keyed coding: the one interface behind every archive vocabulary.
///
/// An object's `encodeWithCoder` calls these once per key. Objects are written once by identity,
/// strings by value; a null object leaves its key out. The writers need not recurse into an object
/// during the call: an archive's depth is not bounded by the stack.
class Encoder : public Coder {
 public:
  /// Whether members that a class sorts, so that two archives can be compared, are written in the
  /// order that they really have. False until set.
  bool keepsOrder() const noexcept { return keepsOrder_; }
  void setKeepsOrder(bool keepsOrder) noexcept { keepsOrder_ = keepsOrder; }

  virtual void encodeBool(bool value, const Symbol& key) = 0;
  virtual void encodeInt(std::int32_t value, const Symbol& key) = 0;
  virtual void encodeInt64(std::int64_t value, const Symbol& key) = 0;
  virtual void encodeFloat(float value, const Symbol& key) = 0;
  virtual void encodeDouble(double value, const Symbol& key) = 0;
  /// The bytes stand inline, as a copy.
  virtual void encodeBytes(ByteSpan bytes, const Symbol& key) = 0;
  virtual void encodeObject(const Object* object, const Symbol& key) = 0;
  /// Refers to the object, which is in the archive only if something writes it unconditionally. For
  /// every back reference.
  virtual void encodeConditionalObject(const Object* object, const Symbol& key) = 0;
  /// Writes a collection that is no object of its own in the model: `kind` is list, set or
  /// orderedSet, `at` answers the elements by index (none of them null).
  virtual void encodeCollection(CodingKind kind, std::size_t count,
                                FunctionRef<const Object*(std::size_t)> at, const Symbol& key) = 0;
  struct MapEntry {
    const String& key;
    const Object* value;
  };
  /// Writes a map that is no object of its own in the model; keys differ from each other.
  virtual void encodeMap(std::size_t count, FunctionRef<MapEntry(std::size_t)> at,
                         const Symbol& key) = 0;
  /// From now on objects of exactly this class are written under the other class name.
  virtual void setClassName(const Symbol& name, const Class& forClass) = 0;

  void encodeString(const String& string, const Symbol& key) {
    encodeObject(string.object().get(), key);
  }
  template <class T>
  void encodeObject(const Ref<T>& object, const Symbol& key) {
    encodeObject(static_cast<const Object*>(object.get()), key);
  }
  template <class T>
  void encodeConditionalObject(const WeakRef<T>& object, const Symbol& key) {
    encodeConditionalObject(static_cast<const Object*>(object.get()), key);
  }
  /// A vector of owning handles.
  template <class T>
  void encodeList(const std::vector<Ref<T>>& objects, const Symbol& key) {
    encodeCollection(
        CodingKind::list, objects.size(),
        [&](std::size_t i) -> const Object* { return objects[i].get(); }, key);
  }
  void encodeStrings(const std::vector<String>& strings, const Symbol& key) {
    encodeCollection(
        CodingKind::list, strings.size(),
        [&](std::size_t i) -> const Object* { return strings[i].object().get(); }, key);
  }
  /// The members as `kind` (an ordered set, or a list).
  void encodeMembers(const OrderedSet& set, const Symbol& key,
                     CodingKind kind = CodingKind::orderedSet);
  template <class T>
  void encodeMap(const OrderedMap<Ref<T>>& map, const Symbol& key) {
    auto at = map.begin();
    encodeMap(
        map.size(),
        [&](std::size_t) {
          const auto& entry = *at++;
          return MapEntry{entry.key, entry.value.get()};
        },
        key);
  }

 private:
  bool keepsOrder_ = false;
};

/// The reading half of keyed coding, over a file that need not be trusted.
///
/// Every value is checked for its type. The first thing that does not fit is recorded by `fail`;
/// the object being read goes on with the value of an absent key, and the whole decoding then ends
/// with an error and no object. An absent key reads as false, 0, nil or an empty collection.
class Decoder : public Coder {
 public:
  virtual bool containsValue(const Symbol& key) = 0;
  virtual bool decodeBool(const Symbol& key) = 0;
  virtual std::int32_t decodeInt(const Symbol& key) = 0;
  virtual std::int64_t decodeInt64(const Symbol& key) = 0;
  virtual float decodeFloat(const Symbol& key) = 0;
  virtual double decodeDouble(const Symbol& key) = 0;
  virtual std::vector<std::uint8_t> decodeBytes(const Symbol& key) = 0;
  /// The object, which may not have read its own keys yet (see `Object::initWithCoder`); strings,
  /// numbers and data are always whole. Null when absent.
  virtual Ref<Object> decodeObject(const Symbol& key) = 0;
  /// Visits the elements of a list, set or ordered set in their order; false when the key is
  /// absent.
  virtual bool decodeCollection(const Symbol& key, FunctionRef<void(const Ref<Object>&)> visit) = 0;
  /// Visits the entries of a map with string keys in their order; false when the key is absent.
  virtual bool decodeMap(const Symbol& key,
                         FunctionRef<void(const String&, const Ref<Object>&)> visit) = 0;
  /// Records that the archive cannot be read, and why, unless something was recorded before.
  virtual void fail(Status failure) = 0;
  /// The same of an archive that is damaged.
  void fail(std::string sentence) { fail(Status::damaged(std::move(sentence))); }
  virtual bool failed() const = 0;
  /// Counts what an object made while it was decoded that does not stand in the archive. False,
  /// with a failure, when that comes to be out of all proportion to the archive; readers of what
  /// nobody could have tampered with do not count.
  virtual bool countMade(std::uint64_t things);
  /// Visits every object that was made from a record of the archive so far, in the order of making.
  virtual void eachDecoded(FunctionRef<void(Object&)> visit) const = 0;
  /// Has `check` called when everything was read and awoken, once however often it is given and
  /// whatever the root is: nobody has the root yet, and `check` may still `fail`. Readers of what
  /// nobody could have tampered with do not call it.
  virtual void checkAtEnd(void (*check)(Decoder&));

  String decodeString(const Symbol& key);
  /// As `decodeObject`, but an object of another class is a failure and reads as null.
  template <class T>
  Ref<T> decode(const Symbol& key) {
    return checked<T>(decodeObject(key), key);
  }
  /// Visits the elements, each of which must be a `T`; false when the key is absent.
  template <class T, class Visit>
  bool decodeEach(const Symbol& key, Visit visit) {
    return decodeCollection(key, [&](const Ref<Object>& element) {
      if (auto object = checked<T>(element, key)) visit(object);
    });
  }
  template <class T, class Visit>
  bool decodeEachEntry(const Symbol& key, Visit visit) {
    return decodeMap(key, [&](const String& name, const Ref<Object>& value) {
      if (auto object = checked<T>(value, key)) visit(name, object);
    });
  }

 private:
  template <class T>
  Ref<T> checked(const Ref<Object>& object, const Symbol& key) {
    if (!object) return nullptr;
    if (auto typed = as<T>(object)) return typed;
    failForClass(*object, key, T::kClass);
    return nullptr;
  }
  void failForClass(const Object& object, const Symbol& key, const Class& wanted);
};

}  // namespace tarnkit
