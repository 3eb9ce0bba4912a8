#pragma once

#include <cstdint>
#include <vector>

#include "tarnkit/model/HXPortGroupSync.h"

namespace tarnkit {

class HXPatchPort;
class HXRPort;

/// Keeps a node in step with its patch definition: the part of a node that follows.
///
/// **What it follows.** In this order: the definition's name, as long as the node has none; whether
/// the definition holds nodes, with a subnode group; its parameters; its port groups, together with
/// the ports that the subnode group publishes (`HXPortGroupSync`); its ports. What the user made
/// stays wherever a key survives: static values, connections, values of parameters, groups that are
/// hidden or collapsed, the order of groups. A port that goes loses its publication and its
/// connections first; a parameter never goes by being absent.
///
/// **When.** All of it when a patch is set, and when a node was read from an archive, which it
/// leaves alone until everything around it was read. Then each change by itself, as the definition
/// or the subnode group tells it; a port that comes or goes costs itself unless it is not the only
/// difference.
///
/// **What holds while observers edit.** Observers are told in the middle, and may let go of the
/// node or change it again, with another patch too. So
/// - every step asks for the patch, the group and the publications that are in force when it
///   begins, and the node is held until the last step is done;
/// - ports, groups and parameters change as a whole before any of it is announced, and what an
///   observer has let go of again meanwhile is not announced as added;
/// - one run counts for a node, the one that began last: it has brought everything in line when it
///   returns, and an earlier one that it overtook does nothing more. The ports come last in it;
///   whatever asks for them meanwhile is answered by that;
/// - the exception of an observer ends a run with what was done and announced until then, and the
///   next run begins afresh.
///
/// A base of the node, and no member, so that it needs no pointer to it.
class HXNodeSync : protected HXPortGroupSync {
 public:
  /// While a node is read from an archive nothing is followed.
  void rest() noexcept { resting_ = true; }
  void wake() noexcept { resting_ = false; }

  /// Everything, in the order above.
  void hx_syncPatch();
  void hx_syncSubnodeGroupWithPatch();
  void hx_syncParametersWithPatch();
  void hx_syncPortGroupsWithPatch();

  // Told by the definition.
  void addPatchPort(HXRPort& port);
  void removePatchPort(HXRPort& port);
  void patchLayoutWasCopied();
  void patchRebuildWillBegin() noexcept { rebuildWillBegin(); }
  void patchRebuildDidEnd() noexcept { rebuildDidEnd(); }

  // Told by the subnode group and its published ports.
  void symbolicPortWasShown(const HXSymbolicPort* symbolicPort);
  void symbolicPortWasHidden(const HXSymbolicPort& symbolicPort);
  void symbolicPortWasRenamed(const HXSymbolicPort& symbolicPort);

 protected:
  HXNodeSync() noexcept = default;
  ~HXNodeSync() = default;

 private:
  friend class HXNode;
  friend struct HXNodeFields;
  friend class HXPortGroupSync;
  HXNode& node() noexcept;
  void hx_syncNameWithPatch();
  void hx_syncPortsWithPatch();
  /// Ends the publications and connections of ports that have gone.
  void withdrawPorts(const std::vector<Ref<HXPatchPort>>& ports);

  std::uint32_t lastRun_ = 0;  // tells a run that another one has overtaken it
  bool syncingPorts_ : 1 = false;
  bool syncingParameters_ : 1 = false;
  bool resting_ : 1 = false;
};

}  // namespace tarnkit
