#include "tarnkit/render/WirePath.h"

#include <algorithm>
#include <cassert>
#include <cmath>

namespace tarnkit::detail {

namespace {

// How far from its ends a curve runs on in their direction.
double reach(const LayoutPoint& from, const LayoutPoint& to, bool turnsBack) {
  const double dx = std::fabs(to.x - from.x);
  const double dy = std::fabs(to.y - from.y);
  if (turnsBack) return std::clamp(40 + dx * 0.12 + dy * 0.1, 40.0, 180.0);
  return std::clamp(std::max(dx * 0.5, std::min(dy, 60.0) * 0.5), 16.0, 160.0);
}

}  // namespace

void eachWirePiece(LayoutPoint from, LayoutPoint to, const std::vector<LayoutPoint>& via,
                   FunctionRef<void(const WirePiece&)> visit) {
  assert(via.size() % 2 == 0);
  LayoutPoint at = from;
  double direction = 1;
  const auto curve = [&](const LayoutPoint& end, double arriving) {
    const bool turnsBack = direction != arriving || (end.x - at.x) * direction < 24;
    const double reached = reach(at, end, turnsBack);
    visit({{at.x + direction * reached, at.y}, {end.x - arriving * reached, end.y}, end, false});
    at = end;
    direction = arriving;
  };
  for (std::size_t i = 0; i + 1 < via.size(); i += 2) {
    const double level = via[i + 1].x - via[i].x;
    curve(via[i], level < 0 || (level == 0 && to.x < from.x) ? -1 : 1);
    at = via[i + 1];
    visit({at, at, at, true});
  }
  curve(to, 1);
}

}  // namespace tarnkit::detail
