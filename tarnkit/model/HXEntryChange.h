#pragma once

#include <optional>
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
  /// The node that comes to a group with the entry, or leaves it.
  static HXNode* subnode(const Value*) noexcept { return nullptr; }
  /// Brings in line what follows from the entry, right after it came, went or was replaced.
  static void follow(T&, const Key&) {}
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

  EntryChange(Owner& owner, Key key) : owner_(&owner), key_(std::move(key)) {
    auto& table = Table::in(*owner_);
    if (const auto* const value = Entries::find(table, key_)) {
      held_ = *value;
      place_ = Entries::place(table, key_);
    }
  }

  void exchange() override {
    auto& table = Table::in(*owner_);
    auto* const present = Entries::find(table, key_);
    if (present && held_) {
      std::swap(*present, *held_);
    } else if (present) {
      place_ = Entries::place(table, key_);
      held_ = Entries::take(table, key_);
    } else if (held_) {
      Entries::insert(table, key_, std::move(*held_), place_);
      held_.reset();
      place_ = {};
    }
    Table::follow(*owner_, key_);
  }
  void addNotices(HXChangeNotices& notices) const override {
    auto* const present = Entries::find(Table::in(*owner_), key_);
    Table::addNotices(*owner_, key_, present ? present : held(), present != nullptr, notices);
  }
  bool isNeutral() const override {
    auto& table = Table::in(*owner_);
    auto* const present = Entries::find(table, key_);
    if (!present || !held_) return !present && !held_;
    return *present == *held_ && samePlace(Entries::place(table, key_));
  }
  Subject table() const noexcept override { return {owner_.get(), Table::kName}; }
  bool isUndoneBy(const HXChange& later) const override {
    const auto* const other = dynamic_cast<const EntryChange*>(&later);
    return other && other->key_ == key_ && isNeutral();
  }
  HXNode* subnode() const noexcept override {
    auto* const present = Entries::find(Table::in(*owner_), key_);
    return Table::subnode(present ? present : held());
  }
  std::size_t byteCount() const noexcept override { return sizeof(*this); }

 private:
  const Value* held() const noexcept { return held_ ? &*held_ : nullptr; }
  bool samePlace(const decltype(Entries::place(std::declval<typename Table::Collection&>(),
                                               std::declval<const Key&>()))& other) const {
    return place_.neighbour == other.neighbour && place_.follows == other.follows;
  }

  Ref<Owner> owner_;
  Key key_;
  std::optional<Value> held_;  // what is not in force: the entry's value, or nothing
  std::decay_t<decltype(Entries::place(std::declval<typename Table::Collection&>(),
                                       std::declval<const Key&>()))>
      place_;
};

/// The change of the place of one member of a set that an object owns. `Table` as above.
template <class Table>
class PlaceChange final : public HXChange {
 public:
  using Owner = typename Table::Owner;
  using Key = typename Table::Key;

  PlaceChange(Owner& owner, Key member)
      : owner_(&owner), member_(std::move(member)), held_(Table::in(owner).place(member_.get())) {}

  void exchange() override {
    auto& set = Table::in(*owner_);
    auto present = set.place(member_.get());
    set.remove(member_.get());
    set.insert(member_, held_);
    held_ = std::move(present);
  }
  void addNotices(HXChangeNotices& notices) const override {
    Table::addNotices(*owner_, member_, nullptr, true, notices);
  }
  bool isNeutral() const override {
    const auto present = Table::in(*owner_).place(member_.get());
    return held_.neighbour == present.neighbour && held_.follows == present.follows;
  }
  /// Where an entry comes and goes depends on the places of the others.
  Subject table() const noexcept override { return {owner_.get(), Table::kName}; }
  std::size_t byteCount() const noexcept override { return sizeof(*this); }

 private:
  Ref<Owner> owner_;
  Key member_;
  typename Table::Collection::Place held_;
};

/// The entry of the owner's table is about to come, to go, or to be replaced, on behalf of
/// `source`, which stands in the document.
template <class Table, class Source>
void willChangeEntry(const Source& source, typename Table::Owner& owner,
                     typename EntryChange<Table>::Key key) {
  if (auto* const recorder = recorderOf(source)) {
    recorder->record(std::make_unique<EntryChange<Table>>(owner, std::move(key)));
  }
}
template <class Table>
void willChangeEntry(typename Table::Owner& owner, typename EntryChange<Table>::Key key) {
  willChangeEntry<Table>(owner, owner, std::move(key));
}

}  // namespace tarnkit::detail
