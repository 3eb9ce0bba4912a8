#pragma once

#include "tarnkit/math/MXExpression.h"

namespace tarnkit::detail {

/// A number as a tree. Archived under "number": as a number, or as a string of its digits where a
/// double would lose some.
class MXNumberExpression final : public MXExpression {
  TARNKIT_CLASS
 public:
  MXNumberExpression() = default;
  explicit MXNumberExpression(MXNumber number) : number_(std::move(number)) {}

  MXExpressionType expressionType() const override { return MXExpressionType::number; }
  MXNumber number() const override { return number_; }
  Ref<MXExpression> copy() const override;
  Ref<MXExpression> simplifiedExpressionWithEvaluator(const MXMathEvaluator* evaluator,
                                                      MXError* error) const override;
  void encodeWithCoder(Encoder& coder) const override;
  void initWithCoder(Decoder& coder) override;
  TreeView view(ExpressionNode& storage) const override;

 private:
  MXNumber number_;
};

}  // namespace tarnkit::detail
