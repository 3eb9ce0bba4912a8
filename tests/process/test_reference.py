"""`tarnkit reference`: the pages as files, as HTML, and against the catalogue."""

import collections
import html.parser
import json
import math
import os
import pathlib
import re
import subprocess
import unittest
import urllib.parse

from browser import Browser
from host import HOST, HostTest

PLUGIN = os.environ["TARNKIT_PLUGIN"]
HOSTILE_PLUGIN = os.environ["TARNKIT_HOSTILE_PLUGIN"]

KINDS = {"boolean": "Boolean", "index": "Index", "number": "Number", "radians": "Angle",
         "degrees": "Angle", "color": "Color", "string": "Text"}
PARAMETER_KINDS = {"HXRStringParameter": "Text"}
VOID = {"meta", "link", "input", "br", "img"}


class Element:
    def __init__(self, name, attributes):
        self.name, self.attributes, self.children = name, attributes, []

    def walk(self):
        pending = [self]
        while pending:
            element = pending.pop()
            yield element
            pending.extend(child for child in reversed(element.children)
                           if isinstance(child, Element))

    def all(self, name, class_name=None):
        return [element for element in self.walk() if element.name == name and (
            class_name is None or class_name in element.attributes.get("class", "").split())]

    def text(self):
        return "".join(child if isinstance(child, str) else child.text()
                       for child in self.children)


class Page(html.parser.HTMLParser):
    """A page as a tree."""

    def __init__(self, path):
        super().__init__()
        self.root = Element("", {})
        self.open = [self.root]
        self.feed(path.read_text(encoding="utf-8"))
        assert self.open == [self.root], f"{path.name}: {self.open[-1].name} is not closed"

    def handle_starttag(self, tag, attrs):
        element = Element(tag, dict(attrs))
        self.open[-1].children.append(element)
        if tag not in VOID:
            self.open.append(element)

    def handle_startendtag(self, tag, attrs):
        self.open[-1].children.append(Element(tag, dict(attrs)))

    def handle_endtag(self, tag):
        assert self.open.pop().name == tag

    def handle_data(self, data):
        self.open[-1].children.append(data)

    def ids(self):
        return [e.attributes["id"] for e in self.root.walk() if "id" in e.attributes]


def rows_of(article, heading):
    """The rows of an article's tables under headings that start so: {column: text}, by key."""
    rows = {}
    for section in article.all("section"):
        if not section.all("h2") + section.all("h3") or not (
                section.all("h2") + section.all("h3"))[0].text().startswith(heading):
            continue
        columns = [cell.text() for cell in section.all("thead")[0].all("th")]
        for row in section.all("tr"):
            cells = [cell for cell in row.children if isinstance(cell, Element)]
            if len(cells) == len(columns) and cells[1].name == "td":
                record = dict(zip(columns, cells))
                assert record["Key"].text() not in rows, "a port stands twice"
                rows[record["Key"].text()] = record
    return rows


def shown(value):
    """How a page writes a primitive of the catalogue."""
    kind, value = value["kind"], value["value"]
    if kind == "boolean":
        return "On" if value else "Off"
    if kind == "color":
        return color(value)
    return f"{value}" + {"radians": " rad", "degrees": "°"}.get(kind, "")


def color(value):
    return "#" + "".join(f"{round(component * 255):02X}" for component in value[:3])


def default_shown(port):
    if not port["default"]:
        return "none"
    for label in port["labels"]:
        if label["value"] == port["default"]:
            return labelled(label)
    return shown(port["default"])


def labelled(label):
    value = shown(label["value"])
    return value if value == label["label"] else f"{label['label']} {value}"


def parameter_default_shown(parameter):
    value = parameter["default"]
    if isinstance(value, bool):
        return "On" if value else "Off"
    if isinstance(value, list):
        return color(value)
    return {None: "none", "": "empty"}.get(value, str(value))


def port_kind(port):
    named = re.fullmatch(r"HXR(\w+?)(Input|Output)Port", port["class"])[1]
    if port["default"] and named != "Angle":
        named = KINDS[port["default"]["kind"]]
    return {"Value": "Any value"}.get(named, named)


class Likeness:
    """How much alike patches are, by what the reference says of it: what both have of kinds of
    ports, of their keys and of the category over what either has, where what is rare counts more."""

    def __init__(self, patches):
        self.traits = {patch["class"]: self.traits_of(patch) for patch in patches}
        holders = collections.Counter(trait for traits in self.traits.values() for trait in traits)
        self.weights = {trait: math.log(1 + len(patches) / count)
                        for trait, count in holders.items()}

    @staticmethod
    def traits_of(patch):
        traits = collections.Counter()
        if patch["libraryCategory"] is not None:
            traits["category", patch["libraryCategory"]] += 1
        for side in ("input", "output"):
            for port in (port for group in patch[side + "PortGroups"] for port in group["ports"]):
                traits["key", port["key"]] += 1
                traits[side, port_kind(port)] += 1
        return traits

    def __call__(self, first, second):
        first, second = self.traits[first], self.traits[second]
        shared, either = first & second, first | second
        if not any(what in ("input", "output") for what, _ in shared):
            return 0
        return round(self.sum(shared) / self.sum(either), 9)

    def sum(self, traits):
        return math.fsum(self.weights[trait] * count for trait, count in traits.items())


class Reference(HostTest):
    def write(self, *options, plugin=None, into="reference", **environment):
        """Runs the command and returns the directory."""
        directory = self.folder / into
        run = self.run_reference(directory, *options, plugin=plugin, **environment)
        self.assertEqual((run.returncode, run.stdout, run.stderr), (0, "", ""))
        return directory

    def run_reference(self, directory, *options, plugin=None, **environment):
        arguments = ["--plugin", plugin] if plugin else []
        return subprocess.run([HOST, *arguments, "reference", "-o", str(directory), *options],
                              capture_output=True, text=True, timeout=120,
                              env={**os.environ, **environment})

    def catalogue(self):
        return json.loads(self.host("catalogue", "--json", "--all")[0])

    def refuse(self, run, directory, *words):
        """The run failed with one line that has the words, and left no page behind."""
        self.assertEqual(run.returncode, 1, run.stderr)
        line = self.one_line(run.stderr)
        for word in words:
            self.assertIn(word, line)
        self.assertEqual(list(directory.glob("HXR*.html")) if directory.is_dir() else [], [])

    def test_a_page_for_every_help_page_and_every_link_leads_somewhere(self):
        directory = self.write(plugin=PLUGIN)
        names = {patch["libraryDescription"] for patch in self.catalogue()}
        pages = {path.name: Page(path) for path in directory.glob("*.html")}
        self.assertEqual(set(pages), names | {"index.html", "expressions.html", "StaircaseNode.html",
                                          "WiggleNode.html"})
        self.assertEqual({path.name for path in directory.iterdir()},
                         set(pages) | {"reference.css"})
        ids = {name: page.ids() for name, page in pages.items()}
        for name, page in pages.items():
            self.assertEqual(len(ids[name]), len(set(ids[name])), f"{name}: an id stands twice")
            self.assertEqual(page.root.all("img") + page.root.all("iframe"), [])
            for element in page.root.walk():
                self.assertNotIn("src", element.attributes)
                if "href" not in element.attributes:
                    continue
                target, _, fragment = element.attributes["href"].partition("#")
                target = urllib.parse.unquote(target) or name
                if element.name == "link":
                    self.assertEqual(target, "reference.css")
                    continue
                self.assertIn(target, pages, name)
                if fragment:
                    self.assertIn(fragment, ids[target], name)
        style = (directory / "reference.css").read_text(encoding="utf-8")
        self.assertNotRegex(style, r"@import|url\(|https?:")

    def test_tables_agree_with_the_catalogue(self):
        directory = self.write()
        for patch in self.catalogue():
            with self.subTest(patch["class"]):
                page = Page(directory / patch["libraryDescription"])
                article = next(a for a in page.root.all("article")
                               if a.attributes["id"] == patch["class"])
                heading = article.all("h1") + article.all("h2")
                self.assertTrue(heading[0].text().startswith(patch["defaultName"]))
                facts = [code.text() for code in article.all("dl", "facts")[0].all("code")]
                self.assertEqual(facts, [patch["class"], patch["processClassName"]])
                self.check_ports(rows_of(article, "Inputs"), patch["inputPortGroups"])
                self.check_ports(rows_of(article, "Outputs"), patch["outputPortGroups"])
                self.check_parameters(rows_of(article, "Parameters"), patch["parameters"])

    def check_ports(self, rows, groups):
        ports = [port for group in groups for port in group["ports"]]
        self.assertEqual(set(rows), {port["key"] for port in ports})
        for port in ports:
            row = rows[port["key"]]
            self.assertEqual(row["Name"].text(), port["name"])
            self.assertEqual(row["Type"].text(), port_kind(port))
            if port["orientation"] == 2:
                continue
            self.assertEqual(row["Default"].text(), default_shown(port))
            choices = [item.text() for item in row["Choices"].all("li")] if "Choices" in row else []
            self.assertEqual(choices, [labelled(label) for label in port["labels"]])

    def check_parameters(self, rows, parameters):
        self.assertEqual(list(rows), [parameter["key"] for parameter in parameters])
        for parameter in parameters:
            row = rows[parameter["key"]]
            name = parameter["name"] + (" not shown" if parameter["hidden"] else "")
            self.assertEqual(row["Name"].text(), name)
            kind = re.fullmatch(r"HXR(\w+)Parameter", parameter["class"])[1]
            self.assertEqual(row["Type"].text(), {"String": "Text"}.get(kind, kind))
            self.assertEqual(row["Default"].text(), parameter_default_shown(parameter))
            if "minimum" in parameter:
                self.assertEqual(row["Bounds"].text(),
                                 f"{parameter['minimum']} to {parameter['maximum']}")

    def test_every_patch_has_a_text_of_its_own_and_a_picture_of_itself(self):
        directory = self.write(plugin=PLUGIN)
        texts, pictured = {}, []
        for path in sorted(directory.glob("*.html")):
            for article in Page(path).root.all("article"):
                name = article.attributes["id"]
                texts[name] = article.all("p", "lead")[0].text()
                pictured += [(name, node.attributes["data-patch"])
                             for node in article.all("svg")[0].all("g", "tk-node")]
        self.assertEqual(texts.pop("WiggleNode"),
                         "A patch of the category Animation that takes Amount and gives Offset. "
                         "It is set up by Seed.")
        self.assertTrue(texts.pop("StaircaseNode").endswith("It is set up by Steps."))
        self.assertEqual(set(texts), {patch["class"] for patch in self.catalogue()})
        self.assertEqual(len(set(texts.values())), len(texts), "two patches share a text")
        for name, text in texts.items():
            self.assertNotRegex(text, r"^A patch of (the|no) category", name)
            self.assertRegex(text, r"^[A-Z].{15,}\.$", name)
        self.assertEqual(pictured, [(name, name) for name, _ in pictured])
        self.assertEqual(len(pictured), len(texts) + 2)

    def test_a_text_made_of_ports_names_some_of_them(self):
        directory = self.write(plugin=HOSTILE_PLUGIN, HOSTILE_HELP_PAGE="hostile.html")
        for name, text in {
                "ListeningNode": "A patch of the category AZaz09 é- that takes One, Two, Three, Four "
                                 "and Five. It is set up by Loud and Near.",
                "TellingNode": "A patch of no category that gives One, Two, Three, Four and 2 more.",
        }.items():
            page = Page(directory / f"{name}.html").root
            self.assertEqual(page.all("p", "lead")[0].text(), text)
        # Letters and digits stand for themselves where a page leads to its category.
        link = Page(directory / "ListeningNode.html").root.all("nav", "top")[0].all("a")[1]
        self.assertEqual(link.attributes["href"], "index.html#category.AZaz09_20_C3_A9_2D")

    def test_the_index_lists_every_patch_once_with_the_hidden_last(self):
        index = Page(self.write() / "index.html").root
        patches = self.catalogue()
        listed = []
        for section in index.all("section", "category"):
            category = section.all("h2")[0].text()
            entries = section.all("ul", "entries")[0].all("li")
            flags = [bool(entry.all("span", "flag")) for entry in entries]
            self.assertEqual(flags, sorted(flags), category)
            listed += [(category, entry.all("a")[0].text(), flag)
                       for entry, flag in zip(entries, flags)]
        expected = [(patch["libraryCategory"] or "No category", patch["defaultName"],
                     patch["hiddenInLibrary"] or patch["secretInLibrary"]) for patch in patches]
        self.assertEqual(sorted(listed), sorted(expected))
        names = [name for category, name, flag in listed if category == "View" and not flag]
        self.assertEqual(names, sorted(names))

    def test_the_index_is_searched_by_keys(self):
        shown = ("[...document.querySelectorAll('.entries > li:not([hidden]) > a')]"
                 ".map(link => link.textContent)")
        browser = Browser()
        self.addCleanup(browser.close)
        browser.open(self.write() / "index.html")
        everything = browser.run(shown)
        self.assertGreater(len(everything), 100)
        browser.key("/")
        browser.type("spring rest")
        self.assertEqual(set(browser.run(shown)), {"Spring", "Spring (1D)", "Spring (2D)"})
        self.assertEqual(browser.run("document.querySelectorAll('.category:not([hidden])').length"),
                         1)
        browser.key("Escape")
        self.assertEqual(browser.run(shown), everything)
        browser.type("xylophone")
        self.assertEqual(browser.run("document.getElementById('page.found').textContent"),
                         "No patches")
        browser.key("Escape")
        browser.type("view")
        browser.leave_by(lambda: browser.key("Enter"))
        self.assertTrue(browser.run("document.title").startswith("View"))
        self.assertEqual(browser.problems, [])

    def related(self, path):
        """The links of a page to related patches, by what leads there."""
        return {term.text(): described.all("a") for nav in Page(path).root.all("nav", "related")
                for term, described in zip(nav.all("dt"), nav.all("dd"))}

    def test_related_patches_share_a_base_or_kinds_of_ports(self):
        directory = self.write()

        def related(name):
            return {term: [link.text() for link in links]
                    for term, links in self.related(directory / f"{name}.html").items()}

        self.assertEqual(related("HXRCircleViewNode")["A kind of"], ["View"])
        view = related("HXRViewNode")
        self.assertIn("Circle View", view["Kinds of it"])
        self.assertIn("Touch Interaction", view["Goes with"])
        self.assertEqual(related("HXRPanGestureNode")["Goes with"], ["View"])
        self.assertIn("Emboss Filter", related("HXRInvertFilterNode")["Similar"])
        self.assertIn("Filter View", related("HXRInvertFilterNode")["Goes with"])
        for path in directory.glob("HXR*.html"):
            self.assertLessEqual(len(related(path.stem).get("Goes with", [])), 12)

    def test_similar_patches_are_those_most_alike(self):
        directory = self.write()
        patches = self.catalogue()
        likeness = Likeness(patches)
        index = [urllib.parse.unquote(link.attributes["href"])
                 for entries in Page(directory / "index.html").root.all("ul", "entries")
                 for link in entries.all("a")]
        by_link = {}
        for patch in patches:
            page = patch["libraryDescription"]
            is_first = page == patch["class"] + ".html"
            by_link[page if is_first else f"{page}#{patch['class']}"] = patch
        self.assertEqual(sorted(index), sorted(by_link))
        for link, patch in by_link.items():
            if "#" in link:
                continue
            related = {term: [found.attributes["href"] for found in links]
                       for term, links in self.related(directory / link).items()}
            kin = related.get("A kind of", []) + related.get("Kinds of it", [])
            others = [(-likeness(patch["class"], other["class"]), place, name)
                      for place, name in enumerate(index) for other in [by_link[name]]
                      if name not in kin and other["libraryDescription"] != link
                      and not other["hiddenInLibrary"] and not other["secretInLibrary"]]
            similar = [name for found, _, name in sorted(others)[:6] if -found >= 0.15]
            self.assertEqual(related.get("Similar", []), similar, link)

    def test_the_page_of_the_expressions_is_that_of_the_engine(self):
        directory = self.write()
        links = [link.attributes["href"] for link in
                 Page(directory / "HXRMathExpressionNode.html").root.all("article")[0].all("a")]
        self.assertIn("expressions.html", links)
        language = json.loads(self.host("functions", "--json")[0])
        tables = Page(directory / "expressions.html").root.all("table")
        shown = [[cell.text() for cell in row.all("th") + row.all("td")][:2]
                 for table in tables for row in table.all("tbody")[0].all("tr")]
        self.assertEqual(shown, [
            *[[" ".join(o["tokens"]), o["meaning"]] for o in language["operators"]],
            *[[f["name"] + (f"({f['arguments']})" if f["arguments"] else ""), f["meaning"]]
              for f in language["functions"]]])

    def test_an_html_checker_finds_nothing(self):
        plain = self.write(plugin=PLUGIN)
        hostile = self.write(plugin=HOSTILE_PLUGIN, into="hostile", HOSTILE_HELP_PAGE="a #1%.html")
        pages = [*plain.glob("*.html"), hostile / "a #1%.html", hostile / "NamelessNode.html",
                 hostile / "index.html"]
        done = subprocess.run(["tidy", "-q", "-e", "-utf8", *map(str, pages)], capture_output=True,
                              text=True, timeout=120)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        page = Page(hostile / "a #1%.html").root
        self.assertEqual(page.all("h1")[0].text(), "</title><script>alert(1)</script>")
        self.assertIn("unnamed", [cell.text() for cell in page.all("th")])
        self.assertEqual(page.all("script") + page.all("img") + page.all("textarea"), [])
        self.assertEqual(Page(hostile / "NamelessNode.html").root.all("h1")[0].text(),
                         "NamelessNode")

    def test_the_same_patches_give_the_same_bytes_and_a_theme_only_another_style(self):
        first, second = self.write(), self.write(into="second")
        dark, light = self.write("--theme", "dark"), self.write("--theme", "light", into="light")
        self.assertEqual(first, dark)  # an earlier reference is replaced
        for path in second.iterdir():
            same = (dark / path.name).read_bytes() == path.read_bytes()
            self.assertEqual(same, path.name != "reference.css", path.name)
            if path.name != "reference.css":
                self.assertEqual((light / path.name).read_bytes(), path.read_bytes())
        styles = [(d / "reference.css").read_text() for d in (second, dark, light)]
        self.assertEqual([style.count("prefers-color-scheme") for style in styles], [1, 0, 0])
        self.assertIn("color-scheme:dark", styles[1])
        self.assertNotIn("color-scheme:dark", styles[2])

    def test_leaves_the_files_of_others_alone(self):
        directory = self.folder / "site" / "patches"
        directory.mkdir(parents=True)
        (directory / "notes.html").write_text("mine")
        self.write(into="site/patches")
        self.assertEqual((directory / "notes.html").read_text(), "mine")
        other = self.folder / "other"
        other.mkdir()
        (other / "index.html").write_text("mine")
        self.refuse(self.run_reference(other), other, "index.html", "is there already")
        self.assertEqual([(p.name, p.read_text()) for p in other.iterdir()],
                         [("index.html", "mine")])

    def test_says_where_it_cannot_write(self):
        blocked = self.folder / "file"
        blocked.write_text("")
        taken = self.folder / "taken"
        (taken / "HXRClampNode.html").mkdir(parents=True)
        self.refuse(self.run_reference(blocked), blocked, str(blocked))
        self.refuse(self.run_reference(blocked / "below"), blocked, str(blocked))
        run = self.run_reference(taken)
        self.assertEqual(run.returncode, 1)
        self.assertIn("HXRClampNode.html", self.one_line(run.stderr))
        self.assertEqual(len(list(taken.iterdir())), 1)
        self.assertEqual(self.run_reference(taken, "--theme", "blue").returncode, 2)

    def test_a_help_page_never_leaves_the_directory_or_takes_the_index(self):
        directory = self.folder / "deep" / "reference"
        for name in ("", "../out.html", "/tmp/out.html", "..", "a/b.html", "a\\b.html", "index.html",
                     "INDEX.HTML", ".hidden.html", "page", "page.css", "reference.css",
                     "a\nb.html", "c:a.html", "x" * 251 + ".html", "hxrclampnode.html",
                     "HXRCUBICBEZIERNODE.HTML"):
            with self.subTest(name):
                run = self.run_reference(directory, plugin=HOSTILE_PLUGIN, HOSTILE_HELP_PAGE=name)
                self.refuse(run, directory, "help page")
                self.assertFalse(directory.exists())
                self.assertEqual([*pathlib.Path(self.folder).rglob("*.html")], [])
        longest = "x" * 250 + ".html"  # the most that a file system takes
        self.write(plugin=HOSTILE_PLUGIN, HOSTILE_HELP_PAGE=longest)
        self.assertTrue((self.folder / "reference" / longest).is_file())


if __name__ == "__main__":
    unittest.main()
