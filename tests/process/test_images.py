"""Images of a session: entered once, counted, sent one archive each, and named by what they show."""

import plistlib
import struct
import unittest
import zlib

from host import HostTest, by_key, op, posted

STORE = "HXImageStore"


def png(width, height, colour):
    """A PNG file of one colour (red, green, blue, alpha)."""
    def chunk(kind, data):
        return (struct.pack(">I", len(data)) + kind + data +
                struct.pack(">I", zlib.crc32(kind + data)))
    rows = (b"\0" + bytes(colour) * width) * height
    return (b"\x89PNG\r\n\x1a\n" +
            chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 6, 0, 0, 0)) +
            chunk(b"IDAT", zlib.compress(rows)) + chunk(b"IEND", b""))


class Images(HostTest):
    def setUp(self):
        super().setUp()
        self.red = self.folder / "red.png"
        self.red.write_bytes(png(3, 2, (255, 0, 0, 255)))
        self.same = self.folder / "same.png"
        self.same.write_bytes(png(3, 2, (255, 0, 0, 255)))
        self.other = self.folder / "other.png"
        self.other.write_bytes(png(3, 2, (254, 0, 0, 255)))

    def add(self, path, name):
        return op("addImage", file=str(path), as_=name)

    def test_an_image_is_stored_once_and_counted(self):
        trace = self.trace(op("newDocument"), self.add(self.red, "red"),
                           self.add(self.same, "same"), op("removeImage", image="red"),
                           op("dump"), op("removeImage", image="same"),
                           op("removeImage", image="same"), op("dump"))
        entry = trace.results[1]
        key = entry["key"]
        self.assertEqual(entry, {"key": key, "width": 3, "height": 2})
        self.assertRegex(key, "^[0-9a-f]{32}$")
        self.assertEqual(trace.results[2]["key"], key)
        removal = [posted("HXImageStoreRemoveImageNotification", STORE, ImageEntryKey=key)]
        self.assertEqual(trace.notifications[1:], [
            [posted("HXImageStoreAddImageNotification", STORE,
                    ImageEntry=f"HXImageStoreEntry:{key}")],
            [], [], [], removal, removal, []])
        self.assertEqual(trace.results[4]["images"],
                         [{"key": key, "width": 3, "height": 2, "count": 1}])
        self.assertEqual(trace.results[-1]["images"], [])

    def test_a_key_that_leads_out_of_the_directory_is_refused(self):
        document, directory = self.folder / "document", self.folder / "images"
        key = self.trace(op("newDocument"), self.add(self.red, "red"), self.add(self.other, "other"),
                         op("save", file=str(document))).results[1]["key"]
        archive = plistlib.loads(document.read_bytes())
        archive["$objects"] = ["../out" if value == key else value
                               for value in archive["$objects"]]
        document.write_bytes(plistlib.dumps(archive, fmt=plistlib.FMT_BINARY))
        self.assertEqual(
            self.failure(op("open", file=str(document)),
                         op("sendImages", directory=str(directory))),
            f'operation 1, sendImages, {directory}: the image key "../out" cannot name a file')
        self.assertEqual(sorted(path.name for path in self.folder.iterdir()),
                         ["document", "other.png", "red.png", "same.png"])

    def test_images_are_sent_in_the_order_of_their_keys(self):
        directory = self.folder / "images"
        trace = self.trace(op("newDocument"), self.add(self.red, "red"),
                           self.add(self.other, "other"),
                           op("sendImages", directory=str(directory)))
        keys = trace.results[-1]["keys"]
        self.assertEqual(len(set(keys)), 2, "one pixel makes the difference")
        self.assertEqual(keys, sorted(keys))
        self.assertEqual(sorted(path.name for path in directory.iterdir()),
                         [f"{key}.plist" for key in keys])
        for key in keys:
            archive = plistlib.loads((directory / f"{key}.plist").read_bytes())
            self.assertEqual(archive["$root"], {"$reference": "$object-0"})
            entry = archive["$objects"]["$object-0"]
            self.assertEqual(entry["$class"], "PMImageStoreEntry")
            self.assertEqual(entry["PMImageStoreEntry.key"], key)
            data = archive["$objects"][entry["PMImageStoreEntry.imageData"]["$reference"]]
            self.assertEqual(data[:8], b"\x89PNG\r\n\x1a\n")

    def test_a_parameter_shows_an_image_and_the_device_gets_its_key_only(self):
        graph = self.folder / "graph.plist"
        document = self.folder / "document.plist"
        trace = self.trace(
            op("newDocument", as_="doc"), self.add(self.red, "red"),
            op("newNode", as_="node", patch="HXRImageNode"), op("addNode", node="node", to="doc"),
            op("setParameter", node="node", parameter="Tarn.imageParameter", value="red"),
            op("send", file=str(graph)), op("save", file=str(document)),
            op("open", file=str(document)), op("dump"),
            op("setParameter", node="node", parameter="Tarn.imageParameter", value=None))
        key = trace.results[1]["key"]
        self.assertEqual(len(trace.notifications[4]), 1)
        objects = plistlib.loads(graph.read_bytes())["$objects"]
        parameter = next(o for o in objects.values()
                         if isinstance(o, dict) and o.get("$class") == "PMImageParameter")
        self.assertEqual(parameter["PMImageParameter.imageKey"], key)
        self.assertEqual(parameter["PMParameter.processClassName"], "PMRImageParameter")
        self.assertFalse([o for o in objects.values() if isinstance(o, bytes)])
        opened = trace.results[-2]
        self.assertEqual([(i["key"], i["count"]) for i in opened["images"]], [(key, 1)])
        node = opened["subnodeGroup"]["subnodes"][0]
        self.assertEqual(by_key(node["parameters"])["Tarn.imageParameter"]["value"], key)

    def test_files_that_are_no_images(self):
        text = self.folder / "text.png"
        text.write_text("no picture")
        cut = self.folder / "cut.png"
        cut.write_bytes(self.red.read_bytes()[:-20])
        huge = self.folder / "huge.png"
        huge.write_bytes(png(1, 1, (0, 0, 0, 0))[:16] + struct.pack(">II", 1 << 30, 1 << 30) +
                         png(1, 1, (0, 0, 0, 0))[24:])
        for path in (text, cut, huge, self.folder / "missing.png", self.folder):
            with self.subTest(path=path.name):
                line = self.failure(op("newDocument"), self.add(path, "image"))
                self.assertTrue(line.startswith("operation 1, addImage, "), line)
                self.assertIn(str(path), line)


if __name__ == "__main__":
    unittest.main()
