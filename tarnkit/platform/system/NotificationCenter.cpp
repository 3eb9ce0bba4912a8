#include "tarnkit/platform/system/NotificationCenter.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <stdexcept>
#include <unordered_map>

#include "tarnkit/platform/objects/Null.h"

namespace tarnkit {

UserInfo::UserInfo(std::initializer_list<Item> items) {
  for (const Item& item : items) add(item.key, item.value);
}

void UserInfo::add(const Symbol& key, const Ref<Object>& value) {
  if (count_ == kMaximumCount) throw std::logic_error("too many user-info entries");
  entries_[count_].key = &key;
  entries_[count_].value = Null::orNull(value);
  ++count_;
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

// Each list stands in the order of registration, because tokens only grow. A removed registration
// stays in its list, marked, until the removed ones outnumber the others and nothing is delivered.
struct NotificationCenter::Index {
  struct List {
    std::vector<std::unique_ptr<Registration>> members;
    std::size_t removed = 0;
  };
  std::unordered_map<Place, List, PlaceHash> lists;
  std::unordered_map<Token, Registration*> byToken;
  std::vector<Place> untidy;  // lists to be tidied once nothing is delivered
  Token lastToken = 0;
  int deliveries = 0;

  static Place placeOf(const Registration& registration) {
    return {registration.name ? registration.name->number() : kAnyName, registration.address};
  }
  void tidy(const Place& place) {
    const auto list = lists.find(place);
    if (list == lists.end() || list->second.removed * 2 <= list->second.members.size()) return;
    if (deliveries != 0) {
      untidy.push_back(place);
      return;
    }
    auto& members = list->second.members;
    assert(list->second.removed <= members.size());
    std::erase_if(members, [](const auto& member) { return member->removed; });
    list->second.removed = 0;
    if (members.empty()) lists.erase(list);
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
  assert(change > 0 || observerCount_ > 0);
  observerCount_ += delta;
  if (!registration.name) {
    observersOfEveryName_ += delta;
    return;
  }
  const auto number = registration.name->number();
  assert(change > 0 || countsByName_.at(number) > 0);
  if (number >= countsByName_.size()) countsByName_.resize(number + 1);
  countsByName_[number] += delta;
}

NotificationCenter::Token NotificationCenter::addObserver(const Symbol* name, const Object* object,
                                                          Observer observer) {
  auto registration = std::make_unique<Registration>(
      Registration{++index_->lastToken, name, object, object, std::move(observer)});
  const Token token = registration->token;
  countObserver(*registration, 1);
  index_->byToken.emplace(token, registration.get());
  index_->lists[Index::placeOf(*registration)].members.push_back(std::move(registration));
  return token;
}

void NotificationCenter::removeObserver(Token token) {
  const auto found = index_->byToken.find(token);
  if (found == index_->byToken.end()) return;
  Registration& registration = *found->second;
  index_->byToken.erase(found);
  registration.removed = true;
  countObserver(registration, -1);
  const Place place = Index::placeOf(registration);
  ++index_->lists.find(place)->second.removed;
  index_->tidy(place);
}

void NotificationCenter::post(const Symbol& name, Object& object, const UserInfo& userInfo) {
  if (!observes(name)) return;
  // What each of the lists that concern the notification holds now; observers that are added
  // meanwhile stand behind its end.
  struct Part {
    Index::List* list;
    std::size_t next;
    std::size_t end;
  };
  std::array<Part, 4> parts{};
  std::size_t count = 0;
  for (const Place& place : {Place{name.number(), &object}, Place{name.number(), nullptr},
                             Place{kAnyName, &object}, Place{kAnyName, nullptr}}) {
    const auto list = index_->lists.find(place);
    if (list == index_->lists.end()) continue;
    parts[count++] = {&list->second, 0, list->second.members.size()};
  }
  const Ref<Object> kept(&object);
  const Notification notification{name, object, userInfo};
  struct Delivery {
    Index& index;
    ~Delivery() {
      if (--index.deliveries != 0) return;
      for (const Place& place : std::exchange(index.untidy, {})) index.tidy(place);
    }
  };
  ++index_->deliveries;
  const Delivery delivery{*index_};
  while (true) {
    Part* earliest = nullptr;
    for (std::size_t i = 0; i < count; ++i) {
      Part& part = parts[i];
      if (part.next == part.end) continue;
      if (!earliest ||
          part.list->members[part.next]->token < earliest->list->members[earliest->next]->token) {
        earliest = &part;
      }
    }
    if (!earliest) return;
    const Registration& registration = *earliest->list->members[earliest->next++];
    if (!registration.removed) registration.observer(notification);
  }
}

}  // namespace tarnkit
