#include "tarnkit/patches/HXRPortGroup.h"

#include <cassert>
#include <stdexcept>

#include "tarnkit/patches/HXRPortGroupCollection.h"
#include "tarnkit/platform/collections/MembersOf.h"
#include "tarnkit/platform/system/Log.h"

namespace tarnkit {

const Class HXRPortGroup::kClass{"HXRPortGroup", &Object::kClass};

HXRPortGroup::HXRPortGroup(String groupKey, std::int32_t orientation)
    : groupKey_(std::move(groupKey)), orientation_(orientation), ports_(make<OrderedSet>()) {}

std::vector<Ref<HXRPort>> HXRPortGroup::ports() const {
  std::vector<Ref<HXRPort>> ports;
  ports.reserve(ports_->count());
  for (auto& port : membersOf<HXRPort>(*ports_)) ports.emplace_back(&port);
  return ports;
}

Ref<const OrderedSet> HXRPortGroup::portKeys() const {
  if (!portKeys_) {
    portKeys_ = make<OrderedSet>();
    portKeys_->reserve(ports_->count());
    for (const auto& port : membersOf<HXRPort>(*ports_)) {
      portKeys_->add(port.uniqueKey().object());
    }
  }
  return portKeys_;
}

void HXRPortGroup::addPort(HXRPort& port) {
  requireOwn();
  if (port.uniqueKey().isNil()) {
    Log::warning("HXRPortGroup", "A port without a key is not added");
    return;
  }
  ports_->add(Ref<HXRPort>(&port));
  portsByKey_.set(port.uniqueKey(), Ref<HXRPort>(&port));
  portKeys_ = nullptr;
  portKeysBeforeEmptied_ = nullptr;
  assert(portsByKey_.size() <= ports_->count());
}

void HXRPortGroup::removePort(HXRPort& port) {
  requireOwn();
  const Ref<HXRPort> kept(&port);
  const Ref<const OrderedSet> keysBefore = ports_->count() == 1 ? portKeys() : nullptr;
  if (!ports_->remove(&port)) return;
  if (ports_->isEmpty()) portKeysBeforeEmptied_ = keysBefore;
  if (portForKey(port.uniqueKey()) == &port) portsByKey_.take(port.uniqueKey());
  portKeys_ = nullptr;
}

void HXRPortGroup::requireOwn() const {
  if (shared_) throw std::logic_error("a shared port group cannot be changed");
}

void HXRPortGroup::share() {
  portKeys();  // as of the collection
  shared_ = true;
  for (auto& port : membersOf<HXRPort>(*ports_)) port.share();
}

HXRPort* HXRPortGroup::portForKey(const String& uniqueKey) const {
  const auto* const port = portsByKey_.find(uniqueKey);
  return port ? port->get() : nullptr;
}

HXRPortGroupCollection* HXRPortGroup::portGroupCollection() const noexcept {
  return portGroupCollection_.get();
}
void HXRPortGroup::setPortGroupCollection(HXRPortGroupCollection* collection) {
  const auto* present = portGroupCollection();
  if (collection == present) return;
  if (present && present->portGroupForKey(groupKey_) == this) {
    Log::warning("HXRPortGroup", "Attempting to take a group from the collection that holds it.");
    return;
  }
  portGroupCollection_ = collection;
}
void HXRPortGroup::linkPortGroupCollection(HXRPortGroupCollection* collection,
                                           PassKey<HXRPortGroupCollection>) noexcept {
  portGroupCollection_ = collection;
}

}  // namespace tarnkit
