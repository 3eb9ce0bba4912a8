#include "tarnkit/math/MXNumberExpression.h"

#include "tarnkit/platform/coding/Coder.h"

namespace tarnkit::detail {

const Class MXNumberExpression::kClass{"_MXNumberExpression", &MXExpression::kClass,
                                       &makeByDefault<MXNumberExpression>};

namespace {
constexpr Symbol kNumberKey("number");
}

Ref<MXExpression> MXNumberExpression::copy() const { return make<MXNumberExpression>(number_); }

Ref<MXExpression> MXNumberExpression::simplifiedExpressionWithEvaluator(const MXMathEvaluator*,
                                                                        MXError*) const {
  return Ref<MXExpression>(const_cast<MXNumberExpression*>(this));
}

void MXNumberExpression::encodeWithCoder(Encoder& coder) const {
  if (number_.isShortest()) {
    coder.encodeObject(Number::withDouble(number_.doubleValue()), kNumberKey);
  } else {
    coder.encodeString(number_.description(), kNumberKey);
  }
}

void MXNumberExpression::initWithCoder(Decoder& coder) {
  const auto value = coder.decodeObject(kNumberKey);
  if (const auto* number = as<Number>(value.get())) {
    number_ = MXNumber::fromNumber(*number);
  } else if (const auto* digits = as<StringObject>(value.get());
             digits && MXNumber::isNumberText(digits->view())) {
    number_ = MXNumber::fromText(digits->view());
  } else {
    coder.fail("a number expression without a number");
  }
}

TreeView MXNumberExpression::view(ExpressionNode& storage) const {
  storage = {NodeKind::number,
             Builtin::none,
             number_.isDecimal() ? ExpressionNode::kDecimal : std::uint16_t{0},
             1,
             {.number = number_.doubleValue()},
             0,
             sizeof number_};
  return {&storage, 0, reinterpret_cast<const char*>(&number_), sizeof number_, nullptr};
}

}  // namespace tarnkit::detail
