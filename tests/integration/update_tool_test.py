"""The update tool's commands: what each changes, for an ordinary user who calls the installed tool."""

import os
import plistlib
import shutil
import stat
import subprocess
from pathlib import Path

from components import (CANNOT_WRITE, FILE_SYSTEM, FRAMEWORK, NOT_ADMINISTRATOR, OVERLAY, OVERLAY_TOOL, PLUGIN, TOOLS,
                        UPDATE_TOOL, WRONG_COMMAND_LINE, WRONG_PAYLOAD, WRONG_PLACE, AttackTest, UpdateToolTest,
                        resource, signed)
from machine import APP, HOME, RESOURCES, USER, fill, make_user_folder

MODES = {"d": 0o755, "-": 0o644, "l": 0o777}


class Commands(AttackTest):
    def assert_is_bundle(self, bundle, programs=(), owner=0):
        """All of it is the owner's, and nobody else can change it."""
        for path in [bundle, *bundle.rglob("*")]:
            status = path.lstat()
            mode = 0o755 if path in programs else MODES[stat.filemode(status.st_mode)[0]]
            self.assertEqual((stat.S_IMODE(status.st_mode), status.st_uid, status.st_gid), (mode, owner, owner), path)

    def version_of(self, information):
        return plistlib.loads(information.read_bytes())["CFBundleShortVersionString"]

    def test_without_a_command_it_prints_its_version(self):
        self.assert_done()
        self.assertRegex(self.output, r"\A[\w ]+ Limited 1\.14\.4\.1303\n\Z")

    def test_a_command_that_is_none_or_has_not_its_arguments_is_told(self):
        for arguments in (("sing",), ("",), ("repairother",), ("repairother", "a"), ("repairpermissions", "a"),
                          ("repair", "a", "b"), ("--help",)):
            with self.subTest(arguments):
                self.assert_refused(WRONG_COMMAND_LINE, *arguments)

    def test_a_copy_without_the_administrators_rights_does_nothing(self):
        self.assert_refused(NOT_ADMINISTRATOR, "repair", resource("updateqm.sig"), program=resource("updateqm"))

    def test_it_installs_itself_when_the_administrator_runs_it(self):
        shutil.rmtree(TOOLS)
        subprocess.run([resource("updateqm"), "repair", resource("updateqm.sig")], check=True)
        self.assert_is_tool(UPDATE_TOOL, 0o4755)
        self.assertEqual(sorted(os.listdir(TOOLS)), ["updateqm", "updateqm.sig"])

    def test_it_replaces_itself_while_it_runs(self):
        before = UPDATE_TOOL.stat().st_ino
        self.assert_done("repairotherroot", *signed("updateqm"))
        self.assert_is_tool(UPDATE_TOOL, 0o4755)
        self.assertNotEqual(UPDATE_TOOL.stat().st_ino, before)

    def test_it_installs_a_tool(self):
        for what in ("missing", "there already", "half there"):
            with self.subTest(what):
                if what != "there already":
                    OVERLAY_TOOL.unlink()
                if what == "half there":
                    OVERLAY_TOOL.write_bytes(b"\x7fELF")
                self.assert_done("repairother", *signed("finderoverlaytool"))
                self.assert_is_tool(OVERLAY_TOOL, 0o755)

    def test_it_gives_a_tool_its_owner_and_mode_back(self):
        for word, tool, mode in (("repairpermissionsother", OVERLAY_TOOL, 0o755),
                                 ("repairpermissionsotherroot", UPDATE_TOOL, 0o4755)):
            with self.subTest(word):
                if tool != UPDATE_TOOL:  # which could not act any more
                    os.chown(tool, USER, USER)
                    os.chmod(tool, 0o666)
                self.assert_done(word, tool.name)
                self.assert_is_tool(tool, mode)

    def test_the_administrator_gives_a_root_tool_its_owner_and_mode_back(self):
        os.chown(UPDATE_TOOL, USER, USER)
        os.chmod(UPDATE_TOOL, 0o755)
        subprocess.run([UPDATE_TOOL, "repairpermissionsotherroot", UPDATE_TOOL.name], check=True)
        self.assert_is_tool(UPDATE_TOOL, 0o4755)

    def test_the_administrator_gives_all_tools_their_owner_and_mode_back(self):
        for tool in (UPDATE_TOOL, OVERLAY_TOOL):
            os.chown(tool, USER, USER)
            os.chmod(tool, 0o755)
        subprocess.run([UPDATE_TOOL, "repairpermissions"], check=True)
        self.assert_is_tool(UPDATE_TOOL, 0o4755)
        self.assert_is_tool(OVERLAY_TOOL, 0o755)

    def test_missing_tools_are_passed_over_then(self):
        OVERLAY_TOOL.unlink()
        subprocess.run([UPDATE_TOOL, "repairpermissions"], check=True)
        self.assertFalse(OVERLAY_TOOL.exists())

    def test_it_installs_a_bundle_from_a_package(self):
        shutil.rmtree(FILE_SYSTEM.parent)
        self.assert_done("repairpackage", resource("QuillmarkFS.pkg"))
        self.assert_is_bundle(FILE_SYSTEM, [FILE_SYSTEM / "Contents/Resources/mount_quillmarkfs"])
        self.assertEqual(self.version_of(FILE_SYSTEM / "Contents/Info.plist"), "1.14.4")

    def test_a_bundle_that_is_there_is_replaced_whole(self):
        (FILE_SYSTEM / "Contents/old").write_text("old")
        self.assert_done("repairpackage", resource("QuillmarkFS.pkg"))
        self.assertFalse((FILE_SYSTEM / "Contents/old").exists())
        self.assertEqual(os.listdir(FILE_SYSTEM.parent), [FILE_SYSTEM.name])

    def test_it_installs_a_framework_with_its_links(self):
        shutil.rmtree(FRAMEWORK)
        self.assert_done("repairpackage", resource("QuillmarkRuntime.pkg"))
        self.assert_is_bundle(FRAMEWORK)
        self.assertEqual(os.readlink(FRAMEWORK / "Versions/Current"), "A")
        self.assertEqual(self.version_of(FRAMEWORK / "Resources/Info.plist"), "1.14.4")

    def test_it_installs_a_plug_in_from_an_archive(self):
        for plugin, program in ((PLUGIN, "QuillmarkCM"), (OVERLAY, "QuillmarkOverlay")):
            for what in ("missing", "there already"):
                with self.subTest(plugin=plugin, what=what):
                    archive = resource(f"{program}.zip")
                    self.assert_done("repairzipitem", archive, f"{archive}.sig", plugin)
                    self.assert_is_bundle(plugin, [plugin / "Contents/MacOS" / program])
                    self.assertEqual(self.version_of(plugin / "Contents/Info.plist"), "1.14.4")
                    (plugin / "Contents/old").mkdir()
                    shutil.rmtree(plugin / "Contents/old")

    def test_it_installs_the_repairs_for_an_old_system(self):
        self.assert_done("repairintel10_5", resource("Fixes10_5.zip"), resource("Fixes10_5.plist"))
        self.assert_is_bundle(TOOLS / "Fixes10_5")
        self.assertTrue((TOOLS / "Fixes10_5/ReadMe.txt").is_file())

    def test_the_core_application_gets_its_mode_back(self):
        core = RESOURCES / "QuillmarkCore.app"
        core.chmod(0o700)
        self.assert_done("repaircore", core)
        self.assertEqual(stat.S_IMODE(core.stat().st_mode), 0o755)
        self.assertEqual(core.stat().st_uid, USER)  # the owner does not matter

    def test_the_folder_of_key_pairs_is_closed_to_others(self):
        folder = HOME / ".config/.mono/keypairs"
        make_user_folder(folder)
        key = folder / "key"
        key.write_text("secret")
        os.chown(key, USER, USER)
        folder.chmod(0o777)
        self.assert_done("fixmonokeypairs", folder)
        self.assertEqual([stat.S_IMODE(path.stat().st_mode) for path in (folder, key)], [0o700, 0o600])

    def test_a_full_update_replaces_the_client_where_it_stands(self):
        package, signature = self.client_package(version="1.15.0")
        make_user_folder(HOME / "Applications")
        for folder in (Path("/Applications"), HOME / "Applications"):
            with self.subTest(folder):  # both are the caller's own, and so is what he puts there
                self.assert_done("applyfullupdate", package, signature, folder / "Quillmark.app")
                self.assert_is_bundle(folder / "Quillmark.app", owner=USER)
                self.assertEqual(self.version_of(folder / "Quillmark.app/Contents/Info.plist"), "1.15.0")
                self.assertEqual(os.listdir(folder), ["Quillmark.app"])

    def test_a_full_update_of_the_administrators_applications_folder_is_his(self):
        package, signature = self.client_package(version="1.15.0")
        os.chown("/Applications", 0, 0)
        self.assert_done("applyfullupdate", package, signature, APP)
        self.assert_is_bundle(APP)
        self.assertEqual(os.listdir(APP.parent), [APP.name])

    def test_a_full_update_goes_nowhere_else(self):
        package, signature = self.client_package(version="1.15.0")
        for place in (APP.with_name("Other.app"), Path("/etc/Quillmark.app"), Path("/Quillmark.app")):
            with self.subTest(place):
                self.assert_refused(WRONG_PLACE, "applyfullupdate", package, signature, place, words=["/"])
                self.assertFalse(place.exists())

    def test_a_full_update_is_of_the_client(self):
        package, signature = self.client_package(name="Other.app")
        self.assert_refused(WRONG_PAYLOAD, "applyfullupdate", package, signature, APP)

    def test_the_overlay_tool_wants_a_plug_in_that_only_the_administrator_can_have_changed(self):
        run = lambda: subprocess.run([OVERLAY_TOOL, "insertfinderoverlay"], capture_output=True, text=True)
        self.assertEqual(run().returncode, 66)
        self.assert_done("repairzipitem", *signed("QuillmarkOverlay.zip"), OVERLAY)
        self.assertEqual((run().returncode, run().stderr), (0, ""))
        OVERLAY.chmod(0o775)
        self.assertEqual(run().returncode, 77)
        self.assertRegex(run().stderr, r"\Afinderoverlaytool: .*QuillmarkOverlay\.bundle: [^\n]+\n\Z")
        self.assertEqual(subprocess.run([OVERLAY_TOOL, "dance"], capture_output=True).returncode, 64)


class FullDisk(UpdateToolTest):
    def setUp(self):
        """The components move to a small disk of their own."""
        library = Path("/tmp/library")
        shutil.copytree("/Library", library, symlinks=True)
        subprocess.run(["mount", "-t", "tmpfs", "-o", "size=6m,mode=755", "none", "/Library"], check=True)
        subprocess.run(["cp", "-a", f"{library}/.", "/Library"], check=True)

    def test_leaves_what_was_there_before(self):
        shutil.copy(resource("QuillmarkCM.zip"), "/tmp/archive.zip")
        fill("/Library/ballast")
        for arguments in (("repairother", *signed("finderoverlaytool")), ("repairotherroot", *signed("updateqm")),
                          ("repairpackage", resource("QuillmarkFS.pkg")),
                          ("repairpermissionsother", "finderoverlaytool"),
                          ("repairintel10_5", resource("Fixes10_5.zip"), resource("Fixes10_5.plist"))):
            with self.subTest(arguments[0]):
                self.assert_refused(CANNOT_WRITE, *arguments)
        self.assert_done()

    def test_room_made_afterwards_is_enough(self):
        fill("/Library/ballast")
        self.run_tool("repairpackage", resource("QuillmarkFS.pkg"))
        os.unlink("/Library/ballast")
        self.assert_done("repairpackage", resource("QuillmarkFS.pkg"))

    def test_a_read_only_disk_is_told(self):
        subprocess.run(["mount", "-o", "remount,ro", "/Library"], check=True)
        self.assert_refused(CANNOT_WRITE, "repairpackage", resource("QuillmarkFS.pkg"))
