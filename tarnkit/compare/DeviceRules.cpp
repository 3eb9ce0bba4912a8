#include <fmt/format.h>

#include "tarnkit/compare/CheckRules.h"
#include "tarnkit/compare/HXAddresses.h"
#include "tarnkit/model/HXParameter.h"
#include "tarnkit/model/HXPatchPort.h"

namespace tarnkit::detail {

namespace {

using Code = HXFindingCode;

void findPlugIn(CheckReport& report, const CheckedNode& checked) {
  if (!checked.traits->isPlugIn) return;
  report.add(Code::devicePlugIn, *checked.node,
             fmt::format("the patch comes from a plug-in; the device needs its {}",
                         checked.node->patchClass().processClassName().view()));
}

// Of an unknown patch nobody knows which of its ports the device is told the values of.
void findValue(CheckReport& report, HXPatchPort& port) {
  if (!port.definition() || port.supportsStaticValue()) return;
  const HXNode* node = port.node();
  if (node && !node->unknownPatchClass().isNil()) return;
  report.add(Code::deviceValue, port, "the value of this port does not reach the device",
             "join the port, or take the value away");
}

void findParameters(CheckReport& report, const CheckedNode& checked) {
  const auto patch = checked.node->patch();
  if (!patch) return;
  const auto parameters = checked.node->parameters();
  for (const auto& entry : parameters) {
    if (patch->parameterForKey(entry.key)) continue;
    report.add(Code::deviceParameter, *entry.value,
               fmt::format("the patch has no parameter {} any more",
                           HXAddresses::escaped(entry.key.view())));
  }
}

constexpr CheckRule<const CheckedNode> kNodes[] = {
    {Code::devicePlugIn, findPlugIn},
    {Code::deviceParameter, findParameters},
};
constexpr CheckRule<HXPatchPort> kValues[] = {
    {Code::deviceValue, findValue},
};

}  // namespace

constinit const CheckRules kDeviceRules{.nodes = kNodes, .values = kValues};

}  // namespace tarnkit::detail
