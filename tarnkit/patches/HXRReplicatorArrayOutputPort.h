#pragma once

#include "tarnkit/patches/HXRTypedPorts.h"

namespace tarnkit {

/// What the replicator's array output needs of the editor port that it collects. Implemented by the
/// editor's patch ports; it stands here so that definitions know nothing of the model.
class HXRCollectedPort : public Object {
 public:
  /// The name of the port's symbolic port; nil when it has none.
  virtual String symbolicPortName() const = 0;
};

/// The array output that collects one port over all copies that a replicator makes.
///
/// Owned by the replicator's definition; it keeps the collected editor port alive. For one thread.
class HXRReplicatorArrayOutputPort final
    : public detail::PortOf<HXRReplicatorArrayOutputPort, HXRArrayOutputPort> {
 public:
  static const HXRPortClass kClass;
  /// Named after the symbolic port of `port` (of null, the name is nil).
  HXRReplicatorArrayOutputPort(Ref<HXRCollectedPort> port, String uniqueKey);

  /// The editor port whose values the output collects.
  const Ref<HXRCollectedPort>& port() const noexcept { return port_; }
  /// Keeps the name.
  void setPort(Ref<HXRCollectedPort> port) noexcept { port_ = std::move(port); }

 private:
  Ref<HXRCollectedPort> port_;
};

}  // namespace tarnkit
