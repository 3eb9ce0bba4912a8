#pragma once

#include <bitset>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "tarnkit/compare/HXFinding.h"
#include "tarnkit/math/MXError.h"
#include "tarnkit/model/HXDocument.h"

namespace tarnkit {
class HXImageStoreEntry;
class HXPatchPort;
class HXSymbolicPort;
}  // namespace tarnkit

namespace tarnkit::detail {

/// What the rules have to know of a patch class, found once for all its nodes.
struct PatchTraits {
  bool isView = false;
  bool isHidden = false;
  bool isPlugIn = false;
  /// It has an effect without anybody reading it, or nobody can say.
  bool actsByItself = false;
  bool isReplicator = false;
  bool isLoop = false;
  bool isRemoteGroup = false;
  bool isStateInput = false;
  bool isStateOutput = false;
  bool asksReplicator = false;
  bool asksLoop = false;
  bool isMathExpression = false;
  bool isScript = false;
};

/// A wire as a check sees it; met once, whichever ends hold it.
struct CheckedWire {
  HXConnection& connection;
  HXPort* output;  // null when it is gone
  HXPort* input;
  /// Whether the ports stand on nodes of the document.
  bool outputIsThere;
  bool inputIsThere;
  bool outputHolds;
  bool inputHolds;

  bool isWhole() const noexcept { return outputIsThere && inputIsThere; }
};

/// A node as a check sees it.
struct CheckedNode {
  HXNode* node;
  const PatchTraits* traits;
  bool isInReplicator;
  bool isInLoop;
};

/// What several rules have to know of an expression, found once for the node that they look at.
struct ExpressionFacts {
  const HXNode* node = nullptr;  // null: of none
  bool parses = false;
  bool hasVariables = false;
  /// Why it does not parse; and why it has no value, whatever the variables are: of one that does.
  MXError parsing;
  MXError evaluation;
};

/// What a check gathers: the facts of a document that several rules need, in one walk, and the
/// findings. Lives as long as one check, of a document that does not change meanwhile.
class CheckReport {
 public:
  using Wanted = std::bitset<64>;

  CheckReport(HXDocument& document, const Wanted& wanted);

  HXDocument& document() const noexcept { return document_; }
  bool wants(HXFindingCode code) const noexcept { return wanted_[static_cast<std::size_t>(code)]; }
  /// Every node below the document, each before those below it; the document first.
  const std::vector<CheckedNode>& nodes() const noexcept { return nodes_; }
  const std::vector<CheckedWire>& wires() const noexcept { return wires_; }
  bool holds(const HXNode& node) const noexcept { return numbers_.contains(&node); }
  /// Whether the port is one of a node of the document, or is published by one; not for null.
  bool isThere(const HXPort* port) const;
  /// The place of the node in `nodes`.
  std::uint32_t numberOf(const HXNode& node) const { return numbers_.at(&node); }
  /// Whether a wire was joined to that published port.
  bool isJoined(const HXSymbolicPort& port) const noexcept;
  /// Whether the port at the end of what a published port stands for is gone, or stands on no node
  /// of the document.
  bool leadsNowhere(const HXSymbolicPort& port) const noexcept;
  /// Of the expression that was looked at last.
  ExpressionFacts& expression() noexcept { return expression_; }
  /// The keys of the images that parameters show.
  std::unordered_set<std::string_view>& imagesInUse() noexcept { return imagesInUse_; }

  /// Of a place: a node, a port, a parameter or an image. The address is found when the findings
  /// are taken. Returns the finding, to be completed.
  HXFinding& add(HXFindingCode code, Object& place, std::string sentence,
                 std::string suggestion = {});
  /// The findings, the worst first and in the order of the nodes, at most so many; with their
  /// addresses.
  std::vector<HXFinding> take(std::size_t limit);
  /// How many findings of a weight there are.
  std::size_t count(HXFindingSeverity severity) const noexcept {
    return counts_[static_cast<std::size_t>(severity)];
  }

 private:
  struct Entry {
    HXFinding finding;
    std::uint32_t node;
  };

  void gatherNodes();
  void gatherWires();
  void gatherPublications();
  bool isPublished(const HXSymbolicPort& port) const;
  const PatchTraits& traitsOf(const HXNode& node);
  std::uint32_t numberOfPlace(const Object& place) const;

  HXDocument& document_;
  Wanted wanted_;
  std::vector<CheckedNode> nodes_;
  std::unordered_map<const HXNode*, std::uint32_t> numbers_;
  std::unordered_map<const HXRNodeClass*, PatchTraits> traits_;
  std::vector<CheckedWire> wires_;
  std::unordered_set<const HXPort*> joined_;
  std::unordered_set<const HXPort*> nowhere_;
  std::unordered_set<std::string_view> imagesInUse_;
  ExpressionFacts expression_;
  std::vector<Entry> entries_;
  std::size_t counts_[3] = {};
};

}  // namespace tarnkit::detail
