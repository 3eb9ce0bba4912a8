#pragma once

#include "tarnkit/patches/catalogue/Operators.h"

namespace tarnkit {

/// Computes with booleans: a chain of operators over one operand more than operations.
/// Made by its record; owned by its editor node. For one thread.
class HXRLogicNode final : public OperatorsNode {
 public:
  static const HXRNodeClass kClass;
  explicit HXRLogicNode(const HXRNodeClass& patchClass);
};

/// The text of an operator as the editor shows it; "" at or past the end.
String HXRStringForLogicOperator(std::uint64_t index);

}  // namespace tarnkit
