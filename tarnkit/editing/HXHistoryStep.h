#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "tarnkit/model/HXChange.h"
#include "tarnkit/platform/text/String.h"

namespace tarnkit {

/// The changes that are undone and redone together, in the order in which they happened. Private to
/// `HXHistory`.
class HXHistoryStep {
 public:
  using Changes = std::vector<std::unique_ptr<HXChange>>;

  HXHistoryStep() noexcept;
  HXHistoryStep(HXHistoryStep&&) noexcept;
  HXHistoryStep& operator=(HXHistoryStep&&) noexcept;
  ~HXHistoryStep();

  String name;
  String coalescingKey;
  double time = 0;
  std::uint64_t id = 0;

  const Changes& changes() const noexcept { return changes_; }
  bool isEmpty() const noexcept { return changes_.empty(); }
  /// Whether a change of that subject is held.
  bool holds(const HXChange::Subject& subject) const;
  void add(std::unique_ptr<HXChange> change);
  /// Takes out what changes nothing in the end.
  Changes takeWhatCancelsOut();
  /// Takes over the changes of a later step, but those of a subject that is held already.
  void append(HXHistoryStep later);
  Changes takeAll();

  /// Whether the step does nothing but set values, the same ones as the other step.
  bool setsTheSameAs(const HXHistoryStep& other) const;
  /// Whether all changes are of how the editor looks at the document.
  bool isViewState() const noexcept;
  /// The last change first, or the first one.
  void exchange(bool backward, HXChangeNotices& notices);
  std::size_t byteCount() const noexcept;

 private:
  class Subjects;
  bool mayCancelOut() const;

  Changes changes_;
  std::unique_ptr<Subjects> subjects_;  // null while there are few changes
};

}  // namespace tarnkit
