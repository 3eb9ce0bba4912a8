"""The manual as data: its pages, the blocks of code in them, and their tables."""

import os
import pathlib
import re

ROOT = pathlib.Path(os.environ.get("TARNKIT_SOURCE_DIR", pathlib.Path(__file__).parents[2]))
REGENERATES = "TARNKIT_REGENERATE" in os.environ

# A block of code with what the line before it says of it: "<!-- KIND: WHAT -->".
BLOCK = re.compile(r"^(?:<!-- (?P<kind>[a-z ]+): (?P<what>[^\n]*) -->\n)?```(?P<language>\w*)\n"
                   r"(?P<text>.*?)^```$", re.MULTILINE | re.DOTALL)


class Page:
    def __init__(self, path):
        self.path = path
        self.name = path.relative_to(ROOT).as_posix()
        self.text = path.read_text(encoding="utf-8")

    def blocks(self):
        return list(BLOCK.finditer(self.text))

    def replace(self, new_text_of):
        """Writes the page anew with the text of each block that `new_text_of` gives one for."""
        def replaced(block):
            text = new_text_of(block)
            if text is None:
                return block.group(0)
            start, end = block.start("text") - block.start(), block.end("text") - block.start()
            return block.group(0)[:start] + text + block.group(0)[end:]

        self.text = BLOCK.sub(replaced, self.text)
        self.path.write_text(self.text, encoding="utf-8")

    def tables(self):
        """(headings from the outermost, header cells, rows), for each table."""
        headings, tables, rows = {}, [], []
        text = BLOCK.sub("", self.text)
        for line in text.splitlines() + [""]:
            if line.startswith("|"):
                cells = [cell.strip().replace(r"\|", "|")
                         for cell in re.split(r"(?<!\\)\|", line)[1:-1]]
                if not all(re.fullmatch(r":?-+:?", cell) for cell in cells):
                    rows.append(cells)
                continue
            if rows:
                titles = [headings[level] for level in sorted(headings)]
                tables.append((titles, rows[0], rows[1:]))
                rows = []
            if heading := re.match(r"(#+) (.*)", line):
                level = len(heading[1])
                headings = {l: h for l, h in headings.items() if l < level}
                headings[level] = heading[2]
        return tables


def pages():
    return [Page(path) for path in [*sorted(ROOT.glob("*.md")), *sorted(ROOT.glob("docs/**/*.md"))]]


def code_of(cell):
    """What stands in back quotes."""
    return re.findall(r"`([^`]+)`", cell)
