// What differences and merges cost: two documents with fresh keys and a hundred changes, nodes that
// nothing tells apart and nothing joins, the way from one document to the other, and a merge of two
// branches. "per_node" is the time for one node; growth shows in the rows of one name from N to N.

#include <benchmark/benchmark.h>

#include <utility>

#include "BenchGraph.h"
#include "tarnkit/compare/HXDocumentDifference.h"
#include "tarnkit/compare/HXDocumentMerge.h"
#include "tarnkit/model/HXDocumentFile.h"
#include "tarnkit/model/HXNodeWalk.h"
#include "tarnkit/model/HXPatchPort.h"

namespace tarnkit::bench {

namespace {

constexpr int kChanges = 100;

Ref<HXDocument> reopened(const HXDocument& document, std::int32_t codingType) {
  const auto bytes = HXDocumentFile::dataWithDocument(document, codingType);
  return *HXDocumentFile::document(*bytes, codingType);
}

// A hundred nodes, of every so many from the first one on, get another name.
void change(HXDocument& document, std::int64_t nodeCount, std::int64_t first, const char* name) {
  std::int64_t number = 0;
  for (HXNodeWalk walk(document); HXNode* node = walk.next(); ++number) {
    if (number % (nodeCount / kChanges) == first) node->setName(name);
  }
}

void count(benchmark::State& state) {
  state.counters["per_node"] = benchmark::Counter(
      static_cast<double>(state.range(0)),
      benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

template <bool keepsKeys>
void difference(benchmark::State& state) {
  const auto document = buildGraph(state.range(0));
  const auto before = reopened(*document, keepsKeys ? 3 : 0);
  change(*document, state.range(0), 7, "Changed");
  const auto after = reopened(*document, keepsKeys ? 3 : 0);
  for (auto _ : state) {
    const HXDocumentDifference found(*before, *after);
    benchmark::DoNotOptimize(found.changes().data());
    state.counters["changes"] = static_cast<double>(found.changes().size());
  }
  count(state);
}
BENCHMARK(difference<true>)
    ->Name("BM_DifferenceByKeys")
    ->Arg(1'000)
    ->Arg(10'000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(difference<false>)
    ->Name("BM_DifferenceFreshKeys")
    ->Arg(1'000)
    ->Arg(10'000)
    ->Unit(benchmark::kMillisecond);

void BM_DifferenceLookAlikes(benchmark::State& state) {
  const auto fill = [](std::int64_t nodes) {
    auto document = make<HXDocument>();
    for (std::int64_t i = 0; i < nodes; ++i) {
      const auto node = make<HXNode>();
      node->setPatch(benchPatch().makeDefinition());
      document->subnodeGroup()->addNode(*node);
    }
    return document;
  };
  const auto before = fill(state.range(0));
  const auto after = fill(state.range(0) + state.range(0) / 10);
  for (auto _ : state) {
    const HXDocumentDifference found(*before, *after);
    benchmark::DoNotOptimize(found.changes().data());
  }
  count(state);
}
BENCHMARK(BM_DifferenceLookAlikes)->Arg(2'000)->Arg(20'000)->Unit(benchmark::kMillisecond);

void BM_ApplyDifference(benchmark::State& state) {
  const auto document = buildGraph(state.range(0));
  const auto before = reopened(*document, 3);
  change(*document, state.range(0), 7, "Changed");
  const HXDocumentDifference found(*before, *document);
  const HXDocumentDifference back(*document, *before);
  for (auto _ : state) {
    if (!found.applyTo(*before) || !back.applyTo(*before)) state.SkipWithError("not applied");
  }
  count(state);
}
BENCHMARK(BM_ApplyDifference)->Arg(1'000)->Arg(10'000)->Unit(benchmark::kMillisecond);

void BM_Merge(benchmark::State& state) {
  const auto base = buildGraph(state.range(0));
  const auto ours = reopened(*base, 3);
  const auto theirs = reopened(*base, 3);
  change(*ours, state.range(0), 3, "Ours");
  change(*theirs, state.range(0), 7, "Theirs");
  for (auto _ : state) {
    const auto outcome = HXDocumentMerge::merge(*base, *ours, *theirs);
    if (!outcome || !outcome->conflicts.empty()) state.SkipWithError("not merged");
  }
  count(state);
}
BENCHMARK(BM_Merge)->Arg(1'000)->Arg(10'000)->Unit(benchmark::kMillisecond);

}  // namespace

}  // namespace tarnkit::bench

BENCHMARK_MAIN();
