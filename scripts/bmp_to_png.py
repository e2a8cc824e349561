#!/usr/bin/env python3
"""Writes a PNG beside every bitmap given (32 bits a pixel, uncompressed, bottom row first) and removes the bitmap."""
import struct
import sys
import zlib
from pathlib import Path


def _chunk(kind, data):
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))


def png(bitmap):
    magic, offset = bitmap[:2], struct.unpack_from("<I", bitmap, 10)[0]
    width, height, _, bits = struct.unpack_from("<iiHH", bitmap, 18)
    if magic != b"BM" or bits != 32 or width <= 0 or height <= 0:
        raise ValueError("not a bitmap of 32 bits a pixel")
    rows = bytearray()
    for row in reversed(range(height)):
        line = bitmap[offset + row * width * 4:offset + (row + 1) * width * 4]
        pixels = bytearray(width * 3)
        pixels[0::3], pixels[1::3], pixels[2::3] = line[2::4], line[1::4], line[0::4]
        rows += b"\0" + pixels
    header = struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0)
    return (b"\x89PNG\r\n\x1a\n" + _chunk(b"IHDR", header) + _chunk(b"IDAT", zlib.compress(bytes(rows), 9))
            + _chunk(b"IEND", b""))


def main():
    for name in sys.argv[1:]:
        source = Path(name)
        source.with_suffix(".png").write_bytes(png(source.read_bytes()))
        source.unlink()


if __name__ == "__main__":
    main()
