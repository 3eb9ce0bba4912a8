#include <limits>

#include "tarnkit/model/HXConnection.h"
#include "tarnkit/model/HXPortGroup.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tarnkit/render/ConnectionIndex.h"
#include "tarnkit/render/GroupScene.h"
#include "tarnkit/render/HXGraphPicture.h"
#include "tests/render/PictureChecks.h"

namespace tarnkit::test {

namespace {

using detail::ConnectionIndex;
using detail::GroupScene;
using detail::NodeBox;
using ::testing::ElementsAre;

class PictureGeometry : public PictureTest {
 protected:
  /// Every kind of box, line and value, each at a place of its own.
  void fill() {
    const auto touch = place("HXRTouchInteractionNode", {-210.5F, 23}, nullptr, "T");
    const auto toggle = place("HXRSwitchNode", {217, 61}, nullptr, "On and off");
    const auto spring = place("HXRSpring1DNode", {483, -17});
    const auto mixer = place("HXRColorMixerNode", {471, 209}, nullptr, "A mixer of a long title");
    const auto view = place("HXRColorViewNode", {1003, 7});
    const auto clamp = place("HXRClampNode", {-190, 307}, nullptr,
                             "A name that is far too long to be shown whole in the bar of a box");
    place(nullptr, {211, 419});
    // Narrow ones: of one word, and of a title only.
    place("HXRPinNode", {20, 520}, nullptr, "C");
    placeGroup({720, 500}, nullptr, "Empty group with some words for a title");
    const auto group = placeGroup({733, 311}, nullptr, "Inner");
    fillGroup(group);
    // One whose heading is its widest line.
    const auto narrow = placeGroup({20, 700}, nullptr, "N");
    const auto pin = place("HXRPinNode", {5, 6}, narrow.get());
    for (const char* key : {"Tarn.input", "Tarn.output"}) {
      HXPort* const port = pin->portForKey(String(key));
      if (port) narrow->subnodeGroup()->addSymbolicPortForPort(*port)->setName(String("i"));
    }
    port(toggle, "Tarn.turnOnInput").setStaticValue(PMRPrimitive::primitiveWithBooleanValue(true));
    port(mixer, "Tarn.mixInput").setStaticValue(PMRPrimitive::primitiveWithNumberValue(1234.5F));
    for (const auto& each : spring->inputPortGroups()) {
      if (each->groupKey() == "Rest Position") each->setCollapsedCanvasGroup(true);
    }
    for (const auto& each : view->inputPortGroups()) {
      if (each->groupKey() == "Masking") each->setHidden(true);
    }
    connect(port(touch, "Tarn.downOutput"), port(toggle, "Tarn.toggleInput"));
    connect(port(toggle, "Tarn.valueOutput"), port(mixer, "Tarn.colorBInput"));
    connect(port(toggle, "Tarn.valueOutput"), port(view, "Tarn.maskedToBoundsInput"));
    connect(port(touch, "Tarn.interactionOutput"), port(view, "Tarn.interactionInput"));
    connect(port(clamp, "Tarn.resultOutput"), port(clamp, "Tarn.minimumInput"));
    connect(port(mixer, "Tarn.colorOutput"), port(view, "Tarn.colorInput"));
    connect(port(spring, "Tarn.position0Output"), published(group, true));
    connect(published(group, false), port(view, "Tarn.opacityInput"));
  }

  void fillGroup(const Ref<HXNode>& group) {
    const auto first = place("HXRClampNode", {13, 37}, group.get());
    const auto second = place("HXRTransitionNode", {300, -43}, group.get());
    connect(port(first, "Tarn.resultOutput"), port(second, "Tarn.input"));
    HXGroup& inside = *group->subnodeGroup();
    const auto amount = inside.addSymbolicPortForPort(port(first, "Tarn.valueInput"));
    amount->setName(String("Amount of it"));
    inside.addSymbolicPortForPort(port(first, "Tarn.maximumInput"));
    inside.addSymbolicPortForPort(port(first, "Tarn.minimumInput"));
    inside.addSymbolicPortForPort(port(second, "Tarn.output"));
  }

  static HXSymbolicPort& published(const Ref<HXNode>& group, bool input) {
    const auto& ports = input ? group->subnodeGroup()->symbolicInputPortsInForce()
                              : group->subnodeGroup()->symbolicOutputPortsInForce();
    return static_cast<HXSymbolicPort&>(*(*ports.begin()));
  }

  GroupScene scene() const {
    return GroupScene(*document->subnodeGroup(), ConnectionIndex(*document->subnodeGroup()));
  }
};

TEST_F(PictureGeometry, AllStandsWhereItBelongs) {
  fill();
  const Picture picture(*document->subnodeGroup());
  ASSERT_EQ(picture.each("tk-node").size(), 11U);
  ASSERT_EQ(picture.each("tk-wire").size(), 8U);
  ASSERT_EQ(picture.each("tk-collapsed").size(), 1U);
  ASSERT_FALSE(picture.root().has("data-laid-out"));
  check(picture);
  for (const auto& entry : document->subnodeGroup()->subnodesInForce()) {
    const LayoutPoint at = Picture::origin(picture.node(entry.value->uniqueKey().toStdString()));
    EXPECT_EQ(at.x, entry.value->position().x);
    EXPECT_EQ(at.y, entry.value->position().y);
    if (entry.value->name() == "Inner") {
      // Connected are also those that only something outside is connected to.
      std::vector<std::string> connected;
      const Picture inside(*entry.value->subnodeGroup());
      for (const Element* port : inside.each("tk-port")) {
        if (port->has("data-connected")) connected.push_back(port->at("data-port"));
      }
      EXPECT_THAT(connected,
                  ElementsAre("Tarn.valueInput", "Tarn.resultOutput", "Tarn.input", "Tarn.output"));
      check(Picture(*entry.value->subnodeGroup()));
    }
  }
}

TEST_F(PictureGeometry, WhatIsLaidOutKeepsApartAndRunsToTheRight) {
  fill();
  for (const auto& entry : document->subnodeGroup()->subnodesInForce()) {
    entry.value->setPosition({3, 4});
  }
  const Picture picture(*document->subnodeGroup());
  ASSERT_TRUE(picture.root().has("data-laid-out"));
  check(picture);
  const auto nodes = picture.each("tk-node");
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      EXPECT_FALSE(overlap(boxOf(picture, *nodes[i]), boxOf(picture, *nodes[j])));
    }
  }
  const auto nodeOf = [](const std::string& address) {
    return address.substr(0, address.find('/'));
  };
  for (const Element* wire : picture.each("tk-wire")) {
    const auto from = nodeOf(wire->at("data-from"));
    const auto to = nodeOf(wire->at("data-to"));
    if (from == to) continue;
    EXPECT_LT(boxOf(picture, picture.node(from)).right, boxOf(picture, picture.node(to)).left);
  }
}

TEST_F(PictureGeometry, BoxesMayTouchByAShadowAndNoMore) {
  const auto first = place("HXRClampNode", {0, 0});
  const auto second = place("HXRSpring1DNode", {0, 0});
  const GroupScene measured = scene();
  const auto width = static_cast<float>(measured.boxes.at(0).width);
  const auto height = static_cast<float>(measured.boxes.at(0).height);
  const auto otherWidth = static_cast<float>(measured.boxes.at(1).width);
  const auto otherHeight = static_cast<float>(measured.boxes.at(1).height);
  const std::pair<HXPoint, bool> cases[] = {
      {{width - 4, 0}, false},          {{width - 4.5F, 0}, true},
      {{0, height - 4}, false},         {{0, height - 4.5F}, true},
      {{4 - otherWidth, 0}, false},     {{4.5F - otherWidth, 0}, true},
      {{0, 4 - otherHeight}, false},    {{0, 4.5F - otherHeight}, true},
      {{width - 5, height - 5}, true},  {{width - 5, height - 4}, false},
      {{width - 4, height - 5}, false}, {{0, 5000}, false},
  };
  // Beside zero, where lines of a grid meet, and in the middle of nowhere.
  for (const HXPoint corner : {HXPoint{0, 0}, {-40, -30}, {512 - 40, 1024 - 30}, {-700, 70'000}}) {
    for (const auto& [at, overlaps] : cases) {
      first->setPosition(corner);
      second->setPosition({corner.x + at.x, corner.y + at.y});
      EXPECT_EQ(scene().laidOut, overlaps) << corner.x << ": " << at.x << ' ' << at.y;
    }
  }
}

TEST_F(PictureGeometry, PositionsThatCannotBeDrawnAreTold) {
  const auto first = place("HXRClampNode", {100'000, -100'000});
  EXPECT_TRUE(scene().notes.empty());
  const auto second = place("HXRClampNode", {100'000, -100'000});
  EXPECT_THAT(scene().notes, ElementsAre("Laid out by layers: all nodes stand on one spot."));
  first->setPosition({100'000, 100'000});
  EXPECT_TRUE(scene().notes.empty());
  first->setPosition({99'990, -100'000});
  EXPECT_THAT(scene().notes,
              ElementsAre("Laid out by layers: nodes overlap at their own positions."));
  constexpr float kNone = std::numeric_limits<float>::quiet_NaN();
  for (const HXPoint at :
       {HXPoint{100'010, 0}, {-100'010, 0}, {0, 100'010}, {0, kNone}, {kNone, 0}}) {
    first->setPosition(at);
    EXPECT_THAT(scene().notes,
                ElementsAre("Laid out by layers: a position is no number or too far out."));
  }
}

TEST_F(PictureGeometry, WhatIsMissingIsCounted) {
  const auto group = placeGroup({600, 0});
  const auto inner = place("HXRClampNode", {0, 0}, group.get());
  const auto outer = place("HXRClampNode", {0, 0});
  const auto notes = [](const HXGroup& of) { return GroupScene(of, ConnectionIndex(of)).notes; };
  place(nullptr, {0, 300});
  EXPECT_THAT(scene().notes, ElementsAre("1 node has no patch."));
  place(nullptr, {0, 600});
  EXPECT_THAT(scene().notes, ElementsAre("2 nodes have no patch."));
  connect(port(outer, "Tarn.resultOutput"), port(inner, "Tarn.valueInput"));
  EXPECT_THAT(notes(*group->subnodeGroup()), ElementsAre("1 connection leads out of the group."));
  connect(port(inner, "Tarn.resultOutput"), port(outer, "Tarn.minimumInput"));
  EXPECT_THAT(notes(*group->subnodeGroup()), ElementsAre("2 connections lead out of the group."));
}

TEST_F(PictureGeometry, WiresThatLeadOutAreShortAndOnesToTheirOwnBoxGoAroundIt) {
  const auto group = placeGroup({600, 100});
  const auto deep = placeGroup({30, 40}, group.get());
  const auto inner = place("HXRClampNode", {17, 29}, deep.get());
  const auto outer = place("HXRClampNode", {70, 50});
  connect(port(outer, "Tarn.resultOutput"), port(inner, "Tarn.maximumInput"));
  connect(port(inner, "Tarn.resultOutput"), port(outer, "Tarn.minimumInput"));
  connect(port(outer, "Tarn.resultOutput"), port(outer, "Tarn.valueInput"));
  const GroupScene top = scene();
  ASSERT_EQ(top.wires.size(), 3U);
  const NodeBox& groupBox = top.boxes.at(0);
  const NodeBox& clampBox = top.boxes.at(1);
  for (const detail::Wire& wire : top.wires) {
    const bool own = wire.fromBox == wire.toBox;
    if (own) {
      const double below = clampBox.y + clampBox.height + 14;
      ASSERT_EQ(wire.via.size(), 2U);
      EXPECT_EQ(wire.via[0].x, clampBox.x + clampBox.width);
      EXPECT_EQ(wire.via[1].x, clampBox.x);
      EXPECT_EQ(wire.via[0].y, below);
      EXPECT_EQ(wire.via[1].y, below);
    } else if (wire.fromBox == 0) {
      EXPECT_EQ(wire.from.x, groupBox.x + groupBox.width);
      EXPECT_EQ(wire.from.y, groupBox.y + 13);
      EXPECT_EQ(wire.to.y, clampBox.y + 59);
    } else {
      EXPECT_EQ(wire.to.x, groupBox.x);
      EXPECT_EQ(wire.to.y, groupBox.y + 13);
      EXPECT_EQ(wire.from.y, clampBox.y + 41);
    }
  }
  const HXGroup& below = *deep->subnodeGroup();
  const GroupScene inside(below, ConnectionIndex(below));
  const NodeBox& box = inside.boxes.at(0);
  ASSERT_EQ(inside.wires.size(), 2U);
  for (const detail::Wire& wire : inside.wires) {
    const bool leaves = wire.toBox < 0;
    EXPECT_EQ(wire.from.x, leaves ? box.x + box.width : box.x - 30);
    EXPECT_EQ(wire.to.x, leaves ? box.x + box.width + 30 : box.x);
    EXPECT_EQ(wire.from.y, box.y + (leaves ? 41 : 77));
    EXPECT_EQ(wire.to.y, wire.from.y);
  }
  const Picture picture(below);
  ASSERT_EQ(picture.each("tk-far").size(), 2U);
  for (const Element* far : picture.each("tk-far")) {
    const double x = far->number("cx");
    EXPECT_TRUE(x == box.x - 30 || x == box.x + box.width + 30) << x;
  }
  checkFrame(picture);
}

TEST_F(PictureGeometry, PublishedPortsStandAsNearToTheirOwnAsTheOthersLetThem) {
  const auto group = placeGroup({600, 100});
  const auto high = place("HXRClampNode", {20, 100}, group.get());
  const auto low = place("HXRClampNode", {320, 400}, group.get());
  HXGroup& inside = *group->subnodeGroup();
  // Their dots stand 18 apart, published ports 28: around their mean, in the order of the dots.
  for (const char* key : {"Tarn.maximumInput", "Tarn.valueInput", "Tarn.minimumInput"}) {
    inside.addSymbolicPortForPort(port(high, key));
  }
  inside.addSymbolicPortForPort(port(low, "Tarn.valueInput"));
  inside.addSymbolicPortForPort(port(low, "Tarn.resultOutput"));
  const GroupScene drawn(inside, ConnectionIndex(inside));
  std::vector<double> heights;
  for (const auto& edge : drawn.edgePorts) {
    heights.push_back(edge.y);
    const NodeBox& box = drawn.boxes.at(edge.inner.y < 300 ? 0 : 1);
    EXPECT_EQ(edge.inner.x, edge.isInput ? box.x : box.x + box.width);
  }
  EXPECT_THAT(heights, ElementsAre(131, 159, 187, 441, 441));
  EXPECT_EQ(drawn.edgePorts.at(1).inner.y, 159);
  check(Picture(inside));
}

TEST_F(PictureGeometry, APictureIsNamedAfterTheNodeThatHoldsTheGroup) {
  const auto titleOf = [](const HXNode& node) {
    return Picture(*node.subnodeGroup()).only("tk-caption").text;
  };
  EXPECT_EQ(titleOf(*document), "Document");
  document->setName(String("Top"));
  EXPECT_EQ(titleOf(*document), "Top");
  EXPECT_EQ(titleOf(*placeGroup({0, 0}, nullptr, "Named")), "Named");
  EXPECT_EQ(titleOf(*placeGroup({0, 0})), "Untitled");
}

TEST_F(PictureGeometry, AnEmptyGroupIsAPictureToo) {
  const Picture picture(*document->subnodeGroup());
  EXPECT_EQ(picture.root().at("viewBox"), "-192 -138 384 230");
  EXPECT_EQ(picture.only("tk-empty").number("x"), 0);
  EXPECT_EQ(picture.only("tk-empty").number("y"), 0);
  EXPECT_EQ(picture.only("tk-counts").text, "0 nodes · 0 connections");
  const auto node = place("HXRClampNode", {0, 0});
  connect(port(node, "Tarn.resultOutput"), port(node, "Tarn.valueInput"));
  HXPictureReport report;
  HXPictureOptions options;
  options.caption = false;
  const std::string svg = graphPicture(*document->subnodeGroup(), options, &report);
  const auto view = Picture::numbers(Picture(svg).root().at("viewBox"));
  EXPECT_EQ(view.at(1), -32);
  EXPECT_EQ(report.width, view.at(2));
  EXPECT_EQ(report.height, view.at(3));
  EXPECT_EQ(Picture(*document->subnodeGroup()).only("tk-counts").text, "1 node · 1 connection");
}

}  // namespace

}  // namespace tarnkit::test
