#include "tarnkit/render/GroupScene.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <unordered_set>

#include "tarnkit/model/HXNode.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tarnkit/platform/collections/MembersOf.h"
#include "tarnkit/render/ConnectionIndex.h"
#include "tarnkit/render/SceneDifference.h"
#include "tarnkit/render/WirePath.h"

namespace tarnkit::detail {

namespace {

constexpr double kFarthest = 100'000;
// Boxes may touch, and a shadow's width more.
constexpr double kTouching = 4;
constexpr double kCell = 512;
constexpr double kEdgeDistance = 56;
constexpr double kEdgeLabelRoom = 150;

bool isNear(const NodeBox& box) {
  return std::fabs(box.x) <= kFarthest && std::fabs(box.y) <= kFarthest;
}

/// Boxes that are compared with each other where they may touch: by the cells that they stand in.
/// As long as none overlap, only so many fit into one.
class BoxGrid {
 public:
  /// A box that the one overlaps; null: none.
  const NodeBox* overlapped(const NodeBox& box) const {
    const NodeBox* found = nullptr;
    eachCell(box, [&](std::int64_t cell) {
      const auto at = cells_.find(cell);
      if (found || at == cells_.end()) return;
      for (const NodeBox* other : at->second) {
        if (box.x + kTouching < other->x + other->width &&
            other->x + kTouching < box.x + box.width &&
            box.y + kTouching < other->y + other->height &&
            other->y + kTouching < box.y + box.height) {
          found = other;
          return;
        }
      }
    });
    return found;
  }
  void add(const NodeBox& box) {
    eachCell(box, [&](std::int64_t cell) { cells_[cell].push_back(&box); });
  }

 private:
  template <class Visit>
  static void eachCell(const NodeBox& box, Visit visit) {
    const auto cellAt = [](double at) { return static_cast<std::int64_t>(std::floor(at / kCell)); };
    const std::int64_t lastX = cellAt(box.x + box.width);
    const std::int64_t lastY = cellAt(box.y + box.height);
    for (std::int64_t x = cellAt(box.x); x <= lastX; ++x) {
      for (std::int64_t y = cellAt(box.y); y <= lastY; ++y) visit(x * 1'000'003 + y);
    }
  }
  std::unordered_map<std::int64_t, std::vector<const NodeBox*>> cells_;
};

}  // namespace

GroupScene::GroupScene(const HXGroup& drawn, const ConnectionIndex& connections,
                       const SceneDifference* difference)
    : group(drawn), connections_(connections.connectionsIn(drawn)), difference_(difference) {
  measureNodes();
  collectWires();
  place();
  endWires();
  placeEdgePorts();
  measureBounds();
  noteWhatIsMissing();
}

void GroupScene::measureNodes() {
  std::unordered_set<const HXPort*> ends;
  ends.reserve(connections_.size() * 2);
  for (const HXConnection* connection : connections_) {
    ends.insert(connection->displayInputPort());
    ends.insert(connection->displayOutputPort());
  }
  const auto isConnected = [&](const HXPort& port) {
    return ends.count(&port) > 0 || !port.connections().isEmpty();
  };
  const auto& nodes = group.subnodesInForce();
  const auto gone = difference_ ? difference_->nodesGoneFrom(group) : std::vector<const HXNode*>();
  boxes.reserve(nodes.size() + gone.size());
  boxOf_.reserve(nodes.size() + gone.size());
  anchors_.reserve((nodes.size() + gone.size()) * 8);
  for (const auto& entry : nodes) addBox(*entry.value, isConnected);
  presentCount_ = boxes.size();
  for (const auto* node : gone) addBox(*node, isConnected);
}

void GroupScene::addBox(const HXNode& node, NodeBox::IsConnected isConnected) {
  const auto index = static_cast<std::uint32_t>(boxes.size());
  NodeBox& box = boxes.emplace_back(node, isConnected, [&](const HXPort& port, double y) {
    return anchors_.emplace(&port, Anchor{index, y}).second;
  });
  boxOf_.emplace(&node, static_cast<std::int32_t>(index));
  if (!difference_) return;
  box.mark = difference_->markOf(node);
  box.holdsChanges = difference_->holdsChanges(node);
  for (auto* lines : {&box.inputs, &box.outputs}) {
    for (PortLine& line : *lines) {
      line.hasChanged = line.port && difference_->hasChanged(*line.port);
    }
  }
}

String GroupScene::keyOf(const HXNode& node) const {
  return difference_ ? difference_->keyOf(node) : node.uniqueKey();
}

String GroupScene::keyOf(const HXGroup& of) const {
  return difference_ ? difference_->keyOf(of) : of.uniqueKey();
}

// A port that is not drawn is met at the title bar, of its node or of the node that encloses it.
GroupScene::End GroupScene::endOf(const HXPort* port) {
  if (!port) return {};
  if (const auto anchor = anchors_.find(port); anchor != anchors_.end()) {
    return {static_cast<std::int32_t>(anchor->second.box), anchor->second.y};
  }
  const std::int32_t box = boxAround(port->node());
  return box < 0 ? End{} : End{box, NodeBox::kTitleHeight / 2};
}

GroupScene::End GroupScene::endOfEarlier(const HXPort* port) {
  if (!port) return {};
  const End end = endOf(difference_->present(port));
  if (end.box >= 0) return end;
  const std::int32_t box = boxAround(difference_->present(port->node()));
  return box < 0 ? End{} : End{box, NodeBox::kTitleHeight / 2};
}

// Many connections may lead equally deep inward: no node is met twice on the way out.
std::int32_t GroupScene::boxAround(const HXNode* node) {
  std::vector<const HXNode*> passed;
  std::int32_t box = -1;
  for (; node; node = node->enclosingNode()) {
    if (const auto known = boxOf_.find(node); known != boxOf_.end()) {
      box = known->second;
      break;
    }
    passed.push_back(node);
  }
  for (const HXNode* inner : passed) boxOf_.emplace(inner, box);
  return box;
}

void GroupScene::collectWires() {
  wires.reserve(connections_.size());
  for (const HXConnection* connection : connections_) {
    const HXPort* const output = outputEndOf(*connection);
    const HXPort* const input = inputEndOf(*connection);
    addWire(*connection, connection->displayOutputPort(), connection->displayInputPort(),
            endOf(output), endOf(input));
  }
  if (!difference_) return;
  for (const HXConnection* connection : difference_->connectionsGoneFrom(group)) {
    const HXPort* const output = outputEndOf(*connection);
    const HXPort* const input = inputEndOf(*connection);
    addWire(*connection, difference_->present(output), difference_->present(input),
            endOfEarlier(output), endOfEarlier(input));
  }
}

void GroupScene::addWire(const HXConnection& connection, const HXPort* output, const HXPort* input,
                         End from, End to) {
  if (from.box < 0 && to.box < 0) return;
  Wire& wire = wires.emplace_back();
  wire.connection = &connection;
  wire.output = output;
  wire.input = input;
  if (difference_) wire.mark = difference_->markOf(connection);
  wire.fromBox = from.box;
  wire.toBox = to.box;
  wire.from.y = from.y;  // from the boxes' upper edges, until they are placed
  wire.to.y = to.y;
  const HXPort* const colored =
      connection.outputPort() ? connection.outputPort() : outputEndOf(connection);
  wire.color = colored ? colored->defaultColor() : OIColorBlackRGBA;
}

bool GroupScene::boxesOverlap() const {
  BoxGrid grid;
  for (std::size_t i = 0; i < presentCount_; ++i) {
    if (grid.overlapped(boxes[i])) return true;
    grid.add(boxes[i]);
  }
  return false;
}

// The others stay where people know them.
void GroupScene::placeWhatIsGone() {
  constexpr double kGapBelow = 12;
  constexpr int kMostTries = 16;
  BoxGrid grid;
  for (std::size_t i = 0; i < boxes.size(); ++i) {
    NodeBox& box = boxes[i];
    const NodeBox* other = nullptr;
    if (i >= presentCount_) {
      if (!isNear(box)) box.x = box.y = 0;
      for (int tries = 0; tries < kMostTries && (other = grid.overlapped(box)); ++tries) {
        box.y = other->y + other->height + kGapBelow;
      }
    }
    if (!other) grid.add(box);
  }
}

// Null when the nodes can be drawn where they stand.
const char* GroupScene::reasonToLayOut() const {
  bool onOneSpot = presentCount_ > 1;
  for (std::size_t i = 0; i < presentCount_; ++i) {
    const NodeBox& box = boxes[i];
    if (!isNear(box)) return "a position is no number or too far out";
    onOneSpot &= box.x == boxes.front().x && box.y == boxes.front().y;
  }
  if (onOneSpot) return "all nodes stand on one spot";
  return boxesOverlap() ? "nodes overlap at their own positions" : nullptr;
}

void GroupScene::place() {
  for (NodeBox& box : boxes) {
    box.x = static_cast<double>(box.node->position().x);
    box.y = static_cast<double>(box.node->position().y);
  }
  const char* const reason = reasonToLayOut();
  if (!reason) return placeWhatIsGone();
  laidOut = true;
  notes.push_back(std::string("Laid out by layers: ") + reason + ".");
  layOut();
}

void GroupScene::layOut() {
  std::vector<LayoutItem> items;
  items.reserve(boxes.size());
  for (const NodeBox& box : boxes) items.push_back({box.width, box.height, 0, 0});
  std::vector<LayoutEdge> edges;
  std::vector<Wire*> wireOfEdge;
  for (Wire& wire : wires) {
    if (wire.fromBox < 0 || wire.toBox < 0) continue;
    edges.push_back({static_cast<std::uint32_t>(wire.fromBox),
                     static_cast<std::uint32_t>(wire.toBox),
                     wire.from.y,
                     wire.to.y,
                     {}});
    wireOfEdge.push_back(&wire);
  }
  layOutByLayers(items, edges);
  for (std::size_t i = 0; i < boxes.size(); ++i) {
    boxes[i].x = std::round(items[i].x);
    boxes[i].y = std::round(items[i].y);
  }
  for (std::size_t e = 0; e < edges.size(); ++e) wireOfEdge[e]->via = std::move(edges[e].via);
}

void GroupScene::endWires() {
  for (Wire& wire : wires) {
    assert(wire.fromBox >= 0 || wire.toBox >= 0);
    if (wire.fromBox >= 0) {
      const NodeBox& box = boxes[static_cast<std::size_t>(wire.fromBox)];
      wire.from = {box.x + box.width, box.y + wire.from.y};
    }
    if (wire.toBox >= 0) {
      const NodeBox& box = boxes[static_cast<std::size_t>(wire.toBox)];
      wire.to = {box.x, box.y + wire.to.y};
    }
    if (wire.fromBox < 0) wire.from = {wire.to.x - kStub, wire.to.y};
    if (wire.toBox < 0) wire.to = {wire.from.x + kStub, wire.from.y};
    if (wire.fromBox == wire.toBox) {
      // Around below the box.
      const NodeBox& box = boxes[static_cast<std::size_t>(wire.fromBox)];
      const double below = box.y + box.height + 14;
      wire.via = {{box.x + box.width, below}, {box.x, below}};
    }
  }
}

void GroupScene::addEdgePorts(std::int32_t orientation) {
  const bool isInput = orientation == HXOrientationInput;
  for (const auto& port : membersOf<HXSymbolicPort>(isInput ? group.symbolicInputPortsInForce()
                                                            : group.symbolicOutputPortsInForce())) {
    addEdgePort(port, isInput, endOf(port.port()));
  }
  if (!difference_) return;
  for (const auto* port : difference_->publicationsGoneFrom(group, orientation)) {
    addEdgePort(*port, isInput, endOfEarlier(port->port()));
  }
}

void GroupScene::addEdgePort(const HXSymbolicPort& port, bool isInput, End end) {
  EdgePort& edgePort = edgePorts.emplace_back();
  edgePort.port = &port;
  edgePort.isInput = isInput;
  if (difference_) edgePort.mark = difference_->markOf(port);
  edgePort.label = Label(titleOfPort(port), NodeBox::kNameFont, kEdgeLabelRoom);
  edgePort.color = port.defaultColor();
  edgePort.hasInner = end.box >= 0;
  if (end.box < 0) return;
  const NodeBox& box = boxes[static_cast<std::size_t>(end.box)];
  edgePort.inner = {isInput ? box.x : box.x + box.width, box.y + end.y};
  edgePort.y = edgePort.inner.y;
}

// From above to below in the order of the inner ports, each as near to its own as the others let
// it.
void GroupScene::spreadEdgePorts(std::size_t first, std::size_t last) {
  const auto begin = edgePorts.begin() + static_cast<std::ptrdiff_t>(first);
  const auto end = edgePorts.begin() + static_cast<std::ptrdiff_t>(last);
  std::stable_sort(begin, end, [](const EdgePort& a, const EdgePort& b) { return a.y < b.y; });
  constexpr double kStep = EdgePort::kHeight + 6;
  // Blocks of ports that push each other, each around the mean of where its ports want to be.
  struct Block {
    double sum = 0;
    std::size_t count = 0;
    double mean() const noexcept { return sum / static_cast<double>(count); }
  };
  std::vector<Block> blocks;
  for (auto at = begin; at != end; ++at) {
    Block block{at->y - kStep * static_cast<double>(at - begin), 1};
    while (!blocks.empty() && blocks.back().mean() >= block.mean()) {
      block.sum += blocks.back().sum;
      block.count += blocks.back().count;
      blocks.pop_back();
    }
    blocks.push_back(block);
  }
  auto at = begin;
  assert(std::is_sorted(blocks.begin(), blocks.end(),
                        [](const Block& a, const Block& b) { return a.mean() < b.mean(); }));
  for (const Block& block : blocks) {
    for (std::size_t i = 0; i < block.count; ++i, ++at) {
      at->y = block.mean() + kStep * static_cast<double>(at - begin);
    }
  }
}

void GroupScene::placeEdgePorts() {
  addEdgePorts(HXOrientationInput);
  const std::size_t inputs = edgePorts.size();
  addEdgePorts(HXOrientationOutput);
  // A port that has lost its inner port stands below the others.
  double lowest = 0;
  for (const NodeBox& box : boxes) lowest = std::max(lowest, box.y + box.height);
  for (EdgePort& port : edgePorts) {
    if (!port.hasInner) port.y = lowest;
  }
  spreadEdgePorts(0, inputs);
  spreadEdgePorts(inputs, edgePorts.size());
}

void GroupScene::measureBounds() {
  bool any = false;
  const auto include = [&](double x, double y) {
    left = any ? std::min(left, x) : x;
    right = any ? std::max(right, x) : x;
    top = any ? std::min(top, y) : y;
    bottom = any ? std::max(bottom, y) : y;
    any = true;
  };
  for (const NodeBox& box : boxes) {
    include(box.x, box.y);
    include(box.x + box.width, box.y + box.height);
  }
  for (const Wire& wire : wires) {
    LayoutPoint at = wire.from;
    eachWirePiece(wire.from, wire.to, wire.via, [&](const WirePiece& piece) {
      // A curve goes at most three quarters of the way to its controls.
      const auto toward = [&](const LayoutPoint& end, const LayoutPoint& control) {
        include(end.x + 0.75 * (control.x - end.x), end.y);
      };
      toward(at, piece.firstControl);
      toward(piece.end, piece.secondControl);
      at = piece.end;
    });
    if (wire.fromBox < 0) include(wire.from.x - 6, wire.from.y);
    if (wire.toBox < 0) include(wire.to.x + 6, wire.to.y);
  }
  if (!any) include(0, 0);
  assert(left <= right && top <= bottom);
  double inputs = 0;
  double outputs = 0;
  for (const EdgePort& port : edgePorts) {
    double& room = port.isInput ? inputs : outputs;
    room = std::max(room, port.label.width + 2 * EdgePort::kPadding + kEdgeDistance);
    top = std::min(top, port.y - EdgePort::kHeight / 2);
    bottom = std::max(bottom, port.y + EdgePort::kHeight / 2);
  }
  if (hasEdge()) {
    leftEdge = left - std::max(inputs, kMargin);
    rightEdge = right + std::max(outputs, kMargin);
    left = leftEdge;
    right = rightEdge;
    top -= kMargin;
    bottom += kMargin;
  }
}

void GroupScene::note(std::size_t count, const char* one, const char* many) {
  if (count == 1) notes.push_back(std::string("1 ") + one + ".");
  if (count > 1) notes.push_back(std::to_string(count) + " " + many + ".");
}

void GroupScene::noteWhatIsMissing() {
  std::size_t without = 0;
  std::size_t unknown = 0;
  for (const NodeBox& box : boxes) {
    if (box.complaint.full.isNil() || box.mark == SceneMark::removed) continue;
    ++(box.node->unknownPatchClass().isNil() ? without : unknown);
  }
  std::size_t lost = 0;
  for (const EdgePort& port : edgePorts) {
    lost += port.hasInner || port.mark == SceneMark::removed ? 0 : 1;
  }
  std::size_t leading = 0;
  for (const Wire& wire : wires) {
    if (wire.mark != SceneMark::removed && (wire.fromBox < 0 || wire.toBox < 0)) ++leading;
  }
  note(without, "node has no patch", "nodes have no patch");
  note(unknown, "node has a patch that is not known here",
       "nodes have patches that are not known here");
  note(lost, "published port has lost its inner port",
       "published ports have lost their inner ports");
  note(leading, "connection leads out of the group", "connections lead out of the group");
  note(boxes.size() - presentCount_, "node that is gone is drawn where it stood",
       "nodes that are gone are drawn where they stood");
}

}  // namespace tarnkit::detail
