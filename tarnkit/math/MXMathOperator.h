#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "tarnkit/platform/objects/Object.h"
#include "tarnkit/platform/text/String.h"

namespace tarnkit {

class MXMathOperatorSet;

enum class MXOperatorArity : int { unknown = 0, unary = 1, binary = 2 };
/// Of a unary operator, right means prefix ("-3") and left means postfix ("3!").
enum class MXOperatorAssociativity : int { left = 0, right = 1 };

/// The operators' function names; each is also the name of the function that computes it.
inline constexpr const char* MXOperatorInvalid = "invalid";
inline constexpr const char* MXOperatorLogicalOr = "l_or";
inline constexpr const char* MXOperatorLogicalAnd = "l_and";
inline constexpr const char* MXOperatorLogicalNot = "l_not";
inline constexpr const char* MXOperatorLogicalEqual = "l_eq";
inline constexpr const char* MXOperatorLogicalNotEqual = "l_neq";
inline constexpr const char* MXOperatorLogicalLessThan = "l_lt";
inline constexpr const char* MXOperatorLogicalGreaterThan = "l_gt";
inline constexpr const char* MXOperatorLogicalLessThanOrEqual = "l_ltoe";
inline constexpr const char* MXOperatorLogicalGreaterThanOrEqual = "l_gtoe";
inline constexpr const char* MXOperatorBitwiseOr = "or";
inline constexpr const char* MXOperatorBitwiseXor = "xor";
inline constexpr const char* MXOperatorBitwiseAnd = "and";
inline constexpr const char* MXOperatorLeftShift = "lshift";
inline constexpr const char* MXOperatorRightShift = "rshift";
inline constexpr const char* MXOperatorMinus = "subtract";
inline constexpr const char* MXOperatorAdd = "add";
inline constexpr const char* MXOperatorDivide = "divide";
inline constexpr const char* MXOperatorMultiply = "multiply";
inline constexpr const char* MXOperatorModulo = "mod";
inline constexpr const char* MXOperatorBitwiseNot = "not";
inline constexpr const char* MXOperatorFactorial = "factorial";
inline constexpr const char* MXOperatorDegree = "dtor";
inline constexpr const char* MXOperatorPercent = "percent";
inline constexpr const char* MXOperatorPower = "pow";
inline constexpr const char* MXOperatorParenthesisOpen = "open_paren";
inline constexpr const char* MXOperatorParenthesisClose = "close_paren";
inline constexpr const char* MXOperatorComma = "comma";
inline constexpr const char* MXOperatorUnaryMinus = "negate";
inline constexpr const char* MXOperatorUnaryPlus = "positive";

/// An operator: a function name with the tokens that stand for it, an arity, an associativity and a
/// precedence (higher binds tighter).
///
/// Owned by operator sets; the tokens of a text refer to it. Changing one is seen by everything
/// that is tokenized or parsed afterwards, and must not happen while another thread does so with a
/// set in which it stands.
class MXMathOperator final : public Object {
  TARNKIT_CLASS
 public:
  /// A new operator of precedence 0 whose tokens are lower-cased. Throws std::invalid_argument for
  /// an unknown arity ("Unable to create operator with unknown arity") or an invalid token
  /// ("Invalid operator token: …").
  static Ref<MXMathOperator> withOperatorFunction(const String& function,
                                                  const std::vector<String>& tokens,
                                                  MXOperatorArity arity,
                                                  MXOperatorAssociativity associativity);
  /// Stores everything as given, unchecked.
  MXMathOperator(String function, std::vector<String> tokens, MXOperatorArity arity,
                 std::int64_t precedence, MXOperatorAssociativity associativity);

  /// The default set's operator of a function; null when it has none.
  static Ref<MXMathOperator> infoForOperatorFunction(const String& function);
  /// The default set's operators that use a token, in the order in which they were entered.
  static std::vector<Ref<MXMathOperator>> infosForOperatorToken(const String& token);
  /// The table that every new set is built from, with the precedences before "mod" joins it. Built
  /// once; not to be changed.
  static const std::vector<Ref<MXMathOperator>>& defaultOperators();
  /// Whether a text may be a token: not empty, no blanks at its ends, and not beginning with a
  /// decimal digit, a quote mark, an apostrophe, "$" or ".".
  static bool isValidToken(std::string_view token);

  /// Answers the value of "2 ** 3 ** 2"; the power operator groups to the right when it is 512.
  using PowerProbe = std::int64_t (*)();
  /// Replaces the probe, which is asked once, when the default table is built; a later call changes
  /// nothing. The default answers 512, as in every language that has the operator.
  static void setPowerProbe(PowerProbe probe) noexcept;

  const String& function() const noexcept { return function_; }
  const std::vector<String>& tokens() const noexcept { return tokens_; }
  MXOperatorArity arity() const noexcept { return arity_; }
  MXOperatorAssociativity associativity() const noexcept { return associativity_; }
  void setAssociativity(MXOperatorAssociativity associativity);
  std::int64_t precedence() const noexcept { return precedence_; }
  void setPrecedence(std::int64_t precedence);
  /// Appends the tokens in lower case.
  void addTokens(const std::vector<String>& tokens);
  /// Whether one of the tokens is exactly this text.
  bool hasToken(std::string_view token) const noexcept;

  /// An equal, independent operator.
  Ref<MXMathOperator> copy() const;
  /// "<root description> {(tokens) => function(), Arity: …, Assoc: …, Precedence: …}".
  String description() const override;

  /// Tells the set of every change from now on; called by a set that takes the operator up.
  void standIn(MXMathOperatorSet& set);

 private:
  void noteChange() const noexcept;

  String function_;
  std::vector<String> tokens_;
  MXOperatorArity arity_;
  MXOperatorAssociativity associativity_;
  std::int64_t precedence_;
  std::vector<WeakRef<MXMathOperatorSet>> sets_;  // in which it stands
};

}  // namespace tarnkit
