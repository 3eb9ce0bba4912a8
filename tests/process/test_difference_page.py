"""The page of a difference in a browser: what came, went and changed is marked where it stands, and
a list leads from change to change, by mouse and by keys."""

import json
import unittest

from browser import Browser
from host import HostTest, op
from pictures import placed, value

GROUP = "document.querySelector('#stage > svg').dataset.group"
PANEL = "document.getElementById('panel').innerText"
CURRENT = "document.querySelector('#changes [aria-current]').innerText"


def names(kind):
    return (f"[...document.querySelectorAll('#stage .tk-node.{kind} > .tk-title')]"
            ".map(title => title.textContent).sort()")


class DifferencePageTest(HostTest):
    @classmethod
    def setUpClass(cls):
        cls.browser = Browser()
        cls.addClassCleanup(cls.browser.close)

    def edit(self, operations):
        self.host("run", "-", input=json.dumps(operations).encode())

    def open(self):
        """node_1 Limit, node_2 Wait, node_3 Box with node_4 Inner and node_5 Side, node_6 Attic with
        node_7 Lost; in the new document node_8 Fresh."""
        old, new, page = (self.folder / name for name in ("old.document", "new.document", "page.html"))
        force = [op("setForceAllowsSubnodes", node=name, value=True) for name in ("box", "attic")]
        self.edit([
            op("newDocument", as_="doc"),
            *placed("limit", "HXRClampNode", 300, 0, text="Limit"),
            *placed("wait", "HXRDelayNode", 0, 0, text="Wait"),
            *placed("box", None, 600, 0, text="Box"), force[0],
            *placed("inner", "HXRClampNode", 0, 0, to="box", text="Inner"),
            *placed("side", "HXRClampNode", 300, 0, to="box", text="Side"),
            *placed("attic", None, 600, 300, text="Attic"), force[1],
            *placed("lost", "HXRClampNode", 0, 0, to="attic", text="Lost"),
            op("wire", from_="wait/Tarn.valueOutput", to="limit/Tarn.valueInput"),
            op("publish", port="side/Tarn.valueInput"),
            op("save", file=str(old), codingType=3)])
        self.edit([
            op("open", file=str(old), as_="doc", codingType=3),
            op("removeNode", node="node_2"), op("removeNode", node="node_6"),
            *placed("fresh", "HXRTransitionNode", 0, 0, text="Fresh"),
            op("wire", from_="fresh/Tarn.output", to="node_1/Tarn.valueInput"),
            value("node_4/Tarn.maximumInput", "number", 5),
            op("setName", node="node_5", value="Aside"),
            op("unpublish", port="node_5/Tarn.valueInput"),
            op("save", file=str(new), codingType=3)])
        told = self.host("diff", old, new, "--html", page, status=1)[0].decode()
        self.browser.problems.clear()
        self.browser.open(page)
        self.addCleanup(lambda: self.assertEqual(self.browser.problems, []))
        return told, old, new

    def test_what_came_went_and_changed_is_marked(self):
        told, _, _ = self.open()
        self.assertEqual(self.browser.run(names("is-added")), ["Fresh"])
        self.assertEqual(self.browser.run(names("is-removed")), ["Attic", "Wait"])
        self.assertEqual(self.browser.run(names("holds-changes")), ["Box"])
        count = told.count("\n  + ") + told.count("\n  - ") + told.count("\n  ~ ")
        self.assertEqual(self.browser.run("document.querySelectorAll('#changes .change').length"),
                         count)
        # What is gone is seen beside what came in its place, and its wire still leads to the other.
        boxes = self.browser.run(
            "['removed/node_2', 'node_1'].map(key => document.querySelector("
            "'#stage [data-node=\"' + key + '\"] .tk-body').getBoundingClientRect().toJSON())"
            ".concat([...document.querySelectorAll('#stage .tk-node.is-added .tk-body')]"
            ".map(body => body.getBoundingClientRect().toJSON()))")
        gone, limit, fresh = boxes
        self.assertGreaterEqual(gone["top"], fresh["bottom"])
        self.assertEqual(self.browser.run(
            "[...document.querySelectorAll('#stage .tk-wire')].map(wire => [wire.classList[1],"
            " wire.dataset.from.split('/').slice(0, -1).join('/'), wire.dataset.to])"
            ".filter(([mark]) => mark === 'is-removed')"),
            [["is-removed", "removed/node_2", "node_1/Tarn.valueInput"]])
        # The colours are others in either theme, and none is that of the body's line.
        strokes = set()
        for _ in range(2):
            strokes |= set(self.browser.run(
                "['.is-added', '.is-removed', ':not([class*=is-])'].map(kind => getComputedStyle("
                "document.querySelector('#stage .tk-node' + kind + ' > .tk-body')).stroke)"))
            self.browser.run("document.getElementById('theme').click()")
        self.assertEqual(len(strokes), 6)

    def test_walking_through_the_changes_by_keys(self):
        self.open()
        self.browser.run("document.getElementById('stage').focus()")
        seen = {}
        for _ in range(self.browser.run("document.querySelectorAll('#changes .change').length")):
            self.browser.key("n")
            seen[self.browser.run(CURRENT)] = self.browser.run(GROUP), self.browser.run(PANEL)
            self.assertTrue(self.browser.run(
                "document.activeElement.matches('#changes .change[aria-current]')"))
        group, panel = next(place for text, place in seen.items() if "→ 5" in text)
        self.assertNotEqual(group, "group_0")
        self.assertIn("Inner", panel)
        self.assertIn("→ 5", panel)
        self.assertEqual(len({group for group, _ in seen.values()}), 2)
        self.browser.key("n")  # and from the start again
        first = self.browser.run(CURRENT)
        self.browser.key("p")
        self.assertNotEqual(self.browser.run(CURRENT), first)
        # In the group the port is marked, and so is the publication that is gone.
        self.browser.run("[...document.querySelectorAll('#changes .change')]"
                         ".find(change => change.innerText.includes('→ 5')).click()")
        self.assertEqual(self.browser.run(names("is-changed")), ["Aside", "Inner"])
        self.assertEqual(self.browser.run(
            "[...document.querySelectorAll('#stage .tk-port.is-changed')].map(p => p.dataset.port)"),
            ["Tarn.maximumInput"])
        self.assertEqual(self.browser.run(
            "document.querySelectorAll('#stage .tk-edge.is-removed').length"), 1)

    def test_a_group_that_is_gone_opens(self):
        self.open()
        self.browser.run("[...document.querySelectorAll('#changes .change')]"
                         ".find(change => change.dataset.node === 'removed/node_6').click()")
        self.assertIn("removed: Attic", self.browser.run("document.getElementById('said').innerText"))
        self.browser.run("document.querySelector('#panel .open').click()")
        self.assertTrue(self.browser.run(GROUP).startswith("removed/"))
        self.assertEqual(self.browser.run(names("is-removed")), ["Lost"])

    def test_forms_of_the_command(self):
        _, old, new = self.open()
        page = self.host("diff", "--html", "-", old, new, status=1)[0]
        self.assertTrue(page.startswith(b"<!doctype html>"))
        self.assertNotIn(b"http://", page.replace(b"http://www.w3.org/2000/svg", b""))
        same = self.folder / "same.html"
        self.assertEqual(self.host("diff", "--html", same, old, old)[0], b"")
        self.assertIn("0 changes", same.read_text(encoding="utf-8"))
        self.host("diff", "--json", "--html", "-", old, new, status=2)


if __name__ == "__main__":
    unittest.main()
