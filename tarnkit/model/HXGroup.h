#pragma once

#include <cstdint>
#include <vector>

#include "tarnkit/model/HXNotifications.h"
#include "tarnkit/patches/BySide.h"
#include "tarnkit/platform/coding/Coder.h"
#include "tarnkit/platform/collections/OrderedMap.h"
#include "tarnkit/platform/collections/OrderedSet.h"
#include "tarnkit/platform/objects/PassKey.h"

namespace tarnkit {

class HXNode;
class HXPort;
class HXRefusal;
class HXSymbolicPort;

/// Posted by a group with "Group" and "Node".
inline constinit const Symbol HXGroupAddNodeNotification{"HXGroupAddNodeNotification"};
inline constinit const Symbol HXGroupRemoveNodeNotification{"HXGroupRemoveNodeNotification"};
/// Posted by a group with "Group" and "Port", the inner port.
inline constinit const Symbol HXGroupAddSymbolicPortForPortNotification{
    "HXGroupAddSymbolicPortForPortNotification"};
inline constinit const Symbol HXGroupRemoveSymbolicPortForPortNotification{
    "HXGroupRemoveSymbolicPortForPortNotification"};

/// A point on the canvas, in canvas units.
struct HXPoint {
  float x = 0;
  float y = 0;
  bool operator==(const HXPoint&) const = default;
};

/// The contents of a node that has subnodes: the subnodes, and the published ports that stand for
/// inner ports on the node's outside.
///
/// Owned by its node, which replaces a plain group by a subview group, and back, as view nodes come
/// and go; a group that was replaced hands every operation on to the one in force. Changes are
/// announced while the node is in a document. Adding, finding and removing a node take constant
/// time beside the node's own ports. For one thread.
class HXGroup : public Object {
  TARNKIT_CLASS
 public:
  /// Empty, with a new key.
  HXGroup();
  /// Takes over the other group's key, subnodes (which change their parent) and published ports;
  /// not its canvas centre, opacity and node. Of null, an empty group.
  static Ref<HXGroup> initWithGroup(HXGroup* group);

  /// "group_%i".
  const String& uniqueKey() const noexcept { return uniqueKey_; }
  /// The node whose subnode group this is; null while none is.
  HXNode* node() const noexcept { return node_.get(); }
  /// The same; of a group that another one has replaced, the node whose group it was.
  HXNode* presentOrFormerNode() const noexcept {
    auto* const node = node_.get();
    return node ? node : formerNode_.get();
  }
  /// Leaves alone, with one line logged, a group that its node holds: the node drops or replaces
  /// it.
  void setNode(HXNode* node);
  void linkNode(HXNode* node, PassKey<HXNode>) noexcept;
  /// Its node has another group in its place, to which it hands everything on.
  void linkReplacedIn(HXNode& node, PassKey<HXNode>) noexcept;
  /// Becomes the node's, with its published ports.
  void linkAdoptedBy(HXNode& node, PassKey<HXNode>);
  /// The node's document key.
  String documentKey() const;

  /// Unique key to subnode, in the order of adding, as a copy of the caller's own: it stays as it
  /// is whatever happens to the group.
  OrderedMap<Ref<HXNode>> subnodesByUniqueKey() const { return subnodes_; }
  /// The same, for reading by who adds and removes nothing meanwhile.
  const OrderedMap<Ref<HXNode>>& subnodesInForce() const noexcept { return subnodes_; }
  /// The subnodes, in that order, as they are now.
  std::vector<Ref<HXNode>> subnodes() const;
  /// Null for an unknown key.
  HXNode* subnodeForKey(const String& uniqueKey) const;
  /// Those of the subnodes that are selected.
  std::vector<Ref<HXNode>> selectedNodes() const;
  /// Adds the node, taking it out of its present group first (this one included: its connections
  /// and publications end). A node that encloses this group, and a document, is refused with one
  /// line logged.
  ///
  /// A node whose key another subnode has (a copy of an opened document brings such nodes) takes
  /// that one's place, with one line logged: the other's publications and connections end, its
  /// removal is not announced.
  void addNode(HXNode& node);
  /// Why `addNode` refuses the node; empty when it takes it.
  HXRefusal whyNotAddNode(const HXNode& node) const;
  /// Why a node cannot come from its group into this one with what it is joined to: as for adding,
  /// and both groups have to be in the same document. Empty when it can.
  HXRefusal whyNotMoveNode(const HXNode& node) const;
  /// Unpublishes and disconnects every port of the node and takes it out. A node that is not in the
  /// group is ignored.
  void removeNode(HXNode* node);
  /// Puts the subnodes into the order given; those that are not named come after them, in the order
  /// that they have. Others than subnodes are passed over. Announces nothing, as no node comes or
  /// goes. Linear.
  void arrangeSubnodes(const std::vector<Ref<HXNode>>& order);
  /// Told by a subnode that may have become, or ceased to be, a view node.
  void subnodeViewTypeDidChange(HXNode& node);

  /// The published inner ports, in the order of publishing, as they are now.
  std::vector<Ref<HXSymbolicPort>> symbolicInputPorts() const;
  std::vector<Ref<HXSymbolicPort>> symbolicOutputPorts() const;
  /// The same (`HXSymbolicPort`), for reading by who publishes and unpublishes nothing meanwhile.
  const OrderedSet& symbolicInputPortsInForce() const noexcept {
    return symbolicPortsInForce(HXOrientationInput);
  }
  const OrderedSet& symbolicOutputPortsInForce() const noexcept {
    return symbolicPortsInForce(HXOrientationOutput);
  }
  /// Of a side.
  const OrderedSet& symbolicPortsInForce(std::int32_t orientation) const noexcept {
    return *symbolicPorts_[orientation];
  }
  /// Publishes the port under its own name; null when it is neither input nor output. It is not
  /// asked whether the port is published already.
  Ref<HXSymbolicPort> addSymbolicPortForPort(HXPort& port);
  /// Why that is null; empty when the port can be published.
  HXRefusal whyNotAddSymbolicPortForPort(const HXPort& port) const;
  /// Ends the publication of the port here and at every level above, and every connection of the
  /// port that it resolves to. A port that is null or not published is ignored.
  void removeSymbolicPortForPort(HXPort* port);
  /// The same for a published port, whose inner port may be gone, or know of another publication
  /// only; then it ends here and at the levels above, and breaks no connection of another port. One
  /// that this group does not publish is ignored.
  void removeSymbolicPort(HXSymbolicPort& symbolicPort);
  /// Publishes again under a symbolic port that was removed: the same object, with its name, of
  /// this group's node. One whose inner port is gone is ignored; one whose inner port is neither
  /// input nor output stands on neither side.
  void restoreSymbolicPort(HXSymbolicPort& symbolicPort);

  /// Puts the published ports of one side into the order given, as `arrangeSubnodes` does.
  void arrangePublications(std::int32_t orientation, const std::vector<Ref<HXSymbolicPort>>& order);

  bool isOpaque() const noexcept { return opaque_; }
  void setOpaque(bool opaque) { storeOpaque(opaque); }
  HXPoint canvasCenter() const noexcept { return canvasCenter_; }
  void setCanvasCenter(HXPoint center) { storeCanvasCenter(center); }

  /// Class-level: the device-side class.
  virtual const Symbol& processClassName() const;

  /// Forwarded to every subnode, with everything below it.
  void hierarchyWillChange();
  void hierarchyDidChange();
  void pruneInvalidConnections();

  String description() const override;
  void encodeWithCoder(Encoder& coder) const override;
  void initWithCoder(Decoder& coder) override;
  void awakeAfterDecoding(Decoder& coder) override;
  void abandonDecoding() override;

  static String hx_newUniqueKey();

 protected:
  struct Decoding {};
  explicit HXGroup(Decoding) noexcept;
  static Ref<Object> makeForDecoding(const Class&);
  template <class T, class... Args>
  friend Ref<T> make(Args&&... args);

  /// The group that is in force in place of this one: itself unless its node replaced it.
  HXGroup& inForce() noexcept;
  const HXGroup& inForce() const noexcept { return const_cast<HXGroup*>(this)->inForce(); }
  /// The node whose subnode group this is; null, other than `node`, once the node dropped it.
  HXNode* owner() const noexcept;
  void takeOver(HXGroup* group);
  /// Looks through the subnodes; of a subview group, at its views first.
  virtual bool hasViewNode() const;

  virtual bool isSubviewGroup() const noexcept { return false; }
  /// Steps that a subview group adds, on the group in force.
  virtual void didAddNode(HXNode& node);
  virtual void forgetNode(HXNode& node);
  virtual void viewTypeDidChange(HXNode& node);

 private:
  friend class HXNode;
  friend struct HXGroupFields;
  void hx_addSymbolicPort(HXSymbolicPort& symbolicPort, HXPort& toPort);
  /// The group that holds the publication; the asked one when none does.
  static HXGroup* holderOf(const HXSymbolicPort& symbolicPort, HXGroup& asked);
  void unpublish(HXPort& port, HXSymbolicPort& symbolicPort);
  void endDeepPublications(HXPort& port);
  /// Ends the publications and connections of the ports.
  void withdraw(const std::vector<Ref<HXPort>>& ports);
  /// The subnode goes without a notice of its removal, since another one takes its place.
  void displace(HXNode& node);
  /// The subnode is none any more.
  void release(HXNode& node);
  /// A subview group that has lost its last view becomes a plain one.
  static void endViewGroupWithoutViews(HXGroup& group);
  /// Logs one line when it may not.
  bool mayHold(const HXNode& node) const;
  /// Whether the node holds this group, or a node that does.
  bool isInside(const HXNode& node) const;
  void settlePublications(OrderedSet& ports);
  static void breakCircle(HXSymbolicPort& symbolicPort);

  // All changes of the fields, but for what is read from an archive before the group is awake. They
  // announce nothing.
  void insertSubnode(const Ref<HXNode>& node);
  void takeSubnode(const String& uniqueKey);
  void storeSubnodes(OrderedMap<Ref<HXNode>> subnodes);
  void insertPublication(std::int32_t orientation, HXSymbolicPort& symbolicPort);
  /// From whichever side it stands on.
  void removePublication(const HXSymbolicPort& symbolicPort);
  /// The change of the node's entry was exchanged.
  void relink(HXNode& node, bool came);
  void storePublications(std::int32_t orientation, const OrderedSet& symbolicPorts);
  void storeOrder(const std::vector<Ref<HXNode>>& subnodes);
  void storeOrder(std::int32_t orientation, std::vector<Ref<Object>> symbolicPorts);
  void storeOpaque(bool opaque);
  void storeCanvasCenter(HXPoint center);

  OrderedMap<Ref<HXNode>> subnodes_;
  BySide<Ref<OrderedSet>> symbolicPorts_;
  String uniqueKey_;
  WeakRef<HXNode> node_;
  WeakRef<HXNode> formerNode_;  // set once the node has replaced this group
  HXPoint canvasCenter_;
  bool opaque_ = false;
  std::vector<Ref<HXNode>> decodedSubnodes_;
};

}  // namespace tarnkit
