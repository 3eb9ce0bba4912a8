#pragma once

#include <vector>

#include "tarnkit/patches/HXRTypedPorts.h"
#include "tarnkit/patches/PMRPrimitive.h"
#include "tarnkit/platform/collections/OrderedMap.h"

namespace tarnkit {

/// An input for scalar values: with an optional default, and an optional list of named values that
/// the editor offers as a menu.
class HXRPrimitiveInputPort : public detail::PortOf<HXRPrimitiveInputPort, HXRValueInputPort> {
 public:
  static const HXRPortClass kClass;
  /// Without a default the port's value is undefined (null) until connected or set. The default is
  /// frozen.
  HXRPrimitiveInputPort(String name, String uniqueKey, Ref<PMRPrimitive> defaultValue = nullptr);

  /// Null when the port has none. Shared by every port of the description, hence frozen.
  const Ref<PMRPrimitive>& defaultValue() const noexcept { return defaultValue_; }

  /// A new label is appended, a known one keeps its place; a null value removes the label; a nil
  /// label does nothing. The value is frozen. Throws std::logic_error for a shared description, as
  /// the next setter does.
  void mapValue(Ref<PMRPrimitive> value, const String& toLabel);
  /// Null when the label is nil or unknown.
  Ref<PMRPrimitive> mappedValueForLabel(const String& label) const;
  /// The first label, in their order, of an equal value (kind matters); nil when there is none.
  String labelForMappedValue(const PMRPrimitive* value) const;
  /// The labels, in the order in which they were first mapped.
  std::vector<String> mappedValueLabels() const;
  /// Label to value, in the same order, as they are now.
  OrderedMap<Ref<PMRPrimitive>> mappedValues() const { return mappedValues_; }
  bool lockToMappedValues() const noexcept { return lockToMappedValues_; }
  void setLockToMappedValues(bool lock);
  /// Whether the editor offers nothing but the labels: the flag is set and there is a label.
  bool effectiveLockToMappedValues() const noexcept {
    return lockToMappedValues_ && !mappedValues_.empty();
  }

 private:
  Ref<PMRPrimitive> defaultValue_;
  OrderedMap<Ref<PMRPrimitive>> mappedValues_;
  bool lockToMappedValues_ = false;
};

/// A primitive input whose value is an angle.
class HXRAngleInputPort final : public detail::PortOf<HXRAngleInputPort, HXRPrimitiveInputPort> {
 public:
  static const HXRPortClass kClass;
  using PortOf::PortOf;
};

}  // namespace tarnkit
