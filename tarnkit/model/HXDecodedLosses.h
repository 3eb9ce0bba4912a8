#pragma once

#include <vector>

#include "tarnkit/model/HXNodeReport.h"

namespace tarnkit {
class HXRNode;
}

namespace tarnkit::detail {

/// What nodes lose while they are read from an archive, since their patch is not what it was when
/// they were written: gathered while a scope of this class lives, and told when all has been read,
/// as only then everything has its place. For the thread that reads.
class DecodedLosses {
 public:
  DecodedLosses() noexcept;
  ~DecodedLosses();
  DecodedLosses(const DecodedLosses&) = delete;
  DecodedLosses& operator=(const DecodedLosses&) = delete;

  /// Logs one line for each loss of what somebody had made, and hands all of it out.
  std::vector<HXNodeLosses> tell();

  /// Around the step that gives a node its patch. Costs a look-up for each port in use, and more
  /// only when the patch does not have one of them at once.
  class Watch {
   public:
    Watch(HXNode& node, const HXRNode* patch);
    /// What is not there any more is told; at once where nobody gathers.
    void end();

   private:
    bool mayLose(const HXRNode* patch) const;
    void gather();
    bool isLost(const HXNodeItem& item) const;

    HXNode& node_;
    std::vector<HXNodeItem> items_;
    std::vector<Ref<Object>> holders_;  // the port, parameter or group of each item
  };

 private:
  std::vector<HXNodeLosses> losses_;
  DecodedLosses* outer_;
};

}  // namespace tarnkit::detail
