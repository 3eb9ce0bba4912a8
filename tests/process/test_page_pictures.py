"""What the page draws of a group is the picture that the host draws of it: the same elements, and in
the browser the same pixels, in both themes; for the groups of the example, for everything that a
picture can show, and for a difference."""

import json
import re
import unittest

from browser import Browser
from host import ROOT, HostTest, op
from pictures import everything, placed

ATTRIBUTES = ("class d x y rx width height cx cy r fill stroke fill-opacity direction text-anchor "
              "unicode-bidi transform").split()
# The elements of a picture in their order: what each is, where it stands, and its text.
ELEMENTS = """(svg => [...svg.querySelectorAll('rect,path,circle,text,title,g')]
  .filter(made => !made.matches('.wires,.nodes,.tk-canvas'))
  .map(made => [made.localName, ...%s.map(name => made.getAttribute(name) || ''),
    made.children.length ? '' : made.textContent]))""" % ATTRIBUTES
# The frame of what the page shows, moved to the corner of the window at 100 %.
MOVED = """(async () => {
  const stage = document.getElementById('stage'), svg = document.querySelector('#stage > svg');
  stage.dispatchEvent(new KeyboardEvent('keydown', {key: '1', bubbles: true}));
  await new Promise(done => setTimeout(done, 400));
  const at = svg.getBoundingClientRect();
  stage.dispatchEvent(new WheelEvent('wheel', {deltaX: at.x, deltaY: at.y, cancelable: true}));
  await new Promise(done => requestAnimationFrame(() => requestAnimationFrame(done)));
  const now = svg.getBoundingClientRect(), frame = svg.viewBox.baseVal;
  return [now.x, now.y, now.width, now.height, frame.x, frame.y];
})()"""
BARE = """(() => { const style = document.createElement('style');
  style.textContent = '.bar,.panel,.tools,.changes{display:none!important}' +
    'body{display:block!important}.stage{width:100vw;height:100vh}';
  document.head.append(style); })()"""
# By how much of 255 a pixel of what the page shows differs from that of the picture below its caption
# at most, and how many differ by more than the last bits of a color: the edges of curves do, where
# their points are rounded to hundredths or they are drawn in other pieces.
DIFFERENT = """(async (caption, ...texts) => {
  const [ours, theirs] = await Promise.all(texts.map(async text => {
    const image = new Image();
    image.src = 'data:image/png;base64,' + text;
    await image.decode();
    return image;
  }));
  const pixels = (image, top) => {
    const canvas = document.createElement('canvas');
    canvas.width = ours.width;
    canvas.height = ours.height;
    const context = canvas.getContext('2d');
    context.drawImage(image, 0, -top);
    return context.getImageData(0, 0, ours.width, ours.height).data;
  };
  const a = pixels(ours, 0), b = pixels(theirs, caption);
  let worst = 0, count = 0;
  for (let i = 0; i < a.length; i += 4) {
    const differs = Math.max(...[0, 1, 2].map(part => Math.abs(a[i + part] - b[i + part])));
    worst = Math.max(worst, differs);
    count += differs > 8 ? 1 : 0;
  }
  return [worst, count];
})"""


class PagePictures(HostTest):
    @classmethod
    def setUpClass(cls):
        cls.browser = Browser()
        cls.addClassCleanup(cls.browser.close)

    def edit(self, operations):
        self.host("run", "-", input=json.dumps(operations).encode(), cwd=ROOT)

    def picture(self, document, group, theme):
        """What stands in the picture, and its pixels without the caption."""
        out = self.folder / "picture.svg"
        self.host("render", document, "-o", out, "--group", group, "--theme", theme)
        self.browser.open(out)
        width, height, left, top = self.browser.run("(box => [box.width, box.height, box.x, box.y])"
                                                    "(document.documentElement.viewBox.baseVal)")
        self.browser.resize(int(max(width, 1280)), int(max(height, 800)))
        self.browser.run("document.querySelectorAll('.tk-caption,.tk-counts').forEach("
                         "text => text.remove())")
        elements = self.browser.run(ELEMENTS + "(document.documentElement)")
        return elements, self.browser.screenshot(0, 0, width, height), (left, top, width, height)

    def assert_same_elements(self, ours, theirs):
        for one, other in zip(ours, theirs):
            for mine, its in zip(one, other):
                # Words and numbers in turn; these may differ by the rounding of what they are made of.
                mine, its = (re.split(r"(-?\d+\.?\d*)", text) for text in (mine, its))
                self.assertEqual(mine[::2], its[::2], (one, other))
                for number, wanted in zip(mine[1::2], its[1::2]):
                    self.assertAlmostEqual(float(number), float(wanted), delta=0.021, msg=(one, other))
        self.assertEqual(len(ours), len(theirs))

    def compare(self, document, theme):
        """How many groups were compared."""
        page = self.folder / "page.html"
        self.host("render", document, "-o", page, "--theme", theme)
        self.browser.open(page)
        keys = self.browser.run("Picture.groups.map(group => group.key)")
        pictures = [self.picture(document, key, theme) for key in keys]
        self.browser.problems.clear()
        self.browser.open(page)
        for key, (theirs, picture, (left, top, width, height)) in zip(keys, pictures):
            with self.subTest(group=key, theme=theme):
                self.browser.run(f"location.hash = '#' + encodeURIComponent({json.dumps(key)})")
                self.browser.wait_for(f"document.querySelector('#stage > svg').dataset.group === "
                                      f"{json.dumps(key)}")
                ours = self.browser.run(ELEMENTS + "(document.querySelector('#stage > svg'))")
                self.assert_same_elements(ours, theirs)
                self.browser.resize(int(max(width, 1280)), int(max(height, 800)))
                self.browser.run(BARE)
                x, y, w, h, frame_left, frame_top = self.browser.run(MOVED)
                self.assertEqual((x, y, frame_left), (0, 0, left))
                for _ in range(5):  # a busy browser may not have drawn its last yet
                    ours = self.browser.screenshot(0, 0, w, h)
                    worst, others = self.browser.run(
                        f"{DIFFERENT}({frame_top - top}, '{ours}', '{picture}')")
                    if worst < 64 and others < 0.001 * w * h:
                        break
                self.assertLess(worst, 64)
                self.assertLess(others, 0.001 * w * h)
        self.assertEqual(self.browser.problems, [])
        return len(keys)

    def test_the_groups_of_the_example(self):
        operations = json.loads((ROOT / "examples/photo-viewer.json").read_text(encoding="utf-8"))
        document = self.folder / "photos.document"
        kept = [o for o in operations if o["do"] not in ("save", "open", "send", "sendImages")]
        self.edit(kept + [op("save", file=str(document), codingType=3)])
        for theme in ("light", "dark"):
            self.assertGreater(self.compare(document, theme), 5)

    def test_everything_that_a_picture_can_show(self):
        document = self.folder / "all.document"
        self.edit(everything(document))
        self.assertEqual(self.compare(document, "light"), 5)

    def test_groups_that_are_laid_out(self):
        document = self.folder / "laid-out.document"
        chain = [o for i in range(12) for o in placed(f"n{i}", "HXRClampNode", 0, 0)]
        wires = [op("wire", from_=f"n{i}/Tarn.resultOutput", to=f"n{j}/Tarn.{port}Input")
                 for i, j, port in [*((i, i + 1, "value") for i in range(11)), (0, 5, "minimum"),
                                    (1, 9, "maximum"), (7, 3, "maximum"), (2, 11, "minimum")]]
        self.edit([op("newDocument", as_="doc"), *chain, *wires, op("save", file=str(document))])
        self.assertEqual(self.compare(document, "dark"), 1)


if __name__ == "__main__":
    unittest.main()
