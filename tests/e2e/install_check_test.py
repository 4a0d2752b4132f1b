"""The launcher's decision: it starts the core when every component is in order, and else says what is not."""

import os
import plistlib
import shutil
import subprocess
from pathlib import Path

from components import FILE_SYSTEM, FRAMEWORK, OVERLAY, OVERLAY_TOOL, PLUGIN, TOOLS, UPDATE_TOOL, signed
from machine import CORE, RESOURCES, USER, LauncherTest, end_cores, environment, processes_of, run_launcher

CATALOGUE = RESOURCES / "RequiredItems.plist"
SYSTEM_VERSION = Path("/System/Library/CoreServices/SystemVersion.plist")


class InstallCheckTest(LauncherTest):
    def faults(self, **options):
        """Starts the launcher, which finds faults and starts nothing. \\returns what it says of each component."""
        result = run_launcher(**options)
        self.assertEqual(result.returncode, 1, result.stderr)
        self.assertEqual(processes_of(CORE), [])
        lines = [line.partition("(ERR) ")[2].partition("] ")[2] for line in self.log().splitlines() if "(ERR)" in line]
        shutil.rmtree("/home/t/Library/Logs")
        return dict(line.removeprefix('"').split('" is not in order: ') for line in lines if "is not in order" in line)

    def assert_fault(self, name, status, path, **options):
        self.assertEqual(self.faults(**options), {name: f'{status} ("{path}")'})

    def write_tool(self, script, tool=OVERLAY_TOOL, mode=0o755):
        tool.unlink()
        tool.write_bytes(script)
        tool.chmod(mode)


class Faults(InstallCheckTest):
    def test_none_starts_the_core_at_once(self):
        self.assert_started(run_launcher())
        self.assertNotIn("(ERR)", self.log())

    def test_several_are_all_listed_in_the_catalogues_order(self):
        shutil.rmtree(FILE_SYSTEM)
        shutil.rmtree(TOOLS)
        self.assertEqual(list(self.faults()), ["updateqm", "finderoverlaytool", "QuillmarkFS"])

    def test_a_missing_component_is_one(self):
        for path, name in ((UPDATE_TOOL, "updateqm"), (OVERLAY_TOOL, "finderoverlaytool"), (FILE_SYSTEM, "QuillmarkFS")):
            with self.subTest(name):
                kept = path.rename(path.with_name("kept"))
                self.assert_fault(name, "Missing", path)
                path.symlink_to("/nowhere")
                self.assert_fault(name, "Missing", path)
                path.unlink()
                kept.rename(path)

    def test_a_missing_framework_is_none(self):
        shutil.rmtree(FRAMEWORK)
        self.assert_started(run_launcher())

    def test_a_wrong_mode_or_owner_is_one(self):
        for path, name, mode, wrong_modes in ((UPDATE_TOOL, "updateqm", 0o4755, (0o755, 0o4775, 0o6755)),
                                              (OVERLAY_TOOL, "finderoverlaytool", 0o755, (0o775, 0o777, 0o4755, 0o555))):
            for wrong_mode in wrong_modes:
                with self.subTest(name=name, mode=oct(wrong_mode)):
                    path.chmod(wrong_mode)
                    self.assert_fault(name, "Wrong Permissions", path)
            os.chown(path, USER, USER)
            path.chmod(mode)
            self.assert_fault(name, "Wrong Permissions", path)
            os.chown(path, 0, 0)
            path.chmod(mode)

    def test_a_core_with_a_wrong_mode_is_one(self):
        core = RESOURCES / "QuillmarkCore.app"
        for mode in (0o700, 0o775):
            core.chmod(mode)
            self.assert_fault("QuillmarkCore", "Wrong Permissions", core)

    def test_an_older_version_is_one(self):
        self.write_tool(b"#!/bin/sh\necho Some Tool Limited 1.13.9.9999\n")
        self.assert_fault("finderoverlaytool", "Old Version", OVERLAY_TOOL)
        self.write_tool(b"#!/bin/sh\necho Some Tool Limited 1.14.0.0\n")  # the last two numbers don't count
        self.assert_started(run_launcher())

    def test_a_newer_version_is_none(self):
        self.write_tool(b"#!/bin/sh\necho Some Tool Limited 2.0.0.0\n")
        self.assert_started(run_launcher())

    def test_a_bundle_that_is_older_or_tells_no_version_is_one(self):
        information = FILE_SYSTEM / "Contents/Info.plist"
        for version, status in (("1.14.3", "Old Version"), ("1.14", "Invalid"), ("", "Invalid")):
            with self.subTest(version):
                information.write_bytes(plistlib.dumps({"CFBundleShortVersionString": version}))
                self.assert_fault("QuillmarkFS", status, FILE_SYSTEM)
        information.unlink()
        self.assert_fault("QuillmarkFS", "Invalid", FILE_SYSTEM)

    def test_statuses_are_told_in_the_users_language(self):
        OVERLAY_TOOL.unlink()
        faults = self.faults(env=environment(LANG="de_DE.UTF-8", LANGUAGE="de"))
        self.assertEqual(list(faults), ["finderoverlaytool"])
        self.assertNotIn("Missing", faults["finderoverlaytool"])


class OddTools(InstallCheckTest):
    def assert_is_old(self, script, **options):
        self.write_tool(script)
        self.assert_fault("finderoverlaytool", "Old Version", OVERLAY_TOOL, **options)

    def test_that_print_nothing_or_garbage_are_old(self):
        for script in (b"#!/bin/true\n", b"#!/bin/sh\nhead -c 5000 /dev/urandom\n", b"#!/bin/sh\necho Limited\n",
                       b"#!/bin/sh\nprintf 'Limited \\377\\376'\n"):
            with self.subTest(script):
                self.assert_is_old(script)

    def test_that_print_very_much_are_old_and_cost_no_memory(self):
        import resource as limits
        small = lambda: limits.setrlimit(limits.RLIMIT_AS, (1 << 28, 1 << 28))
        self.assert_is_old(b"#!/bin/sh\nhead -c 100000000 /dev/zero | tr '\\0' x\n", before=small)

    def test_that_die_are_old(self):
        self.assert_is_old(b"#!/bin/sh\nkill -SEGV $$\n")

    def test_that_cannot_be_executed_are_named_and_do_not_keep_the_others_from_being_examined(self):
        shutil.rmtree(FILE_SYSTEM)
        self.write_tool(b"no program", mode=0o644)
        result = run_launcher()
        self.assertEqual(result.returncode, 1)
        self.assertIn(f'"{OVERLAY_TOOL}" can\'t be asked for its version', self.log())
        self.assertIn('"finderoverlaytool" is not in order: Old Version', self.log())
        self.assertIn('"QuillmarkFS" is not in order: Missing', self.log())

    def test_that_are_folders_are_named_too(self):
        OVERLAY_TOOL.unlink()
        OVERLAY_TOOL.mkdir()
        self.assert_fault("finderoverlaytool", "Old Version", OVERLAY_TOOL)

    def test_that_complain_do_so_on_the_launchers_own_standard_error(self):
        self.write_tool(b"#!/bin/sh\necho complaint >&2\necho Limited 1.14.4.1303\n")
        result = run_launcher()
        self.assertEqual((result.returncode, result.stderr), (0, "complaint\n"))


class Systems(InstallCheckTest):
    def run_on(self, version):
        SYSTEM_VERSION.parent.mkdir(parents=True, exist_ok=True)
        SYSTEM_VERSION.write_bytes(plistlib.dumps({"ProductVersion": version}))
        return self.faults()

    def test_decide_which_plug_ins_are_required(self):
        self.assertEqual(list(self.run_on("10.5.8")), ["QuillmarkCM", "QuillmarkOverlay"])
        self.assertEqual(list(self.run_on("10.6.8")), ["QuillmarkOverlay"])
        self.assertEqual(list(self.run_on("10.4.11")), ["QuillmarkCM"])

    def test_with_the_plug_ins_that_they_want_start_the_core(self):
        for archive, place in (("QuillmarkCM.zip", PLUGIN), ("QuillmarkOverlay.zip", OVERLAY)):
            subprocess.run([UPDATE_TOOL, "repairzipitem", *signed(archive), place], check=True)
        SYSTEM_VERSION.parent.mkdir(parents=True)
        SYSTEM_VERSION.write_bytes(plistlib.dumps({"ProductVersion": "10.5.8"}))
        self.assert_started(run_launcher())

    def test_whose_plug_in_is_out_of_date_are_told(self):
        subprocess.run([UPDATE_TOOL, "repairzipitem", *signed("QuillmarkOverlay.zip"), OVERLAY], check=True)
        (OVERLAY / "Contents/Info.plist").write_bytes(plistlib.dumps({"CFBundleShortVersionString": "1.13.9"}))
        self.assertEqual(self.run_on("10.6.8"), {"QuillmarkOverlay": f'Old Version ("{OVERLAY}")'})


class Catalogues(InstallCheckTest):
    def write(self, value):
        CATALOGUE.write_bytes(plistlib.dumps(value))

    def test_that_are_missing_or_no_property_list_check_nothing_and_say_so(self):
        shutil.rmtree(TOOLS)
        for contents in (None, b"", b"garbage", plistlib.dumps([1]), plistlib.dumps({"RequiredItems": "x"}), plistlib.dumps({})):
            with self.subTest(contents):
                CATALOGUE.unlink(missing_ok=True)
                if contents is not None:
                    CATALOGUE.write_bytes(contents)
                result = run_launcher()
                self.assertEqual((result.returncode, len(result.stderr.splitlines())), (0, 1))
                self.assertIn(str(CATALOGUE), self.log())
                self.core()
                end_cores()
                shutil.rmtree("/home/t/Library/Logs")

    def test_that_are_empty_start_the_core(self):
        self.write({"RequiredItems": []})
        self.assert_started(run_launcher())

    def test_with_items_of_every_odd_kind_are_walked_to_their_end(self):
        odd = ["text", 5, [], {}, {"Type": "Unknown"}, {"Type": 7}, {"Type": ["CoreApp"]}, {"Name": "nothing else"}]
        self.write({"RequiredItems": odd + [{"Type": "QMTool", "Name": "last", "InstallPath": "/none"}]})
        self.assert_fault("last", "Missing", "/none")

    def test_whose_items_lack_their_keys_call_them_faulty_and_go_on(self):
        types = ["CoreApp", "Framework", "Bundle", "QMTool", "QMToolRoot", "FinderCM", "FinderOverlayInsert"]
        self.write({"RequiredItems": [{"Type": kind, "Name": kind} for kind in types] +
                                     [{"Type": kind, "Name": f"{kind} 2", "InstallPath": 5, "Resource": []} for kind in types]})
        faults = self.faults()
        self.assertEqual({name.split()[0] for name in faults}, set(types) - {"Framework", "CoreApp"})

    def test_of_ten_thousand_items_are_walked(self):
        self.write({"RequiredItems": [{"Type": "Bundle", "Name": str(number), "InstallPath": f"/none/{number}"}
                                      for number in range(10000)]})
        self.assertEqual(len(self.faults()), 10000)
