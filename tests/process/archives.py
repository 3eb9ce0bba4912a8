"""Documents that have something of everything, as files of each kind, for tests of the formats."""

import json
import plistlib
import subprocess

from host import HOST, ROOT, op

PHOTOS = ROOT / "examples/photos"


def everything(folder):
    """A session that makes every class of the model, with every key there and missing."""
    catalogue = json.loads(subprocess.run([HOST, "catalogue", "--json", "--all"],
                                          capture_output=True, check=True).stdout)
    operations = [op("newDocument", as_="document")]
    add = operations.append
    for patch in catalogue:
        name = patch["class"]
        add(op("newNode", as_=name, patch=name))
        add(op("addNode", node=name, to="document"))
    add(op("newNode", as_="bare", patch=None))
    add(op("addNode", node="bare", to="document"))

    # Static values of every kind, parameters of every kind.
    for port, value in [("boolean", {"kind": "boolean", "value": False}),
                        ("index", {"kind": "index", "value": -7}),
                        ("number", {"kind": "number", "value": 0.1}),
                        ("angle", {"kind": "degrees", "value": 30}),
                        ("mappedAngle", {"kind": "radians", "value": 1.5}),
                        ("color", {"kind": "color", "value": [0.125, 0.25, 0.375, 0.5]}),
                        ("string", {"kind": "string", "value": "text"}),
                        ("mappedString", {"kind": "nil"})]:
        add(op("setStaticValue", port=f"HXRDebugNode/Tarn.{port}Input", value=value))
    add(op("addImage", file=str(PHOTOS / "northern-lights.png"), as_="picture"))
    add(op("setParameter", node="HXRDebugNode", parameter="Tarn.imageParameter", value="picture"))
    add(op("setParameter", node="HXRDebugNode", parameter="Tarn.singleLineStringParameter",
           value="words"))

    # Publications through two levels, with wires at both ends; a wire within one group.
    for name, to in [("outer", "document"), ("inner", "outer"), ("array", "HXRReplicatorNode")]:
        add(op("newNode", as_=name, patch=None))
        add(op("setForceAllowsSubnodes", node=name, value=True))
        add(op("addNode", node=name, to=to))
        add(op("newNode", as_=name + "Clamp", patch="HXRClampNode"))
        add(op("addNode", node=name + "Clamp", to=name))
        add(op("publish", port=name + "Clamp/Tarn.resultOutput", as_=name + "Result"))
    add(op("publish", port="innerClamp/Tarn.valueInput", as_="innerValue"))
    add(op("publish", port="innerValue", as_="outerValue"))
    add(op("publish", port="innerResult", as_="outerInnerResult"))
    add(op("publish", port="arrayResult", as_="replicated"))
    add(op("wire", **{"from": "HXRClampNode/Tarn.resultOutput", "to": "outerValue"}))
    add(op("wire", **{"from": "outerInnerResult", "to": "HXRClampNode/Tarn.minimumInput"}))
    add(op("wire", **{"from": "innerResult", "to": "outerClamp/Tarn.valueInput"}))

    # Nodes of every kind inside of nodes of every kind, wired to each other.
    for patch in ("HXRReplicatorNode", "HXRLoopNode", "HXRRemoteGroupNode", "HXRViewNode"):
        for inner in ("HXRClampNode", "HXRReplicatorNode", "HXRLoopNode", "HXRRemoteGroupNode",
                      "HXRRemoteGroupProcessorNode", "HXRImageNode"):
            add(op("newNode", as_=patch + inner, patch=inner))
            add(op("addNode", node=patch + inner, to=patch))
        add(op("wire", **{"from": patch + "HXRClampNode/Tarn.resultOutput",
                          "to": patch + "HXRLoopNode/Tarn.loopsInput"}))
    add(op("publish", port="HXRReplicatorNodeHXRClampNode/Tarn.resultOutput"))
    for name in ("HXLoopNode", "HXReplicatorNode", "HXRemoteGroupNode",
                 "HXRemoteGroupProcessorNode"):
        add(op("newNode", as_=name, class_=name, patch="HXRMultiplexerNode"))
        add(op("addNode", node=name, to="document"))
    add(op("save", file=str(folder / "plain.document")))
    add(op("save", file=str(folder / "keys.document"), codingType=3))
    add(op("send", file=str(folder / "whole.graph")))
    add(op("sendImages", directory=str(folder / "images")))
    return operations


def bend(archive):
    """What only files of elsewhere say: a patch that nobody knows, publications and wires that lack
    something, an image without a picture, a node with a comment."""
    objects = archive["$objects"]

    def of_class(name):
        return [o for o in objects if isinstance(o, dict) and "$class" in o
                and objects[o["$class"].data]["$classname"] == name]

    objects[objects.index("HXRDebugNode")] = "HXRUnheardOfNode"
    published = of_class("HXSymbolicPort")
    del published[0]["HXSymbolicPort.port"], published[1]["HXSymbolicPort.name"]
    for wire, end in zip(of_class("HXConnection"),
                         ("outputPort", "inputPort", "displayOutputPort", "displayInputPort")):
        del wire[f"HXConnection.{end}"]
    del of_class("HXImageStoreEntry")[0]["HXImageStoreEntry.image"]
    objects.append("a comment")
    of_class("HXNode")[0]["HXNode.comment"] = plistlib.UID(len(objects) - 1)
    return archive


def host(*arguments, input=None):
    subprocess.run([HOST, *map(str, arguments)], input=input, check=True, timeout=120,
                   capture_output=True)


def archives(folder):
    """Documents without keys, with keys, device graphs, image archives: as property lists."""
    def read(*paths):
        return [plistlib.loads(path.read_bytes()) for path in paths]

    host("run", "-", input=json.dumps(everything(folder)).encode())
    bent = folder / "bent.document"
    bent.write_bytes(plistlib.dumps(bend(*read(folder / "plain.document")),
                                    fmt=plistlib.FMT_BINARY))
    host("send", bent, "-o", folder / "bent.graph", "--images", folder / "bent-images")
    host("save", bent, "-o", folder / "bent-again.document", "--to", 0)
    return (read(folder / "plain.document", folder / "bent-again.document"),
            read(folder / "keys.document"),
            read(folder / "whole.graph", folder / "bent.graph"),
            read(*folder.glob("images/*.plist"), *folder.glob("bent-images/*.plist")))
