"""Putting another patch in a node's place, and what the host tells of it."""

import unittest

from host import HostTest, op

# node_1 an ease, fed by the transition node_2, and with a value.
PLACED = [
    op("newDocument", as_="doc"),
    op("newNode", as_="ease", patch="HXREaseNode"),
    op("addNode", node="ease", to="doc"),
    op("newNode", as_="source", patch="HXRTransitionNode"),
    op("addNode", node="source", to="doc"),
    op("setStaticValue", port="ease/Tarn.progressInput", value={"kind": "number", "value": 3}),
    op("wire", from_="source/Tarn.output", to="ease/Tarn.progressInput", as_="wire"),
]


def made(items):
    """What hangs on the ports, and is no port itself."""
    return [item for item in items if item["kind"] not in ("port", "parameter")]


class Replacing(HostTest):
    def test_tells_what_was_dropped(self):
        before, expected, same, report, dump = self.trace(
            *PLACED, op("dump"), op("wouldLose", node="ease", patch="HXRSwitchNode"), op("dump"),
            op("replacePatch", node="ease", patch="HXRSwitchNode"), op("dump")).results[-5:]
        self.assertEqual(same, before)
        self.assertEqual(report, expected)
        self.assertEqual(made(report["dropped"]), [
            {"kind": "value", "key": "Tarn.progressInput", "value": "3"},
            {"kind": "connection", "key": "Tarn.progressInput", "to": "node_2/Tarn.output"}])
        self.assertEqual(report["kept"] + report["renamed"], [])
        self.assertIn({"kind": "port", "key": "Tarn.turnOnInput", "name": "Turn On"},
                      report["added"])
        self.assertEqual(dump["subnodeGroup"]["subnodes"][0]["patch"], "HXRSwitchNode")

    def test_carries_over_by_a_map_or_by_name(self):
        for how in ({"map": {"Tarn.progressInput": "Tarn.input"}}, {"byName": True}):
            with self.subTest(how=how):
                report, dump = self.trace(
                    *PLACED, op("replacePatch", node="ease", patch="HXRTransitionNode", **how),
                    op("dump", node="ease")).results[-2:]
                self.assertEqual(made(report["dropped"]), [])
                self.assertEqual(made(report["renamed"]), [
                    {"kind": "value", "key": "Tarn.input", "formerKey": "Tarn.progressInput",
                     "value": "3"},
                    {"kind": "connection", "key": "Tarn.input", "formerKey": "Tarn.progressInput",
                     "to": "node_2/Tarn.output"}])
                port = next(p for p in dump["inputPorts"] if p["key"] == "Tarn.input")
                self.assertEqual(port["staticValue"], {"kind": "number", "value": 3})
                self.assertEqual([c["from"] for c in port["connections"]], ["node_2/Tarn.output"])

    def test_refuses_what_is_no_patch_or_no_map(self):
        for patch, hint in (("HXRNowhere", ""),
                            ("HXRSwichNode", '; did you mean "HXRSwitchNode"?'),
                            ("Switch", '; did you mean "HXRSwitchNode"?'),
                            ("swich", '; did you mean "HXRSwitchNode"?')):
            failure = self.failure(*PLACED, op("replacePatch", node="ease", patch=patch))
            self.assertTrue(failure.rstrip().endswith(f'there is no patch class "{patch}"{hint}'),
                            failure)
        self.assertIn('"map" must be an object', self.failure(
            *PLACED, op("replacePatch", node="ease", patch="HXRSwitchNode", map=[])))


if __name__ == "__main__":
    unittest.main()
