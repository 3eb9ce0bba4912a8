#pragma once

#include <concepts>
#include <cstdint>
#include <initializer_list>

#include "tarnkit/patches/HXRNode.h"
#include "tarnkit/patches/HXRPrimitiveInputPort.h"
#include "tarnkit/patches/HXRTypedPorts.h"
#include "tarnkit/patches/HXRValueParameters.h"

namespace tarnkit {

/// The default values of a declaration, by kind.
namespace value {

/// An angle as a default value; made by `radians` and `degrees`.
struct Angle {
  Ref<PMRPrimitive> value;
};
/// The primitives of the kinds that are no angles.
Ref<PMRPrimitive> boolean(bool value);
Ref<PMRPrimitive> index(std::int32_t value);
Ref<PMRPrimitive> number(float value);
Ref<PMRPrimitive> color(const RGBA& value);
Ref<PMRPrimitive> string(const char* value);
/// An input with such a default is an angle input.
Angle radians(float value);
Angle degrees(float value);

}  // namespace value

/// How a definition class states its ports and parameters: one call a row, in their order.
///
///     [](PatchDeclaration& patch) {
///       patch.in("Progress", "Tarn.input", value::number(0));
///       patch.group("Value Range");
///       patch.in("Value Min", "Tarn.outputMinInput", value::number(0));
///       patch.in("Value Max", "Tarn.outputMaxInput", value::number(1));
///       patch.group();
///       patch.out("Value", "Tarn.output");
///     }
///
/// Runs once per class, on the prototype; names and keys are literals and shared by everybody. A
/// null name or key, an empty key, and a key that two ports or two parameters have throw
/// std::logic_error. Lives during the declaration only. For one thread.
class PatchDeclaration {
 public:
  explicit PatchDeclaration(HXRNode& definition) : definition_(definition) {}

  /// What follows goes into the group of this key; without a key, into the default group.
  void group(const char* groupKey = nullptr);

  /// A primitive input; without a default its value is undefined until connected or set.
  HXRPrimitiveInputPort& in(const char* name, const char* key,
                            Ref<PMRPrimitive> defaultValue = nullptr);
  HXRAngleInputPort& in(const char* name, const char* key, const value::Angle& defaultValue);
  /// A primitive input whose index chooses among these, counted from 0; the editor offers them as a
  /// menu.
  HXRPrimitiveInputPort& choice(const char* name, const char* key, std::int32_t defaultIndex,
                                std::initializer_list<const char*> labels);
  /// An input of another class.
  template <class Port>
  Port& in(const char* name, const char* key) {
    return add(make<Port>(literal(name), literal(key)), HXOrientationInput);
  }
  HXRPrimitiveOutputPort& out(const char* name, const char* key);
  /// An output of another class.
  template <class Port>
  Port& out(const char* name, const char* key) {
    return add(make<Port>(literal(name), literal(key)), HXOrientationOutput);
  }

  HXRBooleanParameter& parameter(const char* name, const char* key, bool defaultValue);
  /// A null default is nil.
  HXRStringParameter& parameter(const char* name, const char* key, const char* defaultValue,
                                std::int32_t displayStyle = 0, bool hidden = false);
  HXRColorParameter& parameter(const char* name, const char* key, const RGBA& defaultValue);
  HXRImageParameter& imageParameter(const char* name, const char* key);
  HXRIndexParameter& parameter(const char* name, const char* key, std::int32_t defaultValue,
                               std::int32_t minimum, std::int32_t maximum, bool hidden = false);
  HXRNumberParameter& parameter(const char* name, const char* key, float defaultValue,
                                float minimum, float maximum);

  /// The prototype, as the C++ class that its record makes. Throws std::logic_error when that is
  /// another one: the record gives no `constructPatch`, or the wrong one.
  template <std::derived_from<HXRNode> Definition>
  Definition& definition() {
    auto* const definition = dynamic_cast<Definition*>(&definition_);
    if (!definition) fail("its definitions are no objects of the C++ class that it declares");
    return *definition;
  }

  /// Ends the declaration: holds what it has brought, by its rows or by the definition's own class,
  /// to what is said of keys above.
  void finish() const;

 private:
  /// The text of a name or key, shared by everybody. Throws std::logic_error when there is none.
  String literal(const char* text) const;
  [[noreturn]] void fail(const char* why) const;
  template <class Port>
  Port& add(const Ref<Port>& port, std::int32_t orientation) {
    if (port->orientation() != orientation) fail("its declaration mistakes an output for an input");
    definition_.addPort(*port, group_);
    return *port;
  }
  template <class Parameter, class Value>
  Parameter& addParameter(const char* name, const char* key, Value defaultValue,
                          bool hidden = false);

  HXRNode& definition_;
  String group_;  // nil: the default group
};

}  // namespace tarnkit
