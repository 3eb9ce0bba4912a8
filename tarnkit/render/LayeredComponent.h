#pragma once

#include <cstdint>
#include <vector>

#include "tarnkit/render/LayeredLayout.h"

namespace tarnkit::detail {

/// One connected part of a layered drawing, while it is laid out. Its steps, in order, are those of
/// `run`; see `layOutByLayers`.
class LayeredComponent {
 public:
  /// `edges` are indices of edges between different members. `localIndex` has room for every item.
  LayeredComponent(std::vector<LayoutItem>& items, std::vector<LayoutEdge>& edges,
                   const std::vector<std::uint32_t>& members,
                   const std::vector<std::uint32_t>& edgesOfMembers,
                   std::vector<std::uint32_t>& localIndex);

  /// Places the members, with the upper left corner of the part at 0, 0.
  void run();
  double width() const noexcept { return width_; }
  double height() const noexcept { return height_; }
  /// Moves the whole part.
  void moveTo(double x, double y);

 private:
  /// A box, or a place that a long line keeps free in a layer between its ends.
  struct Vertex {
    double width = 0;
    double height = 0;
    double y = 0;
    std::uint32_t layer = 0;
    std::uint32_t order = 0;
    bool isDummy = false;
  };
  /// A line, or the piece of one, from a layer to the next.
  struct Segment {
    std::uint32_t left;
    std::uint32_t right;
    double leftY;  // from the upper edge of the vertex
    double rightY;
  };
  /// The segments at one side of every vertex, as a table of rows.
  struct Adjacency {
    std::vector<std::uint32_t> start;
    std::vector<std::uint32_t> segments;
  };

  void breakCycles();
  void assignLayers();
  void tightenLayers(const std::vector<std::uint32_t>& topological);
  void insertDummies();
  void buildAdjacency();
  void orderLayers();
  void sweep(bool toTheRight);
  std::uint64_t crossings() const;
  void assignHeights();
  void alignLayer(const std::vector<std::uint32_t>& layer, bool byLeft, bool byRight);
  void assignColumns();
  void foldIntoBands();
  void finish();
  void routeEdge(std::size_t e, std::uint32_t& folded);
  double positionOf(std::uint32_t vertex, double y) const noexcept;
  static double gapBetween(const Vertex& upper, const Vertex& lower) noexcept;

  std::vector<LayoutItem>& items_;
  std::vector<LayoutEdge>& edges_;
  const std::vector<std::uint32_t>& members_;
  const std::vector<std::uint32_t>& edgesOfMembers_;
  std::vector<std::uint32_t>& localIndex_;

  std::vector<Vertex> vertices_;           // the members, in their order, then the dummies
  std::vector<std::uint8_t> reversed_;     // by position in edgesOfMembers_
  std::vector<std::uint32_t> firstDummy_;  // likewise
  std::vector<Segment> segments_;
  Adjacency toLeft_;
  Adjacency toRight_;
  std::vector<std::vector<std::uint32_t>> layers_;
  std::vector<double> columnX_;
  std::vector<double> columnWidth_;
  // Of each layer: what its band moves it by, the band's number, and the middle of the gap below.
  std::vector<double> bandY_;
  std::vector<std::uint32_t> band_;
  std::vector<double> gapY_;
  double width_ = 0;
  double height_ = 0;
};

}  // namespace tarnkit::detail
