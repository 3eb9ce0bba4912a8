#pragma once

#include <cstdint>
#include <vector>

#include "tarnkit/platform/coding/KeyedArchiver.h"

namespace tarnkit {

/// Writes an object graph as a standard keyed archive: the binary property list of "$archiver",
/// "$version", "$top" and "$objects" that every standard keyed unarchiver opens. Editor documents
/// are such archives. What it does as every archiver is told by `KeyedArchiver`; its own are:
///
/// - "$objects" holds everything that is referred to, strings, numbers and class records too, each
///   once by value. A slot that nothing writes unconditionally holds "$null".
/// - Objects are encoded from a work list. What an object refers to follows when its class has been
///   named, so a substitution holds for all that is encoded after it.
/// - A value that replaces an earlier one takes its place among the keys.
/// - An object's key that begins with "$" is written with a second one.
class StandardKeyedArchiver final : public KeyedArchiver {
 public:
  StandardKeyedArchiver();
  ~StandardKeyedArchiver() override;

  /// The archive of `root` (which may be null); a failure when it would be too large for the
  /// format. A class that cannot be archived throws (std::logic_error).
  static Result<Ref<Data>> archivedData(const Object* root, std::int32_t codingType);
  /// The same into a file, whole or not at all (see `File::write`), without the archive ever
  /// standing in memory as a whole. A failure has a path when it is the file's, and none when it is
  /// the archive's.
  static Status writeArchive(const Object* root, std::int32_t codingType, const std::string& path);

  /// Writes the object, and everything it refers to unconditionally, under "root" of "$top"; null
  /// is written as a reference to nil.
  void encodeRootObject(const Object* root);
  /// The finished archive; a failure when it would be too large for the format.
  Result<std::vector<std::uint8_t>> finishEncoding();
};

}  // namespace tarnkit
