#!/usr/bin/env python3
"""Reads a virtual screen: screen.py SCREEN PNG [WIDTH HEIGHT] writes everything on it that is not black, or the top left part of that.

The screen is what Xvfb keeps in its -fbdir folder: an X window dump with 32 bits a pixel, blue first.
"""
import struct
import sys
import zlib
from pathlib import Path


def read_screen(path):
    """The rows of RGB pixels."""
    data = path.read_bytes()
    header = struct.unpack(">25I", data[:100])
    width, height, stride = header[4], header[5], header[12]
    start = header[0] + 12 * header[19]
    rows = []
    for y in range(height):
        row = data[start + y * stride:start + y * stride + 4 * width]
        pixels = bytearray(3 * width)
        pixels[0::3], pixels[1::3], pixels[2::3] = row[2::4], row[1::4], row[0::4]
        rows.append(bytes(pixels))
    return rows


def crop(rows):
    """What is not black; an empty screen gives no rows."""
    lines = [y for y, row in enumerate(rows) if any(row)]
    if not lines:
        return []
    left = min(len(row) - len(row.lstrip(b"\0")) for row in rows if any(row)) // 3
    right = (max(len(row.rstrip(b"\0")) for row in rows) + 2) // 3
    return [row[3 * left:3 * right] for row in rows[lines[0]:lines[-1] + 1]]


def write_png(path, rows):
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
    size = struct.pack(">IIBBBBB", len(rows[0]) // 3, len(rows), 8, 2, 0, 0, 0)
    pixels = zlib.compress(b"".join(b"\0" + row for row in rows), 9)
    path.write_bytes(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", size) + chunk(b"IDAT", pixels) + chunk(b"IEND", b""))


def main(screen, png, width=None, height=None):
    rows = crop(read_screen(Path(screen)))
    write_png(Path(png), [row[:3 * int(width)] for row in rows[:int(height)]] if width else rows)


if __name__ == "__main__":
    main(*sys.argv[1:])
