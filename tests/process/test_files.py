"""Documents as files: saved, opened again, sent and inspected, and read back by the distribution's
plistlib."""

import json
import math
import plistlib
import resource
import struct
import subprocess
import unittest

from host import HOST, HostTest, op
from keyed_archive import Archive

# node_0 document, node_1 group, node_2 clamp and node_3 transition in the group.
PROTOTYPE = [
    op("newDocument", as_="doc"),
    op("newNode", as_="group", patch=None),
    op("setForceAllowsSubnodes", node="group", value=True),
    op("addNode", node="group", to="doc"),
    op("newNode", as_="clamp", patch="HXRClampNode"),
    op("addNode", node="clamp", to="group"),
    op("newNode", as_="source", patch="HXRTransitionNode"),
    op("addNode", node="source", to="group"),
    op("setName", node="group", value="Größe"),
    op("setPosition", node="clamp", value=[0.1, -3]),
    op("setSelected", node="clamp", value=True),
    op("setInspectorPanel", node="clamp", value=2),
    op("wire", from_="source/Tarn.output", to="clamp/Tarn.valueInput"),
    op("setStaticValue", port="clamp/Tarn.minimumInput",
       value={"kind": "degrees", "value": 90}),
    op("setStaticValue", port="source/Tarn.outputMaxInput", value={"kind": "color",
                                                                   "value": [1, 0.5, 0, 1]}),
    op("setPortGroup", node="source", orientation=1, group="Value Range", hidden=True),
    op("publish", port="clamp/Tarn.maximumInput"),
    op("renamePort", symbolicPort="group/Symbolic.node_2.Tarn.maximumInput", name="Limit: Top"),
]


def without_keys(shape):
    """A document's shape with its nodes in a fixed order and under numbers of their own, so that two
    openings of one file are alike."""
    numbers = {}

    def collect(node):
        numbers[node["uniqueKey"]] = f"N{len(numbers)}"
        group = node["subnodeGroup"]
        if group:
            group["subnodes"].sort(key=lambda n: n["name"] or "")
            for subnode in group["subnodes"]:
                collect(subnode)
    collect(shape)
    text = json.dumps(shape, sort_keys=True)
    for key in sorted(numbers, key=len, reverse=True):
        text = text.replace(f'"{key}"', f'"{numbers[key]}"')
        text = text.replace(f"{key}/", f"{numbers[key]}/").replace(f"{key}.", f"{numbers[key]}.")
    shape = json.loads(text)

    def strip(value):
        if isinstance(value, dict):
            return {k: strip(v) for k, v in value.items()
                    if k not in ("documentKey",) and not (k == "uniqueKey" and
                                                          str(v).startswith(("group", "conn")))}
        return [strip(v) for v in value] if isinstance(value, list) else value
    return strip(shape)


def as_xml(data):
    """A keyed archive in the XML form."""
    def plain(value):
        if isinstance(value, plistlib.UID):
            return {"CF$UID": value.data}
        if isinstance(value, dict):
            return {key: plain(entry) for key, entry in value.items()}
        return [plain(entry) for entry in value] if isinstance(value, list) else value
    return plistlib.dumps(plain(plistlib.loads(data)), fmt=plistlib.FMT_XML)


def with_wide_strings(data):
    """A binary list whose ASCII strings are written in UTF-16."""
    width, _, count, _, table = struct.unpack(">6xBBQQQ", data[-32:])
    starts = [int.from_bytes(data[table + i * width:table + (i + 1) * width], "big")
              for i in range(count)]
    objects = []
    for start, end in zip(starts, starts[1:] + [table]):
        body = data[start:end]
        if body[0] >> 4 == 5:
            head = 1
            if body[0] & 15 == 15:
                head += 1 + (1 << (body[1] & 15))
            body = bytes([body[0] + 16]) + body[1:head] + body[head:].decode().encode("utf-16-be")
        objects.append(body)
    out, places = bytearray(data[:8]), []
    for body in objects:
        places.append(len(out))
        out += body
    trailer = struct.pack(">6xBBQQQ", 4, data[-25], count, 0, len(out))
    return bytes(out) + b"".join(place.to_bytes(4, "big") for place in places) + trailer


class Files(HostTest):
    def setUp(self):
        super().setUp()
        self.document = self.folder / "prototype"
        self.keyed = self.folder / "keyed"
        self.graph = self.folder / "graph"
        self.made = self.trace(*PROTOTYPE, op("dump"), op("save", file=str(self.document)),
                               op("save", file=str(self.keyed), codingType=3),
                               op("send", file=str(self.graph))).results[len(PROTOTYPE)]

    def open(self, path, *arguments):
        return json.loads(self.host("open", path, "--json", *arguments)[0])

    def test_what_was_saved_opens_as_it_was(self):
        self.made["name"] = "HXRNode"  # an opened document has met its nil patch
        for arguments in ([self.document], [self.document, "--coding-type", "1"], [self.keyed]):
            with self.subTest(arguments=arguments):
                self.assertEqual(self.without_path(self.open(*arguments)),
                                 self.without_path(self.made))

    def without_path(self, shape):
        shape = without_keys(json.loads(json.dumps(shape)))
        del shape["keyPath"]
        return shape

    def test_coding_type_3_keeps_keys_and_the_others_draw_fresh_ones(self):
        def keys(*operations):
            dump = self.last(op("newNode", patch=None), *operations, op("dump"))
            group = dump["subnodeGroup"]["subnodes"][0]
            return [n["uniqueKey"] for n in (dump, group, *group["subnodeGroup"]["subnodes"])]
        kept = keys(op("open", file=str(self.keyed), codingType=3))
        self.assertEqual(kept, ["node_0", "node_1", "node_2", "node_3"])
        fresh = keys(op("open", file=str(self.document)))
        self.assertNotIn("node_0", fresh)
        self.assertEqual(len(set(fresh)), 4)
        again = keys(op("open", file=str(self.document)), op("open", file=str(self.document)))
        self.assertFalse(set(fresh) & set(again))

    def test_a_kept_key_means_the_node_of_the_document_in_hand(self):
        # The new nodes get the keys that the file's have.
        new = [op("newNode", as_=f"new{i}", patch=None) for i in range(4)]
        name = op("setName", node="node_2", value="this one")
        for operations in ([op("open", file=str(self.keyed), codingType=3), *new],
                           [*new, op("open", file=str(self.keyed), codingType=3)]):
            trace = self.trace(*operations, name, *new, name, op("dump"))
            self.assertEqual(trace.notifications[len(operations)][0][1], "HXNode:node_2")
            self.assertEqual(trace.notifications[-2], [])
            group = trace.results[-1]["subnodeGroup"]["subnodes"][0]["subnodeGroup"]
            self.assertEqual(group["subnodes"][0]["name"], "this one")

    def test_an_opened_document_is_edited_by_its_keys(self):
        trace = self.trace(op("open", file=str(self.keyed), codingType=3),
                           op("setStaticValue", port="node_2/Tarn.minimumInput", value=None),
                           op("breakAll", port="node_2/Tarn.valueInput"),
                           op("removeNode", node="node_2"), op("dump", node="node_1"))
        self.assertEqual([len(posts) for posts in trace.notifications[1:3]], [2, 3])
        group = trace.results[-1]["subnodeGroup"]
        self.assertEqual(([n["uniqueKey"] for n in group["subnodes"]],
                          group["symbolicInputPorts"]), (["node_3"], []))

    def test_the_document_is_a_standard_keyed_archive(self):
        archive = Archive(self.document.read_bytes())
        root = archive.root()
        self.assertEqual(archive.class_name(root), "HXDocument")
        group = archive.resolve(root["HXNode.subnodeGroup"])
        self.assertEqual(archive.class_name(group), "HXGroup")
        self.assertIs(type(group["HXGroup.canvasCenter.x"]), float)
        self.assertNotIn("HXNode.uniqueKey", root)
        self.assertIn("HXNode.uniqueKey", Archive(self.keyed.read_bytes()).root())
        clamp = next(o for o in archive.objects if isinstance(o, dict) and
                     "HXNode.patchClass" in o and
                     archive.resolve(o["HXNode.patchClass"]) == "HXRClampNode")
        self.assertEqual((clamp["HXNode.selected"], clamp["HXNode.inspectorPanel"]), (True, 2))
        self.assertAlmostEqual(clamp["HXNode.position.x"], 0.1, places=6)

    def test_the_xml_form_opens_too(self):
        xml = self.folder / "xml"
        xml.write_bytes(as_xml(self.document.read_bytes()))
        self.assertEqual(self.without_path(self.open(xml)),
                         self.without_path(self.open(self.document)))

    def test_the_device_graph(self):
        graph = plistlib.loads(self.graph.read_bytes())
        self.assertEqual(set(graph), {"$version", "$objects", "$root"})
        self.assertRegex(graph["$version"], r"^\d+\.\d+\.\d+$")
        objects = graph["$objects"]

        def follow(value):
            return objects.get(value["$reference"])
        self.assertEqual(graph["$root"], {"$reference": "$object-0"})
        root = objects["$object-0"]
        self.assertEqual((root["$class"], root["PMNode.uniqueKey"]), ("PMGraph", "node_0"))
        outer = follow(follow(root["PMNode.subnodeGroup"])["PMGroup.subnodes"])
        group_node = follow(outer[0])
        self.assertEqual(group_node["PMNode.processClassName"], "PMRPatch")
        nodes = {n["PMNode.uniqueKey"]: n for n in map(follow, follow(
            follow(group_node["PMNode.subnodeGroup"])["PMGroup.subnodes"]))}
        clamp = nodes["node_2"]
        self.assertEqual(clamp["PMNode.processClassName"], "PMRClampPatch")
        self.assertNotIn("HXNode.name", clamp)
        ports = follow(clamp["PMNode.portsByUniqueKey"])
        minimum = follow(ports["Tarn.minimumInput"])
        self.assertEqual((minimum["$class"], minimum["PMPort.processClassName"]),
                         ("PMPort", "PMRPrimitiveInputPort"))
        self.assertEqual(follow(minimum["PMPort.defaultValue"]),
                         {"$class": "PMRPrimitive", "PMRPrimitive.storageType": 5,
                          "PMRPrimitive.numberValue": 90.0})
        value = follow(ports["Tarn.valueInput"])
        connection = follow(follow(value["PMPort.connections"])[0])
        self.assertEqual(connection["$class"], "PMConnection")
        self.assertEqual(follow(connection["PMConnection.parentNode"])["PMNode.uniqueKey"],
                         "node_1")
        self.assertEqual(follow(connection["PMConnection.outputPortKeyPath"]), ["node_3"])
        self.assertEqual(follow(connection["PMConnection.inputPortKeyPath"]), ["node_2"])
        source = follow(nodes["node_3"]["PMNode.portsByUniqueKey"])
        self.assertIn("Tarn.outputMaxInput", source, "the device gets hidden ports too")

    def test_inspect_tells_the_kinds_apart(self):
        for path, kind in [(self.document, "editorDocument"), (self.keyed, "editorDocument"),
                           (self.graph, "deviceGraph")]:
            output, _ = self.host("inspect", path, "--json")
            self.assertEqual(json.loads(output)["kind"], kind)
        text = self.host("inspect", self.graph)[0].decode()
        self.assertIn("PMNode.processClassName: \"PMRClampPatch\"", text)
        shape = json.loads(self.host("inspect", self.keyed, "--json")[0])["document"]
        self.assertEqual(shape["subnodeGroup"]["subnodes"][0]["name"], "Größe")
        outline = self.host("open", self.document)[0].decode()
        self.assertIn('"Größe"', outline)
        self.assertIn("3 nodes, 1 connection, 0 images", outline)

    def test_a_long_expression_that_many_nodes_share_is_bounded(self):
        script = self.folder / "shared"
        document = self.folder / "shared.tarn"
        nodes = [o for i in range(60)
                 for o in (op("newNode", as_=f"n{i}", patch="HXRMathExpressionNode"),
                           op("addNode", node=f"n{i}", to="doc"))]
        script.write_text("\n".join(json.dumps(o) for o in [
            op("newDocument", as_="doc"), *nodes, op("save", file=str(document))]))
        self.host("run", script)
        archive = plistlib.loads(document.read_bytes())
        text = archive["$objects"].index("$a + $b")

        def opened_with(variables, status):
            archive["$objects"][text] = "+".join(f"$v{i}" for i in range(variables))
            document.write_bytes(plistlib.dumps(archive, fmt=plistlib.FMT_BINARY))
            return self.host("open", document, status=status)

        self.assertIn(b"60 nodes", opened_with(1000, 0)[0])
        self.assertIn("shared by too many objects", opened_with(5000, 1)[1])

    def test_an_outline_shows_the_beginning_of_long_texts(self):
        script = self.folder / "long"
        script.write_text("\n".join(json.dumps(o) for o in [
            op("newDocument", as_="doc"),
            *[op("newNode", as_=f"n{i}", patch="HXRClampNode") for i in range(2)],
            op("addNode", node="n0", to="doc"), op("setName", node="n0", value="ü" * 128),
            op("addNode", node="n1", to="doc"),
            op("setName", node="n1", value="x" + "ü" * 128),
            op("save", file=str(self.folder / "long.tarn"))]))
        self.host("run", script)
        outline = self.host("open", self.folder / "long.tarn")[0].decode()
        self.assertIn('"' + "ü" * 128 + '"', outline)
        self.assertIn('"x' + "ü" * 127 + '…"', outline)

    def test_keys_are_found_however_the_list_is_written(self):
        keyed = self.keyed.read_bytes()
        forms = {
            "binary, UTF-16": with_wide_strings(keyed),
            "XML, UTF-16": as_xml(keyed).decode().replace('"UTF-8"', '"UTF-16"').encode("utf-16"),
        }
        expected = self.without_path(self.open(self.keyed))
        saved = self.folder / "saved"
        self.host("save", self.keyed, "-o", saved)
        for name, data in forms.items():
            with self.subTest(name):
                file = self.folder / "form"
                file.write_bytes(data)
                self.assertEqual(self.without_path(self.open(file)), expected)
                self.host("save", file, "-o", file)
                self.assertEqual(file.read_bytes(), saved.read_bytes())

    def test_what_an_opened_document_lost_is_told(self):
        def told(file, *arguments):
            output, errors = self.host("open", file, "--json", *arguments)
            return json.loads(output), errors.splitlines()
        document, lines = told(self.keyed, "--coding-type", "0")
        self.assertEqual(document["subnodeGroup"]["subnodes"], [])
        self.assertEqual(len(lines), 1)
        self.assertRegex(lines[0], "Leaving out objects that nothing in the archive asks for, .* in "
                                   r"all \(.*HXNode")
        self.assertEqual(told(self.keyed)[1], [])
        self.assertEqual(told(self.document)[1], [])

        def changed(change):
            archive = plistlib.loads(self.document.read_bytes())
            change(archive["$objects"])
            file = self.folder / "changed"
            file.write_bytes(plistlib.dumps(archive, fmt=plistlib.FMT_BINARY))
            document, lines = told(file)
            self.host("save", file, "-o", file)
            self.assertEqual(told(file)[1], [], "what was dropped is gone")
            return document["subnodeGroup"]["subnodes"][0]["subnodeGroup"]["subnodes"], lines

        def rename(objects):
            objects[objects.index("HXRClampNode")] = "HXRPulseNode"
        nodes, lines = changed(rename)
        self.assertEqual({n["patch"] for n in nodes}, {"HXRPulseNode", "HXRTransitionNode"})
        self.assertTrue(lines)
        for line in lines:
            self.assertRegex(line, r"^WARNING: \[HXNode\] Dropping from node_\d+, HXRPulseNode: the "
                                   r"(value|connection|publication) ")

        def repeat(objects):
            ports = next(o for o in objects if isinstance(o, dict) and "NS.keys" in o and
                         "Tarn.minimumInput" in [objects[k.data] for k in o["NS.keys"]])
            keys = [objects[key.data] for key in ports["NS.keys"]]
            ports["NS.objects"][keys.index("Tarn.maximumInput")] = ports["NS.objects"][
                keys.index("Tarn.minimumInput")]
        nodes, lines = changed(repeat)
        self.assertEqual(len([line for line in lines if "under which a port stands again" in line]),
                         1, lines)
        clamp = next(n for n in nodes if n["patch"] == "HXRClampNode")
        ports = {p["key"]: p["staticValue"] for p in clamp["inputPorts"]}
        self.assertEqual(ports["Tarn.minimumInput"], {"kind": "degrees", "value": 90})
        self.assertIsNone(ports["Tarn.maximumInput"])

    def test_a_file_that_may_not_grow_is_a_failure_like_any_other(self):
        def limited():
            resource.setrlimit(resource.RLIMIT_FSIZE, (1000, 1000))
        old = self.folder / "old"
        old.write_text("old")
        for target, place in [(old, str(old)), ("-", "standard output")]:
            with self.subTest(target), open(self.folder / "output", "wb") as output:
                run = subprocess.run([HOST, "save", self.document, "-o", target], stdout=output,
                                     stderr=subprocess.PIPE, preexec_fn=limited, timeout=60)
                self.assertEqual((run.returncode, run.stderr.decode()),
                                 (1, f"tarnkit: save, {place}, File too large\n"))
        self.assertEqual(old.read_text(), "old")
        self.assertEqual(sorted(p.name for p in self.folder.iterdir()),
                         ["graph", "keyed", "old", "output", "prototype"])

    def test_a_negative_zero_keeps_its_sign(self):
        shape = self.last(op("open", file=str(self.keyed), codingType=3),
                          op("setStaticValue", port="node_2/Tarn.minimumInput",
                             value={"kind": "number", "value": -0.0}),
                          op("save", file=str(self.folder / "zero"), codingType=3),
                          op("open", file=str(self.folder / "zero"), codingType=3),
                          op("dump", node="node_2"))
        value = next(p for p in shape["inputPorts"] if p["key"] == "Tarn.minimumInput")["staticValue"]
        self.assertEqual(math.copysign(1, value["value"]), -1)
        self.host("send", self.folder / "zero", "-o", self.folder / "sent")
        self.assertIn(b":-0.0", self.host("inspect", self.folder / "sent", "--json")[0])

    def test_save_and_send_write_what_a_session_writes(self):
        out = self.folder / "out"
        again = self.folder / "again"
        self.host("save", self.keyed, "-o", out)
        self.host("save", out, "-o", again)
        self.assertEqual(again.read_bytes(), out.read_bytes(), "it keeps its keys")
        self.host("save", self.document, "-o", out, "--to", "3")
        self.assertIn("HXNode.uniqueKey", Archive(out.read_bytes()).root())
        self.host("send", self.keyed, "-o", out, "--images", self.folder / "images")
        self.assertEqual(plistlib.loads(out.read_bytes())["$version"],
                         plistlib.loads(self.graph.read_bytes())["$version"])
        self.assertEqual(self.host("send", "-", "-o", "-", input=self.keyed.read_bytes())[0],
                         out.read_bytes())

    def test_failures_leave_the_old_file(self):
        old = self.folder / "old"
        old.write_text("old")
        damaged = self.folder / "damaged"
        damaged.write_bytes(self.document.read_bytes()[:-50])
        cases = [
            (["save", damaged, "-o", old], "save", damaged),
            (["save", self.document, "-o", old, "--to", "2"], "save", self.document),
            (["save", self.document, "-o", old, "--coding-type", "2"], "save", self.document),
            (["send", self.graph, "-o", old], "send", self.graph),
            (["open", self.folder / "missing"], "open", self.folder / "missing"),
            (["open", self.folder], "open", self.folder),
            (["save", self.document, "-o", self.folder / "no" / "where"], "save",
             self.folder / "no" / "where"),
            (["inspect", old], "inspect", old),
        ]
        for arguments, what, where in cases:
            with self.subTest(arguments=arguments):
                line = self.one_line(self.host(*arguments, status=1)[1])
                self.assertTrue(line.startswith(f"{what}, {where}, "), line)
                self.assertEqual(old.read_text(), "old")
        self.assertEqual(sorted(p.name for p in self.folder.iterdir()),
                         ["damaged", "graph", "keyed", "old", "prototype"])


if __name__ == "__main__":
    unittest.main()
