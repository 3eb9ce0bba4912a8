#pragma once

#include <cstdint>
#include <span>
#include <vector>

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

  /// The count; null in a class that has put another kind of parameter in its place.
  HXRIndexParameter* numberOfOperationsParameter() const;
  /// The hidden parameters that choose the operators, in order.
  std::vector<Ref<HXRIndexParameter>> operatorParameters() const;
  /// This definition's own operands, in order.
  std::vector<Ref<HXRPrimitiveInputPort>> operandInputs();

  /// Adds or removes operators and operands at the end until they are as many as the count says.
  void trn_refreshPortsAndParameters();
  void parameterValueDidChange(HXRParameter& parameter) override;

 protected:
  std::unique_ptr<HXRBuiltState> builtState() const override;
  OperatorsNode(const HXRNodeClass& patchClass, const OperatorsDescription& description);

 private:
  void addOperator(std::int32_t index);
  void removeOperator(std::int32_t index);

  const OperatorsDescription& description_;
  std::int32_t operators_ = 0;
  std::int32_t operands_ = 0;
};

/// The text at the index, or "" at or past the end.
String operatorText(std::span<const char* const> operators, std::uint64_t index);

}  // namespace tarnkit
