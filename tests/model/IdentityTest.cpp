#include <thread>

#include "Consistency.h"
#include "ModelFixture.h"
#include "tarnkit/archive/HXCoding.h"
#include "tarnkit/model/HXDocumentFile.h"
#include "tarnkit/model/HXParameterKinds.h"
#include "tarnkit/model/HXPortGroup.h"
#include "tarnkit/model/HXReplicatorNode.h"
#include "tarnkit/model/HXSubviewGroup.h"
#include "tarnkit/model/KeyCounter.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

// Who is who, and where: keys that are drawn and read, nodes that take each other's place, and what
// stands for what when nodes have moved.

namespace tarnkit::test {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class IdentityTest : public ModelTest {
 protected:
  static std::vector<std::string> views(const HXNode& node) {
    std::vector<std::string> names;
    const auto* group = as<HXSubviewGroup>(node.subnodeGroup().get());
    if (!group) return {"none"};
    for (const auto& view : group->subviewNodesInForce()) {
      names.push_back(static_cast<const HXNode&>(*view).name().toStdString());
    }
    return names;
  }
};

TEST_F(IdentityTest, CountersMoveBeyondKeysThatAreReadAndNeverBack) {
  KeyCounter counter("node_");
  EXPECT_EQ(counter.next(), "node_0");
  for (const char* other : {"node_", "node_7x", "node_ 7", "nod_7", "group_9", "node_99999999999",
                            "node_-1", "node_-2", ""}) {
    counter.moveBeyond(other);
  }
  EXPECT_EQ(counter.next(), "node_1");
  counter.moveBeyond("node_41");
  counter.moveBeyond("node_7");
  EXPECT_EQ(counter.next(), "node_42");
  counter.moveBeyond("node_2147483647");
  EXPECT_EQ(counter.next(), "node_-2147483648") << "a number of 32 bits with a sign";
  counter.moveBeyond("node_5");
  EXPECT_EQ(counter.next(), "node_-2147483647");

  KeyCounter fresh("node_");
  fresh.moveBeyond("node_0");
  EXPECT_EQ(fresh.next(), "node_1");

  KeyCounter shared("k");
  std::thread other([&] {
    for (int i = 0; i < 1000; ++i) shared.moveBeyond(shared.next().view());
  });
  for (int i = 0; i < 1000; ++i) shared.next();
  other.join();
  EXPECT_GE(shared.nextNumber(), 2000);
}

// As in a process that has drawn no keys yet: the file's keys lie ahead of the counter.
TEST_F(IdentityTest, NodesAddedToAnOpenedDocumentNeverTakeItsKeys) {
  const std::string key = add("HXRClampNode")->uniqueKey().toStdString();
  std::string ahead = key;
  for (auto at = ahead.find('_') + 1; at < ahead.size(); ++at) ahead[at] = '9';
  auto bytes = savedBytes(*document, HXCodingTypeEditorWithKeys);
  for (auto at = bytes.begin();
       (at = std::search(at, bytes.end(), key.begin(), key.end())) != bytes.end();) {
    at = std::copy(ahead.begin(), ahead.end(), at);
  }
  const auto opened = openedDocument(bytes, HXCodingTypeEditorWithKeys);
  ASSERT_TRUE(opened);
  ASSERT_TRUE(opened->subnodeGroup()->subnodeForKey(String(ahead)));
  Recorder recorder;
  for (int i = 0; i < 3; ++i) opened->subnodeGroup()->addNode(*nodeOf("HXRClampNode"));
  EXPECT_EQ(opened->subnodeGroup()->subnodes().size(), 4U);
  EXPECT_TRUE(
      opened->subnodeGroup()->subnodeForKey(String("node_1" + std::string(ahead.size() - 5, '0'))));
  EXPECT_THAT(recorder.takeLog(), IsEmpty());
}

TEST_F(IdentityTest, ANodeThatTakesAnothersPlaceLeavesNoHalfOfItBehind) {
  const auto group = add("");
  const auto clamp = add("HXRClampNode", group.get());
  add("HXRColorViewNode");
  const auto copy = reopened(*document, HXCodingTypeEditorWithKeys);
  // The place is taken by nodes of the copy: of the view, and of the group with what is joined.
  const auto target = add("HXRClampNode");
  // From outside straight to a port in the group that nobody published, and inside of the group.
  const auto beside = add("HXRClampNode", group.get());
  connect(*beside, "Tarn.resultOutput", *clamp, "Tarn.minimumInput");
  connect(*clamp, "Tarn.resultOutput", *target, "Tarn.minimumInput");
  connect(*target, "Tarn.resultOutput", *clamp, "Tarn.maximumInput");
  const auto published =
      group->subnodeGroup()->addSymbolicPortForPort(port(*clamp, "Tarn.resultOutput"));
  document->connectPort(*published, port(*target, "Tarn.valueInput"));
  const auto view = named(*document, "Color View");
  connect(*target, "Tarn.resultOutput", *view, "Tarn.widthInput");
  Recorder recorder;
  for (const char* name : {"Color View", "Group"}) {
    const auto there = named(*document, name);
    const auto here = named(*copy, name);
    document->subnodeGroup()->addNode(*here);
    EXPECT_EQ(document->subnodeGroup()->subnodeForKey(here->uniqueKey()), here.get());
    EXPECT_EQ(here->parentGroup(), document->subnodeGroup().get());
    EXPECT_FALSE(there->parentGroup()) << name;
    EXPECT_THAT(recorder.takeLog(),
                ElementsAre("WARNING: [HXGroup] Replacing the node " +
                            here->uniqueKey().toStdString() + " by another one that has its key."));
    const auto lines = recorder.take();
    EXPECT_THAT(lines, Contains(HasSubstr("HXDocumentRemoveConnectionNotification"))) << name;
    // Of the copy's group only.
    EXPECT_EQ(std::count_if(lines.begin(), lines.end(),
                            [](const std::string& line) {
                              return line.find("HXGroupRemoveNodeNotification") == 0;
                            }),
              1)
        << name;
    EXPECT_EQ(std::count_if(lines.begin(), lines.end(),
                            [](const std::string& line) {
                              return line.find("HXGroupAddNodeNotification") == 0;
                            }),
              1)
        << name;
  }
  EXPECT_TRUE(port(*clamp, "Tarn.maximumInput").connections().isEmpty());
  EXPECT_EQ(port(*clamp, "Tarn.minimumInput").connections().count(), 1U);
  EXPECT_TRUE(port(*target, "Tarn.minimumInput").connections().isEmpty());
  EXPECT_TRUE(port(*target, "Tarn.valueInput").connections().isEmpty());
  EXPECT_TRUE(port(*target, "Tarn.resultOutput").connections().isEmpty());
  EXPECT_THAT(views(*document), ElementsAre("Color View"));
  const auto& subviews = static_cast<HXSubviewGroup&>(*document->subnodeGroup());
  EXPECT_NE(subviews.subviewNodesInForce().objectAtIndex(0).get(),
            static_cast<Object*>(view.get()));
  document->subnodeGroup()->removeNode(view.get());
  EXPECT_THAT(views(*document), ElementsAre("Color View")) << "it is none of the nodes any more";
  EXPECT_EQ(reopened(*document, 3)->subnodeGroup()->subnodes().size(), 3U);
}

TEST_F(IdentityTest, TheLastViewMayBeReplacedByANodeThatIsNone) {
  const auto view = add("HXRColorViewNode");
  const auto copy = reopened(*document, HXCodingTypeEditorWithKeys);
  const auto same = copy->subnodeGroup()->subnodes()[0];
  same->setPatch(HXRClampNode.makeDefinition());
  Recorder recorder;
  document->subnodeGroup()->addNode(*same);
  EXPECT_THAT(views(*document), ElementsAre("none"));
  EXPECT_EQ(document->subnodeGroup()->subnodes().size(), 1U);
  EXPECT_FALSE(view->parentGroup());
}

// Taking the view out of the remote group makes the document's group one of views.
TEST_F(IdentityTest, AViewIsOneOfAGroupThatBecameASubviewGroupMeanwhile) {
  const auto remote = HXNode::makeOfClass("HXRemoteGroupNode");
  remote->setPatch(HXRRemoteGroupNode.makeDefinition());
  document->subnodeGroup()->addNode(*remote);
  const auto view = add("HXRColorViewNode", remote.get());
  view->setName("Moved");
  add("HXRClampNode")->setPatch(HXRColorViewNode.makeDefinition());
  ASSERT_THAT(views(*document), ElementsAre("none"));
  Recorder recorder;
  document->subnodeGroup()->addNode(*view);
  EXPECT_THAT(views(*document), ElementsAre("Clamp", "Moved"));
  EXPECT_THAT(recorder.take(), Contains(HasSubstr("SubviewNodes=Clamp+Moved")));
  EXPECT_THAT(views(*reopened(*document)), ElementsAre("Clamp", "Moved"));
}

TEST_F(IdentityTest, WhatNoFileCouldHoldIsRefusedAtTheDoor) {
  Recorder recorder;
  const auto other = make<HXDocument>();
  document->subnodeGroup()->addNode(*other);
  document->subnodeGroup()->addNode(*document);
  EXPECT_FALSE(other->parentGroup());
  EXPECT_THAT(recorder.takeLog(),
              ElementsAre("WARNING: [HXGroup] Attempting to add a document to a group.",
                          "WARNING: [HXGroup] Attempting to add a document to a group."));

  const auto empty = make<HXImageStoreEntry>(make<Image>(), "key");
  document->imageStore()->addImageEntry(empty);
  EXPECT_TRUE(document->imageStore()->imageEntriesInForce().empty());
  EXPECT_THAT(recorder.takeLog(), ElementsAre("WARNING: [HXImageStore] Attempting to add an entry "
                                              "whose image is empty."));
  // A parameter shows whatever it is given.
  const auto image = add("HXRImageNode");
  for (const auto& entry : image->parameters()) {
    if (auto* parameter = as<HXImageParameter>(entry.value.get())) parameter->setImageEntry(empty);
  }
  EXPECT_TRUE(reopened(*document));

  const auto group = add("");
  auto& value = port(*add("HXRClampNode", group.get()), "Tarn.valueInput");
  const auto published = group->subnodeGroup()->addSymbolicPortForPort(value);
  const auto above = document->subnodeGroup()->addSymbolicPortForPort(*published);
  recorder.takeLog();
  for (auto* port : {above.get(), published.get()}) published->setPort(port);
  EXPECT_EQ(published->port(), &value);
  EXPECT_EQ(recorder.takeLog().size(), 2U);
}

// The public setters of links do what the owner would do, or leave alone what somebody holds.
TEST_F(IdentityTest, NoCallerPartsAChildFromItsOwner) {
  const auto group = add("");
  const auto clamp = add("HXRClampNode", group.get());
  auto& value = port(*clamp, "Tarn.valueInput");
  const auto published = group->subnodeGroup()->addSymbolicPortForPort(value);
  const auto other = add("HXRClampNode");
  Recorder recorder;

  group->subnodeGroup()->setNode(other.get());
  value.setNode(other.get());
  published->setNode(other.get());
  value.setPatchPort(Ref<HXRPort>(port(*other, "Tarn.minimumInput").patchPort()));
  clamp->patch()->setNode(other.get());
  document->imageStore()->setDocument(nullptr);
  port(*other, "Tarn.valueInput").setSymbolicPort(published.get());
  EXPECT_EQ(recorder.takeLog().size(), 7U);
  EXPECT_EQ(group->subnodeGroup()->node(), group.get());
  EXPECT_EQ(value.node(), clamp.get());
  EXPECT_EQ(published->node(), group.get());
  EXPECT_EQ(clamp->portForKey("Tarn.valueInput"), &value);
  EXPECT_EQ(clamp->patch()->node(), clamp.get());
  EXPECT_EQ(document->imageStore()->document(), document.get());
  EXPECT_FALSE(port(*other, "Tarn.valueInput").symbolicPort());

  // What nobody holds takes what it is given.
  const auto loose = make<HXPatchPort>(nullptr, HXOrientationInput, HXConnectionRelationshipOne);
  loose->setNode(other.get());
  EXPECT_EQ(loose->node(), other.get());
  const auto looseGroup = make<HXGroup>();
  looseGroup->setNode(other.get());
  EXPECT_EQ(looseGroup->node(), other.get());
  const auto looseStore = make<HXImageStore>();
  looseStore->setDocument(document.get());
  EXPECT_EQ(looseStore->document(), document.get());

  // A publication stands for another port, and neither of the two is left half published.
  auto& minimum = port(*clamp, "Tarn.minimumInput");
  published->setPort(&minimum);
  EXPECT_FALSE(value.symbolicPort());
  EXPECT_EQ(minimum.symbolicPort(), published.get());
  minimum.setSymbolicPort(nullptr);
  EXPECT_TRUE(group->symbolicInputPortsInForce().isEmpty());
  EXPECT_TRUE(group->inputPorts().empty());

  clamp->setParentGroup(document->subnodeGroup().get());
  EXPECT_FALSE(group->subnodeGroup()->subnodeForKey(clamp->uniqueKey()));
  EXPECT_EQ(document->subnodeGroup()->subnodeForKey(clamp->uniqueKey()), clamp.get());
  clamp->setParentGroup(nullptr);
  EXPECT_FALSE(document->subnodeGroup()->subnodeForKey(clamp->uniqueKey()));
  EXPECT_FALSE(clamp->parentGroup());
  EXPECT_THAT(recorder.takeLog(), ElementsAre());
}

// A group that the user hid shows no ports, so a move does not withdraw them.
TEST_F(IdentityTest, APublishedPortOfAHiddenGroupThatMovedWithItsNodeSurvivesAFile) {
  auto replicator = make<HXReplicatorNode>();
  replicator->setPatch(HXRReplicatorNode.makeDefinition());
  document->subnodeGroup()->addNode(*replicator);
  const auto elsewhere = add("");
  elsewhere->setName("Elsewhere");
  const auto clamp = add("HXRClampNode", replicator.get());
  const auto count = add("HXRArrayCountNode");
  const auto target = add("HXRClampNode");
  target->setName("Target");
  auto& result = port(*clamp, "Tarn.resultOutput");
  const auto published = replicator->subnodeGroup()->addSymbolicPortForPort(result);
  const String key = replicator->replicatorArrayOutputPortKeyForPort().get(&result);
  document->connectPort(*published, port(*target, "Tarn.valueInput"));
  document->connectPort(*replicator->portForKey(key), port(*count, "Tarn.arrayInput"));
  for (const auto& group : clamp->outputPortGroups()) group->setHidden(true);
  elsewhere->subnodeGroup()->addNode(*clamp);
  ASSERT_EQ(result.symbolicPort(), published.get());

  for (const std::int32_t codingType : {0, 3}) {
    Recorder recorder;
    auto opened = document;
    for (int round = 0; round < 2; ++round) opened = reopened(*opened, codingType);
    EXPECT_THAT(recorder.takeLog(), IsEmpty());
    const auto* again = as<HXReplicatorNode>(named(*opened, "Replicator").get());
    auto& moved = port(*named(*named(*opened, "Elsewhere"), "Clamp"), "Tarn.resultOutput");
    ASSERT_EQ(again->symbolicOutputPortsInForce().count(), 1U);
    auto& symbolic = static_cast<HXSymbolicPort&>(**again->symbolicOutputPortsInForce().begin());
    EXPECT_EQ(symbolic.port(), &moved);
    EXPECT_EQ(moved.symbolicPort(), &symbolic);
    ASSERT_EQ(moved.connections().count(), 1U);
    EXPECT_EQ(moved.connections().toVector()[0]->displayOutputPort(), &symbolic);
    EXPECT_TRUE(again->replicatorArrayOutputPortKeyForPort().get(&moved) == key);
    const auto* array = again->portForKey(key);
    ASSERT_TRUE(array);
    EXPECT_EQ(array->connections().count(), 1U);
    // The publication ends as any other does.
    again->subnodeGroup()->removeSymbolicPortForPort(&moved);
    EXPECT_TRUE(again->symbolicOutputPortsInForce().isEmpty());
    EXPECT_FALSE(again->portForKey(key));
  }
}

TEST_F(IdentityTest, ThePublicationOfAHiddenPortEndsWhereItStandsAndNotWhereItsNodeIs) {
  for (const bool byRemoval : {false, true}) {
    const auto first = add("");
    const auto second = add("");
    const auto clamp = add("HXRClampNode", first.get());
    auto& result = port(*clamp, "Tarn.resultOutput");
    const auto published = first->subnodeGroup()->addSymbolicPortForPort(result);
    for (const auto& group : clamp->outputPortGroups()) group->setHidden(true);
    second->subnodeGroup()->addNode(*clamp);
    for (const auto& group : clamp->outputPortGroups()) group->setHidden(false);
    Recorder recorder;
    if (byRemoval) {
      second->subnodeGroup()->removeNode(clamp.get());
    } else {
      second->subnodeGroup()->removeSymbolicPortForPort(&result);
    }
    EXPECT_FALSE(result.symbolicPort());
    EXPECT_TRUE(first->symbolicOutputPortsInForce().isEmpty());
    EXPECT_TRUE(first->outputPorts().empty());
    EXPECT_THAT(recorder.take(), Contains(HasSubstr("HXGroupRemoveSymbolicPortForPort")));
    EXPECT_THAT(faultsOf(*document), IsEmpty());
  }
}

TEST_F(IdentityTest, APortThatIsNeitherInputNorOutputStandsOnNeitherSide) {
  const auto group = add("");
  const auto clamp = add("HXRClampNode", group.get());
  const auto stray = make<HXPatchPort>(clamp.get(), 3, HXConnectionRelationshipMany);
  const auto symbolic =
      make<HXSymbolicPort>(stray.get(), group.get(), 3, HXConnectionRelationshipMany);
  // And one that says other than the port that it stands for.
  auto& value = port(*clamp, "Tarn.valueInput");
  const auto crooked =
      make<HXSymbolicPort>(&value, group.get(), HXOrientationOutput, HXConnectionRelationshipOne);
  group->subnodeGroup()->restoreSymbolicPort(*symbolic);
  EXPECT_EQ(stray->symbolicPort(), symbolic.get());
  EXPECT_TRUE(group->symbolicInputPortsInForce().isEmpty());
  EXPECT_TRUE(group->symbolicOutputPortsInForce().isEmpty());
  EXPECT_THAT(group->inputPortGroups(), IsEmpty());
  EXPECT_THAT(group->outputPortGroups(), IsEmpty());
  group->subnodeGroup()->restoreSymbolicPort(*crooked);
  EXPECT_EQ(group->inputPortGroups().size(), 1U);
  EXPECT_THAT(group->outputPortGroups(), IsEmpty());
  EXPECT_TRUE(reopened(*document));
}

}  // namespace tarnkit::test
