#include "tarnkit/platform/coding/Coder.h"

#include <fmt/format.h>

namespace tarnkit {

Coder::~Coder() = default;

void Encoder::encodeMembers(const OrderedSet& set, const Symbol& key, CodingKind kind) {
  auto at = set.begin();
  encodeCollection(
      kind, set.count(), [&](std::size_t) -> const Object* { return (at++)->get(); }, key);
}

String Decoder::decodeString(const Symbol& key) { return String(decode<StringObject>(key)); }

void Decoder::checkAtEnd(void (*)(Decoder&)) {}

bool Decoder::countMade(std::uint64_t) { return true; }

void Decoder::failForClass(const Object& object, const Symbol& key, const Class& wanted) {
  fail(fmt::format("{}: a {} where a {} is expected", key.text(), object.isa().name(),
                   wanted.name()));
}

}  // namespace tarnkit
