"""Checks the spelling of pages of Markdown with hunspell: check_spelling.py FILE...

What stands in code, links and comments is left out. docs/words.txt has the words that are right
although the dictionary does not know them."""

import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[1]
LEFT_OUT = re.compile(r"^```.*?^```$|``.+?``|`[^`\n]+`|<!--.*?-->|https?://\S+|(?<=\])\([^)]*\)|"
                      r"<[^>\n]+>", re.MULTILINE | re.DOTALL)
# Names of classes, files and the like, and numbers with letters.
NO_WORD = re.compile(r"[\w-]+(?:[/.][\w-]+)+|\w*[\d_]\w*|\b[A-Z]?[a-z]+[A-Z]\w*|\b[A-Z]{2,}\w*")


def main():
    failed = False
    for name in sys.argv[1:]:
        text = pathlib.Path(name).read_text(encoding="utf-8")
        prose = LEFT_OUT.sub(lambda found: re.sub(r"[^\n]", " ", found[0]), text)
        prose = NO_WORD.sub(" ", prose).replace("’", "'")
        words = subprocess.run(
            ["hunspell", "-d", "en_GB", "-i", "UTF-8", "-p", str(ROOT / "docs/words.txt"), "-l"],
            input=prose, text=True, capture_output=True, check=True).stdout.split()
        for word in sorted(set(words)):
            failed = True
            lines = [number for number, line in enumerate(prose.splitlines(), 1)
                     if re.search(rf"\b{re.escape(word)}\b", line)]
            print(f"{name}:{lines[0] if lines else 1}: unknown word: {word}")
    sys.exit(failed)


if __name__ == "__main__":
    main()
