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

namespace {

bool isQuote(char c) noexcept { return c == '"' || c == '\''; }

TextPlace placeOf(const ScanFailure& failure, std::string_view text) noexcept {
  if (failure.code == MXErrorCode::unknownOperatorPrecedence) {
    return {failure.offset, failure.length};
  }
  // The scan stands behind the "0x" whose digits are missing.
  if (failure.hexadecimal) return {failure.offset - std::size_t{2}, 2};
  std::size_t end = failure.offset;
  if (end == text.size()) return {end, 0};
  if (failure.code == MXErrorCode::invalidVariable && text[end] != '$') {
    return {end, text.size() - end};  // a quote without its end
  }
  nextCodePoint(text, end);
  return {failure.offset, end - failure.offset};
}

std::string messageOf(const ScanFailure& failure, std::string_view text, TextPlace place) {
  const auto slice = text.substr(place.offset, place.length);
  switch (failure.code) {
    case MXErrorCode::invalidNumber:
      return failure.hexadecimal ? "unable to parse hex number" : "unable to parse number";
    case MXErrorCode::invalidVariable:
      return slice.substr(0, 1) == "$" ? "variable names must be at least 1 character long"
                                       : "Unable to parsed quoted variable name";
    case MXErrorCode::invalidOperator:
      return fmt::format("{} is not a valid operator", slice);
    case MXErrorCode::unknownOperatorPrecedence:
      return fmt::format("unknown precedence for token: {}", slice);
    default:
      return "unable to parse identifier";
  }
}

}  // namespace

MXError scanError(const ScanFailure& failure, std::string_view text) {
  const TextPlace place = placeOf(failure, text);
  MXError error(failure.code, messageOf(failure, text, place));
  error.setPlace(place.offset, place.length);
  return error;
}

TextPlace wholePlace(std::string_view text, MXTokenType type, TextPlace name) noexcept {
  const auto [offset, length] = name;
  if (type == MXTokenType::number) {
    const bool isHexadecimal =
        offset >= 2 && text[offset - 2] == '0' && lowerCaseOf(text[offset - 1]) == 'x';
    return isHexadecimal ? TextPlace{offset - 2, length + 2} : name;
  }
  if (type != MXTokenType::variable || offset == 0) return name;
  if (isQuote(text[offset - 1])) return {offset - 1, length + 2};
  return {offset - 1, length + 1};
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
