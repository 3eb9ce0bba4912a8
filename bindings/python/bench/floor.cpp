// What measure.py measures, in C++: one line a row, its name and nanoseconds of processor time.
#include <algorithm>
#include <cstdio>
#include <ctime>
#include <limits>

#include "tarnkit/editing/HXWiring.h"
#include "tarnkit/model/HXDocument.h"
#include "tarnkit/model/HXModel.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/patches/PatchRegistry.h"

namespace {

using namespace tarnkit;

constexpr int kNodes = 10'000;
constexpr int kRepeats = 9;

double now() {
  timespec time{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) * 1e9 + static_cast<double>(time.tv_nsec);
}

Ref<HXDocument> build() {
  auto document = make<HXDocument>();
  const HXRNodeClass& clamp = *patchClassNamed("HXRClampNode");
  HXGroup& group = *document->subnodeGroup();
  Ref<HXNode> earlier;
  for (int i = 0; i < kNodes; ++i) {
    const auto node = HXNode::makeForPatch(clamp);
    group.addNode(*node);
    if (earlier) {
      HXWiring::wire(*document, *earlier->outputPorts().front(),
                     *node->portForKey("Tarn.valueInput"));
    }
    earlier = node;
  }
  return document;
}

template <class Work>
void row(const char* name, Work work) {
  double least = std::numeric_limits<double>::infinity();
  for (int i = 0; i < kRepeats; ++i) {
    const double start = now();
    work();
    least = std::min(least, now() - start);
  }
  std::printf("%s\t%.2f\n", name, least / kNodes);
}

}  // namespace

int main() {
  registerModelClasses();
  row("adding and connecting, a node", [] { build(); });
  const auto document = build();
  const auto& nodes = document->subnodeGroup()->subnodesInForce();
  double sum = 0;
  row("nodes.positions, a node", [&] {
    std::vector<double> positions;
    positions.reserve(2 * kNodes);
    for (const auto& [key, node] : nodes) {
      positions.push_back(static_cast<double>(node->position().x));
      positions.push_back(static_cast<double>(node->position().y));
    }
    sum += positions.back();
  });
  row("nodes.names, a node", [&] {
    std::vector<std::string> names;
    names.reserve(kNodes);
    for (const auto& [key, node] : nodes) names.push_back(node->name().toStdString());
    sum += static_cast<double>(names.back().size());
  });
  row("nodes.values(\"Value\"), a node", [&] {
    std::vector<double> values;
    values.reserve(kNodes);
    for (const auto& [key, node] : nodes) {
      const auto* const port = as<HXPatchPort>(node->portForKey("Tarn.valueInput"));
      const auto value = port->effectiveValue();
      values.push_back(value ? static_cast<double>(value->numberValue()) : 0);
    }
    sum += values.back();
  });
  return sum > 0 ? 0 : 1;
}
