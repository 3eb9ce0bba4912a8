#include "tarnkit/patches/catalogue/Operators.h"

namespace tarnkit {

void OperatorsNode::parameterValueDidChange(HXRParameter& parameter) {
  if (&parameter == parameterForKey(kCountKey)) trn_refreshPortsAndParameters();
}

void OperatorsNode::trn_refreshPortsAndParameters() {
  const Ref<HXRIndexParameter> count(as<HXRIndexParameter>(parameterForKey(kCountKey)));
  if (!count) return;
  rebuild([&] {
    refreshOperators(*count);
    buildCountedPorts(
        *this, description_.operands,
        [&] { return count->value() < 0 ? 0 : boundedCount(*count) + 1; },
        [](std::int32_t index) { return indexedText("Operand {}", index + 1); });
  });
}

// Names count from 1 while keys count from 0: the device knows the keys, the designer the names.
// The count is asked again after every step, because an observer of the step may change it.
void OperatorsNode::refreshOperators(const HXRIndexParameter& count) {
  constexpr const char* kKeyPattern = "Tarn.operator{}Parameter";
  for (;;) {
    const auto built = static_cast<std::int32_t>(parameters().size()) - 1;  // but the count itself
    const auto wanted = boundedCount(count);
    if (built < wanted) {
      const auto parameter = make<HXRIndexParameter>(indexedText("Operator {}", built + 1),
                                                     indexedText(kKeyPattern, built), true);
      parameter->setMaximumValue(static_cast<std::int32_t>(description_.operators.size()) - 1);
      addParameter(*parameter);
    } else if (built > wanted) {
      auto* const last = parameterForKey(indexedText(kKeyPattern, built - 1));
      if (!last) return;
      removeParameter(*last);
    } else {
      return;
    }
  }
}

String operatorText(std::span<const char* const> operators, std::uint64_t index) {
  return index < operators.size() ? String::interned(operators[index]) : String("");
}

}  // namespace tarnkit
