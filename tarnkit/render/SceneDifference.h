#pragma once

#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "tarnkit/compare/HXDocumentChange.h"
#include "tarnkit/compare/HXNodeMatching.h"
#include "tarnkit/model/HXNode.h"
#include "tarnkit/render/ConnectionIndex.h"
#include "tarnkit/render/SceneMark.h"

namespace tarnkit {
class HXDocument;
class HXPort;
class HXSymbolicPort;
}  // namespace tarnkit

namespace tarnkit::detail {

/// What the pictures of a document show of the one that it was before: which nodes, connections and
/// published ports have come, gone or changed, and what stands for what was there. Valid while
/// neither document changes. Making it costs time linear in both.
class SceneDifference {
 public:
  SceneDifference(const HXDocument& oldDocument, const HXDocument& newDocument,
                  const HXNodeMatching& matching, const std::vector<HXDocumentChange>& changes);

  SceneMark markOf(const Object& drawn) const;
  /// Whether something below the node has come, gone or changed.
  bool holdsChanges(const HXNode& node) const { return holding_.contains(&node); }
  /// Whether the port's value has changed.
  bool hasChanged(const HXPort& port) const { return changedPorts_.contains(&port); }
  /// Of the old document, and in the new one no more.
  bool isGone(const HXNode& node) const { return markOf(node) == SceneMark::removed; }
  bool isGone(const HXGroup& group) const;

  /// What stood in a group of the new document, in the order in which it stood there.
  std::vector<const HXNode*> nodesGoneFrom(const HXGroup& group) const;
  std::vector<const HXConnection*> connectionsGoneFrom(const HXGroup& group) const;
  std::vector<const HXSymbolicPort*> publicationsGoneFrom(const HXGroup& group,
                                                          std::int32_t side) const;
  const ConnectionIndex& oldConnections() const noexcept { return oldConnections_; }

  /// What stands in the new document for a node or a port of the old one; itself where the node is
  /// gone; null for a port that its node has no more.
  const HXNode* present(const HXNode* node) const;
  const HXPort* present(const HXPort* port) const;

  /// By which the pictures know the node: that of one that is gone may be another's by now.
  String keyOf(const HXNode& node) const;
  String keyOf(const HXGroup& group) const;
  /// Where to see the change: the node, null for the document, and the group in whose picture it
  /// is drawn.
  struct Place {
    const HXGroup* group = nullptr;
    const HXNode* node = nullptr;
  };
  Place placeOf(const HXDocumentChange& change) const;

 private:
  void markNodes(const std::vector<HXDocumentChange>& changes);
  void markConnections();
  void markPublications(const HXGroup& older, const HXGroup& newer);
  void markAround(const HXNode* node);
  const HXGroup* oldGroupOf(const HXGroup& group) const;

  std::vector<Ref<HXNode>> oldNodes_;
  std::vector<Ref<HXNode>> newNodes_;
  ConnectionIndex oldConnections_;
  std::unordered_map<const HXNode*, const HXNode*> newOf_;  // of those that are still there
  std::unordered_map<const HXNode*, const HXNode*> oldOf_;
  std::unordered_map<const Object*, SceneMark> marks_;
  std::unordered_set<const HXNode*> holding_;
  std::unordered_set<const HXPort*> changedPorts_;
};

}  // namespace tarnkit::detail
