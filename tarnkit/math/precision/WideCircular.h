#pragma once

#include "tarnkit/math/precision/WideFloat.h"

/// Sine, cosine and arc tangent on wide numbers. Each result is off by less than 2^-170 of itself.
/// No iteration: the time is bounded. Safe on any thread.
namespace tarnkit::detail {

struct SineCosine {
  WideFloat sine;
  WideFloat cosine;
};
/// Of an angle up to π/4 and a little beyond.
SineCosine sineCosine(const WideFloat& angle) noexcept;

/// The angle of the point (x, y) from the x axis, from 0 to π: y is not negative, and not both are
/// 0.
WideFloat angleOf(const WideFloat& y, const WideFloat& x) noexcept;

}  // namespace tarnkit::detail
