#pragma once

#include <cstddef>
#include <memory>
#include <stdexcept>
#include <string>

#include "tarnkit/platform/coding/Coder.h"
#include "tarnkit/platform/system/Result.h"

namespace tarnkit {

/// Thrown when an object is written unconditionally from inside its own encoding: written out, it
/// would hold itself without end. Back references are written with `encodeConditionalObject`.
class HXArchiveRecursionError : public std::logic_error {
 public:
  using std::logic_error::logic_error;
};

/// Writes an object graph into one binary property list: the container of the device graph and of
/// the image archives. It is read by the device, never by this system's model.
///
/// The output is a map of "$version" (the running application's), "$objects" (a map from object ID
/// to encoded object) and "$root". Strings and numbers stand inline; any other object stands in
/// "$objects" under "$object-0", "$object-1", … and is referred to by {"$reference": ID}. IDs are
/// handed out by identity, depth-first in pre-order. An object that is only referred to
/// conditionally keeps its number and is absent from "$objects"; its references read as nil.
///
/// An object's `encodeWithCoder` is recorded flat and its children are walked from an explicit
/// stack, in the order in which they were written, so the numbering is that of a recursive writer
/// and the depth of the graph costs no stack. What the archiver keeps while writing:
/// - the data handed in, whose contents `finishEncoding` replaces;
/// - a table from object address to ID, telling whether the object was written unconditionally,
/// only
///   referred to, or is being written just now; it owns every object with an ID until
///   `finishEncoding`, so that addresses stay valid;
/// - the encoded forms, already in the property list's own layout;
/// - the next ID;
/// - the stack of open containers, the last of which receives every keyed value;
/// - the class-name substitutions, by class name, looked up by exact class when everything that an
///   object refers to has been written: a class may substitute its own name while it encodes
///   itself, for itself and everything after.
/// Equal strings, equal numbers and reference maps are shared in the output.
///
/// What an `encodeWithCoder` may rely on: the order of its calls decides, but what it refers to is
/// written only after it returned. So an object is written under the coding type that the archiver
/// had when it was referred to, a substitution holds for what is referred to after it, and what
/// objects below substitute or set is not seen meanwhile. The coding type that an object sets ends
/// with its `encodeWithCoder`.
///
/// Belongs to whoever makes it; one thread at a time; linear in the output.
class HXKeyedArchiver final : public Encoder {
 public:
  /// Writes into `data`, which is kept.
  explicit HXKeyedArchiver(Ref<Data> data);
  ~HXKeyedArchiver() override;

  /// "$version".
  static String versionKey();
  /// The archive of `rootObject` at coding type 0; empty after a failure, which is logged.
  static Ref<Data> archivedDataWithRootObject(const Object* rootObject);
  /// The archive under that coding type, or why there is none.
  static Result<Ref<Data>> dataWithRootObject(const Object* rootObject,
                                              std::int32_t codingType = 0);
  /// Writes the archive at coding type 0 to the file, whole or not at all; tells whether it did,
  /// and logs why not. An old file is then still there. A null object is refused, since no reader
  /// could make anything of its archive.
  static bool archiveRootObject(const Object* rootObject, const std::string& toFile);
  /// The same, telling the caller why not.
  static Status writeRootObject(const Object* rootObject, const std::string& toFile);

  /// Writes the object as the root, under the next ID; a null object does nothing. Afterwards the
  /// top container is the reference to it. Throws `HXArchiveRecursionError`, or what an object's
  /// `encodeWithCoder` throws; the archiver is then empty as after `finishEncoding`.
  void encodeRootObject(const Object* rootObject);

  // Each stores its value under the key in the last container of the stack, replacing an earlier
  // one.
  void encodeBool(bool value, const Symbol& key) override;
  void encodeInt(std::int32_t value, const Symbol& key) override;
  void encodeInt64(std::int64_t value, const Symbol& key) override;
  void encodeFloat(float value, const Symbol& key) override;
  void encodeDouble(double value, const Symbol& key) override;
  /// A copy of the bytes stands inline, not in "$objects".
  void encodeBytes(ByteSpan bytes, const Symbol& key) override;
  using Encoder::encodeObject;
  /// Null leaves the key absent. Throws as `encodeRootObject` when no object is being encoded;
  /// otherwise the enclosing call throws.
  void encodeObject(const Object* object, const Symbol& key) override;
  using Encoder::encodeConditionalObject;
  /// Null leaves the key absent.
  void encodeConditionalObject(const Object* object, const Symbol& key) override;
  /// The collection gets an ID of its own, and so do the elements that are no strings or numbers. A
  /// list is a list of encoded forms; a set is a map with "$class" and the list under "NS.objects";
  /// an ordered set one with "$class" and the members under "NS.object.0", "NS.object.1", …
  void encodeCollection(CodingKind kind, std::size_t count,
                        FunctionRef<const Object*(std::size_t)> at, const Symbol& key) override;
  using Encoder::encodeMap;
  /// The map gets an ID of its own; it is written, and its values get their IDs, in ascending order
  /// of the keys, without "$class". A nil key makes the serialization fail.
  void encodeMap(std::size_t count, FunctionRef<MapEntry(std::size_t)> at,
                 const Symbol& key) override;

  void setClassName(const Symbol& name, const Class& forClass) override;
  /// The substitution recorded for the class; nil when there is none. Asked by an object that is
  /// being encoded, it knows those of objects that were written before and those of this object.
  String classNameForClass(const Class& forClass) const;
  /// How many containers are open: 1 unless an object is being encoded.
  std::size_t stackDepth() const noexcept;

  /// Replaces the contents of the data with the property list and empties the archiver for its next
  /// root; substitutions are kept. A failure leaves the data empty and is logged as
  /// "WARNING: [HXKeyedArchiver] REASON".
  void finishEncoding();
  /// The same, telling the caller of a failure instead of the log.
  Status endEncoding();

 private:
  struct State;
  Ref<Data> data_;
  std::unique_ptr<State> state_;
};

}  // namespace tarnkit
