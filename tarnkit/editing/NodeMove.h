#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "tarnkit/editing/WireRecord.h"

namespace tarnkit::detail {

/// Takes nodes of one group to another of the same document, with their connections and what is
/// published of them. For the length of one operation, which has checked what it asks for.
class NodeMove {
 public:
  /// From the subnode group of one node to that of another one.
  NodeMove(HXDocument& document, const std::vector<Ref<HXNode>>& nodes, HXNode& from, HXNode& to);

  void run();
  /// Puts the views among the moved nodes, in their order, at the index among those of their group.
  void placeViews(std::uint64_t index);
  /// In the order of the group.
  const std::vector<Ref<HXNode>>& nodes() const noexcept { return nodes_; }
  /// How many views of the group that they left stand before the first of them.
  std::uint64_t viewsBefore() const noexcept { return viewsBefore_; }
  bool hasViews() const noexcept { return !views_.empty(); }
  /// Of the node that they left, what it published for them counts for no loss.
  void forgivesPublicationsOf(const HXNode& node) noexcept { forgiven_ = &node; }

  WireRecord& wires() noexcept { return wires_; }
  HXLosses& losses() noexcept { return losses_; }
  /// Notes what is lost with a port that goes: connections, and publications all the way up.
  void losePort(HXPort& port, const std::string& reason);

 private:
  using Publications = std::vector<Ref<HXSymbolicPort>>;
  /// What a node publishes, by inner port.
  using ByPort = std::unordered_map<const HXPort*, Publications>;
  struct Staying {
    Ref<HXPort> port;  // of a moved node
    Publications publications;
    Ref<HXSymbolicPort> between;  // what they stand for while the node is on its way
  };
  /// How a node stands in its group, and what it shows of its own.
  struct Encloser {
    Ref<HXNode> node;
    std::vector<Ref<HXNode>> viewsBefore;
    bool isView;
    bool opaque;
    HXPoint canvasCenter;
  };

  void orderNodes(const std::vector<Ref<HXNode>>& nodes);
  void noteEnclosers(HXNode& innermost);
  void noteViews();
  void notePublications();
  void noteLost(HXSymbolicPort& symbolicPort, const std::string& reason);
  static ByPort publicationsOf(const HXNode& node);
  void withdrawLost();
  void takeOver();
  void publishStaying();
  void restoreEnclosers();

  HXDocument& document_;
  Ref<HXNode> from_;
  Ref<HXNode> to_;
  Ref<HXNode> common_;                // the innermost node that encloses both groups
  std::vector<Ref<HXNode>> left_;     // those below it that enclose the one group, innermost first
  std::vector<Ref<HXNode>> entered_;  // and the other
  std::vector<Ref<HXNode>> nodes_;
  std::vector<Ref<HXNode>> views_;  // in the order of their group
  std::uint64_t viewsBefore_ = 0;
  std::vector<Encloser> enclosers_;
  std::vector<Staying> staying_;
  Publications withdrawn_;  // the outermost last
  const HXNode* forgiven_ = nullptr;
  WireRecord wires_;
  HXLosses losses_;
};

}  // namespace tarnkit::detail
