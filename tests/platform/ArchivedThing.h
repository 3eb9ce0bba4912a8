#pragma once

#include <string>
#include <vector>

#include "tarnkit/platform/coding/Coder.h"

namespace tarnkit::test {

/// An object of the coders' tests: a name, parts that it owns, a part that it only points to, a
/// payload of any class, and one value of each scalar kind.
class ArchivedThing final : public Object {
  TARNKIT_CLASS
 public:
  ArchivedThing() = default;
  explicit ArchivedThing(const char* thingName) : name(thingName) {}

  void encodeWithCoder(Encoder& coder) const override;
  void initWithCoder(Decoder& coder) override;
  void awakeAfterDecoding(Decoder& coder) override;
  void abandonDecoding() override;

  Ref<ArchivedThing> addPart(const char* partName);

  String name;
  std::vector<Ref<ArchivedThing>> parts;
  WeakRef<ArchivedThing> whole;
  Ref<Object> payload;
  bool flag = false;
  std::int32_t number = 0;
  std::int64_t longNumber = 0;
  float single = 0;
  double real = 0;
  std::vector<std::uint8_t> bytes;
  OrderedMap<Ref<Object>> table;
  bool referredUnconditionally = false;  // writes `whole` so

  /// What the decoder did, in order: "init NAME", "awake NAME".
  static std::vector<std::string> events;
};

}  // namespace tarnkit::test
