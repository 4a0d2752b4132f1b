"""The pictures: in the formats and sizes that their readers expect, crisp on dense screens, legible under text."""

import struct
import unittest
from functools import cache

from bundle import RESOURCES, SOURCES
from pictures import contrast, read_bmp
from png import read_png

IMAGES = SOURCES / "resources/images"
WHITE, BLACK = (255, 255, 255, 255), (0, 0, 0, 255)

# Name without its ending, width and height in points.
LOGOS = {"logo-1": (120, 44), "logo-15": (120, 44)}
LISTED = {"fault": (16, 16)}
HEADER = {"appheader_logo": (120, 44), "appheade_bg": (600, 60), "resellerheader_bg": (600, 60)}
ICONS = [16, 24, 32, 48, 64, 128, 256, 512]


@cache
def bmp(name):
    return read_bmp((IMAGES / f"{name}.bmp").read_bytes())


@cache
def png(name):
    return read_png((IMAGES / f"{name}.png").read_bytes())


def facts(picture):
    """Width and height in pixels, and dots an inch."""
    return picture.width, picture.height, round(picture.dots_per_metre * 0.0254)


class Artwork(unittest.TestCase):
    def test_every_picture_is_of_its_size_and_exactly_double_for_dense_screens(self):
        for read, sizes in ((bmp, LOGOS), (png, HEADER | LISTED)):
            for name, (width, height) in sizes.items():
                self.assertEqual(facts(read(name)), (width, height, 72), name)
                self.assertEqual(facts(read(f"{name}@2x")), (2 * width, 2 * height, 144), name)

    def test_no_logo_is_higher_than_the_header(self):
        for name, (_, height) in (LOGOS | HEADER).items():
            self.assertLessEqual(height, 60, name)

    def test_the_default_logo_is_a_white_card_with_round_corners(self):
        for name in ("logo-1", "logo-1@2x"):
            rows = bmp(name).rows
            middle = len(rows) // 2
            for corner in (rows[0][0], rows[0][-1], rows[-1][0], rows[-1][-1]):
                self.assertEqual(corner, (255, 255, 255, 0), "clear, and white for readers that know no transparency")
            for edge in (rows[middle][0], rows[middle][-1], rows[0][middle], rows[-1][middle]):
                self.assertEqual(edge, WHITE, name)
            self.assertGreater(len(set(sum(rows, []))), 50, name)

    def test_the_logo_of_brand_15_stands_on_black(self):
        for name in ("logo-15", "logo-15@2x"):
            rows = bmp(name).rows
            edge = rows[0] + rows[-1] + [row[0] for row in rows] + [row[-1] for row in rows]
            self.assertEqual(set(edge), {BLACK}, name)
            self.assertGreater(len(set(sum(rows, []))), 50, name)

    def test_the_header_logo_lets_the_header_shine_through(self):
        for name in ("appheader_logo", "appheader_logo@2x"):
            rows = png(name).rows
            self.assertEqual(rows[0][0][3], 0, name)
            self.assertIn(WHITE, sum(rows, []), name)

    def test_the_title_is_legible_on_both_header_grounds(self):
        for name, text in (("appheade_bg", WHITE), ("resellerheader_bg", BLACK)):
            for row in png(name).rows[15:45]:
                for pixel in row:
                    self.assertEqual(pixel[3], 255, name)
                    self.assertGreaterEqual(contrast(pixel, text), 7, name)

    def test_the_reseller_ground_is_white_where_a_logo_on_white_is_placed(self):
        for row in png("resellerheader_bg").rows:
            self.assertEqual(set(row[600 - 15 - 120:]), {WHITE})

    def test_the_sign_of_a_fault_has_no_ground_and_shows_on_light_and_on_dark_ones(self):
        for name in ("fault", "fault@2x"):
            rows = png(name).rows
            self.assertEqual(rows[0][0][3], 0, name)
            sign = rows[len(rows) * 13 // 16][len(rows) // 4]
            self.assertEqual(sign, (0xFF, 0xB0, 0x20, 255), name)
            self.assertGreater(contrast(sign, WHITE), 1.7, name)
            self.assertGreater(contrast(sign, (0x2A, 0x2E, 0x32)), 5, name)

    def test_the_icon_comes_in_every_size_with_clear_corners_and_a_solid_middle(self):
        for size in ICONS:
            icon = png(f"Quillmark-{size}")
            self.assertEqual((icon.width, icon.height), (size, size))
            self.assertLess(icon.rows[0][0][3], 64)
            self.assertEqual(icon.rows[size // 2][size // 2][3], 255)

    def test_the_icon_file_of_the_bundle_holds_the_same_icons(self):
        data = (IMAGES / "Quillmark.icns").read_bytes()
        self.assertEqual(struct.unpack_from(">4sI", data), (b"icns", len(data)))
        sizes, position = {}, 8
        while position < len(data):
            kind, length = struct.unpack_from(">4sI", data, position)
            icon = data[position + 8:position + length]
            size = sizes[kind.decode()] = struct.unpack_from(">I", icon, 16)[0]
            self.assertEqual(icon, (IMAGES / f"Quillmark-{size}.png").read_bytes(), kind)
            position += length
        self.assertEqual(sizes, {"icp4": 16, "icp5": 32, "ic11": 32, "ic12": 64, "ic07": 128, "ic08": 256, "ic13": 256,
                                 "ic09": 512, "ic14": 512})

    def test_the_bundle_carries_the_same_pictures(self):
        pictures = [path for path in IMAGES.iterdir() if path.is_file()]
        self.assertEqual(len(pictures), 2 * len(LOGOS | HEADER | LISTED) + len(ICONS) + 1)
        for path in pictures:
            self.assertEqual((RESOURCES / path.name).read_bytes(), path.read_bytes(), path.name)
