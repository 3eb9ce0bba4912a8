#include "tarnkit/patches/HXRPortLayout.h"

#include <cassert>

#include "tarnkit/patches/HXRNode.h"

namespace tarnkit {

const Class HXRPortLayout::kClass{"HXRPortLayout", &Object::kClass};

void HXRPortLayout::copyGroups(const HXRPortGroupCollection& from, HXRPortGroupCollection& to) {
  for (const auto& entry : from.portGroupsInForce()) {
    const HXRPortGroup& group = *entry.value;
    const auto copy = make<HXRPortGroup>(group.groupKey(), group.orientation());
    for (const auto& original : group.ports()) {
      const Ref<HXRPort> port = original->copy();
      port->link(to.node(), original->portGroupKey(), {});
      copy->addPort(*port);
    }
    to.addPortGroup(*copy);
  }
}

HXRPortLayout::HXRPortLayout(HXRNode* node)
    : collections_{{make<HXRPortGroupCollection>(node, HXOrientationInput),
                    make<HXRPortGroupCollection>(node, HXOrientationOutput)}} {}

void HXRPortLayout::share() {
  assert(!shared_);
  shared_ = true;
  for (const auto& collection : collections_) collection->share();
}

Ref<HXRPortLayout> HXRPortLayout::copyForNode(HXRNode& node) const {
  auto copy = make<HXRPortLayout>(&node);
  for (const auto side : kBothSides) {
    copyGroups(*collections_[side], *copy->collections_[side]);
  }
  copy->ports_.reserve(ports_.size());
  for (const auto& [key, port] : ports_) {
    // A group finds the port last added under a key, which is the one that stands in the map.
    const auto* const group =
        copy->collection(port->orientation())->portGroupForKey(port->portGroupKey());
    assert(group && group->portForKey(key));
    copy->ports_.set(key, Ref<HXRPort>(group->portForKey(key)));
  }
  return copy;
}

HXRPortGroupCollection* HXRPortLayout::collection(std::int32_t orientation) const noexcept {
  const auto* collection = collections_.find(orientation);
  return collection ? collection->get() : nullptr;
}

bool HXRPortLayout::addPort(HXRPort& port, const String& portGroupKey) {
  auto* const groups = collection(port.orientation());
  if (!groups) return false;
  Ref<HXRPortGroup> group(groups->portGroupForKey(portGroupKey));
  if (!group) {
    group = make<HXRPortGroup>(portGroupKey, port.orientation());
    groups->addPortGroup(*group);
  }
  assert(!shared_);
  ports_.set(port.uniqueKey(), Ref<HXRPort>(&port));
  group->addPort(port);
  port.link(groups->node(), group->groupKey(), {});
  return true;
}

bool HXRPortLayout::removePort(HXRPort& port) {
  auto* const groups = collection(port.orientation());
  if (!groups) return false;
  const Ref<HXRPort> kept(&port);
  if (const Ref<HXRPortGroup> group = groups->portGroupForKey(port.portGroupKey())) {
    group->removePort(port);
    if (group->isEmpty()) groups->removePortGroup(*group);
  }
  if (ports_.get(port.uniqueKey()) == &port) ports_.take(port.uniqueKey());
  port.link(nullptr, nullptr, {});
  return true;
}

}  // namespace tarnkit
