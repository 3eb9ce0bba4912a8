#include "Consistency.h"
#include "ModelFixture.h"
#include "tarnkit/archive/HXCoding.h"
#include "tarnkit/model/HXDocumentFile.h"
#include "tarnkit/model/HXParameterKinds.h"
#include "tarnkit/model/HXPortGroup.h"
#include "tarnkit/model/HXPortGroupCollection.h"
#include "tarnkit/patches/PatchDeclaration.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit::test {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class SyncTest : public ModelTest {
 protected:
  static HXIndexParameter& index(HXNode& node, const char* key) {
    auto* parameter = as<HXIndexParameter>(node.parameterForKey(key));
    EXPECT_TRUE(parameter) << key;
    return *parameter;
  }
};

TEST_F(SyncTest, TheSamePatchAgainChangesNothing) {
  const auto node = add("HXRInterpolationNode");
  const auto source = add("HXRClampNode");
  port(*node, "Tarn.inputMinInput").setStaticValue(PMRPrimitive::primitiveWithNumberValue(4));
  connect(*source, "Tarn.resultOutput", *node, "Tarn.input");
  const auto before = node->ports();
  Recorder recorder;
  node->setPatch(node->patch());
  EXPECT_THAT(recorder.take(), IsEmpty());
  EXPECT_EQ(node->ports(), before);
  EXPECT_EQ(port(*node, "Tarn.input").connections().count(), 1U);
}

TEST_F(SyncTest, GrowingPortsAreAnnouncedOnceAndTheOthersKeepTheirs) {
  const auto node = add("HXRMultiplexerNode");
  const auto other = add("HXRMultiplexerNode");
  const auto source = add("HXRClampNode");
  connect(*source, "Tarn.resultOutput", *node, "Tarn.source1Input");
  port(*node, "Tarn.source0Input").setStaticValue(PMRPrimitive::primitiveWithIndexValue(7));
  Recorder recorder;
  index(*node, "Tarn.numberOfSourcesParameter").setValue(3);
  EXPECT_THAT(recorder.take(),
              ElementsAre("HXParameterValueDidChangeNotification Tarn.numberOfSourcesParameter "
                          "Node=Multiplexer Parameter=Tarn.numberOfSourcesParameter",
                          "HXNodeAddPortNotification Multiplexer Node=Multiplexer Port=Source 2"));
  EXPECT_EQ(port(*node, "Tarn.source1Input").connections().count(), 1U);
  EXPECT_EQ(port(*node, "Tarn.source0Input").staticValue()->indexValue(), 7);
  EXPECT_EQ(other->portsInForce().size(), 4U) << "another node of the class is not concerned";

  index(*node, "Tarn.numberOfSourcesParameter").setValue(1);
  const auto lines = recorder.take();
  EXPECT_THAT(lines,
              ::testing::Contains("HXNodeRemovePortNotification Multiplexer Node=Multiplexer "
                                  "Port=Source 1"));
  EXPECT_TRUE(port(*source, "Tarn.resultOutput").connections().isEmpty());
}

TEST_F(SyncTest, AnotherPatchKeepsWhatItsKeysShare) {
  const auto node = add("HXRTransitionNode");
  const auto source = add("HXRClampNode");
  connect(*source, "Tarn.resultOutput", *node, "Tarn.input");
  const auto group = add("");
  const Ref<HXPort> kept(&port(*node, "Tarn.input"));
  Recorder recorder;
  node->setPatch(HXRInterpolationNode.makeDefinition());
  EXPECT_EQ(node->portForKey("Tarn.input"), kept.get());
  EXPECT_EQ(node->name(), "Transition") << "a name once given stays";
  EXPECT_EQ(kept->connections().count(), 1U);
  const auto lines = recorder.take();
  EXPECT_THAT(lines, ::testing::Contains("HXNodeRemovePortGroupNotification Transition "
                                         "Node=Transition PortGroup=Value Range"));
  node->setPatch(nullptr);
  EXPECT_TRUE(node->portsInForce().empty());
  EXPECT_TRUE(port(*source, "Tarn.resultOutput").connections().isEmpty());
}

TEST_F(SyncTest, APortThatTurnsOverIsReplacedWithoutBeingWithdrawn) {
  static const HXRNodeClass turning(
      "TurningNode", &HXRNode::kClass, {},
      [](PatchDeclaration& patch) { patch.in<HXRGestureInputPort>("Value", "Tarn.valueInput"); });
  const auto node = add("HXRClampNode");
  const auto source = add("HXRClampNode");
  const auto connection = connect(*source, "Tarn.resultOutput", *node, "Tarn.valueInput");
  const Ref<HXPort> earlier(&port(*node, "Tarn.valueInput"));
  Recorder recorder;
  node->setPatch(turning.makeDefinition());
  EXPECT_NE(node->portForKey("Tarn.valueInput"), earlier.get());
  EXPECT_TRUE(earlier->connections().contains(connection.get()));
  EXPECT_EQ(port(*source, "Tarn.resultOutput").connections().count(), 1U);
  std::vector<std::string> ports;
  for (const auto& line : recorder.take()) {
    if (line.find("PortNotification") != std::string::npos) ports.push_back(line);
  }
  EXPECT_THAT(ports, ElementsAre("HXNodeRemovePortNotification Clamp Node=Clamp Port=Minimum",
                                 "HXNodeRemovePortNotification Clamp Node=Clamp Port=Maximum",
                                 "HXNodeRemovePortNotification Clamp Node=Clamp Port=Result",
                                 "HXNodeAddPortNotification Clamp Node=Clamp Port=Value"));
}

TEST_F(SyncTest, NewGroupsStartHiddenWhereTheDefinitionSaysSo) {
  static const char* const hiddenKeys[] = {"Extra", nullptr};
  static const auto declare = [](PatchDeclaration& patch) {
    patch.group("Extra");
    patch.in("Value", "Tarn.valueInput");
  };
  static const HXRNodeClass hiding("HidingNode", &HXRNode::kClass,
                                   {.hiddenPortGroupKeys = hiddenKeys}, declare);
  static const HXRNodeClass showing("ShowingNode", &HXRNode::kClass, {}, declare);
  const auto node = make<HXNode>();
  node->setPatch(hiding.makeDefinition());
  auto* group = node->portGroupForKey("Extra", HXOrientationInput);
  ASSERT_TRUE(group);
  EXPECT_TRUE(group->hidden());
  group->setHidden(false);
  node->setPatch(hiding.makeDefinition());
  EXPECT_FALSE(group->hidden()) << "the user's choice outlives the definition";
  group->setHidden(true);
  node->setPatch(showing.makeDefinition());
  EXPECT_TRUE(group->hidden());
  EXPECT_EQ(node->portGroupForKey("Extra", HXOrientationInput), group);
}

TEST_F(SyncTest, PortsThatComeTogetherUnderANewPrefixMeetAtTheNextSynchronisation) {
  const auto group = add("");
  const auto clamp = add("HXRClampNode", group.get());
  const auto a = group->subnodeGroup()->addSymbolicPortForPort(port(*clamp, "Tarn.valueInput"));
  const auto b = group->subnodeGroup()->addSymbolicPortForPort(port(*clamp, "Tarn.minimumInput"));
  const auto count = [&](const char* key) {
    const auto* found = group->portGroupForKey(key, HXOrientationInput);
    return found ? static_cast<int>(found->portKeys()->count()) : -1;
  };
  EXPECT_EQ(count("Published"), 2);
  a->setName("Box: A");
  EXPECT_EQ(count("Box"), 1);
  EXPECT_EQ(count("Published"), 1);
  b->setName("Box: B");
  EXPECT_EQ(count("Box"), 2);
  EXPECT_EQ(count("Published"), -1);
  // Both at once, as after reading a document: each makes a group, the last stands.
  const auto fresh = make<HXNode>();
  fresh->setForceAllowsSubnodes(true);
  document->subnodeGroup()->addNode(*fresh);
  const auto moved = add("HXRClampNode", fresh.get());
  auto* inner = fresh->subnodeGroup().get();
  for (const char* key : {"Tarn.valueInput", "Tarn.minimumInput"}) {
    const auto symbolic = make<HXSymbolicPort>(&port(*moved, key), nullptr, HXOrientationInput,
                                               HXConnectionRelationshipOne);
    symbolic->setName("Pair: x");
    const_cast<OrderedSet&>(inner->symbolicInputPortsInForce()).add(symbolic);
  }
  Recorder recorder;
  fresh->setPatch(nullptr);
  EXPECT_EQ(fresh->portGroupForKey("Pair", HXOrientationInput)->portKeys()->count(), 1U);
  EXPECT_THAT(recorder.take(),
              ElementsAre("HXNodeNameDidChangeNotification HXRNode Node=HXRNode Name=HXRNode",
                          "HXNodeAddPortGroupNotification HXRNode Node=HXRNode PortGroup=Pair",
                          "HXNodeAddPortGroupNotification HXRNode Node=HXRNode PortGroup=Pair"));
  fresh->setPatch(nullptr);
  EXPECT_EQ(fresh->portGroupForKey("Pair", HXOrientationInput)->portKeys()->count(), 2U);
}

TEST_F(SyncTest, PublishingOnePortMendsGroupsThatWereUpsetMeanwhile) {
  const auto group = add("");
  const auto clamp = add("HXRClampNode", group.get());
  group->subnodeGroup()->addSymbolicPortForPort(port(*clamp, "Tarn.valueInput"));
  // The order was overwritten from outside.
  const auto bogus = make<OrderedSet>();
  bogus->add(String("Bogus").object());
  group->inputPortGroupCollection()->updateWithPortGroupKeys(bogus);
  group->subnodeGroup()->addSymbolicPortForPort(port(*clamp, "Tarn.minimumInput"));
  EXPECT_EQ(group->inputPortGroups().size(), 1U);
  EXPECT_EQ(group->inputPortGroupCollection()->portGroupKeys()->count(), 1U);
  EXPECT_EQ(group->inputPorts().size(), 2U);
  group->inputPortGroupCollection()->updateWithPortGroupKeys(bogus);
  group->subnodeGroup()->removeSymbolicPortForPort(&port(*clamp, "Tarn.minimumInput"));
  EXPECT_EQ(group->inputPorts().size(), 1U);
  // The published ports go with their group, and the port group that shows them too.
  Recorder recorder;
  group->setForceAllowsSubnodes(false);
  EXPECT_THAT(group->inputPortGroups(), IsEmpty());
  EXPECT_THAT(recorder.take(), ElementsAre("HXNodeRemovePortGroupNotification Group Node=Group "
                                           "PortGroup=Published"));
  group->setForceAllowsSubnodes(true);
  const auto other = add("HXRClampNode", group.get());
  const auto symbolic =
      group->subnodeGroup()->addSymbolicPortForPort(port(*other, "Tarn.valueInput"));
  EXPECT_EQ(keys(group->inputPorts()),
            std::vector<std::string>{symbolic->uniqueKey().toStdString()});
  EXPECT_EQ(group->portGroupForKey("Published", HXOrientationInput)->portKeys()->count(), 1U);
  EXPECT_THAT(
      recorder.take(),
      ::testing::Contains("HXNodeAddPortGroupNotification Group Node=Group PortGroup=Published"));
}

TEST_F(SyncTest, ParametersAreReplacedByKindAndNeverDropped) {
  static const HXRNodeClass number("NumberNode", &HXRNode::kClass, {}, [](PatchDeclaration& patch) {
    patch.parameter("Sources", "Tarn.numberOfSourcesParameter", 0.5F, 0.0F, 1.0F);
  });
  const auto node = add("HXRMultiplexerNode");
  Recorder recorder;
  node->setPatch(number.makeDefinition());
  auto* replaced = as<HXNumberParameter>(node->parameterForKey("Tarn.numberOfSourcesParameter"));
  ASSERT_TRUE(replaced);
  EXPECT_EQ(replaced->value(), 0.5F);
  const auto lines = recorder.take();
  ASSERT_GE(lines.size(), 2U);
  EXPECT_THAT(lines[0], ::testing::StartsWith("HXNodeRemoveParameterNotification"));
  EXPECT_THAT(lines[1], ::testing::StartsWith("HXNodeAddParameterNotification"));
  node->setPatch(HXRClampNode.makeDefinition());
  EXPECT_TRUE(node->parameterForKey("Tarn.numberOfSourcesParameter"));
}

TEST_F(SyncTest, ParametersFollowTheDefaultUntilSet) {
  static const HXRNodeClass five("FiveNode", &HXRNode::kClass, {}, [](PatchDeclaration& patch) {
    patch.parameter("Count", "Tarn.countParameter", 5, 0, 9);
    patch.parameter("Text", "Tarn.textParameter", "five");
  });
  static const HXRNodeClass six("SixNode", &HXRNode::kClass, {}, [](PatchDeclaration& patch) {
    patch.parameter("Count", "Tarn.countParameter", 6, 0, 9);
    patch.parameter("Text", "Tarn.textParameter", "six");
  });
  const auto node = make<HXNode>();
  document->subnodeGroup()->addNode(*node);
  node->setPatch(five.makeDefinition());
  auto& count = index(*node, "Tarn.countParameter");
  EXPECT_EQ(count.value(), 5);
  EXPECT_EQ(count.maximumValue(), 9);
  node->setPatch(six.makeDefinition());
  EXPECT_EQ(count.value(), 6);
  Recorder recorder;
  count.setValue(7);
  count.setValue(7);
  EXPECT_EQ(recorder.take().size(), 1U);
  node->setPatch(five.makeDefinition());
  EXPECT_EQ(count.value(), 7);
  EXPECT_THAT(recorder.take(), ::testing::Contains(::testing::StartsWith(
                                   "HXParameterValueDidChangeNotification Tarn.countParameter")));
  auto* text = as<HXStringParameter>(node->parameterForKey("Tarn.textParameter"));
  const String same("x");
  recorder.take();
  text->setValue(same);
  text->setValue(same);
  text->setValue(String(std::string("x")));
  EXPECT_EQ(recorder.take().size(), 2U) << "an equal string that is another object is a change";
  EXPECT_FALSE(HXParameter::create(HXParameter::kClass, node.get()));
  EXPECT_THAT(recorder.takeLog(),
              ElementsAre("WARNING: [HXParameter] Attempting to create vanilla HXParameter. "
                          "Returning nil."));
}

TEST_F(SyncTest, AskingForADescriptionEndsTheSharingOfThatNodeOnly) {
  const auto a = add("HXRClampNode");
  const auto b = add("HXRClampNode");
  auto& portOfA = port(*a, "Tarn.valueInput");
  EXPECT_EQ(portOfA.definition(), port(*b, "Tarn.valueInput").definition());
  Recorder recorder;
  portOfA.patchPort()->setName("Renamed");
  EXPECT_EQ(portOfA.name(), "Renamed");
  EXPECT_EQ(port(*b, "Tarn.valueInput").name(), "Value");
  EXPECT_EQ(a->patch()->portForKey("Tarn.valueInput"), portOfA.patchPort());
  EXPECT_THAT(recorder.take(), ElementsAre("HXPortNameDidChangeNotification Renamed Port=Renamed "
                                           "Name=Renamed"));
  EXPECT_EQ(keys(a->inputPorts()), keys(b->inputPorts()));
}

TEST_F(SyncTest, GroupsThatARebuildTakesAwayAndBringsBackStayWhatTheUserMadeOfThem) {
  struct Case {
    const char* patch;
    std::function<void(HXParameter&)> set;
  };
  const Case cases[] = {
      // Neither of the letters that a fresh expression has.
      {"HXRMathExpressionNode",
       [](HXParameter& parameter) {
         if (auto* text = as<HXStringParameter>(&parameter)) text->setValue(String("$c*$d"));
       }},
      // More entries than a fresh dictionary has.
      {"HXRDictionaryNode",
       [](HXParameter& parameter) {
         if (auto* count = as<HXIndexParameter>(&parameter)) count->setValue(9);
       }},
  };
  for (const Case& c : cases) {
    const auto node = add(c.patch);
    for (const auto& entry : node->parameters()) c.set(*entry.value);
    // The user's order: the reverse one.
    auto reversed = make<OrderedSet>();
    auto groups = node->inputPortGroups();
    for (auto at = groups.rbegin(); at != groups.rend(); ++at) {
      reversed->add((*at)->groupKey().object());
    }
    node->inputPortGroupCollection()->updateWithPortGroupKeys(nullptr);
    node->inputPortGroupCollection()->updateWithPortGroupKeys(reversed);
    groups.back()->setHidden(true);
    groups.front()->setCollapsedCanvasGroup(true);
    const auto expectKept = [&](HXNode& kept, const char* when) {
      const auto order = kept.inputPortGroupCollection()->portGroupKeys();
      EXPECT_TRUE(order->isEqual(*reversed)) << c.patch << ", " << when;
      EXPECT_TRUE(kept.inputPortGroupForKey(groups.back()->groupKey())->hidden())
          << c.patch << ", " << when;
      EXPECT_TRUE(kept.inputPortGroupForKey(groups.front()->groupKey())->collapsedCanvasGroup())
          << c.patch << ", " << when;
      EXPECT_THAT(faultsOf(*document), IsEmpty());
    };
    node->setPatch(patchClassNamed(c.patch)->makeDefinition());
    expectKept(*node, "after a fresh definition was set");
    node->setPatch(node->patch());
    expectKept(*node, "after the same definition was set");
    const auto bytes = savedBytes(*document, HXCodingTypeEditorWithKeys);
    const auto opened = openedDocument(bytes, HXCodingTypeEditorWithKeys);
    ASSERT_TRUE(opened);
    expectKept(*opened->subnodeGroup()->subnodeForKey(node->uniqueKey()), "opened");
  }
}

TEST_F(SyncTest, PublishedPortsNamedLikeAGroupOfTheDefinitionStandBeforeIt) {
  static const HXRNodeClass masking("MaskingNode", &HXRNode::kClass, {},
                                    [](PatchDeclaration& patch) {
                                      patch.group("Masking");
                                      patch.in("Shape", "Tarn.shapeInput");
                                    });
  const auto node = add("");
  node->setPatch(masking.makeDefinition());
  auto* own = node->inputPortGroupForKey("Masking");
  own->setCollapsedSidebarGroup(true);
  const auto clamp = add("HXRClampNode", node.get());
  const auto published =
      node->subnodeGroup()->addSymbolicPortForPort(port(*clamp, "Tarn.valueInput"));
  Recorder recorder;
  published->setName("Masking: Speed");
  EXPECT_EQ(keys(node->inputPorts()),
            std::vector<std::string>{published->uniqueKey().toStdString()});
  EXPECT_THAT(recorder.take(),
              ElementsAre("HXNodeRemovePortGroupNotification Group Node=Group PortGroup=Published",
                          "HXNodeAddPortGroupNotification Group Node=Group PortGroup=Masking",
                          "HXPortNameDidChangeNotification Masking: Speed Port=Masking: Speed "
                          "Name=Masking: Speed"));
  node->setPatch(node->patch());
  node->patch()->portForKey("Tarn.shapeInput");  // a definition of its own
  node->setPatch(node->patch());
  EXPECT_THAT(recorder.take(), IsEmpty());
  published->setName("Speed");
  EXPECT_EQ(node->inputPortGroupForKey("Masking"), own);
  EXPECT_TRUE(own->collapsedSidebarGroup());
  EXPECT_THAT(recorder.take(),
              ElementsAre("HXNodeRemovePortGroupNotification Group Node=Group PortGroup=Masking",
                          "HXNodeAddPortGroupNotification Group Node=Group PortGroup=Published",
                          "HXPortNameDidChangeNotification Speed Port=Speed Name=Speed"));
  // Both go where the definition has gone, too.
  published->setName("Masking: Speed");
  recorder.take();
  node->setPatch(nullptr);
  published->setName("Speed");
  const auto lines = recorder.take();
  EXPECT_EQ(std::count(lines.begin(), lines.end(),
                       "HXNodeRemovePortGroupNotification Group Node=Group PortGroup=Masking"),
            2);
  EXPECT_THAT(faultsOf(*document), IsEmpty());
}

TEST_F(SyncTest, AGroupBehindPublishedPortsKeepsItsFlagsThroughARebuild) {
  const auto node = add("HXRMathExpressionNode");
  node->setForceAllowsSubnodes(true);
  const auto clamp = add("HXRClampNode", node.get());
  const Ref<HXPortGroup> own = node->inputPortGroups().front();
  own->setCollapsedSidebarGroup(true);
  const auto published =
      node->subnodeGroup()->addSymbolicPortForPort(port(*clamp, "Tarn.valueInput"));
  published->setName(String(own->groupKey().toStdString() + ": x"));
  for (const auto& entry : node->parameters()) {
    if (auto* text = as<HXStringParameter>(entry.value.get())) text->setValue(String("$p+$q"));
  }
  node->setPatch(patchClassNamed("HXRMathExpressionNode")->makeDefinition());
  published->setName("zz");
  EXPECT_TRUE(node->inputPortGroupForKey(own->groupKey())->collapsedSidebarGroup());
  EXPECT_THAT(faultsOf(*document), IsEmpty());
}

TEST_F(SyncTest, AnObserverThatThrowsLeavesANodeThatFollowsOn) {
  const auto node = add("HXRMathNode");
  const auto setCount = [&](std::int32_t count) {
    for (const auto& entry : node->parameters()) {
      if (auto* index = as<HXIndexParameter>(entry.value.get())) {
        if (index->maximumValue() > 4) return index->setValue(count);
      }
    }
  };
  setCount(3);
  for (const Symbol* name :
       {&HXParameterValueDidChangeNotification, &HXNodeAddPortGroupNotification,
        &HXNodeAddPortNotification, &HXNodeRemovePortNotification}) {
    const auto token = NotificationCenter::defaultCenter().addObserver(
        *name, [](const Notification&) { throw std::runtime_error("an observer's own"); });
    const auto set = [&](const char* patch) {
      try {
        node->setPatch(patchClassNamed(patch)->makeDefinition());
      } catch (const std::runtime_error&) {
      }
    };
    set("HXRMathNode");
    set("HXRClampNode");
    NotificationCenter::defaultCenter().removeObserver(token);
    node->setPatch(patchClassNamed("HXRMathNode")->makeDefinition());
    setCount(5);
    EXPECT_THAT(faultsOf(*document), IsEmpty()) << name->text();
    setCount(3);
  }
}

TEST_F(SyncTest, AGroupThatGoesIsAnnouncedWithWhatItShowed) {
  const auto node = add("");
  const auto clamp = add("HXRClampNode", node.get());
  const auto publish = [&] {
    return node->subnodeGroup()->addSymbolicPortForPort(port(*clamp, "Tarn.valueInput"));
  };
  std::vector<std::uint32_t> shown;
  const auto token = NotificationCenter::defaultCenter().addObserver(
      HXNodeRemovePortGroupNotification, [&](const Notification& notification) {
        const auto* group = as<HXPortGroup>(notification.userInfo[HXPortGroupInfo]);
        shown.push_back(group->portKeys()->count());
      });
  publish();
  node->subnodeGroup()->removeSymbolicPortForPort(&port(*clamp, "Tarn.valueInput"));
  publish()->setName("A: b");
  // A group of the definition that loses its last port, in one step and in two.
  const auto patch = clamp->patch();
  const auto extra =
      make<HXRPort>(String("X"), String("X"), HXOrientationInput, HXConnectionRelationshipOne);
  const auto other =
      make<HXRPort>(String("Y"), String("Y"), HXOrientationInput, HXConnectionRelationshipOne);
  patch->addPort(*extra, "Extra");
  const Ref<HXPortGroup> gone(clamp->inputPortGroupForKey("Extra"));
  patch->removePort(*extra);
  EXPECT_EQ(gone->portKeys()->count(), 1U);
  patch->addPort(*extra, "Extra");
  patch->addPort(*other, "Extra");
  patch->removePort(*extra);
  EXPECT_EQ(clamp->inputPortGroupForKey("Extra")->portKeys()->count(), 1U);
  patch->removePort(*other);
  EXPECT_THAT(shown, ElementsAre(1U, 1U, 1U, 1U));
  // With the definition, and with the subnode group.
  node->setForceAllowsSubnodes(false);
  const auto left = add("HXRClampNode");
  left->setPatch(nullptr);
  NotificationCenter::defaultCenter().removeObserver(token);
  EXPECT_THAT(shown, ElementsAre(1U, 1U, 1U, 1U, 1U, 3U, 1U));
}

}  // namespace tarnkit::test
