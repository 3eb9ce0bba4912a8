#pragma once

#include <optional>

#include "tarnkit/math/BuiltinFunctions.h"
#include "tarnkit/math/precision/AngleReduction.h"
#include "tarnkit/math/precision/WideFloat.h"
#include "tarnkit/platform/numbers/Decimal.h"

/// The functions of one decimal before their result is rounded, off by less than 2^-150 of it.
/// Nothing stands for an argument outside the domain, a pole, or a result far beyond the decimals;
/// what is far too small is 0. Arguments are numbers. Bounded time for every argument, safe on any
/// thread.
namespace tarnkit::detail {

using WideResult = std::optional<WideFloat>;

WideResult wideExponential(const WideFloat& value) noexcept;
WideResult wideLogarithm(const Decimal& value) noexcept;
WideResult widePower(const Decimal& base, const Decimal& exponent) noexcept;
/// base^(1/degree)
WideResult wideRoot(const Decimal& base, const Decimal& degree) noexcept;
WideResult wideFactorial(const Decimal& value) noexcept;

/// The built-in functions of an angle, `crd` excepted: sin, cos, tan, their reciprocals, versin and
/// its kin, exsec, excsc.
WideResult wideOfAngle(Builtin function, const ReducedAngle& angle) noexcept;
/// asin, acos, atan, acsc, asec, acotan, in radians.
WideResult wideArc(Builtin function, const Decimal& value) noexcept;
/// sinh, cosh, tanh, csch, sech, cotanh.
WideResult wideHyperbolic(Builtin function, const Decimal& value) noexcept;
/// asinh, acosh, atanh, acsch, asech, acotanh.
WideResult wideArea(Builtin function, const Decimal& value) noexcept;

}  // namespace tarnkit::detail
