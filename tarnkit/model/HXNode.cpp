#include "tarnkit/model/HXNode.h"

#include <fmt/format.h>

#include <algorithm>
#include <cassert>

#include "tarnkit/model/HXChangeRecorder.h"
#include "tarnkit/model/HXDocument.h"
#include "tarnkit/model/HXModel.h"
#include "tarnkit/model/HXNodeWalk.h"
#include "tarnkit/model/HXParameter.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/model/HXPortGroup.h"
#include "tarnkit/model/HXPortGroupCollection.h"
#include "tarnkit/model/HXSubviewGroup.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tarnkit/model/KeyCounter.h"
#include "tarnkit/patches/PatchColors.h"
#include "tarnkit/patches/catalogue/Catalogue.h"
#include "tarnkit/platform/collections/MembersOf.h"

namespace tarnkit {

const Class HXNode::kClass{"HXNode", &Object::kClass, &HXNode::makeForDecoding};

namespace {

// Beyond this many published ports, building a port list looks them up in a map made for the call.
constexpr std::uint32_t kPublishedPortsSearchedInPlace = 8;

const OrderedSet& noPorts() {
  static const Ref<OrderedSet> none = make<OrderedSet>();
  return *none;
}

HXPort* publishedPort(const OrderedSet& ports, const String& key) {
  for (auto& port : membersOf<HXSymbolicPort>(ports)) {
    if (port.uniqueKey() == key) return &port;
  }
  return nullptr;
}

}  // namespace

HXNode::HXNode() : HXNode(Decoding{}) {
  registerModelClasses();
  init();
}

HXNode::HXNode(Decoding) noexcept {}
HXNode::~HXNode() = default;

Ref<Object> HXNode::makeForDecoding(const Class&) { return make<HXNode>(Decoding{}); }

Ref<HXNode> HXNode::makeOfClass(std::string_view className) {
  registerModelClasses();
  const Class* record = ClassRegistry::classNamed(className);
  if (!record || !record->isKindOf(kClass) || record->isKindOf(HXDocument::kClass)) return nullptr;
  auto node = as<HXNode>(record->make());
  if (node) node->init();
  return node;
}

Ref<HXNode> HXNode::makeForPatch(const HXRNodeClass& patchClass) {
  auto node = makeOfClass(patchClass.nodeClassName());
  const auto patch = patchClass.makeDefinition();
  if (!node || !patch) return nullptr;
  patch->setExternal(HXRNode::hx_isExternalClass(patchClass));
  node->setPatch(patch);
  return node;
}

void HXNode::init() {
  uniqueKey_ = hx_newUniqueKey();
  for (const auto orientation : kBothSides) {
    sides_[orientation].collection = make<HXPortGroupCollection>(this, orientation);
  }
}

KeyCounter& HXNode::keyCounter() noexcept {
  static constinit KeyCounter counter{"node_"};
  return counter;
}

String HXNode::hx_newUniqueKey() { return keyCounter().next(); }

String HXNode::description() const {
  const String documentKey = this->documentKey();
  return String(fmt::format(
      "<{}: {}, DocumentKey:{}, UniqueKey:{}>", isa().name(), static_cast<const void*>(this),
      documentKey.isNil() ? "(null)" : documentKey.view(), uniqueKey_.view()));
}

void HXNode::setName(String name) {
  if (name == name_) return;
  const detail::RecordedOperation operation(*this);
  storeName(std::move(name));
  announceName();
}

void HXNode::setPosition(HXPoint position) {
  if (position == position_) return;
  const detail::RecordedOperation operation(*this);
  storePosition(position);
  announcePosition();
}

void HXNode::setSelected(bool selected) {
  if (selected == selected_) return;
  const detail::RecordedOperation operation(*this);
  storeSelected(selected);
  announceSelection();
}

void HXNode::setInspectorPanel(std::uint64_t panel) {
  if (panel == inspectorPanel()) return;
  const detail::RecordedOperation operation(*this);
  storeInspectorPanel(panel);
}

void HXNode::setComment(String comment) {
  if (comment == this->comment()) return;
  const detail::RecordedOperation operation(*this);
  storeComment(std::move(comment));
}

void HXNode::announceName() {
  detail::announce(HXNodeNameDidChangeNotification, *this, *this,
                   {{HXNodeInfo, this}, {HXNameInfo, name_.object().get()}});
}

void HXNode::announcePosition() {
  detail::announce(HXNodePositionDidChangeNotification, *this, *this, {{HXNodeInfo, this}});
}

void HXNode::announceSelection() {
  detail::announce(HXNodeSelectionDidChangeNotification, *this, *this, {{HXNodeInfo, this}});
}

RGBA HXNode::defaultColor() const {
  if (as<HXSubviewGroup>(subnodeGroup_.get())) return HXViewPatchColor;
  return patchClass().defaultColor();
}

const HXRNodeClass& HXNode::patchClass() const noexcept {
  return patch_ ? patch_->patchClass() : HXRNode::kClass;
}

void HXNode::setParentGroup(HXGroup* group) {
  if (group == parentGroup_.get()) return;
  const Ref<HXNode> self(this);
  const detail::RecordedOperation operation(*this);
  if (group) return group->addNode(*this);
  const Ref<HXGroup> present(parentGroup());
  present->removeNode(this);
  // One that says that it is in a group which does not hold it.
  if (parentGroup() != present.get()) return;
  enterGroup(nullptr, Told::everythingBelow, Recorded::byItself);
}

void HXNode::followEntry(HXGroup& group, bool came, PassKey<HXGroup>) noexcept {
  if (came && !parentGroup()) parentGroup_ = &group;
  if (!came && parentGroup() == &group) parentGroup_ = nullptr;
}

void HXNode::enterGroup(HXGroup* group, Told told, Recorded recorded) {
  if (group == parentGroup_.get()) return;
  if (told == Told::everythingBelow) hierarchyWillChange();
  if (told == Told::itself) tellParametersHierarchyWillChange();
  if (recorded == Recorded::byItself) {
    storeParentGroup(group);
  } else {
    parentGroup_ = group;
  }
  if (told == Told::everythingBelow) hierarchyDidChange();
  if (told == Told::itself) tellParametersHierarchyDidChange();
}

HXNode* HXNode::enclosingNode() const noexcept {
  const auto* group = parentGroup();
  return group ? group->node() : nullptr;
}

HXDocument* HXNode::document() const noexcept {
  for (auto* node = const_cast<HXNode*>(this); node; node = node->enclosingNode()) {
    if (auto* document = node->asDocument()) return document;
  }
  return nullptr;
}

String HXNode::documentKey() const {
  const auto* document = this->document();
  return document ? document->documentKey() : String();
}

std::vector<String> HXNode::keyPath() const {
  std::vector<String> keys;
  if (!hasKeyPath_) return keys;
  for (const HXNode* node = this; node; node = node->enclosingNode()) {
    keys.push_back(node->uniqueKey_);
  }
  return keys;
}

void HXNode::hierarchyWillChange() {
  if (!subnodeGroup_) return tellParametersHierarchyWillChange();
  for (HXNodeWalk walk(*this); HXNode* node = walk.next();) {
    node->tellParametersHierarchyWillChange();
  }
}

void HXNode::hierarchyDidChange() {
  if (!subnodeGroup_) return tellParametersHierarchyDidChange();
  for (HXNodeWalk walk(*this); HXNode* node = walk.next();) {
    node->tellParametersHierarchyDidChange();
  }
}

void HXNode::tellParametersHierarchyWillChange() {
  for (const auto& entry : parameters_) entry.value->hierarchyWillChange();
}

// The key path is read off the hierarchy when it is asked for; here it only begins to exist.
void HXNode::tellParametersHierarchyDidChange() {
  for (const auto& entry : parameters_) entry.value->hierarchyDidChange();
  hasKeyPath_ = true;
}

void HXNode::pruneInvalidConnections() {
  const detail::RecordedOperation operation(*this);
  for (HXNodeWalk walk(*this); HXNode* node = walk.next();) {
    for (const auto& entry : node->portsByUniqueKey_) entry.value->pruneInvalidConnections();
  }
}

void HXNode::setForceAllowsSubnodes(bool force) {
  if (force == forceAllowsSubnodes_) return;
  const detail::RecordedOperation operation(*this);
  storeForceAllowsSubnodes(force);
  const Ref<HXNode> self(this);
  // What was published shows until the groups that showed it are announced to go.
  const Ref<HXGroup> earlierGroup = subnodeGroup_;
  HXNodeSync::hx_syncSubnodeGroupWithPatch();
  if (earlierGroup && !subnodeGroup_) HXNodeSync::hx_syncPortGroupsWithPatch();
}

bool HXNode::shouldBeTreatedAsViewNode() const {
  if ((patch_ && patch_->isKindOf(HXRViewNode)) || as<HXSubviewGroup>(subnodeGroup_.get())) {
    return true;
  }
  const auto* group = isOfUnknownPatch() ? as<HXSubviewGroup>(parentGroup()) : nullptr;
  return group && group->subviewNodesInForce().contains(this);
}

void HXNode::swapSubnodeGroupToGroup() {
  if (subnodeGroup_ && subnodeGroup_->isMemberOf(HXGroup::kClass)) return;
  hx_swapSubnodeGroupToGroup(makeSubnodeGroup(false));
}

void HXNode::swapSubnodeGroupToViewGroup() {
  if (as<HXSubviewGroup>(subnodeGroup_.get())) return;
  hx_swapSubnodeGroupToGroup(makeSubnodeGroup(true));
}

Ref<HXGroup> HXNode::makeSubnodeGroup(bool ofViews) const {
  if (ofViews) return HXSubviewGroup::initWithGroup(subnodeGroup_.get());
  return HXGroup::initWithGroup(subnodeGroup_.get());
}

void HXNode::hx_swapSubnodeGroupToGroup(const Ref<HXGroup>& group) {
  const Ref<HXNode> self(this);
  const detail::RecordedOperation operation(*this);
  exchangeSubnodeGroup(group);
  if (const Ref<HXGroup> parent{parentGroup()}) parent->subnodeViewTypeDidChange(*this);
}

void HXNode::exchangeSubnodeGroup(const Ref<HXGroup>& group) {
  assert(group && group != subnodeGroup_);
  announceSubnodeGroup(storeSubnodeGroup(group));
}

void HXNode::announceSubnodeGroup(const Ref<HXGroup>& earlier) {
  const Ref<HXGroup> group = subnodeGroup_;
  detail::announce(
      HXNodeSubnodeGroupDidChangeNotification, *this, *this,
      {{HXNodeInfo, this}, {HXOldGroupInfo, earlier.get()}, {HXNewGroupInfo, group.get()}});
}

HXPortGroup* HXNode::portGroupForKey(const String& key, std::int32_t orientation) const {
  const auto* side = sides_.find(orientation);
  const auto* group = side ? side->groups.find(key) : nullptr;
  return group ? group->get() : nullptr;
}

std::vector<Ref<HXPortGroup>> HXNode::portGroups(std::int32_t orientation) const {
  std::vector<Ref<HXPortGroup>> groups;
  const auto* side = sides_.find(orientation);
  if (!side) return groups;
  const Ref<const OrderedSet> keys = side->collection->portGroupKeys();
  for (const auto& key : *keys) {
    if (const auto* group = side->groups.find(String::from(key.get()))) groups.push_back(*group);
  }
  return groups;
}

HXPort* HXNode::portForKey(const String& key) const {
  if (const auto* port = portsByUniqueKey_.find(key)) return port->get();
  if (!subnodeGroup_ || key.isNil()) return nullptr;
  for (const auto orientation : kBothSides) {
    if (auto* port = publishedPort(symbolicPortsInForce(orientation), key)) return port;
  }
  return nullptr;
}

std::vector<Ref<HXPort>> HXNode::shownPorts(std::int32_t orientation) const {
  OrderedMap<HXPort*> published;
  const bool manyPublished =
      symbolicInputPortsInForce().count() + symbolicOutputPortsInForce().count() >
      kPublishedPortsSearchedInPlace;
  if (manyPublished) {
    for (const auto side : kBothSides) {
      for (auto& port : membersOf<HXSymbolicPort>(symbolicPortsInForce(side))) {
        const String key = port.uniqueKey();
        if (!published.contains(key)) published.set(key, &port);
      }
    }
  }
  std::vector<Ref<HXPort>> ports;
  for (const auto& group : portGroups(orientation)) {
    if (group->hidden()) continue;
    const Ref<const OrderedSet> portKeys = group->portKeys();
    for (const auto& member : *portKeys) {
      const String key = String::from(member.get());
      const auto* own = manyPublished ? portsByUniqueKey_.find(key) : nullptr;
      HXPort* port = own ? own->get() : manyPublished ? published.get(key) : portForKey(key);
      if (port) ports.emplace_back(port);
    }
  }
  return ports;
}

std::vector<Ref<HXPort>> HXNode::ports() const {
  auto ports = inputPorts();
  const auto outputs = outputPorts();
  ports.insert(ports.end(), outputs.begin(), outputs.end());
  return ports;
}

OrderedMap<Ref<HXPatchPort>> HXNode::portsByUniqueKey() const { return portsByUniqueKey_; }

std::vector<Ref<HXSymbolicPort>> HXNode::symbolicInputPorts() const {
  return subnodeGroup_ ? subnodeGroup_->symbolicInputPorts() : std::vector<Ref<HXSymbolicPort>>();
}
std::vector<Ref<HXSymbolicPort>> HXNode::symbolicOutputPorts() const {
  return subnodeGroup_ ? subnodeGroup_->symbolicOutputPorts() : std::vector<Ref<HXSymbolicPort>>();
}

const OrderedSet& HXNode::symbolicPortsInForce(std::int32_t orientation) const noexcept {
  return subnodeGroup_ ? subnodeGroup_->symbolicPortsInForce(orientation) : noPorts();
}

OrderedMap<Ref<HXParameter>> HXNode::parameters() const { return parameters_; }

HXParameter* HXNode::parameterForKey(const String& key) const {
  const auto* parameter = parameters_.find(key);
  return parameter ? parameter->get() : nullptr;
}

void HXNode::parameterDidChange(HXParameter& parameter) {
  const Ref<HXRParameter> patchParameter = parameter.patchParameter();
  if (patch_ && patchParameter) Ref<HXRNode>(patch_)->parameterValueDidChange(*patchParameter);
}

void HXNode::willSetPatch(const Ref<HXRNode>&) {}
void HXNode::didSetPatch() {}
void HXNode::didDropSubnodeGroup() {}
HXPort* HXNode::collectingPort(const HXPort&) const { return nullptr; }

void HXNode::setPatch(const Ref<HXRNode>& patch) {
  const Ref<HXNode> self(this);
  const detail::RecordedOperation operation(*this);
  const Ref<HXRNode> fresh = patch;
  willSetPatch(fresh);
  storePatch(fresh, nullptr);
  HXNodeSync::hx_syncPatch();
  didSetPatch();
}

void HXNode::addPatchPort(HXRPort& port) { HXNodeSync::addPatchPort(port); }
void HXNode::removePatchPort(HXRPort& port) { HXNodeSync::removePatchPort(port); }
void HXNode::addPatchParameter(HXRParameter&) { HXNodeSync::hx_syncParametersWithPatch(); }
void HXNode::removePatchParameter(HXRParameter&) { HXNodeSync::hx_syncParametersWithPatch(); }
void HXNode::patchLayoutWasCopied() { HXNodeSync::patchLayoutWasCopied(); }
void HXNode::patchRebuildWillBegin(HXRNode&) { HXNodeSync::patchRebuildWillBegin(); }
void HXNode::patchRebuildDidEnd(HXRNode&) { HXNodeSync::patchRebuildDidEnd(); }

void HXNode::patchPortNameDidChange(HXRPort& patchPort) {
  auto* port = portForKey(patchPort.uniqueKey());
  if (!port) return;
  detail::announce(HXPortNameDidChangeNotification, *port, *this,
                   {{HXPortInfo, port}, {HXNameInfo, port->name().object().get()}});
}

void HXNode::symbolicPortNameDidChange(HXSymbolicPort& symbolicPort) {
  HXNodeSync::symbolicPortWasRenamed(symbolicPort);
}
void HXNode::symbolicPortNameWasAdded(HXPort& port) {
  HXNodeSync::symbolicPortWasShown(port.symbolicPort());
}
void HXNode::symbolicPortNameWasRemoved(HXPort&, HXSymbolicPort& symbolicPort) {
  HXNodeSync::symbolicPortWasHidden(symbolicPort);
}
void HXNode::symbolicPortWasPointed(HXSymbolicPort&, HXPort*) {}

}  // namespace tarnkit
