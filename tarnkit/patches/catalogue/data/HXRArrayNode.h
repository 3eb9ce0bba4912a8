#pragma once

#include "tarnkit/patches/HXRTypedPorts.h"
#include "tarnkit/patches/catalogue/CountedPorts.h"

namespace tarnkit {

/// Collects its values into an array; there are as many values, possibly none, as its parameter
/// says. Made by its record; owned by its editor node. For one thread; a change of the count costs
/// what it adds or removes.
class HXRArrayNode final : public CountedPortsNode {
 public:
  static const HXRNodeClass kClass;
  explicit HXRArrayNode(const HXRNodeClass& patchClass);

  /// Adds or removes values at the end until there are as many as the parameter says.
  void hxr_buildValueInputs() { buildPorts(); }
  /// This definition's own values, in order.
  std::vector<Ref<HXRValueInputPort>> valueInputs() { return portsOfRun<HXRValueInputPort>(); }
};

}  // namespace tarnkit
