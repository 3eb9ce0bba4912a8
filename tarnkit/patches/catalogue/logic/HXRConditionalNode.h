#pragma once

#include "tarnkit/patches/catalogue/Operators.h"

namespace tarnkit {

/// Compares two numbers by one operator: its count is hidden and pinned to 1.
/// Made by its record; owned by its editor node. For one thread.
class HXRConditionalNode final : public OperatorsNode {
 public:
  static const HXRNodeClass kClass;
  explicit HXRConditionalNode(const HXRNodeClass& patchClass);
};

/// The text of an operator as the editor shows it; "" at or past the end.
String HXRStringForConditionalOperator(std::uint64_t index);

}  // namespace tarnkit
