"""The pages about the formats are what the program writes: every class and key of their tables stands
in files, every one in files stands in a table, with the type that it says and missing when it says;
the examples are objects of real files."""

import collections
import json
import pathlib
import plistlib
import re
import subprocess
import sys
import tempfile
import unittest

import archives
from host import HOST, ROOT
from manual import REGENERATES, Page, code_of

UUID = re.compile(r"[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}")
Key = collections.namedtuple("Key", "containers leaves absent")


def keys_of(page):
    """{class: {key: what the tables say of it}}"""
    classes = collections.defaultdict(dict)
    for titles, header, rows in page.tables():
        if header[:3] != ["Key", "Type", "Absent"]:
            continue
        for name in titles[-1].split(", "):
            for key, type_, absent, _ in rows:
                of = type_.split(" of ")
                leaves = set(code_of(of[-1])) or {re.sub("s$", "", of[-1])}
                if type_ == "a string or an object":
                    leaves = None
                classes[name][code_of(key)[0]] = Key(tuple(of[:-1]), leaves, absent)
    return classes


class Device:
    """What stands in a device graph or an image archive, in the words of the tables."""

    def __init__(self, archive):
        self.table = archive["$objects"]
        self.objects = [o for o in self.table.values() if isinstance(o, dict) and "$class" in o]

    def class_of(self, record):
        return record["$class"]

    def type_of(self, value):
        """(containers from the outermost, names of what is in them)"""
        if isinstance(value, dict) and list(value) == ["$reference"]:
            value = self.table[value["$reference"]]
        elif isinstance(value, (dict, list, bytes)):
            return (), {"inline " + type(value).__name__}
        if isinstance(value, dict) and "$class" not in value:
            if any(key in value for key in ("KeyPath", "PortKey")):
                return (), {"map"}
            return self.container("map", value.values())
        if isinstance(value, dict) and value["$class"] == "NSOrderedSet":
            return self.container("ordered set", [m for k, m in value.items() if k != "$class"])
        if isinstance(value, list):
            return self.container("list", value)
        return (), {value["$class"] if isinstance(value, dict) else scalar(value)}

    def container(self, kind, members):
        return (kind,), set().union(*(self.type_of(member)[1] for member in members))


class Document(Device):
    """The same of an editor's document."""

    CONTAINERS = {"NSArray": "list", "NSDictionary": "map", "NSOrderedSet": "ordered set"}

    def __init__(self, archive):
        self.table = archive["$objects"]
        self.objects = [o for o in self.table if isinstance(o, dict) and "$class" in o]

    def class_of(self, record):
        return self.table[record["$class"].data]["$classname"]

    def type_of(self, value):
        if not isinstance(value, plistlib.UID):
            return (), {"inline list" if isinstance(value, list) else scalar(value)}
        value = self.table[value.data]
        if not isinstance(value, dict):
            return (), {"number" if isinstance(value, int) else scalar(value)}
        name = self.class_of(value)
        if name not in self.CONTAINERS:
            return (), {name}
        members = value.get("NS.objects") if name != "NSOrderedSet" else [
            m for key, m in value.items() if key != "$class"]
        return self.container(self.CONTAINERS[name], members)


def scalar(value):
    return {bool: "boolean", int: "integer", float: "real", str: "string",
            bytes: "data"}[type(value)]


def plain(value):
    """As JSON, a UID as XML spells it."""
    if isinstance(value, plistlib.UID):
        return {"CF$UID": value.data}
    if isinstance(value, bytes):
        return f"… {len(value)} bytes …"
    if isinstance(value, list):
        return [plain(member) for member in value]
    if isinstance(value, dict):
        return {UUID.sub("1B4E28BA-2FA1-11D2-883F-0016D3CCA427", key): plain(member)
                for key, member in value.items()}
    return value


def text_of(value):
    lines = [f"  {json.dumps(key)}: {json.dumps(member, ensure_ascii=False)}"
             for key, member in plain(value).items()]
    return "{\n" + ",\n".join(lines) + "\n}\n"


def matches(pattern, value):
    """Whether a value is as a pattern shows it, in which "…" stands for anything more."""
    if isinstance(pattern, dict):
        wanted = {key: member for key, member in pattern.items() if key != "…"}
        return ("…" in pattern or wanted.keys() == value.keys()) and all(
            key in value and matches(member, value[key]) for key, member in wanted.items())
    if isinstance(pattern, list):
        wanted = pattern[:-1] if pattern[-1:] == ["…"] else pattern
        return (len(wanted) < len(pattern) or len(wanted) == len(value)) and all(
            map(matches, wanted, value))
    return pattern == value


PATCHES = """# Patches

Every patch as files know it: the class that a [device graph](device-graph.md) names
(`PMNode.processClassName`), the class that a [document](document.md) names (`HXNode.patchClass`), and
the keys of its ports and parameters. What a patch does is told by the pages that
`tarnkit reference` writes; the same as JSON is `tarnkit catalogue --all --json`.

- Patches whose ports follow a parameter, an expression or what is published inside of them have more
  ports than stand here.
- The class of a port on the device is shown without `PMR` and without `InputPort` or `OutputPort`;
  that of a parameter without `PMR` and `Parameter`.
- The default is the value of an input that nobody set. Indexes with names show the name of each.

This page is made from the catalogue.
"""


def value_text(value):
    """A default as a reader of files meets it."""
    if value is None:
        return ""
    if isinstance(value, dict):
        kind = value["kind"]
        return "nil" if kind == "nil" else f"{kind} {value_text(value['value'])}"
    if isinstance(value, bool):
        return str(value).lower()
    if isinstance(value, list):
        return "(" + ", ".join(map(value_text, value)) + ")"
    return json.dumps(value, ensure_ascii=False)


def patches_page(catalogue):
    def row(side, thing, kind, default):
        names = ", ".join(f"{value_text(label['value'].get('value'))} {label['label']}"
                          for label in thing.get("labels", []))
        return (f"| {side} | `{thing['key']}` | {thing['name']} | {kind} | {default}"
                f"{': ' + names if names else ''} |\n")

    text, category = PATCHES, None
    for patch in catalogue:
        if patch["libraryCategory"] != category:
            category = patch["libraryCategory"]
            text += f"\n## {category or 'In no category'}\n"
        text += f"\n### {patch['defaultName']}\n\n"
        text += f"`{patch['processClassName']}` on the device, `{patch['class']}` in documents."
        if patch["hiddenInLibrary"]:
            text += " Not offered by editors."
        rows = ""
        for side in ("input", "output"):
            for group in patch[side + "PortGroups"]:
                for port in group["ports"]:
                    kind = re.sub("^PMR|(Input|Output)?Port$", "", port["processClassName"])
                    rows += row(side, port, kind, value_text(port["default"]))
        for parameter in patch["parameters"]:
            kind = re.sub("^PMR|Parameter$", "", parameter["processClassName"])
            rows += row("parameter", parameter, kind, value_text(parameter.get("default")))
        text += "\n"
        if rows:
            text += "\n| | Key | Name | Kind | Default |\n|---|---|---|---|---|\n" + rows
    return text


class Formats(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        cls.temporary = tempfile.TemporaryDirectory()
        cls.folder = pathlib.Path(cls.temporary.name)
        plain_, keyed, graphs, images = archives.archives(cls.folder)
        cls.files = {"document": [*map(Document, plain_), *map(Document, keyed)],
                     "device-graph": list(map(Device, graphs)),
                     "image-archive": list(map(Device, images))}
        (cls.folder / "examples").symlink_to(ROOT / "examples")
        subprocess.run([HOST, "run", "examples/formats/every-class.json"], cwd=cls.folder,
                       check=True, capture_output=True, timeout=60)

    @classmethod
    def tearDownClass(cls):
        cls.temporary.cleanup()

    def page(self, name):
        return Page(ROOT / f"docs/formats/{name}.md")

    def test_classes_and_keys_are_those_of_the_files(self):
        for name, files in self.files.items():
            documented = keys_of(self.page(name))
            written = collections.defaultdict(set)
            for file in files:
                for record in file.objects:
                    written[file.class_of(record)].update(
                        re.sub(r"^NS\.object\.\d+$", "NS.object.N", key)
                        for key in record if key != "$class")
            with self.subTest(page=name):
                self.assertEqual(sorted(written), sorted(documented))
                for cls, keys in written.items():
                    self.assertLessEqual(keys, documented[cls].keys(), f"{cls}: not documented")
                for cls, keys in documented.items():
                    # A key of several classes need not be in files of each.
                    for key in keys.keys() - written[cls]:
                        self.assertTrue(
                            any(key in written[other] for other in documented
                                if key in documented[other]), f"{cls}: no file has {key}")

    def test_types_are_those_of_the_files(self):
        for name, files in self.files.items():
            documented = keys_of(self.page(name))
            expected, found = collections.defaultdict(set), collections.defaultdict(set)
            for keys in documented.values():
                for key, said in keys.items():
                    if said.leaves is not None:
                        expected[key].update((said.containers, leaf) for leaf in said.leaves)
            for file in files:
                for record in file.objects:
                    for key, value in record.items():
                        key = re.sub(r"^NS\.object\.\d+$", "NS.object.N", key)
                        if key in expected:
                            containers, leaves = file.type_of(value)
                            found[key].update((containers, leaf) for leaf in leaves)
            for key, types in expected.items():
                with self.subTest(page=name, key=key):
                    self.assertEqual(found[key], types)

    def test_keys_are_absent_when_the_tables_say(self):
        for name, files in self.files.items():
            sometimes, missing = set(), set()
            for cls, keys in keys_of(self.page(name)).items():
                sometimes.update(key for key, said in keys.items() if said.absent != "never")
                records = [record for file in files for record in file.objects
                           if file.class_of(record) == cls]
                for key in keys:
                    if any(key not in record for record in records):
                        missing.add(key)
            self.assertEqual(missing, sometimes, name)

    def test_examples_are_objects_of_files(self):
        files = {"document": "every-class.document", "device-graph": "every-class.graph"}
        image, = (self.folder / "every-class-images").iterdir()
        for name in self.files:
            path = self.folder / files.get(name, image)
            archive = plistlib.loads(path.read_bytes())
            file = (Document if name == "document" else Device)(archive)

            def text(block, archive=archive, file=file):
                if block["kind"] != "example":
                    return None
                if block["what"] == "containers":
                    self.assertTrue(matches(json.loads(block["text"]), plain(archive)))
                    return block["text"]
                if block["what"] == "array output":
                    replicator = next(o for o in file.objects
                                      if file.class_of(o) == "PMReplicatorNode")
                    outputs = replicator["PMReplicatorNode.arrayOutputPortKeyToKeyPath"]
                    ids = [outputs["$reference"]]
                    for inner in file.table[ids[0]].values():
                        ids.append(inner["$reference"])
                        ids.append(file.table[ids[1]]["KeyPath"]["$reference"])
                    return text_of({id_: file.table[id_] for id_ in ids})
                record = max((o for o in file.objects if file.class_of(o) == block["what"]),
                             key=len)
                return text_of(record)

            page = self.page(name)
            if REGENERATES:
                page.replace(text)
            for block in page.blocks():
                if (wanted := text(block)) is not None:
                    with self.subTest(page=name, example=block["what"]):
                        self.assertEqual(block["text"], wanted)

    def test_classes_of_ports_are_those_of_the_sources(self):
        tables = [rows for titles, _, rows in self.page("device-graph").tables()
                  if titles[-1] == "Classes of ports"]
        documented = {name for row in tables[0] for name in code_of(row[0])}
        declared = set()
        for source in ROOT.glob("tarnkit/patches/HXR*Port*.cpp"):
            declared |= set(re.findall(r'"(PMR\w*Port)"', source.read_text(encoding="utf-8")))
        self.assertEqual(documented, declared)

    def test_the_page_of_the_patches_is_made_of_the_catalogue(self):
        catalogue = json.loads(subprocess.run([HOST, "catalogue", "--all", "--json"], check=True,
                                              capture_output=True, timeout=60).stdout)
        path, text = ROOT / "docs/formats/patches.md", patches_page(catalogue)
        if REGENERATES:
            path.write_text(text, encoding="utf-8")
        self.assertEqual(path.read_text(encoding="utf-8"), text)

    def test_the_device_reader_needs_nothing_of_this_project(self):
        source = (ROOT / "examples/formats/read_device_graph.py").read_text(encoding="utf-8")
        imports = set(re.findall(r"^import (\w+)", source, re.MULTILINE))
        self.assertLessEqual(imports, {"plistlib", "sys"})
        for graph in ("whole.graph", "bent.graph"):
            run = subprocess.run(
                [sys.executable, str(ROOT / "examples/formats/read_device_graph.py"),
                 str(self.folder / graph)], capture_output=True, text=True, timeout=60)
            self.assertEqual((run.returncode, run.stderr), (0, ""))
            archive = plistlib.loads((self.folder / graph).read_bytes())
            nodes = [o for o in archive["$objects"].values()
                     if isinstance(o, dict) and "PMNode.uniqueKey" in o]
            shown = re.findall(r"^ *(node_\d+) PM", run.stdout, re.MULTILINE)
            self.assertEqual(sorted(shown), sorted(o["PMNode.uniqueKey"] for o in nodes))


if __name__ == "__main__":
    unittest.main()
