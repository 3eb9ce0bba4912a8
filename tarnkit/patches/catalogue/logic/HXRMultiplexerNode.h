#pragma once

#include "tarnkit/patches/HXRTypedPorts.h"
#include "tarnkit/patches/catalogue/CountedPorts.h"

namespace tarnkit {

/// Passes on one of its sources, chosen by index; there are as many sources as its parameter says.
/// Made by its record; owned by its editor node. For one thread; a change of the count costs what
/// it adds or removes.
class HXRMultiplexerNode final : public CountedPortsNode {
 public:
  static const HXRNodeClass kClass;
  explicit HXRMultiplexerNode(const HXRNodeClass& patchClass);

  /// Adds or removes sources at the end until there are as many as the parameter says.
  void trn_buildSourceInputs() { buildPorts(); }
  /// This definition's own sources, in order.
  std::vector<Ref<HXRValueInputPort>> sourceInputs() { return portsOfRun<HXRValueInputPort>(); }
};

}  // namespace tarnkit
