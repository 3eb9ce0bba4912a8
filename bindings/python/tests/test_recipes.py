"""The recipes of docs/python.md, which shows the regions of this file."""

import csv
import re

import pytest

import tarnkit
from conftest import PHOTO


@pytest.fixture(autouse=True)
def folder(tmp_path, monkeypatch):
    """Some documents to work on, in the folder in which a recipe runs."""
    monkeypatch.chdir(tmp_path)
    document = tarnkit.Document()
    touch = document.add("Touch Interaction", name="Finger")
    toggle = document.add("Switch", name="Old switch")
    touch.outputs["Down"] >> toggle.inputs["Toggle"]
    clamp = document.add("Clamp", name="Old limits")
    clamp.inputs["Value"].value = 3
    document.images.add(PHOTO)
    document.save("prototype.document")
    document.nodes["Finger"].name = "Thumb"
    document.save("ours.document")
    clamp.inputs["Value"].value = 4
    document.nodes["Thumb"].name = "Index"
    document.save("theirs.document")


def test_building():
    # region building
    document = tarnkit.Document()
    touch = document.add("Touch Interaction")
    toggle = document.add("Switch", name="Light", position=(200, 40))
    touch.outputs["Down"] >> toggle.inputs["Toggle"]
    document.save("touch.document")
    # end building
    assert len(tarnkit.open("touch.document").connections) == 1


def test_reading():
    # region reading
    document = tarnkit.open("prototype.document")
    for node in document.walk():
        print(document.address_of(node), node.patch.name if node.patch else "a group")
        for port in node.inputs:
            print("   ", port.name, port.value, "wired" if port.is_connected else "")
    # end reading
    assert node.name == "Old limits"


def test_gone(capsys):
    # region gone
    nodes = list(tarnkit.open("prototype.document").nodes)  # nobody holds the document any more
    try:
        print(nodes[0].name)
    except tarnkit.GoneError as gone:
        print(gone)
    # end gone
    assert "document" in capsys.readouterr().out


def test_values():
    # region values
    document = tarnkit.Document()
    clamp = document.add("Clamp")
    value = clamp.inputs["Value"]
    value.value = 0.1
    assert value.value == 0.1 and value.has_value
    del value.value
    assert value.value == value.default
    value.value = tarnkit.Angle.of_degrees(90)
    value.value = tarnkit.Color.from_hex("#3366cc")
    # end values
    assert value.value.hex == "#3366cc"


def test_parameters():
    # region parameters
    document = tarnkit.Document()
    area = document.add("Math Expression", name="Area")
    area.parameters["Expression"].value = "$width * $height"
    assert [port.name for port in area.inputs] == ["width", "height"]
    # end parameters


def test_refusals(capsys):
    # region refusals
    document = tarnkit.Document()
    picture, clamp = document.add("Image"), document.add("Clamp")
    print(picture.outputs["Image"].why_not_connect(clamp.inputs["Value"]))
    try:
        picture.outputs["Image"] >> clamp.inputs["Value"]
    except tarnkit.RefusedError as refused:
        print(refused.code)
    # end refusals
    assert "image" in capsys.readouterr().out


def test_replacing():
    # region replacing
    document = tarnkit.open("prototype.document")
    with document.step("Springs for clamps"):
        for match in document.find(patch="Clamp"):
            lost = match.node.replace_patch("Spring")
            print(match.address, "lost", ", ".join(lost) or "nothing")
    # end replacing
    assert not document.find(patch="Clamp") and document.undo() and document.find(patch="Clamp")


def test_renaming():
    # region renaming
    document = tarnkit.open("prototype.document")
    with document.step("Rename"):
        for match in document.find(name="Old *"):
            match.node.name = re.sub("^Old ", "", match.node.name)
    # end renaming
    assert document.nodes.names == ["Finger", "switch", "limits"]


def test_unused_images():
    # region unused images
    document = tarnkit.open("prototype.document")
    unused = [finding.place for finding in document.check(only=["image-unused"])]
    for image in unused:
        print(image.key, image.width, "x", image.height)
    document.repair(only=["image-unused"])
    # end unused images
    assert unused and len(document.images) == 0


def test_layout():
    numpy = pytest.importorskip("numpy")
    # region layout
    document = tarnkit.open("prototype.document")
    nodes = document.nodes
    with document.step("A tidy column"):
        nodes.positions = [(0, 160 * row) for row in range(len(nodes))]
    middle = nodes.positions.mean(axis=0)
    # end layout
    assert numpy.allclose(middle, [0, 160])


def test_values_as_csv():
    # region csv
    document = tarnkit.open("prototype.document")
    with open("values.csv", "w", newline="") as file:
        table = csv.writer(file)
        table.writerow(["node", "port", "value", "default"])
        for node in document.walk():
            for port in node.inputs:
                if port.has_value:
                    table.writerow([document.address_of(node), port.name, port.value, port.default])
    # end csv
    with open("values.csv", newline="") as file:
        assert list(csv.reader(file))[1][:3] == ["Old limits", "Value", "3.0"]


def test_history(capsys):
    # region history
    document = tarnkit.open("prototype.document")
    with document.step("Tidy up"):
        for node in document.nodes:
            node.position = (0, 100)
    try:
        with document.step("Half of it"):
            document.nodes[0].remove()
            raise ValueError("something went wrong")
    except ValueError:
        assert len(document.nodes) == 3  # nothing stays of a step that fails
    print(document.history.undo_name)
    document.undo()
    # end history
    assert capsys.readouterr().out == "Tidy up\n"


def test_observing():
    # region observing
    class Canvas:
        def __init__(self, document):
            self.boxes = {}
            document.observe("group_add_node", self.add)
            document.observe("node_name_did_change", self.rename)

        def add(self, notice):
            self.boxes[notice.node] = notice.node.name

        def rename(self, notice):
            self.boxes[notice.node] = notice.info["Name"]

    document = tarnkit.Document()
    canvas = Canvas(document)  # its methods are called for as long as it lives
    document.add("Clamp").name = "Limits"
    # end observing
    assert list(canvas.boxes.values()) == ["Limits"]


def test_publishing():
    # region publishing
    document = tarnkit.Document()
    card = document.add(tarnkit.Node(name="Card"))
    spring = card.add("Spring")
    spring.inputs["Strength"].publish("Card: Strength")
    document.add("Clamp").outputs[0] >> card.inputs["Strength"]
    # end publishing
    assert card.inputs[0].resolved is spring.inputs["Strength"]


def test_grouping():
    # region grouping
    document = tarnkit.open("prototype.document")
    inside = tarnkit.group_nodes(document.find(name="Old *")[0].node, "Switches")
    tarnkit.duplicate(inside, offset=(0, 300))
    other = tarnkit.Document()
    other.group.paste(tarnkit.copy_nodes(inside))
    nodes, lost = inside.ungroup()
    # end grouping
    assert not lost.connections and nodes[0].name == "Old switch"


def test_difference(capsys):
    # region difference
    old, new = tarnkit.open("prototype.document"), tarnkit.open("theirs.document")
    difference = tarnkit.diff(old, new)
    for change in difference:
        print(change)
    difference.apply_to(old)
    assert old.to_bytes() == new.to_bytes()
    # end difference
    assert "renamed" in capsys.readouterr().out


def test_merging(capsys):
    # region merging
    base, ours, theirs = map(tarnkit.open, ["prototype.document", "ours.document", "theirs.document"])
    merged = tarnkit.merge(base, ours, theirs, favored={"Thumb: name": "theirs"})
    for conflict in merged.conflicts:
        print(conflict)
    merged.document.save("merged.document")
    # end merging
    assert "Index" in capsys.readouterr().out
    assert merged.document.nodes["Old limits"].inputs["Value"].value == 4


def test_checking(capsys):
    # region checking
    document = tarnkit.open("prototype.document")
    findings = document.check(ignored=["position-shared"])
    for finding in findings:
        print(finding)
    worst = findings[0].severity if findings else "nothing"
    # end checking
    assert worst != "nothing" and worst in capsys.readouterr().out


def test_pictures():
    # region pictures
    document = tarnkit.open("prototype.document")
    with open("prototype.svg", "w", encoding="utf-8") as file:
        file.write(document.to_svg(theme="dark"))
    with open("prototype.html", "w", encoding="utf-8") as file:
        file.write(document.to_html())
    # end pictures


def test_sending():
    # region sending
    document = tarnkit.open("prototype.document")
    document.send("prototype.graph")
    keys = document.send_images("images")
    # end sending
    assert len(keys) == 1


def test_expressions():
    numpy = pytest.importorskip("numpy")
    # region expressions
    length = tarnkit.Expression("sqrt(x**2 + y**2)")
    assert length.variables == ("x", "y") and length.evaluate(x=3, y=4) == 5

    exact = tarnkit.Evaluator(decimals=True)
    third = tarnkit.Expression("1 / 3", exact).evaluate()  # a decimal.Decimal of 38 digits

    own = tarnkit.Evaluator(degrees=True)
    own.register("mix", lambda a, b, part: a + (b - a) * part)
    assert tarnkit.Expression("mix(0, sin(90), 0.5)", own).evaluate() == 0.5

    x = numpy.linspace(0, 1, 1_000_000)
    lengths = length.evaluate(x=x, y=1)  # an array
    # end expressions
    assert len(lengths) == 1_000_000 and str(third).startswith("0.333333333333")
