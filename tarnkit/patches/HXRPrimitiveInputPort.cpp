#include "tarnkit/patches/HXRPrimitiveInputPort.h"

namespace tarnkit {

HXRPrimitiveInputPort::HXRPrimitiveInputPort(String name, String uniqueKey,
                                             Ref<PMRPrimitive> defaultValue)
    : PortOf(std::move(name), std::move(uniqueKey)), defaultValue_(std::move(defaultValue)) {
  if (defaultValue_) defaultValue_->freeze();
}

void HXRPrimitiveInputPort::mapValue(Ref<PMRPrimitive> value, const String& toLabel) {
  if (toLabel.isNil()) return;
  requireOwn();
  if (value) {
    value->freeze();
    mappedValues_.set(toLabel, std::move(value));
  } else {
    mappedValues_.take(toLabel);
  }
}

std::vector<String> HXRPrimitiveInputPort::mappedValueLabels() const {
  std::vector<String> labels;
  labels.reserve(mappedValues_.size());
  for (const auto& entry : mappedValues_) labels.push_back(entry.key);
  return labels;
}

Ref<PMRPrimitive> HXRPrimitiveInputPort::mappedValueForLabel(const String& label) const {
  return label.isNil() ? nullptr : mappedValues_.get(label);
}

String HXRPrimitiveInputPort::labelForMappedValue(const PMRPrimitive* value) const {
  if (!value) return {};
  for (const auto& [label, mapped] : mappedValues_) {
    if (mapped->isEqual(*value)) return label;
  }
  return {};
}

void HXRPrimitiveInputPort::setLockToMappedValues(bool lock) {
  requireOwn();
  lockToMappedValues_ = lock;
}

}  // namespace tarnkit
