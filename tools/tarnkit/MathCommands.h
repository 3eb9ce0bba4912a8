#pragma once

#include <string>
#include <vector>

#include "tarnkit/math/MXMathEvaluator.h"
#include "tarnkit/math/MXMathStringTokenizer.h"

namespace CLI {
class App;
}

namespace tarnkit::tool {

/// `tarnkit eval`: the value of one expression.
void addEvalCommand(CLI::App& program);
/// `tarnkit tokens`, `parse`, `simplify`, `rewrite`: what the engine makes of one expression.
void addExpressionCommands(CLI::App& program);
/// `tarnkit math`: the batch form, JSON lines in and out.
void addMathBatchCommand(CLI::App& program);

/// Gives a command the argument EXPRESSION, which may begin with "-".
void addExpressionArgument(CLI::App& command, std::string& expression);
/// To be called first in the command's callback: takes an expression that looked like an option.
/// Throws CLI11's exceptions for a wrong command line.
void takeExpression(const CLI::App& command, std::string& expression);

/// Reads "%" as the percent operator for the rest of the process; the rewriter's rules, which mean
/// the modulo, are made before.
void readPercentSignAsPercent();
/// "MESSAGE (code N)".
std::string describeError(const MXError& error);
/// A value for a variable: a number where the text is one, otherwise an expression. A number whose
/// digits are to be kept is an expression too.
Ref<Object> substitutionFromText(const std::string& text, bool keepsDigits);
/// The shortest text that reads back to the same double, or, for a precise value, all digits that a
/// decimal holds of it; "NaN" for what is no decimal.
std::string valueText(const MXNumber& value, bool precise);

}  // namespace tarnkit::tool
