#pragma once

#include "tarnkit/model/HXPort.h"

namespace tarnkit {

/// A published port: stands on a group node for a port inside the group (a patch port, or another
/// symbolic port one level further in), under a name of its own.
///
/// It has no connections: whatever is joined to it is connected to the port it resolves to. Owned
/// by the group that publishes. Refers weakly to the inner port: once that is gone it resolves to
/// nothing and refuses every connection.
class HXSymbolicPort final : public HXPort {
  TARNKIT_CLASS
 public:
  HXSymbolicPort(HXPort* port, HXNode* node, std::int32_t orientation,
                 std::int32_t connectionRelationship);

  /// The inner port that this one publishes; null once gone.
  HXPort* port() const noexcept { return port_.get(); }
  /// Announces nothing, but for a replicator whose array output collects another port with it. A
  /// port that stands for this one, by way of others or itself, is refused with one line logged.
  /// The earlier one is published by this port no more; the new one is, as long as a group
  /// publishes by this port and the new one is published by no other.
  void setPort(HXPort* port);

  /// "Symbolic.%@.%@" with the keys of the inner port's node and of the inner port.
  String uniqueKey() const override;
  String name() const override { return name_; }
  /// Stores the name, tells the node and announces it, even when it did not change: the node's port
  /// groups follow the names.
  void setName(String name);
  /// The key of the node's port group that shows this port: the name before its first ":", or
  /// "Published" when it has none.
  const String& groupKey() const;

  bool isHeld() const override;
  bool canConnectToPort(const HXPort* other) const override;
  RGBA defaultColor() const override;

  void encodeWithCoder(Encoder& coder) const override;
  void initWithCoder(Decoder& coder) override;

 private:
  friend struct HXSymbolicPortFields;
  void announceName();

  friend class HXGroup;
  HXSymbolicPort() noexcept = default;
  static Ref<Object> makeForDecoding(const Class&);
  template <class T, class... Args>
  friend Ref<T> make(Args&&... args);

  /// Whether the chain below is known to end; of use while a document is opened.
  enum class Chain : std::uint8_t { unknown, walked, ends };

  // All changes of the fields, but for what is read from an archive.
  void storePort(HXPort* port);
  void storeName(String name);
  /// As `setName`, of a port that was just made.
  void giveFirstName(String name);
  void nameWasSet();

  WeakRef<HXPort> port_;
  String name_;
  mutable String groupKey_;  // nil: to be derived from the name
  // The unique key as last made, and the two keys that it was made of.
  mutable String uniqueKey_;
  mutable String keyOfNode_;
  mutable String keyOfPort_;
  Chain chain_ = Chain::unknown;
};

}  // namespace tarnkit
