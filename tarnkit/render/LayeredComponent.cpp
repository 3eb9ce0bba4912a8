#include "tarnkit/render/LayeredComponent.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <numeric>

namespace tarnkit::detail {

namespace {

constexpr std::uint32_t kNone = 0xFFFFFFFF;
constexpr double kNodeGap = 26;
constexpr double kLineGap = 12;
constexpr double kColumnGap = 64;
constexpr double kBandGap = 72;
// A line that passes more layers than this keeps no place in them: all the places together stay
// linear in the lines.
constexpr std::uint32_t kLongestReserved = 10;
constexpr int kSweeps = 12;
constexpr int kSweepsWithoutGain = 4;
constexpr int kHeightPasses = 6;
// A drawing is folded when it is longer than this and far wider than high.
constexpr double kLongestLine = 6000;
constexpr double kWidestRatio = 6;

}  // namespace

LayeredComponent::LayeredComponent(std::vector<LayoutItem>& items, std::vector<LayoutEdge>& edges,
                                   const std::vector<std::uint32_t>& members,
                                   const std::vector<std::uint32_t>& edgesOfMembers,
                                   std::vector<std::uint32_t>& localIndex)
    : items_(items),
      edges_(edges),
      members_(members),
      edgesOfMembers_(edgesOfMembers),
      localIndex_(localIndex),
      reversed_(edgesOfMembers.size(), 0),
      firstDummy_(edgesOfMembers.size(), kNone) {
  vertices_.resize(members.size());
  for (std::size_t i = 0; i < members.size(); ++i) {
    assert(members[i] < items.size() && members[i] < localIndex.size());
    const LayoutItem& item = items[members[i]];
    vertices_[i].width = item.width;
    vertices_[i].height = item.height;
    localIndex_[members[i]] = static_cast<std::uint32_t>(i);
  }
}

void LayeredComponent::run() {
  breakCycles();
  assignLayers();
  insertDummies();
  buildAdjacency();
  orderLayers();
  assignHeights();
  assignColumns();
  foldIntoBands();
  finish();
}

// Depth-first from the sources, without recursion; an edge back to a vertex that is still being
// visited closes a cycle.
void LayeredComponent::breakCycles() {
  const std::size_t count = vertices_.size();
  std::vector<std::uint32_t> start(count + 1, 0);
  std::vector<std::uint32_t> targets(edgesOfMembers_.size());
  std::vector<std::uint32_t> incoming(count, 0);
  for (const std::uint32_t edge : edgesOfMembers_) {
    ++start[localIndex_[edges_[edge].from] + 1];
    ++incoming[localIndex_[edges_[edge].to]];
  }
  std::partial_sum(start.begin(), start.end(), start.begin());
  auto next = start;
  for (std::uint32_t e = 0; e < edgesOfMembers_.size(); ++e) {
    targets[next[localIndex_[edges_[edgesOfMembers_[e]].from]]++] = e;
  }

  enum class State : std::uint8_t { fresh, open, done };
  std::vector<State> state(count, State::fresh);
  next.assign(start.begin(), start.end() - 1);
  std::vector<std::uint32_t> trail;
  const auto visit = [&](std::uint32_t root) {
    if (state[root] != State::fresh) return;
    state[root] = State::open;
    trail.push_back(root);
    while (!trail.empty()) {
      const std::uint32_t at = trail.back();
      if (next[at] == start[at + 1]) {
        state[at] = State::done;
        trail.pop_back();
        continue;
      }
      const std::uint32_t e = targets[next[at]++];
      const std::uint32_t to = localIndex_[edges_[edgesOfMembers_[e]].to];
      if (state[to] == State::open) {
        reversed_[e] = 1;
      } else if (state[to] == State::fresh) {
        state[to] = State::open;
        trail.push_back(to);
      }
    }
  };
  for (std::uint32_t v = 0; v < count; ++v) {
    if (incoming[v] == 0) visit(v);
  }
  for (std::uint32_t v = 0; v < count; ++v) visit(v);
}

void LayeredComponent::assignLayers() {
  // The edges as segments, at first between any two layers.
  segments_.clear();
  for (std::size_t e = 0; e < edgesOfMembers_.size(); ++e) {
    const LayoutEdge& edge = edges_[edgesOfMembers_[e]];
    const std::uint32_t from = localIndex_[edge.from];
    const std::uint32_t to = localIndex_[edge.to];
    segments_.push_back(reversed_[e] ? Segment{to, from, edge.toY, edge.fromY}
                                     : Segment{from, to, edge.fromY, edge.toY});
  }
  buildAdjacency();
  std::vector<std::uint32_t> waiting(vertices_.size());
  std::vector<std::uint32_t> topological;
  topological.reserve(vertices_.size());
  for (std::uint32_t v = 0; v < vertices_.size(); ++v) {
    waiting[v] = toLeft_.start[v + 1] - toLeft_.start[v];
    if (waiting[v] == 0) topological.push_back(v);
  }
  for (std::size_t i = 0; i < topological.size(); ++i) {
    const std::uint32_t v = topological[i];
    for (std::uint32_t s = toRight_.start[v]; s < toRight_.start[v + 1]; ++s) {
      const std::uint32_t to = segments_[toRight_.segments[s]].right;
      vertices_[to].layer = std::max(vertices_[to].layer, vertices_[v].layer + 1);
      if (--waiting[to] == 0) topological.push_back(to);
    }
  }
  assert(topological.size() == vertices_.size());  // no circle is left
  tightenLayers(topological);
}

// What feeds more than it is fed by moves to the right, next to the first that it feeds.
void LayeredComponent::tightenLayers(const std::vector<std::uint32_t>& topological) {
  for (auto at = topological.rbegin(); at != topological.rend(); ++at) {
    const std::uint32_t v = *at;
    const std::uint32_t in = toLeft_.start[v + 1] - toLeft_.start[v];
    const std::uint32_t out = toRight_.start[v + 1] - toRight_.start[v];
    if (out == 0 || out <= in) continue;
    std::uint32_t least = kNone;
    for (std::uint32_t s = toRight_.start[v]; s < toRight_.start[v + 1]; ++s) {
      least = std::min(least, vertices_[segments_[toRight_.segments[s]].right].layer);
    }
    vertices_[v].layer = least - 1;
  }
}

void LayeredComponent::insertDummies() {
  const std::vector<Segment> whole = std::move(segments_);
  segments_.clear();
  for (std::size_t e = 0; e < whole.size(); ++e) {
    const Segment& edge = whole[e];
    const std::uint32_t first = vertices_[edge.left].layer;
    assert(vertices_[edge.right].layer > first);
    const std::uint32_t span = vertices_[edge.right].layer - first;
    if (span > kLongestReserved) continue;
    Segment piece = edge;
    for (std::uint32_t step = 1; step < span; ++step) {
      const auto dummy = static_cast<std::uint32_t>(vertices_.size());
      if (step == 1) firstDummy_[e] = dummy;
      Vertex& vertex = vertices_.emplace_back();
      vertex.layer = first + step;
      vertex.isDummy = true;
      piece.right = dummy;
      piece.rightY = 0;
      segments_.push_back(piece);
      piece.left = dummy;
      piece.leftY = 0;
    }
    piece.right = edge.right;
    piece.rightY = edge.rightY;
    segments_.push_back(piece);
  }
  std::uint32_t last = 0;
  for (const Vertex& vertex : vertices_) last = std::max(last, vertex.layer);
  layers_.resize(last + 1);
  for (std::uint32_t v = 0; v < vertices_.size(); ++v) {
    auto& layer = layers_[vertices_[v].layer];
    vertices_[v].order = static_cast<std::uint32_t>(layer.size());
    layer.push_back(v);
  }
}

void LayeredComponent::buildAdjacency() {
  const auto build = [&](Adjacency& adjacency, std::uint32_t Segment::*end) {
    adjacency.start.assign(vertices_.size() + 1, 0);
    for (const Segment& segment : segments_) ++adjacency.start[segment.*end + 1];
    std::partial_sum(adjacency.start.begin(), adjacency.start.end(), adjacency.start.begin());
    adjacency.segments.resize(segments_.size());
    auto next = adjacency.start;
    for (std::uint32_t s = 0; s < segments_.size(); ++s) {
      adjacency.segments[next[segments_[s].*end]++] = s;
    }
  };
  build(toLeft_, &Segment::right);
  build(toRight_, &Segment::left);
}

// Where in its layer a line meets a vertex: the vertex's place, and within it the port's.
double LayeredComponent::positionOf(std::uint32_t vertex, double y) const noexcept {
  const Vertex& at = vertices_[vertex];
  const double within = at.height > 0 ? std::clamp(y / at.height, 0.0, 0.999) : 0.5;
  return at.order + within;
}

void LayeredComponent::orderLayers() {
  if (layers_.size() < 2) return;
  std::uint64_t fewest = crossings();
  auto best = layers_;
  int withoutGain = 0;
  for (int i = 0; i < kSweeps && fewest > 0 && withoutGain < kSweepsWithoutGain; ++i) {
    sweep(i % 2 == 0);
    const std::uint64_t now = crossings();
    if (now < fewest) {
      fewest = now;
      best = layers_;
      withoutGain = 0;
    } else {
      ++withoutGain;
    }
  }
  layers_ = std::move(best);
  for (const auto& layer : layers_) {
    for (std::uint32_t i = 0; i < layer.size(); ++i) vertices_[layer[i]].order = i;
  }
}

void LayeredComponent::sweep(bool toTheRight) {
  const Adjacency& adjacency = toTheRight ? toLeft_ : toRight_;
  std::vector<double> key(vertices_.size());
  for (std::size_t i = 1; i < layers_.size(); ++i) {
    auto& layer = layers_[toTheRight ? i : layers_.size() - 1 - i];
    for (const std::uint32_t v : layer) {
      double sum = 0;
      const std::uint32_t degree = adjacency.start[v + 1] - adjacency.start[v];
      for (std::uint32_t s = adjacency.start[v]; s < adjacency.start[v + 1]; ++s) {
        const Segment& segment = segments_[adjacency.segments[s]];
        sum += toTheRight ? positionOf(segment.left, segment.leftY)
                          : positionOf(segment.right, segment.rightY);
      }
      key[v] = degree > 0 ? sum / degree : positionOf(v, 0);
    }
    std::stable_sort(layer.begin(), layer.end(),
                     [&](std::uint32_t a, std::uint32_t b) { return key[a] < key[b]; });
    for (std::uint32_t place = 0; place < layer.size(); ++place) {
      vertices_[layer[place]].order = place;
    }
  }
}

// Between two layers, the pairs of segments whose ends stand in different orders: counted with a
// tree of prefix sums over the right ends, in the order of the left ends.
std::uint64_t LayeredComponent::crossings() const {
  std::uint64_t total = 0;
  std::vector<std::pair<double, double>> ends;
  std::vector<double> places;
  std::vector<std::uint32_t> tree;
  for (std::size_t i = 0; i + 1 < layers_.size(); ++i) {
    ends.clear();
    for (const std::uint32_t v : layers_[i]) {
      for (std::uint32_t s = toRight_.start[v]; s < toRight_.start[v + 1]; ++s) {
        const Segment& segment = segments_[toRight_.segments[s]];
        ends.emplace_back(positionOf(segment.left, segment.leftY),
                          positionOf(segment.right, segment.rightY));
      }
    }
    std::sort(ends.begin(), ends.end());
    places.clear();
    for (const auto& end : ends) places.push_back(end.second);
    std::sort(places.begin(), places.end());
    places.erase(std::unique(places.begin(), places.end()), places.end());
    tree.assign(places.size() + 1, 0);
    std::uint64_t seen = 0;
    for (const auto& end : ends) {
      auto at = static_cast<std::size_t>(
          std::lower_bound(places.begin(), places.end(), end.second) - places.begin() + 1);
      std::uint64_t notBelow = 0;
      for (std::size_t k = at; k > 0; k &= k - 1) notBelow += tree[k];
      total += seen - notBelow;
      for (; at < tree.size(); at += at & (~at + 1)) ++tree[at];
      ++seen;
    }
  }
  return total;
}

double LayeredComponent::gapBetween(const Vertex& upper, const Vertex& lower) noexcept {
  return upper.isDummy || lower.isDummy ? kLineGap : kNodeGap;
}

void LayeredComponent::assignHeights() {
  for (const auto& layer : layers_) {
    double y = 0;
    for (std::size_t i = 0; i < layer.size(); ++i) {
      Vertex& vertex = vertices_[layer[i]];
      if (i > 0) y += gapBetween(vertices_[layer[i - 1]], vertex);
      vertex.y = y;
      y += vertex.height;
    }
  }
  for (int pass = 0; pass < kHeightPasses; ++pass) {
    for (const auto& layer : layers_) alignLayer(layer, true, pass > 1);
    for (std::size_t i = layers_.size(); i-- > 0;) alignLayer(layers_[i], pass > 1, true);
  }
}

// Moves each vertex as near to where its lines would run level as the order of the layer allows:
// the least squares under that order, by merging neighbours that push each other into blocks.
void LayeredComponent::alignLayer(const std::vector<std::uint32_t>& layer, bool byLeft,
                                  bool byRight) {
  struct Block {
    double weight;
    double mean;
    std::size_t end;
  };
  std::vector<Block> blocks;
  std::vector<double> offset(layer.size());
  for (std::size_t i = 0; i < layer.size(); ++i) {
    const std::uint32_t v = layer[i];
    const Vertex& vertex = vertices_[v];
    if (i > 0) {
      const Vertex& above = vertices_[layer[i - 1]];
      offset[i] = offset[i - 1] + above.height + gapBetween(above, vertex);
    }
    double sum = 0;
    double weight = 0;
    const auto add = [&](double y, bool straight) {
      const double pull = straight ? 12 : 1;
      sum += y * pull;
      weight += pull;
    };
    for (std::uint32_t s = toLeft_.start[v]; byLeft && s < toLeft_.start[v + 1]; ++s) {
      const Segment& segment = segments_[toLeft_.segments[s]];
      const Vertex& other = vertices_[segment.left];
      add(other.y + segment.leftY - segment.rightY, other.isDummy && vertex.isDummy);
    }
    for (std::uint32_t s = toRight_.start[v]; byRight && s < toRight_.start[v + 1]; ++s) {
      const Segment& segment = segments_[toRight_.segments[s]];
      const Vertex& other = vertices_[segment.right];
      add(other.y + segment.rightY - segment.leftY, other.isDummy && vertex.isDummy);
    }
    Block block{weight > 0 ? weight : 0.05, weight > 0 ? sum / weight : vertex.y, i + 1};
    block.mean -= offset[i];
    while (!blocks.empty() && blocks.back().mean >= block.mean) {
      const Block& upper = blocks.back();
      const double together = upper.weight + block.weight;
      block.mean = (upper.mean * upper.weight + block.mean * block.weight) / together;
      block.weight = together;
      blocks.pop_back();
    }
    blocks.push_back(block);
  }
  std::size_t i = 0;
  for (const Block& block : blocks) {
    for (; i < block.end; ++i) vertices_[layer[i]].y = block.mean + offset[i];
  }
}

void LayeredComponent::assignColumns() {
  double x = 0;
  for (const auto& layer : layers_) {
    double widest = 0;
    std::size_t lines = 0;
    for (const std::uint32_t v : layer) {
      widest = std::max(widest, vertices_[v].width);
      lines += toRight_.start[v + 1] - toRight_.start[v];
    }
    columnX_.push_back(x);
    columnWidth_.push_back(widest);
    x += widest + kColumnGap + std::min(1.5 * static_cast<double>(lines), 72.0);
  }
  width_ = columnX_.back() + columnWidth_.back();
}

// A long chain would be a picture of one line that nobody can look at: it is broken into lines as a
// text is.
void LayeredComponent::foldIntoBands() {
  double top = 0;
  double bottom = 0;
  const auto extent = [&](std::size_t from, std::size_t to) {
    top = 1e300;
    bottom = -1e300;
    for (std::size_t i = from; i < to; ++i) {
      for (const std::uint32_t v : layers_[i]) {
        top = std::min(top, vertices_[v].y);
        bottom = std::max(bottom, vertices_[v].y + vertices_[v].height);
      }
    }
  };
  extent(0, layers_.size());
  height_ = bottom - top;
  bandY_.assign(layers_.size(), -top);
  band_.assign(layers_.size(), 0);
  gapY_.assign(layers_.size(), 0);
  if (width_ < kLongestLine || width_ < kWidestRatio * height_) return;
  const double line = std::max(std::sqrt(2.2 * width_ * (height_ + kBandGap)), 1200.0);
  double y = 0;
  double widest = 0;
  std::uint32_t band = 0;
  for (std::size_t from = 0; from < layers_.size();) {
    const double startX = columnX_[from];
    std::size_t to = from + 1;
    while (to < layers_.size() && columnX_[to] + columnWidth_[to] - startX <= line) ++to;
    extent(from, to);
    for (std::size_t i = from; i < to; ++i) {
      columnX_[i] -= startX;
      bandY_[i] = y - top;
      band_[i] = band;
      gapY_[i] = y + bottom - top + kBandGap / 2;
      widest = std::max(widest, columnX_[i] + columnWidth_[i]);
    }
    y += bottom - top + kBandGap;
    ++band;
    from = to;
  }
  width_ = widest;
  height_ = y - kBandGap;
}

void LayeredComponent::finish() {
  for (std::size_t i = 0; i < members_.size(); ++i) {
    const Vertex& vertex = vertices_[i];
    items_[members_[i]].x = columnX_[vertex.layer];
    items_[members_[i]].y = vertex.y + bandY_[vertex.layer];
  }
  std::uint32_t folded = 0;
  for (std::size_t e = 0; e < edgesOfMembers_.size(); ++e) routeEdge(e, folded);
}

// Past the boxes of the layers between its ends, and from the end of a band to the start of the
// next through the gap between the two, where neighbouring lines keep a little apart.
void LayeredComponent::routeEdge(std::size_t e, std::uint32_t& folded) {
  LayoutEdge& edge = edges_[edgesOfMembers_[e]];
  const std::uint32_t from = localIndex_[edge.from];
  const std::uint32_t to = localIndex_[edge.to];
  const std::uint32_t last = vertices_[reversed_[e] ? from : to].layer;
  std::uint32_t at = vertices_[reversed_[e] ? to : from].layer;
  const auto goTo = [&](std::uint32_t layer) {
    if (band_[at] != band_[layer]) {
      const double y = gapY_[at] + 5.0 * (static_cast<int>(folded++ % 9) - 4);
      edge.via.push_back({columnX_[at] + columnWidth_[at] + kLineGap, y});
      edge.via.push_back({columnX_[layer] - kLineGap, y});
    }
    at = layer;
  };
  for (std::uint32_t v = firstDummy_[e]; v != kNone && at + 1 < last; ++v) {
    goTo(vertices_[v].layer);
    const double y = vertices_[v].y + bandY_[at];
    edge.via.push_back({columnX_[at], y});
    edge.via.push_back({columnX_[at] + columnWidth_[at], y});
  }
  goTo(last);
  if (reversed_[e]) std::reverse(edge.via.begin(), edge.via.end());
}

void LayeredComponent::moveTo(double x, double y) {
  for (const std::uint32_t member : members_) {
    items_[member].x += x;
    items_[member].y += y;
  }
  for (const std::uint32_t e : edgesOfMembers_) {
    for (LayoutPoint& point : edges_[e].via) {
      point.x += x;
      point.y += y;
    }
  }
}

}  // namespace tarnkit::detail
