#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>

#include "tarnkit/platform/coding/KeyedArchiver.h"

namespace tarnkit {

/// Thrown when an object is written unconditionally from inside its own encoding: written out, it
/// would hold itself without end. Back references are written with `encodeConditionalObject`.
class HXArchiveRecursionError : public std::logic_error {
 public:
  using std::logic_error::logic_error;
};

/// Writes an object graph into one binary property list: the container of the device graph and of
/// the image archives. It is read by the device, never by this system's model. What it does as
/// every archiver is told by `KeyedArchiver`; its own are:
///
/// - The output is a map of "$version" (the running application's), "$objects" (a map from object
///   ID to encoded object) and "$root". Strings, numbers and bytes stand inline; any other object
///   stands in "$objects" under "$object-0", "$object-1", … and is referred to by
///   {"$reference": ID}. The root stands there whatever it is.
/// - IDs are handed out by identity, depth-first in pre-order. An object that is only referred to
///   conditionally keeps its number and is absent from "$objects"; its references read as nil.
/// - An object is a map of "$class" and its values. A list is a list of encoded forms; a set is a
///   map with "$class" and the list under "NS.objects"; an ordered set one with "$class" and the
///   members under "NS.object.0", "NS.object.1", … A map has no "$class"; it is written, and its
///   values get their IDs, in ascending order of the keys, so that equal graphs make equal bytes. A
///   collection that is no object of its own gets an ID like the others. Equal strings, equal
///   numbers and reference maps are shared in the output.
/// - Objects that are written unconditionally from inside their own encoding are refused.
/// - What an object writes is recorded flat, and its children are walked from an explicit stack in
///   the order in which they were written, so the numbering is that of a recursive writer. The
///   order of an object's calls decides: what it refers to is written under the coding type that
///   the archiver had just then, and a substitution holds for what is referred to after it. What
///   objects below substitute or set is not seen meanwhile.
/// - A class's name is looked up when everything that the object refers to has been written.
///   Substitutions are for names: a later one for a class of the same name replaces the earlier.
class HXKeyedArchiver final : public KeyedArchiver {
 public:
  /// Writes into `data`, which is kept, and whose contents `finishEncoding` replaces.
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
  /// The same under that coding type, and of a null object, too. The archive never stands in memory
  /// as a whole. A failure has a path when it is the file's, and none when it is the archive's.
  static Status writeArchive(const Object* rootObject, std::int32_t codingType,
                             const std::string& toFile);

  /// Writes the object as the root, under the next ID; a null object does nothing. Afterwards the
  /// top container is the reference to it. Throws `HXArchiveRecursionError`, or what an object's
  /// `encodeWithCoder` throws; the archiver is then empty as after `finishEncoding`.
  void encodeRootObject(const Object* rootObject);
  /// The substitution recorded for the class; nil when there is none. Asked by an object that is
  /// being encoded, it knows those of objects that were written before and those of this object.
  String classNameForClass(const Class& forClass) const;
  /// How many containers are open: 1 unless an object is being encoded.
  std::size_t stackDepth() const noexcept;

  /// Replaces the contents of the data with the property list and empties the archiver for its next
  /// root. A failure (the archive outgrew the format, or a map had a nil key) leaves the data empty
  /// and is logged as "WARNING: [HXKeyedArchiver] REASON".
  void finishEncoding();
  /// The same, telling the caller of a failure instead of the log.
  Status endEncoding();

 private:
  Ref<Data> data_;
};

}  // namespace tarnkit
