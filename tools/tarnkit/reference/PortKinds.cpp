#include "tools/tarnkit/reference/PortKinds.h"

#include "tarnkit/patches/HXRPrimitiveInputPort.h"
#include "tarnkit/patches/HXRTypedPorts.h"
#include "tarnkit/patches/HXRValueParameters.h"
#include "tarnkit/platform/objects/Overloaded.h"

namespace tarnkit::tool {

namespace {

struct PortKind {
  const Class* portClass;
  std::string_view kind;
};

// A base stands behind what is derived from it.
const PortKind kPortKinds[] = {
    {&HXRAngleInputPort::kClass, "Angle"},
    {&HXRPrimitiveInputPort::kClass, "Primitive"},
    {&HXRPrimitiveOutputPort::kClass, "Primitive"},
    {&HXRArrayInputPort::kClass, "Array"},
    {&HXRArrayOutputPort::kClass, "Array"},
    {&HXRDictionaryInputPort::kClass, "Dictionary"},
    {&HXRDictionaryOutputPort::kClass, "Dictionary"},
    {&HXRImageInputPort::kClass, "Image"},
    {&HXRImageOutputPort::kClass, "Image"},
    {&HXRFilterInputPort::kClass, "Filter"},
    {&HXRFilterOutputPort::kClass, "Filter"},
    {&HXRViewInputPort::kClass, "View"},
    {&HXRViewOutputPort::kClass, "View"},
    {&HXRValueInputPort::kClass, "Any value"},
    {&HXRValueOutputPort::kClass, "Any value"},
    {&HXRGestureInputPort::kClass, "Gesture"},
    {&HXRGestureOutputPort::kClass, "Gesture"},
    {&HXRInteractionInputPort::kClass, "Interaction"},
    {&HXRInteractionOutputPort::kClass, "Interaction"},
    {&HXRFeedbackInputPort::kClass, "Feedback"},
    {&HXRFeedbackOutputPort::kClass, "Feedback"},
};

constexpr KindDescription kDescriptions[] = {
    {"Primitive",
     "a number, an index, an angle, a color, a text, or on and off; each can be read as every "
     "other"},
    {"Boolean", "a primitive that starts out as on or off"},
    {"Index", "a primitive that starts out as a whole number, often one of several named choices"},
    {"Number", "a primitive that starts out as a number"},
    {"Angle", "a primitive that is read as an angle"},
    {"Color", "a primitive that starts out as a color"},
    {"Text", "a primitive that starts out as text"},
    {"Any value", "whatever a value output gives: primitives, images, arrays and the rest"},
    {"Array", "a list of values"},
    {"Dictionary", "values under keys"},
    {"Image", "a picture"},
    {"Filter", "a filter for images, or a chain of them"},
    {"View", "a group of views"},
    {"Gesture", "a gesture; a view takes several, a gesture belongs to one view"},
    {"Interaction", "an interaction; a view takes several, an interaction belongs to one view"},
    {"Feedback", "the link between a State Output and its State Inputs"},
};

std::string_view kindOfDefault(const PMRPrimitive& value) {
  switch (value.storageType()) {
    case PMRPrimitive::boolean:
      return "Boolean";
    case PMRPrimitive::index:
      return "Index";
    case PMRPrimitive::number:
      return "Number";
    case PMRPrimitive::radians:
    case PMRPrimitive::degrees:
      return "Angle";
    case PMRPrimitive::color:
      return "Color";
    case PMRPrimitive::string:
      return "Text";
    default:
      return "Primitive";
  }
}

}  // namespace

std::string_view kindOf(const HXRPort& port) {
  for (const auto& [portClass, kind] : kPortKinds) {
    if (!port.isKindOf(*portClass)) continue;
    const auto* const input = as<HXRPrimitiveInputPort>(&port);
    if (kind == "Primitive" && input && input->defaultValue()) {
      return kindOfDefault(*input->defaultValue());
    }
    return kind;
  }
  return "Other";
}

std::string_view kindOf(const HXRParameter& parameter) {
  using namespace std::string_view_literals;
  return std::visit(Overloaded{
                        [](const HXRParameter*) { return "Other"sv; },
                        [](const HXRNumberParameter*) { return "Number"sv; },
                        [](const HXRBooleanParameter*) { return "Boolean"sv; },
                        [](const HXRIndexParameter*) { return "Index"sv; },
                        [](const HXRStringParameter*) { return "Text"sv; },
                        [](const HXRColorParameter*) { return "Color"sv; },
                        [](const HXRImageParameter*) { return "Image"sv; },
                    },
                    parameter.kind());
}

bool isExclusiveKind(std::string_view kind) {
  constexpr std::string_view kExclusive[] = {"Array", "Dictionary", "Image",       "Filter",
                                             "View",  "Gesture",    "Interaction", "Feedback"};
  for (const auto exclusive : kExclusive) {
    if (kind == exclusive) return true;
  }
  return false;
}

std::span<const KindDescription> kindDescriptions() { return kDescriptions; }

}  // namespace tarnkit::tool
