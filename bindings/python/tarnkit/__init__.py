"""Tarnkit: documents of an editor for interactive prototypes, to be read, edited, checked, compared
and drawn.

    import tarnkit

    document = tarnkit.Document()
    touch = document.add("Touch Interaction")
    toggle = document.add("Switch", position=(200, 40))
    touch.outputs["Down"] >> toggle.inputs["Toggle"]
    document.save("touch.document")

docs/python.md is the manual.
"""

from __future__ import annotations

import collections.abc
import difflib
import typing

from tarnkit import _tarnkit
from tarnkit._tarnkit import (
    Connection,
    Connections,
    Difference,
    Document,
    Evaluator,
    Expression,
    Group,
    History,
    Image,
    Images,
    Node,
    Nodes,
    Observation,
    Parameter,
    Parameters,
    Patch,
    PatchPort,
    Port,
    PortGroup,
    Ports,
    PublishedPort,
    Step,
    copy_nodes,
    diff,
    diff_page,
    duplicate,
    group_nodes,
    live_objects,
    load_plugin,
    merge,
    move_nodes,
    notices,
    open,
    remove_keeping_wires,
)
from tarnkit._types import (
    Angle,
    Change,
    Color,
    Conflict,
    Error,
    ExpressionError,
    FileError,
    Finding,
    GoneError,
    Losses,
    Match,
    Merge,
    Notice,
    Point,
    RefusedError,
    Ungrouped,
)
from tarnkit._version import __version__


class Patches(typing.Mapping[str, Patch]):
    """The catalogue: every patch that can be placed, those of plug-ins too, by the name of its class
    or by that which people see. Goes through the names of the classes."""

    def __getitem__(self, name: str) -> Patch:
        found = _tarnkit._patch_named(name)
        if found is None:
            names = [each for patch in _tarnkit._catalogue() for each in (patch.name, patch.class_name)]
            close = difflib.get_close_matches(name, names, 1)
            hint = f"; did you mean {close[0]!r}?" if close else ""
            raise KeyError(f"there is no patch {name!r}{hint}")
        return found

    def __contains__(self, name: object) -> bool:
        return isinstance(name, str) and _tarnkit._patch_named(name) is not None

    def __iter__(self) -> typing.Iterator[str]:
        return (patch.class_name for patch in _tarnkit._catalogue())

    def __len__(self) -> int:
        return len(_tarnkit._catalogue())

    def __repr__(self) -> str:
        return f"<tarnkit.Patches, {len(self)} patches>"

    def listed(self) -> typing.List[Patch]:
        """Those that the library lists, by category."""
        return [patch for patch in _tarnkit._catalogue() if not patch.is_hidden]


patches = Patches()

for _view in (Connections, Images, Nodes, Parameters, Ports):
    collections.abc.Sequence.register(_view)
del _view

__all__ = [
    "Angle",
    "Change",
    "Color",
    "Conflict",
    "Connection",
    "Connections",
    "Difference",
    "Document",
    "Error",
    "Evaluator",
    "Expression",
    "ExpressionError",
    "FileError",
    "Finding",
    "GoneError",
    "Group",
    "History",
    "Image",
    "Images",
    "Losses",
    "Match",
    "Merge",
    "Node",
    "Nodes",
    "Notice",
    "Observation",
    "Parameter",
    "Parameters",
    "Patch",
    "PatchPort",
    "Patches",
    "Point",
    "Port",
    "PortGroup",
    "Ports",
    "PublishedPort",
    "RefusedError",
    "Step",
    "Ungrouped",
    "__version__",
    "copy_nodes",
    "diff",
    "diff_page",
    "duplicate",
    "group_nodes",
    "live_objects",
    "load_plugin",
    "merge",
    "move_nodes",
    "notices",
    "open",
    "patches",
    "remove_keeping_wires",
]
