#include "tarnkit/math/TokenScanner.h"

#include <fmt/format.h>

#include <limits>

#include "tarnkit/math/MathText.h"

namespace tarnkit::detail {

bool prepareText(std::string_view& text, std::string& storage) {
  if (text.size() > kMaximumTextLength / 3) {
    // Replacing bytes may triple the text.
    if (text.size() > kMaximumTextLength || !isASCII(text)) return false;
  }
  if (isPlainText(text)) return true;
  if (const auto nul = text.find('\0'); nul != text.npos) text = text.substr(0, nul);
  text = wellFormed(text, storage);
  return true;
}

MXError scanError(const ScanFailure& failure, std::string_view text) {
  switch (failure.code) {
    case MXErrorCode::invalidNumber:
      return {failure.code,
              failure.hexadecimal ? "unable to parse hex number" : "unable to parse number"};
    case MXErrorCode::invalidVariable:
      return {failure.code, text[failure.offset] == '$'
                                ? "variable names must be at least 1 character long"
                                : "Unable to parsed quoted variable name"};
    case MXErrorCode::invalidOperator: {
      std::size_t end = failure.offset;
      nextCodePoint(text, end);
      return {failure.code, fmt::format("{} is not a valid operator",
                                        text.substr(failure.offset, end - failure.offset))};
    }
    case MXErrorCode::unknownOperatorPrecedence:
      return {failure.code, fmt::format("unknown precedence for token: {}",
                                        text.substr(failure.offset, failure.length))};
    default:
      return {failure.code, "unable to parse identifier"};
  }
}

std::string tokenText(const ScannedToken& token, std::string_view text,
                      const OperatorTable& table) {
  const auto slice = text.substr(token.offset(), token.length());
  switch (token.form) {
    case TokenForm::plain:
      return token.type == MXTokenType::op ? lowerCase(slice) : std::string(slice);
    case TokenForm::hexadecimal:
      return std::to_string(hexadecimalValue(slice));
    case TokenForm::inserted:
      return token.row == table.openRow() ? "(" : token.row == table.closeRow() ? ")" : "*";
    case TokenForm::escaped:
      break;
  }
  std::string name;
  for (std::size_t i = 0; i < slice.size(); ++i) {
    if (slice[i] == '\\') ++i;
    name.push_back(slice[i]);
  }
  return name;
}

std::uint64_t hexadecimalValue(std::string_view digits) noexcept {
  constexpr auto kMaximum = std::numeric_limits<std::uint64_t>::max();
  std::uint64_t value = 0;
  for (const char c : digits) {
    if (value > kMaximum >> 4) return kMaximum;
    const int digit = c <= '9' ? c - '0' : (c | 0x20) - 'a' + 10;
    value = (value << 4) | static_cast<std::uint64_t>(digit);
  }
  return value;
}

bool isLoneIdentifier(char32_t codePoint) noexcept {
  return codePoint == U'\u03C0' || codePoint == U'\u03D5' || codePoint == U'\u03C4';
}

}  // namespace tarnkit::detail
