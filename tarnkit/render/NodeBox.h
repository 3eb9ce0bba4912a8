#pragma once

#include <cstdint>
#include <vector>

#include "tarnkit/platform/objects/FunctionRef.h"
#include "tarnkit/render/Label.h"
#include "tarnkit/render/PortValue.h"
#include "tarnkit/render/SceneMark.h"

namespace tarnkit {
class HXGroup;
class HXNode;
class HXPort;
class HXPortGroup;
}  // namespace tarnkit

namespace tarnkit::detail {

/// One line of a node's box, at its left or its right: a port, the name of a port group, or a
/// collapsed port group with all of its ports.
struct PortLine {
  enum class Kind : std::uint8_t { port, heading, collapsed };
  Kind kind = Kind::port;
  bool connected = false;
  const HXPort* port = nullptr;        // of a port's line
  const HXPortGroup* group = nullptr;  // of the others
  Label label;
  PortValue value;
  bool hasChanged = false;
};

/// A node as it is drawn: its lines measured, and where its box stands. Lives no longer than the
/// node. Measuring is linear in the node's ports.
struct NodeBox {
  // Canvas units.
  static constexpr double kTitleHeight = 26;
  static constexpr double kLineHeight = 18;
  static constexpr double kPadding = 6;  // above the first line and below the last
  static constexpr double kInset = 12;   // from an edge to the text
  static constexpr double kGap = 8;      // between a name and its value
  static constexpr double kChipPadding = 5;
  static constexpr double kSwitchWidth = 20;
  static constexpr double kSwatchWidth = 22;
  static constexpr double kBadgePadding = 7;
  static constexpr double kChevronWidth = 10;
  // For the texts of a line.
  static constexpr double kNameRoom = 130;
  static constexpr double kValueRoom = 64;
  static constexpr Font kTitleFont{12, true};
  static constexpr Font kNameFont{11, false};
  static constexpr Font kHeadingFont{10, true};
  static constexpr Font kValueFont{10, false};
  static constexpr Font kCountFont{10, true};

  /// Whether a connection ends at the port.
  using IsConnected = FunctionRef<bool(const HXPort&)>;
  /// Told of every port of a group that is not hidden, with the height of its dot below the box's
  /// upper edge. False: the port has a place already, and gets no second one.
  using PortIsAt = FunctionRef<bool(const HXPort&, double y)>;
  NodeBox(const HXNode& drawn, IsConnected isConnected, PortIsAt portIsAt);

  /// The middle of a line, from the box's upper edge.
  static double lineY(std::size_t index) noexcept {
    return kTitleHeight + kPadding + (static_cast<double>(index) + 0.5) * kLineHeight;
  }
  double badgeWidth() const noexcept { return countText.width + 2 * kBadgePadding; }
  bool hasBadge() const noexcept { return !countText.full.isNil(); }

  const HXNode* node = nullptr;
  SceneMark mark = SceneMark::none;
  bool holdsChanges = false;  // somewhere below
  double x = 0;
  double y = 0;
  double width = 0;
  double height = 0;
  Label title;
  /// How many nodes a group node holds; nil for another node.
  Label countText;
  /// What is wrong with the node, in words, below its lines; nil when nothing is.
  Label complaint;
  /// Where the values of the inputs begin, from the left edge.
  double valueX = 0;
  std::vector<PortLine> inputs;
  std::vector<PortLine> outputs;

 private:
  void addLines(std::vector<PortLine>& lines, std::int32_t orientation, IsConnected isConnected,
                PortIsAt portIsAt);
  static void addPortLine(std::vector<PortLine>& lines, const HXPort& port, IsConnected isConnected,
                          PortIsAt portIsAt);
  void measure();
};

/// The node's name, or that of its patch when it has none.
String titleOfNode(const HXNode& node);
/// The name of the node that holds the group; "Document" for a document without a name of its own.
String titleOfGroup(const HXGroup& group);
/// The port's display name, or its key when it has none.
String titleOfPort(const HXPort& port);
/// Visits the ports of the group that the node has, in order. A published port is found through its
/// group, since looking one up by its key costs a walk over all of them.
void eachPortOfGroup(const HXNode& node, const HXPortGroup& group,
                     FunctionRef<void(const HXPort&)> visit);
/// The class name of the node's patch, known here or not; nil for a node without one.
String patchNameOfNode(const HXNode& node);

}  // namespace tarnkit::detail
