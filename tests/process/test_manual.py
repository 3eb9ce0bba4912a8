"""Every block of code in the README and the manual is what it says: a region or the whole of a file
that is compiled or run by a test, or commands that are run here, in a folder of their own for each
page, with the output that the page shows."""

import os
import pathlib
import re
import subprocess
import tempfile
import unittest

from host import HOST, IS_EMULATED, ROOT
from manual import REGENERATES, pages

# Pages without commands of users: made from tables, or about measuring and the working on it.
ABOUT_THE_WORK = {"docs/performance.md", "docs/performance/decimal.md", "docs/performance/math.md"}
PICTURE = re.compile(r"^<!-- before: (.*) -->\n<!-- picture: (.*) -->\n!\[.*\]\((.*)\)$", re.MULTILINE)
REGION = r"^[ \t]*(?://|#|--) region {}\n(.*?)^[ \t]*(?://|#|--) end {}$"


def region(file, name=None):
    """The lines between "// region NAME" and "// end NAME", without their common indentation."""
    text = (ROOT / file).read_text(encoding="utf-8")
    if name is not None:
        found = re.findall(REGION.format(re.escape(name), re.escape(name)), text,
                           re.MULTILINE | re.DOTALL)
        if len(found) != 1:
            raise AssertionError(f"{file}: {len(found)} regions {name}")
        text = found[0]
    lines = [line for line in text.splitlines()
             if not re.match(r"\s*(//|#) (region|end) ", line)]
    indents = [len(line) - len(line.lstrip()) for line in lines if line.strip()]
    return "".join(line[min(indents, default=0):].rstrip() + "\n" for line in lines)


def fits(shown, output):
    """Whether the output is as shown; a line of "…" stands for any lines."""
    parts = [re.escape(part) for part in re.split(r"^…\n", shown, flags=re.MULTILINE)]
    return re.fullmatch("(?:.*\n)*?".join(parts), output) is not None


class Shell:
    """The folder of one page, and the commands that are run there."""

    def __init__(self, folder):
        self.folder = folder
        for name in ("examples", "tarnkit"):
            (folder / name).symlink_to(ROOT / name)
        (folder / "build/release").mkdir(parents=True)
        (folder / "build/release/examples").symlink_to(
            pathlib.Path(os.environ["TARNKIT_PLUGIN"]).parent)
        (folder / "home").mkdir()
        self.environment = {
            "PATH": f"{pathlib.Path(HOST).parent}:/usr/local/bin:/usr/bin:/bin",
            "HOME": str(folder / "home"), "LANG": "C.UTF-8", "GIT_CONFIG_NOSYSTEM": "1",
            **{f"GIT_{who}_{what}": "someone" for who in ("AUTHOR", "COMMITTER")
               for what in ("NAME", "EMAIL")},
            **{name: value for name, value in os.environ.items() if name.endswith("SAN_OPTIONS")}}

    def run(self, commands):
        done = subprocess.run(["bash", "-c", commands], cwd=self.folder, env=self.environment,
                              stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, timeout=100)
        return done.returncode, done.stdout.decode()

    def session(self, text):
        """A block of "$ command" lines and output, as it is when it is performed."""
        out = ""
        for command in re.findall(r"^\$ (.*(?:\\\n.*)*)\n", text, re.MULTILINE):
            out += f"$ {command}\n" + self.run(command)[1]
        return out


class Manual(unittest.TestCase):
    maxDiff = None

    def test_blocks_of_code(self):
        for page in pages():
            if page.name in ABOUT_THE_WORK:
                continue
            if IS_EMULATED and re.search("tarnkit git|build/release/examples", page.text):
                continue  # started without the emulator
            with tempfile.TemporaryDirectory() as folder, self.subTest(page=page.name):
                self.check(page, Shell(pathlib.Path(folder)))

    def check(self, page, shell):
        new = {}
        for block in page.blocks():
            kind, what, language = block["kind"], block["what"], block["language"]
            line = page.text[:block.start()].count("\n") + 1
            if kind in ("example", "not run"):
                continue
            with self.subTest(line=line):
                if kind == "before":
                    self.assertEqual(shell.run("set -e; " + what), (0, ""))
                if kind == "lines of":
                    source = [line.strip() for line in (ROOT / what).read_text().splitlines()]
                    for line in block["text"].splitlines():
                        self.assertIn(line.strip(), source)
                elif kind in ("file", "region"):
                    new[block.start()] = region(*what.split(" ", 1))
                elif language == "console":
                    new[block.start()] = shell.session(block["text"])
                    if fits(block["text"], new[block.start()]):
                        new[block.start()] = block["text"]
                elif language == "sh":
                    status, output = shell.run("set -e\n" + block["text"])
                    self.assertEqual(status, 0, output)
                else:
                    self.fail("a block of code that is nobody's")
                if block.start() in new and not REGENERATES:
                    self.assertEqual(block["text"], new[block.start()])
        if REGENERATES:
            page.replace(lambda block: new.get(block.start()))


    def test_pictures_are_what_the_program_draws(self):
        drawn = 0
        for page in pages():
            for before, command, path in PICTURE.findall(page.text):
                drawn += 1
                with tempfile.TemporaryDirectory() as folder:
                    shell = Shell(pathlib.Path(folder))
                    self.assertEqual(shell.run("set -e; " + before), (0, ""))
                    status, picture = shell.run(command)
                self.assertEqual(status, 0, picture)
                file = page.path.parent / path
                if REGENERATES:
                    file.parent.mkdir(exist_ok=True)
                    file.write_text(picture, encoding="utf-8")
                self.assertEqual(file.read_text(encoding="utf-8"), picture)
        self.assertGreater(drawn, 0)


if __name__ == "__main__":
    unittest.main()
