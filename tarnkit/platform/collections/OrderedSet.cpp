#include "tarnkit/platform/collections/OrderedSet.h"

#include <algorithm>
#include <cassert>

#include "tarnkit/platform/collections/KeyedHash.h"
#include "tarnkit/platform/text/String.h"

namespace tarnkit {

const Class OrderedSet::kClass{"NSOrderedSet", &Object::kClass, &detail::makeByDefault<OrderedSet>};

std::uint64_t OrderedSet::Traits::hash(const Object* key) {
  if (key->codingKind() != CodingKind::string) return key->hash();
  return detail::keyedHash(static_cast<const StringObject*>(key)->view());
}

bool OrderedSet::contains(const Object* object) const noexcept {
  return object && table_.find(object);
}

const Ref<Object>& OrderedSet::objectAtIndex(std::uint32_t index) const {
  assert(index < count());
  return *std::next(begin(), index);
}

std::int64_t OrderedSet::indexOf(const Object* object) const {
  if (!contains(object)) return kNotFoundIndex;
  std::int64_t index = 0;
  for (const auto& member : table_) {
    if (Traits::hasKey(member, object)) return index;
    ++index;
  }
  return kNotFoundIndex;
}

bool OrderedSet::add(Ref<Object> object) {
  if (!object || contains(object.get())) return false;
  table_.append(std::move(object));
  return true;
}

bool OrderedSet::remove(const Object* object) {
  return object && static_cast<bool>(table_.take(object));
}

OrderedSet::Place OrderedSet::place(const Object* member) const {
  const auto beside = table_.neighbour(member);
  return beside.entry ? Place{*beside.entry, beside.follows} : Place{};
}

bool OrderedSet::insert(Ref<Object> object, const Place& place) {
  if (!object || contains(object.get())) return false;
  if (place.neighbour) {
    table_.insertBeside(place.neighbour.get(), place.follows, std::move(object));
  } else {
    table_.append(std::move(object));
  }
  return true;
}

bool OrderedSet::isEqual(const Object& other) const {
  const auto* set = as<OrderedSet>(&other);
  return set && set->count() == count() &&
         std::equal(begin(), end(), set->begin(),
                    [](const auto& a, const auto& b) { return a->isEqual(*b); });
}

}  // namespace tarnkit
