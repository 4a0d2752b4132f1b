"""A launcher that is killed at any moment of a repair: the next one always ends in a working installation."""

import os
import pty
import select
import signal
import time
from pathlib import Path

from check_window import BUNDLED_CORE, CONTINUE, CheckWindowTest, installation, remove_everything
from components import FILE_SYSTEM, OVERLAY_TOOL, TOOLS, UPDATE_TOOL
from machine import APP, LAUNCHER, PATIENCE, processes_of, set_preferences, wait_until
from polkit import confirm_password, start_polkit

ROOT_HELPER = APP / "Contents/Helpers/quillmark-root-helper"


class Terminal:
    """Where a launcher writes its log line by line, as long as it lives."""

    def __init__(self, test):
        self.ours, self.theirs = pty.openpty()
        test.addCleanup(os.close, self.ours)
        test.addCleanup(os.close, self.theirs)
        self.text = ""

    def read(self):
        """Waits for more, but not long, and \\returns all there is."""
        while select.select([self.ours], [], [], 0.001)[0]:
            self.text += os.read(self.ours, 65536).decode()
        return self.text


def has_line(words, times=1):
    return lambda text: text.count(words) >= times


def exists(path):
    return lambda text: path.exists()


HAS_HELPER = has_line("Running /Applications")


class KilledLauncher(CheckWindowTest):
    def setUp(self):
        super().setUp()
        start_polkit(self, "AUTH_ADMIN")
        set_preferences(StdioLogging="detailed")
        self.whole = installation()

    def assert_is_repaired_after_a_kill(self, *moments):
        """\\param moments each what has to be true, and how many seconds before the kill, in the order of the repair."""
        self.statuses = []  # of the killed ones
        for number, (condition, seconds) in enumerate(moments, 1):
            with self.subTest(moment=number):
                self.kill_at(condition, seconds)
                self.start_again()
                self.assertEqual(installation(), self.whole)
            self.end_core()
        return self.statuses

    def assert_is_repaired_after_each_kill(self, *moments):
        """The same of moments that can't be missed, as a pause is to come."""
        self.assertEqual(self.assert_is_repaired_after_a_kill(*moments), [-signal.SIGKILL] * len(moments))

    def kill_at(self, condition, seconds):
        remove_everything()
        self.terminal = Terminal(self)
        self.start_launcher(stdout=self.terminal.theirs, stderr=self.terminal.theirs)
        agent = self.open_password_dialog()
        if condition is not None:
            confirm_password(agent)
            self.wait_in_the_repair(condition)
            time.sleep(seconds)
        self.launcher.kill()
        self.statuses.append(self.launcher.wait())
        agent.kill()

    def wait_in_the_repair(self, condition):
        end = time.monotonic() + PATIENCE
        has_ended = False
        while not condition(self.terminal.read()):
            self.assertFalse(has_ended or time.monotonic() > end, f"the moment did not come:\n{self.terminal.text}")
            has_ended = self.launcher.poll() is not None

    def start_again(self):
        """Works what the next launcher shows, until the core runs."""
        self.launcher = self.desktop.start(LAUNCHER)
        shown = wait_until(self.what_it_shows, "the next launcher has ended or shows a button")
        if shown == CONTINUE:
            self.repair_with_password()
        elif shown == "Quit":  # the killed one was just quick enough to start the core
            self.press("Quit")
        self.assert_ended_with_core()

    def what_it_shows(self):
        if self.launcher.poll() is not None:
            return "nothing"
        tree = self.desktop.tree(self.launcher)
        focused = tree.all("push button", state="focused") if tree else []
        return focused[0].name if focused else None

    def test_around_the_password(self):
        self.assert_is_repaired_after_each_kill(
            (None, 0),
            (lambda text: processes_of(ROOT_HELPER) or HAS_HELPER(text), 0),
            (HAS_HELPER, 0),
            (has_line("runUninstalledUpdateToolAsAdmin: Succeeded"), 0))

    def test_while_the_update_tool_is_installed(self):
        self.assert_is_repaired_after_each_kill(
            (exists(TOOLS), 0),
            (exists(Path(f"{UPDATE_TOOL}.sig")), 0),
            (exists(UPDATE_TOOL), 0),
            (exists(UPDATE_TOOL), 0.5),
            (exists(UPDATE_TOOL), 1.5))

    def test_while_the_core_and_the_tool_are_repaired(self):
        self.assert_is_repaired_after_each_kill(
            (has_line("runExe: Running"), 0),
            (lambda text: BUNDLED_CORE.stat().st_mode & 0o777 == 0o755, 0),
            (has_line("runExe: Running", 2), 0),
            (exists(OVERLAY_TOOL), 0))

    def test_while_the_file_system_is_installed(self):
        self.assert_is_repaired_after_each_kill(
            (has_line("runExe: Running", 3), 0),
            (exists(FILE_SYSTEM.parent), 0),
            (exists(FILE_SYSTEM), 0),
            (has_line("runExe: Succeeded", 3), 0))

    def test_at_the_end(self):
        self.assert_is_repaired_after_each_kill((has_line("runExe: Succeeded", 3), 1))
        self.assert_is_repaired_after_a_kill(  # which may come too late, for the launcher is about to end
            (has_line("Updating status", 2), 0),
            (has_line("Updating status", 3), 0),
            (has_line("Launching"), 0))
