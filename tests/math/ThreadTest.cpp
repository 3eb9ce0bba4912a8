// First use of everything shared, from many threads at once. The preset `tsan` builds this program
// with ThreadSanitizer, which reports any access that is not ordered:
//   cmake --preset tsan && cmake --build --preset tsan --target test_math
//   build/tsan/tests/test_math --gtest_filter='Threads.*'
#include <atomic>
#include <thread>

#include "tarnkit/math/MXCompiledExpression.h"
#include "tarnkit/math/MXExpressionRewriter.h"
#include "tests/math/MathTesting.h"

namespace tarnkit::testing {
namespace {

template <class Work>
void onThreads(Work work) {
  std::atomic<int> waiting{8};
  std::vector<std::thread> threads;
  for (int i = 0; i < 8; ++i) {
    threads.emplace_back([&] {
      --waiting;
      while (waiting.load() > 0) std::this_thread::yield();
      work();
    });
  }
  for (auto& thread : threads) thread.join();
}

TEST(Threads, ShareTheSingletonsFromTheFirstUse) {
  std::atomic<int> right{0};
  onThreads([&] {
    const auto tree = MXExpression::expressionFromString("$x + $x", nullptr);
    const auto& evaluator = MXMathEvaluator::defaultMathEvaluator();
    const auto rewritten = evaluator->expressionByRewritingExpression(tree);
    right += rewritten->description() == "multiply($x,2)" ? 1 : 0;
    right += evaluator->evaluateString("π / 2 + random(0, 1) > 1", {}, nullptr)->doubleValue() == 1;
    right += evaluator->registeredFunctions().size() > 90 ? 1 : 0;
    right += make<MXMathEvaluator>()->evaluateString("avg(1, 3)", {}, nullptr)->doubleValue() == 2;
  });
  EXPECT_EQ(right.load(), 32);
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
  onThreads([&] {
    const auto argument = tree->arguments()[0]->arguments()[0];
    right += argument->parentExpression()->parentExpression() == tree ? 1 : 0;
    right += built->copy()->isEqual(*built) ? 1 : 0;
    right += argument->arguments()[1]->variable() == "x" ? 1 : 0;
    const double x[] = {3};
    right += prepared->evaluate(x) == 8 ? 1 : 0;
  });
  EXPECT_EQ(right.load(), 32);
}

}  // namespace
}  // namespace tarnkit::testing
