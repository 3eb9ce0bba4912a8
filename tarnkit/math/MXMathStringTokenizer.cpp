#include "tarnkit/math/MXMathStringTokenizer.h"

#include <algorithm>
#include <unordered_set>

#include "tarnkit/math/MathText.h"
#include "tarnkit/math/TokenScannerReaders.h"

namespace tarnkit {

const Class MXMathStringTokenizer::kClass{"MXMathStringTokenizer", &Object::kClass};

namespace {

/// Hands the tokens of the text to the sink that `makeSink` makes of the text as it is scanned, and
/// of whether that is the text as it was given.
template <class MakeSink>
bool scan(std::string_view string, const detail::OperatorTable& table, MakeSink makeSink,
          MXError* error) {
  const char* const given = string.data();
  std::string storage;
  if (!detail::prepareText(string, storage)) {
    MXError::set(error, MXErrorCode::invalidFormat, "the expression is too long");
    return false;
  }
  const bool isAsGiven = string.data() == given;
  auto sink = makeSink(string, isAsGiven);
  detail::TokenScanner scanner(string, table, sink);
  if (scanner.run()) return true;
  MXError::set(error, detail::scanError(scanner.failure(), string));
  if (error && !isAsGiven) error->removePlace();
  return false;
}

detail::TextPlace placeOf(std::string_view text, MXTokenType type,
                          const detail::ScannedToken& token) noexcept {
  return detail::wholePlace(text, type, {token.offset(), token.length()});
}

/// Keeps the names of the variables.
struct VariableSink {
  std::string_view text;
  const detail::OperatorTable& table;
  std::vector<String>& names;
  std::unordered_set<String> known{};

  template <MXTokenType Type>
  bool take(const detail::ScannedToken& scanned) {
    if constexpr (Type == MXTokenType::variable) {
      const auto [name, isNew] = known.emplace(detail::tokenText(scanned, text, table));
      if (isNew) names.push_back(*name);
    }
    return true;
  }
};

/// Shows the tokens to a visitor.
struct VisitorSink {
  std::string_view text;
  const detail::OperatorTable& table;
  FunctionRef<void(const MXTokenText&)> visit;
  bool isAsGiven;

  template <MXTokenType Type>
  bool take(const detail::ScannedToken& scanned) {
    MXTokenText shown{
        Type, text.substr(scanned.offset(), scanned.length()), {}, MXError::kNoOffset, 0};
    if (isAsGiven) {
      const auto place = placeOf(text, Type, scanned);
      shown.offset = place.offset;
      shown.length = place.length;
    }
    std::string storage;
    if (Type == MXTokenType::op || scanned.form != detail::TokenForm::plain) {
      storage = detail::tokenText(scanned, text, table);
      shown.token = storage;
    }
    if constexpr (Type == MXTokenType::op) {
      shown.function = scanned.row == detail::OperatorTable::kNoRow
                           ? std::string_view(MXOperatorInvalid)
                           : table.row(scanned.row).info->function().view();
    }
    visit(shown);
    return true;
  }
};

}  // namespace

/// Makes a token object of each token of the scanner.
struct MXMathStringTokenizer::Sink {
  MXMathStringTokenizer& tokenizer;
  std::string_view text;
  const detail::OperatorTable& table;
  bool isAsGiven;

  template <MXTokenType Type>
  bool take(const detail::ScannedToken& scanned) {
    auto token = MXMathStringToken::mathStringTokenWithToken(
        String(detail::tokenText(scanned, text, table)), Type);
    if (token && scanned.row != detail::OperatorTable::kNoRow) {
      token->resolveToOperatorFunction(table.row(scanned.row).info->function());
    }
    if (!token) return true;
    if (isAsGiven) {
      const auto place = placeOf(text, Type, scanned);
      token->setPlace(place.offset, place.length);
    }
    tokenizer.appendToken(token);
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
  // Whoever watches the tokens may change operators.
  const auto kept = operatorSet_->keptTable();
  const detail::OperatorTable& table = *kept;
  const bool isRead = scan(
      string, table,
      [&](std::string_view text, bool isAsGiven) {
        if (isAsGiven) text_ = text;
        return Sink{*this, text, table, isAsGiven};
      },
      error);
  appendToken(nullptr);
  return isRead;
}

std::vector<String> MXMathStringTokenizer::variableNames(std::string_view string, MXError* error) {
  const detail::OperatorTable& table = MXMathOperatorSet::defaultOperatorSet()->table();
  std::vector<String> names;
  const bool isRead = scan(
      string, table,
      [&](std::string_view text, bool) {
        return VariableSink{text, table, names};
      },
      error);
  if (!isRead) names.clear();
  return names;
}

bool MXMathStringTokenizer::eachToken(std::string_view string,
                                      FunctionRef<void(const MXTokenText&)> visit, MXError* error) {
  const auto table = MXMathOperatorSet::defaultOperatorSet()->keptTable();
  return scan(
      string, *table,
      [&](std::string_view text, bool isAsGiven) {
        return VisitorSink{text, *table, visit, isAsGiven};
      },
      error);
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
