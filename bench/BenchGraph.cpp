#include "BenchGraph.h"

#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tarnkit/patches/PatchDeclaration.h"

namespace tarnkit::bench {

const HXRNodeClass& benchPatch() {
  static const HXRNodeClass patch(
      "BenchNode", &HXRNode::kClass, {.defaultName = "Bench", .processClassName = "PMRBenchPatch"},
      [](PatchDeclaration& declaration) {
        declaration.in("Value", "Tarn.valueInput", value::number(0));
        declaration.in("Minimum", "Tarn.minimumInput", value::number(0));
        declaration.in("Maximum", "Tarn.maximumInput", value::number(1));
        declaration.out("Result", "Tarn.resultOutput");
        declaration.parameter("Count", "Tarn.countParameter", 1, 1, 100);
      });
  static const bool registered = (ClassRegistry::add(patch), true);
  static_cast<void>(registered);
  return patch;
}

Ref<HXDocument> buildGraph(std::int64_t nodeCount) {
  auto document = make<HXDocument>();
  fillGraph(*document, nodeCount);
  return document;
}

void fillGraph(HXDocument& graph, std::int64_t nodeCount) {
  static const String input = String::interned("Tarn.valueInput");
  static const String output = String::interned("Tarn.resultOutput");
  HXDocument* const document = &graph;
  Ref<HXNode> group;
  HXNode* previous = nullptr;
  int port = 0;
  for (std::int64_t i = 0; i < nodeCount; ++i) {
    if (i % kNodesPerGroup == 0) {
      group = make<HXNode>();
      group->setForceAllowsSubnodes(true);
      group->setPatch(nullptr);
      document->subnodeGroup()->addNode(*group);
    }
    auto node = make<HXNode>();
    node->setPatch(benchPatch().makeDefinition());
    group->subnodeGroup()->addNode(*node);
    if (previous) {
      document->connectPort(*previous->portForKey(output), *node->portForKey(input));
    }
    for (const auto& entry : node->portsInForce()) {
      if (port++ % kPublishedPortStride == 0) {
        group->subnodeGroup()->addSymbolicPortForPort(*entry.value);
      }
    }
    previous = node.get();
  }
}

HXNode& lastNode(const HXDocument& document) {
  const auto groups = document.subnodeGroup()->subnodes();
  return *groups.back()->subnodeGroup()->subnodes().back();
}

}  // namespace tarnkit::bench
