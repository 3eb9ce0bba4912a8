#pragma once

#include <vector>

#include "tarnkit/compare/HXDocumentCheck.h"

namespace tarnkit {

class HXDocument;

/// Gives the one safe answer to what a check finds, where there is one
/// (`HXFindingKind::isFixable`): a wire that leads nowhere is broken, an image that nobody shows
/// leaves the store.
class HXDocumentRepair {
 public:
  /// Answers all findings that the options want, and those that an answer brings about, until there
  /// are none left; returns those that were answered, in that order. One step of the document's
  /// history. Announces what it changes as the operations of the model do.
  ///
  /// Costs a check a round; a round more than two takes observers that undo the answers, and there
  /// are at most `kMaximumRounds`. For the document's thread.
  static std::vector<HXFinding> repair(HXDocument& document, const HXCheckOptions& options = {});

  static constexpr int kMaximumRounds = 8;
};

}  // namespace tarnkit
