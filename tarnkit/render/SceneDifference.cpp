#include "tarnkit/render/SceneDifference.h"

#include <fmt/format.h>

#include "tarnkit/compare/HXDocumentState.h"
#include "tarnkit/model/HXDocument.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tarnkit/platform/collections/MembersOf.h"

namespace tarnkit::detail {

namespace {

using Kind = HXDocumentChange::Kind;
using Ends = std::pair<const HXPort*, const HXPort*>;

struct EndsHash {
  std::size_t operator()(const Ends& ends) const noexcept {
    const auto first = reinterpret_cast<std::uintptr_t>(ends.first);
    return std::hash<std::uintptr_t>()(first * 31 + reinterpret_cast<std::uintptr_t>(ends.second));
  }
};

template <class Visit>
void eachConnection(const std::vector<Ref<HXNode>>& nodes, Visit visit) {
  std::unordered_set<const HXConnection*> met;
  for (const auto& node : nodes) {
    for (const auto& entry : node->portsInForce()) {
      entry.value->connections().forEach([&](const HXConnection& connection) {
        if (met.insert(&connection).second) visit(connection);
      });
    }
  }
}

const HXNode* around(const HXPort* port) {
  const auto* node = port ? port->node() : nullptr;
  return node ? node->enclosingNode() : nullptr;
}

// Whether the node looks different for it, and not only what is joined to it or published by it.
bool isOfNode(Kind kind) {
  switch (kind) {
    case Kind::nodeAdded:
    case Kind::nodeRemoved:
    case Kind::connectionMade:
    case Kind::connectionBroken:
    case Kind::connectionRewired:
    case Kind::portPublished:
    case Kind::portUnpublished:
      return false;
    default:
      return true;
  }
}

const HXNode* nodeAt(const std::vector<Ref<HXNode>>& nodes, std::int32_t number) {
  return number < 0 ? nullptr : nodes[static_cast<std::size_t>(number)].get();
}

}  // namespace

SceneDifference::SceneDifference(const HXDocument& oldDocument, const HXDocument& newDocument,
                                 const HXNodeMatching& matching,
                                 const std::vector<HXDocumentChange>& changes)
    : oldNodes_(HXDocumentState::nodesOf(oldDocument)),
      newNodes_(HXDocumentState::nodesOf(newDocument)),
      oldConnections_(*oldDocument.subnodeGroup()) {
  for (std::size_t i = 0; i < oldNodes_.size(); ++i) {
    if (const auto* now = nodeAt(newNodes_, matching.newOf()[i])) {
      newOf_.emplace(oldNodes_[i].get(), now);
      oldOf_.emplace(now, oldNodes_[i].get());
    } else {
      marks_.emplace(oldNodes_[i].get(), SceneMark::removed);
      markAround(oldNodes_[i]->enclosingNode());
    }
  }
  markNodes(changes);
  markConnections();
  for (const auto& [newer, older] : oldOf_) {
    if (newer->subnodeGroup() && older->subnodeGroup()) {
      markPublications(*older->subnodeGroup(), *newer->subnodeGroup());
    }
  }
}

SceneMark SceneDifference::markOf(const Object& drawn) const {
  const auto found = marks_.find(&drawn);
  return found == marks_.end() ? SceneMark::none : found->second;
}

bool SceneDifference::isGone(const HXGroup& group) const {
  return group.node() && isGone(*group.node());
}

// What stands in a node that came or went goes without saying. Those around a node that is marked
// already are so, too.
void SceneDifference::markAround(const HXNode* node) {
  for (node = present(node); node; node = present(node->enclosingNode())) {
    const SceneMark mark = markOf(*node);
    if (mark == SceneMark::added || mark == SceneMark::removed) return;
    if (!holding_.insert(node).second) return;
  }
}

void SceneDifference::markNodes(const std::vector<HXDocumentChange>& changes) {
  for (const auto& node : newNodes_) {
    if (oldOf_.contains(node.get())) continue;
    marks_.emplace(node.get(), SceneMark::added);
    markAround(node->enclosingNode());
  }
  for (const auto& change : changes) {
    const auto* node = nodeAt(newNodes_, change.newNumber);
    if (!node || !isOfNode(change.kind)) continue;
    marks_.emplace(node, SceneMark::changed);
    markAround(node->enclosingNode());
    if (change.kind != Kind::valueChanged) continue;
    if (const auto* port = node->portsInForce().find(change.subjectKey)) {
      changedPorts_.insert(port->get());
    }
  }
}

// Two connections that join the same ports are the same one.
void SceneDifference::markConnections() {
  std::unordered_map<Ends, int, EndsHash> left;
  eachConnection(oldNodes_, [&](const HXConnection& connection) {
    ++left[{present(outputEndOf(connection)), present(inputEndOf(connection))}];
  });
  eachConnection(newNodes_, [&](const HXConnection& connection) {
    const auto found = left.find({outputEndOf(connection), inputEndOf(connection)});
    if (found != left.end() && found->second-- > 0) return;
    marks_.emplace(&connection, SceneMark::added);
    for (const auto* end : {outputEndOf(connection), inputEndOf(connection)}) {
      markAround(around(end));
    }
  });
  // What is left of those is gone.
  eachConnection(oldNodes_, [&](const HXConnection& connection) {
    if (left[{present(outputEndOf(connection)), present(inputEndOf(connection))}]-- <= 0) return;
    marks_.emplace(&connection, SceneMark::removed);
    for (const auto* end : {outputEndOf(connection), inputEndOf(connection)}) {
      markAround(around(end));
    }
  });
}

void SceneDifference::markPublications(const HXGroup& older, const HXGroup& newer) {
  for (const auto side : kBothSides) {
    std::unordered_set<const HXPort*> kept;
    for (const auto& port : membersOf<HXSymbolicPort>(older.symbolicPortsInForce(side))) {
      const auto* now = port.port() ? present(port.port()) : nullptr;
      const auto* published = now ? now->symbolicPort() : nullptr;
      if (published && newer.symbolicPortsInForce(side).contains(published)) {
        kept.insert(published);
      } else if (port.port()) {
        marks_.emplace(&port, SceneMark::removed);
      }
    }
    for (const auto& port : membersOf<HXSymbolicPort>(newer.symbolicPortsInForce(side))) {
      if (port.port() && !kept.contains(&port)) marks_.emplace(&port, SceneMark::added);
    }
  }
}

const HXGroup* SceneDifference::oldGroupOf(const HXGroup& group) const {
  const auto found = oldOf_.find(group.node());
  return found == oldOf_.end() ? nullptr : found->second->subnodeGroup().get();
}

std::vector<const HXNode*> SceneDifference::nodesGoneFrom(const HXGroup& group) const {
  std::vector<const HXNode*> gone;
  const auto* older = oldGroupOf(group);
  if (!older) return gone;
  for (const auto& entry : older->subnodesInForce()) {
    if (isGone(*entry.value)) gone.push_back(entry.value.get());
  }
  return gone;
}

std::vector<const HXConnection*> SceneDifference::connectionsGoneFrom(const HXGroup& group) const {
  std::vector<const HXConnection*> gone;
  const auto* older = oldGroupOf(group);
  if (!older) return gone;
  for (const auto* connection : oldConnections_.connectionsIn(*older)) {
    if (markOf(*connection) == SceneMark::removed) gone.push_back(connection);
  }
  return gone;
}

std::vector<const HXSymbolicPort*> SceneDifference::publicationsGoneFrom(const HXGroup& group,
                                                                         std::int32_t side) const {
  std::vector<const HXSymbolicPort*> gone;
  const auto* older = oldGroupOf(group);
  if (!older) return gone;
  for (const auto& port : membersOf<HXSymbolicPort>(older->symbolicPortsInForce(side))) {
    if (markOf(port) == SceneMark::removed) gone.push_back(&port);
  }
  return gone;
}

const HXNode* SceneDifference::present(const HXNode* node) const {
  const auto found = newOf_.find(node);
  return found == newOf_.end() ? node : found->second;
}

// From the innermost port outward, so that a chain of publications costs no stack.
const HXPort* SceneDifference::present(const HXPort* port) const {
  std::size_t levels = 0;
  const HXPort* innermost = port;
  while (const auto* published = as<HXSymbolicPort>(innermost)) {
    innermost = published->port();
    ++levels;
  }
  const auto* node = innermost ? innermost->node() : nullptr;
  const auto* now = present(node);
  if (!node || now == node) return port;
  const auto* own = now->portsInForce().find(innermost->uniqueKey());
  const HXPort* at = own ? own->get() : nullptr;
  for (; at && levels > 0; --levels) at = at->symbolicPort();
  return at;
}

String SceneDifference::keyOf(const HXNode& node) const {
  return isGone(node) ? String(fmt::format("removed/{}", node.uniqueKey().view()))
                      : node.uniqueKey();
}

String SceneDifference::keyOf(const HXGroup& group) const {
  return isGone(group) ? String(fmt::format("removed/{}", group.uniqueKey().view()))
                       : group.uniqueKey();
}

SceneDifference::Place SceneDifference::placeOf(const HXDocumentChange& change) const {
  const auto* node = nodeAt(newNodes_, change.newNumber);
  if (!node) node = nodeAt(oldNodes_, change.oldNumber);
  const auto* outer = node ? present(node->enclosingNode()) : nullptr;
  if (!outer || !outer->subnodeGroup()) return {newNodes_.front()->subnodeGroup().get(), nullptr};
  return {outer->subnodeGroup().get(), node};
}

}  // namespace tarnkit::detail
