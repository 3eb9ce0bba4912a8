"""A plug-in's patches: listed, placed, kept while the plug-in is missing, and sent."""

import json
import os
import plistlib
import unittest

from host import HostTest, op
from keyed_archive import Archive

PLUGIN = os.environ["TARNKIT_PLUGIN"]


class Plugins(HostTest):
    def test_its_patches_are_in_the_catalogue(self):
        shapes = json.loads(self.host("--plugin", PLUGIN, "catalogue", "--json")[0])
        wiggle = [shape for shape in shapes if shape["class"] == "WiggleNode"]
        self.assertEqual([(s["defaultName"], s["libraryCategory"], s["libraryDescription"])
                          for s in wiggle], [("Wiggle", "Animation", "WiggleNode.html")])
        plain = json.loads(self.host("catalogue", "--json")[0])
        self.assertEqual(len(plain), len(shapes) - 1)

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


if __name__ == "__main__":
    unittest.main()
