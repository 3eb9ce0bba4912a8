"""Observers: what they are given, how long they last, what they may do."""

import gc
import sys

import pytest

import tarnkit


def test_what_is_announced(document):
    heard = []
    document.observe("node_name_did_change", lambda n: heard.append((n.node, n.info["Name"])))
    document.observe("HXGroupAddNodeNotification", lambda n: heard.append((n.name, n.object)))
    node = document.add("Clamp", name="Made before it is there")
    node.name = "Limits"
    node.name = "Limits"
    other = tarnkit.Document()
    other.add("Clamp").name = "Elsewhere"
    assert heard == [("group_add_node", document.group), (node, "Limits")]
    with pytest.raises(ValueError, match="tarnkit.notices"):
        document.observe("node_renamed", print)
    with pytest.raises(TypeError):
        document.observe(None, "no function")


def test_every_name_is_one_in_both_spellings(document):
    assert len(set(tarnkit.notices)) == len(tarnkit.notices) > 30
    for name in tarnkit.notices:
        document.observe(name, print).cancel()


def test_values_that_come_along(document):
    heard = {}
    document.observe(None, lambda n: heard.setdefault(n.name, n.info))
    port = document.add("Clamp").inputs["Value"]
    port.value = 3
    assert heard["patch_port_static_value_did_change"]["StaticValue"] == 3
    del port.value
    heard.clear()
    port.value = 4
    assert heard["patch_port_static_value_did_change"]["Port"] is port


class Canvas:
    def __init__(self, document):
        self.heard = []
        self.observation = document.observe("group_add_node", self.hear)

    def hear(self, notice):
        self.heard.append(notice.node)


def test_a_method_is_held_weakly_and_a_function_is_not(document):
    canvas = Canvas(document)
    counts = []
    document.observe("group_add_node", lambda notice: counts.append(1))
    node = document.add("Clamp")
    assert canvas.heard == [node] and canvas.observation.is_active
    observation = canvas.observation
    del canvas, node
    gc.collect()
    document.add("Clamp")
    assert not observation.is_active and len(counts) == 2


def test_cancelling_and_outliving():
    document = tarnkit.Document()
    heard = []
    with document.observe("group_add_node", lambda n: heard.append(1)) as observation:
        document.add("Clamp")
    document.add("Clamp")
    assert heard == [1] and not observation.is_active
    last = document.observe(None, lambda n: heard.append(2))
    del document
    gc.collect()
    assert not last.is_active
    last.cancel()


def test_what_a_callback_raises_is_told_and_stops_nobody(document, monkeypatch):
    told = []
    monkeypatch.setattr(sys, "unraisablehook", lambda args: told.append(args.exc_value))
    heard = []

    def fail(notice):
        raise ZeroDivisionError("from a callback")

    document.observe("group_add_node", fail)
    document.observe("group_add_node", lambda n: heard.append(n.node))
    node = document.add("Clamp")
    assert [str(one) for one in told] == ["from a callback"] and heard == [node]
    told.clear()


def test_callbacks_may_edit_cancel_and_observe(document):
    def once(notice):
        observation.cancel()
        document.add("Spring", name="added by an observer")
        document.observe("node_name_did_change", lambda n: names.append(n.info["Name"]))

    names = []
    observation = document.observe("group_add_node", once)
    first = document.add("Clamp")
    first.name = "Renamed"
    assert [node.name for node in document.nodes] == ["Renamed", "added by an observer"]
    assert names == ["Renamed"]

    def vanish(notice):
        notice.node.remove()

    document.observe("group_add_node", vanish)
    document.add("Clamp")
    assert len(document.nodes) == 2
