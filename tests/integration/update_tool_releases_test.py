"""No way leads back to an older release: not for a tool that somebody has kept, and not for what the vendor once signed."""

import os
import plistlib
import shutil
import stat
import subprocess
import zipfile
from pathlib import Path

from components import (FILE_SYSTEM, NEWER, OLD_PAYLOAD, OLDER, OVERLAY_TOOL, PLUGIN, TOOLS, UPDATE_TOOL, WRONG_PAYLOAD, AttackTest,
                        fingerprint, make_bundle, make_package, of_release, resource, sign, signed)
from machine import APP, start


class KeptTools(AttackTest):
    """The older release is installed, somebody keeps it, and the newer one takes its place."""

    def setUp(self):
        super().setUp()
        tool, self.older_signature = of_release("updateqm", OLDER, self.folder)
        shutil.rmtree(TOOLS)
        self.install(tool, self.older_signature)

    def install(self, tool, signature):
        """As the administrator."""
        subprocess.run([tool, "repair", signature], check=True)

    def assert_is_of_no_use(self, program, **options):
        before = fingerprint()
        process = start("/bin/sh", "-c", f"exec {program} repair {self.older_signature}", **options)
        self.assertNotEqual(process.wait(timeout=60), 0)
        process.communicate()
        self.assertEqual(fingerprint(), before)

    def test_that_is_still_open_is_of_no_use(self):
        kept = os.open(UPDATE_TOOL, os.O_RDONLY)
        self.addCleanup(os.close, kept)
        self.install(*signed("updateqm"))
        self.assert_is_of_no_use(f"/proc/self/fd/{kept}", pass_fds=[kept])

    def test_that_has_another_name_is_of_no_use(self):
        kept = TOOLS.with_name("kept")
        os.link(UPDATE_TOOL, kept)
        self.install(*signed("updateqm"))
        self.assertEqual(stat.S_IMODE(kept.stat().st_mode), 0)
        self.assert_is_of_no_use(f"'{kept}'")

    def test_that_a_killed_run_has_put_aside_is_of_no_use(self):
        left = TOOLS / ".quillmark-0123456789abcdef/updateqm"
        left.parent.mkdir(mode=0o700)
        kept = TOOLS.with_name("kept")
        os.link(UPDATE_TOOL, kept)
        UPDATE_TOOL.rename(left)
        self.install(*signed("updateqm"))
        self.assertEqual(stat.S_IMODE(kept.stat().st_mode), 0)
        self.assertFalse(left.parent.exists())


class OlderReleases(AttackTest):
    def test_of_the_tool_itself_do_not_install_themselves_again(self):
        tool, signature = of_release("updateqm", OLDER, self.folder)
        self.assert_refused_to_root(OLD_PAYLOAD, tool, "repair", signature)

    def test_of_the_tool_itself_do_nothing_else_either(self):
        tool, _ = of_release("updateqm", OLDER, self.folder)
        os.chown(tool, 0, 0)
        tool.chmod(0o4755)
        for command in (("repairother", *signed("finderoverlaytool")),
                        ("repairpackage", resource("QuillmarkFS.pkg")), ("repairpermissionsother", "finderoverlaytool")):
            with self.subTest(command[0]):
                self.assert_refused(OLD_PAYLOAD, *command, program=tool)

    def test_install_themselves_where_the_newer_one_is_damaged(self):
        """What is damaged is repaired by whatever the vendor has signed."""
        UPDATE_TOOL.write_bytes(b"damaged")
        tool, signature = of_release("updateqm", OLDER, self.folder)
        subprocess.run([tool, "repair", signature], check=True)
        self.assertEqual(UPDATE_TOOL.read_bytes(), tool.read_bytes())

    def put_older_tool(self, mode):
        for source, place in zip(of_release("finderoverlaytool", OLDER, self.folder), (OVERLAY_TOOL, f"{OVERLAY_TOOL}.sig")):
            shutil.copy(source, place)
        OVERLAY_TOOL.chmod(mode)

    def test_of_a_tool_do_not_get_their_rights_back(self):
        self.put_older_tool(0o644)
        self.assert_refused(OLD_PAYLOAD, "repairpermissionsother", "finderoverlaytool")

    def test_that_are_in_order_are_left_when_all_tools_get_their_rights_back(self):
        """One that waits for its own update."""
        self.put_older_tool(0o755)
        subprocess.run([UPDATE_TOOL, "repairpermissions"], check=True)
        OVERLAY_TOOL.chmod(0o777)
        self.assertEqual(subprocess.run([UPDATE_TOOL, "repairpermissions"], capture_output=True).returncode, OLD_PAYLOAD)

    def test_of_a_tool_do_not_replace_one_that_is_newer_than_the_update_tool(self):
        self.assert_done("repairother", *of_release("finderoverlaytool", NEWER, self.folder))
        self.assert_refused(OLD_PAYLOAD, "repairother", *signed("finderoverlaytool"))

    def test_of_a_bundle_in_a_package_do_not_replace_the_newer_one(self):
        package = make_package(self.folder / "x.pkg", make_bundle(self.folder / "tree", FILE_SYSTEM.name, build="1302"))
        self.assert_refused(OLD_PAYLOAD, "repairpackage", package)
        shutil.rmtree(FILE_SYSTEM)  # as the administrator can, who wants it
        self.assert_done("repairpackage", package)

    def archive_of(self, name, place, version):
        archive = self.folder / f"{name}.zip"
        with zipfile.ZipFile(archive, "w") as file:
            file.writestr(f"{name}/{place}", plistlib.dumps({"CFBundleVersion": version}))
        return archive, sign(archive)

    def test_of_a_bundle_in_an_archive_do_not_replace_the_newer_one(self):
        self.assert_done("repairzipitem", *signed("QuillmarkCM.zip"), PLUGIN)
        self.assert_refused(OLD_PAYLOAD, "repairzipitem", *self.archive_of(PLUGIN.name, "Contents/Info.plist", "1302"), PLUGIN)
        self.assert_done("repairzipitem", *self.archive_of(PLUGIN.name, "Contents/Info.plist", "1303.1"), PLUGIN)

    def test_of_the_repairs_for_an_old_system_do_not_replace_the_newer_ones(self):
        self.assert_done("repairintel10_5", resource("Fixes10_5.zip"), resource("Fixes10_5.plist"))
        self.assert_refused(OLD_PAYLOAD, "repairintel10_5", *self.archive_of("Fixes10_5", "Info.plist", "1302"))

    def test_of_the_client_do_not_replace_the_newer_one(self):
        older = self.client_package("1302")
        before = fingerprint(APP)
        self.assert_refused(OLD_PAYLOAD, "applyfullupdate", *older, APP)
        os.chown("/Applications", 0, 0)
        self.assert_refused(OLD_PAYLOAD, "applyfullupdate", *older, APP)
        self.assertEqual(fingerprint(APP), before)

    def test_without_a_version_do_not_replace_one_that_has_one(self):
        self.assert_done("repairzipitem", *signed("QuillmarkCM.zip"), PLUGIN)
        self.assert_refused(OLD_PAYLOAD, "repairzipitem", *self.archive_of(PLUGIN.name, "elsewhere", "1400"), PLUGIN)


class Identities(AttackTest):
    def disguise(self, contents):
        tool = self.folder / "finderoverlaytool"
        tool.write_bytes(contents)
        self.assert_refused(WRONG_PAYLOAD, "repairother", tool, sign(tool))

    def test_of_a_signed_archive_that_holds_a_tool_is_not_the_tools(self):
        archive = self.folder / "holds.zip"
        with zipfile.ZipFile(archive, "w", zipfile.ZIP_STORED) as file:
            file.write(resource("finderoverlaytool"), "finderoverlaytool")
        self.disguise(archive.read_bytes())

    def test_of_a_signed_text_that_quotes_a_tool_is_not_the_tools(self):
        self.disguise(b"#!/bin/sh\n# \x01Quillmark tool finderoverlaytool 1.14.4.1303\x01\0")

    def test_of_a_program_without_the_section_is_none(self):
        self.disguise(Path("/bin/true").read_bytes() + b"\x01Quillmark tool finderoverlaytool 1.14.4.1303\x01\0")

    def test_of_a_program_that_is_cut_is_none(self):
        whole = resource("finderoverlaytool").read_bytes()
        for size in (4, 16, 63, 64, 1000, len(whole) // 2, len(whole) - 1):
            with self.subTest(size):
                self.disguise(whole[:size])
