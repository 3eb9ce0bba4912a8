#pragma once

#include <cstdint>

#include "tarnkit/math/MXError.h"
#include "tarnkit/math/MXMathOperator.h"
#include "tarnkit/math/MXNumber.h"
#include "tarnkit/platform/objects/Object.h"

namespace tarnkit {

enum class MXTokenType : std::uint8_t { number = 0, op = 1, function = 2, variable = 3 };

/// One token of an expression text. Immutable but for the resolution of an operator. One thread at
/// a time may resolve it.
class MXMathStringToken final : public Object {
  TARNKIT_CLASS
 public:
  /// A number token reads its value from the text (one that is no number logs "supposedly invalid
  /// number: …" and is 0). An operator token asks the default operator set: null when no operator
  /// has that token, ambiguous when several have.
  static Ref<MXMathStringToken> mathStringTokenWithToken(const String& token, MXTokenType type);

  /// The text: lower-cased for an operator, the bare name for a variable.
  const String& token() const noexcept { return token_; }
  MXTokenType tokenType() const noexcept { return type_; }
  /// 0 for any other token than a number.
  const MXNumber& numberValue() const noexcept { return number_; }

  /// The operator; null while ambiguous and for other tokens.
  const Ref<MXMathOperator>& operatorInfo() const noexcept { return operator_; }
  bool isAmbiguous() const noexcept { return ambiguous_; }
  /// The operator's function name; "invalid" while ambiguous.
  String operatorType() const;
  /// The operator's function name; "" while ambiguous.
  String operatorFunction() const;
  /// -1 while ambiguous.
  std::int64_t operatorPrecedence() const noexcept;
  /// Unknown while ambiguous.
  MXOperatorArity operatorArity() const noexcept;
  /// Left while ambiguous.
  MXOperatorAssociativity operatorAssociativity() const noexcept;
  /// Makes it the default set's operator of the function; ambiguous when there is none.
  void resolveToOperatorFunction(const String& function);

  /// The text, with "$" before a variable's.
  String description() const override;
  /// The description and, for an operator, its function, arity, associativity and precedence.
  String debugDescription() const;

  /// Where it stands in the text, in bytes of UTF-8, with the sign of a variable, or its quotes,
  /// and the "0x" of a number; what the tokenizer puts in has a length of 0. The offset is
  /// `MXError::kNoOffset` in a text that is not UTF-8, and of a token made without a text.
  std::size_t offset() const noexcept { return offset_; }
  std::size_t length() const noexcept { return length_; }
  void setPlace(std::size_t offset, std::size_t length) noexcept {
    offset_ = offset;
    length_ = length;
  }

  MXMathStringToken(String token, MXTokenType type) : token_(std::move(token)), type_(type) {}

 private:
  String token_;
  MXTokenType type_;
  bool ambiguous_ = false;
  std::size_t offset_ = MXError::kNoOffset;
  std::size_t length_ = 0;
  MXNumber number_;
  Ref<MXMathOperator> operator_;
};

}  // namespace tarnkit
