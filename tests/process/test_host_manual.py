"""The page about the host holds every command, option, operation, notification and member of JSON that
there is, and none that there is not; and so does --help."""

import collections
import json
import re

from archives import everything
from host import ROOT, HostTest, op, unittest
from manual import REGENERATES, Page, code_of

PAGE = Page(ROOT / "docs/host.md")


def rows_under(title, first_header=None):
    """The rows of all tables under a heading, at any depth."""
    return [row for titles, header, rows in PAGE.tables() for row in rows
            if title in titles and first_header in (None, header[0])]


def names_in(title):
    """The members that the tables under a heading name, `a`, `b` and `c` of one row too."""
    return {name for row in rows_under(title, "Member") for name in code_of(row[0])}


# Edits as people make them, after which the page about editors tells what is posted.
BEFORE = [
    op("newDocument", as_="document"),
    *[op("newNode", as_=name, patch=patch) for name, patch in [
        ("clamp", "HXRClampNode"), ("other", "HXRClampNode"), ("new", "HXRClampNode"),
        ("choice", "HXRMultiplexerNode"), ("view", "HXRColorViewNode"),
        ("front", "HXRColorViewNode"), ("group", None), ("inner", "HXRClampNode")]],
    op("setForceAllowsSubnodes", node="group", value=True),
    *[op("addNode", node=name, to="document")
      for name in ("clamp", "other", "choice", "view", "front", "group")],
    op("addNode", node="inner", to="group"),
    op("copy", nodes=["clamp", "other"], as_="copied"),
]
EDITS = [
    ("A node is added", op("addNode", node="new", to="document")),
    ("A node is renamed", op("setName", node="clamp", value="Limits")),
    ("A node is moved on the canvas", op("setPosition", node="clamp", value=[10, 20])),
    ("A node is selected", op("setSelected", node="clamp", value=True)),
    ("A wire is joined", op("wire", **{"from": "clamp/Tarn.resultOutput",
                                       "to": "other/Tarn.valueInput", "as": "wire"})),
    ("Another wire takes its place at the input",
     op("wire", **{"from": "new/Tarn.resultOutput", "to": "other/Tarn.valueInput",
                   "as": "second"})),
    ("A wire is broken", op("break", connection="second")),
    ("A value is typed in",
     op("setStaticValue", port="clamp/Tarn.maximumInput", value={"kind": "number", "value": 3})),
    ("A parameter is changed that ports follow",
     op("setParameter", node="choice", parameter="Tarn.numberOfSourcesParameter", value=3)),
    ("A port is published", op("publish", port="inner/Tarn.valueInput", as_="published")),
    ("A published port is renamed", op("renamePort", symbolicPort="published", name="In:Value")),
    ("A wire is joined to it", op("wire", **{"from": "clamp/Tarn.resultOutput", "to": "published"})),
    ("It is published no more", op("unpublish", port="inner/Tarn.valueInput")),
    ("A view comes in front", op("moveSubview", node="view", index=1)),
    ("A port group is folded", op("setPortGroup", node="clamp", orientation=1, group="__Default",
                                  collapsedCanvasGroup=True)),
    ("An image is added", op("addImage", as_="image",
                             file=str(ROOT / "examples/photos/northern-lights.png"))),
    ("Nodes are pasted", op("paste", clipboard="copied", to="document")),
    ("Nodes are grouped", op("group", nodes=["clamp", "other"], name="Both", as_="both")),
    ("A group is taken apart", op("ungroup", node="both")),
    ("A node gets another patch", op("setPatch", node="other", patch="HXRDelayNode")),
    ("A node is removed", op("removeNode", node="clamp")),
    ("That is undone", op("undo")),
]


class HostManual(HostTest):
    def help(self, *command):
        return self.host(*command, "--help")[0].decode()

    def commands(self):
        listed = self.help().split("Subcommands:\n")[1]
        return re.findall(r"^  (\w+)", listed, re.MULTILINE)

    def options(self, *command):
        """The options of a command, each with the name of its value or ""."""
        text = self.help(*command).split("Options:\n")[1].split("\n\n")[0]
        lines = re.findall(r"^  (-\S+)(?: ([^\s:]+)(?!\S))?", text, re.MULTILINE)
        options = {name: value for names, value in lines for name in names.split(",")}
        self.assertEqual((options.pop("-h"), options.pop("--help")), ("", ""))
        return options

    def test_commands(self):
        headings = re.findall(r"^### tarnkit (\w+)", PAGE.text, re.MULTILINE)
        self.assertEqual(sorted(headings), sorted(self.commands()))

    def test_options(self):
        documented = collections.defaultdict(dict)
        for titles, header, rows in PAGE.tables():
            if header[0] != "Option":
                continue
            command = titles[-1].split()[1] if titles[-1].startswith("tarnkit") else ""
            for row in rows:
                codes = code_of(row[0])
                value = codes[-1].partition(" ")[2]
                documented[command].update({code.split()[0]: value for code in codes})
        for name in ("-h", "--help"):
            self.assertEqual(documented[""].pop(name), "")
        self.assertEqual(documented[""], self.options())
        for command in self.commands():
            with self.subTest(command=command):
                self.assertEqual(documented[command], self.options(command))

    def test_operations(self):
        listed = dict(re.findall(r"^  (\w+) *(.*)$",
                                 self.help("run").split("Operations")[1].split("\n", 1)[1],
                                 re.MULTILINE))
        self.assertGreater(len(listed), 50)
        documented = {code_of(row[0])[0]: " ".join(code_of(row[1]))
                      for row in rows_under("Sessions", "`do`")}
        self.assertEqual({name: sorted(names.split()) for name, names in documented.items()},
                         {name: sorted(names.split()) for name, names in listed.items()})

    def test_notifications(self):
        declared = set()
        for header in ROOT.glob("tarnkit/*/HX*.h"):
            declared |= set(re.findall(r'Symbol HX\w+Notification\{\s*"(\w+)"\}',
                                       header.read_text(encoding="utf-8")))
        documented = {code_of(row[0])[0]: set(code_of(row[2])) | {"DocumentKey"}
                      for row in rows_under("Notifications")}
        self.assertEqual(set(documented), declared)

        # A session that posts as many kinds as one session can, and each with what the page says.
        session = [operation for operation in everything(self.folder)
                   if operation["do"] not in ("save", "send", "sendImages")]
        clamp = "HXRClampNode"
        session += [
            op("setName", node=clamp, value="Limits"), op("setPosition", node=clamp, value=[1, 2]),
            op("setSelected", node=clamp, value=True),
            op("setParameter", node="HXRMultiplexerNode", value=4,
               parameter="Tarn.numberOfSourcesParameter"),
            op("setParameter", node="HXRMultiplexerNode", value=2,
               parameter="Tarn.numberOfSourcesParameter"),
            *[op("setPortGroup", node=clamp, orientation=1, group="__Default", **{flag: True})
              for flag in ("hidden", "collapsedCanvasGroup", "collapsedSidebarGroup")],
            op("setPatch", node="HXRViewNodeHXRClampNode", patch="HXRDebugNode"), op("undo"),
            op("setPatch", node="HXRDebugNode", patch=clamp),
            op("moveSubview", node="HXRViewNode", index=0),
            op("unpublish", port="HXRReplicatorNodeHXRClampNode/Tarn.resultOutput"),
            op("renamePort", symbolicPort="outerValue", name="Sizes: Width"),
            op("breakAll", port=clamp + "/Tarn.resultOutput"),
            op("removeNode", node=clamp), op("removeImage", image="picture"),
            op("undo", count=3), op("redo")]
        text = self.host("run", "-", "--trace", "--history",
                         input=json.dumps(session).encode())[0].decode()
        posted = collections.defaultdict(set)
        for line in text.splitlines():
            record = json.loads(line)
            if "notification" in record:
                posted[record["notification"]].update(record["userInfo"])
        for name, keys in posted.items():
            self.assertEqual(keys, documented[name], name)
        self.assertEqual(set(documented) - set(posted), set())

    def test_what_is_posted_when(self):
        session = [*BEFORE, *(operation for _, operation in EDITS)]
        text = self.host("run", "-", "--trace", "--history",
                         input=json.dumps(session).encode())[0].decode()
        posted = collections.defaultdict(list)
        for line in text.splitlines():
            record = json.loads(line)
            if name := record.get("notification"):
                names = posted[record["op"]]
                if name == "HXHistoryDidChangeNotification":
                    continue
                if names and names[-1][0] == name:
                    names[-1][1] += 1
                else:
                    names.append([name, 1])
        table = "| | What is posted |\n|---|---|\n"
        for number, (title, _) in enumerate(EDITS, len(BEFORE)):
            self.assertTrue(posted[number], title)
            names = [f"`{name}`" + (f" ({count} times)" if count > 1 else "")
                     for name, count in posted[number]]
            table += f"| {title} | {'; '.join(names)} |\n"
        page = Page(ROOT / "docs/building-an-editor.md")
        made = re.sub(r"(<!-- made of: notices -->\n)(.*?)(<!-- end -->)",
                      lambda found: found[1] + table + found[3], page.text, flags=re.DOTALL)
        if REGENERATES:
            page.path.write_text(made, encoding="utf-8")
            page = Page(page.path)
        self.assertEqual(page.text, made)

    def test_shapes(self):
        session = [*everything(self.folder), op("dump")]
        output = self.host("run", "-", "--json", input=json.dumps(session).encode())[0]
        document = json.loads(output)[-1]["result"]
        found = collections.defaultdict(set)

        def node(shape):
            found["Node and document"].update(shape)
            for side in ("input", "output"):
                for group in shape[side + "PortGroups"]:
                    found["Port group"].update(group)
                ports(shape[side + "Ports"])
            for parameter in shape["parameters"]:
                found["Parameter"].update(parameter)
            if group := shape["subnodeGroup"]:
                found["Group"].update(group)
                ports(group["symbolicInputPorts"] + group["symbolicOutputPorts"])
                for below in group["subnodes"]:
                    node(below)

        def ports(shapes):
            for port in shapes:
                found["Port"].update(port)
                for connection in port["connections"]:
                    found["Connection"].update(connection)

        node(document)
        found["Node and document"].add("unknownPatchClass")  # test_files has one
        for patch in json.loads(self.host("catalogue", "--json", "--all")[0]):
            found["Patch"].update(patch)
            for side in ("input", "output"):
                for group in patch[side + "PortGroups"]:
                    for port in group["ports"]:
                        found["Port of a patch"].update(port)
            for parameter in patch["parameters"]:
                found["Parameter of a patch"].update(parameter)

        language = json.loads(self.host("functions", "--json")[0])
        found["What functions prints"] = {*language, *language["operators"][0],
                                          *language["functions"][0]}

        failed = json.loads(self.host("eval", "2x", "--json", status=1)[0])
        found["Error of an expression"] = set(failed["error"])

        toggle = ROOT / "examples/documents/toggle.json"
        changed = self.folder / "changed.json"
        text = toggle.read_text()
        changed.write_text(text.replace('"Touch"', '"Finger"'))
        found["What find prints"] = set(
            json.loads(self.host("find", toggle, "--name", "*", "--json")[0]))
        difference = json.loads(self.host("diff", toggle, changed, "--json", status=1)[0])
        found["What diff prints"] = {*difference, *difference["changes"][0]}
        other = self.folder / "other.json"
        other.write_text(text.replace('"Touch"', '"Hand"'))
        merged = json.loads(self.host("merge", toggle, changed, other, "-o",
                                      self.folder / "merged", "--json", status=1)[0])
        found["What merge prints"] = {*merged, *merged["conflicts"][0]}
        broken = self.folder / "broken.json"
        broken.write_text(json.dumps({"tarnkit": 1, "nodes": [
            {"id": "sum", "patch": "HXRMathExpressionNode",
             "parameters": {"Tarn.mathExpressionParameter": "1 + ("}}]}))
        checked = json.loads(self.host("check", broken, "--json", status=1)[0])
        found["What check prints"] = set(checked).union(
            *(finding for file in checked["files"] for finding in file["findings"]))
        for file in (self.folder / "whole.graph", self.folder / "plain.document"):
            found["What inspect prints"].update(json.loads(self.host("inspect", file, "--json")[0]))

        for title, members in found.items():
            with self.subTest(shape=title):
                self.assertEqual(names_in(title), members)


if __name__ == "__main__":
    unittest.main()
