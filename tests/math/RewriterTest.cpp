#include "tarnkit/math/MXExpressionRewriter.h"
#include "tarnkit/math/MXRewriteRule.h"
#include "tests/math/MathTesting.h"

namespace tarnkit::testing {
namespace {

std::string rewritten(const MXExpressionRewriter& rewriter, const char* text) {
  const auto expression = MXExpression::expressionFromString(text, nullptr);
  return rewriter
      .expressionByRewritingExpression(expression, *MXMathEvaluator::defaultMathEvaluator())
      ->description()
      .toStdString();
}

TEST(Rewriter, AppliesTheBuiltInRules) {
  const std::pair<const char*, const char*> cases[] = {
      {"0 + $x", "$x"},
      {"$x + 0", "$x"},
      {"$x + $x", "multiply($x,2)"},
      {"sin($x) + SIN($x)", "multiply(2,sin($x))"},
      {"$x - $x", "0"},
      {"1 * $x", "$x"},
      {"$x * 1", "$x"},
      {"$x * $x", "pow($x,2)"},
      {"3 * $x", "multiply($x,3)"},
      {"0 * f($x)", "0"},
      {"f($x) * 0", "0"},
      {"--$x", "$x"},
      {"abs(-$x)", "abs($x)"},
      {"exp($x) * exp($y)", "exp(add($x,$y))"},
      {"($x ** 3) * ($y ** 3)", "pow(multiply($x,$y),3)"},
      {"$x ** 0", "1"},
      {"$x ** 1", "$x"},
      {"sqrt($x ** 2)", "abs($x)"},
      {"dtor(rtod($x))", "$x"},
      {"rtod(dtor($x))", "$x"},
      {"$a / $a", "divide($a,$a)"},
      {"($x * 5) / 5", "$x"},
      {"(5 * sin($x)) / 5", "sin($x)"},
      {"5 / (5 * sin($x))", "divide(1,sin($x))"},
      {"5 / (sin($x) * 5)", "divide(1,sin($x))"},
      {"nthroot(pow($x, 4), 4)", "abs($x)"},
      {"nthroot(pow($x, 3), 3)", "$x"},
      {"nthroot(pow($x, 0.5), 0.5)", "nthroot(pow($x,0.5),0.5)"},
      {"abs($x)", "abs($x)"},
      {"abs(count($x))", "count($x)"},
      {"2 * 3 + 0", "6"},
      {"f(0 + $x, g(1 * $y))", "f($x,g($y))"},
      {"$x - $y", "subtract($x,$y)"},
      {"(0 + $x) - ($x * 1)", "0"},
  };
  const LogLines log;
  for (const auto& [text, result] : cases) {
    EXPECT_EQ(rewritten(*MXExpressionRewriter::defaultRewriter(), text), result) << text;
  }
  EXPECT_TRUE(log.lines.empty());
}

TEST(Rewriter, TakesConditionsFromTheVariableResolver) {
  const auto evaluator = make<MXMathEvaluator>();
  evaluator->setVariableResolver(
      [](const String& name) -> std::optional<MXNumber> { return name == "a" ? 2.0 : -3.0; });
  const auto rewrite = [&](const char* text) {
    return evaluator
        ->expressionByRewritingExpression(MXExpression::expressionFromString(text, nullptr))
        ->description()
        .toStdString();
  };
  EXPECT_EQ(rewrite("$a / $a"), "1");
  EXPECT_EQ(rewrite("abs($a) + abs($b)"), "add($a,abs($b))");
}

TEST(Rewriter, AppliesRulesOfItsOwnInOrder) {
  const auto rewriter = make<MXExpressionRewriter>();
  rewriter->addRewriteRule("h(__num1)", "g(__num1)", "__num1 > 3");
  rewriter->addRewriteRule("v(__var1)", "g(__var1)", nullptr);
  rewriter->addRewriteRule("k(__func1)", "g(__func1)", nullptr);
  rewriter->addRewriteRule("sum(__exp1, 1)", "next(__exp1)", "$__exp1 == 4");
  EXPECT_EQ(rewritten(*rewriter, "g(2)"), "g(2)");
  EXPECT_EQ(rewritten(*rewriter, "g(4)"), "h(4)");
  EXPECT_EQ(rewritten(*rewriter, "g($x)"), "v($x)");
  EXPECT_EQ(rewritten(*rewriter, "g(f($x))"), "k(f($x))");
  EXPECT_EQ(rewritten(*rewriter, "g(1, 2)"), "g(1,2)");
  // The bindings are substitutions of the condition too.
  EXPECT_EQ(rewritten(*rewriter, "next(4) + next($x)"), "add(5,next($x))");
}

TEST(Rewriter, TakesAnEmptyConditionForNone) {
  const auto rewriter = make<MXExpressionRewriter>();
  const LogLines log;
  rewriter->addRewriteRule("g(__exp1)", "f(__exp1)", String(""));
  EXPECT_TRUE(log.lines.empty());
  EXPECT_EQ(rewritten(*rewriter, "f($x)"), "g($x)");
}

TEST(Rewriter, RefusesTemplatesThatAreNoFunctions) {
  const auto rewriter = make<MXExpressionRewriter>();
  const LogLines log;
  rewriter->addRewriteRule("1", "2", nullptr);
  rewriter->addRewriteRule("1", "$x", nullptr);
  rewriter->addRewriteRule("1", "f(", nullptr);
  rewriter->addRewriteRule("(", "f(1)", nullptr);
  ASSERT_EQ(log.lines.size(), 4U);
  for (const auto& line : log.lines) EXPECT_EQ(line.rfind("error creating rule: ", 0), 0U) << line;
  EXPECT_EQ(rewritten(*rewriter, "f(2)"), "f(2)");
}

TEST(Rewriter, StopsRulesThatNeverEnd) {
  const auto swapping = make<MXExpressionRewriter>();
  swapping->addRewriteRule("f(__exp2, __exp1)", "f(__exp1, __exp2)", nullptr);
  const auto doubling = make<MXExpressionRewriter>();
  doubling->addRewriteRule("g(f(__exp1), f(__exp1))", "f(__exp1)", nullptr);
  const LogLines log;
  EXPECT_EQ(rewritten(*swapping, "f($x, $y)"), "f($x,$y)");
  EXPECT_EQ(rewritten(*swapping, "f($x, $x)"), "f($x,$x)");
  EXPECT_EQ(log.lines, std::vector<std::string>{"ABORT: replacement limit reached"});
  rewritten(*doubling, "f($x)");
  EXPECT_EQ(log.lines.size(), 2U);
}

TEST(RewriteRule, MatchesAndReplacesAtTheRoot) {
  const auto rule = detail::MXRewriteRule::rewriteRuleWithTemplate(
      String("f(__exp1, __num2)"), String("__num2 * __exp1"), nullptr);
  const auto& evaluator = *MXMathEvaluator::defaultMathEvaluator();
  const auto matching = MXExpression::expressionFromString("f($x + 1, 2)", nullptr);
  const auto nested = MXExpression::expressionFromString("g(f($x, 2))", nullptr);
  EXPECT_TRUE(rule->ruleMatchesExpression(*matching, evaluator));
  EXPECT_FALSE(rule->ruleMatchesExpression(*nested, evaluator));
  EXPECT_EQ(rule->expressionByRewritingExpression(matching, evaluator)->description(),
            "multiply(2,add($x,1))");
  EXPECT_EQ(rule->expressionByRewritingExpression(nested, evaluator), nested);
  detail::MXRewriteRule::Replacements replacements;
  EXPECT_TRUE(rule->matchExpression(*matching, replacements, evaluator));
  EXPECT_EQ(replacements.get(String("__exp1"))->description(), "add($x,1)");
  replacements.set(String("__num2"), MXExpression::numberExpressionWithNumber(3));
  EXPECT_FALSE(rule->matchExpression(*matching, replacements, evaluator));
  const std::string text = rule->description().toStdString();
  EXPECT_EQ(text.substr(text.find(" (")), " (f(__exp1(),__num2()) => multiply(__num2(),__exp1()))");
}

}  // namespace
}  // namespace tarnkit::testing
