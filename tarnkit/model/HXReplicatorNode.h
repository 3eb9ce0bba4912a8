#pragma once

#include "tarnkit/model/HXNode.h"
#include "tarnkit/platform/collections/IdentityMap.h"

namespace tarnkit {

/// Posted by a replicator, in a document or not, with "Node", "ResolvedPortNodeKeyPath" (keys of
/// the nodes from the replicator's subnode down to the port's node), "ResolvedPortKey" and
/// "ReplicatorOutputPortKey".
inline constinit const Symbol HXReplicatorNodeAddOutputPortNotification{
    "HXReplicatorNodeAddOutputPortNotification"};
/// Posted by a replicator, in a document or not, with "Node" and "ReplicatorOutputPortKey".
inline constinit const Symbol HXReplicatorNodeRemoveOutputPortNotification{
    "HXReplicatorNodeRemoveOutputPortNotification"};

/// The node of the Replicator patch: makes copies of its subnodes on the device, and collects every
/// published inner port that takes many connections over all copies, in an array output of its own.
///
/// The array outputs belong to the node's definition; the node keeps which inner port each stands
/// for, so that their keys survive a change of patch, a save and an opening. They end with the
/// publications that they stand for: one by one, or all with the subnode group, when a patch is set
/// that holds no nodes.
class HXReplicatorNode final : public HXNode {
  TARNKIT_CLASS
 public:
  HXReplicatorNode() = default;

  /// From each published inner port to the unique key of its array output, as a copy of the
  /// caller's own.
  IdentityMap<HXPort, String> replicatorArrayOutputPortKeyForPort() const {
    return arrayOutputKeys_;
  }

  /// Has the published inner ports collected by array outputs of those keys, in that order, instead
  /// of the keys that were drawn when they were published. What is not published by this node, or
  /// takes one connection only, is passed over; of a port that is not named nothing is collected.
  /// Where that changes anything the present array outputs end, with what hangs on them.
  void setArrayOutputs(const IdentityMap<HXPort, String>& keys);

  HXPort* collectingPort(const HXPort& port) const override;
  void symbolicPortNameDidChange(HXSymbolicPort& symbolicPort) override;
  void symbolicPortNameWasAdded(HXPort& port) override;
  void symbolicPortNameWasRemoved(HXPort& port, HXSymbolicPort& symbolicPort) override;
  /// The array output stays, with its key and connections, and collects the other port. It is
  /// announced to go from a port of a subnode, and to come to one.
  void symbolicPortWasPointed(HXSymbolicPort& symbolicPort, HXPort* earlier) override;

  void encodeWithCoder(Encoder& coder) const override;
  void initWithCoder(Decoder& coder) override;
  void awakeAfterDecoding(Decoder& coder) override;
  void abandonDecoding() override;

 protected:
  const Symbol& deviceClassName() const override;
  void willSetPatch(const Ref<HXRNode>& patch) override;
  void didSetPatch() override;
  void didDropSubnodeGroup() override;

 private:
  explicit HXReplicatorNode(Decoding decoding) noexcept : HXNode(decoding) {}
  static Ref<Object> makeForDecoding(const Class&);
  template <class T, class... Args>
  friend Ref<T> make(Args&&... args);

  static bool hx_shouldMatchPortWithArrayOutputPort(const HXPort& port);
  Ref<HXRPort> hx_replicatorArrayOutputPortForPort(const HXPort& port) const;
  void addArrayOutput(HXRNode& patch, HXPort& port, const String& key) const;
  /// Whether it is collected still when all who observe that were told.
  bool collect(const Ref<HXPort>& port, const String& key);
  /// Takes away the array output that stands for the port, if there is one.
  void endArrayOutput(HXPort& port);
  void hx_hideSymbolicOutputPortGroups();
  /// The array output that stands for the port, if there is one, is told so.
  void followCollectedPort(const Ref<HXPort>& port) const;
  bool isOfSubnode(const HXPort& port) const;
  std::vector<String> hx_keyPathForNode(const HXNode* node) const;

  friend struct HXReplicatorNodeFields;
  void announceAddedOutput(const HXPort& port, const String& key);
  void announceRemovedOutput(const String& key);

  IdentityMap<HXPort, String> arrayOutputKeys_;
};

}  // namespace tarnkit
