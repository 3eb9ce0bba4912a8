#pragma once

#include <vector>

#include "tarnkit/platform/objects/FunctionRef.h"
#include "tarnkit/render/LayeredLayout.h"

namespace tarnkit::detail {

/// A piece of the line that a wire is drawn as, from where the last one ended: a cubic curve, or a
/// straight level line (then both controls are its end).
struct WirePiece {
  LayoutPoint firstControl;
  LayoutPoint secondControl;
  LayoutPoint end;
  bool isStraight = false;
};

/// Visits the pieces from one end to the other: at its ends a wire runs to the right, between the
/// points of each pair in `via` it runs level, in either direction.
void eachWirePiece(LayoutPoint from, LayoutPoint to, const std::vector<LayoutPoint>& via,
                   FunctionRef<void(const WirePiece&)> visit);

}  // namespace tarnkit::detail
