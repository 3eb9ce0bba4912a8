#pragma once

#include <cstdint>
#include <vector>

#include "tarnkit/compare/HXStateValue.h"
#include "tarnkit/model/HXGroup.h"
#include "tarnkit/patches/BySide.h"
#include "tarnkit/platform/objects/Class.h"
#include "tarnkit/platform/objects/Data.h"

namespace tarnkit {

class HXDocument;
class HXImageStoreEntry;
class HXNode;
class HXPort;
class HXRNodeClass;

/// Everything that a file keeps of a document, as it was at one moment, as plain values: what two
/// documents are compared by, what three are merged into, and what a document is brought to.
///
/// Nodes are told by their number, in the order of `HXNodeWalk`, the document first; whatever
/// refers to a node has that number. A document that is saved with keys and opened again has the
/// same state. Costs what the document holds. A value: states refer to no document, and may be kept
/// and copied; as other values, they belong to one thread at a time.
struct HXDocumentState {
  /// A port: a patch port of a node, or the port that stands for it so many publications further
  /// out.
  struct Port {
    std::int32_t node = -1;   // -1: none
    std::uint32_t level = 0;  // how many publications stand between
    String key;               // of the patch port
    friend bool operator==(const Port&, const Port&) = default;
  };
  /// The value of a parameter.
  struct Parameter {
    String key;
    const Class* kind = nullptr;
    HXStateValue value;
    friend bool operator==(const Parameter&, const Parameter&) = default;
  };
  /// The static value of a port.
  struct PortValue {
    String key;
    HXStateValue value;
    friend bool operator==(const PortValue&, const PortValue&) = default;
  };
  /// A port group one of whose flags is set; of others nothing is noted but their place.
  struct PortGroup {
    String key;
    bool hidden = false;
    bool collapsedCanvas = false;
    bool collapsedSidebar = false;
    friend bool operator==(const PortGroup&, const PortGroup&) = default;
  };
  /// A published port may lead nowhere, too.
  struct Publication {
    Port port;  // the inner one
    String name;
    std::int32_t relationship = 0;
    friend bool operator==(const Publication&, const Publication&) = default;
  };
  /// What an array output of a replicator collects.
  struct ArrayOutput {
    String key;
    Port port;  // which it collects
    friend bool operator==(const ArrayOutput&, const ArrayOutput&) = default;
  };
  /// The connections of one port, in its order.
  struct Wires {
    String key;
    std::vector<std::int32_t> connections;
    friend bool operator==(const Wires&, const Wires&) = default;
  };
  /// One node, with everything that a file keeps of it.
  struct Node {
    String key;
    const Class* nodeClass = nullptr;
    String patchClass;                    // nil without a patch
    const HXRNodeClass* patch = nullptr;  // null without a patch, and for an unknown one
    String name;
    String comment;
    HXPoint position;
    std::uint64_t inspectorPanel = 0;
    bool selected = false;
    bool forcesSubnodes = false;
    std::int32_t parent = -1;  // -1: of the document
    /// Tells apart which ports and parameters the node has, and in which order; array outputs left
    /// out. 0: to be found out.
    std::uint64_t shape = 0;
    std::vector<Parameter> parameters;
    std::vector<PortValue> values;
    BySide<std::vector<PortGroup>> flaggedGroups;
    BySide<std::vector<String>> groupOrder;
    std::vector<Wires> wires;

    bool hasGroup = false;
    bool showsViews = false;
    bool opaque = false;
    HXPoint canvasCenter;
    std::vector<std::int32_t> subnodes;
    std::vector<std::int32_t> views;
    BySide<std::vector<Publication>> publications;
    std::vector<ArrayOutput> arrayOutputs;
  };
  /// A port that is in no node of the document is none: documents may hold wires that lead nowhere.
  struct Connection {
    Port output;
    Port input;
    Port displayOutput;
    Port displayInput;
    friend bool operator==(const Connection&, const Connection&) = default;
  };
  /// One entry of the image store.
  struct Image {
    Ref<HXImageStoreEntry> entry;
    String key;
    std::int32_t count = 0;
  };

  HXDocumentState() = default;
  explicit HXDocumentState(const HXDocument& document);

  /// The nodes of a document in the order of their numbers.
  static std::vector<Ref<HXNode>> nodesOf(const HXDocument& document);
  /// The node alone, with neither what it is joined to nor what stands below it, as bytes from
  /// which `nodeOf` makes it again with its key. Null when it cannot be written.
  static Ref<Data> pieceOf(const HXNode& node);
  /// The node, with its key or with one of its own; null for anything else.
  static Ref<HXNode> nodeOf(const Data& piece, bool keepsKey);
  static std::uint64_t shapeOf(const HXNode& node);

  /// The same with other numbers: those of the order in which the nodes are met from the document
  /// downward. `numbers`, where given, gets the new number of each node, -1 for one that is not
  /// met.
  void renumber(std::vector<std::int32_t>* numbers = nullptr);
  /// Whatever refers to a node refers to the one of its new number; the nodes stay where they are.
  void mapReferences(const std::vector<std::int32_t>& numbers);

  /// Whether the two are the same document, keys and numbers included.
  bool isEqual(const HXDocumentState& other) const;

  /// False for a document that says one thing here and another there: a port that is published
  /// twice, a published port behind one that leads nowhere, array outputs of a node whose patch
  /// makes no copies. Such a state is not all of it.
  bool fitsTogether = true;
  std::vector<Node> nodes;
  std::vector<Connection> connections;
  std::vector<Image> images;
};

}  // namespace tarnkit
