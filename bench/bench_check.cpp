// The cost of checking a document: one of 10,000 clean nodes, one where every node has findings,
// and one of a chain of groups; beside the walk over all nodes and ports that no check can do
// without ("Floor"). Counters: "per_node" is the time for one node; growth shows in the rows of one
// name from N to N.

#include <benchmark/benchmark.h>

#include "bench/BenchGraph.h"
#include "tarnkit/compare/HXDocumentCheck.h"
#include "tarnkit/model/HXModel.h"
#include "tarnkit/model/HXNodeWalk.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/patches/PatchRegistry.h"

namespace tarnkit::bench {

namespace {

void count(benchmark::State& state) {
  state.counters["per_node"] = benchmark::Counter(
      static_cast<double>(state.range(0)),
      benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void measure(benchmark::State& state, HXDocument& document) {
  std::size_t findings = 0;
  for (auto _ : state) {
    findings = HXDocumentCheck::check(document).total();
    benchmark::DoNotOptimize(findings);
  }
  count(state);
  state.counters["findings"] = static_cast<double>(findings);
}

void BM_FloorWalk(benchmark::State& state) {
  const auto document = buildGraph(state.range(0));
  for (auto _ : state) {
    std::size_t wires = 0;
    HXNodeWalk walk(*document);
    while (const HXNode* node = walk.next()) {
      for (const auto& entry : node->portsInForce()) wires += entry.value->connections().count();
    }
    benchmark::DoNotOptimize(wires);
  }
  count(state);
}

void BM_Check(benchmark::State& state) { measure(state, *buildGraph(state.range(0))); }

// Views have the most ports of all patches.
Ref<HXDocument> documentOf(std::string_view patch, std::int64_t nodeCount) {
  registerModelClasses();
  auto document = make<HXDocument>();
  for (std::int64_t i = 0; i < nodeCount; ++i) {
    const auto node = HXNode::makeForPatch(*patchClassNamed(patch));
    node->setPosition({static_cast<float>(i % 100) * 260, static_cast<float>(i / 100) * 140});
    document->subnodeGroup()->addNode(*node);
  }
  return document;
}

void BM_CheckViews(benchmark::State& state) {
  measure(state, *documentOf("HXRImageViewNode", state.range(0)));
}
void BM_CheckExpressions(benchmark::State& state) {
  measure(state, *documentOf("HXRMathExpressionNode", state.range(0)));
}

void sizes(benchmark::internal::Benchmark* benchmark) {
  benchmark->Arg(1000)->Arg(10'000)->Unit(benchmark::kMillisecond);
}

BENCHMARK(BM_FloorWalk)->Apply(sizes);
BENCHMARK(BM_Check)->Apply(sizes);
BENCHMARK(BM_CheckViews)->Apply(sizes);
BENCHMARK(BM_CheckExpressions)->Apply(sizes);

}  // namespace

}  // namespace tarnkit::bench

BENCHMARK_MAIN();
