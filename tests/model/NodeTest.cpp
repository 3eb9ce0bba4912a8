#include "ModelFixture.h"
#include "tarnkit/model/HXPortGroup.h"
#include "tarnkit/model/HXPortGroupCollection.h"
#include "tarnkit/patches/PatchColors.h"
#include "tarnkit/patches/catalogue/math/HXRMathNode.h"

namespace tarnkit::test {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class NodeTest : public ModelTest {};

TEST_F(NodeTest, KeysCountUpAndKeyPathsRunOutward) {
  const auto outer = add("");
  const auto inner = add("", outer.get());
  const auto leaf = add("HXRClampNode", inner.get());
  EXPECT_THAT(leaf->keyPath(), ElementsAre(leaf->uniqueKey(), inner->uniqueKey(),
                                           outer->uniqueKey(), document->uniqueKey()));
  const auto loose = nodeOf("HXRClampNode");
  EXPECT_THAT(loose->keyPath(), IsEmpty());
  const auto number = [](const HXNode& node) {
    return std::stoi(node.uniqueKey().toStdString().substr(5));
  };
  EXPECT_EQ(number(*loose), number(*leaf) + 1);
  // Moved with everything in it, the path follows.
  document->subnodeGroup()->addNode(*inner);
  EXPECT_THAT(leaf->keyPath(),
              ElementsAre(leaf->uniqueKey(), inner->uniqueKey(), document->uniqueKey()));
  document->subnodeGroup()->removeNode(inner.get());
  EXPECT_THAT(leaf->keyPath(), ElementsAre(leaf->uniqueKey(), inner->uniqueKey()));
  EXPECT_TRUE(leaf->documentKey().isNil());
}

TEST_F(NodeTest, SettersAnnounceRealChangesInsideADocumentOnly) {
  const auto loose = nodeOf("HXRClampNode");
  const auto node = add("HXRClampNode");
  Recorder recorder;
  loose->setName("Other");
  loose->setPosition({1, 2});
  loose->setSelected(true);
  EXPECT_THAT(recorder.take(), IsEmpty());
  node->setName("Limit");
  node->setName(String(std::string("Limit")));
  node->setPosition({0, 2});
  node->setPosition({0, 2});
  node->setSelected(true);
  node->setSelected(true);
  node->setInspectorPanel(3);
  EXPECT_THAT(recorder.take(),
              ElementsAre("HXNodeNameDidChangeNotification Limit Node=Limit Name=Limit",
                          "HXNodePositionDidChangeNotification Limit Node=Limit",
                          "HXNodeSelectionDidChangeNotification Limit Node=Limit"));
}

TEST_F(NodeTest, HiddenGroupsKeepTheirPortsOutOfTheLists) {
  const auto node = add("HXRInterpolationNode");
  const auto all = keys(node->inputPorts());
  Recorder recorder;
  auto* group = node->portGroupForKey("Repeat Mode", HXOrientationInput);
  ASSERT_TRUE(group);
  group->setHidden(true);
  group->setHidden(true);
  group->setCollapsedCanvasGroup(true);
  group->setCollapsedSidebarGroup(true);
  EXPECT_EQ(keys(node->inputPorts()).size(), all.size() - 1);
  EXPECT_TRUE(node->portForKey("Tarn.repeatModeInput"));
  group->setHidden(false);
  EXPECT_EQ(keys(node->inputPorts()), all);
  EXPECT_THAT(recorder.take(),
              ElementsAre("HXPortGroupHiddenDidChangeNotification Repeat Mode "
                          "PortGroup=Repeat Mode Hidden=1",
                          "HXPortGroupCollapsedCanvasDidChangeNotification Repeat Mode "
                          "PortGroup=Repeat Mode Collapsed=1",
                          "HXPortGroupCollapsedSidebarDidChangeNotification Repeat Mode "
                          "PortGroup=Repeat Mode Collapsed=1",
                          "HXPortGroupHiddenDidChangeNotification Repeat Mode "
                          "PortGroup=Repeat Mode Hidden=0"));
  EXPECT_EQ(node->portGroupForKey("Repeat Mode", 3), nullptr);
}

TEST_F(NodeTest, CollectionsKeepTheUsersOrder) {
  const auto keySet = [](std::initializer_list<const char*> keys) {
    auto set = make<OrderedSet>();
    for (const char* key : keys) set->add(String(key).object());
    return set;
  };
  const auto texts = [](const HXPortGroupCollection& collection) {
    std::string text;
    for (const auto& key : *collection.portGroupKeys()) text += String::from(key.get()).view();
    return text;
  };
  HXNode& node = *document;
  const auto collection = make<HXPortGroupCollection>(&node, HXOrientationInput);
  collection->updateWithPortGroupKeys(keySet({"A", "B", "C"}));
  const auto earlier = collection->portGroupKeys();
  collection->updateWithPortGroupKeys(keySet({"C", "D", "A"}));
  EXPECT_EQ(texts(*collection), "ACD");
  EXPECT_EQ(earlier->count(), 3U) << "a set that was handed out must not change";
  collection->updateWithPortGroupKeys(keySet({"D", "C", "A"}));
  EXPECT_EQ(texts(*collection), "ACD");
  collection->updateWithPortGroupKeys(keySet({}));
  EXPECT_EQ(texts(*collection), "");
  const auto callers = keySet({"A"});
  collection->updateWithPortGroupKeys(callers);
  callers->add(String("B").object());
  EXPECT_EQ(texts(*collection), "A") << "what the caller does with its set later is its own affair";
  collection->updateWithPortGroupKeys(nullptr);
  EXPECT_EQ(texts(*collection), "");
}

TEST_F(NodeTest, AnOperationNeverPutsANodeIntoItself) {
  const auto outer = add("");
  const auto inner = add("", outer.get());
  Recorder recorder;
  inner->subnodeGroup()->addNode(*outer);
  outer->subnodeGroup()->addNode(*outer);
  EXPECT_THAT(recorder.takeLog(), ::testing::SizeIs(2));
  EXPECT_EQ(outer->parentGroup(), document->subnodeGroup().get());
}

TEST_F(NodeTest, ADocumentIsTheOutermostNodeWhereverItStands) {
  const auto inner = make<HXDocument>();
  const auto node = add("HXRClampNode", inner.get());
  document->subnodeGroup()->addNode(*inner);
  EXPECT_EQ(inner->document(), inner.get());
  EXPECT_EQ(node->document(), inner.get());
  EXPECT_EQ(node->documentKey(), inner->documentKey());
}

TEST_F(NodeTest, ColoursFollowPatchAndViewNodes) {
  EXPECT_EQ(nodeOf("HXRPanGestureNode")->defaultColor(), HXGesturePatchColor);
  const auto group = add("");
  EXPECT_EQ(group->defaultColor(), HXPrimaryPatchColor);
  add("HXRColorViewNode", group.get());
  EXPECT_EQ(group->defaultColor(), HXViewPatchColor);
  EXPECT_TRUE(group->shouldBeTreatedAsViewNode());
  EXPECT_FALSE(nodeOf("HXRClampNode")->shouldBeTreatedAsViewNode());
}

// Of a process that has made no document yet, as every test is when it runs by itself.
TEST(FirstNodeTest, ANodeMadeBeforeTheFirstDocumentHasItsParameters) {
  const auto math = make<HXNode>();
  math->setPatch(HXRMathNode::kClass.makeDefinition());
  EXPECT_FALSE(math->parameters().empty());
  EXPECT_TRUE(HXConnection::hx_newUniqueKey().view().starts_with("connection_"));
}

}  // namespace tarnkit::test
