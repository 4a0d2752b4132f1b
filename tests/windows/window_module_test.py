"""The window module in a program that knows no window library: when it is loaded, and what happens without a display."""

import os
import re
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

PROBE = Path(os.environ["ALERT_PROBE"])
PATIENCE = 30  # seconds
WINDOW_LIBRARIES = ("libQt6Core", "libQt6Gui", "libQt6Widgets", "libQt6DBus", "libX11", "libxcb", "libdbus", "libquillmark-windows")
NEVER = ("libcrypto", "libssl", "libminizip", "libsecret")
TEXTS = ("Quillmark: Quillmark is already running. Only one copy of Quillmark can run at a time. To use this copy, first "
         "quit the one that is running, then open Quillmark again.")


class WindowModule(unittest.TestCase):
    def setUp(self):
        self.folder = Path(self.enterContext(tempfile.TemporaryDirectory()))

    def environment(self, **changes):
        """Nothing of the desktop that the tests run on."""
        return {"PATH": os.environ["PATH"], "HOME": str(self.folder), "XDG_RUNTIME_DIR": str(self.folder),
                "LANG": "C.UTF-8", "DBUS_SESSION_BUS_ADDRESS": f"unix:path={self.folder}/none", **changes}

    def start(self, program=PROBE, **changes):
        process = subprocess.Popen([program], cwd=self.folder, env=self.environment(**changes), text=True,
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self.addCleanup(lambda: (process.kill(), process.communicate()))
        return process

    def display(self):
        """A display of the test's own."""
        server = subprocess.Popen(["Xvfb", "-displayfd", "1", "-screen", "0", "800x600x24", "-nolisten", "tcp"],
                                  stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        self.addCleanup(lambda: (server.terminate(), server.communicate()))
        return ":" + server.stdout.readline().strip()

    def answer_on(self, display, key, process):
        """Presses a key in the alert, as the user's keyboard would. \\returns both outputs."""
        for command in (["search", "--sync", "--onlyvisible", "--name", "^Quillmark$", "windowfocus", "--sync"],
                        ["key", key]):
            subprocess.run(["xdotool", *command], env=self.environment(DISPLAY=display), check=True, timeout=PATIENCE)
        return process.communicate(timeout=PATIENCE)

    def assert_answered_without_window(self, process, obstacle):
        out, err = process.communicate(timeout=PATIENCE)
        self.assertEqual((process.returncode, out), (0, "answer 0\n"), err)
        lines = err.splitlines()
        self.assertEqual(len(lines), 2, err)
        self.assertRegex(lines[0], r'\(ERR\) .*The alert "Quillmark is already running\." could not be shown: ' + obstacle)
        self.assertEqual(lines[1], TEXTS)
        self.assertEqual([path for path in self.folder.iterdir() if path.name.startswith("core")], [])

    def test_is_loaded_with_the_window_libraries_by_the_first_alert_and_not_before(self):
        display = self.display()
        process = self.start(DISPLAY=display, LD_DEBUG="files", LD_DEBUG_OUTPUT=str(self.folder / "loader"))
        self.answer_on(display, "Return", process)
        report = (self.folder / f"loader.{process.pid}").read_text()
        at_start, mark, later = report.partition(f"initialize program: {PROBE}")
        self.assertTrue(mark, "the loader told nothing")
        libraries = [set(re.findall(r"calling init: \S*/([^/\s]+)", part)) for part in (at_start, later)]
        self.assertTrue(any(name.startswith("libc.so") for name in libraries[0]))
        self.assertEqual([name for name in libraries[0] if name.startswith(WINDOW_LIBRARIES + NEVER)], [])
        for library in WINDOW_LIBRARIES:
            self.assertTrue(any(name.startswith(library) for name in libraries[1]), library)
        self.assertEqual([name for name in libraries[1] if name.startswith(NEVER)], [])

    def test_shows_the_alert_and_hands_back_the_answer(self):
        display = self.display()
        for key in ("Return", "space", "Escape"):
            with self.subTest(key):
                process = self.start(DISPLAY=display)
                self.assertEqual(self.answer_on(display, key, process), ("answer 0\n", ""))
                self.assertEqual(process.returncode, 0)

    def test_tells_the_display_the_name_of_its_bundle(self):
        display = self.display()
        process = self.start(DISPLAY=display)
        name = subprocess.run(["xdotool", "search", "--sync", "--onlyvisible", "--class", "^AlertProbe$", "getwindowname"],
                              env=self.environment(DISPLAY=display), timeout=PATIENCE, capture_output=True, text=True)
        self.assertEqual(name.stdout, "Quillmark\n", "the title is the brand's product name")
        self.answer_on(display, "Return", process)

    def test_without_a_display_the_texts_go_to_standard_error(self):
        self.assert_answered_without_window(self.start(), "there is no display")

    def test_with_a_display_that_does_not_exist_the_texts_go_to_standard_error(self):
        self.assert_answered_without_window(self.start(DISPLAY=":65000"), "the display can't be reached")

    def test_with_a_wayland_display_that_does_not_exist_the_texts_go_to_standard_error(self):
        self.assert_answered_without_window(self.start(WAYLAND_DISPLAY="wayland-7"), "the display can't be reached")

    def test_with_a_kind_of_display_that_qt_does_not_know_the_texts_go_to_standard_error(self):
        self.assert_answered_without_window(self.start(QT_QPA_PLATFORM="slate"), "the display can't be reached")

    def test_without_the_module_the_texts_go_to_standard_error(self):
        app = self.folder / "Other.app/Contents"
        (app / "MacOS").mkdir(parents=True)
        (app / "Resources").symlink_to(PROBE.parents[1] / "Resources")
        program = shutil.copy(PROBE, app / "MacOS/AlertProbe")
        self.assert_answered_without_window(self.start(program), f".*{app}/PlugIns/libquillmark-windows.so")
