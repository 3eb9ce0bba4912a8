"""Writes the table of text widths, tarnkit/render/TextAdvances.cpp's kRegular and kBold, from the
distribution's DejaVu Sans (package fonts-dejavu-core):

    make_text_advances.py [FOLDER]            prints the two arrays
    make_text_advances.py [FOLDER] --write    puts them in their place in the source

FOLDER is where DejaVuSans.ttf and DejaVuSans-Bold.ttf lie. The ranges are read from the source."""

import argparse
import pathlib
import re
import struct
import subprocess
import sys
import unicodedata

SOURCE = pathlib.Path(__file__).parents[1] / "tarnkit/render/TextAdvances.cpp"
NO_ADVANCE = 255


class Font:
    """What a TrueType file says of how far its characters move the pen."""

    def __init__(self, path):
        self.bytes = path.read_bytes()
        self.tables = {}
        for i in range(self.read(">H", 4)[0]):
            tag, _, offset, _ = self.read(">4sLLL", 12 + 16 * i)
            self.tables[tag.decode()] = offset
        self.units = self.read(">H", self.tables["head"] + 18)[0]
        self.metrics = self.read(">H", self.tables["hhea"] + 34)[0]
        self.glyphs = self.read_glyphs()

    def read(self, form, offset):
        return struct.unpack_from(form, self.bytes, offset)

    def read_glyphs(self):
        """The glyphs by code point, of the character map of the basic plane (format 4)."""
        start = self.tables["cmap"]
        for i in range(self.read(">H", start + 2)[0]):
            platform, encoding, offset = self.read(">HHL", start + 4 + 8 * i)
            if (platform, encoding) == (3, 1):
                return self.read_segments(start + offset)
        raise ValueError("the font has no Unicode character map")

    def read_segments(self, at):
        form, _, _, twice = self.read(">HHHH", at)
        if form != 4:
            raise ValueError(f"the character map has format {form}")
        ends, glyphs = at + 14, {}
        for i in range(0, twice, 2):
            last, = self.read(">H", ends + i)
            first, = self.read(">H", ends + twice + 2 + i)
            delta, = self.read(">H", ends + 2 * twice + 2 + i)
            place = ends + 3 * twice + 2 + i
            offset, = self.read(">H", place)
            for code in range(first, last + 1):
                glyph = code
                if offset:
                    glyph, = self.read(">H", place + offset + 2 * (code - first))
                if glyph or not offset:
                    glyph = (glyph + delta) & 0xFFFF
                if glyph:
                    glyphs[code] = glyph
        return glyphs

    def advance(self, code):
        """In hundredths of the font's size, rounded up; None without a glyph."""
        glyph = self.glyphs.get(code)
        if glyph is None:
            return None
        metric = min(glyph, self.metrics - 1)
        width, = self.read(">H", self.tables["hmtx"] + 4 * metric)
        return -(-width * 100 // self.units)


def entry(font, code):
    # Marks stand on another character's place, and what formats or controls is not to be seen.
    if unicodedata.category(chr(code)) in ("Mn", "Me", "Cf", "Cc", "Cn"):
        return NO_ADVANCE
    advance = font.advance(code)
    return NO_ADVANCE if advance is None else advance


def arrays(folder, text):
    ranges = [(int(first, 16), int(last, 16)) for first, last in
              re.findall(r"\{(0x[0-9A-F]+), (0x[0-9A-F]+)\}", text)]
    for name, file in (("kRegular", "DejaVuSans.ttf"), ("kBold", "DejaVuSans-Bold.ttf")):
        font = Font(folder / file)
        numbers = [entry(font, code) for first, last in ranges for code in range(first, last + 1)]
        yield f"constexpr std::uint8_t {name}[] = {{{', '.join(map(str, numbers))}}};\n"


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("folder", nargs="?", type=pathlib.Path,
                        default=pathlib.Path("/usr/share/fonts/truetype/dejavu"))
    parser.add_argument("--write", action="store_true")
    options = parser.parse_args()
    text = SOURCE.read_text(encoding="utf-8")
    made = "".join(arrays(options.folder, text))
    if not options.write:
        sys.stdout.write(made)
        return
    start, end = text.index("constexpr std::uint8_t kRegular"), text.index("\nstruct Range")
    SOURCE.write_text(text[:start] + made + text[end:], encoding="utf-8")
    subprocess.run(["clang-format", "-i", SOURCE], check=True)


if __name__ == "__main__":
    main()
