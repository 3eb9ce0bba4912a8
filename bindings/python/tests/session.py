"""A random editing session, performed through the module and written down as a script for the host.

Runs in an interpreter of its own, `python3 session.py SEED COUNT FOLDER`, so that keys are drawn in
the same order as in the host's process. Leaves "script" for `tarnkit run`, and "told.json": the
notices of each operation, which operations were refused, and the document at the end."""

import json
import pathlib
import random
import re
import sys

import tarnkit

FORMULAS = ["$a + $b", "sqrt($x ** 2 + $y ** 2)", "$a", "2 +", "", "max($a, $b, $c)"]
FAVOURITES = ["Math Expression", "Replicator", "Multiplexer", "Switch", "Clamp", "Spring",
              "Touch Interaction", "Option Picker", "Image", "Layer Group"]
WORDS = [None, "Thumb", "Page: Dot", "Größe", "Old 1", "x"]


def word(thing):
    """What a notice carries, as it can be compared with the host's trace."""
    if isinstance(thing, tarnkit.Angle):
        return {thing.unit: thing.value}
    if isinstance(thing, (list, tuple)):
        return [word(each) for each in thing]
    if thing is None or isinstance(thing, (bool, int, float, str)):
        return thing
    if isinstance(thing, tarnkit.Document):
        return thing.key
    if isinstance(thing, tarnkit.History):
        return "HXHistory"
    if isinstance(thing, tarnkit.PortGroup):
        return re.fullmatch(r"<tarnkit\.PortGroup (.*?)(, gone)?>", repr(thing)).group(1)
    return re.match(r"<tarnkit\.\w+ ([^\s,>]*)", repr(thing)).group(1)


def kind_of(value, default):
    """A value of a port as the host's scripts write it."""
    if value is None:
        return None
    if isinstance(value, bool):
        return {"kind": "boolean", "value": value}
    if isinstance(value, str):
        return {"kind": "string", "value": value}
    if isinstance(value, tarnkit.Color):
        return {"kind": "color", "value": list(value)}
    if isinstance(value, tarnkit.Angle):
        return {"kind": value.unit, "value": value.value}
    if isinstance(default, tarnkit.Angle):
        return {"kind": default.unit, "value": value}
    is_index = isinstance(default, int) and not isinstance(default, bool) and isinstance(value, int)
    return {"kind": "index" if is_index else "number", "value": value}


class Session:
    def __init__(self, seed):
        self.random = random.Random(seed)
        self.script, self.told, self.refused = [], [], []
        self.made, self.wires, self.copies, self.steps = {}, {}, [], []
        catalogue = list(tarnkit.patches.values())
        self.patches = catalogue + [tarnkit.patches[name] for name in FAVOURITES
                                    if name in tarnkit.patches] * 12
        self.document = self.perform("newDocument", tarnkit.Document)
        self.history = self.document.history
        self.document.observe(None, self.hear)

    def hear(self, notice):
        info = {name: word(value) for name, value in notice.info.items()}
        self.told[-1].append([notice.name, word(notice.object), info])

    def perform(self, do, action, **arguments):
        """Does it, and writes it down; None where it was refused."""
        self.script.append({"do": do, **{name.rstrip("_"): value
                                         for name, value in arguments.items()}})
        self.told.append([])
        try:
            return action()
        except tarnkit.RefusedError:
            self.refused.append(len(self.script) - 1)
            return None

    # What there is to choose from.

    def some(self, things):
        things = list(things)
        return self.random.choice(things) if things else None

    def nodes(self):
        return list(self.document.walk())

    def groups(self):
        return [self.document, *(node for node in self.nodes() if node.group)]

    def loose(self):
        return [node for node in self.made.values()
                if node.exists and node.document is None and node.parent is None]

    def siblings(self):
        group = self.some(self.groups())
        nodes = list(group.nodes)
        return self.random.sample(nodes, min(len(nodes), self.random.randrange(1, 4)))

    def port(self, side):
        node = self.some(self.nodes())
        # The keys of a replicator's outputs are drawn at random in each process.
        return self.some(port for port in getattr(node, side) if "Replicator" not in port.key
                         ) if node else None

    def point(self):
        return [self.random.randrange(-500, 500), self.random.randrange(-500, 500)]

    def keep(self, node):
        """Alive until the end, as the host keeps what has a name."""
        if node is not None:
            self.made[node.key] = node

    @staticmethod
    def keys(nodes):
        return [node.key for node in nodes]

    @staticmethod
    def address(port):
        return f"{port.node.key}/{port.key}"

    # The operations.

    def add_new(self):
        name = f"node {len(self.script)}"
        if self.random.random() < 0.2:
            node = self.perform("newNode", tarnkit.Node, as_=name)
            self.script.append({"do": "setForceAllowsSubnodes", "node": node.key, "value": True})
            self.told.append([])
        else:
            patch = self.some(self.patches)
            node = self.perform("newNode", lambda: tarnkit.Node(patch), patch=patch.class_name,
                                as_=name)
        self.keep(node)
        if node is not None:
            self.add(node)

    def add(self, node=None):
        node = node or self.some(self.loose() + self.nodes()[:3])
        target = self.some(self.groups())
        if node is not None:
            self.perform("addNode", lambda: target.group.add(node), node=node.key, to=target.key)

    def remove(self):
        node = self.some(self.nodes())
        if node is not None:
            self.perform("removeNode", node.remove, node=node.key)

    def set_attribute(self):
        node = self.some(self.nodes() + self.loose())
        if node is None:
            return
        do, attribute, value = self.some([
            ("setName", "name", self.some(WORDS)), ("setPosition", "position", self.point()),
            ("setSelected", "selected", self.random.random() < 0.5),
            ("setInspectorPanel", "inspector_panel", self.random.randrange(4)),
            ("setForceAllowsSubnodes", "allows_subnodes", self.random.random() < 0.5)])
        self.perform(do, lambda: setattr(node, attribute, value), node=node.key, value=value)

    def set_group(self):
        target = self.some(self.groups())
        group = target.group
        do, attribute, value = self.some([
            ("setCanvasCenter", "canvas_center", self.point()),
            ("setOpaque", "is_opaque", self.random.random() < 0.5)])
        self.perform(do, lambda: setattr(group, attribute, value), node=target.key, value=value)

    def swap_group(self):
        node = self.some(self.nodes())
        if node is not None and node.group:
            views = self.random.random() < 0.5
            self.perform("swapSubnodeGroup", lambda: setattr(node, "holds_views", views),
                         node=node.key, to="view" if views else "group")

    def move_view(self):
        group = self.some(target.group for target in self.groups() if target.group.views)
        if group is not None:
            node, index = self.some(group.views), self.random.randrange(5)
            self.perform("moveSubview", lambda: group.move_view(node, index), node=node.key,
                         index=index)

    def set_port_group(self):
        node = self.some(self.nodes())
        side = self.random.choice(["input_groups", "output_groups"])
        group = self.some(getattr(node, side)) if node is not None else None
        if group is not None:
            flag, attribute = self.some([("hidden", "hidden"),
                                         ("collapsedCanvasGroup", "collapsed_on_canvas"),
                                         ("collapsedSidebarGroup", "collapsed_in_sidebar")])
            value = self.random.random() < 0.5
            self.perform("setPortGroup", lambda: setattr(group, attribute, value), node=node.key,
                         group=group.key, orientation=1 if group.is_input else 2, **{flag: value})

    def set_parameter(self):
        node = self.some(node for node in self.nodes() if len(node.parameters))
        parameter = self.some(node.parameters) if node is not None else None
        if parameter is None or parameter.kind == "image":
            return
        value = {"boolean": self.random.random() < 0.5, "index": self.random.randrange(-2, 8),
                 "number": self.random.randrange(-8, 8) / 4, "string": self.some(FORMULAS),
                 "color": [0.5, 0.25, 1, 1]}[parameter.kind]
        self.perform("setParameter", lambda: setattr(parameter, "value", value), node=node.key,
                     parameter=parameter.key, value=value)

    def set_value(self):
        port = self.port("inputs")
        if not isinstance(port, tarnkit.PatchPort):
            return
        value = self.some([None, True, 0, 3, 0.5, "text", tarnkit.Angle(90),
                           tarnkit.Angle(0.5, "radians"), tarnkit.Color(1, 0.5, 0.25)])
        self.perform("setStaticValue", lambda: setattr(port, "value", value),
                     port=self.address(port), value=kind_of(value, port.default))
        if self.refused[-1:] == [len(self.script) - 1]:
            # The host sets a value where only a connection counts; the module does not.
            self.script.pop()
            self.told.pop()
            self.refused.pop()

    def wire(self):
        for _ in range(20):
            output, input_ = self.port("outputs"), self.port("inputs")
            if output is None or input_ is None:
                return
            if output.why_not_connect(input_) is None or self.random.random() < 0.05:
                break
        name = f"wire {len(self.script)}"
        wire = self.perform("wire", lambda: output >> input_, from_=self.address(output),
                            to=self.address(input_), as_=name)
        if wire is not None:
            self.wires[name] = wire

    def break_(self):
        name = self.some(name for name, wire in self.wires.items()
                         if wire.exists and wire.document is not None)
        if name is not None:
            self.perform("break", self.wires[name].remove, connection=name)

    def break_all(self):
        port = self.port("ports")
        if port is not None and port.resolved is not None:
            self.perform("breakAll", port.disconnect, port=self.address(port.resolved))

    def publish(self):
        port = self.port("ports")
        if port is not None and port.published is None:
            self.perform("publish", port.publish, port=self.address(port))

    def published(self):
        node = self.some(target for target in self.groups()[1:]
                         if target.group.published_inputs or target.group.published_outputs)
        return self.some(node.group.published_inputs + node.group.published_outputs) if node else None

    def unpublish(self):
        port = self.published()
        if port is not None and port.port is not None:
            self.perform("unpublish", port.unpublish, port=self.address(port.port))

    def rename_port(self):
        port = self.published()
        if port is not None:
            name = self.some(WORDS[1:])
            self.perform("renamePort", lambda: setattr(port, "name", name),
                         symbolicPort=self.address(port), name=name)

    def group(self):
        nodes = self.siblings()
        if nodes:
            node = self.perform("group", lambda: tarnkit.group_nodes(nodes, "Grouped"),
                                nodes=self.keys(nodes), name="Grouped",
                                as_=f"node {len(self.script)}")
            self.keep(node)

    def ungroup(self):
        node = self.some(self.nodes())
        if node is not None:
            self.perform("ungroup", node.ungroup, node=node.key)

    def move(self):
        nodes, target = self.siblings(), self.some(self.groups())
        if nodes:
            self.perform("moveNodes", lambda: tarnkit.move_nodes(nodes, target.group),
                         nodes=self.keys(nodes), to=target.key)

    def copy(self):
        nodes = self.siblings()
        if nodes:
            name = f"copy {len(self.script)}"
            data = self.perform("copy", lambda: tarnkit.copy_nodes(nodes), nodes=self.keys(nodes),
                                as_=name)
            if data is not None:
                self.copies.append((name, data))

    def paste(self):
        if self.copies and len(self.nodes()) < 150:
            (name, data), target, by = self.some(self.copies), self.some(self.groups()), self.point()
            self.perform("paste", lambda: target.group.paste(data, offset=by), clipboard=name,
                         to=target.key, offset=by)

    def duplicate(self):
        nodes, by = self.siblings(), self.point()
        if nodes and len(self.nodes()) < 150:
            keeps = self.random.random() < 0.5
            self.perform("duplicate",
                         lambda: tarnkit.duplicate(nodes, offset=by, keep_inputs=keeps),
                         nodes=self.keys(nodes), offset=by, keepInputs=keeps)

    def replace(self):
        node, patch, names = self.some(self.nodes()), self.some(self.patches), self.some([True, False])
        if node is not None:
            self.perform("replacePatch", lambda: node.replace_patch(patch, match_names=names),
                         node=node.key, patch=patch.class_name, byName=names)

    def prune(self):
        node = self.some(self.nodes())
        if node is not None:
            self.perform("prune", node.prune, node=node.key)

    def undo(self):
        for _ in range(self.random.randrange(1, 4)):
            self.perform("undo", self.document.undo)
        for _ in range(self.random.randrange(3)):
            self.perform("redo", self.document.redo)

    def step(self):
        choice = self.random.random()
        if not self.steps or (choice < 0.3 and len(self.steps) < 3):
            name = self.some(WORDS[1:])
            step = self.document.step(name)
            self.perform("beginStep", step.__enter__, name=name)
            self.steps.append(step)
        elif choice < 0.45 and len(self.steps) == 1:
            self.perform("abandonStep", lambda: self.steps.pop().__exit__(ValueError, None, None))
        else:
            self.perform("endStep", lambda: self.steps.pop().__exit__(None, None, None))

    def run(self, count):
        weights = {self.add_new: 8, self.add: 3, self.remove: 3, self.set_attribute: 6,
                   self.set_group: 1, self.swap_group: 1, self.move_view: 2, self.set_port_group: 2,
                   self.set_parameter: 5, self.set_value: 5, self.wire: 12, self.break_: 3,
                   self.break_all: 2, self.publish: 5, self.unpublish: 2, self.rename_port: 2,
                   self.group: 2, self.ungroup: 2, self.move: 2, self.copy: 2, self.paste: 2,
                   self.duplicate: 1, self.replace: 3, self.prune: 1, self.undo: 6, self.step: 6}
        while len(self.script) < count:
            self.random.choices(list(weights), list(weights.values()))[0]()
        while self.steps:
            self.perform("endStep", lambda: self.steps.pop().__exit__(None, None, None))


def main():
    seed, count, folder = int(sys.argv[1]), int(sys.argv[2]), pathlib.Path(sys.argv[3])
    session = Session(seed)
    session.run(count)
    saved = {"0": session.document.to_bytes(keys=False), "3": session.document.to_bytes()}
    (folder / "script").write_text("".join(json.dumps(line) + "\n" for line in session.script))
    (folder / "told.json").write_text(json.dumps({
        "told": session.told, "refused": session.refused,
        "saved": {form: data.hex() for form, data in saved.items()}}))


if __name__ == "__main__":
    main()
