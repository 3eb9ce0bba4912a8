#include <random>

#include "fuzz/model/ModelEditor.h"
#include "tarnkit/compare/HXDocumentDifference.h"
#include "tarnkit/editing/HXHistory.h"
#include "tarnkit/model/HXParameterKinds.h"
#include "tarnkit/model/HXPortGroup.h"
#include "tests/compare/EditsFixture.h"

namespace tarnkit {
namespace {

using test::openedDocument;
using test::savedBytes;
using ::testing::ElementsAre;
using Kind = HXDocumentChange::Kind;

constexpr std::int32_t kWithKeys = 3;

std::vector<std::string> linesOf(const HXDocumentDifference& difference) {
  std::vector<std::string> lines;
  for (const auto& change : difference.changes()) {
    lines.push_back(std::string(nameOf(change.kind)) + " " + change.address + ": " +
                    change.description());
    for (const auto& consequence : change.consequences) lines.push_back("  " + consequence);
  }
  return lines;
}

class DifferenceTest : public test::ModelTest {
 protected:
  /// What leads from the document as it is now to what the edit makes of it; with fresh keys, which
  /// order nodes of one name otherwise, it must be as much.
  template <class Edit>
  std::vector<std::string> linesAfter(Edit edit) {
    const auto before = reopened(*document, kWithKeys);
    const auto beforeWithFreshKeys = reopened(*document, 0);
    edit();
    const auto after = reopened(*document, kWithKeys);
    const auto lines = linesOf(HXDocumentDifference(*before, *after));
    EXPECT_THAT(linesOf(HXDocumentDifference(*beforeWithFreshKeys, *reopened(*document, 0),
                                             HXNodeMatching::Keys::ignored)),
                ::testing::SizeIs(lines.size()));
    EXPECT_TRUE(HXDocumentDifference(*before, *after).applyTo(*before));
    EXPECT_EQ(savedBytes(*before, kWithKeys), savedBytes(*after, kWithKeys));
    return lines;
  }
};

TEST_F(DifferenceTest, OneEditIsOneLineWithWhatWentAlong) {
  const auto album = add("");
  album->setName("Album");
  const auto clamp = add("HXRClampNode", album.get());
  const auto spring = add("HXRDelayNode", album.get());
  const auto source = add("HXRTransitionNode");
  album->subnodeGroup()->addSymbolicPortForPort(port(*clamp, "Tarn.valueInput"))->setName("In");
  document->connectPort(port(*source, "Tarn.output"),
                        *port(*clamp, "Tarn.valueInput").symbolicPort());
  connect(*clamp, "Tarn.resultOutput", *spring, "Tarn.valueInput");

  EXPECT_THAT(linesAfter([&] {
                port(*clamp, "Tarn.maximumInput")
                    .setStaticValue(PMRPrimitive::primitiveWithNumberValue(-700));
              }),
              ElementsAre("valueChanged Album / Clamp: Maximum none → -700"));
  EXPECT_THAT(linesAfter([&] { clamp->setName("Limit"); }),
              ElementsAre("nodeRenamed Album / Limit: renamed from \"Clamp\" to \"Limit\""));
  EXPECT_THAT(linesAfter([&] { port(*clamp, "Tarn.valueInput").symbolicPort()->setName("Go:In"); }),
              ElementsAre("publicationRenamed Album: published as \"Go:In\", was \"In\""));
  EXPECT_THAT(linesAfter([&] { spring->inputPortGroups().front()->setHidden(true); }),
              ::testing::SizeIs(1));
  EXPECT_THAT(linesAfter([&] { add("HXRClampNode", album.get()); }),
              ElementsAre("nodeAdded Album / Clamp: added Clamp"));
  EXPECT_THAT(linesAfter([&] { album->subnodeGroup()->removeNode(clamp.get()); }),
              ElementsAre("nodeRemoved Album / Limit: removed Clamp",
                          "  unpublishes Album / Limit: Value as \"Go:In\"",
                          "  disconnects Transition: Value → Album: In",
                          "  disconnects Album / Limit: Result → Album / Delay: Value"));
}

using DifferenceOfEditTest = test::EditsFixture;

// There, and back.
TEST_F(DifferenceOfEditTest, EachHasItsWords) {
  std::string lines = "\n";
  const auto tell = [&](HXDocument& before, HXDocument& after) {
    const HXDocumentDifference difference(before, after);
    for (const auto& line : linesOf(difference)) lines += line + "\n";
    for (const auto& change : difference.changes()) {
      if (change.oldNumber < 0 || change.newNumber < 0) continue;
      EXPECT_EQ(change.oldKey, change.newKey) << change.address;
    }
  };
  for (const auto& edit : edits()) {
    const auto before = reopened(*document, kWithKeys);
    const auto after = reopened(*document, kWithKeys);
    edit(*after);
    tell(*before, *after);
    tell(*after, *before);
  }
  EXPECT_EQ(lines, R"(
nodeRenamed Drain: renamed from "Sink" to "Drain"
nodeRenamed Sink: renamed from "Drain" to "Sink"
commentChanged Sink: comment none → "why"
commentChanged Sink: comment "why" → none
position Sink: position (0, 0) → (1, 2)
position Sink: position (1, 2) → (0, 0)
selection Sink: selected
selection Sink: not selected
inspectorPanel Sink: inspector panel 0 → 3
inspectorPanel Sink: inspector panel 3 → 0
valueChanged Sink: Maximum none → 5
valueChanged Sink: Maximum 5 → none
valueChanged Sink: Minimum none → 4
valueChanged Sink: Minimum 4 → none
valueChanged Sink: Value 1 → none
valueChanged Sink: Value none → 1
groupOpacity Album: the group is opaque
groupOpacity Album: the group is not opaque
canvasCenter Album: canvas centre (0, 0) → (7, 8)
canvasCenter Album: canvas centre (7, 8) → (0, 0)
parameterChanged Debug: Integer 0 → 3
parameterChanged Debug: Integer 3 → 0
parameterChanged Debug: Float 0 → 3
parameterChanged Debug: Float 3 → 0
parameterChanged Choice: Sources 2 → 4
parameterChanged Choice: Sources 4 → 2
portGroupHidden Choice: port group __Default hidden
portGroupHidden Choice: port group __Default shown
portGroupCollapsed Choice: port group __Default collapsed on the canvas
portGroupCollapsed Choice: port group __Default expanded on the canvas
portGroupCollapsed Choice: port group __Default collapsed in the sidebar
portGroupCollapsed Choice: port group __Default expanded in the sidebar
publicationRenamed Album: published as "Entry", was "In"
publicationRenamed Album: published as "In", was "Entry"
portPublished Album: published Album / Clamp: Minimum as "Limits: low"
portUnpublished Album: unpublished Album / Clamp: Minimum as "Limits: low"
portPublished Album: published Album / Delay: Value as "Out"
portUnpublished Album: unpublished Album / Delay: Value as "Out"
connectionMade Tail: connected Source: Value → Tail: Value
connectionBroken Tail: disconnected Source: Value → Tail: Value
connectionMade Tail: connected Source: Value → Tail: Minimum
connectionBroken Tail: disconnected Source: Value → Tail: Minimum
connectionBroken Album / Delay: disconnected Album / Clamp: Result → Album / Delay: Value
connectionMade Album / Delay: connected Album / Clamp: Result → Album / Delay: Value
nodeRemoved Loose: removed Delay
nodeAdded Loose: added Delay
nodeMoved Shelf / Debug: moved from / to Shelf
nodeMoved Debug: moved from Shelf to /
nodeAdded Shelf / Fresh: added Clamp
nodeRemoved Shelf / Fresh: removed Clamp
viewOrder Views: views ordered Color View [3], Color View, Color View [2], were Color View, Color View [2], Color View [3]
viewOrder Views: views ordered Color View, Color View [2], Color View [3], were Color View [3], Color View, Color View [2]
imageAdded /: image 11b52b4a33753ec24d873dedb0ca4cc3 added, 1 × 1
imageRemoved /: image 11b52b4a33753ec24d873dedb0ca4cc3 removed, 1 × 1
)");
}

TEST_F(DifferenceTest, ValuesAreWrittenAsTheirKindsAre) {
  using P = PMRPrimitive;
  const auto debug = add("HXRDebugNode");
  const auto before = reopened(*document, kWithKeys);
  const std::pair<Ref<P>, const char*> rows[] = {
      {P::primitiveWithBooleanValue(true), "true"},
      {P::primitiveWithIndexValue(-7), "-7"},
      {P::primitiveWithRadiansValue(1.5F), "1.5 rad"},
      {P::primitiveWithDegreesValue(90), "90°"},
      {P::primitiveWithColorValue({1, 0.5F, 0, 0.25F}), "#ff800040"},
      {P::primitiveWithColorValue({0, 0, 0, 1.5F}), "rgba(0, 0, 0, 1.5)"},
      {P::primitiveWithStringValue("a\n"), "\"a\\n\""},
      {P::primitiveWithNilValue(), "nil"}};
  for (const auto& [value, text] : rows) {
    port(*debug, "Tarn.numberInput").setStaticValue(value);
    EXPECT_THAT(
        linesOf(HXDocumentDifference(*before, *reopened(*document, kWithKeys))),
        ElementsAre(std::string("valueChanged HXRDebugNode: Tarn.numberInput 0 → ") + text));
  }
}

// By what they are the nodes have changed places; by their keys, their names.
TEST_F(DifferenceTest, KeysTellNodesApartThatAreAlike) {
  const auto first = add("HXRClampNode");
  const auto second = add("HXRClampNode");
  first->setName("First");
  second->setName("Second");
  const auto before = reopened(*document, kWithKeys);
  first->setName("Second");
  second->setName("First");
  EXPECT_THAT(
      linesOf(HXDocumentDifference(*before, *document)),
      ::testing::UnorderedElementsAre("nodeRenamed Second: renamed from \"First\" to \"Second\"",
                                      "nodeRenamed First: renamed from \"Second\" to \"First\""));
}

TEST_F(DifferenceTest, AWireThatIsDraggedToAnotherOutputIsRewired) {
  const auto first = add("HXRTransitionNode");
  const auto second = add("HXRTransitionNode");
  second->setName("Second");
  const auto clamp = add("HXRClampNode");
  connect(*first, "Tarn.output", *clamp, "Tarn.valueInput");
  EXPECT_THAT(linesAfter([&] {
                document->breakAllConnectionsToPort(port(*clamp, "Tarn.valueInput"));
                connect(*second, "Tarn.output", *clamp, "Tarn.valueInput");
              }),
              ElementsAre("connectionRewired Clamp: Value connected to Second: Value, was "
                          "Transition: Value"));
}

// The input takes several: the gesture that stays is not the one that was dragged.
TEST_F(DifferenceTest, AWireOfSeveralIsRewiredAmongThem) {
  std::vector<Ref<HXNode>> gestures;
  for (const char* name : {"First", "Second", "Third"}) {
    gestures.push_back(add("HXRPanGestureNode"));
    gestures.back()->setName(name);
  }
  const auto view = add("HXRShadowViewNode");
  connect(*gestures[0], "Tarn.gestureOutput", *view, "Tarn.gestureInput");
  connect(*gestures[1], "Tarn.gestureOutput", *view, "Tarn.gestureInput");
  EXPECT_THAT(linesAfter([&] {
                document->breakAllConnectionsToPort(port(*gestures[1], "Tarn.gestureOutput"));
                connect(*gestures[2], "Tarn.gestureOutput", *view, "Tarn.gestureInput");
              }),
              ElementsAre("connectionRewired Shadow View: Gesture connected to Third: Gesture, was "
                          "Second: Gesture"));
}

TEST_F(DifferenceTest, WhatWasNamedIsWhatItWasWithAnotherPatch) {
  std::vector<Ref<HXNode>> nodes;
  for (const char* name : {"First", "Second", "Third"}) {
    nodes.push_back(add("HXRClampNode"));
    nodes.back()->setName(name);
  }
  EXPECT_THAT(linesAfter([&] {
                for (const auto& node : nodes) {
                  node->setPatch(patchClassNamed("HXRDelayNode")->makeDefinition());
                }
              }),
              ElementsAre("patchReplaced First: patch Clamp → Delay",
                          "patchReplaced Second: patch Clamp → Delay",
                          "patchReplaced Third: patch Clamp → Delay"));
}

TEST_F(DifferenceTest, AGroupThatGoesTakesWhatItPublishedWithIt) {
  const auto album = add("");
  album->setName("Album");
  const auto clamp = add("HXRClampNode", album.get());
  const auto source = add("HXRTransitionNode");
  album->subnodeGroup()->addSymbolicPortForPort(port(*clamp, "Tarn.valueInput"))->setName("In");
  document->connectPort(port(*source, "Tarn.output"),
                        *port(*clamp, "Tarn.valueInput").symbolicPort());
  EXPECT_THAT(linesAfter([&] {
                album->setForceAllowsSubnodes(false);
                album->setPatch(nullptr);
                document->pruneInvalidConnections();
              }),
              ElementsAre("subnodesForced Album: holds nodes only where its patch does",
                          "  removes Album / Clamp", "  unpublishes Album / Clamp: Value as \"In\"",
                          "  disconnects Transition: Value → Album: In"));
}

// A hidden port stays published where its node was.
TEST_F(DifferenceTest, AGroupThatGoesTakesWhatStandsForPortsElsewhere) {
  const auto album = add("");
  album->setName("Album");
  const auto choice = add("HXRMultiplexerNode", album.get());
  const auto source = add("HXRTransitionNode");
  const auto published =
      album->subnodeGroup()->addSymbolicPortForPort(*choice->portForKey("Tarn.source0Input"));
  published->setName("In");
  document->connectPort(port(*source, "Tarn.output"), *published);
  for (const auto& group : choice->inputPortGroups()) group->setHidden(true);
  document->subnodeGroup()->addNode(*choice);
  EXPECT_THAT(linesAfter([&] {
                album->setForceAllowsSubnodes(false);
                album->setPatch(nullptr);
                document->pruneInvalidConnections();
              }),
              ElementsAre("subnodesForced Album: holds nodes only where its patch does",
                          "  unpublishes Multiplexer: Source 0 as \"In\"",
                          "  disconnects Transition: Value → Album: In"));
}

// A node keeps the parameters of the patches that it had.
TEST_F(DifferenceTest, AParameterThatIsGoneIsTold) {
  const auto node = add("HXRClampNode");
  const auto before = reopened(*document, kWithKeys);
  node->setPatch(patchClassNamed("HXRMathNode")->makeDefinition());
  node->setPatch(patchClassNamed("HXRClampNode")->makeDefinition());
  EXPECT_THAT(linesOf(HXDocumentDifference(*reopened(*document, kWithKeys), *before)),
              ElementsAre("parameterChanged Clamp: Tarn.numberOfOperationsParameter 1 → none",
                          "parameterChanged Clamp: Tarn.operator0Parameter 0 → none"));
}

TEST_F(DifferenceTest, APublicationThatStandsForNothingIsMadeAsItIs) {
  add("HXRClampNode");
  const auto before = reopened(*document, kWithKeys);
  document->subnodeGroup()->addSymbolicPortForPort(
      *make<HXPatchPort>(nullptr, HXOrientationInput, HXConnectionRelationshipOne));
  const auto after = reopened(*document, kWithKeys);
  const auto history = make<HXHistory>(*before);  // which keeps what a change has had in hand
  EXPECT_TRUE(HXDocumentDifference(*before, *after).applyTo(*before));
  EXPECT_EQ(savedBytes(*before, kWithKeys), savedBytes(*after, kWithKeys));
}

TEST_F(DifferenceTest, WhatIsInsertedAmongLookAlikesLeavesThemAlone) {
  std::vector<Ref<HXNode>> chain;
  for (std::size_t i = 0; i < 40; ++i) {
    chain.push_back(add("HXRClampNode"));
    if (i > 0) connect(*chain[i - 1], "Tarn.resultOutput", *chain[i], "Tarn.valueInput");
  }
  EXPECT_THAT(linesAfter([&] {
                const auto fresh = add("HXRDelayNode");
                document->breakAllConnectionsToPort(port(*chain[20], "Tarn.valueInput"));
                connect(*chain[19], "Tarn.resultOutput", *fresh, "Tarn.valueInput");
                connect(*fresh, "Tarn.valueOutput", *chain[20], "Tarn.valueInput");
              }),
              ::testing::SizeIs(3));
}

// Nodes 19 and 20 of either document have nothing in common but their keys.
TEST_F(DifferenceTest, KeysAloneMakeNoCommonPast) {
  const auto clamp = add("HXRClampNode");
  const auto bytes = savedBytes(*document, kWithKeys);
  const auto other = openedDocument(bytes, kWithKeys);
  const auto node = other->subnodeGroup()->subnodes().front();
  node->setPatch(patchClassNamed("HXRDelayNode")->makeDefinition());
  node->setName("Delay");
  EXPECT_THAT(linesOf(HXDocumentDifference(*document, *other)),
              ElementsAre("nodeRemoved Clamp: removed Clamp", "nodeAdded Delay: added Delay"));
}

TEST_F(DifferenceTest, ItIsAppliedToTheOldDocumentOnlyAsOneStep) {
  const auto clamp = add("HXRClampNode");
  const auto before = reopened(*document, kWithKeys);
  clamp->setName("Limit");
  add("HXRDelayNode");
  const HXDocumentDifference difference(*before, *document);
  const auto wrong = difference.applyTo(*document);
  EXPECT_FALSE(wrong);
  const auto history = make<HXHistory>(*before);
  const Ref<HXNode> kept = before->subnodeGroup()->subnodes().front();
  ASSERT_TRUE(difference.applyTo(*before));
  EXPECT_EQ(history->undoCount(), 1U);
  EXPECT_EQ(before->subnodeGroup()->subnodes().front(), kept);
  EXPECT_EQ(kept->name(), "Limit");
  EXPECT_TRUE(history->undo());
  EXPECT_EQ(kept->name(), "Clamp");
  EXPECT_EQ(before->subnodeGroup()->subnodes().size(), 1U);
}

// Documents at random. Nobody edits in answer to an edit, as in an editor at rest.

class DifferencePropertyTest : public ::testing::Test {
 protected:
  DifferencePropertyTest() : earlier_(Log::setSink([](std::string_view) {})) {}
  ~DifferencePropertyTest() override { Log::setSink(earlier_); }

  /// As it is read again: what is in no file is no part of a document.
  static Ref<HXDocument> settled(const HXDocument& document) {
    return openedDocument(savedBytes(document, kWithKeys), kWithKeys);
  }
  /// Makes so many edits; how many there were, and how many connections, publications and nodes
  /// they ended besides.
  int edit(HXDocument& document, int edits) {
    std::vector<std::uint8_t> bytes(2048);
    for (auto& byte : bytes) byte = static_cast<std::uint8_t>(random_());
    fuzz::ModelEditor editor(bytes.data(), bytes.size());
    editor.setPaused(true);
    editor.keepTo(document);
    int ended = 0;
    const NotificationCenter::Observation observation([&](const Notification& notification) {
      if (notification.name == HXDocumentRemoveConnectionNotification ||
          notification.name == HXGroupRemoveSymbolicPortForPortNotification ||
          notification.name == HXGroupRemoveNodeNotification) {
        ++ended;
      }
    });
    for (int i = 0; i < edits; ++i) editor.runOne();
    return edits + ended;
  }

  std::mt19937 random_{20260};

 private:
  Log::Sink earlier_;
};

TEST_F(DifferencePropertyTest, ADocumentOpenedAgainIsTheSame) {
  for (int run = 0; run < 150; ++run) {
    const auto document = make<HXDocument>();
    edit(*document, 70);
    const auto before = settled(*document);
    for (const std::int32_t type : {0, 1, 3}) {
      const auto again = openedDocument(savedBytes(*before, type), type);
      ASSERT_THAT(linesOf(HXDocumentDifference(*before, *again)), ElementsAre())
          << "run " << run << ", type " << type;
    }
  }
}

TEST_F(DifferencePropertyTest, LeadsFromADocumentToItsDescendant) {
  constexpr int kRuns = 400;
  int contradictory = 0;
  for (int run = 0; run < kRuns; ++run) {
    const auto document = make<HXDocument>();
    edit(*document, 60);
    const auto before = settled(*document);
    const auto bytes = savedBytes(*before, kWithKeys);
    const auto edited = settled(*before);
    const int edits = edit(*edited, static_cast<int>(random_() % 12));
    const auto after = settled(*edited);
    if (!HXDocumentState(*before).fitsTogether || !HXDocumentState(*after).fitsTogether) {
      ++contradictory;
      continue;
    }
    const auto wanted = savedBytes(*after, kWithKeys);
    const HXDocumentDifference difference(*before, *after);
    const auto lines = linesOf(difference);
    const auto content = std::count_if(difference.changes().begin(), difference.changes().end(),
                                       [](const auto& change) { return !change.isViewState(); });
    EXPECT_LE(content, edits) << run << "\n" << ::testing::PrintToString(lines);
    const auto history = make<HXHistory>(*before);
    const auto status = difference.applyTo(*before);
    ASSERT_TRUE(status) << run << " " << status.message() << "\n"
                        << ::testing::PrintToString(lines);
    ASSERT_EQ(savedBytes(*before, kWithKeys), wanted) << run << ::testing::PrintToString(lines);
    if (bytes == wanted) {
      EXPECT_THAT(lines, ElementsAre()) << run;
      continue;
    }
    EXPECT_FALSE(difference.isEmpty()) << run;
    ASSERT_EQ(history->undoCount(), 1U);
    history->undo();
    ASSERT_EQ(savedBytes(*before, kWithKeys), bytes) << run;
    history->redo();
    ASSERT_EQ(savedBytes(*before, kWithKeys), wanted) << run;
  }
  EXPECT_LT(contradictory * 20, kRuns);
}

}  // namespace
}  // namespace tarnkit
