"""Undo and redo in a session: steps, names, what is told, and that saved bytes come back."""

import json
import unittest

from host import HostTest, op

START = [
    op("newDocument", as_="doc"),
    op("newNode", as_="clamp", patch="HXRClampNode"),
    op("addNode", node="clamp", to="doc"),
    op("newNode", as_="math", patch="HXRMathNode"),
    op("addNode", node="math", to="doc"),
    op("wire", from_="clamp/Tarn.resultOutput", to="math/Tarn.operand0Input"),
]


class HistoryTest(HostTest):
    def results(self, *operations, status=0):
        output, errors = self.host("run", "-", "--json", "--history", status=status,
                                   input=json.dumps(operations).encode())
        return [record["result"] for record in json.loads(output)], errors

    def saved(self, number):
        return (self.folder / f"{number}.document").read_bytes()

    def save(self, number):
        return op("save", file=str(self.folder / f"{number}.document"), codingType=3)

    def test_every_step_back_and_forth_saves_the_same_bytes(self):
        edits = [
            op("setParameter", node="math", parameter="Tarn.numberOfOperationsParameter", value=3),
            op("removeNode", node="clamp"),
            op("setName", node="math", value="Sum"),
            op("publish", port="math/Tarn.operand1Input"),
            op("setPatch", node="math", patch="HXRReplicatorNode"),
        ]
        operations = [*START, self.save(0)]
        for number, edit in enumerate(edits, 1):
            operations += [edit, self.save(number)]
        for number in reversed(range(len(edits))):
            operations += [op("undo"), self.save(f"undone-{number}")]
        for number in range(1, len(edits) + 1):
            operations += [op("redo"), self.save(f"redone-{number}")]
        self.results(*operations)
        for number in range(len(edits)):
            self.assertEqual(self.saved(f"undone-{number}"), self.saved(number), number)
            self.assertEqual(self.saved(f"redone-{number + 1}"), self.saved(number + 1), number)

    def test_steps_have_names_nest_and_can_be_abandoned(self):
        results, _ = self.results(
            *START,
            op("beginStep", name="Tidy up"),
            op("setPosition", node="clamp", value=[1, 2]),
            op("beginStep"),
            op("setPosition", node="math", value=[3, 4]),
            op("endStep"),
            op("endStep"),
            op("beginStep", name="Drag"),
            op("setPosition", node="math", value=[9, 9]),
            op("abandonStep"),
            op("undo"),
            op("dump", node="clamp"),
            op("redo", count=5),
            op("undo", count=100),
            op("undo"))
        self.assertEqual(results[-5], {"steps": 1, "name": "Tidy up"})
        self.assertEqual(results[-4]["position"], [0, 0])
        self.assertEqual(results[-3], {"steps": 1, "name": "Tidy up"})
        self.assertEqual(results[-2]["steps"], 4)
        self.assertEqual(results[-1], {"steps": 0, "name": None})

    def test_what_cannot_be_done_says_so(self):
        output, errors = self.host("run", "-", status=1, input=json.dumps(
            [op("newDocument"), op("undo")]).encode())
        self.assertEqual(self.one_line(errors),
                         "operation 1, undo, the session records no history (--history does)")
        for operation, reason in ((op("endStep"), "no step is open"),
                                  (op("abandonStep"), "no step is open"),
                                  (op("undo", count=-1), '"count" must not be negative')):
            _, errors = self.results(op("newDocument"), operation, status=1)
            self.assertIn(reason, self.one_line(errors))
        _, errors = self.results(op("newDocument"), op("beginStep"), op("undo"), status=1)
        self.assertIn("a step is open", self.one_line(errors))


if __name__ == "__main__":
    unittest.main()
