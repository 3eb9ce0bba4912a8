#include "tarnkit/model/HXPortGroup.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tarnkit/render/ConnectionIndex.h"
#include "tarnkit/render/GroupScene.h"
#include "tarnkit/render/HXGraphPage.h"
#include "tarnkit/render/HXGraphPicture.h"
#include "tarnkit/render/PageData.h"
#include "tests/render/PictureFixture.h"

namespace tarnkit::test {

namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;

class GraphPage : public PictureTest {
 protected:
  static std::string dataOf(const HXGroup& group) {
    std::string data;
    detail::appendPageData(data, detail::GroupScene(group, detail::ConnectionIndex(group)));
    return data;
  }
  static std::string keyOf(const Ref<HXNode>& node) { return node->uniqueKey().toStdString(); }
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
  const HXGroup& all = *document->subnodeGroup();
  const detail::GroupScene scene(all, detail::ConnectionIndex(all));
  for (const detail::NodeBox& box : scene.boxes) {
    EXPECT_THAT(data, HasSubstr("," + std::to_string(static_cast<int>(box.width)) + "," +
                                std::to_string(static_cast<int>(box.height)) + "],\"inputs\""));
  }
  const std::string symbolic = published->uniqueKey().toStdString();
  EXPECT_THAT(data,
              StartsWith(R"({"title":"Document","notes":["1 node has no patch."],"nodes":[)"));
  EXPECT_THAT(data, HasSubstr(R"({"key":")" + keyOf(group) + R"(","name":"G","group":")" +
                              group->subnodeGroup()->uniqueKey().toStdString() +
                              R"(","count":1,"color":"#555c68","box":[600.25,10,)"));
  EXPECT_THAT(data, HasSubstr(R"("inputs":[{"key":")" + symbolic +
                              R"(","name":"In","portGroup":"Published","color":"#555c68"}],)"
                              R"("outputs":[],"parameters":[]})"));
  EXPECT_THAT(data,
              HasSubstr(R"("name":"\u003c/M\u003e","patch":"HXRColorMixerNode",)"
                        R"("patchName":"Color Mixer","category":"Color","color":"#555c68",)"));
  EXPECT_THAT(data, HasSubstr(R"({"key":"Tarn.colorAInput","name":"Color A","color":"#555c68",)"
                              R"("value":"#000000","swatch":"#000000"})"));
  EXPECT_THAT(data, HasSubstr(R"("color":"#555c68","value":"0.25","set":true}],"outputs":[)"
                              R"({"key":"Tarn.colorOutput","name":"Color","color":"#555c68"}])"));
  EXPECT_THAT(data, HasSubstr(R"("complaint":"No patch")"));
  EXPECT_THAT(data, EndsWith(R"("wires":[{"from":[")" + keyOf(mixer) +
                             R"(","Tarn.colorOutput","\u003c/M\u003e","Color"],"to":[")" +
                             keyOf(group) + R"(",")" + symbolic + R"(","G","In"]}]})"));
  EXPECT_THAT(dataOf(*group->subnodeGroup()), HasSubstr(R"("published":"In"})"));
}

TEST_F(GraphPage, HiddenPortsAndParametersStandInTheData) {
  const auto view = place("HXRColorViewNode", {0, 0});
  for (const auto& each : view->inputPortGroups()) {
    if (each->groupKey() == "Masking") each->setHidden(true);
  }
  place("HXRSpring1DNode", {400, 0});
  const std::string data = dataOf(*document->subnodeGroup());
  EXPECT_THAT(data,
              HasSubstr(R"("portGroup":"Masking","hidden":true,"color":"#555c68","value":"off"})"));
  EXPECT_THAT(data, HasSubstr(R"("parameters":[{"name":"Dimensions","value":"1"}])"));
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
    EXPECT_THAT(page, HasSubstr("class=\"tk-picture\""));
    EXPECT_GT(report.width, 0);
    EXPECT_TRUE(report.notes.empty());
  }
}

}  // namespace

}  // namespace tarnkit::test
