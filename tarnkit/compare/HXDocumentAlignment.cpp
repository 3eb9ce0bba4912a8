#include "tarnkit/compare/HXDocumentAlignment.h"

#include <unordered_set>

#include "tarnkit/editing/HXHistory.h"
#include "tarnkit/model/HXNodeWalk.h"
#include "tarnkit/model/HXParameter.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/patches/HXRNode.h"

// What a document is made of: images, nodes and their places. How they look and what joins them is
// the other source, HXAlignmentDetails.cpp.

namespace tarnkit {

namespace {

// What patches do in answer to one change may undo another, which is then made once more.
constexpr int kMaximumRounds = 4;

String patchClassOf(const HXNode& node) {
  if (const auto patch = node.patch()) return patch->isa().nameString();
  return node.unknownPatchClass();
}

}  // namespace

HXDocumentAlignment::HXDocumentAlignment(HXDocument& document, std::vector<Ref<HXNode>> nodes,
                                         HXDocumentState goal, PieceOf pieceOf)
    : document_(document),
      nodes_(std::move(nodes)),
      goal_(std::move(goal)),
      pieceOf_(std::move(pieceOf)) {}

Status HXDocumentAlignment::run(const String& stepName, Exactness exactness) {
  Ref<HXHistory> history(HXHistory::ofDocument(document_));
  if (!history) history = make<HXHistory>(document_);
  if (history->openSteps() != 0) {
    return Status::failure(StatusCode::refused, "a step of the document's history is open");
  }
  history->beginStep(stepName);
  bool isAligned = false;
  for (int round = 0; round < kMaximumRounds && !isAligned; ++round) isAligned = align();
  if (isAligned || exactness == Exactness::possible) {
    history->endStep();
    return {};
  }
  history->abandonStep();
  return Status::failure(StatusCode::refused, "the document cannot be brought to that state");
}

bool HXDocumentAlignment::align() {
  const std::size_t count = goal_.nodes.size();
  hasOtherPublications_.assign(count, false);
  noteWires();
  alignImages();
  emptyGroups();
  makeNodes();
  for (std::size_t i = 0; i < count; ++i) shape(i);
  for (std::size_t i = 1; i < count; ++i) place(i);
  removeOthers();
  breakOthers();
  for (std::size_t i = 0; i < count; ++i) unpublishOthers(i);
  // From the inside outward: what is published further out stands for what is published within.
  for (std::size_t i = count; i > 0; --i) alignGroupKind(i - 1);
  for (std::size_t i = count; i > 0; --i) publish(i - 1);
  for (std::size_t i = 0; i < count; ++i) {
    alignGroup(i);
    alignLooks(i);
    alignValues(i);
    alignPortGroups(i);
  }
  connect();
  for (std::size_t i = 0; i < count; ++i) arrangeConnections(i);
  return HXDocumentState(document_).isEqual(goal_);
}

// A store that is in another order is emptied from the first image on that is elsewhere.
void HXDocumentAlignment::alignImages() {
  const Ref<HXImageStore> store = document_.imageStore();
  const auto removeAll = [&store](const Ref<HXImageStoreEntry>& entry) {
    for (auto count = store->countForKey(entry->key()); count > 0; --count) {
      store->removeImageEntry(entry.get());
    }
  };
  std::unordered_set<std::string_view> wanted;
  for (const auto& image : goal_.images) wanted.insert(image.key.view());
  for (const auto& entry : store->imageEntries()) {
    if (!wanted.contains(entry.key.view())) removeAll(entry.value);
  }
  const auto present = store->imageEntries();
  auto at = present.begin();
  std::size_t inPlace = 0;
  while (at != present.end() && at->key == goal_.images[inPlace].key) {
    ++at;
    ++inPlace;
  }
  for (; at != present.end(); ++at) removeAll(at->value);
  for (const auto& image : goal_.images) {
    const auto* held = present.find(image.key);
    const Ref<HXImageStoreEntry> entry = held ? *held : image.entry;
    auto count = store->countForKey(image.key);
    for (; count < image.count; ++count) store->addImageEntry(entry);
    for (; count > image.count; --count) store->removeImageEntry(entry.get());
  }
}

// Of a group that goes with its node's patch the nodes would be lost.
void HXDocumentAlignment::emptyGroups() {
  for (std::size_t i = 0; i < nodes_.size(); ++i) {
    const auto& node = nodes_[i];
    if (!node || !node->subnodeGroup() || goal_.nodes[i].hasGroup) continue;
    for (const auto& subnode : node->subnodeGroup()->subnodes()) takeOut(*subnode);
  }
}

void HXDocumentAlignment::makeNodes() {
  for (std::size_t i = 0; i < nodes_.size(); ++i) {
    if (nodes_[i]) continue;
    if (const auto piece = pieceOf_(static_cast<std::int32_t>(i))) {
      nodes_[i] = HXDocumentState::nodeOf(*piece, !goal_.nodes[i].key.isNil());
    }
    if (nodes_[i]) goal_.nodes[i].key = nodes_[i]->uniqueKey();
  }
}

void HXDocumentAlignment::shape(std::size_t number) {
  const auto& goal = goal_.nodes[number];
  const Ref<HXNode> node = nodes_[number];
  if (!node) return;
  if (&node->isa() != goal.nodeClass) return replaceByPiece(number);
  if (patchClassOf(*node) != goal.patchClass) {
    if (!goal.patch && !goal.patchClass.isNil()) return replaceByPiece(number);
    // The group outlives the old patch.
    if (goal.forcesSubnodes) node->setForceAllowsSubnodes(true);
    node->setPatch(goal.patch ? goal.patch->makeDefinition() : nullptr);
  }
  node->setForceAllowsSubnodes(goal.forcesSubnodes);
  const auto& store = *document_.imageStore();
  for (const auto& wanted : goal.parameters) {
    const Ref<HXParameter> parameter(node->parameterForKey(wanted.key));
    if (parameter && HXStateValue::of(*parameter, store) != wanted.value) {
      wanted.value.giveTo(*parameter, store);
    }
  }
  if (number != 0 && !hasShape(number)) replaceByPiece(number);
}

bool HXDocumentAlignment::hasShape(std::size_t number) const {
  const auto& goal = goal_.nodes[number];
  const auto& node = *nodes_[number];
  if (goal.shape == 0) return true;
  if (HXDocumentState::shapeOf(node) != goal.shape) return false;
  for (const auto& wanted : goal.parameters) {
    const auto* parameter = node.parameterForKey(wanted.key);
    if (!parameter || HXStateValue::of(*parameter, *document_.imageStore()) != wanted.value) {
      return false;
    }
  }
  return true;
}

void HXDocumentAlignment::replaceByPiece(std::size_t number) {
  const auto piece = pieceOf_(static_cast<std::int32_t>(number));
  auto fresh = piece ? HXDocumentState::nodeOf(*piece, true) : nullptr;
  // Another key may be that of another node.
  if (fresh && fresh->uniqueKey() != goal_.nodes[number].key) {
    fresh = HXDocumentState::nodeOf(*piece, false);
  }
  if (!fresh) return;
  goal_.nodes[number].key = fresh->uniqueKey();
  fresh->setForceAllowsSubnodes(goal_.nodes[number].forcesSubnodes);
  const Ref<HXNode> node = std::exchange(nodes_[number], fresh);
  if (const auto group = node->subnodeGroup()) {
    for (const auto& subnode : group->subnodes()) takeOut(*subnode);
  }
  takeOut(*node);
}

// Those that enclose it in the goal stand in their places already, so it encloses none of them.
void HXDocumentAlignment::place(std::size_t number) {
  const Ref<HXNode> node = nodes_[number];
  const auto& parent = nodes_[static_cast<std::size_t>(goal_.nodes[number].parent)];
  const Ref<HXGroup> group = parent ? parent->subnodeGroup() : nullptr;
  if (!node || !group || node->parentGroup() == group.get()) return;
  const Ref<HXNode> other(group->subnodeForKey(node->uniqueKey()));
  if (other) takeOut(*other);
  Ref<HXGroup>(parent->subnodeGroup())->addNode(*node);
}

void HXDocumentAlignment::removeOthers() {
  std::unordered_set<const HXNode*> kept;
  for (const auto& node : nodes_) kept.insert(node.get());
  for (const auto& node : nodes_) {
    if (!node || !node->subnodeGroup()) continue;
    for (const auto& subnode : node->subnodeGroup()->subnodes()) {
      if (!kept.contains(subnode.get())) takeOut(*subnode);
    }
  }
}

void HXDocumentAlignment::takeOut(HXNode& node) {
  const Ref<HXNode> kept(&node);
  const Ref<HXGroup> group(node.parentGroup());
  if (!group) return;
  std::unordered_set<const HXNode*> inside;
  for (HXNodeWalk walk(node); const HXNode* at = walk.next();) inside.insert(at);
  for (HXNodeWalk walk(node); const HXNode* at = walk.next();) {
    for (const auto& entry : at->portsInForce()) {
      for (const auto& wire : entry.value->connections().toVector()) {
        const auto* output = wire->outputPort();
        const auto* input = wire->inputPort();
        if (output && input && inside.contains(output->node()) && inside.contains(input->node())) {
          continue;
        }
        document_.breakConnection(*wire);
      }
    }
  }
  group->removeNode(&node);
}

}  // namespace tarnkit
