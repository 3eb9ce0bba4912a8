#pragma once

#include "tarnkit/math/MXExpression.h"

namespace tarnkit::detail {

/// A variable as a tree. Archived under "variable".
class MXVariableExpression final : public MXExpression {
  TARNKIT_CLASS
 public:
  MXVariableExpression() = default;
  /// The name is neither empty nor preceded by "$".
  explicit MXVariableExpression(String variable) : variable_(std::move(variable)) {}

  MXExpressionType expressionType() const override { return MXExpressionType::variable; }
  String variable() const override { return variable_; }
  Ref<MXExpression> copy() const override;
  Ref<MXExpression> simplifiedExpressionWithEvaluator(const MXMathEvaluator* evaluator,
                                                      MXError* error) const override;
  void encodeWithCoder(Encoder& coder) const override;
  void initWithCoder(Decoder& coder) override;
  TreeView view(ExpressionNode& storage) const override;

 private:
  String variable_;
};

}  // namespace tarnkit::detail
