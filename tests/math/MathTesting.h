#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "tarnkit/math/MXMathEvaluator.h"
#include "tarnkit/math/MXMathStringTokenizer.h"
#include "tarnkit/math/MXParser.h"
#include "tarnkit/platform/system/Log.h"

namespace tarnkit::testing {

/// "CODE MESSAGE" of an error, "" of none.
inline std::string textOf(const MXError& error) {
  if (!error) return "";
  return std::to_string(static_cast<int>(error.code())) + " " + error.localizedDescription();
}

/// A parsed tree's description, or the error's text.
inline std::string parsed(std::string_view text) {
  MXError error;
  const auto expression = MXExpression::expressionFromString(text, &error);
  return expression ? expression->description().toStdString() : textOf(error);
}

/// The same by the road over token objects.
inline std::string parsedFromTokens(std::string_view text) {
  MXError error;
  const auto parser = MXParser::parserWithString(text, &error);
  const auto expression = parser ? parser->parsedExpressionWithError(&error) : nullptr;
  return expression ? expression->description().toStdString() : textOf(error);
}

/// The tokens' descriptions with blanks between, or the error's text.
inline std::string tokens(std::string_view text) {
  MXError error;
  // Without the NUL behind a string, so that AddressSanitizer sees a read past the end.
  const std::vector<char> exact(text.begin(), text.end());
  const auto tokenizer =
      MXMathStringTokenizer::tokenizerWithString({exact.data(), exact.size()}, &error);
  if (!tokenizer) return textOf(error);
  std::string all;
  while (const auto token = tokenizer->nextObject()) {
    if (!all.empty()) all += ' ';
    all += token->description().view();
  }
  return all;
}

/// A value's shortest text, or the error's text.
std::string evaluated(const MXMathEvaluator& evaluator, std::string_view text,
                      const MXSubstitutions& substitutions = {});
std::string evaluated(std::string_view text, const MXSubstitutions& substitutions = {});

/// Gathers the lines of the log while it lives.
class LogLines {
 public:
  LogLines()
      : earlier_(Log::setSink([this](std::string_view line) { lines.emplace_back(line); })) {}
  ~LogLines() { Log::setSink(earlier_); }
  LogLines(const LogLines&) = delete;
  LogLines& operator=(const LogLines&) = delete;

  std::vector<std::string> lines;

 private:
  Log::Sink earlier_;
};

/// Pseudo-random texts of expressions, well-formed for the most part; the same on every run.
class ExpressionGenerator {
 public:
  explicit ExpressionGenerator(std::uint32_t seed) : state_(seed * 2654435761U + 1) {}
  /// Out of all tokens, in any order.
  std::string anyTokens();
  /// Following the grammar; deterministic built-ins only.
  std::string wellFormed(int depth);
  std::uint32_t below(std::uint32_t bound);

 private:
  std::uint32_t state_;
};

}  // namespace tarnkit::testing
