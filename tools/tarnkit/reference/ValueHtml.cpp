#include "tools/tarnkit/reference/ValueHtml.h"

#include <fmt/format.h>

#include <cmath>

#include "tarnkit/patches/HXRPrimitiveInputPort.h"
#include "tarnkit/patches/HXRValueParameters.h"
#include "tarnkit/platform/objects/Overloaded.h"
#include "tools/tarnkit/reference/Html.h"

namespace tarnkit::tool {

namespace {

constexpr const char* kNone = "<span class=\"none\">none</span>";

const char* onOff(bool value) { return value ? "On" : "Off"; }

unsigned byteOf(float component) {
  if (!(component > 0)) return 0;
  return component >= 1 ? 255 : static_cast<unsigned>(std::lround(component * 255));
}

std::string colorHtml(RGBA color) {
  const std::string hex = hexText(color);
  return fmt::format("<span class=\"swatch\" style=\"--color:{0}\">{0}</span>", hex);
}

/// A label with the value behind it, unless they read the same.
std::string labelledHtml(const String& label, const PMRPrimitive* value) {
  std::string name = nameHtml(label);
  const std::string html = valueHtml(value);
  if (name == html) return name;
  return fmt::format("{} <span class=\"stands\">{}</span>", name, html);
}

}  // namespace

std::string valueHtml(const PMRPrimitive* value) {
  if (!value) return kNone;
  switch (value->storageType()) {
    case PMRPrimitive::boolean:
      return onOff(value->booleanValue());
    case PMRPrimitive::index:
      return fmt::format("{}", value->indexValue());
    case PMRPrimitive::number:
      return fmt::format("{}", value->numberValue());
    case PMRPrimitive::radians:
      return fmt::format("{} rad", value->radiansValue());
    case PMRPrimitive::degrees:
      return fmt::format("{}°", value->degreesValue());
    case PMRPrimitive::color:
      return colorHtml(value->colorValue());
    case PMRPrimitive::string:
      return codeHtml(value->stringValue());
    default:
      return kNone;
  }
}

std::string defaultHtml(const HXRPrimitiveInputPort& port) {
  const auto* const value = port.defaultValue().get();
  const String label = port.labelForMappedValue(value);
  return label.isNil() ? valueHtml(value) : labelledHtml(label, value);
}

std::string choicesHtml(const HXRPrimitiveInputPort& port) {
  if (port.mappedValues().empty()) return {};
  std::string html = "<ul class=\"choices\">";
  for (const auto& [label, value] : port.mappedValues()) {
    html += fmt::format("<li>{}</li>", labelledHtml(label, value.get()));
  }
  return html + "</ul>";
}

std::string defaultHtml(const HXRParameter& parameter) {
  const auto number = [](const auto* numeric) {
    return fmt::format("{}", numeric->defaultValue());
  };
  return std::visit(
      Overloaded{
          [](const HXRParameter*) { return std::string(kNone); },
          [&](const HXRIndexParameter* index) { return number(index); },
          [&](const HXRNumberParameter* real) { return number(real); },
          [](const HXRBooleanParameter* boolean) {
            return std::string(onOff(boolean->defaultValue()));
          },
          [](const HXRColorParameter* color) { return colorHtml(color->defaultValue()); },
          [](const HXRStringParameter* text) {
            return text->defaultValue().isNil() ? std::string(kNone)
                                                : codeHtml(text->defaultValue());
          },
          [](const HXRImageParameter*) { return std::string(kNone); },
      },
      parameter.kind());
}

std::string boundsText(const HXRParameter& parameter) {
  if (const auto* const index = as<HXRIndexParameter>(&parameter)) {
    return fmt::format("{} to {}", index->minimumValue(), index->maximumValue());
  }
  if (const auto* const number = as<HXRNumberParameter>(&parameter)) {
    return fmt::format("{} to {}", number->minimumValue(), number->maximumValue());
  }
  return {};
}

std::string hexText(RGBA color) {
  std::string text = fmt::format("#{:02X}{:02X}{:02X}", byteOf(color.red), byteOf(color.green),
                                 byteOf(color.blue));
  if (const unsigned alpha = byteOf(color.alpha); alpha < 255) {
    text += fmt::format("{:02X}", alpha);
  }
  return text;
}

}  // namespace tarnkit::tool
