#include "tarnkit/patches/catalogue/CountedPorts.h"

#include <algorithm>
#include <fmt/format.h>

namespace tarnkit {

String indexedText(const char* pattern, std::int32_t index) {
  return String::interned(fmt::format(fmt::runtime(pattern), index));
}

std::int32_t boundedCount(const HXRIndexParameter& parameter) {
  return std::clamp(parameter.value(), 0, std::max(parameter.maximumValue(), 0));
}

void buildCountedPorts(HXRNode& definition, const CountedPorts& ports, std::int32_t count,
                       FunctionRef<String(std::int32_t index)> nameAt) {
  const String groupKey = String::interned(ports.group);
  const auto* const group =
      definition.portLayout().collection(ports.orientation)->portGroupForKey(groupKey);
  const auto built = group ? static_cast<std::int32_t>(group->ports().count()) : 0;
  for (std::int32_t i = built; i < count; ++i) {
    const auto port = ports.makePort(nameAt(i), indexedText(ports.keyPattern, i));
    definition.addPort(*port, groupKey);
  }
  for (std::int32_t i = built; i > count; --i) {
    if (auto* const port = definition.portForKey(indexedText(ports.keyPattern, i - 1))) {
      definition.removePort(*port);
    }
  }
}

void CountedPortsNode::parameterValueDidChange(HXRParameter& parameter) {
  if (&parameter == countParameter()) buildPorts();
}

void CountedPortsNode::buildPorts() {
  const auto* const count = countParameter();
  if (!count) return;
  buildCountedPorts(*this, description_.ports, boundedCount(*count), [this](std::int32_t index) {
    return indexedText(description_.namePattern, index);
  });
}

HXRIndexParameter* CountedPortsNode::countParameter() const {
  return as<HXRIndexParameter>(parameterForKey(String::interned(description_.countParameterKey)));
}

}  // namespace tarnkit
