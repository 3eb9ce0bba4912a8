"""What every command has in common: help, exit statuses, one clear line for a failure; and scripts
that are none."""

import json
import os
import pathlib
import pty
import select
import subprocess
import unittest

from host import HOST, HostTest, op

COMMANDS = ("run", "open", "save", "send", "inspect", "catalogue", "eval", "tokens", "parse",
            "simplify", "rewrite", "math", "render", "reference", "diff", "merge", "git",
            "completion", "manpage")


class CommandLine(HostTest):
    def test_help_and_version(self):
        output = self.host("--help")[0].decode()
        for command in COMMANDS:
            with self.subTest(command=command):
                self.assertIn(f"  {command} ", output)
                self.assertIn("Usage: tarnkit " + command, self.host(command, "--help")[0].decode())
        self.assertRegex(self.host("--version")[0].decode(), r"\d+\.\d+\.\d+\n$")

    def test_a_wrong_command_line(self):
        for arguments in ([], ["nothing"], ["run"], ["run", "a", "b"], ["open", "--frob", "a"],
                          ["save", "a"], ["open", "a", "--coding-type", "x"]):
            with self.subTest(arguments=arguments):
                output, errors = self.host(*arguments, status=2)
                self.assertEqual(output, b"")
                self.one_line(errors)

        # What is not expected is named in the order in which it stands there.
        errors = self.host("eval", "1", "2", "3", status=2)[1]
        self.assertIn(": 2 3 ", self.one_line(errors))

    def test_plugins_that_are_none(self):
        text = self.folder / "text"
        text.write_text("no library")
        for plugin in (text, self.folder / "missing"):
            line = self.one_line(self.host("--plugin", plugin, "catalogue", status=1)[1])
            self.assertTrue(line.startswith(f"plug-in, {plugin}, "), line)
            self.assertEqual(line.count(str(plugin)), 1)

    def test_a_closed_output_is_a_failure(self):
        with open("/dev/full", "wb") as full:
            run = subprocess.run([HOST, "run", "-"], input=b'{"do":"newDocument"}', stdout=full,
                                 stderr=subprocess.PIPE, timeout=60)
        self.assertEqual(run.returncode, 1)
        self.assertEqual(run.stderr.decode(),
                         "tarnkit: output, standard output, No space left on device\n")

    def test_short_results_are_not_lost_in_silence(self):
        for arguments in (["eval", "1+1"], ["tokens", "1"], ["parse", "1"], ["math"], ["--version"]):
            with self.subTest(arguments[0]), open("/dev/full", "wb") as full:
                run = subprocess.run([HOST, *arguments], input=b"{}", stdout=full,
                                     stderr=subprocess.PIPE, timeout=60)
                self.assertEqual(run.returncode, 1)
                self.assertEqual(run.stderr.decode(),
                                 "tarnkit: output, standard output, No space left on device\n")

    def test_an_input_that_cannot_be_read_is_a_failure(self):
        for arguments, what in ((["math"], "math"), (["run", "-"], "script"),
                                (["inspect", "-"], "inspect")):
            with self.subTest(arguments[0]):
                folder = os.open(self.folder, os.O_RDONLY)
                self.addCleanup(os.close, folder)
                run = subprocess.run([HOST, *arguments], stdin=folder, capture_output=True,
                                     text=True, timeout=60)
                self.assertEqual((run.returncode, run.stdout), (1, ""))
                self.assertEqual(self.one_line(run.stderr), f"{what}, standard input, Is a directory")

    def test_messages_that_cannot_be_written_change_nothing(self):
        logs = op("setParameter", node="n", parameter="Tarn.mathExpressionParameter", value="1 $")
        script = [op("newDocument"), op("newNode", as_="n", patch="HXRMathExpressionNode"), logs]
        for arguments, input, status in ((["inspect", "missing"], [], 1), (["run", "-"], script, 0),
                                         (["nonsense"], [], 2)):
            with self.subTest(arguments[0]), open("/dev/full", "wb") as full:
                run = subprocess.run([HOST, *arguments], input=json.dumps(input).encode(),
                                     stdout=subprocess.DEVNULL, stderr=full, timeout=60)
                self.assertEqual(run.returncode, status)

    def test_closed_streams_do_not_write_into_files(self):
        # Each save opens its file under the lowest number that is free.
        script = [op("newDocument"), op("newNode", as_="n", patch="HXRMathExpressionNode"),
                  op("addNode", node="n", to="node_0"), op("save", file="file")]
        (self.folder / "script").write_text(json.dumps(script))
        self.host("run", "script", cwd=self.folder)
        saved = (self.folder / "file").read_bytes()
        for closed, status in (("2>&-", 0), ("<&-", 0), (">&- 2>&-", 1)):
            with self.subTest(closed):
                run = subprocess.run(
                    ["/bin/sh", "-c", f'exec "$0" run script --trace {closed}', HOST],
                    cwd=self.folder, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                    timeout=60)
                self.assertEqual(run.returncode, status)
                self.assertEqual((self.folder / "file").read_bytes(), saved)

    def test_progress_shows_on_a_terminal_only(self):
        if b"__tsan_init" in pathlib.Path(HOST).read_bytes():
            self.skipTest("the thread sanitizer holds signals back while the program waits")
        terminal, other = pty.openpty()
        self.addCleanup(os.close, terminal)
        run = subprocess.Popen([HOST, "open", "-"], stdin=subprocess.PIPE, stderr=other,
                               stdout=subprocess.DEVNULL)
        os.close(other)
        # It waits for its input, so it takes longer than a second.
        self.assertTrue(select.select([terminal], [], [], 60)[0])
        self.assertEqual(os.read(terminal, 1000), b"\rtarnkit: opening -")
        run.stdin.close()
        self.assertEqual(run.wait(60), 1)
        self.assertRegex(os.read(terminal, 1000), rb"^(\rtarnkit: opening -)*\r\x1b\[Ktarnkit: open, ")
        # A name is shown without what it could do to the terminal.
        name = self.folder / "\x1b[2J\n"
        os.mkfifo(name)
        terminal, other = pty.openpty()
        self.addCleanup(os.close, terminal)
        run = subprocess.Popen([HOST, "open", name], stderr=other, stdout=subprocess.DEVNULL)
        os.close(other)
        self.assertTrue(select.select([terminal], [], [], 60)[0])
        self.assertEqual(os.read(terminal, 1000),
                         f"\rtarnkit: opening {self.folder}/ [2J ".encode()[:100])
        name.write_bytes(b"")
        self.assertEqual(run.wait(60), 1)
        self.assertRegex(self.host("open", "-", status=1)[1], "^tarnkit: open, standard input, ")


class Scripts(HostTest):
    def test_arrays_and_lines_are_one(self):
        operations = [op("newDocument"), op("newNode", as_="a", patch="HXRClampNode"),
                      op("dump", node="a")]
        array = "\ufeff" + json.dumps(operations, indent=2)
        lines = "\r\n\n".join(json.dumps(o) for o in operations)
        script = self.folder / "script"
        script.write_text(lines)
        traces = [self.host("run", "-", "--trace", input=array.encode())[0],
                  self.host("run", "-", "--trace", input=lines.encode())[0],
                  self.host("run", script, "--trace", "--json")[0]]
        self.assertEqual(len(set(traces)), 1)
        results = json.loads(self.host("run", script, "--json")[0])
        self.assertEqual(results, [json.loads(line) for line in traces[0].splitlines()
                                   if b'"result"' in line])
        plain = self.host("run", script)[0].decode().splitlines()
        self.assertEqual(plain[1], '1 newNode {"uniqueKey":"node_1"}')
        for nothing in (b"", b"\n\n", b"[]"):
            self.assertEqual(self.host("run", "-", "--trace", input=nothing)[0], b"")

    def test_text_that_is_no_script(self):
        cases = {
            b"[": "script, the array of operations, ",
            b'[{"do":"newDocument"},]': "script, the array of operations, ",
            b"\xff\xfe": "operation 0, line 1, ",
            b'{"do":"newDocument"}\n\n{"do":': "operation 1, line 3, ",
            b"17": "operation 0, it is an integer, not an object",
            b'["newDocument"]': "operation 0, it is a string, not an object",
            b"[[]]": "operation 0, it is an array, not an object",
            b"{}": 'operation 0, it has no "do"',
            b'{"do":3}': 'operation 0, "do" must be a string, not an integer',
            b"[" * 100000 + b"]" * 100000: "script, the array of operations, ",
            b'{"do":' + b'{"a":' * 100000: "operation 0, line 1, ",
        }
        for script, start in cases.items():
            with self.subTest(script=script[:40]):
                line = self.one_line(self.host("run", "-", input=script, status=1)[1])
                self.assertTrue(line.startswith(start), line)

    def test_a_reason_is_cut_only_where_it_is_too_long(self):
        reasons = []
        for length in range(10, 90):
            script = ('["' + "a" * length).encode()  # a text without end, which the reason quotes
            line = self.one_line(self.host("run", "-", input=script, status=1)[1])
            reasons.append(line.removeprefix("script, the array of operations, "))
        whole = [reason for reason in reasons if not reason.endswith("...")]
        self.assertEqual(max(map(len, whole)), 160)
        self.assertEqual({len(reason) for reason in reasons[len(whole):]}, {163})

    def test_nothing_is_done_of_an_array_that_is_damaged(self):
        file = self.folder / "document"
        script = json.dumps([op("newDocument"), op("save", file=str(file))])[:-1]
        self.host("run", "-", input=script.encode(), status=1)
        self.assertFalse(file.exists())

    def test_operations_that_cannot_be_performed(self):
        start = [op("newDocument", as_="doc"), op("newNode", as_="a", patch="HXRClampNode"),
                 op("addNode", node="a", to="doc")]
        number = {"kind": "number", "value": 1}
        cases = [
            (op("fly"), "there is no such operation"),
            (op("setName", node="a"), '"value" is missing'),
            (op("setName", node="a", value="b", extra=1), 'it has no argument "extra"'),
            (op("setName", node="a", value=1), '"value" must be a string or null, not an integer'),
            (op("setSelected", node="a", value=1), '"value" must be true or false, not an integer'),
            (op("setPosition", node="a", value=[1]),
             '"value" must be two numbers [x,y], not an array'),
            (op("setPosition", node="a", value=[True, 1]),
             '"value" must be a number, not a boolean'),
            (op("setPosition", node="a", value=[1e300, 1]),
             '"value": 1e+300 does not fit a 32-bit float'),
            (op("setInspectorPanel", node="a", value=-1),
             '"value" must be an integer from 0 on: -1 does not fit'),
            (op("setName", node="b", value="x"), 'there is no node "b"'),
            (op("setName", node="node_99", value="x"), 'there is no node "node_99"'),
            (op("breakAll", port="a/Tarn.none"), 'the node "a" has no port "Tarn.none"'),
            (op("breakAll", port="p"), 'there is no published port "p"'),
            (op("break", connection="c"), 'there is no connection "c"'),
            (op("removeImage", image="i"), 'there is no image "i"'),
            (op("setPatch", node="a", patch="HXNode"), 'there is no patch class "HXNode"'),
            (op("newNode", patch=None, class_="HXDocument"), 'there is no node class "HXDocument"'),
            (op("newNode", as_="x/y", patch=None),
             '"x/y" cannot name a node: "/" separates node and port'),
            (op("addNode", node="doc", to="a"), 'the node "a" has no subnode group'),
            (op("addNode", node="doc", to="doc"), "a document stands in no group"),
            (op("removeNode", node="doc"), "the node is in no group"),
            (op("moveSubview", node="a", index=0), "the node is in no subview group"),
            (op("unpublish", port="doc/x"), 'the node "doc" has no port "x"'),
            (op("renamePort", symbolicPort="a/Tarn.valueInput", name="x"),
             '"a/Tarn.valueInput" is no published port'),
            (op("setParameter", node="a", parameter="p", value=1),
             'the node has no parameter "p"'),
            (op("setPortGroup", node="a", orientation=3, group="__Default", hidden=True),
             '"orientation" must be 1 (input) or 2 (output), not 3'),
            (op("setPortGroup", node="a", orientation=1, group="__Default"),
             "it sets none of hidden, collapsedCanvasGroup, collapsedSidebarGroup"),
            (op("setPortGroup", node="a", orientation=1, group="G", hidden=True),
             'the node has no port group "G" on that side'),
            (op("setStaticValue", port="a/Tarn.valueInput", value={"kind": "index", "value": 1.5}),
             '"value" must be a 32-bit integer, not a number'),
            (op("setStaticValue", port="a/Tarn.valueInput",
                value={"kind": "index", "value": 2147483648}),
             '"value" must be a 32-bit integer: 2147483648 does not fit'),
            (op("setStaticValue", port="a/Tarn.valueInput", value={"value": 1}),
             '"value" has no "kind"'),
            (op("equalPrimitives", value=number, other={"kind": "angle", "value": 1}),
             '"other": "angle" is no kind of primitive (nil, boolean, index, number, radians, '
             "degrees, color, string)"),
            (op("swapSubnodeGroup", node="doc", to="list"),
             '"to" must be one of group, view, not "list"'),
            (op("save", file="-"),
             '"-" is no file: the script and the trace have the standard streams'),
            (op("save", file=str(self.folder / "x"), codingType=2),
             "coding type 2 is not an editor's (0, 1 or 3)"),
            (op("documentGraph", class_="HXGroup"), 'there is no patch class "HXGroup"'),
        ]
        for operation, reason in cases:
            with self.subTest(operation=operation):
                line = self.failure(*start, operation)
                self.assertEqual(line, f"operation 3, {operation['do']}, {reason}")
        self.assertEqual(self.failure(op("dump")),
                         "operation 0, dump, there is no document: make or open one first")

    def test_a_session_keeps_what_it_named_and_the_document_in_hand(self):
        line = self.failure(op("newDocument"), op("newNode", as_="kept", patch=None),
                            op("newNode", patch=None), op("setName", node="kept", value="a"),
                            op("setName", node="node_1", value="a"),
                            op("setName", node="node_2", value="a"))
        self.assertEqual(line, 'operation 5, setName, there is no node "node_2"')
        # A port outlives neither its node nor its group, unless it has a name.
        line = self.failure(op("newDocument"), op("newNode", as_="a", patch="HXRClampNode"),
                            op("addNode", node="a", to="node_0"),
                            op("publish", port="a/Tarn.valueInput"),
                            op("newDocument"),
                            op("setName", node="node_0", value="gone"))
        self.assertEqual(line, 'operation 5, setName, there is no node "node_0"')

    def test_a_graph_nested_deep_is_sent_and_taken_down(self):
        depth = 10100
        operations = [op("newDocument", as_="doc")]
        for level in range(depth):
            operations += [op("newNode", as_="g", patch=None),
                           op("setForceAllowsSubnodes", node="g", value=True),
                           op("addNode", node="g", to=f"node_{level}")]
        graph = self.folder / "graph"
        document = self.folder / "document"
        script = "\n".join(json.dumps(o) for o in [
            *operations, op("send", file=str(graph)), op("save", file=str(document)),
            op("open", file=str(document)), op("dump")])
        line = self.one_line(self.host("run", "-", input=script.encode(), status=1)[1])
        self.assertEqual(line.split(", ", 2)[1:],
                         ["dump", "groups are nested more than 10000 deep below " +
                          line.rsplit(" ", 1)[1]])
        self.assertGreater(graph.stat().st_size, depth)
        self.assertIn(f"{depth} nodes", self.host("open", document)[0][:100].decode())
        self.host("inspect", graph, "--json")


if __name__ == "__main__":
    unittest.main()
