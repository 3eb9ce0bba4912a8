// The expression engine beside muParser on the same expressions in one run.
//
//   bench_math                      every benchmark of Google Benchmark
//   bench_math --summary            one table of ratios, geometric means over the corpus
#include <benchmark/benchmark.h>
#include <fmt/format.h>
#include <muParser.h>

#include <chrono>
#include <cmath>
#include <cstring>
#include <ctime>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "tarnkit/math/MXCompiledExpression.h"
#include "tarnkit/math/MXExpressionRewriter.h"
#include "tarnkit/math/MXMathEvaluator.h"

namespace {

using namespace tarnkit;

constexpr std::size_t kRows = 4096;
constexpr const char* kVariables[] = {"a", "b", "c", "x", "y"};
constexpr double kValues[] = {1.25, 2.5, 0.75, 3.5, 0.4};
constexpr std::size_t kVariableCount = std::size(kVariables);

struct Class {
  const char* name;
  std::vector<const char*> expressions;
};

/// Written for both engines but for the spelling of variables and of the power: "a" stands for
/// "$a", "^" for "**".
const std::vector<Class>& corpus() {
  static const std::vector<Class> classes = {
      {"short",
       {"a+b", "a*b", "x-1", "2*x", "1+2*3", "x^2", "-x", "a/b", "a+b*c", "(a+b)*c", "x*x+1",
        "a<b"}},
      {"medium",
       {"a*x^2+b*x+c", "(a+b)*(a-b)", "(a+b)/(c+x)*y", "1/(1+x*x)", "a*b+c*x-y/2",
        "(x-a)*(x-b)*(x-c)", "0.5*a+0.25*b+0.125*c", "x/(a+b)-y/(b+c)", "a-b*(c-x*(y-1))",
        "(a+b+c+x+y)/5", "3*x*x-2*x+1", "a*(1-x)+b*x"}},
      {"long",
       {"a*x^2+b*x+c-(a*y^2+b*y+c)/(1+x*x)+0.5*(a-b)*(b-c)*(c-a)",
        "1+x+x*x/2+x*x*x/6+x*x*x*x/24+x*x*x*x*x/120+x*x*x*x*x*x/720",
        "((a+b)*(b+c)*(c+x)*(x+y)*(y+a))/((a-b)*(b-c)*(c-x)*(x-y)*(y-a))",
        "(a*b+c*x)*(a*c+b*x)-(a*x+b*c)*(a+b+c+x)+y*(a-b)*(c-x)/(1+a*b*c*x*y)",
        "a+b*2+c*3+x*4+y*5-a*6-b*7-c*8-x*9-y*10+a/11+b/12+c/13+x/14+y/15",
        "1-(1-(1-(1-a)*b)*c)*x+(2-(2-(2-a)*b)*c)*y+(3-(3-a)*b)*c-(4-a)*b",
        "(a-x)*(a-x)+(b-y)*(b-y)+(c-x)*(c-x)+(a-y)*(a-y)+(b-x)*(b-x)+(c-y)*(c-y)",
        "a*b*c*x*y+a*b*c*x+a*b*c+a*b+a+1+b+b*c+b*c*x+b*c*x*y+c*x*y+x*y+y",
        "(1+a)*(1+b)*(1+c)*(1+x)*(1+y)/((2+a)*(2+b)*(2+c)*(2+x)*(2+y))+(3+a)*(3+b)",
        "0.1*a+0.2*b+0.3*c+0.4*x+0.5*y+0.6*a*b+0.7*b*c+0.8*c*x+0.9*x*y+1.1*y*a"}},
      {"functions",
       {"sin(x)", "sqrt(a*a+b*b)", "sin(x)*cos(y)", "exp(-x*x/2)", "abs(a-b)+abs(b-c)",
        "min(a,b)+max(b,c)", "sin(a)+cos(b)+tan(c)", "sqrt(abs(x-y))", "log2(a)+exp(b)",
        "atan(y/x)", "sinh(a)*cosh(b)", "sqrt((a-x)*(a-x)+(b-y)*(b-y))",
        "min(a,b,c,x,y)*max(a,b,c,x,y)", "exp(sin(x)+cos(y))"}},
      {"nested",
       {"((((a))))", "(a+(b+(c+(x+(y+1)))))", "x*(1+x*(2+x*(3+x*(4+x*5))))",
        "((((a+b)*c+x)*y+a)*b+c)", "1/(1+1/(1+1/(1+1/(1+x))))", "sqrt(a+sqrt(b+sqrt(c+sqrt(x))))",
        "-(-(-(-(x))))", "((a+b)*((b+c)*((c+x)*((x+y)*y))))", "abs(abs(abs(a-b)-c)-x)",
        "min(a,max(b,min(c,max(x,y))))", "(((a-1)*(b-1)-1)*((c-1)*(x-1)-1)-1)",
        "a*(b*(c*(x*(y*(a+b)+c)+x)+y)+a)", "(1+(1+(1+(1+(1+(1+(1+(1+x))))))))",
        "((x+1)*(x+2))*((x+3)*(x+4))*((x+5)*(x+6))", "((a+b)+(c+x))+((y+a)+(b+c))"}},
  };
  return classes;
}

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9'); }

/// The expression as this engine writes it.
std::string ours(const std::string& text) {
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool alone = (i == 0 || !isLetter(text[i - 1])) &&
                       (i + 1 == text.size() || (!isLetter(text[i + 1]) && text[i + 1] != '('));
    if (text[i] >= 'a' && text[i] <= 'z' && alone) out += '$';
    if (text[i] == '^') out += '*';
    out += text[i] == '^' ? '*' : text[i];
  }
  return out;
}

/// Everything that is measured for one expression.
struct Subject {
  std::string theirText;
  std::string ourText;
  Ref<MXExpression> tree;
  Ref<MXCompiledExpression> prepared;
  MXSubstitutions substitutions;
  std::vector<double> values;
  std::vector<std::vector<double>> columns;
  std::vector<const double*> columnPointers;
  std::vector<double> results;
  std::vector<double> peerValues;
  std::unique_ptr<mu::Parser> peer;
  std::unique_ptr<mu::Parser> peerBulk;

  explicit Subject(const char* text) : theirText(text), ourText(ours(text)), results(kRows) {
    tree = MXExpression::expressionFromString(ourText, nullptr);
    std::vector<String> names;
    peerValues.assign(kValues, kValues + kVariableCount);
    peer = std::make_unique<mu::Parser>();
    peerBulk = std::make_unique<mu::Parser>();
    columns.resize(kVariableCount);
    for (std::size_t i = 0; i < kVariableCount; ++i) {
      names.emplace_back(kVariables[i]);
      values.push_back(kValues[i]);
      columns[i].resize(kRows);
      for (std::size_t row = 0; row < kRows; ++row) {
        columns[i][row] = kValues[i] + static_cast<double>(row % 64) / 256;
      }
      columnPointers.push_back(columns[i].data());
      if (ourText.find(std::string("$") + kVariables[i]) != std::string::npos) {
        substitutions.set(names.back(), Number::withDouble(kValues[i]));
      }
      peer->DefineVar(kVariables[i], &peerValues[i]);
      peerBulk->DefineVar(kVariables[i], columns[i].data());
    }
    prepared = MXCompiledExpression::compile(tree, MXMathEvaluator::defaultMathEvaluator(), names);
    peer->SetExpr(theirText);
    peerBulk->SetExpr(theirText);
    const double mine = *prepared->evaluate(values);
    const double theirs = peer->Eval();
    if (std::abs(mine - theirs) > 1e-9 * std::max(1.0, std::abs(mine))) {
      fmt::print(stderr, "{}: {} and {} differ\n", text, mine, theirs);
      std::abort();
    }
  }
};

std::vector<std::vector<std::unique_ptr<Subject>>>& subjects() {
  static std::vector<std::vector<std::unique_ptr<Subject>>> all;
  if (all.empty()) {
    for (const Class& each : corpus()) {
      all.emplace_back();
      for (const char* text : each.expressions) {
        all.back().push_back(std::make_unique<Subject>(text));
      }
    }
  }
  return all;
}

struct Job {
  const char* name;
  double rows;  // evaluations in one call
  std::function<void(Subject&)> work;
};

const std::vector<Job>& jobs() {
  static const std::vector<Job> all = {
      {"peer parse", 1,
       [](Subject& s) {
         s.peer->SetExpr(s.theirText);
         benchmark::DoNotOptimize(s.peer->Eval());
       }},
      {"peer prepared", 1, [](Subject& s) { benchmark::DoNotOptimize(s.peer->Eval()); }},
      {"peer bulk", kRows,
       [](Subject& s) { s.peerBulk->Eval(s.results.data(), static_cast<int>(kRows)); }},
      {"parse", 1,
       [](Subject& s) {
         benchmark::DoNotOptimize(MXExpression::expressionFromString(s.ourText, nullptr));
       }},
      {"one-shot", 1,
       [](Subject& s) {
         benchmark::DoNotOptimize(MXMathEvaluator::defaultMathEvaluator()->evaluateString(
             s.ourText, s.substitutions, nullptr));
       }},
      {"tree", 1,
       [](Subject& s) {
         benchmark::DoNotOptimize(MXMathEvaluator::defaultMathEvaluator()->evaluateExpression(
             *s.tree, s.substitutions, nullptr));
       }},
      {"prepared", 1, [](Subject& s) { benchmark::DoNotOptimize(s.prepared->evaluate(s.values)); }},
      {"columns", kRows,
       [](Subject& s) { s.prepared->evaluate(s.columnPointers, kRows, s.results.data()); }},
      {"rewrite from text", 1,
       [](Subject& s) {
         benchmark::DoNotOptimize(
             MXMathEvaluator::defaultMathEvaluator()->expressionByRewritingExpression(
                 MXExpression::expressionFromString(s.ourText, nullptr)));
       }},
  };
  return all;
}

void runOverClass(benchmark::State& state, std::size_t job, std::size_t index) {
  auto& all = subjects()[index];
  for (auto _ : state) {
    for (auto& subject : all) jobs()[job].work(*subject);
  }
  const double evaluations = static_cast<double>(all.size()) * jobs()[job].rows;
  state.counters["each"] = benchmark::Counter(
      evaluations, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void runGrowth(benchmark::State& state, const std::string& text, double tokens) {
  for (auto _ : state) {
    const auto tree = MXExpression::expressionFromString(text, nullptr);
    benchmark::DoNotOptimize(
        MXMathEvaluator::defaultMathEvaluator()->evaluateExpression(*tree, {}, nullptr));
  }
  state.counters["per token"] = benchmark::Counter(
      tokens, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void runParseGrowth(benchmark::State& state, const std::string& text) {
  for (auto _ : state) {
    benchmark::DoNotOptimize(MXExpression::expressionFromString(text, nullptr));
  }
  state.counters["per byte"] = benchmark::Counter(
      static_cast<double>(text.size()),
      benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

std::string sumOf(std::size_t terms) {
  std::string text = "1";
  for (std::size_t i = 1; i < terms; ++i) text += "+1";
  return text;
}
std::string parenthesesOf(std::size_t depth) {
  std::string text;
  for (std::size_t i = 0; i < depth; ++i) text += "(1+";
  return text + "1" + std::string(depth, ')');
}

/// Evaluates a prepared expression that calls a function of the host.
void runHostFunction(benchmark::State& state, bool ofNumbers) {
  const auto evaluator = make<MXMathEvaluator>();
  if (ofNumbers) {
    evaluator->registerNumberFunction(
        [](std::span<const double> values, MXError*) { return std::optional(values[0] + 1); },
        String("next"));
  } else {
    evaluator->registerFunction(
        [](const auto& arguments, const auto& variables, const auto& calledBy,
           MXError* error) -> Ref<MXExpression> {
          const auto value = calledBy.evaluateExpression(*arguments[0], variables, error);
          return value ? MXExpression::numberExpressionWithNumber(value->doubleValue() + 1)
                       : nullptr;
        },
        String("next"));
  }
  const auto prepared = MXCompiledExpression::compile(
      MXExpression::expressionFromString("next($x)*2+$y", nullptr), evaluator);
  for (auto _ : state) benchmark::DoNotOptimize(prepared->evaluate({kValues, 2}));
}

/// Evaluates a tree in decimals of 38 digits.
void runPrecise(benchmark::State& state, const char* text) {
  const auto evaluator = make<MXMathEvaluator>();
  evaluator->setUsesHighPrecisionEvaluation(true);
  const auto tree = MXExpression::expressionFromString(text, nullptr);
  for (auto _ : state) {
    benchmark::DoNotOptimize(evaluator->evaluateExpression(*tree, {}, nullptr));
  }
}

void registerAll() {
  benchmark::RegisterBenchmark("host function/of numbers", runHostFunction, true);
  benchmark::RegisterBenchmark("host function/of expressions", runHostFunction, false);
  for (const char* text : {"1/3+2/7", "((1/3+1/7)*(1/9-1/11)+1/13)*(1/17+1/19)"}) {
    benchmark::RegisterBenchmark(fmt::format("precise/{}", text).c_str(), runPrecise, text);
  }
  for (std::size_t job = 0; job < jobs().size(); ++job) {
    for (std::size_t index = 0; index < corpus().size(); ++index) {
      const auto name = fmt::format("{}/{}", jobs()[job].name, corpus()[index].name);
      benchmark::RegisterBenchmark(name.c_str(), runOverClass, job, index);
    }
  }
  for (const std::size_t size : {1000U, 10000U, 100000U, 1000000U}) {
    const auto count = static_cast<double>(size);
    benchmark::RegisterBenchmark(fmt::format("sum/{}", size).c_str(), runGrowth, sumOf(size),
                                 2 * count - 1);
    benchmark::RegisterBenchmark(fmt::format("parentheses/{}", size).c_str(), runGrowth,
                                 parenthesesOf(size), 4 * count + 1);
    benchmark::RegisterBenchmark(fmt::format("parse sum/{}", size).c_str(), runParseGrowth,
                                 sumOf(size));
    benchmark::RegisterBenchmark(fmt::format("parse parentheses/{}", size).c_str(), runParseGrowth,
                                 parenthesesOf(size));
  }
}

/// Nanoseconds of the process's own time, so that other programs do not count.
double now() {
  timespec time{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) * 1e9 + static_cast<double>(time.tv_nsec);
}

/// The best of several batches, in nanoseconds an evaluation.
double measure(Subject& subject, const Job& job) {
  constexpr double kBatch = 1.5e6;
  constexpr int kBatches = 7;
  job.work(subject);
  std::size_t count = 1;
  double best = 0;
  for (int batch = 0; batch < kBatches;) {
    const double from = now();
    for (std::size_t i = 0; i < count; ++i) job.work(subject);
    const double took = now() - from;
    if (took < kBatch) {
      count *= 2;
      continue;
    }
    const double each = took / (static_cast<double>(count) * job.rows);
    best = batch++ == 0 ? each : std::min(best, each);
  }
  return best;
}

/// The geometric mean over one class, or over all of them.
double mean(const std::vector<std::vector<double>>& times, std::size_t from, std::size_t to) {
  double logarithms = 0;
  double count = 0;
  for (std::size_t i = from; i < to; ++i) {
    for (const double time : times[i]) {
      logarithms += std::log(time);
      ++count;
    }
  }
  return std::exp(logarithms / count);
}

void summarize() {
  std::vector<std::vector<std::vector<double>>> times(jobs().size());
  for (std::size_t job = 0; job < jobs().size(); ++job) {
    for (auto& group : subjects()) {
      times[job].emplace_back();
      for (auto& subject : group) times[job].back().push_back(measure(*subject, jobs()[job]));
    }
  }
  fmt::print("{:<20}", "ns, geometric mean");
  for (const Class& each : corpus()) fmt::print("{:>11}", each.name);
  fmt::print("{:>11}\n", "all");
  const std::size_t classes = corpus().size();
  for (std::size_t job = 0; job < jobs().size(); ++job) {
    fmt::print("{:<20}", jobs()[job].name);
    for (std::size_t i = 0; i < classes; ++i) fmt::print("{:>11.2f}", mean(times[job], i, i + 1));
    fmt::print("{:>11.2f}\n", mean(times[job], 0, classes));
  }
  const struct {
    const char* name;
    std::size_t peer;
    std::size_t own;
  } ratios[] = {
      {"parse", 0, 3}, {"one-shot", 0, 4}, {"tree", 1, 5}, {"prepared", 1, 6}, {"columns", 2, 7}};
  for (const auto& ratio : ratios) {
    fmt::print("{:<20}", fmt::format("{} x faster", ratio.name));
    for (std::size_t i = 0; i <= classes; ++i) {
      const std::size_t from = i == classes ? 0 : i;
      const std::size_t to = i == classes ? classes : i + 1;
      fmt::print("{:>11.2f}", mean(times[ratio.peer], from, to) / mean(times[ratio.own], from, to));
    }
    fmt::print("\n");
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 2 && std::strcmp(argv[1], "--summary") == 0) {
    summarize();
    return 0;
  }
  registerAll();
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
