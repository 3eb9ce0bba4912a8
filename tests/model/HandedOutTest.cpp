#include "ModelFixture.h"
#include "tarnkit/model/HXImageStore.h"
#include "tarnkit/model/HXReplicatorNode.h"
#include "tarnkit/model/HXSubviewGroup.h"
#include "tarnkit/patches/catalogue/Catalogue.h"
#include "tarnkit/platform/objects/Data.h"

// Whoever asks for what a node, a group, a store or a definition holds walks it as it was asked
// for, whatever happens to the holder meanwhile.

namespace tarnkit::test {

class HandedOutTest : public ModelTest {
 protected:
  // More than a table searches in place, so that it moves and is indexed.
  static constexpr int kMany = 20;

  Ref<HXNode> crowded() {
    auto group = add("");
    for (int i = 0; i < kMany; ++i) add("HXRClampNode", group.get());
    return group;
  }
};

TEST_F(HandedOutTest, TheSubnodesMayBeTakenOutAndAddedTo) {
  const auto group = crowded();
  int walked = 0;
  for (const auto& entry : group->subnodeGroup()->subnodesByUniqueKey()) {
    ASSERT_EQ(entry.value->uniqueKey(), entry.key);
    add("HXRClampNode", group.get());
    group->subnodeGroup()->removeNode(entry.value.get());
    EXPECT_FALSE(entry.value->parentGroup());
    ++walked;
  }
  EXPECT_EQ(walked, kMany);
  EXPECT_EQ(group->subnodeGroup()->subnodesByUniqueKey().size(), std::uint32_t{kMany});
  // An observer does the same in the middle.
  const auto token = NotificationCenter::defaultCenter().addObserver(
      HXNodeSelectionDidChangeNotification, [&](const Notification&) {
        for (const auto& entry : group->subnodeGroup()->subnodesByUniqueKey()) {
          group->subnodeGroup()->removeNode(entry.value.get());
        }
      });
  for (const auto& entry : group->subnodeGroup()->subnodesByUniqueKey()) {
    entry.value->setSelected(true);
  }
  NotificationCenter::defaultCenter().removeObserver(token);
  EXPECT_TRUE(group->subnodeGroup()->subnodesByUniqueKey().empty());
}

TEST_F(HandedOutTest, TheViewsMayBeMovedAndTakenOut) {
  const auto group = add("");
  for (int i = 0; i < kMany; ++i) add("HXRColorViewNode", group.get());
  const Ref<HXSubviewGroup> views = as<HXSubviewGroup>(group->subnodeGroup());
  ASSERT_TRUE(views);
  int walked = 0;
  for (const auto& view : views->subviewNodes()) {
    views->moveSubviewNode(*view, 99);
    if (++walked % 2 == 0) views->removeNode(view.get());
  }
  EXPECT_EQ(walked, kMany);
  EXPECT_EQ(views->subviewNodes().size(), kMany / 2U);
}

TEST_F(HandedOutTest, PublishedPortsMayBeUnpublished) {
  const auto group = crowded();
  auto* inner = group->subnodeGroup().get();
  for (const auto& node : inner->subnodes()) {
    inner->addSymbolicPortForPort(port(*node, "Tarn.valueInput"));
    inner->addSymbolicPortForPort(port(*node, "Tarn.resultOutput"));
  }
  int walked = 0;
  // The inner node goes, and its other port with it.
  const auto removeNodeOf = [&](const HXSymbolicPort& published) {
    inner->removeNode(Ref<HXNode>(published.port()->node()).get());
    ++walked;
  };
  EXPECT_EQ(inner->symbolicInputPorts().size(), std::size_t{kMany});
  for (const auto& published : group->symbolicInputPorts()) {
    if (walked == kMany / 2) break;
    removeNodeOf(*published);
  }
  for (const auto& published : inner->symbolicOutputPorts()) removeNodeOf(*published);
  EXPECT_EQ(walked, kMany);
  EXPECT_TRUE(inner->symbolicInputPorts().empty());
  EXPECT_TRUE(group->symbolicOutputPorts().empty());
  EXPECT_TRUE(nodeOf("HXRClampNode")->symbolicInputPorts().empty());
}

TEST_F(HandedOutTest, ANodesPortsMayGoWhileTheyAreWalked) {
  const auto node = add("HXRShadowViewNode");
  const auto before = node->portsByUniqueKey().size();
  std::uint32_t walked = 0;
  for (const auto& entry : node->portsByUniqueKey()) {
    if (walked == 0) node->setPatch(nullptr);
    EXPECT_EQ(entry.value->uniqueKey(), entry.key);
    ++walked;
  }
  EXPECT_EQ(walked, before);
  EXPECT_TRUE(node->portsByUniqueKey().empty());
}

TEST_F(HandedOutTest, ArrayOutputsMayEndWhileTheyAreWalked) {
  const auto replicator = make<HXReplicatorNode>();
  replicator->setPatch(HXRReplicatorNode.makeDefinition());
  document->subnodeGroup()->addNode(*replicator);
  for (int i = 0; i < kMany; ++i) {
    const auto clamp = add("HXRClampNode", replicator.get());
    replicator->subnodeGroup()->addSymbolicPortForPort(port(*clamp, "Tarn.resultOutput"));
  }
  int walked = 0;
  for (const auto& entry : replicator->replicatorArrayOutputPortKeyForPort()) {
    EXPECT_TRUE(replicator->portForKey(entry.value));
    replicator->subnodeGroup()->removeSymbolicPortForPort(entry.key.get());
    ++walked;
  }
  EXPECT_EQ(walked, kMany);
  EXPECT_TRUE(replicator->replicatorArrayOutputPortKeyForPort().empty());
}

TEST_F(HandedOutTest, ImagesMayLeaveTheStore) {
  HXImageStore& store = *document->imageStore();
  for (int i = 0; i < kMany; ++i) {
    store.addImageEntry(make<HXImageStoreEntry>(nullptr, String("image_" + std::to_string(i))));
  }
  int walked = 0;
  for (const auto& entry : store.imageEntries()) {
    store.removeImageEntry(entry.value.get());
    ++walked;
  }
  EXPECT_EQ(walked, kMany);
  EXPECT_TRUE(store.imageEntries().empty());
}

TEST_F(HandedOutTest, ADefinitionsGroupsMayBeEmptied) {
  const auto node = add("HXRClampNode");
  const auto patch = node->patch();
  for (int i = 0; i < kMany; ++i) {
    const String key(std::to_string(i));
    patch->addPort(*make<HXRPort>(key, key, HXOrientationInput, HXConnectionRelationshipOne), key);
  }
  auto& groups = patch->inputPortGroupCollection();
  std::size_t walked = 0;
  for (const auto& entry : groups.portGroups()) {
    for (const auto& own : entry.value->ports()) patch->removePort(*own);
    ++walked;
  }
  EXPECT_GT(walked, std::size_t{kMany});
  EXPECT_TRUE(groups.portGroups().empty());
  EXPECT_TRUE(node->inputPortGroups().empty());
}

}  // namespace tarnkit::test
