#include "tarnkit/patches/catalogue/Operators.h"

namespace tarnkit {

namespace {
// Names count from 1 while keys count from 0: the device knows the keys, the designer the names.
constexpr const char* kOperatorKeyPattern = "Tarn.operator{}Parameter";
}  // namespace

OperatorsNode::OperatorsNode(const HXRNodeClass& patchClass,
                             const OperatorsDescription& description)
    : HXRNode(patchClass), description_(description) {
  const auto* const model = static_cast<const OperatorsNode*>(prototype());
  if (!model) return;
  operators_ = model->operators_;
  operands_ = model->operands_;
}

HXRIndexParameter* OperatorsNode::numberOfOperationsParameter() const {
  return as<HXRIndexParameter>(parameterForKey(kCountKey));
}

std::vector<Ref<HXRIndexParameter>> OperatorsNode::operatorParameters() const {
  std::vector<Ref<HXRIndexParameter>> list;
  for (std::int32_t i = 0; i < operators_; ++i) {
    auto* const parameter =
        as<HXRIndexParameter>(parameterForKey(indexedText(kOperatorKeyPattern, i)));
    if (parameter) list.push_back(Ref<HXRIndexParameter>(parameter));
  }
  return list;
}

std::vector<Ref<HXRPrimitiveInputPort>> OperatorsNode::operandInputs() {
  return builtPorts<HXRPrimitiveInputPort>(*this, description_.operands, operands_);
}

void OperatorsNode::parameterValueDidChange(HXRParameter& parameter) {
  if (&parameter == numberOfOperationsParameter()) trn_refreshPortsAndParameters();
}

void OperatorsNode::trn_refreshPortsAndParameters() {
  const Ref<HXRIndexParameter> count(numberOfOperationsParameter());
  if (!count) return;
  rebuild([&] {
    followCount(
        operators_, [&] { return boundedCount(*count); },
        [&](std::int32_t index) { addOperator(index); },
        [&](std::int32_t index) { removeOperator(index); });
    buildCountedPorts(
        *this, description_.operands, operands_,
        [&] { return count->value() < 0 ? 0 : boundedCount(*count) + 1; },
        [](std::int32_t index) { return indexedText("Operand {}", index + 1); });
  });
}

void OperatorsNode::addOperator(std::int32_t index) {
  const auto parameter = make<HXRIndexParameter>(indexedText("Operator {}", index + 1),
                                                 indexedText(kOperatorKeyPattern, index), true);
  parameter->setMaximumValue(static_cast<std::int32_t>(description_.operators.size()) - 1);
  addParameter(*parameter);
}

void OperatorsNode::removeOperator(std::int32_t index) {
  auto* const last = parameterForKey(indexedText(kOperatorKeyPattern, index));
  if (last) removeParameter(*last);
}

String operatorText(std::span<const char* const> operators, std::uint64_t index) {
  return index < operators.size() ? String::interned(operators[index]) : String("");
}

std::unique_ptr<HXRBuiltState> OperatorsNode::builtState() const {
  return builtStateOf(*this, &OperatorsNode::operators_, &OperatorsNode::operands_);
}

}  // namespace tarnkit
