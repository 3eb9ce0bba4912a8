#include <algorithm>
#include <cassert>
#include <utility>

#include "tarnkit/model/HXDocument.h"
#include "tarnkit/model/HXEntryChange.h"
#include "tarnkit/model/HXFieldChange.h"
#include "tarnkit/model/HXNode.h"
#include "tarnkit/model/HXParameter.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/model/HXPortGroup.h"
#include "tarnkit/patches/HXRNodeSnapshot.h"

// The one place where the fields of a node change, and what a recorder holds of each.

namespace tarnkit {

using detail::FieldOf;
using detail::TableOf;
using detail::willChangeEntry;
using detail::willSet;
using Order = HXChangeNotices::Order;

struct HXNodeFields {
  using Ports = OrderedMap<Ref<HXPatchPort>>;
  using PortGroups = OrderedMap<Ref<HXPortGroup>>;
  static constexpr const char* kPorts = "port";
  static constexpr const char* kPortGroups[] = {"inputGroup", "outputGroup"};

  // What the ports and groups of a node show of its definition is read off the definition that is
  // in force.
  static void takeUp(HXNode& node) {
    if (node.patch_) node.HXNodeSync::patchLayoutWasCopied();
  }

  struct Name : FieldOf<HXNode> {
    static constexpr const char* kName = "name";
    static constexpr bool kIsSimple = true;
    static String get(const HXNode& node) { return node.name_; }
    static void set(HXNode& node, String name) { node.name_ = std::move(name); }
    static void addNotices(HXNode& node, const String&, HXChangeNotices& notices) {
      notices.addValue(node, kName, [&node] { node.announceName(); });
    }
  };
  struct Position : FieldOf<HXNode> {
    static constexpr const char* kName = "position";
    static constexpr bool kIsSimple = true;
    static HXPoint get(const HXNode& node) { return node.position_; }
    static void set(HXNode& node, HXPoint position) { node.position_ = position; }
    static void addNotices(HXNode& node, HXPoint, HXChangeNotices& notices) {
      notices.addValue(node, kName, [&node] { node.announcePosition(); });
    }
  };
  struct Selected : FieldOf<HXNode> {
    static constexpr const char* kName = "selected";
    static constexpr bool kIsViewState = true;
    static bool get(const HXNode& node) { return node.selected_; }
    static void set(HXNode& node, bool selected) { node.selected_ = selected; }
    static void addNotices(HXNode& node, bool, HXChangeNotices& notices) {
      notices.addValue(node, kName, [&node] { node.announceSelection(); });
    }
  };
  struct InspectorPanel : FieldOf<HXNode> {
    static constexpr const char* kName = "inspectorPanel";
    static constexpr bool kIsViewState = true;
    static std::uint64_t get(const HXNode& node) { return node.inspectorPanel(); }
    static void set(HXNode& node, std::uint64_t panel) {
      node.storeRarity(&HXNode::Rarities::inspectorPanel, panel);
    }
  };
  struct Comment : FieldOf<HXNode> {
    static constexpr const char* kName = "comment";
    static constexpr bool kIsSimple = true;
    static String get(const HXNode& node) { return node.comment(); }
    static void set(HXNode& node, String comment) {
      node.storeRarity(&HXNode::Rarities::comment, std::move(comment));
    }
  };
  struct ForceAllowsSubnodes : FieldOf<HXNode> {
    static constexpr const char* kName = "forceAllowsSubnodes";
    static bool get(const HXNode& node) { return node.forceAllowsSubnodes_; }
    static void set(HXNode& node, bool force) { node.forceAllowsSubnodes_ = force; }
  };
  struct ParentGroup : FieldOf<HXNode> {
    static constexpr const char* kName = "parentGroup";
    static Ref<HXGroup> get(const HXNode& node) { return Ref<HXGroup>(node.parentGroup()); }
    static void set(HXNode& node, const Ref<HXGroup>& group) { node.parentGroup_ = group.get(); }
  };
  // A group that another one replaces refers to it, as long as the other one is in force.
  struct SubnodeGroup : FieldOf<HXNode> {
    static constexpr const char* kName = "subnodeGroup";
    static Ref<HXGroup> get(const HXNode& node) { return node.subnodeGroup_; }
    static void set(HXNode& node, Ref<HXGroup> group) {
      node.exchangeLinks(group);
      node.subnodeGroup_ = std::move(group);
    }
    static void addNotices(HXNode& node, const Ref<HXGroup>& earlier, HXChangeNotices& notices) {
      if (!earlier || !node.subnodeGroup_) return;
      notices.addValue(
          node, kName, [&node, earlier] { node.announceSubnodeGroup(earlier); },
          Order::newSubnodeGroup);
    }
  };
  struct Patch : FieldOf<HXNode> {
    static constexpr const char* kName = "patch";
    using Value = std::pair<Ref<HXRNode>, String>;
    static Value get(const HXNode& node) { return {node.patch_, node.unknownPatchClass()}; }
    static void set(HXNode& node, Value value) {
      if (node.patch_ != value.first) {
        if (value.first) node.HXRNodeOwner::takeUp(*value.first);
        if (node.patch_) node.letGo(*node.patch_);
      }
      node.patch_ = std::move(value.first);
      node.storeRarity(&HXNode::Rarities::unknownPatchClass, std::move(value.second));
    }
    static void follow(HXNode& node) { takeUp(node); }
  };
  struct Settled : FieldOf<HXNode> {
    static constexpr const char* kName = "portGroupsSettled";
    static bool get(const HXNode& node) { return node.isSettled_; }
    static void set(HXNode& node, bool settled) { node.isSettled_ = settled; }
  };

  static void addPortNotice(HXNode& node, const HXPatchPort& port, bool came,
                            HXChangeNotices& notices) {
    const Ref<HXPatchPort> kept(const_cast<HXPatchPort*>(&port));
    notices.addMember(node, port, came, Order::newPort, Order::gonePort, [&node, kept](bool here) {
      detail::announceOfNode(here ? HXNodeAddPortNotification : HXNodeRemovePortNotification, node,
                             HXPortInfo, *kept);
    });
  }
  static void addGroupNotice(HXNode& node, const HXPortGroup& group, bool came,
                             HXChangeNotices& notices) {
    const Ref<HXPortGroup> kept(const_cast<HXPortGroup*>(&group));
    notices.addMember(
        node, group, came, Order::newPortGroup, Order::gonePortGroup, [&node, kept](bool here) {
          detail::announceOfNode(
              here ? HXNodeAddPortGroupNotification : HXNodeRemovePortGroupNotification, node,
              HXPortGroupInfo, *kept);
        });
  }
  template <class Map, class Add>
  static void addDifferences(HXNode& node, const Map& earlier, const Map& now,
                             HXChangeNotices& notices, Add add) {
    for (const auto& entry : earlier) {
      if (now.get(entry.key) != entry.value) add(node, *entry.value, false, notices);
    }
    for (const auto& entry : now) {
      if (earlier.get(entry.key) != entry.value) add(node, *entry.value, true, notices);
    }
  }

  struct AllPorts : FieldOf<HXNode> {
    static constexpr const char* kName = "ports";
    static constexpr const char* kTable = kPorts;
    static Ports get(const HXNode& node) { return node.portsByUniqueKey_; }
    static void set(HXNode& node, Ports ports) { node.portsByUniqueKey_ = std::move(ports); }
    static void follow(HXNode& node) { takeUp(node); }
    static void addNotices(HXNode& node, const Ports& earlier, HXChangeNotices& notices) {
      addDifferences(node, earlier, node.portsByUniqueKey_, notices, addPortNotice);
    }
  };
  struct Port : TableOf<HXNode, Ports> {
    static constexpr const char* kName = kPorts;
    static Ports& in(HXNode& node) { return node.portsByUniqueKey_; }
    static void follow(HXNode& node, const String&, const Ref<HXPatchPort>*, bool) { takeUp(node); }
    static void addNotices(HXNode& node, const String&, const Ref<HXPatchPort>* port, bool came,
                           HXChangeNotices& notices) {
      if (port && *port) addPortNotice(node, **port, came, notices);
    }
  };
  template <std::int32_t orientation>
  struct AllPortGroups : FieldOf<HXNode> {
    static constexpr const char* kName =
        orientation == HXOrientationInput ? "inputGroups" : "outputGroups";
    static constexpr const char* kTable = kPortGroups[orientation - HXOrientationInput];
    static PortGroups get(const HXNode& node) { return node.sides_[orientation].groups; }
    static void set(HXNode& node, PortGroups groups) {
      node.sides_[orientation].groups = std::move(groups);
    }
    static void follow(HXNode& node) { takeUp(node); }
    static void addNotices(HXNode& node, const PortGroups& earlier, HXChangeNotices& notices) {
      addDifferences(node, earlier, node.sides_[orientation].groups, notices, addGroupNotice);
    }
  };
  template <std::int32_t orientation>
  struct PortGroup : TableOf<HXNode, PortGroups> {
    static constexpr const char* kName = kPortGroups[orientation - HXOrientationInput];
    static PortGroups& in(HXNode& node) { return node.sides_[orientation].groups; }
    static void addNotices(HXNode& node, const String&, const Ref<HXPortGroup>* group, bool came,
                           HXChangeNotices& notices) {
      if (group && *group) addGroupNotice(node, **group, came, notices);
    }
  };
  struct Parameter : TableOf<HXNode, OrderedMap<Ref<HXParameter>>> {
    static constexpr const char* kName = "parameter";
    static OrderedMap<Ref<HXParameter>>& in(HXNode& node) { return node.parameters_; }
    static void addNotices(HXNode& node, const String&, const Ref<HXParameter>* parameter,
                           bool came, HXChangeNotices& notices) {
      if (!parameter || !*parameter) return;
      notices.addMember(node, **parameter, came, Order::newParameter, Order::goneParameter,
                        [&node, kept = *parameter](bool here) {
                          detail::announceOfNode(here ? HXNodeAddParameterNotification
                                                      : HXNodeRemoveParameterNotification,
                                                 node, HXParameterInfo, *kept);
                        });
    }
  };

  // The definition changes itself; the node is asked before.
  class Definition final : public HXChange {
   public:
    explicit Definition(HXRNode& definition) : HXChange(kKind, definition), snapshot_(definition) {}
    void exchange() override {
      snapshot_.exchange();
      if (const Ref<HXRNodeOwner> owner = snapshot_.definition().node()) {
        if (auto* const node = as<HXNode>(static_cast<Object*>(owner.get()))) takeUp(*node);
      }
    }
    void addNotices(HXChangeNotices& notices) const override {
      auto renamed = snapshot_.renamedPorts();
      if (renamed.empty()) return;
      const Ref<HXRNode> definition(&snapshot_.definition());
      notices.addValue(*definition, "port names", [definition, ports = std::move(renamed)] {
        const Ref<HXRNodeOwner> owner = definition->node();
        if (!owner) return;
        for (const auto& port : ports) owner->patchPortNameDidChange(*port);
      });
    }
    bool isNeutral() const override { return snapshot_.isNeutral(); }
    std::size_t byteCount() const noexcept override {
      return sizeof(*this) + snapshot_.byteCount();
    }

   private:
    static constexpr Kind kKind{.property = "definition"};

    HXRNodeSnapshot snapshot_;
  };
  // What holds an operation open until the definition has changed.
  class DefinitionChange final : public Object {
   public:
    static const Class kClass;
    const Class& isa() const noexcept override { return kClass; }
    explicit DefinitionChange(const HXNode& node) : operation_(node) {}

   private:
    detail::RecordedOperation operation_;
  };
};

const Class HXNodeFields::DefinitionChange::kClass{"HXDefinitionChange", &Object::kClass};

constinit const HXNode::Rarities HXNode::kNoRarities{};

template <class Value>
void HXNode::storeRarity(Value Rarities::*member, Value value) {
  if (!rarities_) {
    if (value == kNoRarities.*member) return;
    rarities_ = std::make_unique<Rarities>();
  }
  (*rarities_).*member = std::move(value);
}
template void HXNode::storeRarity(String Rarities::*, String);
template void HXNode::storeRarity(std::uint64_t Rarities::*, std::uint64_t);

void HXNode::storeName(String name) {
  willSet<HXNodeFields::Name>(*this);
  name_ = std::move(name);
}

void HXNode::storePosition(HXPoint position) {
  willSet<HXNodeFields::Position>(*this);
  position_ = position;
}

void HXNode::storeSelected(bool selected) {
  willSet<HXNodeFields::Selected>(*this);
  selected_ = selected;
}

void HXNode::storeInspectorPanel(std::uint64_t panel) {
  willSet<HXNodeFields::InspectorPanel>(*this);
  storeRarity(&Rarities::inspectorPanel, panel);
}

void HXNode::storeComment(String comment) {
  willSet<HXNodeFields::Comment>(*this);
  storeRarity(&Rarities::comment, std::move(comment));
}

void HXNode::storeForceAllowsSubnodes(bool force) {
  willSet<HXNodeFields::ForceAllowsSubnodes>(*this);
  forceAllowsSubnodes_ = force;
}

void HXNode::storeParentGroup(HXGroup* group) {
  // A node that comes from nowhere comes to the document of the group.
  if (parentGroup() || !group) {
    willSet<HXNodeFields::ParentGroup>(*this);
  } else {
    willSet<HXNodeFields::ParentGroup>(*group, *this);
  }
  parentGroup_ = group;
}

void HXNode::exchangeLinks(const Ref<HXGroup>& group) {
  if (!group || group == subnodeGroup_) return;
  if (subnodeGroup_) subnodeGroup_->linkReplacedIn(*this, {});
  group->linkNode(this, {});
}

Ref<HXGroup> HXNode::storeSubnodeGroup(Ref<HXGroup> group) {
  willSet<HXNodeFields::SubnodeGroup>(*this);
  const Ref<HXGroup> earlier = subnodeGroup_;
  HXNodeFields::SubnodeGroup::set(*this, std::move(group));
  return earlier;
}

void HXNode::storePatch(Ref<HXRNode> patch, String unknownPatchClass) {
  willSet<HXNodeFields::Patch>(*this);
  HXNodeFields::Patch::set(*this, {std::move(patch), std::move(unknownPatchClass)});
}

void HXNode::insertParameter(const String& key, const Ref<HXParameter>& parameter) {
  assert(parameter->node() == this && !parameters_.contains(key));
  willChangeEntry<HXNodeFields::Parameter>(*this, key);
  parameters_.set(key, parameter);
}

Ref<HXParameter> HXNode::takeParameter(const String& key) {
  assert(parameters_.contains(key));
  willChangeEntry<HXNodeFields::Parameter>(*this, key);
  return parameters_.take(key);
}

void HXNode::insertPort(const String& key, const Ref<HXPatchPort>& port) {
  assert(port->node() == this && port->uniqueKey() == key && !portsByUniqueKey_.contains(key));
  willChangeEntry<HXNodeFields::Port>(*this, key);
  portsByUniqueKey_.set(key, port);
}

Ref<HXPatchPort> HXNode::takePort(const String& key) {
  assert(portsByUniqueKey_.contains(key));
  willChangeEntry<HXNodeFields::Port>(*this, key);
  return portsByUniqueKey_.take(key);
}

void HXNode::storePorts(OrderedMap<Ref<HXPatchPort>> ports) {
  assert(std::all_of(ports.begin(), ports.end(), [this](const auto& entry) {
    return entry.value->node() == this && entry.value->uniqueKey() == entry.key;
  }));
  willSet<HXNodeFields::AllPorts>(*this);
  std::swap(portsByUniqueKey_, ports);
}

void HXNode::insertPortGroup(std::int32_t orientation, const Ref<HXPortGroup>& group) {
  assert(group->node() == this && group->orientation() == orientation);
  if (orientation == HXOrientationInput) {
    willChangeEntry<HXNodeFields::PortGroup<HXOrientationInput>>(*this, group->groupKey());
  } else {
    willChangeEntry<HXNodeFields::PortGroup<HXOrientationOutput>>(*this, group->groupKey());
  }
  sides_[orientation].groups.set(group->groupKey(), group);
}

Ref<HXPortGroup> HXNode::takePortGroup(std::int32_t orientation, const String& key) {
  if (orientation == HXOrientationInput) {
    willChangeEntry<HXNodeFields::PortGroup<HXOrientationInput>>(*this, key);
  } else {
    willChangeEntry<HXNodeFields::PortGroup<HXOrientationOutput>>(*this, key);
  }
  return sides_[orientation].groups.take(key);
}

void HXNode::storePortGroups(std::int32_t orientation, OrderedMap<Ref<HXPortGroup>> groups) {
  if (orientation == HXOrientationInput) {
    willSet<HXNodeFields::AllPortGroups<HXOrientationInput>>(*this);
  } else {
    willSet<HXNodeFields::AllPortGroups<HXOrientationOutput>>(*this);
  }
  std::swap(sides_[orientation].groups, groups);
}

void HXNode::storePortGroupsSettled(bool settled) {
  if (isSettled_ == settled) return;
  willSet<HXNodeFields::Settled>(*this);
  isSettled_ = settled;
}

Ref<Object> HXNode::patchWillChange(HXRNode& definition) {
  auto* const recorder = detail::recorderOf(*this);
  if (!recorder) return nullptr;
  auto change = make<HXNodeFields::DefinitionChange>(*this);
  recorder->record(std::make_unique<HXNodeFields::Definition>(definition));
  return change;
}

}  // namespace tarnkit
