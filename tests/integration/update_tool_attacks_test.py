"""The update tool in the hands of somebody who wants the administrator's rights."""

import contextlib
import os
import random
import shutil
import signal
import stat
import subprocess
import threading
import time
import zipfile
from pathlib import Path

from components import (CANNOT_WRITE, DAMAGED_PAYLOAD, FILE_SYSTEM, OLD_PAYLOAD, OLDER, OVERLAY, OVERLAY_TOOL, PLUGIN, TOOLS,
                        UNREADABLE_PAYLOAD, UNSAFE_PLACE, UPDATE_TOOL, WRONG_PAYLOAD, WRONG_PLACE, WRONG_SIGNATURE,
                        AttackTest, archive_with, foreign_key, make_bundle, make_package, of_release, resource, sign,
                        signed)
from machine import HOME, RESOURCES, USER, make_user_folder, start, status_of, wait_until


class Attacks(AttackTest):
    def commands_with(self, payloads):
        """Every command that takes a payload, with its payload and signature taken from `payloads(name)`."""
        tool, tool_signature = payloads("finderoverlaytool")
        root_tool, root_tool_signature = payloads("updateqm")
        archive, archive_signature = payloads("QuillmarkCM.zip")
        package, package_signature = payloads("QuillmarkFS.pkg")
        yield "repairother", tool, tool_signature
        yield "repairotherroot", root_tool, root_tool_signature
        yield "repairzipitem", archive, archive_signature, PLUGIN
        yield "repairintel10_5", archive, archive_signature
        yield "repairpackage", package
        yield "applyfullupdate", package, package_signature, Path("/Applications/Quillmark.app")


class Signatures(Attacks):
    def refuse_all(self, status, tamper):
        def payloads(name):
            payload, signature = self.copy_of(name)
            tamper(payload, signature)
            return payload, signature

        for command in self.commands_with(payloads):
            with self.subTest(command[0]):
                self.assert_refused(status, *command)

    def test_a_changed_payload_is_refused(self):
        def change_one_bit(payload, _):
            contents = bytearray(payload.read_bytes())
            contents[len(contents) // 2] ^= 1
            payload.write_bytes(contents)

        self.refuse_all(WRONG_SIGNATURE, change_one_bit)

    def test_a_longer_and_an_empty_payload_are_refused(self):
        self.refuse_all(WRONG_SIGNATURE, lambda payload, _: payload.write_bytes(payload.read_bytes() + b"\0"))
        self.refuse_all(WRONG_SIGNATURE, lambda payload, _: payload.write_bytes(b""))

    def test_an_empty_signature_is_refused(self):
        self.refuse_all(WRONG_SIGNATURE, lambda _, signature: signature.write_bytes(b""))

    def test_a_signature_of_zeros_or_cut_or_as_text_is_refused(self):
        for contents in (bytes(256), b"\1" * 255, b"-----BEGIN SIGNATURE-----", bytes(60000)):
            self.refuse_all(WRONG_SIGNATURE, lambda _, signature: signature.write_bytes(contents))

    def test_somebody_elses_signature_is_refused(self):
        self.refuse_all(WRONG_SIGNATURE, lambda payload, _: sign(payload, foreign_key()))

    def test_the_signature_of_another_payload_is_refused(self):
        self.refuse_all(WRONG_SIGNATURE, lambda _, signature: shutil.copy(resource("QuillmarkOverlay.zip.sig"), signature))

    def test_a_missing_signature_or_payload_is_told_by_name(self):
        self.refuse_all(UNREADABLE_PAYLOAD, lambda _, signature: signature.unlink())
        self.refuse_all(UNREADABLE_PAYLOAD, lambda payload, _: payload.unlink())

    def test_a_tool_that_installs_itself_checks_itself(self):
        tool, signature = self.copy_of("updateqm")
        tool.write_bytes(tool.read_bytes() + b"\0")
        self.assert_refused_to_root(WRONG_SIGNATURE, tool, "repair", signature)


class WrongThings(Attacks):
    def test_a_tool_is_not_installed_under_another_ones_name(self):
        disguised = self.folder / "updateqm"
        shutil.copy(resource("finderoverlaytool"), disguised)
        self.assert_refused(WRONG_PAYLOAD, "repairotherroot", disguised, resource("finderoverlaytool.sig"))

    def test_a_tool_does_not_get_a_mode_that_is_not_its_own(self):
        self.assert_refused(WRONG_PLACE, "repairotherroot", *signed("finderoverlaytool"))
        self.assert_refused(WRONG_PLACE, "repairother", *signed("updateqm"))
        self.assert_refused(WRONG_PLACE, "repairpermissionsotherroot", "finderoverlaytool")

    def test_signed_things_that_are_no_tools_are_not_installed_as_tools(self):
        disguised = self.folder / "updateqm"
        shutil.copy(resource("QuillmarkCM.zip"), disguised)
        self.assert_refused(WRONG_PAYLOAD, "repairotherroot", disguised, resource("QuillmarkCM.zip.sig"))

    def test_an_older_tool_does_not_replace_a_newer_one(self):
        self.assert_refused(OLD_PAYLOAD, "repairother", *of_release("finderoverlaytool", OLDER, self.folder))

    def test_nothing_is_installed_at_places_outside_the_catalogue(self):
        archive, signature = signed("QuillmarkCM.zip")
        for place in ("/etc/QuillmarkCM.plugin", "/Library/QuillmarkCM.plugin", f"{PLUGIN}/", f"{PLUGIN}/../x", "relative",
                      "/Library/./Contextual Menu Items/QuillmarkCM.plugin", "/", "", str(FILE_SYSTEM), f"{PLUGIN}\n"):
            with self.subTest(place):
                self.assert_refused(WRONG_PLACE, "repairzipitem", archive, signature, place)

    def test_one_bundle_is_not_installed_in_anothers_place(self):
        self.assert_refused(WRONG_PAYLOAD, "repairzipitem", *signed("QuillmarkCM.zip"), OVERLAY)

    def test_tools_outside_the_catalogue_or_their_folder_are_not_repaired(self):
        for name in ("other", "../updateqm", "/usr/bin/env", "", ".", "updateqm/", "updateqm.sig"):
            with self.subTest(name):
                self.assert_refused(WRONG_PLACE, "repairpermissionsotherroot", name)

    def test_only_a_core_application_gets_its_mode(self):
        secret = self.folder / "secret"
        secret.mkdir(mode=0o700)
        link = HOME / "x.app/Contents/Resources/QuillmarkCore.app"
        make_user_folder(link.parent)
        link.symlink_to(secret)
        for path, status in ((secret, WRONG_PLACE), ("/root", WRONG_PLACE), ("QuillmarkCore.app", WRONG_PLACE),
                             (link, UNSAFE_PLACE), (f"{RESOURCES}/../Resources/QuillmarkCore.app", WRONG_PLACE),
                             (link.with_name("none") / "Contents/Resources/QuillmarkCore.app", UNSAFE_PLACE)):
            with self.subTest(path):
                self.assert_refused(status, "repaircore", path)
        self.assertEqual(stat.S_IMODE(secret.stat().st_mode), 0o700)

    def test_a_core_application_of_a_third_party_keeps_its_mode(self):
        other = self.folder / "x.app/Contents/Resources/QuillmarkCore.app"
        other.mkdir(parents=True)
        other.chmod(0o700)
        for path in self.folder.rglob("*"):
            os.chown(path, 4711, 4711)
        self.assert_refused(UNSAFE_PLACE, "repaircore", other)

    def test_key_pairs_are_closed_with_the_callers_rights_alone(self):
        folder = self.folder / ".config/.mono/keypairs"
        folder.mkdir(parents=True)
        self.assert_refused(CANNOT_WRITE, "fixmonokeypairs", folder)  # root's
        self.assert_refused(WRONG_PLACE, "fixmonokeypairs", "/etc")
        mine = HOME / ".config/.mono/keypairs"
        make_user_folder(mine)
        (mine / "link").symlink_to("/etc/passwd")
        os.link("/etc/passwd", mine / "hard") if os.stat("/etc").st_dev == os.stat(mine).st_dev else None
        before = os.stat("/etc/passwd")
        self.assert_done("fixmonokeypairs", mine)
        self.assertEqual(os.stat("/etc/passwd").st_mode, before.st_mode)


class OddFiles(Attacks):
    def test_files_that_the_caller_may_not_read_are_not_read_for_him(self):
        secret = self.folder / "secret"
        secret.write_text("root's own")
        secret.chmod(0o600)
        self.assert_refused(UNREADABLE_PAYLOAD, "repairzipitem", secret, resource("QuillmarkCM.zip.sig"), PLUGIN, words=[secret])
        self.assert_refused(UNREADABLE_PAYLOAD, "repairzipitem", resource("QuillmarkCM.zip"), secret, PLUGIN, words=[secret])

    def test_what_is_no_file_is_no_payload(self):
        os.mkfifo(self.folder / "pipe", 0o666)
        os.chmod(self.folder / "pipe", 0o666)
        for path in (self.folder / "pipe", self.folder, Path("/dev/zero"), Path("/dev/full"), Path("/proc/self/mem")):
            with self.subTest(path):
                self.assert_refused(UNREADABLE_PAYLOAD, "repairzipitem", path, resource("QuillmarkCM.zip.sig"), PLUGIN)

    def test_a_payload_of_many_gigabytes_is_not_copied(self):
        large = self.folder / "large"
        with open(large, "wb") as file:
            file.truncate(1 << 40)
        large.chmod(0o644)
        self.assert_refused(UNREADABLE_PAYLOAD, "repairzipitem", large, resource("QuillmarkCM.zip.sig"), PLUGIN)

    def test_odd_names_become_one_line(self):
        name = f"{self.folder}/a\nupdateqm: done\x1b[2J"
        self.assert_refused(UNREADABLE_PAYLOAD, "repairzipitem", name, name, PLUGIN)

    def test_odd_descriptors_and_signals_change_nothing(self):
        def close_all():
            for number in (0, 1, 2):
                os.close(number)
            signal.signal(signal.SIGCHLD, signal.SIG_IGN)
            signal.pthread_sigmask(signal.SIG_BLOCK, range(1, 32))

        OVERLAY_TOOL.unlink()
        self.assert_done("repairother", *signed("finderoverlaytool"), before=close_all)
        self.assert_is_tool(OVERLAY_TOOL, 0o755)

    def test_the_callers_mask_changes_nothing(self):
        for mask in (0, 0o777):
            self.assert_done("repairpackage", resource("QuillmarkFS.pkg"), before=lambda: os.umask(mask))
            self.assertEqual(stat.S_IMODE((FILE_SYSTEM / "Contents").stat().st_mode), 0o755)

    def test_the_caller_can_neither_end_nor_look_into_it_while_it_acts(self):
        PLUGIN.parent.mkdir()
        big = self.folder / "big.zip"
        with zipfile.ZipFile(big, "w") as archive:
            archive.writestr("QuillmarkCM.plugin/big", os.urandom(1 << 20) * 300)
        process = start(UPDATE_TOOL, "repairzipitem", big, sign(big), PLUGIN)
        wait_until(lambda: status_of(process.pid)["Uid"].split() == ["0"] * 4, "the tool is root's")
        for attempt in (["kill", "-KILL", str(process.pid)], ["cat", f"/proc/{process.pid}/mem"]):
            self.assertNotEqual(start(*attempt).wait(), 0)
        process.communicate(timeout=60)
        self.assertEqual(process.returncode, 0)

    def test_nothing_of_the_environment_reaches_the_libraries(self):
        """As root, where the system itself holds nothing back: a library that OpenSSL would load by its configuration."""
        source = self.folder / "spy.c"
        source.write_text('#include <fcntl.h>\n__attribute__((constructor)) void spy(void) { open("%s/seen", O_CREAT, 0600); }\n'
                          % self.folder)
        subprocess.run(["cc", "-shared", "-fPIC", "-o", self.folder / "spy.so", source], check=True)
        configuration = self.folder / "spy.cnf"
        configuration.write_text(f"openssl_conf = a\n[a]\nproviders = b\n[b]\nspy = c\n[c]\nmodule = {self.folder}/spy.so\n"
                                 "activate = 1\n")
        surroundings = {"PATH": os.environ["PATH"], "OPENSSL_CONF": str(configuration)}
        seen = self.folder / "seen"
        subprocess.run(["openssl", "list", "-providers"], env=surroundings, capture_output=True)
        self.assertTrue(seen.exists(), "the configuration does not do what this test needs")
        seen.unlink()
        subprocess.run([resource("updateqm"), "repair", resource("updateqm.sig")], env=surroundings, check=True)
        self.assertFalse(seen.exists())


class ThingsInTheWay(Attacks):
    def test_a_link_in_the_tools_place_is_replaced_and_not_followed(self):
        victim = self.folder / "victim"
        victim.write_text("precious")
        OVERLAY_TOOL.unlink()
        OVERLAY_TOOL.symlink_to(victim)
        self.assert_done("repairother", *signed("finderoverlaytool"))
        self.assert_is_tool(OVERLAY_TOOL, 0o755)
        self.assertEqual(victim.read_text(), "precious")

    def test_a_folder_in_the_tools_place_goes_with_its_contents_and_its_links_are_not_followed(self):
        victim = self.folder / "victim"
        victim.mkdir()
        (victim / "file").write_text("precious")
        OVERLAY_TOOL.unlink()
        (OVERLAY_TOOL / "inner").mkdir(parents=True)
        (OVERLAY_TOOL / "inner/link").symlink_to(victim)
        self.assert_done("repairother", *signed("finderoverlaytool"))
        self.assert_is_tool(OVERLAY_TOOL, 0o755)
        self.assertEqual((victim / "file").read_text(), "precious")

    def test_a_link_in_the_way_to_the_place_is_refused(self):
        elsewhere = self.folder / "elsewhere"
        elsewhere.mkdir()
        shutil.rmtree(FILE_SYSTEM.parent)
        FILE_SYSTEM.parent.symlink_to(elsewhere)
        self.assert_refused(UNSAFE_PLACE, "repairpackage", resource("QuillmarkFS.pkg"), words=[FILE_SYSTEM.parent])
        self.assertEqual(os.listdir(elsewhere), [])

    def test_a_file_in_the_way_to_the_place_is_refused(self):
        shutil.rmtree(FILE_SYSTEM.parent)
        FILE_SYSTEM.parent.write_text("in the way")
        self.assert_refused(UNSAFE_PLACE, "repairpackage", resource("QuillmarkFS.pkg"))

    def test_a_tool_folder_that_is_a_link_is_refused(self):
        real = TOOLS.rename(TOOLS.with_name("Real"))
        TOOLS.symlink_to(real)
        self.assert_refused_to_root(UNSAFE_PLACE, real / "updateqm", "repairpermissions", folder=real)

    def test_a_tool_folder_that_others_can_write_to_becomes_the_administrators(self):
        os.chown(TOOLS, USER, USER)
        TOOLS.chmod(0o777)
        self.assert_done("repairother", *signed("finderoverlaytool"))
        self.assertEqual((stat.S_IMODE(TOOLS.stat().st_mode), TOOLS.stat().st_uid), (0o755, 0))

    def test_a_tool_that_was_exchanged_does_not_get_its_rights_back(self):
        OVERLAY_TOOL.write_bytes(b"#!/bin/sh\nid >/tmp/owned\n")
        self.assert_refused(WRONG_SIGNATURE, "repairpermissionsother", "finderoverlaytool")

    def test_whoever_has_a_tool_open_for_writing_does_not_change_the_repaired_one(self):
        OVERLAY_TOOL.chmod(0o666)
        with open(OVERLAY_TOOL, "r+b") as still_open:
            self.assert_done("repairpermissionsother", "finderoverlaytool")
            still_open.write(b"changed")
        self.assert_is_tool(OVERLAY_TOOL, 0o755)

    def test_what_a_killed_run_has_left_is_cleared_and_what_others_have_made_stays(self):
        left = TOOLS / ".quillmark-0123456789abcdef"
        (left / "inner").mkdir(parents=True)
        others = TOOLS / ".quillmark-of-others"
        others.mkdir()
        os.chown(others, USER, USER)
        self.assert_done("repairother", *signed("finderoverlaytool"))
        self.assertFalse(left.exists())
        self.assertTrue(others.exists())


class Races(Attacks):
    @contextlib.contextmanager
    def repeating(self, attack):
        """Somebody else attacks again and again meanwhile."""
        stop = threading.Event()

        def attack_on():
            while not stop.is_set():
                attack()

        attacker = threading.Thread(target=attack_on)
        attacker.start()
        try:
            yield
        finally:
            stop.set()
            attacker.join()

    def test_a_payload_that_is_exchanged_while_it_is_copied_is_never_installed(self):
        good, signature = self.copy_of("finderoverlaytool")
        contents = good.read_bytes()
        evil = bytearray(contents)
        evil[-1] ^= 0xFF
        for path in (self.folder, good, signature):
            os.chown(path, USER, USER)

        def exchange():
            for index, bytes_ in enumerate((evil, contents)):
                other = self.folder / f"other{index}"
                other.write_bytes(bytes_)
                other.replace(good)
            with open(good, "r+b") as file:  # and in place
                file.write(bytes(evil))
                file.seek(0)
                file.write(contents)

        outcomes = set()
        with self.repeating(exchange):
            for _ in range(150):
                outcomes.add(self.run_tool("repairother", good, signature)[0])
                self.assertEqual(OVERLAY_TOOL.read_bytes(), contents)
        self.assertLessEqual(outcomes, {0, WRONG_SIGNATURE, UNREADABLE_PAYLOAD})
        self.assertIn(WRONG_SIGNATURE, outcomes, "the attacker was never quick enough: the test shows nothing")

    def test_places_that_are_exchanged_for_links_lead_nowhere(self):
        victim = self.folder / "victim"
        victim.mkdir()
        shutil.rmtree(FILE_SYSTEM.parent)

        def exchange():
            place = FILE_SYSTEM.parent
            try:
                place.symlink_to(victim)
                time.sleep(0)
                place.unlink()
            except OSError:
                with contextlib.suppress(OSError):
                    place.rename(self.folder / f"moved{random.random()}")

        with self.repeating(exchange):
            for _ in range(60):
                self.run_tool("repairpackage", resource("QuillmarkFS.pkg"))
                self.assertEqual(os.listdir(victim), [])

    def test_killed_at_any_moment_it_leaves_the_old_or_the_new(self):
        contents = resource("updateqm").read_bytes()
        for attempt in range(60):
            process = start(UPDATE_TOOL, "repairotherroot", *signed("updateqm"))
            time.sleep(random.random() * 0.03)  # any moment will do
            process.kill()
            process.communicate()
            status = UPDATE_TOOL.lstat()
            self.assertEqual((UPDATE_TOOL.read_bytes(), stat.S_IMODE(status.st_mode), status.st_uid), (contents, 0o4755, 0))
        self.assert_done("repairotherroot", *signed("updateqm"))
        self.assertEqual(sorted(os.listdir(TOOLS)), ["finderoverlaytool", "finderoverlaytool.sig", "updateqm", "updateqm.sig"])

    def test_several_at_once_leave_one_whole_installation(self):
        runs = [start(UPDATE_TOOL, "repairpackage", resource("QuillmarkFS.pkg")) for _ in range(8)]
        for run in runs:
            run.communicate(timeout=60)
        self.assertEqual({run.returncode for run in runs}, {0})
        self.assertEqual(os.listdir(FILE_SYSTEM.parent), [FILE_SYSTEM.name])


class HostilePackages(Attacks):
    """Signed by the vendor: a mistake there must do no harm either."""

    def refuse_package(self, status, package):
        sign(package)
        self.assert_refused(status, "repairpackage", package)

    def package(self, change=lambda tree: None, **options):
        shutil.rmtree(self.folder / "tree", ignore_errors=True)
        tree = make_bundle(self.folder / "tree", "QuillmarkFS.fs")
        change(tree)
        return make_package(self.folder / "x.pkg", tree, **options)

    def test_that_lead_outside_are_refused(self):
        for name in ("../outside", "QuillmarkFS.fs/../../outside", "/tmp/outside", "./../outside", "QuillmarkFS.fs//x"):
            with self.subTest(name):
                self.refuse_package(DAMAGED_PAYLOAD, self.package(contents=archive_with(name)))
        self.assertFalse(Path("/tmp/outside").exists())

    def test_with_links_that_lead_outside_are_refused(self):
        for target in ("/etc/passwd", "../../outside", "Contents/../../x", "../QuillmarkFS.fs/../../x"):
            with self.subTest(target):
                self.refuse_package(DAMAGED_PAYLOAD, self.package(lambda tree: (tree / "QuillmarkFS.fs/link").symlink_to(target)))

    def test_with_hard_links_pipes_and_devices_are_refused(self):
        def hard_link(tree):
            os.link(tree / "QuillmarkFS.fs/Contents/Info.plist", tree / "QuillmarkFS.fs/hard")

        def pipe(tree):
            os.mkfifo(tree / "QuillmarkFS.fs/pipe")

        for change in (hard_link, pipe):
            with self.subTest(change.__name__):
                self.refuse_package(DAMAGED_PAYLOAD, self.package(change))

    def test_special_bits_and_owners_do_not_count(self):
        def mark(tree):
            program = tree / "QuillmarkFS.fs/program"
            program.write_text("x")
            os.chown(program, USER, USER)
            program.chmod(0o6777)

        self.assert_done("repairpackage", self.package(mark))
        status = (FILE_SYSTEM / "program").stat()
        self.assertEqual((stat.S_IMODE(status.st_mode), status.st_uid, status.st_gid), (0o755, 0, 0))

    def test_for_places_outside_the_catalogue_are_refused(self):
        for location in ("/etc", "/", "relative", "/Library/Filesystems/..", ""):
            with self.subTest(location):
                self.refuse_package(WRONG_PLACE, self.package(location=location))

    def test_with_two_bundles_or_none_are_refused(self):
        self.refuse_package(WRONG_PAYLOAD, self.package(lambda tree: (tree / "Other.fs").mkdir()))
        shutil.rmtree(self.folder / "tree")
        self.refuse_package(WRONG_PLACE, self.package(lambda tree: shutil.rmtree(tree / "QuillmarkFS.fs")))

    def test_without_a_readable_description_are_refused(self):
        for description in ("", "<pkg-info", "no xml"):
            with self.subTest(description):
                self.refuse_package(DAMAGED_PAYLOAD, self.package(description=description))

    def test_that_are_none_or_cut_are_refused(self):
        whole = resource("QuillmarkFS.pkg").read_bytes()
        for contents in (b"x", b"PK\3\4", whole[:20], whole[: len(whole) // 2], whole[:-40]):
            package = self.folder / "cut.pkg"
            package.write_bytes(contents)
            self.refuse_package(DAMAGED_PAYLOAD, package)


class HostileArchives(Attacks):
    def setUp(self):
        super().setUp()
        PLUGIN.parent.mkdir()

    def command_with(self, write):
        archive = self.folder / "x.zip"
        with zipfile.ZipFile(archive, "w") as file:
            write(file)
        return "repairzipitem", archive, sign(archive), PLUGIN

    def refuse_archive(self, status, write):
        self.assert_refused(status, *self.command_with(write))

    def install(self, write):
        self.assert_done(*self.command_with(write))

    def test_that_lead_outside_are_refused(self):
        for name in ("QuillmarkCM.plugin/../../outside", "/tmp/outside", "../outside"):
            with self.subTest(name):
                self.refuse_archive(DAMAGED_PAYLOAD, lambda file: file.writestr(name, "x"))
        self.assertFalse(Path("/tmp/outside").exists())

    def test_with_something_beside_the_bundle_are_refused(self):
        def write(file):
            file.writestr("QuillmarkCM.plugin/", "")
            file.writestr("payload", "x")

        self.refuse_archive(WRONG_PAYLOAD, write)

    def test_whose_folders_come_after_their_files_or_never_are_unpacked_whole(self):
        def write(file):
            file.writestr("QuillmarkCM.plugin/Contents/Info.plist", "x")
            file.writestr("QuillmarkCM.plugin/Contents/", "")
            file.writestr("QuillmarkCM.plugin/Other/deep/file", "y")

        self.install(write)
        self.assertEqual((PLUGIN / "Contents/Info.plist").read_text(), "x")
        self.assertEqual((PLUGIN / "Other/deep/file").read_text(), "y")

    def test_keep_names_in_any_language(self):
        self.install(lambda file: file.writestr("QuillmarkCM.plugin/日本語.lproj/é", "x"))
        self.assertTrue((PLUGIN / "日本語.lproj/é").is_file())

    def test_with_links_keep_those_inside_and_are_refused_for_others(self):
        def link_to(target):
            def write(file):
                link = zipfile.ZipInfo("QuillmarkCM.plugin/link")
                link.create_system, link.external_attr = 3, 0o120777 << 16
                file.writestr("QuillmarkCM.plugin/file", "x")
                file.writestr(link, target)
            return write

        self.install(link_to("file"))
        self.assertEqual(os.readlink(PLUGIN / "link"), "file")
        for target in ("/etc/passwd", "../../outside", ""):
            self.refuse_archive(DAMAGED_PAYLOAD, link_to(target))

    def test_that_would_unpack_to_more_than_a_bundle_has_are_refused(self):
        archive = self.folder / "bomb.zip"
        with zipfile.ZipFile(archive, "w", zipfile.ZIP_DEFLATED, compresslevel=1) as file:
            information = zipfile.ZipInfo("QuillmarkCM.plugin/zeros")
            information.compress_type = zipfile.ZIP_DEFLATED
            with file.open(information, "w", force_zip64=True) as member:
                for _ in range(1100):
                    member.write(bytes(1 << 20))
        self.assert_refused(DAMAGED_PAYLOAD, "repairzipitem", archive, sign(archive), PLUGIN)
        self.assertEqual(os.listdir(PLUGIN.parent), [])

    def test_that_are_empty_none_or_cut_are_refused(self):
        self.refuse_archive(DAMAGED_PAYLOAD, lambda file: None)
        whole = resource("QuillmarkCM.zip").read_bytes()
        for contents in (b"x", whole[: len(whole) // 2], whole[:-10]):
            archive = self.folder / "cut.zip"
            archive.write_bytes(contents)
            self.assert_refused(DAMAGED_PAYLOAD, "repairzipitem", archive, sign(archive), PLUGIN)
