#include "tarnkit/model/HXPortGroupSync.h"

#include <algorithm>
#include <cassert>

#include "tarnkit/model/HXNode.h"
#include "tarnkit/model/HXPortGroupCollection.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tarnkit/platform/collections/MembersOf.h"

namespace tarnkit {

/// One side of the node as it is in force; lives during a call.
struct HXPortGroupSync::Side {
  std::int32_t orientation;
  HXPortGroupCollection& collection;
  const OrderedMap<Ref<HXPortGroup>>& groups;
  const HXRPortGroupCollection* definition;  // null without a patch
  Ref<const OrderedSet> symbolicPorts;
};

/// What a synchronisation has come to, to be announced when both sides are complete.
struct HXPortGroupSync::Changes {
  std::vector<Ref<HXPortGroup>> startHidden;  // of the added ones
  std::vector<Ref<HXPortGroup>> gone;
  std::vector<Ref<HXPortGroup>> added;
  std::vector<Ref<HXPortGroup>> replaced;  // of the added ones, by another of them
};

/// What a rebuild of the definition took away and may bring back.
struct HXPortGroupSync::Memory {
  struct Side {
    Ref<const OrderedSet> order;  // null while nothing was taken away
    // The groups that were taken away, by key: those of the definition, and those of published
    // ports, which may have their name.
    OrderedMap<Ref<HXPortGroup>> defined;
    OrderedMap<Ref<HXPortGroup>> published;
  };
  BySide<Side> sides;
};

// Every sync is the base of a node.
HXNode& HXPortGroupSync::node() const noexcept {
  return *const_cast<HXNode*>(static_cast<const HXNode*>(this));
}

HXPortGroupSync::HXPortGroupSync() noexcept = default;
HXPortGroupSync::~HXPortGroupSync() = default;

HXPortGroupSync::Side HXPortGroupSync::side(std::int32_t orientation) const {
  const auto& own = node().sides_[orientation];
  return {orientation, *own.collection, own.groups,
          node().patch_ ? node().patch_->portLayout().collection(orientation) : nullptr,
          Ref<const OrderedSet>(&node().symbolicPortsInForce(orientation))};
}

bool HXPortGroupSync::isSettled() const noexcept {
  return isSettled_ && std::all_of(node().sides_.begin(), node().sides_.end(),
                                   [](const auto& side) { return side.collection->followsNode(); });
}

void HXPortGroupSync::unsettle() { node().storePortGroupsSettled(false); }

void HXPortGroupSync::rebuildDidEnd() noexcept {
  assert(rebuilds_ != 0);
  if (--rebuilds_ == 0) memory_ = nullptr;
}

void HXPortGroupSync::hx_syncPortGroupsWithPatch() {
  const Ref<HXNode> self(&node());
  Changes changes;
  node().storePortGroupsSettled(true);
  for (const auto orientation : kBothSides) syncSide(side(orientation), changes);
  for (const auto& group : changes.gone) group->storeFlag(&HXPortGroup::hasGone_, true);
  for (const auto& group : changes.startHidden) {
    if (group->hidden()) group->announceHidden();
  }
  detail::announceChanges(
      node(), HXNodeRemovePortGroupNotification, changes.gone, HXNodeAddPortGroupNotification,
      changes.added, HXPortGroupInfo, [&](const HXPortGroup& group) {
        const auto& replaced = changes.replaced;
        return std::find(replaced.begin(), replaced.end(), &group) != replaced.end() ||
               isHeld(group);
      });
}

bool HXPortGroupSync::isHeld(const HXPortGroup& group) const {
  const auto* present = node().portGroupForKey(group.groupKey(), group.orientation());
  const auto* published = as<HXSymbolicPortGroup>(present);
  return present == &group || (published && published->standsBefore_ == &group);
}

void HXPortGroupSync::syncSide(const Side& side, Changes& changes) {
  Ref<const OrderedSet> keys = make<OrderedSet>();
  if (side.definition) keys = side.definition->portGroupKeys();
  if (!side.symbolicPorts->isEmpty()) {
    const auto all = make<OrderedSet>(*keys);
    for (const auto& port : membersOf<HXSymbolicPort>(*side.symbolicPorts)) {
      all->add(port.groupKey().object());
    }
    keys = all;
  }
  if (memory_ && memory_->sides[side.orientation].order) {
    side.collection.storeKeys(memory_->sides[side.orientation].order);
  }
  const Ref<const OrderedSet> orderBefore = side.collection.portGroupKeys();
  side.collection.followNode(keys);
  OrderedMap<Ref<HXPortGroup>> fresh;
  const std::uint32_t staying = syncDefinedGroups(side, fresh, changes);
  if (!side.symbolicPorts->isEmpty()) syncPublishedGroups(side, fresh, changes);
  // Deliberately, a group of the definition that goes while published ports come under its key is
  // replaced in silence, as ports are.
  std::vector<Ref<HXPortGroup>> gone;
  if (staying != side.groups.size()) {
    for (const auto& entry : side.groups) {
      const auto* present = fresh.find(entry.key);
      if (!present || (as<HXSymbolicPortGroup>(entry.value.get()) &&
                       !as<HXSymbolicPortGroup>(present->get()))) {
        gone.push_back(entry.value);
      }
    }
  }
  node().storePortGroups(side.orientation, std::move(fresh));
  if (rebuilds_ != 0 && !gone.empty()) {
    for (const auto& group : gone) remember(side, group);
    auto& order = memory_->sides[side.orientation].order;
    if (!order) order = orderBefore;
  }
  for (const auto& group : gone) {
    changes.gone.push_back(group);
    auto* published = as<HXSymbolicPortGroup>(group.get());
    if (published && published->standsBefore_) dropGroupBehind(side, *published, changes);
  }
}

void HXPortGroupSync::remember(const Side& side, const Ref<HXPortGroup>& group) {
  if (!memory_) memory_ = std::make_unique<Memory>();
  auto& memory = memory_->sides[side.orientation];
  const bool isDefined = as<HXPatchPortGroup>(group.get()) != nullptr;
  (isDefined ? memory.defined : memory.published).set(group->groupKey(), group);
}

void HXPortGroupSync::dropGroupBehind(const Side& side, HXSymbolicPortGroup& group,
                                      Changes& changes) {
  changes.gone.push_back(group.storeStandsBefore(nullptr));
  if (rebuilds_ != 0) remember(side, changes.gone.back());
}

template <class Group>
Ref<Group> HXPortGroupSync::groupBeforeRebuild(const Side& side, const String& key) {
  if (!memory_) return nullptr;
  auto& memory = memory_->sides[side.orientation];
  constexpr bool kIsDefined = std::is_same_v<Group, HXPatchPortGroup>;
  return as<Group>((kIsDefined ? memory.defined : memory.published).take(key));
}

// The groups of the definition. One that a group of published ports of its name stands before is
// found there.
std::uint32_t HXPortGroupSync::syncDefinedGroups(const Side& side,
                                                 OrderedMap<Ref<HXPortGroup>>& fresh,
                                                 Changes& changes) {
  std::uint32_t staying = 0;
  if (!side.definition) return staying;
  const auto& definitions = side.definition->portGroupsInForce();
  fresh.reserve(definitions.size());
  for (const auto& entry : definitions) {
    Ref<HXPatchPortGroup> group;
    if (const auto* present = side.groups.find(entry.key)) {
      group = as<HXPatchPortGroup>(*present);
      if (group) {
        ++staying;
      } else {
        auto& published = static_cast<HXSymbolicPortGroup&>(**present);
        group = as<HXPatchPortGroup>(published.storeStandsBefore(nullptr));
      }
    }
    if (!group) {
      group = groupBeforeRebuild<HXPatchPortGroup>(side, entry.key);
      if (group) changes.added.push_back(group);
    }
    if (!group) {
      group = make<HXPatchPortGroup>(&node(), entry.key, side.orientation);
      if (node().patchClass().hiddenPortGroupKeys().contains(entry.key.object().get())) {
        group->storeFlag(&HXPortGroup::hidden_, true);
        changes.startHidden.push_back(group);
      }
      changes.added.push_back(group);
    }
    group->setPatchPortGroup(entry.value);
    fresh.set(entry.key, group);
  }
  return staying;
}

void HXPortGroupSync::syncPublishedGroups(const Side& side, OrderedMap<Ref<HXPortGroup>>& fresh,
                                          Changes& changes) {
  const auto oldGroup = [&](const HXSymbolicPort& port) {
    const auto* group = side.groups.find(port.groupKey());
    return group ? as<HXSymbolicPortGroup>(group->get()) : nullptr;
  };
  const auto symbolicPorts = membersOf<HXSymbolicPort>(*side.symbolicPorts);
  for (const auto& port : symbolicPorts) {
    auto* group = oldGroup(port);
    if (!group) continue;
    group->storeSymbolicPorts(make<OrderedSet>());
    if (group->standsBefore_) dropGroupBehind(side, *group, changes);
  }
  // Deliberately looked up among the old groups only, which the editor's views rely on: of several
  // ports under a key that is new, each makes a group, and the last one made stands until the next
  // synchronisation gathers the ports in it.
  for (auto& port : symbolicPorts) {
    Ref<HXSymbolicPortGroup> group(oldGroup(port));
    if (!group) {
      group = groupBeforeRebuild<HXSymbolicPortGroup>(side, port.groupKey());
      if (!group) group = make<HXSymbolicPortGroup>(&node(), port.groupKey(), side.orientation);
      group->storeSymbolicPorts(make<OrderedSet>());
      changes.added.push_back(group);
    }
    group->symbolicPorts_->add(Ref<Object>(&port));
    Ref<HXPortGroup>* present = fresh.find(port.groupKey());
    if (!present) {
      fresh.set(port.groupKey(), group);
    } else if (*present != group.get()) {
      if (auto* earlier = as<HXSymbolicPortGroup>(present->get())) {
        node().storePortGroupsSettled(false);  // another synchronisation gathers the ports
        changes.replaced.push_back(*present);
        group->storeStandsBefore(earlier->storeStandsBefore(nullptr));
      } else {
        group->storeStandsBefore(*present);
      }
      *present = group;
    }
  }
}

void HXPortGroupSync::takeUpDefinedGroups() {
  for (const auto orientation : kBothSides) {
    const Side side = this->side(orientation);
    if (!side.definition) continue;
    for (const auto& entry : side.definition->portGroupsInForce()) {
      Ref<HXPortGroup> group = side.groups.get(entry.key);
      if (auto* published = as<HXSymbolicPortGroup>(group.get())) group = published->standsBefore_;
      if (auto* own = as<HXPatchPortGroup>(group.get())) own->setPatchPortGroup(entry.value);
    }
  }
}

bool HXPortGroupSync::hx_showSymbolicPort(const HXSymbolicPort& symbolicPort) {
  // One that is neither input nor output, or says other than its inner port, is not on this side.
  if (!isSettled() || !BySide<Side>::isSide(symbolicPort.orientation())) return false;
  const Side side = this->side(symbolicPort.orientation());
  if (!side.symbolicPorts->contains(&symbolicPort)) return false;
  const String& key = symbolicPort.groupKey();
  const Ref<Object> member(const_cast<HXSymbolicPort*>(&symbolicPort));
  if (const auto* present = side.groups.find(key)) {
    auto* group = as<HXSymbolicPortGroup>(present->get());
    if (!group) return false;
    group->insertSymbolicPort(member);
    return true;
  }
  auto keys = make<OrderedSet>(*side.collection.portGroupKeys());
  keys->add(key.object());
  side.collection.followNode(keys);
  auto group = make<HXSymbolicPortGroup>(&node(), key, side.orientation);
  auto ports = make<OrderedSet>();
  ports->add(member);
  group->storeSymbolicPorts(ports);
  node().insertPortGroup(side.orientation, group);
  detail::announceOfNode(HXNodeAddPortGroupNotification, node(), HXPortGroupInfo, *group);
  return true;
}

bool HXPortGroupSync::hx_hideSymbolicPort(const HXSymbolicPort& symbolicPort) {
  if (!isSettled() || !BySide<Side>::isSide(symbolicPort.orientation())) return false;
  const Side side = this->side(symbolicPort.orientation());
  if (side.symbolicPorts->contains(&symbolicPort)) return false;  // an observer restored it
  const String& key = symbolicPort.groupKey();
  const Ref<HXSymbolicPortGroup> group = as<HXSymbolicPortGroup>(side.groups.get(key));
  if (!group || !group->symbolicPorts_ || !group->symbolicPorts_->contains(&symbolicPort)) {
    return false;
  }
  if (group->symbolicPorts_->count() > 1) {
    group->removeSymbolicPort(symbolicPort);
    return true;
  }
  // The last port leaves with its group, which is announced with what it showed.
  if (group->standsBefore_) return false;
  auto keys = make<OrderedSet>(*side.collection.portGroupKeys());
  keys->remove(key.object().get());
  side.collection.followNode(keys);
  node().takePortGroup(side.orientation, key);
  detail::announceOfNode(HXNodeRemovePortGroupNotification, node(), HXPortGroupInfo, *group);
  return true;
}

}  // namespace tarnkit
