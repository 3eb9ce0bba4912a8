"""Nodes that follow their patch: what a new patch keeps, replaces and announces; parameters, views and
the order of groups."""

import unittest

from host import HostTest, by_key, op, posted

NODE = "HXNode:node_1"
PLACED = [op("newDocument", as_="doc"), op("newNode", as_="node", patch="HXRTransitionNode"),
          op("addNode", node="node", to="doc")]


def node_posts(event, info, *objects, node=NODE):
    return [posted(f"HXNode{event}Notification", node, Node=node, **{info: object_})
            for object_ in objects]


def port_posts(event, *keys):
    return node_posts(event, "Port", *[f"HXPatchPort:node_1/{key}" for key in keys])


def group_posts(event, *keys):
    return node_posts(event, "PortGroup", *[f"HXPatchPortGroup:node_1/{key}" for key in keys])


class Patches(HostTest):
    def test_a_new_patch_replaces_ports_and_groups(self):
        trace = self.trace(*PLACED, op("setPatch", node="node", patch="HXRClampNode"),
                           op("dump", node="node"))
        self.assertEqual(trace.notifications[-2], [
            *group_posts("RemovePortGroup", "1/Value Range"),
            *port_posts("RemovePort", "Tarn.input", "Tarn.outputMinInput", "Tarn.outputMaxInput",
                        "Tarn.output"),
            *port_posts("AddPort", "Tarn.valueInput", "Tarn.minimumInput", "Tarn.maximumInput",
                        "Tarn.resultOutput")])
        shape = trace.results[-1]
        self.assertEqual(shape["name"], "Transition", "a name once set is never overwritten")
        self.assertEqual(shape["patch"], "HXRClampNode")
        self.assertEqual(shape["allPortKeys"], ["Tarn.maximumInput", "Tarn.minimumInput",
                                                "Tarn.resultOutput", "Tarn.valueInput"])

    def test_a_port_whose_key_survives_keeps_value_and_connection(self):
        trace = self.trace(
            *PLACED,
            op("newNode", as_="other", patch="HXRTransitionNode"),
            op("addNode", node="other", to="doc"),
            op("wire", from_="node/Tarn.output", to="other/Tarn.input"),
            op("setStaticValue", port="other/Tarn.outputMinInput",
               value={"kind": "number", "value": 5}),
            op("resyncPatch", node="other"),
            op("setPatch", node="other", patch="HXRReverseTransitionNode"),
            op("dump", node="other"))
        self.assertEqual(trace.notifications[-3], [])
        ports = by_key(trace.results[-1]["inputPorts"])
        self.assertEqual([c["uniqueKey"] for c in ports["Tarn.input"]["connections"]],
                         ["connection_0"])

    def test_a_port_that_goes_is_unpublished_and_disconnected_first(self):
        posts = self.posts_of_last(
            op("newDocument", as_="doc"), op("newNode", as_="group", patch=None),
            op("setForceAllowsSubnodes", node="group", value=True),
            op("addNode", node="group", to="doc"),
            op("newNode", as_="node", patch="HXRClampNode"),
            op("addNode", node="node", to="group"),
            op("publish", port="node/Tarn.valueInput"),
            op("setPatch", node="node", patch=None))
        port = "HXPatchPort:node_2/Tarn.valueInput"
        owner = {"Node": "HXNode:node_1"}
        self.assertEqual(posts, [
            *node_posts("RemovePortGroup", "PortGroup", "HXPatchPortGroup:node_2/1/__Default",
                        "HXPatchPortGroup:node_2/2/__Default", node="HXNode:node_2"),
            posted("HXPortDidRemoveSymbolicReferenceNotification", port, Port=port),
            posted("HXNodeRemovePortGroupNotification", "HXNode:node_1", **owner,
                   PortGroup="HXSymbolicPortGroup:node_1/1/Published"),
            posted("HXGroupRemoveSymbolicPortForPortNotification", "HXGroup:group_1",
                   Group="HXGroup:group_1", Port=port),
            *node_posts("RemovePort", "Port",
                        *[f"HXPatchPort:node_2/Tarn.{key}" for key in
                          ("valueInput", "minimumInput", "maximumInput", "resultOutput")],
                        node="HXNode:node_2")])

    def test_a_count_adds_and_removes_ports_at_the_end(self):
        count = "Tarn.numberOfSourcesParameter"
        trace = self.trace(
            op("newDocument", as_="doc"), op("newNode", as_="node", patch="HXRMultiplexerNode"),
            op("addNode", node="node", to="doc"),
            op("setStaticValue", port="node/Tarn.source1Input",
               value={"kind": "boolean", "value": True}),
            op("setParameter", node="node", parameter=count, value=3),
            op("setParameter", node="node", parameter=count, value=3),
            op("setParameter", node="node", parameter=count, value=2),
            op("dump", node="node"))
        parameter = f"HXIndexParameter:node_1/{count}"
        changed = posted("HXParameterValueDidChangeNotification", parameter, Node=NODE,
                         Parameter=parameter)
        self.assertEqual(trace.notifications[-4],
                         [changed, *port_posts("AddPort", "Tarn.source2Input")])
        self.assertEqual(trace.notifications[-3], [])
        self.assertEqual(trace.notifications[-2],
                         [changed, *port_posts("RemovePort", "Tarn.source2Input")])
        shape = trace.results[-1]
        self.assertEqual(shape["parameters"], [
            {"key": count, "class": "HXIndexParameter", "name": "Sources", "hidden": False,
             "value": 2, "minimum": 1, "maximum": 100}])
        self.assertEqual(by_key(shape["inputPorts"])["Tarn.source1Input"]["staticValue"],
                         {"kind": "boolean", "value": True})

    def test_parameters_stay_when_the_patch_goes(self):
        shape = self.last(
            op("newDocument"), op("newNode", as_="node", patch="HXRMultiplexerNode"),
            op("setParameter", node="node", parameter="Tarn.numberOfSourcesParameter", value=4),
            op("setPatch", node="node", patch="HXRClampNode"), op("dump", node="node"))
        self.assertEqual([(p["key"], p["value"]) for p in shape["parameters"]],
                         [("Tarn.numberOfSourcesParameter", 4)])

    def test_setting_a_string_again_is_a_change(self):
        ops = [op("newDocument", as_="doc"),
               op("newNode", as_="node", patch="HXRMathExpressionNode"),
               op("addNode", node="node", to="doc"), op("dump", node="node")]
        key = next(p["key"] for p in self.last(*ops)["parameters"]
                   if p["class"] == "HXStringParameter")
        set_it = op("setParameter", node="node", parameter=key, value="a+1")
        trace = self.trace(*ops, set_it, set_it)
        names = [name for name, _, _ in trace.notifications[-1]]
        self.assertEqual(names, ["HXParameterValueDidChangeNotification"])

    def test_static_and_effective_values(self):
        minimum = "node/Tarn.outputMinInput"
        port = "HXPatchPort:node_1/Tarn.outputMinInput"
        five = {"kind": "number", "value": 5}
        zero = {"kind": "number", "value": 0}
        trace = self.trace(*PLACED, op("setStaticValue", port=minimum, value=five),
                           op("setStaticValue", port=minimum, value=five),
                           op("setStaticValue", port=minimum, value=None),
                           op("setStaticValue", port=minimum, value=zero))

        def static(value):
            return posted("HXPatchPortStaticValueDidChangeNotification", port, Port=port,
                          StaticValue=value)

        def effective(value):
            return posted("HXPatchPortEffectiveValueDidChangeNotification", port, Port=port,
                          EffectiveValue=value)
        self.assertEqual(trace.notifications[3:], [[static(five), effective(five)],
                                                   [static(five)],
                                                   [static(None), effective(zero)],
                                                   [static(zero)]])

    def test_setters_post_changes_only(self):
        def change(name, **info):
            return [posted(f"HXNode{name}DidChangeNotification", NODE, Node=NODE, **info)]
        cases = [
            ("setName", ["A", "A", None], [change("Name", Name="A"), [], change("Name", Name=None)]),
            ("setPosition", [[0, 0], [0, 1.5]], [[], change("Position")]),
            ("setSelected", [True, True, False], [change("Selection"), [], change("Selection")]),
            ("setInspectorPanel", [18446744073709551615], [[]]),
        ]
        for do, values, expected in cases:
            with self.subTest(do=do):
                trace = self.trace(*PLACED, *[op(do, node="node", value=v) for v in values])
                self.assertEqual(trace.notifications[len(PLACED):], expected)

    def test_hidden_groups_hide_their_ports_and_keep_the_order_of_the_user(self):
        trace = self.trace(
            *PLACED,
            op("updatePortGroupKeys", node="node", orientation=1, keys=["Value Range", "New"]),
            op("updatePortGroupKeys", node="node", orientation=1,
               keys=["__Default", "Value Range"]),
            op("setPortGroup", node="node", orientation=1, group="Value Range", hidden=True,
               collapsedCanvasGroup=True, collapsedSidebarGroup=False),
            op("resyncPatch", node="node"),
            op("dump", node="node"))
        self.assertEqual(trace.results[3:5], [["Value Range", "New"],
                                              ["Value Range", "__Default"]])
        group = "HXPatchPortGroup:node_1/1/Value Range"
        self.assertEqual(trace.notifications[5], [
            posted("HXPortGroupHiddenDidChangeNotification", group, PortGroup=group, Hidden=True),
            posted("HXPortGroupCollapsedCanvasDidChangeNotification", group, PortGroup=group,
                   Collapsed=True)])
        shape = trace.results[-1]
        self.assertEqual([(g["key"], g["hidden"]) for g in shape["inputPortGroups"]],
                         [("Value Range", True), ("__Default", False)])
        self.assertEqual([p["key"] for p in shape["inputPorts"]], ["Tarn.input"])
        self.assertIn("Tarn.outputMinInput", shape["allPortKeys"])


class Views(HostTest):
    VIEWS = [op("newDocument", as_="doc"), op("newNode", as_="group", patch=None),
             op("setForceAllowsSubnodes", node="group", value=True),
             op("addNode", node="group", to="doc")]

    def view(self, name):
        return [op("newNode", as_=name, patch="HXRImageViewNode"),
                op("addNode", node=name, to="group")]

    def swap(self, node, old, new, group):
        return posted("HXNodeSubnodeGroupDidChangeNotification", node, Node=node,
                      OldGroup=f"{old}:{group}", NewGroup=f"{new}:{group}")

    def order(self, group, *nodes):
        return posted("HXSubviewGroupSubviewOrderDidChangeNotification",
                      f"HXSubviewGroup:{group}", Node=f"HXSubviewGroup:{group}",
                      SubviewNodes=[f"HXNode:{node}" for node in nodes])

    def test_the_first_view_swaps_every_group_above(self):
        trace = self.trace(*self.VIEWS, *self.view("a"), *self.view("b"))
        self.assertEqual(trace.notifications[5], [
            posted("HXGroupAddNodeNotification", "HXGroup:group_1", Group="HXGroup:group_1",
                   Node="HXNode:node_2"),
            self.swap(NODE, "HXGroup", "HXSubviewGroup", "group_1"),
            self.swap("HXDocument:node_0", "HXGroup", "HXSubviewGroup", "group_0")])
        self.assertEqual(trace.notifications[7], [
            posted("HXGroupAddNodeNotification", "HXSubviewGroup:group_1",
                   Group="HXSubviewGroup:group_1", Node="HXNode:node_3"),
            self.order("group_1", "node_2", "node_3")])

    def test_the_last_view_swaps_back(self):
        posts = self.posts_of_last(*self.VIEWS, *self.view("a"), op("removeNode", node="a"))
        self.assertEqual(posts, [
            self.order("group_1"),
            posted("HXGroupRemoveNodeNotification", "HXSubviewGroup:group_1",
                   Group="HXSubviewGroup:group_1", Node="HXNode:node_2"),
            self.swap(NODE, "HXSubviewGroup", "HXGroup", "group_1"),
            self.swap("HXDocument:node_0", "HXSubviewGroup", "HXGroup", "group_0")])

    def test_an_index_past_the_end_means_the_end(self):
        trace = self.trace(*self.VIEWS, *self.view("a"), *self.view("b"), *self.view("c"),
                           op("moveSubview", node="a", index=99), op("dump", node="group"))
        self.assertEqual(trace.notifications[-2], [self.order("group_1", "node_3", "node_4",
                                                              "node_2")])
        shape = trace.results[-1]
        self.assertEqual(shape["subnodeGroup"]["subviewNodes"], ["node_3", "node_4", "node_2"])
        self.assertTrue(shape["shouldBeTreatedAsViewNode"])

    def test_canvas_centre_and_opacity_are_lost_in_a_swap(self):
        shape = self.last(*self.VIEWS, op("setCanvasCenter", node="group", value=[3, 4.5]),
                          op("setOpaque", node="group", value=True),
                          op("swapSubnodeGroup", node="group", to="view"),
                          op("dump", node="group"))["subnodeGroup"]
        self.assertEqual((shape["class"], shape["uniqueKey"], shape["canvasCenter"],
                          shape["opaque"]), ("HXSubviewGroup", "group_1", [0, 0], False))


if __name__ == "__main__":
    unittest.main()
