#pragma once

#include "tarnkit/math/precision/WideFloat.h"
#include "tarnkit/platform/numbers/Decimal.h"

/// The way from decimals to wide numbers and back. Safe on any thread.
namespace tarnkit::detail {

/// The number, which is one; off by less than 2^-189 of it.
WideFloat wideOf(const Decimal& value) noexcept;
/// a - b to the last bit of the result, however much of the two cancels.
WideFloat wideDifference(const Decimal& a, const Decimal& b) noexcept;
/// The nearest decimal. What lies within 10^-9 of the last digit's half counts as the half, so that
/// results that are exact in decimal come out as such.
Decimal decimalOf(const WideFloat& value) noexcept;

}  // namespace tarnkit::detail
