// The cost of drawing a group of 1,000 and of 10,000 nodes: where they stand, laid out by layers,
// and as a page; beside the least that writing as much costs ("Floor"). Counters: "per_node" is the
// time for one node, "bytes_per_node" what is written for it; growth shows in the rows of one name
// from N to N.

#include <benchmark/benchmark.h>

#include <map>

#include "tarnkit/model/HXDocument.h"
#include "tarnkit/model/HXModel.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/patches/PatchRegistry.h"
#include "tarnkit/render/HXGraphPage.h"

namespace tarnkit::bench {

namespace {

constexpr int kColumns = 100;

// Each node feeds three of the twenty that follow, so that lines cross and skip layers.
Ref<HXDocument> makeDocument(std::int64_t nodeCount, bool placed) {
  registerModelClasses();
  auto document = make<HXDocument>();
  const HXRNodeClass& patch = *patchClassNamed("HXRClampNode");
  const char* const inputs[] = {"Tarn.valueInput", "Tarn.minimumInput", "Tarn.maximumInput"};
  std::vector<Ref<HXNode>> nodes;
  for (std::int64_t i = 0; i < nodeCount; ++i) {
    const auto node = make<HXNode>();
    node->setPatch(patch.makeDefinition());
    if (placed) {
      const std::int64_t row = i / kColumns;
      node->setPosition({static_cast<float>(i % kColumns) * 260, static_cast<float>(row) * 140});
    }
    document->subnodeGroup()->addNode(*node);
    for (std::int64_t input = 0; input < 3; ++input) {
      const std::int64_t from = i - 1 - (i * 7 + input * 11) % 20;
      if (from < 0) continue;
      document->connectPort(*nodes[static_cast<std::size_t>(from)]->portForKey("Tarn.resultOutput"),
                            *node->portForKey(inputs[input]));
    }
    nodes.push_back(node);
  }
  return document;
}

const HXGroup& groupOf(std::int64_t nodeCount, bool placed) {
  static std::map<std::pair<std::int64_t, bool>, Ref<HXDocument>> documents;
  auto& document = documents[{nodeCount, placed}];
  if (!document) document = makeDocument(nodeCount, placed);
  return *document->subnodeGroup();
}

template <class Draw>
void measure(benchmark::State& state, bool placed, Draw draw) {
  const HXGroup& group = groupOf(state.range(0), placed);
  std::size_t size = 0;
  for (auto _ : state) {
    const std::string text = draw(group);
    size = text.size();
    benchmark::DoNotOptimize(text.data());
  }
  const auto nodes = static_cast<double>(state.range(0));
  state.counters["per_node"] = benchmark::Counter(
      nodes, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
  state.counters["bytes_per_node"] = static_cast<double>(size) / nodes;
}

void BM_DrawPlaced(benchmark::State& state) {
  measure(state, true, [](const HXGroup& group) { return graphPicture(group); });
}

void BM_DrawLaidOut(benchmark::State& state) {
  measure(state, false, [](const HXGroup& group) { return graphPicture(group); });
}

void BM_DrawPage(benchmark::State& state) {
  measure(state, true,
          [](const HXGroup& group) { return graphPage(group, HXPictureTheme::light); });
}

// The least: the finished text of a placed picture, appended again piece by piece.
void BM_FloorAppend(benchmark::State& state) {
  const std::string done = graphPicture(groupOf(state.range(0), true));
  measure(state, true, [&](const HXGroup&) {
    constexpr std::size_t kPiece = 12;
    std::string text;
    for (std::size_t at = 0; at < done.size(); at += kPiece) text.append(done, at, kPiece);
    return text;
  });
}

void sizes(benchmark::internal::Benchmark* benchmark) {
  benchmark->Arg(1000)->Arg(10'000)->Unit(benchmark::kMillisecond);
}

BENCHMARK(BM_FloorAppend)->Apply(sizes);
BENCHMARK(BM_DrawPlaced)->Apply(sizes);
BENCHMARK(BM_DrawLaidOut)->Apply(sizes);
BENCHMARK(BM_DrawPage)->Apply(sizes);

}  // namespace

}  // namespace tarnkit::bench

BENCHMARK_MAIN();
