"""Publishing ports out of nested groups: what is announced, in which order, and what is undone."""

import unittest

from host import HostTest, by_key, op, posted

# node_0 document, node_1 outer and node_2 inner group, node_3 a clamp inside, node_4 a transition.
NESTED = [
    op("newDocument", as_="doc"),
    op("newNode", as_="outer", patch=None),
    op("setForceAllowsSubnodes", node="outer", value=True),
    op("addNode", node="outer", to="doc"),
    op("newNode", as_="inner", patch=None),
    op("setForceAllowsSubnodes", node="inner", value=True),
    op("addNode", node="inner", to="outer"),
    op("newNode", as_="clamp", patch="HXRClampNode"),
    op("addNode", node="clamp", to="inner"),
    op("newNode", as_="source", patch="HXRTransitionNode"),
    op("addNode", node="source", to="doc"),
]
PORT = "HXPatchPort:node_3/Tarn.valueInput"
SOURCE = "HXPatchPort:node_4/Tarn.output"
INNER_KEY = "Symbolic.node_3.Tarn.valueInput"
INNER = "HXSymbolicPort:node_2/" + INNER_KEY
OUTER_KEY = "Symbolic.node_2." + INNER_KEY
OUTER = "HXSymbolicPort:node_1/" + OUTER_KEY
PUBLISHED = NESTED + [
    op("publish", port="clamp/Tarn.valueInput", as_="first"),
    op("publish", port="inner/" + INNER_KEY, as_="second"),
]


def publication(port, symbolic, node, group, name=None, port_group="Published"):
    posts = [posted("HXPortNameDidChangeNotification", symbolic, Port=symbolic, Name=name)]
    return (posts if name else []) + [
        posted("HXPortDidAddSymbolicReferenceNotification", port, Port=port),
        posted("HXNodeAddPortGroupNotification", f"HXNode:{node}", Node=f"HXNode:{node}",
               PortGroup=f"HXSymbolicPortGroup:{node}/1/{port_group}"),
        posted("HXGroupAddSymbolicPortForPortNotification", f"HXGroup:{group}",
               Group=f"HXGroup:{group}", Port=port),
    ]


def withdrawal(port, node, group, port_group="Published"):
    return [
        posted("HXPortDidRemoveSymbolicReferenceNotification", port, Port=port),
        posted("HXNodeRemovePortGroupNotification", f"HXNode:{node}", Node=f"HXNode:{node}",
               PortGroup=f"HXSymbolicPortGroup:{node}/1/{port_group}"),
        posted("HXGroupRemoveSymbolicPortForPortNotification", f"HXGroup:{group}",
               Group=f"HXGroup:{group}", Port=port),
    ]


def disconnection(*ports):
    connection = "HXConnection:connection_0"
    return [posted("HXPortDidDisconnectNotification", port, Port=port, Connection=connection)
            for port in ports] + [
        posted("HXDocumentRemoveConnectionNotification", "HXDocument:node_0",
               Graph="HXDocument:node_0", Connection=connection)]


class Publishing(HostTest):
    def test_each_level_is_announced(self):
        trace = self.trace(*PUBLISHED)
        self.assertEqual(trace.results[-2:], [{"key": INNER_KEY}, {"key": OUTER_KEY}])
        self.assertEqual(trace.notifications[-2],
                         publication(PORT, INNER, "node_2", "group_2", name="Value"))
        self.assertEqual(trace.notifications[-1],
                         publication(INNER, OUTER, "node_1", "group_1", name="Value"))

    def test_a_published_port_stands_for_the_inner_one(self):
        wired, dumped = self.trace(*PUBLISHED,
                                   op("wire", from_="source/Tarn.output", to="second"),
                                   op("dump")).results[-2:]
        self.assertEqual(wired, {
            "uniqueKey": "connection_0", "from": "node_4/Tarn.output",
            "to": "node_3/Tarn.valueInput", "displayFrom": "node_4/Tarn.output",
            "displayTo": "node_1/" + OUTER_KEY})
        outer = by_key(dumped["subnodeGroup"]["subnodes"][0]["inputPorts"])[OUTER_KEY]
        self.assertEqual(outer["port"], "node_2/" + INNER_KEY)
        self.assertEqual(outer["resolvedPort"], "node_3/Tarn.valueInput")
        self.assertEqual((outer["class"], outer["name"], outer["processClassName"]),
                         ("HXSymbolicPort", "Value", None))
        self.assertEqual(outer["connections"], [])
        self.assertNotIn("defaultValue", outer)
        inner_node = dumped["subnodeGroup"]["subnodes"][0]["subnodeGroup"]["subnodes"][0]
        self.assertEqual(by_key(inner_node["inputPorts"])[INNER_KEY]["symbolicPort"], OUTER_KEY)

    def test_unpublishing_undoes_every_level_above_and_the_connection(self):
        posts = self.posts_of_last(*PUBLISHED,
                                   op("wire", from_="source/Tarn.output", to="second"),
                                   op("unpublish", port="clamp/Tarn.valueInput"))
        self.assertEqual(posts, disconnection(SOURCE, PORT) +
                         withdrawal(INNER, "node_1", "group_1") +
                         withdrawal(PORT, "node_2", "group_2"))

    def test_removing_the_node_undoes_it_too(self):
        posts = self.posts_of_last(*PUBLISHED,
                                   op("wire", from_="source/Tarn.output", to="second"),
                                   op("removeNode", node="clamp"))
        self.assertEqual(posts, disconnection(SOURCE, PORT) +
                         withdrawal(INNER, "node_1", "group_1") +
                         withdrawal(PORT, "node_2", "group_2") +
                         [posted("HXGroupRemoveNodeNotification", "HXGroup:group_2",
                                 Group="HXGroup:group_2", Node="HXNode:node_3")])

    def test_a_removed_publication_comes_back_as_it_was(self):
        trace = self.trace(*PUBLISHED,
                           op("renamePort", symbolicPort="second", name="Photo: Width"),
                           op("unpublish", port="clamp/Tarn.valueInput"),
                           op("restoreSymbolicPort", symbolicPort="first"),
                           op("restoreSymbolicPort", symbolicPort="second"),
                           op("dump", node="outer"))
        self.assertEqual(trace.notifications[-3], publication(PORT, INNER, "node_2", "group_2"))
        self.assertEqual(trace.notifications[-2],
                         publication(INNER, OUTER, "node_1", "group_1", port_group="Photo"))
        port = trace.results[-1]["inputPorts"][0]
        self.assertEqual((port["name"], port["displayName"]), ("Photo: Width", " Width"))

    def test_a_rename_moves_the_port_to_another_group_and_posts_even_the_same_name(self):
        rename = op("renamePort", symbolicPort="second", name="Photo: Width")
        trace = self.trace(*PUBLISHED, rename, rename)
        node = {"Node": "HXNode:node_1"}
        name = posted("HXPortNameDidChangeNotification", OUTER, Port=OUTER, Name="Photo: Width")
        self.assertEqual(trace.notifications[-2], [
            posted("HXNodeRemovePortGroupNotification", "HXNode:node_1", **node,
                   PortGroup="HXSymbolicPortGroup:node_1/1/Published"),
            posted("HXNodeAddPortGroupNotification", "HXNode:node_1", **node,
                   PortGroup="HXSymbolicPortGroup:node_1/1/Photo"),
            name])
        self.assertEqual(trace.notifications[-1], [name])

    def test_ports_with_one_prefix_meet_in_one_group_at_the_second_synchronisation(self):
        ops = PUBLISHED[:9] + [
            op("publish", port="clamp/Tarn.minimumInput", as_="low"),
            op("publish", port="clamp/Tarn.maximumInput", as_="high"),
            op("renamePort", symbolicPort="low", name="Range: Low"),
            op("renamePort", symbolicPort="high", name="Range: High"),
            op("dump", node="inner"),
        ]
        groups = by_key(self.last(*ops)["inputPortGroups"])
        self.assertEqual(groups["Range"]["portKeys"],
                         ["Symbolic.node_3.Tarn.minimumInput",
                          "Symbolic.node_3.Tarn.maximumInput"])

    def test_outside_a_document_nothing_is_announced(self):
        trace = self.trace(op("newNode", as_="group", patch=None),
                           op("setForceAllowsSubnodes", node="group", value=True),
                           op("newNode", as_="clamp", patch="HXRClampNode"),
                           op("addNode", node="clamp", to="group"),
                           op("publish", port="clamp/Tarn.valueInput", as_="port"),
                           op("renamePort", symbolicPort="port", name="Other"),
                           op("setStaticValue", port="clamp/Tarn.valueInput",
                              value={"kind": "number", "value": 1}),
                           op("removeNode", node="clamp"))
        self.assertEqual([n for posts in trace.notifications for n in posts], [])


if __name__ == "__main__":
    unittest.main()
