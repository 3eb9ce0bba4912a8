#!/usr/bin/env python3
"""Writes tarnkit/math/precision/PrecisionTables.cpp: the constants of the high-precision functions.

    python3 scripts/make_precision_tables.py > tarnkit/math/precision/PrecisionTables.cpp

Everything is computed here in whole numbers of many more bits than are kept, and rounded to the
nearest at the end.
"""

from fractions import Fraction
from math import factorial, isqrt

GUARD = 1400  # bits behind the point of every intermediate value
ONE = 1 << GUARD


def atan_inverse(n):
    """atan(1/n)"""
    total, power, k = 0, ONE // n, 0
    while power:
        total += (-power if k % 2 else power) // (2 * k + 1)
        power //= n * n
        k += 1
    return total


def atan(x):
    """atan(x), 0 <= x <= ONE"""
    halvings = 0
    while x > ONE >> 8:
        root = sqrt(ONE + (x * x >> GUARD))
        x = (x << GUARD) // (ONE + root)
        halvings += 1
    total, power, k = 0, x, 0
    while power:
        total += (-power if k % 2 else power) // (2 * k + 1)
        power = (power * x >> GUARD) * x >> GUARD
        k += 1
    return total << halvings


def sqrt(x):
    return isqrt(x << GUARD)


def exp(x):
    total, term, k = 0, ONE, 0
    while term:
        total += term
        k += 1
        term = (term * x >> GUARD) // k
    return total


def ln(numerator, denominator):
    """ln(numerator / denominator), between 1 and 2"""
    ratio = ((numerator - denominator) << GUARD) // (numerator + denominator)
    total, power, k = 0, ratio, 0
    while power:
        total += power // (2 * k + 1)
        power = (power * ratio >> GUARD) * ratio >> GUARD
        k += 1
    return 2 * total


def ln_of(value):
    """ln of a value of GUARD bits behind the point."""
    doublings = 0
    while value >= 2 * ONE:
        value //= 2
        doublings += 1
    return ln(value, ONE) + doublings * ln(2, 1)


def sin_cos(x):
    sine = cosine = 0
    term, k = ONE, 0
    while term:
        if k % 2:
            sine += term if k % 4 == 1 else -term
        else:
            cosine += term if k % 4 == 0 else -term
        k += 1
        term = (term * x >> GUARD) // k
    return sine, cosine


PI = 4 * (4 * atan_inverse(5) - atan_inverse(239))
LN2 = ln(2, 1)
LN10 = 3 * LN2 + ln(5, 4)


def rounded(value, bits):
    """A value of GUARD bits behind the point with `bits` of them."""
    return (value + (1 << (GUARD - bits - 1))) >> (GUARD - bits)


def words(value, count):
    assert 0 <= value < 1 << (64 * count)
    return "{" + ", ".join(f"0x{value >> (64 * i) & (2**64 - 1):016x}" for i in range(count)) + "}"


def fraction(value):
    return words(rounded(value, 192), 3)


def wide(value):
    """A wide number, of any rational."""
    value = Fraction(value)
    exponent = 0
    magnitude = abs(value)
    while magnitude >= 2**exponent:
        exponent += 1
    while magnitude < Fraction(2) ** (exponent - 1):
        exponent -= 1
    mantissa = round(magnitude / Fraction(2) ** exponent * 2**192)
    if mantissa == 2**192:
        mantissa //= 2
        exponent += 1
    sign = "true" if value < 0 else "false"
    return f"{{{words(mantissa, 3)}, {exponent}, {sign}}}"


def table(kind, name, rows, size):
    print(f"const {kind} {name}[{size}] = {{")
    for row in rows:
        print(f"    {row},")
    print("};")


def constant(kind, name, value):
    print(f"const {kind} {name}{value};")


def real(value):
    return Fraction(value, ONE)


def bernoulli(count):
    """B2, B4, …"""
    numbers = [Fraction(1)]
    for m in range(1, 2 * count + 1):
        total = Fraction(0)
        choose = 1
        for k, number in enumerate(numbers):
            total += choose * number
            choose = choose * (m + 1 - k) // (k + 1)
        numbers.append(-total / (m + 1))
    return numbers[2::2]


def main():
    print("// Made by scripts/make_precision_tables.py; change that and run it again.")
    print()
    print('#include "tarnkit/math/precision/PrecisionTables.h"')
    print()
    print("namespace tarnkit::detail {")
    print()
    print("// clang-format off")
    constant("WideFloat", "kWidePi", wide(real(PI)))
    constant("WideFloat", "kWideHalfPi", wide(real(PI) / 2))
    constant("WideFloat", "kWideLn2", wide(real(LN2)))
    constant("WideFloat", "kWideInverseLn2", wide(1 / real(LN2)))
    constant("WideFloat", "kWideInverseLn10", wide(1 / real(LN10)))
    constant("WideFloat", "kWideDegree", wide(real(PI) / 180))
    constant("WideFloat", "kWideRadian", wide(180 / real(PI)))
    constant("WideFloat", "kWideHalfLnTwoPi", wide(real(ln_of(2 * PI)) / 2))
    constant("std::uint64_t", "kLn2Words[5]", " = " + words(rounded(LN2, 256), 5))
    constant("std::uint64_t", "kHalfPiWords[5]", " = " + words(rounded(PI // 2, 256), 5))
    two_over_pi = (2 << (2 * GUARD)) // PI
    print("const std::uint64_t kTwoOverPiWords[16] = {")
    value = two_over_pi >> (GUARD - 1024)
    for i in range(0, 16, 4):
        print("    " + ", ".join(f"0x{value >> (64 * k) & (2**64 - 1):016x}" for k in range(i, i + 4)) + ",")
    print("};")
    table("WideFloat", "kPowersOfTenTo19", [wide(Fraction(10) ** (19 * k)) for k in range(-7, 11)],
          "kPowersOfTenTo19Count")
    table("WideFraction", "kInverseFactorials",
          [fraction(ONE // factorial(n) if n > 1 else 0) for n in range(24)], "kInverseFactorialCount")
    table("WideFraction", "kInverseOdds", [fraction(ONE // (2 * k + 1) if k else 0) for k in range(16)],
          "kInverseOddCount")
    table("WideFraction", "kHalfExponentials", [fraction(exp(ONE * j // 128) // 2) for j in range(89)],
          "kExponentialCount")
    table("WideFraction", "kSines", [fraction(sin_cos(ONE * j // 128)[0]) for j in range(103)], "kSineCount")
    table("WideFraction", "kCosines",
          [fraction(sin_cos(ONE * j // 128)[1]) if j else fraction(0) for j in range(103)], "kSineCount")
    table("WideFloat", "kArcTangents", [wide(real(atan(ONE * j // 64))) if j else "{}" for j in range(65)],
          "kArcTangentCount")
    factors = [round(Fraction(2**17, 257 + 2 * j)) for j in range(128)]
    print("const LogarithmStep kLogarithmSteps[kLogarithmStepCount] = {")
    for factor in factors:
        logarithm = wide(real(ln(factor, 256))) if factor > 256 else "{}"
        print(f"    {{{factor}, {logarithm}}},")
    print("};")
    table("WideFloat", "kStirlingTerms",
          [wide(number / (2 * k * (2 * k - 1))) for k, number in enumerate(bernoulli(26), 1)], "kStirlingCount")
    print("// clang-format on")
    print()
    print("}  // namespace tarnkit::detail")


if __name__ == "__main__":
    main()
