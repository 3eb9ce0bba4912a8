#pragma once

#include <cstdint>
#include <limits>

#include "tarnkit/platform/collections/OrderedTable.h"
#include "tarnkit/platform/objects/Object.h"

namespace tarnkit {

/// The index that look-ups answer when there is nothing to be found: the largest signed integer.
inline constexpr std::int64_t kNotFoundIndex = std::numeric_limits<std::int64_t>::max();

/// An ordered list of different objects, by `isEqual` (identity for model objects, value for
/// strings). Membership, addition and removal take constant time on average; `indexOf` and moving
/// are linear. One thread at a time may change it.
class OrderedSet final : public Object {
  TARNKIT_CLASS
 public:
  OrderedSet() = default;
  OrderedSet(const OrderedSet& other) : Object(), table_(other.table_) {}

  std::uint32_t count() const noexcept { return table_.size(); }
  bool isEmpty() const noexcept { return table_.empty(); }
  auto begin() const noexcept { return table_.begin(); }
  auto end() const noexcept { return table_.end(); }
  bool contains(const Object* object) const noexcept;
  /// Costs linear time; `index` must be below `count`.
  const Ref<Object>& objectAtIndex(std::uint32_t index) const;
  /// `kNotFoundIndex` when the object is no member. Costs linear time.
  std::int64_t indexOf(const Object* object) const;

  /// Appends the object unless an equal one is a member; tells whether it did. Null is ignored.
  bool add(Ref<Object> object);
  /// Tells whether there was one to remove.
  bool remove(const Object* object);
  /// Where a member stands among the others, for as long as the others stay as they are.
  struct Place {
    Ref<Object> neighbour;  // null where there is no other
    bool follows = false;   // whether the neighbour comes after the member
  };
  /// The place of a member.
  Place place(const Object* member) const;
  /// Puts back, at its place, what was removed. False, and nothing done, when an equal object is a
  /// member, and for null.
  bool insert(Ref<Object> object, const Place& place);
  void clear() noexcept { table_.clear(); }
  void reserve(std::uint32_t capacity) { table_.reserve(capacity); }
  /// Moves the object at one index so that it stands at the other.
  void move(std::uint32_t fromIndex, std::uint32_t toIndex) { table_.move(fromIndex, toIndex); }

  /// Equal when the members are equal in the same order.
  bool isEqual(const Object& other) const override;
  std::uint64_t hash() const override { return count(); }
  CodingKind codingKind() const noexcept override { return CodingKind::orderedSet; }

 private:
  struct Traits {
    using Key = const Object*;
    static const Object* key(const Ref<Object>& entry) noexcept { return entry.get(); }
    // Keyed for strings, since they may come out of a file that was made to have them collide.
    static std::uint64_t hash(const Object* key);
    static bool hasKey(const Ref<Object>& entry, const Object* key) {
      return entry.get() == key || entry->isEqual(*key);
    }
    static bool isGap(const Ref<Object>& entry) noexcept { return !entry; }
  };
  detail::OrderedTable<Ref<Object>, Traits> table_;
};

}  // namespace tarnkit
