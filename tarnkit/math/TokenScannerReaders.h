#pragma once

// The bodies of `TokenScanner`, for the sources that run one with a sink of their own.

#include "tarnkit/math/MathText.h"
#include "tarnkit/math/TokenScanner.h"

namespace tarnkit::detail {

template <class Sink>
bool TokenScanner<Sink>::run() {
  ScannedToken token;
  bool canBeRead = true;
  for (;;) {
    skipBlanks();
    if (at_ == end_) break;
    failure_.code = MXErrorCode::none;  // an unresolved operator is forgiven by a further token
    canBeRead = next(token);
    if (!canBeRead) break;
    failure_.code = MXErrorCode::none;
    if (!process(token)) return false;
  }
  if (last_ == LastToken::function && !insertParentheses(at_)) return false;
  return canBeRead && failure_.code == MXErrorCode::none;
}

template <class Sink>
bool TokenScanner<Sink>::next(ScannedToken& token) {
  const char c = *at_;
  const std::uint8_t kind = classAt(at_);
  ambiguous_ = nullptr;
  if (readByteOperator(token, kind)) return true;
  if (((kind & OperatorTable::kDigit) != 0 || c == '.') && readNumber(token)) return true;
  if (c == '$' && readVariable(token)) return true;
  if ((c == '"' || c == '\'') && readQuotedVariable(token)) return true;
  return readOperator(token) || readIdentifier(token, MXTokenType::function);
}

template <class Sink>
bool TokenScanner<Sink>::process(ScannedToken& token) {
  if (token.type == MXTokenType::op) return processOperator(token);
  if (last_ >= LastToken::operand && !separate(true, token)) return false;
  if (token.type == MXTokenType::number) {
    last_ = LastToken::operand;
    return sink_.template take<MXTokenType::number>(token);
  }
  if (token.type == MXTokenType::variable) {
    last_ = LastToken::operand;
    return sink_.template take<MXTokenType::variable>(token);
  }
  last_ = LastToken::function;
  return sink_.template take<MXTokenType::function>(token);
}

template <class Sink>
bool TokenScanner<Sink>::processOperator(ScannedToken& token) {
  LastToken asLast = LastToken::noArity;
  bool opens = false;
  if (ambiguous_) token.row = table_.resolve(*ambiguous_, last_);
  if (token.row == OperatorTable::kNoRow) {
    failure_ = {MXErrorCode::unknownOperatorPrecedence, false, token.offset(), token.length()};
  } else {
    const OperatorRow& row = table_.row(token.row);
    if (row.role == OperatorRole::positive) return true;
    opens = row.role == OperatorRole::open;
    asLast = row.asLast;
  }
  const bool mustSeparate =
      asLast == LastToken::prefix ? last_ >= LastToken::operand : last_ == LastToken::function;
  if (mustSeparate && !(opens && last_ == LastToken::function) &&
      !separate(asLast == LastToken::prefix, token)) {
    return false;
  }
  last_ = asLast;
  return sink_.template take<MXTokenType::op>(token);
}

// Ends a function that was named without arguments, and multiplies with what begins an operand.
template <class Sink>
bool TokenScanner<Sink>::separate(bool fromOperand, const ScannedToken& from) {
  const TextPlace name{from.offset(), from.length()};
  const auto whole = wholePlace(rest(begin_), from.type, name);
  const char* const place = begin_ + whole.offset;
  if (last_ == LastToken::function && !insertParentheses(place)) return false;
  const bool multiplies = last_ == LastToken::operand || last_ == LastToken::postfix;
  return !fromOperand || !multiplies || insert(table_.multiplyRow(), place);
}

template <class Sink>
bool TokenScanner<Sink>::insert(std::uint16_t row, const char* place) {
  ScannedToken token;
  slice(token, MXTokenType::op, place, place);
  token.form = TokenForm::inserted;
  token.row = row;
  last_ = lastOf(row);
  return sink_.template take<MXTokenType::op>(token);
}

template <class Sink>
void TokenScanner<Sink>::skipBlanks() noexcept {
  constexpr std::uint8_t kMayBeBlank = OperatorTable::kBlank | OperatorTable::kPartial;
  if (at_ != end_ && (classAt(at_) & kMayBeBlank) != 0) skipSomeBlanks();
}

template <class Sink>
void TokenScanner<Sink>::skipSomeBlanks() noexcept {
  while (at_ != end_) {
    const std::uint8_t kind = classAt(at_);
    if ((kind & OperatorTable::kBlank) != 0) {
      ++at_;
    } else if ((kind & OperatorTable::kPartial) != 0) {
      std::size_t length = 0;
      if (!isBlank(nextCodePoint(rest(at_), length))) return;
      at_ += length;
    } else {
      return;
    }
  }
}

// A lone digit is what most numbers are.
template <class Sink>
bool TokenScanner<Sink>::readNumber(ScannedToken& token) noexcept {
  if (*at_ != '.' && (at_ + 1 == end_ || (classAt(at_ + 1) & OperatorTable::kEndsDigit) != 0)) {
    slice(token, MXTokenType::number, at_, at_ + 1);
    ++at_;
    return true;
  }
  return readLongNumber(token);
}

template <class Sink>
bool TokenScanner<Sink>::readLongNumber(ScannedToken& token) noexcept {
  const char* const start = at_;
  if (*at_ == '0' && at_ + 1 != end_ && (at_[1] == 'x' || at_[1] == 'X')) {
    return readHexadecimal(token);
  }
  while (isDigitAt(at_)) ++at_;
  if (at_ != end_ && *at_ == '.') {
    ++at_;
    while (isDigitAt(at_)) ++at_;
  }
  if (at_ != end_ && (*at_ == 'e' || *at_ == 'E')) {
    const char* exponent = at_ + 1;
    if (exponent != end_ && (*exponent == '-' || *exponent == '+')) ++exponent;
    if (isDigitAt(exponent)) {
      while (isDigitAt(exponent)) ++exponent;
      at_ = exponent;
    }
  }
  if (at_ == start + 1 && *start == '.') {
    at_ = start;
    return fail(MXErrorCode::invalidNumber);
  }
  slice(token, MXTokenType::number, start, at_);
  return true;
}

// A failure leaves the scan behind the "0x", so that the other readers try there.
template <class Sink>
bool TokenScanner<Sink>::readHexadecimal(ScannedToken& token) noexcept {
  at_ += 2;
  const char* const start = at_;
  const auto isHexadecimal = [](char c) {
    return isDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
  };
  while (at_ != end_ && isHexadecimal(*at_)) ++at_;
  if (at_ == start) return fail(MXErrorCode::invalidNumber, true);
  slice(token, MXTokenType::number, start, at_);
  token.form = TokenForm::hexadecimal;
  return true;
}

template <class Sink>
bool TokenScanner<Sink>::readVariable(ScannedToken& token) noexcept {
  const char* const start = at_;
  ++at_;
  const char* const name = at_;
  takeIdentifier();
  if (at_ == name) {
    at_ = start;
    return fail(MXErrorCode::invalidVariable);
  }
  slice(token, MXTokenType::variable, name, at_);
  return true;
}

template <class Sink>
bool TokenScanner<Sink>::readQuotedVariable(ScannedToken& token) noexcept {
  const char quote = *at_;
  bool escaped = false;
  const char* place = at_ + 1;
  while (place != end_ && *place != quote) {
    if (*place == '\\') {
      escaped = true;
      if (++place == end_) break;
    }
    ++place;
  }
  if (place == end_) return fail(MXErrorCode::invalidVariable);
  slice(token, MXTokenType::variable, at_ + 1, place);
  if (escaped) token.form = TokenForm::escaped;
  at_ = place + 1;
  return true;
}

// Most operators are one byte, and what follows shows that they are.
template <class Sink>
bool TokenScanner<Sink>::readByteOperator(ScannedToken& token, std::uint8_t kind) noexcept {
  constexpr std::uint8_t kGoesOn = OperatorTable::kOperator | OperatorTable::kPartial;
  const bool isWhole = (kind & OperatorTable::kLoneOperator) != 0 ||
                       ((kind & OperatorTable::kShortOperator) != 0 &&
                        (at_ + 1 == end_ || (classAt(at_ + 1) & kGoesOn) == 0));
  if (!isWhole) return false;
  const std::uint16_t row = table_.rowOfByte(*at_, last_);
  if (row == OperatorTable::kNoRow) return false;
  slice(token, MXTokenType::op, at_, at_ + 1);
  token.row = row;
  ++at_;
  return true;
}

template <class Sink>
bool TokenScanner<Sink>::readOperator(ScannedToken& token) noexcept {
  const OperatorToken* found = nullptr;
  std::size_t length = 1;
  // A number that failed behind its "0x" may have left nothing.
  if (at_ == end_) return fail(MXErrorCode::invalidOperator);
  if ((classAt(at_) & OperatorTable::kLoneOperator) != 0) {
    found = &table_.loneToken(*at_);
  } else if ((classAt(at_) & OperatorTable::kShortOperator) != 0) {
    found = table_.matchShort(at_, end_, length);
    if (!found) return fail(MXErrorCode::invalidOperator);
  } else {
    if (!beginsOperator()) return fail(MXErrorCode::invalidOperator);
    found = table_.match(rest(at_), length);
    if (!found) return fail(MXErrorCode::invalidOperator);
  }
  slice(token, MXTokenType::op, at_, at_ + length);
  token.row = found->row;
  if (found->row == OperatorTable::kNoRow) ambiguous_ = found;
  at_ += length;
  return true;
}

template <class Sink>
bool TokenScanner<Sink>::beginsOperator() const noexcept {
  if ((classAt(at_) & OperatorTable::kPartial) == 0) {
    return (table_.classOf(lowerCaseOf(*at_)) & OperatorTable::kOperator) != 0;
  }
  std::size_t width = 0;
  return table_.isOperatorCharacter(lowerCasePoint(nextCodePoint(rest(at_), width)));
}

template <class Sink>
bool TokenScanner<Sink>::readIdentifier(ScannedToken& token, MXTokenType type) noexcept {
  const char* const start = at_;
  takeIdentifier();
  if (at_ == start) return fail(MXErrorCode::invalidIdentifier);
  slice(token, type, start, at_);
  return true;
}

// Moves behind the identifier; stays when there is none.
template <class Sink>
void TokenScanner<Sink>::takeIdentifier() noexcept {
  constexpr std::uint8_t kNeedsLook = OperatorTable::kEndsIdentifier | OperatorTable::kPartial;
  const char* at = at_;
  if (at == end_ || *at == '"' || *at == '\'') return;
  while (at != end_ && (classAt(at) & kNeedsLook) == 0) ++at;
  const bool isFirst = at == at_;
  at_ = at;
  if (at != end_ && (classAt(at) & OperatorTable::kEndsIdentifier) == 0) takeAnyIdentifier(isFirst);
}

// From a character on that is no byte.
template <class Sink>
void TokenScanner<Sink>::takeAnyIdentifier(bool isFirst) noexcept {
  while (at_ != end_) {
    const std::uint8_t kind = classAt(at_);
    if ((kind & OperatorTable::kEndsIdentifier) != 0) return;
    if ((kind & OperatorTable::kPartial) == 0) {
      ++at_;
      isFirst = false;
      continue;
    }
    std::size_t length = 0;
    const char32_t point = nextCodePoint(rest(at_), length);
    const bool lone = isFirst && isLoneIdentifier(point);
    if (!lone && (isBlank(point) || table_.isOperatorCharacter(point))) return;
    at_ += length;
    if (lone) return;
    isFirst = false;
  }
}

}  // namespace tarnkit::detail
