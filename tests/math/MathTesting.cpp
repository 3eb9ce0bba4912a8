#include "tests/math/MathTesting.h"

#include "tarnkit/platform/numbers/NumberText.h"

namespace tarnkit::testing {

std::string evaluated(const MXMathEvaluator& evaluator, std::string_view text,
                      const MXSubstitutions& substitutions) {
  MXError error;
  const auto value = evaluator.evaluateString(text, substitutions, &error);
  return value ? shortestText(value->doubleValue()) : textOf(error);
}

std::string evaluated(std::string_view text, const MXSubstitutions& substitutions) {
  return evaluated(*MXMathEvaluator::defaultMathEvaluator(), text, substitutions);
}

std::uint32_t ExpressionGenerator::below(std::uint32_t bound) {
  state_ ^= state_ << 13;
  state_ ^= state_ >> 17;
  state_ ^= state_ << 5;
  return state_ % bound;
}

std::string ExpressionGenerator::anyTokens() {
  static const std::vector<std::string> kPieces = {
      "1", "2.5", "$a", "$b", "x", "pi", "f(", "max(", "(",  ")",   "(",  ")",    ",",   "+",
      "-", "*",   "/",  "**", "!", "~",  "°",  "%",    "==", "!=",  "<",  "<=",   "&&",  "||",
      "&", "|",   "^",  "<<", "¬", "1",  "$a", "3",    "$",  "'q'", "2e", "0x1",  "\"z", "−",
      "×", " ",   "-",  "+",  "π", "0x", "''", "'$a'", "=<", "≯",   ".5", "MAX(", "!",   "\xff"};
  std::string text;
  for (std::uint32_t count = 1 + below(12); count > 0; --count) {
    text += kPieces[below(static_cast<std::uint32_t>(kPieces.size()))];
    if (below(3) == 0) text += ' ';
  }
  return text;
}

std::string ExpressionGenerator::wellFormed(int depth) {
  static const char* const kBinary[] = {"+",  "-", "*", "/", "**", "%",  "<",  ">=", "==", "&&",
                                        "||", "&", "|", "^", "<<", ">>", "!=", "-",  "+",  "*"};
  static const char* const kPrefix[] = {"-", "!", "~", "-", "-"};
  static const char* const kFunctions[] = {"sin", "abs", "sqrt", "percent", "ln", "dtor", "asin"};
  static const char* const kLists[] = {"max", "min", "sum", "average", "median", "stddev"};
  if (depth <= 0) {
    static const char* const kLeaves[] = {"1", "2", "0.5", "$a", "$b", "$c", "pi", "10", "3.25"};
    return kLeaves[below(9)];
  }
  switch (below(8)) {
    case 0:
      return "(" + wellFormed(depth - 1) + ")";
    case 1:
      return kPrefix[below(5)] + ("(" + wellFormed(depth - 1) + ")");
    case 2:
      return kFunctions[below(7)] + ("(" + wellFormed(depth - 1) + ")");
    case 3: {
      std::string text = kLists[below(6)] + ("(" + wellFormed(depth - 1));
      for (std::uint32_t i = 1 + below(3); i > 0; --i) text += "," + wellFormed(depth - 1);
      return text + ")";
    }
    default:
      return wellFormed(depth - 1) + kBinary[below(20)] + wellFormed(depth - 1);
  }
}

}  // namespace tarnkit::testing
