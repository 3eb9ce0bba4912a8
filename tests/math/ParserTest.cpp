#include <algorithm>

#include "tarnkit/math/MXParser.h"
#include "tests/math/MathTesting.h"
#include "tests/math/ReferenceParser.h"

namespace tarnkit::testing {
namespace {

struct Case {
  const char* text;
  const char* result;
};

TEST(Parser, GivesTheTreeOrTheError) {
  const Case cases[] = {
      {"1 + 2 * 3", "add(1,multiply(2,3))"},
      {"(1 + 2) * 3", "multiply(add(1,2),3)"},
      {"8 - 2 - 1", "subtract(subtract(8,2),1)"},
      {"2 ** 3 ** 2", "pow(2,pow(3,2))"},
      {"-2 ** 2", "negate(pow(2,2))"},
      {"2 ** -2 ** 2", "pow(2,negate(pow(2,2)))"},
      {"2 * -3", "multiply(2,negate(3))"},
      {"2 * - - 3 + 1", "add(multiply(2,negate(negate(3))),1)"},
      {"!1 + 2", "l_not(add(1,2))"},
      {"2 * !1 + 2", "add(multiply(2,l_not(1)),2)"},
      {"3!", "factorial(3)"},
      {"2 ** 3!", "factorial(pow(2,3))"},
      {"!0", "l_not(0)"},
      {"5 - 90°", "subtract(5,dtor(90))"},
      {"1 < 2 == 2 > 1", "l_eq(l_lt(1,2),l_gt(2,1))"},
      {"max(1, 2, 3)", "max(1,2,3)"},
      {"MAX(1, (2), sin(pi))", "MAX(1,2,sin(pi()))"},
      {"f(1,)", "f(1)"},
      {"f()", "f()"},
      {"'$q' + \"$\\\"\"", "add($q,$\")"},
      // Operators of one level are taken from the end that the first of them says.
      {"~1 + 1 % 2 % 3", "add(not(1),mod(1,mod(2,3)))"},
      {"1 % 2 % ~3", "mod(mod(1,2),not(3))"},
      // A ")" too many is a postfix operator like any other.
      {"1)", "close_paren(1)"},
      {"", "1 Unable to create expression from term: ()"},
      {"()", "1 Unable to create expression from term: ()"},
      {"f(,1)", "1 Unable to create expression from term: ()"},
      {"(1", "7 imbalanced parentheses"},
      {"max(1", "7 missing parentheses after function \"max\""},
      {"f((g(1)", "7 missing parentheses after function \"f\""},
      {"((f(1", "7 missing parentheses after function \"f\""},
      {"1, 2", "8 unknown arity for operator: ,"},
      {"f(1, !0)", "8 unknown arity for operator: !"},
      {"* 2", "9 no left operand to binary *"},
      {"1 +", "10 no right operand to binary +"},
      {"°", "11 no left operand to unary °"},
      {"-", "12 no right operand to unary -"},
      {"2 * -", "12 no right operand to unary -"},
      {"2 * - -", "12 no right operand to unary -"},
      {"f(+ , 1) + f(*, 2)", "13 missing operands for operator: *"},
      {"3! ** 2", "1 invalid format: (3pow(!,2))"},
      {"2 * - * 3", "1 invalid format: (multiply(2,negate(*))3)"},
      {"''", "4 variable names must be at least 1 character long"},
      {"0x", "5 unable to parse hex number"},
  };
  for (const Case& each : cases) {
    EXPECT_EQ(parsed(each.text), each.result) << each.text;
    EXPECT_EQ(parsedFromTokens(each.text), each.result) << each.text;
  }
}

// Every road gives what folding the tightest operator again and again gives, errors included.
TEST(Parser, AgreesWithTheReferenceOnGeneratedTexts) {
  ExpressionGenerator generator(7);
  int trees = 0;
  for (int i = 0; i < 40000; ++i) {
    const std::string text = i % 4 == 0 ? generator.wellFormed(4) : generator.anyTokens();
    const std::string expected = referenceParse(text);
    ASSERT_EQ(parsed(text), expected) << text;
    ASSERT_EQ(parsedFromTokens(text), expected) << text;
    trees += expected.find(' ') == std::string::npos ? 1 : 0;
  }
  EXPECT_GT(trees, 10000);
}

// With other precedences and sides the fast road must notice when it may not be taken.
TEST(Parser, AgreesWithTheReferenceForChangedOperators) {
  const auto& set = MXMathOperatorSet::defaultOperatorSet();
  const auto change = [&](const char* function, std::int64_t by) {
    const auto info = set->operatorForFunction(String(function));
    info->setPrecedence(info->precedence() + by);
  };
  const auto power = set->operatorForFunction(String("pow"));
  const std::pair<const char*, std::int64_t> changes[] = {
      {"negate", 2}, {"factorial", 2}, {"l_not", 7}, {"add", 4}, {"pow", -2}, {"not", -3}};
  const auto compare = [](std::uint32_t seed) {
    ExpressionGenerator generator(seed);
    for (int i = 0; i < 5000; ++i) {
      const std::string text = i % 4 == 0 ? generator.wellFormed(4) : generator.anyTokens();
      ASSERT_EQ(parsed(text), referenceParse(text)) << text;
    }
  };
  std::uint32_t seed = 100;
  for (const auto& [function, by] : changes) {
    change(function, by);
    compare(++seed);
    change(function, -by);
  }
  power->setAssociativity(MXOperatorAssociativity::left);
  EXPECT_EQ(parsed("2 ** 3 ** 2"), "pow(pow(2,3),2)");
  compare(++seed);
  power->setAssociativity(MXOperatorAssociativity::right);
  EXPECT_EQ(parsed("2 ** 3 ** 2"), "pow(2,pow(3,2))");
}

TEST(Parser, UsesItsTokenizersOperatorSetForAssociativity) {
  const auto set = make<MXMathOperatorSet>();
  set->operatorForFunction(String("pow"))->setAssociativity(MXOperatorAssociativity::left);
  MXError error;
  const auto parser = MXParser::parserWithTokenizer(
      MXMathStringTokenizer::tokenizerWithString("2 ** 3 ** 2", set, &error), &error);
  ASSERT_TRUE(parser);
  EXPECT_EQ(parser->associativityForOperatorFunction(String("pow")), MXOperatorAssociativity::left);
  EXPECT_EQ(parser->associativityForOperatorFunction(String("no such")),
            MXOperatorAssociativity::left);
  EXPECT_EQ(parser->parsedExpressionWithError(&error)->description(), "pow(pow(2,3),2)");
  // It starts from the first token again.
  EXPECT_EQ(parser->parsedExpressionWithError(&error)->description(), "pow(pow(2,3),2)");
  EXPECT_FALSE(MXParser::parserWithTokenizer(nullptr, &error));
}

// A long tree is built where it stays, or not, when its memory was guessed too small.
TEST(Parser, TakesLongTexts) {
  ExpressionGenerator generator(41);
  for (const char* piece : {"1", "2a ", "0xff+", "'a\\'b'*", "f(1,", "name_of_many_letters ", "(",
                            ")", "max(1,2)+", "-", "$x**", "π"}) {
    std::string text;
    while (text.size() < 9000) {
      text += piece;
      if (generator.below(3) == 0) text += "1 ";
    }
    if (piece == std::string_view("f(1,")) text += std::string(9000, ')');
    EXPECT_EQ(parsed(text + "1"), parsedFromTokens(text + "1")) << piece;
    EXPECT_EQ(parsed(text), parsedFromTokens(text)) << piece;
  }
}

TEST(Parser, TakesAnyBytes) {
  ExpressionGenerator generator(23);
  for (int i = 0; i < 20000; ++i) {
    std::string text;
    for (std::uint32_t n = generator.below(24); n > 0; --n) {
      text += static_cast<char>(generator.below(256));
    }
    ASSERT_EQ(parsed(text), parsedFromTokens(text)) << text;
  }
}

}  // namespace
}  // namespace tarnkit::testing
