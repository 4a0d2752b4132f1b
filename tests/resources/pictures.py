"""Reads the bitmaps that the bundle carries, as plain as the project makes them, and tells colours apart."""

import struct

from png import Picture


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
    return Picture(width, height, density, rows)


def contrast(one, other):
    """The contrast ratio of two colours as the accessibility guidelines of the web define it, 1 to 21."""
    def luminance(colour):
        linear = [c / 3294.6 if c <= 10 else ((c / 255 + 0.055) / 1.055) ** 2.4 for c in colour[:3]]
        return 0.2126 * linear[0] + 0.7152 * linear[1] + 0.0722 * linear[2]

    dark, light = sorted((luminance(one), luminance(other)))
    return (light + 0.05) / (dark + 0.05)
