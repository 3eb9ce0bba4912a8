"""What the module costs: run by `scripts/python python3 bindings/python/bench/measure.py`.

Nanoseconds of processor time, the least of several runs, all in one run: what is done with nodes
beside the same in C++ (the target tarnkit_python_floor), lxml's elements and networkx's graphs, each
formula beside NumPy's own evaluation and numexpr's, on one thread. What is not there is left out.
"""

import os
import pathlib
import subprocess
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


def rows_of_floor():
    root = pathlib.Path(os.environ.get("TARNKIT_BUILD_DIR", "build/python"))
    floor = root / "bindings/python/tarnkit_python_floor"
    if floor.exists():
        for line in subprocess.check_output([floor], text=True).splitlines():
            name, nanoseconds = line.split("\t")
            yield "C++: " + name, float(nanoseconds)


def rows_of_lxml(count=10_000):
    try:
        from lxml import etree
    except ImportError:
        return

    def grow():
        root = etree.Element("group")
        for number in range(count):
            node = etree.SubElement(root, "node", key=str(number), name="Clamp")
            if number:
                etree.SubElement(node, "wire", source=str(number - 1))
        return root

    root = grow()
    yield "lxml: element.get(name)", attribute('node.get("name")', {"node": root[0]})
    yield "lxml: first proxy of an element", least(list, count, lambda: root)
    yield "lxml: adding and connecting, a node", least(grow, count)


def rows_of_networkx(count=10_000):
    try:
        import networkx
    except ImportError:
        return

    def grow():
        graph = networkx.DiGraph()
        for number in range(count):
            graph.add_node(number, name="Clamp", position=(0, 0))
            if number:
                graph.add_edge(number - 1, number, input="Value")
        return graph

    graph = grow()
    yield "networkx: graph.nodes[n][name]", attribute('nodes[5]["name"]', {"nodes": graph.nodes})
    yield "networkx: adding and connecting, a node", least(grow, count)


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
    for rows in (rows_of_model(), rows_of_floor(), rows_of_lxml(), rows_of_networkx(),
                 rows_of_formulas()):
        for name, nanoseconds in rows:
            print(f"{name:40} {nanoseconds:10.2f} ns", flush=True)
