#include <gtest/gtest.h>

#include "tarnkit/render/WirePath.h"

namespace tarnkit::detail {

namespace {

// Worked out by hand: a curve reaches half the way along, at least 16 and at most 160; one that
// turns back 40 and a little more the farther it goes, at most 180.
TEST(WirePath, CurvesReachAsFarAsTheirWayIsLong) {
  struct Case {
    LayoutPoint to;
    double reach;
  };
  const Case cases[] = {{{100, 0}, 50},      {{100, 30}, 50},    {{30, 200}, 30},
                        {{30, -200}, 30},    {{40, 50}, 25},     {{24, 0}, 16},
                        {{24, 40}, 20},      {{1000, 0}, 160},   {{23, 10}, 43.76},
                        {{-100, 200}, 72},   {{-100, -200}, 72}, {{0, 0}, 40},
                        {{-1000, -500}, 180}};
  for (const Case& c : cases) {
    const auto to = c.to;
    const double reach = c.reach;
    SCOPED_TRACE(std::to_string(to.x) + " " + std::to_string(to.y));
    const LayoutPoint from{7, -11};
    const LayoutPoint end{from.x + to.x, from.y + to.y};
    int pieces = 0;
    eachWirePiece(from, end, {}, [&](const WirePiece& piece) {
      ++pieces;
      EXPECT_FALSE(piece.isStraight);
      EXPECT_DOUBLE_EQ(piece.firstControl.x, from.x + reach);
      EXPECT_DOUBLE_EQ(piece.firstControl.y, from.y);
      EXPECT_DOUBLE_EQ(piece.secondControl.x, end.x - reach);
      EXPECT_DOUBLE_EQ(piece.secondControl.y, end.y);
      EXPECT_EQ(piece.end.x, end.x);
      EXPECT_EQ(piece.end.y, end.y);
    });
    EXPECT_EQ(pieces, 1);
  }
}

TEST(WirePath, BetweenPairsOfPointsALineRunsLevelEitherWay) {
  struct Case {
    LayoutPoint from, to;
    std::vector<LayoutPoint> via;
    std::vector<double> controls;  // x of the curves' controls
  };
  const Case cases[] = {
      {{0, 0}, {300, 50}, {{100, 20}, {200, 20}}, {50, 50, 250, 250}},
      // Around below a box: out to the right, back, and in from the left.
      {{100, 40}, {0, 60}, {{100, 114}, {0, 114}}, {147.4, 147.4, -45.4, -45.4}},
      // A level piece of no length goes the way that the whole line goes.
      {{0, 0}, {200, 0}, {{100, 10}, {100, 10}}, {50, 50, 150, 150}},
      {{200, 0}, {0, 0}, {{100, 10}, {100, 10}}, {253, 153, 47, -53}},
      {{0, 0}, {500, 0}, {{100, 0}, {200, 0}, {300, 0}, {400, 0}}, {50, 50, 250, 250, 450, 450}},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(each.via.front().y);
    std::vector<double> controls;
    std::vector<LayoutPoint> ends;
    LayoutPoint at = each.from;
    eachWirePiece(each.from, each.to, each.via, [&](const WirePiece& piece) {
      EXPECT_EQ(piece.isStraight, ends.size() % 2 == 1);
      if (!piece.isStraight) {
        controls.push_back(piece.firstControl.x);
        controls.push_back(piece.secondControl.x);
        EXPECT_EQ(piece.firstControl.y, at.y);
        EXPECT_EQ(piece.secondControl.y, piece.end.y);
      }
      ends.push_back(at = piece.end);
    });
    ASSERT_EQ(ends.size(), each.via.size() + 1);
    for (std::size_t i = 0; i < each.via.size(); ++i) {
      EXPECT_EQ(ends[i].x, each.via[i].x);
      EXPECT_EQ(ends[i].y, each.via[i].y);
    }
    EXPECT_EQ(ends.back().x, each.to.x);
    ASSERT_EQ(controls.size(), each.controls.size());
    for (std::size_t i = 0; i < controls.size(); ++i) {
      EXPECT_DOUBLE_EQ(controls[i], each.controls[i]) << i;
    }
  }
}

}  // namespace

}  // namespace tarnkit::detail
