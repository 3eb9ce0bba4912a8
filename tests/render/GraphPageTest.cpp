#include "tarnkit/model/HXPortGroup.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tarnkit/render/ConnectionIndex.h"
#include "tarnkit/render/GroupScene.h"
#include "tarnkit/render/HXGraphPage.h"
#include "tarnkit/render/HXGraphPicture.h"
#include "tarnkit/render/PageData.h"
#include "tarnkit/render/PageTables.h"
#include "tests/render/PictureFixture.h"

namespace tarnkit::test {

namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;

class GraphPage : public PictureTest {
 protected:
  std::string dataOf(const HXGroup& group) {
    std::string data;
    detail::appendPageData(data, detail::GroupScene(group, detail::ConnectionIndex(group)), tables);
    return data;
  }
  std::string tablesText() const {
    std::string text;
    tables.write([&](std::string_view piece) { text += piece; });
    return text;
  }
  /// The number of an entry, counted from its neighbours.
  std::string number(std::int64_t at) const { return std::to_string(at); }

  detail::PageTables tables;
};

TEST_F(GraphPage, TheDataOfAGroupIsWhole) {
  const auto group = placeGroup({600.25F, 10}, nullptr, "G");
  const auto mixer = place("HXRColorMixerNode", {10, 20}, nullptr, "</M>");
  const auto pin = place("HXRPinNode", {5, 6}, group.get());
  const auto published =
      group->subnodeGroup()->addSymbolicPortForPort(*pin->portForKey(String("Tarn.input")));
  published->setName(String("In"));
  connect(port(mixer, "Tarn.colorOutput"), *published);
  port(mixer, "Tarn.mixInput").setStaticValue(PMRPrimitive::primitiveWithNumberValue(0.25F));
  place(nullptr, {0, 400});
  const std::string data = dataOf(*document->subnodeGroup());
  EXPECT_THAT(data, StartsWith(R"({"title":0,"notes":["1 node has no patch."],"frame":[)"));
  // Hundredths, since one node stands between whole units; each from the one before.
  EXPECT_THAT(data, HasSubstr(R"("unit":100,"x":[60025,-59025,-1000],"y":[1000,1000,38000])"));
  const std::string g = number(tables.text(group->subnodeGroup()->uniqueKey()));
  EXPECT_THAT(data, HasSubstr(R"("groups":[[0,)" + g + ",1,"));
  // From the second node's only output to the first node's first row behind its heading.
  EXPECT_THAT(data, EndsWith(R"("wires":[1,0,-1,1]})"));
  const std::string all = tablesText();
  EXPECT_THAT(all, StartsWith(R"({"measures":{"titleHeight":26,)"));
  EXPECT_THAT(all, HasSubstr(R"("\u003c/M\u003e")"));
  const auto text = [&](const char* words) { return number(tables.text(words)); };
  EXPECT_THAT(all, HasSubstr("[" + text("HXRColorMixerNode") + "," + text("Color Mixer") + "," +
                             text("Color") + "]"));
  // Its value was set, and the one of the color was not.
  EXPECT_THAT(all, HasSubstr("[3," + text("0.25") + ",1,"));
  EXPECT_THAT(all, HasSubstr("[2," + text("#000000") + ",0,"));
  const std::string color = number(tables.color(pin->defaultColor()));
  EXPECT_THAT(all, HasSubstr("[" + number(tables.text(published->uniqueKey())) + "," + text("In") +
                             "," + color + "," + text("Published") + ",0]"));
  EXPECT_THAT(all, HasSubstr("," + text("No patch") + "]"));
  // Within the group the port tells what it is published as.
  dataOf(*group->subnodeGroup());
  EXPECT_THAT(tablesText(), HasSubstr("," + text("In") + "]"));
}

TEST_F(GraphPage, HiddenPortsAndParametersStandInTheData) {
  const auto view = place("HXRColorViewNode", {0, 0});
  for (const auto& each : view->inputPortGroups()) {
    if (each->groupKey() == "Masking") each->setHidden(true);
  }
  place("HXRSpring1DNode", {400, 0});
  dataOf(*document->subnodeGroup());
  const std::string all = tablesText();
  EXPECT_THAT(all, HasSubstr("," + number(tables.text("Masking")) + ",1]"));
  EXPECT_THAT(all, HasSubstr("[" + number(tables.text("Dimensions")) + "," +
                             number(tables.text("1")) + ",-1]"));
}

TEST_F(GraphPage, ANodeLikeAnotherCostsOnlyWhatItHasOfItsOwn) {
  Ref<HXNode> last;
  const auto grow = [&](int count) {
    for (int i = 0; i < count; ++i) {
      const auto node = place("HXRClampNode", {300 * static_cast<float>(i), 0});
      if (last) connect(port(last, "Tarn.resultOutput"), port(node, "Tarn.valueInput"));
      last = node;
    }
  };
  grow(50);
  const std::size_t before = dataOf(*document->subnodeGroup()).size();
  const std::size_t common = tablesText().size();
  grow(100);
  const std::string data = dataOf(*document->subnodeGroup());
  EXPECT_LT(data.size() - before, 100 * 25U);
  EXPECT_EQ(tablesText().size(), common);
  EXPECT_EQ(data.find("\"odd\""), std::string::npos);
}

TEST_F(GraphPage, APageIsHandedOnAsItIsMade) {
  for (int i = 0; i < 40; ++i) placeGroup({300 * static_cast<float>(i), 0}, nullptr, "G");
  for (int i = 0; i < 2000; ++i) {
    place(nullptr, {0, 200 * static_cast<float>(i)}, nullptr, ("N" + std::to_string(i)).c_str());
  }
  std::string page;
  std::size_t longest = 0;
  writeGraphPage(*document->subnodeGroup(), HXPictureTheme::light, [&](std::string_view piece) {
    page += piece;
    longest = std::max(longest, piece.size());
  });
  EXPECT_EQ(page, graphPage(*document->subnodeGroup(), HXPictureTheme::light));
  EXPECT_LT(longest, page.size() / 2);
}

TEST_F(GraphPage, WithoutScriptsASmallGroupIsShown) {
  place("HXRClampNode", {0, 0});
  const auto page = [&] { return graphPage(*document->subnodeGroup(), HXPictureTheme::light); };
  EXPECT_THAT(page(), HasSubstr("<noscript><svg "));
  for (int i = 0; i < 250; ++i) place(nullptr, {0, 200 * static_cast<float>(i + 1)});
  EXPECT_THAT(page(), HasSubstr("<noscript><p "));
}

TEST_F(GraphPage, APageHoldsEveryGroupOnceAndItsTheme) {
  const auto outer = placeGroup({0, 0}, nullptr, "Outer");
  const auto inner = placeGroup({5, 5}, outer.get(), "Inner");
  placeGroup({300, 0}, nullptr, "Other");
  const std::pair<HXPictureTheme, const char*> themes[] = {{HXPictureTheme::light, "light"},
                                                           {HXPictureTheme::dark, "dark"}};
  for (const auto& [theme, name] : themes) {
    HXPictureReport report;
    const std::string page = graphPage(*document->subnodeGroup(), theme, &report);
    EXPECT_THAT(page, StartsWith("<!doctype html>\n<html lang=\"en\" data-theme=\"" +
                                 std::string(name) + "\">\n"));
    EXPECT_THAT(page, EndsWith("</script>\n</body>\n</html>\n"));
    // Nearest first, each with the index of the group that it stands in.
    std::size_t at = 0;
    const std::pair<const Ref<HXNode>&, int> groups[] = {{outer, 0}, {inner, 1}};
    for (const auto& [node, parent] : groups) {
      const std::string start = "data-parent=\"" + std::to_string(parent) + "\" data-group=\"" +
                                node->subnodeGroup()->uniqueKey().toStdString() + "\">";
      EXPECT_GT(page.find(start), at);
      at = page.find(start);
      ASSERT_NE(at, std::string::npos);
    }
    EXPECT_GT(report.width, 0);
    EXPECT_TRUE(report.notes.empty());
  }
}

}  // namespace

}  // namespace tarnkit::test
