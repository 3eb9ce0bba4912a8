#include "tarnkit/patches/catalogue/Operators.h"

#include "tarnkit/patches/catalogue/CountedPorts.h"

namespace tarnkit {

void OperatorsNode::parameterValueDidChange(HXRParameter& parameter) {
  if (&parameter == parameterForKey(kCountKey)) trn_refreshPortsAndParameters();
}

void OperatorsNode::trn_refreshPortsAndParameters() {
  const auto* const count = as<HXRIndexParameter>(parameterForKey(kCountKey));
  if (!count) return;
  const auto operations = boundedCount(*count);
  refreshOperators(operations);
  refreshOperands(count->value() < 0 ? 0 : operations + 1);
}

void OperatorsNode::refreshOperators(std::int32_t count) {
  // Names count from 1 while keys count from 0: the device knows the keys, the designer the names.
  constexpr const char* kKeyPattern = "Tarn.operator{}Parameter";
  const auto built = static_cast<std::int32_t>(parameters().size()) - 1;  // but the count itself
  for (std::int32_t i = built; i > count; --i) {
    if (auto* const last = parameterForKey(indexedText(kKeyPattern, i - 1))) {
      removeParameter(*last);
    }
  }
  for (std::int32_t i = built; i < count; ++i) {
    const auto parameter = make<HXRIndexParameter>(indexedText("Operator {}", i + 1),
                                                   indexedText(kKeyPattern, i), true);
    parameter->setMaximumValue(static_cast<std::int32_t>(description_.operators.size()) - 1);
    addParameter(*parameter);
  }
}

void OperatorsNode::refreshOperands(std::int32_t count) {
  constexpr const char* kKeyPattern = "Tarn.operand{}Input";
  const String group = String::interned("Operands");
  const auto* const operands = portLayout().inputs().portGroupForKey(group);
  const auto built = operands ? static_cast<std::int32_t>(operands->ports().count()) : 0;
  for (std::int32_t i = built; i > count; --i) {
    if (auto* const last = portForKey(indexedText(kKeyPattern, i - 1))) removePort(*last);
  }
  for (std::int32_t i = built; i < count; ++i) {
    addPort(
        *make<HXRPrimitiveInputPort>(indexedText("Operand {}", i + 1), indexedText(kKeyPattern, i),
                                     description_.operandDefault()),
        group);
  }
}

String operatorText(std::span<const char* const> operators, std::uint64_t index) {
  return index < operators.size() ? String::interned(operators[index]) : String("");
}

}  // namespace tarnkit
