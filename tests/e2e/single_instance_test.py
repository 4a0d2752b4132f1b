"""Beside a running core the launcher shows its alert, and ends without touching anything."""

import os
import signal
import subprocess
import unittest
from pathlib import Path

from machine import APP, CORE, LauncherTest, environment, processes_of, run_launcher, start, wait_until

LAUNCHER = APP / "Contents/MacOS/Quillmark"
WINDOW_LIBRARIES = ("libquillmark-windows", "libQt6Gui", "libQt6Widgets")


def display():
    """A display of the test's own. \returns its name and its server."""
    reading, writing = os.pipe()
    server = subprocess.Popen(["Xvfb", "-displayfd", str(writing), "-screen", "0", "1024x768x24", "-nolisten", "tcp", "-noreset"],
                              pass_fds=[writing], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    os.close(writing)
    with os.fdopen(reading) as number:
        return ":" + number.readline().strip(), server


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

    def test_with_a_display_the_alert_is_a_window_and_only_now_its_libraries_are_loaded(self):
        name, server = display()
        self.addCleanup(server.wait)
        self.addCleanup(server.kill)
        second = start(LAUNCHER, env=environment(DISPLAY=name))
        self.addCleanup(second.communicate)
        self.addCleanup(second.kill)
        tools = {"env": os.environ | {"DISPLAY": name}, "capture_output": True, "text": True}

        def window():
            return subprocess.run(["xdotool", "search", "--onlyvisible", "--name", "^Quillmark$"], **tools).stdout.split()

        found = wait_until(window, "the alert is on the screen")
        for library in WINDOW_LIBRARIES:
            self.assertIn(library, maps(second.pid))
        subprocess.run(["xdotool", "windowfocus", "--sync", found[-1], "key", "Return"], **tools)
        self.assertEqual(second.wait(timeout=20), 0)
        self.assertEqual(self.messages()[-1], "User did quit")
        self.assertEqual(processes_of(CORE), [self.running_core])

    def test_a_core_that_was_killed_is_no_running_core(self):
        os.kill(self.running_core, signal.SIGKILL)
        wait_until(lambda: not processes_of(CORE), "the core is gone")
        self.assertEqual(run_launcher().returncode, 0)
        wait_until(lambda: processes_of(CORE), "another core runs")


if __name__ == "__main__":
    unittest.main()
