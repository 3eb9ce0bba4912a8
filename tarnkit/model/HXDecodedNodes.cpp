#include "tarnkit/model/HXDecodedNodes.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "tarnkit/model/HXDocument.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/platform/system/Log.h"

namespace tarnkit::detail {

namespace {

constexpr std::uint32_t kComparedInPlace = 16;

template <class T>
bool hasRepeated(const OrderedMap<Ref<T>>& map) {
  if (map.size() <= kComparedInPlace) {
    for (auto entry = map.begin(); entry != map.end(); ++entry) {
      for (auto other = map.begin(); other != entry; ++other) {
        if (other->value == entry->value) return true;
      }
    }
    return false;
  }
  std::vector<const T*> objects;
  objects.reserve(map.size());
  for (const auto& entry : map) objects.push_back(entry.value.get());
  std::sort(objects.begin(), objects.end(), std::less<>());
  return std::adjacent_find(objects.begin(), objects.end()) != objects.end();
}

template <class T>
void dropRepeatedIn(OrderedMap<Ref<T>>& map, const HXNode& node, std::string_view what) {
  if (!hasRepeated(map)) return;
  std::unordered_set<const T*> met;
  OrderedMap<Ref<T>> kept;
  for (const auto& entry : map) {
    if (met.insert(entry.value.get()).second) kept.set(entry.key, entry.value);
  }
  Log::warning("HXNode", fmt::format("Dropping {} of the keys of {} under which a {} stands again",
                                     map.size() - kept.size(), node.uniqueKey().view(), what));
  map = std::move(kept);
}

// Of damaged archives a node may name a group that does not hold it, or that no node holds.
bool isInGroupOfNode(const HXNode& node) {
  const auto* group = node.parentGroup();
  const auto* owner = group ? group->node() : nullptr;
  return owner && owner->subnodeGroup() == group &&
         group->subnodesInForce().get(node.uniqueKey()) == &node;
}

}  // namespace

std::unordered_set<const HXNode*> nodesWithin(const std::vector<const HXNode*>& outermost) {
  std::unordered_set<const HXNode*> held(outermost.begin(), outermost.end());
  std::vector<const HXNode*> pending = outermost;
  while (!pending.empty()) {
    const auto* node = pending.back();
    pending.pop_back();
    if (!node->subnodeGroup()) continue;
    for (const auto& entry : node->subnodeGroup()->subnodesInForce()) {
      if (held.insert(entry.value.get()).second) pending.push_back(entry.value.get());
    }
  }
  return held;
}

void refuseNodesInCircles(Decoder& coder) {
  std::size_t nodes = 0;
  bool isFirst = true;
  bool isDocument = false;
  std::vector<const HXNode*> outermost;
  coder.eachDecoded([&](Object& object) {
    if (std::exchange(isFirst, false)) isDocument = object.isMemberOf(HXDocument::kClass);
    const auto* node = isDocument ? nullptr : as<HXNode>(&object);
    if (!node) return;
    ++nodes;
    if (!isInGroupOfNode(*node)) outermost.push_back(node);
  });
  if (nodes != 0 && nodesWithin(outermost).size() < nodes) {
    coder.fail("HXNode.subnodeGroup: a node that stands inside itself");
  }
}

void dropRepeated(const HXNode& node, OrderedMap<Ref<HXPatchPort>>& ports) {
  dropRepeatedIn(ports, node, "port");
}

void dropRepeated(const HXNode& node, OrderedMap<Ref<HXPortGroup>>& groups) {
  dropRepeatedIn(groups, node, "port group");
}

}  // namespace tarnkit::detail
