#include "tarnkit/compare/NodeSignatures.h"

#include <algorithm>
#include <bit>
#include <numeric>

#include "tarnkit/compare/StateHash.h"

namespace tarnkit::detail {

namespace {

// How far around a node its surroundings are looked at. What is further away tells nodes apart by
// way of the nodes between.
constexpr int kRounds = 3;

std::size_t at(std::int32_t number) { return static_cast<std::size_t>(number); }

std::uint64_t hashOf(HXPoint point) {
  StateHash hash;
  hash.add(std::uint64_t{std::bit_cast<std::uint32_t>(point.x)});
  hash.add(std::uint64_t{std::bit_cast<std::uint32_t>(point.y)});
  return hash.value();
}

/// Nodes that wires join, one way or another.
class Components {
 public:
  explicit Components(std::size_t size) : parents_(size) {
    std::iota(parents_.begin(), parents_.end(), std::size_t{0});
  }
  std::size_t of(std::size_t node) {
    while (parents_[node] != node) {
      parents_[node] = parents_[parents_[node]];
      node = parents_[node];
    }
    return node;
  }
  void join(std::size_t a, std::size_t b) { parents_[of(a)] = of(b); }

 private:
  std::vector<std::size_t> parents_;
};

}  // namespace

NodeSignatures::NodeSignatures(const HXDocumentState& state) : state_(state), places_(state) {
  addOwn();
  addBelow();
  addJoints();
  addAround();
}

void NodeSignatures::addOwn() {
  for (const auto& node : state_.nodes) {
    StateHash hash;
    hash.add(node.nodeClass->name());
    hash.add(node.patchClass);
    kind.push_back(hash.value());
    StateHash placed = hash;
    placed.add(hashOf(node.position));
    position.push_back(placed.value());
    hash.add(node.name);
    kindName.push_back(hash.value());
    for (const auto& parameter : node.parameters) {
      hash.add(parameter.key);
      hash.add(parameter.value.bits());
    }
    for (const auto& value : node.values) {
      hash.add(value.key);
      hash.add(value.value.bits());
    }
    for (const auto side : kBothSides) {
      for (const auto& group : node.flaggedGroups[side]) {
        if (group.hidden) hash.add(group.key);
      }
      for (const auto& key : node.groupOrder[side]) hash.add(key);
    }
    hash.add(std::uint64_t{node.forcesSubnodes} | std::uint64_t{node.opaque} << 1U |
             std::uint64_t{node.hasGroup} << 2U);
    own.push_back(hash.value());
  }
}

// The order of nodes in a group is left out: who draws fresh keys also sorts by others.
void NodeSignatures::addBelow() {
  const std::size_t count = state_.nodes.size();
  below.resize(count);
  std::vector<std::uint64_t> subnodes(count, 0);
  for (std::size_t i = count; i > 0; --i) {
    const auto& node = state_.nodes[i - 1];
    StateHash hash;
    hash.add(own[i - 1]);
    hash.add(subnodes[i - 1]);
    for (const auto side : kBothSides) {
      for (const auto& publication : node.publications[side]) {
        hash.add(publication.name);
        if (publication.port.node >= 0) hash.add(labelOf(publication.port));
      }
    }
    below[i - 1] = hash.value();
    if (node.parent >= 0) subnodes[at(node.parent)] += StateHash::mixed(hash.value());
  }
}

std::uint64_t NodeSignatures::labelOf(const HXDocumentState::Port& port) const {
  StateHash hash;
  hash.add(port.key);
  if (port.level == 0 || port.node < 0) return hash.value();
  hash.add(std::uint64_t{port.level});
  hash.add(own[at(port.node)]);
  return hash.value();
}

void NodeSignatures::addJoints() {
  joints.resize(state_.nodes.size());
  std::vector<bool> met(state_.connections.size(), false);
  for (const auto& node : state_.nodes) {
    for (const auto& wires : node.wires) {
      for (const auto number : wires.connections) {
        if (met[at(number)]) continue;
        met[at(number)] = true;
        const auto& wire = state_.connections[at(number)];
        const auto from = places_.holderOf(wire.displayOutput);
        const auto to = places_.holderOf(wire.displayInput);
        if (from < 0 || to < 0) continue;
        const auto output = labelOf(wire.displayOutput);
        const auto input = labelOf(wire.displayInput);
        joints[at(from)].push_back({output, input, to});
        joints[at(to)].push_back({input, output, from});
      }
    }
  }
  for (auto& list : joints) {
    std::stable_sort(list.begin(), list.end(),
                     [](const Joint& a, const Joint& b) { return a.port < b.port; });
  }
}

void NodeSignatures::addAround() {
  const std::size_t count = state_.nodes.size();
  around = below;
  std::vector<std::uint64_t> next(count);
  for (int round = 0; round < kRounds; ++round) {
    for (std::size_t i = 0; i < count; ++i) {
      std::uint64_t sum = 0;
      for (const auto& joint : joints[i]) {
        StateHash hash;
        hash.add(joint.port);
        hash.add(joint.otherPort);
        hash.add(around[at(joint.other)]);
        sum += StateHash::mixed(hash.value());
      }
      next[i] = StateHash::mixed(around[i] ^ StateHash::mixed(sum));
    }
    around.swap(next);
  }
  // Two circles of different length look the same from anywhere in them.
  Components components(count);
  for (std::size_t i = 0; i < count; ++i) {
    for (const auto& joint : joints[i]) components.join(i, at(joint.other));
  }
  std::vector<std::uint64_t> whole(count, 0);
  for (std::size_t i = 0; i < count; ++i) {
    whole[components.of(i)] += StateHash::mixed(around[i]);
  }
  for (std::size_t i = 0; i < count; ++i) {
    around[i] = StateHash::mixed(around[i] ^ whole[components.of(i)]);
  }
  exact.resize(count);
  for (std::size_t i = 0; i < count; ++i) {
    const auto& node = state_.nodes[i];
    StateHash hash;
    hash.add(around[i]);
    hash.add(hashOf(node.position));
    hash.add(hashOf(node.canvasCenter));
    hash.add(node.inspectorPanel);
    hash.add(std::uint64_t{node.selected});
    for (const auto side : kBothSides) {
      for (const auto& group : node.flaggedGroups[side]) {
        hash.add(group.key);
        hash.add(std::uint64_t{group.collapsedCanvas} | std::uint64_t{group.collapsedSidebar}
                                                            << 1U);
      }
    }
    exact[i] = hash.value();
  }
}

}  // namespace tarnkit::detail
