#include "tarnkit/compare/HXStateValue.h"

#include <fmt/format.h>

#include <cmath>
#include <cstring>
#include <variant>

#include "tarnkit/model/HXImageStore.h"
#include "tarnkit/model/HXParameterKinds.h"
#include "tarnkit/patches/PMRPrimitive.h"
#include "tarnkit/platform/objects/Overloaded.h"
#include "tarnkit/platform/text/JSONWriter.h"

namespace tarnkit {

namespace {

constexpr char kOfStore = '+';
constexpr char kOfItsOwn = '-';

template <class T>
void appendRaw(std::string& bits, const T& value) {
  char raw[sizeof(T)];
  std::memcpy(raw, &value, sizeof(T));
  bits.append(raw, sizeof(T));
}

std::string bitsOf(const PMRPrimitive& primitive) {
  std::string bits;
  const auto type = primitive.storageType();
  appendRaw(bits, type);
  switch (type) {
    case PMRPrimitive::boolean:
      bits += primitive.booleanValue() ? '1' : '0';
      break;
    case PMRPrimitive::index:
      appendRaw(bits, primitive.indexValue());
      break;
    case PMRPrimitive::number:
      appendRaw(bits, primitive.numberValue());
      break;
    case PMRPrimitive::radians:
      appendRaw(bits, primitive.radiansValue());
      break;
    case PMRPrimitive::degrees:
      appendRaw(bits, primitive.degreesValue());
      break;
    case PMRPrimitive::color: {
      const RGBA color = primitive.colorValue();
      for (const float part : {color.red, color.green, color.blue, color.alpha}) {
        appendRaw(bits, part);
      }
      break;
    }
    case PMRPrimitive::string:
      bits += primitive.stringValue().view();
      break;
    default:
      break;
  }
  return bits;
}

std::string quoted(std::string_view text) {
  std::string result = "\"";
  JSONWriter::appendEscaped(result, text);
  return result + "\"";
}

std::string colorText(const RGBA& color) {
  std::string text = "#";
  for (const float part : {color.red, color.green, color.blue, color.alpha}) {
    if (!(part >= 0 && part <= 1)) {
      return fmt::format("rgba({}, {}, {}, {})", color.red, color.green, color.blue, color.alpha);
    }
    text += fmt::format("{:02x}", static_cast<int>(std::lround(part * 255)));
  }
  return text;
}

std::string textOf(const PMRPrimitive& primitive) {
  switch (primitive.storageType()) {
    case PMRPrimitive::boolean:
      return primitive.booleanValue() ? "true" : "false";
    case PMRPrimitive::index:
      return fmt::format("{}", primitive.indexValue());
    case PMRPrimitive::number:
      return fmt::format("{}", primitive.numberValue());
    case PMRPrimitive::radians:
      return fmt::format("{} rad", primitive.radiansValue());
    case PMRPrimitive::degrees:
      return fmt::format("{}°", primitive.degreesValue());
    case PMRPrimitive::color:
      return colorText(primitive.colorValue());
    case PMRPrimitive::string:
      return quoted(primitive.stringValue().view());
    default:
      return "nil";
  }
}

}  // namespace

HXStateValue HXStateValue::of(const PMRPrimitive& primitive) {
  HXStateValue value;
  value.bits_ = bitsOf(primitive);
  value.object_ = primitive.copy();
  return value;
}

HXStateValue HXStateValue::of(const HXParameter& parameter, const HXImageStore& store) {
  Ref<PMRPrimitive> primitive;
  Ref<HXImageStoreEntry> entry;
  bool isImage = false;
  std::visit(Overloaded{
                 [&](const HXIndexParameter* index) {
                   primitive = PMRPrimitive::primitiveWithIndexValue(index->value());
                 },
                 [&](const HXNumberParameter* number) {
                   primitive = PMRPrimitive::primitiveWithNumberValue(number->value());
                 },
                 [&](const HXBooleanParameter* boolean) {
                   primitive = PMRPrimitive::primitiveWithBooleanValue(boolean->value());
                 },
                 [&](const HXStringParameter* string) {
                   primitive = string->value().isNil()
                                   ? PMRPrimitive::primitiveWithNilValue()
                                   : PMRPrimitive::primitiveWithStringValue(string->value());
                 },
                 [&](const HXColorParameter* color) {
                   primitive = PMRPrimitive::primitiveWithColorValue(color->value());
                 },
                 [&](const HXImageParameter* image) {
                   isImage = true;
                   entry = Ref<HXImageStoreEntry>(image->imageEntry());
                 },
             },
             parameter.kind());
  HXStateValue value;
  if (!isImage) {
    value.bits_ = bitsOf(*primitive);
    value.object_ = primitive;
    return value;
  }
  value.bits_ = "image";
  if (entry) {
    value.bits_ += store.imageEntryForKey(entry->key()) == entry.get() ? kOfStore : kOfItsOwn;
    value.bits_ += entry->key().view();
  }
  value.object_ = Ref<Object>(entry.get());
  return value;
}

std::string HXStateValue::description() const {
  if (const auto* primitive = as<PMRPrimitive>(object_.get())) return textOf(*primitive);
  if (const auto* entry = as<HXImageStoreEntry>(object_.get())) {
    return fmt::format("image {}", entry->key().view());
  }
  return isNone() ? "none" : "no image";
}

Ref<PMRPrimitive> HXStateValue::primitive() const {
  const auto* primitive = as<PMRPrimitive>(object_.get());
  return primitive ? primitive->copy() : nullptr;
}

String HXStateValue::imageKey() const {
  const auto* entry = as<HXImageStoreEntry>(object_.get());
  return entry ? entry->key() : String();
}

bool HXStateValue::giveTo(HXParameter& parameter, const HXImageStore& store) const {
  const auto* primitive = as<PMRPrimitive>(object_.get());
  const auto type = primitive ? primitive->storageType() : -1;
  return std::visit(
      Overloaded{
          [&](HXIndexParameter* index) {
            if (type != PMRPrimitive::index) return false;
            index->setValue(primitive->indexValue());
            return true;
          },
          [&](HXNumberParameter* number) {
            if (type != PMRPrimitive::number) return false;
            number->setValue(primitive->numberValue());
            return true;
          },
          [&](HXBooleanParameter* boolean) {
            if (type != PMRPrimitive::boolean) return false;
            boolean->setValue(primitive->booleanValue());
            return true;
          },
          [&](HXStringParameter* string) {
            if (type != PMRPrimitive::string && type != PMRPrimitive::nil) return false;
            string->setValue(type == PMRPrimitive::nil ? String() : primitive->stringValue());
            return true;
          },
          [&](HXColorParameter* color) {
            if (type != PMRPrimitive::color) return false;
            color->setValue(primitive->colorValue());
            return true;
          },
          [&](HXImageParameter* image) {
            if (primitive || isNone()) return false;
            auto entry = as<HXImageStoreEntry>(object_);
            if (entry && bits_[sizeof("image") - 1] == kOfStore) {
              if (auto* own = store.imageEntryForKey(entry->key())) {
                entry = Ref<HXImageStoreEntry>(own);
              }
            }
            image->setImageEntry(entry);
            return true;
          },
      },
      parameter.kind());
}

}  // namespace tarnkit
