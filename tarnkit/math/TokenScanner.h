#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "tarnkit/math/MXError.h"
#include "tarnkit/math/MXMathStringToken.h"
#include "tarnkit/math/MathText.h"
#include "tarnkit/math/OperatorTable.h"

namespace tarnkit::detail {

/// How the text of a token is written where that is not the token itself.
enum class TokenForm : std::uint8_t {
  plain,
  hexadecimal,  // a number: the slice holds the digits behind "0x"
  escaped,      // a quoted variable with backslashes, which are to be dropped
  inserted,     // an operator that the text does not hold
};

/// A token as a slice of the text; made in great numbers, so it owns nothing.
struct ScannedToken {
  MXTokenType type;
  TokenForm form;
  std::uint16_t row;  // of an operator: its row, or `OperatorTable::kNoRow` while unresolved
  /// Offset and length in one word: written in two, it would be waited for when it is copied.
  std::uint64_t place;

  std::uint32_t offset() const noexcept { return static_cast<std::uint32_t>(place); }
  std::uint32_t length() const noexcept { return static_cast<std::uint32_t>(place >> 32); }
};

/// Where something stands in a text, in bytes.
struct TextPlace {
  std::size_t offset;
  std::size_t length;
};

/// What stopped a scan, and where.
struct ScanFailure {
  MXErrorCode code = MXErrorCode::none;
  bool hexadecimal = false;
  std::uint32_t offset = 0;
  std::uint32_t length = 0;
};

/// The longest text that the engine takes, so that offsets fit 32 bits.
inline constexpr std::size_t kMaximumTextLength = 0x7FFFFFFF;

/// The text as the scanner takes it: what is not UTF-8 reads as U+FFFD (kept in `storage`), and the
/// text ends at the first NUL. Longer texts than `kMaximumTextLength` give false.
bool prepareText(std::string_view& text, std::string& storage);
/// The error of a failed scan.
MXError scanError(const ScanFailure& failure, std::string_view text);
/// The place of a name with the sign of the variable, or its quotes, and of digits with their "0x".
TextPlace wholePlace(std::string_view text, MXTokenType type, TextPlace name) noexcept;
/// The token's text as the token object holds it.
std::string tokenText(const ScannedToken& token, std::string_view text, const OperatorTable& table);
/// The value of hexadecimal digits; more than 64 bits saturate.
std::uint64_t hexadecimalValue(std::string_view digits) noexcept;
bool isLoneIdentifier(char32_t codePoint) noexcept;

/// Cuts a prepared text into tokens (whoever runs one includes TokenScannerReaders.h): the readers,
/// the resolution of ambiguous operators, the inserted parentheses and multiplications. One pass,
/// no memory of its own; `sink.take<type>(token)` takes each token and answers whether to go on.
template <class Sink>
class TokenScanner {
 public:
  TokenScanner(std::string_view text, const OperatorTable& table, Sink& sink) noexcept
      : begin_(text.data()),
        end_(text.data() + text.size()),
        at_(begin_),
        table_(table),
        sink_(sink) {}

  /// False when a token cannot be read (see `failure`) or the sink has stopped it.
  bool run();
  const ScanFailure& failure() const noexcept { return failure_; }

 private:
  [[gnu::always_inline]] inline bool next(ScannedToken& token);
  [[gnu::always_inline]] inline bool process(ScannedToken& token);
  [[gnu::always_inline]] inline bool processOperator(ScannedToken& token);
  [[gnu::noinline]] bool separate(bool fromOperand, const ScannedToken& from);
  bool insert(std::uint16_t row, const char* place);
  bool insertParentheses(const char* place) {
    return insert(table_.openRow(), place) && insert(table_.closeRow(), place);
  }
  LastToken lastOf(std::uint16_t row) const noexcept {
    return row == OperatorTable::kNoRow ? LastToken::noArity : table_.row(row).asLast;
  }

  [[gnu::always_inline]] inline void skipBlanks() noexcept;
  [[gnu::noinline]] void skipSomeBlanks() noexcept;
  [[gnu::always_inline]] inline bool readNumber(ScannedToken& token) noexcept;
  bool readLongNumber(ScannedToken& token) noexcept;
  bool readHexadecimal(ScannedToken& token) noexcept;
  [[gnu::always_inline]] inline bool readVariable(ScannedToken& token) noexcept;
  bool readQuotedVariable(ScannedToken& token) noexcept;
  [[gnu::always_inline]] inline bool readByteOperator(ScannedToken& token,
                                                      std::uint8_t kind) noexcept;
  [[gnu::always_inline]] inline bool readOperator(ScannedToken& token) noexcept;
  bool beginsOperator() const noexcept;
  bool readIdentifier(ScannedToken& token, MXTokenType type) noexcept;
  [[gnu::always_inline]] inline void takeIdentifier() noexcept;
  [[gnu::noinline]] void takeAnyIdentifier(bool isFirst) noexcept;

  // Of several readers that fail on one token, the first one's error stays.
  bool fail(MXErrorCode code, bool hexadecimal = false) noexcept {
    if (failure_.code == MXErrorCode::none) {
      failure_ = {code, hexadecimal, offsetOf(at_), 0};
    }
    return false;
  }
  std::uint32_t offsetOf(const char* place) const noexcept {
    return static_cast<std::uint32_t>(place - begin_);
  }
  std::uint8_t classAt(const char* place) const noexcept { return table_.classOf(*place); }
  bool isDigitAt(const char* place) const noexcept { return place != end_ && isDigit(*place); }
  std::string_view rest(const char* place) const noexcept {
    return {place, static_cast<std::size_t>(end_ - place)};
  }
  void slice(ScannedToken& token, MXTokenType type, const char* from, const char* to) noexcept {
    token.type = type;
    token.form = TokenForm::plain;
    token.row = OperatorTable::kNoRow;
    token.place = std::uint64_t{offsetOf(from)} | static_cast<std::uint64_t>(to - from) << 32;
  }

  const char* begin_;
  const char* end_;
  const char* at_;
  const OperatorTable& table_;
  Sink& sink_;
  const OperatorToken* ambiguous_ = nullptr;  // of the token read last
  LastToken last_ = LastToken::nothing;
  ScanFailure failure_;
};

}  // namespace tarnkit::detail
