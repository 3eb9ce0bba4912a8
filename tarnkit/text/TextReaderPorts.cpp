#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <numeric>

#include "tarnkit/patches/PMRPrimitive.h"
#include "tarnkit/text/TextGraph.h"
#include "tarnkit/text/TextMembers.h"
#include "tarnkit/text/TextOrder.h"
#include "tarnkit/text/TextReader.h"
#include "tarnkit/text/TextWords.h"

// What a text says of ports: how it calls them, which are published, their values and port groups.

namespace tarnkit::detail {

namespace {

std::string_view nameOfSide(std::int32_t side) noexcept {
  return side == HXOrientationInput ? "input" : side == HXOrientationOutput ? "output" : "port";
}

// The name of a group of published ports is what stands before the colon in theirs.
String groupOfName(const String& name) {
  const auto colon = name.view().find(':');
  return colon == std::string_view::npos ? String("Published")
                                         : String(name.view().substr(0, colon));
}

}  // namespace

const PatchShape& TextReader::fullShape(Node& node) {
  if (!node.fullShape) node.fullShape = &shapes_.of(*node.shape->patch, node.told);
  return *node.fullShape;
}

PortRecord* TextReader::patchPort(Node& node, std::string_view key) {
  if (node.morePorts) {
    const auto found = node.morePorts->find(key);
    if (found != node.morePorts->end()) return found->second;
  }
  if (!node.shape) return nullptr;
  if (const auto* known = node.shape->portForKey(key)) {
    return node.shapePorts[static_cast<std::size_t>(known - node.shape->ports.data())];
  }
  const auto* known = fullShape(node).portForKey(key);
  return known ? addPort(node, known->key, known->orientation, known->relationship) : nullptr;
}

const TextReader::Table<TextReader::Named>& TextReader::namedPorts(Node& node, std::int32_t side) {
  auto& table = node.portsByName[side];
  if (table) return *table;
  table = std::make_unique<Table<Named>>();
  if (node.shape) {
    for (const auto& port : fullShape(node).ports) {
      if (port.orientation != side) continue;
      const auto [known, isNew] = table->emplace(port.name.view(), Named{port.key, nullptr, false});
      if (!isNew) known->second.isAmbiguous = true;
    }
  }
  for (auto* port : node.published[side]) {
    if (port->name.isNil()) continue;
    const auto [known, isNew] = table->emplace(port->name.view(), Named{{}, port, false});
    if (!isNew) known->second.isAmbiguous = true;
  }
  return *table;
}

// A key begins with no "#", which begins a number, unless a "/" stands before it.
bool TextReader::resolveMember(const Mention& mention, std::string_view member, Address& into) {
  if (member.starts_with('#')) return resolveNumber(mention, member.substr(1), into);
  if (member.starts_with('/')) member.remove_prefix(1);
  return resolveKey(mention, member, into);
}

bool TextReader::resolveKey(const Mention& mention, std::string_view key, Address& into) {
  Node& node = nodes_[mention.node];
  into.node = mention.node;
  if (auto* port = patchPort(node, key)) {
    into.port = port;
    into.key = key;
    into.isPublished = false;
    return true;
  }
  if (node.publishedByKey) {
    const auto found = node.publishedByKey->find(key);
    if (found != node.publishedByKey->end()) {
      into.port = found->second;
      into.key = key;
      into.isPublished = true;
      return true;
    }
  }
  return resolveName(mention, key, into);
}

bool TextReader::resolveName(const Mention& mention, std::string_view name, Address& into) {
  Node& node = nodes_[mention.node];
  const Named* named = nullptr;
  bool isAmbiguous = false;
  for (const auto side : kBothSides) {
    if (mention.side != 0 && mention.side != side) continue;
    const auto& table = namedPorts(node, side);
    const auto found = table.find(name);
    if (found == table.end()) continue;
    isAmbiguous = named != nullptr || found->second.isAmbiguous;
    named = &found->second;
  }
  if (isAmbiguous) {
    return failFor(mention.at, mention.path,
                   fmt::format("several ports of {} are called {}; give the key", patchNameOf(node),
                               shown(name)));
  }
  if (!named) {
    NearestName near(name);
    if (node.shape) {
      for (const auto& port : fullShape(node).ports) {
        near.consider(port.key.view());
        near.consider(port.name.view());
      }
    }
    if (node.publishedByKey) {
      for (const auto& entry : *node.publishedByKey) near.consider(entry.first);
    }
    return failFor(mention.at, mention.path,
                   fmt::format("{} has no {} {}{}", patchNameOf(node), nameOfSide(mention.side),
                               shown(name), near.suggestion()));
  }
  into.node = mention.node;
  into.isPublished = named->published != nullptr;
  into.port = into.isPublished ? named->published : patchPort(node, named->key);
  into.key = named->key;
  if (into.isPublished) into.key = into.port->publishedKey;
  return true;
}

bool TextReader::resolveNumber(const Mention& mention, std::string_view number, Address& into) {
  Node& node = nodes_[mention.node];
  const std::string_view whole = number;
  const bool isInput = number.starts_with("in");
  const auto side = isInput ? HXOrientationInput : HXOrientationOutput;
  std::uint32_t place = 0;
  bool isRead = isInput || number.starts_with("out");
  if (isRead) {
    number.remove_prefix(isInput ? 2 : 3);
    const char* const last = number.data() + number.size();
    const auto [end, error] = std::from_chars(number.data(), last, place);
    isRead = error == std::errc() && end == last && place < node.published[side].size();
  }
  if (!isRead) {
    return failFor(mention.at, mention.path,
                   fmt::format("there is no published port {}", shown(whole)));
  }
  auto* port = node.published[side][place];
  into = {port, mention.node, std::string(port->publishedKey), true};
  return true;
}

bool TextReader::resolveAddress(Index value, Index path, std::int32_t side, Address& into) {
  if (!expect(value, Kind::string)) return false;
  const auto address = tree_->text(value);
  const auto end = address.find_first_of("/#");
  if (end == address.npos) {
    return failFor(value, path,
                   fmt::format("{} is no port; one is written \"NODE/PORT\"", shown(address)));
  }
  const auto found = byID_.find(address.substr(0, end));
  if (found == byID_.end()) {
    NearestName near(address.substr(0, end));
    for (const auto& node : nodes_) near.consider(node.id);
    return failFor(
        value, path,
        fmt::format("there is no node {}{}", shown(address.substr(0, end)), near.suggestion()));
  }
  const Mention mention{found->second, value, path, side};
  const auto rest = address.substr(end + 1);
  return address[end] == '#' ? resolveNumber(mention, rest, into) : resolveKey(mention, rest, into);
}

const PortRecord* TextReader::resolved(const PortRecord* port) const {
  for (std::size_t steps = 0; port && port->isPublished; port = port->inner) {
    if (++steps > publications_.size()) return nullptr;
  }
  return port;
}

// The innermost nodes first, since what stands for a published port is called after it.
bool TextReader::readPublications() {
  for (std::uint32_t i = 0; i < nodes_.size(); ++i) {
    for (const auto side : kBothSides) {
      const Index list =
          nodes_[i]
              .members[side == HXOrientationInput ? m::kPublishedInputs : m::kPublishedOutputs];
      if (list == kNone) continue;
      if (!expect(list, Kind::array)) return false;
      for (const Index value : tree_->children(list)) {
        if (!readPublication(i, side, value)) return false;
      }
    }
    if (!readArrayOutputKeys(nodes_[i])) return false;
  }
  std::vector<std::size_t> order(publications_.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
    return nodes_[publications_[a].node].depth > nodes_[publications_[b].node].depth;
  });
  for (const auto index : order) {
    if (!settlePublication(publications_[index], false)) return false;
  }
  for (const auto index : order) {
    if (!settlePublication(publications_[index], true)) return false;
  }
  if (!finishPublications()) return false;
  for (auto& node : nodes_) {
    if (!readArrayOutputs(node)) return false;
  }
  return true;
}

bool TextReader::readPublication(std::uint32_t index, std::int32_t side, Index value) {
  static constexpr std::array<std::string_view, 5> kMembers{
      text::kPort, text::kName, text::kOrientation, text::kRelationship, text::kLinked};
  Publication publication;
  publication.node = index;
  publication.side = side;
  publication.json = value;
  publication.record = makeRecord<PortRecord>(true);
  publication.record->orientation = side;
  if (tree_->kind(value) == Kind::object) {
    std::array<Index, 5> members;
    if (!readMembers(value, kMembers, members)) return false;
    if (members[0] == kNone) return fail(value, "a published port needs a \"port\"");
    if (tree_->kind(members[0]) != Kind::null) publication.port = members[0];
    publication.name = members[1];
    if (members[2] != kNone &&
        !readCode(members[2], "input", "output", publication.record->orientation)) {
      return false;
    }
    publication.relationship = members[3];
    publication.linked = members[4];
  } else {
    publication.port = value;
  }
  publication.record->publishedSide = side;
  publication.record->publishedPlace = nodes_[index].published[side].size();
  nodes_[index].published[side].push_back(publication.record);
  nodes_[index].record->group->published[side].push_back(publication.record);
  publications_.push_back(publication);
  return true;
}

// One that stands for a published port of a node that is not below is looked for at last, when all
// have their keys.
bool TextReader::settlePublication(Publication& publication, bool isLast) {
  if (publication.isSettled) return true;
  PortRecord& record = *publication.record;
  Node& node = nodes_[publication.node];
  if (publication.port != kNone) {
    if (!expect(publication.port, Kind::string)) return false;
    const auto address = tree_->text(publication.port);
    const auto found = byID_.find(address.substr(0, address.find_first_of("/#")));
    if (found != byID_.end() && !isLast && nodes_[found->second].depth <= node.depth) {
      const auto end = address.find('/');
      if (end == address.npos || !patchPort(nodes_[found->second], address.substr(end + 1))) {
        return true;
      }
    }
    Address inner;
    if (!resolveAddress(publication.port, publication.port, publication.side, inner)) return false;
    if (inner.port == &record) return fail(publication.json, "a port publishes itself");
    record.inner = inner.port;
    const Node& innerNode = nodes_[inner.node];
    if (!inner.key.empty() && (!inner.isPublished || innerNode.depth > node.depth)) {
      std::string key = publishedKey(innerNode.record->key, inner.key);
      if (!key.empty() && !patchPort(node, key)) {
        if (!node.publishedByKey) node.publishedByKey = std::make_unique<Table<PortRecord*>>();
        keptTexts_.push_back(std::move(key));
        if (node.publishedByKey->emplace(keptTexts_.back(), &record).second) {
          record.publishedKey = keptTexts_.back();
        }
      }
    }
    if (!inner.isPublished && publication.name == kNone) {
      Node& publisher = nodes_[inner.node];
      const auto* known = publisher.shape ? fullShape(publisher).portForKey(inner.key) : nullptr;
      if (known) record.name = known->name;
    }
  }
  publication.isSettled = true;
  if (publication.name != kNone) {
    if (!readText(publication.name, record.name, true)) return false;
  } else if (record.inner && record.inner->isPublished) {
    record.name = record.inner->name;
  }
  return true;
}

// What a published port has of the one that it stands for.
bool TextReader::finishPublications() {
  for (auto& publication : publications_) {
    PortRecord& record = *publication.record;
    if (publication.relationship != kNone) {
      if (!readCode(publication.relationship, "many", "one", record.relationship)) return false;
    } else if (!record.inner) {
      record.relationship = text::usualRelationship(publication.side);
    }
  }
  std::vector<std::size_t> order(publications_.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
    return nodes_[publications_[a].node].depth > nodes_[publications_[b].node].depth;
  });
  for (const auto index : order) {
    PortRecord& record = *publications_[index].record;
    if (publications_[index].relationship != kNone || !record.inner) continue;
    record.relationship = record.inner->relationship;
    if (record.relationship != 0 || !record.inner->isPublished) continue;
    const auto* end = resolved(&record);
    record.relationship =
        end ? end->relationship : text::usualRelationship(publications_[index].side);
  }
  for (auto& publication : publications_) {
    PortRecord& record = *publication.record;
    auto* inner = const_cast<PortRecord*>(record.inner);
    if (!inner) continue;
    bool isLinked = !std::exchange(inner->isPublishedAlready, true);
    if (publication.linked != kNone && !readBool(publication.linked, isLinked)) return false;
    if (isLinked) inner->symbolicPort = &record;
  }
  return true;
}

// The outputs by which a replicator collects what is published within are ports like any other.
bool TextReader::readArrayOutputKeys(Node& node) {
  static constexpr std::array<std::string_view, 2> kMembers{text::kKey, text::kPort};
  const Index list = node.members[m::kArrayOutputs];
  if (list == kNone) return true;
  if (!node.record->isReplicator) return fail(list, "only a replicator has array outputs");
  if (!expect(list, Kind::array)) return false;
  Table<bool> keys;
  for (const Index value : tree_->children(list)) {
    std::array<Index, 2> members;
    String key;
    if (!readMembers(value, kMembers, members)) return false;
    if (members[0] == kNone || members[1] == kNone) {
      return fail(value, "an array output needs a \"key\" and a \"port\"");
    }
    if (!readText(members[0], key)) return false;
    if (!keys.emplace(tree_->text(members[0]), true).second) {
      return fail(value, fmt::format("the array output {} stands twice", shown(key)));
    }
    if (!patchPort(node, key)) {
      addPort(node, key, HXOrientationOutput, HXConnectionRelationshipMany);
    }
  }
  return true;
}

bool TextReader::readArrayOutputs(Node& node) {
  static constexpr std::array<std::string_view, 2> kMembers{text::kKey, text::kPort};
  const Index list = node.members[m::kArrayOutputs];
  if (list == kNone) return true;
  for (const Index value : tree_->children(list)) {
    std::array<Index, 2> members;
    if (!readMembers(value, kMembers, members)) return false;
    if (tree_->kind(members[1]) == Kind::null) continue;
    Address address;
    if (!resolveAddress(members[1], members[1], HXOrientationOutput, address)) return false;
    node.record->arrayOutputs.push_back({shared(tree_->text(members[0])), address.port});
  }
  return true;
}

bool TextReader::readValues() {
  for (std::uint32_t i = 0; i < nodes_.size(); ++i) {
    const Index list = nodes_[i].members[m::kValues];
    if (list == kNone) continue;
    if (!expect(list, Kind::object)) return false;
    for (const Index value : tree_->children(list)) {
      Address address;
      const Mention mention{i, value, list, HXOrientationInput};
      if (!resolveMember(mention, tree_->key(value), address)) return false;
      if (address.isPublished) return failFor(value, list, "a published port has no value");
      if (!readValue(nodes_[i], value, address)) return false;
    }
  }
  return readSameValues();
}

bool TextReader::readValue(Node& node, Index value, const Address& address) {
  static constexpr std::array<std::string_view, 3> kMembers{text::kKind, text::kValue,
                                                            text::kSameAs};
  PortRecord& port = *address.port;
  if (port.value || port.hasSameValue) return fail(value, "the port has a value already");
  const auto* known = node.shape ? node.shape->portForKey(address.key) : nullptr;
  const auto usual = text::usualNumber(known ? known->valueKind : PMRPrimitive::nil);
  if (tree_->kind(value) != Kind::object) {
    port.value = make<ValueRecord>();
    return readPlainValue(value, usual, *port.value);
  }
  std::array<Index, 3> members;
  if (!readMembers(value, kMembers, members)) return false;
  if (members[2] != kNone) {
    port.hasSameValue = true;
    sameValues_.push_back({members[2], &port});
    return true;
  }
  if (members[0] == kNone) return fail(value, "a \"kind\" is expected");
  port.value = make<ValueRecord>();
  return readTypedValue(members[0], members[1], *port.value);
}

// The kind follows from the form; of a number, from the port's default.
bool TextReader::readPlainValue(Index value, std::int64_t usualNumber, ValueRecord& into) {
  switch (tree_->kind(value)) {
    case Kind::boolean:
      into.kind = PMRPrimitive::boolean;
      break;
    case Kind::string:
      into.kind = PMRPrimitive::string;
      break;
    case Kind::array:
      into.kind = PMRPrimitive::color;
      break;
    case Kind::number:
      into.kind = usualNumber;
      break;
    default:
      return fail(
          value, fmt::format("{} where a value is expected", JSONTree::nameOf(tree_->kind(value))));
  }
  return readPayload(value, into);
}

bool TextReader::readTypedValue(Index kind, Index value, ValueRecord& into) {
  if (tree_->kind(kind) == Kind::number) {
    if (!readInt64(kind, into.kind)) return false;
    if (into.kind >= PMRPrimitive::nil && into.kind <= PMRPrimitive::string) {
      return fail(kind, "a kind that is known has a name");
    }
    return value == kNone || fail(value, "nobody knows what a value of that kind is");
  }
  if (!expect(kind, Kind::string)) return false;
  const auto name = tree_->text(kind);
  const auto* const found =
      std::find(std::begin(text::kValueKinds), std::end(text::kValueKinds), name);
  if (found == std::end(text::kValueKinds)) {
    NearestName near(name);
    for (const auto known : text::kValueKinds) near.consider(known);
    return fail(kind, fmt::format("there is no kind {}{}", shown(name), near.suggestion()));
  }
  into.kind = found - std::begin(text::kValueKinds);
  if (into.kind == PMRPrimitive::nil) return value == kNone || fail(value, "nil has no value");
  if (value == kNone) return fail(kind, "the \"value\" is missing");
  return readPayload(value, into);
}

bool TextReader::readPayload(Index value, ValueRecord& into) {
  switch (into.kind) {
    case PMRPrimitive::boolean:
      return readBool(value, into.boolean);
    case PMRPrimitive::index:
      return readInt(value, into.index);
    case PMRPrimitive::color:
      return readColor(value, into.color);
    case PMRPrimitive::string:
      return readText(value, into.string, true);
    default:
      return readFloat(value, into.number);
  }
}

bool TextReader::readSameValues() {
  for (const auto& same : sameValues_) {
    Address address;
    if (!resolveAddress(same.json, same.json, HXOrientationInput, address)) return false;
    if (!address.port->value) return fail(same.json, "that port has no value of its own");
    same.port->sameValueAs = address.port;
  }
  for (const auto& same : sameValues_) same.port->value = same.port->sameValueAs->value;
  return true;
}

bool TextReader::readPortGroups() {
  for (auto& node : nodes_) {
    for (const auto side : kBothSides) {
      if (!readPortGroupsOf(node, side)) return false;
    }
  }
  return true;
}

// Groups of published ports stand in the records, those of the patch only where the text tells of
// them: the others come with the patch.
bool TextReader::readPortGroupsOf(Node& node, std::int32_t side) {
  const std::size_t place = side == HXOrientationInput ? 0 : 1;
  std::vector<String> published;
  Table<bool> met;
  for (const auto* port : node.published[side]) {
    auto key = groupOfName(port->name);
    if (!met.contains(key.view())) {
      published.push_back(std::move(key));
      met.emplace(published.back().view(), true);
    }
  }
  Table<bool> told;
  if (const Index list = node.members[m::kPortGroups[place]]; list != kNone) {
    if (!expect(list, Kind::array)) return false;
    for (const Index value : tree_->children(list)) {
      if (!readPortGroup(node, side, value, met, told)) return false;
    }
  }
  for (const auto& key : published) {
    if (told.contains(key.view())) continue;
    auto* group = makePortGroup(node, side, key, true);
    group->hidden = node.record->isReplicator && side == HXOrientationOutput;
  }
  return readPortGroupOrder(node, side, published);
}

PortGroupRecord* TextReader::makePortGroup(Node& node, std::int32_t side, const String& key,
                                           bool isPublished) {
  auto* group = makeRecord<PortGroupRecord>(isPublished);
  group->key = key;
  group->groupKey = key;
  group->node = node.record;
  group->orientation = side;
  node.record->portGroups[side].push_back(group);
  return group;
}

bool TextReader::readPortGroup(Node& node, std::int32_t side, Index value,
                               const Table<bool>& published, Table<bool>& told) {
  static constexpr std::array<std::string_view, 7> kMembers{text::kKey,
                                                            text::kIsPublished,
                                                            text::kHidden,
                                                            text::kCollapsedCanvas,
                                                            text::kCollapsedSidebar,
                                                            text::kGroupKey,
                                                            text::kOrientation};
  std::array<Index, 7> members;
  String key;
  if (!readMembers(value, kMembers, members)) return false;
  if (members[0] == kNone) return fail(value, "a port group needs a \"key\"");
  if (!readText(members[0], key)) return false;
  bool isPublished = published.contains(key.view());
  const bool isHidden =
      isPublished
          ? node.record->isReplicator && side == HXOrientationOutput
          : node.shape && node.shape->patch->hiddenPortGroupKeys().contains(key.object().get());
  if (members[1] != kNone && !readBool(members[1], isPublished)) return false;
  if (!told.emplace(tree_->text(members[0]), true).second) {
    return fail(value, fmt::format("the group {} stands twice", shown(key)));
  }
  auto* group = makePortGroup(node, side, key, isPublished);
  group->hidden = isHidden;
  return (members[2] == kNone || readBool(members[2], group->hidden)) &&
         (members[3] == kNone || readBool(members[3], group->collapsedCanvas)) &&
         (members[4] == kNone || readBool(members[4], group->collapsedSidebar)) &&
         (members[5] == kNone || readText(members[5], group->groupKey, true)) &&
         (members[6] == kNone || readCode(members[6], "input", "output", group->orientation));
}

bool TextReader::readPortGroupOrder(Node& node, std::int32_t side,
                                    const std::vector<String>& published) {
  auto* order = makeRecord<PortGroupOrderRecord>();
  order->node = node.record;
  order->orientation = side;
  node.record->groupOrder[side] = order;
  const Index list = node.members[m::kPortGroupOrder[side == HXOrientationInput ? 0 : 1]];
  if (list == kNone) {
    if (node.shape) order->keys = node.shape->groupKeys[side];
    for (const auto& key : published) {
      if (std::find(order->keys.begin(), order->keys.end(), key) == order->keys.end()) {
        order->keys.push_back(key);
      }
    }
    return true;
  }
  if (!expect(list, Kind::array)) return false;
  Table<bool> met;
  for (const Index value : tree_->children(list)) {
    String key;
    if (!readText(value, key)) return false;
    if (!met.emplace(tree_->text(value), true).second) {
      return fail(value, fmt::format("the group {} stands twice", shown(key)));
    }
    order->keys.push_back(std::move(key));
  }
  return true;
}

}  // namespace tarnkit::detail
