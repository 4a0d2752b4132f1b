"""The launcher moves into the Applications folder when the user wants it, and goes on from there."""

import os
import shutil
import subprocess
from pathlib import Path

from machine import (APP, HOME, PREFERENCES, USER, make_user_folder, processes_of, set_preferences, wait_until,
                     write_user_file)
from move import (AGAIN, DO_NOT_MOVE, DOWNLOADED, DOWNLOADS, FAILED, MOVE, OFFER, PASSWORD, QUESTION, TRASH, MoveTest,
                  as_user, copy_bundle, give_everything, snapshot)
from polkit import start_agent, start_polkit

CLIENT = "com.quillmark.quillmarkclient"


def owned_by_root(folder):
    for path in [folder, *folder.rglob("*")]:
        os.lchown(path, 0, 0)


def make_client(bundle):
    """It becomes one of those that a move removes."""
    information = bundle / "Contents/Info.plist"
    information.write_text(information.read_text().replace("com.quillmark.QuillmarkLauncher", CLIENT))


def trashed(name="Quillmark.app"):
    """The bundles of that name in the user's Trash, and in that of the disk of /Applications."""
    return sorted(path for trash in (TRASH, Path(f"/Applications/.Trash-{USER}")) for path in trash.glob(f"files/{name}*"))


class Move(MoveTest):
    def test_from_the_download_folder_replaces_the_old_copy(self):
        self.put_old_copy()
        give_everything(DOWNLOADED)
        whole = snapshot(DOWNLOADED)
        alert = self.start_launcher().one("alert")
        self.assertEqual((alert.name, alert.description), ("Quillmark", f"{QUESTION} {DOWNLOADS}"))
        self.desktop.take_picture("move-from-the-download-folder")
        self.press(MOVE)
        self.assert_goes_on(APP, launches=2)
        self.assertEqual(snapshot(APP), whole)
        self.assertFalse(DOWNLOADED.exists())
        self.assertEqual(len(trashed()), 2, "the old copy and the source")
        self.assertEqual([(path / "Contents/old").exists() for path in trashed()].count(True), 1)

    def test_with_the_password_arrives_whole_too(self):
        start_polkit(self, "AUTH_ADMIN")
        give_everything(DOWNLOADED)
        whole = snapshot(DOWNLOADED)
        self.assertEqual(self.start_launcher().one("alert").description, f"{QUESTION} {PASSWORD}")
        self.desktop.take_picture("move-with-a-password")
        self.give_password()
        self.assert_goes_on(APP, launches=2)
        self.assertEqual(snapshot(APP), whole)
        self.assertFalse(DOWNLOADED.exists())

    def test_with_the_password_replaces_an_administrators_copy(self):
        start_polkit(self, "AUTH_ADMIN")
        self.put_old_copy()
        owned_by_root(Path("/Applications"))
        stale = copy_bundle(APP, HOME / "Applications/Quillmark Client-2.app")
        owned_by_root(stale)
        self.start_launcher()
        self.give_password()
        self.assert_goes_on(APP, launches=2)
        self.assertFalse((APP / "Contents/old").exists())
        self.assertEqual(APP.stat().st_uid, USER)
        self.assertFalse(stale.exists())

    def test_with_the_password_removes_nothing_that_another_user_can_exchange(self):
        """He does, while the question is up."""
        start_polkit(self, "AUTH_ADMIN")
        self.put_old_copy()
        games = Path("/Applications/Games/sub")
        planted = copy_bundle(DOWNLOADED, games / "Precious.app")
        make_client(planted)
        precious = Path("/System/Secure/Precious.app/file")
        precious.parent.mkdir(parents=True)
        precious.write_text("precious")
        owned_by_root(Path("/Applications"))
        for path in [games.parent, *games.parent.rglob("*")]:
            os.lchown(path, 1002, 1002)
        set_preferences(FileLogging="verbose")
        self.start_launcher()
        games.rename(games.with_name("sub2"))
        games.symlink_to("/System/Secure")
        self.give_password()
        self.assert_goes_on(APP, launches=2)
        self.assertEqual(precious.read_text(), "precious")
        self.assertIn(f'Leaving "{games}/Precious.app" alone: others can change what is in "/Applications/Games"', self.log())

    def test_with_a_dismissed_password_dialog_stays_without_a_word(self):
        start_polkit(self, "AUTH_ADMIN")
        self.start_launcher()
        start_agent(self, "dismiss", self.launcher.pid)
        self.press(MOVE)
        self.assert_goes_on(DOWNLOADED, launches=1)
        self.assertIn("Not moving because user canceled authorization", self.log())
        self.assertFalse(APP.exists())

    def test_that_is_refused_is_told_and_the_start_goes_on(self):
        start_polkit(self, "NO")
        self.answer(MOVE)
        self.assertEqual(self.wait_for_failure().one("alert").description, FAILED)
        self.desktop.take_picture("move-that-failed")
        self.press("OK")
        self.assert_goes_on(DOWNLOADED, launches=1)
        self.assertIn("Could not copy myself to /Applications with authorization", self.log())

    def test_from_a_disk_image_leaves_it_and_lets_go_of_it(self):
        volume = Path("/Volumes/Quillmark 1.14")
        volume.mkdir(parents=True)
        subprocess.run(["mount", "-t", "tmpfs", "image", volume], check=True)
        subprocess.run(["cp", "-a", DOWNLOADED, volume], check=True)
        subprocess.run(["mount", "-o", "remount,ro", volume], check=True)
        self.addCleanup(subprocess.run, ["umount", "-l", volume])
        self.put_old_copy()
        # What the bundle's own program for it asks the desktop with.
        write_user_file(HOME / "bin/gio", b'#!/bin/sh\nprintf "%s\\n" "$@" >~/detached.new && mv ~/detached.new ~/detached\n')
        (HOME / "bin/gio").chmod(0o755)
        image = volume / "Quillmark.app"
        whole = snapshot(image)
        environment = self.desktop.environment(PATH=f"{HOME}/bin:{os.environ['PATH']}")
        self.assertEqual(self.start_launcher(image, env=environment).one("alert").description, f"{QUESTION} {OFFER}")
        self.desktop.take_picture("move-from-a-disk-image")
        self.press(MOVE)
        self.assert_goes_on(APP, launches=2)
        self.assertEqual(snapshot(APP), whole)
        self.assertEqual(snapshot(image), whole)
        wait_until((HOME / "detached").exists, "the volume is let go")
        self.assertEqual((HOME / "detached").read_text(), f"mount\n--unmount\n{volume}\n")

    def test_removes_stale_copies_and_passes_over_those_that_stay(self):
        self.put_old_copy()
        fixed = copy_bundle(DOWNLOADED, HOME / "Applications/Quillmark Client-3.app")
        kept = copy_bundle(DOWNLOADED, Path("/Applications/Locked/Old.app"))
        found = copy_bundle(DOWNLOADED, Path("/Applications/Tools/More/Old.app"))
        for bundle in (kept, found):
            make_client(bundle)
        other = copy_bundle(DOWNLOADED, Path("/Applications/Tools/Other.app"))
        os.chown(kept.parent, 0, 0)
        set_preferences(FileLogging="verbose")
        self.answer(MOVE)
        self.assert_goes_on(APP, launches=2)
        self.assertEqual([bundle.exists() for bundle in (fixed, found, kept, other)], [False, False, True, True])
        self.assertIn(f'Could not trash "{kept}"', self.log())
        self.assertIn(f'Failed to trash "{kept}"', self.log())

    def test_that_is_not_wanted_is_offered_again(self):
        for launches in (1, 2):
            self.answer(DO_NOT_MOVE)
            self.assert_goes_on(DOWNLOADED, launches)
            self.end_core_of(DOWNLOADED)
        self.assertFalse(APP.exists())

    def test_that_is_never_wanted_is_not_offered_again(self):
        self.start_launcher()
        self.press(AGAIN, "check box")
        self.wait_for(lambda tree: tree.all("check box", AGAIN, "checked"), "the check box is on")
        self.desktop.take_picture("move-with-the-check-box-on")
        self.press(DO_NOT_MOVE)
        self.assert_goes_on(DOWNLOADED, launches=1)
        self.assertIn(b"moveToApplicationsFolderAlertSuppress", PREFERENCES.read_bytes())
        self.end_core_of(DOWNLOADED)
        self.launcher = self.desktop.start(DOWNLOADED / "Contents/MacOS/Quillmark")
        self.assert_goes_on(DOWNLOADED, launches=2)

    def test_is_refused_by_the_escape_key(self):
        self.start_launcher()
        self.desktop.run("xdotool", "key", "Escape")
        self.assert_goes_on(DOWNLOADED, launches=1)

    def test_is_wanted_by_the_return_key(self):
        self.put_old_copy()
        self.start_launcher()
        self.desktop.run("xdotool", "key", "Return")
        self.assert_goes_on(APP, launches=2)

    def test_is_asked_so_that_a_screen_reader_can_tell(self):
        alert = self.start_launcher().one("alert")
        self.assertIn("active", alert.states)
        self.assertEqual([(part.role, part.name) for part in alert.children],
                         [("filler", ""), ("label", QUESTION), ("label", PASSWORD), ("check box", AGAIN),
                          ("push button", MOVE), ("push button", DO_NOT_MOVE)])
        self.assertEqual(alert.one(state="focused").name, MOVE)
        self.assertIn("is-default", alert.one("push button", MOVE).states)
        self.assertNotIn("checked", alert.one("check box").states)

    def test_is_not_offered_beside_a_running_core(self):
        self.answer(DO_NOT_MOVE)
        self.assert_goes_on(DOWNLOADED, launches=1)
        tree = self.start_launcher()
        self.assertEqual(tree.one("push button").name, "Quit")
        self.press("Quit")
        self.assert_ended()

    def test_is_not_offered_without_a_display_and_the_start_goes_on(self):
        launcher = self.desktop.start(DOWNLOADED / "Contents/MacOS/Quillmark", env=self.desktop.environment(DISPLAY=None))
        _, err = launcher.communicate(timeout=20)
        self.assertEqual(launcher.returncode, 0)
        self.assertIn(QUESTION, err)
        self.assert_runs_from(DOWNLOADED, launches=1)

    def test_is_not_offered_in_any_folder_called_applications(self):
        for place in (HOME / "Applications/Quillmark.app", HOME / "Desktop/Applications/Cloud/Quillmark.app", APP):
            bundle = copy_bundle(DOWNLOADED, place)
            self.assert_starts_without_a_word(bundle)
            wait_until(lambda: processes_of(self.core_of(bundle)), "the core runs")
            self.end_core_of(bundle)

    def test_moves_the_bundle_that_a_link_leads_to(self):
        self.put_old_copy()
        link = HOME / "Desktop/Quillmark.app"
        make_user_folder(link.parent)
        as_user("ln", "-s", DOWNLOADED, link)
        self.answer(MOVE, link)
        self.assert_goes_on(APP, launches=2)
        self.assertFalse(APP.is_symlink())
        self.assertFalse(DOWNLOADED.exists())

    def test_keeps_the_bundles_name_whatever_it_is(self):
        bundle = HOME / 'Downloads/My "Quillmark" $HOME\n& `more`.app'
        DOWNLOADED.rename(bundle)
        moved = APP.with_name(bundle.name)
        make_user_folder(moved.parent)
        copy_bundle(bundle, moved)
        self.answer(MOVE, bundle)
        self.assert_goes_on(moved, launches=2)

    def test_is_not_offered_for_a_bundle_whose_name_holds_a_single_quote(self):
        bundle = HOME / "Downloads/Ada's.app"
        copy_bundle(DOWNLOADED, bundle)
        self.assert_starts_without_a_word(bundle)
        self.assert_runs_from(bundle, launches=1)
        self.assertIn(f'The path "{bundle}" holds a single quote. Not offering to move it.', self.log())

    def test_is_not_offered_for_a_bundle_that_cannot_be_deleted(self):
        owned_by_root(DOWNLOADED)
        self.assert_starts_without_a_word(DOWNLOADED)
        self.assert_runs_from(DOWNLOADED, launches=1)
        self.assertIn("No access to delete the app. Not offering to move it.", self.log())

    def test_replaces_a_file_and_a_link_in_its_place(self):
        for make in (lambda: APP.write_text("in the way"), lambda: APP.symlink_to("/home/t/Elsewhere")):
            with self.subTest():
                make_user_folder(HOME / "Elsewhere")
                make()
                os.lchown(APP, USER, USER)
                copy_bundle(DOWNLOADED, HOME / "Another/Quillmark.app")
                self.answer(MOVE, HOME / "Another/Quillmark.app")
                self.assert_ended()
                wait_until(lambda: processes_of(self.core_of(APP)), "the core runs")
                self.assertTrue((HOME / "Elsewhere").is_dir())
                self.assertFalse(APP.is_symlink())
                self.end_core_of(APP)
                shutil.rmtree(APP)

    def test_on_a_full_disk_is_told_and_leaves_nothing_half(self):
        size = sum(path.lstat().st_size for path in DOWNLOADED.rglob("*") if path.is_file()) // 2
        subprocess.run(["mount", "-t", "tmpfs", "-o", f"mode=777,size={size}", "small", "/Applications"], check=True)
        self.addCleanup(subprocess.run, ["umount", "-l", "/Applications"])
        APP.mkdir()
        os.chown(APP, USER, USER)
        whole = snapshot(DOWNLOADED)
        self.answer(MOVE)
        self.wait_for_failure()
        self.press("OK")
        self.assert_goes_on(DOWNLOADED, launches=1)
        self.assertFalse(APP.exists())
        self.assertEqual(snapshot(DOWNLOADED), whole)
        self.assertRegex(self.log(), rf"Could not copy '{DOWNLOADED}' to '{APP}' \(.*No space left on device")

    def test_that_is_killed_in_the_copy_is_done_anew_at_the_next_try(self):
        self.put_old_copy()
        large = DOWNLOADED / "Contents/Resources/large"
        make_user_folder(large)
        as_user("sh", "-c", f"cd '{large}' && seq 20000 | split -l 1 -a 4")
        whole = snapshot(DOWNLOADED)
        self.answer(MOVE)
        wait_until(lambda: any((APP / "Contents/Resources/large").glob("x*")), "the copy has begun")
        self.launcher.kill()
        self.launcher.wait()
        self.assertEqual(snapshot(DOWNLOADED), whole, "the copy was not in its middle")
        self.assertEqual(processes_of(self.core_of(APP)), [])

        self.answer(MOVE)
        self.assert_goes_on(APP, launches=3)
        self.assertEqual(snapshot(APP), whole)
        self.assertEqual([path.name for path in Path("/Applications").iterdir() if not path.name.startswith(".Trash")],
                         ["Quillmark.app"])
