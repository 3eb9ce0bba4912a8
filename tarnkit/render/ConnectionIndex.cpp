#include "tarnkit/render/ConnectionIndex.h"

#include <unordered_set>

#include "tarnkit/model/HXNode.h"
#include "tarnkit/model/HXNodeWalk.h"
#include "tarnkit/model/HXPatchPort.h"

namespace tarnkit::detail {

namespace {

const HXGroup* groupOf(const HXPort* port) {
  const HXNode* const node = port ? port->node() : nullptr;
  return node ? node->parentGroup() : nullptr;
}

}  // namespace

const HXPort* outputEndOf(const HXConnection& connection) noexcept {
  return connection.displayOutputPort() ? connection.displayOutputPort() : connection.outputPort();
}

const HXPort* inputEndOf(const HXConnection& connection) noexcept {
  return connection.displayInputPort() ? connection.displayInputPort() : connection.inputPort();
}

ConnectionIndex::ConnectionIndex(const HXGroup& root) {
  // Both ends usually hold a connection; but an input that was taken already does not, and either
  // end may stand outside.
  std::unordered_set<const HXConnection*> entered;
  const auto enter = [&](const HXConnection& connection) {
    if (!entered.insert(&connection).second) return;
    const HXGroup* const from = groupOf(connection.displayOutputPort());
    const HXGroup* const to = groupOf(connection.displayInputPort());
    if (from) byGroup_[from].push_back(&connection);
    if (to && to != from) byGroup_[to].push_back(&connection);
  };
  for (HXNodeWalk walk(root); const HXNode* node = walk.next();) {
    for (const auto& port : node->portsInForce()) port.value->connections().forEach(enter);
  }
}

const std::vector<const HXConnection*>& ConnectionIndex::connectionsIn(const HXGroup& group) const {
  static const std::vector<const HXConnection*> none;
  const auto at = byGroup_.find(&group);
  return at == byGroup_.end() ? none : at->second;
}

}  // namespace tarnkit::detail
