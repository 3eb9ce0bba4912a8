#include <algorithm>
#include <cmath>
#include <limits>

#include "tarnkit/model/HXConnection.h"
#include "tarnkit/model/HXPortGroup.h"
#include "tarnkit/model/HXSymbolicPort.h"
#include "tarnkit/render/ConnectionIndex.h"
#include "tarnkit/render/GroupScene.h"
#include "tarnkit/render/HXGraphPicture.h"
#include "tarnkit/render/TextMetrics.h"
#include "tests/render/PictureFixture.h"

namespace tarnkit::test {

namespace {

using detail::ConnectionIndex;
using detail::GroupScene;
using detail::NodeBox;
using ::testing::ElementsAre;

constexpr double kHair = 0.011;  // numbers of a picture are rounded to hundredths

struct Box {
  double left, top, right, bottom;
};

Box boxOf(const Picture& picture, const Element& node) {
  const Element& body = picture.only("tk-body", &node);
  const LayoutPoint at = Picture::origin(body);
  return {at.x, at.y, at.x + body.number("width"), at.y + body.number("height")};
}

bool overlap(const Box& a, const Box& b) {
  return a.left < b.right && b.left < a.right && a.top < b.bottom && b.top < a.bottom;
}

/// The one line of a node's box: what stands at its left and at its right.
struct Row {
  std::vector<Span> left;
  Span right{1e9, 1e9};
};

/// That a node's box holds all that is drawn in it, line by line, and no more than it needs.
class NodeCheck {
 public:
  NodeCheck(const Picture& picture, const Element& node)
      : picture_(picture),
        node_(node),
        width_(picture.only("tk-body", &node).number("width")),
        height_(picture.only("tk-body", &node).number("height")) {}

  void run() {
    SCOPED_TRACE(node_.at("data-node"));
    for (const char* kind : {"tk-port", "tk-group", "tk-collapsed"}) {
      for (const Element* line : picture_.each(kind, &node_)) checkLine(*line);
    }
    checkRows();
    checkHead();
    double needed = std::max({100.0, head_ + 24, complaint_ + 24});
    const double gap = left_ > 0 && right_ > 0 ? 18 : 0;
    needed = std::max(needed, left_ + gap + right_ + 24);
    EXPECT_EQ(width_, std::ceil(needed - 1e-6));
  }

 private:
  void checkLine(const Element& line) {
    const bool isInput = line.at("data-orientation") == "input";
    const double edge = isInput ? 0 : width_;
    double y = 0;
    double chevron = 0;
    if (line.isOf("tk-port")) {
      y = picture_.only("tk-dot", &line).number("cy");
      for (const Element* dot : picture_.each("tk-dot", &line)) checkDot(*dot, edge, y, 4);
      for (const Element* ring : picture_.each("tk-ring", &line)) checkDot(*ring, edge, y, 7);
      const bool published = line.has("data-published");
      EXPECT_EQ(picture_.each("tk-ring", &line).size(), published ? 1U : 0U);
      EXPECT_NE(picture_.only("tk-dot", &line).isOf("tk-open"),
                published || line.has("data-connected"));
    } else {
      y = picture_.only("tk-heading", &line).number("y") - 4;
      if (line.isOf("tk-collapsed")) {
        checkDot(picture_.only("tk-many", &line), edge, y, 4);
        const auto points = Picture::vertices(picture_.only("tk-chevron", &line));
        EXPECT_EQ(points.at(0).x, isInput ? 13 : width_ - 16);
        EXPECT_EQ(points.at(1).y, y);
        chevron = 10;
      }
    }
    const Element& name = picture_.only(line.isOf("tk-port") ? "tk-name" : "tk-heading", &line);
    EXPECT_EQ(name.number("x"), isInput ? 12 + chevron : width_ - 12 - chevron);
    EXPECT_EQ(name.number("y"), y + 4);
    EXPECT_EQ(name.has("text-anchor"), !isInput);
    const Span extent = Picture::extent(name);
    Row& row = rows_[isInput ? 0 : 1][y];
    if (isInput) {
      // A heading's room has a chevron in it whether one is drawn or not.
      const bool isPort = line.isOf("tk-port");
      row.left.push_back(isPort ? extent : Span{12, 22 + extent.to - extent.from});
      if (isPort) names_ = std::max(names_, extent.to - extent.from);
      checkValue(line, y, row);
      left_ = std::max(left_, row.left.back().to - 12);
    } else {
      row.right = {extent.from, width_ - 12};
      right_ = std::max(right_, width_ - 12 - extent.from);
    }
  }

  void checkDot(const Element& dot, double x, double y, double radius) {
    EXPECT_EQ(dot.number("cx"), x);
    EXPECT_EQ(dot.number("cy"), y);
    EXPECT_EQ(dot.number("r"), radius);
  }

  void checkValue(const Element& line, double y, Row& row) {
    const auto inTheMiddle = [&](const Element& box) {
      EXPECT_EQ(box.number("y") + box.number("height") / 2, y);
      values_.push_back(box.number("x"));
      row.left.push_back({box.number("x"), box.number("x") + box.number("width")});
    };
    for (const Element* chip : picture_.each("tk-chip", &line)) {
      inTheMiddle(*chip);
      const Element& value = picture_.only("tk-value", &line);
      const Span extent = Picture::extent(value);
      EXPECT_NEAR(extent.from, chip->number("x") + 5, kHair);
      EXPECT_NEAR(extent.to, chip->number("x") + chip->number("width") - 5, kHair);
      EXPECT_EQ(value.number("y"), y + 3.5);
    }
    for (const Element* track : picture_.each("tk-switch", &line)) {
      inTheMiddle(*track);
      const Element& knob = picture_.only("tk-knob", &line);
      const bool on = track->isOf("tk-on");
      EXPECT_EQ(knob.number("cx") - track->number("x"), on ? 14 : 6);
      EXPECT_EQ(knob.number("cy"), y);
    }
    const auto swatches = picture_.each("tk-swatch", &line);
    if (swatches.empty()) return;
    ASSERT_EQ(swatches.size(), 2U);
    EXPECT_EQ(swatches[0]->at("fill"), "#ffffff");
    EXPECT_FALSE(swatches[0]->has("fill-opacity"));
    EXPECT_TRUE(swatches[1]->has("fill-opacity"));
    inTheMiddle(*swatches[0]);
    inTheMiddle(*swatches[1]);
    row.left.pop_back();
  }

  void checkRows() {
    std::size_t lines = picture_.each("tk-warn", &node_).size();
    const std::size_t complaints = lines;
    for (const auto& side : rows_) {
      double y = 41;  // behind the title and a little air
      for (const auto& [at, row] : side) {
        EXPECT_EQ(at, y);
        y += 18;
      }
      lines = std::max(lines, side.size() + complaints);
    }
    EXPECT_EQ(height_, lines == 0 ? 26 : 26 + 6 + 18.0 * static_cast<double>(lines) + 6);
    for (const double x : values_) EXPECT_NEAR(x, 12 + names_ + 8, kHair);
    for (const auto& [y, row] : rows_[0]) {
      const auto across = rows_[1].find(y);
      const double limit = across == rows_[1].end() ? width_ - 12 : across->second.right.from - 18;
      for (const Span& part : row.left) EXPECT_LE(part.to, limit + 1e-6);
    }
    for (const Element* complaint : picture_.each("tk-warn", &node_)) {
      EXPECT_EQ(complaint->number("x"), 12);
      EXPECT_EQ(complaint->number("y"), height_ - 6 - 9 + 3.5);
      const Span extent = Picture::extent(*complaint);
      complaint_ = extent.to - extent.from;
    }
  }

  void checkHead() {
    const Element& title = picture_.only("tk-title", &node_);
    EXPECT_EQ(title.number("x"), 12);
    EXPECT_EQ(title.number("y"), 17.5);
    const Span extent = Picture::extent(title);
    head_ = extent.to - extent.from;
    for (const Element* badge : picture_.each("tk-badge", &node_)) {
      const double left = badge->number("x");
      EXPECT_NEAR(left + badge->number("width"), width_ - 9, kHair);
      EXPECT_EQ(badge->number("y") + badge->number("height") / 2, 13);
      EXPECT_EQ(picture_.only("tk-count", &node_).text, node_.at("data-count"));
      const Span count = Picture::extent(picture_.only("tk-count", &node_));
      EXPECT_NEAR(count.from - left, 7, kHair);
      EXPECT_NEAR(left + badge->number("width") - count.to, 7, kHair);
      EXPECT_GE(left - extent.to, 8 - kHair);
      head_ += badge->number("width") + 8;
      const Element& stack = picture_.only("tk-stack", &node_);
      EXPECT_EQ(stack.number("width"), width_);
      EXPECT_EQ(stack.number("height"), height_);
    }
    double right = -1e9;
    double bottom = -1e9;
    const auto bar = Picture::vertices(picture_.only("tk-bar", &node_));
    for (const LayoutPoint& point : bar) {
      EXPECT_GE(point.x, 0);
      EXPECT_GE(point.y, 0);
      right = std::max(right, point.x);
      bottom = std::max(bottom, point.y);
    }
    EXPECT_EQ(right, width_);
    EXPECT_EQ(bottom, 26);
    // All corners are round of a box that is its title bar, only the upper ones of another.
    const std::string& d = picture_.only("tk-bar", &node_).at("d");
    EXPECT_EQ(std::count(d.begin(), d.end(), 'a'), height_ == 26 ? 4 : 2);
    EXPECT_NEAR(bar.front().x, bar.back().x, kHair);
    EXPECT_NEAR(bar.back().y, 7, kHair);
  }

  const Picture& picture_;
  const Element& node_;
  double width_;
  double height_;
  std::map<double, Row> rows_[2];  // by height
  std::vector<double> values_;
  double names_ = 0;
  double left_ = 0;
  double right_ = 0;
  double head_ = 0;
  double complaint_ = 0;
};

/// Where a wire must end: the middle of the port's dot, else of its collapsed group's, else of the
/// title bar.
LayoutPoint endOf(const Picture& picture, const std::string& address, bool isOutput) {
  const auto slash = address.find('/');
  const Element& node = picture.node(address.substr(0, slash));
  const Box box = boxOf(picture, node);
  const char* const side = isOutput ? "output" : "input";
  LayoutPoint end{isOutput ? box.right : box.left, box.top + 13};
  for (const Element* port : picture.each("tk-port", &node)) {
    if (port->at("data-port") != address.substr(slash + 1)) continue;
    EXPECT_EQ(port->at("data-orientation"), side);
    end.y = box.top + picture.only("tk-dot", port).number("cy");
  }
  return end;
}

void checkWires(const Picture& picture) {
  for (const Element* wire : picture.each("tk-wire")) {
    SCOPED_TRACE(wire->at("data-from") + " " + wire->at("data-to"));
    const auto points = Picture::vertices(*wire);
    const LayoutPoint from = endOf(picture, wire->at("data-from"), true);
    const LayoutPoint to = endOf(picture, wire->at("data-to"), false);
    EXPECT_NEAR(points.front().x, from.x, kHair);
    EXPECT_NEAR(points.front().y, from.y, kHair);
    EXPECT_NEAR(points.back().x, to.x, kHair);
    EXPECT_NEAR(points.back().y, to.y, kHair);
    // It leaves level and to the right, and arrives so.
    const auto all = Picture::numbers(wire->at("d"));
    EXPECT_GT(all.at(2), all.at(0));
    EXPECT_EQ(all.at(3), all.at(1));
    EXPECT_LT(all.at(all.size() - 4), all.at(all.size() - 2));
    EXPECT_EQ(all.at(all.size() - 3), all.at(all.size() - 1));
  }
}

/// That the picture has the given air around all that is drawn, and no more.
void checkFrame(const Picture& picture) {
  Box all{1e9, 1e9, -1e9, -1e9};
  const auto include = [&](double x, double y) {
    all = {std::min(all.left, x), std::min(all.top, y), std::max(all.right, x),
           std::max(all.bottom, y)};
  };
  for (const Element* node : picture.each("tk-node")) {
    const Box box = boxOf(picture, *node);
    include(box.left, box.top);
    include(box.right, box.bottom);
  }
  for (const Element* wire : picture.each("tk-wire")) {
    for (const Picture::Curve& curve : Picture::curves(*wire)) {
      include(curve.from.x + 0.75 * (curve.firstControl.x - curve.from.x), curve.from.y);
      include(curve.to.x + 0.75 * (curve.secondControl.x - curve.to.x), curve.to.y);
    }
  }
  for (const Element* far : picture.each("tk-far")) {
    include(far->number("cx") - 6, far->number("cy"));
    include(far->number("cx") + 6, far->number("cy"));
  }
  for (const Element* tab : picture.each("tk-tab")) {
    for (const LayoutPoint& point : Picture::vertices(*tab)) include(point.x, point.y);
  }
  for (const Element* edge : picture.each("tk-frame")) {
    EXPECT_NEAR(edge->number("y"), all.top - 32, kHair);
    EXPECT_NEAR(edge->number("y") + edge->number("height"), all.bottom + 32, kHair);
    EXPECT_NEAR(edge->number("x"), all.left, kHair);  // the tabs stand on it
    EXPECT_NEAR(edge->number("x") + edge->number("width"), all.right, kHair);
    all.top -= 32;
    all.bottom += 32;
  }
  const auto view = Picture::numbers(picture.root().at("viewBox"));
  const auto notes = picture.each("tk-note");
  EXPECT_NEAR(view.at(0), std::floor(all.left - 32 + 0.005), kHair);
  EXPECT_NEAR(view.at(1), std::floor(all.top - 32 - 46 + 0.005), kHair);
  const double bottom =
      std::ceil(all.bottom + 32 - 0.005) + 18.0 * static_cast<double>(notes.size());
  EXPECT_NEAR(view.at(1) + view.at(3), bottom, 1.01);
  double right = std::max(all.right + 32, all.left - 32 + 320);
  for (std::size_t i = 0; i < notes.size(); ++i) {
    right = std::max(right, all.left + 32 + detail::textWidth(notes[i]->text, {11, false}));
    EXPECT_NEAR(notes[i]->number("x"), view.at(0) + 32, kHair);
    // The last stands within the lower margin, the others above it.
    EXPECT_NEAR(view.at(1) + view.at(3) - notes[i]->number("y"),
                24 + 18.0 * static_cast<double>(notes.size() - 1 - i), kHair);
  }
  EXPECT_NEAR(view.at(0) + view.at(2), std::ceil(right), 1.01);
  const Element& canvas = picture.only("tk-canvas");
  EXPECT_EQ(canvas.number("x"), view.at(0));
  EXPECT_EQ(canvas.number("y"), view.at(1));
  for (const Element* whole : {&canvas, &picture.root()}) {
    EXPECT_EQ(whole->number("width"), view.at(2));
    EXPECT_EQ(whole->number("height"), view.at(3));
  }
  EXPECT_EQ(picture.only("tk-caption").number("x"), view.at(0) + 32);
  EXPECT_EQ(picture.only("tk-caption").number("y"), view.at(1) + 36);
  EXPECT_EQ(picture.only("tk-counts").number("y"), view.at(1) + 54);
}

void checkEdges(const Picture& picture) {
  double inputs = 0;
  double outputs = 0;
  std::map<bool, double> last;
  for (const Element* edge : picture.each("tk-edge")) {
    const bool isInput = edge->at("data-orientation") == "input";
    const double sign = isInput ? 1 : -1;
    const auto tab = Picture::vertices(picture.only("tk-tab", edge));
    const Element& frame = picture.only("tk-frame");
    const double at = frame.number("x") + (isInput ? 0 : frame.number("width"));
    const Element& name = picture.only("tk-name", edge);
    const Span extent = Picture::extent(name);
    const double width = extent.to - extent.from + 20;
    const double tip = at + sign * width;
    const double y = tab.front().y + 11;
    EXPECT_NEAR(tab.front().x, at, kHair);
    EXPECT_NEAR(tab.at(2).x, tip, 2 * kHair);
    EXPECT_NEAR(tab.at(tab.size() - 2).y, y + 11, kHair);
    EXPECT_NEAR(tab.back().x, at, 2 * kHair);
    EXPECT_NEAR(isInput ? extent.from - at : at - extent.to, 10, kHair);
    EXPECT_NEAR(name.number("y"), y + 4, kHair);
    const Element& dot = picture.only("tk-dot", edge);
    EXPECT_NEAR(dot.number("cx"), tip, kHair);
    EXPECT_NEAR(dot.number("cy"), y, kHair);
    // From above to below, and never upon each other.
    const auto above = last.find(isInput);
    if (above != last.end()) {
      EXPECT_GE(y - above->second, 28 - kHair);
    }
    last[isInput] = y;
    double& room = isInput ? inputs : outputs;
    room = std::max(room, width);
  }
  // Between the widest tab and what is inside there is room for the lines.
  double left = 1e9;
  double right = -1e9;
  for (const Element* node : picture.each("tk-node")) {
    left = std::min(left, boxOf(picture, *node).left);
    right = std::max(right, boxOf(picture, *node).right);
  }
  for (const Element* frame : picture.each("tk-frame")) {
    const double room[] = {left - frame->number("x"),
                           frame->number("x") + frame->number("width") - right};
    EXPECT_NEAR(room[0], inputs > 0 ? inputs + 56 : 32, kHair);
    EXPECT_NEAR(room[1], outputs > 0 ? outputs + 56 : 32, kHair);
  }
}

void check(const Picture& picture) {
  for (const Element* node : picture.each("tk-node")) NodeCheck(picture, *node).run();
  checkWires(picture);
  checkFrame(picture);
  checkEdges(picture);
}

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
