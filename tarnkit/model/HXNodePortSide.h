#pragma once

#include "tarnkit/model/HXNode.h"
#include "tarnkit/model/HXPortGroup.h"
#include "tarnkit/model/HXPortGroupCollection.h"

namespace tarnkit {

/// What the synchronisation of a node's port groups works on: one orientation of the node. Private
/// to the sources of `HXNode`; lives during a call.
struct HXNode::PortSide {
  std::int32_t orientation;
  HXPortGroupCollection& collection;
  OrderedMap<Ref<HXPortGroup>>& groups;
  const HXRPortGroupCollection* definition;  // null without a patch
  Ref<const OrderedSet> symbolicPorts;
};

/// What a synchronisation of the port groups has come to, to be announced when it is complete.
struct HXNode::PortGroupChanges {
  std::vector<Ref<HXPortGroup>> startHidden;  // of the added ones
  std::vector<Ref<HXPortGroup>> gone;
  std::vector<Ref<HXPortGroup>> added;
  std::vector<Ref<HXPortGroup>> replaced;  // of the added ones, by another of them
};

/// What a rebuild of the definition took away, by orientation, and may bring back.
struct HXNode::GroupMemory {
  struct Side {
    Ref<const OrderedSet> order;  // null while nothing was taken away
    // The groups that were taken away, by key: those of the definition, and those of published
    // ports, which may have their name.
    OrderedMap<Ref<HXPortGroup>> defined;
    OrderedMap<Ref<HXPortGroup>> published;
  };
  Side inputs;
  Side outputs;
  Side& side(std::int32_t orientation) {
    return orientation == HXOrientationInput ? inputs : outputs;
  }
};

/// While one lives, the node's definition is on its way from one set of ports to another: groups
/// that go and come back in between stay what they were.
class HXNode::Rebuild {
 public:
  explicit Rebuild(HXNode& node) : node_(&node) { ++node.rebuilds_; }
  ~Rebuild() {
    if (--node_->rebuilds_ == 0) node_->groupMemory_ = nullptr;
  }
  Rebuild(const Rebuild&) = delete;
  Rebuild& operator=(const Rebuild&) = delete;

 private:
  Ref<HXNode> node_;
};

namespace detail {

/// Announces, on behalf of the node, what came to it or went from it.
inline void announceOfNode(const Symbol& name, HXNode& node, const Symbol& infoKey,
                           Object& object) {
  announce(name, node, node, [&](const Ref<Object>& documentKey) {
    return UserInfo{{HXDocumentKeyInfo, documentKey},
                    {HXNodeInfo, Ref<Object>(&node)},
                    {infoKey, Ref<Object>(&object)}};
  });
}

}  // namespace detail

}  // namespace tarnkit
