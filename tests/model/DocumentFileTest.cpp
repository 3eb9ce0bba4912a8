#include "ModelFixture.h"
#include "tarnkit/archive/HXCoding.h"
#include "tarnkit/model/HXDocumentFile.h"
#include "tarnkit/model/HXParameterKinds.h"
#include "tarnkit/model/HXPortGroup.h"
#include "tarnkit/model/HXSubviewGroup.h"
#include "tarnkit/patches/catalogue/Catalogue.h"
#include "tarnkit/platform/coding/StandardKeyedArchiver.h"
#include "tarnkit/platform/propertylist/PropertyList.h"
#include "tarnkit/platform/propertylist/PropertyListReader.h"

namespace tarnkit::test {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class DocumentFileTest : public ModelTest {
 protected:
  Ref<HXDocument> reopened(std::int32_t codingType = 0) {
    std::string error;
    const auto bytes = HXDocumentFile::dataWithDocument(*document, codingType, error);
    auto opened = HXDocumentFile::document(bytes, codingType, error);
    EXPECT_TRUE(opened) << error;
    return opened;
  }
  static Ref<HXNode> named(const HXNode& parent, const char* name) {
    for (const auto& node : parent.subnodeGroup()->subnodes()) {
      if (node->name() == name) return node;
    }
    ADD_FAILURE() << name;
    return nullptr;
  }
};

TEST_F(DocumentFileTest, EverythingThatTheUserMadeComesBack) {
  const auto group = add("");
  const auto mux = add("HXRMultiplexerNode", group.get());
  const auto source = add("HXRClampNode");
  const auto view = add("HXRColorViewNode", group.get());
  as<HXIndexParameter>(mux->parameterForKey("Tarn.numberOfSourcesParameter"))->setValue(4);
  port(*mux, "Tarn.source3Input").setStaticValue(PMRPrimitive::primitiveWithDegreesValue(90));
  const auto first = group->subnodeGroup()->addSymbolicPortForPort(port(*mux, "Tarn.source2Input"));
  first->setName("Box: In");
  document->connectPort(*first, port(*source, "Tarn.resultOutput"));
  mux->portGroupForKey("Sources", HXOrientationInput)->setCollapsedCanvasGroup(true);
  mux->setPosition({3, -4.5F});
  mux->setInspectorPanel(2);
  mux->setSelected(true);
  mux->setName("Choice");
  group->subnodeGroup()->setCanvasCenter({10, 20});
  group->subnodeGroup()->setOpaque(true);

  Recorder recorder;
  const auto opened = reopened();
  EXPECT_THAT(recorder.take(), IsEmpty()) << "an opening document announces nothing";
  EXPECT_THAT(recorder.takeLog(), IsEmpty());
  EXPECT_NE(opened->documentKey(), document->documentKey());
  const auto group2 = named(*opened, "Group");
  EXPECT_TRUE(as<HXSubviewGroup>(group2->subnodeGroup().get()));
  EXPECT_NE(group2->uniqueKey(), group->uniqueKey());
  EXPECT_EQ(group2->subnodeGroup()->canvasCenter(), (HXPoint{10, 20}));
  EXPECT_TRUE(group2->subnodeGroup()->isOpaque());
  const auto mux2 = named(*group2, "Choice");
  EXPECT_EQ(mux2->position(), (HXPoint{3, -4.5F}));
  EXPECT_EQ(mux2->inspectorPanel(), 2U);
  EXPECT_TRUE(mux2->selected());
  EXPECT_EQ(keys(mux2->inputPorts()), keys(mux->inputPorts()));
  EXPECT_TRUE(port(*mux2, "Tarn.source3Input")
                  .staticValue()
                  ->isEqual(*PMRPrimitive::primitiveWithDegreesValue(90)));
  EXPECT_TRUE(mux2->portGroupForKey("Sources", HXOrientationInput)->collapsedCanvasGroup());
  EXPECT_THAT(mux2->keyPath(),
              ElementsAre(mux2->uniqueKey(), group2->uniqueKey(), opened->uniqueKey()));
  const auto& symbolic =
      static_cast<HXSymbolicPort&>(**group2->symbolicInputPortsInForce().begin());
  EXPECT_EQ(symbolic.name(), "Box: In");
  EXPECT_EQ(symbolic.resolvedPort(), &port(*mux2, "Tarn.source2Input"));
  EXPECT_EQ(symbolic.node(), group2.get());
  EXPECT_EQ(group2->inputPorts().size(), 1U);
  const auto connections = port(*mux2, "Tarn.source2Input").connections().toVector();
  ASSERT_EQ(connections.size(), 1U);
  EXPECT_EQ(connections[0]->displayInputPort(), &symbolic);
  EXPECT_EQ(connections[0]->outputPort(), &port(*named(*opened, "Clamp"), "Tarn.resultOutput"));
  // The opened document is alive: an edit is announced again.
  mux2->setName("Other");
  EXPECT_EQ(recorder.take().size(), 1U);
}

TEST_F(DocumentFileTest, OnlyTypeThreeKeepsTheUniqueKeys) {
  const auto node = add("HXRClampNode");
  for (const std::int32_t codingType : {0, 1, 3}) {
    const auto opened = reopened(codingType);
    const auto same = named(*opened, "Clamp");
    EXPECT_EQ(same->uniqueKey() == node->uniqueKey(), codingType == 3) << codingType;
    EXPECT_EQ(opened->subnodeGroup()->subnodeForKey(same->uniqueKey()), same.get());
  }
  std::string error;
  EXPECT_EQ(HXDocumentFile::dataWithDocument(*document, 0, error),
            HXDocumentFile::dataWithDocument(*document, 1, error));
  EXPECT_THAT(HXDocumentFile::dataWithDocument(*document, 2, error), IsEmpty());
  EXPECT_THAT(error, HasSubstr("coding type 2"));
}

TEST_F(DocumentFileTest, ANodeOfAnUnknownPatchLosesNothing) {
  static const HXRNodeClass visitor("HXRVisitorNode", &HXRClampNode, {});
  ClassRegistry::add(visitor);
  const auto node = make<HXNode>();
  node->setPatch(visitor.makeDefinition());
  node->setName("Visitor");
  document->subnodeGroup()->addNode(*node);
  const auto source = add("HXRClampNode");
  connect(*source, "Tarn.resultOutput", *node, "Tarn.valueInput");
  port(*node, "Tarn.minimumInput").setStaticValue(PMRPrimitive::primitiveWithIndexValue(5));
  std::string error;
  const auto bytes = HXDocumentFile::dataWithDocument(*document, 0, error);
  // The class goes, as when a plug-in is missing; its name then names something else.
  static const Class impostor("HXRVisitorNode", &Object::kClass);
  ClassRegistry::add(impostor);
  auto opened = HXDocumentFile::document(bytes, 0, error);
  ASSERT_TRUE(opened) << error;
  for (int round = 0; round < 2; ++round) {
    const auto visiting = named(*opened, "Visitor");
    EXPECT_FALSE(visiting->patch());
    EXPECT_EQ(visiting->unknownPatchClass(), "HXRVisitorNode");
    EXPECT_EQ(visiting->portsInForce().size(), 4U);
    EXPECT_EQ(port(*visiting, "Tarn.minimumInput").staticValue()->indexValue(), 5);
    EXPECT_EQ(port(*visiting, "Tarn.valueInput").connections().count(), 1U);
    const auto again = HXDocumentFile::dataWithDocument(*opened, 0, error);
    opened = HXDocumentFile::document(again, 0, error);
    ASSERT_TRUE(opened) << error;
  }
  ClassRegistry::add(visitor);
  opened = HXDocumentFile::document(HXDocumentFile::dataWithDocument(*opened, 0, error), 0, error);
  EXPECT_TRUE(named(*opened, "Visitor")->patch()) << "back with the plug-in";
}

TEST_F(DocumentFileTest, AViewWhoseKeyAnotherNodeTookIsNoViewAnyMore) {
  add("HXRColorViewNode");
  const auto first = reopened(HXCodingTypeEditorWithKeys);
  const auto second = reopened(HXCodingTypeEditorWithKeys);
  first->subnodeGroup()->addNode(*second->subnodeGroup()->subnodes()[0]);
  std::string error;
  const auto bytes = HXDocumentFile::dataWithDocument(*first, HXCodingTypeEditorWithKeys, error);
  Recorder recorder;
  const auto opened = HXDocumentFile::document(bytes, HXCodingTypeEditorWithKeys, error);
  ASSERT_TRUE(opened) << error;
  EXPECT_THAT(recorder.takeLog(), IsEmpty()) << "nothing of the other node was saved";
  const auto group = as<HXSubviewGroup>(opened->subnodeGroup());
  ASSERT_TRUE(group);
  ASSERT_EQ(group->subviewNodesInForce().count(), 1U);
  EXPECT_EQ(group->subviewNodesInForce().objectAtIndex(0).get(), group->subnodes()[0].get());
}

TEST_F(DocumentFileTest, ANodeOfAnUnknownPatchCanBeEditedAround) {
  static const HXRNodeClass guest("HXRGuestNode", &HXRColorViewNode, {});
  ClassRegistry::add(guest);
  const auto node = make<HXNode>();
  node->setPatch(guest.makeDefinition());
  node->setName("Guest");
  document->subnodeGroup()->addNode(*node);
  const auto clamp = add("HXRClampNode", node.get());
  node->subnodeGroup()->addSymbolicPortForPort(port(*clamp, "Tarn.valueInput"));
  const auto source = add("HXRTransitionNode");
  connect(*source, "Tarn.output", *node, "Tarn.xPositionInput");
  std::string error;
  const auto bytes = HXDocumentFile::dataWithDocument(*document, 0, error);
  static const Class impostor("HXRGuestNode", &Object::kClass);
  ClassRegistry::add(impostor);
  const auto opened = HXDocumentFile::document(bytes, 0, error);
  ASSERT_TRUE(opened) << error;
  const auto guesting = named(*opened, "Guest");
  const auto inner = named(*guesting, "Clamp");
  const auto groups = guesting->inputPortGroups().size();
  EXPECT_EQ(guesting->inputPorts().size(), guesting->portsInForce().size() + 1);
  EXPECT_TRUE(guesting->shouldBeTreatedAsViewNode());

  guesting->setForceAllowsSubnodes(true);
  guesting->setForceAllowsSubnodes(false);
  ASSERT_TRUE(guesting->subnodeGroup()) << "nobody knows whether its patch holds nodes";
  guesting->subnodeGroup()->addSymbolicPortForPort(port(*inner, "Tarn.minimumInput"));
  EXPECT_EQ(guesting->inputPortGroups().size(), groups);
  EXPECT_EQ(guesting->inputPorts().size(), guesting->portsInForce().size() + 2);
  EXPECT_EQ(guesting->unknownPatchClass(), "HXRGuestNode");

  auto& output = port(*named(*opened, "Transition"), "Tarn.output");
  EXPECT_EQ(output.connections().count(), 1U);
  guesting->parentGroup()->removeNode(guesting.get());
  EXPECT_TRUE(output.connections().isEmpty());
  guesting->setPatch(nullptr);
  EXPECT_TRUE(guesting->unknownPatchClass().isNil());
  EXPECT_TRUE(guesting->portsInForce().empty());
}

TEST_F(DocumentFileTest, TheDeviceGraphHoldsWhatTheDeviceNeeds) {
  const auto group = add("");
  const auto clamp = add("HXRClampNode", group.get());
  const auto delay = add("HXRDelayNode");
  port(*delay, "Tarn.delayInput").setStaticValue(PMRPrimitive::primitiveWithNumberValue(3));
  connect(*delay, "Tarn.valueOutput", *clamp, "Tarn.valueInput");
  const auto bytes = HXDocumentFile::deviceGraph(*document);
  PropertyList list;
  std::string error;
  ASSERT_TRUE(PropertyListReader::read(bytes, list, &error)) << error;
  const auto objects = list.valueForKey(list.root(), "$objects");
  const auto text = [&](PropertyList::Index map, const char* key) {
    const auto value = list.valueForKey(map, key);
    return value == PropertyList::kNone ? std::string_view("absent") : list.string(value);
  };
  const auto target = [&](PropertyList::Index map, const char* key) {
    const auto reference = list.valueForKey(map, key);
    if (reference == PropertyList::kNone) return PropertyList::kNone;
    return list.valueForKey(objects, text(reference, "$reference"));
  };
  const auto root = list.valueForKey(objects, "$object-0");
  EXPECT_EQ(text(root, "$class"), "PMGraph");
  EXPECT_EQ(text(root, "PMNode.uniqueKey"), document->uniqueKey().view());
  EXPECT_EQ(text(root, "PMNode.processClassName"), "PMRPatch");
  EXPECT_EQ(list.valueForKey(root, "PMNode.parentGroup"), PropertyList::kNone);
  EXPECT_EQ(text(target(root, "PMNode.subnodeGroup"), "$class"), "PMGroup");

  std::map<std::string_view, int> classes;
  for (const auto object : list.values(objects)) {
    if (list.kind(object) != PropertyList::Kind::map) continue;
    const auto name = text(object, "$class");
    ++classes[name];
    if (name == "PMConnection") {
      EXPECT_EQ(target(object, "PMConnection.parentNode"), root);
      EXPECT_EQ(list.count(target(object, "PMConnection.outputPortKeyPath")), 1U);
      const auto path = target(object, "PMConnection.inputPortKeyPath");
      ASSERT_EQ(list.count(path), 2U);
      EXPECT_EQ(list.string(list.elements(path)[0]), clamp->uniqueKey().view());
    }
    if (name == "PMPort" && text(object, "PMPort.uniqueKey") == "Tarn.delayInput") {
      EXPECT_EQ(text(object, "PMPort.processClassName"), "PMRPrimitiveInputPort");
      const auto value = target(object, "PMPort.defaultValue");
      EXPECT_EQ(text(value, "$class"), "PMRPrimitive");
      EXPECT_EQ(list.real(list.valueForKey(value, "PMRPrimitive.numberValue")), 3.0);
    }
  }
  EXPECT_EQ(classes["PMNode"], 3);
  EXPECT_EQ(classes["PMPort"], 7);
  EXPECT_EQ(classes["PMConnection"], 1);
}

TEST_F(DocumentFileTest, ADocumentThatIsLetGoLeavesNothingBehind) {
  const auto liveAndDie = [this] {
    document = make<HXDocument>();
    const auto group = add("");
    const auto a = add("HXRClampNode", group.get());
    const auto b = add("HXRImageViewNode", group.get());
    connect(*a, "Tarn.resultOutput", *b, "Tarn.widthInput");
    group->subnodeGroup()->addSymbolicPortForPort(port(*a, "Tarn.valueInput"));
    port(*a, "Tarn.minimumInput").patchPort();
    reopened();
    HXDocumentFile::deviceGraph(*document);
    document = nullptr;
  };
  liveAndDie();  // what the process shares from now on is made
  const auto alive = Object::liveObjectCount();
  liveAndDie();
  EXPECT_EQ(Object::liveObjectCount(), alive);
}

TEST_F(DocumentFileTest, DeepDocumentsAreSavedOpenedSentAndTakenDown) {
  constexpr int kDepth = 20000;
  Ref<HXNode> parent(document.get());
  for (int i = 0; i < kDepth; ++i) {
    auto node = make<HXNode>();
    node->setForceAllowsSubnodes(true);
    node->setPatch(nullptr);
    parent->subnodeGroup()->addNode(*node);
    parent = node;
  }
  const auto opened = reopened();
  ASSERT_TRUE(opened);
  int depth = 0;
  for (const HXNode* node = opened.get();
       node->subnodeGroup() && node->subnodeGroup()->subnodesInForce().size() == 1;
       node = node->subnodeGroup()->subnodesInForce().begin()->value.get()) {
    ++depth;
  }
  EXPECT_EQ(depth, kDepth);
  EXPECT_FALSE(HXDocumentFile::deviceGraph(*opened).empty());
}

}  // namespace tarnkit::test
