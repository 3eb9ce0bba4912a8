#include "tests/platform/ArchivedThing.h"

namespace tarnkit::test {

namespace {
const Symbol kName{"Thing.name"};
const Symbol kParts{"Thing.parts"};
const Symbol kWhole{"Thing.whole"};
const Symbol kPayload{"Thing.payload"};
const Symbol kFlag{"Thing.flag"};
const Symbol kNumber{"Thing.number"};
const Symbol kLongNumber{"Thing.longNumber"};
const Symbol kSingle{"Thing.single"};
const Symbol kReal{"Thing.real"};
const Symbol kBytes{"Thing.bytes"};
const Symbol kTable{"Thing.table"};
}  // namespace

const Class ArchivedThing::kClass{"Thing", &Object::kClass, &detail::makeByDefault<ArchivedThing>};
std::vector<std::string> ArchivedThing::events;

void ArchivedThing::encodeWithCoder(Encoder& coder) const {
  coder.encodeString(name, kName);
  coder.encodeList(parts, kParts);
  if (referredUnconditionally) {
    coder.encodeObject(static_cast<const Object*>(whole.get()), kWhole);
  } else {
    coder.encodeConditionalObject(whole, kWhole);
  }
  coder.encodeObject(payload, kPayload);
  if (flag) coder.encodeBool(flag, kFlag);
  if (number != 0) coder.encodeInt(number, kNumber);
  if (longNumber != 0) coder.encodeInt64(longNumber, kLongNumber);
  if (single != 0) coder.encodeFloat(single, kSingle);
  if (real != 0) coder.encodeDouble(real, kReal);
  if (!bytes.empty()) coder.encodeBytes(bytes, kBytes);
  if (!table.empty()) coder.encodeMap(table, kTable);
}

void ArchivedThing::initWithCoder(Decoder& coder) {
  name = coder.decodeString(kName);
  events.push_back("init " + name.toStdString());
  coder.decodeEach<ArchivedThing>(kParts,
                                  [&](const Ref<ArchivedThing>& part) { parts.push_back(part); });
  whole = coder.decode<ArchivedThing>(kWhole);
  payload = coder.decodeObject(kPayload);
  flag = coder.decodeBool(kFlag);
  number = coder.decodeInt(kNumber);
  longNumber = coder.decodeInt64(kLongNumber);
  single = coder.decodeFloat(kSingle);
  real = coder.decodeDouble(kReal);
  bytes = coder.decodeBytes(kBytes);
  coder.decodeEachEntry<Object>(
      kTable, [&](const String& key, const Ref<Object>& value) { table.set(key, value); });
}

void ArchivedThing::awakeAfterDecoding(Decoder&) {
  events.push_back("awake " + name.toStdString());
}

void ArchivedThing::abandonDecoding() {
  parts.clear();
  payload = nullptr;
  table.clear();
}

Ref<ArchivedThing> ArchivedThing::addPart(const char* partName) {
  auto part = make<ArchivedThing>(partName);
  part->whole = this;
  parts.push_back(part);
  return part;
}

}  // namespace tarnkit::test
