"""The check window on a real desktop, worked as a user works it, with real administrator rights behind it."""

import re
import signal

from check_window import CONTINUE, DONT_INSTALL, EVERYTHING, CheckWindowTest, remove_everything
from components import FILE_SYSTEM, OVERLAY_TOOL, UPDATE_TOOL
from machine import LAUNCHER, PATIENCE, RESOURCES, wait_until
from polkit import confirm_password, start_agent, start_polkit


class CheckWindow(CheckWindowTest):
    def test_is_not_shown_when_all_is_in_order(self):
        self.launcher = self.desktop.start(LAUNCHER)
        self.assert_ended_with_core()

    def test_tells_what_is_at_fault(self):
        remove_everything()
        tree = self.start_launcher()
        self.assertEqual(self.faults(tree), EVERYTHING)
        window = tree.one("dialog", "Quillmark")
        self.assertTrue(window.description.startswith("Before Quillmark can start"))
        self.assertTrue(tree.all("heading", "Installing Quillmark"))
        self.assertIn("is-default", tree.one("push button", CONTINUE).states)

    def test_stands_above_other_windows_but_not_while_it_is_repaired_and_a_password_is_asked_for(self):
        self.start_with_all_faults("AUTH_ADMIN")
        window = self.desktop.windows()[0]
        wait_until(lambda: self.desktop.is_above(window), "the window floats")
        agent = self.open_password_dialog()
        wait_until(lambda: not self.desktop.is_above(window), "the window has left its level")
        self.desktop.start("xmessage", "a password dialog of the plainest kind")
        wait_until(lambda: "xmessage" in self.desktop.window_facts(self.desktop.windows()[-1], "WM_CLASS"),
                   "the dialog stands above everything")
        agent.kill()
        self.wait_for_failure()
        wait_until(lambda: self.desktop.is_above(window), "the window floats again")
        wait_until(lambda: self.desktop.windows()[0] != window, "it stands above the dialog")

    def test_stands_in_the_middle_of_the_screen_with_its_frame(self):
        self.start_with_a_fault()
        window = self.desktop.windows()[0]

        def distances():
            facts = self.desktop.window_facts(window, "_NET_FRAME_EXTENTS")
            left, right, top, bottom = (int(number) for number in re.findall(r"\d+", facts.rpartition("=")[2]))
            self.assertGreater(top, 0, "the window has no frame")
            told = self.desktop.run("xwininfo", "-id", window).stdout
            x, y, width, height = (int(re.search(rf"{name}: +(-?\d+)", told)[1])
                                   for name in ("Absolute upper-left X", "Absolute upper-left Y", "Width", "Height"))
            return [abs((x - left) - (1024 - x - width - right)), abs((y - top) - (768 - y - height - bottom))]

        wait_until(lambda: max(distances()) <= 1, "the distances to the edges are the same")

    def test_offers_nothing_to_press_while_it_repairs(self):
        self.start_with_all_faults("AUTH_ADMIN")
        agent = self.open_password_dialog()
        tree = self.wait_for(lambda tree: tree.all("progress bar"), "the sheet is up")
        for name in (CONTINUE, DONT_INSTALL, "Details"):
            self.assertNotIn("enabled", tree.one("push button", name).states)
            with self.assertRaisesRegex(AssertionError, "has no action"):
                self.press(name)
        confirm_password(agent)
        self.assert_ended_with_core()
        self.assertNotIn("User chose to quit", self.log())
        self.assertEqual(self.log().count("runUninstalledUpdateToolAsAdmin: Starting"), 1)

    def test_repairs_everything_with_one_password_and_starts_the_core(self):
        self.start_with_all_faults("AUTH_ADMIN")
        agent = self.open_password_dialog()
        tree = self.wait_for(lambda tree: tree.all("progress bar"), "the sheet is up")
        self.assertTrue(tree.all("label", "Installing the Quillmark components…"))
        confirm_password(agent)
        self.assert_ended_with_core()
        self.assertEqual([path.lstat().st_uid for path in (UPDATE_TOOL, OVERLAY_TOOL, FILE_SYSTEM)], [0, 0, 0])

    def test_stays_when_the_password_dialog_is_dismissed_and_a_second_try_succeeds(self):
        self.start_with_all_faults("AUTH_ADMIN")
        dismissing = start_agent(self, "dismiss", self.launcher.pid)
        self.press(CONTINUE)
        self.wait_for_failure()
        dismissing.kill()
        dismissing.wait()
        self.close_alert()
        self.repair_with_password()
        self.assert_ended_with_core()

    def test_comes_back_with_what_a_repair_has_left(self):
        """A framework of another maker in the file system's place, which no repair brings."""
        remove_everything()
        catalogue = RESOURCES / "RequiredItems.plist"
        catalogue.write_text(catalogue.read_text().replace("/Library/Filesystems/QuillmarkFS.fs", "/Library/Filesystems/Other.fs"))
        start_polkit(self, "YES")
        self.start_launcher()
        self.press(CONTINUE)
        tree = self.wait_for(lambda tree: list(self.faults(tree)) == ["QuillmarkFS"], "the window is back with the one")
        self.assertFalse(tree.all("progress bar", state="showing"))
        self.assertIsNone(self.launcher.poll())

    def test_tells_of_a_repair_that_no_one_can_make(self):
        (FILE_SYSTEM / "Contents/Info.plist").unlink()
        start_polkit(self, "YES")
        tree = self.start_launcher()
        self.assertEqual(self.faults(tree), {"QuillmarkFS": "Invalid"})
        self.press(CONTINUE)
        self.wait_for_failure()

    def test_return_is_continue(self):
        self.start_with_all_faults("YES")
        self.key("Return")
        self.assert_ended_with_core()

    def test_a_user_who_does_not_want_it_ends_the_launcher(self):
        self.start_with_a_fault()
        self.press(DONT_INSTALL)
        self.assert_ended_without_core()
        self.assertIn("User chose to quit", self.log())

    def test_escape_is_the_same(self):
        self.start_with_a_fault()
        self.key("Escape")
        self.assert_ended_without_core()

    def test_prints_its_own_lines_alone_whatever_its_surroundings_lack(self):
        self.start_with_a_fault(env=self.desktop.environment(LANG="C", LC_ALL="C", XDG_RUNTIME_DIR=None))
        self.press(DONT_INSTALL)
        out, err = self.launcher.communicate(timeout=PATIENCE)
        self.assertEqual(out, "")
        self.assertRegex(err, r"\A[-0-9]+ [.:0-9]+ Quillmark\[\d+\] \(ERR\) [^\n]+\n\Z")

    def test_its_close_box_ends_the_launcher(self):
        self.start_with_a_fault()
        self.key("alt+F4")  # the window manager's way to press it
        self.assert_ended_without_core()
        self.assertNotIn("User chose to quit", self.log())

    def test_a_launcher_that_is_killed_at_it_leaves_a_state_that_the_next_one_repairs(self):
        self.start_with_all_faults("YES")
        self.press(CONTINUE)
        wait_until(lambda: UPDATE_TOOL.exists(), "the update tool is installed")
        self.launcher.send_signal(signal.SIGKILL)
        self.launcher.wait()
        self.start_launcher()
        self.press(CONTINUE)
        self.assert_ended_with_core()
