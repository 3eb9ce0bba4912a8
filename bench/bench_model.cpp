// The cost of the editor's main operations on graphs of 1,000, 10,000 and 100,000 nodes, beside the
// least that they could cost ("Floor") and a well-known property-list library ("Peer"), in one run.
// Counters: "per_node" is the time for one node, "bytes_per_node" live memory; growth shows in the
// rows of one name from N to N.

#include <benchmark/benchmark.h>
#include <malloc.h>
#include <plist/plist.h>

#include <map>

#include "BenchFloor.h"
#include "BenchGraph.h"
#include "BenchMemory.h"
#include "tarnkit/archive/HXArchiveReader.h"
#include "tarnkit/archive/HXArchiveText.h"
#include "tarnkit/model/HXDocumentFile.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tarnkit/platform/propertylist/PropertyList.h"
#include "tarnkit/platform/propertylist/PropertyListReader.h"

namespace tarnkit::bench {

namespace {

void reportPerNode(benchmark::State& state) {
  state.counters["per_node"] = benchmark::Counter(
      static_cast<double>(state.range(0)),
      benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

Ref<HXDocument> graphOf(std::int64_t nodeCount) {
  static std::map<std::int64_t, Ref<HXDocument>> graphs;
  auto& graph = graphs[nodeCount];
  if (!graph) graph = buildGraph(nodeCount);
  return graph;
}

const std::vector<std::uint8_t>& documentFileOf(std::int64_t nodeCount) {
  static std::map<std::int64_t, std::vector<std::uint8_t>> files;
  auto& file = files[nodeCount];
  if (file.empty()) file = *HXDocumentFile::dataWithDocument(*graphOf(nodeCount), 0);
  return file;
}

const std::vector<std::uint8_t>& deviceGraphOf(std::int64_t nodeCount) {
  static std::map<std::int64_t, std::vector<std::uint8_t>> files;
  auto& file = files[nodeCount];
  if (file.empty()) file = *HXDocumentFile::deviceGraph(*graphOf(nodeCount));
  return file;
}

// Whoever observes everything, as an editor does.
class Observation {
 public:
  std::int64_t count() const { return count_; }

 private:
  std::int64_t count_ = 0;
  NotificationCenter::Observation observation_{[this](const Notification&) { ++count_; }};
};

template <class Graph, class Make>
void build(benchmark::State& state, Make makeGraph) {
  const auto before = liveBytes();
  std::int64_t bytes = 0;
  for (auto _ : state) {
    Graph graph = makeGraph(state.range(0));
    state.PauseTiming();
    bytes = liveBytes() - before;
    graph = Graph();
    state.ResumeTiming();
  }
  state.counters["bytes_per_node"] = static_cast<double>(bytes / state.range(0));
  reportPerNode(state);
}

void BM_FloorPlainObjects(benchmark::State& state) {
  build<std::unique_ptr<FloorGraph>>(
      state, [](std::int64_t count) { return std::make_unique<FloorGraph>(count); });
}

void BM_BuildGraph(benchmark::State& state) {
  const Observation observation;
  build<Ref<HXDocument>>(state, [](std::int64_t count) { return buildGraph(count); });
}

void BM_BuildGraphUnobserved(benchmark::State& state) {
  build<Ref<HXDocument>>(state, [](std::int64_t count) { return buildGraph(count); });
}

// What memory is asked for at the most, beyond the graph, against the size of what is made.
template <class Work>
void reportPeak(benchmark::State& state, std::size_t outputSize, Work work) {
  const auto before = liveBytes();
  resetPeak();
  for (auto _ : state) work();
  state.counters["peak_over_output"] =
      static_cast<double>(peakBytes() - before) / static_cast<double>(outputSize);
  reportPerNode(state);
}

void BM_SaveDocument(benchmark::State& state) {
  const auto document = graphOf(state.range(0));
  reportPeak(state, documentFileOf(state.range(0)).size(),
             [&] { benchmark::DoNotOptimize(HXDocumentFile::dataWithDocument(*document, 0)); });
}

// Into a file that is nowhere: the disk's time is not ours.
void BM_SaveToFile(benchmark::State& state) {
  const auto document = graphOf(state.range(0));
  reportPeak(state, documentFileOf(state.range(0)).size(), [&] {
    if (!HXDocumentFile::save(*document, "/dev/null", 0)) state.SkipWithError("not saved");
  });
}

void BM_OpenDocument(benchmark::State& state) {
  const auto& file = documentFileOf(state.range(0));
  const auto before = liveBytes();
  resetPeak();
  for (auto _ : state) {
    auto opened = HXDocumentFile::document(file, 0);
    if (!opened) state.SkipWithError(opened.status().message().c_str());
    state.PauseTiming();
    *opened = nullptr;
    state.ResumeTiming();
  }
  state.counters["peak_per_node"] =
      static_cast<double>(peakBytes() - before) / static_cast<double>(state.range(0));
  reportPerNode(state);
}

void BM_SendDeviceGraph(benchmark::State& state) {
  const auto document = graphOf(state.range(0));
  reportPeak(state, deviceGraphOf(state.range(0)).size(),
             [&] { benchmark::DoNotOptimize(HXDocumentFile::deviceGraph(*document)); });
}

void BM_SendToFile(benchmark::State& state) {
  const auto document = graphOf(state.range(0));
  reportPeak(state, deviceGraphOf(state.range(0)).size(), [&] {
    if (!HXDocumentFile::send(*document, "/dev/null")) state.SkipWithError("not sent");
  });
}

void BM_FloorFlatWrite(benchmark::State& state) {
  const FloorDeviceGraph graph(deviceGraphOf(state.range(0)));
  const auto difference = static_cast<std::int64_t>(deviceGraphOf(state.range(0)).size()) -
                          static_cast<std::int64_t>(graph.write().size());
  if (difference < 0 || difference > 64) state.SkipWithError("the floor writes another file");
  for (auto _ : state) benchmark::DoNotOptimize(graph.write());
  reportPerNode(state);
}

// Counts what an inspection meets, references resolved.
class Census final : public HXArchiveReader::Visitor {
 public:
  void beginMap(HXArchiveReader::Object, std::uint32_t) override { ++met_; }
  void key(HXArchiveReader::Index) override {}
  void endMap() override {}
  void beginList(HXArchiveReader::Object, std::uint32_t) override { ++met_; }
  void endList() override {}
  void value(HXArchiveReader::Object, HXArchiveReader::Index) override { ++met_; }
  void repeated(HXArchiveReader::Object) override { ++met_; }
  void nil() override { ++met_; }
  std::size_t met() const { return met_; }

 private:
  std::size_t met_ = 0;
};

void BM_InspectDeviceGraph(benchmark::State& state) {
  const auto& file = deviceGraphOf(state.range(0));
  for (auto _ : state) {
    HXArchiveReader reader;
    if (const auto status = reader.open(file); !status) {
      state.SkipWithError(status.message().c_str());
    }
    Census census;
    reader.walk(census);
    benchmark::DoNotOptimize(census.met());
  }
  reportPerNode(state);
}

void BM_PrintDeviceGraph(benchmark::State& state) {
  const auto& file = deviceGraphOf(state.range(0));
  for (auto _ : state) {
    HXArchiveReader reader;
    if (const auto status = reader.open(file); !status) {
      state.SkipWithError(status.message().c_str());
    }
    std::size_t size = 0;
    HXArchiveText::writeIndented(reader, [&](std::string_view text) { size += text.size(); });
    benchmark::DoNotOptimize(size);
  }
  reportPerNode(state);
}

void peerRead(benchmark::State& state, const std::vector<std::uint8_t>& file) {
  for (auto _ : state) {
    plist_t list = nullptr;
    plist_from_bin(reinterpret_cast<const char*>(file.data()),
                   static_cast<std::uint32_t>(file.size()), &list);
    if (!list) state.SkipWithError("the peer does not read the file");
    state.PauseTiming();
    plist_free(list);
    state.ResumeTiming();
  }
  reportPerNode(state);
}

void BM_PeerPlistRead(benchmark::State& state) { peerRead(state, deviceGraphOf(state.range(0))); }
void BM_PeerPlistReadDocument(benchmark::State& state) {
  peerRead(state, documentFileOf(state.range(0)));
}

// One value of the device graph as the peer's; the graph nests no deeper than its reference maps.
plist_t peerValue(const PropertyList& list, PropertyList::Index index) {
  switch (list.kind(index)) {
    case PropertyList::Kind::boolean:
      return plist_new_bool(list.boolean(index));
    case PropertyList::Kind::integer:
      return plist_new_uint(static_cast<std::uint64_t>(list.integer(index)));
    case PropertyList::Kind::real32:
    case PropertyList::Kind::real64:
      return plist_new_real(list.real(index));
    case PropertyList::Kind::array: {
      plist_t array = plist_new_array();
      for (const auto element : list.elements(index)) {
        plist_array_append_item(array, peerValue(list, element));
      }
      return array;
    }
    case PropertyList::Kind::map: {
      plist_t map = plist_new_dict();
      for (std::uint32_t i = 0; i < list.count(index); ++i) {
        plist_dict_set_item(map, std::string(list.string(list.keys(index)[i])).c_str(),
                            peerValue(list, list.values(index)[i]));
      }
      return map;
    }
    default:
      return plist_new_string(std::string(list.string(index)).c_str());
  }
}

// The very tree of the device graph, built and written by the peer.
void BM_PeerPlistBuildAndWrite(benchmark::State& state) {
  const auto read = PropertyListReader::read(deviceGraphOf(state.range(0)));
  if (!read) return state.SkipWithError("the device graph cannot be read");
  const PropertyList& list = *read;
  for (auto _ : state) {
    plist_t root = peerValue(list, list.root());
    char* bytes = nullptr;
    std::uint32_t size = 0;
    plist_to_bin(root, &bytes, &size);
    benchmark::DoNotOptimize(bytes);
    plist_to_bin_free(bytes);
    plist_free(root);
  }
  reportPerNode(state);
}

void BM_RemoveAll(benchmark::State& state) {
  for (auto _ : state) {
    state.PauseTiming();
    const auto document = buildGraph(state.range(0));
    const auto groups = document->subnodeGroup()->subnodes();
    std::vector<std::vector<Ref<HXNode>>> nodes;
    for (const auto& group : groups) nodes.push_back(group->subnodeGroup()->subnodes());
    state.ResumeTiming();
    for (std::size_t i = 0; i < groups.size(); ++i) {
      for (auto& node : nodes[i]) {
        groups[i]->subnodeGroup()->removeNode(node.get());
        node = nullptr;
      }
    }
  }
  reportPerNode(state);
}

void BM_NotifyObserved(benchmark::State& state) {
  const auto document = graphOf(1000);
  HXNode& node = lastNode(*document);
  const Observation observation;
  float x = 0;
  for (auto _ : state) node.setPosition({x += 1, 0});
}

void BM_NotifyUnobserved(benchmark::State& state) {
  const auto document = graphOf(1000);
  HXNode& node = lastNode(*document);
  float x = 0;
  for (auto _ : state) node.setPosition({x += 1, 0});
}

// Single edits in a document of N nodes, nobody observing.
void BM_RenameNode(benchmark::State& state) {
  const auto document = graphOf(state.range(0));
  HXNode& node = lastNode(*document);
  const String names[] = {"One", "Another"};
  int i = 0;
  for (auto _ : state) node.setName(names[i++ & 1]);
}

void BM_MoveNode(benchmark::State& state) {
  const auto document = graphOf(state.range(0));
  HXNode& node = lastNode(*document);
  float x = 0;
  for (auto _ : state) node.setPosition({x += 1, 0});
}

void BM_LookUpPort(benchmark::State& state) {
  const auto document = graphOf(state.range(0));
  HXNode& node = lastNode(*document);
  const String key("Tarn.maximumInput");
  for (auto _ : state) benchmark::DoNotOptimize(node.portForKey(key));
}

void BM_JoinAndBreak(benchmark::State& state) {
  const auto document = graphOf(state.range(0));
  HXNode& node = lastNode(*document);
  HXPort& output = *node.portForKey("Tarn.resultOutput");
  HXPort& input = *node.portForKey("Tarn.maximumInput");
  for (auto _ : state) {
    const auto connection = document->connectPort(output, input);
    document->breakConnection(*connection);
  }
}

void BM_PublishAndUnpublish(benchmark::State& state) {
  const auto document = graphOf(state.range(0));
  HXNode& node = lastNode(*document);
  HXPort& port = *node.portForKey("Tarn.maximumInput");
  HXGroup& group = *node.parentGroup();
  for (auto _ : state) {
    group.addSymbolicPortForPort(port);
    group.removeSymbolicPortForPort(&port);
  }
}

void sizes(benchmark::internal::Benchmark* benchmark) {
  benchmark->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
}
// A million nodes take 1.2 GB, and their files as much.
void manySizes(benchmark::internal::Benchmark* benchmark) {
  sizes(benchmark);
  benchmark->Arg(1000000);
}
void editSizes(benchmark::internal::Benchmark* benchmark) {
  benchmark->Arg(1000)->Arg(10000)->Arg(100000);
}

BENCHMARK(BM_FloorPlainObjects)->Apply(manySizes);
BENCHMARK(BM_BuildGraph)->Apply(manySizes);
BENCHMARK(BM_BuildGraphUnobserved)->Apply(manySizes);
BENCHMARK(BM_SaveDocument)->Apply(manySizes);
BENCHMARK(BM_SaveToFile)->Apply(manySizes);
BENCHMARK(BM_OpenDocument)->Apply(manySizes);
BENCHMARK(BM_PeerPlistReadDocument)->Apply(sizes);
BENCHMARK(BM_SendDeviceGraph)->Apply(manySizes);
BENCHMARK(BM_SendToFile)->Apply(manySizes);
BENCHMARK(BM_FloorFlatWrite)->Apply(manySizes);
BENCHMARK(BM_InspectDeviceGraph)->Apply(sizes);
BENCHMARK(BM_PrintDeviceGraph)->Apply(sizes);
BENCHMARK(BM_PeerPlistRead)->Apply(sizes);
BENCHMARK(BM_PeerPlistBuildAndWrite)->Arg(100)->Arg(1000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_RemoveAll)->Apply(manySizes);
BENCHMARK(BM_NotifyObserved);
BENCHMARK(BM_NotifyUnobserved);
BENCHMARK(BM_RenameNode)->Apply(editSizes);
BENCHMARK(BM_MoveNode)->Apply(editSizes);
BENCHMARK(BM_LookUpPort)->Apply(editSizes);
BENCHMARK(BM_JoinAndBreak)->Apply(editSizes);
BENCHMARK(BM_PublishAndUnpublish)->Apply(editSizes);

}  // namespace

}  // namespace tarnkit::bench

// The allocator keeps what it was given: otherwise the large graphs measure how fast the kernel
// hands out and clears the same pages again.
int main(int argc, char** argv) {
  mallopt(M_MMAP_MAX, 0);
  mallopt(M_TRIM_THRESHOLD, 1 << 30);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
