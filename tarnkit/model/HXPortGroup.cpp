#include "tarnkit/model/HXPortGroup.h"

#include "tarnkit/archive/HXCoding.h"
#include "tarnkit/model/HXNode.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tarnkit/platform/collections/MembersOf.h"
#include "tarnkit/platform/numbers/Number.h"

namespace tarnkit {

const Class HXPortGroup::kClass{"HXPortGroup", &Object::kClass};
const Class HXPatchPortGroup::kClass{"HXPatchPortGroup", &HXPortGroup::kClass,
                                     &detail::makeByDefault<HXPatchPortGroup>};
const Class HXSymbolicPortGroup::kClass{"HXSymbolicPortGroup", &HXPortGroup::kClass,
                                        &detail::makeByDefault<HXSymbolicPortGroup>};

namespace {

constinit const Symbol kGroupKey{"HXPortGroup.groupKey"};
constinit const Symbol kNode{"HXPortGroup.node"};
constinit const Symbol kOrientation{"HXPortGroup.orientation"};
constinit const Symbol kCollapsedCanvasGroup{"HXPortGroup.collapsedCanvasGroup"};
constinit const Symbol kCollapsedSidebarGroup{"HXPortGroup.collapsedSidebarGroup"};
constinit const Symbol kHidden{"HXPortGroup.hidden"};

}  // namespace

HXPortGroup::HXPortGroup(HXNode* node, String groupKey, std::int32_t orientation)
    : node_(node), groupKey_(std::move(groupKey)), orientation_(orientation) {}

String HXPortGroup::documentKey() const {
  const auto* node = this->node();
  return node ? node->documentKey() : String();
}

void HXPortGroup::change(Flag flag, bool value, const Symbol& notification, const Symbol& infoKey) {
  if (this->*flag == value) return;
  storeFlag(flag, value);
  announceChange(flag, notification, infoKey);
}

void HXPortGroup::announceChange(Flag flag, const Symbol& notification, const Symbol& infoKey) {
  detail::announce(notification, *this, *this,
                   {{HXPortGroupInfo, this}, {infoKey, Number::withBool(this->*flag).get()}});
}

void HXPortGroup::setCollapsedSidebarGroup(bool collapsed) {
  change(&HXPortGroup::collapsedSidebarGroup_, collapsed,
         HXPortGroupCollapsedSidebarGroupDidChangeNotification, HXCollapsedInfo);
}

void HXPortGroup::setCollapsedCanvasGroup(bool collapsed) {
  change(&HXPortGroup::collapsedCanvasGroup_, collapsed,
         HXPortGroupCollapsedCanvasGroupDidChangeNotification, HXCollapsedInfo);
}

void HXPortGroup::setHidden(bool hidden) {
  change(&HXPortGroup::hidden_, hidden, HXPortGroupHiddenDidChangeNotification, HXHiddenInfo);
}

void HXPortGroup::announceHidden() {
  announceChange(&HXPortGroup::hidden_, HXPortGroupHiddenDidChangeNotification, HXHiddenInfo);
}

void HXPortGroup::encodeWithCoder(Encoder& coder) const {
  if (!isEditorCodingType(coder.codingType())) return;
  coder.encodeString(groupKey_, kGroupKey);
  coder.encodeConditionalObject(node_, kNode);
  coder.encodeInt(orientation_, kOrientation);
  coder.encodeBool(collapsedCanvasGroup_, kCollapsedCanvasGroup);
  coder.encodeBool(collapsedSidebarGroup_, kCollapsedSidebarGroup);
  coder.encodeBool(hidden_, kHidden);
}

void HXPortGroup::initWithCoder(Decoder& coder) {
  groupKey_ = coder.decodeString(kGroupKey);
  node_ = coder.decode<HXNode>(kNode);
  orientation_ = coder.decodeInt(kOrientation);
  collapsedCanvasGroup_ = coder.decodeBool(kCollapsedCanvasGroup);
  collapsedSidebarGroup_ = coder.decodeBool(kCollapsedSidebarGroup);
  hidden_ = coder.decodeBool(kHidden);
}

HXPatchPortGroup::HXPatchPortGroup(HXNode* node, String groupKey, std::int32_t orientation)
    : HXPortGroup(node, std::move(groupKey), orientation) {}

Ref<const OrderedSet> HXPatchPortGroup::portKeys() const {
  if (!patchPortGroup_) return make<OrderedSet>();
  if (hasGone() && patchPortGroup_->portKeysBeforeEmptied()) {
    return patchPortGroup_->portKeysBeforeEmptied();
  }
  return patchPortGroup_->portKeys();
}

HXSymbolicPortGroup::HXSymbolicPortGroup(HXNode* node, String groupKey, std::int32_t orientation)
    : HXPortGroup(node, std::move(groupKey), orientation) {}

Ref<const OrderedSet> HXSymbolicPortGroup::portKeys() const {
  auto keys = make<OrderedSet>();
  if (!symbolicPorts_) return keys;
  for (const auto& port : membersOf<HXSymbolicPort>(*symbolicPorts_)) {
    keys->add(port.uniqueKey().object());
  }
  return keys;
}

}  // namespace tarnkit
