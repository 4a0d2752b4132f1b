"""A repair with a real password: the dialogs that desktops ask for it with, each worked by keys, in a window manager."""

import os
import subprocess
from pathlib import Path

from check_window import CONTINUE, EVERYTHING, CheckWindowTest, installation, remove_everything
from components import FILE_SYSTEM, OVERLAY_TOOL, UPDATE_TOOL
from machine import processes_of, skip_without, wait_until
from polkit import (PASSWORD_HELPER, install_action, join_session, make_administrator, start_polkit, start_session,
                    watch_registration)

PASSWORD = "pass word 17"


class PasswordDialog(CheckWindowTest):
    def setUp(self):
        super().setUp()
        remove_everything()
        start_session()
        install_action()
        start_polkit(self, "AUTH_ADMIN")
        make_administrator(PASSWORD)

    def start_dialogs(self, package, program):
        """The program of a desktop that shows them, below /usr. The test is skipped where the package is not installed."""
        installed = list(Path("/usr").glob(program))
        if not installed:
            skip_without([package])
        registration = watch_registration(self)
        self.dialogs = self.desktop.start("/bin/sh", "-c", f'read go && exec "{installed[0]}"', stdin=subprocess.PIPE,
                                          stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        join_session(self.dialogs.pid)
        self.dialogs.stdin.write("\n")
        self.dialogs.stdin.flush()
        registration.wait()
        self.package = package
        self.helpers = set()  # that have waited for a password

    def start_launcher(self):
        tree = super().start_launcher()
        join_session(self.launcher.pid)
        return tree

    def wait_for_dialog(self):
        """Returns the window of a dialog that waits for a password, as the user sees it: above everything of ours, with the
        keyboard."""

        def dialog():
            helpers = set(processes_of(PASSWORD_HELPER)) - self.helpers
            top = self.desktop.windows()[-1]
            if not helpers or self.desktop.owner(top) != self.dialogs.pid or self.desktop.active_window() != top:
                return None
            # One that asks again lets nobody type for a moment. Not all are accessible.
            tree = self.desktop.tree(self.dialogs)
            if tree and tree.all("password text") and not tree.all("password text", state="focused"):
                return None
            self.helpers |= helpers
            return top

        return wait_until(dialog, "the dialog is there, above everything, and asks")

    def type_password(self, dialog, text):
        """What is typed is seen, as dots."""
        before = self.picture_of(dialog)
        subprocess.run(["xdotool", "type", text], env=os.environ | self.desktop.variables, check=True)
        wait_until(lambda: self.picture_of(dialog) != before, "the dialog has taken the keys")
        self.press_key("Return")

    def press_key(self, name):
        """In the dialog. What it opens then is new."""
        self.windows_before = self.desktop.windows()
        self.key(name)

    def picture_of(self, window):
        return subprocess.run(["import", "-window", window, "-define", "png:exclude-chunks=date,time", "png:-"],
                              env=os.environ | self.desktop.variables, check=True, capture_output=True).stdout

    def take_picture(self, state):
        self.desktop.take_picture(f"password-{self.package}-{state}", still=False)

    def test_of_lxpolkit(self):
        """The plainest: an ordinary window, which tells of a wrong password in another one."""
        self.start_dialogs("lxpolkit", "bin/lxpolkit")
        self.repair(self.dismiss_box)

    def test_of_mate(self):
        self.start_dialogs("mate-polkit", "libexec/polkit-mate-authentication-agent-1")
        self.repair()

    def test_of_kde(self):
        self.start_dialogs("polkit-kde-agent-1", "lib/*/libexec/polkit-kde-authentication-agent-1")
        self.repair()

    def test_of_lxqt(self):
        """It has a box for a cancelled dialog, too. After a wrong password it gives up, and the launcher offers another try."""
        self.start_dialogs("lxqt-policykit", "bin/lxqt-policykit-agent")

        def after_wrong_password():
            self.dismiss_box()
            self.try_again()

        self.repair(after_wrong_password, after_cancel=self.dismiss_box)

    def repair(self, after_wrong_password=lambda: None, after_cancel=lambda: None):
        """As a user does it who first closes the dialog, and then mistypes."""
        self.assertEqual(self.faults(self.start_launcher()), EVERYTHING)
        before = installation()
        self.press(CONTINUE)
        self.wait_for_dialog()
        self.take_picture("asked")
        self.press_key("Escape")
        after_cancel()
        self.wait_for_failure()
        self.take_picture("cancelled")
        self.assertEqual(installation(), before)
        self.try_again()
        self.type_password(self.wait_for_dialog(), "wrong")
        after_wrong_password()
        dialog = self.wait_for_dialog()
        self.take_picture("asked-again")
        self.assertEqual(installation(), before)
        self.type_password(dialog, PASSWORD)
        self.assert_ended_with_core()
        self.assertEqual([path.lstat().st_uid for path in (UPDATE_TOOL, OVERLAY_TOOL, FILE_SYSTEM)], [0, 0, 0])

    def dismiss_box(self):
        """Another window of the same program, over all, that says that nothing came of it."""

        def box():
            top = self.desktop.windows()[-1]
            return top if top not in self.windows_before and top == self.desktop.active_window() else None

        shown = wait_until(box, "the box is there")
        self.assertEqual(self.desktop.owner(shown), self.dialogs.pid)
        self.key("Return")
        wait_until(lambda: shown not in self.desktop.windows(), "the box is gone")

    def try_again(self):
        """In the launcher, after its alert."""
        self.wait_for_failure()
        self.close_alert()
        self.assertEqual(self.faults(self.wait_for_window()), EVERYTHING)
        self.press(CONTINUE)
