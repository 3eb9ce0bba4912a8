#include <fmt/format.h>

#include "tarnkit/math/MXMathEvaluator.h"
#include "tests/math/MathTesting.h"

namespace tarnkit::testing {
namespace {

// The text with the place of the error between brackets; "?" behind it for an error without one.
std::string marked(std::string_view text, const MXError& error) {
  std::string shown(text);
  if (!error) return shown + " is well";
  if (!error.hasPlace()) return shown + "?";
  if (error.offset() + error.length() > text.size()) return shown + " is shorter";
  shown.insert(error.offset() + error.length(), "]");
  shown.insert(error.offset(), "[");
  return shown;
}

std::string marked(std::string_view text, const MXSubstitutions& substitutions = {},
                   const MXMathEvaluator& evaluator = *MXMathEvaluator::defaultMathEvaluator()) {
  MXError error;
  evaluator.evaluateString(text, substitutions, &error);
  return marked(text, error);
}

TEST(ErrorPlace, IsTheTokenOrTheOperatorAtFault) {
  for (const char* const wanted :
       {// what is no token
        "1 + [#]", "1 + [.]", "2 * [0x]", "1 + [$]", "$a + ['b c]", "\u03C0 + [0x]",
        // what is no expression
        "[]", "[]  ", "2 [+]", "1 [-] * 2", "[*] 2", "2 * [-]", "1 + [(]2 * (3)", "1 + [sin](2",
        "1 + [(])", "max(1, 2[+])", "1[,]000", "[max](,2)",
        // what has no value
        "1 + [$a]", "[$a]", " [$a] ", "1 + ['a b'] * 2", "[foo]", "1 + [foo](2)", "2[x]",
        "1 + [sin]()", "\u03C0 * [sqrt](1, 2)", "max(1, [$a], $b)", "1[)]", "(1) + 2[)] * (3)",
        "max(1, 2) + [random](1, 2, 3)"}) {
    std::string text(wanted);
    std::erase_if(text, [](char c) { return c == '[' || c == ']'; });
    EXPECT_EQ(marked(text), wanted);
  }
}

TEST(ErrorPlace, IsTheSameByEitherRoad) {
  // A parsed expression knows the places of its text when it is evaluated later, and so does a
  // function within it.
  MXError error;
  const std::string_view text = "1 + max(2, $a)";
  const auto expression = MXExpression::expressionFromString(text, &error);
  for (const auto& evaluated : {expression, expression->arguments()[1]}) {
    error = {};
    MXMathEvaluator::defaultMathEvaluator()->evaluateExpression(*evaluated, {}, &error);
    EXPECT_EQ(marked(text, error), "1 + max(2, [$a])");
  }
  // The tokens tell where they stand, what was put in too.
  const auto tokenizer = MXMathStringTokenizer::tokenizerWithString("0x1F 'a b'$c", &error);
  std::string places;
  while (const auto token = tokenizer->nextObject()) {
    places += fmt::format("{}+{} ", token->offset(), token->length());
  }
  EXPECT_EQ(places, "0+4 5+0 5+5 10+0 10+2 ");
}

TEST(ErrorPlace, OfAValueIsThatOfTheVariable) {
  MXSubstitutions values;
  values.set("a", String("1 + foo(2)").object());
  values.set("b", String("2 + $a").object());
  values.set("c", String("1 +").object());
  EXPECT_EQ(marked("10 * $a", values), "10 * [$a]");
  EXPECT_EQ(marked("10 * max($b, 2)", values), "10 * max([$b], 2)");
  EXPECT_EQ(marked("10 * $c", values), "10 * [$c]");

  // What a function that the program registered does with other texts is its own affair.
  const auto evaluator = make<MXMathEvaluator>();
  evaluator->registerFunction(
      [](const auto&, const auto&, const MXMathEvaluator& asked, MXError* error) {
        asked.evaluateString("1 + $nothing", {}, error);
        return Ref<MXExpression>();
      },
      "other");
  EXPECT_EQ(marked("100 * other(3)", {}, *evaluator), "100 * [other](3)");
}

TEST(ErrorPlace, IsFoundInLongTexts) {
  std::string text(5000, ' ');
  for (std::size_t i = 0; i < text.size(); i += 4) text.replace(i, 4, "1 + ");
  EXPECT_EQ(marked(text + "$a"), text + "[$a]");
  EXPECT_EQ(marked(text + "foo(1)"), text + "[foo](1)");
  EXPECT_EQ(marked(text + "(1"), text + "[(]1");
  const std::string blanks(5000, ' ');
  EXPECT_EQ(marked(blanks + "$a"), blanks + "[$a]");
}

TEST(ErrorPlace, IsNoneWhereThereIsNoText) {
  MXError error;
  const auto made = MXExpression::functionExpressionWithFunction(
      "add",
      {MXExpression::variableExpressionWithVariable("a"),
       MXExpression::numberExpressionWithNumber(1)},
      &error);
  MXMathEvaluator::defaultMathEvaluator()->evaluateExpression(*made, {}, &error);
  EXPECT_TRUE(error);
  EXPECT_FALSE(error.hasPlace());
  // Nor in bytes that are not UTF-8, which are read as other characters.
  for (const char* const text : {"\xFF + $a", "\xFF(", "\"\xFF\" + 0x"}) {
    EXPECT_EQ(marked(text), std::string(text) + "?");
  }
}

}  // namespace
}  // namespace tarnkit::testing
