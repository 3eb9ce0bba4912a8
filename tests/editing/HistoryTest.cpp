#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

#include "fuzz/model/HistorySession.h"
#include "tarnkit/archive/HXCoding.h"
#include "tarnkit/editing/HXHistory.h"
#include "tarnkit/model/HXDocumentFile.h"
#include "tarnkit/model/HXParameterKinds.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tarnkit/patches/PatchRegistry.h"
#include "tarnkit/platform/system/Log.h"

namespace tarnkit::test {

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class HistoryTest : public testing::Test {
 protected:
  HXNode& add(const char* patchClass, HXNode* to = nullptr) {
    const auto* record = patchClassNamed(patchClass);
    const auto node = HXNode::makeOfClass(record->nodeClassName());
    node->setPatch(record->makeDefinition());
    (to ? *to : *document).subnodeGroup()->addNode(*node);
    return *node;
  }
  static HXPatchPort& port(HXNode& node, const char* key) {
    return static_cast<HXPatchPort&>(*node.portForKey(key));
  }
  std::vector<std::uint8_t> archive() const {
    return *HXDocumentFile::dataWithDocument(*document, HXCodingTypeEditorWithKeys);
  }

  Ref<HXDocument> document = make<HXDocument>();
  Ref<HXHistory> history = make<HXHistory>(*document);
};

}  // namespace

TEST_F(HistoryTest, GivesBackTheSameObjects) {
  HXNode& clamp = add("HXRClampNode");
  HXNode& other = add("HXRClampNode");
  auto& value = port(clamp, "Tarn.valueInput");
  const auto connection =
      document->connectPort(*clamp.portForKey("Tarn.resultOutput"), port(other, "Tarn.valueInput"));
  ASSERT_TRUE(connection);
  value.setStaticValue(PMRPrimitive::primitiveWithNumberValue(7));
  const auto before = archive();
  document->subnodeGroup()->removeNode(&clamp);
  EXPECT_EQ(history->undoCount(), 5U);
  EXPECT_FALSE(connection->isHeld());
  ASSERT_TRUE(history->undo());
  EXPECT_EQ(document->subnodeGroup()->subnodes().front().get(), &clamp);
  EXPECT_EQ(clamp.portForKey("Tarn.valueInput"), &value);
  EXPECT_EQ(value.staticValue()->numberValue(), 7);
  EXPECT_TRUE(connection->isHeld());
  EXPECT_EQ(archive(), before);
  ASSERT_TRUE(history->redo());
  EXPECT_EQ(clamp.parentGroup(), nullptr);
  while (history->undo()) {
  }
  EXPECT_TRUE(document->subnodeGroup()->subnodes().empty());
  EXPECT_EQ(history->redoCount(), 5U);
}

TEST_F(HistoryTest, StepsNestCoalesceAndCancelOut) {
  EXPECT_FALSE(history->isModified());
  HXNode& clamp = add("HXRClampNode");
  EXPECT_TRUE(history->isModified());
  history->removeAllSteps();
  history->markClean();

  // A drag is one step, and dragging back is none.
  for (int at = 1; at <= 5; ++at) clamp.setPosition({static_cast<float>(at), 0});
  EXPECT_EQ(history->undoCount(), 1U);
  EXPECT_TRUE(history->isModified());
  clamp.setPosition({0, 0});
  EXPECT_EQ(history->undoCount(), 0U);
  EXPECT_FALSE(history->isModified());

  // Another gesture, a later time, or another value begins another step.
  clamp.setPosition({1, 0});
  history->setCoalescingKey("second drag");
  clamp.setPosition({2, 0});
  history->setCoalescingInterval(0.5);
  history->setTime(10);
  clamp.setPosition({3, 0});
  history->setTime(10.4);
  clamp.setPosition({4, 0});
  clamp.setName("Other");
  EXPECT_EQ(history->undoCount(), 4U);
  history->undo();
  history->undo();
  EXPECT_EQ(clamp.position().x, 2);
  history->setCoalesces(false);
  clamp.setPosition({5, 0});
  clamp.setPosition({6, 0});
  EXPECT_EQ(history->undoCount(), 4U);
  EXPECT_FALSE(history->canRedo());

  // The outermost of nested steps counts and names it.
  {
    const HXHistory::Step outer(*document, "Tidy up");
    const HXHistory::Step inner(*document, "Move");
    clamp.setName("A");
    clamp.setName("B");
    EXPECT_FALSE(history->canUndo());
  }
  EXPECT_EQ(history->undoCount(), 5U);
  EXPECT_EQ(history->undoName(), "Tidy up");
  history->undo();
  EXPECT_EQ(history->redoName(), "Tidy up");
  EXPECT_EQ(clamp.name(), "Clamp");

  // What comes and goes in one step leaves no step.
  history->removeAllSteps();
  {
    const HXHistory::Step step(*document);
    HXNode& passing = add("HXRMathNode");
    document->subnodeGroup()->removeNode(&passing);
  }
  EXPECT_EQ(history->undoCount(), 0U);
}

TEST_F(HistoryTest, AbandonsAnOpenStep) {
  HXNode& clamp = add("HXRClampNode");
  const auto before = archive();
  const auto steps = history->undoCount();
  history->beginStep("Drag");
  clamp.setPosition({9, 9});
  add("HXRClampNode");
  EXPECT_TRUE(history->abandonStep());
  EXPECT_EQ(archive(), before);
  EXPECT_EQ(history->undoCount(), steps);
  EXPECT_FALSE(history->canRedo());
  EXPECT_EQ(history->openSteps(), 0U);
}

// With one dimension a spring's ports are called by no axis.
TEST_F(HistoryTest, PortsThatAPatchRenamesAreToldAndNoOthers) {
  HXNode& spring = add("HXRSpringNode");
  std::vector<std::string> names;
  const NotificationCenter::Observation observation([&](const Notification& notification) {
    if (notification.name != HXPortNameDidChangeNotification) return;
    names.push_back(as<HXPort>(&notification.object)->name().toStdString());
  });
  as<HXIndexParameter>(spring.parameterForKey("Tarn.numberOfDimensionsParameter"))->setValue(1);
  EXPECT_THAT(std::exchange(names, {}), ElementsAre("Rest", "Position"));
  ASSERT_TRUE(history->undo());
  EXPECT_EQ(spring.portForKey("Tarn.position0Output")->name(), "X Position");
  EXPECT_THAT(std::exchange(names, {}), ElementsAre("X Rest", "X Position"));
  ASSERT_TRUE(history->redo());
  EXPECT_THAT(names, ElementsAre("Rest", "Position"));
}

TEST_F(HistoryTest, ViewStateMakesNoStepAndGoesAlong) {
  HXNode& clamp = add("HXRClampNode");
  clamp.setSelected(true);
  clamp.setInspectorPanel(2);
  document->subnodeGroup()->setCanvasCenter({3, 4});
  EXPECT_EQ(history->undoCount(), 1U);
  history->undo();
  EXPECT_FALSE(clamp.selected());
  history->redo();
  EXPECT_TRUE(clamp.selected());
  EXPECT_EQ(clamp.inspectorPanel(), 2U);
  history->setRecordsViewState(true);
  clamp.setSelected(false);
  EXPECT_EQ(history->undoCount(), 2U);
}

TEST_F(HistoryTest, KnowsTheCleanStateAndForgetsTheOldest) {
  HXNode& clamp = add("HXRClampNode");
  history->setCoalesces(false);
  history->markClean();
  clamp.setName("A");
  clamp.setName("B");
  EXPECT_TRUE(history->isModified());
  history->undo();
  history->undo();
  EXPECT_FALSE(history->isModified());
  history->redo();
  history->markClean();
  clamp.setName("C");
  history->undo();
  EXPECT_FALSE(history->isModified());
  history->undo();
  clamp.setName("D");  // the clean state cannot be reached any more
  for (int i = 0; i < 100; ++i) clamp.setName(String(std::to_string(i)));
  EXPECT_TRUE(history->isModified());
  // A simple change costs at most 200 bytes, and both it and its step are counted.
  EXPECT_LE(history->byteCount(), history->undoCount() * 200);
  EXPECT_GE(history->byteCount(), history->undoCount() * 100);
  history->setMaximumSteps(10);
  EXPECT_EQ(history->undoCount(), 10U);
  const auto bytes = history->byteCount();
  history->setMaximumBytes(bytes / 2);
  EXPECT_LE(history->byteCount(), bytes / 2);
  EXPECT_GE(history->undoCount(), 1U);
  while (history->undo()) {
  }
  EXPECT_TRUE(history->isModified());
  EXPECT_EQ(history->byteCount() > 0, history->redoCount() > 0);
}

TEST_F(HistoryTest, TellsWhatComesBeforeWhatHangsOnIt) {
  HXNode& clamp = add("HXRClampNode");
  HXNode& other = add("HXRClampNode");
  document->connectPort(*clamp.portForKey("Tarn.resultOutput"), port(other, "Tarn.valueInput"));
  {
    const HXHistory::Step step(*document, "Remove");
    document->subnodeGroup()->removeNode(&clamp);
  }
  std::vector<std::string> told;
  std::vector<HXHistory::Direction> directions;
  {
    const NotificationCenter::Observation observation([&](const Notification& notification) {
      told.emplace_back(notification.name.string().view());
      directions.push_back(history->direction());
      if (history->direction() != HXHistory::Direction::none) {
        EXPECT_FALSE(history->undo());
      }
    });
    const auto quiet = Log::setSink([](std::string_view) {});
    history->undo();
    Log::setSink(quiet);
  }
  EXPECT_THAT(told, ElementsAre("HXHistoryWillUndoNotification", "HXGroupAddNodeNotification",
                                "HXPortDidConnectNotification", "HXPortDidConnectNotification",
                                "HXDocumentAddConnectionNotification",
                                "HXHistoryDidUndoNotification", "HXHistoryDidChangeNotification"));
  EXPECT_EQ(directions.front(), HXHistory::Direction::undoing);
  EXPECT_EQ(directions.back(), HXHistory::Direction::none);
}

TEST_F(HistoryTest, ACounterThatRebuildsPortsIsOneStep) {
  HXNode& math = add("HXRMathNode");
  auto* const count =
      as<HXIndexParameter>(math.parameterForKey("Tarn.numberOfOperationsParameter"));
  ASSERT_TRUE(count);
  const auto before = archive();
  const auto steps = history->undoCount();
  count->setValue(4);
  EXPECT_EQ(history->undoCount(), steps + 1);
  const Ref<HXPort> operand(math.portForKey("Tarn.operand4Input"));
  ASSERT_TRUE(operand);
  const auto after = archive();
  history->undo();
  EXPECT_EQ(archive(), before);
  EXPECT_EQ(math.portForKey("Tarn.operand4Input"), nullptr);
  history->redo();
  EXPECT_EQ(math.portForKey("Tarn.operand4Input"), operand.get());
  EXPECT_EQ(archive(), after);
  // What the patch remembers of having built came back as well: it goes on from there.
  history->undo();
  count->setValue(2);
  EXPECT_TRUE(math.portForKey("Tarn.operand2Input"));
  EXPECT_FALSE(math.portForKey("Tarn.operand3Input"));
}

TEST_F(HistoryTest, WhoeverChangesTheDocumentInAnUndoEmptiesTheHistory) {
  HXNode& clamp = add("HXRClampNode");
  clamp.setName("Other");
  std::vector<std::string> lines;
  const auto earlier = Log::setSink([&](std::string_view line) { lines.emplace_back(line); });
  {
    const NotificationCenter::Observation observation(HXNodeNameDidChangeNotification,
                                                      [&](const Notification&) {
                                                        clamp.setPosition({5, 5});
                                                      });
    EXPECT_TRUE(history->undo());
  }
  Log::setSink(earlier);
  EXPECT_EQ(lines.size(), 1U);
  EXPECT_EQ(history->undoCount() + history->redoCount(), 0U);
  EXPECT_EQ(clamp.name(), "Clamp");
  EXPECT_EQ(clamp.position().x, 5);
  EXPECT_TRUE(history->isModified());
  clamp.setName("Again");
  EXPECT_TRUE(history->undo());
}

TEST_F(HistoryTest, ANodeThatStandsElsewhereStopsTheUndo) {
  const Ref<HXNode> clamp(&add("HXRClampNode"));
  document->subnodeGroup()->removeNode(clamp.get());
  const auto other = make<HXDocument>();
  other->subnodeGroup()->addNode(*clamp);
  const auto earlier = Log::setSink([](std::string_view) {});
  EXPECT_FALSE(history->undo());
  Log::setSink(earlier);
  EXPECT_EQ(history->undoCount(), 0U);
  EXPECT_EQ(clamp->document(), other.get());
  EXPECT_THROW(make<HXHistory>(*document), std::logic_error);
}

// What went with a group that was dropped stands where the step takes it from.
TEST_F(HistoryTest, ANodeThatWentWithADroppedGroupComesBack) {
  const auto addGroup = [&](HXNode& to) {
    const auto group = make<HXNode>();
    group->setForceAllowsSubnodes(true);
    group->setPatch(nullptr);
    to.subnodeGroup()->addNode(*group);
    return group;
  };
  const auto outer = addGroup(*document);
  const auto inner = addGroup(*outer);
  const Ref<HXNode> node(&add("HXRClampNode"));
  const auto before = archive();
  history->beginStep();
  inner->subnodeGroup()->addNode(*node);
  outer->setForceAllowsSubnodes(false);
  outer->setPatch(nullptr);
  history->endStep();
  ASSERT_FALSE(outer->subnodeGroup());
  ASSERT_TRUE(history->undo());
  EXPECT_EQ(archive(), before);
  EXPECT_EQ(node->parentGroup(), document->subnodeGroup().get());
}

TEST_F(HistoryTest, ANodeThatIsOutIsRecordedWhileAStepHoldsIt) {
  const Ref<HXNode> clamp(&add("HXRClampNode"));
  for (int round = 0; round < 2; ++round) {
    ASSERT_TRUE(history->undo());
    EXPECT_FALSE(clamp->parentGroup());
    ASSERT_TRUE(history->redo());
  }
  document->subnodeGroup()->removeNode(clamp.get());
  clamp->setName("Out");
  EXPECT_EQ(history->undoCount(), 3U);
  history->undo();
  history->undo();
  EXPECT_TRUE(clamp->parentGroup());
  history->undo();
  clamp->setName("Out again");
  EXPECT_EQ(history->undoCount(), 1U);
  EXPECT_EQ(history->redoCount(), 0U);
  // The steps that held it went, or are made to go: now it is nobody's.
  clamp->setName("Loose");
  EXPECT_EQ(history->undoCount(), 1U);
  history->removeAllSteps();
  clamp->setName("Free");
  EXPECT_EQ(history->undoCount(), 0U);
}

TEST_F(HistoryTest, OutlivesItsDocument) {
  add("HXRClampNode");
  document = nullptr;
  EXPECT_FALSE(history->canUndo());
  EXPECT_FALSE(history->undo());
  EXPECT_EQ(HXHistory::ofDocument(*make<HXDocument>()), nullptr);
}

// Random sessions with observers that edit, each undone to its beginning and redone, byte for byte;
// nothing lives on.
TEST(HistorySessionTest, EveryStepGivesBackItsBytes) {
  const auto earlier = Log::setSink([](std::string_view) {});
  std::int64_t alive = 0;
  for (std::uint32_t seed = 0; seed < 400; ++seed) {
    std::mt19937 random(seed);
    std::vector<std::uint8_t> bytes(20 + random() % 400);
    for (auto& byte : bytes) byte = static_cast<std::uint8_t>(random());
    ASSERT_THAT(fuzz::faultsOfHistorySession(bytes.data(), bytes.size()), IsEmpty()) << seed;
    if (seed == 200) alive = Object::liveObjectCount();
  }
  Log::setSink(earlier);
  // Interned texts and prototypes of classes that were not used before may come.
  EXPECT_LE(Object::liveObjectCount(), alive + 200);
}

}  // namespace tarnkit::test
