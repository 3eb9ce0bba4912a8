#pragma once

#include <cstdint>
#include <functional>
#include <unordered_map>
#include <vector>

#include "tarnkit/compare/HXDocumentState.h"
#include "tarnkit/model/HXDocument.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tarnkit/platform/system/Status.h"

namespace tarnkit {

class HXPatchPort;

/// Brings a living document to a state, by the model's public operations: what is as it should be
/// is not touched, so nodes, ports and connections that stay are the same objects, and observers
/// hear of what changes only. One step of the document's history, where it has one.
///
/// Nodes that are to come are made from pieces (`HXDocumentState::pieceOf`), with their keys; one
/// whose key is nil in the goal draws its own. A node that cannot be brought to its state by
/// operations (another class of node, a patch that nobody knows, parameters of patches that it had
/// long ago) is replaced by its piece, which has a key of its own unless both have the same one.
///
/// For one call of `run`. For the document's thread; time n log n.
class HXDocumentAlignment {
 public:
  /// What a node of the goal is made of when it is not there, or cannot be brought to its state;
  /// null when there is nothing.
  using PieceOf = std::function<Ref<Data>(std::int32_t node)>;

  /// `nodes` has, by the number of a node of the goal, the node of the document that is to become
  /// it; null: none.
  HXDocumentAlignment(HXDocument& document, std::vector<Ref<HXNode>> nodes, HXDocumentState goal,
                      PieceOf pieceOf);

  enum class Exactness : std::uint8_t {
    exact,     // a document that is not the goal in the end is a failure, and is what it was
    possible,  // what the patches do not allow is left as they have it
  };
  Status run(const String& stepName, Exactness exactness = Exactness::exact);
  /// The nodes of the document that the nodes of the goal have become.
  const std::vector<Ref<HXNode>>& nodes() const noexcept { return nodes_; }

 private:
  using State = HXDocumentState;
  using Joined = std::pair<const HXPort*, const HXPort*>;
  struct JoinedHash {
    std::size_t operator()(const Joined& joined) const noexcept;
  };

  /// Whether the document is the goal now.
  bool align();
  void noteWires();
  void alignImages();
  void emptyGroups();
  void makeNodes();
  void shape(std::size_t number);
  bool hasShape(std::size_t number) const;
  void replaceByPiece(std::size_t number);
  void place(std::size_t number);
  void removeOthers();
  void alignGroupKind(std::size_t number);
  void alignGroup(std::size_t number);
  void unpublishOthers(std::size_t number);
  void publish(std::size_t number);
  static std::vector<Ref<HXSymbolicPort>> strays(const HXGroup& group,
                                                 const std::vector<State::Publication>& wanted,
                                                 std::int32_t side);
  static Ref<HXSymbolicPort> publishNothing(HXGroup& group, std::int32_t side,
                                            const State::Publication& wanted);
  void alignLooks(std::size_t number);
  void alignValues(std::size_t number);
  void alignPortGroups(std::size_t number);
  void breakOthers();
  void connect();
  void connect(std::size_t connection);
  void arrangeConnections(std::size_t number);
  HXPort* portAt(const State::Port& port) const;
  /// Takes a node out of its group with every wire that leads into it.
  void takeOut(HXNode& node);

  HXDocument& document_;
  std::vector<Ref<HXNode>> nodes_;
  State goal_;
  PieceOf pieceOf_;
  std::unordered_map<Joined, std::vector<Ref<HXConnection>>, JoinedHash> known_;
  std::vector<bool> hasOtherPublications_;  // by the node: what it publishes was changed
  std::vector<Ref<HXConnection>> present_;
  std::vector<Ref<HXConnection>> wires_;  // by the numbers of the goal's connections
};

}  // namespace tarnkit
