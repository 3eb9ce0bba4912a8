// First use of everything shared, from many threads at once. The preset `tsan` builds this program
// with ThreadSanitizer, which reports any access that is not ordered:
//   cmake --preset tsan && cmake --build --preset tsan --target test_math
//   build/tsan/tests/test_math --gtest_filter='Threads.*'
#include <atomic>
#include <cstdlib>
#include <thread>

#include "tarnkit/math/MXCompiledExpression.h"
#include "tarnkit/math/MXExpressionRewriter.h"
#include "tarnkit/platform/coding/StandardKeyedArchiver.h"
#include "tests/math/MathTesting.h"

namespace tarnkit::testing {
namespace {

constexpr int kThreads = 8;

template <class Work>
void onThreads(Work work) {
  std::atomic<int> waiting{kThreads};
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&, i] {
      --waiting;
      while (waiting.load() > 0) std::this_thread::yield();
      work(i);
    });
  }
  for (auto& thread : threads) thread.join();
}

bool usesDefaultOperators() {
  return MXMathOperator::defaultOperators().size() == 27 &&
         MXMathOperator::infoForOperatorFunction(String("add"))->precedence() == 13;
}
bool usesDefaultOperatorSet() { return tokens("2x - 1") == "2 * x ( ) - 1"; }
bool usesParser() { return parsed("$x + 2 ** 3") == "add($x,pow(2,3))"; }
bool usesDefaultEvaluator() {
  return evaluated("π / 2 + random(0, 1) > 1") == "1" && evaluated("20! > 170!") == "0" &&
         MXMathEvaluator::sharedMathEvaluator()->registeredFunctions().size() > 90;
}
bool usesEvaluatorOfItsOwn() {
  const auto own = make<MXMathEvaluator>();
  own->setUsesHighPrecisionEvaluation(true);
  return evaluated(*own, "avg(1, 3)") == "2" &&
         evaluated(*own, "abs(sin(1) + ln(2) - 1.5346) < 0.001") == "1" &&
         evaluated(*own, "e > 2 && sqrt(2) > 1") == "1";
}
bool usesDefaultRewriter() {
  const auto tree = MXExpression::expressionFromString("$x + $x", nullptr);
  return MXMathEvaluator::defaultMathEvaluator()
             ->expressionByRewritingExpression(tree)
             ->description() == "multiply($x,2)";
}
bool usesSimplification() {
  return MXExpression::expressionFromString("1 + pi * 0 + count($x)", nullptr)
             ->simplifiedExpression()
             ->description() == "add(1,count($x))";
}

// A set of one's own that is made, used, changed, used again and dropped.
bool usesPrivateSet() {
  const auto set = make<MXMathOperatorSet>();
  const auto own = make<MXMathEvaluator>();
  own->setOperatorSet(set);
  const bool before = evaluated(*own, "7 % 4 + 2 ** 3") == "11";
  set->setInterpretsPercentSignAsModulo(false);
  set->addTokens({String("plus")}, String("add"));
  set->operatorForFunction(String("pow"))->setAssociativity(MXOperatorAssociativity::left);
  return before && evaluated(*own, "2 ** 3 ** 2") == "64";
}

// Each thread begins with another singleton and goes on with the others.
void useEverythingFirst() {
  bool (*const uses[])() = {usesDefaultOperators, usesDefaultOperatorSet, usesParser,
                            usesDefaultEvaluator, usesEvaluatorOfItsOwn,  usesDefaultRewriter,
                            usesSimplification,   usesPrivateSet};
  std::atomic<std::size_t> right{0};
  onThreads([&](int thread) {
    for (std::size_t i = 0; i < std::size(uses); ++i) {
      right += uses[(i + static_cast<std::size_t>(thread)) % std::size(uses)]() ? 1 : 0;
    }
  });
  std::_Exit(right == kThreads * std::size(uses) ? 0 : 1);
}

// In a process that has used nothing yet; ThreadSanitizer ends it with a code of its own.
TEST(Threads, ShareTheSingletonsFromTheFirstUse) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(useEverythingFirst(), ::testing::ExitedWithCode(0), "");
  GTEST_FLAG_SET(death_test_style, "fast");
}

TEST(Threads, ReadOneTree) {
  const auto tree = MXExpression::expressionFromString("f(1 + $x, g($y), [h]) * 2", nullptr);
  const auto built = MXExpression::functionExpressionWithFunction(
      String("max"), {MXExpression::expressionFromString("$x * 2", nullptr), tree->copy()},
      nullptr);
  const auto prepared = MXCompiledExpression::compile(
      MXExpression::expressionFromString("($x + 1) * ($x - 1)", nullptr),
      MXMathEvaluator::defaultMathEvaluator());
  std::atomic<int> right{0};
  const auto often = MXExpression::expressionFromString("($x + 1) * $y - $x", nullptr);
  const MXSubstitutions substitutions{{"x", Number::withInt(3)}, {"y", Number::withInt(2)}};
  onThreads([&](int) {
    for (int i = 0; i < 8; ++i) {
      right += often->evaluateWithSubstitutions(
                        substitutions, MXMathEvaluator::defaultMathEvaluator().get(), nullptr)
                           ->doubleValue() == 5
                   ? 1
                   : 0;
    }
    const auto argument = tree->arguments()[0]->arguments()[0];
    right += argument->parentExpression()->parentExpression() == tree ? 1 : 0;
    right += built->copy()->isEqual(*built) ? 1 : 0;
    right += argument->arguments()[1]->variable() == "x" ? 1 : 0;
    const double x[] = {3};
    right += prepared->evaluate(x) == 8 ? 1 : 0;
  });
  EXPECT_EQ(right.load(), kThreads * 12);
}

TEST(Threads, EvaluateWhilePrivateSetsComeAndGo) {
  constexpr std::size_t kRounds = 100;
  bool (*const reads[])() = {
      usesDefaultOperatorSet, usesParser, usesDefaultEvaluator, usesDefaultRewriter,
      [] { return MXMathStringTokenizer::variableNames("$a+$b", nullptr).size() == 2; }};
  // Sets are made all the while that a long text is read.
  std::string sum = "1";
  for (int i = 0; i < 500; ++i) sum += " + 1";
  std::atomic<std::size_t> right{0};
  onThreads([&](int thread) {
    for (std::size_t i = 0; i < kRounds; ++i) {
      if (thread % 2 != 0 && evaluated(sum) != "501") continue;
      right += thread % 2 == 0 ? usesPrivateSet() : reads[i % std::size(reads)]();
    }
  });
  EXPECT_EQ(right.load(), kThreads * kRounds);
}

TEST(Threads, ArchiveOneExpression) {
  const auto expression = MXExpression::functionExpressionWithFunction(
      String("max"),
      {MXExpression::expressionFromString("$x * 2.5 - 12345678901234567890.5", nullptr),
       MXExpression::numberExpressionWithNumber(0.1)},
      nullptr);
  const auto archive = [&] {
    const auto data = StandardKeyedArchiver::archivedData(expression.get(), 0);
    return std::vector<std::uint8_t>(data->bytes().begin(), data->bytes().end());
  };
  const auto wanted = archive();
  std::atomic<int> right{0};
  onThreads([&](int) {
    for (int i = 0; i < 50; ++i) right += archive() == wanted ? 1 : 0;
  });
  EXPECT_EQ(right.load(), kThreads * 50);
}

// The root goes while its functions are read elsewhere.
TEST(Threads, LetGoOfARootWhoseArgumentsAreRead) {
  for (int round = 0; round < 50; ++round) {
    auto root = MXExpression::expressionFromString("f(g($x, h($y)), 1)", nullptr);
    const auto inner = root->arguments()[0];
    std::atomic<int> right{0};
    std::thread reader(
        [&] { right += inner->arguments()[1]->arguments()[0]->variable() == "y" ? 1 : 0; });
    root = nullptr;
    reader.join();
    EXPECT_EQ(right.load(), 1);
  }
}

}  // namespace
}  // namespace tarnkit::testing
