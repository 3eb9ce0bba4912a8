#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tarnkit/platform/collections/OrderedMap.h"
#include "tarnkit/platform/objects/Ref.h"
#include "tarnkit/platform/text/String.h"

namespace tarnkit {

class HXNode;
class HXPort;

/// One thing that a node has of its definition or that hangs on it.
struct HXNodeItem {
  enum class Kind : std::uint8_t {
    port,         // of its own, hidden ones too, and those that its subnode group publishes
    parameter,    // that the node has
    value,        // a static value of a port, or a value that was set of a parameter
    connection,   // of a port, or of one that stands for it at a level above
    publication,  // of a port, one for each level at which it is published
    node,         // in its subnode group
  };
  Kind kind = Kind::port;
  /// Of the port or the parameter; of a node its unique key.
  String key;
  /// The key that it had before, of what has got another one; otherwise nil.
  String formerKey;
  /// Of a value: the value as text; of everything else that has one: its name.
  String text;
  /// The port, the parameter, the value (null of a parameter's), the connection, the published
  /// port, or the node.
  Ref<Object> object;
  /// Of a connection: the port that the user joined it to; null once gone.
  Ref<const HXPort> other;
  /// Of a connection that ends at another port of the same node: the key of that one.
  String ownOther;
  /// How many publications stand between the port and what the connection was joined to here, or
  /// between it and the publication.
  std::uint32_t level = 0;
  /// Tells apart what has one kind and key: a port by its side and by how many connections it
  /// takes, a parameter by its class.
  std::string_view classification;

  /// What it is, for people: "the value 5 of Tarn.minimumInput", "the connection of Tarn.input with
  /// node_3/Tarn.output". Long texts are cut.
  std::string description() const;
};

/// "port", "parameter", "value", "connection", "publication", "node".
std::string_view nameOf(HXNodeItem::Kind kind) noexcept;

/// What a change of a node's definition did to what the node had. The items keep alive what they
/// tell of, gone or not.
struct HXNodeReport {
  std::vector<HXNodeItem> kept;
  std::vector<HXNodeItem> dropped;
  std::vector<HXNodeItem> added;
  /// What is there under another key or, of a port, under another name; as it is now.
  std::vector<HXNodeItem> renamed;

  /// The dropped ones that somebody made: values, connections, publications and nodes. A port that
  /// nobody used is no loss.
  std::vector<HXNodeItem> losses() const;
  bool losesAnything() const;
};

/// What a node lost when it was read from an archive, since its patch is not what it was.
struct HXNodeLosses {
  Ref<HXNode> node;
  std::vector<HXNodeItem> dropped;
};

/// What a node has at one moment, to be compared with what it has later: whoever wants to know what
/// `setPatch`, a parameter, or anything else does to a node takes the state before it.
///
///     const HXNodeState before(*node);
///     node->setPatch(…);
///     const HXNodeReport report = before.reportSince(HXNodeState(*node));
///
/// Costs the node's ports, parameters and connections. For the document's thread.
class HXNodeState {
 public:
  explicit HXNodeState(const HXNode& node);
  /// Of what a node is expected to have.
  explicit HXNodeState(std::vector<HXNodeItem> items) : items_(std::move(items)) {}

  /// The parameters of a node, each followed by its value.
  static std::vector<HXNodeItem> itemsOfParameters(const HXNode& node);
  /// Ports first, each followed by what hangs on it; then parameters, then nodes.
  const std::vector<HXNodeItem>& items() const noexcept { return items_; }

  /// What has become of this state. `newKeys` says which keys of ports and parameters stand for the
  /// same thing under another key, old to new.
  HXNodeReport reportSince(const HXNodeState& later, const OrderedMap<String>& newKeys = {}) const;

 private:
  std::vector<HXNodeItem> items_;
};

}  // namespace tarnkit
