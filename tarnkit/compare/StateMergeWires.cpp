#include <fmt/format.h>

#include <algorithm>

#include "tarnkit/compare/StateHash.h"
#include "tarnkit/compare/StateMerge.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/model/HXSymbolicPort.h"

// Publications and connections; see StateMerge.cpp for the nodes.

namespace tarnkit::detail {

namespace {

std::size_t at(std::int32_t number) { return static_cast<std::size_t>(number); }

struct PortHash {
  std::size_t operator()(const HXDocumentState::Port& port) const {
    StateHash hash;
    hash.addPort(port);
    return hash.value();
  }
};

struct WireHash {
  std::size_t operator()(const HXDocumentState::Connection& wire) const {
    StateHash hash;
    for (const auto* port : {&wire.output, &wire.input, &wire.displayOutput, &wire.displayInput}) {
      hash.addPort(*port);
    }
    return hash.value();
  }
};

const HXPatchPort* portOf(const MergeBranch& branch, const HXDocumentState::Port& port) {
  const auto own = port.node < 0 ? -1 : branch.own[at(port.node)];
  if (own < 0) return nullptr;
  const auto* found = branch.nodes[at(own)]->portsInForce().find(port.key);
  return found ? found->get() : nullptr;
}

}  // namespace

std::string StateMerge::portText(MergeBranch& branch, const Port& port) const {
  const HXPort* found = portOf(branch, port);
  for (auto level = port.level; found && level > 0; --level) found = found->symbolicPort();
  if (!found) return HXAddresses::escaped(port.key.view());
  return port.level == 0 ? branch.addresses.labelOf(*found) : branch.addresses.of(*found);
}

std::string StateMerge::wireText(MergeBranch& branch, const State::Connection& wire) const {
  const auto text = [&](const Port& port) {
    const HXPort* found = portOf(branch, port);
    for (auto level = port.level; found && level > 0; --level) found = found->symbolicPort();
    return found ? branch.addresses.of(*found) : std::string("nowhere");
  };
  return text(wire.displayOutput) + " → " + text(wire.displayInput);
}

bool StateMerge::takesOne(const Port& port) const {
  for (const auto* branch : {&ours_, &theirs_, &base_}) {
    if (const auto* found = portOf(*branch, port)) {
      return found->connectionRelationship() == HXConnectionRelationshipOne;
    }
  }
  return false;
}

// Whether the node is there, with the publications that lead to the port.
bool StateMerge::isThere(const Port& port) const {
  if (port.node < 0) return true;
  auto place = port.node;
  if (!isKept_[at(place)]) return false;
  for (std::uint32_t level = 0; level < port.level; ++level) {
    place = merged_.nodes[at(place)].parent;
    if (place < 0 || !isKept_[at(place)]) return false;
    if (!published_.contains(PortHash()({port.node, level, port.key}))) return false;
  }
  return true;
}

bool StateMerge::hasReturned(const MergeBranch& branch, const Port& port) const {
  return port.node >= 0 && isKept_[at(port.node)] && base_.find(port.node) &&
         !branch.find(port.node);
}

bool StateMerge::standsWithin(const Port& port, std::int32_t number) const {
  if (port.node < 0) return true;
  auto holder = port.node;
  for (std::uint32_t level = 0; level < port.level && holder >= 0; ++level) {
    holder = merged_.nodes[at(holder)].parent;
  }
  return isKept_[at(port.node)] && holder >= 0 && merged_.nodes[at(holder)].parent == number;
}

bool StateMerge::standsAsIn(const MergeBranch& branch, const Port& port) const {
  auto holder = port.node;
  for (std::uint32_t level = 0; level <= port.level && holder >= 0; ++level) {
    const auto* node = branch.find(holder);
    if (!node || !isKept_[at(holder)] || node->parent != merged_.nodes[at(holder)].parent) {
      return false;
    }
    holder = node->parent;
  }
  return true;
}

void StateMerge::mergePublications(std::int32_t number) {
  auto& node = merged_.nodes[at(number)];
  const auto* b = base_.find(number);
  const auto* o = ours_.find(number);
  const auto* t = theirs_.find(number);
  for (const auto side : kBothSides) {
    const auto listOf = [side](const Node* of) {
      return of ? of->publications[side] : Publications();
    };
    const auto before = listOf(b);
    const auto ours = o ? listOf(o) : before;
    const auto theirs = t ? listOf(t) : before;
    // What one of them left as it was is as the other has it, but for what that took away below.
    const bool isSimple = ours == before || theirs == before;
    const auto merged = isSimple ? (theirs == before ? ours : theirs)
                                 : mergedPublications(number, before, ours, theirs);
    const MergeBranch& source = theirs == before ? ours_ : theirs_;
    for (const auto& publication : merged) {
      if (!standsWithin(publication.port, number) &&
          !(isSimple && standsAsIn(source, publication.port))) {
        if (isSimple) tellLostPublication(number, publication, before, theirs == before);
        continue;
      }
      published_.insert(PortHash()(publication.port));
      node.publications[side].push_back(publication);
    }
  }
  // Array outputs go with the publications that they collect.
  std::unordered_set<std::uint64_t> collected;
  for (const auto* of : {o, t, b}) {
    if (!of) continue;
    for (const auto& output : of->arrayOutputs) {
      const auto port = PortHash()(output.port);
      if (published_.contains(port) && collected.insert(port).second) {
        node.arrayOutputs.push_back(output);
      }
    }
  }
}

void StateMerge::tellLostPublication(std::int32_t number, const State::Publication& publication,
                                     const Publications& before, bool isOurs) {
  if (std::find(before.begin(), before.end(), publication) != before.end()) return;
  const std::string name = publication.name.toStdString();
  const std::string other = "its port removed or moved";
  tell(Kind::hungOnRemoved, number, "published port", isOurs ? name : other, isOurs ? other : name,
       "none");
}

StateMerge::Publications StateMerge::mergedPublications(std::int32_t number,
                                                        const Publications& before,
                                                        const Publications& ours,
                                                        const Publications& theirs) {
  using ByPort = std::unordered_map<Port, const State::Publication*, PortHash>;
  const auto portsOf = [](const Publications& list) {
    std::vector<Port> ports;
    for (const auto& publication : list) ports.push_back(publication.port);
    return ports;
  };
  const auto byPort = [](const Publications& list) {
    ByPort found;
    for (const auto& publication : list) found.emplace(publication.port, &publication);
    return found;
  };
  const ByPort had = byPort(before);
  const ByPort inOurs = byPort(ours);
  const ByPort inTheirs = byPort(theirs);
  std::unordered_set<Port, PortHash> present;
  for (const auto* list : {&ours, &theirs}) {
    const bool isOurs = list == &ours;
    for (const auto& publication : *list) {
      const auto& port = publication.port;
      if (!standsWithin(port, number)) {
        tellLostPublication(number, publication, before, isOurs);
        continue;
      }
      const bool isEnded =
          had.contains(port) && !(inOurs.contains(port) && inTheirs.contains(port));
      const bool isRenamed = isEnded && had.at(port)->name != publication.name;
      if (isEnded && !isRenamed && !hasReturned(isOurs ? theirs_ : ours_, port)) continue;
      present.insert(port);
      if (!isRenamed) continue;
      const std::string name = publication.name.toStdString();
      tell(Kind::removedAndChanged, number, "published port", isOurs ? name : "removed",
           isOurs ? "removed" : name, name);
    }
  }
  bool conflict = false;
  const auto order =
      mergedOrder(portsOf(before), portsOf(ours), portsOf(theirs), present, conflict);
  if (conflict) decide(Kind::twoOrders, number, "published ports", "ours", "theirs");
  Publications merged;
  for (const auto& port : order) {
    const auto find = [&port](const ByPort& in) {
      const auto found = in.find(port);
      return found == in.end() ? nullptr : found->second;
    };
    const auto* first = find(inOurs);
    const auto* second = find(inTheirs);
    if (!first || !second) {
      merged.push_back(first ? *first : *second);
      continue;
    }
    const auto* earlier = find(had);
    merged.push_back(*first);
    merged.back().name =
        pick(earlier ? earlier->name : String(), first->name, second->name, number,
             "name of a published port", [](const String& name) { return name.toStdString(); });
  }
  return merged;
}

void StateMerge::mergeConnections() {
  using Wire = State::Connection;
  struct Counts {
    int base = 0;
    int ours = 0;
    int theirs = 0;
  };
  std::unordered_map<Wire, Counts, WireHash> counts;
  std::vector<Wire> order;
  const auto count = [&](const MergeBranch& branch, int Counts::*member) {
    for (const auto& wire : branch.state.connections) {
      const auto [entry, isNew] = counts.try_emplace(wire);
      if (isNew) order.push_back(wire);
      ++(entry->second.*member);
    }
  };
  count(ours_, &Counts::ours);
  count(theirs_, &Counts::theirs);
  count(base_, &Counts::base);
  // What each branch joined to an input that takes one connection.
  std::unordered_map<Port, std::pair<const Wire*, const Wire*>, PortHash> joined;
  std::vector<Wire> wanted;
  for (const auto& wire : order) {
    const auto& has = counts[wire];
    int number = std::max(has.ours + has.theirs - has.base, 0);
    if (hasReturned(ours_, wire.output) || hasReturned(ours_, wire.input)) number = has.theirs;
    if (hasReturned(theirs_, wire.output) || hasReturned(theirs_, wire.input)) number = has.ours;
    const bool isMade = has.ours > has.base || has.theirs > has.base;
    const bool ends = isThere(wire.displayOutput) && isThere(wire.displayInput) &&
                      isThere(wire.output) && isThere(wire.input);
    if (!ends) {
      if (isMade && number > 0) {
        const bool isOurs = has.ours > has.base;
        auto& branch = isOurs ? ours_ : theirs_;
        const auto place = isKept_[at(wire.input.node)] ? wire.input.node : 0;
        const auto text = wireText(branch, wire);
        tell(Kind::hungOnRemoved, place, "connection", isOurs ? text : "an end removed",
             isOurs ? "an end removed" : text, "none");
      }
      continue;
    }
    // Both made the same one: it is made once.
    const bool isTwin = has.base == 0 && has.ours > 0 && has.theirs > 0;
    for (int i = 0; i < (isTwin ? std::max(has.ours, has.theirs) : number); ++i) {
      wanted.push_back(wire);
    }
    if (isMade && !isTwin && wire.input.node >= 0 && takesOne(wire.input)) {
      auto& pair = joined[wire.input];
      (has.ours > has.base ? pair.first : pair.second) = &wire;
    }
  }
  std::unordered_set<Wire, WireHash> refused;
  for (const auto& wire : order) {
    const auto found = joined.find(wire.input);
    if (found == joined.end() || found->second.first != &wire || !found->second.second) continue;
    const Wire& theirs = *found->second.second;
    const auto side = decide(Kind::joinedTwice, wire.input.node, "connection",
                             wireText(ours_, wire), wireText(theirs_, theirs));
    refused.insert(side == HXMergeSide::ours ? theirs : wire);
  }
  for (const auto& wire : wanted) {
    if (!refused.contains(wire)) merged_.connections.push_back(wire);
  }
}

void StateMerge::mergeWireOrder(std::int32_t number) {
  using Wire = State::Connection;
  if (wireNumbers_.empty()) {
    for (std::size_t i = 0; i < merged_.connections.size(); ++i) {
      wireNumbers_[WireHash()(merged_.connections[i])].push_back(static_cast<std::int32_t>(i));
    }
  }
  using ByPort = std::unordered_map<String, std::vector<Wire>>;
  std::vector<String> keys;
  std::unordered_set<String> met;
  const auto gather = [&](const MergeBranch& branch) {
    ByPort lists;
    const auto* node = branch.find(number);
    if (!node) return lists;
    for (const auto& wires : node->wires) {
      auto& list = lists[wires.key];
      for (const auto wire : wires.connections) list.push_back(branch.state.connections[at(wire)]);
      if (met.insert(wires.key).second) keys.push_back(wires.key);
    }
    return lists;
  };
  auto ours = gather(ours_);
  auto theirs = gather(theirs_);
  auto before = gather(base_);
  if (!ours_.find(number)) ours = before;
  if (!theirs_.find(number)) theirs = before;
  for (const auto& key : keys) {
    auto& b = before[key];
    auto& o = ours[key];
    auto& t = theirs[key];
    std::vector<Wire> order;
    if (t == b || o == b) {
      order = t == b ? o : t;
    } else {
      std::unordered_set<Wire, WireHash> present(o.begin(), o.end());
      present.insert(t.begin(), t.end());
      bool conflict = false;
      order = mergedOrder(b, o, t, present, conflict);
      if (conflict) {
        decide(Kind::twoOrders, number, "connections of " + key.toStdString(), "ours", "theirs");
      }
    }
    // Several equal ones are taken one after the other.
    std::unordered_map<std::uint64_t, std::size_t> taken;
    State::Wires wires{key, {}};
    for (const auto& wire : order) {
      const auto hash = WireHash()(wire);
      const auto found = wireNumbers_.find(hash);
      const auto place = taken[hash]++;
      if (found != wireNumbers_.end() && place < found->second.size()) {
        wires.connections.push_back(found->second[place]);
      }
    }
    if (!wires.connections.empty()) merged_.nodes[at(number)].wires.push_back(std::move(wires));
  }
}

}  // namespace tarnkit::detail
