#include "tarnkit/math/MXParser.h"

#include "tarnkit/math/MXExpression.h"
#include "tarnkit/math/TermReduction.h"

namespace tarnkit {

const Class MXParser::kClass{"MXParser", &Object::kClass};

Ref<MXParser> MXParser::parserWithString(std::string_view string, MXError* error) {
  return parserWithTokenizer(MXMathStringTokenizer::tokenizerWithString(string, error), error);
}

Ref<MXParser> MXParser::parserWithTokenizer(const Ref<MXMathStringTokenizer>& tokenizer, MXError*) {
  return tokenizer ? make<MXParser>(tokenizer) : nullptr;
}

Ref<MXExpression> MXParser::parsedExpressionWithError(MXError* error) {
  tokenizer_->reset();
  const auto tokens = tokenizer_->allObjects();
  while (tokenizer_->nextObject()) {
  }
  detail::TreeBuilder tree(tokenizer_->text());
  detail::TermReduction reduction(tokens, *this, tree);
  return reduction.reduce(error) ? MXExpression::expressionWithTree(tree) : nullptr;
}

MXOperatorAssociativity MXParser::associativityForOperatorFunction(const String& function) const {
  const auto info = operatorSet()->operatorForFunction(function);
  return info ? info->associativity() : MXOperatorAssociativity::left;
}

}  // namespace tarnkit
