#include <gmock/gmock.h>

#include <cstdlib>
#include <fstream>
#include <limits>
#include <set>
#include <sstream>

#include "tarnkit/archive/HXCoding.h"
#include "tarnkit/compare/HXDocumentRepair.h"
#include "tarnkit/compare/HXDocumentSearch.h"
#include "tarnkit/editing/HXHistory.h"
#include "tarnkit/model/HXDocumentFile.h"
#include "tarnkit/model/HXParameterKinds.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tarnkit/patches/HXRValueParameters.h"
#include "tests/compare/CheckExamples.h"
#include "tests/model/ModelFixture.h"

namespace tarnkit {
namespace {

using Code = HXFindingCode;
using test::CheckExample;
using test::CheckRow;

std::size_t countOf(const HXCheckResult& result, Code code) {
  std::size_t count = 0;
  for (const HXFinding& finding : result.findings) count += finding.code == code;
  return count;
}

std::string all(const HXCheckResult& result) {
  std::string lines;
  for (const HXFinding& finding : result.findings) {
    lines +=
        finding.address + ": " + finding.sentence + " [" + std::string(finding.kind().name) + "]\n";
  }
  return lines;
}

HXCheckResult checkOf(CheckExample& example, const HXCheckOptions& options = {}) {
  return HXDocumentCheck::check(*example.document, options, example.opening.get());
}

TEST(CheckTest, EveryCodeIsFoundWhereItIsAndNotWhereItAlmostIs) {
  // Files that cannot be opened, and patches of plug-ins, are tried with the host.
  std::set<Code> codes{Code::fileUnreadable, Code::devicePlugIn};
  for (const CheckRow& row : test::checkRows()) {
    SCOPED_TRACE(std::string(kindOf(row.code).name));
    EXPECT_TRUE(codes.insert(row.code).second);
    CheckExample shows, almost;
    row.shows(shows);
    const HXCheckResult found = checkOf(shows);
    EXPECT_GE(countOf(found, row.code), 1U) << all(found);
    for (const HXFinding& finding : found.findings) {
      EXPECT_FALSE(finding.address.empty());
      EXPECT_FALSE(finding.sentence.empty());
    }
    EXPECT_EQ(countOf(checkOf(shows, {.ignored = {row.code}}), row.code), 0U);
    const HXCheckResult only = checkOf(shows, {.only = {row.code}});
    EXPECT_EQ(only.total(), countOf(found, row.code));
    row.almost(almost);
    const HXCheckResult clean = checkOf(almost);
    EXPECT_EQ(countOf(clean, row.code), 0U) << all(clean);
  }
  EXPECT_EQ(codes.size(), findingKinds().size());
}

TEST(CheckTest, AnswersLeaveNothingOfTheirCodesAndAreOneStep) {
  for (const CheckRow& row : test::checkRows()) {
    if (!kindOf(row.code).isFixable) continue;
    SCOPED_TRACE(std::string(kindOf(row.code).name));
    CheckExample example;
    row.shows(example);
    const auto before = test::savedBytes(*example.document, HXCodingTypeEditorWithKeys);
    const auto history = make<HXHistory>(*example.document);
    const auto found = countOf(checkOf(example), row.code);
    const auto answered = HXDocumentRepair::repair(*example.document, {.only = {row.code}});
    EXPECT_GE(answered.size(), found);
    EXPECT_EQ(countOf(checkOf(example), row.code), 0U) << all(checkOf(example));
    EXPECT_EQ(history->undoCount(), 1U);
    const auto after = test::savedBytes(*example.document, HXCodingTypeEditorWithKeys);
    auto reopened = test::openedDocument(after, HXCodingTypeEditorWithKeys);
    EXPECT_EQ(countOf(HXDocumentCheck::check(*reopened), row.code), 0U);
    EXPECT_TRUE(history->undo());
    EXPECT_EQ(test::savedBytes(*example.document, HXCodingTypeEditorWithKeys), before);
    EXPECT_TRUE(history->redo());
    EXPECT_EQ(test::savedBytes(*example.document, HXCodingTypeEditorWithKeys), after);
    EXPECT_TRUE(HXDocumentRepair::repair(*example.document, {.only = {row.code}}).empty());
  }
}

TEST(CheckTest, AnswersLeaveAloneWhatIsIgnored) {
  CheckExample example;
  example.add("");
  example.document->imageStore()->addImageEntry(example.image(2, 2));
  const auto answered =
      HXDocumentRepair::repair(*example.document, {.ignored = {Code::imageUnused}});
  ASSERT_EQ(answered.size(), 1U);
  EXPECT_EQ(answered[0].code, Code::groupEmpty);
  EXPECT_EQ(answered[0].address, "Plain");
  EXPECT_EQ(example.document->imageStore()->imageEntriesInForce().size(), 1U);
}

TEST(CheckTest, GroupsThatBecomeEmptyGoToo) {
  CheckExample example;
  HXNode* group = nullptr;
  for (int i = 0; i < 100; ++i) group = example.add("", group).get();
  EXPECT_EQ(HXDocumentRepair::repair(*example.document).size(), 1U);
  EXPECT_TRUE(example.document->subnodeGroup()->subnodesInForce().empty());
}

TEST(CheckTest, WhatOpeningMendedAndLostIsToldOnceEach) {
  CheckExample mended;
  const auto entry = mended.image(2, 2);
  as<HXImageParameter>(mended.add("HXRImageNode")->parameterForKey("Tarn.imageParameter"))
      ->setImageEntry(entry);
  mended.document->imageStore()->addImageEntry(entry);
  mended.reopen("HXImageStoreEntry.key", "HXImageStoreEntry.kez");
  EXPECT_EQ(all(checkOf(mended, {.only = {Code::openingMended}})),
            "/: opening the file: Dropping 1 image entries without a key [opening-mended]\n");
  CheckExample lost;
  const auto clamp = lost.add("HXRClampNode");
  for (const char* key : {"Tarn.minimumInput", "Tarn.maximumInput"}) {
    CheckExample::port(*clamp, key).setStaticValue(PMRPrimitive::primitiveWithNumberValue(3));
  }
  lost.connect(*lost.add("HXRPulseNode"), "Tarn.pulseOutput", *clamp, "Tarn.minimumInput");
  lost.reopen("HXRClampNode", "HXRDeltaNode");
  EXPECT_EQ(all(checkOf(lost, {.only = {Code::openingMended}})), "");
}

TEST(CheckTest, AParameterMayHaveNoBounds) {
  CheckExample example;
  const auto node = example.add("HXRClampNode");
  node->patch()->addParameter(*make<HXRIndexParameter>("Own", "Own.parameter"));
  as<HXIndexParameter>(node->parameterForKey("Own.parameter"))->setValue(3);
  EXPECT_EQ(countOf(checkOf(example), Code::parameterBounds), 0U);
}

TEST(CheckTest, TheWorstComesFirstAndALimitCountsTheRest) {
  CheckExample example;
  example.add("HXRFamousNode");
  example.add("HXRClampNode");
  const auto wrong = example.add("HXRMathExpressionNode");
  example.setText(*wrong, "Tarn.mathExpressionParameter", "1 +");
  const HXCheckResult result = checkOf(example);
  std::vector<Code> codes;
  for (const auto& finding : result.findings) codes.push_back(finding.code);
  EXPECT_THAT(codes, testing::ElementsAre(Code::expressionSyntax, Code::nodeUnread,
                                          Code::nodeUnread, Code::patchRetired));
  const HXCheckResult limited = checkOf(example, {.limit = 1});
  ASSERT_EQ(limited.findings.size(), 1U);
  EXPECT_EQ(limited.counts, result.counts);
  EXPECT_EQ(limited.findings[0].address, "Math Expression: Expression");
  EXPECT_EQ(limited.findings[0].key,
            wrong->uniqueKey().toStdString() + "/Tarn.mathExpressionParameter");
}

TEST(CheckTest, EitherCoordinateMayBeNoNumberAndTheOtherStays) {
  constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  CheckExample example;
  const auto first = example.add("HXRClampNode"), second = example.add("HXRDelayNode"),
             group = example.add("");
  example.add("HXRClampNode", group.get());
  first->setPosition({kNaN, 5});
  second->setPosition({7, -kInfinity});
  group->setPosition({1, 1});
  group->subnodeGroup()->setCanvasCenter({kInfinity, 3});
  HXCheckOptions options;
  options.only = {Code::positionNoNumber};
  EXPECT_EQ(all(checkOf(example, options)),
            "Clamp: the position is (nan, 5) [position-no-number]\n"
            "Delay: the position is (7, -inf) [position-no-number]\n"
            "Plain: the middle of its canvas is at (inf, 3) [position-no-number]\n");
  EXPECT_EQ(HXDocumentRepair::repair(*example.document, options).size(), 3U);
  EXPECT_EQ(first->position(), (HXPoint{0, 5}));
  EXPECT_EQ(second->position(), (HXPoint{7, 0}));
  EXPECT_EQ(group->subnodeGroup()->canvasCenter(), (HXPoint{0, 3}));
}

TEST(CheckTest, AnExpressionsFaultIsShownWhereItIsKnown) {
  const struct {
    const char* text;
    std::size_t offset;
    const char* sentence;
  } rows[] = {
      {"ä + ($a", 5, "the expression does not parse: imbalanced parentheses, at character 5"},
      {"$a + 1) * 2", 6, "the expression does not parse: imbalanced parentheses, at character 7"},
      {"2 * $", 4,
       "the expression does not parse: variable names must be at least 1 character "
       "long, at character 5"},
      {"1 + foo($a)", 4, "there is no function \"foo\", at character 5"},
      {"$a +", 3, "the expression does not parse: no right operand to binary +, at character 4"},
  };
  for (const auto& row : rows) {
    CheckExample example;
    example.setText(*example.add("HXRMathExpressionNode"), "Tarn.mathExpressionParameter",
                    row.text);
    const auto result = checkOf(example);
    ASSERT_FALSE(result.findings.empty()) << row.text;
    EXPECT_EQ(result.findings[0].sentence, row.sentence);
    EXPECT_EQ(result.findings[0].offset, row.offset) << row.text;
  }
}

TEST(CheckTest, CirclesAreToldOnceWithTheirMembers) {
  CheckExample example;
  std::vector<Ref<HXNode>> nodes;
  for (int i = 0; i < 15; ++i) nodes.push_back(example.add("HXRClampNode"));
  const auto join = [&](std::size_t from, std::size_t to, const char* input) {
    example.connect(*nodes[from], "Tarn.resultOutput", *nodes[to], input);
  };
  // Two circles that share a node are one; 4 leads into it, 5 to itself. Then four and five nodes.
  join(0, 1, "Tarn.valueInput");
  join(1, 0, "Tarn.valueInput");
  join(1, 2, "Tarn.valueInput");
  join(2, 1, "Tarn.minimumInput");
  join(4, 0, "Tarn.minimumInput");
  join(5, 5, "Tarn.valueInput");
  for (std::size_t i = 6; i < 10; ++i) join(i, i == 9 ? 6 : i + 1, "Tarn.valueInput");
  for (std::size_t i = 10; i < 15; ++i) join(i, i == 14 ? 10 : i + 1, "Tarn.valueInput");
  const auto result = checkOf(example, {.only = {Code::wireCircle}});
  ASSERT_EQ(result.findings.size(), 4U);
  EXPECT_EQ(result.findings[2].sentence,
            "4 nodes wait for each other's values: this one, \"Clamp\", "
            "\"Clamp\", \"Clamp\"");
  EXPECT_EQ(result.findings[3].sentence,
            "5 nodes wait for each other's values: this one, \"Clamp\", "
            "\"Clamp\", \"Clamp\" and others");
  EXPECT_EQ(result.findings[0].sentence,
            "3 nodes wait for each other's values: this one, \"Clamp\", \"Clamp\"");
  EXPECT_EQ(result.findings[0].place.get(), nodes[0].get());
  EXPECT_EQ(result.findings[1].sentence, "the node waits for its own value");
  EXPECT_EQ(result.findings[1].address, "Clamp [6]");
}

// Neither the stack nor a chain of groups may cost more than its length.
TEST(CheckTest, DeepAndLongDocumentsAreChecked) {
  CheckExample example;
  HXNode* group = nullptr;
  Ref<HXPort> port;
  constexpr int kDepth = 3000;
  std::vector<Ref<HXNode>> groups;
  for (int i = 0; i < kDepth; ++i)
    groups.push_back(example.add("", group)), group = groups.back().get();
  const auto inner = example.add("HXRClampNode", group);
  port = Ref<HXPort>(inner->portForKey("Tarn.resultOutput"));
  for (auto at = groups.rbegin(); at != groups.rend(); ++at) {
    port = Ref<HXPort>((*at)->subnodeGroup()->addSymbolicPortForPort(*port).get());
  }
  Ref<HXNode> before;
  for (int i = 0; i < kDepth; ++i) {
    const auto node = example.add("HXRClampNode");
    if (before) example.connect(*before, "Tarn.resultOutput", *node, "Tarn.valueInput");
    before = node;
  }
  const auto result = checkOf(example, {.limit = 10});
  EXPECT_EQ(result.count(HXFindingSeverity::error), 0U) << all(result);
  EXPECT_EQ(countOf(result, Code::publicationUnused), 1U) << all(result);
}

TEST(CheckTest, TheManualIsThatOfTheTable) {
  const std::string path = TARNKIT_SOURCE_DIR "/docs/checks.md";
  if (std::getenv("TARNKIT_REGENERATE")) std::ofstream(path) << findingsManual();
  std::stringstream text;
  text << std::ifstream(path).rdbuf();
  EXPECT_EQ(text.str(), findingsManual());
  std::set<std::string_view> names;
  for (const HXFindingKind& kind : findingKinds()) {
    EXPECT_TRUE(names.insert(kind.name).second) << kind.name;
    EXPECT_EQ(findingKindNamed(kind.name), &kind);
  }
  EXPECT_EQ(findingKindNamed("no-such-code"), nullptr);
}

TEST(SearchTest, PatternsMatchWholeNames) {
  const auto matches = HXDocumentSearch::matches;
  EXPECT_TRUE(matches("Page Dots", "Page*"));
  EXPECT_TRUE(matches("Page Dots", "*o*s"));
  EXPECT_TRUE(matches("aab", "*ab"));
  EXPECT_TRUE(matches("Größe", "Gr?ße"));
  EXPECT_TRUE(matches("", "*"));
  EXPECT_FALSE(matches("Page Dots", "Page"));
  EXPECT_FALSE(matches("Page", "Page?"));
  EXPECT_FALSE(matches("page", "Page"));
}

TEST(SearchTest, AllThatIsAskedHasToHold) {
  CheckExample example;
  const auto group = example.add("");
  const auto inner = example.add("HXRClampNode", group.get());
  example.add("HXRClampNode")->setName("Other");
  const auto published =
      group->subnodeGroup()->addSymbolicPortForPort(*inner->portForKey("Tarn.resultOutput"));
  const auto addresses = [&](const HXSearchCriteria& criteria) {
    std::vector<std::string> found;
    for (const auto& match : HXDocumentSearch::find(*example.document, criteria)) {
      found.push_back(match.address);
    }
    return found;
  };
  using testing::ElementsAre;
  EXPECT_THAT(addresses({}), ElementsAre("Plain", "Plain / Clamp", "Other"));
  EXPECT_THAT(addresses({.patch = "Clamp"}), ElementsAre("Plain / Clamp", "Other"));
  EXPECT_THAT(addresses({.patch = "HXRClampNode", .name = "O*"}), ElementsAre("Other"));
  EXPECT_THAT(addresses({.name = "C*", .port = "Maximum"}), ElementsAre("Plain / Clamp: Maximum"));
  EXPECT_THAT(addresses({.port = published->uniqueKey()}), ElementsAre("Plain: Result"));
  EXPECT_TRUE(addresses({.image = "none"}).empty());
}

}  // namespace
}  // namespace tarnkit
