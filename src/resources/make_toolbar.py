#!/usr/bin/env python3
"""Draws toolbar_212.bmp: four images of 16 by 15 pixels side by side, 16 colours, one per machine filter.

Each is the outline of a sheet-metal part with a ring in its middle. The dark face keeps yellow readable.
"""

import pathlib
import struct

BACK, DARK, GREEN, YELLOW, MAGENTA = 7, 0, 10, 11, 13  # places in the palette
LETTERS = {".": BACK, "#": DARK}
PALETTE = (
    (0, 0, 0), (128, 0, 0), (0, 128, 0), (128, 128, 0), (0, 0, 128), (128, 0, 128), (0, 128, 128), (192, 192, 192),
    (128, 128, 128), (255, 0, 0), (0, 255, 0), (255, 255, 0), (0, 0, 255), (255, 0, 255), (0, 255, 255),
    (255, 255, 255),
)

# o: outline, r: ring
IMAGE = (
    "................",
    ".##########.....",
    ".#oooooooo##....",
    ".#o######oo##...",
    ".#o#######oo###.",
    ".#o###rrrr##oo#.",
    ".#o##rr##rr##o#.",
    ".#o##r####r##o#.",
    ".#o##r####r##o#.",
    ".#o##rr##rr##o#.",
    ".#o###rrrr###o#.",
    ".#o##########o#.",
    ".#oooooooooooo#.",
    ".##############.",
    "................",
)
COLOURS = ((GREEN, GREEN), (YELLOW, YELLOW), (MAGENTA, MAGENTA), (YELLOW, MAGENTA))


def strip_row(row):
    pixels = []
    for outline, ring in COLOURS:
        pixels += [{**LETTERS, "o": outline, "r": ring}[letter] for letter in row]
    return bytes(left << 4 | right for left, right in zip(pixels[::2], pixels[1::2]))


def main():
    pixels = b"".join(strip_row(row) for row in reversed(IMAGE))
    palette = b"".join(bytes((blue, green, red, 0)) for red, green, blue in PALETTE)
    header = struct.pack("<IiiHHIIiiII", 40, 16 * len(COLOURS), len(IMAGE), 1, 4, 0, len(pixels), 0, 0, 16, 0)
    offset = 14 + len(header) + len(palette)
    file_header = struct.pack("<2sIHHI", b"BM", offset + len(pixels), 0, 0, offset)
    path = pathlib.Path(__file__).with_name("toolbar_212.bmp")
    path.write_bytes(file_header + header + palette + pixels)


if __name__ == "__main__":
    main()
