#include "tarnkit/render/PortValue.h"

#include <fmt/format.h>

#include <cmath>

#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/patches/HXRPrimitiveInputPort.h"
#include "tarnkit/platform/numbers/NumberText.h"
#include "tarnkit/render/Markup.h"
#include "tarnkit/render/NodeBox.h"

namespace tarnkit::detail {

namespace {

// Of a string it is the string itself, not a copy: it may be long.
String plainText(const PMRPrimitive& value) {
  switch (value.storageType()) {
    case PMRPrimitive::boolean:
      return String(value.booleanValue() ? "on" : "off");
    case PMRPrimitive::index:
      return String(fmt::format("{}", value.indexValue()));
    case PMRPrimitive::number:
      return String(numberText(value.numberValue()));
    case PMRPrimitive::radians:
      return String(numberText(value.radiansValue()) + " rad");
    case PMRPrimitive::degrees:
      return String(numberText(value.degreesValue()) + "°");
    case PMRPrimitive::color:
      return String(colorText(value.colorValue()));
    default:
      return value.stringValue();
  }
}

String textOf(const PMRPrimitive& value, const HXRPort* description) {
  if (const auto* input = as<HXRPrimitiveInputPort>(description)) {
    if (String label = input->labelForMappedValue(&value)) return label;
  }
  return plainText(value);
}

}  // namespace

PortValue valueOfPort(const HXPort& port, double room) {
  PortValue value;
  if (port.orientation() != HXOrientationInput) return value;
  const HXPatchPort* const patchPort = as<HXPatchPort>(port.resolvedPort());
  if (!patchPort) return value;
  const Ref<PMRPrimitive> primitive = patchPort->effectiveValue();
  if (!primitive) return value;
  value.isSet = static_cast<bool>(patchPort->staticValue());
  switch (primitive->storageType()) {
    case PMRPrimitive::nil:
      return value;
    case PMRPrimitive::boolean:
      value.kind = PortValue::Kind::boolean;
      value.boolean = primitive->booleanValue();
      break;
    case PMRPrimitive::color:
      value.kind = PortValue::Kind::color;
      value.color = primitive->colorValue();
      break;
    default:
      value.kind = PortValue::Kind::text;
      break;
  }
  value.text = Label(textOf(*primitive, patchPort->definition()), NodeBox::kValueFont, room);
  if (value.text.full.size() == 0) value.kind = PortValue::Kind::none;
  return value;
}

std::string numberText(float number) {
  if (std::isnan(number)) return "no number";
  if (std::isinf(number)) return number < 0 ? "−∞" : "∞";
  return shortestText(number);
}

std::string colorText(RGBA color) {
  std::string text;
  appendColor(text, color);
  if (!(color.alpha >= 1)) {
    const float alpha = color.alpha > 0 ? color.alpha : 0;
    text += fmt::format("{:02x}", std::lround(alpha * 255));
  }
  return text;
}

}  // namespace tarnkit::detail
