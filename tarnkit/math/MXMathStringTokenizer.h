#pragma once

#include <string_view>
#include <vector>

#include "tarnkit/math/MXError.h"
#include "tarnkit/math/MXMathOperatorSet.h"
#include "tarnkit/math/MXMathStringToken.h"
#include "tarnkit/platform/objects/FunctionRef.h"

namespace tarnkit {

/// A token as it is read, without an object; the texts are those of a `MXMathStringToken`, good
/// until the next token.
struct MXTokenText {
  MXTokenType type;
  std::string_view token;
  /// Of an operator, the name of its function, "invalid" while it is ambiguous; "" of others.
  std::string_view function;
  /// Where it stands, as of a `MXMathStringToken`.
  std::size_t offset;
  std::size_t length;
};

/// Cuts an expression text into numbers, operators, functions and variables; a read-only enumerator
/// over its tokens afterwards.
///
/// It settles what an ambiguous operator is ("-" as subtract or negate), puts in implicit
/// multiplications ("2x") and the parentheses of functions named without ("pi"). The text ends at a
/// NUL; bytes that are not UTF-8 read as U+FFFD. Costs time linear in the text. For one thread.
class MXMathStringTokenizer : public Object {
  TARNKIT_CLASS
 public:
  /// Null, with the error in the slot, when the text has something that is no token. No operator
  /// set means the default one.
  static Ref<MXMathStringTokenizer> tokenizerWithString(std::string_view string,
                                                        const Ref<MXMathOperatorSet>& operatorSet,
                                                        MXError* error);
  static Ref<MXMathStringTokenizer> tokenizerWithString(std::string_view string, MXError* error) {
    return tokenizerWithString(string, nullptr, error);
  }

  /// An empty tokenizer; a subclass that watches tokens is made this way and then given its text.
  MXMathStringTokenizer() = default;
  /// Tokenizes the text; once in the life of a tokenizer. False on an error.
  bool initWithString(std::string_view string, const Ref<MXMathOperatorSet>& operatorSet,
                      MXError* error);
  bool initWithString(std::string_view string, MXError* error) {
    return initWithString(string, nullptr, error);
  }

  /// The names of the variables in the text, each once, in the order of their tokens; no token
  /// objects are made for it. None, with the error in the slot, when the text has something that is
  /// no token.
  static std::vector<String> variableNames(std::string_view string, MXError* error);

  /// Shows each token of the text, as read with the default operator set, in its order; neither
  /// objects nor a list are made, so the memory does not grow with the number of tokens. False,
  /// with the error in the slot, when the text has something that is no token; those before it have
  /// been shown then.
  static bool eachToken(std::string_view string, FunctionRef<void(const MXTokenText&)> visit,
                        MXError* error);

  /// The next token, or null at the end.
  Ref<MXMathStringToken> nextObject();
  /// The same without moving on.
  Ref<MXMathStringToken> peekNextObject() const;
  /// The tokens from here to the end.
  std::vector<Ref<MXMathStringToken>> allObjects() const;
  /// Back to the first token.
  void reset() noexcept { tokenIndex_ = 0; }

  /// The text that its tokens have places in; "" where they have none.
  std::string_view text() const noexcept { return text_; }
  /// The set that governs operator characters; the default one unless another was given.
  const Ref<MXMathOperatorSet>& operatorSet() const noexcept { return operatorSet_; }
  /// The characters of all tokens of all operators of the set, in ascending order; built at first
  /// use.
  const std::vector<char32_t>& operatorCharacters();

 protected:
  /// Announces a token to `didParseToken` and, unless it is null, adds it to the list.
  void appendToken(const Ref<MXMathStringToken>& token);
  /// Called with every token before it is added, and with null behind the last one; does nothing
  /// here.
  virtual void didParseToken(const Ref<MXMathStringToken>& token);

 private:
  struct Sink;
  std::string text_;
  Ref<MXMathOperatorSet> operatorSet_;
  std::vector<Ref<MXMathStringToken>> tokens_;
  std::vector<char32_t> operatorCharacters_;
  std::size_t tokenIndex_ = 0;
};

}  // namespace tarnkit
