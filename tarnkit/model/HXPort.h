#pragma once

#include <cstdint>

#include "tarnkit/model/HXConnectionSet.h"
#include "tarnkit/model/HXNotifications.h"
#include "tarnkit/patches/HXRReplicatorArrayOutputPort.h"
#include "tarnkit/patches/Orientation.h"
#include "tarnkit/patches/RGBA.h"
#include "tarnkit/platform/coding/Coder.h"
#include "tarnkit/platform/objects/PassKey.h"

namespace tarnkit {

class HXGroup;
class HXNode;
class HXRefusal;
class HXSymbolicPort;

/// Posted by a port whose symbolic port was set; no further user info than "Port".
inline constinit const Symbol HXPortDidAddSymbolicReferenceNotification{
    "HXPortDidAddSymbolicReferenceNotification"};
/// Posted by a port before its symbolic port is cleared; no further user info than "Port".
inline constinit const Symbol HXPortDidRemoveSymbolicReferenceNotification{
    "HXPortDidRemoveSymbolicReferenceNotification"};
/// Posted with "Name" when a port's name has changed (and by every rename of a published port).
inline constinit const Symbol HXPortNameDidChangeNotification{"HXPortNameDidChangeNotification"};

/// A connection point on a node: abstract. It knows its node, its orientation, how many connections
/// it takes, and the symbolic port (if any) that publishes it on the enclosing group.
///
/// Owned by its node (patch ports) or by the group that publishes (symbolic ports); all references
/// from here are weak. Notifications carry "DocumentKey" and "Port", and are posted only while the
/// port is in a document. For one thread.
class HXPort : public HXRCollectedPort {
 public:
  static const Class kClass;

  /// The owning node; null once gone.
  HXNode* node() const noexcept { return node_.get(); }
  /// Leaves alone, with one line logged, a port that its node, or the group that publishes, holds.
  void setNode(HXNode* node);
  void linkNode(HXNode* node, PassKey<HXNode>) noexcept;
  void linkNode(HXNode* node, PassKey<HXGroup>);
  std::int32_t orientation() const noexcept { return orientation_; }
  std::int32_t connectionRelationship() const noexcept { return connectionRelationship_; }
  /// The port that publishes this one; null when none does.
  HXSymbolicPort* symbolicPort() const noexcept;
  /// Announces an addition, or a removal (before it happens); replacing one symbolic port by
  /// another announces the addition only. Of null, a publication by a group ends as
  /// `HXGroup::removeSymbolicPortForPort` ends it. A symbolic port that stands for another port is
  /// refused with one line logged.
  void setSymbolicPort(HXSymbolicPort* symbolicPort);
  /// Announces the same.
  void linkSymbolicPort(HXSymbolicPort* symbolicPort, PassKey<HXGroup>) {
    exchangeSymbolicPort(symbolicPort);
  }
  /// Announces nothing.
  void linkSymbolicPort(HXSymbolicPort* symbolicPort, PassKey<HXSymbolicPort>) noexcept {
    storeSymbolicPort(symbolicPort);
  }

  /// The port that carries the value: this one, or the one at the end of the chain of ports that a
  /// published port stands for; null when a link is missing. Costs the length of the chain.
  HXPort* resolvedPort() noexcept { return const_cast<HXPort*>(endOfChain()); }
  const HXPort* resolvedPort() const noexcept { return endOfChain(); }

  /// Nil while the node is in no document.
  String documentKey() const;
  /// The key under which the node finds the port.
  virtual String uniqueKey() const = 0;
  virtual String name() const = 0;
  /// The name after its first ":", untrimmed, or all of it when there is none.
  String displayName() const;

  /// The connections; none for ports that hold none themselves.
  virtual HXConnectionSet connections() const;
  /// Whether the port takes a connection with the other (a published one stands for what it
  /// resolves to).
  virtual bool canConnectToPort(const HXPort* other) const = 0;
  /// Why it does not; empty when it does.
  HXRefusal whyNotConnectToPort(const HXPort* other) const;
  virtual bool acceptsNewConnections() const;
  /// Records the connection; false when the port refuses it. A port of relationship one refuses a
  /// second connection and keeps the first; one of relationship many keeps one entry for a
  /// connection given twice, and announces it twice; any other refuses.
  bool connectConnection(HXConnection& connection);
  /// Forgets the connection; false when the port does not hold it.
  bool disconnectConnection(HXConnection& connection);
  /// Drops connections one of whose display ports is gone; announces nothing.
  virtual void pruneInvalidConnections();
  virtual RGBA defaultColor() const;

  /// The name of the port that publishes this one; nil when none does.
  String symbolicPortName() const override;

  void encodeWithCoder(Encoder& coder) const override;
  void initWithCoder(Decoder& coder) override;
  void awakeAfterDecoding(Decoder& coder) override;

 protected:
  HXPort() noexcept = default;
  HXPort(HXNode* node, std::int32_t orientation, std::int32_t connectionRelationship);

  /// Whether the node holds the port, or the node's group publishes by it.
  virtual bool isHeld() const = 0;
  /// The two halves of connecting and disconnecting: what changes, and what is announced of it.
  virtual bool takeConnection(HXConnection& connection);
  virtual bool dropConnection(HXConnection& connection);
  virtual void hx_fireDidConnectNotification(HXConnection& connection);
  virtual void hx_fireDidDisconnectNotification(HXConnection& connection);

 private:
  friend class HXDocument;
  friend struct HXPortFields;
  void announceSymbolicReference(bool isPublished);
  const HXPort* endOfChain() const noexcept;
  void exchangeSymbolicPort(HXSymbolicPort* symbolicPort);
  /// All changes of the field, but for what is read from an archive.
  void storeSymbolicPort(HXSymbolicPort* symbolicPort);

  WeakRef<HXNode> node_;
  WeakRef<HXSymbolicPort> symbolicPort_;
  std::int32_t orientation_ = 0;
  std::int32_t connectionRelationship_ = 0;
};

}  // namespace tarnkit
