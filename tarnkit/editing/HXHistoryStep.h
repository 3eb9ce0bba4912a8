#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "tarnkit/model/HXChangeList.h"
#include "tarnkit/platform/objects/FunctionRef.h"
#include "tarnkit/platform/text/String.h"

namespace tarnkit {

/// The changes that are undone and redone together, in the order in which they happened. Private to
/// `HXHistory`.
class HXHistoryStep {
 public:
  HXHistoryStep() noexcept;
  /// Leaves an empty step behind.
  HXHistoryStep(HXHistoryStep&&) noexcept;
  HXHistoryStep& operator=(HXHistoryStep&&) noexcept;
  ~HXHistoryStep();

  String name;
  String coalescingKey;
  double time = 0;
  std::uint64_t id = 0;

  const HXChangeList& changes() const noexcept { return changes_; }
  bool isEmpty() const noexcept { return changes_.isEmpty(); }
  /// Whether entries came and nothing else happened: then nothing cancels out.
  bool hasOnlyNewEntries() const noexcept { return hasOnlyNewEntries_; }
  /// Whether a change of that subject is held.
  bool holds(const HXChange::Subject& subject) const;
  void add(std::unique_ptr<HXChange> change);
  /// Likewise, unless a change of its subject is held.
  void addFirst(std::unique_ptr<HXChange> change);
  /// Likewise, of an entry that is about to come: most changes of a large step are.
  void addOfNewEntry(std::unique_ptr<HXChange> change) {
    changeBytes_ += change->byteCount();
    changes_.append(std::move(change));
    if (!index_ && changes_.count() > kSearchedInPlace) makeIndex();
  }
  /// Takes out what changes nothing in the end.
  HXChangeList takeWhatCancelsOut();
  /// Takes over the changes of a later step, but those of a subject that is held already.
  void append(HXHistoryStep later);
  HXChangeList takeAll();
  /// The step will be recorded no more: visits the nodes that its changes hold, each as often as
  /// it is held, and lets go of what only making a step needs.
  void end(FunctionRef<void(HXNode&)> visitHeldSubnode);

  /// Whether the step does nothing but set values, the same ones as the other step.
  bool setsTheSameAs(const HXHistoryStep& other) const;
  /// Whether all changes are of how the editor looks at the document.
  bool isViewState() const noexcept;
  /// The last change first, or the first one. `subnodeIsHeld` is told of each node that a change
  /// begins to hold (true), or holds no more.
  void exchange(bool backward, HXChangeNotices& notices,
                FunctionRef<void(HXNode&, bool)> subnodeIsHeld);
  /// What the step costs, roughly; of each change what it cost when it was made.
  std::size_t byteCount() const noexcept { return sizeof(*this) + changeBytes_; }

 private:
  // Beyond so many changes the subjects that are held are looked up in a table.
  static constexpr std::size_t kSearchedInPlace = 12;

  struct Index;
  void makeIndex();
  bool isNoted() const noexcept;
  bool mayCancelOut() const;

  HXChangeList changes_;
  std::size_t changeBytes_ = 0;
  bool hasOnlyNewEntries_ = true;
  bool heldSubnodes_ = false;     // when its changes were made
  std::unique_ptr<Index> index_;  // null while there are few changes
};

}  // namespace tarnkit
