#include "ModelFixture.h"
#include "tarnkit/model/HXSubviewGroup.h"

namespace tarnkit::test {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class GroupTest : public ModelTest {
 protected:
  static std::string order(const HXNode& node) {
    const auto* group = as<HXSubviewGroup>(node.subnodeGroup().get());
    if (!group) return "none";
    std::string names;
    for (const auto& view : group->subviewNodesInForce()) {
      names += static_cast<const HXNode&>(*view).name().view();
    }
    return names;
  }
  Ref<HXNode> addView(HXNode& to, const char* name) {
    auto view = nodeOf("HXRColorViewNode");
    view->setName(name);
    to.subnodeGroup()->addNode(*view);
    return view;
  }
};

TEST_F(GroupTest, ViewNodesComingAndGoingSwapTheGroup) {
  const auto group = add("");
  const auto clamp = add("HXRClampNode", group.get());
  const Ref<HXGroup> plain = group->subnodeGroup();
  const String key = plain->uniqueKey();
  plain->setOpaque(true);
  Recorder recorder;
  const auto view = addView(*group, "V");
  EXPECT_THAT(
      recorder.take(),
      ElementsAre("HXGroupAddNodeNotification HXGroup Group=HXGroup Node=V",
                  "HXNodeSubnodeGroupDidChangeNotification Group Node=Group OldGroup=HXGroup "
                  "NewGroup=HXSubviewGroup",
                  // The group became a view itself, so the one above follows.
                  "HXNodeSubnodeGroupDidChangeNotification Top Node=Top OldGroup=HXGroup "
                  "NewGroup=HXSubviewGroup"));
  EXPECT_EQ(order(*group), "V");
  EXPECT_EQ(group->subnodeGroup()->uniqueKey(), key);
  EXPECT_FALSE(group->subnodeGroup()->isOpaque()) << "opacity stays behind";
  EXPECT_EQ(clamp->parentGroup(), group->subnodeGroup().get());

  group->subnodeGroup()->removeNode(view.get());
  EXPECT_EQ(order(*group), "none");
  EXPECT_EQ(order(*document), "none");
  EXPECT_THAT(
      recorder.take(),
      ElementsAre("HXSubviewGroupSubviewOrderDidChangeNotification HXSubviewGroup "
                  "Node=HXSubviewGroup SubviewNodes=",
                  "HXGroupRemoveNodeNotification HXSubviewGroup Group=HXSubviewGroup Node=V",
                  "HXNodeSubnodeGroupDidChangeNotification Group Node=Group "
                  "OldGroup=HXSubviewGroup NewGroup=HXGroup",
                  "HXNodeSubnodeGroupDidChangeNotification Top Node=Top OldGroup=HXSubviewGroup "
                  "NewGroup=HXGroup"));
}

TEST_F(GroupTest, ASwapRunsUpThroughAnyDepth) {
  constexpr int kDepth = 60000;
  Ref<HXNode> innermost = document;
  for (int i = 0; i < kDepth; ++i) innermost = add("", innermost.get());
  const auto view = addView(*innermost, "V");
  EXPECT_EQ(order(*innermost), "V");
  EXPECT_EQ(order(*document), "Group");
  innermost->subnodeGroup()->removeNode(view.get());
  EXPECT_EQ(order(*document), "none");
}

TEST_F(GroupTest, ViewsThatWereAskedForMayBeTakenOutOneByOne) {
  const auto group = add("");
  for (const char* name : {"A", "B", "C", "D", "E"}) addView(*group, name);
  for (const auto& view : as<HXSubviewGroup>(group->subnodeGroup().get())->subviewNodes()) {
    group->subnodeGroup()->removeNode(view.get());
  }
  EXPECT_TRUE(group->subnodeGroup()->subnodesInForce().empty());
}

TEST_F(GroupTest, SwappingMakesAGroupForANodeThatHasNone) {
  const auto clamp = add("HXRClampNode");
  Recorder recorder;
  clamp->swapSubnodeGroupToViewGroup();
  ASSERT_TRUE(as<HXSubviewGroup>(clamp->subnodeGroup()));
  EXPECT_EQ(clamp->subnodeGroup()->node(), clamp.get());
  EXPECT_THAT(recorder.take(),
              ElementsAre("HXNodeSubnodeGroupDidChangeNotification Clamp Node=Clamp OldGroup=null "
                          "NewGroup=HXSubviewGroup",
                          "HXNodeSubnodeGroupDidChangeNotification Top Node=Top OldGroup=HXGroup "
                          "NewGroup=HXSubviewGroup"));
  addView(*clamp, "V");
  EXPECT_EQ(order(*clamp), "V");
  const auto other = nodeOf("HXRClampNode");
  other->swapSubnodeGroupToGroup();
  ASSERT_TRUE(other->subnodeGroup());
  EXPECT_FALSE(other->subnodeGroup()->uniqueKey().isNil());
  other->setPatch(other->patch());
  EXPECT_FALSE(other->subnodeGroup()) << "the patch holds no nodes";
}

TEST_F(GroupTest, AGroupThatWasReplacedHandsOperationsOn) {
  const auto group = add("");
  const auto view = addView(*group, "V");
  const Ref<HXGroup> held = group->subnodeGroup();
  // Adding the only view node again swaps to a plain group and back meanwhile.
  held->addNode(*view);
  EXPECT_EQ(view->parentGroup(), group->subnodeGroup().get());
  EXPECT_NE(group->subnodeGroup(), held);
  EXPECT_EQ(order(*group), "V");
  EXPECT_EQ(group->subnodeGroup()->subnodes().size(), 1U);
  const auto clamp = nodeOf("HXRClampNode");
  held->addNode(*clamp);
  EXPECT_EQ(clamp->parentGroup(), group->subnodeGroup().get());
  held->removeNode(view.get());
  EXPECT_EQ(order(*group), "none");
  EXPECT_FALSE(view->parentGroup());
}

TEST_F(GroupTest, AnObserverMaySwapTheGroupUnderAnOperation) {
  const auto group = add("");
  const auto clamp = nodeOf("HXRClampNode");
  bool swapped = false;
  const NotificationCenter::Observation observation(HXGroupAddNodeNotification,
                                                    [&](const Notification&) {
                                                      if (std::exchange(swapped, true)) return;
                                                      group->swapSubnodeGroupToViewGroup();
                                                    });
  group->subnodeGroup()->addNode(*clamp);
  EXPECT_EQ(clamp->parentGroup(), group->subnodeGroup().get());
  EXPECT_EQ(group->subnodeGroup()->subnodeForKey(clamp->uniqueKey()), clamp.get());
}

TEST_F(GroupTest, AnObserverMayMoveWhatIsBeingMoved) {
  const auto here = add("");
  const auto there = add("");
  const auto target = add("");
  const auto group = add("", here.get());
  add("HXRClampNode", group.get());
  const auto moveWith = [&](auto observe) {
    bool done = false;
    const NotificationCenter::Observation observation(HXGroupRemoveNodeNotification,
                                                      [&](const Notification&) {
                                                        if (!std::exchange(done, true)) observe();
                                                      });
    target->subnodeGroup()->addNode(*group);
  };
  moveWith([&] { there->subnodeGroup()->addNode(*group); });
  EXPECT_EQ(group->parentGroup(), there->subnodeGroup().get());
  EXPECT_TRUE(target->subnodeGroup()->subnodes().empty()) << "a node stands in one group only";

  Recorder recorder;
  moveWith([&] { group->subnodeGroup()->addNode(*target); });
  EXPECT_EQ(target->parentGroup(), group->subnodeGroup().get());
  EXPECT_FALSE(group->parentGroup()) << "neither may hold the other";
  EXPECT_THAT(recorder.takeLog(), ElementsAre("WARNING: [HXGroup] Attempting to add a node to a "
                                              "group inside itself."));
}

TEST_F(GroupTest, AViewThatIsTakenOutIsNoViewAnyMoreWhateverObserversDo) {
  const auto group = add("");
  const auto first = addView(*group, "A");
  addView(*group, "B");
  bool swapped = false;
  const NotificationCenter::Observation observation(HXSubviewGroupSubviewOrderDidChangeNotification,
                                                    [&](const Notification&) {
                                                      if (std::exchange(swapped, true)) return;
                                                      // The new group gathers its views while the
                                                      // first one still is a subnode.
                                                      group->swapSubnodeGroupToGroup();
                                                      group->swapSubnodeGroupToViewGroup();
                                                    });
  group->subnodeGroup()->removeNode(first.get());
  EXPECT_EQ(order(*group), "B");
}

TEST_F(GroupTest, SubviewsMoveAndAreClampedToTheEnd) {
  const auto group = add("");
  const Ref<HXNode> views[] = {addView(*group, "A"), addView(*group, "B"), addView(*group, "C")};
  auto& subviews = static_cast<HXSubviewGroup&>(*group->subnodeGroup());
  const struct {
    int view;
    std::uint64_t index;
    const char* order;
  } moves[] = {{0, 99, "BCA"}, {0, 0, "ABC"}, {1, 1, "ABC"}, {2, 1, "ACB"}};
  for (const auto& [view, index, expected] : moves) {
    Recorder recorder;
    subviews.moveSubviewNode(*views[view], index);
    EXPECT_EQ(order(*group), expected);
    EXPECT_EQ(recorder.take().size(), 1U);
  }
  const auto clamp = add("HXRClampNode", group.get());
  Recorder recorder;
  subviews.moveSubviewNode(*clamp, 0);
  EXPECT_THAT(recorder.take(), IsEmpty());
  EXPECT_EQ(subviews.indexOfSubviewNode(clamp.get()), kNotFoundIndex);
  EXPECT_EQ(subviews.indexOfSubviewNode(views[1].get()), 2);
}

TEST_F(GroupTest, PublishingAnnouncesEachStep) {
  const auto group = add("");
  const auto clamp = add("HXRClampNode", group.get());
  auto& value = port(*clamp, "Tarn.valueInput");
  Recorder recorder;
  const auto symbolic = group->subnodeGroup()->addSymbolicPortForPort(value);
  EXPECT_THAT(
      recorder.take(),
      ElementsAre("HXPortNameDidChangeNotification Value Port=Value Name=Value",
                  "HXPortDidAddSymbolicReferenceNotification Value Port=Value",
                  "HXNodeAddPortGroupNotification Group Node=Group PortGroup=Published",
                  "HXGroupAddSymbolicPortForPortNotification HXGroup Group=HXGroup Port=Value"));
  EXPECT_THAT(keys(group->inputPorts()), ElementsAre(symbolic->uniqueKey().toStdString()));
  symbolic->setName("Size: Width");
  EXPECT_THAT(recorder.take(),
              ElementsAre("HXNodeRemovePortGroupNotification Group Node=Group PortGroup=Published",
                          "HXNodeAddPortGroupNotification Group Node=Group PortGroup=Size",
                          "HXPortNameDidChangeNotification Size: Width Port=Size: Width "
                          "Name=Size: Width"));
  symbolic->setName("Size: Width");
  EXPECT_EQ(recorder.take().size(), 1U) << "a published port's rename is always announced";
  group->subnodeGroup()->removeSymbolicPortForPort(&value);
  EXPECT_THAT(
      recorder.take(),
      ElementsAre("HXPortDidRemoveSymbolicReferenceNotification Value Port=Value",
                  "HXNodeRemovePortGroupNotification Group Node=Group PortGroup=Size",
                  "HXGroupRemoveSymbolicPortForPortNotification HXGroup Group=HXGroup Port=Value"));
  group->subnodeGroup()->removeSymbolicPortForPort(&value);
  EXPECT_THAT(recorder.take(), IsEmpty());
  group->subnodeGroup()->restoreSymbolicPort(*symbolic);
  EXPECT_EQ(value.symbolicPort(), symbolic.get());
  EXPECT_EQ(keys(group->inputPorts()).size(), 1U);

  const auto stray = make<HXPatchPort>(clamp.get(), 7, HXConnectionRelationshipOne);
  EXPECT_FALSE(group->subnodeGroup()->addSymbolicPortForPort(*stray));
}

TEST_F(GroupTest, RemovingANodeEndsItsPublicationsAtEveryLevel) {
  const auto outer = add("");
  const auto inner = add("", outer.get());
  const auto clamp = add("HXRClampNode", inner.get());
  const auto target = add("HXRClampNode");
  auto& result = port(*clamp, "Tarn.resultOutput");
  const auto first = inner->subnodeGroup()->addSymbolicPortForPort(result);
  const auto second = outer->subnodeGroup()->addSymbolicPortForPort(*first);
  document->connectPort(*second, port(*target, "Tarn.valueInput"));
  inner->subnodeGroup()->removeNode(clamp.get());
  EXPECT_TRUE(outer->symbolicOutputPortsInForce().isEmpty());
  EXPECT_TRUE(inner->symbolicOutputPortsInForce().isEmpty());
  EXPECT_THAT(outer->outputPorts(), IsEmpty());
  EXPECT_TRUE(result.connections().isEmpty());
  EXPECT_TRUE(port(*target, "Tarn.valueInput").connections().isEmpty());
  EXPECT_FALSE(clamp->parentGroup());
}

// What the container itself publishes goes with it; what stands for that above it does not stay.
TEST_F(GroupTest, ANodeOfAnotherGroupIsLeftAlone) {
  const auto group = add("");
  const auto clamp = add("HXRClampNode", group.get());
  const auto other = add("HXRClampNode", group.get());
  connect(*clamp, "Tarn.resultOutput", *other, "Tarn.valueInput");
  group->subnodeGroup()->addSymbolicPortForPort(port(*clamp, "Tarn.valueInput"));
  Recorder recorder;
  document->subnodeGroup()->removeNode(clamp.get());
  document->subnodeGroup()->removeNode(nullptr);
  EXPECT_THAT(recorder.take(), ::testing::IsEmpty());
  EXPECT_EQ(clamp->parentGroup(), group->subnodeGroup().get());
  EXPECT_EQ(port(*other, "Tarn.valueInput").connections().count(), 1U);
  EXPECT_TRUE(port(*clamp, "Tarn.valueInput").symbolicPort());
}

TEST_F(GroupTest, RemovingAContainerEndsThePublicationsAboveIt) {
  const auto top = add("");
  const auto outer = add("", top.get());
  const auto inner = add("", outer.get());
  const auto clamp = add("HXRClampNode", inner.get());
  const auto other = add("HXRClampNode", outer.get());
  const auto target = add("HXRClampNode");
  const auto publishUpTo = [&](HXPort& published, std::vector<HXNode*> nodes) {
    Ref<HXPort> at(&published);
    for (HXNode* node : nodes) at = node->subnodeGroup()->addSymbolicPortForPort(*at);
    return at;
  };
  const auto result =
      publishUpTo(port(*clamp, "Tarn.resultOutput"), {inner.get(), outer.get(), top.get()});
  publishUpTo(port(*clamp, "Tarn.valueInput"), {inner.get(), outer.get(), top.get()});
  const auto kept = publishUpTo(port(*other, "Tarn.valueInput"), {outer.get(), top.get()});
  document->connectPort(*result, port(*target, "Tarn.valueInput"));
  document->connectPort(port(*target, "Tarn.resultOutput"), *kept);

  Recorder recorder;
  outer->subnodeGroup()->removeNode(inner.get());
  const auto posted = recorder.take();
  EXPECT_EQ(std::count_if(posted.begin(), posted.end(),
                          [](const std::string& line) {
                            return line.rfind("HXGroupRemoveSymbolicPortForPort", 0) == 0;
                          }),
            4)
      << "two levels, two sides";
  EXPECT_EQ(posted.back(), "HXGroupRemoveNodeNotification HXGroup Group=HXGroup Node=Group");
  EXPECT_THAT(recorder.takeLog(), IsEmpty());
  for (const auto* node : {outer.get(), top.get()}) {
    EXPECT_TRUE(node->symbolicOutputPorts().empty());
    EXPECT_EQ(node->symbolicInputPorts().size(), 1U);
    EXPECT_THAT(node->outputPorts(), IsEmpty());
  }
  EXPECT_EQ(inner->symbolicOutputPorts().size(), 1U);
  EXPECT_EQ(inner->symbolicInputPorts().size(), 1U);
  EXPECT_TRUE(port(*clamp, "Tarn.resultOutput").connections().isEmpty());
  EXPECT_TRUE(port(*target, "Tarn.valueInput").connections().isEmpty());
  EXPECT_EQ(port(*other, "Tarn.valueInput").connections().count(), 1U);
}

TEST_F(GroupTest, ManyPublishedPortsAreListedInOrder) {
  const auto group = add("");
  std::vector<std::string> expected;
  for (int i = 0; i < 30; ++i) {
    const auto clamp = add("HXRClampNode", group.get());
    expected.push_back(group->subnodeGroup()
                           ->addSymbolicPortForPort(port(*clamp, "Tarn.valueInput"))
                           ->uniqueKey()
                           .toStdString());
  }
  EXPECT_EQ(keys(group->inputPorts()), expected);
}

// Whoever is told of the first step lets go of the document; the caller holds raw pointers only.
TEST_F(GroupTest, WhatAnnouncesMayLoseEverythingButItself) {
  struct Scene {
    HXDocument& document;
    HXNode& group;
    HXNode& replicator;
    HXNode& clamp;
    HXNode& view;
    HXSymbolicPort& published;
    HXConnection& connection;
    HXPatchPort& value;
    HXPatchPort& result;
  };
  using Edit = void (*)(Scene&);
  const Edit edits[] = {
      [](Scene& s) { s.document.subnodeGroup()->addNode(s.clamp); },
      [](Scene& s) { s.group.subnodeGroup()->removeNode(&s.clamp); },
      [](Scene& s) { s.document.subnodeGroup()->removeNode(&s.group); },
      [](Scene& s) { s.replicator.subnodeGroup()->addNode(s.view); },
      [](Scene& s) { s.group.subnodeGroup()->addSymbolicPortForPort(s.result); },
      [](Scene& s) { s.replicator.subnodeGroup()->addSymbolicPortForPort(s.result); },
      [](Scene& s) { s.group.subnodeGroup()->removeSymbolicPortForPort(&s.value); },
      [](Scene& s) { s.group.subnodeGroup()->restoreSymbolicPort(s.published); },
      [](Scene& s) {
        static_cast<HXSubviewGroup&>(*s.document.subnodeGroup()).moveSubviewNode(s.view, 0);
      },
      [](Scene& s) { s.document.connectPort(s.result, s.published); },
      [](Scene& s) { s.document.breakConnection(s.connection); },
      [](Scene& s) { s.document.breakAllConnectionsToPort(s.result); },
      [](Scene& s) { s.document.restoreConnection(s.connection); },
      [](Scene& s) { s.document.subnodeGroup()->subnodeViewTypeDidChange(s.group); },
      [](Scene& s) {
        const auto entry =
            HXImageStore::createImageEntry(*Image::imageWithPixels(1, 1, {1, 2, 3, 255}));
        s.document.imageStore()->addImageEntry(entry);
      },
  };
  for (const Edit edit : edits) {
    document = make<HXDocument>();
    auto* const group = add("").get();
    auto* const replicator = [&] {
      const auto node = HXNode::makeOfClass("HXReplicatorNode");
      node->setPatch(patchClassNamed("HXRReplicatorNode")->makeDefinition());
      document->subnodeGroup()->addNode(*node);
      return node.get();
    }();
    auto* const clamp = add("HXRClampNode", group).get();
    auto* const view = addView(*document, "V").get();
    auto& result = port(*clamp, "Tarn.resultOutput");
    auto& value = port(*clamp, "Tarn.valueInput");
    auto* const published = group->subnodeGroup()->addSymbolicPortForPort(value).get();
    auto* const connection =
        document->connectPort(result, port(*view, "Tarn.xPositionInput")).get();
    Scene scene{*document,  *group,      *replicator, *clamp, *view,
                *published, *connection, value,       result};
    bool isTold = false;
    const NotificationCenter::Observation observation([&](const Notification&) {
      isTold = true;
      document = nullptr;
    });
    edit(scene);
    EXPECT_TRUE(isTold || edit == edits[13]);
  }
}

}  // namespace tarnkit::test
