"""A plug-in's patches: listed, placed, kept while the plug-in is missing, and sent."""

import json
import os
import plistlib
import unittest

from host import HostTest, op
from keyed_archive import Archive

PLUGIN = os.environ["TARNKIT_PLUGIN"]
FAULTY = os.environ["TARNKIT_FAULTY_PLUGIN"]


class Plugins(HostTest):
    def test_its_patches_are_in_the_catalogue(self):
        shapes = json.loads(self.host("--plugin", PLUGIN, "catalogue", "--json")[0])
        wiggle = [shape for shape in shapes if shape["class"] == "WiggleNode"]
        self.assertEqual([(s["defaultName"], s["libraryCategory"], s["libraryDescription"])
                          for s in wiggle], [("Wiggle", "Animation", "WiggleNode.html")])
        plain = json.loads(self.host("catalogue", "--json")[0])
        self.assertEqual(len(plain), len(shapes) - 2)

    def test_ports_follow_a_parameter(self):
        script = [op("newDocument", as_="doc"), op("newNode", as_="s", patch="StaircaseNode"),
                  op("addNode", node="s", to="doc"),
                  op("setParameter", node="s", parameter="Staircase.numberOfStepsParameter",
                     value=5),
                  op("save", file=str(self.folder / "document"))]
        self.host("--plugin", PLUGIN, "run", "-", input=json.dumps(script).encode())
        opened = self.host("--plugin", PLUGIN, "open", "--json", self.folder / "document")[0]
        node = json.loads(opened)["subnodeGroup"]["subnodes"][0]
        self.assertEqual([key for key in node["allPortKeys"] if "step" in key],
                         [f"Staircase.step{i}Output" for i in range(5)])

    def test_a_document_loses_nothing_while_the_plug_in_is_missing(self):
        document = self.folder / "document"
        resaved = self.folder / "resaved"
        graph = self.folder / "graph"
        script = json.dumps([
            op("newDocument", as_="doc"), op("newNode", as_="w", patch="WiggleNode"),
            op("addNode", node="w", to="doc"),
            op("setStaticValue", port="w/Wiggle.amountInput",
               value={"kind": "number", "value": 3}),
            op("setParameter", node="w", parameter="Wiggle.seedParameter", value=9),
            op("save", file=str(document))]).encode()
        self.host("--plugin", PLUGIN, "run", "-", input=script)
        self.host("save", document, "-o", resaved)
        node = json.loads(self.host("open", "--json", resaved)[0])["subnodeGroup"]["subnodes"][0]
        self.assertEqual((node["patch"], node["unknownPatchClass"]), (None, "WiggleNode"))
        self.assertEqual(node["allPortKeys"], ["Wiggle.amountInput", "Wiggle.offsetOutput"])
        self.assertIn("WiggleNode", Archive(resaved.read_bytes()).objects)
        self.host("--plugin", PLUGIN, "send", resaved, "-o", graph)
        objects = plistlib.loads(graph.read_bytes())["$objects"].values()
        device = [o for o in objects if isinstance(o, dict)]
        self.assertIn("WigglePatch", [o.get("PMNode.processClassName") for o in device])
        self.assertIn(9, [o.get("PMIndexParameter.value") for o in device])
        self.assertIn(3.0, [o.get("PMRPrimitive.numberValue") for o in device])

    def test_one_that_does_not_fit_is_refused_in_one_line(self):
        built_in = "its name is taken by a built-in patch"
        cases = {
            "mark": "it exports no tarnkitPluginEntry: it is no plug-in, or one of an older version",
            "version": "it is built for version 3 of the plug-in interface, this is version 2",
            "layout": "it is built with headers or settings that do not fit this program",
            "copy": "it has a copy of the library of its own: a plug-in is linked against nothing",
            "nothing": "it brings no patch",
            "throws": "not today",
            "": "class ?, it has no name",
            "baseless": "class DerivedNode, it does not derive from this library's HXRNode",
            "known": f"class HXRClampNode, {built_in}",
            "HXRSpringNode": f"class HXRSpringNode, {built_in}",
            "impostor": "class DerivedNode, it derives from a class that takes the name "
                        "HXRClampNode",
            "twokeys": "class TwoKeysNode, its declaration gives a key to two ports",
            "GoodNode": "class GoodNode, it is brought twice",
            "WiggleNode": f"class WiggleNode, its name is taken by a class of {PLUGIN}",
        }
        for name in ("HXNode", "HXPort", "PMRPrimitive", "PMGraph", "PMImageStoreEntry", "NSImage",
                     "NSDictionary", "HXRPortGroupCollection", "PMRPrimitiveInputPort"):
            cases[name] = f"class {name}, its name is taken by a class of the library"
        for fault, reason in cases.items():
            with self.subTest(fault):
                errors = self.faulty(fault, status=1)[1]
                self.assertEqual(errors, f"tarnkit: plug-in, {FAULTY}, {reason}\n")

    def test_one_may_derive_from_the_patches_of_one_loaded_before(self):
        shapes = json.loads(self.faulty("derived")[0])
        derived = next(shape for shape in shapes if shape["class"] == "DerivedNode")
        self.assertEqual((derived["libraryCategory"], derived["processClassName"]),
                         ("Animation", "WigglePatch"))
        self.assertEqual([port["key"] for group in derived["outputPortGroups"]
                          for port in group["ports"]], ["Wiggle.offsetOutput", "Derived.more"])

    def faulty(self, fault, status=0):
        """Loads the example, twice, and the plug-in with that fault."""
        os.environ["FAULTY_PLUGIN"] = fault
        return self.host("--plugin", PLUGIN, "--plugin", PLUGIN, "--plugin", FAULTY, "catalogue",
                         "--json", status=status)


if __name__ == "__main__":
    unittest.main()
