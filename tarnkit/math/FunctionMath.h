#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>

/// What the operators and the built-in functions compute on doubles: the one definition behind
/// every road of evaluation, so that all of them give the same bits.
namespace tarnkit::detail::math {

/// Half a turn, and the constants of the function table, to the nearest double.
inline constexpr double kPi = 3.14159265358979323846;
inline constexpr double kHalfTurnDegrees = 180.0;

inline double add(double x, double y) noexcept { return x + y; }
inline double subtract(double x, double y) noexcept { return x - y; }
inline double multiply(double x, double y) noexcept { return x * y; }
inline double divide(double x, double y) noexcept { return x / y; }
inline double mod(double x, double y) noexcept { return std::fmod(x, y); }
/// Squares are one multiplication: exact to the last bit, which the general power need not be.
inline double power(double x, double y) noexcept { return y == 2 ? x * x : std::pow(x, y); }
inline double negate(double x) noexcept { return -x; }
inline double toRadians(double x) noexcept { return x * kPi / kHalfTurnDegrees; }
inline double toDegrees(double x) noexcept { return x * kHalfTurnDegrees / kPi; }

inline double truth(bool value) noexcept { return value ? 1.0 : 0.0; }
inline double less(double x, double y) noexcept { return truth(x < y); }
inline double greater(double x, double y) noexcept { return truth(x > y); }
inline double lessOrEqual(double x, double y) noexcept { return truth(x <= y); }
inline double greaterOrEqual(double x, double y) noexcept { return truth(x >= y); }
inline double equal(double x, double y) noexcept { return truth(x == y); }
inline double notEqual(double x, double y) noexcept { return truth(x != y); }
inline double logicalAnd(double x, double y) noexcept { return truth(x != 0 && y != 0); }
inline double logicalOr(double x, double y) noexcept { return truth(x != 0 || y != 0); }
inline double logicalNot(double x) noexcept { return truth(x == 0); }

/// The running smallest and largest: NaN as soon as one value is.
inline double smaller(double x, double y) noexcept { return y < x || y != y ? y : x; }
inline double larger(double x, double y) noexcept { return y > x || y != y ? y : x; }

/// The integer that the bitwise functions work on: truncated toward zero, saturated, 0 for NaN.
std::int64_t toInteger(double x) noexcept;
/// As `toInteger`, for an unsigned 32-bit integer.
std::uint32_t toUnsigned32(double x) noexcept;
double bitAnd(double x, double y) noexcept;
double bitOr(double x, double y) noexcept;
double bitXor(double x, double y) noexcept;
double bitNot(double x) noexcept;
/// The shifts of 64-bit integers: by 64 bits or more, or by a negative count, they give 0, or -1
/// for a negative value shifted right.
std::int64_t shiftLeft(std::int64_t value, std::int64_t count) noexcept;
std::int64_t shiftRight(std::int64_t value, std::int64_t count) noexcept;
double shiftLeft(double x, double y) noexcept;
double shiftRight(double x, double y) noexcept;
double factorial(double x) noexcept;

double sum(const double* values, std::size_t count) noexcept;
double average(const double* values, std::size_t count) noexcept;
double minimum(const double* values, std::size_t count) noexcept;
double maximum(const double* values, std::size_t count) noexcept;
/// NaN when a value is NaN.
double median(const double* values, std::size_t count);
double standardDeviation(const double* values, std::size_t count) noexcept;

}  // namespace tarnkit::detail::math
