#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "tarnkit/compare/HXFinding.h"

namespace tarnkit {

class HXDocument;
class HXOpeningRecord;
class Status;

/// What a check looks for, and how much of it is told.
struct HXCheckOptions {
  static constexpr std::size_t kAll = static_cast<std::size_t>(-1);

  /// These codes only; empty: all.
  std::vector<HXFindingCode> only = {};
  /// Not these.
  std::vector<HXFindingCode> ignored = {};
  /// Nothing but what `HXDocumentRepair` answers.
  bool fixableOnly = false;
  /// The worst so many; the rest is counted.
  std::size_t limit = kAll;

  bool wants(HXFindingCode code) const;
};

/// What a check has found.
struct HXCheckResult {
  /// The worst first, those of one weight in the order of the nodes.
  std::vector<HXFinding> findings;
  /// How many there are of each weight, those beyond the limit too.
  std::array<std::size_t, 3> counts{};

  std::size_t count(HXFindingSeverity severity) const {
    return counts[static_cast<std::size_t>(severity)];
  }
  std::size_t total() const { return counts[0] + counts[1] + counts[2]; }
};

/// Looks through a document for what is wrong in it, or most likely not what was meant. The codes
/// stand in one table (`findingKinds`).
///
/// Changes nothing and logs nothing. Costs time linear in the document, beside sorting what was
/// found and the depth of the places that are told. For the document's thread.
class HXDocumentCheck {
 public:
  /// With what opening it has told, where it was opened from a file.
  static HXCheckResult check(HXDocument& document, const HXCheckOptions& options = {},
                             const HXOpeningRecord* opening = nullptr);
  /// What is found of a file that could not be opened.
  static HXCheckResult ofFailure(const Status& failure, const HXCheckOptions& options = {});
};

}  // namespace tarnkit
