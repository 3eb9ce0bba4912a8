#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tarnkit/model/HXDocument.h"
#include "tarnkit/model/HXLookup.h"
#include "tarnkit/model/HXNodeWalk.h"
#include "tarnkit/model/HXParameter.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/model/HXReplicatorNode.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tarnkit/patches/PatchRegistry.h"

namespace tarnkit {
namespace {

// Of "" a node that holds a group.
Ref<HXNode> added(HXNode& to, const char* patchClass) {
  const bool isGroup = *patchClass == '\0';
  auto node = isGroup ? make<HXNode>() : HXNode::makeForPatch(*patchClassNamed(patchClass));
  if (isGroup) node->setForceAllowsSubnodes(true);
  to.subnodeGroup()->addNode(*node);
  return node;
}

TEST(NodeForPatch, has_the_class_that_goes_with_the_patch) {
  for (const auto* patchClass : catalogue()) {
    const auto node = HXNode::makeForPatch(*patchClass);
    ASSERT_TRUE(node) << patchClass->name();
    EXPECT_EQ(node->isa().name(), patchClass->nodeClassName().view());
    EXPECT_EQ(&node->patchClass(), patchClass);
    EXPECT_EQ(node->name(), patchClass->defaultName());
  }
}

TEST(Lookup, finds_what_stands_anywhere_below) {
  const auto document = make<HXDocument>();
  const auto replicator = added(*document, "HXRReplicatorNode");
  const auto group = added(*replicator, "");
  const auto deep = added(*group, "HXRClampNode");
  const auto top = added(*document, "HXRClampNode");
  group->setName("Group");
  top->setName("Knob");
  deep->setName("Knob");
  const auto other = make<HXDocument>();

  for (HXNodeWalk walk(*document); HXNode* node = walk.next();) {
    EXPECT_EQ(HXLookup::nodeForKey(*document, node->uniqueKey()), node);
    EXPECT_EQ(HXLookup::objectForAddress(*document, node->uniqueKey().view()), node);
    if (node != document.get()) {
      EXPECT_EQ(HXLookup::nodeForKeyPath(*document, node->keyPath()), node);
    }
  }
  EXPECT_FALSE(HXLookup::nodeForKey(*document, other->uniqueKey()));
  EXPECT_FALSE(HXLookup::nodeForKey(*document, nullptr));
  EXPECT_FALSE(HXLookup::nodeForKeyPath(*other, deep->keyPath()));
  EXPECT_FALSE(HXLookup::nodeForKeyPath(
      *document, {deep->uniqueKey(), replicator->uniqueKey(), document->uniqueKey()}));

  EXPECT_THAT(HXLookup::nodesNamed(*document, "Knob"), ::testing::ElementsAre(deep, top));
  EXPECT_THAT(HXLookup::nodesNamed(*document, nullptr),
              ::testing::ElementsAre(Ref<HXNode>(document)));
  EXPECT_THAT(HXLookup::nodesOfPatch(*document, "HXRReplicatorNode"),
              ::testing::ElementsAre(replicator));
  EXPECT_THAT(HXLookup::nodesOfPatch(*group, "HXRClampNode"), ::testing::ElementsAre(deep));
  EXPECT_THAT(HXLookup::nodesOfPatch(*document, "HXRNode"), ::testing::IsEmpty());
}

TEST(Lookup, reads_the_addresses_that_it_gives) {
  const auto document = make<HXDocument>();
  const auto group = added(*document, "");
  const auto inner = added(*group, "HXRMathExpressionNode");
  auto* output = inner->ports().back().get();
  const auto published = group->subnodeGroup()->addSymbolicPortForPort(*output);
  for (const HXPort* port :
       {static_cast<const HXPort*>(output), static_cast<const HXPort*>(published.get())}) {
    EXPECT_EQ(HXLookup::objectForAddress(*document, HXLookup::addressOf(port)), port);
  }
  const auto parameters = inner->parameters();
  ASSERT_FALSE(parameters.empty());
  const auto& entry = *parameters.begin();
  const std::string address =
      std::string(inner->uniqueKey().view()) + "/" + std::string(entry.key.view());
  EXPECT_EQ(HXLookup::objectForAddress(*document, address), entry.value.get());
  for (const char* nowhere : {"", "/", "node_x", "node_x/Tarn.output"}) {
    EXPECT_FALSE(HXLookup::objectForAddress(*document, nowhere)) << nowhere;
  }
  EXPECT_EQ(HXLookup::addressOf(nullptr), "");
}

}  // namespace
}  // namespace tarnkit
