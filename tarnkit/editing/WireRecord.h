#pragma once

#include <cstddef>
#include <string>
#include <unordered_set>
#include <vector>

#include "tarnkit/editing/HXGrouping.h"
#include "tarnkit/model/HXDocument.h"
#include "tarnkit/model/HXPatchPort.h"

namespace tarnkit::detail {

/// Connections that are made again after their nodes have gone to other groups: between the ports
/// that the user joined where these can be joined still, otherwise through published ports.
///
/// For the length of one operation, which keeps the document alive.
class WireRecord {
 public:
  explicit WireRecord(HXDocument& document) : document_(document) {}

  struct Wire {
    Ref<HXConnection> connection;
    Ref<HXPort> output;  // the patch ports
    Ref<HXPort> input;
    Ref<HXPort> displayOutput;  // as the user joined them; null once gone
    Ref<HXPort> displayInput;
    Ref<HXNode> outputNode;
    Ref<HXNode> inputNode;
    bool isWhole;       // both ends hold it
    bool isInOneGroup;  // the ports that the user joined stand side by side
  };

  /// Notes the connections of the ports of the node and of everything below, in the order of the
  /// ports, each once.
  void addBelow(HXNode& node);
  const std::vector<Wire>& wires() const noexcept { return wires_; }

  /// The connections of the port are not made again.
  void lose(const HXPort& port, const std::string& reason, HXLosses& losses);
  /// Makes the others again, and notes those that could not be.
  void restore(HXLosses& losses);

  /// Joins two patch ports, through published ports where they stand in different groups. Null,
  /// with the reason, when that cannot be.
  Ref<HXConnection> join(HXPort& output, HXPort& input, std::string& reason);
  /// Joins the output of the one to the input of the other, where the user joined them if these two
  /// stand side by side.
  Ref<HXConnection> joinAcross(const Wire& from, const Wire& to);
  /// The port, or the published one that stands for it in the group, published on the way as far as
  /// it is not. Null when it is not inside the group, or an observer prevents it.
  static Ref<HXPort> publishUpTo(HXPort& port, const HXNode& owner);

 private:
  void add(HXConnection& connection);
  bool keepsDisplay(const Wire& wire) const;
  void restore(const Wire& wire, HXLosses& losses);
  static HXLosses::Connection loss(const Wire& wire, std::string reason);

  HXDocument& document_;
  std::vector<Wire> wires_;
  std::unordered_set<const HXConnection*> known_;
  std::unordered_set<const HXConnection*> lost_;
};

}  // namespace tarnkit::detail
