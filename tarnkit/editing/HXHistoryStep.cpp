#include "tarnkit/editing/HXHistoryStep.h"

#include <algorithm>
#include <vector>

#include "tarnkit/model/HXChangeNotices.h"
#include "tarnkit/platform/collections/OrderedTable.h"

namespace tarnkit {

namespace {

// Numbers of subjects.
struct NumberedSubject {
  HXChange::Subject subject;
  std::uint32_t number = 0;
};
struct SubjectTraits {
  using Key = HXChange::Subject;
  static const Key& key(const NumberedSubject& entry) noexcept { return entry.subject; }
  static bool isGap(const NumberedSubject& entry) noexcept { return !entry.subject.object; }
  static bool hasKey(const NumberedSubject& entry, const Key& key) noexcept {
    return entry.subject == key;
  }
  static std::uint64_t hash(const Key& key) noexcept {
    return (reinterpret_cast<std::uintptr_t>(key.object) >> 4) * 31 +
           reinterpret_cast<std::uintptr_t>(key.property);
  }
};
using SubjectTable = detail::OrderedTable<NumberedSubject, SubjectTraits>;

// The number of the subject, which is the next one where it had none.
std::uint32_t numberOf(const HXChange::Subject& subject, SubjectTable& subjects) {
  const auto* const known = subjects.find(subject);
  return known ? known->number : subjects.append({subject, subjects.size()}).number;
}

// The tables from which entries went, or whose entries changed: to the others entries came and
// nothing else, so that nothing of them cancels out.
class TablesInQuestion {
 public:
  explicit TablesInQuestion(const HXChangeList& changes) {
    for (const HXChange& change : changes) {
      const auto table = change.table();
      if (!table.object) {
        hasNeutralValue_ = hasNeutralValue_ || change.isNeutral();
        continue;
      }
      if (change.isOfNewEntry()) continue;
      numberOf(table, numbers_);
      if (!hasOneOfProperty(table.property)) properties_.push_back(table.property);
    }
  }

  std::uint32_t count() const noexcept { return numbers_.size(); }
  /// Whether a value, no table, is what it was.
  bool hasNeutralValue() const noexcept { return hasNeutralValue_; }
  /// The number of the table, counted from 0; null of one that is none of them. Most changes are
  /// not looked up: what is in question is of one or two properties.
  const std::uint32_t* numberOfTable(const HXChange::Subject& table) const {
    return table.object && hasOneOfProperty(table.property) ? numberOfSuch(table) : nullptr;
  }

 private:
  bool hasOneOfProperty(const char* property) const noexcept {
    for (const char* known : properties_) {
      if (known == property) return true;
    }
    return false;
  }
  const std::uint32_t* numberOfSuch(const HXChange::Subject& table) const {
    const auto* const entry = numbers_.find(table);
    return entry ? &entry->number : nullptr;
  }

  SubjectTable numbers_;
  std::vector<const char*> properties_;
  bool hasNeutralValue_ = false;
};

// Of each of the tables whether all changes of it change nothing in the end: its entries came and
// went again, or the other way round, with nothing left in between; a table that was exchanged as a
// whole only when no entry of it is left. All of a table or nothing: where an entry stood is told
// by what stood beside it, so that what stays needs the rest.
std::vector<bool> tablesThatCancelOut(const HXChangeList& changes,
                                      const TablesInQuestion& inQuestion) {
  constexpr std::uint32_t kNone = 0xFFFFFFFFU;
  struct Link {
    const HXChange* change;
    std::uint32_t below;  // of the changes of the table that no later one has taken back
  };
  struct Table {
    std::uint32_t last = kNone;  // the last change that none has taken back, and how many there are
    std::uint32_t count = 0;
  };
  std::vector<Link> links;
  std::vector<Table> tables(inQuestion.count());
  if (tables.empty()) return {};
  for (const HXChange& change : changes) {
    const auto* const number = inQuestion.numberOfTable(change.table());
    if (!number) continue;
    Table& table = tables[*number];
    if (table.count != 0 && links[table.last].change->isUndoneBy(change)) {
      table.last = links[table.last].below;
      --table.count;
    } else {
      links.push_back({&change, table.last});
      table.last = static_cast<std::uint32_t>(links.size() - 1);
      ++table.count;
    }
  }
  std::vector<bool> cancelOut;
  cancelOut.reserve(tables.size());
  for (const Table& table : tables) {
    cancelOut.push_back(table.count == 0 ||
                        (table.count == 1 && links[table.last].change->isNeutral()));
  }
  return cancelOut;
}

// Of each change whether it changes nothing in the end, as a value that is what it was, or as part
// of a table that is; none when all do something.
std::vector<bool> whatCancelsOut(const HXChangeList& changes) {
  const TablesInQuestion inQuestion(changes);
  const auto tables = tablesThatCancelOut(changes, inQuestion);
  std::vector<bool> goes;
  if (!inQuestion.hasNeutralValue() &&
      std::find(tables.begin(), tables.end(), true) == tables.end()) {
    return goes;
  }
  goes.reserve(changes.count());
  for (const HXChange& change : changes) {
    const auto table = change.table();
    const auto* const number = inQuestion.numberOfTable(table);
    goes.push_back(table.object ? number && tables[*number] : change.isNeutral());
  }
  return goes;
}

}  // namespace

// Of a step of many changes. When it ends its changes lie scattered, most of them of entries that
// came, so what has to be looked at is noted while it is at hand.
struct HXHistoryStep::Index {
  void add(const HXChange::Subject& subject) {
    if (subject.object) static_cast<void>(numberOf(subject, subjects));
  }
  void note(const HXChange& change) {
    if (isWhole && !change.isOfNewEntry()) others.push_back(&change);
  }
  void endNotes() {
    isWhole = false;
    others = {};
  }

  SubjectTable subjects;
  std::vector<const HXChange*> others;  // that are of no new entry
  bool isWhole = true;                  // whether all of them are noted
};

HXHistoryStep::HXHistoryStep() noexcept = default;
HXHistoryStep::HXHistoryStep(HXHistoryStep&& other) noexcept
    : name(std::move(other.name)),
      coalescingKey(std::move(other.coalescingKey)),
      time(other.time),
      id(other.id),
      changes_(std::move(other.changes_)),
      changeBytes_(std::exchange(other.changeBytes_, 0)),
      hasOnlyNewEntries_(std::exchange(other.hasOnlyNewEntries_, true)),
      heldSubnodes_(std::exchange(other.heldSubnodes_, false)),
      index_(std::move(other.index_)) {}
HXHistoryStep& HXHistoryStep::operator=(HXHistoryStep&&) noexcept = default;
HXHistoryStep::~HXHistoryStep() = default;

bool HXHistoryStep::holds(const HXChange::Subject& subject) const {
  if (!subject.object) return false;
  if (index_) return index_->subjects.find(subject) != nullptr;
  return std::any_of(changes_.begin(), changes_.end(),
                     [&](const HXChange& change) { return change.subject() == subject; });
}

void HXHistoryStep::add(std::unique_ptr<HXChange> change) {
  hasOnlyNewEntries_ = false;
  heldSubnodes_ = heldSubnodes_ || change->comingSubnode();
  changeBytes_ += change->byteCount();
  changes_.append(std::move(change));
  if (index_) {
    index_->add(changes_.last()->subject());
    index_->note(*changes_.last());
  } else if (changes_.count() > kSearchedInPlace) {
    makeIndex();
  }
}

void HXHistoryStep::makeIndex() {
  index_ = std::make_unique<Index>();
  for (const HXChange& present : changes_) {
    index_->add(present.subject());
    index_->note(present);
  }
}

bool HXHistoryStep::isNoted() const noexcept { return index_ && index_->isWhole; }

void HXHistoryStep::addFirst(std::unique_ptr<HXChange> change) {
  if (!holds(change->subject())) add(std::move(change));
}

void HXHistoryStep::end(FunctionRef<void(HXNode&)> visitHeldSubnode) {
  const auto visit = [&](const HXChange& change) {
    if (auto* const node = change.comingSubnode()) visitHeldSubnode(*node);
  };
  if (heldSubnodes_ && isNoted()) {
    for (const HXChange* change : index_->others) visit(*change);
  } else if (heldSubnodes_) {
    for (const HXChange& change : changes_) visit(change);
  }
  if (index_) index_->endNotes();
}

void HXHistoryStep::append(HXHistoryStep later) {
  while (auto change = later.changes_.takeFirst()) addFirst(std::move(change));
}

HXChangeList HXHistoryStep::takeAll() {
  index_ = nullptr;
  changeBytes_ = 0;
  hasOnlyNewEntries_ = true;
  heldSubnodes_ = false;
  return std::exchange(changes_, {});
}

// Most steps are of a few changes of different things. Of a table to which entries came, and
// nothing else, nothing cancels out; nor does one that was exchanged as a whole, to which entries
// came, and which is not what it was.
bool HXHistoryStep::mayCancelOut() const {
  if (hasOnlyNewEntries_) return false;
  if (isNoted()) {
    return std::any_of(index_->others.begin(), index_->others.end(), [](const HXChange* change) {
      return (change->table().object && !change->subject().object) || change->isNeutral();
    });
  }
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

// What cancels out goes; where not everything does, what moves nodes stays:
// what stays may concern what stands below a node that came and went, or the other way round.
HXChangeList HXHistoryStep::takeWhatCancelsOut() {
  if (!mayCancelOut()) return {};
  const auto goes = whatCancelsOut(changes_);
  if (goes.empty()) return {};
  const bool allGo = std::find(goes.begin(), goes.end(), false) == goes.end();
  HXChangeList gone;
  HXChangeList all = takeAll();
  for (const bool leaves : goes) {
    auto change = all.takeFirst();
    if (leaves && (allGo || !change->movesSubnodes())) {
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

void HXHistoryStep::exchange(bool backward, HXChangeNotices& notices,
                             FunctionRef<void(HXNode&, bool)> subnodeIsHeld) {
  for (auto* change = backward ? changes_.last() : changes_.first(); change;
       change = backward ? HXChangeList::before(*change) : HXChangeList::after(*change)) {
    auto* const before = change->comingSubnode();
    change->exchange();
    change->addNotices(notices);
    if (auto* const node = change->comingSubnode()) subnodeIsHeld(*node, true);
    if (before) subnodeIsHeld(*before, false);
  }
}

}  // namespace tarnkit
