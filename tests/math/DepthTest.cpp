#include <chrono>

#include "tarnkit/math/MXCompiledExpression.h"
#include "tarnkit/math/MXExpressionRewriter.h"
#include "tarnkit/math/MXMathParsing.h"
#include "tarnkit/platform/coding/StandardKeyedArchiver.h"
#include "tarnkit/platform/coding/StandardKeyedUnarchiver.h"
#include "tarnkit/platform/objects/Data.h"
#include "tests/math/MathTesting.h"

namespace tarnkit::testing {
namespace {

constexpr int kDepth = 100000;

std::string repeated(const std::string& piece, int count) {
  std::string text;
  for (int i = 0; i < count; ++i) text += piece;
  return text;
}

// A tree as deep as this would run any recursion into the end of the stack.
void expectEveryOperationEnds(const std::string& text, bool withArchive = true) {
  const auto tree = MXExpression::expressionFromString(text, nullptr);
  ASSERT_TRUE(tree);
  const auto& evaluator = MXMathEvaluator::defaultMathEvaluator();
  const MXSubstitutions substitutions{{"x", Number::withInt(1)}};
  EXPECT_TRUE(tree->copy()->isEqual(*tree));
  EXPECT_GT(tree->description().size(), std::size_t{kDepth});
  EXPECT_TRUE(evaluator->evaluateExpression(*tree, substitutions, nullptr));
  const MXSubstitutions asStrings{{"x", String("1").object()}};
  EXPECT_TRUE(evaluator->evaluateExpression(*tree, asStrings, nullptr));
  EXPECT_TRUE(tree->simplifiedExpression());
  EXPECT_TRUE(evaluator->expressionByRewritingExpression(tree));
  const double x[] = {1};
  EXPECT_TRUE(MXCompiledExpression::compile(tree, evaluator)->evaluate(x));
  if (!withArchive) return;
  registerMathClasses();
  const auto data = StandardKeyedArchiver::archivedData(tree.get(), 0);
  const auto decoded = StandardKeyedUnarchiver::unarchive(data->bytes(), 0);
  ASSERT_TRUE(decoded) << decoded.status().message();
  EXPECT_TRUE(decoded->isEqual(*tree));
}

TEST(Depth, OfParentheses) {
  expectEveryOperationEnds(repeated("(1+", kDepth) + "$x" + repeated(")", kDepth));
}
TEST(Depth, OfUnaryRuns) { expectEveryOperationEnds(repeated("-", kDepth + 1) + "$x"); }
TEST(Depth, OfArgumentLists) {
  expectEveryOperationEnds(repeated("max(1,", kDepth) + "$x" + repeated(")", kDepth));
}
TEST(Depth, OfFunctionsWithConditionsInTheirRules) {
  expectEveryOperationEnds(repeated("abs(1+", kDepth) + "$x" + repeated(")", kDepth));
}
TEST(Depth, OfPowers) { expectEveryOperationEnds(repeated("$x**", kDepth) + "1", false); }

TEST(Depth, OfBareParenthesesAndOfErrors) {
  EXPECT_EQ(parsed(repeated("(", kDepth) + "1" + repeated(")", kDepth)), "1");
  EXPECT_EQ(parsed(repeated("(", kDepth)), "7 imbalanced parentheses");
  EXPECT_EQ(parsed(repeated("f(", kDepth)), "7 missing parentheses after function \"f\"");
  EXPECT_EQ(parsed(repeated("(1+", kDepth) + repeated(")", kDepth)),
            "10 no right operand to binary +");
  EXPECT_EQ(parsed(repeated("-", kDepth)), "12 no right operand to unary -");
  EXPECT_EQ(parsed(repeated("2*-", kDepth) + "*3").substr(0, 2), "1 ");
}

TEST(Depth, OfAliasesAndRegisteredFunctions) {
  const auto evaluator = make<MXMathEvaluator>();
  evaluator->registerFunction(
      [](const auto& arguments, const auto& variables, const auto& calledBy,
         MXError* error) -> Ref<MXExpression> {
        const auto value = calledBy.evaluateExpression(*arguments[0], variables, error);
        return value ? MXExpression::numberExpressionWithNumber(*value) : nullptr;
      },
      String("same"));
  EXPECT_EQ(evaluated(*evaluator, repeated("avg(1,", kDepth) + "1" + repeated(")", kDepth)), "1");
  EXPECT_EQ(evaluated(*evaluator, repeated("same(", 100) + "1" + repeated(")", 100)), "1");
  EXPECT_EQ(evaluated(*evaluator, repeated("same(", 5000) + "1" + repeated(")", 5000)),
            "1 the expression refers to itself or is nested too deeply");
}

TEST(Depth, OfTreesBuiltFromObjects) {
  auto tree = MXExpression::variableExpressionWithVariable(String("x"));
  for (int i = 0; i < kDepth; ++i) {
    tree = MXExpression::functionExpressionWithFunction(
        String("add"), {tree, MXExpression::numberExpressionWithNumber(1)}, nullptr);
  }
  const MXSubstitutions substitutions{{"x", Number::withInt(5)}};
  const auto& evaluator = MXMathEvaluator::defaultMathEvaluator();
  EXPECT_EQ(evaluator->evaluateExpression(*tree, substitutions, nullptr)->doubleValue(),
            5 + kDepth);
  EXPECT_TRUE(tree->copy()->isEqual(*tree));
}

}  // namespace
}  // namespace tarnkit::testing
