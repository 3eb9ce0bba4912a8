#pragma once

#include <memory>

#include "tarnkit/platform/coding/Coder.h"
#include "tarnkit/platform/system/Result.h"

namespace tarnkit {

class PropertyList;

/// Reads a standard keyed archive, binary or XML, that need not be trusted.
///
/// Only the platform's values and classes of the `ClassRegistry` are made: whoever owns other
/// classes enters them before (the model's: `registerModelClasses`). An object is made by its
/// class's factory when it is first referred to and handed out at once; its `initWithCoder` runs
/// from an explicit stack, before those of the objects it refers to, which follow depth-first in
/// the order of its decode calls. `awakeAfterDecoding` of an object runs after everything below it
/// was initialised and awoken. So keys that objects draw while decoding come out in the pre-order
/// of the graph, and no nesting costs stack.
///
/// A generic container asked for as an object is filled before whoever asked awakes; one that holds
/// itself is refused. Values of one kind in the file that are one object there are one object here.
/// Of an archive that fails, every object is told to let go of what it owns
/// (`Object::abandonDecoding`). Work and memory are linear in the file: what many objects may read
/// again from one shared list, map or byte buffer is bounded by `kSharingFactor`. Lives for one
/// call of `unarchive`; one thread at a time.
class StandardKeyedUnarchiver final : public Decoder {
 public:
  /// The elements visited while one archive is read, and what objects make that does not stand in
  /// it, may come to this many times all references in the file, the bytes copied out of shared
  /// data to this many times its size, and each to `kSharingAllowance` more; beyond that the
  /// archive is refused.
  static constexpr std::uint64_t kSharingFactor = 2;
  static constexpr std::uint64_t kSharingAllowance = 65536;

  /// The root object ("root" of "$top"). Nothing is thrown; of an archive that fails no object
  /// stays alive that the model does not hold itself. One line is logged when objects of the
  /// archive were left out because nothing asked for them.
  static Result<Ref<Object>> unarchive(ByteSpan bytes, std::int32_t codingType);
  /// The same of a property list that was read already, whose bytes are still there.
  static Result<Ref<Object>> unarchive(const PropertyList& list, std::int32_t codingType);

  /// Keeps the names by which archives call the platform's own values from being given to classes
  /// of the `ClassRegistry`, which would never be made.
  static void reserveClassNames();

  bool containsValue(const Symbol& key) override;
  bool decodeBool(const Symbol& key) override;
  std::int32_t decodeInt(const Symbol& key) override;
  std::int64_t decodeInt64(const Symbol& key) override;
  float decodeFloat(const Symbol& key) override;
  double decodeDouble(const Symbol& key) override;
  std::vector<std::uint8_t> decodeBytes(const Symbol& key) override;
  Ref<Object> decodeObject(const Symbol& key) override;
  bool decodeCollection(const Symbol& key, FunctionRef<void(const Ref<Object>&)> visit) override;
  bool decodeMap(const Symbol& key,
                 FunctionRef<void(const String&, const Ref<Object>&)> visit) override;
  using Decoder::fail;
  void fail(Status failure) override;
  bool failed() const override;
  bool countMade(std::uint64_t things) override;
  void eachDecoded(FunctionRef<void(Object&)> visit) const override;
  void checkAtEnd(void (*check)(Decoder&)) override;

 private:
  struct State;
  explicit StandardKeyedUnarchiver(const PropertyList& list);
  ~StandardKeyedUnarchiver() override;
  Ref<Object> run();

  std::unique_ptr<State> state_;
};

}  // namespace tarnkit
