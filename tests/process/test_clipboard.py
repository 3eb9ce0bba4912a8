"""Copying, pasting and duplicating in a session."""

import unittest

from host import HostTest, node, op

# node_0 the document, node_1 a group with node_2, a clamp, inside; node_3 a transition that feeds it
# through a published port.
SCENE = [
    op("newDocument", as_="doc"),
    op("newNode", as_="group", patch=None),
    op("setForceAllowsSubnodes", node="group", value=True),
    op("addNode", node="group", to="doc"),
    op("newNode", as_="clamp", patch="HXRClampNode"),
    op("addNode", node="clamp", to="group"),
    op("newNode", as_="source", patch="HXRTransitionNode"),
    op("addNode", node="source", to="doc"),
    op("publish", port="clamp/Tarn.valueInput", as_="published"),
    op("wire", from_="source/Tarn.output", to="published"),
]


class Clipboard(HostTest):
    def test_nodes_are_pasted_into_another_document(self):
        trace = self.trace(*SCENE, op("copy", nodes=["source", "group"], as_="both"),
                           op("newDocument", as_="other"),
                           op("paste", clipboard="both", to="other", offset=[3, 4]),
                           op("paste", clipboard="both", to="other"), op("dump"))
        copied, _, first, second, dumped = trace.results[-5:]
        self.assertIsNone(copied)
        keys = first["nodes"] + second["nodes"]
        self.assertEqual(len(set(keys)), 4)
        shapes = dumped["subnodeGroup"]["subnodes"]
        self.assertEqual(len(shapes), 4)
        self.assertEqual(node(shapes, first["nodes"][1])["position"], [3, 4])
        self.assertEqual(node(shapes, second["nodes"][1])["position"], [0, 0])
        added = [post for post in trace.notifications[-3] if post[0] != "HXNodeAddPortNotification"]
        self.assertEqual([post[0] for post in added if post[0].startswith(("HXGroup", "HXDocument"))],
                         ["HXGroupAddNodeNotification"] * 2 + ["HXDocumentAddConnectionNotification"])

    def test_duplicates_are_reached_by_their_keys(self):
        key = self.last(*SCENE, op("duplicate", nodes=["clamp"], keepInputs=True))["nodes"][0]
        dumped = self.trace(*SCENE, op("duplicate", nodes=["clamp"], offset=[1, 2], keepInputs=True),
                            op("setName", node=key, value="Twin"),
                            op("dump", node="group")).results[-1]
        twin = node(dumped["subnodeGroup"]["subnodes"], key)
        self.assertEqual((twin["name"], twin["position"]), ("Twin", [1, 2]))
        self.assertEqual(len(dumped["subnodeGroup"]["symbolicInputPorts"]), 2)

    def test_what_cannot_be_copied_or_pasted_is_told(self):
        self.assertIn("a document cannot be copied",
                      self.failure(*SCENE, op("copy", nodes=["doc"], as_="c")))
        self.assertIn("there is nothing to copy",
                      self.failure(*SCENE, op("duplicate", nodes=[])))
        self.assertIn('there is no clipboard "c"',
                      self.failure(*SCENE, op("paste", clipboard="c", to="doc")))
        self.assertIn("the group is in no document", self.failure(
            *SCENE, op("copy", nodes=["source"], as_="c"), op("removeNode", node="group"),
            op("paste", clipboard="c", to="group")))


if __name__ == "__main__":
    unittest.main()
