#include "ModelFixture.h"
#include "tarnkit/model/HXDocumentFile.h"
#include "tarnkit/model/HXLoopNode.h"
#include "tarnkit/model/HXPortGroup.h"
#include "tarnkit/model/HXReplicatorNode.h"
#include "tarnkit/model/HXSubviewGroup.h"
#include "tarnkit/patches/catalogue/Catalogue.h"

namespace tarnkit::test {

using ::testing::ElementsAre;
using ::testing::StartsWith;

class ContainerTest : public ModelTest {
 protected:
  Ref<HXReplicatorNode> addReplicator() {
    auto node = make<HXReplicatorNode>();
    node->setPatch(HXRReplicatorNode.makeDefinition());
    document->subnodeGroup()->addNode(*node);
    return node;
  }
  static std::vector<std::string> arrayOutputs(const HXReplicatorNode& node) {
    std::vector<std::string> keys;
    for (const auto& entry : node.replicatorArrayOutputPortKeyForPort()) {
      keys.push_back(entry.value.toStdString());
    }
    return keys;
  }
};

TEST_F(ContainerTest, EveryDefinitionMakesADocumentWithItsOwnKindOfNode) {
  for (const auto* patchClass : catalogue()) {
    const auto graph = as<HXDocument>(patchClass->documentGraph());
    ASSERT_TRUE(graph) << patchClass->name();
    const auto nodes = graph->subnodeGroup()->subnodes();
    ASSERT_EQ(nodes.size(), 1U);
    EXPECT_EQ(nodes[0]->isa().name(), patchClass->nodeClassName().view());
    EXPECT_EQ(&nodes[0]->patchClass(), patchClass);
    EXPECT_FALSE(nodes[0]->patch()->external());
    EXPECT_TRUE(HXDocumentFile::deviceGraph(*graph)) << patchClass->name();
  }
  const auto loop = as<HXDocument>(HXRLoopNode.documentGraph());
  EXPECT_TRUE(as<HXLoopNode>(loop->subnodeGroup()->subnodes()[0].get()));
}

TEST_F(ContainerTest, GroupProcessorsAreViewsAndRemoteGroupsAreNot) {
  auto remote = HXNode::makeOfClass("HXRemoteGroupNode");
  remote->setPatch(HXRRemoteGroupNode.makeDefinition());
  document->subnodeGroup()->addNode(*remote);
  add("HXRColorViewNode", remote.get());
  EXPECT_FALSE(as<HXSubviewGroup>(document->subnodeGroup().get()));
  const auto processor = HXNode::makeOfClass("HXRemoteGroupProcessorNode");
  document->subnodeGroup()->addNode(*processor);
  EXPECT_TRUE(as<HXSubviewGroup>(document->subnodeGroup().get()));
  EXPECT_FALSE(HXNode::makeOfClass("HXDocument"));
  EXPECT_FALSE(HXNode::makeOfClass("HXGroup"));
}

TEST_F(ContainerTest, AnArrayOutputIsWithdrawnThroughAnyDepth) {
  constexpr int kDepth = 12000;
  std::vector<Ref<HXReplicatorNode>> replicators;
  Ref<HXNode> innermost = document;
  for (int i = 0; i < kDepth; ++i) {
    const auto replicator = make<HXReplicatorNode>();
    replicator->setPatch(HXRReplicatorNode.makeDefinition());
    innermost->subnodeGroup()->addNode(*replicator);
    replicators.push_back(replicator);
    innermost = replicator;
  }
  const auto clamp = add("HXRClampNode", innermost.get());
  Ref<HXPort> published(&port(*clamp, "Tarn.resultOutput"));
  for (auto at = replicators.rbegin(); at != replicators.rend(); ++at) {
    (*at)->subnodeGroup()->addSymbolicPortForPort(*published);
    published = Ref<HXPort>((*at)->portForKey(arrayOutputs(**at)[0].c_str()));
    ASSERT_TRUE(published);
  }
  innermost->subnodeGroup()->removeNode(clamp.get());
  for (const auto& replicator : replicators) {
    EXPECT_TRUE(replicator->symbolicOutputPortsInForce().isEmpty());
    EXPECT_EQ(replicator->portsInForce().size(), 1U);
  }
}

TEST_F(ContainerTest, PublishedInnerPortsGetArrayOutputsThatFollowThem) {
  const auto replicator = addReplicator();
  const auto clamp = add("HXRClampNode", replicator.get());
  auto& result = port(*clamp, "Tarn.resultOutput");
  Recorder recorder;
  const auto symbolic = replicator->subnodeGroup()->addSymbolicPortForPort(result);
  const auto outputs = arrayOutputs(*replicator);
  ASSERT_EQ(outputs.size(), 1U);
  EXPECT_THAT(outputs[0], ::testing::MatchesRegex("ReplicatorOutput\\.[0-9A-F]{8}-[0-9A-F]{4}-4[0-"
                                                  "9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}"));
  EXPECT_THAT(recorder.take(),
              ::testing::Contains(
                  "HXReplicatorNodeAddOutputPortNotification Replicator "
                  "Node=Replicator ResolvedPortNodeKeyPath=" +
                  std::string("(") + clamp->uniqueKey().toStdString() +
                  ") ResolvedPortKey=Tarn.resultOutput ReplicatorOutputPortKey=" + outputs[0]));
  EXPECT_THAT(keys(replicator->outputPorts()), ElementsAre(outputs[0]))
      << "the published port itself is hidden";
  symbolic->setName("Limited");
  EXPECT_EQ(replicator->portForKey(String(outputs[0]))->name(), "Limited");

  // An input takes one connection and has no array output.
  replicator->subnodeGroup()->addSymbolicPortForPort(port(*clamp, "Tarn.valueInput"));
  EXPECT_EQ(arrayOutputs(*replicator).size(), 1U);

  recorder.take();
  replicator->setPatch(HXRReplicatorNode.makeDefinition());
  EXPECT_EQ(arrayOutputs(*replicator), outputs);
  EXPECT_TRUE(replicator->portForKey(String(outputs[0])));
  replicator->setPatch(replicator->patch());
  EXPECT_THAT(keys(replicator->outputPorts()), ElementsAre(outputs[0]));

  replicator->subnodeGroup()->removeSymbolicPortForPort(&result);
  EXPECT_TRUE(arrayOutputs(*replicator).empty());
  EXPECT_TRUE(replicator->outputPorts().empty());
  EXPECT_THAT(recorder.take(),
              ::testing::Contains("HXReplicatorNodeRemoveOutputPortNotification Replicator "
                                  "Node=Replicator ReplicatorOutputPortKey=" +
                                  outputs[0]));
}

TEST_F(ContainerTest, ArrayOutputsEndWithTheGroupWhosePortsTheyCollect) {
  const auto group = add("");
  const auto replicator = make<HXReplicatorNode>();
  group->subnodeGroup()->addNode(*replicator);
  for (const bool force : {false, true}) {
    replicator->setForceAllowsSubnodes(force);
    replicator->setPatch(HXRReplicatorNode.makeDefinition());
    const auto clamp = add("HXRClampNode", replicator.get());
    replicator->subnodeGroup()->addSymbolicPortForPort(port(*clamp, "Tarn.resultOutput"));
    const auto outputs = arrayOutputs(*replicator);
    ASSERT_EQ(outputs.size(), 1U);
    const auto published =
        group->subnodeGroup()->addSymbolicPortForPort(*replicator->portForKey(outputs[0].c_str()));
    // A patch that holds nodes keeps what is published and what collects it.
    replicator->setPatch(HXRLoopNode.makeDefinition());
    EXPECT_EQ(arrayOutputs(*replicator), outputs);
    Recorder recorder;
    replicator->setPatch(HXRClampNode.makeDefinition());
    if (force) {
      EXPECT_EQ(arrayOutputs(*replicator), outputs);
      recorder.take();
      replicator->setForceAllowsSubnodes(false);
    }
    EXPECT_TRUE(arrayOutputs(*replicator).empty());
    EXPECT_TRUE(group->symbolicOutputPorts().empty());
    const auto lines = recorder.take();
    EXPECT_THAT(lines,
                ::testing::Contains("HXReplicatorNodeRemoveOutputPortNotification Replicator "
                                    "Node=Replicator ReplicatorOutputPortKey=" +
                                    outputs[0]));
    EXPECT_THAT(lines, ::testing::Contains(StartsWith("HXNodeRemovePortNotification")));
    replicator->setPatch(HXRReplicatorNode.makeDefinition());
    EXPECT_EQ(replicator->portsByUniqueKey().size(),
              HXRReplicatorNode.prototype().portLayout().ports().size());
  }
}

TEST_F(ContainerTest, ArrayOutputsKeepTheirKeysThroughAFile) {
  const auto replicator = addReplicator();
  const auto group = add("", replicator.get());
  const auto clamp = add("HXRClampNode", group.get());
  const auto inner =
      group->subnodeGroup()->addSymbolicPortForPort(port(*clamp, "Tarn.resultOutput"));
  replicator->subnodeGroup()->addSymbolicPortForPort(*inner);
  const auto target = add("HXRArrayCountNode");
  const auto outputs = arrayOutputs(*replicator);
  ASSERT_EQ(outputs.size(), 1U);
  document->connectPort(*replicator->portForKey(String(outputs[0])),
                        port(*target, "Tarn.arrayInput"));
  const auto opened = openedDocument(savedBytes(*document, 0), 0);
  ASSERT_TRUE(opened);
  for (const auto& node : opened->subnodeGroup()->subnodes()) {
    const auto* again = as<HXReplicatorNode>(node.get());
    if (!again) continue;
    EXPECT_EQ(arrayOutputs(*again), outputs);
    EXPECT_THAT(keys(again->outputPorts()), ElementsAre(outputs[0]));
    EXPECT_EQ(again->portForKey(String(outputs[0]))->connections().count(), 1U);
  }
}

}  // namespace tarnkit::test
