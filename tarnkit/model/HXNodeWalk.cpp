#include "tarnkit/model/HXNodeWalk.h"

#include <algorithm>

#include "tarnkit/foundation/MapAdditions.h"
#include "tarnkit/model/HXNode.h"

namespace tarnkit {

HXNodeWalk::HXNodeWalk(HXNode& root, Siblings siblings) : siblings_(siblings) {
  pending_.push_back({Ref<HXNode>(&root), 0});
}

HXNodeWalk::HXNodeWalk(const HXGroup& group, Siblings siblings) : siblings_(siblings) {
  enter(group, 0);
}

HXNodeWalk::~HXNodeWalk() = default;

void HXNodeWalk::enter(const HXGroup& group, std::uint32_t level) {
  const auto first = static_cast<std::ptrdiff_t>(pending_.size());
  if (siblings_ == Siblings::inOrder) {
    for (const auto& entry : group.subnodesInForce()) pending_.push_back({entry.value, level});
  } else {
    for (auto& node : allValuesSortedByKey(group.subnodesInForce())) {
      pending_.push_back({std::move(node), level});
    }
  }
  std::reverse(pending_.begin() + first, pending_.end());
}

HXNode* HXNodeWalk::next() {
  if (current_.node) {
    if (const auto* group = current_.node->subnodeGroup().get()) enter(*group, current_.level + 1);
  }
  if (pending_.empty()) {
    current_ = {};
  } else {
    current_ = std::move(pending_.back());
    pending_.pop_back();
  }
  return current_.node.get();
}

}  // namespace tarnkit
