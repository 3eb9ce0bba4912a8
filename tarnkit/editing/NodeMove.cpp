#include "tarnkit/editing/NodeMove.h"

#include <algorithm>
#include <unordered_set>

#include "tarnkit/model/HXReplicatorNode.h"
#include "tarnkit/model/HXSubviewGroup.h"

namespace tarnkit::detail {

namespace {

HXSubviewGroup* viewGroupOf(const HXNode& node) {
  return as<HXSubviewGroup>(node.subnodeGroup().get());
}

// Its own ones, hidden ones too, and those that it publishes.
std::vector<Ref<HXPort>> allPortsOf(const HXNode& node) {
  std::vector<Ref<HXPort>> ports;
  for (const auto& entry : node.portsInForce()) ports.emplace_back(entry.value.get());
  for (const auto orientation : kBothSides) {
    for (const auto& member : node.symbolicPortsInForce(orientation)) {
      ports.emplace_back(static_cast<HXPort*>(member.get()));
    }
  }
  return ports;
}

// The views of the node's group that stand before it.
std::vector<Ref<HXNode>> viewsStandingBefore(const HXNode& node, bool& isView) {
  std::vector<Ref<HXNode>> views;
  isView = false;
  const auto* group = as<HXSubviewGroup>(node.parentGroup());
  if (!group || !group->subviewNodesInForce().contains(&node)) return views;
  isView = true;
  for (const auto& member : group->subviewNodesInForce()) {
    if (member.get() == &node) break;
    views.emplace_back(static_cast<HXNode*>(member.get()));
  }
  return views;
}

void moveView(HXNode& node, std::uint64_t index) {
  const Ref<HXSubviewGroup> group(as<HXSubviewGroup>(node.parentGroup()));
  if (!group) return;
  const auto at = group->indexOfSubviewNode(&node);
  if (at == kNotFoundIndex || static_cast<std::uint64_t>(at) == index) return;
  group->moveSubviewNode(node, index);
}

void announceReference(const Symbol& name, HXPort& port) {
  announce(name, port, port, {{HXPortInfo, &port}});
}

}  // namespace

NodeMove::NodeMove(HXDocument& document, const std::vector<Ref<HXNode>>& nodes, HXNode& from,
                   HXNode& to)
    : document_(document), from_(&from), to_(&to), wires_(document) {
  orderNodes(nodes);
  std::unordered_set<const HXNode*> above;
  for (HXNode* at = &to; at; at = at->enclosingNode()) above.insert(at);
  HXNode* at = &from;
  for (; at && !above.contains(at); at = at->enclosingNode()) left_.emplace_back(at);
  common_ = Ref<HXNode>(at);
  for (at = &to; at && at != common_.get(); at = at->enclosingNode()) entered_.emplace_back(at);
}

void NodeMove::orderNodes(const std::vector<Ref<HXNode>>& nodes) {
  std::unordered_set<const HXNode*> chosen;
  for (const auto& node : nodes) chosen.insert(node.get());
  for (const auto& entry : from_->subnodeGroup()->subnodesInForce()) {
    if (chosen.contains(entry.value.get())) nodes_.push_back(entry.value);
  }
  const auto* views = viewGroupOf(*from_);
  if (!views) return;
  for (const auto& member : views->subviewNodesInForce()) {
    if (chosen.contains(static_cast<const HXNode*>(member.get()))) {
      views_.emplace_back(static_cast<HXNode*>(member.get()));
    } else if (views_.empty()) {
      ++viewsBefore_;
    }
  }
}

void NodeMove::noteEnclosers(HXNode& innermost) {
  for (HXNode* at = &innermost; at; at = at->enclosingNode()) {
    if (!at->subnodeGroup()) continue;
    Encloser encloser{Ref<HXNode>(at),
                      {},
                      false,
                      at->subnodeGroup()->isOpaque(),
                      at->subnodeGroup()->canvasCenter()};
    encloser.viewsBefore = viewsStandingBefore(*at, encloser.isView);
    enclosers_.push_back(std::move(encloser));
  }
}

void NodeMove::run() {
  noteEnclosers(*from_);
  for (const auto& node : entered_) {
    if (node == to_) noteEnclosers(*node);
  }
  for (const auto& node : nodes_) wires_.addBelow(*node);
  notePublications();
  withdrawLost();
  takeOver();
  restoreEnclosers();
  publishStaying();
  wires_.restore(losses_);
}

NodeMove::ByPort NodeMove::publicationsOf(const HXNode& node) {
  ByPort table;
  for (const auto orientation : kBothSides) {
    for (const auto& member : node.symbolicPortsInForce(orientation)) {
      auto& symbolicPort = static_cast<HXSymbolicPort&>(*member);
      table[symbolicPort.port()].emplace_back(&symbolicPort);
    }
  }
  return table;
}

// What is published of the nodes by those that they leave is lost; what the common node publishes
// stays, and comes to stand for a port of the nodes or of the outermost one that they enter.
void NodeMove::notePublications() {
  std::vector<ByPort> levels;
  for (const auto& node : left_) levels.push_back(publicationsOf(*node));
  const ByPort outside = publicationsOf(*common_);
  const bool entersReplicator =
      std::any_of(entered_.begin(), entered_.end(), [](const Ref<HXNode>& node) {
        return as<HXReplicatorNode>(static_cast<const Object*>(node.get())) != nullptr;
      });
  std::vector<Publications> lost(left_.size() + 1);
  const auto collect = [](const ByPort& level, const std::vector<Ref<HXPort>>& ports) {
    Publications found;
    for (const auto& port : ports) {
      const auto at = level.find(port.get());
      if (at != level.end()) found.insert(found.end(), at->second.begin(), at->second.end());
    }
    return found;
  };
  for (const auto& node : nodes_) {
    for (const auto& port : allPortsOf(*node)) {
      // A hidden port keeps its publication where its node leaves a group by other ways.
      const Ref<HXSymbolicPort> elsewhere(port->symbolicPort());
      if (elsewhere && elsewhere->isHeld() && elsewhere->node() != from_.get()) {
        noteLost(*elsewhere, "the node on which it stood did not enclose the port");
        lost.back().push_back(elsewhere);
      }
      std::vector<Ref<HXPort>> front{port};
      for (std::size_t level = 0; level < levels.size() && !front.empty(); ++level) {
        const auto found = collect(levels[level], front);
        front.assign(found.begin(), found.end());
        for (const auto& symbolicPort : found) {
          if (left_[level].get() != forgiven_) {
            noteLost(*symbolicPort,
                     "the node on which it stood does not enclose the port any more");
          } else if (auto* collecting = forgiven_->collectingPort(*symbolicPort->port())) {
            losePort(*collecting, "the array output of the copies goes with the replicator");
          }
          lost[level].push_back(symbolicPort);
        }
      }
      auto found = collect(outside, front);
      if (found.empty()) continue;
      if (entersReplicator && port->orientation() == HXOrientationOutput) {
        for (const auto& symbolicPort : found) {
          noteLost(*symbolicPort, "a replicator puts out an array of the output only");
          losePort(*symbolicPort, "the port that was published stands inside a replicator");
          lost.back().push_back(symbolicPort);
        }
      } else {
        staying_.push_back({port, std::move(found), nullptr});
      }
    }
  }
  for (const auto& level : lost) withdrawn_.insert(withdrawn_.end(), level.begin(), level.end());
}

void NodeMove::noteLost(HXSymbolicPort& symbolicPort, const std::string& reason) {
  losses_.publications.push_back({Ref<HXSymbolicPort>(&symbolicPort),
                                  Ref<HXNode>(symbolicPort.node()), symbolicPort.uniqueKey(),
                                  reason});
  const auto* node = symbolicPort.node();
  auto* collecting =
      node && symbolicPort.port() ? node->collectingPort(*symbolicPort.port()) : nullptr;
  if (collecting) losePort(*collecting, "the array output that collected the port is gone");
}

// Each publication may have been collected in its turn.
void NodeMove::losePort(HXPort& port, const std::string& reason) {
  std::vector<Ref<HXPort>> pending{Ref<HXPort>(&port)};
  while (!pending.empty()) {
    const Ref<HXPort> gone = pending.back();
    pending.pop_back();
    wires_.lose(*gone, reason, losses_);
    auto* symbolicPort = gone->symbolicPort();
    if (!symbolicPort || !symbolicPort->isHeld()) continue;
    losses_.publications.push_back({Ref<HXSymbolicPort>(symbolicPort),
                                    Ref<HXNode>(symbolicPort->node()), symbolicPort->uniqueKey(),
                                    reason});
    pending.emplace_back(symbolicPort);
    if (auto* outer = symbolicPort->node()->collectingPort(*gone)) pending.emplace_back(outer);
  }
}

// First the publications that stay let go of the ports, so that they are not withdrawn with them.
// Meanwhile each stands for the same port by way of one that no node has.
void NodeMove::withdrawLost() {
  for (auto& staying : staying_) {
    const HXPort& port = *staying.port;
    staying.between = make<HXSymbolicPort>(staying.port.get(), nullptr, port.orientation(),
                                           port.connectionRelationship());
    for (const auto& symbolicPort : staying.publications) {
      const Ref<HXPort> inner(symbolicPort->port());
      if (!inner) continue;
      if (inner->symbolicPort() == symbolicPort.get()) {
        announceReference(HXPortDidRemoveSymbolicReferenceNotification, *inner);
      }
      symbolicPort->setPort(staying.between.get());
    }
  }
  for (auto at = withdrawn_.rbegin(); at != withdrawn_.rend(); ++at) {
    const Ref<HXPort> port((*at)->port());
    const Ref<HXNode> node((*at)->node());
    if (!port || !node || !node->subnodeGroup() || !(*at)->isHeld()) continue;
    if (port->symbolicPort() != at->get()) port->setSymbolicPort(at->get());
    Ref<HXGroup>(node->subnodeGroup())->removeSymbolicPortForPort(port.get());
  }
}

void NodeMove::takeOver() {
  // Otherwise the node that they enter would be a view only when the first one has come, and those
  // that enclose it could cease to be views in between.
  const bool converts = !views_.empty() && !viewGroupOf(*to_);
  if (converts) to_->swapSubnodeGroupToViewGroup();
  for (const auto& node : nodes_) {
    if (to_->subnodeGroup()) Ref<HXGroup>(to_->subnodeGroup())->addNode(*node);
  }
  const auto* group = viewGroupOf(*to_);
  if (!group) return;
  if (converts && group->subviewNodesInForce().isEmpty()) to_->swapSubnodeGroupToGroup();
  if (const auto* now = viewGroupOf(*to_)) {
    std::uint64_t count = now->subviewNodesInForce().count();
    for (const auto& view : views_) {
      if (now->subviewNodesInForce().contains(view.get())) --count;
    }
    placeViews(count);
  }
}

void NodeMove::placeViews(std::uint64_t index) {
  for (const auto& view : views_) {
    const auto* group = as<HXSubviewGroup>(view->parentGroup());
    if (group && group->subviewNodesInForce().contains(view.get())) moveView(*view, index++);
  }
}

// A group that lost its last view and found another is made anew, and so are those around it.
void NodeMove::restoreEnclosers() {
  for (const auto& encloser : enclosers_) {
    const auto& node = encloser.node;
    if (const Ref<HXGroup> group = node->subnodeGroup()) {
      group->setOpaque(encloser.opaque);
      group->setCanvasCenter(encloser.canvasCenter);
    }
    const auto* parent = as<HXSubviewGroup>(node->parentGroup());
    if (!encloser.isView || !parent) continue;
    std::uint64_t index = 0;
    for (const auto& view : encloser.viewsBefore) {
      if (parent->subviewNodesInForce().contains(view.get())) ++index;
    }
    moveView(*node, index);
  }
}

void NodeMove::publishStaying() {
  for (const auto& staying : staying_) {
    const Ref<HXPort> inner = WireRecord::publishUpTo(*staying.port, *common_);
    if (!inner) continue;
    for (const auto& symbolicPort : staying.publications) {
      if (!symbolicPort->isHeld()) continue;
      symbolicPort->setPort(inner.get());
      if (inner->symbolicPort() == symbolicPort.get()) {
        announceReference(HXPortDidAddSymbolicReferenceNotification, *inner);
      }
    }
  }
}

}  // namespace tarnkit::detail
