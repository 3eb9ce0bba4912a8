#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <unordered_set>

#include "tarnkit/editing/HXHistoryStep.h"
#include "tarnkit/model/HXChangeRecorder.h"
#include "tarnkit/model/HXNotifications.h"
#include "tarnkit/platform/collections/OrderedTable.h"

namespace tarnkit {

class HXDocument;

/// Posted by the history, around every undo and redo, with "DocumentKey" and "Name", the name of
/// the step (the null object for none). Between the two, the ordinary notifications of the model
/// tell what has changed.
inline constinit const Symbol HXHistoryWillUndoNotification{"HXHistoryWillUndoNotification"};
inline constinit const Symbol HXHistoryDidUndoNotification{"HXHistoryDidUndoNotification"};
inline constinit const Symbol HXHistoryWillRedoNotification{"HXHistoryWillRedoNotification"};
inline constinit const Symbol HXHistoryDidRedoNotification{"HXHistoryDidRedoNotification"};
/// Posted by the history whenever what can be undone or redone has changed: after a step, an undo,
/// a redo, and when the history was emptied. With "DocumentKey".
inline constinit const Symbol HXHistoryDidChangeNotification{"HXHistoryDidChangeNotification"};

/// Undo and redo for one document: records every change of the document and of everything in it,
/// whoever makes it, as steps, from the moment when it is made.
///
/// What one public operation of the model changes is a step, unless it happens between `beginStep`
/// and `endStep`. Undoing a step gives back the same objects in the same order, with everything
/// that hung on them. Everything changes first; then the ordinary notifications are posted, each
/// thing before what hangs on it, so that an observer needs no second way of following.
///
/// Code that changes the document because of an undo or redo that it observes makes an error: one
/// line is logged and the history is emptied. So does an undo that cannot be made since a node
/// stands somewhere else by now.
///
/// Selection, inspector panel and canvas centre are how the editor looks at the document: they make
/// no step of their own, and go back and forth with the step before them.
///
/// After every undo and redo the document is archived as it was at that point, byte for byte. One
/// thing of an archive is not the document's: of a published port whose own port is in a node that
/// was removed (hidden ports stay published), it tells whether somebody still keeps that node.
///
/// Owned by the editor; a document has one at most at a time. Objects that left the document live
/// as long as a step needs them. For the document's thread. Recording costs constant time a change
/// (a patch that rebuilds its ports: a copy of its ports), undoing costs what the changes did.
class HXHistory final : public HXChangeRecorder {
  TARNKIT_CLASS
 public:
  /// Begins to record. The document must have no other history (std::logic_error). It is not kept
  /// alive; once it is gone, the history is empty and does nothing.
  explicit HXHistory(HXDocument& document);
  ~HXHistory() override;

  /// The history that records the document; null while none does.
  static HXHistory* ofDocument(const HXDocument& document);
  /// Null once the document is gone.
  HXDocument* document() const noexcept { return document_.get(); }

  // Steps.

  /// What changes until the matching `endStep` is one step. Steps nest; the outermost one counts
  /// and names it. A step in which nothing changes, or everything changes back, disappears.
  void beginStep(String name = {});
  /// One line is logged when no step is open.
  void endStep();
  /// Takes back what the open step has changed, as an undo does, and closes it (all levels).
  /// Nothing stays of it. False, with one line logged, when no step is open.
  bool abandonStep();
  /// How many steps are open, one inside the other.
  std::uint32_t openSteps() const noexcept { return openSteps_; }
  /// Opens a step and closes it at its end.
  class Step;

  bool canUndo() const noexcept { return !done_.empty() && isIdle(); }
  bool canRedo() const noexcept { return !undone_.empty() && isIdle(); }
  /// False when there is nothing to undo, or (with one line logged) while a step is open, an
  /// operation of the model is under way or another undo is.
  bool undo();
  bool redo();
  /// The name of the step that would be undone next; nil without one, or for one without a name.
  String undoName() const;
  String redoName() const;
  std::size_t undoCount() const noexcept { return done_.size(); }
  std::size_t redoCount() const noexcept { return undone_.size(); }
  enum class Direction : std::uint8_t { none, undoing, redoing };
  /// What is under way: between the notices of the beginning and of the end.
  Direction direction() const noexcept { return direction_; }

  /// Forgets all steps; the document stays as it is.
  void removeAllSteps();

  // Whether the document is what was saved.

  /// The document as it is now is what was saved.
  void markClean();
  /// Whether it differs from what was marked last (from what it was at the beginning, before that):
  /// undoing back to it makes it clean again.
  bool isModified() const noexcept { return position() != clean_ || openChanges(); }

  // Settings.

  /// Whether steps that set the same values of the same objects (a drag, typing) become one with
  /// the step before them, if that has the same name and the same coalescing key, and is no older
  /// than the interval. On by default.
  void setCoalesces(bool coalesces) noexcept { coalesces_ = coalesces; }
  bool coalesces() const noexcept { return coalesces_; }
  /// What tells one gesture from the next one; nil by default.
  void setCoalescingKey(String key) { coalescingKey_ = std::move(key); }
  /// The time of what happens next, in seconds of the caller's clock; the history has none of its
  /// own. Two steps are one only if the later one is at most `setCoalescingInterval` after the
  /// earlier one; without an interval (the default) time does not count.
  void setTime(double seconds) noexcept { time_ = seconds; }
  void setCoalescingInterval(double seconds) noexcept { coalescingInterval_ = seconds; }

  /// Whether changes of the view state are recorded as steps of their own. Off by default.
  void setRecordsViewState(bool records) noexcept { recordsViewState_ = records; }

  /// The oldest steps beyond so many, or beyond so many bytes, are forgotten; 0, the default, means
  /// no limit. The newest step is kept whatever it takes.
  void setMaximumSteps(std::size_t steps);
  void setMaximumBytes(std::size_t bytes);
  /// What the steps cost, roughly, without the objects that the document has as well.
  std::size_t byteCount() const noexcept { return byteCount_; }

  String documentKey() const;

 protected:
  void record(std::unique_ptr<HXChange> change) override;
  void operationWillBegin() override { ++operations_; }
  void operationDidEnd() override;
  bool holdsSubnode(const HXNode& node) const override {
    return subnodes_.find(&node) || (!openSubnodes_.empty() && openSubnodes_.contains(&node));
  }

 private:
  bool isIdle() const noexcept;
  bool openChanges() const noexcept;
  std::uint64_t position() const noexcept { return done_.empty() ? base_ : done_.back().id; }
  void commit();
  /// Goes along with the step before it.
  void commitViewState();
  /// Whether the step became part of the one before it.
  bool coalesce(HXHistoryStep& step);
  void forget(HXChangeList changes);
  void forgetStep(std::deque<HXHistoryStep>& steps, bool oldest);
  void applyLimits();
  bool canExchange(const HXHistoryStep& step) const;
  bool move(Direction direction);
  void exchange(HXHistoryStep& step, bool backward, FunctionRef<void(HXNode&, bool)> subnodeIsHeld);
  void hold(HXNode& node);
  void letGo(const HXNode& node);
  void finishMove();
  void announce(const Symbol& name, const String& stepName);
  void announceChange();

  struct NodeCount {
    const HXNode* node = nullptr;
    std::uint32_t count = 0;

    using Key = const HXNode*;
    static Key key(const NodeCount& entry) noexcept { return entry.node; }
    static bool isGap(const NodeCount& entry) noexcept { return !entry.node; }
    static bool hasKey(const NodeCount& entry, Key key) noexcept { return entry.node == key; }
    static std::uint64_t hash(Key key) noexcept {
      return reinterpret_cast<std::uintptr_t>(key) >> 4;
    }
  };

  WeakRef<HXDocument> document_;
  std::deque<HXHistoryStep> done_;
  std::deque<HXHistoryStep> undone_;  // the next one to redo last
  HXHistoryStep open_;
  detail::OrderedTable<NodeCount, NodeCount> subnodes_;  // how many changes hold each
  std::unordered_set<const HXNode*> openSubnodes_;       // those of the open step
  std::uint32_t openSteps_ = 0;
  std::uint32_t operations_ = 0;
  Direction direction_ = Direction::none;
  bool wasChangedMeanwhile_ = false;
  bool coalesces_ = true;
  bool recordsViewState_ = false;
  String coalescingKey_;
  double time_ = 0;
  double coalescingInterval_ = 0;
  std::size_t maximumSteps_ = 0;
  std::size_t maximumBytes_ = 0;
  std::size_t byteCount_ = 0;
  std::uint64_t lastId_ = 0;
  std::uint64_t base_ = 0;
  std::uint64_t clean_ = 0;
};

/// Opens a step when it is made and closes it at its end.
class HXHistory::Step {
 public:
  explicit Step(HXHistory& history, String name = {}) : Step(&history, std::move(name)) {}
  /// Of the document's history; does nothing where there is none.
  explicit Step(const HXDocument& document, String name = {})
      : Step(ofDocument(document), std::move(name)) {}
  ~Step() {
    if (history_ && history_->openSteps() != 0) history_->endStep();
  }
  Step(const Step&) = delete;
  Step& operator=(const Step&) = delete;

 private:
  Step(HXHistory* history, String name) : history_(history) {
    if (history) history->beginStep(std::move(name));
  }
  Ref<HXHistory> history_;
};

}  // namespace tarnkit
