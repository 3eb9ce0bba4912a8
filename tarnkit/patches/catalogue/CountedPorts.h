#pragma once

#include <cstdint>
#include <vector>

#include "tarnkit/patches/HXRNode.h"
#include "tarnkit/patches/HXRValueParameters.h"
#include "tarnkit/platform/objects/FunctionRef.h"

namespace tarnkit {

/// A run of ports whose length follows a count: how the port of each index is made, and where it
/// goes. The keys name the ports, so a definition remembers the run that it has built by its
/// length.
struct CountedPorts {
  std::int32_t orientation;
  const char* group;
  /// With one "{}" for the index, which counts from 0.
  const char* keyPattern;
  Ref<HXRPort> (*makePort)(String name, String uniqueKey);
};

template <class Port>
Ref<HXRPort> makePortOf(String name, String uniqueKey) {
  return make<Port>(std::move(name), std::move(uniqueKey));
}

/// `pattern` with its "{}" replaced by the index. The text is interned: only for indexes below a
/// fixed bound.
String indexedText(const char* pattern, std::int32_t index);

/// How many ports to build for the parameter's value: none below zero, and never more than the
/// upper bound, whatever a caller or an archive has set. The value itself stays as it is.
std::int32_t boundedCount(const HXRIndexParameter& parameter);

/// Adds or removes at the end until there are `wanted()`, of which `built` is the number that there
/// are: `add` and `remove` are given the index.
///
/// Each step is announced, and an observer may change what is wanted: it is asked again after every
/// step, and `built` counts a step before it is taken, so that a step inside of a step goes on from
/// there.
void followCount(std::int32_t& built, FunctionRef<std::int32_t()> wanted,
                 FunctionRef<void(std::int32_t index)> add,
                 FunctionRef<void(std::int32_t index)> remove);

/// Adds or removes ports at the end until there are `count()`; `nameAt` names the added ones. Ports
/// that stay are not touched, nor are ports of others, whichever group they stand in, and nothing
/// at all is when the number is right already. For the steps of `HXRNode::rebuild`.
void buildCountedPorts(HXRNode& definition, const CountedPorts& ports, std::int32_t& built,
                       FunctionRef<std::int32_t()> count,
                       FunctionRef<String(std::int32_t index)> nameAt);

/// The definition's own ports of the run, by index.
template <class Port>
std::vector<Ref<Port>> builtPorts(HXRNode& definition, const CountedPorts& ports,
                                  std::int32_t built) {
  std::vector<Ref<Port>> list;
  for (std::int32_t i = 0; i < built; ++i) {
    auto* const port = as<Port>(definition.portForKey(indexedText(ports.keyPattern, i)));
    if (port) list.push_back(Ref<Port>(port));
  }
  return list;
}

/// The ports of a definition with one count: where the count stands, and how its ports are made.
struct CountedPortsDescription {
  const char* countParameterKey;
  /// With one "{}" for the index, which counts from 0.
  const char* namePattern;
  CountedPorts ports;
};

/// A definition with one index parameter, its count, and one run of ports that follows it. Its
/// record's declaration makes the parameter and then calls `buildPorts`, where the run's group is
/// to stand. For plug-ins too: `description` lives as long as the process.
class CountedPortsNode : public HXRNode {
 public:
  CountedPortsNode(const HXRNodeClass& patchClass, const CountedPortsDescription& description);

  /// Adds or removes ports at the end until there are as many as the parameter says.
  void buildPorts();
  /// Builds the ports again when it is the count that has changed.
  void parameterValueDidChange(HXRParameter& parameter) override;

 protected:
  std::unique_ptr<HXRBuiltState> builtState() const override;
  template <class Port>
  std::vector<Ref<Port>> portsOfRun() {
    return builtPorts<Port>(*this, description_.ports, built_);
  }

 private:
  HXRIndexParameter* countParameter() const;

  const CountedPortsDescription& description_;
  std::int32_t built_ = 0;
};

}  // namespace tarnkit
