"""Expressions from the shell: single ones and batches, in double precision and in decimals."""

import json
import resource
import select
import subprocess
import unittest

from host import HOST, IS_EMULATED, IS_SANITIZED, HostTest


class Math(HostTest):
    def value(self, *arguments):
        return self.host("eval", *arguments)[0].decode().rstrip("\n")

    def test_values(self):
        cases = [
            (["1 + 2 * 3"], "7"),
            (["2 ** 3 ** 2"], "512"),
            (["0.1 + 0.2"], "0.30000000000000004"),
            (["1/0"], "inf"),
            (["sin(90)", "--degrees"], "1"),
            (["2$x", "--var", "x=21"], "42"),
            (["2$x", "--var", "$x=21"], "42"),
            (["x + y", "--var", "x=1", "--var", "y=2", "--functions-as-variables"], "3"),
            (["50 + 10%", "--percent"], "55"),
            (["7 % 4"], "3"),
            (["-1"], "-1"),
            (["--degrees", "--", "-1"], "-1"),
            (["--", "--1"], "1"),
        ]
        for arguments, wanted in cases:
            with self.subTest(arguments=arguments):
                self.assertEqual(self.value(*arguments), wanted)
        self.assertEqual(json.loads(self.value("2 + 2", "--json"))["value"], "4")

    def test_decimals_keep_every_digit(self):
        cases = [
            (["0.1 + 0.2"], "0.3"),
            (["1/3"], "0." + "3" * 38),
            (["2 / 3"], "0." + "6" * 37 + "7"),
            (["pi()"], "3.1415926535897932384626433832795028842"),
            (["sqrt(2)"], "1.4142135623730950488016887242096980786"),
            (["sin(30)", "--degrees"], "0.5"),
            (["$x * 2", "--var", "x=0.12345678901234567890123456789"],
             "0.24691357802469135780246913578"),
            (["12345678901234567890123456789012345678"],
             "12345678901234567890123456789012345678"),
            # What a decimal cannot hold is no number, or nothing.
            (["1/0"], "NaN"),
            (["10 ** 200"], "NaN"),
            (["10 ** -200"], "0"),
            (["ln(0 - 1)"], "NaN"),
            # These stay in double precision.
            (["max(1, 2)"], "2"),
            (["1 && 0"], "0"),
        ]
        for arguments, wanted in cases:
            with self.subTest(arguments=arguments):
                self.assertEqual(self.value("--precise", *arguments), wanted)

    def test_trees(self):
        for command, text, wanted in (
                ("tokens", "2 + $a", "2\n+\n$a\n"),
                ("parse", "1 + 2*3", "add(1,multiply(2,3))\n"),
                ("simplify", "1 + 2 + $x", "add(3,$x)\n"),
                ("rewrite", "$x + $x", "multiply($x,2)\n")):
            with self.subTest(command=command):
                self.assertEqual(self.host(command, text)[0].decode(), wanted)

    def test_failures_tell_message_and_code(self):
        for arguments, wanted in (
                (["1 +"], "no right operand to binary + (code 10)"),
                (["$x"], "unable to resolve variable: x (code 4)"),
                (["sin()"], "sin requires 1 argument (code 18)"),
                (["--precise", "sin()"], "sin requires 1 argument (code 18)"),
                (["0x"], "unable to parse hex number (code 5)")):
            with self.subTest(arguments=arguments):
                output, errors = self.host("eval", *arguments, status=1)
                self.assertEqual(output, b"")
                self.assertEqual(self.one_line(errors), wanted)

    def test_a_batch_answers_every_line_in_order(self):
        lines = [
            ({"op": "tokens", "text": "2 - $a"},
             {"tokens": [{"type": "number", "token": "2"},
                         {"type": "operator", "token": "-", "function": "subtract"},
                         {"type": "variable", "token": "a"}]}),
            ({"op": "parse", "text": "-$x ** 2"}, {"expression": "negate(pow($x,2))"}),
            ({"op": "eval", "text": "$x + 1", "vars": {"x": 2.5}}, {"value": "3.5"}),
            ({"op": "eval", "text": "$x + 1", "vars": {"x": "0.00000000000000000000000000001"},
              "precise": True}, {"value": "1.00000000000000000000000000001"}),
            ({"op": "eval", "text": "sin(90)", "degrees": True}, {"value": "1"}),
            ({"op": "eval", "text": "x", "functionsAsVariables": True, "vars": {"x": 9}},
             {"value": "9"}),
            ({"op": "eval", "text": "1 +"},
             {"error": {"code": 10, "message": "no right operand to binary +", "offset": 2,
                        "length": 1}}),
        ]
        broken = ["", "{", "[]", '{"op":"eval"}', '{"op":"jump","text":"1"}', '{"op":1,"text":"1"}',
                  '{"op":"eval","text":"1","degrees":"yes"}',
                  '{"op":"eval","text":"$x","vars":{"x":[]}}']
        # Enough of them that the answers leave in several parts.
        batch = lines * 500
        text = "\n".join([*map(json.dumps, (line for line, _ in batch)), *broken]) + "\n"
        output = [json.loads(line) for line in
                  self.host("math", input=text.encode())[0].decode().splitlines()]
        self.assertEqual(output[:len(batch)], [wanted for _, wanted in batch])
        answers = output[len(batch):]
        self.assertGreaterEqual(len(answers), len(broken) - 1)
        for answer in answers:
            self.assertEqual(answer["error"]["code"], -1, answer)
        percent = self.host("math", "--percent", input=b'{"op":"eval","text":"50 + 10%"}\n')[0]
        self.assertEqual(json.loads(percent), {"value": "55"})

    def test_a_line_is_answered_as_soon_as_it_is_whole(self):
        with subprocess.Popen([HOST, "math"], stdin=subprocess.PIPE, stdout=subprocess.PIPE) as run:
            for number in range(3):
                run.stdin.write(b'{"op":"eval",')
                run.stdin.flush()
                run.stdin.write(b'"text":"1 + %d"}\n' % number)
                run.stdin.flush()
                self.assertTrue(select.select([run.stdout], [], [], 60)[0], "no answer")
                self.assertEqual(json.loads(run.stdout.readline()), {"value": str(1 + number)})
            run.stdin.write(b'{"op":"eval","text":"7"}')
            run.stdin.close()
            self.assertEqual(json.loads(run.stdout.read()), {"value": "7"})

    @unittest.skipIf(IS_SANITIZED or IS_EMULATED, "memory cannot be limited")
    def test_a_line_for_which_there_is_no_memory_fails_alone(self):
        def limited():
            room = 320 << 20
            resource.setrlimit(resource.RLIMIT_AS, (room, room))

        good = b'{"op":"eval","text":"1 + 1"}\n'
        answer = {"value": "2"}
        error = {"error": {"code": -1, "message": "there is not enough memory for this line"}}
        long_sum = b"$a+" * 4000000 + b"1"
        lines = [
            (good, answer),
            # The tokens of a long line take no memory beside the line itself.
            (b'{"op":"tokens","text":"' + long_sum + b'"}\n', None),
            (good, answer),
            (b'{"op":"parse","text":"' + b"1+" * 10000000 + b'1"}\n', error),
            (b'{"op":"eval","text":"' + b"(" * 20000000 + b'"}\n', error),
            (b"x" * (300 << 20) + b"\n", error),
            (good, answer),
        ]
        run = subprocess.run([HOST, "math"], input=b"".join(line for line, _ in lines),
                             stdout=subprocess.PIPE, check=True, timeout=300, preexec_fn=limited)
        answers = run.stdout.splitlines()
        self.assertEqual(len(answers), len(lines))
        self.assertEqual(answers[1].count(b'"function":"add"'), 4000000)
        for given, (_, wanted) in zip(answers, lines):
            if wanted:
                self.assertEqual(json.loads(given), wanted)


if __name__ == "__main__":
    unittest.main()
