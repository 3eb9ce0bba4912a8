#include <random>

#include "fuzz/model/ModelEditor.h"
#include "tarnkit/compare/HXDocumentDifference.h"
#include "tarnkit/compare/HXDocumentMerge.h"
#include "tarnkit/model/HXDocumentFile.h"
#include "tarnkit/text/HXTextFile.h"
#include "tests/compare/EditsFixture.h"
#include "tests/model/Consistency.h"

namespace tarnkit {
namespace {

using test::openedDocument;
using test::savedBytes;
using ::testing::ElementsAre;
using Kind = HXMergeConflict::Kind;

constexpr std::int32_t kWithKeys = 3;

std::vector<std::string> linesOf(const std::vector<HXMergeConflict>& conflicts) {
  std::vector<std::string> lines;
  for (const auto& conflict : conflicts) lines.push_back(conflict.description());
  return lines;
}

template <class Fixture>
class Branching : public Fixture {
 protected:
  void branch() {
    base = this->reopened(*this->document, kWithKeys);
    ours = this->reopened(*this->document, kWithKeys);
    theirs = this->reopened(*this->document, kWithKeys);
  }
  HXDocumentMerge::Outcome merge(const HXDocumentMerge::Options& options = {}) {
    auto outcome = HXDocumentMerge::merge(*base, *ours, *theirs, options);
    EXPECT_TRUE(outcome) << outcome.status().message();
    return std::move(outcome).valueOr({});
  }
  Ref<HXDocument> base, ours, theirs;
};

class MergeTest : public Branching<test::ModelTest> {
 protected:
  static HXNode& node(const HXDocument& in, const char* name) { return *named(in, name); }
};

TEST_F(MergeTest, EditsThatDoNotMeetBothCount) {
  const auto clamp = add("HXRClampNode");
  const auto delay = add("HXRDelayNode");
  branch();
  port(node(*ours, "Clamp"), "Tarn.maximumInput")
      .setStaticValue(PMRPrimitive::primitiveWithNumberValue(5));
  theirs->connectPort(port(node(*theirs, "Delay"), "Tarn.valueOutput"),
                      port(node(*theirs, "Clamp"), "Tarn.valueInput"));
  const auto fresh = nodeOf("HXRTransitionNode");
  theirs->subnodeGroup()->addNode(*fresh);
  const auto outcome = merge();
  EXPECT_THAT(linesOf(outcome.conflicts), ElementsAre());
  HXNode& merged = node(*outcome.document, "Clamp");
  EXPECT_EQ(port(merged, "Tarn.maximumInput").staticValue()->numberValue(), 5);
  EXPECT_EQ(port(merged, "Tarn.valueInput").connections().count(), 1U);
  EXPECT_TRUE(named(*outcome.document, "Transition"));
}

TEST_F(MergeTest, OnePropertyWithTwoValuesIsOursUnlessAskedForOtherwise) {
  add("HXRClampNode");
  branch();
  node(*ours, "Clamp").setName("Mine");
  node(*theirs, "Clamp").setName("Yours");
  const auto outcome = merge();
  EXPECT_THAT(linesOf(outcome.conflicts),
              ElementsAre("Mine: name, ours \"Mine\", theirs \"Yours\", taken \"Mine\""));
  EXPECT_TRUE(outcome.hasOpenConflicts());
  EXPECT_TRUE(named(*outcome.document, "Mine"));
  HXDocumentMerge::Options favored;
  favored.favored.emplace("Mine: name", HXMergeSide::theirs);
  const auto decided = merge(favored);
  EXPECT_FALSE(decided.hasOpenConflicts());
  EXPECT_TRUE(named(*decided.document, "Yours"));
}

TEST_F(MergeTest, WhatOneRemovedAndTheOtherChangedStays) {
  add("HXRClampNode");
  branch();
  ours->subnodeGroup()->removeNode(&node(*ours, "Clamp"));
  port(node(*theirs, "Clamp"), "Tarn.maximumInput")
      .setStaticValue(PMRPrimitive::primitiveWithNumberValue(5));
  const auto outcome = merge();
  ASSERT_THAT(outcome.conflicts, ::testing::SizeIs(1));
  EXPECT_EQ(outcome.conflicts[0].kind, Kind::removedAndChanged);
  HXNode& merged = node(*outcome.document, "Clamp");
  EXPECT_EQ(port(merged, "Tarn.maximumInput").staticValue()->numberValue(), 5);
}

TEST_F(MergeTest, AnInputOfOneConnectionIsJoinedOnce) {
  add("HXRClampNode");
  add("HXRDelayNode");
  add("HXRTransitionNode");
  branch();
  const auto join = [](HXDocument& in, const char* from, const char* output) {
    in.connectPort(port(node(in, from), output), port(node(in, "Clamp"), "Tarn.valueInput"));
  };
  join(*ours, "Delay", "Tarn.valueOutput");
  join(*theirs, "Transition", "Tarn.output");
  const auto outcome = merge();
  EXPECT_THAT(linesOf(outcome.conflicts),
              ElementsAre("Clamp: connection, ours Delay: Value → Clamp: Value, theirs "
                          "Transition: Value → Clamp: Value, taken Delay: Value → Clamp: Value"));
  const auto wires = port(node(*outcome.document, "Clamp"), "Tarn.valueInput").connections();
  ASSERT_EQ(wires.count(), 1U);
  EXPECT_EQ(wires.toVector().front()->outputPort()->node()->name(), "Delay");
}

TEST_F(MergeTest, MovesThatWouldCloseACircleAreOurs) {
  add("")->setName("A");
  add("")->setName("B");
  branch();
  node(*ours, "B").subnodeGroup()->addNode(node(*ours, "A"));
  node(*theirs, "A").subnodeGroup()->addNode(node(*theirs, "B"));
  const auto outcome = merge();
  ASSERT_THAT(outcome.conflicts, ::testing::SizeIs(1));
  EXPECT_EQ(outcome.conflicts[0].kind, Kind::movedIntoItself);
  EXPECT_TRUE(named(node(*outcome.document, "B"), "A"));
}

TEST_F(MergeTest, NodesThatTwoBranchesMadeUnderOneKeyAreTwo) {
  add("HXRClampNode");
  branch();
  const auto fresh = nodeOf("HXRDelayNode");
  ours->subnodeGroup()->addNode(*fresh);
  const auto other = HXDocumentState::nodeOf(*HXDocumentState::pieceOf(*fresh), true);
  ASSERT_EQ(other->uniqueKey(), fresh->uniqueKey());
  theirs->subnodeGroup()->addNode(*other);
  node(*theirs, "Clamp").setName("Limit");  // two branches that are one document are merged as one
  const auto outcome = merge();
  EXPECT_THAT(linesOf(outcome.conflicts), ElementsAre());
  EXPECT_EQ(outcome.document->subnodeGroup()->subnodes().size(), 3U);
}

class MergeEditsTest : public Branching<test::EditsFixture> {
 protected:
  static std::string textOf(const HXDocument& of) {
    return HXTextFile::textWithDocument(of).valueOr("unsaved");
  }
};

TEST_F(MergeEditsTest, WhatBothDidIsThereAsIfOneHadDoneItAll) {
  const auto all = edits();
  for (std::size_t i = 0; i < all.size(); ++i) {
    for (std::size_t j = i % 2; j < all.size(); j += 2) {
      if (i == j) continue;
      branch();
      const auto wanted = reopened(*document, kWithKeys);
      for (const auto& made : {ours, wanted}) all[i](*made);
      for (const auto& made : {theirs, wanted}) all[j](*made);
      const auto outcome = merge();
      EXPECT_THAT(linesOf(outcome.conflicts), ElementsAre()) << i << " " << j;
      ASSERT_EQ(textOf(*outcome.document), textOf(*wanted)) << i << " " << j;
    }
  }
}

TEST_F(MergeEditsTest, WhatDoesNotGoTogetherIsToldWithBothSides) {
  const struct {
    Edit ours, theirs;
    std::vector<std::string> lines;
  } rows[] = {
      {[&](HXDocument& d) { in(d, sink).setComment("mine"); },
       [&](HXDocument& d) { in(d, sink).setComment("yours"); },
       {"Sink: comment, ours \"mine\", theirs \"yours\", taken \"mine\""}},
      {[&](HXDocument& d) {
         in(d, sink).setPosition({1, 2});
       },
       [&](HXDocument& d) {
         in(d, sink).setPosition({1, 3});
       },
       {"Sink: position, ours (1, 2), theirs (1, 3), taken (1, 2)"}},
      {[&](HXDocument& d) { in(d, sink).setSelected(true), in(d, sink).setInspectorPanel(1); },
       [&](HXDocument& d) { in(d, sink).setSelected(true), in(d, sink).setInspectorPanel(2); },
       {}},
      {[&](HXDocument& d) { set(in(d, sink), "Tarn.valueInput", 2); },
       [&](HXDocument& d) {
         port(in(d, sink), "Tarn.valueInput").setStaticValue(nullptr);
         set(in(d, sink), "Tarn.maximumInput", 3);
       },
       {"Sink: Value, ours 2, theirs none, taken 2"}},
      {[&](HXDocument& d) {
         as<HXIndexParameter>(in(d, debug).parameterForKey("Tarn.integerParameter"))->setValue(3);
       },
       [&](HXDocument& d) {
         as<HXIndexParameter>(in(d, debug).parameterForKey("Tarn.integerParameter"))->setValue(4);
       },
       {"Debug: Tarn.integerParameter, ours 3, theirs 4, taken 3"}},
      {[&](HXDocument& d) {
         in(d, sink).setPatch(patchClassNamed("HXRDelayNode")->makeDefinition());
       },
       [&](HXDocument& d) {
         in(d, sink).setPatch(patchClassNamed("HXRTransitionNode")->makeDefinition());
       },
       {"Sink: patch, ours HXRDelayNode, theirs HXRTransitionNode, taken HXRDelayNode"}},
      {[&](HXDocument& d) { in(d, shelf).subnodeGroup()->addNode(in(d, loose)); },
       [&](HXDocument& d) { in(d, album).subnodeGroup()->addNode(in(d, loose)); },
       {"Shelf / Loose: group, ours Shelf, theirs Album, taken Shelf"}},
      {[&](HXDocument& d) { in(d, album).symbolicInputPorts()[0]->setName("Mine"); },
       [&](HXDocument& d) { in(d, album).symbolicInputPorts()[0]->setName("Yours"); },
       {"Album: name of a published port, ours \"Mine\", theirs \"Yours\", taken \"Mine\""}},
      {[&](HXDocument& d) {
         as<HXSubviewGroup>(in(d, views).subnodeGroup())->moveSubviewNode(in(d, front), 0);
       },
       [&](HXDocument& d) {
         as<HXSubviewGroup>(in(d, views).subnodeGroup())->moveSubviewNode(in(d, front), 1);
       },
       {"Views: views, ours (Color View [3], Color View, Color View [2]), theirs (Color View, "
        "Color View [3], Color View [2]), taken (Color View [3], Color View, Color View [2])"}},
      // What is removed here and changed there.
      {[&](HXDocument& d) { remove(in(d, tail)); },
       [&](HXDocument& d) { in(d, tail).inputPortGroups()[0]->setHidden(true); },
       {"Tail: node, ours removed, theirs changed, taken changed"}},
      {[&](HXDocument& d) {
         join(d, in(d, source), "Tarn.output", in(d, tail), "Tarn.valueInput");
       },
       [&](HXDocument& d) { remove(in(d, tail)); },
       {"Tail: node, ours changed, theirs removed, taken changed"}},
      {[&](HXDocument& d) { remove(in(d, album)); },
       [&](HXDocument& d) { publish(in(d, delay), "Tarn.valueOutput", "Out"); },
       {"Album: node, ours removed, theirs changed, taken changed",
        "Album: published port, ours its port removed or moved, theirs \"Out\", taken none"}},
      {[&](HXDocument& d) { remove(in(d, shelf)); },
       [&](HXDocument& d) { in(d, shelf).subnodeGroup()->addNode(in(d, loose)); },
       {"Shelf: node, ours removed, theirs holds what was made, taken holds what was made"}},
      {[&](HXDocument& d) { remove(in(d, tail)); },
       [&](HXDocument& d) {
         in(d, tail).setSelected(true);
         in(d, tail).inputPortGroups()[0]->setCollapsedSidebarGroup(true);
       },
       {}},
      {[&](HXDocument& d) { remove(in(d, clamp)); },
       [&](HXDocument& d) { in(d, album).symbolicInputPorts()[0]->setName("Yours"); },
       {"Album: published port, ours its port removed or moved, theirs \"Yours\", taken none"}},
      // What one made hung on what the other removed.
      {[&](HXDocument& d) { remove(in(d, source)); },
       [&](HXDocument& d) {
         join(d, in(d, source), "Tarn.output", in(d, tail), "Tarn.valueInput");
       },
       {"Source: node, ours removed, theirs changed, taken changed"}},
      {[&](HXDocument& d) { publish(in(d, clamp), "Tarn.minimumInput", "Low"); },
       [&](HXDocument& d) { in(d, shelf).subnodeGroup()->addNode(in(d, clamp)); },
       {"Album: published port, ours \"Low\", theirs its port removed or moved, taken none"}},
      {[&](HXDocument& d) { remove(in(d, shelf)); },
       [&](HXDocument& d) { in(d, shelf).subnodeGroup()->addNode(in(d, views)); },
       {"Shelf: node, ours removed, theirs holds what was made, taken holds what was made"}},
  };
  for (const auto& row : rows) {
    branch();
    row.ours(*ours);
    row.theirs(*theirs);
    const auto outcome = merge();
    EXPECT_EQ(linesOf(outcome.conflicts), row.lines);
    EXPECT_THAT(test::faultsOf(*outcome.document), ElementsAre());
    HXDocumentMerge::Options options;
    options.preference = HXMergeSide::theirs;
    options.isPreferenceDecided = true;
    for (const auto& conflict : merge(options).conflicts) {
      EXPECT_TRUE(conflict.isDecided);
      EXPECT_TRUE(conflict.taken == conflict.theirs || conflict.taken == "none");
    }
  }
}

TEST_F(MergeEditsTest, OrdersThatDifferAreOurs) {
  for (const char* key : {"Tarn.minimumInput", "Tarn.maximumInput"}) publish(*clamp, key, key);
  branch();
  const auto toTheEnd = [&](HXDocument& d, const Ref<HXNode>& node, const char* key) {
    Ref<HXGroup> group(d.subnodeGroup());
    const Ref<HXNode> moved(&in(d, node));
    group->removeNode(moved.get());
    group->addNode(*moved);
    auto& inner = port(in(d, clamp), key);
    group = in(d, album).subnodeGroup();
    group->removeSymbolicPortForPort(&inner);
    publish(in(d, clamp), key, key);
  };
  toTheEnd(*ours, sink, "Tarn.minimumInput");
  toTheEnd(*theirs, tail, "Tarn.maximumInput");
  toTheEnd(*theirs, debug, "Tarn.minimumInput");
  const auto outcome = merge();
  EXPECT_THAT(linesOf(outcome.conflicts),
              ElementsAre("/: nodes, ours (…, Tail, Choice, Debug, Loose, Shelf, Views, …), theirs "
                          "(…, Sink, Choice, Loose, Shelf, Views, Tail, …), taken (…, Tail, "
                          "Choice, Debug, Loose, Shelf, Views, …)"));
  EXPECT_EQ(textOf(*outcome.document), textOf(*ours));
  branch();
  toTheEnd(*ours, tail, "Tarn.minimumInput");
  toTheEnd(*theirs, tail, "Tarn.minimumInput");
  toTheEnd(*theirs, tail, "Tarn.maximumInput");
  in(*theirs, album)
      .subnodeGroup()
      ->arrangePublications(HXOrientationInput, {in(*theirs, album).symbolicInputPorts()[2]});
  EXPECT_THAT(linesOf(merge().conflicts),
              ElementsAre("Album: published ports, ours (\"In\", \"Tarn.maximumInput\", "
                          "\"Tarn.minimumInput\"), theirs (\"Tarn.maximumInput\", \"In\", "
                          "\"Tarn.minimumInput\"), taken (\"In\", \"Tarn.maximumInput\", "
                          "\"Tarn.minimumInput\")"));
  HXDocumentMerge::Options options;
  options.favored.emplace("Album: published ports", HXMergeSide::theirs);
  EXPECT_EQ(textOf(*merge(options).document), textOf(*theirs)) << "what is said to be taken is";
}

// A file has each image once; to that comes what either added.
TEST_F(MergeEditsTest, ImagesAreCountedTogether) {
  const auto image = HXImageStore::createImageEntry(*Image::imageWithPixels(1, 1, {1, 2, 3, 255}));
  const auto addTo = [&](HXDocument& d, int count) {
    for (int i = 0; i < count; ++i) d.imageStore()->addImageEntry(image);
  };
  addTo(*document, 2);
  const int rows[][3] = {{1, 2, 4}, {0, 3, 4}, {2, 0, 3}};
  for (const auto& [mine, yours, all] : rows) {
    branch();
    addTo(*ours, mine);
    addTo(*theirs, yours);
    EXPECT_EQ(merge().document->imageStore()->countForKey(image->key()), all);
  }
}

// A group that was removed comes before what was put into it, or behind it.
TEST_F(MergeEditsTest, AGroupThatWasRemovedStaysForWhatWasPutThere) {
  const auto outer = addNamed("", "Outer");
  const auto inner = addNamed("", "Inner", outer.get());
  for (const auto& moved : {sink, views, addNamed("HXRClampNode", "Last")}) {
    branch();
    remove(in(*ours, outer));
    in(*theirs, inner).subnodeGroup()->addNode(in(*theirs, moved));
    const auto wanted = textOf(*theirs);
    for (const bool swapped : {false, true}) {
      if (swapped) std::swap(ours, theirs);
      const auto outcome = merge();
      EXPECT_EQ(textOf(*outcome.document), wanted);
      EXPECT_THAT(linesOf(outcome.conflicts), ::testing::SizeIs(2));
    }
  }
}

TEST_F(MergeTest, AGroupGoesWhenAllThatStoodInItWasMovedOut) {
  add("")->setName("A");
  const auto clamp = nodeOf("HXRClampNode");
  named(*document, "A")->subnodeGroup()->addNode(*clamp);
  branch();
  theirs->subnodeGroup()->addNode(*named(node(*theirs, "A"), "Clamp"));
  theirs->subnodeGroup()->removeNode(&node(*theirs, "A"));
  const auto outcome = merge();
  EXPECT_THAT(linesOf(outcome.conflicts), ElementsAre());
  const auto left = outcome.document->subnodeGroup()->subnodes();
  ASSERT_THAT(left, ::testing::SizeIs(1));
  EXPECT_EQ(left[0]->name(), "Clamp");
}

TEST_F(MergeTest, AHiddenPortThatMovedStaysPublishedWhereItWas) {
  add("")->setName("A");
  add("")->setName("B");
  const auto clamp = nodeOf("HXRClampNode");
  const Ref<HXGroup> group = named(*document, "A")->subnodeGroup();
  group->addNode(*clamp);
  group->addSymbolicPortForPort(port(*clamp, "Tarn.maximumInput"))->setName("Limit");
  clamp->inputPortGroups().front()->setHidden(true);
  branch();
  node(*theirs, "B").subnodeGroup()->addNode(*named(node(*theirs, "A"), "Clamp"));
  node(*ours, "A").setName("Outer");
  const auto outcome = merge();
  EXPECT_THAT(linesOf(outcome.conflicts), ElementsAre());
  HXNode& merged = *named(node(*outcome.document, "B"), "Clamp");
  const auto* published = port(merged, "Tarn.maximumInput").symbolicPort();
  ASSERT_TRUE(published);
  EXPECT_EQ(published->node(), named(*outcome.document, "Outer"));
  // And goes with the other's group.
  HXDocumentMerge::Options favored;
  ours->subnodeGroup()->removeNode(&node(*ours, "Outer"));
  favored.favored.emplace("A", HXMergeSide::ours);
  const auto without = merge(favored);
  HXNode& left = *named(node(*without.document, "B"), "Clamp");
  EXPECT_FALSE(port(left, "Tarn.maximumInput").symbolicPort());
  EXPECT_THAT(test::faultsOf(*without.document), ElementsAre());
}

TEST_F(MergeTest, AWireReturnsWithTheNodeThatTheOtherChanged) {
  const auto clamp = add("HXRClampNode");
  const auto delay = add("HXRDelayNode");
  add("HXRTransitionNode");
  document->connectPort(port(*delay, "Tarn.valueOutput"), port(*clamp, "Tarn.valueInput"));
  branch();
  ours->subnodeGroup()->removeNode(&node(*ours, "Delay"));
  port(node(*theirs, "Delay"), "Tarn.delayInput")
      .setStaticValue(PMRPrimitive::primitiveWithNumberValue(5));
  const auto back = merge();
  EXPECT_THAT(back.conflicts, ::testing::SizeIs(1));
  HXNode& merged = node(*back.document, "Clamp");
  EXPECT_EQ(port(merged, "Tarn.valueInput").connections().count(), 1U);
  EXPECT_THAT(test::faultsOf(*back.document), ElementsAre());
  // To an input that we joined anew meanwhile there is one wire still.
  ours->connectPort(port(node(*ours, "Transition"), "Tarn.output"),
                    port(node(*ours, "Clamp"), "Tarn.valueInput"));
  const auto outcome = merge();
  ASSERT_THAT(outcome.conflicts, ::testing::SizeIs(2));
  EXPECT_EQ(outcome.conflicts[1].kind, Kind::joinedTwice);
  const auto wires = port(node(*outcome.document, "Clamp"), "Tarn.valueInput").connections();
  ASSERT_EQ(wires.count(), 1U);
  EXPECT_EQ(wires.toVector().front()->outputPort()->node()->name(), "Transition");
  EXPECT_THAT(test::faultsOf(*outcome.document), ElementsAre());
}

class MergePropertyTest : public ::testing::Test {
 protected:
  MergePropertyTest() : earlier_(Log::setSink([](std::string_view) {})) {}
  ~MergePropertyTest() override { Log::setSink(earlier_); }
  static Ref<HXDocument> settled(const HXDocument& document) {
    return openedDocument(savedBytes(document, kWithKeys), kWithKeys);
  }
  void edit(HXDocument& document, int edits) {
    std::vector<std::uint8_t> bytes(2048);
    for (auto& byte : bytes) byte = static_cast<std::uint8_t>(random_());
    fuzz::ModelEditor editor(bytes.data(), bytes.size());
    editor.setPaused(true);
    editor.keepTo(document);
    for (int i = 0; i < edits; ++i) editor.runOne();
  }
  Ref<HXDocument> descendant(const HXDocument& document) {
    const auto edited = settled(document);
    edit(*edited, static_cast<int>(random_() % 8));
    return settled(*edited);
  }
  std::mt19937 random_{4711};

 private:
  Log::Sink earlier_;
};

TEST_F(MergePropertyTest, KeepsTheLawsOfMergesAndMakesWhatCanBeSavedOpenedAndSent) {
  for (int run = 0; run < 150; ++run) {
    const auto document = make<HXDocument>();
    edit(*document, 50);
    const auto base = settled(*document);
    const auto ours = descendant(*base);
    const auto theirs = descendant(*base);
    bool fits = true;
    for (const auto& one : {base, ours, theirs}) fits = fits && HXDocumentState(*one).fitsTogether;
    if (!fits) continue;
    const auto merged = [&](const HXDocument& b, const HXDocument& o, const HXDocument& t,
                            std::size_t* conflicts = nullptr) {
      auto outcome = HXDocumentMerge::merge(b, o, t);
      EXPECT_TRUE(outcome) << run << " " << outcome.status().message();
      if (conflicts) *conflicts = outcome->conflicts.size();
      return outcome->document;
    };
    const auto isSame = [&](const HXDocument& is, const HXDocument& wanted, const char* law) {
      if (savedBytes(is, kWithKeys) == savedBytes(wanted, kWithKeys)) return;
      std::string lines;
      const HXDocumentDifference difference(wanted, is);
      for (const auto& change : difference.changes()) {
        lines += change.address + ": " + change.description() + "\n";
      }
      ADD_FAILURE() << run << " " << law << "\n" << lines;
    };
    isSame(*merged(*base, *ours, *base), *ours, "b o b");
    isSame(*merged(*base, *base, *theirs), *theirs, "b b t");
    isSame(*merged(*base, *ours, *ours), *ours, "b x x");
    std::size_t conflicts = 0;
    std::size_t swapped = 0;
    const auto both = merged(*base, *ours, *theirs, &conflicts);
    const auto other = merged(*base, *theirs, *ours, &swapped);
    EXPECT_EQ(conflicts, swapped) << run;
    for (const auto& one : {both, other}) {
      EXPECT_THAT(test::faultsOf(*one), ElementsAre()) << run;
      EXPECT_TRUE(HXDocumentFile::document(savedBytes(*one, 0), 0)) << run;
      EXPECT_TRUE(HXDocumentFile::deviceGraph(*one)) << run;
    }
    if (::testing::Test::HasFailure()) break;
  }
}

}  // namespace
}  // namespace tarnkit
