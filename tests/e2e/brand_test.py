"""The brand of the user who signed in last, as the header of the check window shows it."""

import plistlib
import re
import struct
import subprocess

from check_window import CheckWindowTest
from components import OVERLAY_TOOL
from desktop import PICTURES
from machine import HOME, PREFERENCES, RESOURCES, set_preferences, write_user_file

RED, GREEN, WHITE, BLACK = "#ff0000", "#00ff00", "#ffffff", "#000000"
WIDTH, HEIGHT = 120, 44  # of a logo


def download_logo(brand, color):
    """A bitmap of one colour, as the core keeps it."""
    blue_green_red = bytes.fromhex(color[5:7] + color[3:5] + color[1:3])
    pixels = blue_green_red * (WIDTH * HEIGHT)
    header = struct.pack("<2sIHHIIiiHHIIiiII", b"BM", 54 + len(pixels), 0, 0, 54, 40, WIDTH, HEIGHT, 1, 24, 0, len(pixels),
                         2835, 2835, 0, 0)
    write_user_file(HOME / f"Library/Application Support/Quillmark/logo-{brand}.bmp", header + pixels)


class Brand(CheckWindowTest):
    def setUp(self):
        super().setUp()
        OVERLAY_TOOL.unlink()

    def picture_with(self, name):
        """Of the window that the launcher shows now."""
        self.start_launcher()
        self.desktop.take_picture(f"brand-{name}")
        self.launcher.kill()
        self.launcher.wait()
        return PICTURES / f"brand-{name}.png"

    def picture_for(self, brand, name):
        set_preferences(UserList=[{"UserName": "anna", "BrandID": brand}], LastUsedUserName="anna")
        return self.picture_with(name)

    def count(self, picture, color):
        """How many pixels have that very colour."""
        told = subprocess.run(["convert", picture, "-depth", "8", "-format", "%c", "histogram:info:"], capture_output=True,
                              text=True, check=True)
        counts = dict(re.findall(r"(#[0-9A-F]{6})\b", line)[:1] + [line.split(":")[0]] for line in told.stdout.splitlines()
                      if "#" in line)
        return int(counts.get(color.upper(), 0))

    def are_alike(self, one, other):
        return subprocess.run(["compare", "-metric", "AE", one, other, "null:"], capture_output=True).returncode == 0

    def set_own_brand(self, brand):
        """The brand that the bundle was made for."""
        configuration = plistlib.loads((RESOURCES / "Config.plist").read_bytes())
        (RESOURCES / "Config.plist").write_bytes(plistlib.dumps(configuration | {"Brand": brand}))

    def test_the_logo_is_that_of_the_selected_user(self):
        download_logo(7, RED)
        download_logo(10001, GREEN)
        nobody = self.picture_with("of-nobody")
        self.assertTrue(self.are_alike(nobody, self.picture_for(1, "of-the-product")))
        self.assertEqual(self.count(nobody, RED), 0)
        self.assertEqual(self.count(self.picture_for(7, "another"), RED), WIDTH * HEIGHT)
        self.assertEqual(self.count(self.picture_for(10001, "reseller"), GREEN), WIDTH * HEIGHT)
        self.assertFalse(self.are_alike(nobody, self.picture_for(15, "15")))
        self.assertTrue(self.are_alike(nobody, self.picture_for(8, "without-a-logo")))

    def test_the_ground_is_that_of_the_brand_that_the_bundle_was_made_for(self):
        self.set_own_brand(15)
        self.assertGreater(self.count(self.picture_for(1, "bundle-for-15"), BLACK), self.count(self.product(), BLACK))
        self.set_own_brand(10001)
        download_logo(1, RED)
        reseller = self.picture_for(1, "bundle-for-a-reseller")
        self.assertEqual(self.count(reseller, RED), 0)  # deliberate: such a header has no logo
        self.assertGreater(self.count(reseller, WHITE), self.count(self.product(), WHITE))

    def product(self):
        self.set_own_brand(1)
        PREFERENCES.unlink(missing_ok=True)
        return self.picture_with("of-nobody")
