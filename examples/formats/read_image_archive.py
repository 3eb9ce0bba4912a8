"""Takes the pictures out of image archives: python3 read_image_archive.py FILE..."""
import pathlib
import plistlib
import sys

for path in sys.argv[1:]:
    archive = plistlib.loads(pathlib.Path(path).read_bytes())
    entry = archive["$objects"][archive["$root"]["$reference"]]
    reference = entry.get("PMImageStoreEntry.imageData")
    if reference is None:
        continue  # an entry without a picture
    png = archive["$objects"][reference["$reference"]]
    name = entry["PMImageStoreEntry.key"] + ".png"
    pathlib.Path(name).write_bytes(png)
    print(name, len(png), "bytes")
