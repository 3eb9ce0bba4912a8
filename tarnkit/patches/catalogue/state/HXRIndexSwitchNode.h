#pragma once

#include "tarnkit/patches/HXRPrimitiveInputPort.h"
#include "tarnkit/patches/catalogue/CountedPorts.h"

namespace tarnkit {

/// Keeps an index that its inputs set or step through; there are as many setting inputs as its
/// parameter says. Made by its record; owned by its editor node. For one thread; a change of the
/// count costs what it adds or removes.
class HXRIndexSwitchNode final : public CountedPortsNode {
 public:
  static const HXRNodeClass kClass;
  explicit HXRIndexSwitchNode(const HXRNodeClass& patchClass);

  /// Adds or removes setting inputs at the end until there are as many as the parameter says.
  void trn_buildInputs() { buildPorts(); }
  /// This definition's own setting inputs, in order.
  std::vector<Ref<HXRPrimitiveInputPort>> indexSwitchInputs() {
    return portsOfRun<HXRPrimitiveInputPort>();
  }
};

}  // namespace tarnkit
