#pragma once

#include <cstdint>
#include <utility>

#include "tarnkit/model/HXNotifications.h"
#include "tarnkit/patches/HXRPortGroup.h"
#include "tarnkit/platform/coding/Coder.h"
#include "tarnkit/platform/collections/OrderedSet.h"

namespace tarnkit {

class HXNode;

/// Posted by a port group with "PortGroup" and "Collapsed". These two constants are deliberately
/// named with "Group" while their texts lack it: observers compare by text.
inline constinit const Symbol HXPortGroupCollapsedSidebarGroupDidChangeNotification{
    "HXPortGroupCollapsedSidebarDidChangeNotification"};
inline constinit const Symbol HXPortGroupCollapsedCanvasGroupDidChangeNotification{
    "HXPortGroupCollapsedCanvasDidChangeNotification"};
/// Posted by a port group with "PortGroup" and "Hidden".
inline constinit const Symbol HXPortGroupHiddenDidChangeNotification{
    "HXPortGroupHiddenDidChangeNotification"};

/// A group in which a node shows some of its ports: abstract. It keeps what the user chose: whether
/// the group is hidden, and whether it is collapsed on the canvas and in the sidebar.
///
/// Owned by its node, which makes and drops groups as it follows its patch definition. Changes are
/// announced while the node is in a document. For one thread.
class HXPortGroup : public Object {
 public:
  static const Class kClass;

  HXNode* node() const noexcept { return node_.get(); }
  /// Unique within the node and the orientation.
  const String& groupKey() const noexcept { return groupKey_; }
  std::int32_t orientation() const noexcept { return orientation_; }
  bool collapsedCanvasGroup() const noexcept { return collapsedCanvasGroup_; }
  bool collapsedSidebarGroup() const noexcept { return collapsedSidebarGroup_; }
  /// A hidden group's ports do not show among the node's; they keep connections and values.
  bool hidden() const noexcept { return hidden_; }
  void setCollapsedCanvasGroup(bool collapsed);
  void setCollapsedSidebarGroup(bool collapsed);
  void setHidden(bool hidden);

  /// The unique keys of the group's ports (strings), in order. The set handed out never changes.
  virtual Ref<const OrderedSet> portKeys() const = 0;
  /// The document key of the group's node.
  String documentKey() const;

  void encodeWithCoder(Encoder& coder) const override;
  void initWithCoder(Decoder& coder) override;

 protected:
  HXPortGroup() noexcept = default;
  HXPortGroup(HXNode* node, String groupKey, std::int32_t orientation);
  /// Whether the node has let go of the group.
  bool hasGone() const noexcept { return hasGone_; }
  void setHasGone(bool gone) noexcept { hasGone_ = gone; }

 private:
  friend class HXPortGroupSync;
  friend struct HXPortGroupFields;
  using Flag = bool HXPortGroup::*;
  void change(Flag flag, bool value, const Symbol& notification, const Symbol& infoKey);
  void announceChange(Flag flag, const Symbol& notification, const Symbol& infoKey);
  void announceHidden();
  void announceFlag(Flag flag);

  // All changes of the fields.
  void storeFlag(Flag flag, bool value);

  WeakRef<HXNode> node_;
  String groupKey_;
  std::int32_t orientation_ = 0;
  bool collapsedCanvasGroup_ = false;
  bool collapsedSidebarGroup_ = false;
  bool hidden_ = false;
  bool hasGone_ = false;
};

/// A group backed by a port group of the patch definition.
class HXPatchPortGroup final : public HXPortGroup {
  TARNKIT_CLASS
 public:
  HXPatchPortGroup() noexcept = default;
  HXPatchPortGroup(HXNode* node, String groupKey, std::int32_t orientation);
  /// The definition's group, maybe shared with other nodes; null until the node has synchronised.
  const HXRPortGroup* patchPortGroup() const noexcept { return patchPortGroup_.get(); }
  void setPatchPortGroup(Ref<HXRPortGroup> group) {
    patchPortGroup_ = std::move(group);
    setHasGone(false);
  }
  /// Of a group that has gone because its definition lost the last of its ports: the keys that it
  /// showed last.
  Ref<const OrderedSet> portKeys() const override;

 private:
  Ref<HXRPortGroup> patchPortGroup_;
};

/// A group that holds published ports.
class HXSymbolicPortGroup final : public HXPortGroup {
  TARNKIT_CLASS
 public:
  HXSymbolicPortGroup() noexcept = default;
  HXSymbolicPortGroup(HXNode* node, String groupKey, std::int32_t orientation);
  /// The published ports (`HXSymbolicPort`), in order; null for none.
  Ref<const OrderedSet> symbolicPorts() const noexcept { return symbolicPorts_; }
  /// Announces nothing.
  void setSymbolicPorts(const Ref<const OrderedSet>& ports) {
    storeSymbolicPorts(ports ? make<OrderedSet>(*ports) : nullptr);
  }
  Ref<const OrderedSet> portKeys() const override;

 private:
  friend class HXPortGroupSync;
  friend struct HXPortGroupFields;

  // All changes of the fields.
  void storeSymbolicPorts(Ref<OrderedSet> ports);
  void insertSymbolicPort(const Ref<Object>& port);
  void removeSymbolicPort(const Object& port);
  /// Returns the earlier one.
  Ref<HXPortGroup> storeStandsBefore(Ref<HXPortGroup> group);

  Ref<OrderedSet> symbolicPorts_;
  Ref<HXPortGroup> standsBefore_;  // the definition's group of the same key, kept for its flags
};

}  // namespace tarnkit
