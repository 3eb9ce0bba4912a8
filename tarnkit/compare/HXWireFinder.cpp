#include <fmt/format.h>

#include <algorithm>
#include <unordered_set>

#include "tarnkit/compare/HXDifferenceFinder.h"
#include "tarnkit/compare/StateHash.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/model/HXReplicatorNode.h"
#include "tarnkit/model/HXSymbolicPort.h"

// Publications and connections; see HXDifferenceFinder.cpp for the nodes.

namespace tarnkit::detail {

namespace {

std::size_t at(std::int32_t number) { return static_cast<std::size_t>(number); }

std::uint64_t hashOf(const HXDocumentState::Port& port) {
  StateHash hash;
  hash.addPort(port);
  return hash.value();
}

std::uint64_t hashOf(const HXDocumentState::Port& output, const HXDocumentState::Port& input) {
  StateHash hash;
  hash.addPort(output);
  hash.addPort(input);
  return hash.value();
}

// One that leads nowhere is known by its name.
std::uint64_t hashOf(const HXDocumentState::Publication& publication,
                     const HXDocumentState::Port& port) {
  StateHash hash;
  hash.addPort(port);
  if (publication.port.node < 0) hash.add(publication.name);
  return hash.value();
}

// Whether it joins two ports of the document.
bool isWhole(const HXDocumentState::Connection& wire) {
  return wire.output.node >= 0 && wire.input.node >= 0 && wire.displayOutput.node >= 0 &&
         wire.displayInput.node >= 0;
}

// The patch port itself, whatever stands for it.
std::uint64_t hashOfInnermost(const HXDocumentState::Port& port) {
  return hashOf({port.node, 0, port.key});
}

}  // namespace

HXDocumentState::Port HXDifferenceFinder::translated(const Port& port) const {
  return {newOf(port.node), port.level, port.key};
}

const HXPort* HXDifferenceFinder::portAt(const Nodes& nodes, const Port& port) {
  if (port.node < 0) return nullptr;
  const auto* own = nodes[at(port.node)]->portsInForce().find(port.key);
  const HXPort* found = own ? own->get() : nullptr;
  for (auto level = port.level; found && level > 0; --level) found = found->symbolicPort();
  return found;
}

std::string HXDifferenceFinder::portAddress(HXAddresses& addresses, const Nodes& nodes,
                                            const Port& port) {
  if (port.node < 0) return "nothing";
  const auto* found = portAt(nodes, port);
  return found ? addresses.of(*found) : HXAddresses::escaped(port.key.view());
}

std::string HXDifferenceFinder::portLabel(HXAddresses& addresses, const Nodes& nodes,
                                          std::int32_t node, const String& key) {
  const auto* port = portAt(nodes, {node, 0, key});
  return port ? addresses.labelOf(*port) : HXAddresses::escaped(key.view());
}

std::string HXDifferenceFinder::wireText(HXAddresses& addresses, const Nodes& nodes,
                                         const State::Connection& wire) const {
  const auto text = [&](const Port& port) {
    return port.node < 0 ? std::string("nowhere") : portAddress(addresses, nodes, port);
  };
  return text(wire.displayOutput) + " → " + text(wire.displayInput);
}

std::size_t HXDifferenceFinder::causeOfLostPort(const Port& port) {
  if (!isPortReplaced(port.node, port.key)) return kNone;
  if (const auto found = arrayOutputBy_.find(hashOfInnermost(port));
      found != arrayOutputBy_.end()) {
    return found->second;
  }
  return shapedBy_[at(port.node)];
}

std::size_t HXDifferenceFinder::causeAt(const Port& port) {
  if (port.node < 0) return kNone;
  if (removedBy_[at(port.node)] != kNone) return removedBy_[at(port.node)];
  if (movedBy_[at(port.node)] != kNone) return movedBy_[at(port.node)];
  if (const auto lost = causeOfLostPort(port); lost != kNone) return lost;
  // Of a group that goes the publications go as well.
  for (std::uint32_t level = 0; level < port.level; ++level) {
    const auto holder = oldPlaces_.publisherOf({port.node, level, port.key});
    if (holder >= 0 && groupLostBy_[at(holder)] != kNone) return groupLostBy_[at(holder)];
  }
  const auto unpublished = unpublishedBy_.find(hashOfInnermost(port));
  return unpublished == unpublishedBy_.end() ? kNone : unpublished->second;
}

void HXDifferenceFinder::findPublications() {
  // Those further in come first, as those further out follow from them.
  struct Place {
    std::uint32_t level;
    std::int32_t node;
    std::int32_t side;
    std::size_t index;
  };
  std::vector<Place> gone;
  for (std::int32_t i = 0; i < static_cast<std::int32_t>(old_.nodes.size()); ++i) {
    const auto& node = oldNode(i);
    const auto number = newOf(i);
    for (const auto side : kBothSides) {
      std::unordered_map<std::uint64_t, std::size_t> now;
      if (number >= 0) {
        const auto& publications = newNode(number).publications[side];
        for (std::size_t n = 0; n < publications.size(); ++n) {
          now.emplace(hashOf(publications[n], publications[n].port), n);
        }
      }
      for (std::size_t n = 0; n < node.publications[side].size(); ++n) {
        const auto& publication = node.publications[side][n];
        const auto found = now.find(hashOf(publication, translated(publication.port)));
        if (found == now.end()) {
          gone.push_back({publication.port.level, i, side, n});
          continue;
        }
        const auto& other = newNode(number).publications[side][found->second];
        if (other.name != publication.name) {
          auto& change = add(Kind::publicationRenamed, i, number);
          change.subject = portAddress(newAddresses_, newNodes_, other.port);
          change.subjectKey = publication.port.key;
          change.oldText = "\"" + HXAddresses::escaped(publication.name.view()) + "\"";
          change.newText = "\"" + HXAddresses::escaped(other.name.view()) + "\"";
        }
      }
    }
    if (number < 0) continue;
    std::unordered_map<std::uint64_t, const State::ArrayOutput*> outputs;
    for (const auto& other : newNode(number).arrayOutputs) outputs[hashOf(other.port)] = &other;
    for (const auto& output : node.arrayOutputs) {
      const auto found = outputs.find(hashOf(translated(output.port)));
      if (found == outputs.end() || found->second->key == output.key) continue;
      arrayOutputBy_.emplace(hashOf({i, 0, output.key}), changes_.size());
      auto& change = add(Kind::arrayOutputReplaced, i, number);
      change.subject = portAddress(newAddresses_, newNodes_, found->second->port);
      change.subjectKey = found->second->key;
    }
  }
  std::stable_sort(gone.begin(), gone.end(),
                   [](const Place& a, const Place& b) { return a.level < b.level; });
  for (const auto& place : gone) findUnpublished(place.node, place.side, place.index);
  findPublished();
}

void HXDifferenceFinder::findPublished() {
  for (std::int32_t i = 0; i < static_cast<std::int32_t>(new_.nodes.size()); ++i) {
    const auto older = oldOf(i);
    if (older < 0) continue;  // comes with the node
    for (const auto side : kBothSides) {
      std::unordered_map<std::uint64_t, std::size_t> before;
      for (const auto& publication : oldNode(older).publications[side]) {
        before.emplace(hashOf(publication, translated(publication.port)), 0);
      }
      for (const auto& publication : newNode(i).publications[side]) {
        // One that leads nowhere is what is left of something that went.
        if (publication.port.node < 0) continue;
        if (before.contains(hashOf(publication, publication.port))) continue;
        auto& change = add(Kind::portPublished, older, i);
        change.subject = portAddress(newAddresses_, newNodes_, publication.port);
        change.subjectKey = publication.port.key;
        change.newText = fmt::format("{} as \"{}\"", change.subject,
                                     HXAddresses::escaped(publication.name.view()));
      }
    }
  }
}

void HXDifferenceFinder::findUnpublished(std::int32_t oldNumber, std::int32_t side,
                                         std::size_t index) {
  const auto& publication = oldNode(oldNumber).publications[side][index];
  const Port outside{publication.port.node, publication.port.level + 1, publication.port.key};
  auto cause = removedBy_[at(oldNumber)];
  if (cause == kNone) cause = causeAt(outside);
  const auto text =
      fmt::format("{} as \"{}\"", portAddress(oldAddresses_, oldNodes_, publication.port),
                  HXAddresses::escaped(publication.name.view()));
  // What an array output collected ends with the publication that it collected.
  const auto noteArrayOutput = [&](std::size_t by) {
    for (const auto& output : oldNode(oldNumber).arrayOutputs) {
      if (output.port == publication.port) {
        arrayOutputBy_.emplace(hashOf({oldNumber, 0, output.key}), by);
      }
    }
  };
  if (cause != kNone) {
    noteArrayOutput(cause);
    if (removedBy_[at(oldNumber)] == kNone) consequence(cause, "unpublishes " + text);
    return;
  }
  unpublishedBy_.emplace(hashOfInnermost(publication.port), changes_.size());
  noteArrayOutput(changes_.size());
  auto& change = add(Kind::portUnpublished, oldNumber, newOf(oldNumber));
  change.subject = portAddress(oldAddresses_, oldNodes_, publication.port);
  change.subjectKey = publication.port.key;
  change.oldText = text;
}

void HXDifferenceFinder::findConnections() {
  std::unordered_map<std::uint64_t, std::vector<std::int32_t>> now;
  for (std::size_t i = 0; i < new_.connections.size(); ++i) {
    const auto& wire = new_.connections[i];
    now[hashOf(wire.displayOutput, wire.displayInput)].push_back(static_cast<std::int32_t>(i));
  }
  for (auto& entry : now) std::reverse(entry.second.begin(), entry.second.end());
  for (std::size_t i = 0; i < old_.connections.size(); ++i) {
    const auto& wire = old_.connections[i];
    const auto found =
        now.find(hashOf(translated(wire.displayOutput), translated(wire.displayInput)));
    if (found == now.end() || found->second.empty()) continue;
    const auto other = found->second.back();
    found->second.pop_back();
    newWireOf_[i] = other;
    oldWireOf_[at(other)] = static_cast<std::int32_t>(i);
  }
  findRewired();
  for (std::size_t i = 0; i < newWireOf_.size(); ++i) {
    if (newWireOf_[i] == -1) tellBroken(static_cast<std::int32_t>(i));
  }
  // What is left of a wire one end of which went is nothing that somebody made.
  std::unordered_set<std::uint64_t> leftEnds;
  for (std::size_t i = 0; i < newWireOf_.size(); ++i) {
    if (newWireOf_[i] != -1) continue;
    const auto& wire = old_.connections[i];
    leftEnds.insert(hashOf(translated(wire.output)));
    leftEnds.insert(hashOf(translated(wire.input)));
  }
  for (std::size_t i = 0; i < oldWireOf_.size(); ++i) {
    if (oldWireOf_[i] != -1) continue;
    const auto& wire = new_.connections[i];
    if (isWhole(wire) ||
        !leftEnds.contains(hashOf(wire.output.node < 0 ? wire.input : wire.output))) {
      tellMade(static_cast<std::int32_t>(i));
    }
  }
}

// An input that took one connection and takes another one now: one drag of the wire.
void HXDifferenceFinder::findRewired() {
  constexpr std::int32_t kSeveral = -2;
  const auto gather = [](const std::vector<State::Connection>& wires,
                         const std::vector<std::int32_t>& others, auto keyOf) {
    std::unordered_map<std::uint64_t, std::int32_t> byInput;
    for (std::size_t i = 0; i < wires.size(); ++i) {
      if (others[i] != -1 || !isWhole(wires[i])) continue;
      const auto [entry, isNew] =
          byInput.try_emplace(keyOf(wires[i].displayInput), static_cast<std::int32_t>(i));
      if (!isNew) entry->second = kSeveral;
    }
    return byInput;
  };
  const auto olds = gather(old_.connections, newWireOf_,
                           [this](const Port& port) { return hashOf(translated(port)); });
  const auto news =
      gather(new_.connections, oldWireOf_, [](const Port& port) { return hashOf(port); });
  for (std::size_t i = 0; i < old_.connections.size(); ++i) {
    if (newWireOf_[i] != -1 || !isWhole(old_.connections[i])) continue;
    const auto& wire = old_.connections[i];
    const auto key = hashOf(translated(wire.displayInput));
    const auto older = olds.find(key);
    const auto newer = news.find(key);
    if (older->second < 0 || newer == news.end() || newer->second < 0) continue;
    const auto& other = new_.connections[at(newer->second)];
    // Otherwise the one went along with something, and the other is somebody's doing.
    if (causeAt(wire.displayInput) != kNone || causeAt(wire.displayOutput) != kNone) continue;
    newWireOf_[i] = kSeveral;
    oldWireOf_[at(newer->second)] = kSeveral;
    const auto* input = portAt(newNodes_, other.displayInput);
    const auto& holder = input && input->node() ? *input->node() : *newNodes_[0];
    auto& change = add(Kind::connectionRewired, wire.input.node, newOf(wire.input.node));
    change.address = newAddresses_.of(holder);
    change.subject = input ? newAddresses_.labelOf(*input) : "";
    change.subjectKey = other.displayInput.key;
    change.oldText = portAddress(oldAddresses_, oldNodes_, wire.displayOutput);
    change.newText = portAddress(newAddresses_, newNodes_, other.displayOutput);
  }
}

void HXDifferenceFinder::tellBroken(std::int32_t connection) {
  const auto& wire = old_.connections[at(connection)];
  auto cause = kNone;
  for (const auto* port : {&wire.displayOutput, &wire.displayInput, &wire.output, &wire.input}) {
    if (cause == kNone && port->node >= 0) cause = causeAt(*port);
  }
  // What stood wholly in what was removed goes without saying.
  const auto isWithin = [&](const Port& port) {
    return port.node < 0 || removedBy_[at(port.node)] == cause;
  };
  if (cause != kNone && isWithin(wire.output) && isWithin(wire.input)) return;
  auto text = wireText(oldAddresses_, oldNodes_, wire);
  if (cause != kNone) return consequence(cause, "disconnects " + text);
  const auto& end = wire.input.node < 0 ? wire.output : wire.input;
  auto& change = add(Kind::connectionBroken, std::max(end.node, 0), newOf(std::max(end.node, 0)));
  change.subject = portLabel(oldAddresses_, oldNodes_, end.node, end.key);
  change.subjectKey = end.key;
  change.oldText = std::move(text);
}

void HXDifferenceFinder::tellMade(std::int32_t connection) {
  const auto& wire = new_.connections[at(connection)];
  const auto output = oldOf(wire.output.node);
  const auto input = oldOf(wire.input.node);
  // Wires within what was added came with it.
  const auto addedBy = [this](const Port& port) {
    return port.node < 0 ? kNone : addedBy_[at(port.node)];
  };
  if (output < 0 && input < 0 && addedBy(wire.output) == addedBy(wire.input)) return;
  const auto& end = wire.input.node < 0 ? wire.output : wire.input;
  auto& change = add(Kind::connectionMade, oldOf(std::max(end.node, 0)), std::max(end.node, 0));
  change.subject = portLabel(newAddresses_, newNodes_, end.node, end.key);
  change.subjectKey = end.key;
  change.newText = wireText(newAddresses_, newNodes_, wire);
}

void HXDifferenceFinder::findConnectionOrder(std::int32_t number) {
  const auto older = oldOf(number);
  std::unordered_map<String, const State::Wires*> earlier;
  for (const auto& wires : oldNode(older).wires) {
    if (wires.connections.size() > 1) earlier.emplace(wires.key, &wires);
  }
  if (earlier.empty()) return;
  for (const auto& wires : newNode(number).wires) {
    const auto before = earlier.find(wires.key);
    if (before == earlier.end()) continue;
    const auto& connections = before->second->connections;
    std::unordered_map<std::int32_t, std::size_t> places;
    for (std::size_t i = 0; i < connections.size(); ++i) places.emplace(connections[i], i);
    std::vector<std::size_t> found;
    for (const auto wire : wires.connections) {
      const auto other = oldWireOf_[at(wire)];
      if (const auto place = places.find(other); other >= 0 && place != places.end()) {
        found.push_back(place->second);
      }
    }
    if (std::is_sorted(found.begin(), found.end())) continue;
    auto& change = add(Kind::connectionOrder, older, number);
    change.subject = portLabel(newAddresses_, newNodes_, number, wires.key);
    change.subjectKey = wires.key;
  }
}

void HXDifferenceFinder::findPublicationOrder(std::int32_t number) {
  const auto older = oldOf(number);
  for (const auto side : kBothSides) {
    const auto& before = oldNode(older).publications[side];
    const auto& now = newNode(number).publications[side];
    if (before.size() < 2 || now.size() < 2) continue;
    std::unordered_map<std::uint64_t, std::size_t> places;
    for (std::size_t i = 0; i < before.size(); ++i) {
      places.emplace(hashOf(before[i], translated(before[i].port)), i);
    }
    std::vector<std::size_t> found;
    for (const auto& publication : now) {
      if (const auto place = places.find(hashOf(publication, publication.port));
          place != places.end()) {
        found.push_back(place->second);
      }
    }
    if (std::is_sorted(found.begin(), found.end())) continue;
    auto& change = add(Kind::publicationOrder, older, number);
    change.subject = side == HXOrientationInput ? "inputs" : "outputs";
  }
}

}  // namespace tarnkit::detail
