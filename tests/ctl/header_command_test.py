"""The header of the windows, drawn into a picture without a display."""

import plistlib
import re
import struct

from png import read_png
from tool import APP, ToolTest

RESOURCES = APP / "Contents/Resources"
WHITE, BLACK, CLEAR, GREY = (255, 255, 255, 255), (0, 0, 0, 255), (0, 0, 0, 0), (85, 85, 85, 255)
RED = (255, 0, 0, 255)


def bitmap(width, height, color=RED):
    """A BMP of one colour."""
    row = bytes(color[2::-1]) * width
    pixels = (row + bytes(-len(row) % 4)) * height
    return (struct.pack("<2sIII", b"BM", 54 + len(pixels), 0, 54) +
            struct.pack("<IiiHHIIiiII", 40, width, height, 1, 24, 0, len(pixels), 2835, 2835, 0, 0) + pixels)


class Header(ToolTest):
    def render(self, *arguments):
        """What is drawn, 100 points wide and without a title if nothing else is asked for."""
        for option, value in (("--width", "100"), ("--title", "")):
            arguments += () if option in arguments else (option, value)
        return self.render_wide(*arguments)

    def render_wide(self, *arguments):
        """What is drawn, as wide as it is and with the title that it has if nothing else is asked for."""
        output = self.home / "header.png"
        done = self.run_tool("header", "render", "--output", output, *arguments)
        self.assertEqual((done.stdout, done.stderr), ("", ""))
        return read_png(output.read_bytes())

    def test_is_600_points_wide_and_60_high_with_a_pixel_a_point(self):
        picture = self.render_wide()
        self.assertEqual((picture.width, picture.height), (600, 60))

    def test_width_and_scale_can_be_chosen(self):
        for width, scale, size in (("300", "1", (300, 60)), ("300", "2", (600, 120)), ("200", "1.5", (300, 90)),
                                   ("1", "1", (1, 60)), ("10", "4", (40, 240))):
            picture = self.render("--width", width, "--scale", scale)
            self.assertEqual((picture.width, picture.height), size)
            self.assertEqual(picture.dots_per_metre, round(float(scale) * 72 / 0.0254))

    def test_without_a_brand_the_accounts_is_taken(self):
        self.assertEqual(self.render().at(0, 0), WHITE)  # no account
        self.assertEqual(self.render().rows, self.render("--brand", "-1").rows)

    def test_each_brand_has_its_ground(self):
        for brand, color in (("-2147483648", WHITE), ("-1", WHITE), ("0", WHITE), ("15", BLACK), ("10000", WHITE)):
            picture = self.render("--brand", brand)
            self.assertEqual((picture.at(0, 0), picture.at(0, 59)), (color, GREY), brand)
        for brand in ("1", "10001", "2147483647"):
            picture = self.render("--brand", brand)
            self.assertNotIn(picture.at(0, 0), (WHITE, BLACK, CLEAR), brand)
            self.assertEqual(picture.at(0, 59) == GREY, brand != "1")

    def test_with_welcome_the_brand_is_the_configurations(self):
        own = self.render("--brand", "1").rows
        for brand in ("-1", "0", "1", "7", "10000"):
            self.assertEqual(self.render("--welcome", "--brand", brand).rows, own, brand)
        self.assertEqual(self.render("--welcome", "--brand", "15").at(0, 0), BLACK)
        reseller = self.render("--welcome", "--brand", "10001")
        self.assertEqual({reseller.at(x, y) for x in range(100) for y in range(59)}, {WHITE})

    def test_without_a_brand_welcome_reads_the_configuration(self):
        app = self.copy_app()
        configuration = app / "Contents/Resources/Config.plist"
        for brand, color in ((15, BLACK), (10001, WHITE)):
            configuration.write_bytes(plistlib.dumps({"Brand": brand}))
            self.assertEqual(self.render("--bundle", app, "--welcome").at(0, 0), color)
        configuration.unlink()
        self.assertEqual(self.render("--bundle", app, "--welcome").rows, self.render("--brand", "1").rows)

    def test_the_generic_form_is_the_same_for_every_brand(self):
        forms = [self.render("--generic", "--brand", brand).rows for brand in ("-1", "1", "15", "10001")]
        self.assertEqual(forms, [forms[0]] * 4)

    def test_a_hidden_header_is_clear(self):
        picture = self.render("--hidden", "--title", "Hello")
        self.assertEqual(picture.place_of(CLEAR), (0, 0, 100, 60))

    def test_the_title_is_the_products_name_if_none_is_given(self):
        without = self.render_wide("--brand", "15")
        self.assertEqual(without.rows, self.render_wide("--brand", "15", "--title", "Quillmark").rows)
        self.assertNotEqual(without.rows, self.render_wide("--brand", "15", "--title", "Mark").rows)
        left, top, width, height = self.render_wide("--brand", "10001", "--welcome").place_of(BLACK)
        self.assertTrue(20 <= left < 24 and 20 <= top and top + height <= 40 and width > 50, (left, top, width, height))
        self.assertIsNone(self.render_wide("--brand", "10001", "--welcome", "--title", "").place_of(BLACK))

    def test_the_own_logo_is_replaced(self):
        logo = self.write_file("logo.bmp", bitmap(30, 45))
        self.assertEqual(self.render("--brand", "1", "--logo", logo).place_of(RED), (55, 8, 30, 45))
        self.assertIsNone(self.render("--brand", "7", "--logo", logo).place_of(RED), "other brands have their own")

    def test_the_logo_can_come_from_standard_input(self):
        done = self.call("header", "render", "--brand", "1", "--logo", "-", "--output", "-", "--width", "100",
                         input=bitmap(30, 30))
        self.assertEqual((done.returncode, done.stderr), (0, b""))
        self.assertEqual(read_png(done.stdout).place_of(RED), (55, 15, 30, 30))

    def test_a_downloaded_logo_is_drawn_for_its_brand(self):
        self.write_file("Library/Application Support/Quillmark/logo-7.bmp", bitmap(20, 20))
        self.assertEqual(self.render("--brand", "7").place_of(RED), (65, 20, 20, 20))
        self.assertIsNone(self.render("--brand", "8").place_of(RED))

    def test_a_relative_name_is_not_taken_for_a_resource(self):
        self.write_file("logo-15.bmp", bitmap(120, 44))
        done = self.call("header", "render", "--brand", "1", "--logo", "logo-15.bmp", "--output", "-", "--scale", "2",
                         cwd=self.home)
        self.assertEqual(read_png(done.stdout).place_of(RED), (930, 16, 240, 88))

    def test_another_bundles_artwork_is_drawn_by_this_programs_module(self):
        app = self.copy_app()
        (app / "Contents/PlugIns/libquillmark-windows.so").write_bytes(b"")
        (app / "Contents/Resources/appheade_bg.png").write_bytes(b"")
        (app / "Contents/Resources/appheader_logo.png").write_bytes(bitmap(20, 20))
        picture = self.render("--bundle", app, "--brand", "1")
        self.assertEqual((picture.at(0, 0), picture.place_of(RED)), (CLEAR, (65, 20, 20, 20)))

    def test_a_logo_that_is_none_is_named(self):
        for name, contents in (("text.bmp", b"no picture"), ("cut.png", b"\x89PNG\r\n\x1a\n"), ("empty.bmp", b"")):
            path = self.write_file(name, contents)
            self.assertIn(f"quillmarkctl: {path}: ", self.failure("header", "render", "--output", "-", "--logo", path))
        missing = self.home / "missing.png"
        self.assertIn(f"quillmarkctl: {missing}: ", self.failure("header", "render", "--output", "-", "--logo", missing))
        self.assertIn("quillmarkctl: -: ", self.failure("header", "render", "--output", "-", "--logo", "-"))

    def test_a_picture_that_cannot_be_written_is_a_failure(self):
        for path in (self.home, self.home / "none/header.png", "/dev/full"):
            self.assertIn(f"quillmarkctl: {path}: ", self.failure("header", "render", "--output", path))

    def test_a_wrong_value_is_a_wrong_command_line(self):
        for arguments in ([], ["--output"], ["--output", "-", "--brand", "x"], ["--output", "-", "--brand", "2147483648"],
                          ["--output", "-", "--width", "0"], ["--output", "-", "--width", "4097"],
                          ["--output", "-", "--scale", "0.5"], ["--output", "-", "--scale", "4.1"],
                          ["--output", "-", "--scale", "nan"], ["--output", "-", "more"]):
            self.failure("header", "render", *arguments, status=2)

    def test_without_the_module_the_reason_is_told(self):
        app = self.copy_app()
        (app / "Contents/PlugIns/libquillmark-windows.so").unlink()
        tool = app / "Contents/MacOS/quillmarkctl"
        done = self.call("header", "render", "--output", self.home / "h.png", program=tool, text=True)
        self.assertEqual((done.returncode, done.stdout), (3, ""))
        self.assertRegex(done.stderr, r"\Aquillmarkctl: header render: [^\n]*libquillmark-windows.so[^\n]*\n\Z")
        self.assertFalse((self.home / "h.png").exists())

    def test_no_desktop_setting_and_no_display_takes_part(self):
        plain = self.render("--brand", "1", "--title", "Hello").rows
        for changes in ({"DISPLAY": ":65000"}, {"WAYLAND_DISPLAY": "wayland-7"}, {"QT_QPA_PLATFORM": "slate"},
                        {"QT_SCALE_FACTOR": "3"}, {"QT_STYLE_OVERRIDE": "slate"}, {"QT_QPA_PLATFORMTHEME": "gtk3"}):
            output = self.home / "other.png"
            self.run_tool("header", "render", "--output", output, "--width", "100", "--brand", "1", "--title", "Hello",
                          **changes)
            self.assertEqual(read_png(output.read_bytes()).rows, plain, changes)

    def test_loads_the_window_libraries(self):
        done = self.call("header", "render", "--output", "-", environment={"LD_DEBUG": "files"})
        self.assertTrue(re.search(rb"calling init: \S*libQt6Widgets", done.stderr))
