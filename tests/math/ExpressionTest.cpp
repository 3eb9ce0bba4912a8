#include <stdexcept>

#include "tarnkit/math/MXExpression.h"
#include "tarnkit/math/MXMathParsing.h"
#include "tarnkit/platform/coding/StandardKeyedArchiver.h"
#include "tarnkit/platform/coding/StandardKeyedUnarchiver.h"
#include "tarnkit/platform/objects/Data.h"
#include "tests/math/MathTesting.h"
#include "tests/math/MemoryCoder.h"

namespace tarnkit::testing {
namespace {

Ref<MXExpression> expression(std::string_view text) {
  return MXExpression::expressionFromString(text, nullptr);
}
Ref<MXExpression> number(double value) { return MXExpression::numberExpressionWithNumber(value); }
Ref<MXExpression> variable(const char* name) {
  return MXExpression::variableExpressionWithVariable(String(name));
}
Ref<MXExpression> function(const char* name, const std::vector<Ref<MXExpression>>& arguments) {
  return MXExpression::functionExpressionWithFunction(String(name), arguments, nullptr);
}

TEST(Expression, IsEqualByValue) {
  const struct {
    Ref<MXExpression> a;
    Ref<MXExpression> b;
    bool equal;
  } cases[] = {
      {expression("2"), expression("2.0"), true},
      {expression("0.1"), number(0.1), true},
      {expression("9007199254740993"), expression("9007199254740992"), false},
      {expression("$a"), variable("$a"), true},
      {expression("$a"), expression("$A"), false},
      {expression("SIN(1)"), expression("sin(1)"), true},
      {expression("Foo(1)"), function("fOO", {number(1)}), true},
      {expression("f(g(1), 2)"), expression("f(g(1, 2))"), false},
      {expression("f(1, g(2))"), expression("f(g(1), 2)"), false},
      {expression("-1"), expression("$a"), false},
      {expression("1 + 2 * $x"), function("ADD", {number(1), expression("2 * $x")}), true},
      {number(0.0 / 0.0), number(0.0 / 0.0), true},
      {number(0.0), number(-0.0), true},
  };
  for (const auto& each : cases) {
    EXPECT_EQ(each.a->isEqual(*each.b), each.equal) << each.a->description().view();
    EXPECT_EQ(each.b->isEqual(*each.a), each.equal) << each.a->description().view();
    if (each.equal) {
      EXPECT_EQ(each.a->hash(), each.b->hash());
    }
  }
  EXPECT_FALSE(number(1)->isEqual(*Number::withInt(1)));
}

TEST(Expression, AnswersOnlyWhatItIs) {
  EXPECT_THROW(variable("x")->number(), std::logic_error);
  EXPECT_THROW(number(1)->function(), std::invalid_argument);
  EXPECT_THROW(number(1)->arguments(), std::invalid_argument);
  EXPECT_THROW(number(1)->variable(), std::invalid_argument);
  const auto call = expression("Foo($x, 2)");
  EXPECT_EQ(call->function(), "foo");
  EXPECT_EQ(call->description(), "Foo($x,2)");
  EXPECT_EQ(call->arguments()[0]->variable(), "x");
  EXPECT_EQ(call->arguments()[1]->number().doubleValue(), 2);
}

TEST(Expression, RefusesWhatIsNoNode) {
  EXPECT_FALSE(variable(""));
  EXPECT_FALSE(variable("$"));
  EXPECT_EQ(variable("$x")->variable(), "x");
  MXError error;
  const std::vector<Ref<Object>> arguments{number(1), String("2").object()};
  EXPECT_FALSE(
      MXExpression::functionExpressionWithFunctionOfObjects(String("f"), arguments, &error));
  EXPECT_EQ(textOf(error), "18 function arguments must be MXExpression objects");
}

TEST(Expression, KnowsItsParent) {
  auto sum = expression("1 + sin($x)");
  const auto sine = sum->arguments()[1];
  EXPECT_EQ(sine, sum->arguments()[1]) << "the same objects on every call";
  EXPECT_EQ(sine->parentExpression(), sum);
  EXPECT_EQ(sine->arguments()[0]->parentExpression(), sine);
  EXPECT_FALSE(sum->parentExpression());
  sum = nullptr;
  EXPECT_FALSE(sine->parentExpression());
  EXPECT_EQ(sine->description(), "sin($x)");
  EXPECT_EQ(sine->arguments()[0]->variable(), "x");
  EXPECT_TRUE(sine->copy()->isEqual(*sine));

  const auto deep = expression("f(g(h($y, $x)))")->arguments()[0]->arguments()[0];
  EXPECT_FALSE(deep->parentExpression());
  EXPECT_EQ(deep->arguments()[1]->variable(), "x") << "read after everything above it has gone";

  const auto two = number(2);
  const auto call = function("f", {two});
  EXPECT_EQ(call->arguments()[0], two);
  EXPECT_EQ(two->parentExpression(), call);
}

TEST(Expression, CopiesDeeply) {
  for (const char* text : {"3.25", "$x", "F(1, g($x), 'a b') + 0x10"}) {
    const auto original = expression(text);
    const auto copy = original->copy();
    EXPECT_NE(copy, original);
    EXPECT_TRUE(copy->isEqual(*original));
    EXPECT_EQ(copy->description(), original->description());
  }
  const auto shared = variable("x");
  const auto original = function("f", {shared, expression("1 + 2")});
  const auto copy = original->copy();
  EXPECT_NE(copy->arguments()[0], shared);
  EXPECT_EQ(copy->arguments()[0]->parentExpression(), copy);
  EXPECT_EQ(shared->parentExpression(), original);
}

TEST(Expression, ComesBackFromAnArchive) {
  registerMathClasses();
  const auto infinite = number(1 / 0.0);
  const Ref<MXExpression> originals[] = {
      expression("3.25"),
      expression("$x"),
      expression("Foo(1, g($x), 'a b') + 0x10 ** 0.1"),
      expression("12345678901234567890.5 - 1e30"),
      function("π", {variable("größe"), infinite, number(0.0 / 0.0), number(-0.0)}),
      function("f", {}),
  };
  for (const auto& original : originals) {
    const auto data = StandardKeyedArchiver::archivedData(original.get(), 0);
    const auto root = StandardKeyedUnarchiver::unarchive(data->bytes(), 0);
    ASSERT_TRUE(root) << root.status().message();
    const auto decoded = as<MXExpression>(*root);
    EXPECT_TRUE(decoded->isEqual(*original)) << original->description().view();
    EXPECT_EQ(decoded->description(), original->description());
    EXPECT_FALSE(decoded->parentExpression());
    if (decoded->expressionType() != MXExpressionType::function) continue;
    for (const auto& argument : decoded->arguments()) {
      EXPECT_EQ(argument->parentExpression(), decoded);
    }
  }
}

TEST(Expression, ComesBackWithPartsThatStandInSeveralPlaces) {
  registerMathClasses();
  const auto archivedAndBack = [](const MXExpression& original) {
    const auto data = StandardKeyedArchiver::archivedData(&original, 0);
    return StandardKeyedUnarchiver::unarchive(data->bytes(), 0);
  };
  const auto leaf = variable("x");
  const auto part = function("add", {leaf, number(2)});
  const auto original = function("multiply", {part, function("negate", {part}), leaf});
  const auto root = archivedAndBack(*original);
  ASSERT_TRUE(root) << root.status().message();
  const auto decoded = as<MXExpression>(*root);
  EXPECT_EQ(decoded->description(), "multiply(add($x,2),negate(add($x,2)),$x)");
  EXPECT_EQ(decoded->arguments()[0], decoded->arguments()[1]->arguments()[0]);

  // A few objects that stand for a tree of any size are refused.
  auto doubled = leaf;
  for (int i = 0; i < 60; ++i) doubled = function("add", {doubled, doubled});
  EXPECT_EQ(archivedAndBack(*doubled).status().message(), "an expression of too many nodes");
}

TEST(Expression, RefusesArchivesThatAreNoTrees) {
  const MemoryEncoder encoder(*expression("f(g($x), 1)"));
  const auto reasonAfter = [&](const std::function<void(std::deque<CodedObject>&)>& spoil) {
    auto records = encoder.records;
    spoil(records);
    const auto before = Object::liveObjectCount();
    std::string reason;
    {
      const MemoryDecoder decoder(records);
      EXPECT_FALSE(decoder.root());
      reason = decoder.reason;
    }
    EXPECT_EQ(Object::liveObjectCount(), before) << "a refused archive leaks";
    return reason;
  };
  const auto functionRecords = [](std::deque<CodedObject>& records) {
    std::vector<CodedObject*> all;
    for (auto& record : records) {
      if (!record.lists.empty()) all.push_back(&record);
    }
    return all;
  };
  EXPECT_EQ(
      reasonAfter([&](auto& records) { functionRecords(records)[1]->lists["arguments"][0] = 0; }),
      "an expression that is its own argument");
  // Not by way of the root, and behind a part that is sound.
  EXPECT_EQ(
      reasonAfter([&](auto& records) {
        auto& arguments = functionRecords(records)[1]->lists["arguments"];
        arguments.push_back(arguments[0]);
        arguments.push_back(static_cast<std::size_t>(functionRecords(records)[1] - &records[0]));
      }),
      "an expression that is its own argument");
  EXPECT_EQ(reasonAfter([&](auto& records) { records[0].objects.clear(); }),
            "a function expression without a function");
}

TEST(Expression, Simplifies) {
  const std::pair<const char*, const char*> cases[] = {
      {"2 + 3 * $x", "add(2,multiply(3,$x))"},
      {"2 + 3 * 4", "14"},
      {"$x + (1 + 2)", "add($x,3)"},
      {"foo(1 + 1)", "foo(2)"},
      {"sqrt(1, 2) + (1 + 1)", "add(sqrt(1,2),2)"},
      {"avg(1, 3) + $x", "add(2,$x)"},
      {"x() + pi", "add(x(),3.141592653589793)"},
      {"0.10", "0.1"},
      {"count($x)", "count($x)"},
      {"count(1, 2)", "2"},
  };
  const LogLines log;
  for (const auto& [text, result] : cases) {
    EXPECT_EQ(expression(text)->simplifiedExpression()->description(), result) << text;
  }
  EXPECT_TRUE(log.lines.empty()) << "a function that cannot be evaluated is no error";
}

TEST(Expression, StringsEvaluateThemselves) {
  EXPECT_EQ(numberByEvaluatingString(String("1 + 1"))->doubleValue(), 2);
  const MXSubstitutions substitutions{{"x", Number::withInt(3)}};
  EXPECT_EQ(numberByEvaluatingStringWithSubstitutions(String("$x"), substitutions)->doubleValue(),
            3);
  const LogLines log;
  EXPECT_FALSE(numberByEvaluatingString(String("1 +")));
  EXPECT_EQ(log.lines, std::vector<std::string>{"error: no right operand to binary +"});
  MXError error;
  EXPECT_FALSE(numberByEvaluatingStringWithSubstitutions(String("$y"), substitutions, &error));
  EXPECT_EQ(error.userInfo().get(String(MXUnknownVariableKey)), "y");
}

}  // namespace
}  // namespace tarnkit::testing
