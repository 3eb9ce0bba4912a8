"""What is wrong in documents: `check` in its three forms, its exit statuses and its answers; `find`
and `images`."""

import json
import os
import plistlib
import re
import unittest

from host import ROOT, HostTest, op

PLUGIN = os.environ.get("TARNKIT_PLUGIN")

# An empty group, an image that nobody shows, an expression that does not parse, a view that is off.
BROKEN = [
    op("newDocument", as_="doc"),
    op("addImage", file=str(ROOT / "examples/photos/dunes.jpg"), as_="dunes"),
    op("newNode", as_="group", patch=None),
    op("setForceAllowsSubnodes", node="group", value=True),
    op("setName", node="group", value="Left over"),
    op("addNode", node="group", to="doc"),
    op("newNode", as_="sum", patch="HXRMathExpressionNode"),
    op("addNode", node="sum", to="doc"),
    op("setPosition", node="sum", value=[300, 0]),
    op("setParameter", node="sum", parameter="Tarn.mathExpressionParameter", value="($a + 1"),
    op("newNode", as_="view", patch="HXRViewNode"),
    op("addNode", node="view", to="doc"),
    op("setPosition", node="view", value=[600, 0]),
    op("setStaticValue", port="view/Tarn.enabledInput", value={"kind": "boolean", "value": False}),
]
LINE = re.compile(r"^(.+?): (.+): (error|warning|note): (.+) \[([a-z-]+)\]$")


class CheckedDocuments(HostTest):
    def saved(self, name, *operations, codingType=0):
        path = self.folder / name
        self.host("run", "-", input=json.dumps(
            [*operations, op("save", file=str(path), codingType=codingType)]).encode())
        return path

    def broken(self, name="broken.document", **options):
        return self.saved(name, *BROKEN, **options)

    def codes(self, *arguments, status=0):
        lines = self.host("check", *arguments, status=status)[0].decode().splitlines()
        return [LINE.match(line).groups()[-1] for line in lines]

    def json(self, *arguments, status=0):
        return json.loads(self.host("check", "--json", *arguments, status=status)[0])


class CheckTest(CheckedDocuments):
    def test_one_line_a_finding_the_worst_first(self):
        path = self.broken()
        output, errors = self.host("check", path, status=1)
        self.assertEqual(errors, "")
        lines = output.decode().splitlines()
        self.assertEqual(lines[0], f"{path}: Math Expression: Expression: error: the expression does "
                         "not parse: imbalanced parentheses, at character 1 [expression-syntax]")
        found = [LINE.match(line).groups() for line in lines]
        self.assertEqual({row[0] for row in found}, {str(path)})
        weights = [["error", "warning", "note"].index(row[2]) for row in found]
        self.assertEqual(weights, sorted(weights))
        self.assertEqual({row[4] for row in found},
                         {"expression-syntax", "group-empty", "image-unused", "view-never-shown",
                          "node-unread"})

    def test_statuses_follow_the_weight(self):
        path = self.broken()
        self.assertEqual(self.codes(path, "--only", "image-unused"), ["image-unused"])
        self.codes(path, "--only", "image-unused", "--strict", status=1)
        self.codes(path, "--ignore", "expression-syntax")
        self.codes(path, "--limit", "0", status=1)
        _, errors = self.host("check", path, "--only", "no-such", status=2)
        self.assertIn("'no-such' is no code", self.one_line(errors))
        self.host("check", status=2)
        self.host("check", path, "--json", "--sarif", status=2)
        self.host("check", "-", "--fix", status=2)

    def test_a_limit_counts_over_all_files(self):
        first, second = self.broken("a.document"), self.broken("b.document")
        output, errors = self.host("check", first, second, "--limit", "3", status=1)
        self.assertEqual([LINE.match(line).group(3) for line in output.decode().splitlines()],
                         ["error", "error", "warning"])
        self.assertEqual(self.one_line(errors), "check, 7 more findings are not shown")
        shape = self.json(first, second, "--limit", "3", status=1)
        self.assertEqual(shape["counts"], {"error": 2, "warning": 8, "note": 0})
        self.assertEqual([len(file["findings"]) for file in shape["files"]], [2, 1])
        self.assertIn("no number of findings", self.one_line(
            self.host("check", first, "--limit", "-1", status=2)[1]))

    def test_json_has_one_shape_and_tells_of_files_that_cannot_be_read(self):
        path = self.broken(codingType=3)
        junk = self.folder / "junk.document"
        junk.write_bytes(b"not a document")
        shape = self.json(path, junk, self.folder / "missing", status=1)
        self.assertEqual(sorted(shape), ["counts", "files"])
        for file in shape["files"]:
            self.assertEqual(sorted(file), ["file", "findings", "fixed"])
        syntax = shape["files"][0]["findings"][0]
        self.assertEqual(syntax, {
            "code": "expression-syntax", "severity": "error",
            "address": "Math Expression: Expression",
            "key": "node_2/Tarn.mathExpressionParameter",
            "sentence": "the expression does not parse: imbalanced parentheses, at character 1",
            "suggestion": None, "fixable": False, "offset": 0})
        for file in shape["files"][1:]:
            unreadable, = file["findings"]
            self.assertEqual((unreadable["code"], unreadable["address"]), ("file-unreadable", "/"))
        self.assertIn("No such file", shape["files"][2]["findings"][0]["sentence"])
        clean = self.saved("clean.document", *BROKEN[:1], op("newNode", as_="v", patch="HXRViewNode"),
                           op("addNode", node="v", to="doc"))
        self.assertEqual(self.json(clean), {
            "files": [{"file": str(clean), "findings": [], "fixed": []}],
            "counts": {"error": 0, "warning": 0, "note": 0}})

    def test_standard_input_is_a_file(self):
        output, _ = self.host("check", "-", status=1, input=self.broken().read_bytes())
        self.assertTrue(output.startswith(b"-: Math Expression"))

    def test_sarif_is_what_forges_read(self):
        path = self.broken("a b%.document")
        log = json.loads(self.host("check", "--sarif", path, status=1)[0])
        self.assertEqual(log["version"], "2.1.0")
        self.assertTrue(log["$schema"].endswith("sarif-2.1.0.json"))
        run, = log["runs"]
        driver = run["tool"]["driver"]
        self.assertEqual(driver["name"], "tarnkit check")
        rules = driver["rules"]
        ids = [rule["id"] for rule in rules]
        self.assertEqual(len(ids), len(set(ids)))
        self.assertGreaterEqual(len(ids), 30)
        for rule in rules:
            for text in ("shortDescription", "fullDescription", "help"):
                self.assertTrue(rule[text]["text"])
            self.assertIn(rule["defaultConfiguration"]["level"], ("error", "warning", "note"))
        self.assertEqual(len(run["results"]), 5)
        for result in run["results"]:
            rule = rules[result["ruleIndex"]]
            self.assertEqual(result["ruleId"], rule["id"])
            self.assertEqual(result["level"], rule["defaultConfiguration"]["level"])
            self.assertTrue(result["message"]["text"])
            location, = result["locations"]
            uri = location["physicalLocation"]["artifactLocation"]["uri"]
            self.assertEqual(uri, f"file://{self.folder}/a%20b%25.document")
            self.assertEqual(location["physicalLocation"]["region"], {"startLine": 1})
            self.assertTrue(location["logicalLocations"][0]["fullyQualifiedName"])
        prints = [result["partialFingerprints"]["place/v1"] for result in run["results"]]
        self.assertEqual(len(prints), len(set(prints)))
        relative = json.loads(self.host("check", "--sarif", path.name, status=1,
                                        cwd=self.folder)[0])
        uri = relative["runs"][0]["results"][0]["locations"][0]["physicalLocation"]
        self.assertEqual(uri["artifactLocation"]["uri"], "a%20b%25.document")

    def test_answers_are_written_into_the_file(self):
        for coding_type in (0, 3):
            path = self.broken(codingType=coding_type)
            before = json.loads(self.host("open", "--json", path)[0])
            shape = self.json(path, "--fix", status=1)
            file, = shape["files"]
            self.assertEqual([f["code"] for f in file["fixed"]], ["group-empty", "image-unused"])
            self.assertNotIn("group-empty", [f["code"] for f in file["findings"]])
            after = json.loads(self.host("open", "--json", path)[0])
            self.assertEqual(after["images"], [])
            self.assertEqual([n["name"] for n in before["subnodeGroup"]["subnodes"]],
                             ["Left over", "Math Expression", "View"])
            self.assertEqual([n["name"] for n in after["subnodeGroup"]["subnodes"]],
                             ["Math Expression", "View"])
            if coding_type == 3:  # nodes keep their keys
                self.assertEqual([n["uniqueKey"] for n in after["subnodeGroup"]["subnodes"]],
                                 ["node_2", "node_3"])
            fixed = path.read_bytes()
            self.assertEqual(self.json(path, "--fix", status=1)["files"][0]["fixed"], [])
            self.assertEqual(path.read_bytes(), fixed)

    def test_a_file_is_left_alone_when_saving_it_would_lose_something(self):
        path = self.saved("old.document", *BROKEN,
                          op("newNode", as_="clamp", patch="HXRClampNode"),
                          op("addNode", node="clamp", to="doc"),
                          op("setStaticValue", port="clamp/Tarn.minimumInput",
                             value={"kind": "number", "value": 3}))
        path.write_bytes(path.read_bytes().replace(b"HXRClampNode", b"HXRDeltaNode"))
        before = path.read_bytes()
        output, errors = self.host("check", path, "--fix", status=1)
        self.assertIn("nothing is fixed", self.one_line(errors))
        self.assertIn(b"[lost-value]", output)
        self.assertEqual(path.read_bytes(), before)

    def test_a_file_in_another_form_keeps_it(self):
        path = self.broken()

        def plain(value):
            if isinstance(value, plistlib.UID):
                return {"CF$UID": value.data}
            if isinstance(value, dict):
                return {key: plain(inner) for key, inner in value.items()}
            return [plain(inner) for inner in value] if isinstance(value, list) else value
        path.write_bytes(plistlib.dumps(plain(plistlib.loads(path.read_bytes())),
                                        fmt=plistlib.FMT_XML))
        text = path.with_suffix(".json")
        self.host("save", self.broken("other.document"), "-o", text)
        for file, beginning in ((path, b"<?xml"), (text, b"{")):
            fixed = self.json(file, "--fix", status=1)["files"][0]["fixed"]
            self.assertEqual([f["code"] for f in fixed], ["group-empty", "image-unused"])
            self.assertTrue(file.read_bytes().startswith(beginning))
            self.assertEqual(self.json(file, "--fix", status=1)["files"][0]["fixed"], [])

    @unittest.skipUnless(PLUGIN, "no plug-in was built")
    def test_patches_of_plug_ins(self):
        listed = json.loads(self.host("--plugin", PLUGIN, "catalogue", "--json")[0])
        own = {c["class"] for c in json.loads(self.host("catalogue", "--json")[0])}
        name = next(c["class"] for c in listed if c["class"] not in own)
        path = self.folder / "plugin.document"
        self.host("--plugin", PLUGIN, "run", "-", input=json.dumps(
            [op("newDocument", as_="doc"), op("newNode", as_="n", patch=name),
             op("addNode", node="n", to="doc"), op("save", file=str(path))]).encode())
        with_plugin = self.host("--plugin", PLUGIN, "check", path)[0].decode()
        self.assertIn("[device-plug-in]", with_plugin)
        without, _ = self.host("check", path, status=1)
        self.assertIn("[patch-unknown]", without.decode())
        self.assertNotIn("[device-plug-in]", without.decode())

    def test_names_of_files_and_nodes_stay_in_their_line(self):
        path = self.saved("a\nb.document", *BROKEN,
                          op("setName", node="view", value="x\n\x1b[31m\u202e"))
        lines = self.host("check", path, status=1)[0].decode().splitlines()
        for line in lines:
            self.assertRegex(line, LINE)
            self.assertNotRegex(line, "[\x00-\x1f\u202e]")


class FindTest(CheckedDocuments):
    def find(self, *arguments, status=0):
        return self.host("find", *arguments, status=status)[0].decode().splitlines()

    def test_addresses_one_a_line(self):
        path = self.broken(codingType=3)
        self.assertEqual(self.find(path), ["Left over", "Math Expression", "View"])
        self.assertEqual(self.find(path, "--patch", "HXRViewNode"), ["View"])
        self.assertEqual(self.find(path, "--patch", "Math Expression", "--name", "M*"),
                         ["Math Expression"])
        self.assertEqual(self.find(path, "--port", "Tarn.opacityInput"), ["View: Opacity"])
        self.assertEqual(self.find(path, "--name", "nobody", status=1), [])
        self.assertEqual(self.find(path, path, "--name", "V?ew"), [f"{path}: View"] * 2)
        self.assertEqual(self.find(path, path, "--count"), [f"{path}: 3"] * 2)
        shape = json.loads(self.host("find", path, "--port", "Opacity", "--json")[0])
        self.assertEqual(shape, {"files": [{"file": str(path), "count": 1, "matches": [
            {"address": "View: Opacity", "key": "node_3/Tarn.opacityInput"}]}], "count": 1})
        _, errors = self.host("find", path, self.folder / "missing", status=2)
        self.assertIn("No such file", self.one_line(errors))

    def test_images_are_found_where_they_are_shown_and_written_as_files(self):
        path = self.saved(
            "images.document", *BROKEN,
            op("newNode", as_="image", patch="HXRImageNode"), op("addNode", node="image", to="doc"),
            op("setParameter", node="image", parameter="Tarn.imageParameter", value="dunes"))
        key = json.loads(self.host("open", "--json", path)[0])["images"][0]["key"]
        self.assertEqual(self.find(path, "--uses", key), ["Image"])
        self.find(path, "--uses", "0", status=1)
        folder = self.folder / "new" / "pictures"
        self.host("images", path, "-o", folder)
        picture, = folder.iterdir()
        self.assertEqual(picture.name, f"{key}.png")
        self.assertTrue(picture.read_bytes().startswith(b"\x89PNG\r\n\x1a\n"))
        again = self.last(op("newDocument", as_="d"), op("addImage", file=str(picture), as_="i"))
        self.assertEqual(again["key"], key)

    def test_keys_that_cannot_name_a_file_are_refused_before_anything_is_written(self):
        path = self.broken()
        list_ = plistlib.loads(path.read_bytes())
        for i, value in enumerate(list_["$objects"]):
            if isinstance(value, str) and re.fullmatch("[0-9a-f]{32}", value):
                list_["$objects"][i] = "../outside"
        path.write_bytes(plistlib.dumps(list_, fmt=plistlib.FMT_BINARY))
        folder = self.folder / "pictures"
        _, errors = self.host("images", path, "-o", folder, status=1)
        self.assertIn("cannot name a file", self.one_line(errors))
        self.assertFalse(folder.exists())
        self.assertIn("image-key", self.codes(path, "--ignore", "expression-syntax", status=1))


if __name__ == "__main__":
    unittest.main()
