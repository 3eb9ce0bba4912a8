#pragma once

#include "tarnkit/math/precision/WideFloat.h"
#include "tarnkit/platform/numbers/Decimal.h"

namespace tarnkit::detail {

/// Γ(value + 1), of a number from -400 to 400 that is no negative whole number; off by less than
/// 2^-165 of itself. At most 60 steps. Safe on any thread.
WideFloat gammaOfOnePlus(const Decimal& value) noexcept;

}  // namespace tarnkit::detail
