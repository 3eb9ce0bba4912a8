#include "tarnkit/compare/CheckRules.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/model/HXSubviewGroup.h"

namespace tarnkit::detail {

namespace {

using Code = HXFindingCode;

// The value that a port has by itself; null when a wire decides.
Ref<PMRPrimitive> ownValue(const HXNode& node, const String& key) {
  const auto* port = node.portsInForce().find(key);
  return port && (*port)->connections().isEmpty() ? (*port)->effectiveValue() : nullptr;
}

const char* reasonOfView(const HXNode& node) {
  static const String kEnabled("Tarn.enabledInput"), kOpacity("Tarn.opacityInput");
  const auto enabled = ownValue(node, kEnabled);
  if (enabled && enabled->storageType() != PMRPrimitive::nil && !enabled->booleanValue()) {
    return "the view is switched off, and no wire switches it on";
  }
  const auto opacity = ownValue(node, kOpacity);
  if (opacity && opacity->storageType() != PMRPrimitive::nil && opacity->numberValue() <= 0) {
    return "the view is fully transparent, and no wire changes that";
  }
  return nullptr;
}

bool isUnread(const HXNode& node) {
  for (const auto& entry : node.portsInForce()) {
    if (entry.value->orientation() != HXOrientationOutput) continue;
    if (entry.value->symbolicPort() || !entry.value->connections().isEmpty()) return false;
  }
  return true;
}

void findNeverShown(CheckReport& report, const CheckedNode& checked) {
  const char* reason = nullptr;
  if (checked.traits->isView) {
    reason = reasonOfView(*checked.node);
  } else if (checked.traits->isRemoteGroup && isUnread(*checked.node)) {
    reason = "no group processor shows the remote group";
  }
  if (reason) report.add(Code::viewNeverShown, *checked.node, reason);
}

void findUnlisted(CheckReport& report, const CheckedNode& checked) {
  const HXGroup* group = checked.node->parentGroup();
  if (!group || checked.node == &report.document() || !checked.node->shouldBeTreatedAsViewNode()) {
    return;
  }
  const auto* views = as<HXSubviewGroup>(group);
  if (views && views->subviewNodesInForce().contains(checked.node)) return;
  report.add(Code::viewUnlisted, *checked.node,
             "the view is missing in the order of the views of its group");
}

constexpr CheckRule<const CheckedNode> kNodes[] = {
    {Code::viewNeverShown, findNeverShown},
    {Code::viewUnlisted, findUnlisted},
};

}  // namespace

constinit const CheckRules kViewRules{.nodes = kNodes};

}  // namespace tarnkit::detail
