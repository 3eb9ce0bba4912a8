#pragma once

#include <cstdint>
#include <vector>

namespace tarnkit::detail {

/// A box to be placed.
struct LayoutItem {
  double width = 0;
  double height = 0;
  double x = 0;  // set by the layout: the upper left corner
  double y = 0;
};

/// A point that a line goes through.
struct LayoutPoint {
  double x = 0;
  double y = 0;
};

/// A line from one box's right edge to another's left edge.
struct LayoutEdge {
  std::uint32_t from = 0;  // indices of items
  std::uint32_t to = 0;
  double fromY = 0;  // from the upper edges of the boxes
  double toY = 0;
  /// Set by the layout: pairs of points between which the line runs level, past the boxes that
  /// stand between its ends; in the line's direction.
  std::vector<LayoutPoint> via;
};

/// Places the boxes in layers so that lines run from left to right and cross little, with the upper
/// left corner of it all at 0, 0.
///
/// Cycles are broken at the edges that close them, layers are those of the longest path, the order
/// within a layer comes from a bounded number of sweeps by the mean position of the neighbours, and
/// heights from the same positions, the nearest that the order allows. Parts that no line joins
/// stand beside each other. The same input gives the same output. Costs O(n log n).
void layOutByLayers(std::vector<LayoutItem>& items, std::vector<LayoutEdge>& edges);

}  // namespace tarnkit::detail
