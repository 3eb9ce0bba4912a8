#include "tarnkit/editing/HXGrouping.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <unordered_map>
#include <unordered_set>

#include "tarnkit/editing/HXHistory.h"
#include "tarnkit/editing/NodeMove.h"
#include "tarnkit/editing/WireRecord.h"
#include "tarnkit/model/HXSubviewGroup.h"

namespace tarnkit {

namespace {

using detail::NodeMove;
using detail::WireRecord;

Status refusal(std::string sentence) {
  return Status::failure(StatusCode::refused, std::move(sentence));
}

// Where nodes stand that are to be dealt with together.
struct Place {
  Ref<HXDocument> document;
  Ref<HXNode> owner;  // of their group
};

Result<Place> placeOf(const std::vector<Ref<HXNode>>& nodes) {
  if (nodes.empty()) return refusal("no node is given");
  const HXGroup* group = nullptr;
  for (const auto& node : nodes) {
    if (!node) return refusal("one of the nodes is null");
    if (node->asDocument()) return refusal("a document stands in no group");
    const auto* parent = node->parentGroup();
    if (!parent || !parent->node()) {
      return refusal(fmt::format("the node {} is in no group", node->uniqueKey().view()));
    }
    if (group && parent != group) {
      return refusal(fmt::format("the nodes {} and {} are in different groups",
                                 nodes.front()->uniqueKey().view(), node->uniqueKey().view()));
    }
    group = parent;
  }
  const Ref<HXDocument> document(group->node()->document());
  if (!document) return refusal("the nodes are in no document");
  return Place{document, Ref<HXNode>(group->node())};
}

// Of the box around the positions.
HXPoint middleOf(const std::vector<Ref<HXNode>>& nodes) {
  if (nodes.empty()) return {};
  HXPoint least = nodes.front()->position();
  HXPoint most = least;
  for (const auto& node : nodes) {
    const auto position = node->position();
    least = {std::min(least.x, position.x), std::min(least.y, position.y)};
    most = {std::max(most.x, position.x), std::max(most.y, position.y)};
  }
  const auto between = [](float a, float b) { return a / 2 + b / 2; };
  return {between(least.x, most.x), between(least.y, most.y)};
}

void shift(const std::vector<Ref<HXNode>>& nodes, HXPoint from, HXPoint to) {
  const HXPoint by{to.x - from.x, to.y - from.y};
  if (from == to || !std::isfinite(by.x) || !std::isfinite(by.y)) return;
  for (const auto& node : nodes) {
    const auto position = node->position();
    node->setPosition({position.x + by.x, position.y + by.y});
  }
}

// With hidden ports, whose publications and connections the group leaves alone.
void removeNode(HXDocument& document, HXNode& node) {
  const auto own = node.portsByUniqueKey();
  std::vector<Ref<HXPort>> ports;
  for (const auto& entry : own) ports.emplace_back(entry.value.get());
  for (const auto& port : node.symbolicInputPorts()) ports.emplace_back(port.get());
  for (const auto& port : node.symbolicOutputPorts()) ports.emplace_back(port.get());
  for (const auto& port : ports) {
    const auto* published = port->symbolicPort();
    if (published && published->isHeld()) {
      Ref<HXGroup>(published->node()->subnodeGroup())->removeSymbolicPortForPort(port.get());
    }
    document.breakAllConnectionsToPort(*port);
  }
  if (const Ref<HXGroup> group{node.parentGroup()}) group->removeNode(&node);
}

// How many views stand before it in its group.
std::uint64_t viewsBefore(const HXNode& node) {
  const auto* group = as<HXSubviewGroup>(node.parentGroup());
  const auto at = group ? group->indexOfSubviewNode(&node) : kNotFoundIndex;
  return at == kNotFoundIndex ? (group ? group->subviewNodesInForce().count() : 0)
                              : static_cast<std::uint64_t>(at);
}

/// What came into removed nodes, and what went out of them.
class Bypass {
 public:
  Bypass(HXDocument& document, const std::vector<Ref<HXNode>>& nodes, const HXNode& owner)
      : document_(document), owner_(owner) {
    for (const auto& node : nodes) {
      if (indexes_.emplace(node.get(), removed_.size()).second) {
        removed_.emplace_back(node, document);
      }
    }
    for (auto& removed : removed_) removed.wires.addBelow(*removed.node);
  }

  std::vector<Ref<HXConnection>> run() {
    for (std::size_t at = 0; at < removed_.size(); ++at) {
      for (const auto& wire : removed_[at].wires.wires()) {
        if (indexOf(wire.outputNode.get()) != at || indexOf(wire.inputNode.get()) != kOutside) {
          continue;
        }
        if (const auto* feeding = feederOf(wire, at)) joints_.emplace_back(feeding, &wire);
      }
    }
    for (const auto& removed : removed_) {
      for (const auto& wire : removed.wires.wires()) {
        if (wire.connection->isHeld()) document_.breakConnection(*wire.connection);
      }
      removeNode(document_, *removed.node);
    }
    std::vector<Ref<HXConnection>> made;
    for (const auto& [from, to] : joints_) {
      if (!from->output->acceptsNewConnections() || !to->input->acceptsNewConnections()) continue;
      const auto connection = removed_.front().wires.joinAcross(*from, *to);
      if (connection) made.push_back(connection);
    }
    return made;
  }

 private:
  static constexpr std::size_t kOutside = ~std::size_t{0};
  struct Removed {
    Removed(const Ref<HXNode>& of, HXDocument& document) : node(of), wires(document) {}
    Ref<HXNode> node;
    WireRecord wires;
  };

  // Of the removed node that is the node or encloses it.
  std::size_t indexOf(const HXNode* node) const {
    for (; node; node = node->enclosingNode()) {
      if (node->enclosingNode() != &owner_) continue;
      const auto found = indexes_.find(node);
      return found == indexes_.end() ? kOutside : found->second;
    }
    return kOutside;
  }

  static bool fit(const HXPort& output, const HXPort& input) {
    return output.canConnectToPort(&input) || input.canConnectToPort(&output);
  }

  // The nearest ones come first, and of one node those of its first ports.
  const WireRecord::Wire* feederOf(const WireRecord::Wire& to, std::size_t start) const {
    std::vector<std::size_t> pending{start};
    std::unordered_set<std::size_t> seen{start};
    for (std::size_t next = 0; next < pending.size(); ++next) {
      for (const auto& wire : removed_[pending[next]].wires.wires()) {
        if (indexOf(wire.inputNode.get()) != pending[next]) continue;
        const auto before = indexOf(wire.outputNode.get());
        if (before != kOutside) {
          if (seen.insert(before).second) pending.push_back(before);
        } else if (wire.outputNode != to.inputNode && fit(*wire.output, *to.input)) {
          return &wire;
        }
      }
    }
    return nullptr;
  }

  HXDocument& document_;
  const HXNode& owner_;
  std::vector<Removed> removed_;
  std::unordered_map<const HXNode*, std::size_t> indexes_;
  std::vector<std::pair<const WireRecord::Wire*, const WireRecord::Wire*>> joints_;
};

}  // namespace

Result<Ref<HXNode>> HXGrouping::group(const std::vector<Ref<HXNode>>& nodes, const String& name) {
  const auto place = placeOf(nodes);
  if (!place) return refusal(place.status().sentence());
  const HXHistory::Step step(*place->document, "Group");
  const auto node = make<HXNode>();
  node->setForceAllowsSubnodes(true);
  if (!name.isNil()) node->setName(name);
  node->setPosition(middleOf(nodes));
  node->subnodeGroup()->setCanvasCenter(node->position());
  place->owner->subnodeGroup()->addNode(*node);
  if (node->enclosingNode() != place->owner.get() || !node->subnodeGroup()) {
    return refusal("an observer took the new group away");
  }
  NodeMove move(*place->document, nodes, *place->owner, *node);
  const auto viewIndex = move.viewsBefore();
  move.run();
  if (const Ref<HXSubviewGroup> views{as<HXSubviewGroup>(node->parentGroup())}) {
    const auto at = views->indexOfSubviewNode(node.get());
    if (at != kNotFoundIndex && static_cast<std::uint64_t>(at) != viewIndex) {
      views->moveSubviewNode(*node, viewIndex);
    }
  }
  return node;
}

Result<HXGrouping::Ungrouped> HXGrouping::ungroup(HXNode& node) {
  const Ref<HXNode> kept(&node);
  const auto place = placeOf({kept});
  if (!place) return refusal(place.status().sentence());
  if (!node.subnodeGroup()) {
    return refusal(fmt::format("the node {} holds no nodes", node.uniqueKey().view()));
  }
  const HXHistory::Step step(*place->document, "Ungroup");
  const auto position = node.position();
  NodeMove move(*place->document, node.subnodeGroup()->subnodes(), node, *place->owner);
  move.forgivesPublicationsOf(node);
  const auto viewIndex = viewsBefore(node);
  move.run();
  for (const auto& entry : node.portsByUniqueKey()) {
    move.losePort(*entry.value, "its port goes with the node that was ungrouped");
  }
  if (node.enclosingNode() == place->owner.get()) removeNode(*place->document, node);
  move.placeViews(viewIndex);
  shift(move.nodes(), middleOf(move.nodes()), position);
  return Ungrouped{move.nodes(), std::move(move.losses())};
}

Result<HXLosses> HXGrouping::move(const std::vector<Ref<HXNode>>& nodes, HXGroup& toGroup) {
  const auto place = placeOf(nodes);
  if (!place) return refusal(place.status().sentence());
  const Ref<HXNode> target(toGroup.node());
  if (!target || target->subnodeGroup().get() != &toGroup ||
      target->document() != place->document.get()) {
    return refusal("the group is not in the document of the nodes");
  }
  std::unordered_set<const HXNode*> moved;
  for (const auto& node : nodes) moved.insert(node.get());
  for (const HXNode* at = target.get(); at; at = at->enclosingNode()) {
    if (!moved.contains(at)) continue;
    return refusal(
        fmt::format("the node {} cannot go into a group inside itself", at->uniqueKey().view()));
  }
  if (target == place->owner) return HXLosses{};
  const HXHistory::Step step(*place->document, "Move to Group");
  NodeMove move(*place->document, nodes, *place->owner, *target);
  move.run();
  return std::move(move.losses());
}

Result<std::vector<Ref<HXConnection>>> HXGrouping::removeKeepingWires(
    const std::vector<Ref<HXNode>>& nodes) {
  const auto place = placeOf(nodes);
  if (!place) return refusal(place.status().sentence());
  const HXHistory::Step step(*place->document, "Remove");
  return Bypass(*place->document, nodes, *place->owner).run();
}

}  // namespace tarnkit
