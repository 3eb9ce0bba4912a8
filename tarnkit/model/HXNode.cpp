#include "tarnkit/model/HXNode.h"

#include <fmt/format.h>

#include "tarnkit/model/HXDocument.h"
#include "tarnkit/model/HXModel.h"
#include "tarnkit/model/HXNodePortSide.h"
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
  for (const auto& member : ports) {
    auto& port = static_cast<HXSymbolicPort&>(*member);
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

void HXNode::init() {
  uniqueKey_ = hx_newUniqueKey();
  inputPortGroupCollection_ = make<HXPortGroupCollection>(this, HXOrientationInput);
  outputPortGroupCollection_ = make<HXPortGroupCollection>(this, HXOrientationOutput);
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
  name_ = std::move(name);
  detail::announce(HXNodeNameDidChangeNotification, *this, *this,
                   [this](const Ref<Object>& documentKey) {
                     return UserInfo{{HXDocumentKeyInfo, documentKey},
                                     {HXNodeInfo, Ref<Object>(this)},
                                     {HXNameInfo, name_.object()}};
                   });
}

void HXNode::setPosition(HXPoint position) {
  if (position == position_) return;
  position_ = position;
  detail::announce(
      HXNodePositionDidChangeNotification, *this, *this, [this](const Ref<Object>& documentKey) {
        return UserInfo{{HXDocumentKeyInfo, documentKey}, {HXNodeInfo, Ref<Object>(this)}};
      });
}

void HXNode::setSelected(bool selected) {
  if (selected == selected_) return;
  selected_ = selected;
  detail::announce(
      HXNodeSelectionDidChangeNotification, *this, *this, [this](const Ref<Object>& documentKey) {
        return UserInfo{{HXDocumentKeyInfo, documentKey}, {HXNodeInfo, Ref<Object>(this)}};
      });
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
  hierarchyWillChange();
  parentGroup_ = group;
  hierarchyDidChange();
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
  for (HXNodeWalk walk(*this); HXNode* node = walk.next();) {
    for (const auto& entry : node->portsByUniqueKey_) entry.value->pruneInvalidConnections();
  }
}

void HXNode::setForceAllowsSubnodes(bool force) {
  if (force == forceAllowsSubnodes_) return;
  forceAllowsSubnodes_ = force;
  const Ref<HXNode> self(this);
  // What was published shows until the groups that showed it are announced to go.
  const Ref<HXGroup> earlierGroup = subnodeGroup_;
  hx_syncSubnodeGroupWithPatch();
  if (earlierGroup && !subnodeGroup_) hx_syncPortGroupsWithPatch();
}

bool HXNode::shouldBeTreatedAsViewNode() const {
  if ((patch_ && patch_->isKindOf(HXRViewNode)) || as<HXSubviewGroup>(subnodeGroup_.get())) {
    return true;
  }
  const auto* group = unknownPatchClass_.isNil() ? nullptr : as<HXSubviewGroup>(parentGroup());
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

void HXNode::hx_swapSubnodeGroupToGroup(Ref<HXGroup> group) {
  const Ref<HXNode> self(this);
  exchangeSubnodeGroup(group);
  if (const Ref<HXGroup> parent{parentGroup()}) parent->subnodeViewTypeDidChange(*this);
}

void HXNode::exchangeSubnodeGroup(const Ref<HXGroup>& group) {
  const Ref<HXGroup> old = std::exchange(subnodeGroup_, group);
  if (old) {
    old->setNode(nullptr);
    old->formerNode_ = this;
  }
  group->setNode(this);
  detail::announce(HXNodeSubnodeGroupDidChangeNotification, *this, *this,
                   [&](const Ref<Object>& documentKey) {
                     return UserInfo{{HXDocumentKeyInfo, documentKey},
                                     {HXNodeInfo, Ref<Object>(this)},
                                     {HXOldGroupInfo, old},
                                     {HXNewGroupInfo, group}};
                   });
}

HXPortGroup* HXNode::inputPortGroupForKey(const String& key) const {
  return inputPortGroupsByKey_.get(key).get();
}

HXPortGroup* HXNode::outputPortGroupForKey(const String& key) const {
  return outputPortGroupsByKey_.get(key).get();
}

HXPortGroup* HXNode::portGroupForKey(const String& key, std::int32_t orientation) const {
  if (orientation == HXOrientationInput) return inputPortGroupForKey(key);
  if (orientation == HXOrientationOutput) return outputPortGroupForKey(key);
  return nullptr;
}

std::vector<Ref<HXPortGroup>> HXNode::portGroups(std::int32_t orientation) const {
  const auto& collection =
      orientation == HXOrientationInput ? inputPortGroupCollection_ : outputPortGroupCollection_;
  const Ref<const OrderedSet> keys = collection->portGroupKeys();
  std::vector<Ref<HXPortGroup>> groups;
  for (const auto& key : *keys) {
    if (auto* group = portGroupForKey(String::from(key.get()), orientation)) {
      groups.emplace_back(group);
    }
  }
  return groups;
}

std::vector<Ref<HXPortGroup>> HXNode::inputPortGroups() const {
  return portGroups(HXOrientationInput);
}
std::vector<Ref<HXPortGroup>> HXNode::outputPortGroups() const {
  return portGroups(HXOrientationOutput);
}

HXPort* HXNode::portForKey(const String& key) const {
  if (const auto* port = portsByUniqueKey_.find(key)) return port->get();
  if (!subnodeGroup_ || key.isNil()) return nullptr;
  if (auto* port = publishedPort(symbolicInputPortsInForce(), key)) return port;
  return publishedPort(symbolicOutputPortsInForce(), key);
}

std::vector<Ref<HXPort>> HXNode::shownPorts(std::int32_t orientation) const {
  OrderedMap<HXPort*> published;
  const bool manyPublished =
      symbolicInputPortsInForce().count() + symbolicOutputPortsInForce().count() >
      kPublishedPortsSearchedInPlace;
  if (manyPublished) {
    for (const auto* ports : {&symbolicInputPortsInForce(), &symbolicOutputPortsInForce()}) {
      for (const auto& member : *ports) {
        auto& port = static_cast<HXSymbolicPort&>(*member);
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

std::vector<Ref<HXPort>> HXNode::inputPorts() const { return shownPorts(HXOrientationInput); }
std::vector<Ref<HXPort>> HXNode::outputPorts() const { return shownPorts(HXOrientationOutput); }

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

const OrderedSet& HXNode::symbolicInputPortsInForce() const noexcept {
  return subnodeGroup_ ? subnodeGroup_->symbolicInputPortsInForce() : noPorts();
}
const OrderedSet& HXNode::symbolicOutputPortsInForce() const noexcept {
  return subnodeGroup_ ? subnodeGroup_->symbolicOutputPortsInForce() : noPorts();
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

}  // namespace tarnkit
