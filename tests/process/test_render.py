"""Pictures of documents: all that the model shows is drawn once and nothing else is, whatever the
document holds."""

import html.parser
import json
import os
import pathlib
import re
import unittest

from host import ROOT, HostTest, op
from pictures import (CJK, CONTROL, LONG, RTL, SCRIPT, SVG, Picture, everything, placed, value)


# What would fetch something: a page may refer to its own parts only.
OUTSIDE = re.compile(r"(?i)(href|src)=[\"']?[^\"'#]|url\(|@import|https?:(?!//www\.w3\.org/2000/svg)")


class RenderTest(HostTest):
    def document(self, operations):
        self.host("run", "-", input=json.dumps(operations).encode(), cwd=ROOT)

    def draw(self, document, *options, notes=None):
        """The picture; `notes` are those that standard error must tell."""
        out = self.folder / "out.svg"
        _, errors = self.host("render", document, "-o", out, *options)
        told = [line.split(", ", 2)[2] for line in errors.splitlines()]
        picture = Picture(out.read_text(encoding="utf-8"))
        self.assertEqual(picture.notes()[:len(told)] if told else [], told)
        if notes is not None:
            self.assertEqual(told, notes)
        return picture

    def shape(self, document):
        return json.loads(self.host("open", "--json", document)[0])

    def groups(self, node):
        """Every node that has a subnode group, from this one on."""
        pending, found = [node], []
        while pending:
            node = pending.pop()
            if node["subnodeGroup"]:
                found.append(node)
                pending += node["subnodeGroup"]["subnodes"]
        return found

    def check(self, picture, group):
        """Everything of the group's shape is in its picture once, and nothing else."""
        nodes = group["subnodes"]
        self.assertEqual(sorted(e.get("data-node") for e in picture.each("tk-node")),
                         sorted(n["uniqueKey"] for n in nodes))
        ids = [e.get("id") for e in picture.root.iter() if e.get("id")]
        self.assertEqual(len(ids), len(set(ids)))
        connections = {}
        for shape in nodes:
            drawn = picture.nodes()[shape["uniqueKey"]]
            collapsed = {key for side in ("inputPortGroups", "outputPortGroups")
                         for g in shape[side] if g["collapsedCanvasGroup"] for key in g["portKeys"]}
            ports = [p for p in shape["inputPorts"] + shape["outputPorts"]
                     if p["key"] not in collapsed]
            self.assertEqual(sorted(picture.ports(drawn)), sorted(
                ("input" if p["orientation"] == 1 else "output", p["key"]) for p in ports))
            self.assertEqual(drawn.get("data-patch"), shape.get("unknownPatchClass", shape["patch"]))
            inner = shape["subnodeGroup"]
            self.assertEqual(drawn.get("data-group"), inner and inner["uniqueKey"])
            self.assertEqual(drawn.get("data-count"), inner and str(len(inner["subnodes"])))
            self.assert_lines_are_inside(picture, drawn)
        here = {n["uniqueKey"] for n in nodes}
        for found in self.all_connections(self.whole):
            ends = [found[end] or "" for end in ("displayFrom", "displayTo")]
            if any(end.split("/")[0] in here for end in ends):
                connections[found["uniqueKey"]] = tuple(ends)
        self.assertEqual(sorted(picture.wires()), sorted(connections.values()))
        self.assertEqual(
            sorted((e.get("data-orientation"), e.get("data-port")) for e in picture.each("tk-edge")),
            sorted([("input", p["key"]) for p in group["symbolicInputPorts"]] +
                   [("output", p["key"]) for p in group["symbolicOutputPorts"]]))
        for number in picture.numbers():
            self.assertRegex(number, r"^-?\d{1,7}(\.\d{1,2})?$")

    def all_connections(self, document):
        found = {}
        for owner in self.groups(document):
            for node in owner["subnodeGroup"]["subnodes"]:
                for port in node["inputPorts"] + node["outputPorts"] + node.get("hidden", []):
                    for connection in port["connections"]:
                        found[connection["uniqueKey"]] = connection
        return found.values()

    def assert_lines_are_inside(self, picture, node):
        _, _, width, height = picture.box(node)
        for text in node.iter(SVG + "text"):
            self.assertTrue(0 < float(text.get("x")) < width)
            self.assertTrue(0 < float(text.get("y")) < height)


class Structure(RenderTest):
    def test_the_example_is_drawn_whole(self):
        operations = json.loads((ROOT / "examples/photo-viewer.json").read_text(encoding="utf-8"))
        document = self.folder / "photos.document"
        kept = [o for o in operations if o["do"] not in ("save", "open", "send", "sendImages")]
        self.document(kept + [op("save", file=str(document), codingType=3)])
        self.whole = self.shape(document)
        owners = self.groups(self.whole)
        self.assertGreater(len(owners), 5)
        for owner in owners:
            with self.subTest(owner["name"]):
                group = owner["subnodeGroup"]
                picture = self.draw(document, "--group", group["uniqueKey"])
                self.check(picture, group)
                by_node = self.draw(document, "--group", owner["uniqueKey"])
                self.assertEqual(by_node.text, picture.text)

    def test_everything_that_a_picture_can_show(self):
        document = self.folder / "all.document"
        self.document(everything(document))
        self.whole = self.shape(document)
        for theme in ("light", "dark"):
            picture = self.draw(document, "--theme", theme, notes=["1 node has no patch."])
            wires = picture.wires()
            # Connections of a hidden group's ports have no port to be found by in the shapes.
            self.assertIn(("node_2/Tarn.valueOutput", "node_5/Tarn.maskedToBoundsInput"), wires)
            self.assertEqual(len(wires), 8)
        nodes = picture.nodes()
        # Where the connections of a hidden group and of a collapsed one end.
        ends = {e.get("data-to"): [float(n) for n in
                                   re.findall(r"(-?[\d.]+) (-?[\d.]+)$", e.get("d"))[0]]
                for e in picture.each("tk-wire")}
        x, y, _, _ = picture.box(nodes["node_5"])
        self.assertEqual(ends["node_5/Tarn.maskedToBoundsInput"], [x, y + 13])
        x, y, _, _ = picture.box(nodes["node_3"])
        line = picture.each("tk-collapsed", nodes["node_3"])[0]
        self.assertEqual(line.get("data-port-group"), "Rest Position")
        self.assertEqual(ends["node_3/Tarn.restPosition0Input"],
                         [x, y + float(picture.each("tk-many", line)[0].get("cy"))])
        self.assertNotIn("Mask to Shape", picture.names(nodes["node_5"]))
        # Titles: shortened ones keep the whole as a tooltip.
        titles = {key: picture.each("tk-title", node)[0] for key, node in nodes.items()}
        self.assertEqual(picture.shown(titles["node_2"]), RTL)
        self.assertEqual(titles["node_2"].get("direction"), "rtl")
        self.assertEqual(picture.shown(titles["node_3"]), CJK)
        self.assertEqual(titles["node_6"].find(SVG + "title").text, LONG)
        self.assertRegex(picture.shown(titles["node_6"]), r"^Ein sehr .*[^ ]…$")
        self.assertEqual(titles["node_4"].find(SVG + "title").text,
                         CONTROL.replace("\x07", "\ufffd").replace("\n", " "))
        self.assertRegex(picture.shown(titles["node_7"]), "^(👩‍👩‍👧‍👦)+…$")
        # Values beside inputs that nothing is connected to.
        view = nodes["node_5"]
        shown = {p.get("data-port"): p for p in picture.each("tk-port", view)}
        values = {key: [picture.shown(e) for e in picture.each("tk-value", port)]
                  for key, port in shown.items()}
        self.assertEqual(values["Tarn.widthInput"], ["375"])
        self.assertEqual(values["Tarn.xRotationInput"], ["45°"])
        self.assertEqual(values["Tarn.opacityInput"], [])
        swatch = picture.each("tk-swatch", shown["Tarn.colorInput"])[-1]
        self.assertEqual((swatch.get("fill"), swatch.get("fill-opacity")), ("#ff8000", "0.5"))
        self.assertEqual(len(picture.each("tk-on", nodes["node_2"])), 1)
        self.assertEqual(len(picture.each("tk-warn", nodes["node_8"])), 1)
        group, = (n for n in self.whole["subnodeGroup"]["subnodes"] if n["uniqueKey"] == "node_9")
        inner = self.draw(document, "--group", group["uniqueKey"])
        self.check(inner, group["subnodeGroup"])
        marked = {e.get("data-port") for e in inner.each("tk-port") if e.get("data-published")}
        self.assertEqual(marked, {"Tarn.valueInput", "Tarn.minimumInput", "Tarn.output"})
        links = [e for edge in inner.each("tk-edge") for e in inner.each("tk-link", edge)]
        self.assertEqual(len(links), 3)
        empty = self.draw(document, "--group", "node_13", notes=[])
        self.assertEqual(empty.notes(), ["This group is empty."])

    def test_connections_across_groups(self):
        document = self.folder / "across.document"
        self.document([
            op("newDocument", as_="doc"), *placed("outer", "HXRClampNode", 0, 0),
            *placed("group", None, 300, 0), op("setForceAllowsSubnodes", node="group", value=True),
            *placed("inner", "HXRClampNode", 0, 0, to="group"),
            op("connect", first="outer/Tarn.resultOutput", second="inner/Tarn.valueInput"),
            op("save", file=str(document), codingType=3)])
        self.whole = self.shape(document)
        ends = ("node_1/Tarn.resultOutput", "node_3/Tarn.valueInput")
        outer = self.draw(document, notes=[])
        inner = self.draw(document, "--group", "node_2",
                          notes=["1 connection leads out of the group."])
        self.assertEqual((outer.wires(), inner.wires()), ([ends], [ends]))
        x, y, _, _ = outer.box(outer.nodes()["node_2"])
        self.assertRegex(outer.each("tk-wire")[0].get("d"), f" {x:g} {y + 13:g}$")
        self.assertEqual(len(inner.each("tk-far")), 1)

    def test_text_on_a_title_bar_can_be_read(self):
        patches = {s["defaultColor"].__str__(): s["class"] for s in
                   json.loads(self.host("catalogue", "--json", "--all")[0])}
        self.assertGreater(len(patches), 4)
        document = self.folder / "colors.document"
        self.document([op("newDocument", as_="doc")] + [
            o for i, patch in enumerate(patches.values())
            for o in placed(f"n{i}", patch, 400 * i, 0)] + [op("save", file=str(document))])
        picture = self.draw(document, notes=[])
        style = picture.root.find(SVG + "style").text
        for node in picture.nodes().values():
            kind = picture.each("tk-title", node)[0].get("class").split()[1]
            text = re.search(r"\.%s\{fill:#(\w+)\}" % kind, style).group(1)
            text = text if len(text) == 6 else "".join(c * 2 for c in text)
            bar = picture.each("tk-bar", node)[0].get("fill")[1:]

            def luminance(color):
                parts = [int(color[i:i + 2], 16) / 255 for i in (0, 2, 4)]
                parts = [c / 12.92 if c <= 0.04045 else ((c + 0.055) / 1.055) ** 2.4 for c in parts]
                return 0.2126 * parts[0] + 0.7152 * parts[1] + 0.0722 * parts[2]
            low, high = sorted((luminance(text), luminance(bar)))
            self.assertGreaterEqual((high + 0.05) / (low + 0.05), 4.5, (text, bar))


class Placing(RenderTest):
    def nodes(self, positions, wires=()):
        document = self.folder / "placed.document"
        operations = [op("newDocument", as_="doc")]
        for i, (x, y) in enumerate(positions):
            operations += placed(f"n{i}", "HXRClampNode", x, y)
        for source, target in wires:
            operations.append(op("connect", first=f"n{source}/Tarn.resultOutput",
                                 second=f"n{target}/Tarn.valueInput"))
        self.document(operations + [op("save", file=str(document), codingType=3)])
        return document

    def boxes(self, picture):
        return [picture.box(picture.nodes()[f"node_{i + 1}"])
                for i in range(len(picture.nodes()))]

    def assert_apart(self, boxes):
        for i, (x, y, w, h) in enumerate(boxes):
            for u, v, a, b in boxes[i + 1:]:
                self.assertTrue(x + w <= u or u + a <= x or y + h <= v or v + b <= y)

    def test_nodes_that_can_stay_stay(self):
        positions = [(-500, 20), (0, 0.5), (99999, -99999), (0, 400)]
        picture = self.draw(self.nodes(positions), notes=[])
        self.assertEqual([box[:2] for box in self.boxes(picture)], positions)

    def test_nodes_that_cannot_are_laid_out_by_layers(self):
        chain = [(i, i + 1) for i in range(5)]
        cases = [
            ("one spot", [(7, 7)] * 6, chain, "all nodes stand on one spot"),
            ("overlap", [(0, 0), (30, 10), (500, 0), (800, 0), (0, 500), (900, 900)], chain,
             "nodes overlap at their own positions"),
            ("no number", [("nan", 0)] + [(300 * i, 0) for i in range(1, 6)], chain,
             "a position is no number or too far out"),
            ("far out", [(300 * i, 0) for i in range(5)] + [(1e30, "-inf")], chain,
             "a position is no number or too far out"),
            ("a circle", [(0, 0)] * 6, chain + [(5, 0), (3, 1), (2, 2)],
             "all nodes stand on one spot"),
        ]
        for name, positions, wires, reason in cases:
            with self.subTest(name):
                picture = self.draw(self.nodes(positions, wires),
                                    notes=[f"Laid out by layers: {reason}."])
                boxes = self.boxes(picture)
                self.assert_apart(boxes)
                for source, target in chain:  # from the left to the right
                    self.assertLess(boxes[source][0] + boxes[source][2], boxes[target][0])
                self.assertEqual(len(picture.wires()), len(wires))
                for number in picture.numbers():
                    self.assertRegex(number, r"^-?\d{1,6}(\.\d{1,2})?$")


class Files(RenderTest):
    def test_the_same_document_gives_the_same_bytes(self):
        document = self.folder / "all.document"
        self.document(everything(document))
        for options in ((), ("--format", "html"), ("--group", "node_9")):
            first, _ = self.host("render", document, "-o", "-", *options)
            second, _ = self.host("render", document, "-o", "-", *options)
            self.assertEqual(first, second)
            self.assertIsNone(OUTSIDE.search(first.decode()))

    def test_a_patch_that_is_missing_is_said_to_be(self):
        document = self.folder / "plugged.document"
        script = [op("newDocument", as_="doc"), *placed("w", "WiggleNode", 0, 0),
                  op("save", file=str(document))]
        self.host("--plugin", os.environ["TARNKIT_PLUGIN"], "run", "-",
                  input=json.dumps(script).encode())
        picture = self.draw(document, notes=["1 node has a patch that is not known here."])
        node, = picture.nodes().values()
        self.assertEqual(node.get("data-patch"), "WiggleNode")
        self.assertEqual(sorted(picture.ports(node)),
                         [("input", "Wiggle.amountInput"), ("output", "Wiggle.offsetOutput")])
        self.assertIn("Unknown patch WiggleNode", "".join(node.itertext()))

    def test_failures_are_one_line(self):
        document = self.folder / "d.document"
        self.document([op("newDocument", as_="doc"), op("save", file=str(document))])
        cases = [
            ([document, "-o", self.folder / "no" / "such.svg"], "such.svg"),
            ([document, "-o", self.folder], str(self.folder)),
            ([document, "-o", "/dev/full"], "/dev/full"),
            ([document, "-o", "-", "--group", "group_99"], "it has no group group_99"),
            ([self.folder / "none", "-o", "-"], "none"),
            ([ROOT / "README.md", "-o", "-"], "README.md"),
        ]
        for arguments, told in cases:
            with self.subTest(told):
                _, errors = self.host("render", *arguments, status=1)
                self.assertIn(told, self.one_line(errors))
        for wrong in (["--format", "png"], ["--theme", "sepia"], []):
            output = ["-o", "-"] if wrong else []
            self.one_line(self.host("render", document, *output, *wrong, status=2)[1])


class PageReader(html.parser.HTMLParser):
    def __init__(self, page):
        super().__init__()
        self.scripts, self.ids = [], []
        self.feed(page)

    def handle_starttag(self, tag, attributes):
        attributes = dict(attributes)
        if tag == "script":
            self.scripts.append((attributes, []))
        if "id" in attributes:
            self.ids.append(attributes["id"])

    def handle_data(self, data):
        if self.lasttag == "script" and self.scripts:
            self.scripts[-1][1].append(data)

    def data(self):
        """What the page knows of each group."""
        *groups, tables = [json.loads("".join(text)) for attributes, text in self.scripts
                           if attributes.get("type") == "application/json"]

        def text(number):
            entry = tables["texts"][number]
            return tables["texts"][entry[0]] if isinstance(entry, list) else entry

        def node(title, form):
            packed = iter(tables["parameters"][tables["forms"][form][4]])
            return {"name": text(title),
                    "parameters": {text(name): text(value) for name, value, _ in zip(packed, packed, packed)}}

        return [{"title": text(group["title"]),
                 "nodes": [node(*each) for each in zip(group.get("titles", []), group.get("forms", []))]}
                for group in groups]


class Page(RenderTest):
    def page(self, document):
        return self.host("render", document, "-o", "-", "--format", "html")[0].decode()

    def test_parameters_are_told_as_people_read_them(self):
        document = self.folder / "parameters.document"
        changes = {"Tarn.integerParameter": 3, "Tarn.floatParameter": 0.5,
                   "Tarn.colorParameter": [1, 0, 0, 1], "Tarn.singleLineStringParameter": "text"}
        self.document([
            op("newDocument"),
            op("newNode", as_="grid", patch="HXRGridLayoutNode"), op("addNode", node="grid", to="node_0"),
            op("newNode", as_="all", patch="HXRDebugNode"), op("addNode", node="all", to="node_0"),
            *[op("setParameter", node="all", parameter=key, value=value)
              for key, value in changes.items()],
            op("save", file=str(document))])
        grid, all_ = [node["parameters"] for node in PageReader(self.page(document)).data()[0]["nodes"]]
        self.assertEqual(grid, {"Vertical": "on"})
        self.assertEqual(all_, {
            "Boolean": "off", "Integer": "3", "Float": "0.5", "Color": "#ff0000",
            "Single Line String": "text", "Multi-Line String": "", "Image": "no image"})

    def test_names_cannot_break_out_of_the_page(self):
        document = self.folder / "all.document"
        self.document(everything(document))
        page = self.page(document)
        reader = PageReader(page)
        self.assertEqual(len(reader.ids), len(set(reader.ids)))
        data = reader.data()
        self.assertEqual(len(reader.scripts), len(data) + 2)  # the tables, and what draws
        self.assertEqual([d["title"] for d in data[:1]], ["Document"])
        self.assertEqual(sorted(d["title"] for d in data if d["title"] == SCRIPT), [SCRIPT])
        names = [n["name"] for d in data for n in d["nodes"]]
        self.assertIn(LONG, names)
        self.assertIn(CONTROL, names)
        self.assertFalse(SCRIPT in page)

    def test_a_page_of_too_many_groups_says_so(self):
        document, page = self.folder / "deep.document", self.folder / "deep.html"
        self.document([op("newDocument", as_="g0")] + [
            o for i in range(1, 10_100) for o in (
                op("newNode", as_=f"g{i}", patch=None),
                op("setForceAllowsSubnodes", node=f"g{i}", value=True),
                op("addNode", node=f"g{i}", to=f"g{i - 1}"))] + [op("save", file=str(document))])
        _, errors = self.host("render", document, "-o", page, "--format", "html")
        self.assertIn("the nearest 10000 groups only", self.one_line(errors))
        self.assertEqual(page.read_text(encoding="utf-8").count(" data-parent="), 10_000)


if __name__ == "__main__":
    unittest.main()
