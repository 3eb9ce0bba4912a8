#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tarnkit/math/BuiltinFunctions.h"
#include "tarnkit/math/MXMathOperator.h"

namespace tarnkit {
class MXMathOperatorSet;
}

namespace tarnkit::detail {

/// What the parser does with an operator; `other` has an unknown arity.
enum class OperatorRole : std::uint8_t {
  binary,
  prefix,
  postfix,
  open,
  close,
  comma,
  positive,
  other
};

/// What stands last in a list of tokens, as far as the next one is concerned. From `operand` on it
/// is something that an operand may not follow without an operator between.
enum class LastToken : std::uint8_t {
  nothing,
  binary,
  prefix,
  noArity,
  operand,
  postfix,
  function
};

/// One operator, laid out for the tokenizer and the parser.
struct OperatorRow {
  const MXMathOperator* info;
  std::int64_t precedence;
  MXOperatorArity arity;
  MXOperatorAssociativity associativity;
  /// The associativity that the parser's own set gives the function.
  MXOperatorAssociativity parserAssociativity;
  OperatorRole role;
  Builtin builtin;
  /// The function's name is that of the built-in, so nodes need not keep it.
  bool hasTableName;
  /// The rank of the precedence among all.
  std::uint8_t level;
  /// What it is to the token behind it.
  LastToken asLast;
  /// Operators of its level are taken from the left and from the right: the level's bit. Else 0.
  std::uint32_t mixedLevel;
};

/// What one operator token stands for.
struct OperatorToken {
  std::string text;         // in lower case
  std::uint16_t row;        // kNoRow while ambiguous
  std::uint16_t unaryRow;   // of an ambiguous token: what it is where an operand may begin
  std::uint16_t binaryRow;  // of an ambiguous token: what it is after an operand
  char second;              // of a token of two bytes below 0x80; else 0
};

/// The operators of the default set, with what another set says about characters and
/// associativities, arranged for scanning; immutable, made by `MXMathOperatorSet::table`. Keeps the
/// operators of its rows.
class OperatorTable final : public Object {
  TARNKIT_CLASS
 public:
  static constexpr std::uint16_t kNoRow = 0xFFFF;
  /// More levels, or more mixed ones, than these leave the one-pass parser out.
  static constexpr std::size_t kMaximumLevels = 250;
  static constexpr std::size_t kMaximumMixedLevels = 32;

  /// Classes of bytes; a byte of a longer character is only `kPartial`.
  enum ByteClass : std::uint8_t {
    kBlank = 1,
    kDigit = 2,
    kOperator = 4,
    kEndsIdentifier = 8,
    kPartial = 16,
    kLoneOperator = 32,   // begins one token only, which is this byte
    kShortOperator = 64,  // begins tokens of one or two bytes only, none of them a letter
    kEndsDigit = 128,     // behind a digit, ends the number
  };

  OperatorTable(const MXMathOperatorSet& tokenSet, const MXMathOperatorSet& parserSet);
  ~OperatorTable() override;

  const OperatorRow& row(std::uint16_t index) const noexcept { return rows_[index]; }
  std::uint8_t classOf(char byte) const noexcept {
    return classes_[static_cast<unsigned char>(byte)];
  }
  bool isOperatorCharacter(char32_t codePoint) const noexcept;

  /// The longest token at the beginning of `text` (well-formed, not empty), in any case of its
  /// letters, and how many bytes it takes; null when there is none.
  const OperatorToken* match(std::string_view text, std::size_t& length) const noexcept;
  /// The same where the first byte is `kShortOperator`.
  const OperatorToken* matchShort(const char* text, const char* end,
                                  std::size_t& length) const noexcept {
    const Range range = ranges_[static_cast<unsigned char>(*text)];
    for (auto i = range.begin; i < range.end; ++i) {
      const OperatorToken& token = tokens_[i];
      if (token.second == 0) {
        length = 1;
        return &token;
      }
      if (text + 1 != end && text[1] == token.second) {
        length = 2;
        return &token;
      }
    }
    return nullptr;
  }
  const OperatorToken& loneToken(char byte) const noexcept {
    return tokens_[ranges_[static_cast<unsigned char>(byte)].begin];
  }
  /// What an ambiguous token is behind a token; kNoRow when nothing tells.
  std::uint16_t resolve(const OperatorToken& ambiguous, LastToken last) const noexcept;
  /// The row of the token that is this byte alone, resolved; kNoRow when there is no such token,
  /// when nothing resolves it, or when another reader comes before that of the operators.
  std::uint16_t rowOfByte(char byte, LastToken last) const noexcept {
    return rowsOfBytes_[static_cast<unsigned char>(byte)][static_cast<std::size_t>(last)];
  }

  /// The rows of the tokens that the tokenizer inserts; kNoRow when the token is ambiguous.
  std::uint16_t openRow() const noexcept { return open_; }
  std::uint16_t closeRow() const noexcept { return close_; }
  std::uint16_t multiplyRow() const noexcept { return multiply_; }
  /// Whether the one-pass parser may be used: ordinary parentheses, one opinion about the side of
  /// every unary operator, few enough levels.
  bool allowsOnePass() const noexcept { return allowsOnePass_; }

 private:
  struct Range {
    std::uint16_t begin = 0;
    std::uint16_t end = 0;
  };
  void addRows(const MXMathOperatorSet& tokenSet, const MXMathOperatorSet& parserSet);
  void findMixedLevels();
  void addTokens(const MXMathOperatorSet& tokenSet);
  void classifyBytes();
  void resolveBytes();
  std::uint16_t rowOf(const MXMathOperator* info) const noexcept;
  std::uint16_t rowOfFunction(std::string_view function) const noexcept;
  std::uint16_t insertedRow(std::string_view token) const noexcept;
  std::uint16_t firstWithToken(std::string_view token, const char* first,
                               const char* second) const noexcept;

  std::vector<Ref<MXMathOperator>> operators_;
  std::vector<OperatorRow> rows_;
  std::vector<OperatorToken> tokens_;  // by first byte, longer ones first
  std::vector<char32_t> characters_;   // operator characters, sorted
  std::array<Range, 256> ranges_{};
  std::array<std::uint8_t, 256> classes_{};
  static constexpr std::size_t kLastTokens = static_cast<std::size_t>(LastToken::function) + 1;
  std::array<std::array<std::uint16_t, kLastTokens>, 256> rowsOfBytes_{};
  std::uint16_t open_ = kNoRow;
  std::uint16_t close_ = kNoRow;
  std::uint16_t multiply_ = kNoRow;
  std::uint16_t factorial_ = kNoRow;
  std::uint16_t logicalNot_ = kNoRow;
  bool allowsOnePass_ = true;
};

}  // namespace tarnkit::detail
