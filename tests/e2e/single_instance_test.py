"""Beside a running core the launcher shows its alert, and ends without touching anything."""

import os
import signal
from pathlib import Path

from components import OVERLAY_TOOL
from desktop import Desktop
from machine import CORE, LAUNCHER, LauncherTest, processes_of, run_launcher, wait_until

WINDOW_LIBRARIES = ("libquillmark-windows", "libQt6Gui", "libQt6Widgets")


def maps(pid):
    return Path(f"/proc/{pid}/maps").read_text()


class SingleInstance(LauncherTest):
    def setUp(self):
        self.assertEqual(run_launcher().returncode, 0)
        self.running_core = self.core()

    def messages(self):
        """What the second launcher has logged."""
        newest = self.newest_log()
        return [line.split("] ", 2)[2] for line in newest.read_text().splitlines()]

    def newest_log(self):
        folder = Path("/home/t/Library/Logs/Quillmark/Quillmark")
        return max(folder.glob("*.log"), key=lambda file: file.stat().st_mtime_ns)

    def test_without_a_display_the_alerts_texts_go_to_standard_error_and_the_launcher_ends(self):
        second = run_launcher()
        self.assertEqual(second.returncode, 0)
        self.assertIn("Quillmark is already running.", second.stderr)
        self.assertEqual(processes_of(CORE), [self.running_core])
        self.assertIn("Letting other copy run, we will terminate", self.messages())
        self.assertEqual(self.messages()[-1], "User did quit")
        self.assertNotIn("Quillmark did finish launching", self.messages()[-3:])

    def test_says_nothing_of_a_window_that_was_never_to_come(self):
        OVERLAY_TOOL.unlink()  # so that the check window is loaded in advance
        second = run_launcher()
        self.assertEqual(second.returncode, 0)
        self.assertNotIn("window", second.stderr)
        self.assertFalse([message for message in self.messages() if "window" in message])

    def test_with_a_display_the_alert_is_a_window_and_only_now_its_libraries_are_loaded(self):
        desktop = Desktop(self)
        second = desktop.start(LAUNCHER)

        def window():
            return desktop.run("xdotool", "search", "--onlyvisible", "--name", "^Quillmark$").stdout.split()

        found = wait_until(window, "the alert is on the screen")
        for library in WINDOW_LIBRARIES:
            self.assertIn(library, maps(second.pid))
        desktop.run("xdotool", "windowfocus", "--sync", found[-1], "key", "Return")
        self.assertEqual(second.wait(timeout=20), 0)
        self.assertEqual(self.messages()[-1], "User did quit")
        self.assertEqual(processes_of(CORE), [self.running_core])

    def test_a_core_that_was_killed_is_no_running_core(self):
        os.kill(self.running_core, signal.SIGKILL)
        wait_until(lambda: not processes_of(CORE), "the core is gone")
        self.assertEqual(run_launcher().returncode, 0)
        wait_until(lambda: processes_of(CORE), "another core runs")
