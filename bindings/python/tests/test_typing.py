"""The stubs: of one mind with the module, and good for type checkers."""

import os
import subprocess
import sys

import pytest

import tarnkit
from conftest import ROOT

pytest.importorskip("mypy")

PROGRAM = """
import tarnkit

document = tarnkit.open("a.document")
for node in document.nodes:
    for port in node.inputs:
        if port.name.startswith("V") and not port.is_connected:
            port.value = 3
    node.position = (1, 2)
    inner = node.group
    if inner is not None:
        inner.add("Clamp", name="x")
with document.step("x") as history:
    wire = document.nodes["A"].outputs[0] >> document.nodes["B"].inputs["Value"]
    print(wire.input.node.key, history.undo_name)
merged: tarnkit.Document = tarnkit.merge(document, document, document).document
value = tarnkit.Expression("x").evaluate(x=3)
patch: tarnkit.Patch = tarnkit.patches["Clamp"]
document.observe(None, lambda notice: print(notice.name))
"""
WRONG = """
import tarnkit

tarnkit.Document().add("Clamp").key = "x"
tarnkit.Document().add(3)
tarnkit.Document().connect("a", "b")
tarnkit.Expression(3)
"""


def check(module, arguments, folder):
    """Runs a module of mypy's on the package that is tested, in a folder of its own."""
    package = tarnkit.__path__[0].removesuffix("/tarnkit")
    done = subprocess.run([sys.executable, "-m", module, *arguments], capture_output=True,
                          text=True, timeout=900, cwd=folder, check=False,
                          env={**os.environ, "MYPYPATH": package,
                               "MYPY_CACHE_DIR": str(folder / "cache")})
    return done.returncode, done.stdout + done.stderr


def test_stubs_and_module_are_of_one_mind(tmp_path):
    assert check("mypy.stubtest", ["tarnkit", "--concise"], tmp_path) == (0, "")
    (tmp_path / "right.py").write_text(PROGRAM)
    (tmp_path / "wrong.py").write_text(WRONG)
    status, told = check("mypy", ["--strict", "right.py"], tmp_path)
    assert status == 0, told
    assert check("mypy", ["wrong.py"], tmp_path)[1].count(" error: ") == 5


def test_everything_says_what_it_is():
    silent = []
    for name in tarnkit.__all__:
        thing = getattr(tarnkit, name)
        if not callable(thing):
            continue
        if not thing.__doc__:
            silent.append(name)
        if isinstance(thing, type) and thing.__module__.startswith("tarnkit"):
            silent += [f"{name}.{member}" for member, value in vars(thing).items()
                       if not member.startswith("_") and (callable(value) or hasattr(value, "fget")
                                                          or hasattr(value, "__objclass__"))
                       and not value.__doc__]
    assert silent == []


def test_the_manual_names_what_there_is():
    manual = (ROOT / "docs/python.md").read_text(encoding="utf-8")
    missing = [name for name in tarnkit.__all__ if name not in manual]
    assert missing == []
