"""Documents as text: written and read by every command that opens a document, held to the published
schema by the distribution's validator, and unchanged where nothing changes."""

import json
import pathlib
import subprocess
import tempfile
import unittest

import jsonschema

from host import HOST, ROOT

SCHEMA = json.loads((ROOT / "docs/document.schema.json").read_text())
EXAMPLES = sorted((ROOT / "examples/documents").glob("*.json"))
TOGGLE = {
    "tarnkit": 1,
    "nodes": [
        {"id": "touch", "patch": "Touch Interaction", "position": [-200, 0]},
        {"id": "toggle", "patch": "Switch", "connections": {"Toggle": "touch/Down"}},
    ],
}


def run(*arguments, **more):
    return subprocess.run([HOST, *map(str, arguments)], capture_output=True, text=True, timeout=120,
                          check=False, **more)


class TextTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.validator = jsonschema.Draft202012Validator(SCHEMA)

    def host(self, *arguments):
        done = run(*arguments)
        self.assertEqual((done.returncode, done.stderr), (0, ""), arguments)
        return done.stdout

    def write(self, content, name="document.json"):
        path = self.folder / name
        path.write_text(content if isinstance(content, str) else json.dumps(content))
        return path

    def test_the_schema_is_one(self):
        jsonschema.Draft202012Validator.check_schema(SCHEMA)

    def test_saving_an_example_changes_nothing(self):
        self.assertGreater(len(EXAMPLES), 1)
        for example in EXAMPLES:
            with self.subTest(example.name):
                again = self.folder / example.name
                self.host("save", example, "-o", again)
                self.assertEqual(again.read_text(), example.read_text())
                self.validator.validate(json.loads(example.read_text()))
                archive = self.folder / "archive"
                self.host("save", example, "-o", archive)
                self.assertTrue(archive.read_bytes().startswith(b"bplist00"))
                self.host("save", archive, "-o", again)
                self.assertEqual(again.read_text(), example.read_text())

    def test_the_example_of_the_manual_works(self):
        manual = (ROOT / "docs/formats/text.md").read_text()
        example = manual.split("```json\n")[1].split("```")[0]
        self.validator.validate(json.loads(example))
        shape = json.loads(self.host("open", self.write(example), "--json"))
        self.assertEqual([node["uniqueKey"] for node in shape["subnodeGroup"]["subnodes"]],
                         ["card", "toggle", "touch"])

    def test_every_form_opens_as_the_others(self):
        text = self.write(TOGGLE)
        shape = self.host("open", text, "--json")
        for name in "again.json", "archive.xml", "archive":
            with self.subTest(name):
                other = self.folder / name
                self.host("save", text, "-o", other)
                self.assertEqual(json.loads(self.host("open", other, "--json"))["subnodeGroup"]
                                 ["subnodes"], json.loads(shape)["subnodeGroup"]["subnodes"])
        forced = self.folder / "forced"
        self.host("save", self.folder / "archive", "-o", forced, "--format", "json")
        self.assertEqual(forced.read_text(), (self.folder / "again.json").read_text())
        self.host("save", text, "-o", forced, "--format", "binary")
        self.assertEqual(forced.read_bytes(), (self.folder / "archive").read_bytes())

    def test_commands_take_it(self):
        text = self.write(TOGGLE, "named-otherwise")
        self.assertIn("Switch", self.host("open", text))
        self.assertIn("editor document, ", self.host("inspect", text))
        self.host("send", text, "-o", self.folder / "graph")
        self.host("render", text, "-o", self.folder / "picture.svg")
        self.host("render", text, "-o", self.folder / "page.html", "--format", "html")
        from_input = run("open", "-", input=text.read_text())
        self.assertEqual(from_input.stdout, self.host("open", text))
        fresh = json.loads(self.host("open", text, "--coding-type", "0", "--json"))
        keys = [node["uniqueKey"] for node in fresh["subnodeGroup"]["subnodes"]]
        self.assertTrue(all(key.startswith("node_") for key in keys), keys)

    def test_the_order_of_connections_stays(self):
        clamp, interaction = {"patch": "HXRClampNode"}, "touch/Tarn.interactionOutput"
        document = {"tarnkit": 1, "id": "document", "nodes": [
            {"id": "a", "in": "box", **clamp},
            {"id": "b", "in": "box", **clamp},
            # Its inputs stand in another order than their keys.
            {"id": "box",
             "publishedInputs": ["b/Tarn.valueInput", "a/Tarn.valueInput",
                                 "view/Tarn.interactionInput"],
             "connections": {"Symbolic.a.Tarn.valueInput": "source/Tarn.resultOutput",
                             "Symbolic.b.Tarn.valueInput": "source/Tarn.resultOutput",
                             "Symbolic.view.Tarn.interactionInput": interaction}},
            {"id": "source", **clamp},
            {"id": "touch", "patch": "HXRTouchInteractionNode"},
            {"id": "touch2", "in": "box", "patch": "HXRTouchInteractionNode"},
            {"id": "view", "in": "box", "patch": "HXRColorViewNode",
             "connections": {"Tarn.interactionInput": {"from": "touch2/Tarn.interactionOutput",
                                                       "inputPlace": 0}}},
        ]}
        text, again = self.write(document), self.folder / "again.json"
        archive = self.folder / "archive"
        self.host("save", text, "-o", archive)
        for source in text, archive:
            with self.subTest(source.name):
                self.host("save", source, "-o", again)
                self.assertEqual(json.loads(again.read_text()), document)

    def test_a_near_name_is_one_in_any_case(self):
        node = {"id": "toggle", "patch": "Switch", "connections": {"Toggle": "AZ/Down"}}
        text = self.write({"tarnkit": 1, "nodes": [{"id": "az", "patch": "Touch Interaction"}, node]})
        self.assertIn('there is no node "AZ"; "az"?', run("open", text).stderr)

    def test_sessions_take_it(self):
        text = self.write(TOGGLE)
        out = self.folder / "out.json"
        script = [{"do": "open", "file": str(text)},
                  {"do": "setName", "node": "toggle", "value": "On"},
                  {"do": "save", "file": str(out), "format": "json"}]
        self.host("run", self.write(script, "script.json"))
        self.assertIn('"name": "On"', out.read_text())
        self.validator.validate(json.loads(out.read_text()))

    def test_images_stand_beside(self):
        photo = ROOT / "examples/photos/northern-lights.png"
        archive = self.folder / "archive"
        script = [{"do": "newDocument"}, {"do": "addImage", "file": str(photo)},
                  {"do": "save", "file": str(archive), "codingType": 3}]
        self.host("run", self.write(script, "script.json"))
        text = self.folder / "text.json"
        self.host("save", archive, "-o", text, "--images", self.folder / "pictures")
        saved = json.loads(text.read_text())
        self.validator.validate(saved)
        self.assertTrue((self.folder / saved["images"][0]["file"]).is_file())
        self.assertLess(text.stat().st_size, 400)
        again = self.folder / "again"
        self.host("save", text, "-o", again)
        inline = self.folder / "inline.json"
        self.host("save", text, "-o", inline)
        self.validator.validate(json.loads(inline.read_text()))
        self.host("save", inline, "-o", self.folder / "third")
        self.assertEqual((self.folder / "third").read_bytes(), again.read_bytes())
        self.assertNotEqual(run("save", archive, "-o", text, "--images", "/elsewhere").returncode, 0)
        # A text that is mended keeps them where they are.
        saved["nodes"] = [{"id": "left", "forceAllowsSubnodes": True}]
        text.write_text(json.dumps(saved), encoding="utf-8")
        self.assertIn("1 finding was fixed",
                      run("check", "--fix", "--only", "group-empty", text).stderr)
        mended = json.loads(text.read_text())
        self.assertEqual((mended["images"], mended.get("nodes")), (saved["images"], None))
        (self.folder / saved["images"][0]["file"]).unlink()
        self.assertRegex(run("open", text).stderr, r"line \d+: images\[0\]\.file: .*pictures/")
        self.assertEqual(run("open", text, "--without-images").returncode, 0)

    def test_what_the_reader_refuses_the_schema_refuses(self):
        node = TOGGLE["nodes"][0]
        wrong = {
            "form": {"tarnkit": 2},
            "no form": {"nodes": []},
            "member": {**TOGGLE, "colour": 1},
            "member of a node": {"tarnkit": 1, "nodes": [{**node, "positon": [0, 0]}]},
            "position": {"tarnkit": 1, "nodes": [{**node, "position": [0]}]},
            "id": {"tarnkit": 1, "nodes": [{"id": "a/b"}]},
            "empty id": {"tarnkit": 1, "nodes": [{"id": ""}]},
            "panel": {"tarnkit": 1, "inspectorPanel": 1 << 31},
            "class": {"tarnkit": 1, "nodes": [{"id": "a", "class": "HXDocument"}]},
            "place of the document": {"tarnkit": 1, "in": "a"},
            "group": {"tarnkit": 1, "subnodes": "some"},
            "address": {"tarnkit": 1, "nodes": [{"id": "a", "patch": "Switch",
                                                 "connections": {"Toggle": "touch"}}]},
            "value": {"tarnkit": 1, "nodes": [{"id": "a", "patch": "Switch",
                                               "values": {"Toggle": None}}]},
            "typed value": {"tarnkit": 1, "nodes": [{"id": "a", "patch": "Switch", "values": {
                "Toggle": {"kind": "number", "value": "x"}}}]},
            "image": {"tarnkit": 1, "images": [{"key": "k", "png": "", "file": "a.png"}]},
            "connection": {"tarnkit": 1, "otherConnections": [{"output": None}]},
        }
        for name, document in wrong.items():
            with self.subTest(name):
                done = run("open", self.write(document))
                self.assertEqual(done.returncode, 1, done.stdout)
                self.assertIn("line 1: ", done.stderr)
                self.assertFalse(self.validator.is_valid(document))


if __name__ == "__main__":
    unittest.main()
