#include "tarnkit/editing/HXHistory.h"

#include <stdexcept>

#include "tarnkit/model/HXChangeNotices.h"
#include "tarnkit/model/HXDocument.h"
#include "tarnkit/platform/system/Log.h"

namespace tarnkit {

const Class HXHistory::kClass{"HXHistory", &Object::kClass};

namespace {

void warn(std::string_view text) { Log::warning("HXHistory", text); }

}  // namespace

HXHistory::HXHistory(HXDocument& document) : document_(&document) { beginRecording(document); }

HXHistory::~HXHistory() {
  if (const Ref<HXDocument> document = document_.lock()) endRecording(*document);
}

HXHistory* HXHistory::ofDocument(const HXDocument& document) {
  return as<HXHistory>(static_cast<Object*>(document.recorder()));
}

String HXHistory::documentKey() const {
  const auto* document = document_.get();
  return document ? document->documentKey() : String();
}

// Recording.

bool HXHistory::isIdle() const noexcept {
  return openSteps_ == 0 && operations_ == 0 && direction_ == Direction::none && document_.get();
}

bool HXHistory::openChanges() const noexcept { return !open_.isEmpty() && !open_.isViewState(); }

void HXHistory::record(std::unique_ptr<HXChange> change) {
  if (direction_ != Direction::none) {
    wasChangedMeanwhile_ = true;
    return;
  }
  if (change->isOfNewEntry()) return open_.addOfNewEntry(std::move(change));
  // The one that is there now, and leaves.
  if (auto* const node = change->comingSubnode()) {
    openSubnodes_.insert(node);
    mark(*node);
  }
  open_.addFirst(std::move(change));
}

void HXHistory::operationDidEnd() {
  if (--operations_ == 0 && openSteps_ == 0) commit();
}

void HXHistory::beginStep(String name) {
  if (openSteps_++ == 0 && operations_ == 0) open_.name = std::move(name);
}

void HXHistory::endStep() {
  if (openSteps_ == 0) return warn("There is no open step to end.");
  if (--openSteps_ == 0 && operations_ == 0) commit();
}

void HXHistory::hold(HXNode& node) {
  auto* const held = subnodes_.find(&node);
  ++(held ? *held : subnodes_.append({&node, 0})).count;
  mark(node);
}

void HXHistory::letGo(const HXNode& node) {
  auto* const held = subnodes_.find(&node);
  if (held && --held->count == 0) subnodes_.take(&node);
}

void HXHistory::forget(HXChangeList changes) {
  while (const auto change = changes.takeLast()) {
    if (const auto* const node = change->comingSubnode()) letGo(*node);
  }
}

void HXHistory::commit() {
  if (!openSubnodes_.empty()) openSubnodes_.clear();
  if (open_.isEmpty() || direction_ != Direction::none) {
    open_ = {};
    return;
  }
  // Most steps only bring something, and need no second look.
  const bool onlyBrings = open_.hasOnlyNewEntries();
  if (!onlyBrings) {
    open_.takeWhatCancelsOut();
    if (open_.isEmpty()) {
      open_ = {};
      return;
    }
    if (!recordsViewState_ && open_.isViewState()) return commitViewState();
  }
  while (!undone_.empty()) forgetStep(undone_, false);
  open_.coalescingKey = coalescingKey_;
  open_.time = time_;
  if (onlyBrings || !coalesce(open_)) {
    open_.id = ++lastId_;
    open_.end([&](HXNode& node) { hold(node); });
    byteCount_ += open_.byteCount();
    done_.push_back(std::move(open_));
    if (maximumSteps_ != 0 || maximumBytes_ != 0) applyLimits();
  } else {
    open_ = {};
  }
  announceChange();
}

void HXHistory::commitViewState() {
  if (!done_.empty()) {
    byteCount_ -= done_.back().byteCount();
    done_.back().append(std::move(open_));
    byteCount_ += done_.back().byteCount();
  } else {
    open_ = {};
  }
}

// The step before holds the earlier values already, so that the later step has nothing to add.
bool HXHistory::coalesce(HXHistoryStep& step) {
  if (!coalesces_ || done_.empty() || !step.changes().first()->isSimple()) return false;
  auto& last = done_.back();
  if (last.id == clean_ || last.name != step.name || last.coalescingKey != step.coalescingKey ||
      (coalescingInterval_ > 0 && step.time - last.time > coalescingInterval_) ||
      !step.setsTheSameAs(last)) {
    return false;
  }
  last.time = step.time;
  last.id = ++lastId_;
  byteCount_ -= last.byteCount();
  forget(last.takeWhatCancelsOut());
  if (last.isEmpty()) {
    done_.pop_back();
  } else {
    byteCount_ += last.byteCount();
  }
  return true;
}

void HXHistory::forgetStep(std::deque<HXHistoryStep>& steps, bool oldest) {
  HXHistoryStep step = std::move(oldest ? steps.front() : steps.back());
  if (oldest) {
    steps.pop_front();
  } else {
    steps.pop_back();
  }
  byteCount_ -= step.byteCount();
  forget(step.takeAll());
}

void HXHistory::applyLimits() {
  while (done_.size() > 1 && ((maximumSteps_ != 0 && done_.size() > maximumSteps_) ||
                              (maximumBytes_ != 0 && byteCount_ > maximumBytes_))) {
    base_ = done_.front().id;
    forgetStep(done_, true);
  }
}

void HXHistory::setMaximumSteps(std::size_t steps) {
  maximumSteps_ = steps;
  applyLimits();
}

void HXHistory::setMaximumBytes(std::size_t bytes) {
  maximumBytes_ = bytes;
  applyLimits();
}

void HXHistory::removeAllSteps() {
  base_ = position();
  while (!done_.empty()) forgetStep(done_, false);
  while (!undone_.empty()) forgetStep(undone_, true);
  announceChange();
}

void HXHistory::markClean() { clean_ = position(); }

// Going back and forth.

String HXHistory::undoName() const { return done_.empty() ? String() : done_.back().name; }
String HXHistory::redoName() const { return undone_.empty() ? String() : undone_.back().name; }

bool HXHistory::undo() { return move(Direction::undoing); }
bool HXHistory::redo() { return move(Direction::redoing); }

// A node that comes back must stand nowhere, in the document, in what a step holds, or where the
// step itself takes it from.
bool HXHistory::canExchange(const HXHistoryStep& step) const {
  const HXNode* const document = document_.get();
  for (const HXChange& change : step.changes()) {
    const auto* const node = change.comingSubnode();
    const Object* const group = node ? node->parentGroup() : nullptr;
    if (!group || change.table().object == group) continue;
    const HXNode& root = rootOf(*node);
    if (&root != document && !holdsSubnode(root)) return false;
  }
  return true;
}

bool HXHistory::move(Direction direction) {
  const bool undoing = direction == Direction::undoing;
  auto& from = undoing ? done_ : undone_;
  const Ref<HXHistory> self(this);
  const Ref<HXDocument> document = document_.lock();
  if (!document) return false;
  if (!isIdle()) {
    warn(undoing ? "Nothing is undone in the middle of a step, an operation or an undo."
                 : "Nothing is redone in the middle of a step, an operation or an undo.");
    return false;
  }
  if (from.empty()) return false;
  if (!canExchange(from.back())) {
    warn("A node of the step stands somewhere else by now: the history is emptied.");
    base_ = ++lastId_;
    removeAllSteps();
    return false;
  }
  const String name = from.back().name;
  direction_ = direction;
  announce(undoing ? HXHistoryWillUndoNotification : HXHistoryWillRedoNotification, name);
  if (!wasChangedMeanwhile_) {
    auto& to = undoing ? undone_ : done_;
    to.push_back(std::move(from.back()));
    from.pop_back();
    exchange(to.back(), undoing, [&](HXNode& node, bool isHeld) {
      if (isHeld) {
        hold(node);
      } else {
        letGo(node);
      }
    });
  }
  announce(undoing ? HXHistoryDidUndoNotification : HXHistoryDidRedoNotification, name);
  finishMove();
  announceChange();
  return true;
}

// Everything changes before anybody is told of it.
void HXHistory::exchange(HXHistoryStep& step, bool backward,
                         FunctionRef<void(HXNode&, bool)> subnodeIsHeld) {
  HXChangeNotices notices;
  step.exchange(backward, notices, subnodeIsHeld);
  try {
    notices.post();
  } catch (...) {
    finishMove();
    throw;
  }
}

void HXHistory::finishMove() {
  direction_ = Direction::none;
  if (!std::exchange(wasChangedMeanwhile_, false)) return;
  warn("The document was changed because of an undo or redo: the history is emptied.");
  open_ = {};
  openSubnodes_.clear();
  while (!done_.empty()) forgetStep(done_, false);
  while (!undone_.empty()) forgetStep(undone_, true);
  base_ = ++lastId_;
}

bool HXHistory::abandonStep() {
  if (openSteps_ == 0 || operations_ != 0 || direction_ != Direction::none) {
    warn(openSteps_ == 0 ? "There is no open step to abandon."
                         : "A step is not abandoned in the middle of an operation or an undo.");
    return false;
  }
  const Ref<HXHistory> self(this);
  openSteps_ = 0;
  HXHistoryStep step = std::exchange(open_, {});
  if (!canExchange(step)) {
    warn("A node of the step stands somewhere else by now: the step stays.");
    open_ = std::move(step);
    commit();
    return false;
  }
  direction_ = Direction::undoing;
  exchange(step, true, [](HXNode&, bool) {});
  openSubnodes_.clear();
  finishMove();
  return true;
}

void HXHistory::announce(const Symbol& name, const String& stepName) {
  detail::announce(name, *this, *this, {{HXNameInfo, stepName.object().get()}});
}

void HXHistory::announceChange() {
  detail::announce(HXHistoryDidChangeNotification, *this, *this, {});
}

}  // namespace tarnkit
