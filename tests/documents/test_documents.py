"""Every file that a document links to is there, every heading, and every header that it names."""

import os
import pathlib
import re
import unittest

ROOT = pathlib.Path(os.environ.get("TARNKIT_SOURCE_DIR", pathlib.Path(__file__).parents[2]))
LINK = re.compile(r"\[[^\]]*\]\(([^)#\s]*)(?:#([^)\s]*))?\)")
BLOCK = re.compile(r"^```.*?^```$", re.MULTILINE | re.DOTALL)


def anchors(path):
    """The names by which pages of Markdown call their headings."""
    text = BLOCK.sub("", path.read_text(encoding="utf-8"))
    names = set()
    for heading in re.findall(r"^#+ (.*)$", text, re.MULTILINE):
        name = re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-")
        count = sum(1 for number in range(99) if f"{name}-{number}" in names)
        names.add(f"{name}-{count + 1}" if name in names else name)
    return names


class Documents(unittest.TestCase):
    def test_links_lead_somewhere(self):
        documents = [*ROOT.glob("*.md"), *ROOT.glob("docs/**/*.md")]
        self.assertGreater(len(documents), 3)
        for document in documents:
            text = BLOCK.sub("", document.read_text(encoding="utf-8"))
            for target, anchor in LINK.findall(text):
                if "://" in target:
                    continue
                with self.subTest(document=document.name, target=target, anchor=anchor):
                    path = document.parent / target if target else document
                    self.assertTrue(path.exists())
                    if anchor and path.suffix == ".md":
                        self.assertIn(anchor, anchors(path))

    def test_headers_are_there(self):
        named = 0
        for document in [*ROOT.glob("*.md"), *ROOT.glob("docs/**/*.md")]:
            for header in re.findall(r"\btarnkit/[\w/]+\.h\b", document.read_text(encoding="utf-8")):
                with self.subTest(document=document.name, header=header):
                    self.assertTrue((ROOT / header).is_file() or (ROOT / "tools" / header).is_file())
                    named += 1
        self.assertGreater(named, 20)


if __name__ == "__main__":
    unittest.main()
