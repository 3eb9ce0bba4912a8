#include "tarnkit/editing/HXHistoryStep.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "tarnkit/model/HXChangeNotices.h"

namespace tarnkit {

namespace {

// Beyond so many changes the subjects that are held are looked up in a table.
constexpr std::size_t kSearchedInPlace = 12;

struct SubjectHash {
  std::size_t operator()(const HXChange::Subject& subject) const noexcept {
    return (reinterpret_cast<std::uintptr_t>(subject.object) >> 4) * 31 +
           reinterpret_cast<std::uintptr_t>(subject.property);
  }
};

}  // namespace

class HXHistoryStep::Subjects : public std::unordered_set<HXChange::Subject, SubjectHash> {};

HXHistoryStep::HXHistoryStep() noexcept = default;
HXHistoryStep::HXHistoryStep(HXHistoryStep&& other) noexcept
    : name(std::move(other.name)),
      coalescingKey(std::move(other.coalescingKey)),
      time(other.time),
      id(other.id),
      changes_(std::move(other.changes_)),
      changeBytes_(std::exchange(other.changeBytes_, 0)),
      subjects_(std::move(other.subjects_)) {}
HXHistoryStep& HXHistoryStep::operator=(HXHistoryStep&&) noexcept = default;
HXHistoryStep::~HXHistoryStep() = default;

bool HXHistoryStep::holds(const HXChange::Subject& subject) const {
  if (!subject.object) return false;
  if (subjects_) return subjects_->contains(subject);
  return std::any_of(changes_.begin(), changes_.end(),
                     [&](const HXChange& change) { return change.subject() == subject; });
}

void HXHistoryStep::add(std::unique_ptr<HXChange> change) {
  changeBytes_ += change->byteCount();
  changes_.append(std::move(change));
  if (changes_.count() <= kSearchedInPlace) return;
  if (subjects_) {
    subjects_->insert(changes_.last()->subject());
    return;
  }
  subjects_ = std::make_unique<Subjects>();
  for (const HXChange& present : changes_) subjects_->insert(present.subject());
}

void HXHistoryStep::append(HXHistoryStep later) {
  while (auto change = later.changes_.takeFirst()) {
    if (!holds(change->subject())) add(std::move(change));
  }
}

HXChangeList HXHistoryStep::takeAll() {
  subjects_ = nullptr;
  changeBytes_ = 0;
  return std::exchange(changes_, {});
}

// Most steps are of a few changes of different things.
bool HXHistoryStep::mayCancelOut() const {
  if (changes_.count() > kSearchedInPlace) return true;
  for (const HXChange& change : changes_) {
    const auto table = change.table();
    if (!table.object || change.subject().object) {
      if (change.isNeutral()) return true;
      continue;
    }
    for (const auto* earlier = HXChangeList::before(change); earlier;
         earlier = HXChangeList::before(*earlier)) {
      if (earlier->table() == table) return true;
    }
  }
  return false;
}

// A value that is what it was goes. Of the entries of a table those go that came and went again, or
// the other way round, with nothing of that table left in between; a table that was exchanged as a
// whole goes only when no entry of it is left.
HXChangeList HXHistoryStep::takeWhatCancelsOut() {
  if (!mayCancelOut()) return {};
  struct Table {
    std::vector<HXChange*> members;
    std::vector<HXChange*> open;
  };
  std::unordered_map<HXChange::Subject, Table, SubjectHash> tables;
  std::unordered_set<const HXChange*> goes;
  for (HXChange& change : changes_) {
    const auto subject = change.table();
    if (!subject.object) {
      if (change.isNeutral()) goes.insert(&change);
      continue;
    }
    Table& table = tables[subject];
    table.members.push_back(&change);
    if (!table.open.empty() && table.open.back()->isUndoneBy(change)) {
      table.open.pop_back();
    } else {
      table.open.push_back(&change);
    }
  }
  // All of a table or nothing: where an entry stood is told by what stood beside it, so that what
  // stays needs the rest.
  for (const auto& [subject, table] : tables) {
    const auto& open = table.open;
    if (!open.empty() && (open.size() != 1 || !open[0]->isNeutral())) continue;
    goes.insert(table.members.begin(), table.members.end());
  }
  // What stays may concern what stands below a node that came and went, or the other way round.
  if (goes.size() != changes_.count()) {
    std::erase_if(goes, [](const HXChange* change) { return change->movesSubnodes(); });
  }
  HXChangeList gone;
  if (goes.empty()) return gone;
  HXChangeList all = takeAll();
  while (auto change = all.takeFirst()) {
    if (goes.contains(change.get())) {
      gone.append(std::move(change));
    } else {
      add(std::move(change));
    }
  }
  return gone;
}

bool HXHistoryStep::setsTheSameAs(const HXHistoryStep& other) const {
  if (changes_.count() != other.changes_.count()) return false;
  return std::all_of(changes_.begin(), changes_.end(), [&](const HXChange& change) {
    return change.isSimple() && change.subject().object && other.holds(change.subject());
  });
}

bool HXHistoryStep::isViewState() const noexcept {
  return std::all_of(changes_.begin(), changes_.end(),
                     [](const HXChange& change) { return change.isViewState(); });
}

void HXHistoryStep::exchange(bool backward, HXChangeNotices& notices) {
  for (auto* change = backward ? changes_.last() : changes_.first(); change;
       change = backward ? HXChangeList::before(*change) : HXChangeList::after(*change)) {
    change->exchange();
    change->addNotices(notices);
  }
}

}  // namespace tarnkit
