"""The plain values and the exceptions of the module: everything that is no part of a living
document."""

from __future__ import annotations

import dataclasses
import math
import typing


class Error(Exception):
    """What every exception of this module derives from."""


class GoneError(Error, ReferenceError):
    """What was asked is no part of a document any more: its document has come to its end, or it
    was taken out of it (a broken connection, a port that its patch does not have any more).

    What an undo brings back can be asked again.
    """


class RefusedError(Error):
    """A rule of the model forbids it; nothing has changed.

    ``reason`` is one sentence without its full stop, ``code`` a word for programs ("kind",
    "insideItself", ...), empty where there is only the sentence.
    """

    reason: str
    code: str

    def __init__(self, reason: str, code: str = "") -> None:
        super().__init__(reason, code)
        self.reason = reason
        self.code = code

    def __str__(self) -> str:
        return self.reason


class FileError(Error, OSError):
    """A file, or what should have stood in it, could not be read or written.

    ``code`` tells programs what it was ("notFound", "damaged", "noSpace", ...), ``reason`` is one
    sentence for people, ``path`` the file, or None where it is about bytes.
    """

    path: typing.Optional[str]
    code: str
    reason: str

    def __init__(self, reason: str, code: str = "", path: typing.Optional[str] = None) -> None:
        super().__init__(reason, code, path)
        self.reason = reason
        self.code = code
        self.path = path
        self.filename = path

    def __str__(self) -> str:
        return f"{self.path}: {self.reason}" if self.path else self.reason


class ExpressionError(Error, ValueError):
    """A text is no expression, or it has no value.

    ``code`` is the engine's number, ``reason`` one sentence, ``text`` the expression, ``name`` the
    variable or function that nobody knows, or None. ``offset`` and ``length`` are the characters of
    the text that it is about, None where it is about no place.
    """

    def __init__(
        self,
        reason: str,
        code: int = 0,
        text: str = "",
        name: typing.Optional[str] = None,
        offset: typing.Optional[int] = None,
        length: typing.Optional[int] = None,
    ) -> None:
        super().__init__(reason, code, text, name, offset, length)
        self.reason = reason
        self.code = code
        self.text = text
        self.name = name
        self.offset = offset
        self.length = length

    def __str__(self) -> str:
        return self.reason


class Point(typing.NamedTuple):
    """A point on the canvas, in canvas units, y growing downward."""

    x: float
    y: float


class Color(typing.NamedTuple):
    """A colour: red, green, blue and alpha, each 0 to 1, not premultiplied."""

    red: float
    green: float
    blue: float
    alpha: float = 1.0

    @classmethod
    def from_hex(cls, text: str) -> Color:
        """The colour of a text such as "#3366cc" or "#3366cc80"."""
        digits = text[1:] if text.startswith("#") else text
        try:
            if len(digits) not in (6, 8):
                raise ValueError
            parts = bytes.fromhex(digits)
        except ValueError:
            raise ValueError(f"{text!r} is no colour such as '#3366cc'") from None
        return cls(*(part / 255 for part in parts))

    @property
    def hex(self) -> str:
        """Such as "#3366cc", with the alpha behind it unless it is 1; rounded to 8 bits each."""
        parts = [round(255 * min(max(part, 0.0), 1.0)) for part in self]
        return "#" + bytes(parts if parts[3] != 255 else parts[:3]).hex()


@dataclasses.dataclass(frozen=True)
class Angle:
    """An angle, in the unit in which it was given: ``Angle.of_degrees(90)``.

    Angles of different units are different values, since a document keeps the unit.
    """

    value: float
    unit: str = "degrees"

    def __post_init__(self) -> None:
        if self.unit not in ("degrees", "radians"):
            raise ValueError(f"an angle is in degrees or radians, not in {self.unit!r}")

    @classmethod
    def of_degrees(cls, value: float) -> Angle:
        """An angle in degrees."""
        return cls(value, "degrees")

    @classmethod
    def of_radians(cls, value: float) -> Angle:
        """An angle in radians."""
        return cls(value, "radians")

    @property
    def degrees(self) -> float:
        """The angle in degrees."""
        return self.value if self.unit == "degrees" else math.degrees(self.value)

    @property
    def radians(self) -> float:
        """The angle in radians."""
        return self.value if self.unit == "radians" else math.radians(self.value)


@dataclasses.dataclass(frozen=True)
class Notice:
    """What an observer is given: that something has changed.

    ``object`` is what announces it, ``info`` what comes along, by its name: ``notice.info["Node"]``.
    Things of the document that Python has no class for are given as their description.
    """

    name: str
    object: typing.Any
    info: typing.Mapping[str, typing.Any]

    @property
    def node(self) -> typing.Any:
        """The node that it is about, or None."""
        return self.info.get("Node")


@dataclasses.dataclass(frozen=True)
class Change:
    """One change that leads from a document to another.

    ``kind`` says what it is ("nodeAdded", "valueChanged", ...), ``address`` where, ``subject`` at
    which port, parameter or image; ``old`` and ``new`` what stood and stands there, as people read
    it. ``consequences`` is what went along with it.
    """

    kind: str
    address: str
    subject: str
    old: str
    new: str
    description: str
    consequences: typing.Tuple[str, ...]
    is_view_state: bool

    def __str__(self) -> str:
        return f"{self.address}: {self.description}"


@dataclasses.dataclass(frozen=True)
class Conflict:
    """One place where two branches of a document do not go together, and what was taken."""

    kind: str
    address: str
    subject: str
    ours: str
    theirs: str
    taken: str
    is_decided: bool
    description: str

    def __str__(self) -> str:
        return self.description


@dataclasses.dataclass(frozen=True)
class Finding:
    """One thing that is wrong, or looks wrong, in a document.

    ``severity`` is "error", "warning" or "note", ``code`` the name by which docs/checks.md tells of
    it. ``place`` is the node, port, parameter or image, or None; ``suggestion`` is empty where
    nobody can say what would be right. ``offset`` is where in a text of the place the fault begins.
    """

    code: str
    severity: str
    address: str
    key: str
    sentence: str
    suggestion: str
    is_fixable: bool
    offset: typing.Optional[int]
    place: typing.Any

    def __str__(self) -> str:
        return f"{self.address}: {self.severity}: {self.sentence} [{self.code}]"


@dataclasses.dataclass(frozen=True)
class Match:
    """A node that was found, the port that was looked for (or None), and where it stands."""

    node: typing.Any
    port: typing.Any
    address: str


@dataclasses.dataclass(frozen=True)
class Merge:
    """What a merge came to: the merged document, and what did not go together."""

    document: typing.Any
    conflicts: typing.Tuple[Conflict, ...]

    @property
    def has_open_conflicts(self) -> bool:
        """Whether nobody had decided one of the conflicts."""
        return any(not conflict.is_decided for conflict in self.conflicts)


class Losses(typing.NamedTuple):
    """What could not come along when nodes went to another group, one sentence each."""

    connections: typing.Tuple[str, ...]
    publications: typing.Tuple[str, ...]


class Ungrouped(typing.NamedTuple):
    """The nodes that were inside of a group that was taken apart, and what was lost."""

    nodes: typing.List[typing.Any]
    lost: Losses




def _open_document(data: bytes) -> typing.Any:
    """What a pickled document is made again by."""
    from tarnkit import _tarnkit

    return _tarnkit.open(data)


def _patch_of_class(name: str) -> typing.Any:
    """What a pickled patch is found again by."""
    from tarnkit import patches

    return patches[name]
