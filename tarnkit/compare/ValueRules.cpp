#include <fmt/format.h>

#include <cmath>

#include "tarnkit/compare/CheckRules.h"
#include "tarnkit/compare/HXAddresses.h"
#include "tarnkit/model/HXParameterKinds.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/patches/HXRPrimitiveInputPort.h"
#include "tarnkit/platform/numbers/RealText.h"
#include "tarnkit/platform/objects/Overloaded.h"

namespace tarnkit::detail {

namespace {

using Code = HXFindingCode;

template <class Parameter>
void compareWithBounds(CheckReport& report, Parameter& parameter) {
  const auto least = parameter.minimumValue();
  const auto most = parameter.maximumValue();
  if ((least == 0 && most == 0) || least > most) return;  // without bounds
  const auto value = parameter.value();
  if (!(value < least) && !(value > most)) return;
  report.add(Code::parameterBounds, parameter,
             fmt::format("the value {} is not between {} and {}", value, least, most),
             fmt::format("set it to {}", value < least ? least : most));
}

void findOutOfBounds(CheckReport& report, HXParameter& parameter) {
  std::visit(Overloaded{
                 [&](HXIndexParameter* index) { compareWithBounds(report, *index); },
                 [&](HXNumberParameter* number) { compareWithBounds(report, *number); },
                 [](auto*) {},
             },
             parameter.kind());
}

void findNoNumber(CheckReport& report, HXParameter& parameter) {
  const auto kind = parameter.kind();
  const auto* number = std::get_if<HXNumberParameter*>(&kind);
  if (!number || std::isfinite((*number)->value())) return;
  report.add(Code::valueNoNumber, parameter, fmt::format("the value is {}", (*number)->value()));
}

bool canBeShown(const RGBA& color) {
  for (const float part : {color.red, color.green, color.blue, color.alpha}) {
    if (!(part >= 0 && part <= 1)) return false;
  }
  return true;
}
std::string colorSentence(const RGBA& color) {
  return fmt::format("the colour ({}, {}, {}, {}) has parts that are not between 0 and 1",
                     color.red, color.green, color.blue, color.alpha);
}

void findColor(CheckReport& report, HXParameter& parameter) {
  const auto kind = parameter.kind();
  const auto* color = std::get_if<HXColorParameter*>(&kind);
  if (!color || canBeShown((*color)->value())) return;
  report.add(Code::valueColor, parameter, colorSentence((*color)->value()));
}

void findStaticColor(CheckReport& report, HXPatchPort& port) {
  const PMRPrimitive& value = *port.staticValue();
  if (value.storageType() != PMRPrimitive::color || canBeShown(value.colorValue())) return;
  report.add(Code::valueColor, port, colorSentence(value.colorValue()));
}

bool isNumber(const PMRPrimitive& value) {
  const auto type = value.storageType();
  return type == PMRPrimitive::index || type == PMRPrimitive::number ||
         type == PMRPrimitive::radians || type == PMRPrimitive::degrees;
}

void findStaticNoNumber(CheckReport& report, HXPatchPort& port) {
  const PMRPrimitive& value = *port.staticValue();
  if (!isNumber(value) || std::isfinite(value.numberValue())) return;
  report.add(Code::valueNoNumber, port, fmt::format("the value is {}", value.numberValue()));
}

// As the platform reads a number: what follows it does not count.
bool beginsWithNumber(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || (text.front() >= '\t' && text.front() <= '\r'))) {
    text.remove_prefix(1);
  }
  if (!text.empty() && (text.front() == '+' || text.front() == '-')) text.remove_prefix(1);
  double number = 0;
  return detail::readReal(text.data(), text.data() + text.size(), number).ec !=
         std::errc::invalid_argument;
}

void findNoNumberText(CheckReport& report, HXPatchPort& port) {
  const PMRPrimitive& value = *port.staticValue();
  const auto* input = as<HXRPrimitiveInputPort>(port.definition());
  const PMRPrimitive* usual = input ? input->defaultValue().get() : nullptr;
  if (value.storageType() != PMRPrimitive::string || !usual || !isNumber(*usual) ||
      beginsWithNumber(value.stringValue().view())) {
    return;
  }
  report.add(Code::valueNoNumberText, port,
             fmt::format("the port takes a number, and the text \"{}\" is none",
                         HXAddresses::escaped(value.stringValue().view().substr(0, 80))));
}

// A choice counts by what it reads as: a number 2 chooses what the index 2 does.
void findNoChoice(CheckReport& report, HXPatchPort& port) {
  const auto* input = as<HXRPrimitiveInputPort>(port.definition());
  if (!input || !input->effectiveLockToMappedValues()) return;
  const PMRPrimitive& value = *port.staticValue();
  std::string choices;
  for (const auto& choice : input->mappedValues()) {
    if (choice.value->isEqual(value)) return;
    if (isNumber(*choice.value) && isNumber(value) &&
        choice.value->numberValue() == value.numberValue()) {
      return;
    }
    if (!choices.empty()) choices += ", ";
    choices += fmt::format("{} ({})", choice.value->stringValue().view(), choice.key.view());
  }
  report.add(Code::valueNoChoice, port,
             fmt::format("the value {} is none of the choices",
                         HXAddresses::escaped(value.stringValue().view().substr(0, 80))),
             "choose one of " + choices);
}

constexpr CheckRule<HXParameter> kParameters[] = {
    {Code::parameterBounds, findOutOfBounds},
    {Code::valueNoNumber, findNoNumber},
    {Code::valueColor, findColor},
};
constexpr CheckRule<HXPatchPort> kValues[] = {
    {Code::valueNoChoice, findNoChoice},
    {Code::valueNoNumber, findStaticNoNumber},
    {Code::valueNoNumberText, findNoNumberText},
    {Code::valueColor, findStaticColor},
};

}  // namespace

constinit const CheckRules kValueRules{.values = kValues, .parameters = kParameters};

}  // namespace tarnkit::detail
