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
  /// Whether a change of that subject is held.
  bool holds(const HXChange::Subject& subject) const;
  void add(std::unique_ptr<HXChange> change);
  /// Likewise, unless a change of its subject is held.
  void addFirst(std::unique_ptr<HXChange> change);
  /// Takes out what changes nothing in the end.
  HXChangeList takeWhatCancelsOut();
  /// Takes over the changes of a later step, but those of a subject that is held already.
  void append(HXHistoryStep later);
  HXChangeList takeAll();
  /// The step will be recorded no more: visits the nodes that came or went, each as often as it
  /// did, and lets go of what only making a step needs.
  void end(FunctionRef<void(HXNode&)> visitSubnode);

  /// Whether the step does nothing but set values, the same ones as the other step.
  bool setsTheSameAs(const HXHistoryStep& other) const;
  /// Whether all changes are of how the editor looks at the document.
  bool isViewState() const noexcept;
  /// The last change first, or the first one.
  void exchange(bool backward, HXChangeNotices& notices);
  /// What the step costs, roughly; of each change what it cost when it was made.
  std::size_t byteCount() const noexcept { return sizeof(*this) + changeBytes_; }

 private:
  struct Index;
  void note();
  bool isNoted() const noexcept;
  bool mayCancelOut() const;

  HXChangeList changes_;
  std::size_t changeBytes_ = 0;
  std::unique_ptr<Index> index_;  // null while there are few changes
};

}  // namespace tarnkit
