#pragma once

#include <string_view>

#include "tarnkit/math/MXError.h"
#include "tarnkit/math/MXMathStringTokenizer.h"

namespace tarnkit {

class MXExpression;

/// Turns the tokens of a tokenizer into an expression tree.
///
/// The parentheses and argument lists give groups; in each group the operator of highest precedence
/// is folded with its operands until one term is left. Costs time linear in the number of tokens;
/// nesting is bounded by memory only. `MXExpression::expressionFromString` is the faster road from
/// a text to the same tree. For one thread.
class MXParser final : public Object {
  TARNKIT_CLASS
 public:
  /// A parser over the string's tokens with the default operator set; null on an error.
  static Ref<MXParser> parserWithString(std::string_view string, MXError* error);
  /// Keeps the tokenizer and its operator set; null without a tokenizer.
  static Ref<MXParser> parserWithTokenizer(const Ref<MXMathStringTokenizer>& tokenizer,
                                           MXError* error);
  explicit MXParser(Ref<MXMathStringTokenizer> tokenizer) : tokenizer_(std::move(tokenizer)) {}

  /// The tree of all tokens from the first on; null on the first error.
  Ref<MXExpression> parsedExpressionWithError(MXError* error);
  const Ref<MXMathOperatorSet>& operatorSet() const noexcept { return tokenizer_->operatorSet(); }
  /// Left when the operator set has no such operator.
  MXOperatorAssociativity associativityForOperatorFunction(const String& function) const;

 private:
  Ref<MXMathStringTokenizer> tokenizer_;
};

}  // namespace tarnkit
