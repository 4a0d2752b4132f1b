"""The Trash and copies on real file systems: several, full, read-only, and with files of other users."""

import contextlib
import errno
import os
import shutil
import socket
import stat
import subprocess
import unittest
import urllib.parse
from pathlib import Path

from machine import APP, HOME, USER, environment, make_user_folder, run, skip, start, wait_until

PROBE = APP / "Contents/MacOS/FilesProbe"
HOME_TRASH = HOME / ".local/share/Trash"
DISK = Path("/tmp/disk")


def give_to_user(path):
    for folder, folders, files in os.walk(path):
        for name in [".", *folders, *files]:
            os.chown(os.path.join(folder, name), USER, USER, follow_symlinks=False)


def make_folder(path, mode):
    """Whatever the mask is."""
    path.mkdir()
    path.chmod(mode)
    return path


def names_in(folder):
    return sorted(os.listdir(folder)) if folder.is_dir() else []


def tree(path):
    """All that is in a folder, with types, modes and contents."""
    found = {}
    for folder, folders, files in os.walk(path):
        for name in [".", *folders, *files]:
            entry = Path(folder, name)
            status = entry.lstat()
            contents = entry.read_bytes() if stat.S_ISREG(status.st_mode) else b""
            found[str(entry.relative_to(path))] = (oct(status.st_mode), status.st_mtime_ns, contents)
    return found


class FilesTest(unittest.TestCase):
    def setUp(self):
        shutil.copy("/run/probes/FilesProbe", PROBE)

    def mount(self, folder, *options):
        """An empty file system of its own, in which everybody may write."""
        folder.mkdir(parents=True, exist_ok=True)
        subprocess.run(["mount", "-t", "tmpfs", "-o", ",".join(["mode=777", *options]), "disk", folder], check=True)
        return folder

    def applications(self, mode=0o777):
        """A folder on a file system of its own, in whose top folder the user can make nothing."""
        folder = make_folder(self.mount(DISK) / "Applications", mode)
        DISK.chmod(0o755)
        return folder

    def probe(self, *arguments, **options):
        done = run(PROBE, *arguments, timeout=60, **options)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        return done.stdout.strip()

    def bundle(self, place):
        """A bundle of the user's."""
        path = place / "A.app"
        (path / "Contents/MacOS").mkdir(parents=True)
        (path / "Contents/MacOS/A").write_bytes(b"x" * 5000)
        (path / "Contents/MacOS/A").chmod(0o755)
        (path / "Contents/link").symlink_to("MacOS")
        give_to_user(path)
        return path


class Trash(FilesTest):
    def recycle(self, path):
        return self.probe("recycle", path.name, path.parent)

    def assert_trashed(self, path, trash, told_path=None):
        """The item has gone into that trash, whole, with the path in its info file."""
        before = tree(path)
        self.assertEqual(self.recycle(path), "trashed")
        self.assertFalse(os.path.lexists(path))
        self.assertEqual(names_in(trash / "files"), [path.name])
        self.assertEqual(tree(trash / "files" / path.name), before)
        lines = (trash / f"info/{path.name}.trashinfo").read_text().splitlines()
        self.assertEqual([lines[0], urllib.parse.unquote(lines[1])], ["[Trash Info]", f"Path={told_path or path}"])

    def assert_stays(self, path, *trashes):
        """The item stays whole, and nothing is left in any trash."""
        before = tree(path.parent)
        self.assertEqual(self.recycle(path), "stays")
        self.assertEqual(tree(path.parent), before)
        for trash in (HOME_TRASH, *trashes):
            self.assertEqual(names_in(trash / "files") + names_in(trash / "info"), [], trash)

    def test_of_the_home_folder_takes_what_is_on_its_file_system(self):
        self.assert_trashed(self.bundle(HOME), HOME_TRASH)
        self.assertEqual(HOME_TRASH.stat().st_uid, USER)

    def test_of_another_file_system_takes_what_is_on_it(self):
        disk = self.mount(DISK)
        make_folder(disk / "folder", 0o777)
        trash = disk / f".Trash-{USER}"
        self.assert_trashed(self.bundle(disk / "folder"), trash, "folder/A.app")
        self.assertEqual((stat.S_IMODE(trash.stat().st_mode), trash.stat().st_uid), (0o700, USER))
        self.assertEqual(names_in(HOME_TRASH / "files"), [])

    def test_that_all_users_share_is_used_first(self):
        disk = self.mount(DISK)
        make_folder(disk / ".Trash", 0o1777)
        self.assert_trashed(self.bundle(disk), disk / f".Trash/{USER}", "A.app")
        self.assertFalse((disk / f".Trash-{USER}").exists())

    def test_without_the_sticky_bit_is_not_shared(self):
        disk = self.mount(DISK)
        make_folder(disk / ".Trash", 0o777)
        self.assert_trashed(self.bundle(disk), disk / f".Trash-{USER}", "A.app")
        self.assertEqual(names_in(disk / ".Trash"), [])

    def test_that_is_a_link_is_not_shared(self):
        disk = self.mount(DISK)
        make_folder(disk / "else", 0o1777)
        (disk / ".Trash").symlink_to("else")
        self.assert_trashed(self.bundle(disk), disk / f".Trash-{USER}", "A.app")
        self.assertEqual(names_in(disk / "else"), [])

    def test_that_is_a_link_or_somebody_elses_is_not_used(self):
        """Not even when it is the only one on the file system: the item is copied home."""
        for number, make in enumerate((lambda trash: trash.symlink_to("else"), lambda trash: trash.mkdir(mode=0o777))):
            disk = self.mount(DISK / str(number))
            make_folder(disk / "else", 0o777)
            trash = disk / f".Trash-{USER}"
            make(trash)
            with self.subTest(number):
                self.assert_trashed(self.bundle(disk), HOME_TRASH)
                self.assertEqual(names_in(disk / "else"), [])
                self.assertEqual(names_in(trash), [])
            shutil.rmtree(HOME_TRASH)

    def test_takes_a_copy_of_what_is_on_a_file_system_that_can_have_none(self):
        bundle = self.bundle(self.applications())
        os.setxattr(bundle, "user.com.apple.quarantine", b"0083;")
        (bundle / "Contents").chmod(0o555)
        self.assert_trashed(bundle, HOME_TRASH)
        self.assertEqual(os.getxattr(HOME_TRASH / "files/A.app", "user.com.apple.quarantine"), b"0083;")
        self.assertEqual(names_in(bundle.parent), [])

    def test_takes_what_a_mount_hides_the_way_to(self):
        """The same file system as the home folder's, but no file can be renamed over there."""
        (HOME / "there").mkdir()
        DISK.mkdir()
        subprocess.run(["mount", "--bind", HOME / "there", DISK], check=True)
        DISK.chmod(0o777)
        self.assert_trashed(self.bundle(DISK), HOME_TRASH)

    def test_that_is_full_takes_nothing(self):
        for size in range(0, 80 << 10, 4 << 10):
            with self.subTest(size):
                home = self.mount(HOME, "size=100k")
                with contextlib.suppress(OSError):
                    (home / "filling").write_bytes(b"x" * (100 << 10))
                os.truncate(home / "filling", max(0, (100 << 10) - size))
                bundle = self.bundle(self.applications())
                (bundle / "Contents/large").write_bytes(b"x" * (100 << 10))
                self.assert_stays(bundle)
                subprocess.run(["umount", DISK, HOME], check=True)

    def test_of_a_full_home_folder_takes_nothing_from_it(self):
        home = self.mount(HOME, "size=100k")
        for folder in (HOME_TRASH / "files", HOME_TRASH / "info", home / "place"):
            make_user_folder(folder)
        bundle = self.bundle(home / "place")
        with contextlib.suppress(OSError):
            (home / "filling").write_bytes(b"x" * (100 << 10))
        self.assert_stays(bundle)

    def test_takes_nothing_from_a_read_only_file_system(self):
        disk = self.mount(DISK)
        bundle = self.bundle(disk)
        subprocess.run(["mount", "-o", "remount,ro", disk], check=True)
        self.assert_stays(bundle)

    def test_takes_nothing_from_a_folder_that_is_not_the_users(self):
        for place in (HOME / "folder", self.mount(DISK) / "folder"):
            place.mkdir()
            DISK.chmod(0o755)
            with self.subTest(place):
                self.assert_stays(self.bundle(place))

    def test_takes_nobody_elses_item_from_a_folder_with_the_sticky_bit(self):
        bundle = self.bundle(self.applications(0o1777))
        os.chown(bundle, 0, 0)
        bundle.chmod(0o777)
        self.assert_stays(bundle)
        (bundle.parent / "file").write_text("x")
        self.assert_stays(bundle.parent / "file")

    def test_takes_nothing_that_holds_folders_of_others(self):
        bundle = self.bundle(self.applications())
        os.chown(bundle / "Contents/MacOS", 0, 0)
        self.assert_stays(bundle)
        (bundle / "Contents/MacOS").chmod(0o1777)
        os.chown(bundle / "Contents/MacOS/A", 0, 0)
        self.assert_stays(bundle)

    def test_takes_nothing_that_it_cannot_copy(self):
        bundle = self.bundle(self.applications())
        (bundle / "Contents/MacOS/A").chmod(0)
        self.assert_stays(bundle)

    def test_takes_pipes_and_sockets_without_waiting_for_them(self):
        bundle = self.bundle(self.applications())
        os.mkfifo(bundle / "pipe")
        with socket.socket(socket.AF_UNIX) as listening:
            listening.bind(str(bundle / "socket"))
        give_to_user(bundle)
        self.assert_trashed(bundle, HOME_TRASH)

    def test_takes_no_mounted_file_system(self):
        inner = self.mount(self.applications() / "A.app")
        (inner / "file").write_text("x")
        os.chown(inner, USER, USER)
        self.assert_stays(inner)

    def test_of_the_administrators_home_folder_is_not_that_of_a_user(self):
        make_user_folder(HOME_TRASH)
        bundle = self.bundle(HOME)
        out = subprocess.run([PROBE, "recycle", bundle.name, HOME], env=environment(), capture_output=True, text=True)
        self.assertEqual(out.stdout, "stays\n")
        self.assertEqual(names_in(HOME_TRASH), [])


class Copy(FilesTest):
    def copy_as_administrator(self, bundle):
        subprocess.run([PROBE, "copy", bundle, HOME / "B.app"], env=environment(), check=True)

    def test_of_what_belongs_to_others_belongs_to_the_user_and_has_no_set_id_bits(self):
        source = HOME / "source"
        source.mkdir()
        for name, mode in (("tool", 0o6755), ("plain", 0o644)):
            (source / name).write_text("x")
            (source / name).chmod(mode)
        self.assertEqual(self.probe("copy", source, HOME / "target"), "copied")
        for name, mode in (("tool", 0o755), ("plain", 0o644)):
            status = (HOME / "target" / name).stat()
            self.assertEqual((status.st_uid, stat.S_IMODE(status.st_mode)), (USER, mode))
        self.assertEqual(self.probe("copy", source / "tool", HOME / "tool"), "copied")
        self.assertEqual(stat.S_IMODE((HOME / "tool").stat().st_mode), 0o755)

    def test_by_the_administrator_keeps_owners_and_set_id_bits(self):
        bundle = self.bundle(HOME)
        (bundle / "Contents/MacOS/A").chmod(0o6755)
        self.copy_as_administrator(bundle)
        status = (HOME / "B.app/Contents/MacOS/A").stat()
        self.assertEqual((status.st_uid, status.st_gid, stat.S_IMODE(status.st_mode)), (USER, USER, 0o6755))
        self.assertEqual((HOME / "B.app/Contents/link").lstat().st_uid, USER)

    def test_by_the_administrator_of_a_device_is_that_device(self):
        bundle = self.bundle(HOME)
        try:
            os.mknod(bundle / "device", stat.S_IFCHR | 0o600, os.makedev(1, 3))
        except PermissionError:
            skip("not even the administrator makes devices in an ordinary user's private root")
        self.copy_as_administrator(bundle)
        self.assertEqual((HOME / "B.app/device").stat().st_rdev, os.makedev(1, 3))

    def test_by_a_user_of_a_device_is_an_error(self):
        bundle = self.bundle(HOME)
        os.mkfifo(bundle / "device")  # which lists as something special, too, and nobody may be allowed to make a device
        subprocess.run(["mount", "--bind", "/dev/null", bundle / "device"], check=True)
        self.assertEqual(self.probe("copy", bundle, HOME / "B.app"),
                         f"{errno.EPERM} Copying stopped at '{HOME}/B.app/device'")
        self.assertFalse((HOME / "B.app").exists())

    def test_stops_at_what_may_not_be_read_and_leaves_nothing(self):
        for name in ("Contents/MacOS/A", "Contents/MacOS"):
            with self.subTest(name):
                bundle = self.bundle(HOME)
                (bundle / name).chmod(0)
                self.assertEqual(self.probe("copy", bundle, HOME / "B.app"),
                                 f"{errno.EACCES} Copying stopped at '{bundle / name}'")
                self.assertFalse((HOME / "B.app").exists())
                shutil.rmtree(bundle)

    def test_between_file_systems_is_whole(self):
        disk = self.mount(DISK)
        bundle = self.bundle(HOME)
        with open(bundle / "sparse", "wb") as sparse:
            sparse.seek(1 << 20)
            sparse.write(b"x" * 10000)
            sparse.truncate(4 << 20)
        give_to_user(bundle)
        self.assertEqual(self.probe("copy", bundle, disk / "A.app"), "copied")
        self.assertEqual(tree(disk / "A.app"), tree(bundle))
        self.assertLess((disk / "A.app/sparse").stat().st_blocks * 512, 1 << 20)

    def test_to_a_full_disk_names_the_file_and_leaves_nothing(self):
        disk = self.mount(DISK, "size=64k")
        bundle = self.bundle(HOME)
        (bundle / "large").write_bytes(b"x" * (100 << 10))
        self.assertEqual(self.probe("copy", bundle, disk / "A.app"),
                         f"{errno.ENOSPC} Copying stopped at '{disk}/A.app/large'")
        self.assertEqual(names_in(disk), [])

    def test_to_a_read_only_disk_is_an_error(self):
        disk = self.mount(DISK, "ro")
        self.assertEqual(self.probe("copy", self.bundle(HOME), disk / "A.app"),
                         f"{errno.EROFS} Copying stopped at '{disk}/A.app'")

    def test_that_is_killed_leaves_no_more_than_the_owner_may_enter(self):
        bundle = self.bundle(HOME)
        bundle.chmod(0o777)
        with open(bundle / "large", "wb") as large:
            os.posix_fallocate(large.fileno(), 0, 2 << 30)
        copying = start(PROBE, "copy", bundle, HOME / "B.app")
        wait_until(lambda: (HOME / "B.app").exists(), "the copy has begun")
        copying.kill()
        copying.communicate()
        self.assertEqual(stat.S_IMODE((HOME / "B.app").stat().st_mode), 0o700)
