#include "tarnkit/platform/NotificationCenter.h"

#include <algorithm>
#include <stdexcept>
#include <unordered_map>

#include "tarnkit/platform/Null.h"

namespace tarnkit {

UserInfo::UserInfo(std::initializer_list<Item> items) {
  if (items.size() > kMaximumCount) throw std::logic_error("too many user-info entries");
  for (const Item& item : items) {
    entries_[count_].key = &item.key;
    entries_[count_].value = Null::orNull(item.value);
    ++count_;
  }
}

Object* UserInfo::operator[](const Symbol& key) const {
  for (const Entry& entry : *this) {
    if (*entry.key == key) return entry.value.get();
  }
  return nullptr;
}

struct NotificationCenter::Registration {
  Token token;
  const Symbol* name;
  WeakRef<const Object> object;  // its address stays its own until the registration goes
  const Object* address;
  Observer observer;
  bool removed = false;
};

namespace {

constexpr std::uint64_t kAnyName = 0xFFFFFFFFULL;

struct Place {
  std::uint64_t name;
  const Object* object;
  bool operator==(const Place&) const = default;
};
struct PlaceHash {
  std::size_t operator()(const Place& place) const noexcept {
    return std::hash<const void*>()(place.object) * 31 + place.name;
  }
};

}  // namespace

// Each list stands in the order of registration, because tokens only grow.
struct NotificationCenter::Index {
  using List = std::vector<std::shared_ptr<Registration>>;
  std::unordered_map<Place, List, PlaceHash> lists;
  std::unordered_map<Token, std::shared_ptr<Registration>> byToken;
  Token lastToken = 0;

  static Place placeOf(const Registration& registration) {
    return {registration.name ? registration.name->number() : kAnyName, registration.address};
  }
};

NotificationCenter::NotificationCenter() : index_(std::make_unique<Index>()) {}
NotificationCenter::~NotificationCenter() = default;

NotificationCenter& NotificationCenter::defaultCenter() {
  static auto* const shared = new NotificationCenter;  // outlives every object that posts
  return *shared;
}

void NotificationCenter::countObserver(const Registration& registration, int change) {
  const auto delta = static_cast<std::uint32_t>(change);
  observerCount_ += delta;
  if (!registration.name) {
    observersOfEveryName_ += delta;
    return;
  }
  const auto number = registration.name->number();
  if (number >= countsByName_.size()) countsByName_.resize(number + 1);
  countsByName_[number] += delta;
}

NotificationCenter::Token NotificationCenter::addObserver(const Symbol* name, const Object* object,
                                                          Observer observer) {
  auto registration = std::make_shared<Registration>(
      Registration{++index_->lastToken, name, object, object, std::move(observer)});
  index_->byToken.emplace(registration->token, registration);
  index_->lists[Index::placeOf(*registration)].push_back(registration);
  countObserver(*registration, 1);
  return registration->token;
}

void NotificationCenter::removeObserver(Token token) {
  const auto found = index_->byToken.find(token);
  if (found == index_->byToken.end()) return;
  const auto registration = found->second;
  index_->byToken.erase(found);
  registration->removed = true;
  countObserver(*registration, -1);
  const auto list = index_->lists.find(Index::placeOf(*registration));
  auto& members = list->second;
  const auto at = std::lower_bound(
      members.begin(), members.end(), token,
      [](const auto& member, Token wanted) { return member->token < wanted; });
  members.erase(at);
  if (members.empty()) index_->lists.erase(list);
}

void NotificationCenter::post(const Symbol& name, Object& object, const UserInfo& userInfo) {
  if (!observes(name)) return;
  // Snapshot: observers may come and go while the others are being called.
  std::vector<std::shared_ptr<Registration>> reached;
  for (const Place& place : {Place{name.number(), &object}, Place{name.number(), nullptr},
                             Place{kAnyName, &object}, Place{kAnyName, nullptr}}) {
    const auto list = index_->lists.find(place);
    if (list == index_->lists.end()) continue;
    reached.insert(reached.end(), list->second.begin(), list->second.end());
  }
  std::sort(reached.begin(), reached.end(),
            [](const auto& a, const auto& b) { return a->token < b->token; });
  const Ref<Object> kept(&object);
  const Notification notification{name, object, userInfo};
  for (const auto& registration : reached) {
    if (!registration->removed) registration->observer(notification);
  }
}

}  // namespace tarnkit
