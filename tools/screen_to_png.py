"""Writes the top left part of a virtual screen as a PNG file: screen_to_png.py SCREEN_FILE PNG WIDTH HEIGHT

The screen file is what Xvfb keeps in its -fbdir folder: an X window dump with 32 bits a pixel, blue first.
"""
import struct
import sys
import zlib


def chunk(kind, data):
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))


def main(screen_file, png, width, height):
    with open(screen_file, "rb") as file:
        dump = file.read()
    header = struct.unpack(">25I", dump[:100])
    start, line, colours = header[0], header[12], header[19]
    start += colours * 12
    rows = []
    for y in range(height):
        row = dump[start + y * line:start + y * line + width * 4]
        pixels = bytearray(3 * width)
        pixels[0::3], pixels[1::3], pixels[2::3] = row[2::4], row[1::4], row[0::4]
        rows.append(b"\0" + bytes(pixels))
    with open(png, "wb") as file:
        file.write(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0)) +
                   chunk(b"IDAT", zlib.compress(b"".join(rows), 9)) + chunk(b"IEND", b""))


if __name__ == "__main__":
    main(sys.argv[1], sys.argv[2], int(sys.argv[3]), int(sys.argv[4]))
