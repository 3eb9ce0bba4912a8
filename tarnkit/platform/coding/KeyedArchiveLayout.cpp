#include "tarnkit/platform/coding/KeyedArchiveLayout.h"

#include <fmt/format.h>

#include <algorithm>

#include "tarnkit/platform/coding/KeyedArchiveNames.h"
#include "tarnkit/platform/numbers/Number.h"
#include "tarnkit/platform/objects/Null.h"

namespace tarnkit::detail {

KeyedArchiveLayout::~KeyedArchiveLayout() = default;

void KeyedArchiveLayout::clear() {
  writer_.clear();
  symbols_.clear();
  serials_ = 0;
  memberKeys_.clear();
  classes_.forgetWritten();
  isEncoding_ = false;
}

void KeyedArchiveLayout::growSymbols(std::uint32_t number) {
  symbols_.resize(std::max<std::size_t>(Symbol::count(), number + std::size_t{1}));
}

KeyedArchiveLayout::Index KeyedArchiveLayout::scalar(const Number& number) {
  switch (number.kind()) {
    case Number::Kind::boolean:
      return writer_.addBool(number.boolValue());
    case Number::Kind::float32:
      return writer_.addReal32(number.floatValue());
    case Number::Kind::float64:
      return writer_.addReal64(number.doubleValue());
    default:
      return writer_.addInt(number.int64Value());
  }
}

KeyedArchiveLayout::Index KeyedArchiveLayout::memberKey(std::size_t number) {
  while (memberKeys_.size() <= number) {
    memberKeys_.push_back(
        writer_.addString(fmt::format("{}{}", archive::kNumberedMember, memberKeys_.size())));
  }
  return memberKeys_[number];
}

const Class& KeyedArchiveLayout::classOfCollection(CodingKind kind) noexcept {
  if (kind == CodingKind::set) return Set::kClass;
  return kind == CodingKind::orderedSet ? OrderedSet::kClass : Array::kClass;
}

void KeyedArchiveLayout::encodeContents(const Object& object) {
  if (&object.isa() != &Null::kClass) object.encodeWithCoder(*coder_);
}

}  // namespace tarnkit::detail
