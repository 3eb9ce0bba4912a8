#include "tarnkit/math/MXMathStringToken.h"

#include <fmt/format.h>

#include "tarnkit/math/MathText.h"

namespace tarnkit {

const Class MXMathStringToken::kClass{"MXMathStringToken", &Object::kClass};

Ref<MXMathStringToken> MXMathStringToken::mathStringTokenWithToken(const String& token,
                                                                   MXTokenType type) {
  if (type != MXTokenType::op) {
    auto made = make<MXMathStringToken>(token, type);
    if (type == MXTokenType::number) made->number_ = MXNumber::fromText(token);
    return made;
  }
  const auto operators = MXMathOperator::infosForOperatorToken(token);
  if (operators.empty()) return nullptr;
  auto made = make<MXMathStringToken>(detail::lowerCase(token), type);
  made->ambiguous_ = operators.size() > 1;
  if (!made->ambiguous_) made->operator_ = operators.front();
  return made;
}

String MXMathStringToken::operatorType() const {
  return operator_ ? operator_->function() : String(MXOperatorInvalid);
}

String MXMathStringToken::operatorFunction() const {
  return operator_ ? operator_->function() : String("");
}

std::int64_t MXMathStringToken::operatorPrecedence() const noexcept {
  return operator_ ? operator_->precedence() : -1;
}

MXOperatorArity MXMathStringToken::operatorArity() const noexcept {
  return operator_ ? operator_->arity() : MXOperatorArity::unknown;
}

MXOperatorAssociativity MXMathStringToken::operatorAssociativity() const noexcept {
  return operator_ ? operator_->associativity() : MXOperatorAssociativity::left;
}

void MXMathStringToken::resolveToOperatorFunction(const String& function) {
  operator_ = MXMathOperator::infoForOperatorFunction(function);
  ambiguous_ = !operator_;
}

String MXMathStringToken::description() const {
  return type_ == MXTokenType::variable ? String("$" + token_.toStdString()) : token_;
}

String MXMathStringToken::debugDescription() const {
  if (type_ != MXTokenType::op) return description();
  constexpr const char* kArities[] = {"unknown arity", "unary", "binary"};
  return String(
      fmt::format("{} {{{}, {}, {}, precedence {}}}", token_.view(), operatorType().view(),
                  kArities[static_cast<int>(operatorArity())],
                  operatorAssociativity() == MXOperatorAssociativity::left ? "left" : "right",
                  operatorPrecedence()));
}

}  // namespace tarnkit
