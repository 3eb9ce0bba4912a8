#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <vector>

#include "tarnkit/platform/objects/Object.h"
#include "tarnkit/platform/text/Symbol.h"

namespace tarnkit {

/// The values that come with a notification, by key, in the order in which they were given. nil is
/// the null object. Made only when somebody observes; holds everything in place, without
/// allocating.
class UserInfo {
 public:
  static constexpr std::size_t kMaximumCount = 8;
  struct Entry {
    const Symbol* key = nullptr;
    Ref<Object> value;
  };
  struct Item {
    const Symbol& key;
    Ref<Object> value;  // null is turned into the null object
  };

  UserInfo() noexcept = default;
  UserInfo(std::initializer_list<Item> items);
  /// Throws std::logic_error when there are as many as there may be.
  void add(const Symbol& key, const Ref<Object>& value);

  const Entry* begin() const noexcept { return entries_.data(); }
  const Entry* end() const noexcept { return entries_.data() + count_; }
  std::size_t size() const noexcept { return count_; }
  /// Null when the key was not given.
  Object* operator[](const Symbol& key) const;
  bool contains(const Symbol& key) const { return (*this)[key] != nullptr; }

 private:
  std::array<Entry, kMaximumCount> entries_;
  std::size_t count_ = 0;
};

/// What an observer receives; valid during the call.
struct Notification {
  const Symbol& name;
  Object& object;
  const UserInfo& userInfo;
};

/// Announces changes: observers register for a name, an object, both or neither, and are called
/// synchronously, in the order of their registration, on the thread that posts.
///
/// An observer may be removed, or add others, while a notification is being delivered: a removed
/// one is not called any more, an added one not for the notification under way. Asking whether
/// anybody observes a name is one look-up; posting costs in proportion to the observers that it
/// reaches. For one thread.
class NotificationCenter {
 public:
  using Observer = std::function<void(const Notification&)>;
  using Token = std::uint64_t;

  NotificationCenter();
  ~NotificationCenter();
  NotificationCenter(const NotificationCenter&) = delete;
  NotificationCenter& operator=(const NotificationCenter&) = delete;

  /// The process's centre, on which the model announces its changes.
  static NotificationCenter& defaultCenter();

  /// Null `name`: every name. Null `object`: every object; otherwise exactly this one, which is not
  /// kept alive. The token removes the observer; tokens are never 0 and never used twice.
  Token addObserver(const Symbol* name, const Object* object, Observer observer);
  Token addObserver(const Symbol& name, Observer observer) {
    return addObserver(&name, nullptr, std::move(observer));
  }
  /// A token that was removed before is ignored.
  void removeObserver(Token token);
  class Observation;

  /// Whether posting under this name could reach anybody.
  bool observes(const Symbol& name) const {
    if (observersOfEveryName_ != 0) return true;
    if (observerCount_ == 0) return false;
    const auto number = name.number();
    return number < countsByName_.size() && countsByName_[number] != 0;
  }
  void post(const Symbol& name, Object& object, const UserInfo& userInfo);
  /// Builds the user info (`make()`) only when somebody observes the name.
  template <class Make>
  void postLazily(const Symbol& name, Object& object, Make make) {
    if (observes(name)) post(name, object, make());
  }

 private:
  struct Registration;
  struct Index;
  void countObserver(const Registration& registration, int change);

  std::uint32_t observerCount_ = 0;
  std::uint32_t observersOfEveryName_ = 0;
  std::vector<std::uint32_t> countsByName_;
  std::unique_ptr<Index> index_;
};

/// An observer for as long as this lives: registers when it is made and removes itself at its end.
/// The centre must live longer.
class NotificationCenter::Observation {
 public:
  /// As `addObserver`.
  Observation(NotificationCenter& center, const Symbol* name, const Object* object,
              Observer observer)
      : center_(center), token_(center.addObserver(name, object, std::move(observer))) {}
  /// On the process's centre, of every object.
  Observation(const Symbol& name, Observer observer)
      : Observation(defaultCenter(), &name, nullptr, std::move(observer)) {}
  /// On the process's centre, of everything.
  explicit Observation(Observer observer)
      : Observation(defaultCenter(), nullptr, nullptr, std::move(observer)) {}
  ~Observation() { center_.removeObserver(token_); }
  Observation(const Observation&) = delete;
  Observation& operator=(const Observation&) = delete;

 private:
  NotificationCenter& center_;
  Token token_;
};

}  // namespace tarnkit
