"""Runs the built command-line host the way a user does, for the scripts of this folder."""

import json
import os
import pathlib
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(os.environ.get("TARNKIT_SOURCE_DIR", pathlib.Path(__file__).parents[2]))
HOST = os.environ["TARNKIT"]
_PROGRAM = pathlib.Path(HOST).read_bytes()
IS_SANITIZED = any(name in _PROGRAM for name in (b"__asan_init", b"__tsan_init"))
IS_EMULATED = _PROGRAM.startswith(b"#!")  # the command that runs it in the emulator

DOCUMENT = "document_0"


def op(do, **arguments):
    """An operation; `as_` is the argument "as"."""
    return {"do": do, **{name.rstrip("_"): value for name, value in arguments.items()}}


def posted(name, object_, **info):
    """A notification as the trace shows it, of the first document of the run."""
    return (name, object_, {"DocumentKey": DOCUMENT, **info})


class Trace:
    """The trace of a run, by operation."""

    def __init__(self, text, count):
        self.results = [None] * count
        self.notifications = [[] for _ in range(count)]
        self.logs = [[] for _ in range(count)]
        self.performed = 0
        for line in text.splitlines():
            record = json.loads(line)
            number = record["op"]
            if "notification" in record:
                assert number == self.performed, "a notification after its operation's result"
                self.notifications[number].append(
                    (record["notification"], record["object"], record["userInfo"]))
            elif "log" in record:
                self.logs[number].append(record["log"])
            else:
                assert number == self.performed, "results out of order"
                self.results[number] = record["result"]
                self.performed += 1


class HostTest(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def host(self, *arguments, input=b"", status=0, cwd=None):
        """Runs the host, checks its exit status, and returns (standard output, standard error)."""
        run = subprocess.run([HOST, *map(str, arguments)], input=input, capture_output=True,
                             timeout=120, cwd=cwd)
        self.assertEqual(run.returncode, status, run.stderr.decode(errors="replace"))
        return run.stdout, run.stderr.decode()

    def trace(self, *operations):
        """Performs the operations, all of which must succeed."""
        output, errors = self.host("run", "-", "--trace", input=json.dumps(operations).encode())
        self.assertEqual(errors, "")
        trace = Trace(output.decode(), len(operations))
        self.assertEqual(trace.performed, len(operations))
        return trace

    def last(self, *operations):
        """The result of the last operation."""
        return self.trace(*operations).results[-1]

    def posts_of_last(self, *operations):
        """The notifications of the last operation."""
        return self.trace(*operations).notifications[-1]

    def failure(self, *operations):
        """The one line with which the last of the operations fails, without the program's name."""
        output, errors = self.host("run", "-", "--trace", status=1,
                                   input=json.dumps(operations).encode())
        trace = Trace(output.decode(), len(operations))
        self.assertEqual(trace.performed, len(operations) - 1)
        return self.one_line(errors)

    def one_line(self, errors):
        self.assertEqual(errors.count("\n"), 1, errors)
        self.assertTrue(errors.startswith("tarnkit: "), errors)
        return errors[len("tarnkit: "):-1]


def node(nodes, key):
    """The node of the key in a list of node shapes."""
    return next(shape for shape in nodes if shape["uniqueKey"] == key)


def by_key(shapes):
    return {shape["key"]: shape for shape in shapes}
