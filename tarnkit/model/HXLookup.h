#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tarnkit/platform/objects/Ref.h"
#include "tarnkit/platform/text/String.h"

namespace tarnkit {

class HXNode;
class HXPort;
class Object;

/// Finding things anywhere in a document, or in any other part of the graph: in the root and
/// everything below, found in the order of `HXNodeWalk`, which is there for every other question.
///
/// Each look-up goes over the nodes once at most, and stops where it has found the one thing that
/// it looks for; nothing is kept between two. For the document's thread.
class HXLookup {
 public:
  /// Null for an unknown key, and for nil.
  static HXNode* nodeForKey(HXNode& root, const String& uniqueKey);
  /// The node whose `HXNode::keyPath` that is, the key of the root last. Null when any of the keys
  /// is not where the path says. Costs the length of the path.
  static HXNode* nodeForKeyPath(HXNode& root, const std::vector<String>& keyPath);
  /// "node_3" is a node, "node_3/KEY" a port of it (one that it publishes, too), or its parameter
  /// of the key when it has no such port. Null for what is not there.
  static Object* objectForAddress(HXNode& root, std::string_view address);
  /// The address of the port; "" when the port or its node is gone.
  static std::string addressOf(const HXPort* port);

  /// Those of exactly that name; of nil, those without one.
  static std::vector<Ref<HXNode>> nodesNamed(HXNode& root, const String& name);
  /// Those of exactly that patch class; nodes of a patch that nobody knows are found by its name.
  static std::vector<Ref<HXNode>> nodesOfPatch(HXNode& root, std::string_view patchClass);
};

}  // namespace tarnkit
