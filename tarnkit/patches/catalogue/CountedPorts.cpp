#include "tarnkit/patches/catalogue/CountedPorts.h"

#include <fmt/format.h>

#include <algorithm>
#include <cassert>

namespace tarnkit {

String indexedText(const char* pattern, std::int32_t index) {
  return String::interned(fmt::format(fmt::runtime(pattern), index));
}

std::int32_t boundedCount(const HXRIndexParameter& parameter) {
  return std::clamp(parameter.value(), 0, std::max(parameter.maximumValue(), 0));
}

void followCount(std::int32_t& built, FunctionRef<std::int32_t()> wanted,
                 FunctionRef<void(std::int32_t index)> add,
                 FunctionRef<void(std::int32_t index)> remove) {
  for (;;) {
    assert(built >= 0);
    const auto length = wanted();
    if (built < length) {
      add(built++);
    } else if (built > length) {
      remove(--built);
    } else {
      return;
    }
  }
}

void buildCountedPorts(HXRNode& definition, const CountedPorts& ports, std::int32_t& built,
                       FunctionRef<std::int32_t()> count,
                       FunctionRef<String(std::int32_t index)> nameAt) {
  const String groupKey = String::interned(ports.group);
  followCount(
      built, count,
      [&](std::int32_t index) {
        const auto port = ports.makePort(nameAt(index), indexedText(ports.keyPattern, index));
        definition.addPort(*port, groupKey);
      },
      [&](std::int32_t index) {
        auto* const last = definition.portForKey(indexedText(ports.keyPattern, index));
        if (last) definition.removePort(*last);
      });
}

CountedPortsNode::CountedPortsNode(const HXRNodeClass& patchClass,
                                   const CountedPortsDescription& description)
    : HXRNode(patchClass), description_(description) {
  if (prototype()) built_ = static_cast<const CountedPortsNode*>(prototype())->built_;
}

void CountedPortsNode::parameterValueDidChange(HXRParameter& parameter) {
  if (&parameter == countParameter()) buildPorts();
}

void CountedPortsNode::buildPorts() {
  const Ref<HXRIndexParameter> parameter(countParameter());
  if (!parameter) return;
  rebuild([&] {
    buildCountedPorts(
        *this, description_.ports, built_, [&] { return boundedCount(*parameter); },
        [&](std::int32_t index) { return indexedText(description_.namePattern, index); });
  });
}

HXRIndexParameter* CountedPortsNode::countParameter() const {
  return as<HXRIndexParameter>(parameterForKey(String::interned(description_.countParameterKey)));
}

std::unique_ptr<HXRBuiltState> CountedPortsNode::builtState() const {
  return builtStateOf(*this, &CountedPortsNode::built_);
}

}  // namespace tarnkit
