#pragma once

#include <cstdint>

#include "tarnkit/platform/numbers/Decimal.h"

/// Arithmetic and elementary functions of decimals, rounded half to even.
///
/// Sums, differences, products, quotients and square roots are the nearest decimal to the exact
/// value; every other function is the nearest one but where the exact value lies within a
/// thousand-millionth of the last digit of a half. That holds over the whole domain, next to zeros,
/// poles and multiples of π too. Arguments outside the domain, poles and overflow give not a
/// number, underflow 0. Every call ends in bounded time, below 10 µs; none allocates or throws.
/// Safe on any thread.
namespace tarnkit {

Decimal MXDecimalNAN() noexcept;
/// 10^-64
Decimal MXDecimalEpsilon() noexcept;
Decimal MXDecimalNegativeOne() noexcept;
Decimal MXDecimalZero() noexcept;
Decimal MXDecimalOne() noexcept;
Decimal MXDecimalTwo() noexcept;
/// The golden ratio.
Decimal MXDecimalPhi() noexcept;
Decimal MXDecimalPi() noexcept;
/// `MXDecimalPi` times 2.
Decimal MXDecimal2Pi() noexcept;
Decimal MXDecimalPi_2() noexcept;
Decimal MXDecimalPi_4() noexcept;
Decimal MXDecimalSqrt2() noexcept;
Decimal MXDecimalE() noexcept;
Decimal MXDecimalLog2e() noexcept;
Decimal MXDecimalLog10e() noexcept;
Decimal MXDecimalLn2() noexcept;
Decimal MXDecimalLn10() noexcept;

Decimal MXDecimalFromInteger(std::int64_t value) noexcept;
/// The shortest decimal that reads back to the same double.
Decimal MXDecimalFromDouble(double value) noexcept;
/// Truncated and saturated; 0 for negative numbers and not a number.
std::uint64_t MXUIntegerFromDecimal(const Decimal& value) noexcept;
float MXFloatFromDecimal(const Decimal& value) noexcept;
double MXDoubleFromDecimal(const Decimal& value) noexcept;

bool MXDecimalIsNegative(const Decimal& value) noexcept;
bool MXDecimalIsInteger(const Decimal& value) noexcept;
/// Whether the two differ by less than `MXDecimalEpsilon`.
bool MXDecimalIsProbablyEqual(const Decimal& a, const Decimal& b) noexcept;

/// In place.
void MXDecimalNegate(Decimal& value) noexcept;
/// In place: the reciprocal.
void MXDecimalInvert(Decimal& value) noexcept;
Decimal MXDecimalAdd(const Decimal& a, const Decimal& b) noexcept;
Decimal MXDecimalSubtract(const Decimal& a, const Decimal& b) noexcept;
Decimal MXDecimalMultiply(const Decimal& a, const Decimal& b) noexcept;
Decimal MXDecimalDivide(const Decimal& a, const Decimal& b) noexcept;
Decimal MXDecimalAverage2(const Decimal& a, const Decimal& b) noexcept;
/// a - b floor(a / b), computed exactly before it is rounded: it has the sign of b.
Decimal MXDecimalMod(const Decimal& a, const Decimal& b) noexcept;
/// The angle from above -π to π that `MXDecimalMod` by `MXDecimal2Pi` leaves.
Decimal MXDecimalMod2Pi(const Decimal& value) noexcept;
Decimal MXDecimalAbsoluteValue(const Decimal& value) noexcept;
Decimal MXDecimalSqrt(const Decimal& value) noexcept;
/// value^(1/root)
Decimal MXDecimalNthRoot(const Decimal& value, const Decimal& root) noexcept;
/// x^0 is 1; a negative base takes whole exponents only.
Decimal MXDecimalPower(const Decimal& base, const Decimal& exponent) noexcept;
Decimal MXDecimalExp(const Decimal& value) noexcept;
Decimal MXDecimalLn(const Decimal& value) noexcept;
Decimal MXDecimalLog2(const Decimal& value) noexcept;
Decimal MXDecimalLog10(const Decimal& value) noexcept;
Decimal MXDecimalInverse(const Decimal& value) noexcept;
/// Γ(value + 1)
Decimal MXDecimalFactorial(const Decimal& value) noexcept;
/// Whole numbers times or divided by a power of two, rounded down; other arguments are truncated
/// first. No bits are lost above. A negative count shifts everything out.
Decimal MXDecimalLeftShift(const Decimal& value, const Decimal& count) noexcept;
Decimal MXDecimalRightShift(const Decimal& value, const Decimal& count) noexcept;

/// Of angles in radians.
Decimal MXDecimalSin(const Decimal& angle) noexcept;
Decimal MXDecimalCos(const Decimal& angle) noexcept;
Decimal MXDecimalTan(const Decimal& angle) noexcept;
Decimal MXDecimalCsc(const Decimal& angle) noexcept;
Decimal MXDecimalSec(const Decimal& angle) noexcept;
Decimal MXDecimalCot(const Decimal& angle) noexcept;
/// In radians. acos(x) = π/2 - asin(x), acot(x) = π/2 - atan(x), from 0 to π; asec(x) =
/// π/2 - asin(1/x); acsc(x) = π/2 - asec(x).
Decimal MXDecimalAsin(const Decimal& value) noexcept;
Decimal MXDecimalAcos(const Decimal& value) noexcept;
Decimal MXDecimalAtan(const Decimal& value) noexcept;
Decimal MXDecimalAcsc(const Decimal& value) noexcept;
Decimal MXDecimalAsec(const Decimal& value) noexcept;
Decimal MXDecimalAcot(const Decimal& value) noexcept;
Decimal MXDecimalSinh(const Decimal& value) noexcept;
Decimal MXDecimalCosh(const Decimal& value) noexcept;
Decimal MXDecimalTanh(const Decimal& value) noexcept;
Decimal MXDecimalCsch(const Decimal& value) noexcept;
Decimal MXDecimalSech(const Decimal& value) noexcept;
Decimal MXDecimalCoth(const Decimal& value) noexcept;
Decimal MXDecimalAsinh(const Decimal& value) noexcept;
Decimal MXDecimalAcosh(const Decimal& value) noexcept;
Decimal MXDecimalAtanh(const Decimal& value) noexcept;
/// asinh(1/x), acosh(1/x), atanh(1/x).
Decimal MXDecimalAcsch(const Decimal& value) noexcept;
Decimal MXDecimalAsech(const Decimal& value) noexcept;
Decimal MXDecimalAcoth(const Decimal& value) noexcept;

}  // namespace tarnkit
