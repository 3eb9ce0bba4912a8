"""Grouping, ungrouping and moving nodes: what the operations answer, and what a device is sent."""

import plistlib
import unittest

from host import HostTest, by_key, node, op

# node_0 document, node_1 a transition, node_2 and node_3 clamps, fed one after the other.
CHAIN = [
    op("newDocument", as_="doc"),
    op("newNode", as_="source", patch="HXRTransitionNode"),
    op("newNode", as_="first", patch="HXRClampNode"),
    op("newNode", as_="second", patch="HXRClampNode"),
    op("addNode", node="source", to="doc"),
    op("addNode", node="first", to="doc"),
    op("addNode", node="second", to="doc"),
    op("setPosition", node="first", value=[100, 10]),
    op("setPosition", node="second", value=[300, 30]),
    op("setStaticValue", port="second/Tarn.minimumInput", value={"kind": "number", "value": 4}),
    op("wire", from_="source/Tarn.output", to="first/Tarn.valueInput", as_="in"),
    op("wire", from_="first/Tarn.resultOutput", to="second/Tarn.valueInput", as_="on"),
]
BOTH = op("group", nodes=["first", "second"], name="Limits", as_="limits")


def wires(shape):
    """The ends of every connection below a node's shape, and the ports that the user joined."""
    found = set()
    for port in shape["inputPorts"]:
        for wire in port.get("connections", []):
            found.add((wire["from"], wire["to"], wire["displayFrom"], wire["displayTo"]))
    for inner in (shape.get("subnodeGroup") or {}).get("subnodes", []):
        found |= wires(inner)
    return found


def sent_connections(path):
    """Of every connection of a device graph the node around it, and the way from it to each end."""
    with open(path, "rb") as file:
        objects = plistlib.load(file)["$objects"]

    def follow(reference):
        return objects[reference["$reference"]]
    return sorted(
        (follow(wire["PMConnection.parentNode"])["PMNode.uniqueKey"],
         follow(wire["PMConnection.outputPortKeyPath"]),
         follow(wire["PMConnection.inputPortKeyPath"]))
        for wire in objects.values()
        if isinstance(wire, dict) and wire.get("$class") == "PMConnection")


class Grouping(HostTest):
    def test_a_group_and_what_it_publishes(self):
        made, dumped = self.trace(*CHAIN, BOTH, op("dump")).results[-2:]
        self.assertEqual(made, {"uniqueKey": "node_4"})
        group = node(dumped["subnodeGroup"]["subnodes"], "node_4")
        self.assertEqual(group["name"], "Limits")
        self.assertEqual(group["position"], [200, 20])
        self.assertIsNone(group["patch"])
        self.assertEqual([n["uniqueKey"] for n in group["subnodeGroup"]["subnodes"]],
                         ["node_2", "node_3"])
        key = "Symbolic.node_2.Tarn.valueInput"
        published = by_key(group["inputPorts"])
        self.assertEqual(list(published), [key])
        self.assertEqual(published[key]["name"], "Value")
        self.assertEqual(wires(dumped), {
            ("node_1/Tarn.output", "node_2/Tarn.valueInput", "node_1/Tarn.output",
             "node_4/" + key),
            ("node_2/Tarn.resultOutput", "node_3/Tarn.valueInput", "node_2/Tarn.resultOutput",
             "node_3/Tarn.valueInput")})

    def test_ungrouping_leaves_no_trace(self):
        results = self.trace(*CHAIN, op("dump"), BOTH, op("ungroup", node="limits"),
                             op("dump")).results
        self.assertEqual(results[-2], {"nodes": ["node_2", "node_3"]})
        before, after = results[len(CHAIN)], results[-1]
        self.assertEqual(wires(after), wires(before))
        self.assertEqual([n["uniqueKey"] for n in after["subnodeGroup"]["subnodes"]],
                         [n["uniqueKey"] for n in before["subnodeGroup"]["subnodes"]])
        self.assertEqual([n["position"] for n in after["subnodeGroup"]["subnodes"]],
                         [n["position"] for n in before["subnodeGroup"]["subnodes"]])

    def test_the_device_joins_the_same_ports(self):
        plain, grouped, back = (str(self.folder / name) for name in ("plain", "grouped", "back"))
        self.trace(*CHAIN, op("send", file=plain), BOTH, op("send", file=grouped),
                   op("ungroup", node="limits"), op("send", file=back))
        self.assertEqual(sent_connections(plain), [
            ("node_0", ["node_1"], ["node_2"]), ("node_0", ["node_2"], ["node_3"])])
        self.assertEqual(sent_connections(grouped), [
            ("node_0", ["node_1"], ["node_2", "node_4"]), ("node_4", ["node_2"], ["node_3"])])
        self.assertEqual(sent_connections(back), sent_connections(plain))

    def test_a_move_tells_what_it_loses(self):
        moved = self.last(*CHAIN, op("newNode", as_="copies", patch="HXRReplicatorNode"),
                          op("addNode", node="copies", to="doc"),
                          op("moveNodes", nodes=["first"], to="copies"))
        self.assertEqual([set(loss) for loss in moved["lost"]], [{"connection", "reason"}])
        self.assertEqual(moved["lost"][0]["connection"], "connection_1")
        out = self.last(*CHAIN, BOTH, op("moveNodes", nodes=["first"], to="doc"))
        self.assertEqual([loss.get("publication") for loss in out["lost"]],
                         ["node_4/Symbolic.node_2.Tarn.valueInput"])
        self.assertEqual(self.last(*CHAIN, BOTH, op("moveNodes", nodes=["source"], to="limits")),
                         {"lost": []})

    def test_what_cannot_be_is_refused(self):
        self.assertTrue(self.failure(*CHAIN, op("group", nodes=[], name="x"))
                        .endswith("no node is given"))
        self.assertTrue(self.failure(*CHAIN, op("ungroup", node="first"))
                        .endswith("the node node_2 holds no nodes"))
        self.assertTrue(self.failure(*CHAIN, BOTH, op("moveNodes", nodes=["limits"], to="limits"))
                        .endswith("cannot go into a group inside itself"))
        self.assertTrue(self.failure(*CHAIN, BOTH, op("group", nodes=["first", "source"], name="x"))
                        .endswith("are in different groups"))


if __name__ == "__main__":
    unittest.main()
