#include "tarnkit/editing/HXClipboard.h"

#include <fmt/format.h>

#include <unordered_map>
#include <unordered_set>

#include "tarnkit/archive/HXCoding.h"
#include "tarnkit/editing/HXClipboardContents.h"
#include "tarnkit/editing/HXHistory.h"
#include "tarnkit/model/HXDecodedNodes.h"
#include "tarnkit/model/HXDocument.h"
#include "tarnkit/model/HXNodeWalk.h"
#include "tarnkit/model/HXParameterKinds.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tarnkit/platform/coding/StandardKeyedArchiver.h"
#include "tarnkit/platform/coding/StandardKeyedUnarchiver.h"
#include "tarnkit/platform/system/Log.h"

namespace tarnkit {

namespace {

using Nodes = std::vector<Ref<HXNode>>;
using NodeSet = std::unordered_set<const HXNode*>;

// The nodes that no other of them encloses, each once. Every level is climbed once.
Nodes outermostOf(const Nodes& nodes) {
  NodeSet chosen;
  for (const auto& node : nodes) chosen.insert(node.get());
  std::unordered_map<const HXNode*, bool> isWithin;
  const auto isEnclosed = [&](const HXNode& node) {
    std::vector<const HXNode*> climbed;
    bool enclosed = false;
    for (const HXNode* at = node.enclosingNode(); at; at = at->enclosingNode()) {
      enclosed = chosen.contains(at);
      if (enclosed) break;
      if (const auto known = isWithin.find(at); known != isWithin.end()) {
        enclosed = known->second;
        break;
      }
      climbed.push_back(at);
    }
    for (const auto* at : climbed) isWithin.emplace(at, enclosed);
    return enclosed;
  };
  Nodes outermost;
  NodeSet taken;
  for (const auto& node : nodes) {
    if (node && taken.insert(node.get()).second && !isEnclosed(*node)) outermost.push_back(node);
  }
  return outermost;
}

/// The chosen nodes with everything below them.
class Choice {
 public:
  explicit Choice(const Nodes& nodes) : outermost(outermostOf(nodes)) {
    std::vector<const HXNode*> roots;
    for (const auto& node : outermost) roots.push_back(node.get());
    all = detail::nodesWithin(roots);
  }

  Status check() const {
    if (outermost.empty()) return Status::failure(StatusCode::refused, "there is nothing to copy");
    for (const auto& node : outermost) {
      if (node->asDocument()) {
        return Status::failure(StatusCode::refused, "a document cannot be copied");
      }
    }
    return {};
  }

  bool hasNodeOf(const HXPort* port) const { return port && all.contains(port->node()); }

  /// Whether it begins and ends here, and both ends know of it.
  bool joins(const HXConnection& connection) const {
    const auto holds = [&](const HXPort* port) {
      return hasNodeOf(port) && port->connections().contains(&connection);
    };
    return holds(connection.outputPort()) && holds(connection.inputPort());
  }

  /// Whether a copy has the object: for what something copied refers to.
  bool copies(const Object& object) const {
    if (const auto* node = as<HXNode>(&object)) return all.contains(node);
    if (const auto* group = as<HXGroup>(&object)) return all.contains(group->node());
    if (const auto* connection = as<HXConnection>(&object)) return joins(*connection);
    const auto* port = as<HXPort>(&object);
    if (!port) return true;
    // A group may publish a port of a node that was moved elsewhere.
    const auto* symbolicPort = as<HXSymbolicPort>(port);
    return hasNodeOf(port) &&
           (!symbolicPort || !symbolicPort->port() || hasNodeOf(symbolicPort->port()));
  }

  std::vector<Ref<HXConnection>> connections() const;

  Nodes outermost;
  NodeSet all;
};

// In an order in which every port, of the outputs and of the inputs, finds its connections in its
// own order: that in which they were made, mostly.
std::vector<Ref<HXConnection>> Choice::connections() const {
  std::vector<Ref<HXConnection>> met;
  std::unordered_map<const HXConnection*, std::size_t> places;
  std::vector<std::vector<std::size_t>> followers;
  std::vector<std::size_t> waitsFor;
  constexpr auto kNone = static_cast<std::size_t>(-1);
  const auto visitPort = [&](const HXPatchPort& port) {
    std::size_t before = kNone;
    port.connections().forEach([&](HXConnection& connection) {
      if (!joins(connection)) return;
      const auto place = places.emplace(&connection, met.size()).first->second;
      if (place == met.size()) {
        met.emplace_back(&connection);
        followers.emplace_back();
        waitsFor.push_back(0);
      }
      if (before != kNone) {
        followers[before].push_back(place);
        ++waitsFor[place];
      }
      before = place;
    });
  };
  for (const auto& root : outermost) {
    for (HXNodeWalk walk(*root); const HXNode* node = walk.next();) {
      for (const auto& entry : node->portsInForce()) visitPort(*entry.value);
    }
  }
  std::vector<std::size_t> order;
  for (std::size_t i = 0; i < met.size(); ++i) {
    if (waitsFor[i] == 0) order.push_back(i);
  }
  for (std::size_t at = 0; at < order.size(); ++at) {
    for (const auto follower : followers[order[at]]) {
      if (--waitsFor[follower] == 0) order.push_back(follower);
    }
  }
  // Ports whose connections were put in by hand may have them in orders that contradict each other.
  for (std::size_t i = 0; i < met.size(); ++i) {
    if (waitsFor[i] != 0) order.push_back(i);
  }
  std::vector<Ref<HXConnection>> ordered;
  ordered.reserve(order.size());
  for (const auto place : order) ordered.push_back(met[place]);
  return ordered;
}

Result<Ref<Data>> dataOf(const Choice& choice) {
  if (auto status = choice.check(); !status) return status;
  const auto contents = make<HXClipboardContents>(choice.outermost, choice.connections());
  StandardKeyedArchiver archiver;
  archiver.setCodingType(HXCodingTypeEditor);
  archiver.setKeepsOrder(true);
  archiver.setFilter([&choice](const Object& object) { return choice.copies(object); });
  archiver.encodeRootObject(contents.get());
  auto bytes = archiver.finishEncoding();
  if (!bytes) return std::move(bytes).status();
  return make<Data>(*std::move(bytes));
}

// Without the keys of the originals: everything that is read draws its own.
Result<Ref<HXClipboardContents>> contentsOf(ByteSpan bytes) {
  HXClipboardContents::registerClasses();
  auto root = StandardKeyedUnarchiver::unarchive(bytes, HXCodingTypeEditor);
  if (!root) return std::move(root).status();
  if (auto contents = as<HXClipboardContents>(*root)) return contents;
  return Status::failure(StatusCode::unsupported,
                         fmt::format("the root is a {}, not a clipboard", (*root)->isa().name()));
}

void addImagesOf(const HXClipboardContents& contents, const HXDocument& document) {
  const Ref<HXImageStore> store = document.imageStore();
  for (const auto& root : contents.nodes()) {
    for (HXNodeWalk walk(*root); const HXNode* node = walk.next();) {
      for (const auto& entry : node->parameters()) {
        const auto parameter = as<HXImageParameter>(entry.value);
        const Ref<HXImageStoreEntry> image(parameter ? parameter->imageEntry() : nullptr);
        if (!image) continue;
        store->addImageEntry(image);
        if (const Ref<HXImageStoreEntry> stored{store->imageEntryForKey(image->key())}) {
          parameter->setImageEntry(stored);
        }
      }
    }
  }
}

// An observer of what came before may have taken a port away, or joined it to another one.
void connect(HXDocument& document, HXPort& output, HXPort& input) {
  for (HXPort* port : {&output, &input}) {
    auto* resolved = port->resolvedPort();
    const auto* node = resolved ? resolved->node() : nullptr;
    const bool takes = node && node->document() == &document && resolved->acceptsNewConnections() &&
                       (resolved->connectionRelationship() == HXConnectionRelationshipOne ||
                        resolved->connectionRelationship() == HXConnectionRelationshipMany);
    if (takes) continue;
    Log::warning("HXClipboard", fmt::format("Dropping a connection that {} does not take",
                                            port->description().view()));
    return;
  }
  document.connectPort(output, input);
}

void place(const HXClipboardContents& contents, HXDocument& document,
           const std::vector<Ref<HXGroup>>& groups, HXPoint offset) {
  addImagesOf(contents, document);
  for (std::size_t i = 0; i < contents.nodes().size(); ++i) {
    HXNode& node = *contents.nodes()[i];
    const auto position = node.position();
    node.setPosition({position.x + offset.x, position.y + offset.y});
    groups[i]->addNode(node);
  }
  for (const auto& wire : contents.wires()) connect(document, *wire.output, *wire.input);
}

/// A connection that comes in from outside, and the input of the copy.
struct Feed {
  Ref<HXConnection> connection;
  Ref<HXPort> copy;
};

// Copies have everything in the order of their originals.
std::vector<Feed> feedsOf(const Choice& choice, const Nodes& copies) {
  std::vector<Feed> feeds;
  std::vector<std::pair<const HXNode*, const HXNode*>> pairs;
  for (std::size_t i = copies.size(); i > 0; --i) {
    pairs.emplace_back(choice.outermost[i - 1].get(), copies[i - 1].get());
  }
  while (!pairs.empty()) {
    const auto [original, copy] = pairs.back();
    pairs.pop_back();
    for (const auto& entry : original->portsInForce()) {
      const Ref<HXPort> port(copy->portsInForce().get(entry.key).get());
      if (!port || entry.value->orientation() != HXOrientationInput) continue;
      for (auto& connection : entry.value->connections().toVector()) {
        if (!choice.hasNodeOf(connection->outputPort())) {
          feeds.push_back({std::move(connection), port});
        }
      }
    }
    const auto originals =
        original->subnodeGroup() ? original->subnodeGroup()->subnodes() : Nodes();
    const auto subcopies = copy->subnodeGroup() ? copy->subnodeGroup()->subnodes() : Nodes();
    if (originals.size() != subcopies.size()) continue;
    for (std::size_t i = originals.size(); i > 0; --i) {
      pairs.emplace_back(originals[i - 1].get(), subcopies[i - 1].get());
    }
  }
  return feeds;
}

// The port that stands for the copy where the connection of the original ends: published as the
// original is by groups that were not copied.
Ref<HXPort> displayedPort(const Feed& feed) {
  std::vector<Ref<HXSymbolicPort>> publications;
  HXPort* at = feed.connection->displayInputPort();
  for (; at && at != feed.connection->inputPort(); at = publications.back()->port()) {
    auto* symbolicPort = as<HXSymbolicPort>(at);
    if (!symbolicPort) break;
    publications.emplace_back(symbolicPort);
  }
  Ref<HXPort> port = feed.copy;
  if (at != feed.connection->inputPort()) return port;
  for (auto original = publications.rbegin(); original != publications.rend(); ++original) {
    if (!port->symbolicPort()) {
      const auto* owner = (*original)->node();
      const Ref<HXGroup> group(owner ? owner->subnodeGroup() : nullptr);
      if (!group || !port->node() || port->node()->parentGroup() != group.get()) break;
      const auto published = group->addSymbolicPortForPort(*port);
      if (!published) break;
      published->setName((*original)->name());
      if (!port->symbolicPort()) break;
    }
    port = Ref<HXPort>(port->symbolicPort());
  }
  return port;
}

void connect(HXDocument& document, const Feed& feed) {
  const Ref<HXPort> end(feed.connection->outputPort());
  const Ref<HXPort> joined(feed.connection->displayOutputPort());
  if (!end || !feed.connection->isHeld()) return;
  if (!end->acceptsNewConnections()) return;
  const auto output = joined && joined->resolvedPort() == end.get() ? joined : end;
  connect(document, *output, *displayedPort(feed));
}

}  // namespace

Result<Ref<Data>> HXClipboard::copy(const std::vector<Ref<HXNode>>& nodes) {
  return dataOf(Choice(nodes));
}

Result<std::vector<Ref<HXNode>>> HXClipboard::paste(ByteSpan bytes, HXGroup& group,
                                                    HXPoint offset) {
  const Ref<HXGroup> target(&group);
  const Ref<HXDocument> document(group.node() ? group.node()->document() : nullptr);
  if (!document) return Status::failure(StatusCode::refused, "the group is in no document");
  auto contents = contentsOf(bytes);
  if (!contents) return std::move(contents).status();
  const HXHistory::Step step(*document, String("Paste"));
  place(**contents, *document, {contents->nodes().size(), target}, offset);
  return contents->nodes();
}

Result<std::vector<Ref<HXNode>>> HXClipboard::duplicate(const std::vector<Ref<HXNode>>& nodes,
                                                        HXPoint offset, bool keepInputs) {
  const Choice choice(nodes);
  if (auto status = choice.check(); !status) return status;
  const Ref<HXDocument> document(choice.outermost.front()->document());
  std::vector<Ref<HXGroup>> groups;
  for (const auto& node : choice.outermost) {
    if (!document || node->document() != document.get()) {
      return Status::failure(StatusCode::refused, "the nodes are not all in one document");
    }
    groups.emplace_back(node->parentGroup());
  }
  auto bytes = dataOf(choice);
  if (!bytes) return std::move(bytes).status();
  auto contents = contentsOf(bytes->bytes());
  if (!contents) return std::move(contents).status();
  const auto feeds = keepInputs ? feedsOf(choice, contents->nodes()) : std::vector<Feed>();
  const HXHistory::Step step(*document, String("Duplicate"));
  place(**contents, *document, groups, offset);
  for (const auto& feed : feeds) connect(*document, feed);
  return contents->nodes();
}

}  // namespace tarnkit
