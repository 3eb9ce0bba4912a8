#pragma once

#include <cstdint>
#include <span>

#include "tarnkit/patches/HXRPrimitiveInputPort.h"
#include "tarnkit/patches/catalogue/CountedPorts.h"

namespace tarnkit {

/// What tells the operator patches apart.
struct OperatorsDescription {
  /// The texts of the operators, by the value of an operator parameter.
  std::span<const char* const> operators;
  CountedPorts operands;
};

/// The operands of a patch, which are inputs with the default of `makeOperand`.
constexpr CountedPorts operandsOf(Ref<HXRPort> (*makeOperand)(String name, String uniqueKey)) {
  return {HXOrientationInput, "Operands", "Tarn.operand{}Input", makeOperand};
}

/// A chain of binary operators over numbered operands: the common part of Math, Logic and
/// Conditional. A count parameter says how many operations there are; each has a hidden parameter
/// that chooses the operator, and there is one operand more than operations.
///
/// Operators and operands that stay keep their values and connections when the count changes.
/// Owned by its editor node. For one thread; a change of the count costs what it adds or removes.
class OperatorsNode : public HXRNode {
 public:
  static constexpr const char* kCountKey = "Tarn.numberOfOperationsParameter";

  /// Adds or removes operators and operands at the end until they are as many as the count says.
  void trn_refreshPortsAndParameters();
  void parameterValueDidChange(HXRParameter& parameter) override;

 protected:
  OperatorsNode(const HXRNodeClass& patchClass, const OperatorsDescription& description)
      : HXRNode(patchClass), description_(description) {}

 private:
  void refreshOperators(const HXRIndexParameter& count);

  const OperatorsDescription& description_;
};

/// The text at the index, or "" at or past the end.
String operatorText(std::span<const char* const> operators, std::uint64_t index);

}  // namespace tarnkit
