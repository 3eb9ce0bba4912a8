#pragma once

#include <cassert>
#include <memory>
#include <type_traits>
#include <utility>
#include <variant>

#include "tarnkit/model/HXChangeNotices.h"
#include "tarnkit/model/HXChangeRecorder.h"
#include "tarnkit/model/HXConnectionSet.h"
#include "tarnkit/platform/collections/IdentityMap.h"
#include "tarnkit/platform/collections/OrderedMap.h"
#include "tarnkit/platform/collections/OrderedSet.h"

namespace tarnkit::detail {

/// How an ordered collection is changed by key: its key as it is held, and the value beside it.
template <class Collection>
struct EntriesOf;

template <class V>
struct EntriesOf<OrderedMap<V>> {
  using Key = String;
  using Value = V;
  static V* find(OrderedMap<V>& map, const Key& key) { return map.find(key); }
  static auto place(OrderedMap<V>& map, const Key& key) { return map.place(key); }
  static V take(OrderedMap<V>& map, const Key& key) { return map.take(key); }
  static void insert(OrderedMap<V>& map, const Key& key, V value,
                     const typename OrderedMap<V>::Place& place) {
    map.insert(key, std::move(value), place);
  }
};

template <class T, class V>
struct EntriesOf<IdentityMap<T, V>> {
  using Key = Ref<T>;
  using Value = V;
  static V* find(IdentityMap<T, V>& map, const Key& key) {
    return const_cast<V*>(map.find(key.get()));
  }
  static auto place(IdentityMap<T, V>& map, const Key& key) { return map.place(key.get()); }
  static V take(IdentityMap<T, V>& map, const Key& key) { return map.take(key.get()); }
  static void insert(IdentityMap<T, V>& map, const Key& key, V value,
                     const typename IdentityMap<T, V>::Place& place) {
    map.insert(key, std::move(value), place);
  }
};

/// Of a set the member is the key, and there is no value.
template <class Set>
struct EntriesOfSet {
  using Key = Ref<Object>;
  using Value = std::monostate;
  static Value* find(Set& set, const Key& key) {
    static Value none;
    return set.contains(key.get()) ? &none : nullptr;
  }
  static auto place(Set& set, const Key& key) { return set.place(key.get()); }
  static Value take(Set& set, const Key& key) {
    set.remove(key.get());
    return {};
  }
  static void insert(Set& set, const Key& key, Value, const typename Set::Place& place) {
    set.insert(key, place);
  }
};
template <>
struct EntriesOf<OrderedSet> : EntriesOfSet<OrderedSet> {};
template <>
struct EntriesOf<HXConnectionSet> : EntriesOfSet<HXConnectionSet> {};

/// What the description of a table is made of, with what most tables say.
template <class T, class C>
struct TableOf {
  using Owner = T;
  using Collection = C;
  using Key = typename EntriesOf<C>::Key;
  using Value = typename EntriesOf<C>::Value;
  /// Whether its entries are the nodes of a group; then `subnode(const Value*)` gives the node of
  /// an entry.
  static constexpr bool kHoldsSubnodes = false;
  /// Brings in line what follows from the entry, right after it came, went or was replaced
  /// (told as what came).
  static void follow(T&, const Key&, const Value*, bool) {}
  /// Adds what is to be told of the entry that came or went. `value` is null where it has none.
  static void addNotices(T&, const Key&, const Value*, bool, HXChangeNotices&) {}
};

/// The change of one entry of a table that an object owns: it comes, goes, or has another value.
/// `Table` derives from `TableOf` and tells of it:
///
///   static constexpr const char* kName = "subnodes";  // its address stands for the table
///   static OrderedMap<Ref<HXNode>>& in(HXGroup& group);  // the table itself, safe to be changed
template <class Table>
class EntryChange final : public HXChange {
 public:
  using Owner = typename Table::Owner;
  using Entries = EntriesOf<typename Table::Collection>;
  using Key = typename Entries::Key;
  using Value = typename Entries::Value;

  EntryChange(Owner& owner, Key key) : HXChange(kKind, owner), key_(std::move(key)) {
    auto& table = Table::in(owner);
    if (const auto* const value = Entries::find(table, key_)) {
      held_.reset(new Held{*value, Entries::place(table, key_)});
    }
  }

  /// Of an entry that is not there yet, as the caller knows.
  struct Comes {};
  EntryChange(Owner& owner, Key key, Comes) : HXChange(kKind, owner), key_(std::move(key)) {
    assert(!Entries::find(Table::in(owner), key_));
  }

  void exchange() override {
    auto& table = Table::in(ofOwner());
    auto* const present = Entries::find(table, key_);
    if (present && held_) {
      std::swap(*present, held_->value);
      Table::follow(ofOwner(), key_, present, true);
    } else if (present) {
      auto place = Entries::place(table, key_);
      held_.reset(new Held{Entries::take(table, key_), std::move(place)});
      Table::follow(ofOwner(), key_, held(), false);
    } else if (held_) {
      const auto taken = std::move(held_);
      Entries::insert(table, key_, taken->value, taken->place);
      Table::follow(ofOwner(), key_, &taken->value, true);
    }
  }
  void addNotices(HXChangeNotices& notices) const override {
    auto* const present = Entries::find(Table::in(ofOwner()), key_);
    Table::addNotices(ofOwner(), key_, present ? present : held(), present != nullptr, notices);
  }
  bool isNeutral() const override {
    auto& table = Table::in(ofOwner());
    auto* const present = Entries::find(table, key_);
    if (!present || !held_) return !present && !held_;
    return *present == held_->value && held_->isAt(Entries::place(table, key_));
  }
  bool isOfNewEntry() const noexcept override { return !held_; }
  bool isUndoneBy(const HXChange& later) const override {
    const auto* const other = dynamic_cast<const EntryChange*>(&later);
    return other && other->key_ == key_ && isNeutral();
  }
  std::size_t byteCount() const noexcept override {
    return sizeof(*this) + (held_ ? sizeof(Held) : 0);
  }

 private:
  using Place = std::decay_t<decltype(Entries::place(std::declval<typename Table::Collection&>(),
                                                     std::declval<const Key&>()))>;
  // What is not in force: an entry that is not there now, or the value that it has not.
  struct Held {
    Value value;
    Place place;

    bool isAt(const Place& other) const noexcept {
      return place.neighbour == other.neighbour && place.follows == other.follows;
    }
    static void* operator new(std::size_t size) { return BlockPool::allocate(size); }
    static void operator delete(void* held, std::size_t size) noexcept {
      BlockPool::release(held, size);
    }
  };

  const Value* held() const noexcept { return held_ ? &held_->value : nullptr; }
  HXNode* heldSubnode() const noexcept override {
    if constexpr (Table::kHoldsSubnodes) return Table::subnode(held());
    return nullptr;
  }
  static constexpr Kind kKind{.table = Table::kName, .movesSubnodes = Table::kHoldsSubnodes};
  Owner& ofOwner() const noexcept { return static_cast<Owner&>(owner()); }

  Key key_;
  std::unique_ptr<Held> held_;  // null for an entry that came
};

/// The change of the place of one member of a set that an object owns. `Table` as above.
template <class Table>
class PlaceChange final : public HXChange {
 public:
  using Owner = typename Table::Owner;
  using Key = typename Table::Key;

  PlaceChange(Owner& owner, Key member)
      : HXChange(kKind, owner),
        member_(std::move(member)),
        held_(Table::in(owner).place(member_.get())) {}

  void exchange() override {
    auto& set = Table::in(ofOwner());
    auto present = set.place(member_.get());
    set.remove(member_.get());
    set.insert(member_, held_);
    held_ = std::move(present);
  }
  void addNotices(HXChangeNotices& notices) const override {
    Table::addNotices(ofOwner(), member_, nullptr, true, notices);
  }
  bool isNeutral() const override {
    const auto present = Table::in(ofOwner()).place(member_.get());
    return held_.neighbour == present.neighbour && held_.follows == present.follows;
  }
  std::size_t byteCount() const noexcept override { return sizeof(*this); }

 private:
  // Where an entry comes and goes depends on the places of the others.
  static constexpr Kind kKind{.table = Table::kName};
  Owner& ofOwner() const noexcept { return static_cast<Owner&>(owner()); }

  Key member_;
  typename Table::Collection::Place held_;
};

template <class Table, class Key, class... Arguments>
[[gnu::noinline]] void recordEntry(HXChangeRecorder& recorder, typename Table::Owner& owner,
                                   const Key& key, Arguments... arguments) {
  using Change = EntryChange<Table>;
  recorder.record(std::make_unique<Change>(owner, typename Change::Key(key), arguments...));
}

/// The entry of the owner's table is about to come, to go, or to be replaced. The key is one of the
/// table, or the pointer of which one is made; it is held only where somebody records.
template <class Table, class Key>
[[gnu::always_inline]] inline void willChangeEntry(typename Table::Owner& owner, const Key& key) {
  if (auto* const recorder = recorderOf(owner)) recordEntry<Table>(*recorder, owner, key);
}
/// Likewise, of an entry of a key that the table does not have: saves the search for it.
template <class Table, class Key>
[[gnu::always_inline]] inline void willInsertEntry(typename Table::Owner& owner, const Key& key) {
  if (auto* const recorder = recorderOf(owner)) {
    recordEntry<Table>(*recorder, owner, key, typename EntryChange<Table>::Comes());
  }
}

}  // namespace tarnkit::detail
