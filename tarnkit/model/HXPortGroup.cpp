#include "tarnkit/model/HXPortGroup.h"

#include "tarnkit/archive/HXCoding.h"
#include "tarnkit/model/HXEntryChange.h"
#include "tarnkit/model/HXFieldChange.h"
#include "tarnkit/model/HXNode.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tarnkit/patches/HXArchivedKeys.h"
#include "tarnkit/platform/collections/MembersOf.h"
#include "tarnkit/platform/numbers/Number.h"

namespace tarnkit {

const Class HXPortGroup::kClass{"HXPortGroup", &Object::kClass};
const Class HXPatchPortGroup::kClass{"HXPatchPortGroup", &HXPortGroup::kClass,
                                     &detail::makeByDefault<HXPatchPortGroup>};
const Class HXSymbolicPortGroup::kClass{"HXSymbolicPortGroup", &HXPortGroup::kClass,
                                        &detail::makeByDefault<HXSymbolicPortGroup>};

namespace {

namespace key = archived::portGroup;

}  // namespace

struct HXPortGroupFields {
  static constexpr const char* kSymbolicPort = "symbolicPort";

  template <bool HXPortGroup::*flag>
  struct Flag : detail::FieldOf<HXPortGroup> {
    static constexpr const char* kName = flag == &HXPortGroup::hidden_ ? "hidden"
                                         : flag == &HXPortGroup::collapsedCanvasGroup_
                                             ? "collapsedCanvasGroup"
                                             : "collapsedSidebarGroup";
    static bool get(const HXPortGroup& group) { return group.*flag; }
    static void set(HXPortGroup& group, bool value) { group.*flag = value; }
    static void addNotices(HXPortGroup& group, bool, HXChangeNotices& notices) {
      notices.addValue(group, kName, [&group] { group.announceFlag(flag); });
    }
  };
  struct HasGone : detail::FieldOf<HXPortGroup> {
    static constexpr const char* kName = "hasGone";
    static bool get(const HXPortGroup& group) { return group.hasGone_; }
    static void set(HXPortGroup& group, bool value) { group.hasGone_ = value; }
  };
  struct SymbolicPorts : detail::FieldOf<HXSymbolicPortGroup> {
    static constexpr const char* kName = "symbolicPorts";
    static constexpr const char* kTable = kSymbolicPort;
    static Ref<OrderedSet> get(const HXSymbolicPortGroup& group) { return group.symbolicPorts_; }
    static void set(HXSymbolicPortGroup& group, Ref<OrderedSet> ports) {
      group.symbolicPorts_ = std::move(ports);
    }
  };
  struct SymbolicPort : detail::TableOf<HXSymbolicPortGroup, OrderedSet> {
    static constexpr const char* kName = kSymbolicPort;
    // A set that was handed out never changes.
    static OrderedSet& in(HXSymbolicPortGroup& group) {
      auto& ports = group.symbolicPorts_;
      if (!ports) {
        ports = make<OrderedSet>();
      } else if (ports->isShared()) {
        ports = make<OrderedSet>(*ports);
      }
      return *ports;
    }
  };
  struct StandsBefore : detail::FieldOf<HXSymbolicPortGroup> {
    static constexpr const char* kName = "standsBefore";
    static Ref<HXPortGroup> get(const HXSymbolicPortGroup& group) { return group.standsBefore_; }
    static void set(HXSymbolicPortGroup& group, Ref<HXPortGroup> before) {
      group.standsBefore_ = std::move(before);
    }
  };
};

HXPortGroup::HXPortGroup(HXNode* node, String groupKey, std::int32_t orientation)
    : node_(node), groupKey_(std::move(groupKey)), orientation_(orientation) {}

String HXPortGroup::documentKey() const {
  const auto* node = this->node();
  return node ? node->documentKey() : String();
}

void HXPortGroup::change(Flag flag, bool value, const Symbol& notification, const Symbol& infoKey) {
  if (this->*flag == value) return;
  const detail::RecordedOperation operation(*this);
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

void HXPortGroup::storeFlag(Flag flag, bool value) {
  if (flag == &HXPortGroup::hidden_) {
    detail::willSet<HXPortGroupFields::Flag<&HXPortGroup::hidden_>>(*this);
  } else if (flag == &HXPortGroup::collapsedCanvasGroup_) {
    detail::willSet<HXPortGroupFields::Flag<&HXPortGroup::collapsedCanvasGroup_>>(*this);
  } else if (flag == &HXPortGroup::hasGone_) {
    detail::willSet<HXPortGroupFields::HasGone>(*this);
  } else {
    detail::willSet<HXPortGroupFields::Flag<&HXPortGroup::collapsedSidebarGroup_>>(*this);
  }
  this->*flag = value;
}

void HXPortGroup::announceFlag(Flag flag) {
  if (flag == &HXPortGroup::hidden_) {
    announceHidden();
  } else if (flag == &HXPortGroup::collapsedCanvasGroup_) {
    announceChange(flag, HXPortGroupCollapsedCanvasGroupDidChangeNotification, HXCollapsedInfo);
  } else {
    announceChange(flag, HXPortGroupCollapsedSidebarGroupDidChangeNotification, HXCollapsedInfo);
  }
}

void HXPortGroup::announceHidden() {
  announceChange(&HXPortGroup::hidden_, HXPortGroupHiddenDidChangeNotification, HXHiddenInfo);
}

void HXPortGroup::encodeWithCoder(Encoder& coder) const {
  if (!isEditorCodingType(coder.codingType())) return;
  coder.encodeString(groupKey_, key::kGroupKey);
  coder.encodeConditionalObject(node_, key::kNode);
  coder.encodeInt(orientation_, key::kOrientation);
  coder.encodeBool(collapsedCanvasGroup_, key::kCollapsedCanvasGroup);
  coder.encodeBool(collapsedSidebarGroup_, key::kCollapsedSidebarGroup);
  coder.encodeBool(hidden_, key::kHidden);
}

void HXPortGroup::initWithCoder(Decoder& coder) {
  groupKey_ = coder.decodeString(key::kGroupKey);
  node_ = coder.decode<HXNode>(key::kNode);
  orientation_ = coder.decodeInt(key::kOrientation);
  collapsedCanvasGroup_ = coder.decodeBool(key::kCollapsedCanvasGroup);
  collapsedSidebarGroup_ = coder.decodeBool(key::kCollapsedSidebarGroup);
  hidden_ = coder.decodeBool(key::kHidden);
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

void HXSymbolicPortGroup::storeSymbolicPorts(Ref<OrderedSet> ports) {
  detail::willSet<HXPortGroupFields::SymbolicPorts>(*this);
  symbolicPorts_ = std::move(ports);
}

void HXSymbolicPortGroup::insertSymbolicPort(const Ref<Object>& port) {
  detail::willChangeEntry<HXPortGroupFields::SymbolicPort>(*this, port);
  HXPortGroupFields::SymbolicPort::in(*this).add(port);
}

void HXSymbolicPortGroup::removeSymbolicPort(const Object& port) {
  detail::willChangeEntry<HXPortGroupFields::SymbolicPort>(*this, const_cast<Object*>(&port));
  HXPortGroupFields::SymbolicPort::in(*this).remove(&port);
}

Ref<HXPortGroup> HXSymbolicPortGroup::storeStandsBefore(Ref<HXPortGroup> group) {
  if (group != standsBefore_) detail::willSet<HXPortGroupFields::StandsBefore>(*this);
  return std::exchange(standsBefore_, std::move(group));
}

Ref<const OrderedSet> HXSymbolicPortGroup::portKeys() const {
  auto keys = make<OrderedSet>();
  if (!symbolicPorts_) return keys;
  for (const auto& port : membersOf<HXSymbolicPort>(*symbolicPorts_)) {
    keys->add(port.uniqueKey().object());
  }
  return keys;
}

}  // namespace tarnkit
