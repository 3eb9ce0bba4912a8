"""What the module costs: run by `scripts/python python3 bindings/python/bench/measure.py`.

Nanoseconds of processor time, the least of several runs; each formula beside NumPy's own evaluation
and numexpr's, on one thread, in the same run.
"""

import time

import numpy

import tarnkit

REPEATS = 9


def least(operation, count=1, prepare=None):
    """Nanoseconds for one of `count` things that the operation does."""
    best = float("inf")
    for _ in range(REPEATS):
        given = () if prepare is None else (prepare(),)
        start = time.process_time_ns()
        operation(*given)
        best = min(best, time.process_time_ns() - start)
    return best / count


def attribute(text, names, count=200_000):
    """A loop over the expression, without the cost of the loop itself."""
    code = compile(f"for _ in range_: {text}", "", "exec")
    empty = compile("for _ in range_: pass", "", "exec")
    names = {**names, "range_": range(count)}
    return least(lambda: exec(code, names), count) - least(lambda: exec(empty, names), count)


def build(count):
    document = tarnkit.Document()
    earlier = document.add("Clamp")
    for _ in range(count - 1):
        node = document.add("Clamp")
        earlier.outputs[0] >> node.inputs["Value"]
        earlier = node
    return document


def rows_of_model():
    document = build(1000)
    node = document.nodes[0]
    port = node.inputs["Value"]
    port.value = 0.5
    names = {"node": node, "port": port, "document": document}
    for text in ("node.key", "node.name", "node.selected", "node.position", "node.parent",
                 "node.document", "port.name", "port.value", "port.is_connected", "node.inputs",
                 'node.inputs["Tarn.valueInput"]', "node.exists"):
        yield text, attribute(text, names)
    large = build(10_000)
    yield "first handle of a node", least(lambda nodes: list(nodes), 10_000, lambda: large.nodes)
    yield "nodes.positions, a node", least(lambda: large.nodes.positions, 10_000)
    yield "nodes.names, a node", least(lambda: large.nodes.names, 10_000)
    yield 'nodes.values("Value"), a node', least(lambda: large.nodes.values("Value"), 10_000)
    del large
    yield "adding and connecting, a node", least(lambda: build(10_000), 10_000)


def rows_of_formulas(count=100_000):
    x = numpy.linspace(-10, 10, count)
    y, out = x[::-1].copy(), numpy.empty(count)
    a, b, c = 1.5, 2.5, 3.5
    try:
        import numexpr

        numexpr.set_num_threads(1)
    except ImportError:
        numexpr = None
    for text, values, own in (
        ("sqrt(x**2 + y**2)", {"x": x, "y": y}, lambda: numpy.sqrt(x**2 + y**2)),
        ("(x-a)*(x-b)*(x-c)", {"x": x, "a": a, "b": b, "c": c}, lambda: (x - a) * (x - b) * (x - c)),
        ("sin(x) * y", {"x": x, "y": y}, lambda: numpy.sin(x) * y),
        ("x**3.5", {"x": abs(x)}, lambda: abs(x) ** 3.5),
    ):
        formula = tarnkit.Expression(text)
        formula.evaluate(values, out=out)
        yield text + ", a row", least(lambda: formula.evaluate(values, out=out), count)
        yield "  NumPy", least(own, count)
        if numexpr:
            numexpr.evaluate(text, values)
            yield "  numexpr", least(lambda: numexpr.evaluate(text, values, out=out), count)


if __name__ == "__main__":
    for rows in (rows_of_model(), rows_of_formulas()):
        for name, nanoseconds in rows:
            print(f"{name:34} {nanoseconds:10.2f} ns", flush=True)
