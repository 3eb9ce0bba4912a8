#pragma once

#include "tarnkit/patches/HXRTypedPorts.h"
#include "tarnkit/patches/catalogue/CountedPorts.h"

namespace tarnkit {

/// Takes an array apart into its first values; there are as many outputs as its parameter says.
/// Made by its record; owned by its editor node. For one thread; a change of the count costs what
/// it adds or removes.
class HXRArrayValuesNode final : public CountedPortsNode {
 public:
  static const HXRNodeClass kClass;
  explicit HXRArrayValuesNode(const HXRNodeClass& patchClass);

  /// Adds or removes outputs at the end until there are as many as the parameter says.
  void trn_buildValueOutputs() { buildPorts(); }
  /// This definition's own outputs, in order.
  std::vector<Ref<HXRValueOutputPort>> valueOutputs() { return portsOfRun<HXRValueOutputPort>(); }
};

}  // namespace tarnkit
