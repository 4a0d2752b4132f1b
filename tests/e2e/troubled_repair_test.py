"""Repairs that something comes in between: what the user sees, and what is installed then and after another try."""

import contextlib
import fcntl
import os
import plistlib
import shutil
import signal
import subprocess
from pathlib import Path

from check_window import CONTINUE, EVERYTHING, NOT_STARTED, CheckWindowTest, installation, remove_everything
from components import FILE_SYSTEM, LOCK, OVERLAY_TOOL, TOOLS, UPDATE_TOOL, make_bundle, make_package, resource, sign
from machine import CORE, LAUNCHER, PATIENCE, RESOURCES, descriptors, processes_of, wait_until
from polkit import confirm_password, start_polkit

CATALOGUE = RESOURCES / "RequiredItems.plist"


def replace_payload(payload, contents):
    """By one that the vendor has signed, too."""
    payload.write_bytes(contents)
    sign(payload)


def make_large_file_system(megabytes):
    """The file system's package becomes one that takes its time and its room."""
    tree = make_bundle(Path("/tmp/large"), FILE_SYSTEM.name)
    (tree / FILE_SYSTEM.name / "large").write_bytes(bytes(megabytes << 20))
    package = make_package(Path("/tmp/large.pkg"), tree)
    replace_payload(resource("QuillmarkFS.pkg"), package.read_bytes())


def mount_small(folder, megabytes):
    folder.mkdir(parents=True, exist_ok=True)
    subprocess.run(["mount", "-t", "tmpfs", "-o", f"mode=755,size={megabytes}m", "small", folder], check=True)


def make_room(folder, megabytes):
    subprocess.run(["mount", "-o", f"remount,size={megabytes}m", folder], check=True)


class TroubledRepair(CheckWindowTest):
    def setUp(self):
        super().setUp()
        start_polkit(self, "AUTH_ADMIN")

    def fail_repair(self, faults):
        """Of a launcher that shows the faults, up to the alert."""
        self.assertEqual(self.faults(self.start_launcher()), faults)
        self.repair_with_password()
        return self.wait_for_failure()

    def repair_again(self):
        self.close_alert()
        self.wait_for_window()
        self.repair_with_password()
        self.assert_ended_with_core()

    @contextlib.contextmanager
    def hold_tool_up(self):
        """It waits for its turn meanwhile."""
        lock = os.open(LOCK, os.O_RDWR)
        fcntl.flock(lock, fcntl.LOCK_EX)
        try:
            yield
        finally:
            os.close(lock)

    def kill_waiting(self, tool):
        def waiting():
            return [pid for pid in processes_of(tool) if str(LOCK) in descriptors(pid).values()]

        for pid in wait_until(waiting, "the update tool waits for its turn"):
            os.kill(pid, signal.SIGKILL)

    def assert_nothing_is_half_installed(self):
        """What stands in a component's place is whole."""
        for tool, mode in ((UPDATE_TOOL, 0o104755), (OVERLAY_TOOL, 0o100755)):
            if tool.exists():
                self.assertEqual((tool.stat().st_mode, tool.stat().st_uid), (mode, 0))
                self.assertEqual(tool.read_bytes(), resource(tool.name).read_bytes())
        self.assertFalse(FILE_SYSTEM.exists())

    def assert_is_refused(self, payload, faults):
        """A repair of the faults with a tampered payload installs nothing, and both the log and the tool say so."""
        before = installation()
        whole = resource(payload).read_bytes()
        resource(payload).write_bytes(whole + b"\0")
        self.fail_repair(faults)
        self.desktop.take_picture(f"alert-after-a-tampered-{payload}".lower())
        self.assertEqual(installation(), before)
        self.assertEqual(processes_of(CORE), [])
        self.assertIn(f'"{list(faults)[0]}" could not be repaired', self.log())
        self.launcher.kill()
        _, err = self.launcher.communicate()
        self.assertRegex(err, rf"updateqm: \S*{payload}: the signature .* is not the vendor's for it")
        resource(payload).write_bytes(whole)
        self.end_core()

    def test_with_a_tampered_payload_installs_nothing_of_it_and_says_what(self):
        for name, payload, place in (("finderoverlaytool", "finderoverlaytool", OVERLAY_TOOL),
                                     ("QuillmarkFS", "QuillmarkFS.pkg", FILE_SYSTEM)):
            with self.subTest(name):
                kept = place.rename(place.with_name("kept"))
                self.assert_is_refused(payload, {name: "Missing"})
                kept.rename(place)

    def test_with_a_tampered_update_tool_installs_nothing_at_all(self):
        """The tool is started but not waited for, so it is the next one in the catalogue that fails."""
        remove_everything()
        TOOLS.mkdir()
        self.assert_is_refused("updateqm", EVERYTHING)

    def test_whose_update_tool_is_killed_fails_and_another_try_succeeds(self):
        remove_everything()
        self.assertEqual(self.faults(self.start_launcher()), EVERYTHING)
        self.desktop.take_picture("window-with-everything-missing")
        self.repair_with_password()
        wait_until(UPDATE_TOOL.exists, "the update tool is installed, and the pause after it has begun")
        with self.hold_tool_up():
            self.kill_waiting(UPDATE_TOOL)
            tree = self.wait_for_failure()
        self.desktop.take_picture("alert-after-a-killed-update-tool")
        self.assertIn("QuillmarkFS", self.faults(tree))
        self.assertFalse(tree.all("progress bar", state="showing"))
        self.assert_nothing_is_half_installed()
        self.repair_again()
        self.assertEqual(os.listdir(FILE_SYSTEM.parent), [FILE_SYSTEM.name])

    def test_whose_update_tool_is_killed_while_it_installs_itself_fails_and_another_try_succeeds(self):
        remove_everything()
        self.start_launcher()
        with self.hold_tool_up():
            self.repair_with_password()
            self.kill_waiting(resource("updateqm"))
            self.wait_for_failure()
        self.assert_nothing_is_half_installed()
        self.repair_again()
        self.assertEqual(sorted(os.listdir(TOOLS)), ["finderoverlaytool", "finderoverlaytool.sig", "updateqm", "updateqm.sig"])

    def test_on_a_full_disk_fails_and_with_room_another_try_succeeds(self):
        make_large_file_system(8)
        shutil.rmtree(FILE_SYSTEM)
        mount_small(FILE_SYSTEM.parent, 4)
        self.fail_repair({"QuillmarkFS": "Missing"})
        self.desktop.take_picture("alert-after-a-full-disk")
        self.assertEqual(os.listdir(FILE_SYSTEM.parent), [])
        make_room(FILE_SYSTEM.parent, 32)
        self.repair_again()
        self.assertEqual((FILE_SYSTEM / "large").stat().st_size, 8 << 20)

    def test_on_a_disk_that_is_full_from_the_first_tool_on_fails_and_with_room_another_try_succeeds(self):
        before = installation()
        remove_everything()
        replace_payload(resource("updateqm"), resource("updateqm").read_bytes() + bytes(8 << 20))
        mount_small(TOOLS, 4)
        self.fail_repair(EVERYTHING)
        self.assertEqual(os.listdir(TOOLS), [])
        self.assert_nothing_is_half_installed()
        make_room(TOOLS, 64)
        self.repair_again()
        self.assertEqual(installation().keys(), before.keys())

    def test_of_two_launchers_at_once_ends_well(self):
        before = installation()
        remove_everything()
        launchers = [self.desktop.start(LAUNCHER), self.desktop.start(LAUNCHER)]
        dialogs = []
        for self.launcher in launchers:
            self.wait_for(lambda tree: tree.all("push button", CONTINUE), "the window is there, and one of both has the focus")
            dialogs.append(self.open_password_dialog())
        for dialog in dialogs:
            confirm_password(dialog)
        for launcher in launchers:
            self.assertEqual(launcher.wait(timeout=PATIENCE), 0)
        self.core()
        self.assertEqual(len(processes_of(CORE)), 1)
        self.assertEqual(installation(), before)

    def test_keeps_its_sheet_when_escape_is_pressed(self):
        remove_everything()
        self.start_launcher()
        dialog = self.open_password_dialog()
        self.wait_for(lambda tree: tree.all("progress bar", state="showing"), "the sheet is up")
        for key in ("Escape", "alt+F4", "Escape"):
            self.key(key)
        self.assertTrue(self.desktop.tree(self.launcher).all("progress bar", state="showing"))
        self.desktop.take_picture("sheet-during-the-repair", still=False)
        confirm_password(dialog)
        self.key("Escape")
        self.assertTrue(self.desktop.tree(self.launcher).all("progress bar", state="showing"))
        self.assert_ended_with_core()
        self.assertNotIn("User chose to quit", self.log())

    def test_that_did_not_help_brings_the_window_back_with_what_is_left(self):
        remove_everything()
        catalogue = CATALOGUE.read_text()
        CATALOGUE.write_text(catalogue.replace(str(FILE_SYSTEM), "/Library/Filesystems/Other.fs"))
        self.start_launcher()
        self.repair_with_password()
        tree = self.wait_for(lambda tree: self.faults(tree) == {"QuillmarkFS": "Missing"}, "the window is back with the one")
        self.desktop.take_picture("window-with-what-a-repair-has-left")
        self.assertIn("enabled", tree.one("push button", CONTINUE).states)

    def test_after_which_something_breaks_again_says_that_the_product_could_not_be_started(self):
        """A tool that is in order when it is asked for the second time, after the repair, and at fault in the moment after."""
        tool, calls = Path("/Library/unsteady"), Path("/tmp/calls")
        calls.touch(mode=0o666)
        calls.chmod(0o666)
        tool.write_text(f"#!/bin/sh\necho >>{calls}\n"
                        f"[ $(wc -l <{calls}) = 3 ] && echo Limited 1.0.0.0 || echo Limited 1.14.4.1303\n")
        tool.chmod(0o755)
        catalogue = plistlib.loads(CATALOGUE.read_bytes())
        catalogue["RequiredItems"].append({"Type": "QMTool", "Name": "unsteady", "InstallPath": str(tool)})
        CATALOGUE.write_bytes(plistlib.dumps(catalogue))
        self.start_with_a_fault()
        self.repair_with_password()
        self.wait_for_failure(NOT_STARTED)
        self.desktop.take_picture("alert-could-not-be-started")
        self.assertEqual(processes_of(CORE), [])
        self.close_alert()
        self.assertEqual(self.faults(self.wait_for_window()), {"unsteady": "Old Version"})
