#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "tarnkit/compare/HXAddresses.h"
#include "tarnkit/compare/HXDocumentChange.h"
#include "tarnkit/compare/HXDocumentState.h"
#include "tarnkit/compare/HXNodeMatching.h"
#include "tarnkit/compare/PublicationPlaces.h"
#include "tarnkit/model/HXNode.h"

namespace tarnkit::detail {

/// Finds the changes between two states: the part of `HXDocumentDifference` that names them, while
/// the documents themselves are there to be asked for names.
class HXDifferenceFinder {
 public:
  using Nodes = std::vector<Ref<HXNode>>;
  HXDifferenceFinder(const HXDocumentState& oldState, const HXDocumentState& newState,
                     const HXNodeMatching& matching, const Nodes& oldNodes, const Nodes& newNodes);

  std::vector<HXDocumentChange> changes();

 private:
  using State = HXDocumentState;
  using Port = HXDocumentState::Port;
  using Kind = HXDocumentChange::Kind;
  static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

  // HXDifferenceFinder.cpp: what nodes are.
  void findRemovedNodes();
  void findNodeChanges(std::int32_t number);
  void findParameterChanges(std::int32_t number);
  void findValueChanges(std::int32_t number);
  void findPortGroupChanges(std::int32_t number);
  void findPortGroupFlags(std::int32_t number, std::int32_t side);
  void findPortGroupOrder(std::int32_t number, std::int32_t side);
  /// Whether a new group of the new node starts hidden.
  bool startsHidden(std::int32_t number, std::int32_t side, const String& key) const;
  void findGroupChanges(std::int32_t number);
  void findOrderChanges(std::int32_t number);
  void findViewState(std::int32_t number);
  void findImages();

  // HXWireFinder.cpp: what joins them.
  void findPublications();
  void findPublished();
  void findUnpublished(std::int32_t oldNumber, std::int32_t side, std::size_t index);
  void findConnections();
  void findRewired();
  void tellBroken(std::int32_t connection);
  void tellMade(std::int32_t connection);
  void findConnectionOrder(std::int32_t number);
  void findPublicationOrder(std::int32_t number);
  /// The change of which it is a consequence that something of the old document's port is gone;
  /// `kNone`: of none.
  std::size_t causeAt(const Port& port);
  /// The same for what stands at a port that nothing removed with its node.
  std::size_t causeOfLostPort(const Port& port);

  HXDocumentChange& add(Kind kind, std::int32_t oldNumber, std::int32_t newNumber);
  void consequence(std::size_t cause, std::string text);
  /// The number in the new document; -1 for what is not there.
  std::int32_t newOf(std::int32_t number) const {
    return number < 0 ? -1 : matching_.newOf()[static_cast<std::size_t>(number)];
  }
  std::int32_t oldOf(std::int32_t number) const {
    return number < 0 ? -1 : matching_.oldOf()[static_cast<std::size_t>(number)];
  }
  /// The port in numbers of the new document.
  Port translated(const Port& port) const;
  static const HXPort* portAt(const Nodes& nodes, const Port& port);
  static std::string portAddress(HXAddresses& addresses, const Nodes& nodes, const Port& port);
  /// The name of a port as its node shows it.
  static std::string portLabel(HXAddresses& addresses, const Nodes& nodes, std::int32_t node,
                               const String& key);
  std::string wireText(HXAddresses& addresses, const Nodes& nodes,
                       const State::Connection& wire) const;
  bool isPortReplaced(std::int32_t oldNumber, const String& key) const;
  const State::Node& oldNode(std::int32_t number) const {
    return old_.nodes[static_cast<std::size_t>(number)];
  }
  const State::Node& newNode(std::int32_t number) const {
    return new_.nodes[static_cast<std::size_t>(number)];
  }

  const State& old_;
  const State& new_;
  const HXNodeMatching& matching_;
  const Nodes& oldNodes_;
  const Nodes& newNodes_;
  PublicationPlaces oldPlaces_;
  HXAddresses oldAddresses_;
  HXAddresses newAddresses_;
  std::vector<HXDocumentChange> changes_;
  // Where a change of an old node stands among the changes.
  std::vector<std::size_t> removedBy_;  // with itself, or with what it stands in
  std::vector<std::size_t> movedBy_;    // by the node that was moved, for all below it
  std::vector<std::size_t> shapedBy_;   // the patch or the parameter that was changed
  std::vector<std::size_t> groupLostBy_;
  std::vector<std::size_t> addedBy_;  // of new nodes: with itself, or with what it stands in
  std::unordered_map<std::uint64_t, std::size_t> unpublishedBy_;  // by the innermost port
  std::unordered_map<std::uint64_t, std::size_t> arrayOutputBy_;  // by the key of the output
  std::vector<std::int32_t> newWireOf_;  // by the old connection's number; -1: none
  std::vector<std::int32_t> oldWireOf_;
  std::vector<std::int32_t> ranks_;  // by the change: the place where it is told
};

}  // namespace tarnkit::detail
