// Standard keyed archives of a class that asks for every kind of value: nothing is thrown, nothing
// leaks, and what was read can be written and read again.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "tarnkit/platform/coding/StandardKeyedArchiver.h"
#include "tarnkit/platform/coding/StandardKeyedUnarchiver.h"

namespace {

using tarnkit::Object;
using tarnkit::Ref;
using tarnkit::String;
using tarnkit::Symbol;

const Symbol kName{"Thing.name"};
const Symbol kParts{"Thing.parts"};
const Symbol kWhole{"Thing.whole"};
const Symbol kPayload{"Thing.payload"};
const Symbol kFlag{"Thing.flag"};
const Symbol kNumber{"Thing.number"};
const Symbol kReal{"Thing.real"};
const Symbol kBytes{"Thing.bytes"};
const Symbol kTable{"Thing.table"};

class Thing final : public Object {
  TARNKIT_CLASS
 public:
  Thing() { all.emplace_back(this); }

  void encodeWithCoder(tarnkit::Encoder& coder) const override {
    coder.encodeString(name_, kName);
    coder.encodeList(parts_, kParts);
    coder.encodeConditionalObject(whole_, kWhole);
    coder.encodeObject(payload_, kPayload);
    coder.encodeBool(flag_, kFlag);
    coder.encodeInt(number_, kNumber);
    coder.encodeDouble(real_, kReal);
    coder.encodeBytes(bytes_, kBytes);
    coder.encodeMap(table_, kTable);
  }
  void initWithCoder(tarnkit::Decoder& coder) override {
    name_ = coder.decodeString(kName);
    coder.decodeEach<Thing>(kParts, [&](const Ref<Thing>& part) { parts_.push_back(part); });
    whole_ = coder.decode<Thing>(kWhole);
    payload_ = coder.decodeObject(kPayload);
    flag_ = coder.decodeBool(kFlag);
    number_ = coder.decodeInt(kNumber);
    real_ = coder.decodeDouble(kReal);
    bytes_ = coder.decodeBytes(kBytes);
    coder.decodeEachEntry<Object>(
        kTable, [&](const String& key, const Ref<Object>& value) { table_.set(key, value); });
  }
  void abandonDecoding() override {
    parts_.clear();
    payload_ = nullptr;
    table_.clear();
  }

  // Things may own each other in a circle here, which the model's classes refuse.
  static void abandonAll() {
    for (const auto& thing : all) {
      if (const auto alive = thing.lock()) alive->abandonDecoding();
    }
    all.clear();
  }

 private:
  static std::vector<tarnkit::WeakRef<Thing>> all;

  String name_;
  std::vector<Ref<Thing>> parts_;
  tarnkit::WeakRef<Thing> whole_;
  Ref<Object> payload_;
  bool flag_ = false;
  std::int32_t number_ = 0;
  double real_ = 0;
  std::vector<std::uint8_t> bytes_;
  tarnkit::OrderedMap<Ref<Object>> table_;
};

const tarnkit::Class Thing::kClass{"Thing", &Object::kClass,
                                   &tarnkit::detail::makeByDefault<Thing>};
std::vector<tarnkit::WeakRef<Thing>> Thing::all;

void require(bool condition) {
  if (!condition) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  tarnkit::ClassRegistry::add(Thing::kClass);
  if (const auto root = tarnkit::StandardKeyedUnarchiver::unarchive({data, size}, 0)) {
    const auto again = tarnkit::StandardKeyedArchiver::archivedData((*root).get(), 0);
    require(again && tarnkit::StandardKeyedUnarchiver::unarchive(again->bytes(), 0));
  } else {
    require(!root.status().sentence().empty());
  }
  Thing::abandonAll();
  return 0;
}
