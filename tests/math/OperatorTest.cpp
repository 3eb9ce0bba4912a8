#include <algorithm>
#include <cstdlib>
#include <functional>
#include <stdexcept>

#include "tests/math/MathTesting.h"

namespace tarnkit::testing {
namespace {

using Set = MXMathOperatorSet;
constexpr auto kBinary = MXOperatorArity::binary;
constexpr auto kUnary = MXOperatorArity::unary;
constexpr auto kLeft = MXOperatorAssociativity::left;
constexpr auto kRight = MXOperatorAssociativity::right;

std::int64_t precedence(const Set& set, const char* function) {
  return set.operatorForFunction(String(function))->precedence();
}

std::string thrownBy(const std::function<void()>& work) {
  try {
    work();
  } catch (const std::invalid_argument& thrown) {
    return thrown.what();
  }
  return "nothing";
}

Ref<MXMathOperator> op(const char* function, const char* token) {
  return MXMathOperator::withOperatorFunction(String(function), {String(token)}, kBinary, kLeft);
}

TEST(OperatorSet, HasTheDefaultTable) {
  const struct {
    const char* function;
    const char* tokens;
    MXOperatorArity arity;
    std::int64_t precedence;
    MXOperatorAssociativity associativity;
  } rows[] = {
      {"l_or", "|| ∨", kBinary, 0, kLeft},
      {"l_and", "&& ∧", kBinary, 1, kLeft},
      {"l_eq", "== =", kBinary, 2, kLeft},
      {"l_neq", "!=", kBinary, 2, kLeft},
      {"l_lt", "<", kBinary, 3, kLeft},
      {"l_gt", ">", kBinary, 4, kLeft},
      {"l_ltoe", "<= =< ≤ ≯", kBinary, 5, kLeft},
      {"l_gtoe", ">= => ≥ ≮", kBinary, 6, kLeft},
      {"l_not", "! ¬", kUnary, 7, kRight},
      {"or", "|", kBinary, 8, kLeft},
      {"xor", "^", kBinary, 9, kLeft},
      {"and", "&", kBinary, 10, kLeft},
      {"lshift", "<<", kBinary, 11, kLeft},
      {"rshift", ">>", kBinary, 12, kLeft},
      {"add", "+", kBinary, 13, kLeft},
      {"subtract", "- −", kBinary, 13, kLeft},
      {"multiply", "* ×", kBinary, 14, kLeft},
      {"divide", "/ ÷", kBinary, 14, kLeft},
      {"not", "~", kUnary, 16, kRight},
      {"negate", "- −", kUnary, 17, kRight},
      {"positive", "+", kUnary, 17, kRight},
      {"factorial", "!", kUnary, 18, kLeft},
      {"dtor", "º °", kUnary, 18, kLeft},
      {"pow", "**", kBinary, 19, kRight},
      {"open_paren", "(", kUnary, 20, kRight},
      {"close_paren", ")", kUnary, 20, kLeft},
      {"comma", ",", MXOperatorArity::unknown, 21, kLeft},
      {"mod", "%", kBinary, 16, kLeft},
  };
  const auto set = make<Set>();
  EXPECT_EQ(set->operators().size(), std::size(rows));
  EXPECT_TRUE(std::is_sorted(set->begin(), set->end(), [](const auto& a, const auto& b) {
    return a->precedence() < b->precedence();
  }));
  for (const auto& row : rows) {
    const auto info = set->operatorForFunction(String(row.function));
    ASSERT_TRUE(info) << row.function;
    std::string tokens;
    for (const String& token : info->tokens()) {
      tokens += (tokens.empty() ? "" : " ") + token.toStdString();
    }
    EXPECT_EQ(tokens, row.tokens);
    EXPECT_EQ(info->arity(), row.arity) << row.function;
    EXPECT_EQ(info->precedence(), row.precedence) << row.function;
    EXPECT_EQ(info->associativity(), row.associativity) << row.function;
  }
  // The shared table keeps the numbers from before "mod" joined.
  EXPECT_EQ(MXMathOperator::defaultOperators()[23]->function(), "pow");
  EXPECT_EQ(MXMathOperator::defaultOperators()[23]->precedence(), 18);
}

TEST(OperatorSet, LooksTokensUp) {
  const auto set = make<Set>();
  const auto functions = [&](const char* token) {
    std::string all;
    for (const auto& info : set->operatorsForToken(String(token))) {
      all += info->function().toStdString() + " ";
    }
    return all;
  };
  EXPECT_EQ(functions("-"), "subtract negate ");
  EXPECT_EQ(functions("%"), "mod ");
  EXPECT_EQ(functions("&&"), "l_and ");
  EXPECT_EQ(functions("?"), "");
  EXPECT_EQ(set->operatorForFunction(String("Add")), set->operatorForFunction(String("add")));
  EXPECT_FALSE(set->operatorForFunction(String("?")));
}

// The probe is asked when the default table is built, in a process that has none yet.
TEST(OperatorSet, GroupsPowersAsTheProbeSays) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        MXMathOperator::setPowerProbe([]() -> std::int64_t { return 64; });
        const bool left = parsed("2 ** 3 ** 2") == "pow(pow(2,3),2)";
        MXMathOperator::setPowerProbe([]() -> std::int64_t { return 512; });
        std::_Exit(left && evaluated("2 ** 3 ** 2") == "64" ? 0 : 1);
      },
      ::testing::ExitedWithCode(0), "");
  GTEST_FLAG_SET(death_test_style, "fast");
}

TEST(Operator, ChecksItsTokens) {
  for (const char* good : {"+", "=>", "foo", "≤", "a b", "-1"}) {
    EXPECT_TRUE(MXMathOperator::isValidToken(good)) << good;
  }
  for (const char* bad : {"", "1a", "\"", "$x", "'", ".5", " +", "+ ", "\u2003x", "x\n"}) {
    EXPECT_FALSE(MXMathOperator::isValidToken(bad)) << bad;
  }
  EXPECT_EQ(thrownBy([] { op("f", " +"); }), "Invalid operator token:  +");
  EXPECT_EQ(thrownBy([] {
              MXMathOperator::withOperatorFunction(String("f"), {}, MXOperatorArity::unknown,
                                                   kLeft);
            }),
            "Unable to create operator with unknown arity");
  EXPECT_EQ(op("f", "AND")->tokens().front(), "and");
  const auto copy = op("f", "@")->copy();
  const std::string text = copy->description().toStdString();
  EXPECT_EQ(text.substr(text.find(" {")),
            " {(@) => f(), Arity: Binary, Assoc: Left, Precedence: 0}");
}

TEST(OperatorSet, RenumbersWhenOperatorsJoin) {
  const auto set = make<Set>();
  const auto add = set->operatorForFunction(String("add"));
  set->addOperatorWithPrecedenceHigherThan(op("higher", "@"), add);
  EXPECT_EQ(precedence(*set, "higher"), 15);
  EXPECT_EQ(precedence(*set, "add"), 13);
  EXPECT_EQ(precedence(*set, "multiply"), 15);
  set->addOperatorWithPrecedenceLowerThan(op("lower", "#"), add);
  EXPECT_EQ(precedence(*set, "lower"), 13);
  EXPECT_EQ(precedence(*set, "add"), 14);
  EXPECT_EQ(precedence(*set, "rshift"), 12);
  set->addOperatorWithPrecedenceSameAs(op("same", "?"), add);
  EXPECT_EQ(precedence(*set, "same"), 14);
  EXPECT_EQ(precedence(*set, "multiply"), 16);

  EXPECT_EQ(thrownBy([&] { set->addOperatorWithPrecedenceSameAs(op("other", "+"), add); }),
            "An operator is already defined for '+'");
  EXPECT_EQ(thrownBy([&] { set->addTokens({String("~~")}, String("none")); }),
            "No operator is defined for function 'none'");
  set->addTokens({String("PLUS")}, String("add"));
  EXPECT_EQ(set->operatorsForToken(String("Plus")).front(), add);
  EXPECT_TRUE(add->hasToken("plus"));
  EXPECT_FALSE(set->copy()->operatorForFunction(String("higher")))
      << "added operators do not follow into copies";
}

TEST(OperatorSet, SwitchesThePercentSign) {
  const auto set = make<Set>();
  set->setInterpretsPercentSignAsModulo(false);
  EXPECT_FALSE(set->operatorForFunction(String("mod")));
  EXPECT_EQ(precedence(*set, "percent"), precedence(*set, "factorial"));
  EXPECT_EQ(set->operatorsForToken(String("%")).size(), 1U);
  EXPECT_FALSE(set->copy()->interpretsPercentSignAsModulo());
  const auto power = precedence(*set, "pow");
  set->setInterpretsPercentSignAsModulo(true);
  EXPECT_FALSE(set->operatorForFunction(String("percent")));
  EXPECT_GT(precedence(*set, "pow"), power) << "levels are never lowered again";
}

// The default set is what the tokenizer and the parser ask; changes show at once.
void changeTheDefaultSet() {
  const auto& set = Set::defaultOperatorSet();
  EXPECT_EQ(evaluated("50 + 10%"), "10 no right operand to binary %");
  set->setInterpretsPercentSignAsModulo(false);
  const std::pair<const char*, const char*> cases[] = {
      {"50 + 10%", "55"},
      {"50 - 10%", "45"},
      {"10%", "0.1"},
      {"50 * 10%", "5"},
      {"50 + -10%", "49.9"},
      {"100 + 10% + 10%", "121"},
      {"$x + 10%", "22"},
      {"add(50, sum(10%))", "50.1"},
      {"50 + (2 + 10%)", "52.2"},
      {"10% + 50", "50.1"},
      {"pi() - pi() + 10%", "0"},
  };
  const MXSubstitutions substitutions{{"x", Number::withInt(20)}};
  for (const auto& [text, value] : cases) {
    EXPECT_EQ(evaluated(text, substitutions), value) << text;
  }
  EXPECT_EQ(parsed("50 + 10%"), "add(50,percent(10))");
  EXPECT_EQ(MXExpression::expressionFromString("50 + 10%", nullptr)
                ->simplifiedExpression()
                ->description(),
            "55");
  EXPECT_EQ(MXExpression::expressionFromString("$x + 10%", nullptr)
                ->simplifiedExpression()
                ->description(),
            "add($x,percent(10))");
  // A percentage that is asked by itself looks at the function that holds it.
  const auto sum = MXExpression::expressionFromString("50 + 10%", nullptr);
  const auto value = MXMathEvaluator::defaultMathEvaluator()->evaluateExpression(
      *sum->arguments()[1], {}, nullptr);
  EXPECT_EQ(value->doubleValue(), 5);
  set->setInterpretsPercentSignAsModulo(true);
  EXPECT_EQ(evaluated("7 % 4"), "3");

  set->addTokens({String("⊕⊕")}, String("add"));
  EXPECT_EQ(evaluated("1 ⊕⊕ 2"), "3");
  EXPECT_EQ(evaluated("1 ⊕ 2"), "2 ⊕ is not a valid operator");
}

TEST(OperatorSet, RefusesOperatorsThatAreNull) {
  const auto set = make<Set>();
  const auto add = set->operatorForFunction(String("add"));
  using Operation = void (Set::*)(const Ref<MXMathOperator>&, const Ref<MXMathOperator>&);
  for (const Operation operation :
       {&Set::addOperatorWithPrecedenceHigherThan, &Set::addOperatorWithPrecedenceSameAs,
        &Set::addOperatorWithPrecedenceLowerThan}) {
    EXPECT_THROW(((*set).*operation)(nullptr, add), std::invalid_argument);
    EXPECT_THROW(((*set).*operation)(add->copy(), nullptr), std::invalid_argument);
    EXPECT_THROW(((*set).*operation)(add->copy(), set->operatorForFunction(String("no such"))),
                 std::invalid_argument);
  }
  EXPECT_EQ(set->operators().size(), Set::defaultOperatorSet()->operators().size());
}

// In a process of its own: precedences that have been raised stay so.
TEST(OperatorSet, ChangesOfTheDefaultSetAreSeen) {
  EXPECT_EXIT(
      {
        changeTheDefaultSet();
        std::_Exit(::testing::Test::HasFailure() ? 1 : 0);
      },
      ::testing::ExitedWithCode(0), "");
}

// A set of its own does not have the characters of tokens that only the default set knows.
TEST(OperatorSet, GovernsTheOperatorCharacters) {
  const auto own = make<Set>();
  EXPECT_EXIT(
      {
        Set::defaultOperatorSet()->addTokens({String("@"), String("+@")}, String("add"));
        const auto tokenizer = MXMathStringTokenizer::tokenizerWithString("1 +@ 2", own, nullptr);
        const bool right = tokenizer->allObjects()[2]->description() == "@";
        std::_Exit(right && evaluated("1 +@ 2") == "3" ? 0 : 1);
      },
      ::testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace tarnkit::testing
