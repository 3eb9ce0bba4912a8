#include "tests/render/PictureChecks.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "tarnkit/render/TextMetrics.h"

namespace tarnkit::test {

namespace {

constexpr double kHair = 0.011;  // numbers of a picture are rounded to hundredths

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

}  // namespace

Box boxOf(const Picture& picture, const Element& node) {
  const Element& body = picture.only("tk-body", &node);
  const LayoutPoint at = Picture::origin(body);
  return {at.x, at.y, at.x + body.number("width"), at.y + body.number("height")};
}

bool overlap(const Box& a, const Box& b) {
  return a.left < b.right && b.left < a.right && a.top < b.bottom && b.top < a.bottom;
}

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

void check(const Picture& picture) {
  for (const Element* node : picture.each("tk-node")) NodeCheck(picture, *node).run();
  checkWires(picture);
  checkFrame(picture);
  checkEdges(picture);
}

}  // namespace tarnkit::test
