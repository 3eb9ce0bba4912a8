#include "tarnkit/render/LayeredLayout.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <numeric>

#include "tarnkit/render/LayeredComponent.h"

namespace tarnkit::detail {

namespace {

constexpr double kPartGap = 40;

struct Part {
  std::vector<std::uint32_t> members;
  std::vector<std::uint32_t> edges;
};

// The connected components of the graph, by union-find: every item leads to one of a lower index,
// and a component is known by its lowest.
std::vector<Part> connectedParts(const std::vector<LayoutItem>& items,
                                 const std::vector<LayoutEdge>& edges) {
  std::vector<std::uint32_t> parent(items.size());
  std::iota(parent.begin(), parent.end(), 0U);
  const auto rootOf = [&](std::uint32_t at) {
    while (parent[at] != at) at = parent[at] = parent[parent[at]];
    return at;
  };
  for (const LayoutEdge& edge : edges) {
    assert(edge.from < items.size() && edge.to < items.size());
    const std::uint32_t from = rootOf(edge.from);
    const std::uint32_t to = rootOf(edge.to);
    parent[std::max(from, to)] = std::min(from, to);
  }
  std::vector<std::uint32_t> partOf(items.size());
  std::vector<Part> parts;
  for (std::uint32_t i = 0; i < items.size(); ++i) {
    const std::uint32_t root = rootOf(i);
    if (root == i) {
      partOf[i] = static_cast<std::uint32_t>(parts.size());
      parts.emplace_back();
    }
    parts[partOf[root]].members.push_back(i);
  }
  for (std::uint32_t e = 0; e < edges.size(); ++e) {
    if (edges[e].from == edges[e].to) continue;
    parts[partOf[rootOf(edges[e].from)]].edges.push_back(e);
  }
  return parts;
}

}  // namespace

void layOutByLayers(std::vector<LayoutItem>& items, std::vector<LayoutEdge>& edges) {
  if (items.empty()) return;
  std::vector<Part> parts = connectedParts(items, edges);
  // The large parts first, single boxes last.
  std::stable_sort(parts.begin(), parts.end(), [](const Part& a, const Part& b) {
    return a.members.size() > b.members.size();
  });
  std::vector<std::uint32_t> localIndex(items.size());
  std::vector<LayeredComponent> components;
  components.reserve(parts.size());
  double area = 0;
  double widest = 0;
  for (const Part& part : parts) {
    auto& component = components.emplace_back(items, edges, part.members, part.edges, localIndex);
    component.run();
    area += (component.width() + kPartGap) * (component.height() + kPartGap);
    widest = std::max(widest, component.width());
  }
  // Rows of parts, as wide together as makes a picture of the usual proportions.
  const double line = std::max(widest, std::sqrt(area * 1.8));
  double x = 0;
  double y = 0;
  double rowHeight = 0;
  for (LayeredComponent& component : components) {
    if (x > 0 && x + component.width() > line) {
      y += rowHeight + kPartGap;
      x = rowHeight = 0;
    }
    component.moveTo(x, y);
    x += component.width() + kPartGap;
    rowHeight = std::max(rowHeight, component.height());
  }
}

}  // namespace tarnkit::detail
