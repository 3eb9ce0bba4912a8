#include <fmt/format.h>

#include <functional>
#include <random>

#include "fuzz/model/ModelEditor.h"
#include "tarnkit/archive/HXCoding.h"
#include "tarnkit/editing/HXClipboard.h"
#include "tarnkit/editing/HXClipboardContents.h"
#include "tarnkit/editing/HXHistory.h"
#include "tarnkit/model/HXDocumentFile.h"
#include "tarnkit/model/HXNodeWalk.h"
#include "tarnkit/model/HXParameterKinds.h"
#include "tarnkit/model/HXReplicatorNode.h"
#include "tarnkit/model/HXSubviewGroup.h"
#include "tarnkit/platform/coding/StandardKeyedArchiver.h"
#include "tarnkit/platform/propertylist/PropertyListReader.h"
#include "tests/model/Consistency.h"
#include "tests/model/ModelFixture.h"
#include "tests/model/Tampering.h"

namespace tarnkit::test {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using Nodes = std::vector<Ref<HXNode>>;

class ClipboardTest : public ModelTest {
 protected:
  static Ref<Data> copied(const Nodes& nodes) {
    auto bytes = HXClipboard::copy(nodes);
    EXPECT_TRUE(bytes) << bytes.status().message();
    return std::move(bytes).valueOr(make<Data>());
  }
  static Nodes pasted(const Ref<Data>& bytes, HXNode& into, HXPoint offset = {}) {
    auto nodes = HXClipboard::paste(bytes->bytes(), *into.subnodeGroup(), offset);
    EXPECT_TRUE(nodes) << nodes.status().message();
    return std::move(nodes).valueOr({});
  }
  static Nodes duplicated(const Nodes& nodes, bool keepInputs, HXPoint offset = {}) {
    auto copies = HXClipboard::duplicate(nodes, offset, keepInputs);
    EXPECT_TRUE(copies) << copies.status().message();
    return std::move(copies).valueOr({});
  }
  static std::vector<std::string> names(const Nodes& nodes) {
    std::vector<std::string> names;
    for (const auto& node : nodes) names.push_back(node->name().toStdString());
    return names;
  }
  static Ref<HXNode> named(HXNode& root, const char* name) {
    for (HXNodeWalk walk(root); HXNode* node = walk.next();) {
      if (node->name() == name) return Ref<HXNode>(node);
    }
    ADD_FAILURE() << "no node " << name;
    return make<HXNode>();
  }
  Ref<HXNode> addNamed(const char* patchClass, const char* name, HXNode* to = nullptr) {
    auto node = add(patchClass, to);
    node->setName(name);
    return node;
  }
  static Ref<HXConnection> onlyConnection(HXPort& port) {
    EXPECT_EQ(port.connections().count(), 1U);
    return port.connections().isEmpty() ? nullptr : port.connections().toVector()[0];
  }
  static HXImageParameter& imageOf(HXNode& node) {
    return *as<HXImageParameter>(node.parameterForKey("Tarn.imageParameter"));
  }
  static Ref<HXImageStoreEntry> imageEntry(std::uint8_t red) {
    return HXImageStore::createImageEntry(*Image::imageWithPixels(1, 1, {red, 2, 3, 255}));
  }

  // Whether every wire was drawn between ports of nodes in the document, and every publication
  // stands for such a port.
  static bool refersToItselfOnly(HXDocument& document) {
    bool all = true;
    for (HXNodeWalk walk(document); HXNode* node = walk.next();) {
      for (const auto orientation : kBothSides) {
        for (const auto& member : node->symbolicPortsInForce(orientation)) {
          const auto* port = static_cast<const HXSymbolicPort&>(*member).port();
          all = all && port && port->node() && port->node() != &document &&
                port->node()->document() == &document;
        }
      }
      for (const auto& entry : node->portsInForce()) {
        entry.value->connections().forEach([&](const HXConnection& wire) {
          for (const auto* shown : {wire.displayOutputPort(), wire.displayInputPort()}) {
            all = all && shown && shown->node() && shown->node() != &document &&
                  (shown->resolvedPort() == wire.outputPort() ||
                   shown->resolvedPort() == wire.inputPort());
          }
        });
      }
    }
    return all;
  }

  // A group with a published input that feeds a many-wired pair, views in an order of their own,
  // and a replicator; beside it a source.
  struct Scene {
    Ref<HXNode> group, source, first, second, replicator;
    Ref<HXConnection> outer;
  };
  Scene makeScene() {
    Scene scene;
    scene.group = addNamed("", "Box");
    scene.source = addNamed("HXRTransitionNode", "Source");
    for (int i = 0; i < 12; ++i)
      addNamed("", fmt::format("Inner {}", i).c_str(), scene.group.get());
    scene.first = addNamed("HXRClampNode", "First", scene.group.get());
    scene.second = addNamed("HXRClampNode", "Second", scene.group.get());
    const auto mux = addNamed("HXRMultiplexerNode", "Mux", scene.group.get());
    as<HXIndexParameter>(mux->parameterForKey("Tarn.numberOfSourcesParameter"))->setValue(7);
    connect(*scene.second, "Tarn.resultOutput", *mux, "Tarn.source6Input");
    const auto back = addNamed("HXRColorViewNode", "Back", scene.group.get());
    addNamed("HXRColorViewNode", "Front", scene.group.get());
    as<HXSubviewGroup>(scene.group->subnodeGroup())->moveSubviewNode(*back, 1);
    connect(*scene.first, "Tarn.resultOutput", *scene.second, "Tarn.valueInput");
    connect(*scene.first, "Tarn.resultOutput", *scene.second, "Tarn.minimumInput");
    port(*scene.second, "Tarn.maximumInput")
        .setStaticValue(PMRPrimitive::primitiveWithIndexValue(5));
    const auto published =
        scene.group->subnodeGroup()->addSymbolicPortForPort(port(*scene.first, "Tarn.valueInput"));
    published->setName("Level: low");
    scene.outer = document->connectPort(port(*scene.source, "Tarn.output"), *published);
    scene.replicator = HXNode::makeOfClass("HXReplicatorNode");
    scene.replicator->setPatch(patchClassNamed("HXRReplicatorNode")->makeDefinition());
    scene.group->subnodeGroup()->addNode(*scene.replicator);
    const auto collected = add("HXRClampNode", scene.replicator.get());
    scene.replicator->subnodeGroup()->addSymbolicPortForPort(port(*collected, "Tarn.resultOutput"));
    scene.group->setPosition({10, 20});
    scene.group->setSelected(true);
    scene.group->setInspectorPanel(2);
    return scene;
  }
};

TEST_F(ClipboardTest, WhatIsPastedIsWhatWasCopied) {
  const auto scene = makeScene();
  const auto before = savedBytes(*document, HXCodingTypeEditorWithKeys);
  const auto bytes = copied({scene.source, scene.group});
  EXPECT_EQ(savedBytes(*document, HXCodingTypeEditorWithKeys), before);
  for (int round = 0; round < 2; ++round) {
    const auto target = round == 0 ? make<HXDocument>() : document;
    const auto nodes = pasted(bytes, *target, {3, -4});
    ASSERT_THAT(names(nodes), ElementsAre("Source", "Box"));
    HXNode& group = *nodes[1];
    EXPECT_EQ(group.position(), (HXPoint{13, 16}));
    EXPECT_EQ(named(group, "First")->position(), scene.first->position());
    EXPECT_TRUE(group.selected());
    EXPECT_TRUE(group.forceAllowsSubnodes());
    EXPECT_EQ(group.inspectorPanel(), 2U);
    EXPECT_NE(group.uniqueKey(), scene.group->uniqueKey());
    EXPECT_NE(group.subnodeGroup()->uniqueKey(), scene.group->subnodeGroup()->uniqueKey());
    EXPECT_EQ(names(group.subnodeGroup()->subnodes()),
              names(scene.group->subnodeGroup()->subnodes()));
    const auto views = as<HXSubviewGroup>(group.subnodeGroup());
    ASSERT_TRUE(views);
    EXPECT_THAT(names(views->subviewNodes()), ElementsAre("Front", "Back"));
    const auto first = named(group, "First");
    const auto second = named(group, "Second");
    EXPECT_EQ(port(*second, "Tarn.maximumInput").staticValue()->indexValue(), 5);
    ASSERT_EQ(port(*first, "Tarn.resultOutput").connections().count(), 2U);
    EXPECT_EQ(port(*first, "Tarn.resultOutput").connections().toVector()[1]->inputPort(),
              &port(*second, "Tarn.minimumInput"));
    onlyConnection(port(*named(group, "Mux"), "Tarn.source6Input"));
    const auto wire = onlyConnection(port(*first, "Tarn.valueInput"));
    ASSERT_TRUE(wire);
    EXPECT_NE(wire->uniqueKey(), scene.outer->uniqueKey());
    EXPECT_EQ(wire->outputPort(), nodes[0]->portForKey("Tarn.output"));
    ASSERT_EQ(group.symbolicInputPortsInForce().count(), 1U);
    EXPECT_EQ(wire->displayInputPort(), group.symbolicInputPorts()[0].get());
    EXPECT_EQ(wire->displayInputPort()->name(), "Level: low");
    const auto replicator =
        as<HXReplicatorNode>(named(group, scene.replicator->name().view().data()));
    ASSERT_TRUE(replicator);
    const auto outputs = replicator->replicatorArrayOutputPortKeyForPort();
    ASSERT_EQ(outputs.size(), 1U);
    EXPECT_TRUE(replicator->portForKey(outputs.begin()->value));
    EXPECT_THAT(faultsOf(*target), IsEmpty());
  }
  EXPECT_EQ(port(*scene.source, "Tarn.output").connections().count(), 1U);
}

// The ends at the inputs are met first, and in the other order.
TEST_F(ClipboardTest, AnOutputKeepsTheOrderOfItsWires) {
  Nodes chosen;
  for (int i = 0; i < 4; ++i) chosen.push_back(add("HXRClampNode"));
  for (const std::size_t to : {2U, 1U, 0U}) {
    connect(*chosen[3], "Tarn.resultOutput", *chosen[to], "Tarn.valueInput");
  }
  const auto nodes = pasted(copied(chosen), *document);
  ASSERT_EQ(nodes.size(), 4U);
  std::vector<const HXNode*> order;
  for (const auto& wire : port(*nodes[3], "Tarn.resultOutput").connections().toVector()) {
    order.push_back(wire->inputPort()->node());
  }
  EXPECT_THAT(order, ElementsAre(nodes[2].get(), nodes[1].get(), nodes[0].get()));
}

TEST_F(ClipboardTest, NothingOutsideTheChoiceIsCopied) {
  const auto scene = makeScene();
  addNamed("HXRClampNode", "Stranger");
  const auto bytes = copied({scene.second, scene.first});
  const std::string_view text(reinterpret_cast<const char*>(bytes->bytes().data()), bytes->size());
  for (const char* outside :
       {"Box", "Source", "Inner 1", "Stranger", "Level: low", "HXDocument", "HXSymbolicPort"}) {
    EXPECT_EQ(text.find(outside), std::string_view::npos) << outside;
  }
  const auto target = make<HXDocument>();
  const auto nodes = pasted(bytes, *target);
  ASSERT_THAT(names(nodes), ElementsAre("Second", "First"));
  EXPECT_TRUE(port(*nodes[1], "Tarn.valueInput").connections().isEmpty());
  EXPECT_FALSE(port(*nodes[1], "Tarn.valueInput").symbolicPort());
  EXPECT_EQ(port(*nodes[1], "Tarn.resultOutput").connections().count(), 2U);
  EXPECT_THAT(faultsOf(*target), IsEmpty());
}

TEST_F(ClipboardTest, WhatIsChosenTwiceOrInsideComesOnce) {
  const auto scene = makeScene();
  const auto target = make<HXDocument>();
  const auto nodes =
      pasted(copied({scene.first, scene.source, nullptr, scene.group, scene.source}), *target);
  EXPECT_THAT(names(nodes), ElementsAre("Source", "Box"));
  EXPECT_EQ(HXClipboard::copy({}).status().code(), StatusCode::refused);
  EXPECT_EQ(HXClipboard::copy({nullptr}).status().code(), StatusCode::refused);
  EXPECT_EQ(HXClipboard::copy({scene.first, document}).status().code(), StatusCode::refused);
}

// A wire that the user drew from a published port whose group is not chosen.
TEST_F(ClipboardTest, AWireWhoseShownEndIsLeftOutEndsAtThePort) {
  const auto scene = makeScene();
  const auto shown =
      scene.group->subnodeGroup()->addSymbolicPortForPort(port(*scene.second, "Tarn.resultOutput"));
  document->connectPort(*shown, port(*scene.first, "Tarn.minimumInput"));
  const auto target = make<HXDocument>();
  const auto nodes = pasted(copied({scene.first, scene.second}), *target);
  ASSERT_EQ(nodes.size(), 2U);
  const auto wire = onlyConnection(port(*nodes[0], "Tarn.minimumInput"));
  ASSERT_TRUE(wire);
  EXPECT_EQ(wire->displayOutputPort(), &port(*nodes[1], "Tarn.resultOutput"));
}

TEST_F(ClipboardTest, AHalfOfAConnectionIsNotCopied) {
  const auto first = add("HXRClampNode");
  const auto second = add("HXRClampNode");
  connect(*first, "Tarn.resultOutput", *second, "Tarn.valueInput");
  connect(*second, "Tarn.resultOutput", *second, "Tarn.valueInput");  // refused by the input
  const auto target = make<HXDocument>();
  const auto nodes = pasted(copied({first, second}), *target);
  ASSERT_EQ(nodes.size(), 2U);
  EXPECT_EQ(port(*nodes[0], "Tarn.resultOutput").connections().count(), 1U);
  EXPECT_TRUE(port(*nodes[1], "Tarn.resultOutput").connections().isEmpty());
}

TEST_F(ClipboardTest, ImagesAreSharedAndCounted) {
  const auto entry = imageEntry(1);
  const auto other = imageEntry(9);
  document->imageStore()->addImageEntry(entry);
  document->imageStore()->addImageEntry(other);
  const auto group = addNamed("", "Group");
  const auto shows = add("HXRImageNode", group.get());
  imageOf(*shows).setImageEntry(entry);
  const auto bytes = copied({group});
  const auto target = make<HXDocument>();
  const auto history = make<HXHistory>(*target);
  pasted(bytes, *target);
  ASSERT_EQ(target->imageStore()->imageEntriesInForce().size(), 1U);
  const auto kept = Ref<HXImageStoreEntry>(target->imageStore()->imageEntryForKey(entry->key()));
  ASSERT_TRUE(kept);
  EXPECT_TRUE(kept->image()->isEqual(*entry->image()) || kept->image()->width() == 1U);
  const auto again = pasted(bytes, *target);
  EXPECT_EQ(target->imageStore()->countForKey(entry->key()), 2);
  EXPECT_EQ(imageOf(*again[0]->subnodeGroup()->subnodes()[0]).imageEntry(), kept.get());
  history->undo();
  EXPECT_EQ(target->imageStore()->countForKey(entry->key()), 1);
  history->undo();
  EXPECT_TRUE(target->imageStore()->imageEntriesInForce().empty());
  const auto twin = duplicated({group}, false);
  EXPECT_EQ(document->imageStore()->countForKey(entry->key()), 2);
  EXPECT_EQ(document->imageStore()->countForKey(other->key()), 1);
  EXPECT_EQ(imageOf(*twin[0]->subnodeGroup()->subnodes()[0]).imageEntry(), entry.get());
}

TEST_F(ClipboardTest, APatchThatNobodyKnowsSurvives) {
  static const HXRNodeClass passer("HXRPasserNode", patchClassNamed("HXRClampNode"), {});
  const auto node = make<HXNode>();
  node->setPatch(passer.makeDefinition());
  node->setName("Passer");
  document->subnodeGroup()->addNode(*node);
  const auto source = addNamed("HXRClampNode", "Source");
  connect(*source, "Tarn.resultOutput", *node, "Tarn.valueInput");
  port(*node, "Tarn.minimumInput").setStaticValue(PMRPrimitive::primitiveWithIndexValue(5));
  auto bytes = copied({node, source});
  for (int round = 0; round < 2; ++round) {
    const auto target = make<HXDocument>();
    const auto nodes = pasted(bytes, *target);
    ASSERT_EQ(nodes.size(), 2U);
    EXPECT_EQ(nodes[0]->unknownPatchClass(), "HXRPasserNode");
    EXPECT_EQ(nodes[0]->portsInForce().size(), 4U);
    EXPECT_EQ(port(*nodes[0], "Tarn.minimumInput").staticValue()->indexValue(), 5);
    EXPECT_EQ(port(*nodes[0], "Tarn.valueInput").connections().count(), 1U);
    bytes = copied(nodes);
  }
}

TEST_F(ClipboardTest, ImagesThenNodesThenConnectionsAreAnnounced) {
  const auto scene = makeScene();
  const auto shows = addNamed("HXRImageNode", "Picture");
  imageOf(*shows).setImageEntry(imageEntry(3));
  const auto bytes = copied({shows, scene.source, scene.group});
  const auto target = make<HXDocument>();
  target->setName("Target");
  pasted(copied({addNamed("HXRColorViewNode", "View")}), *target);  // a view group by now
  std::vector<std::string> lines;
  {
    Recorder recorder;
    pasted(bytes, *target, {1, 1});
    for (auto& line : recorder.take()) {
      if (line.find("HXGroupAddNode") == 0 || line.find("HXDocument") == 0 ||
          line.find("HXImageStore") == 0) {
        lines.push_back(std::move(line));
      }
    }
    EXPECT_THAT(recorder.takeLog(), IsEmpty());
  }
  ASSERT_EQ(lines.size(), 8U);
  EXPECT_THAT(lines[0], HasSubstr("HXImageStoreAddImageNotification"));
  EXPECT_EQ(lines[1],
            "HXGroupAddNodeNotification HXSubviewGroup Group=HXSubviewGroup Node=Picture");
  EXPECT_EQ(lines[2], "HXGroupAddNodeNotification HXSubviewGroup Group=HXSubviewGroup Node=Source");
  EXPECT_EQ(lines[3], "HXGroupAddNodeNotification HXSubviewGroup Group=HXSubviewGroup Node=Box");
  for (std::size_t i = 4; i < 8; ++i) {
    EXPECT_EQ(lines[i],
              "HXDocumentAddConnectionNotification Target Graph=Target Connection=connection");
  }
}

TEST_F(ClipboardTest, DuplicatesStandBesideTheirOriginals) {
  const auto scene = makeScene();
  const auto history = make<HXHistory>(*document);
  const auto before = savedBytes(*document, HXCodingTypeEditorWithKeys);
  const auto copies = duplicated({scene.second, scene.source}, false, {7, 0});
  ASSERT_EQ(copies.size(), 2U);
  EXPECT_EQ(copies[0]->parentGroup(), scene.group->subnodeGroup().get());
  EXPECT_EQ(copies[1]->parentGroup(), document->subnodeGroup().get());
  EXPECT_EQ(copies[0]->position().x, scene.second->position().x + 7);
  EXPECT_TRUE(port(*copies[0], "Tarn.valueInput").connections().isEmpty());
  EXPECT_EQ(history->undoCount(), 1U);
  EXPECT_EQ(history->undoName(), "Duplicate");
  history->undo();
  EXPECT_EQ(savedBytes(*document, HXCodingTypeEditorWithKeys), before);
  const auto elsewhere = make<HXDocument>();
  const auto stranger = nodeOf("HXRClampNode");
  EXPECT_EQ(HXClipboard::duplicate({scene.second, stranger}, {}).status().code(),
            StatusCode::refused);
  elsewhere->subnodeGroup()->addNode(*stranger);
  EXPECT_EQ(HXClipboard::duplicate({stranger, scene.second}, {}).status().code(),
            StatusCode::refused);
}

TEST_F(ClipboardTest, InputsOfDuplicatesMayBeFedAsTheOriginalsAre) {
  const auto scene = makeScene();
  auto& output = port(*scene.source, "Tarn.output");
  const auto group = duplicated({scene.group}, true)[0];
  ASSERT_EQ(output.connections().count(), 2U);
  const auto wire = output.connections().toVector()[1];
  EXPECT_EQ(wire->inputPort(), &port(*named(*group, "First"), "Tarn.valueInput"));
  EXPECT_EQ(wire->displayInputPort(), group->symbolicInputPorts()[0].get());
  // Of a node inside, the wire comes in through a publication like that of the original.
  const auto copies = duplicated({scene.first, scene.second}, true);
  ASSERT_EQ(output.connections().count(), 3U);
  const auto inner = output.connections().toVector()[2];
  EXPECT_EQ(inner->inputPort(), &port(*copies[0], "Tarn.valueInput"));
  ASSERT_EQ(scene.group->symbolicInputPortsInForce().count(), 2U);
  EXPECT_EQ(inner->displayInputPort(), scene.group->symbolicInputPorts()[1].get());
  EXPECT_EQ(inner->displayInputPort()->name(), "Level: low");
  EXPECT_EQ(port(*scene.first, "Tarn.resultOutput").connections().count(), 2U);
  EXPECT_EQ(port(*copies[0], "Tarn.resultOutput").connections().count(), 2U);
  EXPECT_THAT(faultsOf(*document), IsEmpty());
}

TEST_F(ClipboardTest, NestingOfAnyDepthIsCopied) {
  constexpr int kDepth = 20000;
  Ref<HXNode> outermost = add("");
  Ref<HXNode> at = outermost;
  for (int i = 0; i < kDepth; ++i) {
    const auto inner = nodeOf("");
    at->subnodeGroup()->addNode(*inner);
    at = inner;
  }
  Nodes all;
  for (HXNodeWalk walk(*outermost); HXNode* node = walk.next();) all.emplace_back(node);
  const auto copy = duplicated(all, true);
  ASSERT_EQ(copy.size(), 1U);
  int depth = 0;
  for (HXNodeWalk walk(*copy[0]); walk.next();) ++depth;
  EXPECT_EQ(depth, kDepth + 1);
}

// Objects that only somebody with a program of his own writes.
class Forged final : public Object {
 public:
  static constexpr Class kForged{"Forged", &Object::kClass};
  Forged(const Class& as, std::function<void(Encoder&)> encode)
      : class_(as), encode_(std::move(encode)) {}
  const Class& isa() const noexcept override { return class_; }
  void encodeWithCoder(Encoder& coder) const override { encode_(coder); }

 private:
  const Class& class_;
  std::function<void(Encoder&)> encode_;
};

class HostileClipboardTest : public ClipboardTest {
 protected:
  HostileClipboardTest() {
    HXClipboardContents::registerClasses();
    addNamed("HXRClampNode", "Here");
    history = make<HXHistory>(*document);
    before = savedBytes(*document, HXCodingTypeEditorWithKeys);
  }
  // What the root refuses with; the document must be as it was.
  std::string refusal(ByteSpan bytes) {
    std::int64_t alive = 0;
    std::string sentence;
    // What lives on after the first time is texts that the process keeps.
    for (int round = 0; round < 2; ++round) {
      alive = Object::liveObjectCount();
      const auto nodes = HXClipboard::paste(bytes, *document->subnodeGroup());
      if (nodes) ADD_FAILURE() << "was pasted";
      sentence = nodes.status().sentence();
    }
    EXPECT_EQ(Object::liveObjectCount(), alive) << sentence;
    EXPECT_EQ(savedBytes(*document, HXCodingTypeEditorWithKeys), before);
    EXPECT_FALSE(history->canUndo());
    return sentence;
  }
  std::string refusal(const Object& root) {
    return refusal((*StandardKeyedArchiver::archivedData(&root, 0))->bytes());
  }
  static Ref<HXClipboardContents> contents(Nodes nodes) {
    return make<HXClipboardContents>(std::move(nodes), std::vector<Ref<HXConnection>>());
  }

  Ref<HXHistory> history;
  std::vector<std::uint8_t> before;
};

TEST_F(HostileClipboardTest, WhatIsNoClipboardIsRefused) {
  const auto other = make<HXDocument>();
  const auto group = nodeOf("");
  other->subnodeGroup()->addNode(*group);
  const auto inner = nodeOf("HXRClampNode");
  group->subnodeGroup()->addNode(*inner);
  EXPECT_THAT(refusal(bytesOf("bplist00")), ::testing::Not(IsEmpty()));
  EXPECT_THAT(refusal(*inner), HasSubstr("not a clipboard"));
  EXPECT_THAT(refusal(*other), HasSubstr("not a clipboard"));
  EXPECT_THAT(refusal(*contents({})), HasSubstr("there are none"));
  EXPECT_THAT(refusal(*contents({other})), HasSubstr("document"));
  EXPECT_THAT(refusal(*contents({inner, inner})), HasSubstr("twice"));
  EXPECT_THAT(refusal(*contents({group, inner})), HasSubstr("inside another"));
  EXPECT_EQ(
      HXClipboard::paste(copied({group})->bytes(), *nodeOf("")->subnodeGroup()).status().code(),
      StatusCode::refused);
}

TEST_F(HostileClipboardTest, NodesThatHoldThemselvesAreRefused) {
  static const Class nodeClass("HXNode", &Object::kClass);
  static const Class groupClass("HXGroup", &Object::kClass);
  static const Class rootClass("HXClipboardContents", &Object::kClass);
  const Object* node = nullptr;
  const auto group = make<Forged>(groupClass, [&](Encoder& coder) {
    coder.encodeCollection(
        CodingKind::list, 1, [&](std::size_t) { return node; }, Symbol("HXGroup.subnodes"));
  });
  const auto circle = make<Forged>(
      nodeClass, [&](Encoder& coder) { coder.encodeObject(group, Symbol("HXNode.subnodeGroup")); });
  node = circle.get();
  const auto good = nodeOf("HXRClampNode");
  for (const Object* listed :
       {static_cast<const Object*>(circle.get()), static_cast<const Object*>(good.get())}) {
    const auto root = make<Forged>(rootClass, [&](Encoder& coder) {
      coder.encodeCollection(
          CodingKind::list, 1, [&](std::size_t) { return listed; },
          Symbol("HXClipboardContents.nodes"));
      // A wire may lead to nodes that are not listed.
      coder.encodeCollection(
          CodingKind::list, 1, [&](std::size_t) { return circle.get(); },
          Symbol("HXClipboardContents.connections"));
    });
    refusal(*root);
  }
}

TEST_F(HostileClipboardTest, WhateverIsTamperedWithEndsInASentenceOrInWholeNodes) {
  auto other = make<HXDocument>();
  std::swap(document, other);
  const auto scene = makeScene();
  const auto bytes = copied({scene.source, scene.group});
  std::swap(document, other);
  const auto read = PropertyListReader::read(bytes->bytes());
  ASSERT_TRUE(read);
  Tampering tampering(*read);
  Recorder quiet;
  int taken = 0;
  int tried = 0;
  const auto attempt = [&](ByteSpan tampered) {
    ++tried;
    const auto nodes = HXClipboard::paste(tampered, *document->subnodeGroup());
    EXPECT_NE(nodes.isOK(), !nodes.status().sentence().empty());
    if (nodes) {
      ++taken;
      EXPECT_TRUE(HXDocumentFile::deviceGraph(*document));
      EXPECT_TRUE(HXClipboard::copy(*nodes));
      ASSERT_TRUE(history->undo());
      history->removeAllSteps();
    }
    quiet.take();
    quiet.takeLog();
    if (tried % 16 == 0 || nodes) {
      ASSERT_EQ(savedBytes(*document, HXCodingTypeEditorWithKeys), before);
    }
  };
  for (Tampering::Index map = 0; map < read->count(); ++map) {
    if (read->kind(map) != PropertyList::Kind::map) continue;
    for (std::uint32_t entry = 0; entry < read->count(map); ++entry) {
      if ((map + entry) % 5 == 0) attempt(tampering.without(map, entry));
      attempt(tampering.replaced(map, entry, 7));
    }
    if (HasFailure()) break;
  }
  EXPECT_GT(taken, tried / 20);
  EXPECT_LT(taken, tried);
  std::mt19937 random(3);
  for (int i = 0; i < 200 && !HasFailure(); ++i) {
    std::vector<std::uint8_t> flipped(bytes->bytes().begin(), bytes->bytes().end());
    flipped[random() % flipped.size()] ^= static_cast<std::uint8_t>(1U << (random() % 8));
    attempt(flipped);
  }
}

// Documents that nobody would make by hand: what is pasted says the same as what was copied, down
// to the last byte of a copy of it; undo and redo know it, and nothing stays.
TEST_F(ClipboardTest, RandomDocumentsArePastedAsTheyAre) {
  const auto earlier = Log::setSink([](std::string_view) {});
  constexpr std::uint32_t kSeeds = 200;
  int compared = 0;
  for (std::uint32_t seed = 0; seed < kSeeds && !HasFailure(); ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    std::vector<std::uint8_t> script(600);
    for (auto& byte : script) byte = static_cast<std::uint8_t>(random());
    const auto edited = make<HXDocument>();
    fuzz::ModelEditor editor(script.data(), script.size());
    editor.keepTo(*edited);
    while (editor.runOne()) {
    }
    editor.setPaused(true);
    // What was changed in a definition by hand is in no archive: there is nothing to compare with.
    const bool isOpened = seed % 4 != 0;
    const auto origin = isOpened ? openedDocument(savedBytes(*edited)) : edited;
    ASSERT_TRUE(origin);
    const Leniency leniency{.doublePublications = editor.doublePublications()};
    const auto nodes = origin->subnodeGroup()->subnodes();
    if (nodes.empty()) continue;
    const auto before = savedBytes(*origin, HXCodingTypeEditorWithKeys);
    const auto bytes = copied(nodes);
    EXPECT_EQ(savedBytes(*origin, HXCodingTypeEditorWithKeys), before);
    const bool isWhole = isOpened && refersToItselfOnly(*origin);
    const auto alive = Object::liveObjectCount();
    for (const bool intoItself : {false, true}) {
      const auto target = intoItself ? origin : make<HXDocument>();
      const auto history = make<HXHistory>(*target);
      const auto empty = savedBytes(*target, HXCodingTypeEditorWithKeys);
      const auto copies = pasted(bytes, *target);
      EXPECT_EQ(copies.size(), nodes.size());
      EXPECT_EQ(history->undoName(), "Paste");
      EXPECT_THAT(faultsOf(*target, leniency), IsEmpty());
      if (isWhole) {
        EXPECT_TRUE(copied(copies)->isEqual(*bytes)) << intoItself;
        ++compared;
      }
      const auto full = savedBytes(*target, HXCodingTypeEditorWithKeys);
      EXPECT_TRUE(history->undo());
      EXPECT_EQ(savedBytes(*target, HXCodingTypeEditorWithKeys), empty);
      EXPECT_TRUE(history->redo());
      EXPECT_EQ(savedBytes(*target, HXCodingTypeEditorWithKeys), full);
      EXPECT_EQ(history->undoCount(), 1U);
      duplicated(copies, true);
      EXPECT_THAT(faultsOf(*target, leniency), IsEmpty());
      EXPECT_EQ(history->undoCount(), 2U);
      EXPECT_TRUE(history->undo());
      EXPECT_EQ(savedBytes(*target, HXCodingTypeEditorWithKeys), full);
      EXPECT_TRUE(history->undo());
    }
    // The first ones also make what the process shares from then on.
    if (seed > kSeeds / 2) {
      EXPECT_EQ(Object::liveObjectCount(), alive);
    }
  }
  Log::setSink(earlier);
  EXPECT_GT(compared, static_cast<int>(kSeeds) / 2);
}

// Observers take out, join and publish what has just come, and other things.
TEST_F(ClipboardTest, ObserversMayEditWhileItIsPasted) {
  const auto earlier = Log::setSink([](std::string_view) {});
  for (std::uint32_t seed = 0; seed < 150 && !HasFailure(); ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    std::vector<std::uint8_t> script(1500);
    for (auto& byte : script) byte = static_cast<std::uint8_t>(random());
    const auto target = make<HXDocument>();
    fuzz::ModelEditor editor(script.data(), script.size());
    editor.keepTo(*target);
    for (int i = 0; i < 40; ++i) editor.runOne();
    const auto nodes = target->subnodeGroup()->subnodes();
    if (nodes.empty()) continue;
    const auto history = make<HXHistory>(*target);
    const auto before = savedBytes(*target, HXCodingTypeEditorWithKeys);
    EXPECT_EQ(pasted(copied(nodes), *target, {1, 2}).size(), nodes.size());
    const auto rest = target->subnodeGroup()->subnodes();
    if (!rest.empty()) duplicated(rest, true);
    editor.setPaused(true);
    const Leniency leniency{.doublePublications = editor.doublePublications()};
    EXPECT_THAT(faultsOf(*target, leniency), IsEmpty());
    while (history->undo()) {
    }
    EXPECT_EQ(savedBytes(*target, HXCodingTypeEditorWithKeys), before);
  }
  Log::setSink(earlier);
}

}  // namespace tarnkit::test
