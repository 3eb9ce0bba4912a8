#include "tarnkit/compare/StateMerge.h"

#include <fmt/format.h>

#include <algorithm>

#include "tarnkit/compare/ByKey.h"
#include "tarnkit/compare/StateHash.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/patches/HXRNodeClass.h"

// Nodes and what they are; what joins them is the other source, StateMergeWires.cpp.

namespace tarnkit::detail {

namespace {

std::size_t at(std::int32_t number) { return static_cast<std::size_t>(number); }

// What is said of a group that was removed, and stays for what is in it.
constexpr const char* kHolds = "holds what was made";

std::string patchText(const HXDocumentState::Node& node) {
  return node.patchClass.isNil() ? "none" : HXAddresses::escaped(node.patchClass.view());
}

}  // namespace

StateMerge::StateMerge(MergeBranch& base, MergeBranch& ours, MergeBranch& theirs, std::size_t count,
                       const HXDocumentMerge::Options& options)
    : base_(base), ours_(ours), theirs_(theirs), options_(options), isKept_(count, false) {
  merged_.nodes.resize(count);
  for (auto* branch : {&base, &ours, &theirs}) {
    branch->places = PublicationPlaces(branch->state, branch->numbers);
  }
}

HXDocumentState StateMerge::run() {
  const auto count = static_cast<std::int32_t>(merged_.nodes.size());
  decideParents();
  breakCircles();
  decidePresence();
  for (std::int32_t i = 0; i < count; ++i) {
    if (isKept_[at(i)]) mergeNode(i);
  }
  for (std::int32_t i = 0; i < count; ++i) {
    if (isKept_[at(i)]) mergeSubnodes(i);
  }
  mergePublications();
  mergeConnections();
  for (std::int32_t i = 0; i < count; ++i) {
    if (isKept_[at(i)]) mergeWireOrder(i);
  }
  return std::move(merged_);
}

MergeBranch& StateMerge::branchWith(std::int32_t number) {
  for (auto* branch : {&ours_, &theirs_}) {
    if (branch->find(number)) return *branch;
  }
  return base_;
}

std::string StateMerge::addressOf(std::int32_t number) {
  auto& branch = branchWith(number);
  return branch.addresses.of(*branch.nodes[at(branch.own[at(number)])]);
}

std::string StateMerge::labelOf(std::int32_t number) {
  auto& branch = branchWith(number);
  return branch.addresses.labelOf(*branch.nodes[at(branch.own[at(number)])]);
}

HXMergeSide StateMerge::decide(Kind kind, std::int32_t number, const std::string& subject,
                               const std::string& ours, const std::string& theirs) {
  const std::string address = addressOf(number);
  HXMergeSide side = options_.preference;
  bool isDecided = options_.isPreferenceDecided;
  for (const auto& place : {address, address + ": " + subject}) {
    if (const auto found = options_.favored.find(place); found != options_.favored.end()) {
      side = found->second;
      isDecided = true;
    }
  }
  conflicts_.push_back(
      {kind, address, subject, ours, theirs, side == HXMergeSide::ours ? ours : theirs, isDecided});
  return side;
}

void StateMerge::tell(Kind kind, std::int32_t number, const std::string& subject,
                      const std::string& ours, const std::string& theirs,
                      const std::string& taken) {
  conflicts_.push_back(
      {kind, addressOf(number), subject, ours, theirs, taken, options_.isPreferenceDecided});
}

// Whether a branch has made something of the node beside taking away.
bool StateMerge::hasChanged(const Node& before, const Node& now, const MergeBranch& branch) const {
  if (before.name != now.name || before.comment != now.comment ||
      before.patchClass != now.patchClass || before.parent != now.parent ||
      before.forcesSubnodes != now.forcesSubnodes || before.opaque != now.opaque ||
      before.parameters != now.parameters || before.values != now.values ||
      !(before.position == now.position)) {
    return true;
  }
  const auto hiddenOf = [](const Node& of, std::int32_t side) {
    std::vector<String> hidden;
    for (const auto& group : of.flaggedGroups[side]) {
      if (group.hidden) hidden.push_back(group.key);
    }
    return hidden;
  };
  for (const auto side : kBothSides) {
    if (hiddenOf(before, side) != hiddenOf(now, side)) return true;
    std::unordered_map<Port, const State::Publication*, PortHash> had;
    for (const auto& publication : before.publications[side]) {
      had.emplace(publication.port, &publication);
    }
    for (const auto& publication : now.publications[side]) {
      const auto found = had.find(publication.port);
      if (found == had.end() || *found->second != publication) return true;
    }
  }
  const ByKey hadWires(before.wires);
  for (const auto& wires : now.wires) {
    std::unordered_set<State::Connection, WireHash> had;
    if (const auto* earlier = hadWires[wires.key]) {
      for (const auto wire : earlier->connections) had.insert(base_.state.connections[at(wire)]);
    }
    for (const auto wire : wires.connections) {
      if (!had.contains(branch.state.connections[at(wire)])) return true;
    }
  }
  return false;
}

// With what it stands in.
void StateMerge::keep(std::int32_t number) {
  for (auto place = number; place >= 0 && !isKept_[at(place)];) {
    isKept_[at(place)] = true;
    place = merged_.nodes[at(place)].parent;
  }
}

void StateMerge::decidePresence() {
  const auto count = static_cast<std::int32_t>(isKept_.size());
  for (std::int32_t i = 0; i < count; ++i) {
    const auto* b = base_.find(i);
    const auto* o = ours_.find(i);
    const auto* t = theirs_.find(i);
    if ((o && t) || (!b && (o || t))) keep(i);
  }
  std::vector<std::int32_t> unchanged;
  for (std::int32_t i = 0; i < count; ++i) {
    const auto* b = base_.find(i);
    const auto* o = ours_.find(i);
    const auto* t = theirs_.find(i);
    if (!b || (o != nullptr) == (t != nullptr)) continue;
    const auto& now = o ? *o : *t;
    const bool changed = hasChanged(*b, now, o ? ours_ : theirs_);
    if (!changed) {
      unchanged.push_back(i);
      continue;
    }
    constexpr const char* kChanged = "changed";
    const auto address = addressOf(i);
    const auto favored = options_.favored.find(address);
    const auto remover = o ? HXMergeSide::theirs : HXMergeSide::ours;
    const bool goes =
        !isKept_[at(i)] && (favored != options_.favored.end()
                                ? favored->second == remover
                                : options_.isPreferenceDecided && options_.preference == remover);
    if (!goes) keep(i);
    conflicts_.push_back({Kind::removedAndChanged, address, "node", o ? kChanged : "removed",
                          o ? "removed" : kChanged, goes ? "removed" : kChanged,
                          options_.isPreferenceDecided || favored != options_.favored.end()});
  }
  // A group that one branch removed is kept for what the other put there, and so is its own.
  for (const auto i : unchanged) {
    if (!isKept_[at(i)]) continue;
    const bool isOurs = ours_.find(i) != nullptr;
    tell(Kind::removedAndChanged, i, "node", isOurs ? kHolds : "removed",
         isOurs ? "removed" : kHolds, kHolds);
  }
}

void StateMerge::decideParents() {
  const auto textOf = [this](std::int32_t parent) { return addressOf(parent); };
  for (std::size_t i = 1; i < isKept_.size(); ++i) {
    const auto number = static_cast<std::int32_t>(i);
    const auto* b = base_.find(number);
    const auto* o = ours_.find(number);
    const auto* t = theirs_.find(number);
    auto& parent = merged_.nodes[i].parent;
    if (o && t && b) {
      parent = pick(b->parent, o->parent, t->parent, number, "group", textOf, Kind::movedTwice);
    } else {
      parent = (o ? o : t ? t : b)->parent;
    }
  }
}

// Whatever one branch has is a tree, so nodes that go back to where ours has them close no circle
// among themselves.
void StateMerge::breakCircles() {
  std::vector<std::int32_t> met(isKept_.size(), -1);
  for (std::size_t i = 1; i < isKept_.size(); ++i) {
    const auto start = static_cast<std::int32_t>(i);
    auto place = start;
    for (; place > 0 && met[at(place)] < 0; place = merged_.nodes[at(place)].parent) {
      met[at(place)] = start;
    }
    if (place <= 0 || met[at(place)] != start) continue;
    const auto& preferred = options_.preference == HXMergeSide::ours ? ours_ : theirs_;
    const auto first = place;
    do {
      auto& parent = merged_.nodes[at(place)].parent;
      const auto next = parent;
      const auto* o = ours_.find(place);
      const auto* t = theirs_.find(place);
      const auto* wanted = preferred.find(place);
      if (wanted && wanted->parent != parent) {
        parent = wanted->parent;
        tell(Kind::movedIntoItself, place, "group", addressOf(o->parent), addressOf(t->parent),
             addressOf(parent));
      }
      place = next;
    } while (place != first);
  }
}

void StateMerge::mergeNode(std::int32_t number) {
  const auto* b = base_.find(number);
  const auto* o = ours_.find(number);
  const auto* t = theirs_.find(number);
  auto& node = merged_.nodes[at(number)];
  const auto parent = node.parent;
  if (!o || !t || !b) {
    node = *(o ? o : t ? t : b);
    node.parent = parent;
    node.subnodes.clear();
    node.views.clear();
    node.wires.clear();
    for (auto& side : node.publications) side.clear();
    node.arrayOutputs.clear();
    return;
  }
  const bool hasKeptKeys = options_.keys == HXNodeMatching::Keys::whereTheyAgree;
  node.key = hasKeptKeys && o->key == b->key ? t->key : o->key;
  node.nodeClass = o->nodeClass;
  node.name = pick(b->name, o->name, t->name, number, "name", HXAddresses::quoted);
  node.comment = pick(b->comment, o->comment, t->comment, number, "comment", HXAddresses::quoted);
  node.position = pick(b->position, o->position, t->position, number, "position",
                       [](HXPoint point) { return fmt::format("({}, {})", point.x, point.y); });
  const auto look = [](const auto& before, const auto& ours, const auto& theirs) {
    return ours == before ? theirs : ours;
  };
  node.selected = look(b->selected, o->selected, t->selected);
  node.inspectorPanel = look(b->inspectorPanel, o->inspectorPanel, t->inspectorPanel);
  node.canvasCenter = look(b->canvasCenter, o->canvasCenter, t->canvasCenter);
  const auto flagText = [](bool flag) { return std::string(flag ? "yes" : "no"); };
  node.forcesSubnodes = pick(b->forcesSubnodes, o->forcesSubnodes, t->forcesSubnodes, number,
                             "holds nodes", flagText);
  node.opaque = pick(b->opaque, o->opaque, t->opaque, number, "opaque", flagText);
  node.showsViews = look(b->showsViews, o->showsViews, t->showsViews);
  mergeShape(number, *b, *o, *t);
  mergeValues(number, *b, *o, *t);
  mergePortGroups(number, *b, *o, *t);
}

void StateMerge::mergeShape(std::int32_t number, const Node& b, const Node& o, const Node& t) {
  auto& node = merged_.nodes[at(number)];
  node.patchClass = pick(
      b.patchClass, o.patchClass, t.patchClass, number, "patch",
      [&](const String& name) { return patchText(name == o.patchClass ? o : t); },
      Kind::patchReplaced);
  const bool byTheirs = node.patchClass == t.patchClass && node.patchClass != o.patchClass;
  const auto& first = byTheirs ? t : o;
  const auto& second = byTheirs ? o : t;
  node.patch = first.patch;
  if (t.parameters == b.parameters && !byTheirs) {
    node.parameters = o.parameters;
    node.shape = o.shape;
    return;
  }
  if (o.parameters == b.parameters && (byTheirs || o.patchClass == t.patchClass)) {
    node.parameters = t.parameters;
    node.shape = t.shape;
    return;
  }
  const ByKey before(b.parameters);
  const ByKey inOurs(o.parameters);
  const ByKey inTheirs(t.parameters);
  const auto valueOf = [](const ByKey<State::Parameter>& in, const String& key) {
    const auto* parameter = in[key];
    return parameter ? parameter->value : HXStateValue();
  };
  node.parameters = first.parameters;
  const auto& inFirst = byTheirs ? inTheirs : inOurs;
  for (const auto& parameter : second.parameters) {
    if (!inFirst[parameter.key] && !before[parameter.key]) node.parameters.push_back(parameter);
  }
  for (auto& parameter : node.parameters) {
    const auto ours = valueOf(inOurs, parameter.key);
    const auto theirs = valueOf(inTheirs, parameter.key);
    if (ours.isNone() || theirs.isNone()) continue;
    parameter.value = pick(valueOf(before, parameter.key), ours, theirs, number,
                           HXAddresses::escaped(parameter.key.view()),
                           [](const HXStateValue& value) { return value.description(); });
  }
  node.shape = o.shape == t.shape ? o.shape : 0;
}

void StateMerge::mergeValues(std::int32_t number, const Node& b, const Node& o, const Node& t) {
  auto& node = merged_.nodes[at(number)];
  if (t.values == b.values) {
    node.values = o.values;
    return;
  }
  if (o.values == b.values) {
    node.values = t.values;
    return;
  }
  const auto indexOf = [](const Node& of) {
    std::unordered_map<String, HXStateValue> values;
    for (const auto& value : of.values) values.emplace(value.key, value.value);
    return values;
  };
  auto before = indexOf(b);
  auto ours = indexOf(o);
  auto theirs = indexOf(t);
  std::unordered_set<String> met;
  for (const auto* list : {&o.values, &t.values, &b.values}) {
    for (const auto& value : *list) {
      if (!met.insert(value.key).second) continue;
      const auto picked = pick(before[value.key], ours[value.key], theirs[value.key], number,
                               portText(branchWith(number), {number, 0, value.key}),
                               [](const HXStateValue& one) { return one.description(); });
      if (!picked.isNone()) node.values.push_back({value.key, picked});
    }
  }
  // In the order of the ports.
  std::unordered_map<String, std::size_t> places;
  auto& branch = branchWith(number);
  std::size_t place = 0;
  for (const auto& entry : branch.nodes[at(branch.own[at(number)])]->portsInForce()) {
    places.emplace(entry.key, place++);
  }
  std::stable_sort(node.values.begin(), node.values.end(), [&](const auto& a, const auto& c) {
    const auto first = places.find(a.key);
    const auto second = places.find(c.key);
    return (first == places.end() ? places.size() : first->second) <
           (second == places.end() ? places.size() : second->second);
  });
}

void StateMerge::mergePortGroups(std::int32_t number, const Node& b, const Node& o, const Node& t) {
  auto& node = merged_.nodes[at(number)];
  for (const auto side : kBothSides) {
    const auto keysOf = [side](const Node& of) {
      return std::unordered_set<String>(of.groupOrder[side].begin(), of.groupOrder[side].end());
    };
    const auto inOurs = keysOf(o);
    const auto inTheirs = keysOf(t);
    auto present = inOurs;
    present.insert(inTheirs.begin(), inTheirs.end());
    for (const auto& key : b.groupOrder[side]) {
      if (!inOurs.contains(key) || !inTheirs.contains(key)) present.erase(key);
    }
    node.groupOrder[side] = mergedOrder(b.groupOrder[side], o.groupOrder[side], t.groupOrder[side],
                                        present, number, "port groups", HXAddresses::quoted);
    const ByKey flaggedBefore(b.flaggedGroups[side]);
    const ByKey flaggedByUs(o.flaggedGroups[side]);
    const ByKey flaggedByThem(t.flaggedGroups[side]);
    for (const auto& key : node.groupOrder[side]) {
      const auto flagsIn = [&key](const ByKey<State::PortGroup>& flagged) {
        const auto* group = flagged[key];
        return group ? *group : State::PortGroup{key, false, false, false};
      };
      const auto before = flagsIn(flaggedBefore);
      const auto ours = flagsIn(flaggedByUs);
      const auto theirs = flagsIn(flaggedByThem);
      State::PortGroup group{key, false, false, false};
      group.hidden = ours.hidden == before.hidden ? theirs.hidden : ours.hidden;
      group.collapsedCanvas = ours.collapsedCanvas == before.collapsedCanvas
                                  ? theirs.collapsedCanvas
                                  : ours.collapsedCanvas;
      group.collapsedSidebar = ours.collapsedSidebar == before.collapsedSidebar
                                   ? theirs.collapsedSidebar
                                   : ours.collapsedSidebar;
      if (group.hidden || group.collapsedCanvas || group.collapsedSidebar) {
        node.flaggedGroups[side].push_back(group);
      }
    }
  }
}

void StateMerge::mergeSubnodes(std::int32_t number) {
  auto& node = merged_.nodes[at(number)];
  const auto* b = base_.find(number);
  const auto* o = ours_.find(number);
  const auto* t = theirs_.find(number);
  static const Node kNothing;
  const Node& before = b ? *b : kNothing;
  const Node& ours = o ? *o : before;
  const Node& theirs = t ? *t : before;
  std::unordered_set<std::int32_t> present;
  const auto gather = [&](const Node& of) {
    for (const auto subnode : of.subnodes) {
      if (isKept_[at(subnode)] && merged_.nodes[at(subnode)].parent == number) {
        present.insert(subnode);
      }
    }
  };
  gather(before);
  gather(ours);
  gather(theirs);
  const auto labelOfNode = [this](std::int32_t subnode) { return labelOf(subnode); };
  node.subnodes = mergedOrder(before.subnodes, ours.subnodes, theirs.subnodes, present, number,
                              "nodes", labelOfNode);
  std::unordered_set<std::int32_t> views;
  for (const auto* of : {&ours, &theirs}) {
    for (const auto view : of->views) {
      if (present.contains(view)) views.insert(view);
    }
  }
  // What was a view is none any more when one branch has it as another subnode.
  for (const auto* of : {&ours, &theirs}) {
    const std::unordered_set<std::int32_t> its(of->views.begin(), of->views.end());
    const std::unordered_set<std::int32_t> all(of->subnodes.begin(), of->subnodes.end());
    for (const auto view : before.views) {
      if (all.contains(view) && !its.contains(view)) views.erase(view);
    }
  }
  node.views =
      mergedOrder(before.views, ours.views, theirs.views, views, number, "views", labelOfNode);
  if (!node.views.empty()) node.showsViews = true;
  node.hasGroup = !node.subnodes.empty() || (o ? o->hasGroup : t ? t->hasGroup : before.hasGroup);
  const bool isUnknown = !node.patch && !node.patchClass.isNil();
  const bool isHeldByPatch = node.forcesSubnodes || (node.patch && node.patch->allowsSubnodes());
  if (isUnknown) return;
  if (isHeldByPatch || node.subnodes.empty()) {
    node.hasGroup = isHeldByPatch;
    return;
  }
  // Nodes that one branch put into a group that the other took away.
  node.hasGroup = node.forcesSubnodes = true;
  tell(Kind::hungOnRemoved, number, "group", o && o->hasGroup ? "kept" : "taken away",
       t && t->hasGroup ? "kept" : "taken away", "kept");
}

}  // namespace tarnkit::detail
