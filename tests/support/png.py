"""Reads PNG pictures without any picture library, as plain as the project makes them."""

import struct
import zlib
from typing import NamedTuple


class Picture(NamedTuple):
    width: int
    height: int
    dots_per_metre: int
    rows: list  # of rows from the top, each a list of (red, green, blue, alpha)

    def at(self, x, y):
        """The colour of a pixel, from the left and from the top."""
        return self.rows[y][x]

    def place_of(self, color):
        """Left, top, width and height of where a colour is."""
        found = [(x, y) for y, row in enumerate(self.rows) for x, pixel in enumerate(row) if pixel == color]
        columns, rows = ({point[axis] for point in found} for axis in (0, 1))
        return (min(columns), min(rows), max(columns) - min(columns) + 1, max(rows) - min(rows) + 1) if found else None


def read_png(data):
    """8 bits a channel, with alpha, not interlaced, as dense in both directions."""
    if data[:8] != b"\x89PNG\r\n\x1a\n":
        raise ValueError("not a PNG")
    chunks, position = {}, 8
    while position < len(data):
        length, kind = struct.unpack_from(">I4s", data, position)
        content = data[position + 8:position + 8 + length]
        if struct.unpack_from(">I", data, position + 8 + length)[0] != zlib.crc32(kind + content):
            raise ValueError("damaged PNG")
        chunks[kind] = chunks.get(kind, b"") + content
        position += 12 + length
    width, height, *form = struct.unpack(">IIBBBBB", chunks[b"IHDR"])
    across, along, unit = struct.unpack(">IIB", chunks[b"pHYs"]) if b"pHYs" in chunks else (0, 0, 1)
    if form != [8, 6, 0, 0, 0] or across != along or unit != 1:
        raise ValueError("not a PNG of the expected kind")
    rows = [[tuple(row[x:x + 4]) for x in range(0, len(row), 4)]
            for row in unfiltered(zlib.decompress(chunks[b"IDAT"]), width * 4)]
    return Picture(width, height, across, rows)


def unfiltered(data, stride):
    """The rows of a PNG, each freed of the filter that its first byte names."""
    above, rows = bytearray(stride), []
    for start in range(0, len(data), stride + 1):
        filter_type, row = data[start], bytearray(data[start + 1:start + 1 + stride])
        for i in range(stride):
            left, up, corner = (row[i - 4] if i > 3 else 0), above[i], (above[i - 4] if i > 3 else 0)
            estimate = left + up - corner
            nearest = min((left, up, corner), key=lambda value: abs(estimate - value))
            row[i] = (row[i] + (0, left, up, (left + up) // 2, nearest)[filter_type]) & 255
        rows.append(row)
        above = row
    return rows
