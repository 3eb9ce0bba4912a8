"""The page of a document in a browser: it is panned, zoomed, searched and read, by mouse and by keys;
and the pictures' texts stay in their boxes in the fonts that are really there."""

import json
import unittest

from browser import Browser
from host import HostTest, op
from pictures import LONG, SCRIPT, everything, placed

VIEW = """(() => { const svg = document.querySelector('#stage > svg'), box = svg.viewBox.baseVal;
  const at = svg.getBoundingClientRect(), stage = document.getElementById('stage')
  .getBoundingClientRect(), scale = at.width / box.width;
  return [box.x + (stage.x - at.x) / scale, box.y + (stage.y - at.y) / scale, stage.width / scale,
    stage.height / scale]; })()"""
PANEL = "document.getElementById('panel').innerText"
GROUP = "document.querySelector('#stage > svg').dataset.group"
# Where a node's title stands on the screen.
TITLE = """(() => { const r = document.querySelector('#stage [data-node="%s"] .tk-title')
  .getBoundingClientRect(); return [r.x + 8, r.y + r.height / 2]; })()"""
# The texts that stand out of their node, or out of the picture, by more than a hair.
OUTSIDE = """[...document.querySelectorAll('svg.tk-picture text')].filter(text => {
  const owner = text.closest('.tk-node'), edge = text.closest('.tk-edge');
  const room = owner ? owner.querySelector('.tk-body') : edge ? edge.querySelector('.tk-tab') :
    text.closest('svg').querySelector('.tk-canvas');
  const t = text.getBBox(), r = room.getBBox();
  return t.x < r.x - 0.5 || t.x + t.width > r.x + r.width + 0.5 ||
    t.y < r.y - 2 || t.y + t.height > r.y + r.height + 2;
}).map(text => text.textContent.slice(0, 60))"""
# The texts of one node that run into each other.
COLLIDING = """[...document.querySelectorAll('.tk-node')].flatMap(node => {
  const boxes = [...node.querySelectorAll('text')].map(text => [text, text.getBBox()]);
  return boxes.flatMap(([a, p], i) => boxes.slice(i + 1).filter(([b, q]) =>
    p.x + p.width > q.x + 0.5 && q.x + q.width > p.x + 0.5 &&
    Math.abs(p.y + p.height / 2 - q.y - q.height / 2) < 6).map(([b]) =>
    a.textContent.slice(0, 30) + ' | ' + b.textContent.slice(0, 30)));
})"""


class PageTest(HostTest):
    @classmethod
    def setUpClass(cls):
        cls.browser = Browser()
        cls.addClassCleanup(cls.browser.close)

    def page(self, operations, *options):
        document, page = self.folder / "made.document", self.folder / "page.html"
        self.host("run", "-", input=json.dumps(operations).encode())
        self.host("render", document, "-o", page, "--format", "html", *options)
        self.browser.problems.clear()
        self.browser.open(page)
        self.browser.run("document.documentElement.animate === undefined || 0")
        self.addCleanup(lambda: self.assertEqual(self.browser.problems, []))

    def everything(self, *options):
        self.page(everything(self.folder / "made.document"), *options)

    def settled(self):
        """The view once it moves no more."""
        last, now = None, self.browser.run(VIEW)
        while now != last:
            last = now
            now = self.browser.run("new Promise(done => setTimeout(() => requestAnimationFrame(() =>"
                                   f" done({VIEW})), 60))")
        return now

    def test_moving_and_zooming(self):
        self.everything()
        start = self.settled()
        self.browser.drag(400, 700, 100, -60)
        moved = self.settled()
        scale = 936 / start[2]  # the stage is as wide as the window without the panel
        self.assertAlmostEqual(moved[0] - start[0], -100 / scale, delta=2)
        self.assertAlmostEqual(moved[1] - start[1], 60 / scale, delta=2)
        self.assertEqual(moved[2:], start[2:])
        self.browser.mouse("mouseWheel", 400, 400, deltaX=30, deltaY=50)
        wheeled = self.settled()
        self.assertAlmostEqual(wheeled[0] - moved[0], 30 / scale, delta=1)
        self.assertAlmostEqual(wheeled[1] - moved[1], 50 / scale, delta=1)
        at = [wheeled[i] + wheeled[i + 2] * part for i, part in ((0, 300 / 936), (1, 248 / 748))]
        self.browser.mouse("mouseWheel", 300, 300, deltaX=0, deltaY=-40, modifiers=2)
        zoomed = self.settled()
        self.assertLess(zoomed[2], wheeled[2] * 0.9)
        for i, part in ((0, 300 / 936), (1, 248 / 748)):  # what is under the pointer stays there
            self.assertAlmostEqual(zoomed[i] + zoomed[i + 2] * part, at[i], delta=1 / scale)
        self.browser.run("document.getElementById('stage').focus()")
        self.browser.key("ArrowRight")
        self.assertGreater(self.settled()[0], zoomed[0])
        self.browser.key("-")
        self.assertAlmostEqual(self.settled()[2], zoomed[2] / 0.8, delta=1)
        self.browser.key("0")
        fitted = self.settled()
        self.assertEqual([round(n, 3) for n in fitted], [round(n, 3) for n in start])

    def test_a_node_tells_of_itself_and_its_group_opens(self):
        self.everything("--theme", "dark")
        self.assertEqual(self.browser.run("document.documentElement.dataset.theme"), "dark")
        self.settled()
        self.browser.click(*self.browser.run(TITLE % "node_9"))
        panel = self.browser.run(PANEL)
        for told in ("Group of three", "3 nodes", "Controls", "Amount", "← 画像の切り替え · Position",
                     "Minimum", "Value", "→ " + SCRIPT):
            self.assertIn(told, panel)
        self.browser.click(*self.browser.run(TITLE % "node_5"))
        panel = self.browser.run(PANEL)
        for told in (SCRIPT, "HXRColorViewNode", "Masking (hidden)", "#ff800080", "375", "45°"):
            self.assertIn(told, panel)
        self.browser.click(*self.browser.run(TITLE % "node_9"))
        self.browser.run("document.querySelector('#panel .open').click()")
        self.assertEqual(self.browser.run(GROUP), "group_2")
        self.assertEqual(self.browser.run("document.title"), "Group of three")
        self.assertEqual(self.browser.run("document.getElementById('path').innerText.split('\\n')"),
                         ["Document", "Group of three"])
        self.settled()
        self.browser.click(*self.browser.run(TITLE % "node_10"))
        self.assertIn("published as Controls: Amount", self.browser.run(PANEL))
        self.browser.run("document.querySelector('#path button').click()")
        self.assertEqual(self.browser.run(GROUP), "group_0")
        self.assertIn("Group of three", self.browser.run(PANEL))
        self.browser.run("history.back()")
        self.browser.wait_for(GROUP + " === 'group_2'")
        self.assertNotEqual(self.browser.run("document.title"), "broken")

    def test_by_keys_alone(self):
        self.everything()
        self.settled()
        self.browser.run("document.getElementById('stage').focus()")
        self.browser.key("/")
        self.browser.type("inne")
        self.assertIn("in Group of three", self.browser.run(
            "document.querySelector('#results [aria-selected=true]').innerText"))
        self.browser.key("Enter")
        self.settled()
        self.assertEqual(self.browser.run(GROUP), "group_2")
        self.assertEqual(self.browser.run("document.activeElement.dataset.node"), "node_10")
        self.assertIn("HXRClampNode", self.browser.run(PANEL))
        self.browser.key("Escape")
        self.browser.key("Escape")
        self.assertEqual(self.browser.run(GROUP), "group_0")
        labels = []
        self.browser.run("document.getElementById('stage').focus()")
        for _ in range(10):
            self.browser.key("Tab")
            labels.append(self.browser.run("document.activeElement.getAttribute('aria-label')"))
        self.assertEqual(labels[0], "Touch Interaction")
        self.assertEqual(labels[8], "Group of three, 3 nodes inside")
        self.assertIn("Controls", self.browser.run(PANEL))  # the group that was left is selected
        self.browser.key("Escape")
        self.assertNotIn("Controls", self.browser.run(PANEL))
        self.browser.run("document.querySelector('#stage [data-node=node_9]').focus()")
        self.browser.key("Enter")
        self.assertIn("Controls", self.browser.run(PANEL))
        self.browser.key("Enter")
        self.assertEqual(self.browser.run(GROUP), "group_2")
        self.browser.key("/")
        self.browser.type("no such node")
        self.assertEqual(self.browser.run("document.getElementById('results').innerText"),
                         "No node has that name")

    def test_texts_stay_in_their_boxes(self):
        self.everything()
        for index in range(1, 6):
            self.assertEqual(self.browser.run(OUTSIDE), [])
            self.assertEqual(self.browser.run(COLLIDING), [])
            if index < 5:
                self.browser.run(f"location.hash = Picture.groups[{index}].key")
                self.browser.wait_for(f"{GROUP} === Picture.groups[{index}].key")
        self.browser.run("location.hash = Picture.groups[0].key")
        self.browser.wait_for(f"{GROUP} === Picture.groups[0].key")
        # The check itself can fail.
        self.browser.run("document.querySelector('.tk-title').lastChild.data = 'W'.repeat(60)")
        self.assertEqual(len(self.browser.run(OUTSIDE)), 1)

    def test_ten_thousand_nodes(self):
        file = self.folder / "made.document"
        operations = [op("newDocument", as_="doc")]
        for i in range(10_000):
            operations += placed(f"n{i}", "HXRClampNode", i % 100 * 260, i // 100 * 140)
        operations += [op("setName", node="n9999", value="Last of all"), op("save", file=str(file))]
        self.page(operations)
        self.browser.run("document.getElementById('search').focus()")
        self.browser.type("last of")
        self.browser.key("Enter")
        self.settled()
        x, y = self.browser.run("(() => { const r = document.activeElement"
                                ".querySelector('.tk-title').getBoundingClientRect();"
                                " return [r.x, r.y]; })()")
        self.assertTrue(0 < x < 936 and 52 < y < 800, (x, y))
        self.assertIn("Last of all", self.browser.run(PANEL))
        # Only what is to be seen stands in the page, and keys lead to all of it.
        focus = "document.activeElement.dataset.node"
        for level in (1, 0.2, 0.05):
            self.browser.run("document.getElementById('stage').focus()")
            self.browser.run(f"""document.getElementById('stage').dispatchEvent(new WheelEvent('wheel', {{
              deltaY: -Math.log({level} / (parseFloat(document.getElementById('level').textContent) /
              100)) / 0.008, ctrlKey: true, cancelable: true}}))""")
            self.settled()
            self.assertLess(self.browser.run("document.querySelectorAll('.tk-node').length"), 400)
            for number in range(1, 5):
                self.browser.key("Tab")
                self.assertEqual(self.browser.run(focus), f"node_{number}")
                self.browser.wait_for("""(r => r.left > 0 && r.right < 936 && r.top > 52 &&
                  r.bottom < 800)(document.activeElement.getBoundingClientRect())""")
            self.browser.key("Enter")
            self.assertIn("HXRClampNode", self.browser.run(PANEL))


if __name__ == "__main__":
    unittest.main()
