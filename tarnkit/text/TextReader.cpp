#include "tarnkit/text/TextReader.h"

#include <fmt/format.h>

#include <algorithm>

#include "tarnkit/model/HXDocument.h"
#include "tarnkit/model/HXModel.h"
#include "tarnkit/patches/PatchRegistry.h"
#include "tarnkit/text/TextMembers.h"
#include "tarnkit/text/TextOrder.h"
#include "tarnkit/text/TextWords.h"

namespace tarnkit::detail {
TextReader::TextReader(std::string_view text, std::string folder, HXTextFile::AbsentImages absent)
    : text_(text), folder_(std::move(folder)), absentImages_(absent) {
  registerModelClasses();
}

TextReader::~TextReader() = default;

Result<const NodeRecord*> TextReader::read() {
  auto tree = JSONTree::read(text_);
  if (!tree) return std::move(tree).status();
  tree_ = std::make_unique<JSONTree>(*std::move(tree));
  const bool isRead = readTop() && readNodes() && sortNodes() && readPlaces() && readImages() &&
                      readKinds() && makeGroups() && orderSubnodes() && readPublications() &&
                      readValues() && readWires() && readPortGroups();
  if (!isRead) return Status::failure(failureCode_, failure_);
  return static_cast<const NodeRecord*>(nodes_.front().record);
}

// The document first, as the node that it is.
bool TextReader::readTop() {
  if (!expect(tree_->root(), Kind::object)) return false;
  top_.fill(kNone);
  nodes_.emplace_back();
  nodes_.front().json = tree_->root();
  if (!readNodeMembers(nodes_.front(), true)) return false;
  const Index format = top_[text::placeIn(text::kTopMembers, text::kFormat)];
  if (format == kNone) {
    return fail(tree_->root(), fmt::format("this is no document: it has no member \"{}\": {}",
                                           text::kFormat, text::kFormatVersion));
  }
  std::int32_t version = 0;
  if (!readInt(format, version)) return false;
  if (version != text::kFormatVersion) {
    failureCode_ = StatusCode::unsupported;
    return fail(format, fmt::format("a document of form {}; this library reads form {}", version,
                                    text::kFormatVersion));
  }
  return true;
}

bool TextReader::readNodeMembers(Node& node, bool isDocument) {
  static const auto* const places = [] {
    auto* table = new std::unordered_map<std::string_view, std::size_t>;
    for (std::size_t i = 0; i < text::kNodeMembers.size(); ++i) {
      table->emplace(text::kNodeMembers[i], i);
    }
    return table;
  }();
  node.members.fill(kNone);
  if (!expect(node.json, Kind::object)) return false;
  for (const Index value : tree_->children(node.json)) {
    const auto key = tree_->key(value);
    const auto found = places->find(key);
    if (found != places->end()) {
      node.members[found->second] = value;
      continue;
    }
    const auto top = std::find(text::kTopMembers.begin(), text::kTopMembers.end(), key);
    if (!isDocument || top == text::kTopMembers.end()) {
      NearestName near(key);
      for (const auto name : text::kNodeMembers) near.consider(name);
      if (isDocument) {
        for (const auto name : text::kTopMembers) near.consider(name);
      }
      return failFor(value, node.json,
                     fmt::format("there is no member {}{}", shown(key), near.suggestion()));
    }
    top_[static_cast<std::size_t>(top - text::kTopMembers.begin())] = value;
  }
  return true;
}

bool TextReader::readNodes() {
  const Index list = top_[text::placeIn(text::kTopMembers, text::kNodes)];
  if (list != kNone) {
    if (!expect(list, Kind::array)) return false;
    nodes_.reserve(tree_->count(list) + std::size_t{1});
    for (const Index value : tree_->children(list)) {
      Node& node = nodes_.emplace_back();
      node.json = value;
      if (!readNodeMembers(node, false)) return false;
    }
  }
  byID_.reserve(nodes_.size());
  for (auto& node : nodes_) {
    const Index id = node.members[m::kID];
    if (id == kNone) continue;
    if (!expect(id, Kind::string)) return false;
    node.id = tree_->text(id);
    if (node.id.empty()) return fail(id, "an id may not be empty");
    if (node.id.find_first_of("/#") != node.id.npos) {
      return fail(id, fmt::format("the id {} has a \"/\" or a \"#\" in it", shown(node.id)));
    }
    if (!byID_.emplace(node.id, 0).second) {
      return fail(id, fmt::format("the id {} stands twice", shown(node.id)));
    }
  }
  // What nobody refers to needs no id.
  for (auto& node : nodes_) {
    while (node.id.empty()) {
      keptTexts_.push_back(HXNode::hx_newUniqueKey().toStdString());
      if (byID_.emplace(keptTexts_.back(), 0).second) node.id = keptTexts_.back();
    }
  }
  return true;
}

bool TextReader::sortNodes() {
  const auto isBefore = [](const Node& a, const Node& b) { return isIdBefore(a.id, b.id); };
  if (!std::is_sorted(nodes_.begin() + 1, nodes_.end(), isBefore)) {
    std::sort(nodes_.begin() + 1, nodes_.end(), isBefore);
  }
  for (std::uint32_t i = 0; i < nodes_.size(); ++i) byID_[nodes_[i].id] = i;
  return true;
}

bool TextReader::nodeNamed(Index value, std::uint32_t& into) {
  if (!expect(value, Kind::string)) return false;
  const auto id = tree_->text(value);
  const auto found = byID_.find(id);
  if (found == byID_.end()) {
    NearestName near(id);
    for (const auto& node : nodes_) near.consider(node.id);
    return fail(value, fmt::format("there is no node {}{}", shown(id), near.suggestion()));
  }
  into = found->second;
  return true;
}

bool TextReader::readPlaces() {
  for (std::uint32_t i = 1; i < nodes_.size(); ++i) {
    Node& node = nodes_[i];
    const Index in = node.members[m::kIn];
    if (in != kNone && !nodeNamed(in, node.parent)) return false;
    if (node.parent == i) return fail(in, "a node stands in itself");
    ++nodes_[node.parent].childCount;
  }
  // How deep each stands, a level at a time, so that what is never come to stands in a circle.
  std::vector<std::vector<std::uint32_t>> below(nodes_.size());
  for (std::uint32_t i = 1; i < nodes_.size(); ++i) below[nodes_[i].parent].push_back(i);
  std::vector<std::uint32_t> reached{0};
  reached.reserve(nodes_.size());
  for (std::size_t at = 0; at < reached.size(); ++at) {
    for (const auto child : below[reached[at]]) {
      nodes_[child].depth = nodes_[reached[at]].depth + 1;
      reached.push_back(child);
    }
  }
  if (reached.size() != nodes_.size()) {
    for (std::uint32_t i = 1; i < nodes_.size(); ++i) {
      if (nodes_[i].depth == 0) return fail(nodes_[i].members[m::kIn], "a node stands in itself");
    }
  }
  for (const auto name : {m::kIn, m::kAfter, m::kView, m::kAbove}) {
    const Index value = nodes_.front().members[name];
    if (value != kNone) return fail(value, "the document stands in no group");
  }
  return true;
}

bool TextReader::readKinds() {
  for (std::uint32_t i = 0; i < nodes_.size(); ++i) {
    Node& node = nodes_[i];
    if (!readPatch(node) || !readKind(node, i == 0) || !readState(node, i == 0) ||
        !readParameters(node) || !readPorts(node)) {
      return false;
    }
  }
  auto* store = makeRecord<ImageStoreRecord>();
  store->entries.assign(images_.begin(),
                        images_.begin() + static_cast<std::ptrdiff_t>(storedImages_));
  nodes_.front().record->images = store;
  return true;
}

const HXRNodeClass* TextReader::patchNamed(std::string_view name, bool& isAmbiguous) {
  if (const auto* patch = patchClassNamed(name)) return patch;
  if (!patchesByName_) {
    patchesByName_ = std::make_unique<Table<const HXRNodeClass*>>();
    for (const auto* patch : catalogue()) {
      const auto [known, isNew] = patchesByName_->emplace(patch->defaultName().view(), patch);
      if (!isNew) known->second = nullptr;
    }
  }
  const auto found = patchesByName_->find(name);
  isAmbiguous = found != patchesByName_->end() && !found->second;
  return found == patchesByName_->end() ? nullptr : found->second;
}

bool TextReader::readPatch(Node& node) {
  const Index value = node.members[m::kPatch];
  if (value == kNone || tree_->kind(value) == Kind::null) return true;
  if (!expect(value, Kind::string)) return false;
  const auto name = tree_->text(value);
  bool isAmbiguous = false;
  const auto* patch = patchNamed(name, isAmbiguous);
  if (patch) {
    node.shape = &shapes_.of(*patch);
    return true;
  }
  if (isAmbiguous) {
    return fail(value, fmt::format("several patches are called {}; name the class", shown(name)));
  }
  node.isExplicit = true;
  if (node.members[m::kPorts] != kNone) return true;
  NearestName near(name);
  for (const auto* known : catalogue()) {
    near.consider(known->name());
    near.consider(known->defaultName());
  }
  return fail(value, fmt::format("there is no patch {}{}", shown(name), near.suggestion()));
}

bool TextReader::readKind(Node& node, bool isDocument) {
  const Index value = node.members[m::kClass];
  const Class* nodeClass = &HXNode::kClass;
  if (isDocument) {
    if (value != kNone) return fail(value, "the document is of no other class");
    nodeClass = &HXDocument::kClass;
  } else if (value != kNone) {
    if (!expect(value, Kind::string)) return false;
    const auto name = tree_->text(value);
    if (!text::isNodeClass(name)) {
      return fail(value, fmt::format("there is no class of nodes {}{}", shown(name),
                                     nearest(name, text::kNodeClasses)));
    }
    nodeClass = ClassRegistry::classNamed(name);
  } else if (node.shape) {
    const auto name = node.shape->patch->nodeClassName();
    if (text::isNodeClass(name)) nodeClass = ClassRegistry::classNamed(name);
  }
  node.record = makeRecord<NodeRecord>(*nodeClass);
  NodeRecord& record = *node.record;
  record.isReplicator = nodeClass->name() == std::string_view("HXReplicatorNode");
  if (node.shape) {
    record.patchClass = node.shape->patch->nameString();
  } else if (node.isExplicit) {
    record.patchClass = shared(tree_->text(node.members[m::kPatch]));
  }
  record.key = String(node.id);
  if (const Index key = node.members[m::kKey]; key != kNone && !readText(key, record.key)) {
    return false;
  }
  record.name = text::usualName(node.shape ? node.shape->patch : nullptr, node.isExplicit);
  if (const Index name = node.members[m::kName]; name != kNone) {
    if (!readText(name, record.name, true)) return false;
  }
  const Index comment = node.members[m::kComment];
  return comment == kNone || readText(comment, record.comment, true);
}

bool TextReader::readState(Node& node, bool isDocument) {
  NodeRecord& record = *node.record;
  // What others stand in holds nodes, or they would be lost.
  const bool patchHoldsNodes =
      node.isExplicit || (node.shape && node.shape->patch->allowsSubnodes());
  record.forceAllowsSubnodes = isDocument || (node.childCount != 0 && !patchHoldsNodes);
  const auto readMember = [&](std::size_t member, auto read) {
    const Index value = node.members[member];
    return value == kNone || read(value);
  };
  float position[2] = {0, 0};
  const bool isRead =
      readMember(m::kPosition, [&](Index value) { return readFloats(value, position, 2); }) &&
      readMember(m::kSelected, [&](Index value) { return readBool(value, record.selected); }) &&
      readMember(m::kInspectorPanel,
                 [&](Index value) { return readInt(value, record.inspectorPanel); }) &&
      readMember(m::kForceAllowsSubnodes,
                 [&](Index value) { return readBool(value, record.forceAllowsSubnodes); });
  record.x = position[0];
  record.y = position[1];
  return isRead;
}

std::string TextReader::patchNameOf(const Node& node) const {
  if (node.shape) return node.shape->patch->defaultName().toStdString();
  if (node.isExplicit) return shown(node.record->patchClass);
  return "a node without a patch";
}

// All ports that go without saying stand in the records, as they stand in an archive, and beside
// them those that the text tells of.
bool TextReader::readPorts(Node& node) {
  if (node.shape) {
    node.shapePorts.reserve(node.shape->ports.size());
    node.record->ports.reserve(node.shape->ports.size());
    for (const auto& known : node.shape->ports) {
      auto* port = makeRecord<PortRecord>(false);
      port->orientation = known.orientation;
      port->relationship = known.relationship;
      node.shapePorts.push_back(port);
      node.record->ports.push_back({known.key, port});
    }
  }
  const Index list = node.members[m::kPorts];
  if (list != kNone) {
    if (!expect(list, Kind::array)) return false;
    for (const Index value : tree_->children(list)) {
      if (!readPort(node, value)) return false;
    }
  }
  return true;
}

bool TextReader::readPort(Node& node, Index value) {
  static constexpr std::array<std::string_view, 3> kMembers{text::kKey, text::kOrientation,
                                                            text::kRelationship};
  std::array<Index, 3> members;
  String key;
  std::int32_t orientation = 0;
  if (!readMembers(value, kMembers, members)) return false;
  if (members[0] == kNone || members[1] == kNone) {
    return fail(value, "a port needs a \"key\" and an \"orientation\"");
  }
  if (!readText(members[0], key)) return false;
  if (!readCode(members[1], "input", "output", orientation)) return false;
  std::int32_t relationship = text::usualRelationship(orientation);
  if (members[2] != kNone && !readCode(members[2], "many", "one", relationship)) return false;
  if (node.morePorts && node.morePorts->contains(key.view())) {
    return fail(value, fmt::format("the port {} stands twice", shown(key)));
  }
  const auto* known = node.shape ? node.shape->portForKey(key) : nullptr;
  if (!known) {
    addPort(node, key, orientation, relationship);
    return true;
  }
  PortRecord* port = node.shapePorts[static_cast<std::size_t>(known - node.shape->ports.data())];
  port->orientation = orientation;
  port->relationship = relationship;
  return true;
}

PortRecord* TextReader::addPort(Node& node, const String& key, std::int32_t orientation,
                                std::int32_t relationship) {
  auto* port = makeRecord<PortRecord>(false);
  port->orientation = orientation;
  port->relationship = relationship;
  node.record->ports.push_back({key, port});
  if (!node.morePorts) node.morePorts = std::make_unique<Table<PortRecord*>>();
  node.morePorts->emplace(key.view(), port);
  return port;
}

// A port that others follow decides whether a group is one of views, so the deepest come first.
bool TextReader::makeGroups() {
  std::vector<std::uint32_t> order(nodes_.size());
  for (std::uint32_t i = 0; i < order.size(); ++i) order[i] = i;
  std::stable_sort(order.begin(), order.end(), [&](std::uint32_t a, std::uint32_t b) {
    return nodes_[a].depth > nodes_[b].depth;
  });
  for (const auto index : order) {
    Node& node = nodes_[index];
    const bool holdsNodes = index == 0 || node.record->forceAllowsSubnodes ||
                            (node.shape && node.shape->patch->allowsSubnodes()) ||
                            node.childCount != 0;
    node.groupKind = !holdsNodes ? text::kNoGroup : node.hasViews ? text::kViews : text::kGroup;
    if (const Index value = node.members[m::kSubnodes]; value != kNone) {
      if (!expect(value, Kind::string)) return false;
      node.groupKind = tree_->text(value);
      if (node.groupKind != text::kNoGroup && node.groupKind != text::kGroup &&
          node.groupKind != text::kViews) {
        return fail(value, fmt::format("{} is none of \"none\", \"group\", \"views\"",
                                       shown(node.groupKind)));
      }
      if (node.groupKind == text::kNoGroup && node.childCount != 0) {
        return fail(value, "there are nodes in the group");
      }
    }
    const bool ofViews = node.groupKind == text::kViews;
    if (index != 0 && (ofViews || (node.shape && node.shape->isView))) {
      nodes_[node.parent].hasViews = true;
    }
    if (!makeGroup(node)) return false;
  }
  for (std::uint32_t i = 1; i < nodes_.size(); ++i) {
    nodes_[i].record->parentGroup = nodes_[nodes_[i].parent].record->group;
  }
  return true;
}

bool TextReader::makeGroup(Node& node) {
  const Index center = node.members[m::kCanvasCenter];
  const Index opaque = node.members[m::kOpaque];
  if (node.groupKind == text::kNoGroup) {
    for (const auto member :
         {m::kCanvasCenter, m::kOpaque, m::kPublishedInputs, m::kPublishedOutputs}) {
      const Index value = node.members[member];
      if (value != kNone) return fail(value, fmt::format("{} holds no nodes", patchNameOf(node)));
    }
    return true;
  }
  auto* group = makeRecord<GroupRecord>(node.groupKind == text::kViews);
  node.record->group = group;
  group->node = node.record;
  float position[2] = {0, 0};
  if (center != kNone && !readFloats(center, position, 2)) return false;
  group->centerX = position[0];
  group->centerY = position[1];
  return opaque == kNone || readBool(opaque, group->opaque);
}

bool TextReader::orderSubnodes() {
  std::vector<std::vector<std::uint32_t>> below(nodes_.size());
  for (std::uint32_t i = 1; i < nodes_.size(); ++i) below[nodes_[i].parent].push_back(i);
  std::vector<std::uint32_t> joined;
  Table<bool> keys;
  for (auto& node : nodes_) {
    const auto& children = below[static_cast<std::size_t>(&node - nodes_.data())];
    if (children.empty()) continue;
    if (!orderBy(m::kAfter, children, joined)) return false;
    keys.clear();
    for (const auto child : joined) {
      const Node& subnode = nodes_[child];
      node.record->group->subnodes.push_back(subnode.record);
      if (!keys.emplace(subnode.record->key.view(), true).second) {
        return fail(subnode.json, fmt::format("another node of the group has the key {}",
                                              shown(subnode.record->key)));
      }
    }
    if (!orderViews(node, joined)) return false;
  }
  return true;
}

bool TextReader::orderViews(Node& node, const std::vector<std::uint32_t>& joined) {
  std::vector<std::uint32_t> views;
  std::vector<std::uint32_t> ordered;
  for (const auto child : joined) {
    const Node& subnode = nodes_[child];
    bool isView = (subnode.shape && subnode.shape->isView) || subnode.groupKind == text::kViews;
    const Index told = subnode.members[m::kView];
    if (told != kNone && !readBool(told, isView)) return false;
    const Index above = subnode.members[m::kAbove];
    if (node.groupKind != text::kViews && (told != kNone || above != kNone)) {
      return fail(told != kNone ? told : above, "the node stands in no group of views");
    }
    if (!isView && above != kNone) return fail(above, "the node is no view");
    if (isView) views.push_back(child);
  }
  if (node.groupKind != text::kViews) return true;
  if (!orderBy(m::kAbove, views, ordered)) return false;
  for (const auto child : ordered) node.record->group->views.push_back(nodes_[child].record);
  return true;
}

bool TextReader::orderBy(std::size_t member, const std::vector<std::uint32_t>& base,
                         std::vector<std::uint32_t>& into) {
  into.clear();
  const auto told = [&](std::uint32_t index) { return nodes_[index].members[member]; };
  if (std::none_of(base.begin(), base.end(), [&](auto index) { return told(index) != kNone; })) {
    into = base;
    return true;
  }
  constexpr std::uint32_t kBeginning = 0;  // the document stands in no group
  const std::unordered_map<std::uint32_t, bool> members = [&] {
    std::unordered_map<std::uint32_t, bool> table;
    for (const auto index : base) table.emplace(index, true);
    return table;
  }();
  std::unordered_map<std::uint32_t, std::vector<std::uint32_t>> followers;
  for (const auto index : base) {
    const Index value = told(index);
    std::uint32_t before = kBeginning;
    if (value == kNone) continue;
    if (tree_->kind(value) != Kind::null) {
      if (!nodeNamed(value, before)) return false;
      if (!members.contains(before)) return fail(value, "that node does not stand beside this one");
    }
    followers[before].push_back(index);
  }
  std::vector<std::uint32_t> pending;
  const auto pushFollowers = [&](std::uint32_t index) {
    const auto found = followers.find(index);
    if (found == followers.end()) return;
    pending.insert(pending.end(), found->second.rbegin(), found->second.rend());
  };
  const auto work = [&] {
    while (!pending.empty()) {
      const auto index = pending.back();
      pending.pop_back();
      into.push_back(index);
      pushFollowers(index);
    }
  };
  pushFollowers(kBeginning);
  work();
  for (const auto index : base) {
    if (told(index) != kNone) continue;
    pending.push_back(index);
    work();
  }
  if (into.size() == base.size()) return true;
  for (const auto index : base) {
    if (std::find(into.begin(), into.end(), index) == into.end()) {
      return fail(told(index), "the node stands behind itself");
    }
  }
  return false;
}

}  // namespace tarnkit::detail
