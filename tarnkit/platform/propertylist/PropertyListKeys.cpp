#include "tarnkit/platform/propertylist/PropertyListKeys.h"

#include <algorithm>

#include "tarnkit/platform/collections/KeyedHash.h"
#include "tarnkit/platform/propertylist/PropertyList.h"

namespace tarnkit::detail {

namespace {

bool ascend(std::string_view a, std::string_view b) noexcept {
  return a.size() != b.size() ? a.size() < b.size() : a < b;
}

}  // namespace

std::uint32_t PropertyListKeys::hashOf(std::string_view text) noexcept {
  return static_cast<std::uint32_t>(keyedHash(text));
}

PropertyListKeys::Key PropertyListKeys::named(const PropertyList& list,
                                              std::string_view text) const noexcept {
  if (couldBeInChain(list, text)) {
    const Key key = inChain(list, text);
    if (key != kNone) return key;
  }
  if (table_.empty()) return kNone;
  const std::uint32_t hash = hashOf(text);
  const std::size_t mask = table_.size() - 1;
  for (std::size_t at = hash & mask;; at = (at + 1) & mask) {
    const Slot& slot = table_[at];
    if (slot.ordinalPlusOne == 0) return kNone;
    const std::uint32_t ordinal = slot.ordinalPlusOne - 1;
    if (slot.hash == hash && list.string(strings_[ordinal]) == text) return ordinal << 1;
  }
}

PropertyListKeys::Key PropertyListKeys::number(const PropertyList& list, Index string,
                                               std::uint32_t hash) {
  const auto text = list.string(string);
  const std::size_t mask = table_.size() - 1;
  std::size_t at = hash & mask;
  for (; table_[at].ordinalPlusOne != 0; at = (at + 1) & mask) {
    const std::uint32_t ordinal = table_[at].ordinalPlusOne - 1;
    if (table_[at].hash == hash && list.string(strings_[ordinal]) == text) return ordinal << 1;
  }
  if (couldBeInChain(list, text)) {
    const Key key = inChain(list, text);
    if (key != kNone) return key;
    isOpen_ = false;  // an equal string that comes later must get this number
  }
  const auto ordinal = static_cast<std::uint32_t>(strings_.size());
  strings_.push_back(string);
  table_[at] = {hash, ordinal + 1};
  return ordinal << 1;
}

void PropertyListKeys::expect(std::size_t newKeys) {
  std::size_t size = std::max<std::size_t>(64, table_.size());
  while (size < (strings_.size() + newKeys) * 2) size *= 2;
  if (size == table_.size()) return;
  std::vector<Slot> larger(size);
  const std::size_t mask = larger.size() - 1;
  for (const Slot& slot : table_) {
    if (slot.ordinalPlusOne == 0) continue;
    std::size_t at = slot.hash & mask;
    while (larger[at].ordinalPlusOne != 0) at = (at + 1) & mask;
    larger[at] = slot;
  }
  table_ = std::move(larger);
}

// The first string decides how those of the chain begin. No key that was hashed before may begin
// so: it might be equal to one that comes later.
bool PropertyListKeys::append(const PropertyList& list, Index string, std::string_view text) {
  const auto prefix = text.substr(0, kPrefix);
  if (chain_.size() == 0) {
    constexpr std::size_t kFew = 16;
    isOpen_ =
        strings_.size() <= kFew && std::none_of(strings_.begin(), strings_.end(), [&](Index key) {
          return list.string(key).substr(0, kPrefix) == prefix;
        });
    if (!isOpen_) return false;
  } else if (last_.substr(0, kPrefix) != prefix || !ascend(last_, text)) {
    return false;
  }
  chain_.append(string);
  last_ = text;
  return true;
}

bool PropertyListKeys::couldBeInChain(const PropertyList& list,
                                      std::string_view text) const noexcept {
  return chain_.size() > 0 && mayBeLinked(text) &&
         text.substr(0, kPrefix) == list.string(chain_[0]).substr(0, kPrefix);
}

PropertyListKeys::Key PropertyListKeys::inChain(const PropertyList& list,
                                                std::string_view text) const noexcept {
  const Index* const end = chain_.data() + chain_.size();
  const Index* const found =
      std::lower_bound(chain_.data(), end, text, [&list](Index member, std::string_view wanted) {
        return ascend(list.string(member), wanted);
      });
  if (found == end || list.string(*found) != text) return kNone;
  return static_cast<Key>((found - chain_.data()) << 1) | 1U;
}

}  // namespace tarnkit::detail
