#include <random>

#include "ModelFixture.h"
#include "tarnkit/archive/HXCoding.h"
#include "tarnkit/model/HXDocumentFile.h"
#include "tarnkit/model/HXParameterKinds.h"
#include "tarnkit/model/HXPortGroup.h"
#include "tarnkit/model/HXReplicatorNode.h"
#include "tarnkit/model/HXSubviewGroup.h"

// Edits as nobody would make them by hand, some of them by observers in the middle of others:
// whatever is built can be saved, what is saved can be opened, and nothing of it gets lost.

namespace tarnkit::test {

namespace {

class Editor {
 public:
  explicit Editor(std::uint32_t seed)
      : random_(seed), document_(make<HXDocument>()), copy_(make<HXDocument>()) {
    nodes_.push_back(document_);
  }

  HXDocument& document() const { return *document_; }

  // Observers of what groups and documents do edit as well, from time to time.
  void edit(int count, bool observersEdit) {
    const NotificationCenter::Observation observation([this](const Notification&) {
      if (!mayEdit_ || depth_ > 2 || random_() % 8 != 0) return;
      ++depth_;
      step();
      --depth_;
    });
    for (int i = 0; i < count; ++i) {
      mayEdit_ = observersEdit;
      step();
    }
    mayEdit_ = false;
  }

 private:
  template <class T>
  const T& oneOf(const std::vector<T>& things) {
    return things[random_() % things.size()];
  }
  Ref<HXNode> node() { return oneOf(nodes_); }
  Ref<HXGroup> group() {
    for (int i = 0; i < 8; ++i) {
      if (const auto found = node(); found->subnodeGroup()) return found->subnodeGroup();
    }
    return document_->subnodeGroup();
  }
  Ref<HXPort> port() {
    for (int i = 0; i < 8; ++i) {
      const auto found = node();
      std::vector<Ref<HXPort>> ports;
      for (const auto& entry : found->portsInForce()) ports.emplace_back(entry.value.get());
      for (const auto* published :
           {&found->symbolicInputPortsInForce(), &found->symbolicOutputPortsInForce()}) {
        for (const auto& member : *published) {
          ports.emplace_back(static_cast<HXPort*>(member.get()));
        }
      }
      if (!ports.empty()) return oneOf(ports);
    }
    return nullptr;
  }
  Ref<HXRNode> definition() {
    static const std::vector<const char*> patches{
        "HXRClampNode",      "HXRMultiplexerNode",    "HXRColorViewNode", "HXRDictionaryNode",
        "HXRReplicatorNode", "HXRMathExpressionNode", "HXRImageNode",     "HXRSpringNode"};
    return patchClassNamed(oneOf(patches))->makeDefinition();
  }
  Ref<HXNode> freshNode() {
    static const std::vector<const char*> classes{"HXNode", "HXReplicatorNode", "HXLoopNode",
                                                  "HXRemoteGroupNode",
                                                  "HXRemoteGroupProcessorNode"};
    auto fresh = HXNode::makeOfClass(random_() % 3 == 0 ? oneOf(classes) : "HXNode");
    if (random_() % 2 == 0) fresh->setForceAllowsSubnodes(true);
    fresh->setPatch(random_() % 4 == 0 ? nullptr
                    : as<HXReplicatorNode>(fresh.get())
                        ? patchClassNamed("HXRReplicatorNode")->makeDefinition()
                        : definition());
    return fresh;
  }

  void step() {
    switch (random_() % 3) {
      case 0:
        return editPlace();
      case 1:
        return editPublications();
      default:
        return random_() % 2 == 0 ? editConnections() : editNode();
    }
  }

  // The groups and documents are told through raw pointers; what they are told of may go meanwhile.
  void editPlace() {
    switch (random_() % 12) {
      case 0:
      case 1:
      case 2: {
        nodes_.push_back(freshNode());
        return group().get()->addNode(*nodes_.back().get());
      }
      case 3:
      case 4:
        return group().get()->addNode(*node().get());
      case 5: {
        HXNode* const gone = node().get();
        if (auto* parent = gone->parentGroup()) parent->removeNode(gone);
        return;
      }
      case 6:
        return group().get()->removeNode(node().get());
      case 7: {
        const auto held = group();
        const auto* views = as<HXSubviewGroup>(held.get());
        if (!views || views->subviewNodesInForce().isEmpty()) return;
        const auto index =
            static_cast<std::uint32_t>(random_() % views->subviewNodesInForce().count());
        auto& moved = static_cast<HXNode&>(*views->subviewNodesInForce().objectAtIndex(index));
        const_cast<HXSubviewGroup*>(views)->moveSubviewNode(moved, random_() % 4);
        return;
      }
      case 8: {
        // A node of a copy, with the keys of the document's.
        const auto opened = reopened(HXCodingTypeEditorWithKeys);
        const auto copies =
            opened ? opened->subnodeGroup()->subnodes() : std::vector<Ref<HXNode>>();
        if (copies.empty()) return;
        nodes_.push_back(oneOf(copies));
        return group().get()->addNode(*nodes_.back().get());
      }
      case 9:
        if (nodes_.size() > 12) nodes_.erase(nodes_.begin() + 1);
        return;
      case 10:
        return (random_() % 2 == 0 ? document_ : copy_)->subnodeGroup()->addNode(*node().get());
      default: {
        const auto held = node();
        if (!held->subnodeGroup()) return;  // it would go again with the next synchronisation
        return random_() % 2 == 0 ? held->swapSubnodeGroupToGroup()
                                  : held->swapSubnodeGroupToViewGroup();
      }
    }
  }

  void editPublications() {
    switch (random_() % 6) {
      case 0:
      case 1: {
        const auto inner = port();
        if (!inner) return;
        auto* place = random_() % 4 != 0 && inner->node() ? inner->node()->parentGroup() : nullptr;
        const Ref<HXGroup> at(place ? place : group().get());
        const auto published = at.get()->addSymbolicPortForPort(*inner);
        if (published) published_.push_back(published);
        return;
      }
      case 2: {
        const auto inner = port();
        if (!inner) return;
        auto* owner = inner->symbolicPort() ? inner->symbolicPort()->node() : nullptr;
        if (owner && owner->subnodeGroup()) {
          owner->subnodeGroup()->removeSymbolicPortForPort(inner.get());
        }
        return;
      }
      case 3:
        return group().get()->removeSymbolicPortForPort(port().get());
      case 4: {
        if (published_.empty()) return;
        const auto again = oneOf(published_);
        auto* owner = again->node();
        if (!owner || !owner->subnodeGroup()) return;
        return owner->subnodeGroup()->restoreSymbolicPort(*again);
      }
      default: {
        static const std::vector<const char*> names{"A: x", "A: y", "B", "Masking: z", ""};
        if (!published_.empty()) Ref<HXSymbolicPort>(oneOf(published_))->setName(oneOf(names));
      }
    }
  }

  void editConnections() {
    switch (random_() % 6) {
      case 0: {
        if (connections_.empty()) return;
        return document_.get()->breakConnection(*oneOf(connections_).get());
      }
      case 1:
        if (const auto held = port()) document_.get()->breakAllConnectionsToPort(*held.get());
        return;
      case 2:
        if (connections_.empty()) return;
        return document_.get()->restoreConnection(*oneOf(connections_).get());
      default: {
        const auto first = port();
        const auto second = port();
        if (!first || !second || first->orientation() + second->orientation() != 3) return;
        const auto connection = document_->connectPort(*first, *second);
        if (connection) connections_.push_back(connection);
      }
    }
  }

  void editNode() {
    // What nodes announce themselves is not what is tried here.
    const bool could = std::exchange(mayEdit_, false);
    const auto held = node();
    switch (random_() % 9) {
      case 0:
        held->setPatch(random_() % 4 == 0 ? nullptr : definition());
        break;
      case 1:
        held->setPatch(held->patch());
        break;
      case 2:
      case 3: {
        const auto groups = random_() % 2 == 0 ? held->inputPortGroups() : held->outputPortGroups();
        if (!groups.empty()) oneOf(groups)->setHidden(random_() % 3 != 0);
        break;
      }
      case 4:
        if (held != document_) held->setForceAllowsSubnodes(random_() % 4 != 0);
        break;
      case 5:
        for (const auto& entry : held->parameters()) {
          if (auto* index = as<HXIndexParameter>(entry.value.get())) {
            index->setValue(static_cast<std::int32_t>(random_() % 6));
            break;
          }
        }
        break;
      case 6:
        if (const auto found = as<HXPatchPort>(port())) {
          found->setStaticValue(random_() % 2 == 0 ? nullptr
                                                   : PMRPrimitive::primitiveWithNumberValue(1.5F));
        }
        break;
      case 7:
        held->pruneInvalidConnections();
        break;
      default:
        held->setName(String(std::string(1, static_cast<char>('a' + random_() % 4))));
    }
    mayEdit_ = could;
  }

  Ref<HXDocument> reopened(std::int32_t codingType) const {
    return openedDocument(savedBytes(*document_, codingType), codingType);
  }

  std::mt19937 random_;
  Ref<HXDocument> document_;
  Ref<HXDocument> copy_;
  std::vector<Ref<HXNode>> nodes_;
  std::vector<Ref<HXSymbolicPort>> published_;
  std::vector<Ref<HXConnection>> connections_;
  bool mayEdit_ = false;
  int depth_ = 0;
};

// What a document holds, in numbers that a file must keep.
struct Contents {
  int nodes = 0;
  int ports = 0;
  int staticValues = 0;
  int wires = 0;
  int publications = 0;
  int arrayOutputs = 0;
  int views = 0;
  bool operator==(const Contents&) const = default;
  friend void PrintTo(const Contents& contents, std::ostream* out) {
    *out << contents.nodes << " nodes, " << contents.ports << " ports, " << contents.staticValues
         << " static values, " << contents.wires << " wires, " << contents.publications
         << " publications, " << contents.arrayOutputs << " array outputs, " << contents.views
         << " views";
  }
};

Contents contentsOf(HXDocument& document) {
  Contents contents;
  const auto isInside = [&](const HXPort* port) {
    const auto* node = port ? port->node() : nullptr;
    if (!node || node->document() != &document) return false;
    if (as<HXSymbolicPort>(port)) {
      return node->symbolicInputPortsInForce().contains(port) ||
             node->symbolicOutputPortsInForce().contains(port);
    }
    return node->portsInForce().get(port->uniqueKey()).get() == port;
  };
  std::vector<HXNode*> pending{&document};
  while (!pending.empty()) {
    HXNode& node = *pending.back();
    pending.pop_back();
    ++contents.nodes;
    for (const auto& entry : node.portsInForce()) {
      // An array output whose port is in the document no more goes with the next opening.
      contents.ports += !entry.key.view().starts_with("ReplicatorOutput.");
      contents.staticValues += entry.value->staticValue() != nullptr;
      entry.value->connections().forEach([&](const HXConnection& connection) {
        for (const auto* end : {connection.outputPort(), connection.inputPort(),
                                connection.displayOutputPort(), connection.displayInputPort()}) {
          contents.wires += isInside(end);
        }
      });
    }
    for (const auto* ports :
         {&node.symbolicInputPortsInForce(), &node.symbolicOutputPortsInForce()}) {
      for (const auto& member : *ports) {
        contents.publications += isInside(static_cast<const HXSymbolicPort&>(*member).port());
      }
    }
    if (const auto* replicator = as<HXReplicatorNode>(&node)) {
      for (const auto& entry : replicator->replicatorArrayOutputPortKeyForPort()) {
        contents.arrayOutputs += isInside(entry.key.get());
      }
    }
    if (!node.subnodeGroup()) continue;
    if (const auto* views = as<HXSubviewGroup>(node.subnodeGroup().get())) {
      contents.views += static_cast<int>(views->subviewNodesInForce().count());
    }
    for (const auto& entry : node.subnodeGroup()->subnodesInForce()) {
      EXPECT_EQ(entry.value->parentGroup(), node.subnodeGroup().get());
      pending.push_back(entry.value.get());
    }
  }
  return contents;
}

void expectThatFilesKeep(HXDocument& document, Recorder& recorder, const std::string& what) {
  for (const std::int32_t codingType : {0, 1, 3}) {
    SCOPED_TRACE(what + ", coding type " + std::to_string(codingType));
    const auto bytes = savedBytes(document, codingType);
    recorder.takeLog();
    const auto opened = openedDocument(bytes, codingType);
    ASSERT_TRUE(opened);
    EXPECT_EQ(contentsOf(*opened), contentsOf(document))
        << ::testing::PrintToString(recorder.takeLog());
    const auto second = savedBytes(*opened, codingType);
    const auto again = openedDocument(second, codingType);
    ASSERT_TRUE(again);
    if (codingType == HXCodingTypeEditorWithKeys) {
      EXPECT_TRUE(savedBytes(*again, codingType) == second);
    }
    EXPECT_TRUE(HXDocumentFile::deviceGraph(*again));
  }
}

}  // namespace

TEST(RandomEditTest, WhatIsBuiltCanBeSavedAndWhatIsSavedCanBeOpened) {
  constexpr std::uint32_t kSeeds = 80;
  Recorder recorder;
  for (std::uint32_t seed = 0; seed < kSeeds; ++seed) {
    Editor editor(seed);
    for (int round = 0; round < 4; ++round) {
      editor.edit(60, seed % 2 == 1);
      expectThatFilesKeep(editor.document(), recorder, "seed " + std::to_string(seed));
      if (::testing::Test::HasFailure()) return;
    }
  }
}

}  // namespace tarnkit::test
