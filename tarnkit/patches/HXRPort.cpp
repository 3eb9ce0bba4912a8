#include "tarnkit/patches/HXRPort.h"

#include <stdexcept>

#include "tarnkit/patches/HXRNode.h"
#include "tarnkit/patches/PatchColors.h"

namespace tarnkit {

const HXRPortClass HXRPort::kClass{
    "HXRPort", &Object::kClass, {"PMRPort", &HXPrimaryPatchColor, nullptr}};

HXRPort::HXRPort(String name, String uniqueKey, std::int32_t orientation,
                 std::int32_t connectionRelationship)
    : uniqueKey_(std::move(uniqueKey)),
      name_(std::move(name)),
      orientation_(orientation),
      connectionRelationship_(connectionRelationship) {}

HXRPort::HXRPort(const HXRPort& other)
    : Object(),
      uniqueKey_(other.uniqueKey_),
      name_(other.name_),
      orientation_(other.orientation_),
      connectionRelationship_(other.connectionRelationship_) {}

void HXRPort::setName(String name) {
  if (name == name_) return;
  requireOwn();
  const Ref<HXRPort> kept(this);
  const Ref<HXRNode> node(node_.get());
  const Ref<Object> change = node ? node->willChange() : nullptr;
  name_ = std::move(name);
  announceName();
}

void HXRPort::announceName() {
  const Ref<HXRNode> node(node_.get());
  if (!node) return;
  if (const Ref<HXRNodeOwner> owner = node->node()) owner->patchPortNameDidChange(*this);
}

HXRNode* HXRPort::node() const noexcept { return node_.get(); }
void HXRPort::link(HXRNode* node, String portGroupKey, PassKey<HXRPortLayout>) noexcept {
  node_ = node;
  portGroupKey_ = std::move(portGroupKey);
}

void HXRPort::share() noexcept {
  node_ = nullptr;
  shared_ = true;
}

void HXRPort::requireOwn() const {
  if (shared_) throw std::logic_error("a shared port description cannot be changed");
}

bool HXRPort::canConnectToPort(const HXRPort* other) const {
  const Class* const accepted = portClass().acceptedPorts();
  return accepted && other && other->isKindOf(*accepted);
}

Ref<HXRPort> HXRPort::copy() const { return make<HXRPort>(*this); }

}  // namespace tarnkit
