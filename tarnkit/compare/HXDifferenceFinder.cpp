#include "tarnkit/compare/HXDifferenceFinder.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <numeric>
#include <unordered_set>

#include "tarnkit/compare/ByKey.h"
#include "tarnkit/model/HXImageStore.h"
#include "tarnkit/model/HXNodeWalk.h"
#include "tarnkit/model/HXParameter.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/model/HXReplicatorNode.h"
#include "tarnkit/patches/HXRNodeClass.h"

// What nodes are and where they stand; what joins them is the other source, HXWireFinder.cpp.

namespace tarnkit::detail {

namespace {

std::size_t at(std::int32_t number) { return static_cast<std::size_t>(number); }

bool isSamePoint(HXPoint a, HXPoint b) {
  const auto bits = [](float value) { return std::bit_cast<std::uint32_t>(value); };
  return bits(a.x) == bits(b.x) && bits(a.y) == bits(b.y);
}

std::string textOf(HXPoint point) { return fmt::format("({}, {})", point.x, point.y); }

// How a patch is called: by its name in the library, otherwise by its class.
std::string patchText(const HXDocumentState::Node& node) {
  if (node.patch && node.patch->defaultName()) {
    return HXAddresses::escaped(node.patch->defaultName().view());
  }
  return node.patchClass.isNil() ? "none" : HXAddresses::escaped(node.patchClass.view());
}

// A node of the patch with those parameters that it had before, as they are now.
Ref<HXNode> freshNode(const HXDocumentState::Node& earlier, const HXDocumentState::Node& node,
                      const HXImageStore& images) {
  const auto fresh = HXNode::makeForPatch(*node.patch);
  if (!fresh) return nullptr;
  std::unordered_set<String> had;
  for (const auto& parameter : earlier.parameters) had.insert(parameter.key);
  for (const auto& parameter : node.parameters) {
    auto* const own = had.contains(parameter.key) ? fresh->parameterForKey(parameter.key) : nullptr;
    if (own) parameter.value.giveTo(*own, images);
  }
  return fresh;
}

}  // namespace

HXDifferenceFinder::HXDifferenceFinder(const HXDocumentState& oldState,
                                       const HXDocumentState& newState,
                                       const HXNodeMatching& matching, const Nodes& oldNodes,
                                       const Nodes& newNodes)
    : old_(oldState),
      new_(newState),
      matching_(matching),
      oldNodes_(oldNodes),
      newNodes_(newNodes),
      oldPlaces_(oldState),
      removedBy_(oldState.nodes.size(), kNone),
      movedBy_(oldState.nodes.size(), kNone),
      shapedBy_(oldState.nodes.size(), kNone),
      groupLostBy_(oldState.nodes.size(), kNone),
      addedBy_(newState.nodes.size(), kNone),
      newWireOf_(oldState.connections.size(), -1),
      oldWireOf_(newState.connections.size(), -1) {}

std::vector<HXDocumentChange> HXDifferenceFinder::changes() {
  const auto count = static_cast<std::int32_t>(new_.nodes.size());
  for (std::int32_t i = 0; i < count; ++i) findNodeChanges(i);
  findRemovedNodes();
  for (std::int32_t i = 0; i < count; ++i) {
    if (oldOf(i) < 0) continue;
    findValueChanges(i);
    findPortGroupChanges(i);
    findGroupChanges(i);
    findOrderChanges(i);
    findViewState(i);
  }
  findPublications();
  findConnections();
  for (std::int32_t i = 0; i < count; ++i) {
    if (oldOf(i) < 0) continue;
    findPublicationOrder(i);
    findConnectionOrder(i);
  }
  findImages();
  // What was found while something else was looked for comes to where it belongs.
  std::vector<std::size_t> order(changes_.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(),
                   [this](std::size_t a, std::size_t b) { return ranks_[a] < ranks_[b]; });
  std::vector<HXDocumentChange> sorted;
  sorted.reserve(order.size());
  for (const auto number : order) sorted.push_back(std::move(changes_[number]));
  return sorted;
}

HXDocumentChange& HXDifferenceFinder::add(Kind kind, std::int32_t oldNumber,
                                          std::int32_t newNumber) {
  auto& change = changes_.emplace_back();
  change.kind = kind;
  change.oldNumber = oldNumber;
  change.newNumber = newNumber;
  const bool isThere = newNumber >= 0;
  const auto& node = isThere ? newNodes_[at(newNumber)] : oldNodes_[at(oldNumber)];
  auto& addresses = isThere ? newAddresses_ : oldAddresses_;
  change.address = addresses.of(*node);
  const auto* around = node->enclosingNode();
  change.place = around ? addresses.of(*around) : "/";
  if (oldNumber >= 0) change.oldKey = oldNode(oldNumber).key;
  if (isThere) change.newKey = newNode(newNumber).key;
  // What is gone is told with the group in which it was.
  auto rank = newNumber;
  for (auto place = oldNumber; rank < 0 && place >= 0; place = oldNode(place).parent) {
    rank = newOf(place);
  }
  ranks_.push_back(std::max(rank, 0));
  return change;
}

void HXDifferenceFinder::consequence(std::size_t cause, std::string text) {
  changes_[cause].consequences.push_back(std::move(text));
}

// Those below a node that came or went come and go with it, unless they were elsewhere before, or
// are elsewhere now.
void HXDifferenceFinder::findNodeChanges(std::int32_t number) {
  const auto& node = newNode(number);
  const auto older = oldOf(number);
  if (older < 0) {
    const auto outer = node.parent < 0 ? kNone : addedBy_[at(node.parent)];
    addedBy_[at(number)] = outer == kNone ? changes_.size() : outer;
    if (outer != kNone) return;
    auto& change = add(Kind::nodeAdded, -1, number);
    std::size_t below = 0;
    for (HXNodeWalk walk(*newNodes_[at(number)]); walk.next();) ++below;
    change.newText = patchText(node);
    if (below > 1) change.newText += fmt::format(", with {} nodes", below - 1);
    return;
  }
  const auto& earlier = oldNode(older);
  if (number != 0 && newOf(earlier.parent) != node.parent) {
    movedBy_[at(older)] = changes_.size();
    auto& change = add(Kind::nodeMoved, older, number);
    change.oldText = oldAddresses_.of(*oldNodes_[at(earlier.parent)]);
    change.newText = newAddresses_.of(*newNodes_[at(node.parent)]);
  }
  if (earlier.patchClass != node.patchClass) {
    shapedBy_[at(older)] = changes_.size();
    auto& change = add(Kind::patchReplaced, older, number);
    change.oldText = patchText(earlier);
    change.newText = patchText(node);
  }
  if (earlier.name != node.name) {
    auto& change = add(Kind::nodeRenamed, older, number);
    change.oldText = HXAddresses::quoted(earlier.name);
    change.newText = HXAddresses::quoted(node.name);
  }
  if (earlier.comment != node.comment) {
    auto& change = add(Kind::commentChanged, older, number);
    change.oldText = earlier.comment.isNil() ? "none" : HXAddresses::quoted(earlier.comment);
    change.newText = node.comment.isNil() ? "none" : HXAddresses::quoted(node.comment);
  }
  if (earlier.forcesSubnodes != node.forcesSubnodes) {
    if (earlier.hasGroup && !node.hasGroup) groupLostBy_[at(older)] = changes_.size();
    auto& change = add(Kind::subnodesForced, older, number);
    change.newText = node.forcesSubnodes ? "holds nodes whatever its patch"
                                         : "holds nodes only where its patch does";
  }
  if (earlier.hasGroup && !node.hasGroup && groupLostBy_[at(older)] == kNone) {
    groupLostBy_[at(older)] = shapedBy_[at(older)];
  }
  findParameterChanges(number);
}

void HXDifferenceFinder::findParameterChanges(std::int32_t number) {
  const auto older = oldOf(number);
  const auto& earlier = oldNode(older);
  const auto& node = newNode(number);
  if (earlier.parameters == node.parameters) return;
  // What a patch, or a parameter, brings along says nothing unless somebody has set it.
  const auto images = make<HXImageStore>();
  Ref<HXNode> fresh;
  const auto isBrought = [&](const State::Parameter& parameter) {
    if (!fresh && node.patch) fresh = freshNode(earlier, node, *images);
    auto* const own = fresh ? fresh->parameterForKey(parameter.key) : nullptr;
    if (!own) return false;
    if (HXStateValue::of(*own, *images) == parameter.value) return true;
    parameter.value.giveTo(*own, *images);
    return false;
  };
  const ByKey hadParameters(earlier.parameters);
  const ByKey hasParameters(node.parameters);
  for (const auto& parameter : node.parameters) {
    const auto* before = hadParameters[parameter.key];
    if (before && *before == parameter) continue;
    const bool isComparable = before && before->kind == parameter.kind;
    if (!isComparable && isBrought(parameter)) continue;
    const auto* own = newNodes_[at(number)]->parameterForKey(parameter.key);
    if (shapedBy_[at(older)] == kNone) shapedBy_[at(older)] = changes_.size();
    auto& change = add(Kind::parameterChanged, older, number);
    change.subject =
        HXAddresses::escaped(own && own->name() ? own->name().view() : parameter.key.view());
    change.subjectKey = parameter.key;
    change.oldText = before ? before->value.description() : "none";
    change.newText = parameter.value.description();
  }
  for (const auto& parameter : earlier.parameters) {
    if (hasParameters[parameter.key]) continue;
    const auto text = fmt::format("the parameter {} is gone", parameter.key.view());
    if (shapedBy_[at(older)] != kNone) {
      consequence(shapedBy_[at(older)], text);
      continue;
    }
    auto& change = add(Kind::parameterChanged, older, number);
    change.subject = HXAddresses::escaped(parameter.key.view());
    change.subjectKey = parameter.key;
    change.oldText = parameter.value.description();
    change.newText = "none";
  }
}

void HXDifferenceFinder::findRemovedNodes() {
  for (std::int32_t i = 1; i < static_cast<std::int32_t>(old_.nodes.size()); ++i) {
    const auto& node = oldNode(i);
    const auto number = at(i);
    if (movedBy_[number] == kNone && newOf(i) >= 0) movedBy_[number] = movedBy_[at(node.parent)];
    if (newOf(i) >= 0) continue;
    if (removedBy_[at(node.parent)] != kNone) {
      removedBy_[number] = removedBy_[at(node.parent)];
    } else if (groupLostBy_[at(node.parent)] != kNone) {
      removedBy_[number] = groupLostBy_[at(node.parent)];
      consequence(removedBy_[number],
                  fmt::format("removes {}", oldAddresses_.of(*oldNodes_[number])));
    } else {
      removedBy_[number] = changes_.size();
      auto& change = add(Kind::nodeRemoved, i, -1);
      std::size_t below = 0;
      for (HXNodeWalk walk(*oldNodes_[number]); walk.next();) ++below;
      change.oldText = patchText(node);
      if (below > 1) change.oldText += fmt::format(", with {} nodes", below - 1);
    }
  }
}

bool HXDifferenceFinder::isPortReplaced(std::int32_t oldNumber, const String& key) const {
  const auto number = newOf(oldNumber);
  if (number < 0) return true;
  const auto* before = oldNodes_[at(oldNumber)]->portsInForce().find(key);
  const auto* now = newNodes_[at(number)]->portsInForce().find(key);
  return !before || !now || (*before)->orientation() != (*now)->orientation() ||
         (*before)->connectionRelationship() != (*now)->connectionRelationship();
}

void HXDifferenceFinder::findValueChanges(std::int32_t number) {
  const auto older = oldOf(number);
  const auto& earlier = oldNode(older);
  const auto& node = newNode(number);
  if (earlier.values == node.values) return;
  const auto defaultText = [](const Nodes& nodes, std::int32_t of, const String& key) {
    const auto* port = nodes[at(of)]->portsInForce().find(key);
    const auto value = port ? (*port)->defaultValue() : nullptr;
    return value ? HXStateValue::of(*value).description() : std::string("none");
  };
  const auto tell = [&](const String& key, const State::PortValue* before,
                        const State::PortValue* now) {
    auto& change = add(Kind::valueChanged, older, number);
    change.subject = portLabel(newAddresses_, newNodes_, number, key);
    change.subjectKey = key;
    change.oldText = before ? before->value.description() : defaultText(oldNodes_, older, key);
    change.newText = now ? now->value.description() : defaultText(newNodes_, number, key);
  };
  const ByKey hadValues(earlier.values);
  const ByKey hasValues(node.values);
  for (const auto& value : node.values) {
    const auto* before = hadValues[value.key];
    if (!before || before->value != value.value) tell(value.key, before, &value);
  }
  for (const auto& value : earlier.values) {
    if (hasValues[value.key]) continue;
    const auto cause = isPortReplaced(older, value.key) ? shapedBy_[at(older)] : kNone;
    if (cause == kNone) {
      tell(value.key, &value, nullptr);
    } else {
      consequence(cause, fmt::format("drops the value {} of {}", value.value.description(),
                                     portLabel(oldAddresses_, oldNodes_, older, value.key)));
    }
  }
}

void HXDifferenceFinder::findPortGroupChanges(std::int32_t number) {
  const auto& earlier = oldNode(oldOf(number));
  const auto& node = newNode(number);
  for (const auto side : kBothSides) {
    const bool sameOrder = earlier.groupOrder[side] == node.groupOrder[side];
    if (sameOrder && earlier.flaggedGroups[side] == node.flaggedGroups[side]) continue;
    findPortGroupFlags(number, side);
    if (!sameOrder) findPortGroupOrder(number, side);
  }
}

void HXDifferenceFinder::findPortGroupFlags(std::int32_t number, std::int32_t side) {
  const auto older = oldOf(number);
  const auto& earlier = oldNode(older);
  const auto& node = newNode(number);
  const auto& oldKeys = earlier.groupOrder[side];
  const std::unordered_set<String> had(oldKeys.begin(), oldKeys.end());
  const ByKey wasFlagged(earlier.flaggedGroups[side]);
  const ByKey isFlagged(node.flaggedGroups[side]);
  for (const auto& key : node.groupOrder[side]) {
    const auto* before = wasFlagged[key];
    const auto* now = isFlagged[key];
    State::PortGroup expected = before ? *before : State::PortGroup();
    if (!had.contains(key)) expected.hidden = startsHidden(number, side, key);
    const State::PortGroup is = now ? *now : State::PortGroup();
    const auto tell = [&](Kind kind, const char* text) {
      auto& change = add(kind, older, number);
      change.subject = HXAddresses::escaped(key.view());
      change.subjectKey = key;
      change.newText = text;
    };
    if (expected.hidden != is.hidden) {
      tell(Kind::portGroupHidden, is.hidden ? "hidden" : "shown");
    }
    if (expected.collapsedCanvas != is.collapsedCanvas) {
      tell(Kind::portGroupCollapsed,
           is.collapsedCanvas ? "collapsed on the canvas" : "expanded on the canvas");
    }
    if (expected.collapsedSidebar != is.collapsedSidebar) {
      tell(Kind::portGroupCollapsed,
           is.collapsedSidebar ? "collapsed in the sidebar" : "expanded in the sidebar");
    }
  }
}

bool HXDifferenceFinder::startsHidden(std::int32_t number, std::int32_t side,
                                      const String& key) const {
  const HXNode* node = newNodes_[at(number)].get();
  const auto* patch = node->patch().get();
  if (patch && patch->portLayout().collection(side)->portGroupForKey(key)) {
    return newNode(number).patch->hiddenPortGroupKeys().contains(key.object().get());
  }
  return side == HXOrientationOutput && as<HXReplicatorNode>(node) != nullptr;
}

void HXDifferenceFinder::findPortGroupOrder(std::int32_t number, std::int32_t side) {
  const auto older = oldOf(number);
  const auto& oldKeys = oldNode(older).groupOrder[side];
  const auto& newKeys = newNode(number).groupOrder[side];
  // Those of `keys` that stand in `others`, too.
  const auto common = [](const std::vector<String>& keys, const std::vector<String>& others) {
    const std::unordered_set<String> among(others.begin(), others.end());
    std::vector<String> found;
    std::copy_if(keys.begin(), keys.end(), std::back_inserter(found),
                 [&](const String& key) { return among.contains(key); });
    return found;
  };
  const auto before = common(oldKeys, newKeys);
  const auto now = common(newKeys, oldKeys);
  if (before == now) return;
  const auto listed = [](const std::vector<String>& keys) {
    std::string text;
    for (const auto& key : keys) {
      text += text.empty() ? "" : ", ";
      text += HXAddresses::escaped(key.view());
    }
    return text;
  };
  auto& change = add(Kind::portGroupOrder, older, number);
  change.subject = side == HXOrientationInput ? "inputs" : "outputs";
  change.oldText = listed(before);
  change.newText = listed(now);
}

void HXDifferenceFinder::findGroupChanges(std::int32_t number) {
  const auto older = oldOf(number);
  const auto& earlier = oldNode(older);
  const auto& node = newNode(number);
  if (!earlier.hasGroup || !node.hasGroup) return;
  if (earlier.opaque != node.opaque) {
    add(Kind::groupOpacity, older, number).newText =
        node.opaque ? "the group is opaque" : "the group is not opaque";
  }
  if (earlier.showsViews != node.showsViews) {
    // Groups become groups of views, and cease to be such, as views come and go.
    const auto shouldShow = [](const HXNode& of) {
      const auto& subnodes = of.subnodeGroup()->subnodesInForce();
      return std::any_of(subnodes.begin(), subnodes.end(), [](const auto& entry) {
        return entry.value->shouldBeTreatedAsViewNode();
      });
    };
    if (shouldShow(*oldNodes_[at(older)]) == shouldShow(*newNodes_[at(number)])) {
      add(Kind::groupKind, older, number).newText =
          node.showsViews ? "the group is one of views" : "the group is none of views";
    }
  }
}

void HXDifferenceFinder::findOrderChanges(std::int32_t number) {
  const auto older = oldOf(number);
  const auto& earlier = oldNode(older);
  const auto& node = newNode(number);
  const auto isOrdered = [](const std::vector<std::int32_t>& before) {
    return std::is_sorted(before.begin(), before.end());
  };
  // The numbers of the nodes of one list in the order of the other.
  const auto ranks = [this](const std::vector<std::int32_t>& olds,
                            const std::vector<std::int32_t>& news) {
    std::unordered_map<std::int32_t, std::int32_t> places;
    for (std::size_t i = 0; i < olds.size(); ++i) {
      places.emplace(newOf(olds[i]), static_cast<std::int32_t>(i));
    }
    std::vector<std::int32_t> found;
    for (const auto subnode : news) {
      if (const auto place = places.find(subnode); place != places.end() && subnode >= 0) {
        found.push_back(place->second);
      }
    }
    return found;
  };
  if (matching_.isByKeys() && !isOrdered(ranks(earlier.subnodes, node.subnodes))) {
    add(Kind::nodeOrder, older, number);
  }
  // Nodes become views, and cease to be such, with their patches.
  const auto hasOtherViews = [&] {
    const std::unordered_set<std::int32_t> were(earlier.views.begin(), earlier.views.end());
    const std::unordered_set<std::int32_t> are(node.views.begin(), node.views.end());
    return std::any_of(node.subnodes.begin(), node.subnodes.end(), [&](std::int32_t subnode) {
      const auto before = oldOf(subnode);
      return before >= 0 && oldNode(before).parent == older &&
             were.contains(before) != are.contains(subnode) &&
             oldNodes_[at(before)]->shouldBeTreatedAsViewNode() ==
                 newNodes_[at(subnode)]->shouldBeTreatedAsViewNode();
    });
  };
  if (earlier.showsViews && node.showsViews &&
      (!isOrdered(ranks(earlier.views, node.views)) || hasOtherViews())) {
    const auto listed = [](HXAddresses& addresses, const Nodes& nodes,
                           const std::vector<std::int32_t>& views) {
      std::string text;
      for (const auto view : views) {
        text += text.empty() ? "" : ", ";
        text += addresses.labelOf(*nodes[at(view)]);
      }
      return text;
    };
    auto& change = add(Kind::viewOrder, older, number);
    change.oldText = listed(oldAddresses_, oldNodes_, earlier.views);
    change.newText = listed(newAddresses_, newNodes_, node.views);
  }
}

void HXDifferenceFinder::findViewState(std::int32_t number) {
  const auto older = oldOf(number);
  const auto& earlier = oldNode(older);
  const auto& node = newNode(number);
  if (!isSamePoint(earlier.position, node.position)) {
    auto& change = add(Kind::position, older, number);
    change.oldText = textOf(earlier.position);
    change.newText = textOf(node.position);
  }
  if (earlier.selected != node.selected) {
    add(Kind::selection, older, number).newText = node.selected ? "selected" : "not selected";
  }
  if (earlier.inspectorPanel != node.inspectorPanel) {
    auto& change = add(Kind::inspectorPanel, older, number);
    change.oldText = fmt::format("{}", earlier.inspectorPanel);
    change.newText = fmt::format("{}", node.inspectorPanel);
  }
  if (earlier.hasGroup && node.hasGroup && !isSamePoint(earlier.canvasCenter, node.canvasCenter)) {
    auto& change = add(Kind::canvasCenter, older, number);
    change.oldText = textOf(earlier.canvasCenter);
    change.newText = textOf(node.canvasCenter);
  }
}

void HXDifferenceFinder::findImages() {
  std::unordered_map<std::string_view, std::size_t> had;
  for (std::size_t i = 0; i < old_.images.size(); ++i) had.emplace(old_.images[i].key.view(), i);
  std::unordered_set<std::string_view> has;
  for (const auto& image : new_.images) has.insert(image.key.view());
  const auto sizeOf = [](const State::Image& image) {
    const auto& picture = image.entry->image();
    return picture ? fmt::format("{} × {}", picture->width(), picture->height())
                   : std::string("empty");
  };
  const auto tell = [&](Kind kind, const State::Image& image, std::string before, std::string now) {
    auto& change = add(kind, 0, 0);
    change.subject = HXAddresses::escaped(image.key.view());
    change.subjectKey = image.key;
    change.oldText = std::move(before);
    change.newText = std::move(now);
  };
  for (const auto& image : old_.images) {
    if (!has.contains(image.key.view())) tell(Kind::imageRemoved, image, sizeOf(image), "");
  }
  std::vector<std::size_t> places;
  for (const auto& image : new_.images) {
    const auto found = had.find(image.key.view());
    if (found == had.end()) {
      tell(Kind::imageAdded, image, "", sizeOf(image));
      continue;
    }
    places.push_back(found->second);
    const auto& before = old_.images[found->second];
    const auto& oldPicture = before.entry->image();
    const auto& newPicture = image.entry->image();
    const bool isSame = before.entry == image.entry || oldPicture == newPicture ||
                        (oldPicture && newPicture && oldPicture->isEqual(*newPicture));
    if (!isSame) tell(Kind::imageChanged, image, sizeOf(before), sizeOf(image));
    if (before.count != image.count) {
      tell(Kind::imageCount, image, fmt::format("{}", before.count),
           fmt::format("{}", image.count));
    }
  }
  if (!std::is_sorted(places.begin(), places.end())) add(Kind::imageOrder, 0, 0);
}

}  // namespace tarnkit::detail
