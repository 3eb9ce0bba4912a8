#pragma once

#include <cstdint>
#include <vector>

#include "tarnkit/platform/objects/Ref.h"

namespace tarnkit {

class HXGroup;
class HXNode;

/// Every node of a part of the graph, one after the other: a node before those below it, the
/// subnodes of a group one after the other with all that is below each.
///
///     for (HXNodeWalk walk(*document.subnodeGroup()); HXNode* node = walk.next();) …
///
/// Nothing is gathered beforehand but the nodes that wait beside the present one, so whoever has
/// found what they look for stops at no cost; depth costs memory, not the stack. The graph may
/// change under the walk: what waits is kept alive and is visited wherever it then stands, and the
/// subnodes of a node are taken as they are when the node after it is asked for.
class HXNodeWalk {
 public:
  enum class Siblings : std::uint8_t {
    inOrder,      // of their group, which is that of their adding
    sortedByKey,  // ascending, as the editor's files have them
  };

  /// The node itself and every node below it.
  explicit HXNodeWalk(HXNode& root, Siblings siblings = Siblings::inOrder);
  /// Every node in the group and below.
  explicit HXNodeWalk(const HXGroup& group, Siblings siblings = Siblings::inOrder);
  ~HXNodeWalk();
  HXNodeWalk(const HXNodeWalk&) = delete;
  HXNodeWalk& operator=(const HXNodeWalk&) = delete;

  /// The next node, valid until the one after it is asked for; null at the end.
  HXNode* next();
  /// How many levels the node given last stands below the first one.
  std::uint32_t level() const noexcept { return current_.level; }

 private:
  struct Step {
    Ref<HXNode> node;
    std::uint32_t level = 0;
  };
  void enter(const HXGroup& group, std::uint32_t level);

  std::vector<Step> pending_;  // the next stands last
  Step current_;
  Siblings siblings_;
};

}  // namespace tarnkit
