#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "tarnkit/platform/coding/Coder.h"
#include "tarnkit/platform/system/Result.h"

namespace tarnkit {

namespace detail {
class KeyedArchiveLayout;
}

/// Writes an object graph into one binary property list: what `StandardKeyedArchiver` (the editor's
/// documents) and `HXKeyedArchiver` (device graphs, image archives) do alike.
///
/// A root object is written, or keyed values straight into the top of the archive, and
/// `finishEncoding` of either gives the bytes. The archiver is then empty and may be used again;
/// substituted class names are kept.
///
/// - A key stands once in a container; a later value replaces an earlier one. Null leaves its key
///   absent.
/// - A scalar keeps its type: a float is a 32-bit real, a double a 64-bit one, a boolean is no
///   integer.
/// - Strings and numbers are values and known by what they hold. Every other object is known by its
///   identity, stands in the archive once and is referred to; until the archive is finished it is
///   kept alive, so that addresses stay valid.
/// - A conditional reference brings nothing into the archive: it means the object if something
///   writes that unconditionally, before or after, and nil otherwise.
/// - A collection or map that is no object of its own is a container of its own at each call. None
///   holds nil: null elements are left out.
/// - What an object's `encodeWithCoder` refers to is written only after it returned, so neither the
///   depth of the graph nor a cycle costs stack. Objects are written in pre-order under the coding
///   type that the archiver had when they were first referred to; one that an object sets ends with
///   its `encodeWithCoder`.
/// - A class's name is looked up when the object has written itself, so a class may substitute its
///   own; by exact class, so subclasses keep theirs.
/// - The bytes depend on nothing but the graph.
///
/// What an object throws goes to whoever called the archiver from outside and leaves it empty. An
/// archive that outgrows the format fails when it is finished; what is written until then is
/// ignored. Belongs to whoever makes it; one thread at a time; linear in the output.
class KeyedArchiver : public Encoder {
 public:
  ~KeyedArchiver() override;

  /// From now on an object of which `isWritten` says no stands nowhere in the archive: where an
  /// object refers to it, conditionally or not, the key is left out, or the place in a collection
  /// or map. It is not asked of the root, nor of what stands in a container that is an object of
  /// its own. Null: all are written.
  void setFilter(std::function<bool(const Object& object)> isWritten) {
    isWritten_ = std::move(isWritten);
  }

  void encodeBool(bool value, const Symbol& key) final;
  void encodeInt(std::int32_t value, const Symbol& key) final;
  void encodeInt64(std::int64_t value, const Symbol& key) final;
  void encodeFloat(float value, const Symbol& key) final;
  void encodeDouble(double value, const Symbol& key) final;
  void encodeBytes(ByteSpan bytes, const Symbol& key) final;
  using Encoder::encodeObject;
  void encodeObject(const Object* object, const Symbol& key) final;
  using Encoder::encodeConditionalObject;
  void encodeConditionalObject(const Object* object, const Symbol& key) final;
  void encodeCollection(CodingKind kind, std::size_t count,
                        FunctionRef<const Object*(std::size_t)> at, const Symbol& key) final;
  using Encoder::encodeMap;
  void encodeMap(std::size_t count, FunctionRef<MapEntry(std::size_t)> at, const Symbol& key) final;
  void setClassName(const Symbol& name, const Class& forClass) final;

 protected:
  explicit KeyedArchiver(std::unique_ptr<detail::KeyedArchiveLayout> layout);

  void putRoot(const Object* root);
  /// The bytes, or why there are none; the archiver is empty afterwards.
  Result<std::vector<std::uint8_t>> finish();
  /// The same into a file, whole or not at all.
  Status finishInFile(const std::string& path);
  const detail::KeyedArchiveLayout& layout() const noexcept { return *layout_; }

 private:
  template <class Step>
  void perform(Step step);
  template <class Add>
  void putScalar(const Symbol& key, Add add);
  template <class Use>
  Status finishWith(Use use);
  /// Null for what the filter refuses.
  const Object* written(const Object* object) const {
    return object && isWritten_ && !isWritten_(*object) ? nullptr : object;
  }

  std::unique_ptr<detail::KeyedArchiveLayout> layout_;
  std::function<bool(const Object&)> isWritten_;
  Status failure_;  // why the archive will not be finished
};

}  // namespace tarnkit
