#!/usr/bin/env python3
"""Reference values of the functions of decimals, by mpmath with hundreds of digits.

    python3 make_precision_values.py COUNT [FUNCTION…] > precision_values.tsv

Each line: the function, its arguments (38 digits), the value to 60 digits or "NaN". A third of the
arguments are of every size, the rest lie where a function is hard: next to zeros, poles, 1, multiples
of π/2, and as near to one of those as 38 digits can be. The checked-in file was made with 16.
"""

import random
import sys
from decimal import Context, Decimal, ROUND_HALF_EVEN

import mpmath
from mpmath import mp, mpf

mp.dps = 420
KEPT = Context(prec=38, rounding=ROUND_HALF_EVEN, Emin=-10000, Emax=10000)
WORK = Context(prec=420, Emin=-10000, Emax=10000)
DRAW = random.Random(20)


def to_decimal(value):
    """An argument as the decimals hold it."""
    if not isinstance(value, Decimal):
        value = Decimal(mpmath.nstr(value, 60, strip_zeros=False, min_fixed=1, max_fixed=0))
    value = KEPT.plus(value)
    if value and value.as_tuple().exponent < -128:
        value = value.quantize(Decimal((0, (1,), -128)), context=WORK)
    return value


def digits(count):
    return Decimal(DRAW.randrange(10 ** (count - 1), 10**count))


def mantissa():
    """1 to 10, of few or all digits."""
    count = DRAW.choice([1, 2, 5, 20, 38, 38, 38])
    return digits(count).scaleb(1 - count)


def sized(low, high):
    """Positive, its power of ten evenly spread."""
    return mantissa().scaleb(DRAW.randint(low, high))


def between(low, high):
    return Decimal(low) + (Decimal(high) - Decimal(low)) * digits(38).scaleb(-38, WORK)


def signed(value):
    return DRAW.choice([1, -1]) * value


def near(point):
    """Next to a point, from a tenth off down to the last digit."""
    return WORK.add(point, signed(mantissa().scaleb(-DRAW.randint(1, 38))))


def near_one():
    return near(Decimal(1))


def near_quarter_turn():
    """One of the decimals next to a multiple of π/2, which is of any size."""
    top = DRAW.choice([2, 2, 10, 1000, 10**10, 10**37, 10**60, 10**160])
    return to_decimal(DRAW.randrange(1, top) * mp.pi / 2)


def nearest_quarter_turn():
    """The decimals nearest of all to multiples of π/2, by the continued fraction of 10^e / (π/2)."""
    exponent = DRAW.randint(-37, 127)
    ratio = mpf(10) ** exponent / (mp.pi / 2)
    p0, q0, p1, q1 = 0, 1, 1, 0
    candidates = []
    while q1 < 10**38:
        whole = int(mpmath.floor(ratio))
        p0, q0, p1, q1 = p1, q1, whole * p1 + p0, whole * q1 + q0
        if 10**20 < q1 < 10**38 and p1:
            candidates.append(q1)
        ratio = 1 / (ratio - whole)
    return Decimal(DRAW.choice(candidates[-3:])).scaleb(exponent)


def angle():
    return signed(DRAW.choice([
        lambda: sized(-128, 127), lambda: sized(-25, 3), lambda: between(0, 7),
        near_quarter_turn, nearest_quarter_turn])())


def unit():
    return signed(DRAW.choice([
        lambda: sized(-128, -1), lambda: between(0, 1),
        lambda: abs(WORK.subtract(1, mantissa().scaleb(-DRAW.randint(1, 38)))), lambda: Decimal(1)])())


def beyond_one():
    return DRAW.choice([
        lambda: sized(0, 127), lambda: between(1, 3),
        lambda: WORK.add(1, mantissa().scaleb(-DRAW.randint(1, 37)))])()


def any_sign():
    return signed(DRAW.choice([lambda: sized(-128, 127), lambda: sized(-20, 3), near_one])())


def positive():
    return DRAW.choice([lambda: sized(-128, 127), near_one, lambda: between("0.5", 2), lambda: sized(-3, 3)])()


def exponent():
    return signed(DRAW.choice([lambda: sized(-128, 3), lambda: between(0, 380), lambda: sized(-3, 2)])())


def power():
    base = positive()
    if DRAW.random() < 0.3:
        return signed(base), Decimal(DRAW.randint(-40, 40))
    scale = abs(mpmath.log(mpf(str(base))))
    limit = min(mpf(10) ** 100, 380 / scale) if scale else mpf(10) ** 30
    return base, to_decimal(DRAW.choice([1, -1]) * limit * mpf(DRAW.random()) ** DRAW.choice([1, 1, 9]))


def factorial():
    return DRAW.choice([
        lambda: between(-1, 105), lambda: between(-90, 0), lambda: signed(sized(-30, -1)),
        lambda: near(Decimal(DRAW.randint(-70, 100))), lambda: Decimal(DRAW.randint(0, 103))])()


def acot(x):
    return mp.pi / 2 - mpmath.atan(x)


def log1p_based_atanh(x):
    return (mpmath.log(1 + x) - mpmath.log(1 - x)) / 2


FUNCTIONS = {
    "add": (lambda: (any_sign(), any_sign()), lambda x, y: x + y),
    "subtract": (lambda: (any_sign(), any_sign()), lambda x, y: x - y),
    "multiply": (lambda: (signed(sized(-70, 60)), signed(sized(-70, 60))), lambda x, y: x * y),
    "divide": (lambda: (signed(sized(-70, 60)), signed(sized(-70, 60))), lambda x, y: x / y),
    "sqrt": (lambda: (positive(),), mpmath.sqrt),
    "exp": (lambda: (exponent(),), mpmath.exp),
    "ln": (lambda: (positive(),), mpmath.log),
    "log": (lambda: (positive(),), lambda x: mpmath.log(x) / mpmath.log(10)),
    "log2": (lambda: (positive(),), lambda x: mpmath.log(x) / mpmath.log(2)),
    "pow": (power, mpmath.power),
    "nthroot": (lambda: (positive(), DRAW.choice([Decimal(DRAW.randint(1, 50)), sized(0, 20)])),
                lambda x, y: mpmath.exp(mpmath.log(x) / y)),
    "factorial": (lambda: (factorial(),), lambda x: mpmath.gamma(x + 1)),
    "sin": (lambda: (angle(),), mpmath.sin),
    "cos": (lambda: (angle(),), mpmath.cos),
    "tan": (lambda: (angle(),), mpmath.tan),
    "csc": (lambda: (angle(),), lambda x: 1 / mpmath.sin(x)),
    "sec": (lambda: (angle(),), lambda x: 1 / mpmath.cos(x)),
    "cotan": (lambda: (angle(),), lambda x: mpmath.cos(x) / mpmath.sin(x)),
    "versin": (lambda: (angle(),), lambda x: 2 * mpmath.sin(x / 2) ** 2),
    "vercosin": (lambda: (angle(),), lambda x: 2 * mpmath.cos(x / 2) ** 2),
    "coversin": (lambda: (angle(),), lambda x: 1 - mpmath.sin(x)),
    "covercosin": (lambda: (angle(),), lambda x: 1 + mpmath.sin(x)),
    "exsec": (lambda: (angle(),), lambda x: 2 * mpmath.sin(x / 2) ** 2 / mpmath.cos(x)),
    "excsc": (lambda: (angle(),), lambda x: (1 - mpmath.sin(x)) / mpmath.sin(x)),
    "crd": (lambda: (angle(),), lambda x: 2 * mpmath.sin(x / 2)),
    "asin": (lambda: (unit(),), mpmath.asin),
    "acos": (lambda: (unit(),), mpmath.acos),
    "atan": (lambda: (any_sign(),), mpmath.atan),
    "acsc": (lambda: (signed(beyond_one()),), lambda x: mpmath.asin(1 / x)),
    "asec": (lambda: (signed(beyond_one()),), lambda x: mpmath.acos(1 / x)),
    "acotan": (lambda: (any_sign(),), acot),
    "sinh": (lambda: (exponent(),), mpmath.sinh),
    "cosh": (lambda: (exponent(),), mpmath.cosh),
    "tanh": (lambda: (exponent(),), mpmath.tanh),
    "csch": (lambda: (exponent(),), lambda x: 1 / mpmath.sinh(x)),
    "sech": (lambda: (exponent(),), lambda x: 1 / mpmath.cosh(x)),
    "cotanh": (lambda: (exponent(),), lambda x: mpmath.cosh(x) / mpmath.sinh(x)),
    "asinh": (lambda: (any_sign(),), mpmath.asinh),
    "acosh": (lambda: (beyond_one(),), mpmath.acosh),
    "atanh": (lambda: (unit(),), log1p_based_atanh),
    "acsch": (lambda: (any_sign(),), lambda x: mpmath.asinh(1 / x)),
    "asech": (lambda: (abs(unit()),), lambda x: mpmath.acosh(1 / x)),
    "acotanh": (lambda: (signed(beyond_one()),), lambda x: log1p_based_atanh(1 / x)),
}


def text(value):
    return str(value.normalize(WORK)).replace("E+", "E").lower()


def reference(compute, arguments):
    try:
        value = compute(*(mpf(str(each)) for each in arguments))
    except (ZeroDivisionError, ValueError):
        return "NaN"
    if isinstance(value, mpmath.mpc) or mpmath.isnan(value) or mpmath.isinf(value):
        return "NaN"
    return mpmath.nstr(value, 60, strip_zeros=True, min_fixed=1, max_fixed=0).replace(".0e", "e")


def main():
    count = int(sys.argv[1])
    for name, (draw, compute) in FUNCTIONS.items():
        if sys.argv[2:] and name not in sys.argv[2:]:
            continue
        DRAW.seed(name)
        for _ in range(count):
            arguments = [to_decimal(each) for each in draw()]
            print(name, *map(text, arguments), reference(compute, arguments), sep="\t")


if __name__ == "__main__":
    main()
