#include "Consistency.h"

#include <fmt/format.h>

#include "tarnkit/model/HXParameter.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/model/HXPortGroup.h"
#include "tarnkit/model/HXPortGroupCollection.h"
#include "tarnkit/model/HXSubviewGroup.h"
#include "tarnkit/model/HXSymbolicPort.h"

namespace tarnkit::test {

namespace {

class Inspection {
 public:
  Inspection(const HXDocument& document, const Leniency& leniency)
      : document_(document), leniency_(leniency) {}

  std::vector<std::string> run() {
    std::vector<const HXNode*> pending{&document_};
    while (!pending.empty()) {
      const HXNode& node = *pending.back();
      pending.pop_back();
      node_ = &node;
      checkNode(node);
      if (const HXGroup* group = node.subnodeGroup().get()) {
        checkGroup(*group, node);
        for (const auto& entry : group->subnodesInForce()) pending.push_back(entry.value.get());
      }
    }
    return std::move(faults_);
  }

 private:
  template <class... Args>
  void require(bool condition, fmt::format_string<Args...> text, Args&&... args) {
    if (condition) return;
    faults_.push_back(
        fmt::format("{} ({}): ", node_->uniqueKey().view(), node_->patchClass().name()) +
        fmt::format(text, std::forward<Args>(args)...));
  }

  void checkNode(const HXNode& node) {
    if (node.patch()) checkParameters(node);
    checkPorts(node);
    for (const auto orientation : {HXOrientationInput, HXOrientationOutput}) {
      checkPortGroups(node, orientation);
    }
  }

  void checkParameters(const HXNode& node) {
    const Ref<HXRNode> patch = node.patch();
    require(patch->node() == &node, "its patch belongs to another node");
    for (const auto& description : patch->parameters()) {
      const auto* parameter = node.parameterForKey(description->uniqueKey());
      const String& key = description->uniqueKey();
      require(parameter, "parameter {} is missing", key.view());
      if (!parameter || patch->parameterForKey(key) != description.get()) continue;
      require(parameter->node() == &node, "parameter {} has another node", key.view());
      require(parameter->patchParameter() == description, "parameter {} has another description",
              key.view());
      require(description->parameter() == parameter, "parameter {} is not its description's twin",
              key.view());
    }
  }

  void checkPorts(const HXNode& node) {
    const Ref<HXRNode> patch = node.patch();
    if (node.unknownPatchClass().isNil()) {
      const std::uint32_t described = patch ? patch->portLayout().ports().size() : 0;
      require(described == node.portsInForce().size(), "{} ports, where the patch has {}",
              node.portsInForce().size(), described);
    }
    for (const auto& entry : node.portsInForce()) {
      const HXPatchPort& port = *entry.value;
      const auto key = entry.key.view();
      require(port.node() == &node, "port {} has another node", key);
      require(port.uniqueKey() == entry.key, "port {} stands under another key", key);
      if (patch) {
        require(patch->portLayout().ports().get(entry.key) == port.definition(),
                "port {} has another description", key);
      }
      const auto* symbolicPort = port.symbolicPort();
      require(!symbolicPort || symbolicPort->port() == &port || leniency_.doublePublications,
              "port {} is published by a port that publishes another", key);
      port.connections().forEach(
          [&](const HXConnection& connection) { checkConnection(port, connection); });
    }
  }

  void checkConnection(const HXPatchPort& port, const HXConnection& connection) {
    const bool isOutput = connection.outputPort() == &port;
    require(isOutput || connection.inputPort() == &port,
            "port {} holds a connection of other ports", port.uniqueKey().view());
    const HXPort* other = isOutput ? connection.inputPort() : connection.outputPort();
    // An end may have gone with the group that held it; one that is out of the document keeps what
    // it was not asked to end.
    if (leniency_.refusedConnections || !other || !other->node() ||
        other->node()->document() != &document_)
      return;
    // A port that another one took the place of, under its key, was not withdrawn.
    if (other->node()->portForKey(other->uniqueKey()) != other) return;
    require(other->connections().contains(&connection),
            "port {} holds a connection that {} of {} does not", port.uniqueKey().view(),
            other->uniqueKey().view(), other->node()->uniqueKey().view());
  }

  void checkPortGroups(const HXNode& node, std::int32_t orientation) {
    const bool isInput = orientation == HXOrientationInput;
    const auto keys = (isInput ? node.inputPortGroupCollection() : node.outputPortGroupCollection())
                          ->portGroupKeys();
    const auto& published =
        isInput ? node.symbolicInputPortsInForce() : node.symbolicOutputPortsInForce();
    const auto groups = isInput ? node.inputPortGroups() : node.outputPortGroups();
    require(groups.size() == keys->count() || leniency_.foreignGroupKeys, "{} groups for {} keys",
            groups.size(), keys->count());
    std::uint32_t shown = 0;
    for (const auto& group : groups) {
      require(group->node() == &node, "group {} has another node", group->groupKey().view());
      require(keys->contains(group->groupKey().object().get()), "group {} has no place",
              group->groupKey().view());
      if (const auto* own = as<HXPatchPortGroup>(group.get())) checkOwnGroup(node, *own);
      const auto* symbolic = as<HXSymbolicPortGroup>(group.get());
      if (!symbolic || !symbolic->symbolicPorts()) continue;
      for (const auto& member : *symbolic->symbolicPorts()) {
        require(published.contains(member.get()), "group {} shows a port that is not published",
                group->groupKey().view());
        require(static_cast<const HXSymbolicPort&>(*member).groupKey() == group->groupKey(),
                "group {} shows a port of another", group->groupKey().view());
        ++shown;
      }
    }
    // Several ports that came together under a new key are gathered by the next synchronisation.
    require(shown == published.count() || (shown > 0 && shown < published.count()),
            "{} published ports, {} of them in groups", published.count(), shown);
    if (const Ref<HXRNode> patch = node.patch()) {
      const auto& layout = patch->portLayout();
      for (const auto& entry : (isInput ? layout.inputs() : layout.outputs()).portGroupsInForce()) {
        require(node.portGroupForKey(entry.key, orientation), "group {} is missing",
                entry.key.view());
      }
    }
  }

  void checkOwnGroup(const HXNode& node, const HXPatchPortGroup& group) {
    if (!node.patch()) return;
    const auto* collection = node.patch()->portLayout().collection(group.orientation());
    require(collection->portGroupForKey(group.groupKey()) == group.patchPortGroup(),
            "group {} is not the definition's", group.groupKey().view());
  }

  void checkGroup(const HXGroup& group, const HXNode& owner) {
    require(group.node() == &owner, "its group has another node");
    require(owner.patchClass().allowsSubnodes() || owner.hx_forceAllowsSubnodes() ||
                !owner.unknownPatchClass().isNil(),
            "it has a group that its patch does not allow");
    const auto* views = as<HXSubviewGroup>(&group);
    for (const auto& entry : group.subnodesInForce()) {
      const HXNode& node = *entry.value;
      require(node.uniqueKey() == entry.key, "{} stands under {}", node.uniqueKey().view(),
              entry.key.view());
      require(node.parentGroup() == &group, "{} is in a group that is not its parent",
              entry.key.view());
    }
    // Whether the views are all there is not asked: a patch that makes a node a view does not tell.
    if (views) {
      for (const auto& member : views->subviewNodesInForce()) {
        const auto& node = static_cast<const HXNode&>(*member);
        require(group.subnodeForKey(node.uniqueKey()) == &node, "view {} is not in the group",
                node.uniqueKey().view());
      }
    }
    for (const auto* ports :
         {&group.symbolicInputPortsInForce(), &group.symbolicOutputPortsInForce()}) {
      for (const auto& member : *ports) {
        const auto& port = static_cast<const HXSymbolicPort&>(*member);
        require(port.node() == &owner, "published port {} has another node", port.name().view());
        require(
            !port.port() || port.port()->symbolicPort() == &port || leniency_.doublePublications,
            "published port {} is not known to the port that it publishes", port.name().view());
      }
    }
  }

  const HXDocument& document_;
  const Leniency& leniency_;
  const HXNode* node_ = nullptr;
  std::vector<std::string> faults_;
};

}  // namespace

std::vector<std::string> faultsOf(const HXDocument& document, const Leniency& leniency) {
  return Inspection(document, leniency).run();
}

}  // namespace tarnkit::test
