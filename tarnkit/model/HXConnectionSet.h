#pragma once

#include "tarnkit/model/HXConnection.h"
#include "tarnkit/platform/collections/MembersOf.h"

namespace tarnkit {

/// The connections of a port, in the order in which they were made: a value that is copied by
/// sharing and never changes under whoever was handed a copy.
///
/// None and one take no memory of their own; asking, adding and removing take constant time on
/// average while nobody else holds the same set, and otherwise one copy.
class HXConnectionSet {
 public:
  std::uint32_t count() const noexcept;
  bool isEmpty() const noexcept { return !members_; }
  /// False when the connection was a member already.
  bool add(HXConnection& connection);
  /// False when the connection was no member.
  bool remove(const HXConnection& connection);

  using Place = OrderedSet::Place;
  /// The place of a member, for `insert`.
  Place place(const Object* member) const;
  bool contains(const Object* member) const noexcept;
  bool remove(const Object* member);
  /// Puts back, at its place, a connection that was removed.
  void insert(const Ref<Object>& connection, const Place& place);

  /// Calls `visit(HXConnection&)` for each, in order.
  template <class Visit>
  void forEach(Visit visit) const {
    if (auto* one = as<HXConnection>(members_.get())) {
      visit(*one);
    } else if (members_) {
      const Ref<Object> kept = members_;
      for (auto& member : membersOf<HXConnection>(static_cast<const OrderedSet&>(*kept))) {
        visit(member);
      }
    }
  }
  std::vector<Ref<HXConnection>> toVector() const;

 private:
  OrderedSet& mutableSet();

  Ref<Object> members_;  // null, the one connection, or an OrderedSet of two and more
};

}  // namespace tarnkit
