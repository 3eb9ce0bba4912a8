#pragma once

#include <algorithm>
#include <cassert>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <limits>
#include <memory>
#include <new>
#include <utility>

#include "tarnkit/platform/objects/BlockPool.h"

namespace tarnkit::detail {

/// The table under `OrderedMap` and `OrderedSet`: entries in the order of insertion, found by hash.
///
/// One word while empty; a handful of entries are searched in place and have one word beside them,
/// more get an index. Adding, finding and removing take constant time on average: among many, a
/// removed entry leaves a gap, and gaps are closed when they outnumber the entries. `Traits` tells
/// the key, its hash, equality and the gap.
template <class Entry, class Traits>
class OrderedTable {
 public:
  using Key = typename Traits::Key;
  static constexpr std::uint32_t kNotFound = 0xFFFFFFFFU;

  OrderedTable() noexcept = default;
  OrderedTable(const OrderedTable& other) {
    if (!other.block_) return;
    reserve(other.size());
    for (const Entry& entry : other) put(entry);
  }
  OrderedTable(OrderedTable&& other) noexcept : block_(std::exchange(other.block_, nullptr)) {}
  OrderedTable& operator=(OrderedTable other) noexcept {
    std::swap(block_, other.block_);
    return *this;
  }
  ~OrderedTable() { clear(); }

  std::uint32_t size() const noexcept { return block_ ? live() : 0; }
  bool empty() const noexcept { return size() == 0; }

  template <class E>
  class Iterator {
   public:
    using value_type = E;
    using difference_type = std::ptrdiff_t;
    using iterator_category = std::forward_iterator_tag;
    using pointer = E*;
    using reference = E&;
    Iterator() noexcept = default;
    Iterator(E* at, E* end) noexcept : at_(at), end_(end) { skipGaps(); }
    E& operator*() const noexcept { return *at_; }
    E* operator->() const noexcept { return at_; }
    Iterator& operator++() noexcept {
      ++at_;
      skipGaps();
      return *this;
    }
    Iterator operator++(int) noexcept {
      Iterator before = *this;
      ++*this;
      return before;
    }
    bool operator==(const Iterator& other) const noexcept { return at_ == other.at_; }

   private:
    void skipGaps() noexcept {
      while (at_ != end_ && Traits::isGap(*at_)) ++at_;
    }
    E* at_ = nullptr;
    E* end_ = nullptr;
  };
  using iterator = Iterator<Entry>;
  using const_iterator = Iterator<const Entry>;
  iterator begin() noexcept { return {entries() + first(), entries() + used()}; }
  iterator end() noexcept { return {entries() + used(), entries() + used()}; }
  const_iterator begin() const noexcept { return {entries() + first(), entries() + used()}; }
  const_iterator end() const noexcept { return {entries() + used(), entries() + used()}; }

  Entry* find(const Key& key) noexcept {
    const auto at = position(key);
    return at == kNotFound ? nullptr : entries() + at;
  }
  const Entry* find(const Key& key) const noexcept {
    return const_cast<OrderedTable*>(this)->find(key);
  }

  /// Appends an entry whose key is known to be absent.
  Entry& append(Entry entry) {
    assert(!Traits::isGap(entry) && position(Traits::key(entry)) == kNotFound);
    return put(std::move(entry));
  }

  /// Removes the entry of the key and returns it; a gap when there is none.
  Entry take(const Key& key) {
    const auto at = position(key);
    if (at == kNotFound) return Entry();
    Entry taken = std::exchange(entries()[at], Entry());
    if (live() == 1) {
      clear();
      return taken;
    }
    if (!isLarge(block_)) {
      closeGaps();
      return taken;
    }
    Large& large = largeOf(block_);
    --large.live;
    while (Traits::isGap(entries()[large.first])) ++large.first;
    assert(large.first < block_->used && large.live <= block_->used - large.first);
    if (block_->used > kSearchedInPlace && large.live < block_->used / 2) closeGaps();
    return taken;
  }

  /// An entry that stands next to another one, and on which side the other one stands.
  struct Neighbour {
    const Entry* entry = nullptr;  // null where there is no other
    bool follows = false;          // whether the neighbour comes after the other one
  };
  /// The nearest neighbour of the entry of the key; costs the gaps in between.
  Neighbour neighbour(const Key& key) const noexcept {
    const auto at = position(key);
    if (at == kNotFound) return {};
    const Entry* const run = entries();
    for (std::uint32_t distance = 1; distance < block_->used; ++distance) {
      if (at + distance < block_->used && !Traits::isGap(run[at + distance])) {
        return {run + at + distance, true};
      }
      if (at >= distance && !Traits::isGap(run[at - distance])) return {run + at - distance, false};
    }
    return {};
  }
  /// Puts an entry whose key is known to be absent next to the entry of the neighbour's key: before
  /// it where the neighbour follows, otherwise after it; at the end where there is no such entry.
  /// Constant time on average where an entry was taken before, and when many are put back.
  void insertBeside(const Key& neighbour, bool follows, Entry entry) {
    auto at = position(neighbour);
    if (at != kNotFound && !follows) ++at;
    if (at == kNotFound || at == block_->used) {
      append(std::move(entry));
      return;
    }
    if (!isLarge(block_)) {
      put(std::move(entry));
      std::rotate(entries() + at, entries() + block_->used - 1, entries() + block_->used);
      if (index()) buildIndex();
      return;
    }
    at = makeGapBefore(at);
    entries()[at] = std::move(entry);
    Large& large = largeOf(block_);
    ++large.live;
    large.first = std::min(large.first, at);
    if (large.index) insertIntoIndex(at);
  }

  void clear() noexcept {
    Block* const old = std::exchange(block_, nullptr);
    if (!old) return;
    std::destroy_n(entriesOf(old), old->used);
    discard(old);
  }

  void reserve(std::uint32_t capacity) {
    if (capacity > (block_ ? block_->capacity : 0)) reallocate(capacity);
  }

  /// Makes position i hold the i-th entry, and returns the entries as one run.
  Entry* dense() {
    if (block_ && live() != block_->used) closeGaps();
    return entries();
  }

  /// Moves the entry at one position to another, as removing and inserting would.
  void move(std::uint32_t from, std::uint32_t to) {
    assert(from < size() && to < size());
    Entry* const run = dense();
    if (from < to) {
      std::rotate(run + from, run + from + 1, run + to + 1);
    } else {
      std::rotate(run + to, run + from, run + from + 1);
    }
    if (index()) buildIndex();
  }

 private:
  static constexpr std::uint32_t kSearchedInPlace = 8;
  // How far a gap may be from where one is needed.
  static constexpr std::uint32_t kGapReach = 16;
  // A table without a gap near by is laid out with one gap after so many entries.
  static constexpr std::uint32_t kEntriesPerGap = 4;

  // Open addressing with linear probing. Slots of removed entries stay until the index is built
  // again. A slot holds one more than the entry's position, which is less than half of the slots,
  // and what it can of the hash but for the bits that say where it stands.
  template <class Word>
  struct Slot {
    Word hash;
    Word position;
    static constexpr Word hashOf(std::uint32_t hash) noexcept {
      return static_cast<Word>(hash >> (32 - std::numeric_limits<Word>::digits));
    }
  };
  using NarrowSlot = Slot<std::uint16_t>;
  using WideSlot = Slot<std::uint32_t>;
  static constexpr std::uint32_t kMostNarrowSlots = 0x10000;
  // Stands before its slots.
  struct Index {
    std::uint32_t count;  // of the slots, a power of two
    std::uint32_t taken;  // of the slots, those of removed entries included

    static Index* make(std::uint32_t count) {
      return ::new (::operator new(bytesOf(count))) Index{count, 0};
    }
    bool isNarrow() const noexcept { return count <= kMostNarrowSlots; }
    template <class S>
    S* places() noexcept {
      return reinterpret_cast<S*>(this + 1);
    }
    void clear() noexcept {
      taken = 0;
      std::memset(places<char>(), 0, bytesOf(count) - sizeof(Index));
    }

   private:
    static std::size_t bytesOf(std::uint32_t count) noexcept {
      const bool isNarrow = count <= kMostNarrowSlots;
      return sizeof(Index) +
             std::size_t{count} * (isNarrow ? sizeof(NarrowSlot) : sizeof(WideSlot));
    }
  };
  struct Discard {
    void operator()(Index* index) const noexcept { ::operator delete(index); }
  };
  // Does something with the slots, as those that they are.
  template <class Use>
  static auto withPlaces(Index& index, Use use) {
    return index.isNarrow() ? use(index.template places<NarrowSlot>())
                            : use(index.template places<WideSlot>());
  }
  // Stands before the entries.
  struct alignas(std::uint64_t) Block {
    std::uint32_t used = 0;
    std::uint32_t capacity = 0;
  };
  // Stands before the block of a table that has room for more entries than are searched in place.
  // In a smaller one there are no gaps.
  struct Large {
    std::uint32_t live = 0;
    std::uint32_t first = 0;  // no entry stands before it
    std::unique_ptr<Index, Discard> index;
  };
  static_assert(alignof(Entry) <= alignof(Block) && alignof(Large) <= alignof(Block));

  static bool hasRoomForMany(std::uint32_t capacity) noexcept {
    return capacity > kSearchedInPlace;
  }
  static bool isLarge(const Block* block) noexcept { return hasRoomForMany(block->capacity); }
  static Large& largeOf(Block* block) noexcept { return *(reinterpret_cast<Large*>(block) - 1); }
  // The rest is for a table that has a block.
  std::uint32_t live() const noexcept {
    return isLarge(block_) ? largeOf(block_).live : block_->used;
  }
  Index* index() const noexcept { return isLarge(block_) ? largeOf(block_).index.get() : nullptr; }

  // Of a copy, too: objects that were different when they came in may have become equal.
  Entry& put(Entry entry) {
    if (!block_ || block_->used == block_->capacity) grow();
    Entry* added = ::new (entries() + block_->used) Entry(std::move(entry));
    ++block_->used;
    if (!isLarge(block_)) return *added;
    Large& large = largeOf(block_);
    ++large.live;
    if (large.index) {
      insertIntoIndex(block_->used - 1);
    } else if (block_->used > kSearchedInPlace) {
      buildIndex();
    }
    return *added;
  }

  static Entry* entriesOf(Block* block) noexcept { return reinterpret_cast<Entry*>(block + 1); }
  Entry* entries() const noexcept { return block_ ? entriesOf(block_) : nullptr; }
  std::uint32_t used() const noexcept { return block_ ? block_->used : 0; }
  std::uint32_t first() const noexcept {
    return block_ && isLarge(block_) ? largeOf(block_).first : 0;
  }

  static std::uint32_t fold(std::uint64_t hash) noexcept {
    hash *= 0x9E3779B97F4A7C15ULL;
    return static_cast<std::uint32_t>(hash >> 32);
  }

  std::uint32_t position(const Key& key) const noexcept {
    if (!block_) return kNotFound;
    const Entry* const run = entries();
    Index* const index = this->index();
    if (!index) {
      for (std::uint32_t i = 0; i < block_->used; ++i) {
        if (!Traits::isGap(run[i]) && Traits::hasKey(run[i], key)) return i;
      }
      return kNotFound;
    }
    const auto hash = fold(Traits::hash(key));
    const std::size_t mask = index->count - 1;
    return withPlaces(*index, [&]<class S>(const S* places) {
      for (std::size_t at = hash & mask;; at = (at + 1) & mask) {
        const S& slot = places[at];
        if (slot.position == 0) return kNotFound;
        if (slot.hash != S::hashOf(hash)) continue;
        const std::uint32_t position = slot.position - 1U;
        const Entry& entry = run[position];
        if (!Traits::isGap(entry) && Traits::hasKey(entry, key)) return position;
      }
    });
  }

  void insertIntoIndex(std::uint32_t position) {
    const std::uint32_t count = index()->count;
    if (position >= count / 2 || index()->taken >= count / 8 * 5) {
      buildIndex();
      return;
    }
    place(position);
  }
  void place(std::uint32_t position) noexcept {
    Index& index = *this->index();
    assert(block_->used < index.count);  // a slot stays free, or no search would end
    const auto hash = fold(Traits::hash(Traits::key(entries()[position])));
    const std::size_t mask = index.count - 1;
    withPlaces(index, [&]<class S>(S* places) {
      std::size_t at = hash & mask;
      while (places[at].position != 0) at = (at + 1) & mask;
      places[at] = {S::hashOf(hash), static_cast<decltype(S::position)>(position + 1)};
    });
    ++index.taken;
  }
  void buildIndex() {
    std::uint32_t size = 32;
    while (size < block_->used * 2 + 2) size *= 2;
    auto& index = largeOf(block_).index;
    if (!index || index->count != size) index.reset(Index::make(size));
    index->clear();
    for (std::uint32_t i = 0; i < block_->used; ++i) {
      if (!Traits::isGap(entries()[i])) place(i);
    }
  }

  static std::size_t headOf(std::uint32_t capacity) noexcept {
    return hasRoomForMany(capacity) ? sizeof(Large) : 0;
  }
  static std::size_t bytesOf(std::uint32_t capacity) noexcept {
    return headOf(capacity) + sizeof(Block) + std::size_t{capacity} * sizeof(Entry);
  }
  static void discard(Block* block) noexcept {
    const auto capacity = block->capacity;
    if (isLarge(block)) largeOf(block).~Large();
    BlockPool::release(reinterpret_cast<char*>(block) - headOf(capacity), bytesOf(capacity));
  }

  void grow() {
    if (block_ && live() < block_->used && live() <= block_->used / 4 * 3) {
      closeGaps();
      return;
    }
    reallocate(block_ ? block_->capacity * 2 : 1);
  }
  static Block* makeBlock(std::uint32_t capacity) {
    auto* memory = static_cast<char*>(BlockPool::allocate(bytesOf(capacity)));
    if (hasRoomForMany(capacity)) {
      ::new (memory) Large();
      memory += sizeof(Large);
    }
    auto* const block = ::new (memory) Block();
    block->capacity = capacity;
    return block;
  }
  void reallocate(std::uint32_t capacity) {
    auto* const fresh = makeBlock(capacity);
    Block* const old = block_;
    if (old) {
      fresh->used = old->used;
      if (isLarge(old)) {
        largeOf(fresh) = std::move(largeOf(old));
      } else if (isLarge(fresh)) {
        largeOf(fresh).live = old->used;
      }
      std::uninitialized_move_n(entriesOf(old), old->used, entriesOf(fresh));
      std::destroy_n(entriesOf(old), old->used);
      discard(old);
    }
    block_ = fresh;
  }
  // A gap between the entry at the position and the one before it; tells where it is.
  std::uint32_t makeGapBefore(std::uint32_t at) {
    Entry* const run = entries();
    for (std::uint32_t distance = 0; distance < kGapReach; ++distance) {
      if (at + distance < block_->used && Traits::isGap(run[at + distance])) {
        for (auto to = at + distance; to > at; --to) shift(to - 1, to);
        return at;
      }
      if (at > distance && Traits::isGap(run[at - 1 - distance])) {
        for (auto to = at - 1 - distance; to + 1 < at; ++to) shift(to + 1, to);
        auto& first = largeOf(block_).first;
        first = std::min(first, at - 1 - distance);
        return at - 1;
      }
    }
    return spreadGaps(at);
  }
  void shift(std::uint32_t from, std::uint32_t to) {
    entries()[to] = std::exchange(entries()[from], Entry());
    if (index()) insertIntoIndex(to);
  }
  // Lays the entries out anew, with gaps: some everywhere, for entries that are put back in any
  // order, and a run of them before the position, for those that are put back one before the other.
  std::uint32_t spreadGaps(std::uint32_t before) {
    const std::uint32_t run = live() / kEntriesPerGap + 1;
    auto* const fresh = makeBlock(std::max(live() + 2 * run, kSearchedInPlace) + 1);
    Entry* const to = entriesOf(fresh);
    std::uint32_t used = 0;
    std::uint32_t gap = 0;
    std::uint32_t sinceGap = 0;
    const auto put = [&](Entry entry) { ::new (to + used++) Entry(std::move(entry)); };
    for (std::uint32_t i = 0; i < block_->used; ++i) {
      if (i == before) {
        for (std::uint32_t n = 0; n < run; ++n) put(Entry());
        gap = used - 1;
      }
      if (Traits::isGap(entries()[i])) continue;
      put(std::move(entries()[i]));
      if (++sinceGap % kEntriesPerGap == 0) put(Entry());
    }
    fresh->used = used;
    largeOf(fresh).live = live();
    largeOf(fresh).index = std::move(largeOf(block_).index);
    Block* const old = std::exchange(block_, fresh);
    std::destroy_n(entriesOf(old), old->used);
    discard(old);
    if (index() || used > kSearchedInPlace) buildIndex();
    return gap;
  }
  void closeGaps() {
    Entry* const run = entries();
    std::uint32_t kept = 0;
    for (std::uint32_t i = 0; i < block_->used; ++i) {
      if (Traits::isGap(run[i])) continue;
      if (kept != i) run[kept] = std::move(run[i]);
      ++kept;
    }
    std::destroy_n(run + kept, block_->used - kept);
    block_->used = kept;
    if (!isLarge(block_)) return;
    assert(kept == live());
    largeOf(block_).first = 0;
    if (index()) buildIndex();
  }

  Block* block_ = nullptr;
};

}  // namespace tarnkit::detail
