#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "tarnkit/archive/HXCoding.h"
#include "tarnkit/editing/HXHistory.h"
#include "tarnkit/editing/HXReplacement.h"
#include "tarnkit/editing/HXWiring.h"
#include "tarnkit/model/HXDocumentFile.h"
#include "tarnkit/model/HXParameterKinds.h"
#include "tarnkit/model/HXPatchPort.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tarnkit/patches/PatchRegistry.h"
#include "tarnkit/platform/system/Log.h"
#include "tests/model/ModelFixture.h"

namespace tarnkit {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;
using ::testing::UnorderedElementsAreArray;

// One line an item, in the words of the report; values and connections only, when asked.
std::vector<std::string> lines(const std::vector<HXNodeItem>& items, bool all = false) {
  std::vector<std::string> lines;
  for (const auto& item : items) {
    const bool isMade =
        item.kind != HXNodeItem::Kind::port && item.kind != HXNodeItem::Kind::parameter;
    if (!isMade && !all) continue;
    const auto former = std::string(item.formerKey.view());
    lines.push_back((former.empty() ? "" : former + " -> ") + item.description());
  }
  return lines;
}

class Replacement : public test::ModelTest {
 protected:
  Ref<HXNode> addGroup(HXNode* to = nullptr) { return add("", to); }
  static Ref<HXRNode> definition(const char* patchClass) {
    return patchClassNamed(patchClass)->makeDefinition();
  }
  static HXPatchPort& port(const Ref<HXNode>& node, const char* key) {
    return **node->portsInForce().find(key);
  }
  std::vector<std::uint8_t> bytes() const {
    return *HXDocumentFile::dataWithDocument(*document, HXCodingTypeEditorWithKeys);
  }
  static std::string address(const Ref<HXNode>& node, const char* key) {
    return std::string(node->uniqueKey().view()) + "/" + key;
  }
  // That the replacement does what it said before, and that undoing it gives back the bytes.
  HXNodeReport replaced(const Ref<HXNode>& node, const char* patchClass,
                        const HXReplacementOptions& options = {}) {
    const auto before = bytes();
    const Ref<HXRNode> fresh = definition(patchClass);
    const auto expected = HXReplacement::wouldLose(*node, fresh.get(), options);
    EXPECT_EQ(bytes(), before);
    const auto history = make<HXHistory>(*document);
    const auto report = HXReplacement::replacePatch(*node, fresh, options);
    EXPECT_TRUE(report);
    EXPECT_THAT(lines(expected.kept, true), UnorderedElementsAreArray(lines(report->kept, true)));
    EXPECT_THAT(lines(expected.dropped, true),
                UnorderedElementsAreArray(lines(report->dropped, true)));
    EXPECT_THAT(lines(expected.added, true), UnorderedElementsAreArray(lines(report->added, true)));
    EXPECT_THAT(lines(expected.renamed, true),
                UnorderedElementsAreArray(lines(report->renamed, true)));
    const auto after = bytes();
    EXPECT_LE(history->undoCount(), 1U);
    if (history->canUndo()) {
      EXPECT_EQ(history->undoName(), "Replace Patch");
      EXPECT_TRUE(history->undo());
      EXPECT_EQ(bytes(), before);
      EXPECT_TRUE(history->redo());
    }
    EXPECT_EQ(bytes(), after);
    return *report;
  }
};

TEST_F(Replacement, tells_what_goes_with_its_values_and_what_it_was_joined_to) {
  const auto source = add("HXRTransitionNode");
  const auto clamp = add("HXRClampNode");
  const auto target = add("HXRTransitionNode");
  port(clamp, "Tarn.minimumInput").setStaticValue(PMRPrimitive::primitiveWithNumberValue(5));
  HXWiring::wire(*document, port(source, "Tarn.output"), port(clamp, "Tarn.valueInput"));
  HXWiring::wire(*document, port(clamp, "Tarn.resultOutput"), port(target, "Tarn.input"));
  const auto report = replaced(clamp, "HXRMathNode");
  EXPECT_THAT(lines(report.dropped, true),
              UnorderedElementsAre(
                  "the port Tarn.valueInput", "the port Tarn.minimumInput",
                  "the port Tarn.maximumInput", "the value \"5\" of Tarn.minimumInput",
                  "the connection of Tarn.valueInput with " + address(source, "Tarn.output")));
  EXPECT_THAT(lines(report.kept), ElementsAre("the connection of Tarn.resultOutput with " +
                                              address(target, "Tarn.input")));
  EXPECT_TRUE(report.losesAnything());
  EXPECT_EQ(report.losses().size(), 2U);
}

TEST_F(Replacement, asks_before_it_loses_anything) {
  const auto clamp = add("HXRClampNode");
  HXReplacementOptions options;
  int asked = 0;
  bool answer = false;
  options.mayLose = [&](const HXNodeReport& report) {
    ++asked;
    EXPECT_EQ(lines(report.losses()).size(), 1U);
    return answer;
  };
  port(clamp, "Tarn.minimumInput").setStaticValue(PMRPrimitive::primitiveWithNumberValue(5));
  const auto before = bytes();
  EXPECT_FALSE(HXReplacement::replacePatch(*clamp, definition("HXRSwitchNode"), options));
  EXPECT_EQ(bytes(), before);
  answer = true;
  EXPECT_TRUE(HXReplacement::replacePatch(*clamp, definition("HXRSwitchNode"), options));
  EXPECT_EQ(clamp->patch()->isa().name(), "HXRSwitchNode");
  EXPECT_TRUE(HXReplacement::replacePatch(*clamp, definition("HXRClampNode"), options));
  EXPECT_EQ(asked, 2) << "nothing hung on the switch";
}

TEST_F(Replacement, carries_over_by_an_explicit_map) {
  const auto outer = addGroup();
  const auto group = addGroup(outer.get());
  const auto source = add("HXRTransitionNode");
  const auto beside = add("HXRTransitionNode", group.get());
  const auto clamp = add("HXRClampNode", group.get());
  const auto inner = group->subnodeGroup()->addSymbolicPortForPort(port(clamp, "Tarn.valueInput"));
  inner->setName("In:Level");
  const auto published = outer->subnodeGroup()->addSymbolicPortForPort(*inner);
  published->setName("Out:Level");
  HXWiring::wire(*document, port(source, "Tarn.output"), *published);
  HXWiring::wire(*document, port(clamp, "Tarn.resultOutput"), port(beside, "Tarn.input"));
  // From the node to itself.
  HXWiring::wire(*document, port(clamp, "Tarn.resultOutput"), port(clamp, "Tarn.maximumInput"));
  port(clamp, "Tarn.minimumInput").setStaticValue(PMRPrimitive::primitiveWithNumberValue(5));

  HXReplacementOptions options;
  options.newKeys.set("Tarn.valueInput", "Tarn.input");
  options.newKeys.set("Tarn.minimumInput", "Tarn.outputMinInput");
  options.newKeys.set("Tarn.maximumInput", "Tarn.outputMaxInput");
  options.newKeys.set("Tarn.resultOutput", "Tarn.output");
  options.newKeys.set("Tarn.nowhere", "Tarn.input");
  const auto report = replaced(clamp, "HXRTransitionNode", options);
  EXPECT_THAT(report.dropped, IsEmpty());
  EXPECT_EQ(lines(report.renamed, true).size(), 4U + 1 + 2 + 4);
  auto& input = port(clamp, "Tarn.input");
  ASSERT_TRUE(input.symbolicPort());
  EXPECT_EQ(input.symbolicPort()->name(), "In:Level");
  ASSERT_TRUE(input.symbolicPort()->symbolicPort());
  EXPECT_EQ(input.symbolicPort()->symbolicPort()->name(), "Out:Level");
  ASSERT_EQ(input.connections().count(), 1U);
  const auto wire = input.connections().toVector().front();
  EXPECT_EQ(wire->displayInputPort(), input.symbolicPort()->symbolicPort());
  EXPECT_EQ(wire->outputPort(), &port(source, "Tarn.output"));
  EXPECT_EQ(port(clamp, "Tarn.outputMinInput").staticValue()->numberValue(), 5);
  EXPECT_EQ(port(clamp, "Tarn.output").connections().count(), 2U);
  EXPECT_EQ(port(clamp, "Tarn.outputMaxInput").connections().count(), 1U);
}

TEST_F(Replacement, carries_over_by_name_and_kind_only_what_fits) {
  const auto source = add("HXRTransitionNode");
  const auto multiplexer = add("HXRMultiplexerNode");
  const auto ease = add("HXREaseNode");
  const auto other = add("HXREaseNode");
  port(ease, "Tarn.progressInput").setStaticValue(PMRPrimitive::primitiveWithNumberValue(3));
  for (const auto& node : {ease, other}) {
    HXWiring::wire(*document, port(source, "Tarn.output"), port(node, "Tarn.progressInput"));
  }
  HXReplacementOptions options;
  options.matchesNamesAndKinds = true;
  const auto kept = replaced(ease, "HXRTransitionNode", options);
  EXPECT_THAT(lines(kept.renamed),
              UnorderedElementsAre("Tarn.progressInput -> the value \"3\" of Tarn.input",
                                   "Tarn.progressInput -> the connection of Tarn.input with " +
                                       address(source, "Tarn.output")));
  EXPECT_EQ(lines(replaced(other, "HXRTransitionNode").dropped).size(), 1U);

  HXReplacementOptions explicitly;
  explicitly.newKeys.set("Tarn.output", "Tarn.xPositionInput");  // of another side
  const auto report = replaced(multiplexer, "HXRViewNode", explicitly);
  EXPECT_THAT(report.renamed, IsEmpty());
}

TEST_F(Replacement, swaps_the_ports_of_one_patch) {
  const auto clamp = add("HXRClampNode");
  const auto source = add("HXRTransitionNode");
  port(clamp, "Tarn.minimumInput").setStaticValue(PMRPrimitive::primitiveWithNumberValue(5));
  HXWiring::wire(*document, port(source, "Tarn.output"), port(clamp, "Tarn.maximumInput"));
  HXReplacementOptions options;
  options.newKeys.set("Tarn.minimumInput", "Tarn.maximumInput");
  options.newKeys.set("Tarn.maximumInput", "Tarn.minimumInput");
  const auto report = replaced(clamp, "HXRClampNode", options);
  EXPECT_THAT(report.dropped, IsEmpty());
  EXPECT_FALSE(port(clamp, "Tarn.minimumInput").staticValue());
  EXPECT_EQ(port(clamp, "Tarn.maximumInput").staticValue()->numberValue(), 5);
  EXPECT_EQ(port(clamp, "Tarn.minimumInput").connections().count(), 1U);
  EXPECT_TRUE(port(clamp, "Tarn.maximumInput").connections().isEmpty());
}

TEST_F(Replacement, says_that_what_stands_inside_goes) {
  const auto view = add("HXRViewNode");
  const auto inner = add("HXRTransitionNode", view.get());
  const auto outside = add("HXRTransitionNode");
  const auto published = view->subnodeGroup()->addSymbolicPortForPort(port(inner, "Tarn.output"));
  HXWiring::wire(*document, *published, port(outside, "Tarn.input"));
  const auto report = HXReplacement::wouldLose(*view, definition("HXRClampNode").get());
  EXPECT_THAT(
      lines(report.losses()),
      UnorderedElementsAre("the connection of " + std::string(published->uniqueKey().view()) +
                               " with " + address(outside, "Tarn.input"),
                           "the node " + std::string(inner->uniqueKey().view())));
  EXPECT_FALSE(
      HXReplacement::wouldLose(*view, definition("HXRColorViewNode").get()).losesAnything());
}

// Any other change of a definition can be asked in the same way.
TEST_F(Replacement, a_parameter_that_takes_ports_away_is_reported) {
  const auto math = add("HXRMathExpressionNode");
  const char* key = "Tarn.mathExpressionParameter";
  auto* expression = as<HXStringParameter>(math->parameterForKey(key));
  ASSERT_TRUE(expression);
  port(math, "Tarn.bInput").setStaticValue(PMRPrimitive::primitiveWithNumberValue(2));
  const HXNodeState before(*math);
  expression->setValue("$a + $c");
  const auto report = before.reportSince(HXNodeState(*math));
  EXPECT_THAT(lines(report.dropped, true),
              UnorderedElementsAre("the port Tarn.bInput", "the value \"2\" of Tarn.bInput"));
  EXPECT_THAT(
      lines(report.added, true),
      UnorderedElementsAre("the port Tarn.cInput", std::string("the value \"$a + $c\" of ") + key));
}

// As after the plug-in of a patch has changed: the file says another class than it was written by.
TEST_F(Replacement, what_an_opened_document_lost_is_handed_out_and_logged) {
  const auto clamp = add("HXRClampNode");
  const auto source = add("HXRTransitionNode");
  const auto group = addGroup();
  const auto inner = add("HXRClampNode", group.get());
  port(clamp, "Tarn.minimumInput").setStaticValue(PMRPrimitive::primitiveWithNumberValue(5));
  HXWiring::wire(*document, port(source, "Tarn.output"), port(clamp, "Tarn.valueInput"));
  const auto top = group->subnodeGroup()->addSymbolicPortForPort(port(inner, "Tarn.maximumInput"));
  top->setName("Top");
  document->subnodeGroup()->addSymbolicPortForPort(*top);
  auto archive = bytes();
  std::vector<HXNodeLosses> losses;
  std::vector<std::string> log;
  const auto earlier = Log::setSink([&](std::string_view line) { log.emplace_back(line); });
  EXPECT_TRUE(HXDocumentFile::document(archive, HXCodingTypeEditorWithKeys, &losses));
  EXPECT_THAT(losses, IsEmpty());
  EXPECT_THAT(log, IsEmpty());
  const std::string was = "HXRClampNode";
  const std::string is = "HXRPulseNode";
  const auto found = std::search(archive.begin(), archive.end(), was.begin(), was.end());
  ASSERT_NE(found, archive.end());
  std::copy(is.begin(), is.end(), found);
  const auto opened = HXDocumentFile::document(archive, HXCodingTypeEditorWithKeys, &losses);
  Log::setSink(earlier);
  ASSERT_TRUE(opened);
  ASSERT_EQ(losses.size(), 2U);
  EXPECT_EQ(losses[0].node->document(), (*opened).get());
  EXPECT_TRUE((*opened)->symbolicInputPorts().empty()) << "a publication above one that was lost";
  std::vector<std::string> lost;
  for (const auto& ofNode : losses) {
    for (const auto& line : lines(ofNode.dropped)) {
      lost.push_back("WARNING: [HXNode] Dropping from " +
                     std::string(ofNode.node->uniqueKey().view()) + ", HXRPulseNode: " + line);
    }
  }
  EXPECT_EQ(log, lost);
  const auto isOf = [](const Ref<HXNode>& node, const std::string& what) {
    return "WARNING: [HXNode] Dropping from " + std::string(node->uniqueKey().view()) +
           ", HXRPulseNode: " + what;
  };
  EXPECT_THAT(log,
              UnorderedElementsAre(isOf(clamp, "the value \"5\" of Tarn.minimumInput"),
                                   isOf(clamp, "the connection of Tarn.valueInput with " +
                                                   address(source, "Tarn.output")),
                                   isOf(inner, "the publication of Tarn.maximumInput as \"Top\"")));
}

TEST_F(Replacement, does_what_it_said_whatever_patches_meet) {
  std::mt19937 random(7);
  const auto classes = catalogue();
  const auto group = addGroup();
  for (int round = 0; round < 60; ++round) {
    const auto pick = [&] { return classes[random() % classes.size()]; };
    const auto node = add(pick()->name().data(), random() % 2 == 0 ? group.get() : nullptr);
    const auto other = add(pick()->name().data());
    for (const auto& entry : node->portsByUniqueKey()) {
      if (random() % 2 == 0 && entry.value->supportsStaticValue()) {
        entry.value->setStaticValue(
            PMRPrimitive::primitiveWithNumberValue(static_cast<float>(random() % 9)));
      }
      if (random() % 4 == 0) node->parentGroup()->addSymbolicPortForPort(*entry.value);
      HXPort& end = entry.value->symbolicPort() ? static_cast<HXPort&>(*entry.value->symbolicPort())
                                                : *entry.value;
      for (const auto& from :
           random() % 3 == 0 ? node->portsByUniqueKey() : other->portsByUniqueKey()) {
        if (random() % 3 == 0) HXWiring::wire(*document, end, *from.value);
      }
    }
    const auto* next = pick();
    HXReplacementOptions options;
    options.matchesNamesAndKinds = random() % 2 == 0;
    const auto now = next->makeDefinition()->portLayout().ports();
    for (const auto& entry : node->portsInForce()) {
      if (now.empty() || random() % 3 != 0) continue;
      auto at = now.begin();
      std::advance(at, random() % now.size());
      options.newKeys.set(entry.key, at->key);
    }
    SCOPED_TRACE(std::string(node->patchClass().name()) + " -> " + std::string(next->name()));
    replaced(node, next->name().data(), options);
    if (HasFailure()) return;
  }
}

}  // namespace
}  // namespace tarnkit
