#include "tarnkit/model/HXConnectionSet.h"

#include <cassert>

namespace tarnkit {

std::uint32_t HXConnectionSet::count() const noexcept {
  if (!members_) return 0;
  const auto* set = as<OrderedSet>(members_.get());
  return set ? set->count() : 1;
}

bool HXConnectionSet::contains(const HXConnection* connection) const noexcept {
  if (!members_ || !connection) return false;
  if (members_ == static_cast<const Object*>(connection)) return true;
  const auto* set = as<OrderedSet>(members_.get());
  return set && set->contains(connection);
}

OrderedSet& HXConnectionSet::mutableSet() {
  assert(members_);
  if (auto* set = as<OrderedSet>(members_.get())) {
    if (!set->isShared()) return *set;
    members_ = make<OrderedSet>(*set);
  } else {
    auto fresh = make<OrderedSet>();
    fresh->add(members_);
    members_ = fresh;
  }
  return static_cast<OrderedSet&>(*members_);
}

bool HXConnectionSet::add(HXConnection& connection) {
  if (contains(&connection)) return false;
  if (!members_) {
    members_ = Ref<Object>(&connection);
  } else {
    mutableSet().add(Ref<Object>(&connection));
  }
  return true;
}

bool HXConnectionSet::remove(const HXConnection& connection) {
  if (!contains(&connection)) return false;
  if (members_ == static_cast<const Object*>(&connection)) {
    members_ = nullptr;
    return true;
  }
  auto& set = mutableSet();
  assert(set.count() > 1);
  set.remove(&connection);
  if (set.count() == 1) members_ = Ref<Object>(*set.begin());
  return true;
}

std::vector<Ref<HXConnection>> HXConnectionSet::toVector() const {
  std::vector<Ref<HXConnection>> connections;
  connections.reserve(count());
  forEach([&](HXConnection& connection) { connections.emplace_back(&connection); });
  return connections;
}

}  // namespace tarnkit
