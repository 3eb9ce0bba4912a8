#include "ModelFixture.h"

namespace tarnkit::test {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class PortTest : public ModelTest {};

TEST_F(PortTest, RelationshipsDecideWhichConnectionsArePossible) {
  const auto a = add("HXRClampNode");
  const auto b = add("HXRClampNode");
  const auto c = add("HXRClampNode");
  const auto first = connect(*a, "Tarn.resultOutput", *c, "Tarn.valueInput");
  auto& input = port(*c, "Tarn.valueInput");
  auto& output = port(*b, "Tarn.resultOutput");
  EXPECT_FALSE(input.acceptsNewConnections());
  // The taken input refuses, the output accepts, and the addition is announced all the same.
  Recorder recorder;
  const auto second = document->connectPort(input, output);
  ASSERT_TRUE(second);
  EXPECT_THAT(recorder.take(),
              ElementsAre("HXPortDidConnectNotification Result Port=Result Connection=connection",
                          "HXDocumentAddConnectionNotification Top Graph=Top "
                          "Connection=connection"));
  EXPECT_TRUE(input.connections().contains(first.get()));
  EXPECT_EQ(input.connections().count(), 1U);
  EXPECT_EQ(output.connections().count(), 1U);
  // A second entry for the same connection is not made, but announced.
  EXPECT_TRUE(output.connectConnection(*second));
  EXPECT_EQ(output.connections().count(), 1U);
  EXPECT_EQ(recorder.take().size(), 1U);
  EXPECT_FALSE(input.disconnectConnection(*second));
  EXPECT_THAT(recorder.take(), IsEmpty());

  const auto stray = make<HXPatchPort>(a.get(), HXOrientationInput, 3);
  EXPECT_FALSE(stray->connectConnection(*second));
  EXPECT_TRUE(stray->acceptsNewConnections());
}

TEST_F(PortTest, ASetOfConnectionsThatWasHandedOutStays) {
  const auto a = add("HXRClampNode");
  auto& output = port(*a, "Tarn.resultOutput");
  std::vector<Ref<HXNode>> nodes;
  for (int i = 0; i < 20; ++i) {
    nodes.push_back(add("HXRClampNode"));
    connect(*a, "Tarn.resultOutput", *nodes.back(), "Tarn.valueInput");
  }
  const auto before = output.connections();
  document->breakAllConnectionsToPort(output);
  EXPECT_EQ(before.count(), 20U);
  EXPECT_TRUE(output.connections().isEmpty());
  for (const auto& node : nodes) {
    EXPECT_TRUE(port(*node, "Tarn.valueInput").connections().isEmpty());
  }
}

TEST_F(PortTest, StaticValuesAnnounceThemselvesAndTheEffectiveValue) {
  const auto node = add("HXRDelayNode");
  auto& delay = port(*node, "Tarn.delayInput");
  const auto two = PMRPrimitive::primitiveWithNumberValue(2);
  Recorder recorder;
  delay.setStaticValue(two);
  delay.setStaticValue(two);
  EXPECT_THAT(recorder.take(),
              ElementsAre("HXPatchPortStaticValueDidChangeNotification Delay Port=Delay "
                          "StaticValue=2",
                          "HXPatchPortEffectiveValueDidChangeNotification Delay Port=Delay "
                          "EffectiveValue=2"));
  delay.setStaticValue(PMRPrimitive::primitiveWithNumberValue(2));
  EXPECT_EQ(recorder.take().size(), 1U) << "an equal value leaves the effective value alone";
  delay.setStaticValue(nullptr);
  EXPECT_THAT(recorder.take(),
              ElementsAre("HXPatchPortStaticValueDidChangeNotification Delay Port=Delay "
                          "StaticValue=null",
                          "HXPatchPortEffectiveValueDidChangeNotification Delay Port=Delay "
                          "EffectiveValue=1"));
  // A port without a default: from nothing to something to nothing, and nothing never equals
  // nothing.
  auto& value = port(*node, "Tarn.valueInput");
  value.setStaticValue(two);
  value.setStaticValue(nullptr);
  EXPECT_EQ(recorder.take().size(), 4U);
  EXPECT_FALSE(value.effectiveValue());
  const auto loose = nodeOf("HXRDelayNode");
  port(*loose, "Tarn.delayInput").setStaticValue(two);
  EXPECT_THAT(recorder.take(), IsEmpty());
}

TEST_F(PortTest, OnlyValueAndPrimitiveInputsTakeStaticValues) {
  const auto image = add("HXRImageViewNode");
  EXPECT_TRUE(port(*image, "Tarn.widthInput").supportsStaticValue());
  EXPECT_FALSE(port(*image, "Tarn.imageInput").supportsStaticValue());
  const auto state = add("HXRStateOutputNode");
  EXPECT_TRUE(port(*state, "Tarn.initialValueInput").supportsStaticValue());
  EXPECT_FALSE(port(*state, "Tarn.valueOutput").supportsStaticValue());
}

TEST_F(PortTest, DisplayNamesDropWhatStandsBeforeTheFirstColon) {
  const auto group = add("");
  const auto clamp = add("HXRClampNode", group.get());
  const auto symbolic =
      group->subnodeGroup()->addSymbolicPortForPort(port(*clamp, "Tarn.valueInput"));
  const struct {
    const char* name;
    const char* display;
  } cases[] = {{"Size: Width", " Width"}, {"A:B:C", "B:C"}, {"Plain", "Plain"}, {"End:", ""}};
  for (const auto& [name, display] : cases) {
    symbolic->setName(name);
    EXPECT_EQ(symbolic->displayName(), display) << name;
  }
}

TEST_F(PortTest, PublishedPortsStandForWhatTheyResolveTo) {
  const auto outer = add("");
  const auto inner = add("", outer.get());
  const auto clamp = add("HXRClampNode", inner.get());
  const auto source = add("HXRClampNode");
  auto& value = port(*clamp, "Tarn.valueInput");
  const auto first = inner->subnodeGroup()->addSymbolicPortForPort(value);
  const auto second = outer->subnodeGroup()->addSymbolicPortForPort(*first);
  const auto clampKey = clamp->uniqueKey().toStdString();
  EXPECT_EQ(first->uniqueKey().toStdString(), "Symbolic." + clampKey + ".Tarn.valueInput");
  EXPECT_EQ(second->uniqueKey().toStdString(), "Symbolic." + inner->uniqueKey().toStdString() +
                                                   ".Symbolic." + clampKey + ".Tarn.valueInput");
  EXPECT_EQ(second->resolvedPort(), &value);
  EXPECT_EQ(outer->portForKey(second->uniqueKey()), second.get());
  EXPECT_TRUE(second->canConnectToPort(&port(*source, "Tarn.resultOutput")));
  EXPECT_FALSE(second->acceptsNewConnections());

  auto connection = document->connectPort(*second, port(*source, "Tarn.resultOutput"));
  ASSERT_TRUE(connection);
  EXPECT_EQ(connection->inputPort(), &value);
  EXPECT_EQ(connection->displayInputPort(), second.get());
  document->breakAllConnectionsToPort(*second);
  EXPECT_EQ(value.connections().count(), 1U) << "a published port is not resolved for breaking";

  // Once the inner node is gone the chain ends nowhere, and nothing can be joined to it.
  const Ref<HXSymbolicPort> kept = second;
  document->subnodeGroup()->removeNode(outer.get());
  first->setPort(nullptr);
  Recorder recorder;
  EXPECT_EQ(kept->resolvedPort(), nullptr);
  EXPECT_FALSE(document->connectPort(*kept, port(*source, "Tarn.resultOutput")));
  EXPECT_THAT(recorder.takeLog(),
              ElementsAre(::testing::StartsWith(
                  "WARNING: [HXDocument] Attempting to connect to a published port that points to "
                  "a nil port (<HXSymbolicPort: ")));
}

TEST_F(PortTest, OnlyAnInputAndAnOutputCanBeJoined) {
  const auto a = add("HXRClampNode");
  const auto b = add("HXRClampNode");
  Recorder recorder;
  EXPECT_FALSE(document->connectPort(port(*a, "Tarn.valueInput"), port(*b, "Tarn.valueInput")));
  EXPECT_FALSE(document->connectPort(port(*a, "Tarn.resultOutput"), port(*b, "Tarn.resultOutput")));
  const auto log = recorder.takeLog();
  ASSERT_EQ(log.size(), 2U);
  EXPECT_THAT(log[0], ::testing::StartsWith("WARNING: [HXDocument] Attempting to connect two ports "
                                            "that are not an input port and an output port. (<"));
  EXPECT_THAT(recorder.take(), IsEmpty());
}

TEST_F(PortTest, PruningDropsConnectionsThatLostADisplayPort) {
  const auto source = add("HXRClampNode");
  const auto target = add("HXRClampNode");
  connect(*source, "Tarn.resultOutput", *target, "Tarn.minimumInput");
  {
    const auto group = add("");
    const auto inner = add("HXRClampNode", group.get());
    // Joined by way of a port that is published by nobody and so goes at once.
    const auto passing = make<HXSymbolicPort>(&port(*target, "Tarn.valueInput"), group.get(),
                                              HXOrientationInput, HXConnectionRelationshipOne);
    document->connectPort(*passing, port(*source, "Tarn.resultOutput"));
  }
  auto& output = port(*source, "Tarn.resultOutput");
  EXPECT_EQ(output.connections().count(), 2U);
  Recorder recorder;
  document->pruneInvalidConnections();
  EXPECT_EQ(output.connections().count(), 1U);
  EXPECT_TRUE(port(*target, "Tarn.valueInput").connections().isEmpty());
  EXPECT_THAT(recorder.take(), IsEmpty());
}

TEST_F(PortTest, PruningEndsConnectionsAtPortsOutsideOfTheDocument) {
  const auto source = add("HXRClampNode");
  const auto target = add("HXRClampNode");
  auto& output = port(*source, "Tarn.resultOutput");
  auto& input = port(*target, "Tarn.valueInput");
  {
    const auto passing = make<HXSymbolicPort>(&input, document.get(), HXOrientationInput,
                                              HXConnectionRelationshipOne);
    document->connectPort(*passing, output);
  }
  // What a hidden port holds stays when its node goes.
  for (const auto& group : target->inputPortGroups()) group->setHidden(true);
  document->subnodeGroup()->removeNode(target.get());
  EXPECT_FALSE(input.connections().isEmpty());
  document->pruneInvalidConnections();
  document->subnodeGroup()->addNode(*target);
  EXPECT_TRUE(output.connections().isEmpty());
  EXPECT_TRUE(input.connections().isEmpty());
}

TEST_F(PortTest, ConnectionsFindTheNearestCommonNode) {
  const auto outer = add("");
  const auto inner = add("", outer.get());
  const auto deep = add("HXRClampNode", inner.get());
  const auto shallow = add("HXRClampNode", outer.get());
  HXConnection::Path path;
  const auto connection = connect(*deep, "Tarn.resultOutput", *shallow, "Tarn.valueInput");
  ASSERT_TRUE(connection->traverseConnection(path));
  EXPECT_EQ(path.parentNode, outer.get());
  EXPECT_THAT(path.outputKeyPath, ElementsAre(deep->uniqueKey(), inner->uniqueKey()));
  EXPECT_THAT(path.inputKeyPath, ElementsAre(shallow->uniqueKey()));
  const auto loop = connect(*deep, "Tarn.resultOutput", *deep, "Tarn.valueInput");
  ASSERT_TRUE(loop->traverseConnection(path));
  EXPECT_EQ(path.parentNode, deep.get());
  EXPECT_THAT(path.outputKeyPath, IsEmpty());

  const auto stranger = nodeOf("HXRClampNode");
  Recorder recorder;
  EXPECT_FALSE(HXConnection::hx_traverseConnection(&port(*deep, "Tarn.resultOutput"),
                                                   &port(*stranger, "Tarn.valueInput"), path));
  EXPECT_FALSE(HXConnection::hx_traverseConnection(nullptr, nullptr, path));
  EXPECT_THAT(recorder.takeLog(),
              ElementsAre("WARNING: [HXConnection] Unable to find common ancestor.",
                          "WARNING: [HXConnection] Unable to traverse connection"));
}

}  // namespace tarnkit::test
