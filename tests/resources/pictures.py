"""Reads the two kinds of pictures that the bundle carries, as plain as the project makes them."""

import struct
import zlib
from typing import NamedTuple


class Picture(NamedTuple):
    width: int
    height: int
    dots_per_inch: int
    rows: list  # of rows from the top, each a list of (red, green, blue, alpha)


def dots_per_inch(dots_per_metre):
    return round(dots_per_metre * 0.0254)


def read_bmp(data):
    """Uncompressed, bottom row first: 24 bits, which every reader of bitmaps understands, or 32 bits with alpha."""
    kind, offset, header_size = struct.unpack_from("<2s8xII", data)
    width, height, planes, bits, compression, _, density = struct.unpack_from("<iiHHIII", data, 18)
    if (kind, planes) != (b"BM", 1):
        raise ValueError("not a bitmap")
    if (header_size, bits, compression) == (40, 24, 0):
        size = 3
    elif (header_size, bits, compression) == (124, 32, 3) and \
            struct.unpack_from("<IIII", data, 54) == (0xFF0000, 0xFF00, 0xFF, 0xFF000000):
        size = 4
    else:
        raise ValueError("not a plain bitmap")
    stride = (width * size + 3) // 4 * 4
    rows = []
    for y in range(height):
        row = data[offset + y * stride:][:width * size]
        rows.insert(0, [(row[x + 2], row[x + 1], row[x], row[x + 3] if size == 4 else 255)
                        for x in range(0, len(row), size)])
    return Picture(width, height, dots_per_inch(density), rows)


def read_png(data):
    """8 bits a channel, with alpha, not interlaced."""
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
    width, height, bits, colours, _, _, interlaced = struct.unpack(">IIBBBBB", chunks[b"IHDR"])
    if (bits, colours, interlaced) != (8, 6, 0):
        raise ValueError("not a PNG of the expected kind")
    density = struct.unpack(">IIB", chunks[b"pHYs"])[0] if b"pHYs" in chunks else 0
    rows = [[tuple(row[x:x + 4]) for x in range(0, len(row), 4)]
            for row in unfiltered(zlib.decompress(chunks[b"IDAT"]), width * 4)]
    return Picture(width, height, dots_per_inch(density), rows)


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


def contrast(one, other):
    """The contrast ratio of two colours as the accessibility guidelines of the web define it, 1 to 21."""
    def luminance(colour):
        linear = [c / 3294.6 if c <= 10 else ((c / 255 + 0.055) / 1.055) ** 2.4 for c in colour[:3]]
        return 0.2126 * linear[0] + 0.7152 * linear[1] + 0.0722 * linear[2]

    dark, light = sorted((luminance(one), luminance(other)))
    return (light + 0.05) / (dark + 0.05)
