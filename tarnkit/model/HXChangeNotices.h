#pragma once

#include <cstdint>
#include <functional>
#include <unordered_map>
#include <vector>

#include "tarnkit/platform/objects/Object.h"

namespace tarnkit {

/// What is to be told of changes that were exchanged together: the ordinary notifications, each
/// once, when everything has changed. What goes is told from the outermost leaf inward, then what
/// comes, each thing before what hangs on it, then values. Of a thing that came and went nothing is
/// told.
class HXChangeNotices {
 public:
  /// In the order in which they are told.
  enum class Order : std::uint8_t {
    brokenConnection,
    brokenConnectionOfDocument,
    goneImage,
    gonePublication,
    gonePort,
    gonePortGroup,
    goneParameter,
    goneNode,
    newNode,
    newSubnodeGroup,
    newParameter,
    newPortGroup,
    newPort,
    newPublication,
    newConnection,
    newConnectionOfDocument,
    newImage,
    value,
  };

  /// The member came to the owner, or went from it. `post(came)` tells it.
  void addMember(const Object& owner, const Object& member, bool came, Order whenCame,
                 Order whenGone, std::function<void(bool came)> post);
  /// A property of the owner has another value; of several notices for one property, the first one
  /// is told.
  void addValue(const Object& owner, const char* property, std::function<void()> post,
                Order order = Order::value);

  /// Tells it all. Whatever an observer does, the rest is told as well.
  void post();

 private:
  struct Notice {
    Order whenCame;
    Order whenGone;
    int balance;  // of coming and going
    std::function<void(bool came)> post;
  };
  struct Key {
    const Object* owner;
    const void* what;
    Order order;
    friend bool operator==(const Key&, const Key&) = default;
  };
  struct KeyHash {
    std::size_t operator()(const Key& key) const noexcept;
  };
  Notice& notice(const Key& key, Order whenGone, std::function<void(bool came)> post);

  std::vector<Notice> notices_;
  std::unordered_map<Key, std::size_t, KeyHash> indexes_;
};

}  // namespace tarnkit
