#pragma once

#include <cstdint>

#include "tarnkit/patches/HXRNode.h"
#include "tarnkit/patches/HXRValueParameters.h"
#include "tarnkit/platform/FunctionRef.h"

namespace tarnkit {

/// A run of ports whose length follows a count: how the port of each index is made, and the group
/// that is the list of those built so far.
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

/// Adds or removes ports at the end until there are `count()`; `nameAt` names the added ones. Ports
/// that stay are not touched, and nothing at all is when their number is right already.
///
/// The count is asked again after every step, because the editor node announces each, and an
/// observer may change the count meanwhile.
void buildCountedPorts(HXRNode& definition, const CountedPorts& ports,
                       FunctionRef<std::int32_t()> count,
                       FunctionRef<String(std::int32_t index)> nameAt);

/// The ports of a definition with one count: where the count stands, and how its ports are made.
struct CountedPortsDescription {
  const char* countParameterKey;
  /// With one "{}" for the index, which counts from 0.
  const char* namePattern;
  CountedPorts ports;
};

/// A definition with one index parameter, its count, and one run of ports that follows it.
class CountedPortsNode : public HXRNode {
 public:
  /// Builds the ports again when it is the count that has changed.
  void parameterValueDidChange(HXRParameter& parameter) override;

 protected:
  CountedPortsNode(const HXRNodeClass& patchClass, const CountedPortsDescription& description)
      : HXRNode(patchClass), description_(description) {}
  void buildPorts();

 private:
  HXRIndexParameter* countParameter() const;

  const CountedPortsDescription& description_;
};

}  // namespace tarnkit
