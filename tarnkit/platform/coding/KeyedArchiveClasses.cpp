#include "tarnkit/platform/coding/KeyedArchiveClasses.h"

#include <algorithm>
#include <utility>

namespace tarnkit::detail {

std::uint32_t KeyedArchiveClasses::numberOf(const Class& record) {
  auto number = numbers_.find(&record);
  if (number != IdentityTable::kNone) return number;
  number = static_cast<std::uint32_t>(entries_.size());
  Entry entry{&record, nullptr, 0, number};
  if (const Entry* const other = firstNamed(record.name())) {
    entry.substitute = other->substitute;
    entry.next =
        std::exchange(entries_[static_cast<std::size_t>(other - entries_.data())].next, number);
  }
  entries_.push_back(std::move(entry));
  numbers_.set(&record, number);
  return number;
}

const KeyedArchiveClasses::Entry* KeyedArchiveClasses::firstNamed(
    std::string_view name) const noexcept {
  const auto found = std::find_if(entries_.begin(), entries_.end(),
                                  [&](const Entry& entry) { return entry.record->name() == name; });
  return found == entries_.end() ? nullptr : &*found;
}

void KeyedArchiveClasses::substitute(const Class& record, const String& name) {
  const std::uint32_t first = numberOf(record);
  if (entries_[first].substitute == name) return;  // those of one name have the same one
  std::uint32_t number = first;
  do {
    Entry& entry = entries_[number];
    entry.substitute = name;
    entry.written = 0;
    number = entry.next;
  } while (number != first);
}

String KeyedArchiveClasses::substituteFor(const Class& record) const noexcept {
  const Entry* const known = firstNamed(record.name());
  return known ? known->substitute : String();
}

void KeyedArchiveClasses::forgetWritten() noexcept {
  for (Entry& entry : entries_) entry.written = 0;
}

}  // namespace tarnkit::detail
