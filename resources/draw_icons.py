#!/usr/bin/env python3
"""Draws the icons of the companions: address book, group and person, in the sizes 16, 20, 24 and 32.

Every icon is a list of layers, each a shape on a grid of 16 by 16 and a colour; edges are smoothed by taking the
mean of many points a pixel. Written as 32-bit images with transparency.
"""
import struct
import sys
from pathlib import Path

SIZES = (16, 20, 24, 32)
_GRID = 16
_POINTS = 8

_OUTLINE = (0x1F, 0x3A, 0x5F)
_COVER = (0x2E, 0x75, 0xB6)
_SPINE = (0x1F, 0x4E, 0x79)
_PAPER = (0xFF, 0xFF, 0xFF)
_TAB_RED = (0xD8, 0x4B, 0x3A)
_TAB_YELLOW = (0xF0, 0xB4, 0x2C)
_TAB_GREEN = (0x4F, 0xA3, 0x4A)
_SKIN = (0xF2, 0xC2, 0x9B)
_SKIN_EDGE = (0x8A, 0x5A, 0x36)
_GREEN = (0x3F, 0x9B, 0x5A)
_GREEN_EDGE = (0x1F, 0x5B, 0x33)
_BLUE_EDGE = (0x17, 0x3F, 0x6B)


# ---- shapes: functions that tell whether a point lies inside ----------------------------------------------


def rectangle(left, top, right, bottom):
    return lambda x, y: left <= x < right and top <= y < bottom


def circle(centre_x, centre_y, radius):
    return lambda x, y: (x - centre_x) ** 2 + (y - centre_y) ** 2 <= radius ** 2


def shoulders(centre_x, top, half_width, bottom):
    """Upper half of an ellipse that stands on the line at the bottom."""
    height = bottom - top
    return lambda x, y: y < bottom and ((x - centre_x) / half_width) ** 2 + ((y - bottom) / height) ** 2 <= 1


def person(centre_x, head_y, head, half_width, bottom, colour, edge, rim=0.8):
    """Head and shoulders, each with a rim in a darker colour."""
    shoulder_top = head_y + head * 0.75
    return [
        (shoulders(centre_x, shoulder_top - rim, half_width + rim, bottom), edge),
        (shoulders(centre_x, shoulder_top, half_width, bottom - rim), colour),
        (circle(centre_x, head_y, head + rim * 0.6), _SKIN_EDGE),
        (circle(centre_x, head_y, head - rim * 0.4), _SKIN),
    ]


ICONS = {
    "address_book": [
        (rectangle(12, 2, 15, 5), _TAB_RED),
        (rectangle(12, 6, 15, 9), _TAB_YELLOW),
        (rectangle(12, 10, 15, 13), _TAB_GREEN),
        (rectangle(1, 0, 13, 16), _OUTLINE),
        (rectangle(2, 1, 12, 15), _COVER),
        (rectangle(2, 1, 4, 15), _SPINE),
        (circle(8, 5.5, 2), _PAPER),
        (shoulders(8, 8, 3, 12), _PAPER),
    ],
    "group": [
        *person(11, 4.2, 2.3, 3.6, 13, _GREEN, _GREEN_EDGE),
        *person(5.5, 6.2, 2.7, 4.6, 16, _COVER, _BLUE_EDGE),
    ],
    "person": person(8, 4.6, 3.5, 5.8, 16, _COVER, _BLUE_EDGE),
}


# ---- picture and file --------------------------------------------------------------------------------------


def _colour_at(layers, x, y):
    for inside, colour in reversed(layers):
        if inside(x, y):
            return colour
    return None


def pixel(layers, size, column, row):
    """Blue, green, red and opacity of one pixel, each the mean of its points."""
    scale = _GRID / size
    hits = []
    for index in range(_POINTS * _POINTS):
        x = (column + (index % _POINTS + 0.5) / _POINTS) * scale
        y = (row + (index // _POINTS + 0.5) / _POINTS) * scale
        colour = _colour_at(layers, x, y)
        if colour:
            hits.append(colour)
    if not hits:
        return bytes(4)
    red, green, blue = (round(sum(channel) / len(hits)) for channel in zip(*hits))
    return bytes((blue, green, red, round(255 * len(hits) / _POINTS ** 2)))


def image(layers, size):
    """Header, colours from the bottom row up, and the mask for displays without transparency."""
    header = struct.pack("<IiiHHIIiiII", 40, size, size * 2, 1, 32, 0, 0, 0, 0, 0, 0)
    colours, mask = bytearray(), bytearray()
    for row in reversed(range(size)):
        line = [pixel(layers, size, column, row) for column in range(size)]
        colours += b"".join(line)
        bits = sum(1 << (size - 1 - column) for column, value in enumerate(line) if value[3] < 128)
        stride = (size + 31) // 32 * 4
        mask += (bits << (stride * 8 - size)).to_bytes(stride, "big")
    return header + bytes(colours) + bytes(mask)


def icon_file(layers, sizes=SIZES):
    images = [image(layers, size) for size in sizes]
    offset = 6 + 16 * len(images)
    directory = struct.pack("<HHH", 0, 1, len(images))
    for size, data in zip(sizes, images):
        directory += struct.pack("<BBBBHHII", size, size, 0, 0, 1, 32, len(data), offset)
        offset += len(data)
    return directory + b"".join(images)


def main():
    folder = Path(sys.argv[1])
    folder.mkdir(parents=True, exist_ok=True)
    for name, layers in ICONS.items():
        (folder / f"{name}.ico").write_bytes(icon_file(layers))


if __name__ == "__main__":
    main()
