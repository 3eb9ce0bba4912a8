"""What all tests share: no test leaves an object of the library alive."""

import ctypes
import gc
import os
import pathlib
import re
import tempfile

import pytest
from _pytest import runner

import tarnkit

ROOT = pathlib.Path(os.environ.get("TARNKIT_SOURCE_DIR", pathlib.Path(__file__).parents[3]))
# Whether the module was built with AddressSanitizer (scripts/python --sanitize).
SANITIZER = ctypes.CDLL(None)
IS_SANITIZED = hasattr(SANITIZER, "__lsan_do_recoverable_leak_check")
# Type checkers take their time with it, and would find nothing else.
collect_ignore = ["test_typing.py"] if IS_SANITIZED else []
PHOTO = sorted((ROOT / "examples/photos").iterdir())[0]


def touch_and_switch():
    """A document of two nodes and a wire."""
    document = tarnkit.Document()
    touch = document.add("Touch Interaction", name="Finger")
    toggle = document.add("Switch", position=(200, 40))
    touch.outputs["Down"] >> toggle.inputs["Toggle"]
    return document


def run_measured(item, nextitem):
    """The reports of a test, and by how many objects of the library the process has grown."""
    gc.collect()
    before = tarnkit.live_objects()
    reports = runner.runtestprotocol(item, nextitem=nextitem, log=False)
    gc.collect()
    return reports, tarnkit.live_objects() - before


@pytest.hookimpl(tryfirst=True)
def pytest_runtest_protocol(item, nextitem):
    """Runs a test once more when objects stay: what is made at first use (shared names, the
    definitions of patches) stays once, a leak every time. What a failure holds is not counted."""
    item.ihook.pytest_runtest_logstart(nodeid=item.nodeid, location=item.location)
    reports, grown = run_measured(item, nextitem)
    if grown > 0 and all(report.passed for report in reports):
        reports, grown = run_measured(item, nextitem)
        if grown > 0 and all(report.passed for report in reports):
            reports[1].outcome = "failed"
            reports[1].longrepr = f"{grown} objects of the library are alive after the test"
    for report in reports:
        item.ihook.pytest_runtest_logreport(report=report)
    item.ihook.pytest_runtest_logfinish(nodeid=item.nodeid, location=item.location)
    return True


def leaks_of_the_module():
    """What the sanitizer tells of memory that nobody refers to; what the interpreter and the packages
    of others have lost is none of ours."""
    gc.collect()
    with tempfile.TemporaryFile() as told:
        kept = os.dup(2)
        os.dup2(told.fileno(), 2)
        SANITIZER.__lsan_do_recoverable_leak_check()
        os.dup2(kept, 2)
        os.close(kept)
        told.seek(0)
        report = told.read().decode(errors="replace")
    blocks = re.split(r"\n(?=(?:Direct|Indirect) leak of)", report)[1:]
    return [block.split("\n\n")[0] for block in blocks if "_tarnkit" in block.split("\n\n")[0]]


def pytest_sessionfinish(session, exitstatus):
    found = leaks_of_the_module() if IS_SANITIZED and exitstatus == 0 else []
    if found:
        print("\n" + "\n\n".join(found[:10]), f"\n{len(found)} leaks")
        session.exitstatus = 1


@pytest.fixture
def document():
    return tarnkit.Document()


@pytest.fixture
def wired():
    return touch_and_switch()
