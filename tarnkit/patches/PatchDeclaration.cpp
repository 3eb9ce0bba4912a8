#include "tarnkit/patches/PatchDeclaration.h"

#include <fmt/format.h>

#include <stdexcept>

namespace tarnkit {

namespace value {

Ref<PMRPrimitive> boolean(bool value) { return PMRPrimitive::primitiveWithBooleanValue(value); }
Ref<PMRPrimitive> index(std::int32_t value) { return PMRPrimitive::primitiveWithIndexValue(value); }
Ref<PMRPrimitive> number(float value) { return PMRPrimitive::primitiveWithNumberValue(value); }
Ref<PMRPrimitive> color(const RGBA& value) { return PMRPrimitive::primitiveWithColorValue(value); }
Ref<PMRPrimitive> string(const char* value) {
  return PMRPrimitive::primitiveWithStringValue(value ? String::interned(value) : String());
}
Angle radians(float value) { return {PMRPrimitive::primitiveWithRadiansValue(value)}; }
Angle degrees(float value) { return {PMRPrimitive::primitiveWithDegreesValue(value)}; }

}  // namespace value

String PatchDeclaration::literal(const char* text) const {
  if (!text) fail("its declaration leaves out a name or a key");
  return String::interned(text);
}

void PatchDeclaration::fail(const char* why) const {
  throw std::logic_error(fmt::format("[{}] {}", definition_.isa().name(), why));
}

// A port whose key another one takes stays in its group, where nobody finds it by its key any more.
void PatchDeclaration::finish() const {
  const auto& layout = definition_.portLayout();
  std::uint32_t ports = 0;
  for (const auto* const side : {&layout.inputs(), &layout.outputs()}) {
    for (const auto& entry : side->portGroupsInForce()) {
      for (const auto& port : entry.value->ports()) {
        if (port->uniqueKey().view().empty()) fail("its declaration gives a port an empty key");
        ++ports;
      }
    }
  }
  if (ports != layout.ports().size()) fail("its declaration gives a key to two ports");
  for (const auto& parameter : definition_.parametersInForce()) {
    if (parameter->uniqueKey().view().empty()) {
      fail("its declaration gives a parameter an empty key");
    }
    if (definition_.parameterForKey(parameter->uniqueKey()) != parameter.get()) {
      fail("its declaration gives a key to two parameters");
    }
  }
}

void PatchDeclaration::group(const char* groupKey) {
  group_ = groupKey ? String::interned(groupKey) : String();
}

HXRPrimitiveInputPort& PatchDeclaration::in(const char* name, const char* key,
                                            Ref<PMRPrimitive> defaultValue) {
  return add(make<HXRPrimitiveInputPort>(literal(name), literal(key), std::move(defaultValue)),
             HXOrientationInput);
}

HXRAngleInputPort& PatchDeclaration::in(const char* name, const char* key,
                                        const value::Angle& defaultValue) {
  return add(make<HXRAngleInputPort>(literal(name), literal(key), defaultValue.value),
             HXOrientationInput);
}

HXRPrimitiveInputPort& PatchDeclaration::choice(const char* name, const char* key,
                                                std::int32_t defaultIndex,
                                                std::initializer_list<const char*> labels) {
  auto& port = in(name, key, value::index(defaultIndex));
  std::int32_t next = 0;
  for (const char* const label : labels) {
    port.mapValue(value::index(next++), literal(label));
  }
  port.setLockToMappedValues(true);
  return port;
}

HXRPrimitiveOutputPort& PatchDeclaration::out(const char* name, const char* key) {
  return out<HXRPrimitiveOutputPort>(name, key);
}

template <class Parameter, class Value>
Parameter& PatchDeclaration::addParameter(const char* name, const char* key, Value defaultValue,
                                          bool hidden) {
  const auto parameter = make<Parameter>(literal(name), literal(key), hidden);
  parameter->setValue(std::move(defaultValue));
  definition_.addParameter(*parameter);
  return *parameter;
}

HXRBooleanParameter& PatchDeclaration::parameter(const char* name, const char* key,
                                                 bool defaultValue) {
  return addParameter<HXRBooleanParameter>(name, key, defaultValue);
}

HXRStringParameter& PatchDeclaration::parameter(const char* name, const char* key,
                                                const char* defaultValue, std::int32_t displayStyle,
                                                bool hidden) {
  auto& parameter = addParameter<HXRStringParameter>(
      name, key, defaultValue ? String::interned(defaultValue) : String(), hidden);
  parameter.setDisplayStyle(displayStyle);
  return parameter;
}

HXRColorParameter& PatchDeclaration::parameter(const char* name, const char* key,
                                               const RGBA& defaultValue) {
  return addParameter<HXRColorParameter>(name, key, defaultValue);
}

HXRImageParameter& PatchDeclaration::imageParameter(const char* name, const char* key) {
  return addParameter<HXRImageParameter>(name, key, Ref<Object>());
}

HXRIndexParameter& PatchDeclaration::parameter(const char* name, const char* key,
                                               std::int32_t defaultValue, std::int32_t minimum,
                                               std::int32_t maximum, bool hidden) {
  auto& parameter = addParameter<HXRIndexParameter>(name, key, defaultValue, hidden);
  parameter.setMinimumValue(minimum);
  parameter.setMaximumValue(maximum);
  return parameter;
}

HXRNumberParameter& PatchDeclaration::parameter(const char* name, const char* key,
                                                float defaultValue, float minimum, float maximum) {
  auto& parameter = addParameter<HXRNumberParameter>(name, key, defaultValue);
  parameter.setMinimumValue(minimum);
  parameter.setMaximumValue(maximum);
  return parameter;
}

}  // namespace tarnkit
