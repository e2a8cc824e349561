#!/usr/bin/env python3
"""Writes charset_tables.inc: what the bytes of each character set that contact files name mean.

Sets of one byte are 128 units, for the bytes from 0x80. Sets of two bytes are a row for each lead byte that has one; a
row is the range of its second bytes and its units, and rows that two sets share stand there once. 0 means no character.
The tables come from Python's codecs. `make_charset_tables.py FILE` writes FILE.
"""
import pathlib
import sys

ONE_BYTE = {
    28592: "iso8859_2", 28593: "iso8859_3", 28594: "iso8859_4", 28595: "iso8859_5", 28596: "iso8859_6",
    28597: "iso8859_7", 28598: "iso8859_8", 28599: "iso8859_9", 28600: "iso8859_10", 28603: "iso8859_13",
    28604: "iso8859_14", 28605: "iso8859_15", 28606: "iso8859_16", 874: "cp874", 1250: "cp1250", 1251: "cp1251",
    1252: "cp1252", 1253: "cp1253", 1254: "cp1254", 1255: "cp1255", 1256: "cp1256", 1257: "cp1257", 1258: "cp1258",
    20866: "koi8_r", 21866: "koi8_u", 10000: "mac_roman", 437: "cp437", 850: "cp850", 852: "cp852", 866: "cp866",
}
TWO_BYTES = {932: "cp932", 936: "gbk", 950: "cp950", 949: "cp949"}
# What stands behind the byte 8F in EUC-JP. The rest of it is in another order the characters of 932.
EUC_JP_PLANE = 51933


def unit(codec, data):
    try:
        text = data.decode(codec)
    except UnicodeDecodeError:
        return 0
    return ord(text) if len(text) == 1 and ord(text) < 0x10000 else 0


def units(values):
    lines = []
    for start in range(0, len(values), 16):
        lines.append("    " + " ".join(f"0x{value:X}," for value in values[start:start + 16]))
    return "\n".join(lines)


def one_byte_tables(out):
    out.append("constexpr OneByteSet kOneByteSets[] = {")
    for page, codec in sorted(ONE_BYTE.items()):
        values = [unit(codec, bytes([byte])) or byte for byte in range(0x80, 0x100)]
        out.append(f"    {{{page}, {{\n{units(values)}}}}},")
    out.append("};\n")


def rows_of(codec, prefix):
    for lead in range(0x80, 0x100):
        row = [unit(codec, prefix + bytes([lead, second])) for second in range(0x100)]
        used = [second for second in range(0x40, 0x100) if row[second]]
        if used:
            yield lead, used[0], row[used[0]:used[-1] + 1]


def two_byte_tables(out):
    pool, places, rows, sets = [], {}, [], []
    jobs = [(page, codec, b"") for page, codec in sorted(TWO_BYTES.items())]
    jobs.append((EUC_JP_PLANE, "euc_jp", b"\x8f"))
    for page, codec, prefix in jobs:
        first = len(rows)
        for lead, second, values in rows_of(codec, prefix):
            key = tuple(values)
            if key not in places:
                places[key] = len(pool)
                pool.extend(values)
            rows.append((lead, second, len(values), places[key]))
        sets.append((page, first, len(rows) - first))
    out.append(f"constexpr char16_t kTwoByteUnits[] = {{\n{units(pool)}}};\n")
    out.append("constexpr TwoByteRow kTwoByteRows[] = {")
    out += [f"    {{0x{lead:X}, 0x{second:X}, {count}, {place}}}," for lead, second, count, place in rows]
    out.append("};\n")
    out.append("constexpr TwoByteSet kTwoByteSets[] = {")
    out += [f"    {{{page}, {first}, {count}}}," for page, first, count in sets]
    out.append("};")


def gb18030_ranges(out):
    """Runs of the four-byte forms below U+10000: first linear index and the code point it stands for."""
    runs, expected = [], None
    for index in range(39420):
        b4, rest = index % 10, index // 10
        b3, rest = rest % 126, rest // 126
        data = bytes([0x81 + rest // 10, 0x30 + rest % 10, 0x81 + b3, 0x30 + b4])
        value = unit("gb18030", data)
        if value and value != expected:
            runs.append((index, value))
        expected = value + 1 if value else None
    out.append("\nconstexpr LinearRun kGb18030Runs[] = {")
    out += [f"    {{{index}, 0x{value:X}}}," for index, value in runs]
    out.append("};")


def main():
    out = ["// Made by scripts/make_charset_tables.py; change that."]
    one_byte_tables(out)
    two_byte_tables(out)
    gb18030_ranges(out)
    target = pathlib.Path(sys.argv[1])
    target.parent.mkdir(parents=True, exist_ok=True)
    target.write_text("\n".join(out) + "\n", encoding="ascii")


if __name__ == "__main__":
    main()
