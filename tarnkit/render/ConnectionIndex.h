#pragma once

#include <unordered_map>
#include <vector>

namespace tarnkit {
class HXConnection;
class HXGroup;
class HXPort;
}  // namespace tarnkit

namespace tarnkit::detail {

/// The ports that the user joined, as far as they are known.
const HXPort* outputEndOf(const HXConnection& connection) noexcept;
const HXPort* inputEndOf(const HXConnection& connection) noexcept;

/// Which connections are to be seen in which group: those one of whose ends, as the user joined
/// them, stands on a node of the group. Valid while the document does not change. Making it costs
/// time linear in the ports and connections of the group and of everything below.
class ConnectionIndex {
 public:
  explicit ConnectionIndex(const HXGroup& root);

  /// In the order of the nodes and their ports.
  const std::vector<const HXConnection*>& connectionsIn(const HXGroup& group) const;

 private:
  std::unordered_map<const HXGroup*, std::vector<const HXConnection*>> byGroup_;
};

}  // namespace tarnkit::detail
