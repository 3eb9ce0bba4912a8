#pragma once

#include "tarnkit/patches/catalogue/Operators.h"

namespace tarnkit {

/// Computes with numbers: a chain of operators over one operand more than operations.
/// Made by its record; owned by its editor node. For one thread.
class HXRMathNode final : public OperatorsNode {
 public:
  static const HXRNodeClass kClass;
  explicit HXRMathNode(const HXRNodeClass& patchClass);
};

/// The text of an operator as the editor shows it; "" at or past the end.
String HXRStringForMathOperator(std::uint64_t index);

}  // namespace tarnkit
