"""The check window of the built bundle, worked as a user works it, with real administrator rights behind it."""

import os
import shutil
import subprocess

from components import FILE_SYSTEM, OVERLAY_TOOL, TOOLS, fingerprint
from desktop import WindowTest
from machine import CORE, LAUNCHER, PATIENCE, RESOURCES, end_cores, processes_of
from polkit import confirm_password, start_agent, start_polkit

CONTINUE, DONT_INSTALL = "Continue", "Don’t Install"
FAILED, NOT_STARTED = "The installation could not be completed.", "Quillmark could not be started."
BUNDLED_CORE = RESOURCES / "QuillmarkCore.app"
EVERYTHING = {"QuillmarkCore": "Wrong Permissions", "updateqm": "Missing", "finderoverlaytool": "Missing",
              "QuillmarkFS": "Missing"}


def remove_everything():
    """Afterwards every fault of `EVERYTHING` is there."""
    for folder in (TOOLS, FILE_SYSTEM.parent):
        shutil.rmtree(folder, ignore_errors=True)
    BUNDLED_CORE.chmod(0o700)


def installation():
    """Owner, mode and contents of all that a repair may touch."""
    return fingerprint() | {"core": oct(BUNDLED_CORE.stat().st_mode)}


class CheckWindowTest(WindowTest):
    maxDiff = 2000

    def setUp(self):
        super().setUp()
        self.agents = {}  # one for each launcher

    def start_launcher(self, **options):
        """The launcher with its window up. \\returns what it shows."""
        self.launcher = self.desktop.start(LAUNCHER, **options)
        return self.wait_for_window()

    def start_with_a_fault(self, **options):
        OVERLAY_TOOL.unlink()
        return self.start_launcher(**options)

    def start_with_all_faults(self, answer):
        """The polkit's rules give that answer when the repair asks."""
        remove_everything()
        start_polkit(self, answer)
        return self.start_launcher()

    def wait_for_window(self):
        return self.wait_for(lambda tree: tree.all("push button", CONTINUE, "focused"), "the window is up")

    def wait_for_failure(self, title=FAILED):
        return self.wait_for(lambda tree: tree.all("label", title, "showing"), "the failure is told")

    def close_alert(self):
        self.press("OK")
        self.wait_for(lambda tree: not tree.all("push button", "OK"), "the alert is gone")

    def key(self, name):
        subprocess.run(["xdotool", "key", name], env=os.environ | self.desktop.variables, check=True)

    def faults(self, tree):
        """The lines of the list."""
        cells = [cell.name for cell in tree.all("table cell")]
        return dict(zip(cells[::2], cells[1::2]))

    def open_password_dialog(self):
        """Presses "Continue". \\returns the dialog's agent as soon as it asks."""
        agent = self.agents.get(self.launcher)
        if agent is None:
            agent = self.agents[self.launcher] = start_agent(self, "allow", self.launcher.pid)
        self.press(CONTINUE)
        self.assertEqual(agent.stdout.readline(), "asked\n")
        return agent

    def repair_with_password(self):
        """Presses "Continue" and gives the password."""
        confirm_password(self.open_password_dialog())

    def assert_ended_with_core(self):
        """The launcher did what it is for, and the core that it started runs."""
        self.assert_ended()
        self.core()

    def assert_ended_without_core(self):
        self.assertEqual(self.launcher.wait(timeout=PATIENCE), 0)
        self.assertEqual(processes_of(CORE), [])

    def end_core(self):
        """So that the next launcher can start one; its log would tell of the old one."""
        end_cores()
        shutil.rmtree("/home/t/Library/Logs", ignore_errors=True)
