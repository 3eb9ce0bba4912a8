#pragma once

#include "tarnkit/math/precision/WideFloat.h"

/// The exponential function, the logarithm and their kin on wide numbers. Each result is off by
/// less than 2^-170 of itself. No iteration: the time is bounded. Safe on any thread.
namespace tarnkit::detail {

/// e^value; the magnitude is less than `kExponentialLimit`.
inline constexpr int kExponentialLimit = 4000;
WideFloat exponential(const WideFloat& value) noexcept;
/// ln(value), of a positive number; as exact as its distance from 1 is.
WideFloat logarithm(const WideFloat& value) noexcept;
/// ln(1 + value), value above -1.
WideFloat logarithmOfOnePlus(const WideFloat& value) noexcept;
/// sinh, near 0 too; the magnitude is less than `kExponentialLimit`.
WideFloat hyperbolicSine(const WideFloat& value) noexcept;
WideFloat hyperbolicCosine(const WideFloat& value) noexcept;

/// value - multiple × (words × 2^-256), off by less than 2^-189 when `value` is below 2^3; more by
/// what the value is larger. The words are lowest first.
WideFloat minusMultiple(const WideFloat& value, std::int64_t multiple,
                        const std::uint64_t (&words)[5]) noexcept;

}  // namespace tarnkit::detail
