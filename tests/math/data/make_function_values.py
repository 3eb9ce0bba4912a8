#!/usr/bin/env python3
"""Writes function_values.tsv: values of the built-in functions, computed by Python's math module and
its exact integers and fractions, so that the table does not rest on the code that it checks.

Each line: an expression, the angle mode, the value (repr of a double, or nan), the tolerance in
units of the last place. Run as: python3 make_function_values.py > function_values.tsv
"""
import math
import statistics

lines = []


def emit(expression, value, ulps=4, mode="radians"):
    lines.append(f"{expression}\t{mode}\t{float(value)!r}\t{ulps}")


def guarded(function, *arguments):
    try:
        return function(*arguments)
    except (ValueError, ZeroDivisionError):
        return math.nan


def atanh(x):
    return math.copysign(math.inf, x) if abs(x) == 1 else math.atanh(x)


POINTS = [-7.5, -2.0, -1.0, -0.3, 0.125, 0.5, 1.0, 1.7, 3.0, 12.25, 1000.5]

UNARY = {
    "negate": (lambda x: -x, 0),
    "sqrt": (math.sqrt, 0),
    "log": (math.log10, 2),
    "ln": (math.log, 2),
    "log2": (math.log2, 2),
    "ceil": (math.ceil, 0),
    "floor": (math.floor, 0),
    "abs": (abs, 0),
    "percent": (lambda x: x / 100, 1),
    "sin": (math.sin, 2), "cos": (math.cos, 2), "tan": (math.tan, 2),
    "asin": (math.asin, 2), "acos": (math.acos, 2), "atan": (math.atan, 2),
    "sinh": (math.sinh, 4), "cosh": (math.cosh, 4), "tanh": (math.tanh, 4),
    "asinh": (math.asinh, 4), "acosh": (math.acosh, 4), "atanh": (atanh, 4),
    "csc": (lambda x: 1 / math.sin(x), 4), "sec": (lambda x: 1 / math.cos(x), 4),
    "cotan": (lambda x: 1 / math.tan(x), 4),
    "acsc": (lambda x: math.asin(1 / x), 4), "asec": (lambda x: math.acos(1 / x), 4),
    "acotan": (lambda x: math.atan(1 / x), 4),
    "csch": (lambda x: 1 / math.sinh(x), 4), "sech": (lambda x: 1 / math.cosh(x), 4),
    "cotanh": (lambda x: 1 / math.tanh(x), 4),
    "acsch": (lambda x: math.asinh(1 / x), 4), "asech": (lambda x: math.acosh(1 / x), 4),
    "acotanh": (lambda x: atanh(1 / x), 4),
    "versin": (lambda x: 1 - math.cos(x), 4), "vercosin": (lambda x: 1 + math.cos(x), 4),
    "coversin": (lambda x: 1 - math.sin(x), 4), "covercosin": (lambda x: 1 + math.sin(x), 4),
    "haversin": (lambda x: (1 - math.cos(x)) / 2, 4),
    "havercosin": (lambda x: (1 + math.cos(x)) / 2, 4),
    "hacoversin": (lambda x: (1 - math.sin(x)) / 2, 4),
    "hacovercosin": (lambda x: (1 + math.sin(x)) / 2, 4),
    "exsec": (lambda x: 1 / math.cos(x) - 1, 8), "excsc": (lambda x: 1 / math.sin(x) - 1, 8),
    "crd": (lambda x: 2 * math.sin(x / 2), 4),
    "dtor": (math.radians, 1), "rtod": (math.degrees, 1),
    "l_not": (lambda x: x == 0, 0),
}
for name, (function, ulps) in UNARY.items():
    for x in POINTS:
        try:
            value = guarded(function, x)
        except OverflowError:
            continue
        emit(f"{name}({x!r})", value, ulps)
for x in POINTS[:-1]:
    emit(f"exp({x!r})", math.exp(x), 2)

for n in list(range(0, 23)) + [50, 100, 170]:
    emit(f"factorial({n})", math.factorial(n), 0)
for x in (0.5, -0.5, 3.25, 10.75):
    emit(f"factorial({x!r})", math.gamma(x + 1), 16)

PAIRS = [(7.5, 2.0), (-7.5, 2.0), (7.5, -2.0), (2.0, 0.5), (3.0, 3.0), (0.1, 0.2), (1e10, 3.0)]
BINARY = {
    "add": (lambda x, y: x + y, 0), "subtract": (lambda x, y: x - y, 0),
    "multiply": (lambda x, y: x * y, 0), "divide": (lambda x, y: x / y, 0),
    "mod": (math.fmod, 0),
    "l_and": (lambda x, y: bool(x) and bool(y), 0), "l_or": (lambda x, y: bool(x) or bool(y), 0),
    "l_eq": (lambda x, y: x == y, 0), "l_neq": (lambda x, y: x != y, 0),
    "l_lt": (lambda x, y: x < y, 0), "l_gt": (lambda x, y: x > y, 0),
    "l_ltoe": (lambda x, y: x <= y, 0), "l_gtoe": (lambda x, y: x >= y, 0),
}
for name, (function, ulps) in BINARY.items():
    for x, y in PAIRS:
        emit(f"{name}({x!r},{y!r})", function(x, y), ulps)
for x, y in [(2.0, 10.0), (2.5, 2.0), (9.0, 0.5), (-2.0, 3.0), (2.0, -3.0), (0.3, 1.7)]:
    emit(f"pow({x!r},{y!r})", math.pow(x, y), 1)
for x, y in [(27.0, 3.0), (2.0, 2.0), (1e6, 6.0), (0.5, 4.0)]:
    emit(f"nthroot({x!r},{y!r})", math.pow(x, 1 / y), 2)


def signed(value):
    value &= (1 << 64) - 1
    return value - (1 << 64) if value >> 63 else value


for x, y in [(12, 10), (-12, 10), (255, -1), (1 << 40, (1 << 40) + 5), (0, 7)]:
    emit(f"and({x},{y})", x & y, 0)
    emit(f"or({x},{y})", x | y, 0)
    emit(f"xor({x},{y})", x ^ y, 0)
    emit(f"not({x})", ~x, 0)
for x, y in [(1, 0), (1, 10), (-8, 2), (5, 62), (3, 63), (-1, 63)]:
    emit(f"lshift({x},{y})", signed(x << y), 0)
    emit(f"rshift({x},{y})", x >> y, 0)

for values in ([1, 2], [3, 1, 2, 4], [2.5, -1, 7, 0, 100], [2, 4, 4, 4, 5, 5, 7, 9]):
    text = ",".join(repr(v) for v in values)
    emit(f"sum({text})", math.fsum(values), 1)
    emit(f"average({text})", math.fsum(values) / len(values), 1)
    emit(f"min({text})", min(values), 0)
    emit(f"max({text})", max(values), 0)
    emit(f"median({text})", statistics.median(values), 1)
    emit(f"stddev({text})", statistics.pstdev(values), 2)
    emit(f"count({text})", len(values), 0)

CONSTANTS = {
    "phi": (1 + math.sqrt(5)) / 2, "pi": math.pi, "pi_2": math.pi / 2, "pi_4": math.pi / 4,
    "tau": math.tau, "sqrt2": math.sqrt(2), "e": math.e, "log2e": math.log2(math.e),
    "log10e": math.log10(math.e), "ln2": math.log(2), "ln10": math.log(10),
}
for name, value in CONSTANTS.items():
    emit(f"{name}()", value, 1)

for x in (-30.0, 10.0, 60.0, 45.0):
    radians = math.radians(x)
    for name in ("sin", "cos", "tan", "csc", "sec", "cotan", "versin", "vercosin", "coversin",
                 "covercosin", "haversin", "havercosin", "hacoversin", "hacovercosin", "exsec",
                 "excsc", "crd"):
        emit(f"{name}({x!r})", UNARY[name][0](radians), 8, "degrees")
        emit(f"{name}(dtor({x!r}))", UNARY[name][0](radians), 8, "degrees")
for x in (0.25, 0.5, 1.0):
    for name in ("asin", "acos", "atan"):
        emit(f"{name}({x!r})", math.degrees(UNARY[name][0](x)), 4, "degrees")
for x in (1.0, 2.0, 4.0):
    for name in ("acsc", "asec", "acotan"):
        emit(f"{name}({x!r})", math.degrees(UNARY[name][0](x)), 4, "degrees")

print("\n".join(lines))
