"""Reads a device graph with nothing but Python's own library, and prints what a device would make of
it: the nodes in their groups, the values of their inputs, and where each input gets its value from.

    python3 read_device_graph.py FILE
"""
import plistlib
import sys

KINDS = ["nil", "boolean", "index", "number", "radians", "degrees", "color", "string"]


class Graph:
    def __init__(self, data):
        archive = plistlib.loads(data)
        self.objects = archive["$objects"]
        self.root = self.resolve(archive["$root"])

    def resolve(self, value):
        """What a reference means; None for an object that is not in the file."""
        if isinstance(value, dict) and "$reference" in value:
            return self.objects.get(value["$reference"])
        return value

    def get(self, object_, key):
        return self.resolve(object_.get(key))

    def value(self, primitive):
        kind = KINDS[primitive["PMRPrimitive.storageType"]]
        if kind == "color":
            return [primitive[f"PMRPrimitive.colorValue.{part}"]
                    for part in ("red", "green", "blue", "alpha")]
        field = "number" if kind in ("radians", "degrees") else kind
        return f"{kind} {primitive.get(f'PMRPrimitive.{field}Value')}"

    def print_node(self, node, depth=0):
        indent = "  " * depth
        print(f"{indent}{node['PMNode.uniqueKey']} {node['PMNode.processClassName']}")
        for key, port in self.get(node, "PMNode.portsByUniqueKey").items():
            port = self.resolve(port)
            if port["PMPort.orientation"] != 1:
                continue  # an output has nothing of its own to tell
            default = self.get(port, "PMPort.defaultValue")
            line = f"{indent}  {key}" + (f" = {self.value(default)}" if default else "")
            for wire in map(self.resolve, self.get(port, "PMPort.connections")):
                if source := self.get(wire, "PMConnection.outputPort"):
                    owner = self.get(source, "PMPort.node")
                    line += f" <- {owner['PMNode.uniqueKey']}/{source['PMPort.uniqueKey']}"
            print(line)
        group = self.get(node, "PMNode.subnodeGroup")
        for below in self.get(group, "PMGroup.subnodes") if group else []:
            self.print_node(self.resolve(below), depth + 1)


if __name__ == "__main__":
    with open(sys.argv[1], "rb") as file:
        graph = Graph(file.read())
    graph.print_node(graph.root)
