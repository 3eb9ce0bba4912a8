#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "tarnkit/model/HXGroup.h"
#include "tarnkit/model/HXNodeSync.h"
#include "tarnkit/model/HXNotifications.h"
#include "tarnkit/patches/BySide.h"
#include "tarnkit/patches/HXRNode.h"
#include "tarnkit/platform/coding/Coder.h"
#include "tarnkit/platform/objects/PassKey.h"

namespace tarnkit {

class HXDocument;
class HXParameter;
class HXPatchPort;
class HXPort;
class HXPortGroup;
class HXPortGroupCollection;
class HXSymbolicPort;
class KeyCounter;

/// Posted by a node with "Node" and "Name", the new name.
inline constinit const Symbol HXNodeNameDidChangeNotification{"HXNodeNameDidChangeNotification"};
/// Posted by a node with "Node".
inline constinit const Symbol HXNodePositionDidChangeNotification{
    "HXNodePositionDidChangeNotification"};
inline constinit const Symbol HXNodeSelectionDidChangeNotification{
    "HXNodeSelectionDidChangeNotification"};
/// Posted by a node with "Node", "OldGroup" and "NewGroup".
inline constinit const Symbol HXNodeSubnodeGroupDidChangeNotification{
    "HXNodeSubnodeGroupDidChangeNotification"};
/// Posted by a node, while it follows its definition, with "Node" and "Port".
inline constinit const Symbol HXNodeAddPortNotification{"HXNodeAddPortNotification"};
inline constinit const Symbol HXNodeRemovePortNotification{"HXNodeRemovePortNotification"};
/// Likewise with "Node" and "PortGroup".
inline constinit const Symbol HXNodeAddPortGroupNotification{"HXNodeAddPortGroupNotification"};
inline constinit const Symbol HXNodeRemovePortGroupNotification{
    "HXNodeRemovePortGroupNotification"};
/// Likewise with "Node" and "Parameter".
inline constinit const Symbol HXNodeAddParameterNotification{"HXNodeAddParameterNotification"};
inline constinit const Symbol HXNodeRemoveParameterNotification{
    "HXNodeRemoveParameterNotification"};

/// One box of the patch graph: a patch definition placed in a group, with a name, a position, ports
/// in port groups, parameters and, for containers, a subnode group.
///
/// The node owns all of these and its definition; it is owned by its parent group, which it refers
/// to weakly. It keeps itself in step with its definition from `setPatch` on, keeping what the user
/// made wherever a key survives: what that means, and what holds while observers edit, is the
/// manual of `HXNodeSync`, the part of the node that does it. While it is in no document it
/// announces nothing. For one thread. Setters and look-ups take constant time; in a document, an
/// observed change also climbs to the document.
///
/// Two sources: HXNode.cpp edits, HXNodeCoding.cpp archives. Operations with the prefix `hx_` are
/// private (see HXModel.h).
class HXNode : public HXRNodeOwner, private HXNodeSync {
  TARNKIT_CLASS
 public:
  /// A new key, no name, no patch, no ports.
  HXNode();
  ~HXNode() override;
  /// A node of the class of that name (`HXNode` or a kind of it, but no document); null for
  /// another.
  static Ref<HXNode> makeOfClass(std::string_view className);
  /// A node of the class that goes with the patch (a replicator for the Replicator, …) and with a
  /// fresh definition, as an editor places it; null for a patch class that makes no definitions or
  /// whose node class is not there.
  static Ref<HXNode> makeForPatch(const HXRNodeClass& patchClass);

  /// "node_%i".
  const String& uniqueKey() const noexcept { return uniqueKey_; }
  /// Nil until set or taken from the first patch.
  const String& name() const noexcept { return name_; }
  void setName(String name);
  HXPoint position() const noexcept { return position_; }
  void setPosition(HXPoint position);
  bool selected() const noexcept { return selected_; }
  void setSelected(bool selected);
  /// The index of the inspector panel that the editor showed last; setting it announces nothing.
  std::uint64_t inspectorPanel() const noexcept { return rarities().inspectorPanel; }
  void setInspectorPanel(std::uint64_t panel);
  /// What somebody has noted about the node, for other people; nil for nothing. Nobody acts on it
  /// and setting it announces nothing; archives hold it only where there is one.
  const String& comment() const noexcept { return rarities().comment; }
  void setComment(String comment);
  /// The view colour for a node with a subview group, otherwise the patch class's colour.
  RGBA defaultColor() const;

  // Place in the document.

  HXGroup* parentGroup() const noexcept { return parentGroup_.get(); }
  /// Adds the node to the group, as `HXGroup::addNode` does; null: takes it out of its own.
  void setParentGroup(HXGroup* group);
  /// Who is told of a new parent group: the parameters of the node and of everything below, or of
  /// the node alone when what is below stays where it is; nobody while a document is opened.
  enum class Told : std::uint8_t { everythingBelow, itself, nobody };
  void linkParentGroup(HXGroup* group, Told told, PassKey<HXGroup>) {
    enterGroup(group, told, Recorded::byItself);
  }
  /// By a group that holds the node right after, or (null) no longer holds it.
  void linkHolder(HXGroup* group, PassKey<HXGroup>) {
    enterGroup(group, Told::everythingBelow, Recorded::withItsEntry);
  }
  /// The node is in the group again, or no longer: the change of the group's entry was exchanged.
  void followEntry(HXGroup& group, bool came, PassKey<HXGroup>) noexcept;
  /// The node whose subnode group holds this one; null at the top.
  HXNode* enclosingNode() const noexcept;
  /// Null while the node is in no document. Costs the depth.
  HXDocument* document() const noexcept;
  /// The document that the node is; null for every other node.
  virtual HXDocument* asDocument() noexcept { return nullptr; }
  /// Nil while the node is in no document.
  virtual String documentKey() const;
  /// This node's key, then those of the nodes that enclose it, the document's last; empty before
  /// the node's place was first set.
  std::vector<String> keyPath() const;
  /// Forwarded to the parameters and to everything below.
  void hierarchyWillChange();
  void hierarchyDidChange();
  /// Every port of the node and of everything below drops the connections that lost a display port.
  void pruneInvalidConnections();

  // Subnodes.

  /// Null while the node has none.
  const Ref<HXGroup>& subnodeGroup() const noexcept { return subnodeGroup_; }
  bool forceAllowsSubnodes() const noexcept { return forceAllowsSubnodes_; }
  /// Gives the node a subnode group whatever its patch allows, or takes it away again.
  void setForceAllowsSubnodes(bool force);
  virtual bool hx_forceAllowsSubnodes() const { return forceAllowsSubnodes_; }
  /// Whether the device shows the node as a view: its patch is a view patch, or it has view nodes.
  /// A node of an unknown patch is a view as long as it stands among its group's views.
  virtual bool shouldBeTreatedAsViewNode() const;
  /// Replace the subnode group by one of the other class that takes over its nodes, or give the
  /// node one when it has none; nothing when it is of that class already.
  void swapSubnodeGroupToGroup();
  void swapSubnodeGroupToViewGroup();
  /// The same without telling the parent group, which tells itself.
  void convertSubnodeGroup(bool toViewGroup, PassKey<HXGroup>) {
    exchangeSubnodeGroup(makeSubnodeGroup(toViewGroup));
  }

  // Ports.

  const Ref<HXPortGroupCollection>& inputPortGroupCollection() const noexcept {
    return sides_[HXOrientationInput].collection;
  }
  const Ref<HXPortGroupCollection>& outputPortGroupCollection() const noexcept {
    return sides_[HXOrientationOutput].collection;
  }
  /// Null for an unknown key.
  HXPortGroup* inputPortGroupForKey(const String& key) const {
    return portGroupForKey(key, HXOrientationInput);
  }
  HXPortGroup* outputPortGroupForKey(const String& key) const {
    return portGroupForKey(key, HXOrientationOutput);
  }
  /// Null for another orientation than input and output, too.
  HXPortGroup* portGroupForKey(const String& key, std::int32_t orientation) const;
  /// The groups in the collection's order.
  std::vector<Ref<HXPortGroup>> inputPortGroups() const { return portGroups(HXOrientationInput); }
  std::vector<Ref<HXPortGroup>> outputPortGroups() const { return portGroups(HXOrientationOutput); }
  /// None for another orientation than input and output.
  std::vector<Ref<HXPortGroup>> portGroups(std::int32_t orientation) const;
  /// The groups of a side by key, those that its collection leaves out too; for reading by who
  /// changes neither the node nor its definition meanwhile.
  const OrderedMap<Ref<HXPortGroup>>& portGroupsInForce(std::int32_t orientation) const noexcept {
    return sides_[orientation].groups;
  }
  /// The node's own ports, hidden ones too, by unique key, as a copy of the caller's own.
  OrderedMap<Ref<HXPatchPort>> portsByUniqueKey() const;
  /// The same, for reading by who changes neither the node nor its definition meanwhile.
  const OrderedMap<Ref<HXPatchPort>>& portsInForce() const noexcept { return portsByUniqueKey_; }
  /// The own port of the key, else the first published input, else the first published output of
  /// the key; null when there is none. An own port costs one look-up, a published one a walk over
  /// the node's published ports.
  HXPort* portForKey(const String& key) const;
  /// The shown ports: in the order of the groups, hidden groups left out.
  std::vector<Ref<HXPort>> inputPorts() const { return shownPorts(HXOrientationInput); }
  std::vector<Ref<HXPort>> outputPorts() const { return shownPorts(HXOrientationOutput); }
  /// Inputs, then outputs.
  std::vector<Ref<HXPort>> ports() const;
  /// The subnode group's published ports, as they are now; empty without one.
  std::vector<Ref<HXSymbolicPort>> symbolicInputPorts() const;
  std::vector<Ref<HXSymbolicPort>> symbolicOutputPorts() const;
  /// The same, for reading by who publishes and unpublishes nothing meanwhile.
  const OrderedSet& symbolicInputPortsInForce() const noexcept {
    return symbolicPortsInForce(HXOrientationInput);
  }
  const OrderedSet& symbolicOutputPortsInForce() const noexcept {
    return symbolicPortsInForce(HXOrientationOutput);
  }
  /// Of a side.
  const OrderedSet& symbolicPortsInForce(std::int32_t orientation) const noexcept;
  /// The port of this node that collects the published inner port; null when none does.
  virtual HXPort* collectingPort(const HXPort& port) const;

  // Parameters.

  /// Key to parameter, in order, as a copy of the caller's own: it stays as it is whatever happens
  /// to the node, and the other way round. Parameters that the definition no longer has are kept.
  OrderedMap<Ref<HXParameter>> parameters() const;
  /// The same, for reading by who changes neither the node nor its definition meanwhile.
  const OrderedMap<Ref<HXParameter>>& parametersInForce() const noexcept { return parameters_; }
  HXParameter* parameterForKey(const String& key) const;
  /// Told by a parameter whose value has changed; passes it on to the definition.
  void parameterDidChange(HXParameter& parameter);

  // The definition.

  /// Null while there is none, and for a node of an unknown patch.
  Ref<HXRNode> patch() const noexcept { return isOfUnknownPatch() ? nullptr : patch_; }
  /// Takes the definition (null: none) and brings name, subnode group, parameters, port groups and
  /// ports in line with it; the same definition synchronises again.
  void setPatch(const Ref<HXRNode>& patch);
  /// The class name of the patch as archived, when that class is known to nobody; nil otherwise.
  /// Such a node keeps everything it was read with until a patch is set, and writes the name back.
  /// Which of its groups shows which port is not known: the first one of either side that is not
  /// hidden shows them all.
  const String& unknownPatchClass() const noexcept { return rarities().unknownPatchClass; }
  /// The class of the patch; the root definition class without one.
  const HXRNodeClass& patchClass() const noexcept;

  // Told by the definition.
  bool holdsPatch(const HXRNode& definition) const noexcept override {
    return patch_ == &definition;
  }
  Ref<Object> patchWillChange(HXRNode& definition) override;
  void addPatchPort(HXRPort& port) override;
  void removePatchPort(HXRPort& port) override;
  void addPatchParameter(HXRParameter& parameter) override;
  void removePatchParameter(HXRParameter& parameter) override;
  void patchPortNameDidChange(HXRPort& port) override;
  void patchLayoutWasCopied() override;
  void patchRebuildWillBegin(HXRNode& definition) override;
  void patchRebuildDidEnd(HXRNode& definition) override;

  // Told by symbolic ports and by the subnode group: the port groups follow the published names.
  virtual void symbolicPortNameDidChange(HXSymbolicPort& symbolicPort);
  /// With the inner port; of a removal also the symbolic port, which the inner port has lost
  /// already.
  virtual void symbolicPortNameWasAdded(HXPort& port);
  virtual void symbolicPortNameWasRemoved(HXPort& port, HXSymbolicPort& symbolicPort);
  /// Told by a published port that stands for another inner port now than `earlier` (null: none).
  virtual void symbolicPortWasPointed(HXSymbolicPort& symbolicPort, HXPort* earlier);

  String description() const override;
  void encodeWithCoder(Encoder& coder) const override;
  void initWithCoder(Decoder& coder) override;
  void awakeAfterDecoding(Decoder& coder) override;
  void abandonDecoding() override;

  static String hx_newUniqueKey();

 protected:
  struct Decoding {};
  explicit HXNode(Decoding) noexcept;
  static Ref<Object> makeForDecoding(const Class&);
  template <class T, class... Args>
  friend Ref<T> make(Args&&... args);

  /// The steps of `setPatch`, for kinds of nodes that add to them.
  virtual void willSetPatch(const Ref<HXRNode>& patch);
  virtual void didSetPatch();
  /// Told when the subnode group has gone, and what it published with it, since neither the patch
  /// nor `forceAllowsSubnodes` allows one any more.
  virtual void didDropSubnodeGroup();
  /// The device-side class name of the kind of node.
  virtual const Symbol& deviceClassName() const;

 private:
  // The parts of a node that follow for it.
  friend class HXNodeSync;
  friend class HXPortGroupSync;
  friend struct HXNodeFields;
  friend class HXChangeRecorder;

  struct Side {
    Ref<HXPortGroupCollection> collection;
    OrderedMap<Ref<HXPortGroup>> groups;  // by key
  };
  // What few nodes have.
  struct Rarities {
    String comment;
    String unknownPatchClass;
    std::uint64_t inspectorPanel = 0;
  };
  static const Rarities kNoRarities;
  const Rarities& rarities() const noexcept { return rarities_ ? *rarities_ : kNoRarities; }
  /// Sets one of them; what few nodes have is not made for a value that the others have.
  template <class Value>
  void storeRarity(Value Rarities::*member, Value value);
  bool isOfUnknownPatch() const noexcept {
    return rarities_ && !rarities_->unknownPatchClass.isNil();
  }

  void init();
  static KeyCounter& keyCounter() noexcept;
  void hx_swapSubnodeGroupToGroup(const Ref<HXGroup>& group);
  void announceName();
  void announcePosition();
  void announceSelection();
  void announceSubnodeGroup(const Ref<HXGroup>& earlier);
  /// A group of the other class that takes over the present one.
  Ref<HXGroup> makeSubnodeGroup(bool ofViews) const;
  /// The swap without telling the parent group.
  void exchangeSubnodeGroup(const Ref<HXGroup>& group);
  enum class Recorded : std::uint8_t { byItself, withItsEntry };
  void enterGroup(HXGroup* group, Told told, Recorded recorded);
  /// Tells the parameters of this node only.
  void tellParametersHierarchyWillChange();
  void tellParametersHierarchyDidChange();
  std::vector<Ref<HXPort>> shownPorts(std::int32_t orientation) const;
  void hx_decodePatchWithCoder(Decoder& coder);
  /// A definition with the ports and port groups that the node was read with.
  Ref<HXRNode> makeStandIn() const;
  void decodeParameters(Decoder& coder);

  // All changes of the fields, but for what is read from an archive before the node is awake. They
  // announce nothing; `take` and `storeSubnodeGroup` return what stood there.
  void storeName(String name);
  void storePosition(HXPoint position);
  void storeSelected(bool selected);
  void storeInspectorPanel(std::uint64_t panel);
  void storeComment(String comment);
  void storeForceAllowsSubnodes(bool force);
  void storeParentGroup(HXGroup* group);
  /// Becomes the group's node.
  Ref<HXGroup> storeSubnodeGroup(Ref<HXGroup> group);
  void exchangeLinks(const Ref<HXGroup>& group);
  /// Known, or the stand-in of an unknown one.
  void storePatch(Ref<HXRNode> patch, String unknownPatchClass);
  void insertParameter(const String& key, const Ref<HXParameter>& parameter);
  Ref<HXParameter> takeParameter(const String& key);
  void insertPort(const String& key, const Ref<HXPatchPort>& port);
  Ref<HXPatchPort> takePort(const String& key);
  void storePorts(OrderedMap<Ref<HXPatchPort>> ports);
  void insertPortGroup(std::int32_t orientation, const Ref<HXPortGroup>& group);
  Ref<HXPortGroup> takePortGroup(std::int32_t orientation, const String& key);
  void storePortGroups(std::int32_t orientation, OrderedMap<Ref<HXPortGroup>> groups);
  void storePortGroupsSettled(bool settled);

  // First, right behind the last of the base.
  bool forceAllowsSubnodes_ : 1 = false;
  bool selected_ : 1 = false;
  bool hasKeyPath_ : 1 = false;
  bool isRecorded_ : 1 = false;     // a document
  bool mayBeRecorded_ : 1 = false;  // it may have left a document that is
  String uniqueKey_;
  String name_;
  BySide<Side> sides_;
  OrderedMap<Ref<HXPatchPort>> portsByUniqueKey_;
  OrderedMap<Ref<HXParameter>> parameters_;
  WeakRef<HXGroup> parentGroup_;
  Ref<HXGroup> subnodeGroup_;
  Ref<HXRNode> patch_;  // the stand-in of an unknown patch
  std::unique_ptr<Rarities> rarities_;
  HXPoint position_;
};

}  // namespace tarnkit
