#include "tarnkit/patches/HXRNode.h"

#include <algorithm>
#include <cassert>

#include "tarnkit/patches/PatchColors.h"
#include "tarnkit/platform/system/Bundle.h"
#include "tarnkit/platform/system/Log.h"

namespace tarnkit {

namespace {
constexpr const char* kNoKeys[] = {nullptr};
}  // namespace

const HXRNodeClass HXRNode::kClass{"HXRNode",
                                   &Object::kClass,
                                   {.processClassName = "PMRPatch",
                                    .patchViewClassName = "HXBasicPatchView",
                                    .defaultColor = &HXPrimaryPatchColor,
                                    .hiddenPortGroupKeys = kNoKeys},
                                   constructPatch<HXRNode>};

HXRNode::HXRNode(const HXRNodeClass& patchClass) : class_(&patchClass) {
  const HXRNode* const model = prototype();
  if (!model) {
    layout_ = make<HXRPortLayout>(this);
    return;
  }
  assert(model->layout_->isShared());
  layout_ = model->layout_;
  for (const auto& parameter : model->parametersInForce()) {
    Ref<HXRParameter> copy = parameter->copy();
    copy->linkNode(this, {});
    parameters_.append(std::move(copy));
  }
}

const HXRNode* HXRNode::prototype() const noexcept {
  return class_->resolved().prototype.load(std::memory_order_acquire);
}

HXRPortLayout& HXRNode::ownLayout() {
  if (layout_->isShared()) {
    layout_ = layout_->copyForNode(*this);
    assert(!layout_->isShared());
    if (const Ref<HXRNodeOwner> owner = node()) owner->patchLayoutWasCopied();
  }
  return *layout_;
}

HXRPort* HXRNode::portForKey(const String& uniqueKey) {
  if (!layout_->ports().contains(uniqueKey)) return nullptr;
  return ownLayout().ports().get(uniqueKey).get();
}

OrderedMap<Ref<HXRPort>> HXRNode::ports() { return ownLayout().ports(); }
HXRPortGroupCollection& HXRNode::portGroupCollection(std::int32_t orientation) {
  return *ownLayout().collection(orientation);
}
HXRPortGroup* HXRNode::hx_inputPortGroupForKey(const String& groupKey) {
  return inputPortGroupCollection().portGroupForKey(groupKey);
}
HXRPortGroup* HXRNode::hx_outputPortGroupForKey(const String& groupKey) {
  return outputPortGroupCollection().portGroupForKey(groupKey);
}

void HXRNode::addPort(HXRPort& port, const String& portGroup) {
  if (!layout_->collection(port.orientation())) return;
  if (port.uniqueKey().isNil() || port.isShared()) {
    Log::warning(isa().name(), port.isShared() ? "A shared port description is not added"
                                               : "A port without a key is not added");
    return;
  }
  const Ref<HXRPort> kept(&port);
  const Ref<Object> change = willChange();
  ownLayout().addPort(port,
                      portGroup.isNil() ? String::interned(HXRDefaultPortGroupKey) : portGroup);
  if (const Ref<HXRNodeOwner> owner = node()) owner->addPatchPort(port);
}

void HXRNode::removePort(HXRPort& port) {
  if (port.node() != this) return;
  const Ref<HXRPort> kept(&port);
  const Ref<Object> change = willChange();
  if (!ownLayout().removePort(port)) return;
  if (const Ref<HXRNodeOwner> owner = node()) owner->removePatchPort(port);
}

HXRParameter* HXRNode::parameterForKey(const String& uniqueKey) const {
  const auto run = parametersInForce();
  const auto found = std::find_if(run.rbegin(), run.rend(), [&](const auto& parameter) {
    return parameter->uniqueKey() == uniqueKey;
  });
  return found == run.rend() ? nullptr : found->get();
}

void HXRNode::addParameter(HXRParameter& parameter) {
  if (parameter.uniqueKey().isNil()) {
    Log::warning(isa().name(), "A parameter without a key is not added");
    return;
  }
  const Ref<Object> change = willChange();
  parameters_.append(Ref<HXRParameter>(&parameter));
  parameter.linkNode(this, {});
  if (const Ref<HXRNodeOwner> owner = node()) owner->addPatchParameter(parameter);
}

void HXRNode::removeParameter(HXRParameter& parameter) {
  const auto run = parametersInForce();
  const auto found = std::find(run.begin(), run.end(), &parameter);
  if (found == run.end()) return;
  const Ref<HXRParameter> kept = *found;
  const Ref<Object> change = willChange();
  parameters_.remove(static_cast<std::size_t>(found - run.begin()));
  kept->linkNode(nullptr, {});
  if (const Ref<HXRNodeOwner> owner = node()) owner->removePatchParameter(*kept);
}

void HXRNode::parameterValueDidChange(HXRParameter&) {}

void HXRNode::rebuild(FunctionRef<void()> steps) {
  const Ref<HXRNode> kept(this);
  if (rebuilding_) {
    steps();
    return;
  }
  const Ref<HXRNodeOwner> owner(node());
  const Ref<Object> change = willChange();
  rebuilding_ = true;
  if (owner) owner->patchRebuildWillBegin(*this);
  // An exception of an observer leaves neither side in the middle of a rebuild.
  const auto end = [&] {
    assert(rebuilding_);  // one inside of it goes on with its steps and ends nothing
    rebuilding_ = false;
    if (owner) owner->patchRebuildDidEnd(*this);
  };
  try {
    steps();
  } catch (...) {
    end();
    throw;
  }
  end();
}

Ref<Object> HXRNode::willChange() {
  const Ref<HXRNodeOwner> owner = node();
  return owner ? owner->patchWillChange(*this) : nullptr;
}

std::unique_ptr<HXRBuiltState> HXRNode::builtState() const { return nullptr; }

void HXRNode::setNode(HXRNodeOwner* node) {
  const auto* present = this->node();
  if (node == present) return;
  if (present && present->holdsPatch(*this)) {
    Log::warning("HXRNode", "Attempting to take a definition from the node that holds it.");
    return;
  }
  node_ = node;
}

bool HXRNode::hx_isExternalClass(const Class& patchClass) {
  const Bundle& bundle = Bundle::forClass(patchClass);
  const String identifier = bundle.bundleIdentifier();
  for (const Bundle* const own : {&Bundle::mainBundle(), &Bundle::libraryBundle()}) {
    if (&bundle == own) return false;
    if (!identifier.isNil() && identifier == own->bundleIdentifier()) return false;
  }
  return true;
}

}  // namespace tarnkit
