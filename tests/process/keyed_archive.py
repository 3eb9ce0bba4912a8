"""An unarchiver of its own for standard keyed archives, to check what the library writes.

Reads the file with the distribution's plistlib, checks the layout that standard readers rely on and
resolves every reference. As a program: keyed_archive.py FILE, prints the graph as JSON.
"""

import json
import plistlib
import sys


class LayoutError(Exception):
    pass


def require(condition, text):
    if not condition:
        raise LayoutError(text)


def is_class_record(value):
    return isinstance(value, dict) and "$classname" in value


class Archive:
    def __init__(self, data):
        self.top = plistlib.loads(data)
        require(set(self.top) == {"$archiver", "$version", "$top", "$objects"}, "the top's keys")
        require(self.top["$archiver"] == "NSKeyedArchiver", "$archiver")
        require(type(self.top["$version"]) is int and self.top["$version"] == 100000, "$version")
        self.objects = self.top["$objects"]
        require(self.objects[0] == "$null", "object 0")
        require(isinstance(self.top["$top"].get("root"), plistlib.UID), "the root")
        self.check_values_stand_once()
        self.check_records()

    def resolve(self, uid):
        require(isinstance(uid, plistlib.UID), f"{uid!r} stands where a UID is expected")
        require(0 <= uid.data < len(self.objects), f"UID {uid.data} is out of range")
        value = self.objects[uid.data]
        return None if uid.data == 0 or value == "$null" else value

    def root(self):
        return self.resolve(self.top["$top"]["root"])

    def class_name(self, record):
        return self.resolve(record["$class"])["$classname"]

    def check_values_stand_once(self):
        strings = [o for o in self.objects[1:] if isinstance(o, str) and o != "$null"]
        require(len(strings) == len(set(strings)), "a string has two entries")
        names = [o["$classname"] for o in self.objects if is_class_record(o)]
        require(len(names) == len(set(names)), "a class has two records")

    def check_records(self):
        for value in self.objects[1:]:
            require(not isinstance(value, (plistlib.UID, list)), "a bare reference or list")
            if not isinstance(value, dict):
                continue
            if is_class_record(value):
                require(value["$classes"][0] == value["$classname"], "$classes begins wrong")
                require(value["$classes"][-1] == "NSObject", "$classes ends wrong")
                continue
            require(is_class_record(self.resolve(value["$class"])), "an object without a class")
            self.check_object(self.class_name(value), value)

    def check_object(self, name, record):
        require(name not in ("NSData", "NSString", "NSNumber"), f"a record of class {name}")
        if name in ("NSArray", "NSSet", "NSDictionary"):
            members = record["NS.objects"]
            require(all(self.resolve(m) is not None for m in members), f"nil in a {name}")
            if name == "NSDictionary":
                keys = [self.resolve(k) for k in record["NS.keys"]]
                require(len(keys) == len(members), "keys and objects differ in number")
                require(all(isinstance(k, str) for k in keys), "a key that is no string")
        elif name == "NSOrderedSet":
            for number in range(len(record) - 1):
                member = record[f"NS.object.{number}"]
                require(self.resolve(member) is not None, "nil in an ordered set")
        elif name != "NSMutableString":
            for key, value in record.items():
                require(not isinstance(value, (str, list, dict)),
                        f"{name}: {key} holds an inline value")
                if isinstance(value, plistlib.UID):
                    self.resolve(value)

    def tree(self):
        """The graph from the root as plain values; an object met again is {"again": its number}."""
        seen = set()

        def plain(uid):
            value = self.resolve(uid)
            if isinstance(value, bytes):
                return {"data": value.hex()}
            if not isinstance(value, dict):
                return value
            name = self.class_name(value)
            if name == "NSMutableString":
                return value["NS.string"]
            if uid.data in seen:
                return {"again": uid.data}
            seen.add(uid.data)
            if name in ("NSArray", "NSSet"):
                return [plain(m) for m in value["NS.objects"]]
            if name == "NSOrderedSet":
                return {"ordered": [plain(value[f"NS.object.{i}"])
                                    for i in range(len(value) - 1)]}
            if name == "NSDictionary":
                return {self.resolve(k): plain(v)
                        for k, v in zip(value["NS.keys"], value["NS.objects"])}
            fields = {"class": name}
            for key, field in value.items():
                if key == "$class":
                    continue
                if isinstance(field, plistlib.UID):
                    field = plain(field)
                elif isinstance(field, bytes):
                    field = {"bytes": field.hex()}
                fields[key] = field
            return fields

        return plain(self.top["$top"]["root"])


def main():
    with open(sys.argv[1], "rb") as file:
        archive = Archive(file.read())
    sys.setrecursionlimit(100000)
    print(json.dumps(archive.tree()))


if __name__ == "__main__":
    main()
