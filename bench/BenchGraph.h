#pragma once

#include <cstdint>

#include "tarnkit/model/HXDocument.h"

namespace tarnkit::bench {

/// How the benchmark's graph is made: one document, groups of 100 nodes, each node a patch with
/// three inputs with defaults, one output and one parameter, its first input connected to the
/// output of the node before it, every tenth port published.
inline constexpr std::int64_t kNodesPerGroup = 100;
inline constexpr int kPublishedPortStride = 10;

/// The patch of every node.
const HXRNodeClass& benchPatch();
/// A document of `nodeCount` nodes beside the nodes that hold the groups.
Ref<HXDocument> buildGraph(std::int64_t nodeCount);
/// The same in an empty document.
void fillGraph(HXDocument& graph, std::int64_t nodeCount);
/// The last node of the last group.
HXNode& lastNode(const HXDocument& document);

}  // namespace tarnkit::bench
