#include <cassert>

#include "tarnkit/model/HXDocument.h"
#include "tarnkit/model/HXEntryChange.h"
#include "tarnkit/model/HXFieldChange.h"
#include "tarnkit/model/HXGroup.h"
#include "tarnkit/model/HXPort.h"
#include "tarnkit/model/HXSymbolicPort.h"

// The one place where the fields of a group change, and what a recorder holds of each.

namespace tarnkit {

using detail::FieldOf;
using detail::TableOf;
using detail::willChangeEntry;
using detail::willInsertEntry;
using detail::willSet;
using Order = HXChangeNotices::Order;

struct HXGroupFields {
  template <std::int32_t orientation>
  struct PublicationOrder;
  struct Opaque : FieldOf<HXGroup> {
    static constexpr const char* kName = "opaque";
    static bool get(const HXGroup& group) { return group.opaque_; }
    static void set(HXGroup& group, bool opaque) { group.opaque_ = opaque; }
  };
  struct CanvasCenter : FieldOf<HXGroup> {
    static constexpr const char* kName = "canvasCenter";
    static constexpr bool kIsViewState = true;
    static HXPoint get(const HXGroup& group) { return group.canvasCenter_; }
    static void set(HXGroup& group, HXPoint center) { group.canvasCenter_ = center; }
  };
  struct Subnode : TableOf<HXGroup, OrderedMap<Ref<HXNode>>> {
    static constexpr const char* kName = "subnode";
    static constexpr bool kHoldsSubnodes = true;
    static OrderedMap<Ref<HXNode>>& in(HXGroup& group) { return group.subnodes_; }
    static HXNode* subnode(const Ref<HXNode>* node) noexcept {
      return node ? node->get() : nullptr;
    }
    // Who is in the group has it as its parent.
    static void follow(HXGroup& group, const String&, const Ref<HXNode>* node, bool came) {
      if (node && *node) group.relink(**node, came);
    }
    static void addNotices(HXGroup& group, const String&, const Ref<HXNode>* node, bool came,
                           HXChangeNotices& notices) {
      if (!node || !*node) return;
      const Ref<HXGroup> keptGroup(&group);
      notices.addMember(group, **node, came, Order::newNode, Order::goneNode,
                        [keptGroup, kept = *node](bool here) {
                          auto& now = keptGroup->inForce();
                          detail::announce(
                              here ? HXGroupAddNodeNotification : HXGroupRemoveNodeNotification,
                              now, now, {{HXGroupInfo, &now}, {HXNodeInfo, kept.get()}});
                        });
    }
  };
  // The same subnodes in another order.
  struct SubnodeOrder : FieldOf<HXGroup> {
    static constexpr const char* kName = "subnodeOrder";
    static constexpr const char* kTable = Subnode::kName;
    static std::vector<Ref<HXNode>> get(const HXGroup& group) { return group.subnodes(); }
    static void set(HXGroup& group, const std::vector<Ref<HXNode>>& order) {
      OrderedMap<Ref<HXNode>> subnodes;
      subnodes.reserve(group.subnodes_.size());
      for (const auto& node : order) subnodes.set(node->uniqueKey(), node);
      assert(subnodes.size() == group.subnodes_.size());
      std::swap(group.subnodes_, subnodes);
    }
  };
  template <std::int32_t orientation>
  struct Publication : TableOf<HXGroup, OrderedSet> {
    static constexpr const char* kName =
        orientation == HXOrientationInput ? "publishedInput" : "publishedOutput";
    static OrderedSet& in(HXGroup& group) { return *group.symbolicPorts_[orientation]; }
    static void addNotices(HXGroup& group, const Ref<Object>& member, const Value*, bool came,
                           HXChangeNotices& notices) {
      const Ref<HXGroup> keptGroup(&group);
      const Ref<HXSymbolicPort> kept(static_cast<HXSymbolicPort*>(member.get()));
      notices.addMember(group, *member, came, Order::newPublication, Order::gonePublication,
                        [keptGroup, kept](bool here) {
                          auto& now = keptGroup->inForce();
                          const Ref<HXPort> port(kept->port());
                          if (!port) return;
                          detail::announce(here ? HXGroupAddSymbolicPortForPortNotification
                                                : HXGroupRemoveSymbolicPortForPortNotification,
                                           now, now,
                                           {{HXGroupInfo, &now}, {HXPortInfo, port.get()}});
                        });
    }
  };
};

void HXGroup::relink(HXNode& node, bool came) { node.followEntry(*this, came, {}); }
template <std::int32_t orientation>
struct HXGroupFields::PublicationOrder : FieldOf<HXGroup> {
  static constexpr const char* kName =
      orientation == HXOrientationInput ? "publishedInputOrder" : "publishedOutputOrder";
  static constexpr const char* kTable = Publication<orientation>::kName;
  static std::vector<Ref<Object>> get(const HXGroup& group) {
    const OrderedSet& ports = *group.symbolicPorts_[orientation];
    return {ports.begin(), ports.end()};
  }
  static void set(HXGroup& group, const std::vector<Ref<Object>>& order) {
    auto ports = make<OrderedSet>();
    for (const auto& port : order) ports->add(port);
    assert(ports->count() == group.symbolicPorts_[orientation]->count());
    group.symbolicPorts_[orientation] = ports;
  }
};

void HXGroup::insertSubnode(const Ref<HXNode>& node) {
  assert(node->parentGroup() == this && !subnodes_.contains(node->uniqueKey()));
  willInsertEntry<HXGroupFields::Subnode>(*this, node->uniqueKey());
  subnodes_.set(node->uniqueKey(), node);
}

void HXGroup::takeSubnode(const String& uniqueKey) {
  assert(subnodes_.contains(uniqueKey) && subnodes_.get(uniqueKey)->parentGroup() != this);
  willChangeEntry<HXGroupFields::Subnode>(*this, uniqueKey);
  subnodes_.take(uniqueKey);
}

// A group takes all at once only before it is anybody's.
void HXGroup::storeSubnodes(OrderedMap<Ref<HXNode>> subnodes) { std::swap(subnodes_, subnodes); }

void HXGroup::insertPublication(std::int32_t orientation, HXSymbolicPort& symbolicPort) {
  const Ref<Object> member(&symbolicPort);
  if (orientation == HXOrientationInput) {
    willChangeEntry<HXGroupFields::Publication<HXOrientationInput>>(*this, member);
  } else {
    willChangeEntry<HXGroupFields::Publication<HXOrientationOutput>>(*this, member);
  }
  symbolicPorts_[orientation]->add(member);
}

void HXGroup::removePublication(const HXSymbolicPort& symbolicPort) {
  const Ref<Object> member(const_cast<HXSymbolicPort*>(&symbolicPort));
  if (symbolicPorts_[HXOrientationInput]->contains(&symbolicPort)) {
    willChangeEntry<HXGroupFields::Publication<HXOrientationInput>>(*this, member);
    symbolicPorts_[HXOrientationInput]->remove(&symbolicPort);
  }
  if (symbolicPorts_[HXOrientationOutput]->contains(&symbolicPort)) {
    willChangeEntry<HXGroupFields::Publication<HXOrientationOutput>>(*this, member);
    symbolicPorts_[HXOrientationOutput]->remove(&symbolicPort);
  }
}

// As all subnodes.
void HXGroup::storePublications(std::int32_t orientation, const OrderedSet& symbolicPorts) {
  symbolicPorts_[orientation] = make<OrderedSet>(symbolicPorts);
}

void HXGroup::storeOrder(const std::vector<Ref<HXNode>>& subnodes) {
  willSet<HXGroupFields::SubnodeOrder>(*this);
  HXGroupFields::SubnodeOrder::set(*this, subnodes);
}

void HXGroup::storeOrder(std::int32_t orientation, std::vector<Ref<Object>> symbolicPorts) {
  if (orientation == HXOrientationInput) {
    willSet<HXGroupFields::PublicationOrder<HXOrientationInput>>(*this);
    HXGroupFields::PublicationOrder<HXOrientationInput>::set(*this, symbolicPorts);
  } else {
    willSet<HXGroupFields::PublicationOrder<HXOrientationOutput>>(*this);
    HXGroupFields::PublicationOrder<HXOrientationOutput>::set(*this, symbolicPorts);
  }
}

void HXGroup::storeOpaque(bool opaque) {
  if (opaque == opaque_) return;
  const detail::RecordedOperation operation(*this);
  willSet<HXGroupFields::Opaque>(*this);
  opaque_ = opaque;
}

void HXGroup::storeCanvasCenter(HXPoint center) {
  if (center == canvasCenter_) return;
  const detail::RecordedOperation operation(*this);
  willSet<HXGroupFields::CanvasCenter>(*this);
  canvasCenter_ = center;
}

}  // namespace tarnkit
