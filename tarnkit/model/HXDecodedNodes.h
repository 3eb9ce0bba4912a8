#pragma once

#include <cstddef>
#include <unordered_set>
#include <vector>

#include "tarnkit/model/HXPortGroup.h"
#include "tarnkit/platform/collections/OrderedMap.h"

namespace tarnkit {

class HXNode;
class HXPatchPort;

}  // namespace tarnkit

namespace tarnkit::detail {

// What is looked after when nodes were decoded: archives come from elsewhere, and what the library
// cannot keep of them is told, one line each, never lost in silence.

/// The nodes, and everything in their groups.
std::unordered_set<const HXNode*> nodesWithin(const std::vector<const HXNode*>& outermost);

/// Fails the decoding when a node of the archive stands inside itself. Where the root is a document
/// only the nodes that it holds are left, so there is nothing to look at.
void refuseNodesInCircles(Decoder& coder);

/// An object that stands under several keys keeps the first one.
void dropRepeated(const HXNode& node, OrderedMap<Ref<HXPatchPort>>& ports);
void dropRepeated(const HXNode& node, OrderedMap<Ref<HXPortGroup>>& groups);

}  // namespace tarnkit::detail
