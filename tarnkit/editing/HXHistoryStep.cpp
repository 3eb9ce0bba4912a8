#include "tarnkit/editing/HXHistoryStep.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

#include "tarnkit/model/HXChangeNotices.h"

namespace tarnkit {

namespace {

// Beyond so many changes the subjects that are held are looked up in a table.
constexpr std::size_t kSearchedInPlace = 12;
constexpr std::size_t kUsualChanges = 3;

struct SubjectHash {
  std::size_t operator()(const HXChange::Subject& subject) const noexcept {
    return (reinterpret_cast<std::uintptr_t>(subject.object) >> 4) * 31 +
           reinterpret_cast<std::uintptr_t>(subject.property);
  }
};

}  // namespace

class HXHistoryStep::Subjects : public std::unordered_set<HXChange::Subject, SubjectHash> {};

HXHistoryStep::HXHistoryStep() noexcept = default;
HXHistoryStep::HXHistoryStep(HXHistoryStep&&) noexcept = default;
HXHistoryStep& HXHistoryStep::operator=(HXHistoryStep&&) noexcept = default;

// The newest change first: what a change holds may hang on what an earlier one holds.
HXHistoryStep::~HXHistoryStep() {
  while (!changes_.empty()) changes_.pop_back();
}

bool HXHistoryStep::holds(const HXChange::Subject& subject) const {
  if (!subject.object) return false;
  if (subjects_) return subjects_->contains(subject);
  return std::any_of(changes_.begin(), changes_.end(),
                     [&](const auto& change) { return change->subject() == subject; });
}

void HXHistoryStep::add(std::unique_ptr<HXChange> change) {
  if (changes_.empty()) changes_.reserve(kUsualChanges);
  changes_.push_back(std::move(change));
  if (changes_.size() <= kSearchedInPlace) return;
  if (subjects_) {
    subjects_->insert(changes_.back()->subject());
    return;
  }
  subjects_ = std::make_unique<Subjects>();
  for (const auto& present : changes_) subjects_->insert(present->subject());
}

void HXHistoryStep::append(HXHistoryStep later) {
  for (auto& change : later.changes_) {
    if (!holds(change->subject())) add(std::move(change));
  }
  later.changes_.clear();
}

HXHistoryStep::Changes HXHistoryStep::takeAll() {
  subjects_ = nullptr;
  return std::exchange(changes_, {});
}

// Most steps are of a few changes of different things.
bool HXHistoryStep::mayCancelOut() const {
  if (changes_.size() > kSearchedInPlace) return true;
  for (std::size_t i = 0; i < changes_.size(); ++i) {
    const auto table = changes_[i]->table();
    if (!table.object || changes_[i]->subject().object) {
      if (changes_[i]->isNeutral()) return true;
      continue;
    }
    for (std::size_t before = 0; before < i; ++before) {
      if (changes_[before]->table() == table) return true;
    }
  }
  return false;
}

// A value that is what it was goes. Of the entries of a table those go that came and went again, or
// the other way round, with nothing of that table left in between; a table that was exchanged as a
// whole goes only when no entry of it is left.
HXHistoryStep::Changes HXHistoryStep::takeWhatCancelsOut() {
  if (!mayCancelOut()) return {};
  std::vector<bool> goes(changes_.size());
  std::unordered_map<HXChange::Subject, std::vector<std::size_t>, SubjectHash> tables;
  std::unordered_map<HXChange::Subject, std::vector<std::size_t>, SubjectHash> members;
  for (std::size_t i = 0; i < changes_.size(); ++i) {
    const auto table = changes_[i]->table();
    if (!table.object) {
      goes[i] = changes_[i]->isNeutral();
      continue;
    }
    members[table].push_back(i);
    auto& open = tables[table];
    if (!open.empty() && changes_[open.back()]->isUndoneBy(*changes_[i])) {
      open.pop_back();
    } else {
      open.push_back(i);
    }
  }
  // All of a table or nothing: where an entry stood is told by what stood beside it, so that what
  // stays needs the rest.
  for (const auto& [table, open] : tables) {
    if (!open.empty() && (open.size() != 1 || !changes_[open[0]]->isNeutral())) continue;
    for (const auto i : members[table]) goes[i] = true;
  }
  Changes gone;
  Changes kept;
  for (std::size_t i = 0; i < changes_.size(); ++i) {
    (goes[i] ? gone : kept).push_back(std::move(changes_[i]));
  }
  changes_.clear();
  subjects_ = nullptr;
  for (auto& change : kept) add(std::move(change));
  return gone;
}

bool HXHistoryStep::setsTheSameAs(const HXHistoryStep& other) const {
  if (changes_.size() != other.changes_.size()) return false;
  return std::all_of(changes_.begin(), changes_.end(), [&](const auto& change) {
    return change->subject().object && change->isSimple() && other.holds(change->subject());
  });
}

bool HXHistoryStep::isViewState() const noexcept {
  return std::all_of(changes_.begin(), changes_.end(),
                     [](const auto& change) { return change->isViewState(); });
}

void HXHistoryStep::exchange(bool backward, HXChangeNotices& notices) {
  const auto exchangeOne = [&](HXChange& change) {
    change.exchange();
    change.addNotices(notices);
  };
  if (backward) {
    for (auto change = changes_.rbegin(); change != changes_.rend(); ++change) {
      exchangeOne(**change);
    }
  } else {
    for (const auto& change : changes_) exchangeOne(*change);
  }
}

std::size_t HXHistoryStep::byteCount() const noexcept {
  std::size_t bytes = sizeof(*this);
  for (const auto& change : changes_) bytes += sizeof(change) + change->byteCount();
  return bytes;
}

}  // namespace tarnkit
