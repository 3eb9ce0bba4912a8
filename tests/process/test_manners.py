"""How the command line treats people and programs: where an error is, what was probably meant, answers
line by line, files of another kind, completions, manual pages, colours and widths."""

import fcntl
import json
import os
import pty
import re
import select
import shutil
import signal
import struct
import subprocess
import termios
import time
import unittest

from host import HOST, ROOT, HostTest, op

CARD = ROOT / "examples/documents/card.json"
TOGGLE = ROOT / "examples/documents/toggle.json"


class MannersTest(HostTest):
    def fails(self, *arguments, status=1, input=b""):
        """The one line on standard error, without the program's name; nothing else is printed."""
        output, errors = self.host(*arguments, status=status, input=input)
        self.assertEqual(output, b"")
        return self.one_line(errors)

    def on_terminal(self, *arguments, width=60, status=0, variables=None):
        """What a terminal of that width shows, both streams."""
        terminal, other = pty.openpty()
        self.addCleanup(os.close, terminal)
        fcntl.ioctl(other, termios.TIOCSWINSZ, struct.pack("HHHH", 24, width, 0, 0))
        environment = {name: value for name, value in os.environ.items() if name != "NO_COLOR"}
        run = subprocess.Popen([HOST, *map(str, arguments)], stdin=subprocess.DEVNULL, stdout=other,
                               stderr=other, env={**environment, **(variables or {})})
        os.close(other)
        shown = b""
        try:
            while piece := os.read(terminal, 65536):
                shown += piece
        except OSError:  # the other end is closed
            pass
        self.assertEqual(run.wait(60), status)
        return shown.decode().replace("\r\n", "\n")


class Expressions(MannersTest):
    def test_a_caret_stands_under_the_place(self):
        for text, wanted in (
                ("1 + * 2", "  1 + * 2\n    ^\n"),
                ("1 + $width * 2", "  1 + $width * 2\n      ^~~~~~\n"),
                ("2 +", "  2 +\n    ^\n"),
                ("π\t+ foo(1)", "  π + foo(1)\n      ^~~\n"),
                ("東京 + $a", "  東京 + $a\n  ^~~~\n")):
            with self.subTest(text):
                shown = self.on_terminal("--color", "never", "eval", text, status=1)
                self.assertRegex(shown, r"^tarnkit: .* \(code \d+\)")
                self.assertTrue(shown.endswith(wanted), shown)
        # What does not fit is left out on either side of the place.
        text = "1 + " * 1000 + "$missing" + " + 1" * 1000
        message, line, marks = self.on_terminal("--color", "never", "eval", text,
                                                status=1).splitlines()
        self.assertLessEqual(len(line), 59)
        self.assertEqual(line[marks.index("^"):][:8], "$missing")
        self.assertEqual((line[2], line[-1], marks.strip()), ("…", "…", "^~~~~~~~"))
        # Elsewhere the message is one line.
        self.assertEqual(self.fails("parse", "* 2"), "no left operand to binary * (code 9)")

    def test_hints(self):
        for arguments, hint in (
                (["2x"], '"x" is a function here; the variable is $x'),
                (["1 + Width", "--var", "Width=2"],
                 '"Width" is a function here; the variable is $Width'),
                (["sqr(2)"], 'did you mean "sqrt"?'),
                (["$widht", "--var", "width=2"], 'did you mean "$width"?'),
                (["2 * $pi"], '"pi" is a function, which has no "$"'),
                (["1)"], 'the ")" has no "(" before it'),
                (["$a", "--var", "a=2x"], None), (["$x"], None), (["2 +"], None)):
            with self.subTest(arguments):
                line = self.fails("eval", *arguments)
                self.assertEqual(line.partition("; ")[2] or None, hint)
                answer = json.loads(self.host("eval", *arguments, "--json", status=1)[0])
                self.assertEqual(answer["error"].get("hint"), hint)

    def test_failures_as_json(self):
        self.assertEqual(json.loads(self.host("eval", "π + $x", "--json", status=1)[0]), {
            "error": {"code": 4, "message": "unable to resolve variable: x", "offset": 5, "length": 2}})
        lines = [{"op": "eval", "text": "2x"}, {"op": "tokens", "text": "1 $"},
                 {"op": "parse", "text": "(1"}, {"op": "simplify", "text": "* 1"}]
        answers = self.host("math", input="\n".join(map(json.dumps, lines)).encode())[0]
        places = [(error["code"], error["offset"], error["length"])
                  for error in (json.loads(line)["error"] for line in answers.splitlines())]
        self.assertEqual(places, [(3, 1, 1), (4, 2, 1), (7, 0, 1), (9, 0, 1)])
        # A wrong command line is no answer.
        self.fails("eval", "1", "--var", "x", "--json", status=2)


class WhatWasMeant(MannersTest):
    def test_commands_options_and_operations(self):
        for arguments, line in (
                ([], "a command is missing"),
                (["rednder"], 'there is no command "rednder"; did you mean "render"?'),
                (["cat"], 'there is no command "cat"; did you mean "catalogue"?'),
                (["qqq", "--json"], 'there is no command "qqq"'),
                (["--plugn", "x", "eval", "1"],
                 'there is no option "--plugn" before the command; did you mean "--plugin"?'),
                (["open", "a", "--jsno"], 'open has no option "--jsno"; did you mean "--json"?'),
                (["save", "a", "--outptu=b"],
                 'save has no option "--outptu"; did you mean "--output"?'),
                (["eval", "-1", "--degree"],
                 'eval has no option "--degree"; did you mean "--degrees"?'),
                (["open", "a", "--plugin", "x"], "open, --plugin stands before the command"),
                (["run", "a", "b"], "run does not take so many arguments: b")):
            with self.subTest(arguments):
                self.assertEqual(self.fails(*arguments, status=2), line + " (--help tells more)")
        for operation, reason in (
                (op("newNoed"), 'there is no such operation; did you mean "newNode"?'),
                (op("newDocument", name="x"), 'it has no argument "name"'),
                (op("newNode", pach=None), 'it has no argument "pach"; did you mean "patch"?')):
            line = self.fails("run", "-", input=json.dumps(operation).encode())
            self.assertEqual(line, f"operation 0, {operation['do']}, {reason}")

    def test_patches_by_name(self):
        def classes(*names):
            listed = json.loads(self.host("catalogue", *names, "--json")[0])
            return sorted(patch["class"] for patch in listed)

        for name in ("HXRClampNode", "Clamp", "clamp", "clam", "hxrclampnode"):
            self.assertEqual(classes(name), ["HXRClampNode"], name)
        parts = classes("expression")
        self.assertIn("HXRMathExpressionNode", parts)
        self.assertIn("HXRJavascriptExpressionNode", parts)
        self.assertEqual(classes("Expression", "clamp"), sorted(parts + ["HXRClampNode"]))
        self.assertEqual(self.fails("catalogue", "Clapm"),
                         'catalogue, Clapm, there is no patch of that name or key; '
                         'did you mean "Clamp"?')
        self.assertEqual(self.fails("functions", "sqr"), 'functions, sqr, there is no function and '
                         'no operator so; did you mean "sqrt"?')

    def test_pictures_take_their_form_from_the_name(self):
        for name, start in (("a.svg", b"<svg"), ("a", b"<svg"), ("b.html", b"<!doctype html"),
                            ("c.HTM", b"<!doctype html"), ("my.things/a", b"<svg")):
            (self.folder / name).parent.mkdir(exist_ok=True)
            self.host("render", CARD, "-o", self.folder / name)
            self.assertIn(start, (self.folder / name).read_bytes()[:200], name)
        self.host("render", CARD, "-o", self.folder / "a.txt", "--format", "html")
        for name in ("a.png", "a.document"):
            line = self.fails("render", CARD, "-o", self.folder / name, status=2)
            self.assertIn(f'what "{name}" ends in is no form that is drawn', line)
            self.assertFalse((self.folder / name).exists())


class Sessions(MannersTest):
    def driven(self, *arguments):
        """A session that another program drives through pipes: asks with a line, reads one."""
        run = subprocess.Popen([HOST, "run", "-", *arguments], stdin=subprocess.PIPE,
                               stdout=subprocess.PIPE, stderr=subprocess.PIPE, bufsize=0)
        self.addCleanup(run.stderr.close)
        self.addCleanup(run.stdout.close)

        def ask(operation):
            run.stdin.write(json.dumps(operation).encode() + b"\n")
            run.stdin.flush()
            lines = []
            while not lines or "result" not in lines[-1] and "error" not in lines[-1]:
                self.assertTrue(select.select([run.stdout], [], [], 60)[0], "no answer")
                lines.append(json.loads(run.stdout.readline()))
            return lines

        return run, ask

    def test_each_line_is_answered_as_soon_as_it_is_whole(self):
        run, ask = self.driven("--trace", "--keep-going")
        self.assertEqual(ask(op("newDocument"))[-1]["result"]["uniqueKey"], "node_0")
        self.assertIsNone(ask(op("newNode", as_="a", patch="HXRClampNode"))[-1].get("error"))
        added = ask(op("addNode", node="a", to="node_0"))
        self.assertEqual([line.get("notification") for line in added],
                         ["HXGroupAddNodeNotification", None])
        self.assertEqual(ask(op("addNode", node="b", to="node_0")),
                         [{"op": 3, "do": "addNode", "error": 'there is no node "b"'}])
        self.assertEqual(ask({"op": 1}), [{"op": 4, "do": None, "error": 'it has no "do"'}])
        self.assertEqual(ask(op("setName", node="a", value="Limits"))[-1],
                         {"op": 5, "do": "setName", "result": None})
        # It ends though its input goes on.
        self.assertEqual(ask(op("quit"))[-1]["do"], "quit")
        self.assertEqual(run.wait(60), 1)
        self.assertEqual(run.stdout.read(), b"")
        self.assertEqual(run.stderr.read(),
                         b"tarnkit: 2 of 7 operations could not be performed\n")
        run.stdin.close()

    def test_one_that_is_not_to_go_on_ends_at_once(self):
        run, ask = self.driven("--trace")
        ask(op("newDocument"))
        run.stdin.write(b'{"do": "fly"}\n')
        run.stdin.flush()
        self.assertEqual(run.wait(60), 1)
        self.assertEqual(run.stderr.read(),
                         b"tarnkit: operation 1, fly, there is no such operation\n")
        run.stdin.close()

    def test_going_on(self):
        script = [op("newDocument"), op("fly"), 17, op("newNode", patch="HXRClampNode"), op("quit"),
                  op("newDocument")]
        errors = [{"op": 1, "do": "fly", "error": "there is no such operation"},
                  {"op": 2, "do": None, "error": "it is an integer, not an object"}]
        file = self.folder / "script"
        file.write_text(json.dumps(script))
        for source in (file, "-"):
            for form, text in (("array", json.dumps(script, indent=1)),
                               ("lines", "\n".join(map(json.dumps, script)))):
                with self.subTest(source=source, form=form):
                    file.write_text(text)
                    output, told = self.host("run", source, "--json", "--keep-going", status=1,
                                             input=text.encode())
                    answers = json.loads(output)
                    self.assertEqual(answers[1:3], errors)
                    self.assertEqual([answer["do"] for answer in answers],
                                     ["newDocument", "fly", None, "newNode", "quit"])
                    self.assertEqual(self.one_line(told),
                                     "2 of 5 operations could not be performed")
        plain = self.host("run", "-", "--keep-going", status=1, input=text.encode())[0]
        self.assertEqual([json.loads(line) for line in plain.decode().splitlines()[1:3]], errors)
        # A line that cannot be read is one of them, too.
        answers = self.host("run", "-", "--trace", "--keep-going", status=1,
                            input=b'{"do":\n{"do":"newDocument"}')[0].splitlines()
        self.assertTrue(json.loads(answers[0])["error"].startswith("line 1, "), answers)
        self.assertEqual(json.loads(answers[1])["op"], 1)
        self.assertEqual(self.host("run", "-", input=b'{"do":"quit"}\nwhatever')[0], b"")


class Files(MannersTest):
    def test_a_file_of_another_kind_says_which_command_reads_it(self):
        graph, script = self.folder / "card.graph", self.folder / "script"
        self.host("send", CARD, "-o", graph)
        script.write_text('{"do":"newDocument"}\n{"do":"quit"}\n')
        array = self.folder / "array"
        array.write_text(json.dumps([op("newDocument")]))
        archive, document = self.folder / "images", self.folder / "with-image"
        self.host("run", "-", input=json.dumps([
            op("newDocument"), op("addImage", file=str(ROOT / "examples/photos/northern-lights.png")),
            op("sendImages", directory=str(archive)), op("save", file=str(document))]).encode())
        picture = ROOT / "examples/photos/northern-lights.png"
        image = next(archive.iterdir())
        for file, what in ((graph, "it is a device graph; tarnkit inspect reads it"),
                           (image, "it is the archive of an image; tarnkit inspect reads it"),
                           (script, "it is a script; tarnkit run performs it"),
                           (array, "it is a script; tarnkit run performs it"),
                           (picture, "it is a picture; the operation addImage of a session "
                                     "takes it")):
            for command in (["open"], ["save", "-o", self.folder / "out"], ["find"]):
                status = 2 if command == ["find"] else 1
                self.assertEqual(self.fails(*command, file, status=status),
                                 f"{command[0]}, {file}, {what}")
            if file not in (graph, image):
                self.assertEqual(self.fails("inspect", file), f"inspect, {file}, {what}")
        self.assertFalse((self.folder / "out").exists())
        for file in (CARD, document):
            self.assertEqual(self.fails("run", file),
                             f"run, {file}, it is a document; tarnkit open reads it")
        self.assertEqual(self.fails("run", graph),
                         f"run, {graph}, it is a device graph; tarnkit inspect reads it")
        self.assertIn(f"operation 0, open, {graph}, it is a device graph;", self.fails(
            "run", "-", input=json.dumps(op("open", file=str(graph))).encode()))
        self.assertIn("it is no script", self.fails("run", "-", input=document.read_bytes()))

    def test_several_files(self):
        missing = self.folder / "missing"
        for command in ("open", "inspect"):
            def printed(*arguments, status=0):
                """Without the numbers that go on from one document of a process to the next."""
                output, errors = self.host(command, *arguments, status=status)
                return re.sub(r"\b(document|group|connection)_\d+", r"\1_N", output.decode()), errors

            one, other = (printed(file)[0] for file in (CARD, TOGGLE))
            self.assertEqual(printed(CARD, TOGGLE)[0], f"{CARD}:\n{one}\n{TOGGLE}:\n{other}")
            one, other = (json.loads(printed(file, "--json")[0]) for file in (CARD, TOGGLE))
            self.assertEqual(json.loads(printed(CARD, TOGGLE, "--json")[0]), [one, other])
            output, errors = printed(CARD, missing, TOGGLE, "--json", status=1)
            self.assertEqual(json.loads(output), [one, None, other])
            self.assertTrue(self.one_line(errors).startswith(f"{command}, {missing}, "), errors)

    def test_standard_input_and_output_stand_for_files(self):
        card = CARD.read_bytes()
        copy = self.folder / "copy.json"
        copy.write_bytes(card)
        for arguments in (["open", "-"], ["inspect", "-"], ["check", "-"], ["find", "-"],
                          ["save", "-", "-o", "-"], ["send", "-", "-o", "-"],
                          ["render", "-", "-o", "-"], ["diff", "-", copy], ["diff", copy, "-"],
                          ["diff", copy, "-", "--html", "-"],
                          ["images", "-", "-o", self.folder / "pictures"],
                          ["merge", copy, "-", copy, "-o", "-"]):
            with self.subTest(arguments):
                self.assertEqual(self.host(*arguments, input=card)[1], "")
        self.assertIn("named twice", self.fails("diff", "-", "-", input=card, status=2))
        output, errors = self.host("open", "-", "-", input=card, status=1)
        self.assertIn("named twice", errors)


class Describing(MannersTest):
    def commands(self):
        listed = self.host("--help")[0].decode().split("Subcommands:\n")[1]
        return re.findall(r"^  (\w+)", listed, re.MULTILINE)

    def options(self, command):
        text = self.host(command, "--help")[0].decode().split("Options:\n")[1].split("\n\n")[0]
        return {name for line in re.findall(r"^  (-\S+)", text, re.MULTILINE)
                for name in line.split(",")}

    def completed(self, *words):
        """What bash offers for the last of the words."""
        script = self.folder / "completion"
        script.write_bytes(self.host("completion", "bash")[0])
        run = subprocess.run(
            ["bash", "--norc", "-c", 'source "$0"; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); '
             '_tarnkit; printf "%s\\n" "${COMPREPLY[@]}"', script, "tarnkit", *words],
            capture_output=True, text=True, timeout=60, cwd=self.folder)
        self.assertEqual((run.returncode, run.stderr), (0, ""))
        return run.stdout.split()

    def test_bash_completes(self):
        self.assertEqual(sorted(self.completed("")), sorted(self.commands()))
        self.assertEqual(self.completed("--color", "never", "sa"), ["save"])
        for command in self.commands():
            self.assertEqual(set(self.completed(command, "-")), self.options(command), command)
        self.assertEqual(self.completed("render", "--theme", "d"), ["dark"])
        self.assertEqual(self.completed("render", "--format", "=", ""), ["svg", "html"])
        self.assertEqual(self.completed("completion", ""), ["bash", "zsh", "fish"])
        (self.folder / "designs").mkdir()
        (self.folder / "design.json").write_text("")
        self.assertEqual(sorted(self.completed("open", "desi")), ["design.json", "designs"])
        self.assertEqual(self.completed("images", "-o", "desi"), ["designs"])
        self.assertEqual(self.completed("eval", "desi"), [])

    # What is typed, and the word that its last one can only become.
    COMPLETED = (
        ("ren", "render"), ("--color nev", "never"), ("--color never sa", "save"),
        ("render --the", "--theme"), ("render --theme d", "dark"),
        ("render card.json --format ht", "html"), ("completion f", "fish"), ("open car", "card.json"),
        ("render check --them", "--theme"), ("images -o desi", "designs/"),
        ("images -o car", None), ("eval desi", None))

    def folder_to_complete_in(self):
        (self.folder / "designs").mkdir()
        (self.folder / "card.json").write_text("")
        functions = self.folder / "functions"
        functions.mkdir()
        return functions

    @unittest.skipUnless(shutil.which("fish"), "fish is not installed")
    def test_fish_completes(self):
        script = self.folder_to_complete_in() / "tarnkit.fish"
        script.write_bytes(self.host("completion", "fish")[0])
        lines = [f"tarnkit {typed}" for typed, _ in self.COMPLETED]
        run = subprocess.run(
            ["fish", "--no-config", "-c", f"source {script}; for line in $argv; complete -C $line; "
             "echo ==; end", *lines],
            capture_output=True, text=True, timeout=120, cwd=self.folder,
            env={**os.environ, "HOME": str(self.folder)})
        self.assertEqual((run.returncode, run.stderr), (0, ""))
        told = [[line.split("\t")[0] for line in part.splitlines() if line]
                for part in run.stdout.split("==\n")[:-1]]
        self.assertEqual(told, [[word] if word else [] for _, word in self.COMPLETED])

    @unittest.skipUnless(shutil.which("zsh"), "zsh is not installed")
    def test_zsh_completes(self):
        """As people have it: in a terminal, by the key for it, from a file that the shell finds."""
        functions = self.folder_to_complete_in()
        (functions / "_tarnkit").write_bytes(self.host("completion", "zsh")[0])
        lines, told = [f"tarnkit {typed}" for typed, _ in self.COMPLETED], self.folder / "told"
        child, terminal = pty.fork()
        if child == 0:
            os.chdir(self.folder)
            os.execvpe("zsh", ["zsh", "-f", "-i"],
                       {**os.environ, "TERM": "dumb", "HOME": str(self.folder)})
        try:
            keys = (f"PS1=; fpath=({functions} $fpath); autoload -U compinit; compinit -u -D\n"
                    f"tell() {{ print -r -- \"$BUFFER\" >> {told}; zle kill-whole-line }}\n"
                    "zle -N tell; bindkey '^X' tell; bindkey '^I' complete-word\n")
            os.write(terminal, keys.encode())
            for count, line in enumerate(lines, 1):
                os.write(terminal, f"{line}\t\x18".encode())
                self.wait_for_lines(terminal, told, count)
        finally:
            os.kill(child, signal.SIGKILL)
            os.waitpid(child, 0)
            os.close(terminal)
        expected = [line.rpartition(" ")[0] + " " + (word if word.endswith("/") else word + " ")
                    if word else line for line, (_, word) in zip(lines, self.COMPLETED)]
        self.assertEqual(told.read_text().splitlines(), expected)

    def wait_for_lines(self, terminal, path, count):
        deadline = time.monotonic() + 60
        while not path.exists() or path.read_text().count("\n") < count:
            self.assertLess(time.monotonic(), deadline, f"line {count} does not come")
            if select.select([terminal], [], [], 0.05)[0]:
                os.read(terminal, 65536)

    def test_the_other_shells_are_told_the_same(self):
        for shell, option in (("zsh", r"'\*?--{}\["), ("fish", r" -l {}\b")):
            text = self.host("completion", shell)[0].decode()
            for command in self.commands():
                self.assertRegex(text, rf"\b{command}\b")
                for name in self.options(command):
                    if name.startswith("--"):
                        self.assertRegex(text, option.format(name[2:]))
            if shutil.which(shell):
                subprocess.run([shell, "-n", "/dev/stdin"], input=text.encode(), check=True,
                               timeout=60)

    def test_manual_pages(self):
        folder = self.folder / "man"
        self.host("manpage", "-o", folder)
        names = {"tarnkit"} | {f"tarnkit-{command}" for command in self.commands()}
        self.assertEqual({page.name for page in folder.iterdir()}, {f"{name}.1" for name in names})
        self.assertEqual(self.host("manpage", "open")[0], (folder / "tarnkit-open.1").read_bytes())
        for command in self.commands():
            text = (folder / f"tarnkit-{command}.1").read_text()
            self.assertRegex(text, rf'\A\.TH \S+ 1 "" "tarnkit [\d.]+" "Tarnkit"\n\.SH NAME\n'
                                   rf'tarnkit\\-{command} \\- \S')
            for name in self.options(command):
                self.assertIn("\\fB" + name.replace("-", "\\-") + "\\fR", text)
        if shutil.which("groff"):
            for page in folder.iterdir():
                run = subprocess.run(["groff", "-man", "-ww", "-Tascii", "-z", page],
                                     capture_output=True, text=True, timeout=60)
                self.assertEqual((run.returncode, run.stderr), (0, ""), page.name)
        self.assertIn('did you mean "eval"?', self.fails("manpage", "evla", status=2))


class Terminals(MannersTest):
    def test_colours(self):
        changed = self.folder / "changed.json"
        changed.write_text(CARD.read_text().replace('"Card"', '"Board"'))
        diff = ["diff", CARD, changed]
        plain = self.host(*diff, status=1)[0].decode()
        self.assertNotIn("\x1b", plain)
        self.assertIn("\x1b[33m", self.on_terminal(*diff, status=1))
        self.assertEqual(self.on_terminal(*diff, status=1, variables={"NO_COLOR": "1"}), plain)
        self.assertIn("\x1b[33m", self.on_terminal(*diff, status=1, variables={"NO_COLOR": ""}))
        self.assertEqual(self.on_terminal("--color", "never", *diff, status=1), plain)
        always = self.host("--color", "always", *diff, status=1)[0].decode()
        self.assertEqual(re.sub(r"\x1b\[[\d;]*m", "", always), plain)
        self.assertIn("\x1b[1;31m^", self.on_terminal("eval", "1 +", status=1))
        self.assertIn("\x1b[", self.on_terminal("--color=always", "check", changed, status=0)
                      + self.on_terminal("eval", "$", status=1))

    def test_help_fits_the_terminal(self):
        for arguments in (["--help"], ["run", "--help"], ["functions"]):
            plain = self.host(*arguments)[0].decode()
            self.assertGreater(max(map(len, plain.splitlines())), 70)
            shown = self.on_terminal(*arguments, width=70)
            self.assertLessEqual(max(map(len, shown.splitlines())), 70)
            self.assertEqual(shown.split(), plain.split())
            self.assertEqual(self.on_terminal(*arguments, width=300), plain)


if __name__ == "__main__":
    unittest.main()
