// What each patch of the catalogue costs: its definition alone, and a node placed with it (made,
// given its definition and synchronised), in time and live memory. The rows named "median" are over
// all classes; "over_floor" is the time against plain shared objects of as many ports, in the same
// run.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

#include "BenchFloor.h"
#include "BenchMemory.h"
#include "tarnkit/model/HXModel.h"
#include "tarnkit/model/HXNode.h"
#include "tarnkit/patches/HXRNode.h"
#include "tarnkit/patches/PatchRegistry.h"

namespace tarnkit::bench {

namespace {

constexpr std::size_t kBatch = 256;
constexpr int kRuns = 3;
constexpr double kPortsOfFloorNode = 4;
constexpr std::int64_t kFloorNodes = 1000;

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

struct Cost {
  double seconds;
  double bytes;
};

/// The cost of one of a batch of objects, in the quickest of a few batches: a small batch is soon
/// interrupted on a machine that has other work.
template <class Make>
Cost costOf(Make makeObject) {
  Cost least{1, 0};
  for (int run = 0; run < kRuns; ++run) {
    std::vector<Ref<Object>> objects;
    objects.reserve(kBatch);
    const auto before = liveBytes();
    const auto start = Clock::now();
    for (std::size_t i = 0; i < kBatch; ++i) objects.push_back(makeObject());
    least.seconds = std::min(least.seconds, secondsSince(start) / kBatch);
    least.bytes = static_cast<double>(liveBytes() - before) / kBatch;
  }
  return least;
}

Cost costOfDefinition(const HXRNodeClass& patchClass) {
  return costOf([&]() -> Ref<Object> { return patchClass.makeDefinition(); });
}

Cost costOfNode(const HXRNodeClass& patchClass) {
  const String nodeClassName = patchClass.nodeClassName();
  return costOf([&]() -> Ref<Object> {
    auto node = HXNode::makeOfClass(nodeClassName);
    node->setPatch(patchClass.makeDefinition());
    return node;
  });
}

/// Seconds for one port of plain shared objects.
double floorOfPort() {
  static const double seconds = [] {
    double least = 1;
    for (int run = 0; run < 20; ++run) {
      const auto start = Clock::now();
      const FloorGraph graph(kFloorNodes);
      least = std::min(least, secondsSince(start));
    }
    return least / static_cast<double>(kFloorNodes) / kPortsOfFloorNode;
  }();
  return seconds;
}

/// A patch without ports is held against one of one port.
double overFloor(const HXRNodeClass& patchClass, double seconds) {
  const auto ports = patchClass.prototype().portLayout().ports().size();
  return seconds / (floorOfPort() * std::max(1U, ports));
}

double median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

using Measure = Cost (*)(const HXRNodeClass&);

void measureOne(benchmark::State& state, Measure measure, const HXRNodeClass& patchClass) {
  double seconds = 0;
  double bytes = 0;
  measure(patchClass);  // the first of a class runs its declaration
  for (auto _ : state) {
    const Cost cost = measure(patchClass);
    state.SetIterationTime(cost.seconds);
    seconds += cost.seconds;
    bytes = cost.bytes;
  }
  state.counters["bytes"] = bytes;
  state.counters["over_floor"] =
      overFloor(patchClass, seconds / static_cast<double>(state.iterations()));
}

void measureMedian(benchmark::State& state, Measure measure) {
  std::vector<double> bytes;
  std::vector<double> ratios;
  for (auto _ : state) {
    std::vector<double> seconds;
    bytes.clear();
    ratios.clear();
    for (const auto* const patchClass : catalogue()) {
      const Cost cost = measure(*patchClass);
      seconds.push_back(cost.seconds);
      bytes.push_back(cost.bytes);
      ratios.push_back(overFloor(*patchClass, cost.seconds));
    }
    state.SetIterationTime(median(seconds));
  }
  state.counters["bytes"] = median(bytes);
  state.counters["over_floor"] = median(ratios);
}

void registerRows(const std::string& name, Measure measure) {
  constexpr int kIterations = 20;
  for (const auto* const patchClass : catalogue()) {
    benchmark::RegisterBenchmark(
        (name + "/" + std::string(patchClass->name())).c_str(),
        [=](benchmark::State& state) { measureOne(state, measure, *patchClass); })
        ->UseManualTime()
        ->Iterations(kIterations);
  }
  benchmark::RegisterBenchmark((name + "/median").c_str(),
                               [=](benchmark::State& state) { measureMedian(state, measure); })
      ->UseManualTime()
      ->Iterations(kIterations);
}

}  // namespace

}  // namespace tarnkit::bench

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  tarnkit::registerModelClasses();
  tarnkit::bench::registerRows("BM_MakeDefinition", tarnkit::bench::costOfDefinition);
  tarnkit::bench::registerRows("BM_PlaceNode", tarnkit::bench::costOfNode);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
