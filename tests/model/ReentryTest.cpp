#include <functional>

#include "Consistency.h"
#include "ModelFixture.h"
#include "tarnkit/model/HXParameterKinds.h"
#include "tarnkit/model/HXPortGroup.h"
#include "tarnkit/model/HXReplicatorNode.h"
#include "tarnkit/model/HXSubviewGroup.h"

// Observers that change, while they are told, what the operation at work goes on with. Whoever
// starts the operation holds nothing but the bare pointer that the interface hands out.

namespace tarnkit::test {

using ::testing::IsEmpty;

namespace {

// A document with something of everything: a counted patch and an expression whose values were set,
// published ports on two levels, a replicator, views, connections across the groups.
struct Scene {
  Scene() {
    document = make<HXDocument>();
    replicator = add(*document, "HXRReplicatorNode");
    group = add(*replicator, "HXRRemoteGroupNode");
    math = add(*group, "HXRMathNode");
    expression = add(*group, "HXRMathExpressionNode");
    source = add(*document, "HXRClampNode");
    sink = add(*document, "HXRClampNode");
    index(*math)->setValue(5);
    publish(*math->portForKey("Tarn.operand0Input"));
    publish(*math->portForKey("Tarn.resultOutput"));
    document->connectPort(*firstOf(*source, HXOrientationOutput),
                          *published(*group, HXOrientationInput));
    document->connectPort(*firstOf(*expression, HXOrientationOutput),
                          *math->portForKey("Tarn.operand1Input"));
  }

  static HXNode* add(HXNode& to, const char* patchClass) {
    const auto* record = patchClassNamed(patchClass);
    const auto node = HXNode::makeOfClass(record->nodeClassName());
    node->setPatch(record->makeDefinition());
    to.subnodeGroup()->addNode(*node);
    return node.get();
  }
  // On every level up to the document.
  static void publish(HXPort& port) {
    for (HXPort* at = &port; at && at->node()->parentGroup()->node()->parentGroup();
         at = at->symbolicPort()) {
      at->node()->parentGroup()->addSymbolicPortForPort(*at);
    }
  }
  static HXPort* firstOf(HXNode& node, std::int32_t orientation) {
    for (const auto& entry : node.portsInForce()) {
      if (entry.value->orientation() == orientation) return entry.value.get();
    }
    return nullptr;
  }
  static HXSymbolicPort* published(HXNode& node, std::int32_t orientation) {
    const auto& ports = orientation == HXOrientationInput ? node.symbolicInputPortsInForce()
                                                          : node.symbolicOutputPortsInForce();
    return ports.isEmpty() ? nullptr : static_cast<HXSymbolicPort*>((*ports.begin()).get());
  }
  static HXIndexParameter* index(HXNode& node) {
    for (const auto& entry : node.parameters()) {
      if (auto* parameter = as<HXIndexParameter>(entry.value.get())) return parameter;
    }
    return nullptr;
  }
  Ref<HXDocument> document;
  // Valid as long as nobody takes them out.
  HXNode* replicator;
  HXNode* group;
  HXNode* math;
  HXNode* expression;
  HXNode* source;
  HXNode* sink;
};

struct Step {
  const char* name;
  std::function<void(Scene&)> run;
};

const Step kOperations[] = {
    {"set a patch",
     [](Scene& s) { s.math->setPatch(patchClassNamed("HXRShadowViewNode")->makeDefinition()); }},
    {"set the same patch", [](Scene& s) { s.math->setPatch(s.math->patch()); }},
    {"set no patch", [](Scene& s) { s.math->setPatch(nullptr); }},
    {"set a container's patch", [](Scene& s) { s.group->setPatch(nullptr); }},
    {"set a count", [](Scene& s) { s.index(*s.math)->setValue(2); }},
    {"set an expression",
     [](Scene& s) {
       for (const auto& entry : s.expression->parameters()) {
         if (auto* text = as<HXStringParameter>(entry.value.get())) text->setValue(String("$c*$d"));
       }
     }},
    {"set a value",
     [](Scene& s) {
       as<HXPatchPort>(s.firstOf(*s.source, HXOrientationInput))
           ->setStaticValue(PMRPrimitive::primitiveWithNumberValue(3));
     }},
    {"rename a published port",
     [](Scene& s) { s.published(*s.group, HXOrientationInput)->setName(String("A: b")); }},
    {"publish",
     [](Scene& s) {
       s.group->subnodeGroup()->addSymbolicPortForPort(
           *s.firstOf(*s.expression, HXOrientationOutput));
     }},
    {"unpublish",
     [](Scene& s) {
       for (const auto& entry : s.math->portsInForce()) {
         if (!entry.value->symbolicPort()) continue;
         return s.math->parentGroup()->removeSymbolicPortForPort(entry.value.get());
       }
     }},
    {"connect",
     [](Scene& s) {
       s.document->connectPort(*s.firstOf(*s.source, HXOrientationOutput),
                               *s.firstOf(*s.sink, HXOrientationInput));
     }},
    {"disconnect",
     [](Scene& s) {
       s.document->breakAllConnectionsToPort(*s.firstOf(*s.source, HXOrientationOutput));
     }},
    {"add a view", [](Scene& s) { s.add(*s.group, "HXRViewNode"); }},
    {"swap the group", [](Scene& s) { s.group->swapSubnodeGroupToViewGroup(); }},
    {"take a node out", [](Scene& s) { s.math->parentGroup()->removeNode(s.math); }},
    {"take a container out", [](Scene& s) { s.group->parentGroup()->removeNode(s.group); }},
    {"add a port to a definition",
     [](Scene& s) {
       s.math->patch()->addPort(*make<HXRPort>(String("X"), String("X"), HXOrientationInput,
                                               HXConnectionRelationshipOne));
     }},
};

// What an observer does in the middle, found anew in the document each time.
HXNode* nodeOf(Scene& s, const char* patchClass) {
  std::vector<HXNode*> all{s.document.get()};
  for (std::size_t at = 0; at < all.size(); ++at) {
    if (all[at]->patch() && all[at]->patchClass().name() == std::string_view(patchClass)) {
      return all[at];
    }
    if (!all[at]->subnodeGroup()) continue;
    for (const auto& entry : all[at]->subnodeGroup()->subnodesInForce()) {
      all.push_back(entry.value.get());
    }
  }
  return nullptr;
}

void removeNode(HXNode* node) {
  if (node && node->parentGroup()) node->parentGroup()->removeNode(node);
}

const Step kInterruptions[] = {
    {"takes the node out", [](Scene& s) { removeNode(nodeOf(s, "HXRMathNode")); }},
    {"takes the expression out", [](Scene& s) { removeNode(nodeOf(s, "HXRMathExpressionNode")); }},
    {"takes a clamp out", [](Scene& s) { removeNode(nodeOf(s, "HXRClampNode")); }},
    {"takes the group out", [](Scene& s) { removeNode(nodeOf(s, "HXRRemoteGroupNode")); }},
    {"takes the replicator out", [](Scene& s) { removeNode(nodeOf(s, "HXRReplicatorNode")); }},
    {"sets no patch",
     [](Scene& s) {
       for (const char* patch : {"HXRMathNode", "HXRMathExpressionNode", "HXRShadowViewNode"}) {
         if (auto* node = nodeOf(s, patch)) node->setPatch(nullptr);
       }
     }},
    {"sets another patch",
     [](Scene& s) {
       for (const char* patch : {"HXRMathNode", "HXRMathExpressionNode", "HXRShadowViewNode"}) {
         if (auto* node = nodeOf(s, patch)) {
           node->setPatch(patchClassNamed("HXRLogicNode")->makeDefinition());
         }
       }
     }},
    {"sets the same patch",
     [](Scene& s) {
       if (auto* node = nodeOf(s, "HXRMathNode")) node->setPatch(node->patch());
     }},
    {"sets a count",
     [](Scene& s) {
       if (auto* node = nodeOf(s, "HXRMathNode")) Scene::index(*node)->setValue(7);
     }},
    {"ends the publications",
     [](Scene& s) {
       for (const char* patch : {"HXRMathNode", "HXRMathExpressionNode"}) {
         auto* node = nodeOf(s, patch);
         if (!node || !node->parentGroup()) continue;
         for (const auto& port : node->ports()) {
           node->parentGroup()->removeSymbolicPortForPort(port.get());
         }
       }
     }},
    {"adds a view",
     [](Scene& s) {
       if (auto* node = nodeOf(s, "HXRRemoteGroupNode")) Scene::add(*node, "HXRViewNode");
     }},
    {"empties the group",
     [](Scene& s) {
       if (auto* node = nodeOf(s, "HXRRemoteGroupNode")) node->setPatch(nullptr);
     }},
    {"breaks connections",
     [](Scene& s) {
       for (const char* patch : {"HXRMathNode", "HXRClampNode"}) {
         auto* node = nodeOf(s, patch);
         if (!node) continue;
         for (const auto& port : node->ports()) s.document->breakAllConnectionsToPort(*port);
       }
     }},
    {"drops the document", [](Scene& s) { s.document = nullptr; }},
};

}  // namespace

// Every operation is interrupted at each of its notifications by each of the interruptions: what is
// left must fit together, and nothing may be touched that has gone (which the sanitizers see).
TEST(ReentryTest, WhateverIsDoneInTheMiddleEverythingFitsTogether) {
  int interrupted = 0;
  for (const Step& operation : kOperations) {
    for (const Step& interruption : kInterruptions) {
      for (int at = 0, count = 1; at < count && at < 40; ++at) {
        Scene scene;
        int told = 0;
        bool inside = false;
        const auto token = NotificationCenter::defaultCenter().addObserver(
            nullptr, nullptr, [&](const Notification&) {
              if (inside || told++ != at || !scene.document) return;
              inside = true;
              interruption.run(scene);
              inside = false;
              ++interrupted;
            });
        // The operation finds a bare pointer; the document is the caller's to keep or to drop.
        operation.run(scene);
        NotificationCenter::defaultCenter().removeObserver(token);
        if (told > count) count = told;
        if (!scene.document) continue;
        EXPECT_THAT(faultsOf(*scene.document), IsEmpty())
            << "who would " << operation.name << ", while an observer of notification " << at << " "
            << interruption.name;
      }
    }
  }
  EXPECT_GT(interrupted, 1000);
}

class ReentryModelTest : public ModelTest {};

TEST_F(ReentryModelTest, AParameterThatAnotherPatchTakesInTheMiddleFollowsThatPatch) {
  const auto node = add("HXRMultiplexerNode");
  auto* count = as<HXIndexParameter>(node->parameterForKey("Tarn.numberOfSourcesParameter"));
  count->setValue(3);
  const auto token = NotificationCenter::defaultCenter().addObserver(
      HXParameterValueDidChangeNotification, [&, once = true](const Notification&) mutable {
        if (std::exchange(once, false)) node->setPatch(nullptr);
      });
  node->setPatch(patchClassNamed("HXRMultiplexerNode")->makeDefinition());
  NotificationCenter::defaultCenter().removeObserver(token);
  EXPECT_FALSE(node->patch());
  EXPECT_TRUE(node->portsInForce().empty());
  EXPECT_EQ(count->value(), 3);
}

TEST_F(ReentryModelTest, WhatWentAgainMeanwhileIsNotAnnouncedAsAdded) {
  const auto node = add("");
  Recorder recorder;
  const auto token = NotificationCenter::defaultCenter().addObserver(
      HXNodeAddPortNotification, [&, once = true](const Notification&) mutable {
        if (std::exchange(once, false)) node->setPatch(nullptr);
      });
  node->setPatch(patchClassNamed("HXRClampNode")->makeDefinition());
  NotificationCenter::defaultCenter().removeObserver(token);
  int added = 0;
  for (const auto& line : recorder.take()) added += line.rfind("HXNodeAddPortNotification", 0) == 0;
  EXPECT_EQ(added, 1);
}

TEST_F(ReentryModelTest, ParametersThatWereHandedOutStayAsTheyAre) {
  const auto node = add("HXRMathNode");
  const auto before = node->parameters();
  for (const auto& entry : node->parameters()) {
    if (auto* index = as<HXIndexParameter>(entry.value.get())) index->setValue(9);
  }
  EXPECT_LT(before.size(), node->parameters().size());
  auto own = node->parameters();
  own.clear();
  EXPECT_FALSE(node->parameters().empty());
}

// Of a node that leaves its group nothing stays published there, though an observer publishes
// another of its ports while the first one is withdrawn.
TEST(ReentryTest, APortPublishedWhileItsNodeLeavesIsWithdrawnToo) {
  Scene scene;
  const Ref<HXNode> math(scene.math);
  int publications = 0;
  const NotificationCenter::Observation observation(
      HXPortDidRemoveSymbolicReferenceNotification, [&](const Notification&) {
        auto* const other = math->portForKey("Tarn.operand2Input");
        if (!math->parentGroup() || other->symbolicPort()) return;
        ++publications;
        math->parentGroup()->addSymbolicPortForPort(*other);
      });
  scene.group->subnodeGroup()->removeNode(scene.math);
  EXPECT_GE(publications, 1);
  EXPECT_EQ(math->portForKey("Tarn.operand2Input")->symbolicPort(), nullptr);
  EXPECT_TRUE(scene.group->symbolicInputPortsInForce().isEmpty());
  EXPECT_THAT(faultsOf(*scene.document), IsEmpty());
}

}  // namespace tarnkit::test
