#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "tarnkit/math/MXMathOperator.h"

namespace tarnkit {

/// What people are told about a function of the expression language.
struct MXFunctionDescription {
  /// How the angle mode bears on it: its argument is an angle, or its result is one.
  enum class Angle : std::uint8_t { none, argument, result };

  std::string_view name;
  /// What it has to do with: "Statistics".
  std::string_view subject;
  /// What its arguments are called: "x, y"; "" for one that takes none.
  std::string_view arguments;
  std::uint32_t minimumArguments = 0;
  /// Nothing: as many as are given.
  std::optional<std::uint32_t> maximumArguments;
  Angle angle = Angle::none;
  /// Whether precise evaluation computes it in decimals; otherwise it stays in doubles.
  bool isDecimal = false;
  /// Its value, in words or as a formula.
  std::string_view meaning;
  /// Other names that every new evaluator knows it by.
  std::vector<String> aliases;
  /// The texts of the operators that it computes: "+".
  std::vector<String> operators;

  /// Whether the name, in any case, is its own, an alias or an operator of it.
  bool isCalled(const String& name) const;
};

/// What people are told about an operator.
struct MXOperatorDescription {
  /// Names the function that computes it.
  String function;
  std::vector<String> tokens;
  MXOperatorArity arity = MXOperatorArity::unknown;
  MXOperatorAssociativity associativity = MXOperatorAssociativity::left;
  /// Higher binds tighter.
  std::int64_t precedence = 0;
  std::string_view meaning;

  /// Whether the text, in any case, is one of its tokens.
  bool isCalled(const String& name) const;
};

/// The built-in functions by subject, those of one subject by name: made from the engine's own
/// table of functions, the aliases of a new evaluator and the operators of a new set.
std::vector<MXFunctionDescription> functionDescriptions();
/// The operators of a new set, parentheses and the comma left out, in ascending order of
/// precedence; with `percentSign`, of a set that reads "%" as the percent operator.
std::vector<MXOperatorDescription> operatorDescriptions(bool percentSign = false);

}  // namespace tarnkit
