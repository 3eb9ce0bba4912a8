#include "tarnkit/patches/PMRPrimitive.h"

#include <fmt/format.h>

#include <bit>
#include <cmath>
#include <limits>
#include <string_view>

#include "tarnkit/patches/HXArchivedKeys.h"
#include "tarnkit/platform/coding/Coder.h"
#include "tarnkit/platform/numbers/Number.h"
#include "tarnkit/platform/numbers/NumberText.h"
#include "tarnkit/platform/objects/Color.h"
#include "tarnkit/platform/system/Log.h"
#include "tarnkit/platform/text/ASCII.h"

namespace tarnkit {

const Class PMRPrimitive::kClass{"PMRPrimitive", &Object::kClass,
                                 &detail::makeByDefault<PMRPrimitive>};

namespace {

namespace key = archived::primitive;

constexpr double kPi = 3.141592653589793;
constexpr float kHalfTurn = 3.1415927F;
constexpr std::uint64_t kHashOffset = 31;

// What the conversion yields where the language leaves it undefined: the nearest integer that there
// is, and 0 for what is not a number.
std::int64_t truncated(float value) noexcept {
  constexpr float kLimit = 9223372036854775808.0F;
  if (std::isnan(value)) return 0;
  if (value >= kLimit) return std::numeric_limits<std::int64_t>::max();
  if (value < -kLimit) return std::numeric_limits<std::int64_t>::min();
  return static_cast<std::int64_t>(value);
}

// Negative values wrap as their signed truncation does.
std::uint64_t truncatedUnsigned(float value) noexcept {
  constexpr float kSignedLimit = 9223372036854775808.0F;
  constexpr float kLimit = 18446744073709551616.0F;
  if (value >= kLimit) return std::numeric_limits<std::uint64_t>::max();
  if (value >= kSignedLimit) return static_cast<std::uint64_t>(value);
  return static_cast<std::uint64_t>(truncated(value));
}

std::int32_t lowHalf(std::int64_t value) noexcept {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(static_cast<std::uint64_t>(value)));
}

std::size_t afterDigits(std::string_view text, std::size_t at) noexcept {
  while (at < text.size() && detail::isDigit(text[at])) ++at;
  return at;
}

/// Takes the next number out of `text`, skipping everything before its first digit, so that a minus
/// sign or a leading point is lost; 0 when there is none.
float scanComponent(std::string_view& text) noexcept {
  std::size_t start = 0;
  while (start < text.size() && !detail::isDigit(text[start])) ++start;
  text.remove_prefix(start);
  std::size_t end = afterDigits(text, 0);
  if (end < text.size() && text[end] == '.') end = afterDigits(text, end + 1);
  if (end < text.size() && (text[end] == 'e' || text[end] == 'E')) {
    std::size_t digits = end + 1;
    if (digits < text.size() && (text[digits] == '+' || text[digits] == '-')) ++digits;
    if (const auto after = afterDigits(text, digits); after > digits) end = after;
  }
  const float value = readFloat(text.substr(0, end));
  text.remove_prefix(end);
  return value;
}

RGBA scanColor(std::string_view text) noexcept {
  RGBA color;
  color.red = scanComponent(text);
  color.green = scanComponent(text);
  color.blue = scanComponent(text);
  color.alpha = scanComponent(text);
  return color;
}

std::uint64_t colorHash(const RGBA& color) noexcept {
  std::uint64_t hash = truncatedUnsigned(color.red * 255.0F + 31.0F);
  for (const float component : {color.green, color.blue, color.alpha}) {
    hash = truncatedUnsigned(static_cast<float>(hash * 31) + component * 255.0F);
  }
  return hash;
}

}  // namespace

Ref<PMRPrimitive> PMRPrimitive::primitiveWithNilValue() { return make<PMRPrimitive>(); }
Ref<PMRPrimitive> PMRPrimitive::primitiveWithBooleanValue(bool value) {
  auto primitive = make<PMRPrimitive>();
  primitive->setBooleanValue(value);
  return primitive;
}
Ref<PMRPrimitive> PMRPrimitive::primitiveWithIndexValue(std::int32_t value) {
  auto primitive = make<PMRPrimitive>();
  primitive->setIndexValue(value);
  return primitive;
}
Ref<PMRPrimitive> PMRPrimitive::primitiveWithNumberValue(float value) {
  auto primitive = make<PMRPrimitive>();
  primitive->setNumberValue(value);
  return primitive;
}
Ref<PMRPrimitive> PMRPrimitive::primitiveWithRadiansValue(float value) {
  auto primitive = make<PMRPrimitive>();
  primitive->setRadiansValue(value);
  return primitive;
}
Ref<PMRPrimitive> PMRPrimitive::primitiveWithDegreesValue(float value) {
  auto primitive = make<PMRPrimitive>();
  primitive->setDegreesValue(value);
  return primitive;
}
Ref<PMRPrimitive> PMRPrimitive::primitiveWithColorValue(RGBA value) {
  auto primitive = make<PMRPrimitive>();
  primitive->setColorValue(value);
  return primitive;
}
Ref<PMRPrimitive> PMRPrimitive::primitiveWithStringValue(String value) {
  auto primitive = make<PMRPrimitive>();
  primitive->setStringValue(value.isNil() ? String("") : std::move(value));
  return primitive;
}

void PMRPrimitive::setBooleanValue(bool value) {
  if (startChange(boolean)) payload_.boolean = value;
}
void PMRPrimitive::setIndexValue(std::int32_t value) {
  if (startChange(index)) payload_.index = value;
}
void PMRPrimitive::setNumberValue(float value) {
  if (startChange(number)) payload_.number = value;
}
void PMRPrimitive::setRadiansValue(float value) {
  if (startChange(radians)) payload_.number = value;
}
void PMRPrimitive::setDegreesValue(float value) {
  if (startChange(degrees)) payload_.number = value;
}
void PMRPrimitive::setColorValue(RGBA value) {
  if (startChange(color)) payload_.color = value;
}
void PMRPrimitive::setStringValue(String value) {
  if (startChange(string)) string_ = std::move(value);
}
void PMRPrimitive::clearStorage() { startChange(nil); }

bool PMRPrimitive::startChange(StorageType type) {
  if (frozen_) {
    Log::warning("PMRPrimitive", "A value that ports share cannot be changed");
    return false;
  }
  string_ = nullptr;
  type_ = static_cast<std::int32_t>(type);
  return true;
}

bool PMRPrimitive::booleanValue() const {
  switch (type_) {
    case boolean:
      return payload_.boolean;
    case index:
      return payload_.index != 0;
    case number:
    case radians:
    case degrees:
      return payload_.number != 0;
    case color:
      return payload_.color.red != 0 || payload_.color.green != 0 || payload_.color.blue != 0 ||
             payload_.color.alpha != 0;
    case string:
      return readBool(string_);
    default:
      return false;
  }
}

std::int32_t PMRPrimitive::indexValue() const {
  switch (type_) {
    case boolean:
    case color:
      return booleanValue() ? 1 : 0;
    case index:
      return payload_.index;
    case number:
    case radians:
    case degrees:
      return lowHalf(truncated(numberValue()));
    case string:
      return readInt32(string_);
    default:
      return 0;
  }
}

float PMRPrimitive::numberValue() const {
  switch (type_) {
    case boolean:
    case color:
      return booleanValue() ? 1.0F : 0.0F;
    case index:
      return static_cast<float>(payload_.index);
    case number:
      return payload_.number;
    case radians:
    case degrees:
      return radiansValue();
    case string:
      return readFloat(string_);
    default:
      return 0;
  }
}

float PMRPrimitive::radiansValue() const {
  switch (type_) {
    case boolean:
    case color:
      return booleanValue() ? kHalfTurn : 0.0F;
    case index:
      // The integer's bits are read as a float: the device does so, and both sides must agree.
      return std::bit_cast<float>(payload_.index);
    case number:
    case radians:
      return payload_.number;
    case degrees:
      return static_cast<float>(static_cast<double>(payload_.number / 180.0F) * kPi);
    case string:
      return readFloat(string_);
    default:
      return 0;
  }
}

float PMRPrimitive::degreesValue() const {
  switch (type_) {
    case boolean:
    case color:
      return booleanValue() ? 180.0F : 0.0F;
    case index:
    case number:
    case radians:
    case string:
      return static_cast<float>(static_cast<double>(radiansValue()) / kPi * 180);
    case degrees:
      return payload_.number;
    default:
      return 0;
  }
}

RGBA PMRPrimitive::colorValue() const {
  switch (type_) {
    case boolean:
    case index:
    case number:
    case radians:
    case degrees:
      return booleanValue() ? OIColorWhiteRGBA : OIColorBlackRGBA;
    case color:
      return payload_.color;
    case string:
      return scanColor(string_);
    default:
      return OIColorBlackRGBA;
  }
}

String PMRPrimitive::stringValue() const {
  switch (type_) {
    case boolean:
      return payload_.boolean ? "YES" : "NO";
    case index:
      return String(std::to_string(payload_.index));
    case number:
      return String(shortestText(payload_.number));
    case radians:
    case degrees:
      return String(percentG(static_cast<double>(degreesValue())) + "\u00B0");
    case color: {
      const RGBA& value = payload_.color;
      return String(fmt::format("RGBA ({:g} {:g} {:g} {:g})", value.red, value.green, value.blue,
                                value.alpha));
    }
    case string:
      return string_;
    default:
      return "nil";
  }
}

Ref<Object> PMRPrimitive::toObject() const {
  switch (type_) {
    case boolean:
      return Number::withBool(payload_.boolean);
    case index:
      return Number::withInt(payload_.index);
    case number:
      return Number::withFloat(payload_.number);
    case radians:
    case degrees:
      return Number::withFloat(radiansValue());
    case color: {
      const RGBA& value = payload_.color;
      return Color::colorWithRGBA(value.red, value.green, value.blue, value.alpha);
    }
    case string:
      return string_.object();
    default:
      return nullptr;
  }
}

Ref<PMRPrimitive> PMRPrimitive::copy() const {
  auto copy = make<PMRPrimitive>();
  if (type_ == kUnknownType) return copy;
  copy->type_ = type_;
  copy->payload_ = payload_;
  copy->string_ = string_;  // immutable, so the copy may share it
  return copy;
}

String PMRPrimitive::description() const {
  return String(fmt::format("<{}: {}, value: {}>", isa().name(), static_cast<const void*>(this),
                            stringValue().view()));
}

bool PMRPrimitive::isEqual(const Object& other) const {
  if (!other.isMemberOf(isa())) return false;
  const auto& primitive = static_cast<const PMRPrimitive&>(other);
  if (storageType() != primitive.storageType()) return false;
  switch (type_) {
    case boolean:
      return payload_.boolean == primitive.payload_.boolean;
    case index:
      return payload_.index == primitive.payload_.index;
    case number:
    case radians:
    case degrees:
      return payload_.number == primitive.payload_.number;
    case color:
      return payload_.color == primitive.payload_.color;
    case string:
      return string_ == primitive.string_;
    default:
      return true;
  }
}

std::uint64_t PMRPrimitive::hash() const {
  switch (type_) {
    case nil:
      return 0;
    case boolean:
      return (payload_.boolean ? 1U : 0U) + kHashOffset;
    case index:
      return static_cast<std::uint64_t>(std::int64_t{payload_.index}) + kHashOffset;
    case number:
    case radians:
    case degrees:
      return truncatedUnsigned(payload_.number * 65535.0F + static_cast<float>(kHashOffset));
    case color:
      return colorHash(payload_.color);
    case string:
      return string_.hash() + kHashOffset;
    default:
      return 1;
  }
}

void PMRPrimitive::encodeWithCoder(Encoder& coder) const {
  coder.encodeInt64(storageType(), key::kStorageType);
  switch (type_) {
    case boolean:
      coder.encodeBool(payload_.boolean, key::kBooleanValue);
      break;
    case index:
      coder.encodeInt(payload_.index, key::kIndexValue);
      break;
    case number:
    case radians:
    case degrees:
      coder.encodeFloat(payload_.number, key::kNumberValue);
      break;
    case color:
      coder.encodeFloat(payload_.color.red, key::kColorValue.red);
      coder.encodeFloat(payload_.color.green, key::kColorValue.green);
      coder.encodeFloat(payload_.color.blue, key::kColorValue.blue);
      coder.encodeFloat(payload_.color.alpha, key::kColorValue.alpha);
      break;
    case string:
      coder.encodeString(string_, key::kStringValue);
      break;
    default:
      break;
  }
}

void PMRPrimitive::initWithCoder(Decoder& coder) {
  const auto code = coder.decodeInt64(key::kStorageType);
  if (code < nil || code > PMRPrimitive::string) {
    type_ = kUnknownType;
    payload_.code = code;
    return;
  }
  type_ = static_cast<std::int32_t>(code);
  switch (type_) {
    case boolean:
      payload_.boolean = coder.decodeBool(key::kBooleanValue);
      break;
    case index:
      payload_.index = coder.decodeInt(key::kIndexValue);
      break;
    case number:
    case radians:
    case degrees:
      payload_.number = static_cast<float>(coder.decodeDouble(key::kNumberValue));
      break;
    case color: {
      RGBA value;
      value.red = coder.decodeFloat(key::kColorValue.red);
      value.green = coder.decodeFloat(key::kColorValue.green);
      value.blue = coder.decodeFloat(key::kColorValue.blue);
      value.alpha = coder.decodeFloat(key::kColorValue.alpha);
      payload_.color = value;
      break;
    }
    case string:
      string_ = coder.decodeString(key::kStringValue);
      break;
    default:
      break;
  }
}

}  // namespace tarnkit
