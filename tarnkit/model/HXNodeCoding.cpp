#include <fmt/format.h>

#include <utility>

#include "tarnkit/archive/HXCoding.h"
#include "tarnkit/model/HXDecodedLosses.h"
#include "tarnkit/model/HXDecodedNodes.h"
#include "tarnkit/model/HXNode.h"
#include "tarnkit/model/HXParameter.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/model/HXPortGroup.h"
#include "tarnkit/model/HXPortGroupCollection.h"
#include "tarnkit/model/KeyCounter.h"
#include "tarnkit/patches/HXArchivedKeys.h"
#include "tarnkit/platform/system/Log.h"

namespace tarnkit {

namespace {

namespace key = archived::node;

constinit const Symbol kDeviceUniqueKey{"PMNode.uniqueKey"};
constinit const Symbol kDeviceParentGroup{"PMNode.parentGroup"};
constinit const Symbol kDeviceSubnodeGroup{"PMNode.subnodeGroup"};
constinit const Symbol kDevicePortsByUniqueKey{"PMNode.portsByUniqueKey"};
constinit const Symbol kDeviceParameters{"PMNode.parameters"};
constinit const Symbol kDeviceParametersByUniqueKey{"PMNode.parametersByUniqueKey"};
constinit const Symbol kDeviceProcessClassName{"PMNode.processClassName"};

// The parameters as the ordered set that they are in the archives.
void encodeParameters(const OrderedMap<Ref<HXParameter>>& parameters, Encoder& coder,
                      const Symbol& key) {
  auto at = parameters.begin();
  coder.encodeCollection(
      CodingKind::orderedSet, parameters.size(),
      [&](std::size_t) -> const Object* { return (at++)->value.get(); }, key);
}

// Whether the groups stand among themselves as their keys do in the collection.
bool followsKeys(const OrderedMap<Ref<HXPortGroup>>& groups, const OrderedSet& keys) {
  auto at = groups.begin();
  for (const auto& key : keys) {
    if (at == groups.end()) return true;
    if (at->key.object()->isEqual(*key)) ++at;
  }
  return at == groups.end();
}

// The groups in the order of their collection, whenever each was made: texts and differences know
// no other order. One whose key the collection does not have follows.
void encodeGroups(const OrderedMap<Ref<HXPortGroup>>& groups,
                  const HXPortGroupCollection* collection, Encoder& coder, const Symbol& key) {
  const Ref<const OrderedSet> keys = collection ? collection->portGroupKeys() : nullptr;
  if (!keys || followsKeys(groups, *keys)) return coder.encodeMap(groups, key);
  OrderedMap<Ref<HXPortGroup>> ordered;
  ordered.reserve(groups.size());
  for (const auto& member : *keys) {
    const String groupKey = String::from(member.get());
    if (const auto* group = groups.find(groupKey)) ordered.set(groupKey, *group);
  }
  for (const auto& entry : groups) ordered.set(entry.key, entry.value);
  coder.encodeMap(ordered, key);
}

}  // namespace

const Symbol& HXNode::deviceClassName() const {
  static constinit const Symbol name{"PMNode"};
  return name;
}

void HXNode::encodeWithCoder(Encoder& coder) const {
  if (isEditorCodingType(coder.codingType())) {
    if (coder.codingType() == HXCodingTypeEditorWithKeys) {
      coder.encodeString(uniqueKey_, key::kUniqueKey);
    }
    coder.encodeConditionalObject(parentGroup_, key::kParentGroup);
    coder.encodeObject(subnodeGroup_, key::kSubnodeGroup);
    coder.encodeBool(forceAllowsSubnodes_, key::kForceAllowsSubnodes);
    coder.encodeString(patch() ? patch_->isa().nameString() : unknownPatchClass(),
                       key::kPatchClass);
    coder.encodeString(name_, key::kName);
    coder.encodeFloat(position_.x, key::kPositionX);
    coder.encodeFloat(position_.y, key::kPositionY);
    // Deliberately narrowed to 32 bits: that is the width which documents have always had.
    coder.encodeInt(static_cast<std::int32_t>(inspectorPanel()), key::kInspectorPanel);
    coder.encodeBool(selected_, key::kSelected);
    for (const auto side : kBothSides) {
      coder.encodeObject(sides_[side].collection, key::kPortGroupCollection[side]);
    }
    for (const auto side : kBothSides) {
      encodeGroups(sides_[side].groups, sides_[side].collection.get(), coder,
                   key::kPortGroupsByKey[side]);
    }
    coder.encodeMap(portsByUniqueKey_, key::kPortsByUniqueKey);
    encodeParameters(parameters_, coder, key::kParameters);
    coder.encodeMap(parameters_, key::kParametersByUniqueKey);
    coder.encodeString(comment(), key::kComment);
  } else if (coder.codingType() == HXCodingTypeDevice) {
    coder.setClassName(deviceClassName(), isa());
    coder.encodeString(uniqueKey_, kDeviceUniqueKey);
    coder.encodeConditionalObject(parentGroup_, kDeviceParentGroup);
    coder.encodeObject(subnodeGroup_, kDeviceSubnodeGroup);
    coder.encodeMap(portsByUniqueKey_, kDevicePortsByUniqueKey);
    encodeParameters(parameters_, coder, kDeviceParameters);
    coder.encodeMap(parameters_, kDeviceParametersByUniqueKey);
    coder.encodeString(patchClass().processClassName(), kDeviceProcessClassName);
  }
}

void HXNode::initWithCoder(Decoder& coder) {
  HXNodeSync::rest();
  hasKeyPath_ = true;
  coder.checkAtEnd(&detail::refuseNodesInCircles);
  if (coder.codingType() == HXCodingTypeEditorWithKeys) {
    uniqueKey_ = coder.decodeString(key::kUniqueKey);
    keyCounter().moveBeyond(uniqueKey_.view());
  }
  if (uniqueKey_.isNil()) uniqueKey_ = hx_newUniqueKey();
  parentGroup_ = coder.decode<HXGroup>(key::kParentGroup);
  subnodeGroup_ = coder.decode<HXGroup>(key::kSubnodeGroup);
  forceAllowsSubnodes_ = coder.decodeBool(key::kForceAllowsSubnodes);
  hx_decodePatchWithCoder(coder);
  name_ = coder.decodeString(key::kName);
  position_ = {coder.decodeFloat(key::kPositionX), coder.decodeFloat(key::kPositionY)};
  storeRarity(&Rarities::inspectorPanel,
              static_cast<std::uint64_t>(std::int64_t{coder.decodeInt(key::kInspectorPanel)}));
  selected_ = coder.decodeBool(key::kSelected);
  for (const auto orientation : kBothSides) {
    Side& side = sides_[orientation];
    side.collection = coder.decode<HXPortGroupCollection>(key::kPortGroupCollection[orientation]);
    if (!side.collection) side.collection = make<HXPortGroupCollection>(this, orientation);
    coder.decodeEachEntry<HXPortGroup>(
        key::kPortGroupsByKey[orientation],
        [&](const String& key, auto& group) { side.groups.set(key, group); });
  }
  decodeParameters(coder);
  storeRarity(&Rarities::comment, coder.decodeString(key::kComment));
  coder.decodeEachEntry<HXPatchPort>(key::kPortsByUniqueKey, [&](const String& key, auto& port) {
    portsByUniqueKey_.set(key, port);
  });
}

// A patch class that nobody knows is kept by name, with everything that the node was read with.
void HXNode::hx_decodePatchWithCoder(Decoder& coder) {
  const String className = coder.decodeString(key::kPatchClass);
  if (className.isNil()) return;
  const Class* record = ClassRegistry::classNamed(className);
  if (record && record->isKindOf(HXRNode::kClass)) {
    patch_ = static_cast<const HXRNodeClass*>(record)->makeDefinition();
  } else {
    storeRarity(&Rarities::unknownPatchClass, className);
  }
}

// The ordered set gives the order, the map the keys; what only one of them holds comes last, or
// (not knowing its key) is dropped.
void HXNode::decodeParameters(Decoder& coder) {
  OrderedMap<Ref<HXParameter>> byKey;
  std::vector<std::pair<const HXParameter*, String>> keys;
  coder.decodeEachEntry<HXParameter>(key::kParametersByUniqueKey,
                                     [&](const String& key, auto& parameter) {
                                       byKey.set(key, parameter);
                                       keys.emplace_back(parameter.get(), key);
                                     });
  std::sort(keys.begin(), keys.end(),
            [](const auto& a, const auto& b) { return std::less<>()(a.first, b.first); });
  coder.decodeEach<HXParameter>(key::kParameters, [&](const Ref<HXParameter>& parameter) {
    const auto found = std::lower_bound(keys.begin(), keys.end(), parameter.get(),
                                        [](const auto& entry, const HXParameter* wanted) {
                                          return std::less<>()(entry.first, wanted);
                                        });
    if (found == keys.end() || found->first != parameter.get()) {
      Log::warning("HXNode",
                   fmt::format("Dropping a parameter of {} that has no key", uniqueKey_.view()));
      return;
    }
    parameters_.set(found->second, byKey.take(found->second));
  });
  for (const auto& entry : byKey) parameters_.set(entry.key, entry.value);
}

void HXNode::awakeAfterDecoding(Decoder& coder) {
  HXNodeSync::wake();
  detail::dropRepeated(*this, portsByUniqueKey_);
  for (auto& side : sides_) detail::dropRepeated(*this, side.groups);
  if (subnodeGroup_) {
    // The node that has the group holds it, whatever node the group says that it is of.
    const auto* other = subnodeGroup_->node();
    if (other && other != this && other->subnodeGroup_ == subnodeGroup_) {
      coder.fail("HXNode.subnodeGroup: a group that belongs to two nodes");
      return;
    }
    if (other != this) subnodeGroup_->linkAdoptedBy(*this, {});
  }
  for (const auto& entry : portsByUniqueKey_) {
    if (!entry.value || (entry.value->node() && entry.value->node() != this)) {
      coder.fail("HXNode.portsByUniqueKey: a port that belongs to two nodes");
      return;
    }
    entry.value->linkNode(this, PassKey<HXNode>());
  }
  for (const auto& entry : parameters_) {
    if (!entry.value || entry.value->node() != this) {
      coder.fail("HXNode.parametersByUniqueKey: a parameter that belongs to another node");
      return;
    }
  }
  if (!isOfUnknownPatch()) {
    const std::size_t archivedPorts = portsByUniqueKey_.size();
    const Ref<HXRNode> patch = std::exchange(patch_, nullptr);
    detail::DecodedLosses::Watch watch(*this, patch.get());
    setPatch(patch);
    watch.end();
    // An expression may name as many ports as the document has letters, and many nodes share it.
    const std::size_t ports = portsByUniqueKey_.size();
    if (ports > archivedPorts) coder.countMade(ports - archivedPorts);
    return;
  }
  patch_ = makeStandIn();
  takeUp(*patch_);
  HXNodeSync::hx_syncPatch();
  didSetPatch();
}

Ref<HXRNode> HXNode::makeStandIn() const {
  auto standIn = HXRNode::kClass.makeDefinition();
  BySide<String> shownGroups;
  for (const auto orientation : kBothSides) {
    HXRPortGroupCollection& groups = standIn->portGroupCollection(orientation);
    auto known = portGroups(orientation);
    for (const auto& entry : sides_[orientation].groups) known.push_back(entry.value);
    String& shown = shownGroups[orientation];
    for (const auto& group : known) {
      const String& key = group->groupKey();
      if (key.isNil() || !as<HXPatchPortGroup>(group) || groups.portGroupForKey(key)) continue;
      groups.addPortGroup(*make<HXRPortGroup>(key, orientation));
      if (shown.isNil() && !group->hidden()) shown = key;
    }
  }
  for (const auto& entry : portsByUniqueKey_) {
    const HXPatchPort& port = *entry.value;
    const String* shown = shownGroups.find(port.orientation());
    standIn->addPort(
        *make<HXRPort>(entry.key, entry.key, port.orientation(), port.connectionRelationship()),
        shown ? *shown : String());
  }
  return standIn;
}

void HXNode::abandonDecoding() {
  subnodeGroup_ = nullptr;
  portsByUniqueKey_.clear();
  parameters_.clear();
}

}  // namespace tarnkit
