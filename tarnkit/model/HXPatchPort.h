#pragma once

#include "tarnkit/model/HXPort.h"
#include "tarnkit/patches/HXRPort.h"
#include "tarnkit/patches/PMRPrimitive.h"

namespace tarnkit {

class HXNodeSync;

/// Posted with "Connection" after a connection was added.
inline constinit const Symbol HXPortDidConnectNotification{"HXPortDidConnectNotification"};
/// Posted with "Connection" after a connection was removed.
inline constinit const Symbol HXPortDidDisconnectNotification{"HXPortDidDisconnectNotification"};
/// Posted with "StaticValue" (the null object for none).
inline constinit const Symbol HXPatchPortStaticValueDidChangeNotification{
    "HXPatchPortStaticValueDidChangeNotification"};
/// Posted with "EffectiveValue" (the null object for none).
inline constinit const Symbol HXPatchPortEffectiveValueDidChangeNotification{
    "HXPatchPortEffectiveValueDidChangeNotification"};

/// A real port of a patch node: wraps one port description of the patch definition, holds the
/// port's connections and, for value inputs, the static value that the user typed. Owned by its
/// node.
class HXPatchPort final : public HXPort {
  TARNKIT_CLASS
 public:
  HXPatchPort(HXNode* node, std::int32_t orientation, std::int32_t connectionRelationship);

  /// The description as this node's definition holds it for itself; null before the first
  /// synchronisation. Asking for it ends the definition's sharing of its layout: to read, use
  /// `definition`.
  HXRPort* patchPort();
  /// The description in force, maybe shared with other nodes; for reading.
  const HXRPort* definition() const noexcept { return patchPort_.get(); }
  /// A port that its node holds takes no description of another key: such a one, and null, is
  /// refused with one line logged.
  void setPatchPort(Ref<HXRPort> patchPort);
  void linkPatchPort(const Ref<HXRPort>& patchPort, PassKey<HXNodeSync>) noexcept {
    patchPort_ = patchPort;
  }

  String uniqueKey() const override;
  String name() const override;
  HXConnectionSet connections() const override { return connections_; }
  bool canConnectToPort(const HXPort* other) const override;
  /// Always while it has no connection; then only when it takes many.
  bool acceptsNewConnections() const override;
  /// Puts the connections into the order given; those that are not named come after them. Others
  /// than the port's are passed over. Announces nothing, as none comes or goes. Linear.
  void arrangeConnections(const std::vector<Ref<HXConnection>>& order);
  void pruneInvalidConnections() override;
  RGBA defaultColor() const override;

  /// Whether the description is exactly a value input, or any primitive input.
  bool supportsStaticValue() const;
  /// The default of a primitive input; null otherwise or when it has none.
  Ref<PMRPrimitive> defaultValue() const;
  const Ref<PMRPrimitive>& staticValue() const noexcept { return staticValue_; }
  /// Announces the new static value unless it is the same object, and the effective value when that
  /// is not equal to the earlier one.
  void setStaticValue(Ref<PMRPrimitive> value);
  /// The static value, or else the default.
  Ref<PMRPrimitive> effectiveValue() const;

  void encodeWithCoder(Encoder& coder) const override;
  void initWithCoder(Decoder& coder) override;
  /// Lets go, with one line logged, of connections that end at other ports.
  void awakeAfterDecoding(Decoder& coder) override;
  void abandonDecoding() override;

 private:
  friend struct HXPatchPortFields;
  HXPatchPort() noexcept = default;
  static Ref<Object> makeForDecoding(const Class&);
  template <class T, class... Args>
  friend Ref<T> make(Args&&... args);
  bool isHeld() const override;
  bool takeConnection(HXConnection& connection) override;
  bool dropConnection(HXConnection& connection) override;
  void hx_fireDidConnectNotification(HXConnection& connection) override;
  void hx_fireDidDisconnectNotification(HXConnection& connection) override;

  // All changes of the fields, but for what is read from an archive.
  void insertConnection(HXConnection& connection);
  bool removeConnection(HXConnection& connection);
  void storeStaticValue(Ref<PMRPrimitive> value);
  void announceStaticValue();
  void announceEffectiveValue(const Ref<PMRPrimitive>& earlier);

  Ref<HXRPort> patchPort_;
  HXConnectionSet connections_;
  Ref<PMRPrimitive> staticValue_;
};

}  // namespace tarnkit
