// What undo and redo cost beside what they undo: building with and without a history, one change of
// a large document and its undo, and memory a step ("bytes_per_step").

#include <benchmark/benchmark.h>

#include "BenchGraph.h"
#include "BenchMemory.h"
#include "tarnkit/editing/HXHistory.h"

namespace tarnkit::bench {

namespace {

enum class Recording { none, everyChange, oneStep };

void buildGraph(benchmark::State& state, Recording recording) {
  for (auto _ : state) {
    auto document = make<HXDocument>();
    auto history = recording == Recording::none ? nullptr : make<HXHistory>(*document);
    if (recording == Recording::oneStep) history->beginStep();
    fillGraph(*document, state.range(0));
    if (recording == Recording::oneStep) history->endStep();
    state.PauseTiming();
    if (history) {
      const auto perNode = [&](std::size_t count) {
        return static_cast<double>(count) / static_cast<double>(state.range(0));
      };
      state.counters["steps_per_node"] = perNode(history->undoCount());
      state.counters["bytes_per_node"] = perNode(history->byteCount());
    }
    history = nullptr;
    document = nullptr;
    state.ResumeTiming();
  }
}
void BM_Build(benchmark::State& state) { buildGraph(state, Recording::none); }
void BM_BuildRecorded(benchmark::State& state) { buildGraph(state, Recording::everyChange); }
void BM_BuildInOneStep(benchmark::State& state) { buildGraph(state, Recording::oneStep); }
BENCHMARK(BM_Build)->Arg(10'000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_BuildRecorded)->Arg(10'000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_BuildInOneStep)->Arg(10'000)->Unit(benchmark::kMillisecond);

void BM_UndoAndRedoBuild(benchmark::State& state) {
  auto document = make<HXDocument>();
  const auto history = make<HXHistory>(*document);
  fillGraph(*document, state.range(0));
  for (auto _ : state) {
    while (history->undo()) {
    }
    while (history->redo()) {
    }
  }
}
BENCHMARK(BM_UndoAndRedoBuild)->Arg(10'000)->Unit(benchmark::kMillisecond);

// One node of many taken out of the middle of its group, and what the undo of that costs.
template <bool undoes>
void removal(benchmark::State& state) {
  auto document = make<HXDocument>();
  for (std::int64_t i = 0; i < state.range(0); ++i) {
    document->subnodeGroup()->addNode(*make<HXNode>());
  }
  const auto nodes = document->subnodeGroup()->subnodes();
  const auto history = make<HXHistory>(*document);
  std::size_t at = nodes.size() / 2;
  for (auto _ : state) {
    if (undoes) {
      state.PauseTiming();
      document->subnodeGroup()->removeNode(nodes[at].get());
      state.ResumeTiming();
      history->undo();
    } else {
      document->subnodeGroup()->removeNode(nodes[at].get());
      state.PauseTiming();
      history->undo();
      state.ResumeTiming();
    }
    if (++at == nodes.size()) at = 0;
  }
}
BENCHMARK(removal<false>)->Name("BM_RemoveRecorded")->Arg(1'000)->Arg(100'000);
BENCHMARK(removal<true>)->Name("BM_UndoRemoval")->Arg(1'000)->Arg(100'000);

void BM_Moves(benchmark::State& state) {
  const auto document = bench::buildGraph(100);
  HXNode& node = lastNode(*document);
  const auto history = make<HXHistory>(*document);
  history->setCoalesces(false);
  const auto before = liveBytes();
  float x = 0;
  for (auto _ : state) node.setPosition({x += 1, 0});
  state.counters["bytes_per_step"] =
      static_cast<double>(liveBytes() - before) / static_cast<double>(history->undoCount());
}
BENCHMARK(BM_Moves);

}  // namespace

}  // namespace tarnkit::bench

BENCHMARK_MAIN();
