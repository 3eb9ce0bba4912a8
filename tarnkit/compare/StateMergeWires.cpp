#include <fmt/format.h>

#include <algorithm>
#include <tuple>

#include "tarnkit/compare/StateHash.h"
#include "tarnkit/compare/StateMerge.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/model/HXSymbolicPort.h"

// Publications and connections; see StateMerge.cpp for the nodes.

namespace tarnkit::detail {

namespace {

std::size_t at(std::int32_t number) { return static_cast<std::size_t>(number); }

using Publication = HXDocumentState::Publication;

// What tells a publication from the others of its group: its port, or, where it leads nowhere, its
// name and how many of that name stand before it.
std::vector<HXDocumentState::Port> identitiesOf(const std::vector<Publication>& list) {
  std::unordered_map<String, std::uint32_t> strays;
  std::vector<HXDocumentState::Port> identities;
  identities.reserve(list.size());
  for (const auto& publication : list) {
    if (publication.port.node >= 0) {
      identities.push_back(publication.port);
    } else {
      identities.push_back({-1, strays[publication.name]++, publication.name});
    }
  }
  return identities;
}

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
  if (!isKept_[at(port.node)]) return false;
  for (std::uint32_t level = 0; level < port.level; ++level) {
    if (places_.publisherOf({port.node, level, port.key}) < 0) return false;
  }
  return true;
}

bool StateMerge::hasReturned(const MergeBranch& branch, const Port& port) const {
  return port.node >= 0 && isKept_[at(port.node)] && base_.find(port.node) &&
         !branch.find(port.node);
}

bool StateMerge::mayBePublished(const Port& port, std::int32_t number) const {
  const auto holder = isKept_[at(port.node)] ? places_.holderOf(port) : -1;
  if (holder < 0) return false;
  const auto around = merged_.nodes[at(holder)].parent;
  if (around == number) return true;
  const auto isSo = [&](const MergeBranch& branch) {
    const auto* node = branch.find(holder);
    return node && node->parent == around && branch.places.publisherOf(port) == number &&
           branch.places.holderOf(port) == holder;
  };
  return isSo(ours_) || isSo(theirs_);
}

void StateMerge::mergePublications() {
  const auto count = static_cast<std::int32_t>(merged_.nodes.size());
  for (std::int32_t i = 0; i < count; ++i) {
    if (isKept_[at(i)]) mergePublications(i);
  }
  settlePublications();
  for (std::int32_t i = 0; i < count; ++i) {
    if (isKept_[at(i)]) mergeArrayOutputs(i);
  }
}

void StateMerge::mergePublications(std::int32_t number) {
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
    auto& merged = merged_.nodes[at(number)].publications[side];
    if (theirs == before) {
      merged = ours;
    } else if (ours == before) {
      merged = theirs;
    } else {
      merged = mergedPublications(number, before, ours, theirs);
    }
  }
}

// From the inside outward: what is published further out stands for what is published within.
void StateMerge::settlePublications() {
  struct Place {
    std::uint32_t level;
    std::int32_t node;
    std::int32_t side;
    std::size_t index;
  };
  std::vector<Place> all;
  for (std::size_t i = 0; i < merged_.nodes.size(); ++i) {
    for (const auto side : kBothSides) {
      const auto& list = merged_.nodes[i].publications[side];
      for (std::size_t n = 0; n < list.size(); ++n) {
        if (list[n].port.node < 0) continue;
        all.push_back({list[n].port.level, static_cast<std::int32_t>(i), side, n});
      }
    }
  }
  std::stable_sort(all.begin(), all.end(),
                   [](const Place& a, const Place& b) { return a.level < b.level; });
  std::erase_if(all, [this](const Place& place) {
    const auto& port = merged_.nodes[at(place.node)].publications[place.side][place.index].port;
    return mayBePublished(port, place.node) && places_.add(port, place.node);
  });
  std::sort(all.begin(), all.end(), [](const Place& a, const Place& b) {
    return std::tie(a.node, a.side, a.index) < std::tie(b.node, b.side, b.index);
  });
  for (auto lost = all.begin(); lost != all.end();) {
    const auto [level, node, side, index] = *lost;
    std::vector<std::size_t> gone;
    for (; lost != all.end() && lost->node == node && lost->side == side; ++lost) {
      gone.push_back(lost->index);
    }
    takeOutPublications(node, side, gone);
  }
}

void StateMerge::takeOutPublications(std::int32_t number, std::int32_t side,
                                     const std::vector<std::size_t>& gone) {
  std::unordered_map<Port, const Publication*, PortHash> had;
  if (const auto* before = base_.find(number)) {
    for (const auto& publication : before->publications[side]) {
      had.emplace(publication.port, &publication);
    }
  }
  Publications kept;
  auto next = gone.begin();
  auto& list = merged_.nodes[at(number)].publications[side];
  for (std::size_t i = 0; i < list.size(); ++i) {
    auto& publication = list[i];
    if (next == gone.end() || *next != i) {
      kept.push_back(std::move(publication));
      continue;
    }
    ++next;
    // Nobody made what was there before.
    const auto found = had.find(publication.port);
    if (found != had.end() && *found->second == publication) continue;
    const bool isOurs = ours_.places.publisherOf(publication.port) == number;
    const std::string name = HXAddresses::quoted(publication.name);
    const std::string other = "its port removed or moved";
    tell(Kind::hungOnRemoved, number, "published port", isOurs ? name : other,
         isOurs ? other : name, "none");
  }
  list = std::move(kept);
}

// They go with the publications that they collect.
void StateMerge::mergeArrayOutputs(std::int32_t number) {
  using Outputs = std::vector<State::ArrayOutput>;
  static const Outputs kNone;
  const auto* b = base_.find(number);
  const auto* o = ours_.find(number);
  const auto* t = theirs_.find(number);
  const Outputs& before = b ? b->arrayOutputs : kNone;
  const Outputs& ours = o ? o->arrayOutputs : before;
  const Outputs& theirs = t ? t->arrayOutputs : before;
  std::unordered_set<Port, PortHash> collected;
  for (const auto* list : {&ours, &theirs}) {
    if (list == (theirs == before ? &theirs : ours == before ? &ours : nullptr)) continue;
    for (const auto& output : *list) {
      const auto& port = output.port;
      if (port.node >= 0 && places_.publisherOf(port) < 0) continue;
      if (port.node < 0 || collected.insert(port).second) {
        merged_.nodes[at(number)].arrayOutputs.push_back(output);
      }
    }
  }
}

StateMerge::Publications StateMerge::mergedPublications(std::int32_t number,
                                                        const Publications& before,
                                                        const Publications& ours,
                                                        const Publications& theirs) {
  using ByPort = std::unordered_map<Port, const Publication*, PortHash>;
  const auto byPort = [](const Publications& list, const std::vector<Port>& identities) {
    ByPort found;
    for (std::size_t i = 0; i < list.size(); ++i) found.emplace(identities[i], &list[i]);
    return found;
  };
  const auto hadPorts = identitiesOf(before);
  const auto ourPorts = identitiesOf(ours);
  const auto theirPorts = identitiesOf(theirs);
  const ByPort had = byPort(before, hadPorts);
  const ByPort inOurs = byPort(ours, ourPorts);
  const ByPort inTheirs = byPort(theirs, theirPorts);
  std::unordered_set<Port, PortHash> present;
  for (const auto* in : {&inOurs, &inTheirs}) {
    const bool isOurs = in == &inOurs;
    for (const auto& port : isOurs ? ourPorts : theirPorts) {
      const auto& publication = *in->at(port);
      const bool isEnded =
          had.contains(port) && !(inOurs.contains(port) && inTheirs.contains(port));
      const bool isRenamed = isEnded && had.at(port)->name != publication.name;
      if (isEnded && !isRenamed && !hasReturned(isOurs ? theirs_ : ours_, port)) continue;
      present.insert(port);
      // What goes because its node does is told when it is taken out.
      if (!isRenamed || (port.node >= 0 && !isKept_[at(port.node)])) continue;
      const std::string name = HXAddresses::quoted(publication.name);
      tell(Kind::removedAndChanged, number, "published port", isOurs ? name : "removed",
           isOurs ? "removed" : name, name);
    }
  }
  const auto nameOf = [&](const Port& port) {
    const auto found = inOurs.find(port);
    return HXAddresses::quoted(found == inOurs.end() ? inTheirs.at(port)->name
                                                     : found->second->name);
  };
  const auto order =
      mergedOrder(hadPorts, ourPorts, theirPorts, present, number, "published ports", nameOf);
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
    merged.back().name = pick(earlier ? earlier->name : String(), first->name, second->name, number,
                              "name of a published port", HXAddresses::quoted);
  }
  return merged;
}

std::vector<StateMerge::WireCounts> StateMerge::countedWires() const {
  std::unordered_map<Wire, std::size_t, WireHash> places;
  std::vector<WireCounts> counted;
  const auto count = [&](const MergeBranch& branch, int WireCounts::*member) {
    for (const auto& wire : branch.state.connections) {
      const auto [entry, isNew] = places.try_emplace(wire, counted.size());
      if (isNew) counted.emplace_back().wire = wire;
      ++(counted[entry->second].*member);
    }
  };
  count(ours_, &WireCounts::ours);
  count(theirs_, &WireCounts::theirs);
  count(base_, &WireCounts::base);
  return counted;
}

int StateMerge::numberOf(const WireCounts& counts) const {
  const auto& [wire, base, ours, theirs] = counts;
  // The branch that took the node of an end away has no say about what the other kept.
  if (hasReturned(ours_, wire.output) || hasReturned(ours_, wire.input)) return theirs;
  if (hasReturned(theirs_, wire.output) || hasReturned(theirs_, wire.input)) return ours;
  if (theirs == base) return ours;
  if (ours == base || ours == theirs) return theirs;
  return std::max(ours + theirs - base, 0);
}

void StateMerge::tellLostWire(const WireCounts& counts) {
  if (!counts.isMade()) return;
  const bool isOurs = counts.ours > counts.base;
  const auto end = counts.wire.input.node;
  const auto text = wireText(isOurs ? ours_ : theirs_, counts.wire);
  tell(Kind::hungOnRemoved, end >= 0 && isKept_[at(end)] ? end : 0, "connection",
       isOurs ? text : "an end removed", isOurs ? "an end removed" : text, "none");
}

std::unordered_set<StateMerge::Wire, WireHash> StateMerge::refusedWires(
    const std::vector<WireCounts>& wanted) {
  struct Joined {
    const Wire* ours = nullptr;
    const Wire* theirs = nullptr;
  };
  std::unordered_map<Port, Joined, PortHash> joined;
  std::vector<Port> order;
  for (const auto& counts : wanted) {
    const Port& input = counts.wire.input;
    if (input.node < 0 || (counts.ours > 0 && counts.theirs > 0) || !takesOne(input)) continue;
    auto& pair = joined[input];
    if (!pair.ours && !pair.theirs) order.push_back(input);
    (counts.ours > 0 ? pair.ours : pair.theirs) = &counts.wire;
  }
  std::unordered_set<Wire, WireHash> refused;
  for (const auto& input : order) {
    const auto& [ours, theirs] = joined.at(input);
    if (!ours || !theirs) continue;
    const auto side = decide(Kind::joinedTwice, input.node, "connection", wireText(ours_, *ours),
                             wireText(theirs_, *theirs));
    refused.insert(side == HXMergeSide::ours ? *theirs : *ours);
  }
  return refused;
}

void StateMerge::mergeConnections() {
  std::vector<WireCounts> wanted;
  for (const auto& counts : countedWires()) {
    if (numberOf(counts) == 0) continue;
    const auto& wire = counts.wire;
    if (isThere(wire.displayOutput) && isThere(wire.displayInput) && isThere(wire.output) &&
        isThere(wire.input)) {
      wanted.push_back(counts);
    } else {
      tellLostWire(counts);
    }
  }
  const auto refused = refusedWires(wanted);
  for (const auto& counts : wanted) {
    if (refused.contains(counts.wire)) continue;
    auto& numbers = wireNumbers_[counts.wire];
    for (int i = 0; i < numberOf(counts); ++i) {
      numbers.push_back(static_cast<std::int32_t>(merged_.connections.size()));
      merged_.connections.push_back(counts.wire);
      isInOurs_.push_back(i < counts.ours);
      isInTheirs_.push_back(i < counts.theirs);
    }
  }
}

std::unordered_map<String, StateMerge::Numbers> StateMerge::wiresOf(
    const MergeBranch& branch, std::int32_t number, std::vector<String>& keys) const {
  std::unordered_map<String, Numbers> lists;
  const auto* node = branch.find(number);
  if (!node) return lists;
  for (const auto& wires : node->wires) {
    keys.push_back(wires.key);
    auto& list = lists[wires.key];
    // Several equal ones are taken one after the other.
    std::unordered_map<std::int32_t, std::size_t> taken;
    for (const auto wire : wires.connections) {
      const auto found = wireNumbers_.find(branch.state.connections[at(wire)]);
      if (found == wireNumbers_.end()) continue;
      const auto place = taken[found->second.front()]++;
      if (place < found->second.size()) list.push_back(found->second[place]);
    }
  }
  return lists;
}

// A wire that only one branch has is held by the ports that hold it there; so both of its ends
// agree, whoever took away what.
void StateMerge::mergeWireOrder(std::int32_t number) {
  std::vector<String> keys;
  auto ours = wiresOf(ours_, number, keys);
  auto theirs = wiresOf(theirs_, number, keys);
  auto before = wiresOf(base_, number, keys);
  std::unordered_set<String> met;
  for (const auto& key : keys) {
    if (!met.insert(key).second) continue;
    const auto& b = before[key];
    const auto& o = ours[key];
    const auto& t = theirs[key];
    const std::unordered_set<std::int32_t> inBase(b.begin(), b.end());
    const std::unordered_set<std::int32_t> inOurs(o.begin(), o.end());
    const std::unordered_set<std::int32_t> inTheirs(t.begin(), t.end());
    std::unordered_set<std::int32_t> present;
    for (const auto* list : {&o, &t, &b}) {
      for (const auto wire : *list) {
        const bool isOurs = inOurs.contains(wire);
        const bool isTheirs = inTheirs.contains(wire);
        const bool isHeld = !isInOurs_[at(wire)]              ? isTheirs
                            : !isInTheirs_[at(wire)]          ? isOurs
                            : isOurs == inBase.contains(wire) ? isTheirs
                                                              : isOurs;
        if (isHeld) present.insert(wire);
      }
    }
    if (present.empty()) continue;
    const auto textOf = [this](std::int32_t wire) {
      return wireText(isInOurs_[at(wire)] ? ours_ : theirs_, merged_.connections[at(wire)]);
    };
    auto order = mergedOrder(b, o, t, present, number,
                             "connections of " + HXAddresses::escaped(key.view()), textOf);
    merged_.nodes[at(number)].wires.push_back({key, std::move(order)});
  }
}

}  // namespace tarnkit::detail
