"""`tarnkit catalogue` as a user runs it."""

import json
import os
import subprocess
import unittest

SOURCE = os.environ["TARNKIT_SOURCE_DIR"]
HOST = os.environ["TARNKIT"]

CLASS_FIELDS = {
    "class", "base", "defaultName", "libraryCategory", "libraryDescription", "processClassName",
    "patchViewClassName", "defaultColor", "hiddenInLibrary", "secretInLibrary", "allowsSubnodes",
    "hiddenPortGroupKeys", "inputPortGroups", "outputPortGroups", "parameters"}
PORT_FIELDS = {
    "name", "key", "class", "processClassName", "orientation", "connectionRelationship", "color",
    "default", "labels", "lockToMappedValues"}
PARAMETER_FIELDS = {"name", "key", "class", "parameterClass", "processClassName", "hidden"}
KIND_FIELDS = {
    "HXRIndexParameter": {"default", "minimum", "maximum"},
    "HXRNumberParameter": {"default", "minimum", "maximum"},
    "HXRBooleanParameter": {"default"},
    "HXRColorParameter": {"default"},
    "HXRImageParameter": {"default"},
    "HXRStringParameter": {"default", "displayStyle"},
}


def catalogue(*arguments):
    return subprocess.run([HOST, "catalogue", *arguments], capture_output=True, text=True,
                          encoding="utf-8", timeout=60, check=False)


def listing(*arguments):
    done = catalogue("--json", *arguments)
    assert done.returncode == 0, done.stderr
    return json.loads(done.stdout)


def ports_of(patch):
    return [port for side in ("inputPortGroups", "outputPortGroups")
            for group in patch[side] for port in group["ports"]]


class Catalogue(unittest.TestCase):
    def test_lists_what_devices_rely_on(self):
        with open(os.path.join(SOURCE, "tests/patches/data/catalogue.json"),
                  encoding="utf-8") as file:
            contract = {entry["class"]: entry for entry in json.load(file)}
        patches = listing("--all")
        self.assertEqual({patch["class"] for patch in patches}, set(contract))
        for patch in patches:
            entry = contract[patch["class"]]
            for field in ("base", "defaultName", "libraryCategory", "processClassName"):
                self.assertEqual(patch[field], entry[field], patch["class"])
            own = {port[1]: port for port in entry["ports"]}
            found = {port["key"]: port for port in ports_of(patch)}
            self.assertLessEqual(set(own), set(found), patch["class"])
            for key, (name, _, port_class, default, _) in own.items():
                self.assertEqual((found[key]["name"], found[key]["class"]), (name, port_class))
                kind = found[key]["default"] and found[key]["default"]["kind"]
                self.assertEqual(kind, default and default[0], key)

    def test_keeps_the_shapes(self):
        for patch in listing("--all"):
            self.assertEqual(set(patch), CLASS_FIELDS)
            self.assertEqual(patch["hiddenPortGroupKeys"], sorted(patch["hiddenPortGroupKeys"]))
            for port in ports_of(patch):
                self.assertEqual(set(port), PORT_FIELDS)
            for parameter in patch["parameters"]:
                self.assertEqual(set(parameter),
                                 PARAMETER_FIELDS | KIND_FIELDS[parameter["class"]])
                self.assertEqual(parameter["parameterClass"],
                                 parameter["class"].replace("HXR", "HX"))

    def test_orders_by_category_and_name_and_leaves_out_hidden_patches(self):
        def order(patch):
            category = patch["libraryCategory"]
            return category is None, category or "", patch["defaultName"].encode()

        for arguments in ((), ("--all",), ("--category", "Loop", "--all")):
            patches = listing(*arguments)
            self.assertEqual(patches, sorted(patches, key=order))
        self.assertFalse(any(patch["hiddenInLibrary"] for patch in listing()))
        self.assertEqual([patch["class"] for patch in listing("--category", "Loop")],
                         ["HXRReplicatorNode", "HXRReplicatorVariablesNode"])
        named = listing("HXRLoopNode", "HXRClampNode", "HXRLoopNode")
        self.assertEqual([patch["class"] for patch in named], ["HXRLoopNode", "HXRClampNode"])

    def test_a_patch_named_often_is_listed_once(self):
        names = ["HXRClampNode"] * 100 + ["HXRDelayNode"] * 28
        self.assertEqual([patch["class"] for patch in listing(*names)],
                         ["HXRDelayNode", "HXRClampNode"])

    def test_is_readable(self):
        expected, category = [], ""
        for patch in listing("--all"):
            if patch["libraryCategory"] != category:
                category = patch["libraryCategory"]
                expected += ["", category or "(no category)"]
            flags = {"hidden": patch["hiddenInLibrary"], "secret": patch["secretInLibrary"],
                     "holds nodes": patch["allowsSubnodes"]}
            expected.append(f"  {patch['defaultName']:<24} {patch['class']}" +
                            "".join(f", {flag}" for flag, holds in flags.items() if holds))
        self.assertEqual(catalogue("--all").stdout.splitlines(), expected[1:])
        details = catalogue("HXRClampNode").stdout
        self.assertIn("Tarn.minimumInput", details)
        self.assertIn("PMRClampPatch", details)

    def test_says_what_it_does_not_know(self):
        for arguments in (("HXRNoSuchNode",), ("HXNode",), ("--category", "Nowhere")):
            done = catalogue(*arguments)
            self.assertEqual(done.returncode, 1)
            self.assertEqual(done.stdout, "")
            self.assertEqual(len(done.stderr.splitlines()), 1)
            self.assertTrue(done.stderr.startswith("tarnkit: "), done.stderr)
        self.assertEqual(catalogue("--no-such-option").returncode, 2)


if __name__ == "__main__":
    unittest.main()
