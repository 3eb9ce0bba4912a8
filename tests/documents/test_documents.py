"""What the documents say is true of the tree: the README's program is the one that is compiled, and
every file that a document links to is there."""

import os
import pathlib
import re
import unittest

ROOT = pathlib.Path(os.environ.get("TARNKIT_SOURCE_DIR", pathlib.Path(__file__).parents[2]))
LINK = re.compile(r"\[[^\]]*\]\(([^)#\s]+)(?:#[^)]*)?\)")


class Documents(unittest.TestCase):
    maxDiff = None

    def test_the_program_of_the_readme_is_the_compiled_example(self):
        readme = (ROOT / "README.md").read_text(encoding="utf-8")
        programs = re.findall(r"^```cpp\n(.*?)^```$", readme, re.MULTILINE | re.DOTALL)
        self.assertEqual(programs, [(ROOT / "examples/readme.cpp").read_text(encoding="utf-8")])

    def test_links_lead_to_files(self):
        documents = [*ROOT.glob("*.md"), *ROOT.glob("docs/**/*.md")]
        self.assertGreater(len(documents), 3)
        for document in documents:
            for target in LINK.findall(document.read_text(encoding="utf-8")):
                if "://" not in target:
                    with self.subTest(document=document.name, target=target):
                        self.assertTrue((document.parent / target).exists())


if __name__ == "__main__":
    unittest.main()
