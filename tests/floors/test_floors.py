"""The include graph of the library is a house of floors: nothing includes upward, no header includes
itself in a circle, and every include of the library's own names a file that is there."""

import os
import pathlib
import re
import tempfile
import unittest

# What each room may include beside itself. `images` is a folder of the platform floor and a library
# of its own: what does not list it must work without an image library.
FLOORS = {
    "platform": set(),
    "images": {"platform"},
    "foundation": {"platform"},
    "archive": {"platform", "foundation"},
    "math": {"platform", "foundation"},
    "patches": {"platform", "foundation", "archive", "math"},
    "model": {"platform", "images", "foundation", "archive", "math", "patches"},
    "editing": {"platform", "images", "foundation", "archive", "math", "patches", "model"},
    "text": {"platform", "images", "foundation", "archive", "math", "patches", "model"},
    "compare": {"platform", "images", "foundation", "archive", "math", "patches", "model",
                "editing", "text"},
    "render": {"platform", "images", "foundation", "archive", "math", "patches", "model",
               "editing", "text", "compare"},
}
# The shelves of the platform, and what the headers on each may include beside their own. Sources may
# look further: an object describes itself by a string, and a string is an object.
SHELVES = {
    "objects": set(),
    "text": {"objects"},
    "numbers": {"objects", "text"},
    "collections": {"objects", "text"},
    "system": {"objects", "text", "collections"},
    "propertylist": {"objects", "text", "collections", "system"},
    "coding": {"objects", "text", "numbers", "collections", "system", "propertylist"},
}
INCLUDE = re.compile(r'^[ \t]*#[ \t]*include[ \t]*(["<])([^">]+)[">]', re.MULTILINE)


def room_of(path):
    """The room of a path such as tarnkit/math/MXParser.h; None when it is in none."""
    parts = path.split("/")
    if len(parts) < 3 or parts[0] != "tarnkit":
        return None
    if parts[1] == "platform" and parts[2] == "images":
        return "images"
    return parts[1]


def shelf_of(path):
    """The shelf of a path on the platform floor, None elsewhere."""
    parts = path.split("/")
    return parts[2] if parts[1] == "platform" and parts[2] in SHELVES else None


def own_includes(root, path):
    """The library's headers that a file includes, as paths from the root; and complaints."""
    found, complaints = [], []
    text = (root / path).read_text(encoding="utf-8")
    for quote, name in INCLUDE.findall(text):
        if name.startswith("tarnkit/"):
            if quote == "<":
                complaints.append(f"{path}: <{name}> is ours and stands in quotes")
            if not (root / name).is_file():
                complaints.append(f"{path}: {name} does not exist")
            else:
                found.append(name)
        elif quote == '"' and path.startswith("tarnkit/"):
            complaints.append(f'{path}: "{name}" is not named from the root')
    return found, complaints


def circle_in(graph):
    """Some circle of a graph as a list of nodes, or None; depth-first without recursion."""
    done = set()
    for start in sorted(graph):
        if start in done:
            continue
        trail, on_trail, pending = [start], {start}, [iter(graph[start])]
        while trail:
            following = next(pending[-1], None)
            if following is None:
                on_trail.discard(trail[-1])
                done.add(trail.pop())
                pending.pop()
            elif following in on_trail:
                return trail[trail.index(following):] + [following]
            elif following not in done:
                trail.append(following)
                on_trail.add(following)
                pending.append(iter(graph.get(following, ())))
    return None


def violations(root):
    root = pathlib.Path(root)
    complaints, headers = [], {}
    for file in sorted(root.glob("tarnkit/**/*")):
        if file.suffix not in (".h", ".cpp"):
            continue
        path = file.relative_to(root).as_posix()
        room = room_of(path)
        if room not in FLOORS:
            complaints.append(f"{path}: stands in no room")
            continue
        includes, wrong = own_includes(root, path)
        complaints += wrong
        shelf = shelf_of(path)
        if room == "platform" and not shelf:
            complaints.append(f"{path}: stands on no shelf")
        if file.suffix == ".h":
            headers[path] = includes
            for name in includes:
                below = shelf_of(name)
                if shelf and below and below != shelf and below not in SHELVES[shelf]:
                    complaints.append(f"{path}: {shelf} may not include {below} ({name})")
        for name in includes:
            below = room_of(name)
            if below != room and below not in FLOORS[room]:
                complaints.append(f"{path}: {room} may not include {below} ({name})")
    circle = circle_in(headers)
    if circle:
        complaints.append("headers in a circle: " + " -> ".join(circle))
    return complaints


class Floors(unittest.TestCase):
    maxDiff = None

    def test_the_library_stands_on_its_floors(self):
        root = pathlib.Path(os.environ.get("TARNKIT_SOURCE_DIR", pathlib.Path(__file__).parents[2]))
        self.assertTrue(list(root.glob("tarnkit/platform/*/*.h")), f"no library below {root}")
        self.assertEqual(violations(root), [])

    def test_each_kind_of_violation_is_seen(self):
        good = {
            "tarnkit/platform/text/A.h": "#include <vector>\n",
            "tarnkit/math/B.h": '#include "tarnkit/platform/text/A.h"\n',
            "tarnkit/model/C.cpp": '#include "tarnkit/math/B.h"\n',
        }
        cases = [
            ("nothing", {}, None),
            ("upward", {"tarnkit/platform/text/D.cpp": '#include "tarnkit/math/B.h"\n'}, "may not include"),
            ("sideways", {"tarnkit/archive/D.cpp": '#include "tarnkit/math/B.h"\n'}, "may not include"),
            ("an image library behind math",
             {"tarnkit/platform/images/I.h": "", "tarnkit/math/D.cpp":
              '  # include "tarnkit/platform/images/I.h"\n'}, "may not include images"),
            ("a circle of headers",
             {"tarnkit/math/E.h": '#include "tarnkit/math/F.h"\n',
              "tarnkit/math/F.h": '#include "tarnkit/math/E.h"\n'}, "in a circle"),
            ("a file that is not there", {"tarnkit/math/E.h": '#include "tarnkit/math/No.h"\n'},
             "does not exist"),
            ("a name from the side", {"tarnkit/math/E.cpp": '#include "B.h"\n'}, "from the root"),
            ("upward on the shelves",
             {"tarnkit/platform/objects/O.h": '#include "tarnkit/platform/text/A.h"\n'},
             "objects may not include text"),
            ("no shelf", {"tarnkit/platform/E.h": ""}, "no shelf"),
            ("a room of no floor", {"tarnkit/attic/E.h": ""}, "no room"),
        ]
        for name, files, expected in cases:
            with self.subTest(name), tempfile.TemporaryDirectory() as folder:
                for path, text in {**good, **files}.items():
                    target = pathlib.Path(folder, path)
                    target.parent.mkdir(parents=True, exist_ok=True)
                    target.write_text(text, encoding="utf-8")
                found = violations(folder)
                if expected is None:
                    self.assertEqual(found, [])
                else:
                    self.assertEqual(len(found), 1, found)
                    self.assertIn(expected, found[0])


if __name__ == "__main__":
    unittest.main()
