#pragma once

#include <string>
#include <vector>

#include "tarnkit/model/HXConnection.h"
#include "tarnkit/model/HXNode.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tarnkit/platform/system/Result.h"

namespace tarnkit {

/// What nodes lost when they went to another group. Keeps alive what it names.
struct HXLosses {
  /// A connection that could not come along.
  struct Connection {
    Ref<HXConnection> connection;  ///< broken by now
    Ref<HXPort> output;            ///< the patch ports that it joined, and their nodes
    Ref<HXPort> input;
    Ref<HXNode> outputNode;
    Ref<HXNode> inputNode;
    std::string reason;  ///< one sentence, as that of a `Status`
  };
  /// A published port that could not stay.
  struct Publication {
    Ref<HXSymbolicPort> symbolicPort;  ///< published by no group any more
    Ref<HXNode> node;                  ///< on whose outside it stood
    String key;                        ///< under which the node found it
    std::string reason;
  };
  std::vector<Connection> connections;
  std::vector<Publication> publications;

  bool isEmpty() const noexcept { return connections.empty() && publications.empty(); }
};

/// Takes nodes from one group of a document to another while their connections stay: a connection
/// that comes to cross the border of a group goes on through a port that the group publishes.
///
/// The same patch ports are joined before and after, and what was published outside of both groups
/// stays published.
///
/// - The nodes stay the same objects, with keys, values, parameters and everything below them. They
///   keep their mutual order, and stand after the others of their new group.
/// - A published port of a node that still encloses the port stays the same object, at its place,
///   with its name, connections and array output; it stands for a port that is published on the way
///   where there is one. Such a port is named after the port that it stands for. One that is there
///   already is used again, and one that nothing uses any more stays, as its name is the user's.
/// - A connection stays the same object while the two ports that the user joined can be joined
///   still; otherwise a new one takes its place. It comes after the port's others.
/// - Views keep their mutual order on screen; the nodes that enclose them keep theirs.
///
/// Every operation is one step of the document's history, where it has one, and posts the model's
/// ordinary notifications. It checks everything first: nodes of different groups, nodes that are in
/// no document, a document among them, none at all, give a failure (`refused`) and change nothing.
/// A node that is given twice counts once. Costs what lies in and below the nodes, the size of the
/// two groups, and the depth of both for each connection across.
class HXGrouping {
 public:
  HXGrouping() = delete;

  /// A new node in their group, of that name (nil: none), holds the nodes. It has no patch, since
  /// every patch that holds subnodes makes more of them than a group: a view, copies, a loop.
  ///
  /// It stands at the middle of the nodes' positions, which stay as they are; its canvas shows that
  /// point. Among the views of its group it takes the place of the first of the nodes.
  static Result<Ref<HXNode>> group(const std::vector<Ref<HXNode>>& nodes, const String& name);

  /// What ungrouping came to.
  struct Ungrouped {
    std::vector<Ref<HXNode>> nodes;  ///< those that were inside, in their order
    HXLosses lost;
  };
  /// The nodes inside take the place of the node, which is removed. What `group` has made leaves no
  /// trace: names and connections are as they were. Where the node has moved meanwhile, they move
  /// with it; their views stand where its own stood.
  ///
  /// What joins or publishes ports of the node's own patch is lost. A node without a subnode group,
  /// and a document, are refused.
  static Result<Ungrouped> ungroup(HXNode& node);

  /// Takes the nodes to any group of their document; to their own, nothing happens. A group inside
  /// one of them is refused.
  ///
  /// A published port of a node that does not enclose the port any more is lost. So is, since its
  /// copies put out an array only, what would lead from an output inside a replicator outward and
  /// did not do so before.
  static Result<HXLosses> move(const std::vector<Ref<HXNode>>& nodes, HXGroup& toGroup);

  /// Removes the nodes, and joins each input that one of them fed to the first output that fed it
  /// (or one before it among them) and fits, by the `canConnectToPort` of either. Returns the new
  /// connections.
  static Result<std::vector<Ref<HXConnection>>> removeKeepingWires(
      const std::vector<Ref<HXNode>>& nodes);
};

}  // namespace tarnkit
