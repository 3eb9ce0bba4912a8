#include <fmt/format.h>

#include <algorithm>

#include "tarnkit/model/HXPortGroup.h"
#include "tarnkit/model/HXPortGroupCollection.h"
#include "tarnkit/model/HXSubviewGroup.h"
#include "tarnkit/patches/Orientation.h"
#include "tools/tarnkit/Arguments.h"
#include "tools/tarnkit/Command.h"
#include "tools/tarnkit/Operations.h"
#include "tools/tarnkit/Session.h"
#include "tools/tarnkit/ValueShapes.h"

namespace tarnkit::tool {

namespace {

Ref<HXNode> nodeOf(Session& session, const Arguments& arguments) {
  return session.node(arguments.text("node"));
}

Result addNode(Session& session, const Arguments& arguments) {
  const auto node = nodeOf(session, arguments);
  const auto group = session.subnodeGroup(arguments.text("to"));
  if (as<HXDocument>(node)) throw CommandFailure("a document stands in no group");
  group->addNode(*node);
  return {};
}

Result removeNode(Session& session, const Arguments& arguments) {
  const auto node = nodeOf(session, arguments);
  const Ref<HXGroup> group(node->parentGroup());
  if (!group) throw CommandFailure("the node is in no group");
  group->removeNode(node.get());
  return {};
}

Result swapSubnodeGroup(Session& session, const Arguments& arguments) {
  const auto to = arguments.word("to", {"group", "view"});
  const auto node = nodeOf(session, arguments);
  if (to == "view") {
    node->swapSubnodeGroupToViewGroup();
  } else {
    node->swapSubnodeGroupToGroup();
  }
  return {};
}

Result setCanvasCenter(Session& session, const Arguments& arguments) {
  const auto center = arguments.point("value");
  session.subnodeGroup(arguments.text("node"))->setCanvasCenter(center);
  return {};
}

Result setOpaque(Session& session, const Arguments& arguments) {
  const auto opaque = arguments.boolean("value");
  session.subnodeGroup(arguments.text("node"))->setOpaque(opaque);
  return {};
}

Result writeKeys(std::vector<String> keys) {
  return [keys = std::move(keys)](JSONWriter& json) { writeStrings(json, keys); };
}

Result selectedNodes(Session& session, const Arguments& arguments) {
  std::vector<String> keys;
  if (const Ref<HXGroup> group = nodeOf(session, arguments)->subnodeGroup()) {
    for (const auto& node : group->selectedNodes()) keys.push_back(node->uniqueKey());
  }
  std::sort(keys.begin(), keys.end());
  return writeKeys(std::move(keys));
}

Result moveSubview(Session& session, const Arguments& arguments) {
  const auto node = nodeOf(session, arguments);
  const auto index = arguments.unsignedInteger("index");
  const Ref<HXSubviewGroup> group(as<HXSubviewGroup>(node->parentGroup()));
  if (!group) throw CommandFailure("the node is in no subview group");
  group->moveSubviewNode(*node, index);
  return {};
}

Result setPortGroup(Session& session, const Arguments& arguments) {
  struct Flag {
    const char* name;
    void (HXPortGroup::*set)(bool);
  };
  static constexpr Flag kFlags[] = {
      {"hidden", &HXPortGroup::setHidden},
      {"collapsedCanvasGroup", &HXPortGroup::setCollapsedCanvasGroup},
      {"collapsedSidebarGroup", &HXPortGroup::setCollapsedSidebarGroup},
  };
  const auto node = nodeOf(session, arguments);
  const auto orientation = arguments.orientation("orientation");
  const auto key = arguments.text("group");
  const Ref<HXPortGroup> group(node->portGroupForKey(String(key), orientation));
  if (!group) {
    throw CommandFailure(fmt::format("the node has no port group \"{}\" on that side", key));
  }
  bool isAny = false;
  for (const Flag& flag : kFlags) {
    if (!arguments.has(flag.name)) continue;
    isAny = true;
    static_cast<void>(arguments.boolean(flag.name));
  }
  if (!isAny) {
    throw CommandFailure("it sets none of hidden, collapsedCanvasGroup, collapsedSidebarGroup");
  }
  for (const Flag& flag : kFlags) {
    if (arguments.has(flag.name)) ((*group).*flag.set)(arguments.boolean(flag.name));
  }
  return {};
}

Result updatePortGroupKeys(Session& session, const Arguments& arguments) {
  const auto node = nodeOf(session, arguments);
  const auto orientation = arguments.orientation("orientation");
  const auto keys = make<OrderedSet>();
  for (const auto& key : arguments.texts("keys")) keys->add(key.object());
  const Ref<HXPortGroupCollection> collection = orientation == HXOrientationInput
                                                    ? node->inputPortGroupCollection()
                                                    : node->outputPortGroupCollection();
  collection->updateWithPortGroupKeys(keys);
  std::vector<String> order;
  const Ref<const OrderedSet> members = collection->portGroupKeys();
  for (const auto& key : *members) order.push_back(String::from(key.get()));
  return writeKeys(std::move(order));
}

constexpr Operation kOperations[] = {
    {"addNode", "node to", addNode},
    {"removeNode", "node", removeNode},
    {"swapSubnodeGroup", "node to", swapSubnodeGroup},
    {"setCanvasCenter", "node value", setCanvasCenter},
    {"setOpaque", "node value", setOpaque},
    {"selectedNodes", "node", selectedNodes},
    {"moveSubview", "node index", moveSubview},
    {"setPortGroup", "node orientation group hidden? collapsedCanvasGroup? collapsedSidebarGroup?",
     setPortGroup},
    {"updatePortGroupKeys", "node orientation keys", updatePortGroupKeys},
};

}  // namespace

std::span<const Operation> groupOperations() { return kOperations; }

}  // namespace tarnkit::tool
