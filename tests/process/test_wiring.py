"""Joining and breaking ports: what an editor's wire does, and what the document's connect leaves to
its caller."""

import unittest

from host import HostTest, by_key, op, posted

# node_1 and node_2 transitions, node_3 a touch interaction, node_4 and node_5 views.
PLACED = [
    op("newDocument", as_="doc"),
    op("newNode", as_="first", patch="HXRTransitionNode"),
    op("addNode", node="first", to="doc"),
    op("newNode", as_="second", patch="HXRTransitionNode"),
    op("addNode", node="second", to="doc"),
    op("newNode", as_="touch", patch="HXRTouchInteractionNode"),
    op("addNode", node="touch", to="doc"),
    op("newNode", as_="view", patch="HXRViewNode"),
    op("addNode", node="view", to="doc"),
    op("newNode", as_="other", patch="HXRViewNode"),
    op("addNode", node="other", to="doc"),
]


def ends(event, number, *ports):
    connection = f"HXConnection:connection_{number}"
    past = {"Add": "HXPortDidConnectNotification",
            "Remove": "HXPortDidDisconnectNotification"}[event]
    return [posted(past, f"HXPatchPort:{port}", Port=f"HXPatchPort:{port}", Connection=connection)
            for port in ports] + [
        posted(f"HXDocument{event}ConnectionNotification", "HXDocument:node_0",
               Graph="HXDocument:node_0", Connection=connection)]


class Wiring(HostTest):
    def connections_of(self, dump, node, port):
        nodes = {n["uniqueKey"]: n for n in dump["subnodeGroup"]["subnodes"]}
        ports = by_key(nodes[node]["inputPorts"] + nodes[node]["outputPorts"])
        return [c["uniqueKey"] for c in ports[port]["connections"]]

    def test_a_wire_replaces_the_connection_of_an_input_that_takes_one(self):
        posts = self.posts_of_last(
            *PLACED, op("wire", from_="first/Tarn.output", to="second/Tarn.input"),
            op("wire", from_="touch/Tarn.xPositionOutput", to="second/Tarn.input"))
        self.assertEqual(posts,
                         ends("Remove", 0, "node_1/Tarn.output", "node_2/Tarn.input") +
                         ends("Add", 1, "node_3/Tarn.xPositionOutput", "node_2/Tarn.input"))

    def test_an_output_that_takes_one_keeps_its_connection(self):
        trace = self.trace(
            *PLACED,
            op("wire", from_="touch/Tarn.interactionOutput", to="view/Tarn.interactionInput"),
            op("acceptsNewConnections", port="touch/Tarn.interactionOutput"),
            op("acceptsNewConnections", port="view/Tarn.interactionInput"),
            op("wire", from_="touch/Tarn.interactionOutput", to="other/Tarn.interactionInput"),
            op("dump"))
        self.assertEqual(trace.results[-4:-2], [False, True])
        self.assertEqual(trace.notifications[-2],
                         ends("Add", 1, "node_5/Tarn.interactionInput"))
        dump = trace.results[-1]
        self.assertEqual(self.connections_of(dump, "node_3", "Tarn.interactionOutput"),
                         ["connection_0"])
        self.assertEqual(self.connections_of(dump, "node_5", "Tarn.interactionInput"),
                         ["connection_1"])

    def test_connect_breaks_nothing_and_an_input_that_is_taken_refuses(self):
        trace = self.trace(*PLACED,
                           op("connect", first="second/Tarn.input", second="first/Tarn.output"),
                           op("connect", first="touch/Tarn.downOutput", second="second/Tarn.input"),
                           op("dump"))
        self.assertEqual(trace.results[-3]["from"], "node_1/Tarn.output")
        self.assertEqual(trace.notifications[-3],
                         ends("Add", 0, "node_1/Tarn.output", "node_2/Tarn.input"))
        self.assertEqual(trace.notifications[-2], ends("Add", 1, "node_3/Tarn.downOutput"))
        self.assertEqual(self.connections_of(trace.results[-1], "node_2", "Tarn.input"),
                         ["connection_0"])

    def test_who_fits_is_asked_of_the_input(self):
        pairs = {
            ("second/Tarn.input", "first/Tarn.output"): True,
            ("first/Tarn.output", "second/Tarn.input"): False,
            ("view/Tarn.interactionInput", "touch/Tarn.interactionOutput"): True,
            ("view/Tarn.interactionInput", "first/Tarn.output"): False,
            ("second/Tarn.input", "second/Tarn.input"): False,
        }
        trace = self.trace(*PLACED, *[op("canConnect", port=port, other=other)
                                      for port, other in pairs])
        self.assertEqual(trace.results[len(PLACED):], list(pairs.values()))

    def test_ends_that_do_not_fit_fail(self):
        kinds = "the input takes an interaction, the output gives a number, text or colour"
        for start, end, reason in [
                ("first/Tarn.output", "view/Tarn.interactionInput", kinds),
                ("first/Tarn.output", "second/Tarn.output", "both ports are outputs"),
                ("first/Tarn.input", "second/Tarn.input", "both ports are inputs")]:
            with self.subTest(start=start, end=end):
                line = self.failure(*PLACED, op("wire", from_=start, to=end))
                self.assertEqual(line,
                                 f'operation 11, wire, "{start}" does not fit "{end}": {reason}')

    def test_why_not_gives_the_reason(self):
        fits, refused = self.trace(
            *PLACED, op("whyNot", port="second/Tarn.input", other="first/Tarn.output"),
            op("whyNot", port="view/Tarn.interactionInput",
               other="first/Tarn.output")).results[-2:]
        self.assertEqual(fits, {"fits": True, "canConnect": True})
        self.assertEqual(refused, {
            "fits": False, "canConnect": False, "code": "kind",
            "reason": "the input takes an interaction, the output gives a number, text or colour",
            "ports": [{"port": "node_4/Tarn.interactionInput", "kind": "interaction"},
                      {"port": "node_1/Tarn.output", "kind": "primitive"}]})

    def test_two_inputs_are_not_connected_but_logged(self):
        trace = self.trace(*PLACED,
                           op("connect", first="first/Tarn.input", second="second/Tarn.input"))
        self.assertIsNone(trace.results[-1])
        self.assertEqual(trace.notifications[-1], [])
        self.assertEqual(len(trace.logs[-1]), 1)
        self.assertRegex(trace.logs[-1][0],
                         r"^WARNING: \[HXDocument\] Attempting to connect two ports that are not an "
                         r"input port and an output port\. \(<HXPatchPort: .*>, <HXPatchPort: .*>\)$")

    def test_a_broken_connection_is_restored_with_its_key(self):
        trace = self.trace(
            *PLACED, op("wire", from_="first/Tarn.output", to="second/Tarn.input", as_="wire"),
            op("break", connection="wire"), op("restoreConnection", connection="wire"))
        ports = ("node_1/Tarn.output", "node_2/Tarn.input")
        self.assertEqual(trace.notifications[-2], ends("Remove", 0, *ports))
        self.assertEqual(trace.notifications[-1], ends("Add", 0, *ports))

    def test_breaking_all_of_a_published_port_breaks_nothing(self):
        group = [op("newDocument", as_="doc"), op("newNode", as_="group", patch=None),
                 op("setForceAllowsSubnodes", node="group", value=True),
                 op("addNode", node="group", to="doc"),
                 op("newNode", as_="inside", patch="HXRTransitionNode"),
                 op("addNode", node="inside", to="group"),
                 op("newNode", as_="outside", patch="HXRTransitionNode"),
                 op("addNode", node="outside", to="doc"),
                 op("publish", port="inside/Tarn.input", as_="published"),
                 op("wire", from_="outside/Tarn.output", to="published")]
        trace = self.trace(*group, op("breakAll", port="published"),
                           op("breakAll", port="inside/Tarn.input"))
        self.assertEqual(trace.notifications[-2], [])
        self.assertEqual(trace.notifications[-1],
                         ends("Remove", 0, "node_3/Tarn.output", "node_2/Tarn.input"))
        # And a wire to it replaces the connection of the port that it resolves to.
        posts = self.posts_of_last(*group, op("wire", from_="outside/Tarn.output", to="published"))
        self.assertEqual(posts, ends("Remove", 0, "node_3/Tarn.output", "node_2/Tarn.input") +
                         ends("Add", 1, "node_3/Tarn.output", "node_2/Tarn.input"))


if __name__ == "__main__":
    unittest.main()
