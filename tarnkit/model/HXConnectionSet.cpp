#include "tarnkit/model/HXConnectionSet.h"

#include <cassert>

namespace tarnkit {

std::uint32_t HXConnectionSet::count() const noexcept {
  if (!members_) return 0;
  const auto* set = as<OrderedSet>(members_.get());
  return set ? set->count() : 1;
}

bool HXConnectionSet::contains(const Object* member) const noexcept {
  if (!members_ || !member) return false;
  if (members_ == member) return true;
  const auto* set = as<OrderedSet>(members_.get());
  return set && set->contains(member);
}

HXConnectionSet::Place HXConnectionSet::place(const Object* member) const {
  const auto* set = as<OrderedSet>(members_.get());
  return set ? set->place(member) : Place{};
}

void HXConnectionSet::insert(const Ref<Object>& connection, const Place& place) {
  if (!connection || contains(connection.get())) return;
  if (!members_) {
    members_ = connection;
  } else {
    mutableSet().insert(connection, place);
  }
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
  return remove(static_cast<const Object*>(&connection));
}

bool HXConnectionSet::remove(const Object* member) {
  if (!contains(member)) return false;
  if (members_ == member) {
    members_ = nullptr;
    return true;
  }
  auto& set = mutableSet();
  assert(set.count() > 1);
  set.remove(member);
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
