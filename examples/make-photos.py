#!/usr/bin/env python3
"""Makes the photographs of the example prototype: landscapes that never were.

    examples/make-photos.py [FOLDER]        (by default examples/photos)

Needs nothing but Python. The same pictures come out of every run. Three are written as JPEG, one as
PNG and one as TIFF, by small encoders below, so that the example meets every reader of the library.
"""

import math
import random
import struct
import sys
import zlib
from pathlib import Path

# ---------------------------------------------------------------------------- colour and noise


def mix(a, b, t):
    return (a[0] + (b[0] - a[0]) * t, a[1] + (b[1] - a[1]) * t, a[2] + (b[2] - a[2]) * t)


def add(a, b, scale=1.0):
    return (a[0] + b[0] * scale, a[1] + b[1] * scale, a[2] + b[2] * scale)


def scaled(a, s):
    return (a[0] * s, a[1] * s, a[2] * s)


def smooth(low, high, value):
    t = min(1.0, max(0.0, (value - low) / (high - low)))
    return t * t * (3.0 - 2.0 * t)


def gradient(stops, t):
    """The colour at t of [(position, colour), ...]."""
    for (p0, c0), (p1, c1) in zip(stops, stops[1:]):
        if t < p1:
            return mix(c0, c1, min(1.0, max(0.0, (t - p0) / (p1 - p0))))
    return stops[-1][1]


class Noise:
    """Smooth noise from 0 to 1 over the plane, in octaves that halve."""

    def __init__(self, seed):
        source = random.Random(seed)
        self.order = list(range(256))
        source.shuffle(self.order)
        self.order *= 2
        self.values = [source.random() for _ in range(256)]

    def at(self, x, y=0.0):
        ix, iy = math.floor(x), math.floor(y)
        fx, fy = x - ix, y - iy
        fx = fx * fx * (3.0 - 2.0 * fx)
        fy = fy * fy * (3.0 - 2.0 * fy)
        order, values = self.order, self.values
        ix &= 255
        iy &= 255
        near, far = order[ix], order[(ix + 1) & 255]
        a, b = values[order[near + iy]], values[order[far + iy]]
        iy = (iy + 1) & 255
        c, d = values[order[near + iy]], values[order[far + iy]]
        top = a + (b - a) * fx
        return top + (c + (d - c) * fx - top) * fy

    def octaves(self, x, y=0.0, count=4):
        total, weight, sum_of_weights = 0.0, 1.0, 0.0
        for _ in range(count):
            total += self.at(x, y) * weight
            sum_of_weights += weight
            weight *= 0.5
            x, y = x * 2.03 + 17.3, y * 2.03 + 5.1
        return total / sum_of_weights

    def ridge(self, x, count=6):
        """A mountain's outline: sharp at the top, rough in the small."""
        total, weight, sum_of_weights = 0.0, 1.0, 0.0
        for _ in range(count):
            total += (1.0 - abs(2.0 * self.at(x, 3.7) - 1.0)) * weight
            sum_of_weights += weight
            weight *= 0.48
            x = x * 2.11 + 31.7
        return total / sum_of_weights


# ---------------------------------------------------------------------------- scenes
# A scene is a function from x and y (0 to 1, y downward) to a linear colour.


def mountains(noise, layers):
    """Ranges one behind the other; each (base, height, frequency, offset, sunny, shady, haze)."""

    def paint(x, y):
        for base, height, frequency, offset, sunny, shady, haze in reversed(layers):
            top = base - height * noise.ridge(x * frequency + offset)
            if y < top:
                continue
            depth = (y - base + height) / height
            grain = noise.octaves(x * 34 + offset, y * 52, 3)
            slope = noise.ridge((x + 0.004) * frequency + offset, 5) - noise.ridge(
                (x - 0.004) * frequency + offset, 5)
            light = smooth(-0.05, 0.05, slope + (grain - 0.5) * 0.11)
            color = mix(shady, sunny, light * (1.0 - 0.4 * depth))
            return mix(color, haze, smooth(0.25, 1.0, depth) * 0.72)
        return None

    return paint


def lake_at_dawn():
    noise, clouds = Noise(11), Noise(12)
    horizon, sun = 0.60, (0.64, 0.47)
    sky_stops = [(0.0, (0.07, 0.16, 0.36)), (0.32, (0.30, 0.36, 0.52)), (0.50, (0.93, 0.50, 0.32)),
                 (0.60, (1.0, 0.74, 0.42))]
    haze = (0.92, 0.56, 0.38)
    land = mountains(noise, [
        (0.60, 0.27, 1.7, 3.1, (0.62, 0.40, 0.40), (0.36, 0.29, 0.40), haze),
        (0.605, 0.19, 2.6, 11.9, (0.42, 0.25, 0.24), (0.19, 0.16, 0.25), haze),
        (0.61, 0.10, 4.3, 23.4, (0.16, 0.10, 0.10), (0.06, 0.06, 0.10), (0.42, 0.24, 0.21)),
    ])

    def above(x, y):
        color = land(x, y)
        if color is None:
            color = gradient(sky_stops, y)
            cover = clouds.octaves(x * 3.1, y * 13, 5)
            lit = smooth(0.50, 0.72, cover) * smooth(0.02, 0.16, y) * 0.75
            color = mix(color, mix((0.42, 0.33, 0.44), (1.0, 0.62, 0.44), smooth(0.1, 0.45, y)), lit)
        distance = math.hypot((x - sun[0]) * 1.33, y - sun[1])
        glow = math.exp(-distance * 7.5) * 0.62 + math.exp(-distance * 34) * 1.2
        return add(color, (1.0, 0.66, 0.34), glow)

    def scene(x, y):
        if y < horizon:
            return above(x, y)
        depth = (y - horizon) / (1.0 - horizon)
        wave = noise.octaves(x * 7 / (0.25 + depth), 46 * math.sqrt(depth + 0.002), 3) - 0.5
        mirrored = horizon - (y - horizon) * 0.92 + wave * 0.11 * (0.12 + depth)
        color = above(x + wave * 0.012, max(0.0, min(horizon - 0.002, mirrored)))
        color = mix(scaled(color, 0.80), (0.05, 0.09, 0.18), 0.18 + 0.30 * depth)
        path = math.exp(-(((x - sun[0]) / (0.03 + 0.05 * depth)) ** 2))
        return add(color, (1.0, 0.72, 0.42), path * smooth(0.02, 0.30, wave) * 1.1)

    return scene


def dunes():
    noise, fine = Noise(21), Noise(22)
    layers = [  # base, height, frequency, offset, how far away
        (0.56, 0.10, 2.1, 1.0, 0.72), (0.66, 0.15, 1.6, 4.2, 0.45), (0.80, 0.22, 1.25, 9.4, 0.20),
        (1.02, 0.34, 0.95, 15.0, 0.0)]
    haze = (0.86, 0.70, 0.55)

    def outline(x, frequency, offset):
        # A long windward side and a short lee side, as the wind leaves them.
        bent = x * frequency + offset + 0.22 * noise.at(x * 2.7 + offset, 8.0)
        phase = bent - math.floor(bent)
        side = phase / 0.68 if phase < 0.68 else (1.0 - phase) / 0.32
        return 0.35 * noise.at(bent * 0.9, offset) + 0.65 * side * side * (3 - 2 * side), phase < 0.68

    def scene(x, y):
        for base, height, frequency, offset, far in reversed(layers):
            rise, windward = outline(x, frequency, offset)
            top = base - height * rise
            if y < top:
                continue
            depth = y - top
            # The crest winds down the face of the dune.
            crest, lit = outline(x - depth * 0.55 + 0.03 * noise.at(depth * 9, offset), frequency,
                                 offset)
            light = 0.92 if lit else 0.30 + 0.25 * smooth(0.0, 0.35, depth)
            blur = smooth(0.0, 0.012, depth)
            light = light * blur + (0.97 if windward else 0.40) * (1.0 - blur)
            ripples = math.sin((depth * 210 + x * 34 + 7.0 * fine.octaves(x * 9, depth * 22, 3)) /
                               (1.0 + 1.4 * far))
            light += 0.045 * ripples * (1.0 - far) * smooth(0.01, 0.08, depth)
            light += 0.16 * (fine.octaves(x * 70, y * 110, 2) - 0.5) + 0.10 * (crest - 0.5)
            color = mix((0.17, 0.08, 0.08), (0.93, 0.60, 0.29), min(1.0, max(0.0, light)))
            return mix(color, haze, far * 0.8)
        sky = gradient([(0.0, (0.10, 0.30, 0.60)), (0.30, (0.34, 0.53, 0.72)),
                        (0.55, (0.90, 0.80, 0.66))], y)
        veil = smooth(0.52, 0.80, fine.octaves(x * 2.2 + y * 3, y * 11, 5))
        return mix(sky, (0.97, 0.93, 0.88), veil * 0.55)

    return scene


def northern_lights():
    noise, curtain, sky_dust = Noise(31), Noise(32), Noise(33)
    source = random.Random(34)
    stars = [(source.random(), source.random() * 0.7, source.random() ** 3) for _ in range(420)]
    grid = {}
    for star in stars:
        grid.setdefault((int(star[0] * 40), int(star[1] * 40)), []).append(star)
    horizon = 0.72
    land = mountains(noise, [
        (0.72, 0.24, 1.9, 6.6, (0.20, 0.30, 0.33), (0.04, 0.07, 0.11), (0.05, 0.10, 0.13)),
        (0.73, 0.12, 3.4, 17.1, (0.03, 0.06, 0.07), (0.008, 0.014, 0.022), (0.01, 0.02, 0.03)),
    ])

    def starlight(x, y):
        light = 0.0
        cell = (int(x * 40), int(y * 40))
        for dx in (-1, 0, 1):
            for dy in (-1, 0, 1):
                for sx, sy, strength in grid.get((cell[0] + dx, cell[1] + dy), ()):
                    spread = ((x - sx) * 1.33) ** 2 + (y - sy) ** 2
                    light += (0.25 + strength * 1.3) * math.exp(-spread / 1.6e-6)
        return light

    def aurora(x, y):
        color = (0.0, 0.0, 0.0)
        for k, strength in ((0.0, 1.0), (5.0, 0.6)):
            foot = 0.50 + k * 0.012 - 0.28 * curtain.octaves(x * 1.6 + k, k, 3) + 0.12 * x
            up = foot - y
            if up < -0.03:
                continue
            rays = 0.35 + 0.65 * curtain.octaves(x * 26 + k * 3, y * 1.1 + k, 3)
            body = smooth(-0.03, 0.015, up) * math.exp(-max(0.0, up) * 6.5) * rays ** 1.7
            hue = mix((0.10, 0.95, 0.45), (0.46, 0.18, 0.72), smooth(0.04, 0.30, up))
            color = add(color, hue, body * strength * 1.15)
        return color

    def above(x, y):
        color = land(x, y)
        if color is not None:
            return color
        color = gradient([(0.0, (0.010, 0.016, 0.045)), (0.72, (0.03, 0.09, 0.12))], y)
        dust = smooth(0.45, 0.85, sky_dust.octaves(x * 2 + y, y * 2 - x, 5))
        color = add(color, (0.03, 0.035, 0.055), dust)
        return add(add(color, aurora(x, y)), (0.9, 0.95, 1.0), starlight(x, y))

    def scene(x, y):
        if y < horizon:
            return above(x, y)
        depth = (y - horizon) / (1.0 - horizon)
        wave = noise.octaves(x * 5 / (0.3 + depth), 34 * math.sqrt(depth + 0.002), 3) - 0.5
        mirrored = max(0.0, min(horizon - 0.003, horizon - (y - horizon) * 1.9 + wave * 0.10))
        return mix(scaled(above(x + wave * 0.016, mirrored), 0.72), (0.006, 0.014, 0.022), 0.25)

    return scene


def evening_sea():
    clouds, water = Noise(41), Noise(42)
    horizon, sun = 0.56, (0.40, 0.535)
    stops = [(0.0, (0.13, 0.16, 0.36)), (0.25, (0.44, 0.26, 0.42)), (0.43, (0.93, 0.38, 0.27)),
             (0.56, (1.0, 0.66, 0.28))]

    def sky(x, y):
        color = gradient(stops, y)
        cover = clouds.octaves(x * 2.4 + 3, y * 10 + x, 6)
        thick = smooth(0.48, 0.74, cover)
        edge = smooth(0.44, 0.52, cover) * (1.0 - smooth(0.52, 0.66, cover))
        color = mix(color, mix((0.20, 0.14, 0.27), (0.62, 0.24, 0.25), smooth(0.1, 0.5, y)),
                    thick * 0.9)
        color = add(color, (1.0, 0.50, 0.24), edge * 0.34 * smooth(0.0, 0.5, y))
        distance = math.hypot((x - sun[0]) * 1.33, y - sun[1])
        disc = 1.0 - smooth(0.040, 0.047, distance)
        color = mix(color, (1.0, 0.88, 0.58), disc)
        return add(color, (1.0, 0.58, 0.24), math.exp(-distance * 6.0) * 0.5)

    def scene(x, y):
        if y < horizon:
            return sky(x, y)
        depth = (y - horizon) / (1.0 - horizon)
        far = 1.0 / (depth + 0.035)
        swell = water.octaves((x - 0.5) * far * 1.5 + 40, far * 3.4, 4)
        chop = water.octaves((x - 0.5) * far * 6 + 9, far * 15 + 2, 2)
        height = 0.62 * swell + 0.38 * chop - 0.5
        color = sky(x, max(0.0, horizon - 0.03 - depth * 0.42 - height * 0.34))
        color = mix(scaled(color, 0.66), (0.03, 0.08, 0.15), 0.30 + 0.42 * depth)
        color = add(color, (0.05, 0.05, 0.08), smooth(-0.02, 0.25, height))
        path = math.exp(-(((x - sun[0]) / (0.035 + 0.16 * depth)) ** 2))
        color = add(color, (1.0, 0.60, 0.26), path * smooth(-0.02, 0.14, height) * 1.25)
        foam = smooth(0.27, 0.36, height) * smooth(0.25, 0.8, depth)
        return mix(color, (0.80, 0.66, 0.62), foam * 0.5)

    return scene


def forest_in_mist():
    noise = Noise(51)
    source = random.Random(52)
    layers = []
    for index, (base, count, size) in enumerate(
            ((0.50, 46, 0.13), (0.62, 34, 0.19), (0.76, 24, 0.28), (0.97, 15, 0.44))):
        trees = []
        for k in range(count):
            x = (k + source.random() * 0.9) / count * 1.1 - 0.05
            ground = base - 0.10 * noise.octaves(x * 2.2 + index * 9, index, 3)
            trees.append((x, ground, size * (0.55 + 0.45 * source.random()), source.random()))
        layers.append((base, index, trees))

    def covered(x, y, base, index, trees):
        if y > base - 0.10 * noise.octaves(x * 2.2 + index * 9, index, 3):
            return True
        for tree_x, ground, size, phase in trees:
            reach = size * 0.20
            offset = abs(x - tree_x) * 1.33
            if offset > reach or y < ground - size:
                continue
            down = (y - ground + size) / size
            if down > 1.0:
                continue
            boughs = down * 11.0 + phase
            width = reach * down * (0.45 + 0.55 * (boughs - math.floor(boughs)))
            if offset < width * (0.75 + 0.5 * noise.at(x * 230, y * 150)):
                return True
        return False

    def scene(x, y):
        light = gradient([(0.0, (0.66, 0.74, 0.78)), (0.42, (0.90, 0.90, 0.84)),
                          (1.0, (0.72, 0.78, 0.76))], y)
        glow = math.exp(-math.hypot((x - 0.72) * 1.33, y - 0.2) * 3.2)
        light = add(light, (0.28, 0.22, 0.10), glow)
        for base, index, trees in reversed(layers):
            if not covered(x, y, base, index, trees):
                continue
            near = (index + 1) / 4.0
            needles = noise.octaves(x * 120, y * 120, 2)
            color = mix((0.020, 0.052, 0.045), (0.085, 0.135, 0.085), smooth(0.25, 0.8, needles))
            mist = (1.0 - near) * 0.90 + 0.03
            mist += 0.62 * smooth(base - 0.16, base + 0.06, y) * (0.35 + 0.9 * noise.octaves(
                x * 3.2 + index * 3, y * 7, 4)) * (1.0 if index < 3 else 0.22)
            return mix(color, scaled(light, 0.96), min(0.97, mist))
        return light

    return scene


# ---------------------------------------------------------------------------- the camera


def photograph(scene, width, height, seed, grain=0.018):
    """Rows of 8-bit RGB: two samples a pixel, a little darker in the corners, a little grain."""
    source = random.Random(seed)
    rows = []
    for row in range(height):
        line = bytearray()
        for column in range(width):
            x, y = (column + 0.5) / width, (row + 0.5) / height
            step_x, step_y = 0.25 / width, 0.25 / height
            color = scaled(add(scene(x - step_x, y - step_y), scene(x + step_x, y + step_y)), 0.5)
            corner = 1.0 - 0.30 * ((x - 0.5) ** 2 + (y - 0.5) ** 2) * 1.6
            speck = (source.random() + source.random() - 1.0) * grain
            for part in color:
                value = max(0.0, part) * corner
                value = value * (1.0 + value * 0.22) / (1.0 + value * 0.42)  # soft highlights
                value = (value / 0.86) ** (1 / 1.7) + speck
                line.append(min(255, max(0, int(value * 255 + 0.5))))
        rows.append(bytes(line))
    return rows


# ---------------------------------------------------------------------------- PNG and TIFF


def filtered(row, above):
    """The row as PNG packs it best: each byte less its neighbour, its upper one, or a guess."""
    left = bytes(3) + row[:-3]
    corner = bytes(3) + above[:-3]

    def guess(a, b, c):
        p = a + b - c
        pa, pb, pc = abs(p - a), abs(p - b), abs(p - c)
        return a if pa <= pb and pa <= pc else b if pb <= pc else c

    choices = [
        bytes([0]) + row,
        bytes([1]) + bytes((r - a) & 255 for r, a in zip(row, left)),
        bytes([2]) + bytes((r - b) & 255 for r, b in zip(row, above)),
        bytes([3]) + bytes((r - (a + b) // 2) & 255 for r, a, b in zip(row, left, above)),
        bytes([4]) + bytes((r - guess(a, b, c)) & 255
                           for r, a, b, c in zip(row, left, above, corner)),
    ]
    return min(choices, key=lambda bytes_: sum(min(v, 256 - v) for v in bytes_[1:]))


def png(rows, width, height):
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(
            ">I", zlib.crc32(kind + data))

    above = bytes(3 * width)
    packed = bytearray()
    for row in rows:
        packed += filtered(row, above)
        above = row
    header = struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) +
            chunk(b"IDAT", zlib.compress(bytes(packed), 9)) + chunk(b"IEND", b""))


def tiff(rows, width, height):
    """One strip, packed by Deflate, each byte less its neighbour."""
    lines = bytearray()
    for row in rows:
        lines += row[:3] + bytes((a - b) & 255 for a, b in zip(row[3:], row))
    strip = zlib.compress(bytes(lines), 9)
    short, long = 3, 4
    fields = [(256, long, 1, width), (257, long, 1, height), (258, short, 3, 0),
              (259, short, 1, 8), (262, short, 1, 2), (273, long, 1, 0), (277, short, 1, 3),
              (278, long, 1, height), (279, long, 1, len(strip)), (284, short, 1, 1),
              (317, short, 1, 2)]
    depths = 8 + 2 + 12 * len(fields) + 4
    places = {258: depths, 273: depths + 6}
    table = b"".join(struct.pack("<HHII", tag, kind, count, places.get(tag, value))
                     for tag, kind, count, value in fields)
    return (b"II*\0" + struct.pack("<IH", 8, len(fields)) + table + struct.pack("<I", 0) +
            struct.pack("<HHH", 8, 8, 8) + strip)


# ---------------------------------------------------------------------------- JPEG

BRIGHTNESS_STEPS = [
    16, 11, 10, 16, 24, 40, 51, 61, 12, 12, 14, 19, 26, 58, 60, 55, 14, 13, 16, 24, 40, 57, 69, 56,
    14, 17, 22, 29, 51, 87, 80, 62, 18, 22, 37, 56, 68, 109, 103, 77, 24, 35, 55, 64, 81, 104, 113,
    92, 49, 64, 78, 87, 103, 121, 120, 101, 72, 92, 95, 98, 112, 100, 103, 99]
COLOR_STEPS = [
    17, 18, 24, 47, 99, 99, 99, 99, 18, 21, 26, 66, 99, 99, 99, 99, 24, 26, 56, 99, 99, 99, 99, 99,
    47, 66, 99, 99, 99, 99, 99, 99] + [99] * 32
ZIGZAG = sorted(range(64), key=lambda i: (i // 8 + i % 8, i // 8 if (i // 8 + i % 8) % 2 else i % 8))
COSINES = [[math.cos((2 * x + 1) * u * math.pi / 16) * (0.5 if u else math.sqrt(0.125))
            for x in range(8)] for u in range(8)]


def transformed(block, steps):
    """The block's 64 coefficients in zigzag order, divided by the steps."""
    lines = [[sum(c * v for c, v in zip(cosine, block[8 * y:8 * y + 8])) for cosine in COSINES]
             for y in range(8)]
    out = [0] * 64
    for u in range(8):
        column = [line[u] for line in lines]
        for v in range(8):
            value = sum(c * s for c, s in zip(COSINES[v], column)) / steps[8 * v + u]
            out[8 * v + u] = int(math.floor(value + 0.5))
    return [out[i] for i in ZIGZAG]


def code_lengths(counts):
    """How many codes of each length (1 to 16), and the symbols, shortest code first."""
    # A symbol that never occurs keeps the code of all ones free, which is not allowed.
    heap = sorted([count, [symbol]] for symbol, count in counts.items())
    lengths = dict.fromkeys(counts, 0)
    heap.insert(0, [0, [256]])
    lengths[256] = 0
    while len(heap) > 1:
        (count_a, a), (count_b, b) = heap[0], heap[1]
        for symbol in a + b:
            lengths[symbol] += 1
        heap = sorted(heap[2:] + [[count_a + count_b, a + b]])
    per_length = [0] * 64
    for length in lengths.values():
        per_length[length] += 1
    for length in range(63, 16, -1):  # too long ones move up in pairs
        while per_length[length] > 0:
            shorter = length - 2
            while per_length[shorter] == 0:
                shorter -= 1
            per_length[length] -= 2
            per_length[length - 1] += 1
            per_length[shorter + 1] += 2
            per_length[shorter] -= 1
    longest = max(length for length in range(17) if per_length[length])
    per_length[longest] -= 1
    symbols = sorted((s for s in lengths if s != 256), key=lambda s: (lengths[s], s))
    return per_length[1:17], symbols


def codes_of(per_length, symbols):
    codes, code, at = {}, 0, 0
    for length, count in enumerate(per_length, 1):
        for _ in range(count):
            codes[symbols[at]] = (code, length)
            code += 1
            at += 1
        code <<= 1
    return codes


def symbols_of(block, previous):
    """(is of the first coefficient, symbol, extra bits, their number) of a block."""

    def bits(value):
        size = abs(value).bit_length()
        return (value if value >= 0 else value + (1 << size) - 1), size

    extra, size = bits(block[0] - previous)
    yield True, size, extra, size
    run = 0
    last = max((i for i in range(1, 64) if block[i]), default=0)
    for value in block[1:last + 1]:
        if value == 0:
            run += 1
            continue
        while run > 15:
            yield False, 0xF0, 0, 0
            run -= 16
        extra, size = bits(value)
        yield False, run * 16 + size, extra, size
        run = 0
    if last < 63:
        yield False, 0, 0, 0


def jpeg(rows, width, height, quality):
    """Baseline, colours at half the resolution; width and height must be multiples of 16."""
    scale = 5000 // quality if quality < 50 else 200 - 2 * quality
    steps = [[min(255, max(1, (s * scale + 50) // 100)) for s in table]
             for table in (BRIGHTNESS_STEPS, COLOR_STEPS)]
    planes = [[], [], []]
    for row in rows:
        red, green, blue = row[0::3], row[1::3], row[2::3]
        planes[0].append([0.299 * r + 0.587 * g + 0.114 * b - 128
                          for r, g, b in zip(red, green, blue)])
        planes[1].append([-0.168736 * r - 0.331264 * g + 0.5 * b
                          for r, g, b in zip(red, green, blue)])
        planes[2].append([0.5 * r - 0.418688 * g - 0.081312 * b
                          for r, g, b in zip(red, green, blue)])
    for plane in planes[1:]:
        plane[:] = [[(a[i] + a[i + 1] + b[i] + b[i + 1]) / 4 for i in range(0, width, 2)]
                    for a, b in zip(plane[0::2], plane[1::2])]

    def block_at(plane, x, y):
        return [value for line in plane[y:y + 8] for value in line[x:x + 8]]

    stream = []  # (table, is of the first coefficient, symbol, extra, size)
    previous = [0, 0, 0]
    for y in range(0, height, 16):
        for x in range(0, width, 16):
            parts = [(0, x + dx, y + dy) for dy in (0, 8) for dx in (0, 8)]
            for component, bx, by in parts + [(1, x // 2, y // 2), (2, x // 2, y // 2)]:
                table = 1 if component else 0
                block = transformed(block_at(planes[component], bx, by), steps[table])
                stream += [(table,) + entry for entry in symbols_of(block, previous[component])]
                previous[component] = block[0]

    def segment(marker, data):
        return struct.pack(">BBH", 0xFF, marker, len(data) + 2) + data

    out = b"\xFF\xD8" + segment(0xE0, b"JFIF\0\1\1\0\0\1\0\1\0\0")
    for index, table in enumerate(steps):
        out += segment(0xDB, bytes([index]) + bytes(table[i] for i in ZIGZAG))
    out += segment(0xC0, struct.pack(">BHHB", 8, height, width, 3) +
                   bytes([1, 0x22, 0, 2, 0x11, 1, 3, 0x11, 1]))
    codes = {}
    for table in (0, 1):
        for first in (True, False):
            counts = {}
            for entry in stream:
                if entry[0] == table and entry[1] == first:
                    counts[entry[2]] = counts.get(entry[2], 0) + 1
            per_length, symbols = code_lengths(counts)
            codes[table, first] = codes_of(per_length, symbols)
            out += segment(0xC4, bytes([table + (0 if first else 16)]) + bytes(per_length) +
                           bytes(symbols))
    out += segment(0xDA, bytes([3, 1, 0, 2, 0x11, 3, 0x11, 0, 63, 0]))
    bits, count, data = 0, 0, bytearray()
    for table, first, symbol, extra, size in stream:
        code, length = codes[table, first][symbol]
        bits = (bits << (length + size)) | (code << size) | extra
        count += length + size
        while count >= 8:
            count -= 8
            byte = (bits >> count) & 255
            data.append(byte)
            if byte == 255:
                data.append(0)
        bits &= (1 << count) - 1
    if count:
        data.append((bits << (8 - count) | (255 >> count)) & 255)
    return out + bytes(data) + b"\xFF\xD9"


# ---------------------------------------------------------------------------- the album


def main():
    default = Path(__file__).resolve().parent / "photos"
    folder = Path(sys.argv[1]) if len(sys.argv) > 1 else default
    folder.mkdir(parents=True, exist_ok=True)
    album = [
        ("lake-at-dawn.jpg", lake_at_dawn(), 640, 480),
        ("dunes.jpg", dunes(), 640, 480),
        ("evening-sea.jpg", evening_sea(), 640, 480),
        ("northern-lights.png", northern_lights(), 400, 300),
        ("forest-in-mist.tiff", forest_in_mist(), 320, 240),
    ]
    for seed, (name, scene, width, height) in enumerate(album):
        rows = photograph(scene, width, height, seed)
        if name.endswith(".jpg"):
            file = jpeg(rows, width, height, 88)
        elif name.endswith(".png"):
            file = png(rows, width, height)
        else:
            file = tiff(rows, width, height)
        (folder / name).write_bytes(file)
        print(f"{folder / name}: {width} x {height}, {len(file)} bytes")


if __name__ == "__main__":
    main()
