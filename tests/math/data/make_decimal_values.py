#!/usr/bin/env python3
"""Sums, products, quotients, roots, readings and roundings of decimals, by Python's decimal module.

    python3 make_decimal_values.py COUNT > decimal_values.tsv

Each line: the operation, its arguments, the result. The operands are of every length and exponent,
and chosen so that halves, carries, overflow and underflow occur. The checked-in file was made with
60.
"""

import random
import sys
from decimal import ROUND_FLOOR, ROUND_HALF_EVEN, Context, Decimal, getcontext

getcontext().prec = 400
getcontext().Emax = 10000
getcontext().Emin = -10000
DRAW = random.Random(7)


def held(value):
    """The exact value as a decimal of 38 digits and exponents from -128 to 127 holds it."""
    if value == 0:
        return "0"
    unit = max(value.adjusted() - 37, -128)
    value = value.quantize(Decimal((0, (1,), unit)), rounding=ROUND_HALF_EVEN)
    if value and value.adjusted() - 37 > 127:
        return "NaN"
    if value == 0:
        return "0"
    text = format(value, "f")
    return text.rstrip("0").rstrip(".") if "." in text else text


def number():
    count = DRAW.choice([1, 2, 5, 18, 19, 20, 37, 38, 38, 38])
    mantissa = DRAW.choice([
        DRAW.randrange(10 ** (count - 1), 10**count), 10 ** (count - 1), 10**count - 1,
        DRAW.choice([1, 3, 5, 7]) * 2 ** DRAW.randrange(120) % 10**38 or 1])
    exponent = DRAW.choice([DRAW.randrange(-128, 128), DRAW.randrange(-40, 5), -count, 0, -128, 127])
    return Decimal((DRAW.randrange(2), tuple(map(int, str(mantissa))), exponent))


def pair():
    a, b = number(), number()
    if DRAW.random() < 0.3:  # as far apart as the last digits reach
        mantissa = b.as_tuple().digits
        exponent = max(-128, min(127, a.adjusted() - DRAW.randrange(36, 42) - len(mantissa) + 1))
        b = Decimal((DRAW.randrange(2), mantissa, exponent))
    return a, b


def half_way():
    """A quotient that lies on a half: 3 / 2^55."""
    power = DRAW.randrange(54, 120)
    for factor in range(3, 10**6, 2):
        if len(str(factor * 5**power)) == 39:
            return Decimal(factor), Decimal(2**power)
    return Decimal(3), Decimal(2**55)


def rounded(value, places, mode):
    if value.as_tuple().exponent >= -places:
        return value
    return value.quantize(Decimal((0, (1,), -places)), rounding=mode)


def long_text():
    digits = "".join(DRAW.choice("0123456789") for _ in range(DRAW.randrange(1, 90)))
    digits = DRAW.choice([digits, digits[:38] + "5" + "0" * 20, digits[:38] + "5" + "0" * 30 + "1"])
    point = DRAW.randrange(len(digits) + 1)
    return f"{DRAW.choice(['-', '', '+'])}{digits[:point]}.{digits[point:]}e{DRAW.randrange(-170, 130)}"


def show(operation, *parts):
    print(operation, *parts, sep="\t")


def main():
    for i in range(int(sys.argv[1])):
        a, b = pair()
        show("add", a, b, held(a + b))
        a, b = pair()
        show("subtract", a, b, held(a - b))
        a, b = number(), number()
        show("multiply", a, b, held(a * b))
        a, b = half_way() if i % 4 == 0 else (number(), number())
        show("divide", a, b, held(a / b))
        a = abs(number())
        show("sqrt", a, 0, held(a.sqrt(Context(prec=200, Emin=-9999, Emax=9999))))
        a, b = pair()
        show("compare", a, b, (a > b) - (a < b))
        text = long_text()
        show("read", text, 0, held(Decimal(text)))
        a, places = number(), DRAW.randrange(-20, 45)
        show("down", a, places, held(rounded(a, places, ROUND_FLOOR)))
        show("even", a, places, held(rounded(a, places, ROUND_HALF_EVEN)))
        show("double", a, 0, repr(float(a)))


if __name__ == "__main__":
    main()
