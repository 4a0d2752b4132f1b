"""Each fault that a component can have, alone: the window lists it and nothing else, and its repair leaves what a finished
installation has."""

import os
import plistlib
import shutil
import subprocess
from pathlib import Path

from check_window import BUNDLED_CORE, CONTINUE, CheckWindowTest, installation
from components import FILE_SYSTEM, FRAMEWORK, OVERLAY, OVERLAY_TOOL, PLUGIN, TOOLS, UPDATE_TOOL, resource
from machine import LAUNCHER, USER
from polkit import start_polkit

SYSTEM_VERSION = Path("/System/Library/CoreServices/SystemVersion.plist")


def give_away(path):
    """To the user; that takes the set-user-ID bit, too."""
    os.chown(path, USER, USER)


def make_old(tool, mode):
    tool.unlink()
    tool.write_text("#!/bin/sh\necho Some Tool Limited 1.13.9.9999\n")
    tool.chmod(mode)


def set_version(bundle, version):
    (bundle / "Contents/Info.plist").write_bytes(plistlib.dumps({"CFBundleShortVersionString": version}))


class SingleFault(CheckWindowTest):
    def setUp(self):
        super().setUp()
        start_polkit(self, "AUTH_ADMIN")

    def run_on(self, version):
        """On a Mac of that version, with the plug-ins that it wants."""
        SYSTEM_VERSION.parent.mkdir(parents=True, exist_ok=True)
        SYSTEM_VERSION.write_bytes(plistlib.dumps({"ProductVersion": version}))
        for name, place in (("QuillmarkCM", PLUGIN), ("QuillmarkOverlay", OVERLAY)):
            archive = resource(f"{name}.zip")
            subprocess.run([UPDATE_TOOL, "repairzipitem", archive, f"{archive}.sig", place], check=True)

    def assert_is_repaired(self, name, faults):
        """\\param faults a status, and what brings it about, for each."""
        before = installation()
        for status, damage in faults:
            with self.subTest(name=name, status=status):
                damage()
                tree = self.start_launcher()
                self.assertEqual(self.faults(tree), {name: status})
                self.desktop.take_picture(f"window-with-{name}-{status}".replace(" ", "-").lower())
                self.repair_with_password()
                self.assert_ended_with_core()
                self.assertEqual(installation(), before)
                self.end_core()

    def test_of_the_core_is_repaired(self):
        self.assert_is_repaired("QuillmarkCore", [("Wrong Permissions", lambda: BUNDLED_CORE.chmod(0o700)),
                                                  ("Wrong Permissions", lambda: BUNDLED_CORE.chmod(0o777))])

    def test_of_the_update_tool_is_repaired(self):
        self.assert_is_repaired("updateqm", [("Missing", UPDATE_TOOL.unlink),
                                             ("Old Version", lambda: make_old(UPDATE_TOOL, 0o4755)),
                                             ("Wrong Permissions", lambda: UPDATE_TOOL.chmod(0o755)),
                                             ("Wrong Permissions", lambda: give_away(UPDATE_TOOL))])

    def test_of_the_overlay_tool_is_repaired(self):
        self.assert_is_repaired("finderoverlaytool", [("Missing", OVERLAY_TOOL.unlink),
                                                      ("Old Version", lambda: make_old(OVERLAY_TOOL, 0o755)),
                                                      ("Wrong Permissions", lambda: OVERLAY_TOOL.chmod(0o775)),
                                                      ("Wrong Permissions", lambda: give_away(OVERLAY_TOOL))])

    def test_of_the_file_system_is_repaired(self):
        self.assert_is_repaired("QuillmarkFS", [("Missing", lambda: shutil.rmtree(FILE_SYSTEM)),
                                                ("Old Version", lambda: set_version(FILE_SYSTEM, "1.14.3"))])

    def test_of_the_contextual_menu_is_repaired(self):
        self.run_on("10.4.11")
        self.assert_is_repaired("QuillmarkCM", [("Missing", lambda: shutil.rmtree(PLUGIN)),
                                                ("Old Version", lambda: set_version(PLUGIN, "1.13.9"))])

    def test_of_the_overlay_is_repaired(self):
        self.run_on("10.6.8")
        self.assert_is_repaired("QuillmarkOverlay", [("Missing", lambda: shutil.rmtree(OVERLAY)),
                                                     ("Old Version", lambda: set_version(OVERLAY, "1.13.9"))])

    def test_on_a_system_that_wants_fixes_brings_these_too(self):
        self.run_on("10.5.8")
        subprocess.run([UPDATE_TOOL, "repairintel10_5", resource("Fixes10_5.zip"), resource("Fixes10_5.plist")], check=True)
        self.assert_is_repaired("QuillmarkOverlay", [("Missing", lambda: (shutil.rmtree(OVERLAY),
                                                                         shutil.rmtree(TOOLS / "Fixes10_5")))])

    def test_of_the_framework_is_none(self):
        shutil.rmtree(FRAMEWORK)
        self.launcher = self.desktop.start(LAUNCHER)
        self.assert_ended_with_core()

    def test_that_has_no_repair_is_told_and_the_rest_is_left_as_it_is(self):
        set_version(FILE_SYSTEM, "no version")
        before = installation()
        tree = self.start_launcher()
        self.assertEqual(self.faults(tree), {"QuillmarkFS": "Invalid"})
        self.desktop.take_picture("window-with-an-invalid-bundle")
        self.repair_with_password()
        tree = self.wait_for_failure()
        self.desktop.take_picture("alert-after-an-invalid-bundle")
        self.assertEqual(installation(), before)
        self.close_alert()
        tree = self.wait_for_window()
        self.assertEqual(self.faults(tree), {"QuillmarkFS": "Invalid"})
        self.assertIn("enabled", tree.one("push button", CONTINUE).states)
        self.assertIsNone(self.launcher.poll())
