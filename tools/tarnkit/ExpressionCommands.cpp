#include <CLI/CLI.hpp>
#include <memory>
#include <string>

#include "tarnkit/math/MXMathEvaluator.h"
#include "tarnkit/math/MXMathStringTokenizer.h"
#include "tools/tarnkit/ExpressionErrors.h"
#include "tools/tarnkit/MathCommands.h"
#include "tools/tarnkit/MathSupport.h"
#include "tools/tarnkit/Output.h"

namespace tarnkit::tool {

namespace {

struct ExpressionOptions {
  std::string expression;
  bool percent = false;
};

void printTokens(const std::string& text) {
  MXError error;
  std::string lines;
  const auto print = [&lines](const MXTokenText& token) {
    if (token.type == MXTokenType::variable) lines += '$';
    lines += token.token;
    lines += '\n';
  };
  if (!MXMathStringTokenizer::eachToken(text, print, &error)) ExpressionFailure{error, text}.end();
  writeToStandardOutput(lines);
}

Ref<MXExpression> parse(const std::string& text) {
  MXError error;
  auto expression = MXExpression::expressionFromString(text, &error);
  if (!expression) ExpressionFailure{error, text}.end();
  return expression;
}

void print(const Ref<MXExpression>& expression) {
  writeToStandardOutput(expression->description().toStdString() + '\n');
}

template <class Work>
void add(CLI::App& program, const char* name, const char* purpose, Work work) {
  auto options = std::make_shared<ExpressionOptions>();
  auto* const command = program.add_subcommand(name, purpose);
  addExpressionArgument(*command, options->expression);
  command->add_flag("--percent", options->percent, "Read % as the percent operator, not as modulo");
  command->callback([options, command, work] {
    takeExpression(*command, options->expression);
    if (options->percent) readPercentSignAsPercent();
    work(options->expression);
  });
}

}  // namespace

void addExpressionCommands(CLI::App& program) {
  add(program, "tokens", "Print the tokens of an expression, one a line", printTokens);
  add(program, "parse", "Print the tree of an expression",
      [](const std::string& text) { print(parse(text)); });
  add(program, "simplify", "Print the tree of an expression with its constants folded",
      [](const std::string& text) {
        MXError error;
        const auto simplified = parse(text)->simplifiedExpressionWithEvaluator(nullptr, &error);
        if (!simplified) ExpressionFailure{error, text}.end();
        print(simplified);
      });
  add(program, "rewrite", "Print the tree of an expression, simplified by the rewrite rules",
      [](const std::string& text) {
        print(
            MXMathEvaluator::defaultMathEvaluator()->expressionByRewritingExpression(parse(text)));
      });
}

}  // namespace tarnkit::tool
