#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "tarnkit/model/HXPortGroup.h"
#include "tarnkit/patches/BySide.h"
#include "tarnkit/platform/collections/OrderedMap.h"

namespace tarnkit {

class HXPortGroupCollection;
class HXSymbolicPort;

/// Keeps the port groups of a node in step with those of its definition, and with the ports that
/// its subnode group publishes: one group for each group of the definition, then one for each first
/// word of the published names. A group of published ports stands before the definition's group of
/// its name, which comes back when it goes.
///
/// The part of `HXNodeSync`, which says when, that minds the groups. Groups whose keys survive stay
/// the same objects, with what the user chose of them, and keep their order; so do, until a rebuild
/// of the definition has ended, those that it takes away. Both sides have changed as a whole before
/// anything is announced. Several groups cost one pass; one published port more or less costs its
/// own group.
class HXPortGroupSync {
 public:
  HXPortGroupSync(const HXPortGroupSync&) = delete;
  HXPortGroupSync& operator=(const HXPortGroupSync&) = delete;

  /// Brings the groups of both sides in line, and announces what went and what came.
  void hx_syncPortGroupsWithPatch();
  /// The definition replaced its groups by equal ones of its own: the node's take those up.
  void takeUpDefinedGroups();
  /// One published port more or less in its group; false, and nothing done, when the groups must be
  /// synchronised as a whole.
  bool hx_showSymbolicPort(const HXSymbolicPort& symbolicPort);
  bool hx_hideSymbolicPort(const HXSymbolicPort& symbolicPort);
  /// Whether synchronising once more would change nothing.
  bool isSettled() const noexcept;
  /// Something else has changed that shows in the groups.
  void unsettle();

  /// Around steps that take the definition from one set of ports to another: groups that go and
  /// come back in between stay what they were. May be nested.
  void rebuildWillBegin() noexcept { ++rebuilds_; }
  void rebuildDidEnd() noexcept;

 protected:
  HXPortGroupSync() noexcept;
  ~HXPortGroupSync();

 private:
  friend class HXNode;
  friend struct HXNodeFields;
  struct Side;
  struct Changes;
  struct Memory;

  HXNode& node() const noexcept;
  Side side(std::int32_t orientation) const;
  /// One side; announces nothing.
  void syncSide(const Side& side, Changes& changes);
  /// Returns how many of the groups stay in their places.
  std::uint32_t syncDefinedGroups(const Side& side, OrderedMap<Ref<HXPortGroup>>& fresh,
                                  Changes& changes);
  void syncPublishedGroups(const Side& side, OrderedMap<Ref<HXPortGroup>>& fresh, Changes& changes);
  bool isHeld(const HXPortGroup& group) const;
  /// Lets go of the definition's group that the group of published ports stands before.
  void dropGroupBehind(const Side& side, HXSymbolicPortGroup& group, Changes& changes);
  /// A group that the rebuild under way took away; null when it took none of that kind and key.
  template <class Group>
  Ref<Group> groupBeforeRebuild(const Side& side, const String& key);
  void remember(const Side& side, const Ref<HXPortGroup>& group);

  std::unique_ptr<Memory> memory_;  // null unless a rebuild has taken a group away
  std::uint16_t rebuilds_ = 0;      // those that are under way, one inside the other
  bool isSettled_ = false;          // as far as the node's own changes go
};

}  // namespace tarnkit
