#pragma once

#include <memory>

#include "tarnkit/platform/coding/Coder.h"
#include "tarnkit/platform/system/Result.h"

namespace tarnkit {

/// Writes an object graph as a standard keyed archive: the binary property list of "$archiver",
/// "$version", "$top" and "$objects" that every standard keyed unarchiver opens. Editor documents
/// are such archives.
///
/// An object stands in the archive once by identity, a string, number or class record once by
/// value. `encodeObject` only notes the reference and puts the object on a work list, so neither
/// the depth of the graph nor a cycle costs stack. An object is encoded under the coding type that
/// the archiver had when it was first referred to unconditionally; one that an object sets ends
/// with its `encodeWithCoder`. Objects are encoded in pre-order, and the bytes depend on nothing
/// but the graph. Belongs to whoever makes it; one thread at a time; linear in the output.
class StandardKeyedArchiver final : public Encoder {
 public:
  StandardKeyedArchiver();
  ~StandardKeyedArchiver() override;

  /// The archive of `root` (which may be null); a failure when it would be too large for the
  /// format. A class that cannot be archived throws (std::logic_error).
  static Result<Ref<Data>> archivedData(const Object* root, std::int32_t codingType);

  /// Writes the object, and everything it refers to unconditionally, under "root".
  void encodeRootObject(const Object* root);
  /// The finished archive; a failure when it would be too large for the format. The archiver is
  /// then empty and may be used again; substituted class names are kept.
  Result<std::vector<std::uint8_t>> finishEncoding();

  // Called outside of an object's `encodeWithCoder`, these write into "$top".
  void encodeBool(bool value, const Symbol& key) override;
  void encodeInt(std::int32_t value, const Symbol& key) override;
  void encodeInt64(std::int64_t value, const Symbol& key) override;
  void encodeFloat(float value, const Symbol& key) override;
  void encodeDouble(double value, const Symbol& key) override;
  void encodeBytes(ByteSpan bytes, const Symbol& key) override;
  using Encoder::encodeObject;
  void encodeObject(const Object* object, const Symbol& key) override;
  using Encoder::encodeConditionalObject;
  /// The slot of an object that nothing writes unconditionally holds "$null".
  void encodeConditionalObject(const Object* object, const Symbol& key) override;
  /// Each call writes a container of its own. Null elements are left out: no container may hold
  /// nil.
  void encodeCollection(CodingKind kind, std::size_t count,
                        FunctionRef<const Object*(std::size_t)> at, const Symbol& key) override;
  using Encoder::encodeMap;
  void encodeMap(std::size_t count, FunctionRef<MapEntry(std::size_t)> at,
                 const Symbol& key) override;
  void setClassName(const Symbol& name, const Class& forClass) override;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace tarnkit
