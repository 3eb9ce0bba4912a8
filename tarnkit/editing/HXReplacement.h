#pragma once

#include <functional>
#include <optional>

#include "tarnkit/model/HXNodeReport.h"

namespace tarnkit {

class HXNode;
class HXRNode;

/// What `HXReplacement` carries over, and whom it asks.
struct HXReplacementOptions {
  /// Which ports and parameters of the old patch stand for which of the new one, by their keys, old
  /// to new. A key that either patch does not have is passed over, and so is a second one for the
  /// same new port. What a port has that stays is not replaced by what is carried to it.
  OrderedMap<String> newKeys;
  /// Whether a port that goes, and that `newKeys` says nothing of, is stood for by a new port of
  /// the same side, name and kind.
  bool matchesNamesAndKinds = false;
  /// Asked before anything that somebody made is lost (see `HXNodeReport::losses`), with what would
  /// happen; false leaves everything as it is. Without it nobody is asked.
  std::function<bool(const HXNodeReport& report)> mayLose;
};

/// Putting another patch in a node's place: `HXNode::setPatch`, which keeps what hangs on ports of
/// the same key, and beyond that what the options say. Static values, connections and publications
/// (with all their levels, their names and what was joined there) come over to a port that takes
/// them; a published port that comes over is a new object at the end of its group's list.
///
/// Costs the ports and parameters of both patches and the connections. For the document's thread.
class HXReplacement {
 public:
  /// What the replacement would do, without changing anything; null for no patch. Assumes that
  /// nobody who observes it edits. Of a definition that was given more ports by hand those count;
  /// its own parameters count as they are in its class. The report's items of what is new are
  /// those of a rehearsal.
  static HXNodeReport wouldLose(const HXNode& node, const HXRNode* definition,
                                const HXReplacementOptions& options = {});
  /// Replaces the node's definition, as one step of the document's history, and tells what became
  /// of everything. Nothing, and no change, when `mayLose` says so.
  static std::optional<HXNodeReport> replacePatch(HXNode& node, const Ref<HXRNode>& definition,
                                                  const HXReplacementOptions& options = {});
};

}  // namespace tarnkit
