#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "tarnkit/render/LayeredLayout.h"
#include "tarnkit/render/NodeBox.h"
#include "tarnkit/render/SceneMark.h"

namespace tarnkit {
class HXConnection;
class HXGroup;
class HXSymbolicPort;
}  // namespace tarnkit

namespace tarnkit::detail {

class ConnectionIndex;
class SceneDifference;

/// A connection as it is drawn.
struct Wire {
  const HXConnection* connection = nullptr;
  /// The ports at its ends as they are shown; null for one that is gone.
  const HXPort* output = nullptr;
  const HXPort* input = nullptr;
  SceneMark mark = SceneMark::none;
  LayoutPoint from;
  LayoutPoint to;
  std::vector<LayoutPoint> via;  // as LayoutEdge::via
  RGBA color;
  /// The box at either end; negative: that end is outside the group, and the wire a short piece.
  std::int32_t fromBox = -1;
  std::int32_t toBox = -1;
};

/// A published port at the group's edge.
struct EdgePort {
  static constexpr double kHeight = 22;
  static constexpr double kPadding = 10;

  const HXSymbolicPort* port = nullptr;
  bool isInput = true;
  SceneMark mark = SceneMark::none;
  Label label;
  RGBA color;
  double y = 0;  // the middle
  /// The inner port's dot; `hasInner` is false when that port is gone.
  LayoutPoint inner;
  bool hasInner = false;
};

/// All that the picture of a group shows, measured and placed. Valid while the document does not
/// change; for one thread. Linear in the group's nodes, ports and connections, but for sorting.
///
/// With a difference it shows what that marks, too, and what stood in the group and is gone: nodes
/// where they stood, or right below what stands there now.
class GroupScene {
 public:
  static constexpr double kMargin = 32;
  static constexpr double kStub = 30;  // the length of a wire that leads out of the group

  GroupScene(const HXGroup& drawn, const ConnectionIndex& connections,
             const SceneDifference* difference = nullptr);

  /// By which the picture knows them.
  String keyOf(const HXNode& node) const;
  String keyOf(const HXGroup& group) const;

  const HXGroup& group;
  std::vector<NodeBox> boxes;
  std::vector<Wire> wires;
  std::vector<EdgePort> edgePorts;
  bool laidOut = false;
  std::vector<std::string> notes;

  /// The bounds of the boxes, wires and edge ports.
  double left = 0;
  double top = 0;
  double right = 0;
  double bottom = 0;
  /// The group's edge: only a group that publishes ports shows one.
  double leftEdge = 0;
  double rightEdge = 0;
  bool hasEdge() const noexcept { return !edgePorts.empty(); }

 private:
  struct Anchor {
    std::uint32_t box;
    double y;
  };
  struct End {
    std::int32_t box = -1;
    double y = 0;
  };

  void measureNodes();
  void addBox(const HXNode& node, NodeBox::IsConnected isConnected);
  void collectWires();
  void addWire(const HXConnection& connection, const HXPort* output, const HXPort* input, End from,
               End to);
  void place();
  const char* reasonToLayOut() const;
  bool boxesOverlap() const;
  void placeWhatIsGone();
  void layOut();
  void endWires();
  void placeEdgePorts();
  void addEdgePorts(std::int32_t orientation);
  void addEdgePort(const HXSymbolicPort& port, bool isInput, End end);
  void spreadEdgePorts(std::size_t first, std::size_t last);
  void measureBounds();
  void noteWhatIsMissing();
  void note(std::size_t count, const char* one, const char* many);
  End endOf(const HXPort* port);
  /// Of a port of the document that was.
  End endOfEarlier(const HXPort* port);
  std::int32_t boxAround(const HXNode* node);

  const std::vector<const HXConnection*>& connections_;
  const SceneDifference* difference_;
  std::size_t presentCount_ = 0;  // of the boxes; those that are gone come behind
  std::unordered_map<const HXPort*, Anchor> anchors_;
  // The box of a node or of the node around it that is drawn; -1 for one outside.
  std::unordered_map<const HXNode*, std::int32_t> boxOf_;
};

}  // namespace tarnkit::detail
