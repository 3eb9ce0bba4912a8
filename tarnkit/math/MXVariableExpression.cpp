#include "tarnkit/math/MXVariableExpression.h"

#include "tarnkit/platform/coding/Coder.h"

namespace tarnkit::detail {

const Class MXVariableExpression::kClass{"_MXVariableExpression", &MXExpression::kClass,
                                         &makeByDefault<MXVariableExpression>};

namespace {
constexpr Symbol kVariableKey("variable");
}

Ref<MXExpression> MXVariableExpression::copy() const {
  return make<MXVariableExpression>(variable_);
}

Ref<MXExpression> MXVariableExpression::simplifiedExpressionWithEvaluator(const MXMathEvaluator*,
                                                                          MXError*) const {
  return Ref<MXExpression>(const_cast<MXVariableExpression*>(this));
}

void MXVariableExpression::encodeWithCoder(Encoder& coder) const {
  coder.encodeString(variable_, kVariableKey);
}

void MXVariableExpression::initWithCoder(Decoder& coder) {
  const auto checked = variableExpressionWithVariable(coder.decodeString(kVariableKey));
  if (checked) {
    variable_ = checked->variable();
  } else {
    coder.fail("a variable expression without a name");
  }
}

TreeView MXVariableExpression::view(ExpressionNode& storage) const {
  const auto name = variable_.view();
  storage = {
      NodeKind::variable, Builtin::none, 0, 1, {}, 0, static_cast<std::uint32_t>(name.size())};
  storage.ordinal = 0;
  return {&storage, 0, name.data(), name.size(), nullptr};
}

}  // namespace tarnkit::detail
