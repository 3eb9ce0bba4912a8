"""The page of the expressions: its tables are the engine's, and what it says of texts is what they
come to."""

import json
import re

from host import ROOT, HostTest, unittest
from manual import REGENERATES, Page, code_of

MADE = r"(<!-- made of: {} -->\n)(.*?)(<!-- end -->)"


def cell(text):
    return text.replace("|", r"\|")


def code(texts):
    return ", ".join(f"`{cell(text)}`" for text in texts)


def operators_table(operators):
    rows = "| | Operator | Where | First | Function | Value |\n|---|---|---|---|---|---|\n"
    for operator in operators:
        meaning = operator["meaning"]
        rows += (f"| {operator['precedence']} | {code(operator['tokens'])} | {operator['place']} | "
                 f"{operator['side'] or ''} | `{operator['function']}` | {cell(meaning)} |\n")
    return rows


def functions_table(functions):
    rows, subject = "", None
    for function in functions:
        if function["subject"] != subject:
            subject = function["subject"]
            rows += (f"\n### {subject}\n\n| Function | Value | Also | Angle | Digits |\n"
                     "|---|---|---|---|---|\n")
        call = function["name"] + (f"({function['arguments']})" if function["arguments"] else "")
        count = ""
        if function["maximum"] is None:
            count = f" (at least {function['minimum']})"
        elif function["maximum"] != function["minimum"]:
            count = f" ({function['minimum']} to {function['maximum']})"
        angle = {None: "", "argument": "goes in", "result": "comes out"}[function["angle"]]
        rows += (f"| `{call}`{count} | {cell(function['meaning'])} | "
                 f"{code(function['aliases'] + function['operators'])} | {angle} | "
                 f"{'' if function['decimal'] else '16'} |\n")
    return rows + "\n"


class Expressions(HostTest):
    maxDiff = None

    def setUp(self):
        super().setUp()
        self.page = Page(ROOT / "docs/expressions.md")
        self.language = json.loads(self.host("functions", "--json")[0])

    def value(self, text, *options):
        output, errors = self.host("math", input=json.dumps(
            {"op": "eval", "text": text, **dict.fromkeys(options, True)}).encode())
        return json.loads(output)

    def test_tables_are_those_of_the_engine(self):
        tables = {"operators": operators_table(self.language["operators"]),
                  "functions": functions_table(self.language["functions"])}
        text = self.page.text
        for name, table in tables.items():
            text = re.sub(MADE.format(name), lambda found: found[1] + table + found[3], text,
                          flags=re.DOTALL)
        if REGENERATES:
            self.page.path.write_text(text, encoding="utf-8")
            self.page = Page(self.page.path)
        self.assertEqual(self.page.text, text)

    def test_surprises_are_what_they_are_said_to_be(self):
        rows = [row for titles, _, rows in self.page.tables() for row in rows
                if titles[-1] == "What surprises"]
        self.assertGreater(len(rows), 8)
        for text, value, _ in rows:
            with self.subTest(text=text):
                self.assertEqual(self.value(code_of(text)[0]), {"value": value})
        self.assertEqual(self.value("-7 % 3", "precise"), {"value": "2"})

    def test_codes_of_errors(self):
        codes = {int(row[0]): code_of(row[2]) for titles, _, rows in self.page.tables()
                 for row in rows if titles[-1] == "Errors"}
        declared = re.findall(r"^  \w+ = (\d+),$",
                              (ROOT / "tarnkit/math/MXError.h").read_text(), re.MULTILINE)
        self.assertEqual(sorted(codes), sorted(int(number) for number in declared if number != "0"))
        for number, examples in codes.items():
            for text in examples:
                with self.subTest(text=text):
                    if text != "$":
                        self.assertEqual(self.value(text)["error"]["code"], number)

    def test_one_minute(self):
        for text, value in [("2 + 3 * 4", "14"), ("2(3 + 4)", "14"), ("2 ** 10", "1024"),
                            ("5 ^ 3", "6"), ("sin(90°)", "1"), ("max(3, 7)", "7")]:
            self.assertEqual(self.value(text), {"value": value})
            self.assertIn(f"`{text}`", self.page.text)

    def test_functions_by_name(self):
        for name in ("MEAN", "average"):
            found = json.loads(self.host("functions", name, "--json")[0])
            self.assertEqual([f["name"] for f in found["functions"]], ["average"])
        power = json.loads(self.host("functions", "**", "--json")[0])
        self.assertEqual((power["operators"][0]["function"], power["functions"][0]["name"]),
                         ("pow", "pow"))
        signs = json.loads(self.host("functions", "-", "--json")[0])
        self.assertEqual({o["function"] for o in signs["operators"]}, {"subtract", "negate"})
        percent = json.loads(self.host("functions", "%", "--percent", "--json")[0])
        self.assertEqual(percent["operators"][0]["place"], "behind")
        failure = self.one_line(self.host("functions", "nosuch", status=1)[1])
        self.assertIn("nosuch", failure)


if __name__ == "__main__":
    unittest.main()
