#pragma once

#include "tarnkit/patches/HXRTypedPorts.h"
#include "tarnkit/patches/catalogue/CountedPorts.h"

namespace tarnkit {

/// Hands its input to one of its destinations, chosen by index, and a default to the others; there
/// are as many destinations as its parameter says. Made by its record; owned by its editor node.
/// For one thread; a change of the count costs what it adds or removes.
class HXRDemultiplexerNode final : public CountedPortsNode {
 public:
  static const HXRNodeClass kClass;
  explicit HXRDemultiplexerNode(const HXRNodeClass& patchClass);

  /// Adds or removes destinations at the end until there are as many as the parameter says.
  void trn_buildDestinationOutputs() { buildPorts(); }
  /// This definition's own destinations, in order.
  std::vector<Ref<HXRValueOutputPort>> destinationOutputs() {
    return portsOfRun<HXRValueOutputPort>();
  }
};

}  // namespace tarnkit
