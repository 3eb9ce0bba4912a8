#include "tarnkit/math/OperatorTable.h"

#include <algorithm>

#include "tarnkit/math/MXMathOperatorSet.h"
#include "tarnkit/math/MathText.h"

namespace tarnkit::detail {

const Class OperatorTable::kClass{"_MXOperatorTable", &Object::kClass};

namespace {

OperatorRole roleOf(const MXMathOperator& info, MXOperatorAssociativity parserAssociativity) {
  const auto function = info.function().view();
  if (function == MXOperatorParenthesisOpen) return OperatorRole::open;
  if (function == MXOperatorParenthesisClose) return OperatorRole::close;
  if (function == MXOperatorComma) return OperatorRole::comma;
  if (function == MXOperatorUnaryPlus) return OperatorRole::positive;
  if (info.arity() == MXOperatorArity::binary) return OperatorRole::binary;
  if (info.arity() == MXOperatorArity::unknown) return OperatorRole::other;
  return parserAssociativity == MXOperatorAssociativity::right ? OperatorRole::prefix
                                                               : OperatorRole::postfix;
}

LastToken lastTokenOf(const MXMathOperator& info) {
  if (info.arity() == MXOperatorArity::binary) return LastToken::binary;
  if (info.arity() == MXOperatorArity::unknown) return LastToken::noArity;
  return info.associativity() == MXOperatorAssociativity::right ? LastToken::prefix
                                                                : LastToken::postfix;
}

bool isFolded(const OperatorRow& row) {
  return row.role == OperatorRole::binary || row.role == OperatorRole::prefix ||
         row.role == OperatorRole::postfix;
}

bool isOrdinary(const OperatorRow& row) {
  switch (row.role) {
    case OperatorRole::open:
      return row.arity == MXOperatorArity::unary &&
             row.associativity == MXOperatorAssociativity::right;
    case OperatorRole::close:
      return row.arity == MXOperatorArity::unary &&
             row.associativity == MXOperatorAssociativity::left;
    case OperatorRole::comma:
      return row.arity == MXOperatorArity::unknown;
    default:
      return row.arity != MXOperatorArity::unary || row.associativity == row.parserAssociativity;
  }
}

bool isAsciiByte(char c) noexcept { return static_cast<unsigned char>(c) < 0x80; }

// Whether the text begins with the token (in lower case), and how many bytes that takes.
bool beginsWith(std::string_view text, std::string_view token, std::size_t& length) noexcept {
  std::size_t at = 0;
  std::size_t inToken = 0;
  while (inToken < token.size()) {
    if (at == text.size()) return false;
    if (isAsciiByte(text[at]) && isAsciiByte(token[inToken])) {
      if (lowerCaseOf(text[at++]) != token[inToken++]) return false;
    } else if (lowerCasePoint(nextCodePoint(text, at)) != nextCodePoint(token, inToken)) {
      return false;
    }
  }
  length = at;
  return true;
}

}  // namespace

OperatorTable::OperatorTable(const MXMathOperatorSet& tokenSet, const MXMathOperatorSet& parserSet)
    : operators_(tokenSet.operators()) {
  for (const auto& each : parserSet) {
    for (const String& token : each->tokens()) {
      for (std::size_t at = 0; at < token.size();) {
        characters_.push_back(nextCodePoint(token, at));
      }
    }
  }
  std::sort(characters_.begin(), characters_.end());
  characters_.erase(std::unique(characters_.begin(), characters_.end()), characters_.end());
  addRows(tokenSet, parserSet);
  addTokens(tokenSet);
  classifyBytes();
  open_ = insertedRow("(");
  close_ = insertedRow(")");
  multiply_ = insertedRow("*");
  factorial_ = rowOfFunction(MXOperatorFactorial);
  logicalNot_ = rowOfFunction(MXOperatorLogicalNot);
  const auto hasRole = [this](std::uint16_t row, OperatorRole role) {
    return row != kNoRow && rows_[row].role == role;
  };
  resolveBytes();
  allowsOnePass_ = allowsOnePass_ && hasRole(open_, OperatorRole::open) &&
                   hasRole(close_, OperatorRole::close) && hasRole(multiply_, OperatorRole::binary);
}

OperatorTable::~OperatorTable() = default;

void OperatorTable::addRows(const MXMathOperatorSet& tokenSet, const MXMathOperatorSet& parserSet) {
  std::vector<std::int64_t> precedences;
  for (const auto& each : tokenSet) precedences.push_back(each->precedence());
  std::sort(precedences.begin(), precedences.end());
  precedences.erase(std::unique(precedences.begin(), precedences.end()), precedences.end());
  allowsOnePass_ = precedences.size() <= kMaximumLevels;
  for (const auto& each : tokenSet) {
    const auto twin = parserSet.operatorForFunction(each->function());
    OperatorRow row{};
    row.info = each.get();
    row.precedence = each->precedence();
    row.arity = each->arity();
    row.associativity = each->associativity();
    row.parserAssociativity = twin ? twin->associativity() : MXOperatorAssociativity::left;
    row.role = roleOf(*each, row.parserAssociativity);
    row.builtin = builtinNamed(each->function());
    row.hasTableName =
        row.builtin != Builtin::none && each->function() == builtinFunction(row.builtin).name;
    row.level = static_cast<std::uint8_t>(
        std::lower_bound(precedences.begin(), precedences.end(), row.precedence) -
        precedences.begin());
    row.asLast = lastTokenOf(*each);
    allowsOnePass_ = allowsOnePass_ && isOrdinary(row);
    rows_.push_back(row);
  }
  findMixedLevels();
}

void OperatorTable::findMixedLevels() {
  std::size_t found = 0;
  for (OperatorRow& row : rows_) {
    if (!isFolded(row) || row.mixedLevel != 0) continue;
    const auto isOpposite = [&row](const OperatorRow& other) {
      return isFolded(other) && other.level == row.level &&
             other.parserAssociativity != row.parserAssociativity;
    };
    if (std::none_of(rows_.begin(), rows_.end(), isOpposite)) continue;
    if (found == kMaximumMixedLevels) {
      allowsOnePass_ = false;
      return;
    }
    const std::uint32_t bit = 1U << found++;
    for (OperatorRow& other : rows_) {
      if (isFolded(other) && other.level == row.level) other.mixedLevel = bit;
    }
  }
}

void OperatorTable::addTokens(const MXMathOperatorSet& tokenSet) {
  std::vector<String> texts;
  for (const auto& each : tokenSet) {
    for (const String& token : each->tokens()) texts.push_back(lowerCase(token));
  }
  std::sort(texts.begin(), texts.end(), [](const String& a, const String& b) {
    const auto first = [](const String& s) { return s.size() ? s.view().front() : '\0'; };
    if (first(a) != first(b)) return first(a) < first(b);
    return a.size() != b.size() ? a.size() > b.size() : a < b;
  });
  texts.erase(std::unique(texts.begin(), texts.end()), texts.end());
  for (const String& text : texts) {
    const auto users = tokenSet.operatorsForToken(text);
    if (users.empty() || text.size() == 0) continue;
    OperatorToken token{text.toStdString(), kNoRow, kNoRow, kNoRow, 0};
    if (token.text.size() == 2) token.second = token.text[1];
    bool reachable = true;
    for (std::size_t at = 0; reachable && at < text.size();) {
      reachable = isOperatorCharacter(nextCodePoint(text, at));
    }
    if (!reachable) continue;
    if (users.size() == 1) {
      token.row = rowOf(users.front().get());
    } else {
      token.unaryRow = firstWithToken(text, MXOperatorUnaryPlus, MXOperatorUnaryMinus);
      token.binaryRow = firstWithToken(text, MXOperatorAdd, MXOperatorMinus);
    }
    auto& range = ranges_[static_cast<unsigned char>(token.text.front())];
    if (range.begin == range.end) {
      range.begin = range.end = static_cast<std::uint16_t>(tokens_.size());
    }
    ++range.end;
    tokens_.push_back(std::move(token));
  }
}

void OperatorTable::classifyBytes() {
  for (unsigned byte = 0; byte < 256; ++byte) {
    if (byte >= 0x80) {
      classes_[byte] = kPartial;
      continue;
    }
    unsigned bits = 0;
    const char c = static_cast<char>(byte);
    if (isBlank(byte)) bits |= kBlank | kEndsIdentifier;
    if (isDigit(c)) bits |= kDigit;
    if (isOperatorCharacter(byte)) bits |= kOperator | kEndsIdentifier;
    if (c == '$' || c == '\0') bits |= kEndsIdentifier;
    constexpr std::string_view kInNumbers = "0123456789.eExX";
    if (kInNumbers.find(c) == kInNumbers.npos) bits |= kEndsDigit;
    const Range range = ranges_[byte];
    if (range.end - range.begin == 1 && tokens_[range.begin].text.size() == 1) {
      bits |= kLoneOperator;
    }
    const auto isShort = [](const OperatorToken& token) {
      const auto isPlain = [](char each) {
        return isAsciiByte(each) && !(each >= 'a' && each <= 'z');
      };
      return token.text.size() <= 2 && std::all_of(token.text.begin(), token.text.end(), isPlain);
    };
    if (range.begin != range.end &&
        std::all_of(tokens_.begin() + range.begin, tokens_.begin() + range.end, isShort)) {
      bits |= kShortOperator;
    }
    classes_[byte] = static_cast<std::uint8_t>(bits);
  }
}

// "!" after a comma stays unresolved: neither rule for it names the comma.
std::uint16_t OperatorTable::resolve(const OperatorToken& ambiguous,
                                     LastToken last) const noexcept {
  const bool unary = last < LastToken::operand;
  const std::uint16_t row = unary ? ambiguous.unaryRow : ambiguous.binaryRow;
  if (row != kNoRow || ambiguous.text != "!") return row;
  if (!unary) return factorial_;
  return last == LastToken::noArity ? kNoRow : logicalNot_;
}

void OperatorTable::resolveBytes() {
  for (auto& rows : rowsOfBytes_) rows.fill(kNoRow);
  constexpr std::string_view kOfOtherReaders = "0123456789.$\"'";
  for (const OperatorToken& token : tokens_) {
    if (token.text.size() != 1 || kOfOtherReaders.find(token.text[0]) != std::string_view::npos) {
      continue;
    }
    auto& rows = rowsOfBytes_[static_cast<unsigned char>(token.text[0])];
    for (std::size_t last = 0; last < kLastTokens; ++last) {
      rows[last] = token.row != kNoRow ? token.row : resolve(token, static_cast<LastToken>(last));
    }
  }
}

bool OperatorTable::isOperatorCharacter(char32_t codePoint) const noexcept {
  return std::binary_search(characters_.begin(), characters_.end(), codePoint);
}

const OperatorToken* OperatorTable::match(std::string_view text,
                                          std::size_t& length) const noexcept {
  char first = lowerCaseOf(text.front());
  if (!isAsciiByte(first)) {
    std::size_t at = 0;
    std::string lower;
    appendCodePoint(lower, lowerCasePoint(nextCodePoint(text, at)));
    first = lower.front();
  }
  const Range range = ranges_[static_cast<unsigned char>(first)];
  for (auto i = range.begin; i < range.end; ++i) {
    if (beginsWith(text, tokens_[i].text, length)) return &tokens_[i];
  }
  return nullptr;
}

std::uint16_t OperatorTable::rowOf(const MXMathOperator* info) const noexcept {
  for (std::size_t i = 0; i < rows_.size(); ++i) {
    if (rows_[i].info == info) return static_cast<std::uint16_t>(i);
  }
  return kNoRow;
}

std::uint16_t OperatorTable::rowOfFunction(std::string_view function) const noexcept {
  for (std::size_t i = 0; i < rows_.size(); ++i) {
    if (rows_[i].info->function() == function) return static_cast<std::uint16_t>(i);
  }
  return kNoRow;
}

std::uint16_t OperatorTable::insertedRow(std::string_view token) const noexcept {
  for (const OperatorToken& each : tokens_) {
    if (each.text == token) return each.row;
  }
  return kNoRow;
}

std::uint16_t OperatorTable::firstWithToken(std::string_view token, const char* first,
                                            const char* second) const noexcept {
  for (const char* function : {first, second}) {
    const auto row = rowOfFunction(function);
    if (row != kNoRow && rows_[row].info->hasToken(token)) return row;
  }
  return kNoRow;
}

}  // namespace tarnkit::detail
