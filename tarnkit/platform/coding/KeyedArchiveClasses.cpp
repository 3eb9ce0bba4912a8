#include "tarnkit/platform/coding/KeyedArchiveClasses.h"

namespace tarnkit::detail {

std::uint32_t KeyedArchiveClasses::numberOf(const Class& record) {
  auto number = numbers_.find(&record);
  if (number == IdentityTable::kNone) {
    number = static_cast<std::uint32_t>(entries_.size());
    entries_.push_back({&record, substituteFor(record)});
    numbers_.set(&record, number);
  }
  return number;
}

void KeyedArchiveClasses::substitute(const Class& record, const String& name) {
  // All of the name have the same one.
  if (entries_[numberOf(record)].substitute == name) return;
  for (Entry& entry : entries_) {
    if (entry.record->name() != record.name()) continue;
    entry.substitute = name;
    entry.written = 0;
  }
}

String KeyedArchiveClasses::substituteFor(const Class& record) const noexcept {
  for (const Entry& entry : entries_) {
    if (entry.record->name() == record.name()) return entry.substitute;
  }
  return String();
}

void KeyedArchiveClasses::forgetWritten() noexcept {
  for (Entry& entry : entries_) entry.written = 0;
}

}  // namespace tarnkit::detail
