"""The update tool where somebody else has his hands on the folders, or on what is in them."""

import os
import shutil
import stat
import struct
import subprocess
from pathlib import Path

from components import FILE_SYSTEM, OVERLAY, OVERLAY_TOOL, PLUGIN, TOOLS, UNSAFE_PLACE, AttackTest, resource, signed
from machine import APP, HOME, RESOURCES, USER, make_user_folder, start

SUPPORT = TOOLS.parent
LIBRARY = SUPPORT.parent


def access_list(user):
    """A list of rights in the kernel's form that lets the user write, too."""
    anybody = 0xFFFFFFFF
    entries = ((0x01, 7, anybody), (0x02, 7, user), (0x04, 5, anybody), (0x10, 7, anybody), (0x20, 5, anybody))
    return struct.pack("<I", 2) + b"".join(struct.pack("<HHI", *entry) for entry in entries)


class FoldersOfOthers(AttackTest):
    def commands(self):
        """Every command that installs, with the folder that the place is in."""
        yield "repairother", *signed("finderoverlaytool")
        yield "repairotherroot", *signed("updateqm")
        yield "repairpermissionsother", "finderoverlaytool"
        yield "repairpackage", resource("QuillmarkFS.pkg")
        yield "repairzipitem", *signed("QuillmarkCM.zip"), PLUGIN
        yield "repairzipitem", *signed("QuillmarkOverlay.zip"), OVERLAY
        yield "repairintel10_5", resource("Fixes10_5.zip"), resource("Fixes10_5.plist")

    def refuse_all(self, folder):
        for command in self.commands():
            with self.subTest(command[0], payload=command[1]):
                self.assert_refused(UNSAFE_PLACE, *command, words=[f"{folder}: can be changed by others"])

    def test_above_the_place_are_refused_when_they_belong_to_somebody_else(self):
        os.chown(LIBRARY, USER, USER)
        self.refuse_all(LIBRARY)

    def test_above_the_place_are_refused_when_others_can_write_to_them(self):
        LIBRARY.chmod(0o777)
        self.refuse_all(LIBRARY)

    def test_above_the_place_may_be_shared_where_each_keeps_his_own(self):
        LIBRARY.chmod(0o1777)
        self.assert_done("repairother", *signed("finderoverlaytool"))
        self.assert_done("repairpackage", resource("QuillmarkFS.pkg"))

    def test_in_which_a_bundle_lies_are_refused(self):
        os.chown(FILE_SYSTEM.parent, USER, USER)
        self.assert_refused(UNSAFE_PLACE, "repairpackage", resource("QuillmarkFS.pkg"), words=[FILE_SYSTEM.parent])

    def test_above_the_tools_are_refused_by_the_administrator_too(self):
        os.chown(SUPPORT, USER, USER)
        self.assert_refused_to_root(UNSAFE_PLACE, resource("updateqm"), "repair", resource("updateqm.sig"))

    def test_are_not_opened_to_the_others(self):
        """Another vendor's private folder that was renamed to the tools' one."""
        shutil.rmtree(TOOLS)
        TOOLS.mkdir(mode=0o700)
        (TOOLS / "private").write_text("precious")
        for _ in range(2):
            subprocess.run([resource("updateqm"), "repair", resource("updateqm.sig")], check=True)
            self.assertEqual(stat.S_IMODE(TOOLS.stat().st_mode), 0o700)
        self.assertEqual((TOOLS / "private").read_text(), "precious")

    def test_are_not_touched_for_a_payload_that_is_not_the_vendors(self):
        os.chown(TOOLS, USER, USER)
        TOOLS.chmod(0o770)
        before = TOOLS.stat()
        forged = self.folder / "updateqm"
        forged.write_bytes(resource("updateqm").read_bytes() + b"\0")
        forged.chmod(0o755)
        subprocess.run([forged, "repair", resource("updateqm.sig")], capture_output=True)
        self.assertEqual(((TOOLS.stat().st_uid, TOOLS.stat().st_mode)), (before.st_uid, before.st_mode))


class ThingsOfOthers(AttackTest):
    """What a former owner of the tools' folder may have moved there: the administrator's own, which he could not delete."""

    def precious_folder(self, path):
        path.mkdir(mode=0o700)
        (path / "inner").mkdir()
        (path / "inner/file").write_text("precious")

    def kept(self):
        return [path for path in TOOLS.rglob("file") if path.read_text() == "precious"]

    def test_are_kept_whatever_their_names_are(self):
        for name in (".quillmark-0123456789abcdef", OVERLAY.name, "Fixes10_5"):
            self.precious_folder(TOOLS / name)
        os.chown(TOOLS, USER, USER)
        for _ in range(2):
            for archive, signature, *place in (("QuillmarkOverlay.zip", "QuillmarkOverlay.zip.sig", OVERLAY),
                                               ("Fixes10_5.zip", "Fixes10_5.plist")):
                command = "repairzipitem" if place else "repairintel10_5"
                self.assert_done(command, resource(archive), resource(signature), *place)
        self.assertEqual(len(self.kept()), 3)
        self.assertTrue((OVERLAY / "Contents").is_dir())

    def test_are_kept_in_a_folder_of_the_callers_own(self):
        applications = HOME / "Applications"
        make_user_folder(applications)
        self.precious_folder(applications / ".quillmark-0123456789abcdef")
        self.assert_done("applyfullupdate", *self.client_package(), applications / APP.name)
        self.assertEqual((applications / ".quillmark-0123456789abcdef/inner/file").read_text(), "precious")

    def test_are_not_replaced_in_a_folder_of_the_callers_own(self):
        applications = HOME / "Applications"
        make_user_folder(applications)
        self.precious_folder(applications / APP.name)
        status, error = self.run_tool("applyfullupdate", *self.client_package(), applications / APP.name)
        self.assertNotEqual(status, 0)
        self.assertRegex(error, r"\Aupdateqm: [^\n]+\n\Z")
        self.assertEqual((applications / APP.name / "inner/file").read_text(), "precious")
        self.assertEqual(os.listdir(applications), [APP.name])

    def test_on_a_disk_that_was_mounted_there_are_refused(self):
        subprocess.run(["mount", "-t", "tmpfs", "-o", f"uid={USER}", "none", TOOLS], check=True)
        self.addCleanup(subprocess.run, ["umount", TOOLS])
        self.assert_refused_to_root(UNSAFE_PLACE, resource("updateqm"), "repair", resource("updateqm.sig"))
        self.assertEqual(os.listdir(TOOLS), [])


class AccessLists(AttackTest):
    """Rights of further users, on top of the modes, that a former owner has set."""

    def assert_has_no_list(self, path):
        self.assertEqual([name for name in os.listxattr(path) if "acl" in name], [], path)
        writing = start("/bin/sh", "-c", f"echo evil >>'{path}'" if path.is_file() else f"touch '{path}/evil'")
        writing.communicate()
        self.assertNotEqual(writing.returncode, 0, path)

    def test_on_the_tools_folder_do_not_stay(self):
        for kind in ("default", "access"):
            os.setxattr(TOOLS, f"system.posix_acl_{kind}", access_list(USER))
        self.assert_done("repairother", *signed("finderoverlaytool"))
        self.assert_done("repairzipitem", *signed("QuillmarkOverlay.zip"), OVERLAY)
        for path in (TOOLS, OVERLAY_TOOL, OVERLAY, OVERLAY / "Contents", OVERLAY / "Contents/Info.plist"):
            self.assert_has_no_list(path)

    def test_that_a_folder_above_hands_down_do_not_reach_what_is_installed(self):
        shutil.rmtree(FILE_SYSTEM.parent)
        os.setxattr(LIBRARY, "system.posix_acl_default", access_list(USER))
        self.assert_done("repairpackage", resource("QuillmarkFS.pkg"))
        for path in (FILE_SYSTEM.parent, FILE_SYSTEM, FILE_SYSTEM / "Contents/Info.plist"):
            self.assert_has_no_list(path)

    def test_that_let_others_write_above_a_place_are_refused(self):
        os.setxattr(LIBRARY, "system.posix_acl_access", access_list(USER))
        self.assert_refused(UNSAFE_PLACE, "repairpackage", resource("QuillmarkFS.pkg"), words=[LIBRARY])


class CoreApplications(AttackTest):
    def test_are_not_what_the_administrator_keeps_private_under_another_name(self):
        resources = HOME / "x.app/Contents/Resources"
        make_user_folder(resources)
        private = resources / "QuillmarkCore.app"
        private.mkdir(mode=0o700)
        (private / "file").write_text("private")
        self.assert_refused(UNSAFE_PLACE, "repaircore", private)
        self.assertEqual(stat.S_IMODE(private.stat().st_mode), 0o700)

    def test_of_the_administrators_own_launcher_get_their_mode_back(self):
        os.chown("/Applications", 0, 0)
        subprocess.run(["chown", "-R", "root:root", APP], check=True)
        core = RESOURCES / "QuillmarkCore.app"
        for mode in (0o700, 0o777, 0):
            core.chmod(mode)
            self.assert_done("repaircore", core)
            self.assertEqual(stat.S_IMODE(core.stat().st_mode), 0o755)

    def test_of_the_administrators_are_left_alone_where_others_can_put_them(self):
        os.chown("/Applications", 0, 0)
        subprocess.run(["chown", "-R", "root:root", APP], check=True)
        core = RESOURCES / "QuillmarkCore.app"
        core.chmod(0o700)
        RESOURCES.chmod(0o777)
        self.assert_refused(UNSAFE_PLACE, "repaircore", core)
        self.assertEqual(stat.S_IMODE(core.stat().st_mode), 0o700)

    def test_tell_nothing_of_folders_that_the_caller_may_not_look_into(self):
        Path("/root/x.app/Contents/Resources/QuillmarkCore.app").mkdir(parents=True)
        Path("/root").chmod(0o700)
        answers = {self.run_tool("repaircore", f"/root/{name}/Contents/Resources/QuillmarkCore.app")[1].replace(name, "*")
                   for name in ("x.app", "none.app", "x.app/Contents")}
        self.assertEqual(len(answers), 1, answers)
        self.assertEqual(stat.S_IMODE(Path("/root/x.app/Contents/Resources/QuillmarkCore.app").stat().st_mode), 0o755)

    def test_and_clients_are_not_looked_for_in_them_either(self):
        Path("/root/x").mkdir()
        Path("/root").chmod(0o700)
        package, signature = self.client_package()
        answers = {tuple(str(part).replace(name, "*") for part in
                         self.run_tool("applyfullupdate", package, signature, f"/root/{name}/{APP.name}"))
                   for name in ("x", "none")}
        self.assertEqual(len(answers), 1, answers)
