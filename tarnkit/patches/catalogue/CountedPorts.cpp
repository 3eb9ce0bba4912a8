#include "tarnkit/patches/catalogue/CountedPorts.h"

#include <fmt/format.h>

#include <algorithm>

namespace tarnkit {

String indexedText(const char* pattern, std::int32_t index) {
  return String::interned(fmt::format(fmt::runtime(pattern), index));
}

std::int32_t boundedCount(const HXRIndexParameter& parameter) {
  return std::clamp(parameter.value(), 0, std::max(parameter.maximumValue(), 0));
}

void buildCountedPorts(HXRNode& definition, const CountedPorts& ports,
                       FunctionRef<std::int32_t()> count,
                       FunctionRef<String(std::int32_t index)> nameAt) {
  const String groupKey = String::interned(ports.group);
  for (;;) {
    const auto* const group =
        definition.portLayout().collection(ports.orientation)->portGroupForKey(groupKey);
    const auto built = group ? static_cast<std::int32_t>(group->ports().count()) : 0;
    const auto wanted = count();
    if (built < wanted) {
      const auto port = ports.makePort(nameAt(built), indexedText(ports.keyPattern, built));
      definition.addPort(*port, groupKey);
    } else if (built > wanted) {
      auto* const last = definition.portForKey(indexedText(ports.keyPattern, built - 1));
      if (!last) return;
      definition.removePort(*last);
    } else {
      return;
    }
  }
}

void CountedPortsNode::parameterValueDidChange(HXRParameter& parameter) {
  if (&parameter == countParameter()) buildPorts();
}

void CountedPortsNode::buildPorts() {
  const Ref<HXRIndexParameter> parameter(countParameter());
  if (!parameter) return;
  rebuild([&] {
    buildCountedPorts(
        *this, description_.ports, [&] { return boundedCount(*parameter); },
        [&](std::int32_t index) { return indexedText(description_.namePattern, index); });
  });
}

HXRIndexParameter* CountedPortsNode::countParameter() const {
  return as<HXRIndexParameter>(parameterForKey(String::interned(description_.countParameterKey)));
}

}  // namespace tarnkit
