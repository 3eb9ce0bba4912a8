"""Primitives, versions and operator texts as a session reads them."""

import unittest

from host import HostTest, op


def primitive(kind, value=None):
    return {"kind": kind} if value is None else {"kind": kind, "value": value}


class Values(HostTest):
    def test_every_kind_reads_as_every_other(self):
        white, black = [1, 1, 1, 1], [0, 0, 0, 1]
        # storage type, boolean, index, number, radians, degrees, colour, text
        table = [
            (primitive("nil"), (0, False, 0, 0, 0, 0, black, "nil")),
            (primitive("boolean", True), (1, True, 1, 1, 3.1415927, 180, white, "YES")),
            (primitive("index", 3), (2, True, 3, 3, 4e-45, 2.41e-43, white, "3")),
            (primitive("number", -2.75), (3, True, -2, -2.75, -2.75, -157.5634, white, "-2.75")),
            (primitive("radians", 0), (4, False, 0, 0, 0, 0, black, "0°")),
            (primitive("degrees", 90), (5, True, 1, 1.5707964, 1.5707964, 90, white, "90°")),
            (primitive("color", [0, 0, 0, 0]),
             (6, False, 0, 0, 0, 0, [0, 0, 0, 0], "RGBA (0 0 0 0)")),
            (primitive("string", "-0.5 x 12"),
             (7, False, 0, -0.5, -0.5, -28.64789, [0.5, 12, 0, 0], "-0.5 x 12")),
            (primitive("number", "-inf"), (3, True, None, "-inf", "-inf", "-inf", white, None)),
        ]
        names = ("storageType", "booleanValue", "indexValue", "numberValue", "radiansValue",
                 "degreesValue", "colorValue", "stringValue")
        results = self.trace(*[op("readPrimitive", value=value) for value, _ in table]).results
        for (value, expected), result in zip(table, results):
            with self.subTest(value=value):
                for name, wanted in zip(names, expected):
                    if wanted is not None:
                        self.assertEqual(result[name], wanted, name)
                self.assertRegex(result["description"], r"^<PMRPrimitive: 0x[0-9a-f]+, value: ")

    def test_kind_is_part_of_the_value(self):
        pairs = [
            (primitive("number", 1), primitive("index", 1), False),
            (primitive("number", 0), primitive("number", -0.0), True),
            (primitive("number", "nan"), primitive("number", "nan"), False),
            (primitive("degrees", 180), primitive("degrees", 180), True),
            (primitive("nil"), primitive("nil"), True),
            (primitive("string", "a"), primitive("string", "a"), True),
            (primitive("color", [0, 0, 0, 1]), primitive("color", [0, 0, 0, 0]), False),
        ]
        results = self.trace(*[op("equalPrimitives", value=a, other=b)
                               for a, b, _ in pairs]).results
        self.assertEqual(results, [equal for _, _, equal in pairs])

    def test_hashes(self):
        cases = [(primitive("nil"), 0), (primitive("boolean", True), 32),
                 (primitive("index", -1), 30), (primitive("number", 2), 131101),
                 (primitive("color", [1, 0, 0, 0]), 8520226)]
        results = self.trace(*[op("readPrimitive", value=value) for value, _ in cases]).results
        self.assertEqual([r["hash"] for r in results], [wanted for _, wanted in cases])

    def test_versions(self):
        cases = {"1.2.3": [1, 2, 3], "v1 - 2": [1, 2, 0], "2.10.4": [2, 10, 4], "": [0, 0, 0]}
        results = self.trace(*[op("version", text=text) for text in cases],
                             op("version", text=None)).results
        self.assertEqual([r["version"] for r in results], [*cases.values(), [0, 0, 0]])
        self.assertEqual([r["text"] for r in results],
                         ["1.2.3", "1.2.0", "2.10.4", "0.0.0", "0.0.0"])

    def test_operator_texts(self):
        tables = {
            "math": ["+", "-", "*", "/", "%", "POW", "MIN", "MAX"],
            "logic": ["AND", "OR", "XOR", "NAND", "NOR", "NXOR", "NOT"],
            "conditional": ["==", "!=", ">", "<", ">=", "<="],
        }
        for table, texts in tables.items():
            results = self.trace(*[op("operatorText", table=table, index=index)
                                   for index in [*range(len(texts) + 1), 2**64 - 1]]).results
            self.assertEqual(results, [*texts, "", ""])

    def test_floats_keep_their_32_bits(self):
        numbers = [0.1, 1e-45, 3.4028235e38, 16777217, 1 / 3]
        results = self.trace(*[op("readPrimitive", value=primitive("number", number))
                               for number in numbers]).results
        self.assertEqual([r["numberValue"] for r in results],
                         [0.1, 1e-45, 3.4028235e38, 16777216, 0.33333334])


if __name__ == "__main__":
    unittest.main()
