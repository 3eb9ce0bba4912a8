#pragma once

#include <span>
#include <string>
#include <string_view>

namespace tarnkit {
class JSONWriter;
class MXError;
}  // namespace tarnkit

namespace tarnkit::tool {

/// What went wrong with an expression, as the commands tell it. Refers to all that it is made of.
struct ExpressionFailure {
  const MXError& error;
  std::string_view expression;
  /// The names of the variables that have values.
  std::span<const std::string> variables = {};

  /// What was probably meant: `"x" is a function here; the variable is $x`. "" where nobody knows.
  std::string hint() const;
  /// `{"error":{"code","message","offset","length","hint"}}`; the two of the place are left out
  /// where there is none, and so is the hint. Nothing is written before what takes memory is done.
  void writeJSON(JSONWriter& json) const;
  /// Tells it on standard error in one line, "MESSAGE (code N); HINT"; on a terminal with the
  /// expression below, and marks under the place. Ends the command with exit status 1.
  [[noreturn]] void end() const;
};

}  // namespace tarnkit::tool
