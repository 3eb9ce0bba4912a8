"""The graph: nodes, ports, values, parameters, connections, groups, images."""

import math
import re

import pytest

import tarnkit
from conftest import PHOTO, ROOT


def test_making_and_finding_nodes(document):
    clamp = document.add("Clamp", name="Limits", position=(30, 40.5))
    assert clamp.patch is tarnkit.patches["HXRClampNode"] and clamp.position == (30, 40.5)
    assert clamp.position.y == 40.5 and re.fullmatch(r"node_\d+", clamp.key)
    inner = document.add(tarnkit.Node(name="Group"))
    spring = inner.add(tarnkit.patches["Spring"])
    assert [node.name for node in document.nodes] == ["Limits", "Group"]
    assert document.nodes["Limits"] is document.nodes[clamp.key] is document.nodes[-2] is clamp
    assert document.nodes[0:2] == [clamp, inner] and len(document.nodes) == 2
    assert "Limits" in document.nodes and clamp in document.nodes and spring not in document.nodes
    assert list(document.walk()) == [clamp, inner, spring]
    assert [match.node for match in document.find(patch="Clamp")] == [clamp]
    assert document.find(name="Lim*", port="Value")[0].port is clamp.inputs["Value"]
    assert document.node(spring.key) is spring
    assert document.at(clamp.key + "/Tarn.valueInput") is clamp.inputs["Value"]
    assert document.address_of(clamp.inputs["Value"]) == "Limits: Value"
    with pytest.raises(KeyError, match="no node 'Nobody'"):
        document.nodes["Nobody"]
    with pytest.raises(IndexError):
        document.nodes[2]
    with pytest.raises(KeyError):
        document.at("node_x")
    with pytest.raises(KeyError, match="did you mean 'Clamp'"):
        tarnkit.patches["Clmap"]
    with pytest.raises(KeyError):
        document.add("Clmap")


def test_every_patch_can_be_placed_named_and_drawn(document):
    for name, patch in tarnkit.patches.items():
        node = document.add(patch)
        assert node.patch is patch is tarnkit.patches[name]
        assert {port.key for port in node.ports} <= {*patch.inputs, *patch.outputs}
        assert set(patch.parameters) <= {parameter.key for parameter in node.parameters}
        for port in node.inputs:
            assert port.is_input and node.inputs[port.key] is port and port.value == port.default
        for parameter in node.parameters:
            parameter.value = parameter.value
    assert len(tarnkit.patches) == len(document.nodes)
    assert len(tarnkit.patches.listed()) < len(tarnkit.patches)


@pytest.mark.parametrize("value", [0.1, 1, -7, 1e30, 3.4028235e38, 16777216, 0.3, 1e-45,
                                   123456.7, math.inf])
def test_numbers_come_back_as_they_were_given(document, value):
    port = document.add("Clamp").inputs["Value"]
    port.value = value
    assert port.value == value and isinstance(port.value, float) and port.has_value
    del port.value
    assert not port.has_value and port.value == port.default


def test_values_of_every_kind(document):
    port = document.add("Clamp").inputs["Value"]
    for value in (True, "a text", tarnkit.Color(1, 0.5, 0.2, 0.1), tarnkit.Angle.of_degrees(90),
                  tarnkit.Angle.of_radians(1.5)):
        port.value = value
        assert port.value == value and type(port.value) is type(value)
    port.value = (1, 0, 0)
    assert port.value == tarnkit.Color(1, 0, 0, 1)
    assert tarnkit.Color.from_hex("#ff000080").hex == "#ff000080"
    for wrong in ({}, b"bytes", object(), (1, 2), [1, 2, "3"], 1j):
        with pytest.raises(TypeError):
            port.value = wrong
    for wrong in (1e39, 10**400):
        with pytest.raises(OverflowError):
            port.value = wrong
    assert port.value == tarnkit.Color(1, 0, 0, 1)
    with pytest.raises(tarnkit.RefusedError, match="output"):
        document.nodes[0].outputs[0].value = 3


def test_a_number_takes_the_kind_of_the_ports_default(document):
    kinds = {type(port.default) for patch in tarnkit.patches
             for port in document.add(patch).inputs}
    assert {bool, float, int, str, tarnkit.Angle, tarnkit.Color} <= kinds
    for node in document.nodes:
        for port in node.inputs:
            if isinstance(port.default, (tarnkit.Angle, int)) and port.default is not True:
                port.value = 2
                assert type(port.value) in (type(port.default), float)
                if isinstance(port.default, tarnkit.Angle):
                    assert port.value == tarnkit.Angle(2, port.default.unit)


def test_connecting(wired):
    touch, toggle = wired.nodes
    output, input_ = touch.outputs["Down"], toggle.inputs["Toggle"]
    (wire,) = wired.connections
    assert wire.output is output and wire.input is input_ and input_.is_connected
    assert input_.connections == [wire] == output.connections and wire.document is wired
    again = toggle.inputs["Toggle"].connect(touch.outputs["Down"])  # whichever way it is dragged
    assert not wire.exists and wired.connections[again.key] is again
    image = wired.add("Image")
    with pytest.raises(tarnkit.RefusedError, match="image") as refused:
        image.outputs["Image"] >> wired.add("Clamp").inputs["Value"]
    assert refused.value.code == "kind" and refused.value.reason == str(refused.value)
    assert "both ports are inputs" == input_.why_not_connect(toggle.inputs[1])
    assert output.why_not_connect(toggle.inputs[1]) is None
    other = tarnkit.Document()
    with pytest.raises(tarnkit.RefusedError, match="one document"):
        output >> other.add("Switch").inputs[0]
    loose = [tarnkit.Node("Clamp"), tarnkit.Node("Clamp")]
    with pytest.raises(tarnkit.RefusedError, match="one document"):
        loose[0].outputs[0] >> loose[1].inputs[0]
    for wrong in (None, "Toggle", toggle, 3):
        with pytest.raises(TypeError, match="Port is needed"):
            output >> wrong
    again.remove()
    assert not again.exists and len(wired.connections) == 0
    output >> input_
    input_.disconnect()
    assert not output.is_connected


def test_groups_and_publishing(document):
    outer = document.add(tarnkit.Node(name="Outer"))
    clamp = outer.add("Clamp")
    published = clamp.inputs["Value"].publish("Amount")
    assert published.name == "Amount" and published.port is clamp.inputs["Value"]
    assert outer.inputs["Amount"] is published and clamp.inputs["Value"].published is published
    assert outer.group.published_inputs == [published] and published.resolved is published.port
    source = document.add("Clamp")
    wire = source.outputs[0] >> published
    assert wire.input is published and wire.resolved_input is clamp.inputs["Value"]
    published.name = "Sum"
    assert "Sum" in outer.inputs and "Amount" not in outer.inputs
    published.value = 5
    assert clamp.inputs["Value"].value == 5
    with pytest.raises(tarnkit.RefusedError, match="published already"):
        clamp.inputs["Value"].publish()
    with pytest.raises(tarnkit.RefusedError, match="no node of this group"):
        document.group.publish(clamp.inputs[1])
    published.unpublish()
    assert not published.exists and not wire.exists
    for nodes in ([outer], [document]):
        with pytest.raises(tarnkit.RefusedError):
            outer.add(nodes[0])
    with pytest.raises(tarnkit.RefusedError, match="does not stand"):
        document.group.remove(clamp)


def test_parameters(document):
    node = document.add("Math Expression")
    formula = node.parameters["Expression"]
    assert formula.kind == "string" and not formula.is_set and formula.node is node
    formula.value = "$x * $y"
    assert formula.is_set and [port.name for port in node.inputs] == ["x", "y"]
    kinds = {}
    for patch in tarnkit.patches:
        for parameter in document.add(patch).parameters:
            kinds.setdefault(parameter.kind, parameter)
    right = {"boolean": True, "number": 0.5, "index": 3, "string": "text",
             "color": tarnkit.Color(0, 1, 0, 1)}
    assert set(right) <= set(kinds)
    for kind, value in right.items():
        kinds[kind].value = value
        assert kinds[kind].value == value
        with pytest.raises(TypeError, match="parameter"):
            kinds[kind].value = object()
    with pytest.raises(TypeError, match="True or False"):
        kinds["boolean"].value = 1
    with pytest.raises(OverflowError):
        kinds["index"].value = 2**31
    assert kinds["index"].minimum <= 3 and kinds["string"].minimum is None


def test_replacing_a_patch_keeps_what_fits(wired):
    clamp = wired.add("Clamp")
    clamp.inputs["Value"].value = 7
    clamp.inputs["Minimum"].value = 1
    lost = clamp.replace_patch("Spring", keys={"Tarn.valueInput": "Tarn.numberInput"})
    assert clamp.patch.name == "Spring" and any("Tarn.minimumInput" in one for one in lost)
    clamp.patch = "Clamp"
    assert clamp.patch is tarnkit.patches["Clamp"]
    clamp.patch = None
    assert clamp.patch is None and len(clamp.ports) == 0


def test_images(document):
    image = document.images.add(PHOTO)
    assert document.images[image.key] is image and image.width > 0 and image.height > 0
    assert document.images.add(PHOTO.read_bytes()) is image and document.images.count(image) == 2
    again = tarnkit.Image(image.png())
    assert again.key == image.key and again is not image
    node = document.add("Image")
    (shown,) = [parameter for parameter in node.parameters if parameter.kind == "image"]
    shown.value = again
    assert shown.value is image and document.find(image=image)[0].node is node
    shown.value = None
    for _ in range(2):
        document.images.remove(image)
    assert len(document.images) == 0 and image.width > 0  # a value of its own
    with pytest.raises(tarnkit.FileError) as failed:
        document.images.add(ROOT / "README.md")
    assert failed.value.path.endswith("README.md") and failed.value.code
    with pytest.raises(tarnkit.FileError):
        tarnkit.Image(b"no picture")
    with pytest.raises(TypeError):
        tarnkit.Image(3)


def test_bulk(document):
    numpy = pytest.importorskip("numpy")
    nodes = [document.add("Clamp", name=str(i), position=(i, 2 * i)) for i in range(5)]
    positions = document.nodes.positions
    assert positions.shape == (5, 2) and positions.tolist()[3] == [3, 6]
    with document.step("Move"):
        document.nodes.positions = positions + numpy.array([10, 0])
    assert nodes[3].position == (13, 6)
    document.undo()
    assert nodes[3].position == (3, 6)
    nodes[2].inputs["Value"].value = 9
    document.add("Switch")
    assert document.nodes.names[:2] == ["0", "1"]
    assert document.nodes.values("Value") == [None, None, 9, None, None, None]
    assert document.nodes.values("Tarn.valueInput")[2] == 9
    with pytest.raises(ValueError, match="6 nodes"):
        document.nodes.positions = [[1, 2]]


def test_views_of_screen_order(document):
    group = document.add(tarnkit.Node())
    first, second = group.add("Image View"), group.add("Image View")
    assert group.group.views == [first, second]
    group.group.move_view(first, 5)
    assert group.group.views == [second, first] and group.is_view
    with pytest.raises(tarnkit.RefusedError):
        group.group.move_view(document.add("Clamp"), 0)
    document.group.arrange([document.nodes[-1]])
    assert document.nodes[1] is group


def test_port_groups(document):
    group = document.add(tarnkit.Node(name="Card"))
    spring = group.add("Spring")
    strength = spring.inputs[0].publish("Card: Strength")
    shown = [each for each in group.input_groups if each.is_published]
    assert [each.ports for each in shown] == [[strength]] and shown[0].is_input
    assert shown[0].node is group and shown[0].document is document
    assert f"{group.key}/inputs/{shown[0].key}" in repr(shown[0])
    own = spring.input_groups[0]
    heard = []
    document.observe("port_group_hidden_did_change", lambda notice: heard.append(notice.info))
    assert own is spring.input_groups[0] and not own.is_published and not own.hidden
    value = own.ports[0]
    value.value = 7
    own.hidden = True
    assert heard[0]["Hidden"] is True and heard[0]["PortGroup"] is own
    assert value not in list(spring.inputs) and value.exists and value.value == 7
    own.collapsed_on_canvas = own.collapsed_in_sidebar = True
    opened = tarnkit.open(document.to_bytes())
    again = opened.node(spring.key).input_groups[0]
    assert again.hidden and again.collapsed_on_canvas and again.collapsed_in_sidebar
    with pytest.raises(TypeError):
        own.hidden = 1
    strength.unpublish()
    assert not shown[0].exists
    with pytest.raises(tarnkit.GoneError):
        shown[0].hidden
    keys = [each.key for each in spring.output_groups]
    assert [each.key for each in spring.arrange_output_groups([*keys, "Other"])] == keys


def test_replicators(document):
    replicator = document.add("Replicator")
    clamps = [replicator.add("Clamp"), replicator.add("Clamp")]
    for clamp in clamps:
        clamp.outputs[0].publish()
    drawn = replicator.array_outputs
    assert set(drawn) == {clamp.outputs[0] for clamp in clamps}
    for port, key in drawn.items():
        assert replicator.outputs[key].exists
    replicator.array_outputs = {clamps[0].outputs[0]: "First", clamps[1].outputs[0]: "Second"}
    assert list(replicator.array_outputs.values()) == ["First", "Second"]
    assert replicator.outputs["First"].exists
    for wrong in ([], {clamps[0]: "x"}, {clamps[0].outputs[0]: 3}):
        with pytest.raises(TypeError):
            replicator.array_outputs = wrong
    assert clamps[0].array_outputs == {}
    with pytest.raises(tarnkit.RefusedError):
        clamps[0].array_outputs = {}


def test_groups_of_views_and_rehearsals(document):
    group = document.add(tarnkit.Node())
    image = group.add("Image")
    assert not group.holds_views and not group.group.views
    group.holds_views = True
    assert group.holds_views and group.nodes[0] is image
    group.holds_views = False
    assert not group.holds_views
    clamp = document.add("Clamp")
    clamp.inputs["Value"].value = 3
    lost = clamp.would_lose("Touch Interaction")
    assert lost and clamp.patch is tarnkit.patches["Clamp"]
    assert clamp.replace_patch("Touch Interaction") == lost
    inner = group.add("Clamp")
    published = inner.inputs["Value"].publish()
    wire = document.add("Clamp").outputs[0] >> published
    group.prune()
    assert wire.exists


def test_steps_that_become_one(document):
    node = document.add("Clamp")
    history = document.history
    for x in range(3):
        node.position = (x, 0)
    assert history.undo_count == 1 and history.byte_count > 0
    history.configure(gesture="another drag")
    node.position = (9, 0)
    assert history.undo_count == 2
    history.configure(interval=0.5, time=10)
    node.position = (10, 0)
    history.configure(time=10.2)
    node.position = (11, 0)
    before = history.undo_count
    history.configure(time=20)
    node.position = (12, 0)
    assert history.undo_count == before + 1
    node.selected = True
    assert history.undo_count == before + 1
    history.configure(records_view_state=True)
    node.selected = False
    assert history.undo_count == before + 2
    with document.step():
        with document.step():
            assert history.open_steps == 2
    history.coalesces = False
    node.position = (13, 0)
    node.position = (14, 0)
    assert history.undo_count == before + 4
