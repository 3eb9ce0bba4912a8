"""Expressions: values, decimals, functions of one's own, arrays."""

import decimal
import gc
import math
import pickle
import threading
import weakref

import pytest

import tarnkit
from tarnkit import Expression


def test_evaluating():
    formula = Expression("sqrt(x**2 + y**2)")
    assert formula.variables == ("x", "y") and formula.evaluate(x=3, y=4) == 5.0
    assert formula.evaluate({"x": 3.0}, y=True) == math.sqrt(10)
    assert formula.evaluate(x="1 + 2", y=Expression("2 * 2")) == 5
    assert str(formula.simplified()) == str(formula)
    assert str(Expression("$x + 0").rewritten()) == "$x"
    tree = Expression("2 + $x")
    assert (tree.kind, tree.name) == ("function", "add") and tree.arguments[0].number == 2
    assert tree.arguments[1].kind == "variable" and tree == Expression("2+$x")
    assert hash(tree) == hash(Expression("2+$x")) and tree != "2+$x"
    assert pickle.loads(pickle.dumps(tree)) == tree and eval(repr(tree)) == tree


def test_failures():
    with pytest.raises(tarnkit.ExpressionError) as failed:
        Expression("2 + (3")
    assert failed.value.code == 7 and failed.value.text == "2 + (3" and failed.value.reason
    with pytest.raises(tarnkit.ExpressionError) as failed:
        Expression("x + y").evaluate(x=1)
    assert failed.value.name == "y" and isinstance(failed.value, ValueError)
    with pytest.raises(tarnkit.ExpressionError) as failed:
        Expression("nobody(1)").evaluate()
    assert failed.value.name == "nobody"
    for wrong in (object(), [], None):
        with pytest.raises(TypeError):
            Expression("x").evaluate(x=wrong)
    with pytest.raises(TypeError):
        Expression(3)
    with pytest.raises(TypeError, match="Evaluator"):
        Expression("x", evaluator=3)


def marked(failed):
    """The text of an error with its place between brackets."""
    text, offset = failed.value.text, failed.value.offset
    end = offset + failed.value.length
    return f"{text[:offset]}[{text[offset:end]}]{text[end:]}"


@pytest.mark.parametrize("wanted", [
    "π * [é]", "π * [#]", "'😀' + π + [sqrt](1, 2)", "'ümläut 😀' * max(1, 2[+])", "1 + [(]π",
    "'😀' - ['日本語 𝒳']",
])
def test_places_are_characters_of_the_text(wanted):
    text = wanted.replace("[", "").replace("]", "")
    with pytest.raises(tarnkit.ExpressionError) as failed:
        Expression(text).evaluate({"😀": 1, "ümläut 😀": 2})
    assert marked(failed) == wanted


def test_places_of_parts_and_arrays():
    numpy = pytest.importorskip("numpy")
    whole = Expression("π * max(2, '日' + é)")
    for part in (whole, whole.arguments[1], whole.arguments[1].arguments[1], whole.simplified()):
        with pytest.raises(tarnkit.ExpressionError) as failed:
            part.evaluate(日=1)
        if failed.value.offset is None:
            assert failed.value.text == part.text
        else:
            assert marked(failed) == "π * max(2, '日' + [é])"
    with pytest.raises(tarnkit.ExpressionError) as failed:
        whole.evaluate(日=numpy.ones(3))
    assert marked(failed) == "π * max(2, '日' + [é])" and failed.value.name == "é"
    with pytest.raises(tarnkit.ExpressionError) as failed:
        whole.evaluate(日="1 + nobody(2)", é=3)
    assert marked(failed) == "π * max(2, ['日'] + é)"


def test_decimals_and_degrees():
    exact = tarnkit.Evaluator(decimals=True)
    third = Expression("1 / 3 + x", exact).evaluate(x=decimal.Decimal("0.1"))
    assert third == decimal.Decimal("0.43333333333333333333333333333333333333")
    whole = 12345678901234567890123
    assert Expression("x + 1", exact).evaluate(x=whole) == whole + 1
    degrees = tarnkit.Evaluator(degrees=True)
    assert Expression("sin(90)", degrees).evaluate() == 1 and degrees.degrees
    same = [Expression("random(1, 1000000)", tarnkit.Evaluator(seed=7)).evaluate() for _ in range(2)]
    assert same[0] == same[1]


def test_functions_of_ones_own():
    evaluator = tarnkit.Evaluator()
    evaluator.register("mix", lambda a, b, t: a + (b - a) * t)
    evaluator.alias("lerp", "mix")
    formula = Expression("lerp(0, x, 0.5)", evaluator)
    assert formula.evaluate(x=10) == 5 and "mix" in evaluator.functions
    with pytest.raises(tarnkit.RefusedError):
        evaluator.register("sin", math.sin)
    with pytest.raises(TypeError):
        formula.evaluate(x=1) if evaluator.register("bad", lambda: None) else Expression(
            "bad()", evaluator).evaluate()
    evaluator.register("fails", lambda x: 1 / x)
    with pytest.raises(ZeroDivisionError):
        Expression("fails(x)", evaluator).evaluate(x=0)
    evaluator.unregister("mix")
    with pytest.raises(tarnkit.ExpressionError):
        Expression("mix(1, 2, 3)", evaluator).evaluate()
    with pytest.raises(TypeError, match="evaluator"):
        pickle.dumps(formula)


def test_an_evaluator_in_a_circle_with_its_function_is_collected():
    evaluator = tarnkit.Evaluator()
    evaluator.register("self_", lambda x, kept=evaluator: x)
    gone = weakref.ref(evaluator) if hasattr(evaluator, "__weakref__") else None
    del evaluator
    gc.collect()
    assert gone is None or gone() is None


def test_arrays():
    numpy = pytest.importorskip("numpy")
    x, y = numpy.linspace(-3, 3, 1000), numpy.linspace(5, 6, 1000)
    formula = Expression("sqrt(x**2 + y**2) * k")
    values = formula.evaluate(x=x, y=y, k=2)
    expected = [formula.evaluate(x=a, y=b, k=2) for a, b in zip(x, y)]
    assert values.tolist() == expected
    out = numpy.empty(1000)
    assert formula.evaluate(x=x, y=y, k=2, out=out) is out and (out == values).all()
    grid = formula.evaluate(x=x.reshape(10, 100), y=y.reshape(10, 100), k=2)
    assert grid.shape == (10, 100) and (grid.ravel() == values).all()
    turned = formula.evaluate(x=x[::-1], y=y.astype("float32"), k=2)
    assert turned[0] == formula.evaluate(x=3, y=float(numpy.float32(5)), k=2)
    assert formula.evaluate(x=numpy.float64(3), y=4, k=1) == 5
    assert Expression("2").evaluate(x=x).tolist() == [2] * 1000
    assert formula.evaluate(x=x[:0], y=y[:0], k=2).size == 0
    own = tarnkit.Evaluator()
    own.register("half", lambda a: a / 2)
    assert (Expression("half(x)", own).evaluate(x=x) == x / 2).all()
    with pytest.raises(ValueError, match="shapes"):
        formula.evaluate(x=x, y=y[:5], k=1)
    with pytest.raises(ValueError, match="one of the arrays"):
        formula.evaluate(x=x, y=y, k=1, out=x)
    with pytest.raises(TypeError, match="float64"):
        formula.evaluate(x=x, y=y, k=1, out=numpy.empty(1000, "float32"))
    frozen = numpy.empty(1000)
    frozen.flags.writeable = False
    with pytest.raises(ValueError, match="written"):
        formula.evaluate(x=x, y=y, k=1, out=frozen)
    with pytest.raises(tarnkit.ExpressionError, match="k"):
        formula.evaluate(x=x, y=y)
    with pytest.raises(TypeError, match="decimals"):
        Expression("x", tarnkit.Evaluator(decimals=True)).evaluate(x=x)
    with pytest.raises((TypeError, ValueError)):
        formula.evaluate(x=numpy.array(["a", "b"]), y=y[:2], k=1)


def test_columns_in_several_threads():
    numpy = pytest.importorskip("numpy")
    evaluator = tarnkit.Evaluator()
    formula = Expression("x * x + 1", evaluator)
    x = numpy.arange(200_000, dtype=float)
    results = []
    threads = [threading.Thread(target=lambda: results.append(formula.evaluate(x=x)))
               for _ in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join(60)
    assert len(results) == 4 and all((result == x * x + 1).all() for result in results)
