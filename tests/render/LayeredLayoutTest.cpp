#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "tarnkit/render/LayeredLayout.h"

namespace tarnkit::detail {

namespace {

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

TEST(LayeredLayout, ALongChainIsFoldedIntoLines) {
  Graph chain;
  for (int i = 0; i < 1000; ++i) chain.items.push_back({150, 80, 0, 0});
  for (std::uint32_t i = 0; i + 1 < 1000; ++i) chain.edges.push_back({i, i + 1, 40, 40, {}});
  layOutByLayers(chain.items, chain.edges);
  double right = 0;
  double bottom = 0;
  for (const LayoutItem& item : chain.items) {
    right = std::max(right, item.x + item.width);
    bottom = std::max(bottom, item.y + item.height);
  }
  EXPECT_LT(right / bottom, 5);
  EXPECT_GT(right / bottom, 0.5);
}

}  // namespace

}  // namespace tarnkit::detail
