"""Files, history, the clipboard, comparing, checking, drawing, plug-ins."""

import io
import json
import os
import pathlib
import xml.dom.minidom

import pytest

import tarnkit
from conftest import PHOTO


def test_opening_and_saving_in_every_form(wired, tmp_path):
    wired.images.add(PHOTO)
    archive, text = tmp_path / "a.document", tmp_path / "a.json"
    wired.save(archive)
    wired.save(str(text))
    wired.save(tmp_path / "beside.json", images="pictures")
    stream = io.BytesIO()
    wired.save(stream)
    assert stream.getvalue() == archive.read_bytes() == wired.to_bytes()
    assert json.loads(text.read_text()) and text.read_text() == wired.to_text()
    assert list((tmp_path / "pictures").iterdir())
    again = tarnkit.open(archive).to_bytes()
    sources = [archive, os.fspath(text), tmp_path / "beside.json",
               io.BytesIO(stream.getvalue()), io.StringIO(wired.to_text())]
    for source in sources:
        assert tarnkit.open(source).to_bytes() == again
    for source in (wired.to_bytes(), bytearray(wired.to_bytes()), memoryview(wired.to_bytes())):
        assert tarnkit.open(source).to_bytes() == again
    fresh = tarnkit.open(wired.to_bytes(), keep_keys=False)
    assert fresh.nodes[0].key != wired.nodes[0].key
    assert tarnkit.open(wired.to_bytes(keys=False)).mended == []
    with pytest.raises(ValueError, match="archive"):
        wired.save(archive, form="yaml")


def test_failures_name_the_file_and_the_reason(wired, tmp_path):
    with pytest.raises(tarnkit.FileError) as failed:
        tarnkit.open(tmp_path / "none.document")
    assert failed.value.path == str(tmp_path / "none.document") and failed.value.code == "notFound"
    assert isinstance(failed.value, OSError) and failed.value.reason in str(failed.value)
    with pytest.raises(tarnkit.FileError):
        wired.save(tmp_path)
    data = wired.to_bytes()
    for damaged in (b"", b"{", b"bplist00", data[: len(data) // 2], b"\x00" * 100):
        with pytest.raises(tarnkit.FileError):
            tarnkit.open(damaged)
    for wrong in (None, 3, [b""]):
        with pytest.raises(TypeError):
            tarnkit.open(wrong)


def test_strangers_documents_open_or_are_refused(wired):
    """Every byte of a file changed in turn: nothing but a document or a FileError comes of it."""
    data = wired.to_bytes()
    for place in range(0, len(data), 7):
        changed = bytearray(data)
        changed[place] ^= 0x41
        try:
            document = tarnkit.open(changed)
        except tarnkit.FileError:
            continue
        for node in document.walk():
            repr(node), node.name, [port.value for port in node.ports], node.position
        repr(document.mended)


def test_sending(wired, tmp_path):
    image = wired.images.add(PHOTO)
    wired.send(tmp_path / "a.graph")
    assert (tmp_path / "a.graph").read_bytes() == wired.device_graph()
    assert wired.send_images(tmp_path / "images") == [image.key]
    assert (tmp_path / "images" / f"{image.key}.plist").exists()
    assert wired.save_images(tmp_path / "png") == [image.key]


def test_steps(document):
    clamp = document.add("Clamp")
    assert not document.undo() and not document.redo()
    with document.step("Tidy up") as history:
        clamp.position = (1, 2)
        with document.step("inner"):
            clamp.name = "Tidied"
        with pytest.raises(tarnkit.RefusedError, match="step"):
            document.undo()
    assert history is document.history and history.undo_name == "Tidy up"
    assert history.undo_count == 1 and history.is_modified
    assert document.undo() and clamp.name == "Clamp" and history.can_redo
    assert document.redo() and clamp.name == "Tidied"
    history.mark_clean()
    with pytest.raises(ZeroDivisionError), document.step("Fails"):
        clamp.name = "half"
        with document.step():
            document.add("Spring")
            1 / 0
    assert clamp.name == "Tidied" and len(document.nodes) == 1
    assert history.undo_count == 1 and not history.is_modified
    history.clear()
    assert not document.undo()


def test_clipboard_grouping_and_moving(wired):
    touch, toggle = wired.nodes
    data = tarnkit.copy_nodes([touch, toggle])
    other = tarnkit.Document()
    pasted = other.group.paste(data, offset=(5, 5))
    assert [node.name for node in pasted] == ["Finger", "Switch"] and len(other.connections) == 1
    assert pasted[1].position == (205, 45)
    copies = tarnkit.duplicate(toggle, keep_inputs=True)
    assert len(wired.connections) == 2 and copies[0].parent is wired
    group = tarnkit.group_nodes([toggle], "Inside")
    assert toggle.parent is group and wired.connections[-1].exists
    back = group.ungroup()
    assert back.nodes == [toggle] and back.lost == ((), ()) and not group.document
    room = wired.add(tarnkit.Node())
    assert tarnkit.move_nodes([toggle], room.group) == ((), ())
    assert tarnkit.remove_keeping_wires(copies) == []
    with pytest.raises(tarnkit.RefusedError):
        tarnkit.group_nodes([toggle, touch])
    with pytest.raises(tarnkit.RefusedError):
        tarnkit.copy_nodes([])
    with pytest.raises(tarnkit.FileError):
        other.group.paste(b"no clipboard")
    with pytest.raises(TypeError):
        tarnkit.copy_nodes([toggle, None])


def test_differences_and_merges(wired):
    base = tarnkit.open(wired.to_bytes())
    ours, theirs = tarnkit.open(base.to_bytes()), tarnkit.open(base.to_bytes())
    ours.nodes["Finger"].name = "Thumb"
    theirs.nodes["Finger"].name = "Index"
    theirs.nodes["Switch"].position = (1, 1)
    theirs.add("Clamp").inputs["Value"].value = 4
    difference = tarnkit.diff(base, theirs)
    kinds = [change.kind for change in difference]
    assert sorted(kinds) == ["nodeAdded", "nodeRenamed", "position"] and len(difference) == 3
    assert difference.has_content_changes and not tarnkit.diff(base, base)
    merged = tarnkit.merge(base, ours, theirs)
    (conflict,) = merged.conflicts
    assert (conflict.ours, conflict.theirs, conflict.taken) == ('"Thumb"', '"Index"', '"Thumb"')
    assert merged.has_open_conflicts and merged.document.nodes[0].name == "Thumb"
    assert len(merged.document.nodes) == 3
    assert not tarnkit.merge(base, ours, theirs, prefer="theirs").has_open_conflicts
    favored = {f"{conflict.address}: {conflict.subject}": "theirs"}
    chosen = tarnkit.merge(base, ours, theirs, favored=favored)
    assert chosen.document.nodes[0].name == "Index"
    node = base.nodes[0]
    difference.apply_to(base)
    assert base.to_bytes() == theirs.to_bytes() and base.nodes[0] is node
    with pytest.raises(tarnkit.Error):
        difference.apply_to(ours)
    assert "<html" in tarnkit.diff_page(ours, theirs)


def test_checks(wired):
    wired.images.add(PHOTO)
    formula = wired.add("Math Expression")
    formula.parameters["Expression"].value = "2 + * 3"
    findings = wired.check()
    (wrong,) = [one for one in findings if one.code == "expression-syntax"]
    assert wrong.severity == "error" and wrong.place.node is formula and wrong.code in str(wrong)
    assert wired.check(only=["image-unused"]) and not wired.check(ignored={one.code for one in findings})
    fixed = wired.repair()
    assert [one.code for one in fixed] == ["image-unused"] and len(wired.images) == 0
    with pytest.raises(ValueError, match="no check"):
        wired.check(only=["nonsense"])


def test_pictures(wired):
    for svg in (wired._repr_svg_(), wired.group.to_svg(theme="dark", caption=False)):
        picture = xml.dom.minidom.parseString(svg)
        assert len(picture.getElementsByTagName("path")) > 0
    assert "Finger" in wired.to_html() and wired.group._repr_svg_() == wired.to_svg()
    with pytest.raises(ValueError):
        wired.to_svg(theme="blue")
    with pytest.raises(tarnkit.RefusedError):
        wired.nodes[0].to_svg()


def test_refusals_are_told_and_not_logged_and_the_rest_is_logged(wired, caplog):
    with pytest.raises(tarnkit.RefusedError):
        wired.nodes[0].outputs[0] >> wired.nodes[0].outputs[0]
    assert not caplog.records
    text = json.loads(wired.to_text())
    with pytest.raises(tarnkit.FileError, match="line"):
        tarnkit.open(json.dumps({**text, "nodes": [{"patch": "Nobody knows", "x": []}]}).encode())


def test_plugins(tmp_path):
    (tmp_path / "no.so").write_bytes(b"nothing")
    with pytest.raises(tarnkit.FileError):
        tarnkit.load_plugin(tmp_path / "no.so")
    plugin = os.environ.get("TARNKIT_PLUGIN")
    if not plugin:
        pytest.skip("the example plug-in is not built")
    tarnkit.load_plugin(plugin)
    tarnkit.load_plugin(plugin)
    document = tarnkit.Document()
    node = document.add("Staircase")
    assert node.patch is tarnkit.patches["Staircase"]
    steps = node.parameters[0]
    before = len(node.outputs)
    steps.value += 2
    assert len(node.outputs) == before + 2
    again = tarnkit.open(document.to_bytes())
    assert again.nodes[0].parameters[0].value == steps.value
