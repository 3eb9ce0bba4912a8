#include "tarnkit/model/HXParameter.h"

#include "tarnkit/archive/HXCoding.h"
#include "tarnkit/model/HXFieldChange.h"
#include "tarnkit/model/HXNode.h"
#include "tarnkit/patches/HXArchivedKeys.h"
#include "tarnkit/platform/system/Log.h"

namespace tarnkit {

const Class HXParameter::kClass{"HXParameter", &Object::kClass};

namespace {

namespace key = archived::parameter;

constinit const Symbol kDeviceClass{"PMParameter"};
constinit const Symbol kDeviceUniqueKey{"PMParameter.uniqueKey"};
constinit const Symbol kDeviceNode{"PMParameter.node"};
constinit const Symbol kDeviceProcessClassName{"PMParameter.processClassName"};

}  // namespace

struct HXParameterFields {
  struct PatchParameter : detail::FieldOf<HXParameter> {
    static constexpr const char* kName = "patchParameter";
    static Ref<HXRParameter> get(const HXParameter& parameter) { return parameter.patchParameter_; }
    static void set(HXParameter& parameter, Ref<HXRParameter> description) {
      auto& present = parameter.patchParameter_;
      if (present == description) return;
      if (present) present->setParameter(nullptr);
      present = std::move(description);
      if (present) present->setParameter(&parameter);
    }
  };
};

Ref<HXParameter> HXParameter::create(const Class& parameterClass, HXNode* node) {
  if (parameterClass == kClass) {
    Log::warning("HXParameter", "Attempting to create vanilla HXParameter. Returning nil.");
    return nullptr;
  }
  if (!parameterClass.isKindOf(kClass)) return nullptr;
  auto parameter = as<HXParameter>(parameterClass.make());
  if (parameter) parameter->node_ = node;
  return parameter;
}

HXConstParameterKind HXParameter::kind() const {
  return std::visit(
      []<class Kind>(Kind* kind) -> HXConstParameterKind { return static_cast<const Kind*>(kind); },
      const_cast<HXParameter*>(this)->hx_kind());
}

void HXParameter::setPatchParameter(Ref<HXRParameter> patchParameter) {
  exchangePatchParameter(std::move(patchParameter));
}

bool HXParameter::exchangePatchParameter(Ref<HXRParameter> patchParameter) {
  if (patchParameter == patchParameter_) return false;
  detail::willSet<HXParameterFields::PatchParameter>(*this);
  HXParameterFields::PatchParameter::set(*this, std::move(patchParameter));
  return true;
}

String HXParameter::uniqueKey() const {
  return patchParameter_ ? patchParameter_->uniqueKey() : String();
}
String HXParameter::name() const { return patchParameter_ ? patchParameter_->name() : String(); }
bool HXParameter::hidden() const { return patchParameter_ && patchParameter_->hidden(); }

void HXParameter::valueDidChange() {
  const Ref<HXNode> node(this->node());
  const Ref<HXParameter> kept(this);
  if (!node) return;
  const detail::RecordedOperation operation(*this);
  announceValue(node);
  node->parameterDidChange(*this);
}

void HXParameter::announceExchangedValue() {
  if (const Ref<HXNode> node{this->node()}) announceValue(node);
}

void HXParameter::announceValue(const Ref<HXNode>& node) {
  detail::announce(HXParameterValueDidChangeNotification, *this, *node,
                   {{HXNodeInfo, node.get()}, {HXParameterInfo, this}});
}

void HXParameter::hierarchyWillChange() {}
void HXParameter::hierarchyDidChange() {}

void HXParameter::encodeWithCoder(Encoder& coder) const {
  if (isEditorCodingType(coder.codingType())) {
    coder.encodeConditionalObject(node_, key::kNode);
  } else if (coder.codingType() == HXCodingTypeDevice) {
    coder.setClassName(kDeviceClass, isa());
    coder.encodeString(uniqueKey(), kDeviceUniqueKey);
    coder.encodeConditionalObject(node_, kDeviceNode);
    if (patchParameter_) {
      coder.encodeString(patchParameter_->processClassName(), kDeviceProcessClassName);
    }
  }
}

void HXParameter::initWithCoder(Decoder& coder) {
  node_ = coder.decode<HXNode>(key::kNode);
  valueInitialized_ = true;
}

}  // namespace tarnkit
