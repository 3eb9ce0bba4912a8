"""Random sessions through the module announce what the host's trace of the same operations shows,
and leave the same document."""

import json
import os
import pathlib
import re
import subprocess
import sys

import pytest

HOST = os.environ.get("TARNKIT")
SESSION = pathlib.Path(__file__).with_name("session.py")
# More of them for a night: TARNKIT_SESSIONS=200.
SESSIONS = int(os.environ.get("TARNKIT_SESSIONS", "6"))
OPERATIONS = 600


def python_name(notification):
    name = re.sub("^HX|Notification$", "", notification)
    return re.sub("(?<!^)(?=[A-Z])", "_", name).lower()


def word(value):
    """What a line of the trace carries, as session.py writes it down."""
    if isinstance(value, list):
        return [word(each) for each in value]
    if isinstance(value, dict):
        value, kind = value.get("value"), value["kind"]
        return {kind: value} if kind in ("degrees", "radians") else value
    named = re.fullmatch(r"(HX\w+):(.*)", value) if isinstance(value, str) else None
    if not named:
        return value
    kind, key = named.groups()
    if kind.endswith("PortGroup"):
        node, side, key = key.split("/", 2)
        return f"{node}/{'inputs' if side == '1' else 'outputs'}/{key}"
    return key.split("/")[-1] if kind.endswith("Parameter") else key


def without_random_keys(text):
    """Keys that each process draws at random, numbered in the order in which they appear."""
    seen = {}
    return re.sub("[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}",
                  lambda key: seen.setdefault(key.group(), f"{len(seen):036}"), text)


def trace(text, count):
    """The notices of each operation, and which of them could not be performed."""
    told, refused = [[] for _ in range(count)], set()
    for line in text.splitlines():
        record = json.loads(line)
        number = record["op"]
        if "error" in record:
            refused.add(number)
        if "notification" in record and number < count:
            info = {name: word(value) for name, value in record["userInfo"].items()}
            told[number].append([python_name(record["notification"]), word(record["object"]), info])
    return told, refused


@pytest.mark.skipif(not HOST, reason="the host is not built")
@pytest.mark.parametrize("seed", range(SESSIONS))
def test_sessions(seed, tmp_path):
    subprocess.run([sys.executable, "-B", SESSION, str(seed), str(OPERATIONS), tmp_path], check=True,
                   timeout=300)
    script = (tmp_path / "script").read_text()
    ours = json.loads(without_random_keys((tmp_path / "told.json").read_text()))
    count = script.count("\n")
    saves = "".join(json.dumps({"do": "save", "file": f"saved.{form}", "codingType": int(form)}) + "\n"
                    for form in ours["saved"])
    (tmp_path / "whole").write_text(script + saves)
    done = subprocess.run([HOST, "run", "whole", "--trace", "--history", "--keep-going"],
                          cwd=tmp_path, capture_output=True, text=True, timeout=300, check=False)
    told, refused = trace(without_random_keys(done.stdout), count)
    lines = script.splitlines()
    assert sum(map(len, told)) > count / 2
    for number in range(count):
        assert ours["told"][number] == told[number], f"{number}: {lines[number]}"
    assert refused <= set(ours["refused"]), [lines[number] for number in
                                             refused - set(ours["refused"])]
    for form, data in ours["saved"].items():
        saved = (tmp_path / f"saved.{form}").read_bytes().decode("latin-1")
        assert without_random_keys(saved) == without_random_keys(bytes.fromhex(data).decode("latin-1"))
