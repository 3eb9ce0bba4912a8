#include "tarnkit/math/MXMathStringTokenizer.h"

#include <algorithm>

#include "tarnkit/math/MathText.h"
#include "tarnkit/math/TokenScanner.h"

namespace tarnkit {

const Class MXMathStringTokenizer::kClass{"MXMathStringTokenizer", &Object::kClass};

Ref<MXMathStringTokenizer> MXMathStringTokenizer::tokenizerWithString(
    std::string_view string, const Ref<MXMathOperatorSet>& operatorSet, MXError* error) {
  auto tokenizer = make<MXMathStringTokenizer>();
  return tokenizer->initWithString(string, operatorSet, error) ? tokenizer : nullptr;
}

bool MXMathStringTokenizer::initWithString(std::string_view string,
                                           const Ref<MXMathOperatorSet>& operatorSet,
                                           MXError* error) {
  operatorSet_ = operatorSet ? operatorSet : MXMathOperatorSet::defaultOperatorSet();
  std::string storage;
  if (!detail::prepareText(string, storage)) {
    MXError::set(error, MXErrorCode::invalidFormat, "the expression is too long");
    return false;
  }
  const detail::OperatorTable& table = operatorSet_->table();
  auto sink = [&](const detail::ScannedToken& scanned) {
    auto token = MXMathStringToken::mathStringTokenWithToken(
        String(detail::tokenText(scanned, string, table)), scanned.type);
    if (token && scanned.row != detail::OperatorTable::kNoRow) {
      token->resolveToOperatorFunction(table.row(scanned.row).info->function());
    }
    appendToken(token);
    return true;
  };
  detail::TokenScanner scanner(string, table, sink);
  if (scanner.run()) return true;
  MXError::set(error, detail::scanError(scanner.failure(), string));
  return false;
}

void MXMathStringTokenizer::appendToken(const Ref<MXMathStringToken>& token) {
  didParseToken(token);
  if (token) tokens_.push_back(token);
}

void MXMathStringTokenizer::didParseToken(const Ref<MXMathStringToken>&) {}

Ref<MXMathStringToken> MXMathStringTokenizer::nextObject() {
  auto token = peekNextObject();
  if (token) ++tokenIndex_;
  return token;
}

Ref<MXMathStringToken> MXMathStringTokenizer::peekNextObject() const {
  return tokenIndex_ < tokens_.size() ? tokens_[tokenIndex_] : nullptr;
}

std::vector<Ref<MXMathStringToken>> MXMathStringTokenizer::allObjects() const {
  return {tokens_.begin() + static_cast<std::ptrdiff_t>(tokenIndex_), tokens_.end()};
}

const std::vector<char32_t>& MXMathStringTokenizer::operatorCharacters() {
  if (operatorCharacters_.empty() && operatorSet_) {
    for (const auto& each : *operatorSet_) {
      for (const String& token : each->tokens()) {
        for (std::size_t at = 0; at < token.size();) {
          operatorCharacters_.push_back(detail::nextCodePoint(token, at));
        }
      }
    }
    std::sort(operatorCharacters_.begin(), operatorCharacters_.end());
    operatorCharacters_.erase(std::unique(operatorCharacters_.begin(), operatorCharacters_.end()),
                              operatorCharacters_.end());
  }
  return operatorCharacters_;
}

}  // namespace tarnkit
