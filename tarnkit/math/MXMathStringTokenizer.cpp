#include "tarnkit/math/MXMathStringTokenizer.h"

#include <algorithm>

#include "tarnkit/math/MathText.h"
#include "tarnkit/math/TokenScanner.h"

namespace tarnkit {

const Class MXMathStringTokenizer::kClass{"MXMathStringTokenizer", &Object::kClass};

/// Makes a token object of each token of the scanner.
struct MXMathStringTokenizer::Sink {
  MXMathStringTokenizer& tokenizer;
  std::string_view text;
  const detail::OperatorTable& table;

  template <MXTokenType Type>
  bool take(const detail::ScannedToken& scanned) {
    auto token = MXMathStringToken::mathStringTokenWithToken(
        String(detail::tokenText(scanned, text, table)), Type);
    if (token && scanned.row != detail::OperatorTable::kNoRow) {
      token->resolveToOperatorFunction(table.row(scanned.row).info->function());
    }
    if (token) tokenizer.appendToken(token);
    return true;
  }
};

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
  Sink sink{*this, string, table};
  detail::TokenScanner scanner(string, table, sink);
  const bool isRead = scanner.run();
  appendToken(nullptr);
  if (!isRead) MXError::set(error, detail::scanError(scanner.failure(), string));
  return isRead;
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
