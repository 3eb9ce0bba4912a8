"""Reads style sheets as a browser does and complains where one would drop something: what is no rule,
no declaration, or a declaration of a property that an earlier one of the same rule has set already.

    check_css.py FILE...

Needs python3-tinycss2; scripts/lint calls it."""

import sys

import tinycss2

NESTING = {"media", "supports"}


def complaints(nodes):
    for node in nodes:
        if node.type == "error":
            yield node.source_line, node.message
        elif node.type == "at-rule" and node.lower_at_keyword in NESTING:
            yield from complaints(tinycss2.parse_rule_list(node.content, True, True))
        elif node.type in ("at-rule", "qualified-rule") and node.content is not None:
            seen = set()
            for part in tinycss2.parse_declaration_list(node.content, True, True):
                if part.type == "error":
                    yield part.source_line, part.message
                elif part.type == "declaration" and part.name in seen:
                    yield part.source_line, f"{part.name} is set twice"
                elif part.type == "declaration":
                    seen.add(part.name)


def main(files):
    count = 0
    for file in files:
        with open(file, encoding="utf-8") as text:
            for line, message in complaints(tinycss2.parse_stylesheet(text.read(), True, True)):
                print(f"{file}:{line}: {message}")
                count += 1
    return 1 if count else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
