#include "tarnkit/patches/HXRParameter.h"

#include <algorithm>

#include "tarnkit/patches/HXRNode.h"
#include "tarnkit/platform/system/Log.h"

namespace tarnkit {

const HXRParameterClass HXRParameter::kClass{"HXRParameter", &Object::kClass, nullptr,
                                             "PMRParameter"};

const Class* HXRParameterClass::parameterClass() const {
  const Class* known = parameterClass_.load(std::memory_order_relaxed);
  if (!known && parameterClassName_) {
    known = ClassRegistry::classNamed(parameterClassName_);
    parameterClass_.store(known, std::memory_order_relaxed);
  }
  return known;
}

HXRParameter::HXRParameter(String name, String uniqueKey, bool hidden)
    : name_(std::move(name)), uniqueKey_(std::move(uniqueKey)), hidden_(hidden) {}

HXRParameter::HXRParameter(const HXRParameter& other)
    : Object(), name_(other.name_), uniqueKey_(other.uniqueKey_), hidden_(other.hidden_) {}

HXRNode* HXRParameter::node() const noexcept { return node_.get(); }
void HXRParameter::setNode(HXRNode* node) {
  const auto* present = this->node();
  if (node == present) return;
  if (present) {
    const auto& held = present->parametersInForce();
    if (std::find(held.begin(), held.end(), this) != held.end()) {
      Log::warning("HXRParameter",
                   "Attempting to take a parameter from the definition that holds it.");
      return;
    }
  }
  node_ = node;
}
void HXRParameter::linkNode(HXRNode* node, PassKey<HXRNode>) noexcept { node_ = node; }
void HXRParameter::setParameter(HXRParameterTwin* parameter) { parameter_ = parameter; }

Ref<HXRParameter> HXRParameter::copy() const { return make<HXRParameter>(*this); }

}  // namespace tarnkit
