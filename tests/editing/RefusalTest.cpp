#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

#include "tarnkit/archive/HXCoding.h"
#include "tarnkit/editing/HXHistory.h"
#include "tarnkit/editing/HXWiring.h"
#include "tarnkit/model/HXDocumentFile.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/model/HXRefusal.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tarnkit/patches/PatchRegistry.h"
#include "tarnkit/platform/system/Log.h"
#include "tests/model/ModelFixture.h"

namespace tarnkit {
namespace {

using Code = HXRefusal::Code;

class Refusals : public test::ModelTest {
 protected:
  Ref<HXNode> addGroup(HXNode* to = nullptr) { return add("", to); }
  static HXPort& port(const Ref<HXNode>& node, const char* key) { return *node->portForKey(key); }
  static std::string why(const HXPort& port, const HXPort* other) {
    const auto refusal = port.whyNotConnectToPort(other);
    return std::string(nameOf(refusal.code())) + ": " + std::string(refusal.reason().view());
  }
  std::vector<std::uint8_t> bytes() const {
    return *HXDocumentFile::dataWithDocument(*document, HXCodingTypeEditorWithKeys);
  }
};

TEST_F(Refusals, of_a_connection_is_empty_exactly_when_the_port_takes_it) {
  const auto group = addGroup();
  const auto inner = add("HXRClampNode", group.get());
  std::vector<Ref<HXPort>> all;
  std::map<std::pair<const Class*, std::int32_t>, Ref<HXPort>> kinds;
  std::vector<Ref<HXNode>> nodes;
  for (const auto* patchClass : catalogue()) {
    nodes.push_back(HXNode::makeForPatch(*patchClass));
    for (const auto& entry : nodes.back()->portsInForce()) {
      all.emplace_back(entry.value.get());
      kinds.emplace(std::pair(&entry.value->definition()->isa(), entry.value->orientation()),
                    entry.value.get());
    }
  }
  ASSERT_GT(kinds.size(), 18U);
  std::vector<Ref<HXPort>> partners;
  for (const auto& entry : kinds) partners.push_back(entry.second);
  for (const auto& entry : inner->portsInForce()) {
    partners.push_back(group->subnodeGroup()->addSymbolicPortForPort(*entry.value));
  }
  partners.push_back(
      make<HXSymbolicPort>(nullptr, group.get(), HXOrientationInput, HXConnectionRelationshipOne));
  partners.push_back(make<HXPatchPort>(nullptr, 7, HXConnectionRelationshipOne));
  std::map<Code, int> codes;
  for (const auto& port : all) {
    for (const auto& partner : partners) {
      for (const auto& [asked, other] : {std::pair(port, partner), std::pair(partner, port)}) {
        const auto refusal = asked->whyNotConnectToPort(other.get());
        ASSERT_EQ(!refusal, asked->canConnectToPort(other.get()))
            << asked->uniqueKey().view() << " " << other->uniqueKey().view();
        ASSERT_EQ(refusal.reason().isNil(), !refusal);
        if (refusal) {
          ASSERT_EQ(refusal.port().port, asked);
          ASSERT_EQ(refusal.other().port, other);
        }
        ++codes[refusal.code()];
      }
    }
    ASSERT_EQ(port->whyNotConnectToPort(nullptr).code(), Code::missingPort);
  }
  for (const auto code : {Code::none, Code::missingPort, Code::noSide, Code::sameSide, Code::kind,
                          Code::askedOfOutput}) {
    EXPECT_GT(codes[code], 0) << nameOf(code);
  }
  EXPECT_EQ(codes[Code::unknownKind], 0) << "every port of the catalogue has a kind";
}

TEST_F(Refusals, say_what_does_not_fit) {
  const auto clamp = add("HXRClampNode");
  const auto touch = add("HXRTouchInteractionNode");
  const auto view = add("HXRViewNode");
  auto& number = port(clamp, "Tarn.resultOutput");
  EXPECT_EQ(why(port(view, "Tarn.interactionInput"), &number),
            "kind: the input takes an interaction, the output gives a number, text or colour");
  EXPECT_EQ(why(number, &port(view, "Tarn.interactionInput")),
            "kind: the input takes an interaction, the output gives a number, text or colour");
  EXPECT_EQ(why(number, &port(touch, "Tarn.downOutput")), "sameSide: both ports are outputs");
  const auto refusal = port(view, "Tarn.interactionInput").whyNotConnectToPort(&number);
  EXPECT_EQ(refusal.port().kind, "interaction");
  EXPECT_EQ(refusal.other().kind, "primitive");
  EXPECT_EQ(why(number, &port(clamp, "Tarn.minimumInput")),
            "askedOfOutput: the two fit, but it is the input that has to be asked");
}

TEST_F(Refusals, of_nodes_and_publications_are_empty_exactly_when_the_model_takes_them) {
  const auto outer = addGroup();
  const auto inner = addGroup(outer.get());
  const auto leaf = add("HXRClampNode", inner.get());
  const auto other = make<HXDocument>();
  const auto loose = HXNode::makeForPatch(*patchClassNamed("HXRClampNode"));
  const std::vector<Ref<HXNode>> holders{document, outer, inner, other};
  const auto earlier = Log::setSink([](std::string_view) {});
  const auto before = bytes();
  for (const auto& holder : holders) {
    for (const auto& node : {Ref<HXNode>(document), outer, inner, leaf, loose}) {
      const Ref<HXGroup> group = holder->subnodeGroup();
      const Ref<HXGroup> parent(node->parentGroup());
      const auto refusal = group->whyNotAddNode(*node);
      const auto move = group->whyNotMoveNode(*node);
      const Code otherwise = node == loose     ? Code::noParent
                             : holder == other ? Code::anotherDocument
                                               : Code::none;
      EXPECT_EQ(move.code(), refusal ? refusal.code() : otherwise);
      group->addNode(*node);
      EXPECT_EQ(!refusal, node->parentGroup() == group.get());
      if (refusal) {
        EXPECT_EQ(refusal.code(), node == document ? Code::isDocument : Code::insideItself);
      }
      if (parent) {
        parent->addNode(*node);
      } else {
        node->setParentGroup(nullptr);
      }
    }
  }
  Log::setSink(earlier);
  EXPECT_EQ(bytes(), before);

  for (const std::int32_t orientation : {0, 1, 2, 3}) {
    const auto port = make<HXPatchPort>(leaf.get(), orientation, HXConnectionRelationshipOne);
    const auto refusal = inner->subnodeGroup()->whyNotAddSymbolicPortForPort(*port);
    const bool published = inner->subnodeGroup()->addSymbolicPortForPort(*port) != nullptr;
    EXPECT_EQ(!refusal, published) << orientation;
    if (published) inner->subnodeGroup()->removeSymbolicPortForPort(port.get());
  }
}

TEST_F(Refusals, a_wire_is_one_step_and_a_refused_one_changes_nothing) {
  const auto first = add("HXRTransitionNode");
  const auto second = add("HXRTransitionNode");
  const auto group = addGroup();
  const auto inner = add("HXRTransitionNode", group.get());
  const auto view = add("HXRViewNode");
  const auto published = group->subnodeGroup()->addSymbolicPortForPort(port(inner, "Tarn.input"));
  const auto held = HXWiring::wire(*document, port(first, "Tarn.output"), *published);
  ASSERT_TRUE(held);
  const auto before = bytes();

  const auto history = make<HXHistory>(*document);
  auto& interaction = port(view, "Tarn.interactionInput");
  EXPECT_EQ(HXWiring::whyNotWire(port(first, "Tarn.output"), interaction).code(), Code::kind);
  EXPECT_FALSE(HXWiring::wire(*document, port(first, "Tarn.output"), interaction));
  EXPECT_FALSE(history->canUndo());

  // Dragged backwards, from the input to an output that answers no itself.
  const auto wire = HXWiring::wire(*document, *published, port(second, "Tarn.output"));
  ASSERT_TRUE(wire);
  EXPECT_FALSE(held->isHeld());
  EXPECT_EQ(wire->displayInputPort(), published.get());
  EXPECT_EQ(history->undoName(), "Connect");
  EXPECT_EQ(history->undoCount(), 1U);
  const auto after = bytes();
  ASSERT_TRUE(history->undo());
  EXPECT_EQ(bytes(), before);
  EXPECT_TRUE(held->isHeld());
  ASSERT_TRUE(history->redo());
  EXPECT_EQ(bytes(), after);
}

}  // namespace
}  // namespace tarnkit
