#!/usr/bin/env python3
"""Writes tools/orvctl/width_ranges.inc: which characters take no column of a terminal and which take two, out of the
character database that Python ships. Run it again for a newer one."""
import pathlib
import unicodedata

TARGET = pathlib.Path(__file__).resolve().parents[1] / "tools" / "orvctl" / "width_ranges.inc"
SOFT_HYPHEN = 0xAD
# Vowels and final consonants, which are drawn into the square of the consonant before them.
JAMO = [(0x1160, 0x11FF), (0xD7B0, 0xD7FF)]
PER_LINE = 5


def width(code):
    """None: nobody has it, either width will do."""
    if any(first <= code <= last for first, last in JAMO):
        return 0
    character = chr(code)
    category = unicodedata.category(character)
    if category in ("Mn", "Me", "Cf") and code != SOFT_HYPHEN:
        return 0
    if unicodedata.east_asian_width(character) in "WF":
        return 2
    return None if category == "Cn" else 1


def ranges(wanted):
    found, begin, end = [], None, None
    for code in range(0x110000):
        it = width(code)
        if it == wanted:
            begin, end = code if begin is None else begin, code
        elif it is not None and begin is not None:
            found.append((begin, end))
            begin = None
    return found


def lines(items):
    for at in range(0, len(items), PER_LINE):
        yield "  " + " ".join("{0x%04X, 0x%04X}," % each for each in items[at:at + PER_LINE])


text = ["// Made by scripts/make_width_table.py out of version %s of the character database; do not edit." % unicodedata.unidata_version]
for name, wanted in (("kNoColumn", 0), ("kTwoColumns", 2)):
    text += ["constexpr Range %s[] = {" % name, *lines(ranges(wanted)), "};"]
TARGET.write_text("\n".join(text) + "\n")
