// The text form beside the binary one: the same document saved and opened as either, in one run.
// "per_node" is the time for one node, "bytes_per_node" what stands in the file.

#include <benchmark/benchmark.h>

#include <map>

#include "BenchGraph.h"
#include "tarnkit/archive/HXCoding.h"
#include "tarnkit/model/HXDocumentFile.h"
#include "tarnkit/text/HXTextFile.h"

namespace tarnkit::bench {

namespace {

Ref<HXDocument> graphOf(std::int64_t nodeCount) {
  static std::map<std::int64_t, Ref<HXDocument>> graphs;
  auto& graph = graphs[nodeCount];
  if (!graph) graph = buildGraph(nodeCount);
  return graph;
}

void report(benchmark::State& state, std::size_t bytes) {
  state.counters["per_node"] = benchmark::Counter(
      static_cast<double>(state.range(0)),
      benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
  state.counters["bytes_per_node"] =
      static_cast<double>(bytes) / static_cast<double>(state.range(0));
}

void BM_PeerSaveBinary(benchmark::State& state) {
  const auto graph = graphOf(state.range(0));
  std::size_t bytes = 0;
  for (auto _ : state) {
    bytes = HXDocumentFile::dataWithDocument(*graph, HXCodingTypeEditorWithKeys)->size();
  }
  report(state, bytes);
}

void BM_SaveText(benchmark::State& state) {
  const auto graph = graphOf(state.range(0));
  std::size_t bytes = 0;
  for (auto _ : state) bytes = HXTextFile::textWithDocument(*graph)->size();
  report(state, bytes);
}

void BM_PeerOpenBinary(benchmark::State& state) {
  const auto file =
      *HXDocumentFile::dataWithDocument(*graphOf(state.range(0)), HXCodingTypeEditorWithKeys);
  for (auto _ : state) {
    auto document = *HXDocumentFile::document(file, HXCodingTypeEditorWithKeys);
    state.PauseTiming();
    document = nullptr;
    state.ResumeTiming();
  }
  report(state, file.size());
}

void BM_OpenText(benchmark::State& state) {
  const auto text = *HXTextFile::textWithDocument(*graphOf(state.range(0)));
  for (auto _ : state) {
    auto document = *HXTextFile::document(text);
    state.PauseTiming();
    document = nullptr;
    state.ResumeTiming();
  }
  report(state, text.size());
}

void sizes(benchmark::internal::Benchmark* benchmark) {
  for (const std::int64_t count : {1000, 10000, 100000}) benchmark->Arg(count);
  benchmark->Unit(benchmark::kMillisecond);
}

BENCHMARK(BM_PeerSaveBinary)->Apply(sizes);
BENCHMARK(BM_SaveText)->Apply(sizes);
BENCHMARK(BM_PeerOpenBinary)->Apply(sizes);
BENCHMARK(BM_OpenText)->Apply(sizes);

}  // namespace

}  // namespace tarnkit::bench

BENCHMARK_MAIN();
