#include "tarnkit/render/PortValue.h"

#include <fmt/format.h>

#include <cmath>

#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tarnkit/patches/HXRPrimitiveInputPort.h"
#include "tarnkit/platform/NumberText.h"
#include "tarnkit/render/Markup.h"
#include "tarnkit/render/NodeBox.h"

namespace tarnkit::detail {

namespace {

constexpr int kLongestChain = 64;

// The string of the value itself is shared, not copied: it may be long.
String sharedText(const PMRPrimitive& value, const HXRPort* description) {
  if (const auto* input = as<HXRPrimitiveInputPort>(description)) {
    if (!input->mappedValues().empty()) {
      if (String label = input->labelForMappedValue(&value)) return label;
    }
  }
  if (value.storageType() == PMRPrimitive::string) return value.stringValue();
  return String(valueText(value));
}

}  // namespace

const HXPatchPort* patchPortOf(const HXPort& port) {
  const HXPort* at = &port;
  for (int links = 0; links < kLongestChain; ++links) {
    const auto* symbolic = as<HXSymbolicPort>(at);
    if (!symbolic) return as<HXPatchPort>(at);
    at = symbolic->port();
  }
  return nullptr;
}

PortValue valueOfPort(const HXPort& port, double room) {
  PortValue value;
  if (port.orientation() != HXOrientationInput) return value;
  const HXPatchPort* const patchPort = patchPortOf(port);
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
  value.text = Label(sharedText(*primitive, patchPort->definition()), NodeBox::kValueFont, room);
  if (value.text.full.size() == 0) value.kind = PortValue::Kind::none;
  return value;
}

std::string numberText(double number) {
  if (std::isnan(number)) return "no number";
  if (std::isinf(number)) return number < 0 ? "−∞" : "∞";
  return shortestText(static_cast<float>(number));
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

std::string valueText(const PMRPrimitive& value, const HXRPort* description) {
  if (description) return sharedText(value, description).toStdString();
  switch (value.storageType()) {
    case PMRPrimitive::nil:
      return {};
    case PMRPrimitive::boolean:
      return value.booleanValue() ? "on" : "off";
    case PMRPrimitive::index:
      return fmt::format("{}", value.indexValue());
    case PMRPrimitive::number:
      return numberText(value.numberValue());
    case PMRPrimitive::radians:
      return numberText(value.radiansValue()) + " rad";
    case PMRPrimitive::degrees:
      return numberText(value.degreesValue()) + "°";
    case PMRPrimitive::color:
      return colorText(value.colorValue());
    default:
      return value.stringValue().toStdString();
  }
}

}  // namespace tarnkit::detail
