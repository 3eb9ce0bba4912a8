#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <limits>

#include "tarnkit/math/MXMathStringTokenizer.h"
#include "tests/math/MathTesting.h"

namespace tarnkit::testing {
namespace {

struct Case {
  const char* text;
  const char* result;
};

TEST(Tokenizer, CutsTexts) {
  const Case cases[] = {
      {"", ""},
      {"  \t\n\u2003", ""},
      {"3x", "3 * x ( )"},
      {"2(1)", "2 * ( 1 )"},
      {"(1)(2)", "( 1 ) * ( 2 )"},
      {"2$a", "2 * $a"},
      {"$a$b", "$a * $b"},
      {"pi*2", "pi ( ) * 2"},
      {"x y", "x ( ) * y ( )"},
      {"f(1)2", "f ( 1 ) * 2"},
      {"5!2", "5 ! * 2"},
      {"3 -2", "3 - 2"},
      {"2~1", "2 * ~ 1"},
      {"+3", "3"},
      {"2 + + 3", "2 + 3"},
      {"1e5 1.5E-3 2e 2e+", "1e5 * 1.5E-3 * 2 * e ( ) * 2 * e ( ) +"},
      {".5", ".5"},
      {"1.2.3", "1.2 * .3"},
      {".", ". ( )"},
      {".e .e+1", ".e ( ) * .e+1"},
      {".e5", ".e5"},
      {"0x+1", "1"},
      {"0x1F", "31"},
      {"0XfF", "255"},
      {"0xfffffffffffffffff", "18446744073709551615"},
      {"0xg", "g ( )"},
      {"x2", "x2 ( )"},
      {"'my var'", "$my var"},
      {"\"a\\\"b\"", "$a\"b"},
      {"'\\n'", "$n"},
      {"a'b", "a'b ( )"},
      {"πr", "π ( ) * r ( )"},
      {"rπ", "rπ ( )"},
      {"a <= b", "a ( ) <= b ( )"},
      {"a =< b", "a ( ) =< b ( )"},
      {"1<-2", "1 < - 2"},
      {"2**3", "2 ** 3"},
      {"1−−2", "1 − − 2"},
      {"9°×2", "9 ° × 2"},
      {"1\u00A02", "1 * 2"},
      {"SIN(1)", "SIN ( 1 )"},
      {"\xFF\xC3(", "\uFFFD\uFFFD ("},
      {"0x", "5 unable to parse hex number"},
      {"0x 1", "5 unable to parse hex number"},
      {"$", "4 variable names must be at least 1 character long"},
      {"$ a", "4 variable names must be at least 1 character long"},
      {"$'a'", "4 variable names must be at least 1 character long"},
      {"'abc", "4 Unable to parsed quoted variable name"},
      {"1 + \"", "4 Unable to parsed quoted variable name"},
      {"'a\\", "4 Unable to parsed quoted variable name"},
      {"f(1,!", "6 unknown precedence for token: !"},
      {"f(1,!0)", "f ( 1 , ! 0 )"},
  };
  for (const Case& each : cases) EXPECT_EQ(tokens(each.text), each.result) << each.text;
  EXPECT_EQ(tokens(std::string_view("1+2\0)", 5)), "1 + 2") << "the text ends at a NUL";
}

std::string functions(std::string_view text) {
  std::string all;
  const auto tokenizer = MXMathStringTokenizer::tokenizerWithString(text, nullptr);
  while (const auto token = tokenizer->nextObject()) {
    if (token->tokenType() == MXTokenType::op) all += token->operatorType().toStdString() + " ";
  }
  return all;
}

TEST(Tokenizer, SettlesWhatAnOperatorIs) {
  const Case cases[] = {
      {"-3", "negate "},
      {"2-3", "subtract "},
      {"2*-3", "multiply negate "},
      {"(-1)-1", "open_paren negate close_paren subtract "},
      {"f(1,-2)", "open_paren comma negate close_paren "},
      {"5!-1", "factorial subtract "},
      {"pi-1", "open_paren close_paren subtract "},
      {"5!", "factorial "},
      {"5!!", "factorial factorial "},
      {"!1", "l_not "},
      {"1+!1", "add l_not "},
      {"!!1", "l_not l_not "},
      {"(1)!", "open_paren close_paren factorial "},
      {"f(1,!0)", "open_paren comma invalid close_paren "},
      {"1 != 2", "l_neq "},
      {"a ≤ b", "open_paren close_paren l_ltoe open_paren close_paren "},
      {"a ≯ b", "open_paren close_paren l_ltoe open_paren close_paren "},
      {"5 % 2", "mod "},
  };
  for (const Case& each : cases) EXPECT_EQ(functions(each.text), each.result) << each.text;
}

TEST(Tokenizer, Enumerates) {
  const auto tokenizer = MXMathStringTokenizer::tokenizerWithString("1 + 0x10", nullptr);
  EXPECT_EQ(tokenizer->peekNextObject()->token(), "1");
  EXPECT_EQ(tokenizer->nextObject()->numberValue().doubleValue(), 1);
  EXPECT_EQ(tokenizer->allObjects().size(), 2U);
  tokenizer->nextObject();
  EXPECT_EQ(tokenizer->nextObject()->numberValue().description(), "16");
  EXPECT_FALSE(tokenizer->nextObject());
  EXPECT_TRUE(tokenizer->allObjects().empty());
  tokenizer->reset();
  EXPECT_EQ(tokenizer->allObjects().size(), 3U);
}

class Watcher final : public MXMathStringTokenizer {
 public:
  std::string seen;

 protected:
  void didParseToken(const Ref<MXMathStringToken>& token) override {
    seen += token ? token->description().toStdString() + ";" : "end";
  }
};

TEST(Tokenizer, ShowsEveryTokenToASubclass) {
  const auto watcher = make<Watcher>();
  ASSERT_TRUE(watcher->initWithString("2$x", nullptr));
  EXPECT_EQ(watcher->seen, "2;*;$x;end");
}

/// Changes operators, and looks up the tables of its changes, at every token.
class Meddler final : public MXMathStringTokenizer {
 public:
  int tokenCount = 0;

 protected:
  void didParseToken(const Ref<MXMathStringToken>& token) override {
    const auto own = make<MXMathOperatorSet>();
    own->setInterpretsPercentSignAsModulo(false);
    const auto& shared = MXMathOperatorSet::defaultOperatorSet();
    shared->setInterpretsPercentSignAsModulo(!shared->interpretsPercentSignAsModulo());
    tokenizerWithString("1+1", own, nullptr);
    tokenizerWithString("1+1", nullptr);
    if (token) ++tokenCount;
  }
};

TEST(Tokenizer, EndsItsTextWithTheOperatorsThatItBeganWith) {
  EXPECT_EXIT(
      {
        const auto meddler = make<Meddler>();
        const bool isRead = meddler->initWithString("1 + $x * (2 - 3) / -4 == 1 % 2", nullptr);
        std::_Exit(isRead && meddler->tokenCount == 16 ? 0 : 1);
      },
      ::testing::ExitedWithCode(0), "");
}

// Operators that begin with letters of numbers, and that go on from a shorter one.
void tokenizeWithOddOperators() {
  const auto& set = MXMathOperatorSet::defaultOperatorSet();
  set->addTokens({String("mode"), String("<x"), String("+:")}, String("add"));
  EXPECT_EQ(tokens("1e2 mode 3"), "1e2 mode 3");
  EXPECT_EQ(tokens("0x1 MODE .5"), "1 mode .5");
  EXPECT_EQ(tokens("1<X2"), "1 <x 2");
  EXPECT_EQ(tokens("1<2"), "1 < 2");
  EXPECT_EQ(tokens("1+:-2"), "1 +: - 2");
  EXPECT_EQ(tokens("1+-2"), "1 + - 2");
  EXPECT_EQ(tokens("1d"), "2 d is not a valid operator");
}

TEST(Tokenizer, ShowsTheTokensThatItMakesObjectsOf) {
  ExpressionGenerator generator(3);
  for (int i = 0; i < 3000; ++i) {
    const std::string text = generator.anyTokens();
    MXError error;
    MXError wantedError;
    std::string shown;
    const bool isRead = MXMathStringTokenizer::eachToken(
        text,
        [&shown](const MXTokenText& token) {
          shown += std::to_string(static_cast<int>(token.type));
          shown.append(token.token).append(" ").append(token.function).append(" ");
        },
        &error);
    const auto tokenizer = MXMathStringTokenizer::tokenizerWithString(text, &wantedError);
    ASSERT_EQ(isRead, tokenizer != nullptr) << text;
    ASSERT_EQ(textOf(error), textOf(wantedError)) << text;
    std::string wanted;
    while (const auto token = isRead ? tokenizer->nextObject() : nullptr) {
      const bool isOperator = token->tokenType() == MXTokenType::op;
      wanted += std::to_string(static_cast<int>(token->tokenType()));
      wanted.append(token->token().view()).append(" ");
      wanted.append(isOperator ? token->operatorType().view() : "").append(" ");
    }
    if (!isRead) continue;
    ASSERT_EQ(shown, wanted) << text;
  }
}

TEST(Tokenizer, NamesVariablesWithoutMakingTokens) {
  const char* const texts[] = {
      "",        "1+1",  "$b + sin($a) * $b", "2$x$y", "$A + $a", "\"a b\" + 'c' - \"a b\"",
      "a + a()", "-$ü!", "$1x * 0x1F",
  };
  for (const char* const text : texts) {
    MXError error;
    const auto tokenizer = MXMathStringTokenizer::tokenizerWithString(text, &error);
    ASSERT_TRUE(tokenizer) << text << ": " << error.localizedDescription();
    std::vector<String> expected;
    for (const auto& token : tokenizer->allObjects()) {
      if (token->tokenType() != MXTokenType::variable) continue;
      if (std::count(expected.begin(), expected.end(), token->token()) == 0) {
        expected.push_back(token->token());
      }
    }
    EXPECT_EQ(MXMathStringTokenizer::variableNames(text, &error), expected) << text;
    EXPECT_FALSE(error) << text;
  }
  MXError error;
  EXPECT_TRUE(MXMathStringTokenizer::variableNames("$a + \"b", &error).empty());
  MXError same;
  EXPECT_FALSE(MXMathStringTokenizer::tokenizerWithString("$a + \"b", &same));
  EXPECT_EQ(error.code(), same.code());
}

TEST(Tokenizer, CutsLongestOperators) {
  EXPECT_EXIT(
      {
        tokenizeWithOddOperators();
        std::fflush(stdout);
        std::_Exit(::testing::Test::HasFailure() ? 1 : 0);
      },
      ::testing::ExitedWithCode(0), "");
}

TEST(Token, KnowsItsOperatorOnlyWhenItIsNotAmbiguous) {
  const auto token = MXMathStringToken::mathStringTokenWithToken(String("-"), MXTokenType::op);
  EXPECT_TRUE(token->isAmbiguous());
  EXPECT_EQ(token->operatorType(), "invalid");
  EXPECT_EQ(token->operatorFunction(), "");
  EXPECT_EQ(token->operatorPrecedence(), -1);
  EXPECT_EQ(token->operatorArity(), MXOperatorArity::unknown);
  token->resolveToOperatorFunction(String("negate"));
  EXPECT_FALSE(token->isAmbiguous());
  EXPECT_EQ(token->operatorArity(), MXOperatorArity::unary);
  EXPECT_EQ(token->operatorAssociativity(), MXOperatorAssociativity::right);
  token->resolveToOperatorFunction(String("no such"));
  EXPECT_TRUE(token->isAmbiguous());
  EXPECT_FALSE(MXMathStringToken::mathStringTokenWithToken(String("?"), MXTokenType::op));
}

TEST(Token, TakesAnInvalidNumberForZero) {
  const LogLines log;
  const auto token = MXMathStringToken::mathStringTokenWithToken(String("1x"), MXTokenType::number);
  ASSERT_TRUE(token);
  EXPECT_EQ(token->numberValue().doubleValue(), 0);
  EXPECT_EQ(log.lines, std::vector<std::string>{"supposedly invalid number: 1x"});
}

// An exponent alone is a number token, if an invalid one.
TEST(Token, TakesABareExponentForZero) {
  const LogLines log;
  EXPECT_EQ(parsed("1 + .E-5"), "add(1,0)");
  EXPECT_EQ(evaluated("1 + .e5"), "1");
  EXPECT_EQ(log.lines, (std::vector<std::string>{"supposedly invalid number: .E-5",
                                                 "supposedly invalid number: .e5"}));
}

TEST(Token, ReadsNumbersToTheNearestDoubleAndKeepsTheirDigits) {
  const struct {
    const char* text;
    double value;
    const char* digits;
  } cases[] = {
      {"0.1", 0.1, "0.1"},
      {"007.50", 7.5, "7.5"},
      {"1.5E-3", 0.0015, "0.0015"},
      {"1e20", 1e20, "100000000000000000000"},
      // One rounding more would lead to another double.
      {"949700.3422365815", 949700.3422365815, "949700.3422365815"},
      {"9475556098201197e7", 9475556098201197e7, "94755560982011970000000"},
      {"0.45464845289058579", 0.45464845289058579, "0.45464845289058579"},
      {"85617502990218952e9", 85617502990218952e9, "85617502990218952000000000"},
      {"1559768401426.75154", 1559768401426.75154, "1559768401426.75154"},
      {"835937899870258506e2", 835937899870258506e2, "83593789987025850600"},
      {"809765390773306e23", 809765390773306e23, "80976539077330600000000000000000000000"},
      {"987219539723102e-23", 987219539723102e-23, "0.00000000987219539723102"},
      {"9007199254740993", 9007199254740992.0, "9007199254740993"},
      {"123456789012345678901234567890", 123456789012345678901234567890.0,
       "123456789012345678901234567890"},
      {"12345678901234567890123456789012345678.5", 12345678901234567890123456789012345678.5,
       "12345678901234567890123456789012345678"},
      {"99999999999999999999999999999999999999.9", 1e38, "100000000000000000000000000000000000000"},
      {"0.000000000000000000000000000001", 1e-30, "0.000000000000000000000000000001"},
      {"5e-324", 5e-324, "5e-324"},
      {"1e400", std::numeric_limits<double>::infinity(), "inf"},
      {"1e-400", 0, "0"},
      {"0e999999999999999", 0, "0"},
  };
  for (const auto& each : cases) {
    const auto number = MXNumber::fromText(each.text);
    EXPECT_EQ(number.doubleValue(), each.value) << each.text;
    EXPECT_EQ(number.description(), each.digits) << each.text;
  }
}

}  // namespace
}  // namespace tarnkit::testing
