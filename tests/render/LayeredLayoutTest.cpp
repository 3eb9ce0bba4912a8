#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "tarnkit/render/LayeredLayout.h"

namespace tarnkit::detail {

namespace {

using ::testing::ElementsAre;

struct Graph {
  std::vector<LayoutItem> items;
  std::vector<LayoutEdge> edges;
};

// With cycles, edges from a box to itself, and several between the same two.
Graph randomGraph(unsigned seed, std::uint32_t count, std::uint32_t edgeCount) {
  std::mt19937 random(seed);
  const auto below = [&](std::uint32_t limit) {
    return static_cast<std::uint32_t>(random() % limit);
  };
  Graph graph;
  for (std::uint32_t i = 0; i < count; ++i) {
    graph.items.push_back({100.0 + below(150), 26.0 + below(300), 0, 0});
  }
  for (std::uint32_t i = 0; i < edgeCount; ++i) {
    const std::uint32_t from = below(count);
    const std::uint32_t to = below(count);
    graph.edges.push_back({from, to, graph.items[from].height / 2, 13, {}});
  }
  return graph;
}

bool overlap(const LayoutItem& a, const LayoutItem& b) {
  return a.x < b.x + b.width && b.x < a.x + a.width && a.y < b.y + b.height && b.y < a.y + a.height;
}

// The straight lines between the ends that cross each other.
int crossings(const Graph& graph) {
  const auto side = [](LayoutPoint a, LayoutPoint b, LayoutPoint c) {
    return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x) > 0;
  };
  int count = 0;
  const auto ends = [&](const LayoutEdge& edge) {
    const LayoutItem& from = graph.items[edge.from];
    const LayoutItem& to = graph.items[edge.to];
    return std::pair{LayoutPoint{from.x + from.width, from.y + edge.fromY},
                     LayoutPoint{to.x, to.y + edge.toY}};
  };
  for (std::size_t i = 0; i < graph.edges.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      const auto a = ends(graph.edges[i]);
      const auto b = ends(graph.edges[j]);
      count += side(a.first, a.second, b.first) != side(a.first, a.second, b.second) &&
               side(b.first, b.second, a.first) != side(b.first, b.second, a.second);
    }
  }
  return count;
}

TEST(LayeredLayout, BoxesNeverOverlapAndTheSameGraphLooksTheSame) {
  for (unsigned seed = 1; seed <= 40; ++seed) {
    SCOPED_TRACE(seed);
    Graph graph = randomGraph(seed, 1 + seed * 2, seed % 5 * seed);
    Graph again = graph;
    layOutByLayers(graph.items, graph.edges);
    layOutByLayers(again.items, again.edges);
    double left = 1e9;
    double top = 1e9;
    for (std::size_t i = 0; i < graph.items.size(); ++i) {
      const LayoutItem& item = graph.items[i];
      EXPECT_TRUE(std::isfinite(item.x) && std::isfinite(item.y));
      EXPECT_EQ(item.x, again.items[i].x);
      EXPECT_EQ(item.y, again.items[i].y);
      left = std::min(left, item.x);
      top = std::min(top, item.y);
      for (std::size_t j = 0; j < i; ++j) {
        EXPECT_FALSE(overlap(item, graph.items[j])) << i << ' ' << j;
      }
    }
    for (const LayoutEdge& edge : graph.edges) {
      for (const LayoutPoint& point : edge.via) top = std::min(top, point.y);
    }
    EXPECT_NEAR(left, 0, 1e-6);
    EXPECT_NEAR(top, 0, 1e-6);
  }
}

TEST(LayeredLayout, LinesOfAGraphWithoutCyclesRunToTheRight) {
  Graph graph = randomGraph(7, 60, 120);
  for (LayoutEdge& edge : graph.edges) {
    if (edge.from > edge.to) std::swap(edge.from, edge.to);
    if (edge.from == edge.to) edge.to = edge.from == 0 ? 1 : 0;
    if (edge.from > edge.to) std::swap(edge.from, edge.to);
  }
  layOutByLayers(graph.items, graph.edges);
  for (const LayoutEdge& edge : graph.edges) {
    const LayoutItem& from = graph.items[edge.from];
    double x = from.x + from.width;
    for (const LayoutPoint& point : edge.via) {
      EXPECT_GE(point.x, x);
      x = point.x;
    }
    EXPECT_LT(x, graph.items[edge.to].x);
    // What runs past boxes does not run over them.
    for (std::size_t i = 0; i + 1 < edge.via.size(); i += 2) {
      for (const LayoutItem& item : graph.items) {
        EXPECT_FALSE(edge.via[i].x < item.x + item.width && item.x < edge.via[i + 1].x &&
                     edge.via[i].y > item.y && edge.via[i].y < item.y + item.height);
      }
    }
  }
}

TEST(LayeredLayout, LinesThatNeedNotCrossDoNot) {
  // A tree whose branches stand in a mixed order, and two rows joined in reverse.
  Graph tree;
  for (int i = 0; i < 31; ++i) tree.items.push_back({120, 60, 0, 0});
  for (std::uint32_t i = 1; i < 31; ++i) {
    const std::uint32_t child = 1 + (i * 7) % 30;
    tree.edges.push_back({(child - 1) / 2, child, 30, 30, {}});
  }
  Graph rows;
  for (int i = 0; i < 20; ++i) rows.items.push_back({120, 60, 0, 0});
  for (std::uint32_t i = 0; i < 10; ++i) {
    rows.edges.push_back({i, 19 - i, 30, 20, {}});
    if (i > 0) rows.edges.push_back({i, 20 - i, 20, 40, {}});
  }
  for (Graph* graph : {&tree, &rows}) {
    layOutByLayers(graph->items, graph->edges);
    EXPECT_EQ(crossings(*graph), 0);
  }
}

std::vector<double> columns(const Graph& graph) {
  std::vector<double> x;
  for (const LayoutItem& item : graph.items) x.push_back(item.x);
  return x;
}

TEST(LayeredLayout, ColumnsStandApartAndLinesRunLevel) {
  // Between columns stands a gap of 64, and 1.5 more for each line that leaves the left one.
  Graph chain{{{120, 50, 0, 0}, {80, 90, 0, 0}, {60, 30, 0, 0}},
              {{0, 1, 10, 70, {}}, {1, 2, 20, 15, {}}}};
  layOutByLayers(chain.items, chain.edges);
  EXPECT_THAT(columns(chain), ElementsAre(0, 185.5, 331));
  EXPECT_NEAR(chain.items[0].y, 60, 1e-6);
  EXPECT_NEAR(chain.items[1].y, 0, 1e-6);
  EXPECT_NEAR(chain.items[2].y, 5, 1e-6);
  EXPECT_TRUE(chain.edges[0].via.empty());

  // Two that pull a third evenly stand 26 apart with it in their middle; the widest makes a column.
  Graph fan{{{100, 40, 0, 0}, {70, 60, 0, 0}, {90, 20, 0, 0}, {50, 10, 0, 0}},
            {{0, 1, 20, 30, {}}, {0, 2, 20, 10, {}}, {2, 3, 5, 5, {}}}};
  layOutByLayers(fan.items, fan.edges);
  EXPECT_THAT(columns(fan), ElementsAre(0, 167, 167, 167 + 90 + 65.5));
  EXPECT_NEAR(fan.items[2].y, fan.items[1].y + 60 + 26, 1e-6);
  EXPECT_NEAR(fan.items[3].y, fan.items[2].y, 1e-6);
  EXPECT_GT(fan.items[0].y, fan.items[1].y);
  EXPECT_LT(fan.items[0].y + 40, fan.items[2].y + 20);

  // However many lines there are, no more than 72 is added.
  Graph wide{{{100, 400, 0, 0}, {100, 400, 0, 0}}, {}};
  for (int i = 0; i < 100; ++i) wide.edges.push_back({0, 1, 4.0 * i, 4.0 * i, {}});
  layOutByLayers(wide.items, wide.edges);
  EXPECT_EQ(wide.items[1].x, 100 + 64 + 72);
}

TEST(LayeredLayout, LongLinesPassTheBoxesBetweenTheirEnds) {
  Graph graph{{{100, 40, 0, 0}, {80, 60, 0, 0}, {100, 40, 0, 0}},
              {{0, 1, 20, 30, {}}, {1, 2, 30, 20, {}}, {0, 2, 30, 30, {}}}};
  layOutByLayers(graph.items, graph.edges);
  const LayoutItem& between = graph.items[1];
  const auto& via = graph.edges[2].via;
  ASSERT_EQ(via.size(), 2U);
  EXPECT_EQ(via[0].x, between.x);
  EXPECT_EQ(via[1].x, between.x + 80);
  EXPECT_EQ(via[0].y, via[1].y);
  const double air = std::max(between.y - via[0].y, via[0].y - between.y - 60);
  EXPECT_NEAR(air, 12, 1e-6);

  // One that would pass more than ten layers keeps no places in them.
  Graph chain;
  for (int i = 0; i < 13; ++i) chain.items.push_back({50, 30, 0, 0});
  for (std::uint32_t i = 0; i + 1 < 13; ++i) chain.edges.push_back({i, i + 1, 15, 15, {}});
  chain.edges.push_back({0, 10, 20, 20, {}});
  chain.edges.push_back({1, 12, 20, 20, {}});
  layOutByLayers(chain.items, chain.edges);
  EXPECT_EQ(chain.edges[12].via.size(), 18U);
  EXPECT_TRUE(chain.edges[13].via.empty());
}

TEST(LayeredLayout, WhatClosesACircleRunsBackAndWhatFeedsStandsBesideWhatItFeeds) {
  Graph circle{{{100, 40, 0, 0}, {100, 40, 0, 0}, {100, 40, 0, 0}},
               {{0, 1, 20, 20, {}}, {1, 2, 20, 20, {}}, {2, 0, 30, 30, {}}}};
  layOutByLayers(circle.items, circle.edges);
  EXPECT_LT(circle.items[0].x, circle.items[1].x);
  EXPECT_LT(circle.items[1].x, circle.items[2].x);
  // The line back is given in its own direction: from the right to the left.
  const auto& back = circle.edges[2].via;
  ASSERT_EQ(back.size(), 2U);
  EXPECT_EQ(back[0].x, circle.items[1].x + 100);
  EXPECT_EQ(back[1].x, circle.items[1].x);

  Graph feeding;
  for (int i = 0; i < 6; ++i) feeding.items.push_back({100, 40, 0, 0});
  for (std::uint32_t i = 0; i + 1 < 4; ++i) feeding.edges.push_back({i, i + 1, 20, 20, {}});
  feeding.edges.push_back({4, 3, 20, 20, {}});  // has time until the last column but one
  feeding.edges.push_back({0, 5, 20, 20, {}});  // and this one none to wait for
  layOutByLayers(feeding.items, feeding.edges);
  EXPECT_EQ(feeding.items[4].x, feeding.items[2].x);
  EXPECT_EQ(feeding.items[5].x, feeding.items[1].x);
}

TEST(LayeredLayout, PartsStandBesideEachOtherTheLargestFirst) {
  Graph single;
  for (int i = 0; i < 3; ++i) single.items.push_back({100, 50, 0, 0});
  layOutByLayers(single.items, single.edges);
  const std::pair<double, double> places[] = {{0, 0}, {140, 0}, {0, 90}};
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(single.items[i].x, places[i].first);
    EXPECT_EQ(single.items[i].y, places[i].second);
  }

  Graph mixed;
  for (int i = 0; i < 4; ++i) mixed.items.push_back({100, 50.0 + i, 0, 0});
  mixed.edges.push_back({2, 3, 10, 10, {}});
  layOutByLayers(mixed.items, mixed.edges);
  EXPECT_EQ(mixed.items[2].x, 0);
  EXPECT_EQ(mixed.items[2].y, 0);
  EXPECT_EQ(mixed.items[0].y, 53 + 40);
  EXPECT_EQ(mixed.items[1].x, 140);
}

TEST(LayeredLayout, ALongChainIsFoldedIntoLines) {
  // Columns are 215.5 apart; of a chain of 1000 a line holds 39, and below it stands a gap of 72.
  Graph chain;
  for (int i = 0; i < 1000; ++i) chain.items.push_back({150, 80, 0, 0});
  for (std::uint32_t i = 0; i + 1 < 1000; ++i) chain.edges.push_back({i, i + 1, 40, 40, {}});
  layOutByLayers(chain.items, chain.edges);
  for (std::size_t i = 0; i < 1000; ++i) {
    EXPECT_NEAR(chain.items[i].x, 215.5 * static_cast<double>(i % 39), 1e-6) << i;
    EXPECT_NEAR(chain.items[i].y, 152.0 * static_cast<double>(i / 39), 1e-6) << i;
  }
  // To the next line one goes through the gap, each a little beside the one before.
  int turns = 0;
  for (std::size_t i = 0; i + 1 < 1000; ++i) {
    const auto& via = chain.edges[i].via;
    EXPECT_EQ(via.size(), i % 39 == 38 ? 2U : 0U);
    if (via.size() != 2) continue;
    EXPECT_NEAR(via[0].x, 215.5 * 38 + 150 + 12, 1e-6);
    EXPECT_NEAR(via[1].x, -12, 1e-6);
    const double gap = chain.items[i].y + 80 + 36;
    EXPECT_NEAR(via[0].y, gap + 5.0 * (turns++ % 9 - 4), 1e-6);
    EXPECT_EQ(via[0].y, via[1].y);
  }
  EXPECT_EQ(turns, 25);

  // Also of one that goes downward all the way: what counts is where a line of it stands.
  for (LayoutEdge& edge : chain.edges) edge = {edge.from, edge.to, 40, 39, {}};
  layOutByLayers(chain.items, chain.edges);
  turns = 0;
  double bottom = 0;
  for (std::size_t i = 0; i + 1 < 1000; ++i) {
    bottom = std::max(bottom, chain.items[i].y + 80);
    if (chain.edges[i].via.empty()) continue;
    EXPECT_NEAR(chain.items[i + 1].y, bottom + 72, 1e-6);
    EXPECT_NEAR(chain.edges[i].via[1].y, bottom + 36 + 5.0 * (turns++ % 9 - 4), 1e-6);
  }
  EXPECT_EQ(turns, 9);

  // What is not so long, or not so flat, stays one line.
  for (const auto& [count, height] : {std::pair{27, 80.0}, {40, 2000.0}}) {
    Graph line;
    for (int i = 0; i < count; ++i) line.items.push_back({150, height, 0, 0});
    for (std::uint32_t i = 0; i + 1 < line.items.size(); ++i) {
      line.edges.push_back({i, i + 1, 40, 40, {}});
    }
    layOutByLayers(line.items, line.edges);
    EXPECT_NEAR(line.items.back().x, 215.5 * (count - 1), 1e-6);
    EXPECT_EQ(line.items.back().y, 0);
  }
}

}  // namespace

}  // namespace tarnkit::detail
