#pragma once

#include <string>

#include "tarnkit/platform/objects/Ref.h"

namespace CLI {
class App;
}

namespace tarnkit {
class MXNumber;
class Object;
}  // namespace tarnkit

namespace tarnkit::tool {

// What the commands of the expression engine have in common.

/// Gives a command the argument EXPRESSION, which may begin with "-".
void addExpressionArgument(CLI::App& command, std::string& expression);
/// To be called first in the command's callback: takes an expression that looked like an option.
/// Throws CLI11's exceptions for a wrong command line.
void takeExpression(const CLI::App& command, std::string& expression);

/// Reads "%" as the percent operator for the rest of the process; the rewriter's rules, which mean
/// the modulo, are made before.
void readPercentSignAsPercent();
/// A value for a variable: a number where the text is one, otherwise an expression. A number whose
/// digits are to be kept is an expression too.
Ref<Object> substitutionFromText(const std::string& text, bool keepsDigits);
/// The shortest text that reads back to the same double, or, for a precise value, all digits that a
/// decimal holds of it; "NaN" for what is no decimal.
std::string valueText(const MXNumber& value, bool precise);

}  // namespace tarnkit::tool
